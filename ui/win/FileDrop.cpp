#include "ui/win/FileDrop.h"

#include <ole2.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "ui/win/Handles.h"

namespace kestrelon::win {

namespace {

constexpr UINT kCount = 0xFFFFFFFF;  // instead of a number: asks how many there are

FORMATETC FileListFormat() { return {CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL}; }

}  // namespace

bool OffersFiles(IDataObject& data) {
  FORMATETC format = FileListFormat();
  return data.QueryGetData(&format) == S_OK;
}

std::vector<std::wstring> DroppedPaths(IDataObject& data) {
  if (!OffersFiles(data)) return {};
  FORMATETC format = FileListFormat();
  STGMEDIUM medium{};
  const HRESULT result = data.GetData(&format, &medium);
  if (FAILED(result)) throw std::system_error(result, std::system_category(), "the dropped file list");
  const Finally release([&] { ::ReleaseStgMedium(&medium); });
  return DroppedPaths(static_cast<HDROP>(medium.hGlobal));
}

std::vector<std::wstring> DroppedPaths(HDROP list) {
  std::vector<std::wstring> paths;
  const UINT count = ::DragQueryFileW(list, kCount, nullptr, 0);
  for (UINT i = 0; i < count; ++i) {
    // What some systems find in an empty list, and what cannot be read, is an empty name.
    std::wstring path(::DragQueryFileW(list, i, nullptr, 0), L'\0');
    if (path.empty()) continue;
    path.resize(std::min<std::size_t>(
        path.size(), ::DragQueryFileW(list, i, path.data(), static_cast<UINT>(path.size()) + 1)));
    if (!path.empty()) paths.push_back(std::move(path));
  }
  return paths;
}

bool IsPlainFolder(const std::wstring& path) {
  return ::GetFileAttributesW(path.c_str()) == FILE_ATTRIBUTE_DIRECTORY;
}

}  // namespace kestrelon::win
