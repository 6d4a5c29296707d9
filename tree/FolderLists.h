#pragma once

#include "app/base/Win32.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::tree {

// What a folder holds, hidden and system entries too. Both lists are in the order of the file manager. Links
// to folders (symbolic links, junctions, mounted volumes) are in neither: following them could lead in
// circles, or through the same files again and again. Links to files are files.
struct FolderLists {
  std::vector<std::wstring> Dir1;   // full paths of the sub-folders
  std::vector<std::wstring> File1;  // names of the files
  // Full paths of what could not be read: entries with paths longer than kLongestPath, and the folder itself
  // when its listing failed. What the listing gave until then is in the lists.
  std::vector<std::wstring> leftOut;
};

// The folder's path with or without a backslash at its end. Throws nothing for a folder that cannot be read.
FolderLists ReadFolder(const std::wstring& folder);

// The same over any source of entries. `next` fills in one entry a call and returns 0, or else the system's
// code: ERROR_NO_MORE_FILES at the end, any other for a failure. "." and ".." are passed over.
using NextEntry = std::function<DWORD(WIN32_FIND_DATAW& entry)>;
FolderLists ListsOf(const std::wstring& folder, const NextEntry& next);

// The longest path, in UTF-16 units, that every program can open: MAX_PATH counts the NUL at its end.
inline constexpr std::size_t kLongestPath = MAX_PATH - 1;

// A folder that stands for another one.
bool IsFolderLink(const WIN32_FIND_DATAW& entry);
// The form of a full path that has no limit of length whatever the system's settings: "\\?\C:\x",
// "\\?\UNC\server\share". A path that has it already is returned as it is.
std::wstring UnlimitedForm(std::wstring_view path);
// The order of the file manager, as the sign of StrCmpLogicalW: letters without regard to case, digits as
// numbers ("file2" before "file10"). 0 also for names that differ and yet have no order ("a01" and "a1" on
// some versions of the system).
int CompareNames(const std::wstring& a, const std::wstring& b);

}  // namespace kestrelon::tree
