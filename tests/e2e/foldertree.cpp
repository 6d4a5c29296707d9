// foldertree FOLDER FILE: lists what is in the folder into FILE (UTF-8), one line each, in the order of an
// import: first the files of a folder, then its sub-folders with their files, then what is below each of
// them.
//   D TAB path     a folder          F TAB path     a file of the folder named last
// Names in the order of the file manager. A second opinion on what the program imports, so nothing of it is
// used here.
#include "app/base/Win32.h"

#include <shlwapi.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

std::FILE* out = nullptr;

void Line(char kind, const std::wstring& path) {
  const int size = ::WideCharToMultiByte(CP_UTF8, 0, path.c_str(), -1, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(size), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, path.c_str(), -1, text.data(), size, nullptr, nullptr);
  std::fprintf(out, "%c\t%s\n", kind, text.c_str());
}

std::vector<std::wstring> Names(const std::wstring& folder, bool folders) {
  std::vector<std::wstring> names;
  WIN32_FIND_DATAW entry;
  const HANDLE search = ::FindFirstFileW((folder + L"\\*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    const std::wstring name = entry.cFileName;
    if (name == L"." || name == L".." || isFolder != folders || (isFolder && isLink)) continue;
    names.push_back(name);
  } while (::FindNextFileW(search, &entry));
  ::FindClose(search);
  std::sort(names.begin(), names.end(), [](const std::wstring& a, const std::wstring& b) {
    const int order = ::StrCmpLogicalW(a.c_str(), b.c_str());
    return order != 0 ? order < 0 : a < b;  // "a01" and "a1" are equal for it
  });
  return names;
}

void Files(const std::wstring& folder) {
  Line('D', folder);
  for (const std::wstring& name : Names(folder, false)) Line('F', folder + L"\\" + name);
}

void Below(const std::wstring& folder) {
  const std::vector<std::wstring> names = Names(folder, true);
  for (const std::wstring& name : names) Files(folder + L"\\" + name);
  for (const std::wstring& name : names) Below(folder + L"\\" + name);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 3) return 2;
  const std::wstring unfinished = std::wstring(arguments[2]) + L".part";
  out = ::_wfopen(unfinished.c_str(), L"wb");
  if (!out) return 1;
  Files(arguments[1]);
  Below(arguments[1]);
  std::fclose(out);
  return ::MoveFileExW(unfinished.c_str(), arguments[2], MOVEFILE_REPLACE_EXISTING) ? 0 : 1;
}
