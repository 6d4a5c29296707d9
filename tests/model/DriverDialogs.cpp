// The driver in dialogs, with files that come from outside, with slots.

#include "app/base/Win32.h"

#include <commctrl.h>
#include <ole2.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "app/base/File.h"
#include "import/inputDialog.h"
#include "items/FileListDataObject.h"
#include "jet/Ado.h"
#include "store/SharedConnection.h"
#include "tests/import/ClipboardContents.h"
#include "tests/model/Driver.h"
#include "tests/support/KeyInput.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::model {
namespace {

void Write(const std::wstring& path, const std::string& bytes) {
  std::ofstream(std::filesystem::path(path), std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// Categories that make no tree, in a file that is sound otherwise.
void AddRows(const std::wstring& path, const std::vector<Tree::Line>& lines) {
  jet::Connection connection;
  connection.SetConnectionString(u"Data Source=" + store::ToEngine(path));
  connection.Open();
  jet::Recordset rows;
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  for (const Tree::Line& line : lines) {
    rows.AddNew();
    rows.SetField(u"parent", store::ToEngine(line[0]));
    rows.SetField(u"key", store::ToEngine(line[1]));
    rows.SetField(u"text", store::ToEngine(line[2]));
    rows.Update();
  }
  rows.Close();
  connection.Close();
}

}  // namespace

void Driver::Imports(const Plan& plan) {
  switch (plan.kind) {
    case Kind::kOpenDialog:
      if (plan.paths.size() == 1) program_.openFiles = plan.paths.front();
      if (plan.paths.size() > 1) {
        const std::wstring folder = FolderOfPath(plan.paths.front());
        program_.openFiles = folder.substr(0, folder.size() - 1);
        for (const std::wstring& path : plan.paths) program_.openFiles += L'\0' + FileNameOfPath(path);
      }
      Command(L"meu_Input_Dialog");
      break;
    case Kind::kDropOnList: DropOn(false, {20, 60}, plan.paths); break;
    case Kind::kDropOnCategory: DropOn(true, PointOf(plan.key), plan.paths); break;
    case Kind::kMoveItems:
      program_.Parts().internalDrag = program_.Parts().listDrag = true;
      DropOn(true, PointOf(plan.key), {L"C:\\dragged.txt"});
      program_.Parts().internalDrag = program_.Parts().listDrag = false;
      break;
    case Kind::kClipboard: Clipboard(plan); break;
    case Kind::kImportFolder: Command(L"meu_AddDirectory"); break;
    default: break;
  }
}

void Driver::DropOn(bool tree, POINT client, const std::vector<std::wstring>& paths) {
  const win::ComPtr<IDataObject> data = items::MakeFileListDataObject(paths);
  ClientToScreen(tree ? TreeWindow() : ListWindow(), &client);
  IDropTarget* const target =
      tree ? program_.form->TreeDrops().Object() : program_.form->ListDrops().Object();
  DWORD effect = DROPEFFECT_COPY;
  target->DragEnter(data.get(), MK_LBUTTON, {client.x, client.y}, &effect);
  effect = DROPEFFECT_COPY;
  target->Drop(data.get(), 0, {client.x, client.y}, &effect);
  win::DoEvents();
}

void Driver::Clipboard(const Plan& plan) {
  if (!plan.boxes.empty()) {
    Command(L"meu_Imput_Clipboard");
    return;
  }
  test::CopyFiles(plan.paths);
  InDialog(
      L"inputDialog", [&] { Command(L"meu_Imput_Clipboard"); },
      [&](win::Form& form) {
        auto& dialog = dynamic_cast<imports::inputDialog&>(form);
        const std::size_t rows = plan.ticked.size();
        test::PumpUntil([&] { return dialog.ListView1().Count() == rows; }, 1000);
        if (dialog.ListView1().Count() != rows) program_.Fault("the files of the clipboard are not offered");
        std::size_t left = rows;
        for (std::size_t row = 0; row < std::min(rows, dialog.ListView1().Count()); ++row) {
          dialog.ListView1().SetTicked(row, plan.ticked[row]);
          left -= plan.ticked[row];
        }
        Press(dialog, L"Command1", 0);
        if (dialog.ListView1().Count() != left) program_.Fault("inserted files are still offered");
      });
  test::EmptyTheClipboard();
}

void Driver::Items(const Plan& plan) {
  switch (plan.kind) {
    case Kind::kDeleteItems:
      SetFocus(ListWindow());
      PressToolbar(3);
      break;
    case Kind::kAliasOfItem: Alias(plan); break;
    case Kind::kAliasAsFileName: Command(L"meu_Definenameasfilename"); break;
    case Kind::kCommentOfItem: Comment(plan); break;
    case Kind::kProperties: Properties(plan); break;
    case Kind::kChangeCategory: ChangeCategory(plan); break;
    case Kind::kMoveToFolder: Command(L"meu_Moveto"); break;
    case Kind::kSendToFolder: Command(L"meu_Copyto"); break;
    default: break;
  }
}

void Driver::Alias(const Plan& plan) {
  InDialog(
      L"FileRename", [&] { Command(L"meu_rename"); },
      [&](win::Form& form) {
        Type(ControlOf(form, L"Text1"), plan.text);
        Press(form, L"Command1", static_cast<int>(plan.way));
      });
}

void Driver::Comment(const Plan& plan) {
  if (!program_.Parts().commentShown) Command(L"meu_comment");
  win::Form* const window = FormNamed(L"Filelist_Comment");
  if (!window) {
    program_.Fault("no comment window");
    return;
  }
  Type(ControlOf(*window, L"Text1"), plan.text);
  if (plan.way < 2) Press(*window, L"Command1", 0);
  win::DoEvents();
  if (plan.way != 1) Command(L"meu_comment");
}

void Driver::Properties(const Plan& plan) {
  InDialog(
      L"FilePropterty", [&] { Command(L"meu_Properties"); },
      [&](win::Form& form) {
        for (int i = 0; i < 4; ++i)
          Type(ControlOf(form, L"Text2", i), plan.fields[static_cast<std::size_t>(i)]);
        Press(form, L"Command2", static_cast<int>(plan.way));
      });
}

void Driver::ChangeCategory(const Plan& plan) {
  InDialog(
      L"Changecategory", [&] { Command(L"meu_Changecategory"); },
      [&](win::Form& form) {
        const HWND tree = ControlOf(form, L"TreeView1");
        if (plan.way == 0) Press(form, L"Command1", 1);
        if (plan.way == 1 && TreeView_GetSelection(tree) != nullptr)
          program_.Fault("a category is selected that nobody chose");
        if (plan.way == 1) Press(form, L"Command1", 0);  // is off, so nothing happens
        if (plan.way < 2) return;
        std::vector<HTREEITEM> waiting{TreeView_GetRoot(tree)};
        while (!waiting.empty()) {
          const HTREEITEM item = waiting.back();
          waiting.pop_back();
          if (item == nullptr) continue;
          waiting.push_back(TreeView_GetNextSibling(tree, item));
          waiting.push_back(TreeView_GetChild(tree, item));
          TVITEMW info{};
          info.mask = TVIF_PARAM | TVIF_HANDLE;
          info.hItem = item;
          SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&info));
          if (reinterpret_cast<win::TreeNode*>(info.lParam)->Key() != plan.key) continue;
          TreeView_EnsureVisible(tree, item);
          RECT text{};
          std::memcpy(&text, &item, sizeof item);
          SendMessageW(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&text));
          const POINT point{text.left + 2, (text.top + text.bottom) / 2};
          test::SendMouse(tree, WM_LBUTTONDOWN, point, MK_LBUTTON);
          test::SendMouse(tree, WM_LBUTTONUP, point);
          Press(form, L"Command1", 0);
          return;
        }
        program_.Fault("the dialog does not show the category");
      });
}

