#include "items/FileOperations.h"

#include <shellapi.h>

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/base/File.h"
#include "app/base/FileNames.h"
#include "items/EditItem.h"
#include "items/ItemCommands.h"
#include "items/ItemInformation.h"
#include "items/ShellFiles.h"
#include "items/ShowData.h"
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
  std::optional<std::wstring> file;  // what the shell is given for the path; nothing when it names no file
  bool operator==(const Item&) const = default;
};

std::vector<Item> SelectedItems(const win::ListView& list) {
  std::vector<Item> items;
  for (const std::size_t row : list.SelectedRows()) {
    const win::ListRow& item = list.Rows()[row];
    items.push_back({row, std::wstring(item.Tag()), std::wstring(item.Text(kPathColumn)),
                     ShellPathOf(item.Text(kPathColumn))});
  }
  return items;
}

// The row that shows the item now, which is most often the one it was in.
std::optional<std::size_t> RowOf(const win::ListView& list, const Item& item) {
  const std::vector<win::ListRow>& rows = list.Rows();
  if (item.row < rows.size() && rows[item.row].Tag() == item.fileIndex) return item.row;
  return RowOfItem(list, item.fileIndex);
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

// Runs `act` for each item whose server answers, with "Copying : " or the like and the path in panel 1; it is
// given the file in the form that the shell takes, and returns whether to go on. The window lives on
// meanwhile with its commands off; a request to close it ends the work after the present item. Returns false
// then.
template <class Act>
bool ForEachFile(win::MainParts& parts, const std::vector<Item>& items, const wchar_t* doing, Act act) {
  const win::Finally categoryAgain([&] {
    const win::TreeNode* const selected = parts.TreeView1.Selected();
    parts.StatusBar1.SetPanelText(1, L"Category : " + (selected ? selected->Text() : std::wstring()));
  });
  win::ProgressText progress(parts.StatusBar1);
  for (const Item& item : items) {
    bool goOn = true;
    if (ServerAnswers(parts.world, item.path)) {
      progress.Show(doing + item.path);
      if (item.file) goOn = act(item, *item.file);
    }
    win::DoEvents();
    if (parts.closeRequested) return false;
    if (!goOn) break;
  }
  return true;
}

// What the user answers: IDYES to replace, IDNO to leave this file, IDCANCEL to leave it and those that
// follow.
int AskToReplace(win::MainParts& parts, const std::wstring& path) {
  return parts.world.messageBox(
      parts.form.Handle(),
      FileNameOfPath(path) + L"\n\n" + lang::Message(parts.program, lang::kReplaceFileQuestion),
      parts.program.productName, MB_YESNOCANCEL | MB_ICONQUESTION | MB_DEFBUTTON2);
}

// True when the file is at the new path then, and no longer at the old one.
bool MoveFileTo(win::MainParts& parts, const std::wstring& path, const std::wstring& folder,
                const std::wstring& newPath) {
  return parts.world.shellFileOperation(parts.form.Handle(), FO_MOVE, path, folder, kMoveFlags) &&
         !IsThere(path) && IsThere(newPath);
}

// One "Move to folder".
struct Move {
  win::MainParts& parts;
  store::SharedConnection& connection;  // open
  const std::wstring& folder;
  TooLongPaths tooLong;
};

// False when no other file is to be moved.
bool MoveItem(Move& move, const Item& item, const std::wstring& file) {
  win::MainParts& parts = move.parts;
  const std::wstring target = move.folder + FileNameOfPath(file);
  // A file that is not there counts as moved on some systems; one that is in the folder already, whatever its
  // path is spelled like, would be moved onto itself.
  if (move.tooLong.Refuse(file, target) || !IsThere(file) || IsSameFile(file, target)) return true;
  if (IsThere(target)) {
    const int answer = AskToReplace(parts, target);
    if (answer != IDYES) return answer == IDNO;
  }
  // Before the file is moved: a text that no statement takes is none to begin with.
  const std::wstring update = L"UPDATE FTable SET LocalFile=",
                     where = L" WHERE FileIndex=" + store::Quoted(item.fileIndex);
  const std::wstring statement = update + store::Quoted(target) + where,
                     back = update + store::Quoted(item.path) + where;
  if (!MoveFileTo(parts, file, move.folder, target)) return true;
  bool recorded = false;
  const win::Finally moveBack([&] {
    // The table still has the old path.
    if (!recorded) {
      parts.world.shellFileOperation(parts.form.Handle(), FO_MOVE, target, FolderOfPath(file), kMoveFlags);
    }
  });
  move.connection.Execute(statement);
  try {
    // At once, not at the end of the command: after a crash the table is to say where the files are.
    move.connection.Write();
  } catch (...) {
    win::Quietly([&] { move.connection.Execute(back); });
    throw;
  }
  recorded = true;
  win::MarkChanged(parts);
  if (const auto row = RowOf(parts.ListView1, item)) parts.ListView1.SetText(*row, kPathColumn, target);
  return true;
}

// Takes the items out of the table and the list, from the last to the first. After a failure those are gone
// from both that it had come to.
void DeleteItems(win::MainParts& parts, store::SharedConnection& connection, const std::vector<Item>& items,
                 bool deleteFiles, TooLongPaths& tooLong) {
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
    const std::wstring statement = L"DELETE FROM FTable WHERE FileIndex=" + store::Quoted(item->fileIndex);
    if (deleteFiles && item->file && !tooLong.Refuse(*item->file)) {
      parts.world.shellFileOperation(parts.form.Handle(), FO_DELETE, *item->file, L"", kDeleteFlags);
    }
    // Whether or not the file went.
    connection.Execute(statement);
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
  const auto yes = [&](const lang::MessageText& question, UINT flags) {
    return parts.world.messageBox(owner, lang::Message(parts.program, question), title,
                                  MB_YESNO | MB_ICONQUESTION | flags) == IDYES;
  };
  if (!yes(lang::kDeleteItemsQuestion, 0)) return;
  store::Opened connection(parts.connection);
  // A second Enter, pressed in haste, leaves the files alone.
  const bool deleteFiles = yes(lang::kDeleteFilesQuestion, MB_DEFBUTTON2);
  // A tool window can show another category or select another row behind the questions: these were about what
  // the user saw then.
  if (SelectedItems(parts.ListView1) != items) return;
  const win::CommandsOff off(parts, kMenus);
  TooLongPaths tooLong;
  bool written = false;
  const win::Finally showWhatIsThere([&] {
    if (!written) ShowData(parts, win::CurrentCategory(parts));
  });
  DeleteItems(parts, *connection, items, deleteFiles, tooLong);
  connection.Close();
  written = true;
  tooLong.Tell(parts);
}

}  // namespace

