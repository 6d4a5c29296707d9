#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "store/SharedConnection.h"
#include "ui/win/CommandsOff.h"
#include "ui/win/MainParts.h"

namespace kestrelon::tree {

// "Add Directory": lets the user choose a folder and makes a branch of it (AddDirectory), with the menus, the
// two panes and the toolbar disabled as long. The database counts as changed afterwards, also after Cancel.
void meu_AddDirectory_Click(win::MainParts& parts);

// The chosen folder becomes the last child of the current category, or a top-level category when none is
// current; every folder below it a category below its parent folder's; every file an item of its folder's
// category, numbered from 1. The files are listed, not opened. A box tells of the end, and of what could not
// be read. A failure shows the box "AddDirectory_Error" or "SSplitNode_Error" and ends the import, as does a
// request to close the window, after the folder it came in; what was added by then stays.
void AddDirectory(win::MainParts& parts);

// The name of the folder or file that a path leads to: what stands behind the last backslash, or the whole
// text when it has none. Empty for a drive's root, which ends in a backslash.
std::wstring LastPathPart(std::wstring_view path);

// What an import could not read: all of it counted, the first paths kept.
class LeftOut {
 public:
  void Add(const std::vector<std::wstring>& paths);
  std::size_t Count() const { return count_; }
  // A line for each of the first paths, each after a line break, and "..." when there are more.
  std::wstring Lines() const;

 private:
  static constexpr std::size_t kShown = 10;
  std::size_t count_ = 0;
  std::vector<std::wstring> first_;
};

// What one import carries from folder to folder.
struct DirectoryImport {
  win::MainParts& parts;
  store::SharedConnection& connection;  // open
  win::ProgressText& progress;
  LeftOut& leftOut;
  // The categories that items have in their indexes, as the import began: no new category takes such a key.
  const std::unordered_set<std::wstring>& itemKeys;
};
// A folder that has its category and its items.
struct ImportedFolder {
  std::wstring path;
  std::wstring key;                      // of its category
  std::vector<std::wstring> subFolders;  // full paths, in order
};
// Adds the categories and items of all sub-folders, in their order, and then does the same in each of them.
// Messages are handled after each sub-folder. False when the import is to end: after a failure, which the box
// "SSplitNode_Error" has shown, or a request to close the window.
bool SplitNode(DirectoryImport& state, const ImportedFolder& folder);

}  // namespace kestrelon::tree
