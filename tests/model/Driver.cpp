// The driver's hands, and what it does in the main window itself.

#include "tests/model/Driver.h"

#include <commctrl.h>
#include <ole2.h>

#include <algorithm>

#include "app/base/File.h"
#include "tests/support/Dialogs.h"
#include "tests/support/KeyInput.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::model {

using test::OnWindow;

void Driver::Do(const Plan& plan, const State& after) {
  if (plan.skipped) return;
  program_.boxes.assign(plan.boxes.begin(), plan.boxes.end());
  program_.folder = plan.folder;
  program_.openFiles.clear();
  Categories(plan);
  Imports(plan);
  List(plan);
  Items(plan);
  Slots(plan, after);
  win::DoEvents();
  for (const Box& box : program_.boxes)
    program_.Fault("an expected box did not come up, of kind " + std::to_string(static_cast<int>(box.kind)));
  program_.boxes.clear();
}

void Driver::Command(std::wstring_view name) {
  win::Menus& menus = program_.Parts().menus;
  if (!menus.IsEnabled(name)) {
    program_.Fault("the command is switched off: " + Narrow(name));
    return;
  }
  SendMessageW(program_.form->Handle(), WM_COMMAND, MAKEWPARAM(menus.IdOf(name), 0), 0);
  win::DoEvents();
}

void Driver::PressToolbar(int button) {
  const HWND toolbar = program_.Parts().Toolbar1.Handle();
  TBBUTTON info{};
  SendMessageW(toolbar, TB_GETBUTTON, static_cast<WPARAM>(button) - 1, reinterpret_cast<LPARAM>(&info));
  if ((info.fsState & TBSTATE_ENABLED) == 0)
    program_.Fault("button " + std::to_string(button) + " is switched off");
  SendMessageW(program_.form->Handle(), WM_COMMAND, MAKEWPARAM(info.idCommand, 0),
               reinterpret_cast<LPARAM>(toolbar));
  win::DoEvents();
}

void Driver::Click(HWND window, POINT point, bool right, WPARAM keys) {
  const LPARAM where = MAKELPARAM(point.x, point.y);
  PostMessageW(window, right ? WM_RBUTTONDOWN : WM_LBUTTONDOWN, (right ? MK_RBUTTON : MK_LBUTTON) | keys,
               where);
  PostMessageW(window, right ? WM_RBUTTONUP : WM_LBUTTONUP, keys, where);
  win::DoEvents();
}

void Driver::OpenBranches() {
  // By the control alone, which tells nobody of it.
  win::TreeView& tree = program_.Parts().TreeView1;
  for (std::size_t index = 1; index <= tree.Count(); ++index) tree.Expand(tree.At(index));
}

POINT Driver::PointOf(const std::wstring& key) {
  win::TreeView& tree = program_.Parts().TreeView1;
  win::TreeNode* const node = tree.Find(key);
  if (!node) {
    program_.Fault("there is no category " + Narrow(key));
    return EmptyTreePoint();
  }
  tree.EnsureVisible(*node);
  const POINT point = PointInSight(key);
  if (tree.HitTest(point) != node) program_.Fault("the category cannot be reached: " + Narrow(key));
  return point;
}

POINT Driver::PointInSight(const std::wstring& key) {
  win::TreeView& tree = program_.Parts().TreeView1;
  const RECT text = tree.TextRectangle(*tree.Find(key));
  return {text.left + 2, (text.top + text.bottom) / 2};
}

POINT Driver::PointOfRow(std::size_t row) {
  SendMessageW(ListWindow(), LVM_ENSUREVISIBLE, row, FALSE);
  RECT bounds{};
  ListView_GetItemRect(ListWindow(), static_cast<int>(row), &bounds, LVIR_BOUNDS);
  RECT inner;
  GetClientRect(ListWindow(), &inner);
  return {inner.right / 2, (bounds.top + bounds.bottom) / 2};
}

POINT Driver::EmptyTreePoint() {
  RECT inner;
  GetClientRect(TreeWindow(), &inner);
  return {inner.right / 2, inner.bottom - 3};
}

HWND Driver::ControlOf(win::Form& form, std::wstring_view name, int index) {
  const win::FormControl* const control = form.Find(name, index);
  if (!control) program_.Fault("no control " + Narrow(name) + " in " + Narrow(form.Name()));
  return control ? control->window : nullptr;
}

