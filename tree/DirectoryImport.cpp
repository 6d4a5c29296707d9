#include "tree/DirectoryImport.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "app/base/File.h"
#include "app/base/GetFileInfo.h"
#include "import/AddFiles.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "tree/CategoryKeys.h"
#include "tree/FolderLists.h"
#include "tree/NodeCommands.h"
#include "ui/win/Boxes.h"
#include "ui/win/Form.h"

namespace kestrelon::tree {
namespace {

using ItemKeys = std::unordered_set<std::wstring>;

// A key that no category has, and that no item has in its index, which may be left of a category that is
// gone: the items of the new one are numbered from 1 without asking whether a number is taken. An import
// makes thousands of categories within a second, so that two of its keys coincide now and then, and the tree
// would refuse the second: another one is drawn. A clock that stands still and a generator that repeats
// itself end the search.
std::wstring FreeKey(win::MainParts& parts, const ItemKeys& used) {
  constexpr int kDraws = 100;
  for (int draw = 0; draw < kDraws; ++draw) {
    std::wstring key = GetNextKey(parts);
    // Otherwise GetNextKey failed, and has said so: what it has built by then is no key.
    if (!key.ends_with(L'_')) break;
    if (!parts.TreeView1.Find(key) && !used.contains(key)) return key;
  }
  throw std::runtime_error("No key could be made for a category.");
}

// `parent` null: a top-level category. Returns its key.
std::wstring AddCategory(win::MainParts& parts, const ItemKeys& used, win::TreeNode* parent,
                         const std::wstring& folder) {
  std::wstring key = FreeKey(parts, used);
  parts.TreeView1.Add(parent, parent ? win::Relationship::kChild : win::Relationship::kLast, key,
                      LastPathPart(folder), kCategoryImage, kSelectedCategoryImage);
  return key;
}

void AddItems(store::SharedConnection& connection, const std::wstring& key, const std::wstring& folder,
              const std::vector<std::wstring>& names, const std::wstring& insertTime) {
  std::wstring path = WithBackslash(folder);
  const std::size_t start = path.size();
  std::int64_t number = 0;
  imports::ItemRecord record;
  for (const std::wstring& name : names) {
    path.resize(start);
    path += name;
    imports::FillRecord(record, key, ++number, path, insertTime);
    connection.Execute(imports::InsertStatement(record));
  }
}

std::wstring Now(const win::MainParts& parts) { return DateTimeText(parts.world.localTime()); }

std::wstring EndText(const Program& program, const LeftOut& leftOut) {
  std::wstring text = lang::Message(program, lang::kOperationFinished);
  if (leftOut.Count() == 0) return text;
  return text + L"\n\n" + lang::Message(program, lang::kSkippedAtImport) + std::to_wstring(leftOut.Count()) +
         leftOut.Lines();
}

// False when the import ended early.
bool ImportSubFolders(win::MainParts& parts, const ItemKeys& used, const ImportedFolder& top,
                      LeftOut& leftOut) {
  ::UpdateWindow(parts.TreeView1.Handle());  // what a dialog covered would stay blank
  const win::RedrawOff still(parts.TreeView1.Handle());
  store::Opened connection(parts.connection);
  win::ProgressText progress(parts.StatusBar1);
  DirectoryImport state{parts, *connection, progress, leftOut, used};
  const bool finished = SplitNode(state, top);
  connection.Close();
  return finished;
}

}  // namespace

void meu_AddDirectory_Click(win::MainParts& parts) {
  {
    const win::CommandsOff off(parts, {L"meu_file", L"meu_Category", L"meu_List", L"meu_misc", L"meu_help"});
    AddDirectory(parts);
  }
  const std::wstring key = win::CurrentCategory(parts);
  const win::TreeNode* const current = parts.TreeView1.Find(key);
  win::SetCurrentCategory(parts, current ? current->FullPath() : std::wstring(), key);
  win::MarkChanged(parts);
}

void AddDirectory(win::MainParts& parts) {
  const HWND owner = parts.form.Handle();
  win::InRoutine(parts.world, owner, L"AddDirectory_Error", false, [&] {
    // As the picker gives it: with a backslash at its end every folder would count as a root without a name.
    const std::wstring chosen = CutAtNul(parts.world.browseForFolder(owner).value_or(std::wstring()));
    if (chosen.empty()) return true;
    LeftOut leftOut;
    ItemKeys used;
    ImportedFolder top{chosen, {}, {}};
    {
      store::Opened connection(parts.connection);
      used = imports::CategoriesOfItemNumbers(*connection);
      top.key = AddCategory(parts, used, parts.TreeView1.Find(win::CurrentCategory(parts)), chosen);
      FolderLists lists = ReadFolder(chosen);
      leftOut.Add(lists.leftOut);
      AddItems(*connection, top.key, chosen, lists.File1, Now(parts));
      connection.Close();
      top.subFolders = std::move(lists.Dir1);
    }
    const bool finished = ImportSubFolders(parts, used, top, leftOut);
    ::UpdateWindow(parts.TreeView1.Handle());
    if (!finished) return false;
    if (win::TreeNode* const category = parts.TreeView1.Find(top.key)) {
      parts.TreeView1.EnsureVisible(*category);
    }
    win::Inform(parts.world, owner, EndText(parts.program, leftOut), parts.program.productName);
    return true;
  });
}

std::wstring LastPathPart(std::wstring_view path) { return FileNameOfPath(path); }

void LeftOut::Add(const std::vector<std::wstring>& paths) {
  count_ += paths.size();
  for (const std::wstring& path : paths) {
    if (first_.size() == kShown) break;
    first_.push_back(path);
  }
}

std::wstring LeftOut::Lines() const {
  std::wstring lines;
  for (const std::wstring& path : first_) lines += L'\n' + path;
  if (count_ > first_.size()) lines += L"\n...";
  return lines;
}

bool SplitNode(DirectoryImport& state, const ImportedFolder& folder) {
  win::MainParts& parts = state.parts;
  return win::InRoutine(parts.world, parts.form.Handle(), L"SSplitNode_Error", false, [&] {
    if (folder.subFolders.empty()) return true;
    const std::wstring insertTime = Now(parts);
    std::vector<ImportedFolder> added;
    for (const std::wstring& path : folder.subFolders) {
      // By its key each time: messages were handled since the last one.
      win::TreeNode* const parent = parts.TreeView1.Find(folder.key);
      if (!parent) throw win::ControlError(win::kElementNotFound, "Element not found");
      std::wstring key = AddCategory(parts, state.itemKeys, parent, path);
      FolderLists lists = ReadFolder(path);
      state.leftOut.Add(lists.leftOut);
      AddItems(state.connection, key, path, lists.File1, insertTime);
      added.push_back({path, std::move(key), std::move(lists.Dir1)});
      state.progress.ShowInPassing(L"Add Node -> " + path);
      win::DoEvents();
      if (parts.closeRequested) return false;
    }
    return std::all_of(added.begin(), added.end(),
                       [&](const ImportedFolder& subFolder) { return SplitNode(state, subFolder); });
  });
}

}  // namespace kestrelon::tree