void meu_destinationdirectory_Click(win::MainParts& parts) {
  const auto row = parts.ListView1.SelectedRow();
  if (!row) return;
  // Given anything else the file manager shows a folder of its own choice.
  const std::optional<std::wstring> file = ShellPathOf(parts.ListView1.Rows()[*row].Text(kPathColumn));
  if (!file) {
    win::Inform(parts.world, parts.form.Handle(), lang::Message(parts.program, lang::kCannotOpenFile),
                parts.program.productName);
    return;
  }
  TooLongPaths tooLong;
  if (tooLong.Refuse(*file)) {
    tooLong.Tell(parts);
    return;
  }
  // The blank before the comma is part of the command line as it has always been.
  parts.world.startProgram(L"explorer.exe /n,/select ," + *file, SW_SHOWNOACTIVATE);
}

void meu_Copyto_Click(win::MainParts& parts) {
  const std::vector<Item> items = SelectedItems(parts.ListView1);
  if (items.empty()) return;
  win::InRoutine(parts.world, parts.form.Handle(), L"meu_Copyto_Click Error:", false, [&] {
    const std::wstring folder = ChooseFolder(parts);
    if (folder.empty()) return false;
    const win::CommandsOff off(parts, kMenus);
    TooLongPaths tooLong;
    const bool finished =
        ForEachFile(parts, items, L"Copying : ", [&](const Item&, const std::wstring& file) {
          if (!tooLong.Refuse(file, folder + FileNameOfPath(file))) {
            parts.world.shellFileOperation(parts.form.Handle(), FO_COPY, file, folder, kCopyFlags);
          }
          return true;
        });
    tooLong.Tell(parts);
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
    Move move{parts, *connection, folder, {}};
    const bool finished =
        ForEachFile(parts, items, L"Moving : ",
                    [&](const Item& item, const std::wstring& file) { return MoveItem(move, item, file); });
    connection.Close();
    move.tooLong.Tell(parts);
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