void Driver::Press(win::Form& form, std::wstring_view name, int index) {
  SendMessageW(ControlOf(form, name, index), BM_CLICK, 0, 0);
}

void Driver::Type(HWND edit, const std::wstring& text) {
  // Key by key where the control may refuse one of them; what the text was is gone with the first.
  if (text.find(L'"') == std::wstring::npos) {
    SetWindowTextW(edit, text.c_str());
    return;
  }
  SendMessageW(edit, EM_SETSEL, 0, -1);
  for (const wchar_t unit : text) SendMessageW(edit, WM_CHAR, unit, 1);
}

win::Form* Driver::FormNamed(const std::wstring& name) {
  std::pair<std::wstring, win::Form*> wanted{name, nullptr};
  EnumThreadWindows(
      GetCurrentThreadId(),
      [](HWND window, LPARAM parameter) -> BOOL {
        auto& found = *reinterpret_cast<std::pair<std::wstring, win::Form*>*>(parameter);
        auto* const form = dynamic_cast<win::Form*>(win::Window::Of(window));
        if (form && form->Name() == found.first) found.second = form;
        return found.second == nullptr;
      },
      reinterpret_cast<LPARAM>(&wanted));
  return wanted.second;
}

void Driver::InDialog(const std::wstring& name, const std::function<void()>& open,
                      const std::function<void(win::Form&)>& act) {
  const test::OnForm dialog(name, act);
  open();
  if (!dialog.Done()) program_.Fault("the dialog did not come up: " + Narrow(name));
  if (program_.form && !IsWindowEnabled(program_.form->Handle()))
    program_.Fault("the window stayed disabled");
}

