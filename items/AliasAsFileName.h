#pragma once

#include <string>
#include <string_view>

#include "ui/win/MainParts.h"

namespace kestrelon::items {

// The path that a file gets when its item's alias becomes its name: its folder, the alias, "." and its
// extension, which is what stands behind the last "." of the whole path. The "." is there without an
// extension too; the system drops it from the name of the file.
std::wstring PathNamedAs(std::wstring_view alias, std::wstring_view path);

// The statement that tells an item where its file is now.
std::wstring FileNameStatement(std::wstring_view fileName, std::wstring_view path,
                               std::wstring_view fileIndex);

// Renames the files of the selected rows on disk, each to its alias, and changes table and list along with
// them. Rows without alias or path are skipped. Where the alias is no name for a file, another file has the
// name, or the disk or the table refuses, the row stays as it was; nothing is shown, and the next row has its
// turn. Only of paths that are too long a box tells at the end.
void meu_Definenameasfilename_Click(win::MainParts& parts);

}  // namespace kestrelon::items
