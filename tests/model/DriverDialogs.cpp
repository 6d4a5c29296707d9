// The driver in the dialogs of items, and with files that come from outside.

#include "app/base/Win32.h"

#include <commctrl.h>
#include <ole2.h>

#include <algorithm>
#include <cstring>

#include "app/base/File.h"
#include "import/inputDialog.h"
#include "items/FileListDataObject.h"
#include "tests/import/ClipboardContents.h"
#include "tests/model/Driver.h"
#include "tests/support/KeyInput.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::model {
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
        test::PumpUntil([&] { return dialog.ListView1().Count() == rows; });
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

}  // namespace kestrelon::model