void Driver::Categories(const Plan& plan) {
  if (plan.kind <= Kind::kRenameCategory) {
    OpenBranches();  // so that nothing moves while a name is edited
    // Wine's control begins an edit of its own half a second after a click on the category that is selected,
    // though the focus has left the tree since.
    KillTimer(TreeWindow(), 2);
  }
  switch (plan.kind) {
    case Kind::kAddFirstSibling: Command(L"meu_AddFirstSibling"); break;
    case Kind::kAddPreviousSibling: Command(L"meu_AddPreviousSibling"); break;
    case Kind::kAddNextSibling: Command(L"meu_AddNextSibling"); break;
    case Kind::kAddLastSibling: Command(L"meu_AddLastSibling"); break;
    case Kind::kAddChild: Command(L"meu_AddChild"); break;
    case Kind::kRenameCategory:
      SetFocus(TreeWindow());
      if (plan.way == 0) {
        test::SendKey(TreeWindow(), VK_F2);
      } else {
        PressToolbar(2);
      }
      EndEdit(plan);
      return;
    case Kind::kClickCategory: Click(TreeWindow(), PointOf(plan.key)); return;
    case Kind::kRightClickCategory: {
      const POINT point = PointOf(plan.key);
      const test::PopupMenuEntries menu;
      Click(TreeWindow(), point, true);
      if (!menu.Shown()) program_.Fault("no menu after a right click");
      return;
    }
    case Kind::kGoToCategory: {
      constexpr WORD kKeys[] = {VK_UP, VK_DOWN, VK_HOME, VK_END};
      OpenBranches();
      SetFocus(TreeWindow());
      test::PressKey(TreeWindow(), kKeys[plan.way]);
      return;
    }
    case Kind::kClickEmptyTree: Click(TreeWindow(), EmptyTreePoint()); return;
    case Kind::kCollapse: {
      OpenBranches();
      PointOf(plan.key);
      // The button of a long name, or of one far to the right, may be out of sight at first.
      for (int scrolled = 0; scrolled < 500; ++scrolled) {
        const POINT text = PointInSight(plan.key);
        for (LONG x = text.x; x >= 0; --x) {
          TVHITTESTINFO hit{{x, text.y}, 0, nullptr};
          SendMessageW(TreeWindow(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
          if ((hit.flags & TVHT_ONITEMBUTTON) == 0) continue;
          Click(TreeWindow(), hit.pt);
          return;
        }
        SendMessageW(TreeWindow(), WM_HSCROLL, SB_LINELEFT, 0);
      }
      program_.Fault("no button to collapse by");
      return;
    }
    case Kind::kDeleteCategory:
      if (plan.way == 0) {
        Command(L"meu_Remove");
      } else {
        SetFocus(TreeWindow());
        test::PressKey(TreeWindow(), VK_DELETE);
      }
      return;
    case Kind::kToggleDrag: Command(L"meu_aa"); return;
    case Kind::kMoveBranch: DragBranch(plan); return;
    case Kind::kFindCategory: Search(plan, L"Tree_Find", false); return;
    default: return;
  }
  if (!plan.key.empty()) EndEdit(plan);
}

void Driver::EndEdit(const Plan& plan) {
  const HWND edit = TreeView_GetEditControl(TreeWindow());
  if (edit == nullptr) {
    program_.Fault("no edit of the name began");
    return;
  }
  SetWindowTextW(edit, plan.text.c_str());
  switch (plan.end) {
    case EditEnd::kEscape: test::PressKey(edit, VK_ESCAPE); break;
    case EditEnd::kClickOther: Click(TreeWindow(), PointOf(plan.otherKey)); break;
    case EditEnd::kRightClickOther: {
      const POINT point = PointOf(plan.otherKey);
      const test::PopupMenuEntries menu;
      Click(TreeWindow(), point, true);
      break;
    }
    case EditEnd::kCommand:
      Command(L"meu_AddNextSibling");
      if (const HWND next = TreeView_GetEditControl(TreeWindow())) test::PressKey(next, VK_ESCAPE);
      break;
    case EditEnd::kClickEmpty: Click(TreeWindow(), EmptyTreePoint()); break;
    default: test::PressKey(edit, VK_RETURN); break;
  }
  if (!test::PumpUntil([this] { return !program_.Parts().TreeView1.EditingLabel(); }))
    program_.Fault("the edit of the name goes on");
}

void Driver::DragBranch(const Plan& plan) {
  OpenBranches();
  const POINT from = PointOf(plan.key);
  const HWND tree = TreeWindow();
  test::SendMouse(tree, WM_LBUTTONDOWN, from, MK_LBUTTON);
  test::SendMouse(tree, WM_MOUSEMOVE, {from.x + 2, from.y}, MK_LBUTTON);
  const POINT to = PointOf(plan.otherKey);  // which may scroll the tree, as a drag at its edge does
  test::SendMouse(tree, WM_MOUSEMOVE, to, MK_LBUTTON);
  test::SendMouse(tree, WM_LBUTTONUP, to);
  win::DoEvents();
}

void Driver::List(const Plan& plan) {
  switch (plan.kind) {
    case Kind::kClickRow: Click(ListWindow(), PointOfRow(plan.row)); break;
    case Kind::kControlClickRow: {
      const test::KeysDown control({VK_CONTROL});
      Click(ListWindow(), PointOfRow(plan.row), false, MK_CONTROL);
      break;
    }
    case Kind::kSelectAllRows:
      SetFocus(ListWindow());
      test::SendKey(ListWindow(), 'A', {VK_CONTROL});
      break;
    case Kind::kClickEmptyList: {
      RECT inner;
      GetClientRect(ListWindow(), &inner);
      Click(ListWindow(), {inner.right / 2, inner.bottom - 3});
      break;
    }
    case Kind::kSort: {
      NMLISTVIEW click{};
      click.hdr = {ListWindow(), static_cast<UINT_PTR>(GetDlgCtrlID(ListWindow())), LVN_COLUMNCLICK};
      click.iItem = -1;
      click.iSubItem = static_cast<int>(plan.column);
      SendMessageW(program_.form->Handle(), WM_NOTIFY, click.hdr.idFrom, reinterpret_cast<LPARAM>(&click));
      break;
    }
    case Kind::kFindItem: Search(plan, L"List_Find", true); break;
    default: break;
  }
}

void Driver::Search(const Plan& plan, const std::wstring& name, bool list) {
  const HWND pane = list ? ListWindow() : TreeWindow();
  SetFocus(pane);
  test::SendKey(pane, 'F', {VK_CONTROL});
  win::DoEvents();
  win::Form* const window = FormNamed(name);
  if (!window) {
    program_.Fault("no search window " + Narrow(name));
    return;
  }
  if (list) SendMessageW(ControlOf(*window, L"Combo1"), CB_SETCURSEL, plan.column, 0);
  SetWindowTextW(ControlOf(*window, L"Text1"), plan.text.c_str());
  win::DoEvents();
  Press(*window, L"Command1", 0);
  win::DoEvents();
  Press(*window, L"Command1", 1);
  win::DoEvents();
}

}  // namespace kestrelon::model
