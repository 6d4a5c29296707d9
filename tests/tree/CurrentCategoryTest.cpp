// What is selected, what the status bar calls current and what the list shows is one category, whatever the
// user did last and whatever was current before.

#include <functional>

#include "items/ShowData.h"
#include "tests/support/MainFormFixture.h"
#include "tests/support/TestDataObject.h"
#include "tree/Changecategory.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

class CurrentCategory : public MainFormFixture {
 protected:
  // A(inner), Music; the branch is open. `current` is the key of the category that was clicked last; none for
  // "".
  void Prepare(const std::wstring& current) {
    Tree().Clear();
    tree::ShowNoCategory(Parts());
    Execute(L"DELETE * FROM FTable");
    win::TreeNode& a = AddCategory(L"A_", L"A");
    AddCategory(L"I_", L"inner", &a);
    AddCategory(L"M_", L"Music");
    Tree().Expand(a);
    AddItem(L"A_", 1, {L"of A"});
    AddItem(L"I_", 1, {L"first"});
    AddItem(L"I_", 2, {L"second"});
    Menus().Check(L"meu_aa", true);
    SetFocus(Parts().Text1);
    win::DoEvents();
    if (!current.empty()) Click(Tree().Handle(), On(current));
    world.boxes.clear();
  }
  POINT On(const std::wstring& key) { return MiddleOf(*Tree().Find(key)); }
  POINT Expander() {
    const POINT text = On(L"A_");
    TVHITTESTINFO hit{};
    hit.pt.y = text.y;
    while ((hit.flags & TVHT_ONITEMBUTTON) == 0 && ++hit.pt.x < text.x)
      SendMessageW(Tree().Handle(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    return {hit.pt.x + 2, text.y};
  }
  void ClickTree(POINT point) { Click(Tree().Handle(), point); }
  void RightClick(POINT point) {
    const PopupMenuEntries menu;
    Click(Tree().Handle(), point, true);
    EXPECT_TRUE(menu.Shown());
  }
  void Key(WORD key) {
    SetFocus(Tree().Handle());
    PressKey(Tree().Handle(), key);
  }
  // Runs a command that may begin the edit of a new category's name, and gives that up.
  void Insert(const wchar_t* command) {
    const bool asks = command == std::wstring(L"meu_AddChild") && Panel(2).empty();
    if (asks) world.answers = {IDOK};
    Command(command);
    if (const HWND edit = TreeView_GetEditControl(Tree().Handle())) PressKey(edit, VK_ESCAPE);
  }
  void Remove(int answer) {
    world.answers = {Panel(2).empty() ? IDOK : answer};
    Command(L"meu_Remove");
  }
  void Rename(const wchar_t* text) {
    Key(VK_F2);
    const HWND edit = TreeView_GetEditControl(Tree().Handle());
    if (!edit) return;
    SetWindowTextW(edit, text);
    PressKey(edit, VK_RETURN);
  }
  void Find(const wchar_t* text, bool inVain) {
    if (inVain) world.answers = {IDOK};
    form->TreeHelpers().find.reset();
    Parts().treeFindShown = false;
    tree::OpenTreeFind(Parts(), form->TreeHelpers());
    win::Form& window = *form->TreeHelpers().find;
    SetWindowTextW(window.Find(L"Text1")->window, text);
    SendMessageW(window.Find(L"Command1", 0)->window, BM_CLICK, 0, 0);
    window.Close();
  }
  void DropFileOn(const wchar_t* key) {
    TestDataObject data = TestDataObject::Files({dir.WriteFile(L"f\\one.txt")});
    POINT point = On(key);
    ClientToScreen(Tree().Handle(), &point);
    DWORD effect = DROPEFFECT_COPY;
    form->TreeDrops().Object()->Drop(&data, 0, {point.x, point.y}, &effect);
  }
  void DropItemsOn(const wchar_t* key) {
    List().SelectAll();
    Parts().internalDrag = true;
    DropFileOn(key);
  }
  void DragNode(const wchar_t* from, const wchar_t* to) {
    SendMouse(Tree().Handle(), WM_LBUTTONDOWN, On(from), MK_LBUTTON);
    SendMouse(Tree().Handle(), WM_MOUSEMOVE, On(from), MK_LBUTTON);
    SendMouse(Tree().Handle(), WM_MOUSEMOVE, On(to), MK_LBUTTON);
    SendMouse(Tree().Handle(), WM_LBUTTONUP, On(to));
    win::DoEvents();
  }
  void AddDirectory(const std::optional<std::wstring>& folder) {
    world.folders = {folder};
    if (folder) world.answers = {IDOK};
    Command(L"meu_AddDirectory");
  }
  void CloseDialogOf(const wchar_t* command) {
    const HWND main = form->Handle();
    const OnWindow dialog(
        [main](HWND window) { return window != main && win::Window::Of(window) != nullptr; },
        [](HWND window) { SendMessageW(window, WM_CLOSE, 0, 0); });
    Command(command);
    EXPECT_TRUE(dialog.Done());
  }
  void NotifySelection(UINT action) {
    NMTREEVIEWW change{};
    change.hdr = {Tree().Handle(), static_cast<UINT_PTR>(GetDlgCtrlID(Tree().Handle())), TVN_SELCHANGEDW};
    change.action = action;
    change.itemNew.hItem = TreeView_GetRoot(Tree().Handle());
    SendMessageW(form->Handle(), WM_NOTIFY, change.hdr.idFrom, reinterpret_cast<LPARAM>(&change));
  }

  void ExpectAgreement(bool listFollows) {
    const std::wstring key = Panel(2);
    const win::TreeNode* const selected = Tree().Selected();
    EXPECT_EQ(Panel(3), std::to_wstring(List().Count()) + L" Objects");
    EXPECT_FALSE(Tree().EditingLabel());
    if (key.empty()) {
      EXPECT_EQ(selected, nullptr);
      EXPECT_EQ(Panel(1), L"Category : ");
      EXPECT_EQ(List().Count(), 0u);
      return;
    }
    ASSERT_NE(selected, nullptr);
    EXPECT_EQ(selected->Key(), key);
    EXPECT_TRUE(Panel(1) == L"Category : " + selected->Text() ||
                Panel(1) == L"Category : " + selected->FullPath())
        << Narrow(Panel(1));
    if (!listFollows) return;
    Texts shown;
    for (const win::ListRow& row : List().Rows()) shown.emplace_back(row.Tag());
    EXPECT_EQ(shown, Query(L"SELECT FileIndex FROM FTable WHERE TreeviewNode=" + store::Quoted(key), 1));
  }
};

TEST_F(CurrentCategory, IsTheSelectedOneAndTheOneWhoseItemsAreShown) {
  struct Gesture {
    const char* name;
    std::function<void()> act;
    bool listFollows = true;
  };
  Start();
  const std::wstring folder = dir.Path(L"chosen");
  dir.WriteFile(L"chosen\\sub\\x.txt");
  const Gesture gestures[] = {
      {"click on a category", [&] { ClickTree(On(L"M_")); }},
      {"click on an inner category", [&] { ClickTree(On(L"I_")); }},
      {"click on empty space", [&] { ClickTree(EmptyTreeSpace()); }},
      {"click on empty space with the focus in the list",
       [&] {
         SetFocus(List().Handle());
         ClickTree(EmptyTreeSpace());
       }},
      {"closing a branch with the mouse", [&] { ClickTree(Expander()); }},
      {"closing and opening a branch",
       [&] {
         ClickTree(Expander());
         ClickTree(Expander());
       }},
      // The list is not filled for a right click: the category menu that follows is not about items.
      {"right click on a category", [&] { RightClick(On(L"M_")); }, false},
      {"right click on empty space", [&] { RightClick(EmptyTreeSpace()); }},
      {"the focus",
       [&] {
         SetFocus(Tree().Handle());
         SetFocus(List().Handle());
         SetFocus(Tree().Handle());
       }},
      {"Down", [&] { Key(VK_DOWN); }},
      {"Up", [&] { Key(VK_UP); }},
      {"Left", [&] { Key(VK_LEFT); }},
      {"Left, Left", [&] { Key(VK_LEFT), Key(VK_LEFT); }},
      {"Right", [&] { Key(VK_RIGHT); }},
      {"End", [&] { Key(VK_END); }},
      {"Home", [&] { Key(VK_HOME); }},
      {"Minus", [&] { Key(VK_SUBTRACT); }},
      {"a letter", [&] { SendMessageW(Tree().Handle(), WM_CHAR, L'm', 1); }},
      {"Enter", [&] { Key(VK_RETURN); }},
      {"a selection by another program",
       [&] { TreeView_SelectItem(Tree().Handle(), TreeView_GetRoot(Tree().Handle())); }},
      {"word of a selection that the control made by itself", [&] { NotifySelection(TVC_UNKNOWN); }},
      {"renaming", [&] { Rename(L"new"); }},
      {"Add First Sibling", [&] { Insert(L"meu_AddFirstSibling"); }},
      {"Add Previous Sibling", [&] { Insert(L"meu_AddPreviousSibling"); }},
      {"Add Next Sibling", [&] { Insert(L"meu_AddNextSibling"); }},
      {"Add Last Sibling", [&] { Insert(L"meu_AddLastSibling"); }},
      {"Add Child", [&] { Insert(L"meu_AddChild"); }},
      {"Add Directory, cancelled", [&] { AddDirectory(std::nullopt); }},
      {"Add Directory", [&] { AddDirectory(folder); }},
      {"Delete, No", [&] { Remove(IDNO); }},
      {"Delete, Yes", [&] { Remove(IDYES); }},
      {"Delete, Yes, and the focus",
       [&] {
         Remove(IDYES);
         SetFocus(Tree().Handle());
       }},
      {"the switch for dragging", [&] { Command(L"meu_aa"); }},
      {"the Load dialog, cancelled", [&] { CloseDialogOf(L"meu_LoadDatabase"); }},
      {"the Save dialog, cancelled", [&] { CloseDialogOf(L"meu_SaveDatabase"); }},
      {"a language", [&] { Command(L"meu_English"); }},
      {"a search", [&] { Find(L"mus", false); }},
      {"a search in vain", [&] { Find(L"nothing", true); }},
      {"dragging a category onto another", [&] { DragNode(L"I_", L"M_"); }},
      {"dragging a branch into itself", [&] { DragNode(L"A_", L"I_"); }},
      {"files dropped on another category", [&] { DropFileOn(L"M_"); }},
      {"items dropped on another category", [&] { DropItemsOn(L"M_"); }},
      {"items dropped on their own category", [&] { DropItemsOn(L"I_"); }},
  };
  for (const wchar_t* before : {L"", L"A_", L"I_"}) {
    for (const Gesture& gesture : gestures) {
      SCOPED_TRACE(std::string(gesture.name) + ", before it: \"" + Narrow(before) + "\"");
      Prepare(before);
      ASSERT_EQ(Panel(2), before);
      ExpectAgreement(true);
      gesture.act();
      win::DoEvents();
      ExpectAgreement(gesture.listFollows);
    }
  }
}

TEST_F(CurrentCategory, DoesNotChangeWhenAnotherIsSelectedOnlyToTheEyeAndNothingIsDoneToEither) {
  Start();
  Prepare(L"A_");
  Tree().Select(Tree().Find(L"M_"));
  for (const wchar_t* command :
       {L"meu_AddFirstSibling", L"meu_AddPreviousSibling", L"meu_AddNextSibling", L"meu_AddChild"}) {
    Command(command);
    EXPECT_EQ(ShownTree(), L"A(inner),Music") << Narrow(command);
  }
  tree::EditSelectedCaption(Parts());
  EXPECT_FALSE(Tree().EditingLabel());
}

}  // namespace
}  // namespace kestrelon::test
