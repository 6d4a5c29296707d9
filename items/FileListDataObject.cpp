#include "items/FileListDataObject.h"

#include <ole2.h>
#include <shlobj.h>

#include <atomic>
#include <cstring>

namespace kestrelon::items {
namespace {

FORMATETC FileDropFormat() { return {CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL}; }

class FileListDataObject final : public IDataObject {
 public:
  explicit FileListDataObject(const std::vector<std::wstring>& paths)
      : bytes_(FileDropBytes(paths)), any_(!paths.empty()) {}
  virtual ~FileListDataObject() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
    if (!object) return E_POINTER;
    if (id == IID_IUnknown || id == IID_IDataObject) {
      *object = static_cast<IDataObject*>(this);
      AddRef();
      return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() noexcept override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* medium) noexcept override {
    if (!format || !medium) return E_POINTER;
    if (const HRESULT answer = QueryGetData(format); answer != S_OK) return answer;
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes_.size());
    void* target = memory ? ::GlobalLock(memory) : nullptr;
    if (!target) {
      if (memory) ::GlobalFree(memory);
      return E_OUTOFMEMORY;
    }
    std::memcpy(target, bytes_.data(), bytes_.size());
    ::GlobalUnlock(memory);
    medium->tymed = TYMED_HGLOBAL;
    medium->hGlobal = memory;  // the caller releases it
    medium->pUnkForRelease = nullptr;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC* format) noexcept override {
    if (!format) return E_POINTER;
    if (!any_ || format->cfFormat != CF_HDROP) return DV_E_FORMATETC;
    if ((format->tymed & TYMED_HGLOBAL) == 0) return DV_E_TYMED;
    return format->dwAspect == DVASPECT_CONTENT ? S_OK : DV_E_DVASPECT;
  }
  HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD direction, IEnumFORMATETC** formats) noexcept override {
    if (!formats) return E_POINTER;
    *formats = nullptr;
    if (direction != DATADIR_GET) return E_NOTIMPL;
    const FORMATETC format = FileDropFormat();
    return ::SHCreateStdEnumFmtEtc(any_ ? 1 : 0, &format, formats);
  }
  HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC*, STGMEDIUM*) noexcept override { return DATA_E_FORMATETC; }
  HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC*, FORMATETC* out) noexcept override {
    if (out) out->ptd = nullptr;
    return DATA_S_SAMEFORMATETC;
  }
  HRESULT STDMETHODCALLTYPE SetData(FORMATETC*, STGMEDIUM*, BOOL) noexcept override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) noexcept override {
    return OLE_E_ADVISENOTSUPPORTED;
  }
  HRESULT STDMETHODCALLTYPE DUnadvise(DWORD) noexcept override { return OLE_E_ADVISENOTSUPPORTED; }
  HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA**) noexcept override {
    return OLE_E_ADVISENOTSUPPORTED;
  }

 private:
  std::atomic<ULONG> references_{1};
  std::vector<std::uint8_t> bytes_;
  bool any_;
};

// Says whether the drag goes on: until the left button is up or Escape is pressed.
class DropSource final : public IDropSource {
 public:
  virtual ~DropSource() = default;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
    if (!object) return E_POINTER;
    const bool known = id == IID_IUnknown || id == IID_IDropSource;
    *object = known ? static_cast<IDropSource*>(this) : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  // Lives on the stack of the drag.
  ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 2; }
  ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }
  HRESULT STDMETHODCALLTYPE QueryContinueDrag(BOOL escape, DWORD keys) noexcept override {
    if (escape) return DRAGDROP_S_CANCEL;
    return (keys & MK_LBUTTON) ? S_OK : DRAGDROP_S_DROP;
  }
  HRESULT STDMETHODCALLTYPE GiveFeedback(DWORD) noexcept override { return DRAGDROP_S_USEDEFAULTCURSORS; }
};

}  // namespace

std::vector<std::uint8_t> FileDropBytes(const std::vector<std::wstring>& paths) {
  std::wstring list;
  for (const std::wstring& path : paths) list.append(path).push_back(L'\0');
  list.push_back(L'\0');
  DROPFILES head{};
  head.pFiles = sizeof(DROPFILES);
  head.fWide = TRUE;
  std::vector<std::uint8_t> bytes(sizeof(head) + list.size() * sizeof(wchar_t));
  std::memcpy(bytes.data(), &head, sizeof(head));
  std::memcpy(bytes.data() + sizeof(head), list.data(), list.size() * sizeof(wchar_t));
  return bytes;
}

win::ComPtr<IDataObject> MakeFileListDataObject(const std::vector<std::wstring>& paths) {
  return win::ComPtr<IDataObject>(new FileListDataObject(paths));
}

DWORD DragFilesOut(const std::vector<std::wstring>& paths) {
  const win::ComPtr<IDataObject> data = MakeFileListDataObject(paths);
  DropSource source;
  DWORD effect = DROPEFFECT_NONE;
  return ::DoDragDrop(data.get(), &source, DROPEFFECT_COPY, &effect) == DRAGDROP_S_DROP
             ? effect
             : DWORD{DROPEFFECT_NONE};
}

}  // namespace kestrelon::items