void Driver::Dialogs(const Plan& plan, const State& after) {
  switch (plan.kind) {
    case Kind::kLanguage:
      Command(plan.text == L"English"     ? L"meu_English"
              : plan.text == L"Chinese_S" ? L"meu_Chinese_Simplified"
                                          : L"meu_Chinese_Traditional");
      break;
    case Kind::kSave:
      SlotDialog(plan, true);
      if (program_.Parts().settings.Read(L"Data" + std::to_wstring(plan.slot)) != after.labels[plan.slot])
        program_.Fault("the slot has another label than " + Narrow(after.labels[plan.slot]));
      break;
    case Kind::kLoad: SlotDialog(plan, false); break;
    case Kind::kLoadDamaged: LoadDamaged(plan); break;
    case Kind::kExit: Exit(plan); break;
    default: break;
  }
}

void Driver::SlotDialog(const Plan& plan, bool save) {
  InDialog(
      save ? L"Save" : L"Load", [&] { Command(save ? L"meu_SaveDatabase" : L"meu_LoadDatabase"); },
      [&](win::Form& form) {
        const bool left = save ? plan.way == 2 : plan.way == 1;
        if (!left) Press(form, L"Command2", static_cast<int>(plan.slot));
      });
}

void Driver::LoadDamaged(const Plan& plan) {
  const std::wstring slot = program_.DataFile(L"Data" + std::to_wstring(plan.slot) + L".dat");
  const std::string bytes = BytesOf(slot);
  switch (plan.damage) {
    case Damage::kCut: Write(slot, bytes.substr(0, bytes.size() / 2)); break;
    case Damage::kText: Write(slot, "no database"); break;
    case Damage::kNoParent: AddRows(slot, {{L"0_", L"first_", L"x"}, {L"nowhere_", L"lost_", L"y"}}); break;
    case Damage::kKeyTwice: AddRows(slot, {{L"0_", L"twin_", L"x"}, {L"0_", L"twin_", L"y"}}); break;
    default: AddRows(slot, {{L"b_", L"a_", L"x"}, {L"a_", L"b_", L"y"}}); break;
  }
  SlotDialog(plan, false);
  Write(slot, bytes);
}

void Driver::Exit(const Plan& plan) {
  const auto close = [&] {
    SendMessageW(program_.form->Handle(), WM_CLOSE, 0, 0);
    win::DoEvents();
  };
  if (plan.boxes.size() > 1) {
    // Yes: the dialog is gone with the program.
    const test::OnWindow dialog(
        [](HWND window) {
          const auto* found = dynamic_cast<win::Form*>(win::Window::Of(window));
          return found && found->Name() == L"Save";
        },
        [&](HWND window) {
          Press(*dynamic_cast<win::Form*>(win::Window::Of(window)), L"Command2", static_cast<int>(plan.slot));
          if (IsWindow(window)) SendMessageW(window, WM_CLOSE, 0, 0);
        });
    close();
    if (!dialog.Done()) program_.Fault("the Save dialog did not come up at the end");
  } else {
    close();
  }
  const bool stays = plan.way == 0;
  if (stays != (IsWindow(program_.form->Handle()) != FALSE))
    program_.Fault(stays ? "the window went" : "the window stayed");
  if (stays) return;
  program_.End();
  program_.Start();
}

}  // namespace kestrelon::model
