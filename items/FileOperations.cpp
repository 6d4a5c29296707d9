#include "items/FileOperations.h"

#include <shellapi.h>

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/base/File.h"
#include "items/EditItem.h"
#include "items/ItemCommands.h"
#include "items/ItemInformation.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "store/SharedConnection.h"
#include "ui/win/Boxes.h"
#include "ui/win/CommandsOff.h"
#include "ui/win/Form.h"

namespace kestrelon::items {
namespace {

// Off while one of the commands works, as the import of a folder has them.
constexpr std::initializer_list<const wchar_t*> kMenus = {L"meu_file", L"meu_Category", L"meu_List",
                                                          L"meu_misc", L"meu_help"};

// The shell shows no error boxes of its own in any of the three.
constexpr WORD kCopyFlags = FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_NOERRORUI;            // 0x610
constexpr WORD kMoveFlags = FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_NOERRORUI;                 // 0x450
constexpr WORD kDeleteFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_NOERRORUI;  // 0x454

// A selected row, as it was when the command began: the list may change while messages are handled.
struct Item {
  std::size_t row;
  std::wstring fileIndex, path;
  bool operator==(const Item&) const = default;
};

std::vector<Item> SelectedItems(const win::ListView& list) {
  std::vector<Item> items;
  for (const std::size_t row : list.SelectedRows()) {
    const win::ListRow& item = list.Rows()[row];
    items.push_back({row, std::wstring(item.Tag()), std::wstring(item.Text(kPathColumn))});
  }
  return items;
}

// The row that shows the item now, which is most often the one it was in.
std::optional<std::size_t> RowOf(const win::ListView& list, const Item& item) {
  const std::vector<win::ListRow>& rows = list.Rows();
  if (item.row < rows.size() && rows[item.row].Tag() == item.fileIndex) return item.row;
  return RowOfItem(list, item.fileIndex);
}

// To the shell a wildcard stands for every file that fits, and what follows a NUL is another file. A path
// that the user edited may hold them; it then names no file.
bool NamesOneFile(std::wstring_view path) {
  return !path.empty() && path.find_first_of(std::wstring_view(L"*?\0", 3)) == std::wstring_view::npos;
}

bool IsThere(const std::wstring& path) {
  return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// The folder that the user chooses, ending in a backslash; empty when there is none to work with.
std::wstring ChooseFolder(win::MainParts& parts) {
  const HWND owner = parts.form.Handle();
  std::wstring folder = BrowseForFolder(parts.world, owner);
  if (!folder.empty() && !WriteTest(folder)) {
    win::Inform(parts.world, owner, lang::Message(parts.program, lang::kCannotWriteToFolder),
                parts.program.productName);
    folder.clear();
  }
  return folder;
}

// Runs `act` for each item whose server answers, with "Copying : " or the like and the path in panel 1. The
// window lives on meanwhile with its commands off; a request to close it ends the work after the present
// item. Returns false then.
template <class Act>
bool ForEachFile(win::MainParts& parts, const std::vector<Item>& items, const wchar_t* doing, Act act) {
  const win::Finally categoryAgain([&] {
    const win::TreeNode* const selected = parts.TreeView1.Selected();
    parts.StatusBar1.SetPanelText(1, L"Category : " + (selected ? selected->Text() : std::wstring()));
  });
  win::ProgressText progress(parts.StatusBar1);
  for (const Item& item : items) {
    if (ServerAnswers(parts.world, item.path)) {
      progress.Show(doing + item.path);
      if (NamesOneFile(item.path)) act(item);
    }
    win::DoEvents();
    if (parts.closeRequested) return false;
  }
  return true;
}

// The path after the move; nothing when the file was not moved.
std::optional<std::wstring> MoveFileTo(win::MainParts& parts, const std::wstring& path,
                                       const std::wstring& folder) {
  std::wstring newPath = folder + FileNameOfPath(path);
  // A file that is not there counts as moved on some systems; one that is in the folder already would be
  // moved onto itself.
  if (!IsThere(path) || EqualNoCase(path, newPath)) return std::nullopt;
  if (!parts.world.shellFileOperation(parts.form.Handle(), FO_MOVE, path, folder, kMoveFlags)) {
    return std::nullopt;
  }
  if (IsThere(path) || !IsThere(newPath)) return std::nullopt;
  return newPath;
}

void MoveItem(win::MainParts& parts, store::SharedConnection& connection, const Item& item,
              const std::wstring& folder) {
  const std::optional<std::wstring> newPath = MoveFileTo(parts, item.path, folder);
  if (!newPath) return;
  bool recorded = false;
  const win::Finally moveBack([&] {
    // The table still has the old path.
    if (!recorded) {
      parts.world.shellFileOperation(parts.form.Handle(), FO_MOVE, *newPath, FolderOfPath(item.path),
                                     kMoveFlags);
    }
  });
  connection.Execute(L"UPDATE FTable SET LocalFile=" + store::Quoted(*newPath) + L" WHERE FileIndex=" +
                     store::Quoted(item.fileIndex));
  recorded = true;
  win::MarkChanged(parts);
  if (const auto row = RowOf(parts.ListView1, item)) parts.ListView1.SetText(*row, kPathColumn, *newPath);
}

// Takes the items out of the table and the list, from the last to the first. After a failure those are gone
// from both that it had come to.
void DeleteItems(win::MainParts& parts, store::SharedConnection& connection, const std::vector<Item>& items,
                 bool deleteFiles) {
  auto item = items.rbegin();
  const win::Finally removeRows([&] {
    std::vector<std::size_t> rows;
    for (auto gone = items.rbegin(); gone != item; ++gone) {
      if (const auto row = RowOf(parts.ListView1, *gone)) rows.push_back(*row);
    }
    std::sort(rows.begin(), rows.end());
    parts.ListView1.RemoveRows(rows);
    win::ShowObjectCount(parts);
    EnableItemCommands(parts);
  });
  for (; item != items.rend(); ++item) {
    if (deleteFiles && NamesOneFile(item->path)) {
      parts.world.shellFileOperation(parts.form.Handle(), FO_DELETE, item->path, L"", kDeleteFlags);
    }
    // Whether or not the file went.
    connection.Execute(L"DELETE FROM FTable WHERE FileIndex=" + store::Quoted(item->fileIndex));
    win::MarkChanged(parts);
  }
}

void DeleteSelected(win::MainParts& parts) {
  const HWND owner = parts.form.Handle();
  const std::wstring& title = parts.program.productName;
  const std::vector<Item> items = SelectedItems(parts.ListView1);
  if (items.empty()) {
    win::Inform(parts.world, owner, lang::Message(parts.program, lang::kNoItemSelected), title);
    return;
  }
  const auto yes = [&](const lang::MessageText& question) {
    return parts.world.messageBox(owner, lang::Message(parts.program, question), title,
                                  MB_YESNO | MB_ICONQUESTION) == IDYES;
  };
  if (!yes(lang::kDeleteItemsQuestion)) return;
  store::Opened connection(parts.connection);
  const bool deleteFiles = yes(lang::kDeleteFilesQuestion);
  // A tool window can show another category or select another row behind the questions: these were about what
  // the user saw then.
  if (SelectedItems(parts.ListView1) != items) return;
  const win::CommandsOff off(parts, kMenus);
  DeleteItems(parts, *connection, items, deleteFiles);
  connection.Close();
}

}  // namespace

void meu_destinationdirectory_Click(win::MainParts& parts) {
  const auto row = parts.ListView1.SelectedRow();
  if (!row) return;
  // The blank before the comma is part of the command line as it has always been.
  parts.world.startProgram(
      L"explorer.exe /n,/select ," + std::wstring(parts.ListView1.Rows()[*row].Text(kPathColumn)),
      SW_SHOWNOACTIVATE);
}

void meu_Copyto_Click(win::MainParts& parts) {
  const std::vector<Item> items = SelectedItems(parts.ListView1);
  if (items.empty()) return;
  win::InRoutine(parts.world, parts.form.Handle(), L"meu_Copyto_Click Error:", false, [&] {
    const std::wstring folder = ChooseFolder(parts);
    if (folder.empty()) return false;
    const win::CommandsOff off(parts, kMenus);
    const bool finished = ForEachFile(parts, items, L"Copying : ", [&](const Item& item) {
      parts.world.shellFileOperation(parts.form.Handle(), FO_COPY, item.path, folder, kCopyFlags);
    });
    if (!finished) return false;
    win::Inform(parts.world, parts.form.Handle(), lang::Message(parts.program, lang::kOperationFinished),
                parts.program.productName);
    return true;
  });
}

void meu_Moveto_Click(win::MainParts& parts) {
  const std::vector<Item> items = SelectedItems(parts.ListView1);
  if (items.empty()) return;
  win::InRoutine(parts.world, parts.form.Handle(), L"meu_Moveto_Click Error:", false, [&] {
    const std::wstring folder = ChooseFolder(parts);
    if (folder.empty()) return false;
    store::Opened connection(parts.connection);
    const win::CommandsOff off(parts, kMenus);
    const bool finished = ForEachFile(parts, items, L"Moving : ",
                                      [&](const Item& item) { MoveItem(parts, *connection, item, folder); });
    connection.Close();
    return finished;
  });
}

void meu_Delete_Click(win::MainParts& parts) {
  win::InRoutine(parts.world, parts.form.Handle(), L"meu_Delete_Click Error:", false, [&] {
    DeleteSelected(parts);
    return true;
  });
}

}  // namespace kestrelon::items
