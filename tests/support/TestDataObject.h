#pragma once

#include "app/base/Win32.h"

#include <objidl.h>
#include <shlobj.h>

#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace kestrelon::test {

// A data object with one format, its bytes in global memory. Stands on the stack of the test, which reads how
// many references others hold.
class TestDataObject final : public IDataObject {
 public:
  TestDataObject(CLIPFORMAT format, std::string bytes) : format_(format), bytes_(std::move(bytes)) {}
  virtual ~TestDataObject() = default;

  // A file list as the file manager makes it: a head, the paths each closed by a NUL, a last NUL;
  // an empty list is two of these.
  static TestDataObject Files(const std::vector<std::wstring>& paths) {
    DROPFILES head{};
    head.pFiles = sizeof head;
    head.fWide = TRUE;
    std::wstring list;
    for (const std::wstring& path : paths) list += path + L'\0';
    list += paths.empty() ? std::wstring(2, L'\0') : std::wstring(1, L'\0');
    std::string bytes(sizeof head + list.size() * sizeof(wchar_t), '\0');
    std::memcpy(bytes.data(), &head, sizeof head);
    std::memcpy(bytes.data() + sizeof head, list.data(), list.size() * sizeof(wchar_t));
    return {CF_HDROP, std::move(bytes)};
  }
  static TestDataObject Text() { return {CF_UNICODETEXT, std::string("t\0\0\0", 4)}; }

  ULONG held = 0;       // references of others
  int transfers = 0;    // calls of GetData
  bool broken = false;  // offers, and does not give
  // What goes on while it is asked for its data: that calls another program, and messages are handled.
  std::function<void()> meanwhile{};

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
    const bool known = id == IID_IUnknown || id == IID_IDataObject;
    *object = known ? static_cast<IDataObject*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 1 + ++held; }
  ULONG STDMETHODCALLTYPE Release() noexcept override { return 1 + --held; }
  HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC* format) noexcept override {
    return format->cfFormat == format_ && (format->tymed & TYMED_HGLOBAL) != 0 ? S_OK : DV_E_FORMATETC;
  }
  HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* medium) noexcept override {
    ++transfers;
    if (meanwhile) meanwhile();
    if (broken) return E_UNEXPECTED;
    if (const HRESULT answer = QueryGetData(format); answer != S_OK) return answer;
    medium->tymed = TYMED_HGLOBAL;
    medium->hGlobal = GlobalAlloc(GMEM_MOVEABLE, bytes_.size());
    medium->pUnkForRelease = nullptr;
    std::memcpy(GlobalLock(medium->hGlobal), bytes_.data(), bytes_.size());
    GlobalUnlock(medium->hGlobal);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD, IEnumFORMATETC** formats) noexcept override {
    const FORMATETC format{format_, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    return SHCreateStdEnumFmtEtc(1, &format, formats);
  }
  HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC*, STGMEDIUM*) noexcept override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC*, FORMATETC*) noexcept override {
    return E_NOTIMPL;
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
  CLIPFORMAT format_;
  std::string bytes_;
};

}  // namespace kestrelon::test
