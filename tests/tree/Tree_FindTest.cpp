// The window that searches the categories.

#include "tests/support/MainFormFixture.h"
#include "tree/Tree_Find.h"

namespace kestrelon::test {
namespace {

class FindInCategories : public MainFormFixture {
 protected:
  // 1 Private, 2 Homework below it, 3 WORK, 4 Music; nothing is selected.
  void StartWithCategories() {
    Start();
    win::TreeNode& home = AddCategory(L"P_", L"Private");
    AddCategory(L"H_", L"Homework", &home);
    AddCategory(L"W_", L"WORK");
    AddCategory(L"M_", L"Music");
    SetFocus(Tree().Handle());
    win::DoEvents();
    program.databaseSaved = true;
  }
  void Open() {
    SendKey(Tree().Handle(), 'F', {VK_CONTROL});
    win::DoEvents();
  }
  win::Form& Window() { return *form->TreeHelpers().find; }
  bool IsShown() { return form->TreeHelpers().find && IsWindowVisible(form->TreeHelpers().find->Handle()); }
  HWND Control(const wchar_t* name, int index = -1) { return Window().Find(name, index)->window; }
  void Type(const std::wstring& text) {
    SendMessageW(Control(L"Text1"), EM_SETSEL, 0, -1);
    SendMessageW(Control(L"Text1"), EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
  }
  void PressOk() { SendMessageW(Control(L"Command1", 0), BM_CLICK, 0, 0); }
  void Find(const std::wstring& text) {
    if (!IsShown()) Open();
    Type(text);
    PressOk();
  }
  void FindInVain(const std::wstring& text) {
    const std::size_t boxes = world.boxes.size();
    world.answers = {IDOK};
    Find(text);
    EXPECT_EQ(world.boxes.size(), boxes + 1) << Narrow(text);
  }
  // The selected category's name; empty for none.
  std::wstring SelectedText() {
    const win::TreeNode* const node = Tree().Selected();
    return node ? node->Text() : std::wstring();
  }
};

TEST_F(FindInCategories, OpensByCtrlFBesideTheMainWindow) {
  StartWithCategories();

  Open();

  ASSERT_TRUE(IsShown());
  EXPECT_EQ(Window().Caption(), L"Find in categories");
  EXPECT_EQ(GetWindow(Window().Handle(), GW_OWNER), form->Handle());
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
  EXPECT_TRUE(Parts().treeFindShown);
  EXPECT_FALSE(Parts().listFindShown);
  EXPECT_EQ(TextOf(Control(L"Label1")), L"Find:");
  EXPECT_EQ(TextOf(Control(L"Text1")), L"");
  EXPECT_EQ(TextOf(Control(L"Command1", 0)), L"OK");
  EXPECT_EQ(TextOf(Control(L"Command1", 1)), L"Cancel");
  EXPECT_EQ(GetFocus(), Control(L"Text1"));
}

TEST_F(FindInCategories, OpensByTheToolbarWhileTheTreeIsActive) {
  StartWithCategories();
  EXPECT_TRUE(Parts().Toolbar1.IsEnabled(4));
  form->Toolbar1_ButtonClick(4);
  EXPECT_TRUE(IsShown());
  EXPECT_FALSE(Parts().listFindShown);
}

TEST_F(FindInCategories, OpensByNoOtherKeys) {
  StartWithCategories();
  SendKey(Tree().Handle(), 'F');
  SendKey(Tree().Handle(), 'F', {VK_CONTROL, VK_SHIFT});
  SendKey(Tree().Handle(), 'G', {VK_CONTROL});
  EXPECT_FALSE(IsShown());
}

TEST_F(FindInCategories, IsLeftAsItIsWhenItIsAskedForWhileItIsOpen) {
  StartWithCategories();
  Open();
  Type(L"being typed");
  const HWND window = Window().Handle();

  Open();
  form->Toolbar1_ButtonClick(4);

  EXPECT_EQ(Window().Handle(), window);
  EXPECT_EQ(TextOf(Control(L"Text1")), L"being typed");
}

TEST_F(FindInCategories, IsClosedByCancelByEscapeAndByItsFrame) {
  StartWithCategories();
  const std::function<void()> ways[] = {
      [this] { SendMessageW(Control(L"Command1", 1), BM_CLICK, 0, 0); },
      [this] { PressKey(Control(L"Text1"), VK_ESCAPE); },
      [this] { SendMessageW(Window().Handle(), WM_CLOSE, 0, 0); },
  };
  for (const auto& close : ways) {
    Open();
    ASSERT_TRUE(IsShown());
    const HWND window = Window().Handle();
    close();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(Parts().treeFindShown);
  }
}

TEST_F(FindInCategories, MayBeOpenTogetherWithTheOneForItems) {
  StartWithCategories();
  Open();
  SetFocus(List().Handle());
  form->Toolbar1_ButtonClick(4);
  EXPECT_TRUE(IsShown());
  EXPECT_TRUE(Parts().listFindShown);
  Window().Close();
  EXPECT_TRUE(Parts().listFindShown);
}

TEST_F(FindInCategories, FindsTheTextWithinANameWhateverTheCase) {
  StartWithCategories();
  Find(L"work");
  EXPECT_EQ(SelectedText(), L"Homework");
  PressOk();
  EXPECT_EQ(SelectedText(), L"WORK");
  EXPECT_TRUE(IsShown());
}

TEST_F(FindInCategories, StartsWithTheFirstCategoryWhenNoneIsSelected) {
  StartWithCategories();
  Find(L"private");
  EXPECT_EQ(SelectedText(), L"Private");
}

TEST_F(FindInCategories, GoesInTheOrderOfAddingNotInTheOrderOnScreen) {
  StartWithCategories();
  Tree().Add(Tree().Find(L"P_"), win::Relationship::kFirst, L"L_", L"Latest work");
  ASSERT_EQ(ShownTree(), L"Latest work,Private(Homework),WORK,Music");

  for (const wchar_t* expected : {L"Homework", L"WORK", L"Latest work"}) {
    Find(L"work");
    EXPECT_EQ(SelectedText(), expected);
  }
}

TEST_F(FindInCategories, ScrollsTheMatchIntoView) {
  StartWithCategories();
  for (int i = 0; i < 200; ++i) AddCategory(std::to_wstring(i) + L"_", L"other");
  win::TreeNode& last = AddCategory(L"Z_", L"target", Tree().Find(L"150_"));
  const RECT before = Tree().TextRectangle(last);
  ASSERT_TRUE(IsRectEmpty(&before));

  Find(L"target");

  const RECT shown = Tree().TextRectangle(last);
  RECT inner;
  GetClientRect(Tree().Handle(), &inner);
  EXPECT_FALSE(IsRectEmpty(&shown));
  EXPECT_GE(shown.top, 0);
  EXPECT_LE(shown.bottom, inner.bottom);
}

TEST_F(FindInCategories, SaysThatItCannotFindTheTextBehindTheLastMatchAndSelectsTheFirstCategory) {
  StartWithCategories();
  Tree().Select(Tree().Find(L"W_"));

  FindInVain(L"work");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Cannot find 'work'  ");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags & MB_ICONMASK, static_cast<UINT>(MB_ICONINFORMATION));
  EXPECT_EQ(world.boxes[0].owner, Window().Handle());
  EXPECT_EQ(SelectedText(), L"Private");
  EXPECT_TRUE(IsShown());
}

TEST_F(FindInCategories, PassesOverTheFirstCategoryOnceItHasFoundNothing) {
  StartWithCategories();
  Find(L"private");
  FindInVain(L"private");
  EXPECT_EQ(SelectedText(), L"Private");
  FindInVain(L"private");
}

TEST_F(FindInCategories, SaysSoInAnEmptyTreeAndSelectsNothing) {
  Start();
  SetFocus(Tree().Handle());
  FindInVain(L"work");
  EXPECT_EQ(Tree().Selected(), nullptr);
}

TEST_F(FindInCategories, SelectsTheFirstCategoryOnlyAfterTheUserHasReadThatThereIsNone) {
  StartWithCategories();
  Tree().Select(Tree().Find(L"M_"));
  std::wstring selectedThen;
  bool enabled = true;
  world.messageBox = [&](HWND, const std::wstring&, const std::wstring&, UINT) {
    selectedThen = SelectedText();
    enabled = IsWindowEnabled(form->Handle());
    return IDOK;
  };
  Find(L"work");
  EXPECT_EQ(selectedThen, L"Music");
  EXPECT_FALSE(enabled);
  EXPECT_EQ(SelectedText(), L"Private");
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
}

TEST_F(FindInCategories, TakesBlanksAsTheyAreTyped) {
  StartWithCategories();
  AddCategory(L"X_", L"my work place");
  Find(L" work ");
  EXPECT_EQ(SelectedText(), L"my work place");
}

TEST_F(FindInCategories, CannotSearchForAnEmptyText) {
  StartWithCategories();
  Open();
  EXPECT_FALSE(IsWindowEnabled(Control(L"Command1", 0)));
  Type(L"x");
  EXPECT_TRUE(IsWindowEnabled(Control(L"Command1", 0)));
  Type(L"");
  EXPECT_FALSE(IsWindowEnabled(Control(L"Command1", 0)));
  PressKey(Control(L"Text1"), VK_RETURN);
  EXPECT_EQ(SelectedText(), L"");
}

TEST_F(FindInCategories, SearchesByEnter) {
  StartWithCategories();
  Open();
  Type(L"work");
  PressKey(Control(L"Text1"), VK_RETURN);
  PressKey(Control(L"Text1"), VK_RETURN);
  EXPECT_EQ(SelectedText(), L"WORK");
}

TEST_F(FindInCategories, MakesAMatchCurrentAsAClickDoes) {
  StartWithCategories();
  AddItem(L"P_", 1, {L"private"});
  AddItem(L"H_", 1, {L"one"});
  AddItem(L"H_", 2, {L"two"});
  SelectCategory(*Tree().Find(L"P_"));
  Click(List().Handle(), MiddleOfRow(0));
  ASSERT_TRUE(Parts().Toolbar1.IsEnabled(6));
  program.databaseSaved = true;

  Find(L"work");

  EXPECT_EQ(SelectedText(), L"Homework");
  EXPECT_EQ(Panel(1), L"Category : Private\\Homework");
  EXPECT_EQ(Panel(2), L"H_");
  EXPECT_EQ(Panel(3), L"2 Objects");
  EXPECT_EQ(Column(1), (std::vector<std::wstring>{L"one", L"two"}));
  EXPECT_FALSE(Parts().Toolbar1.IsEnabled(6));
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(FindInCategories, MakesTheFirstCategoryCurrentWhenThereIsNoMatch) {
  StartWithCategories();
  AddItem(L"P_", 1, {L"private"});
  SelectCategory(*Tree().Find(L"M_"));

  FindInVain(L"nothing like it");

  EXPECT_EQ(SelectedText(), L"Private");
  EXPECT_EQ(Panel(1), L"Category : Private");
  EXPECT_EQ(Panel(2), L"P_");
  EXPECT_EQ(Column(1), std::vector<std::wstring>{L"private"});
}

TEST_F(FindInCategories, KeepsWhatWasTypedIntoALabelThatIsBeingEdited) {
  StartWithCategories();
  SelectCategory(*Tree().Find(L"P_"));
  Open();
  Type(L"work");
  tree::EditSelectedCaption(Parts());
  SetWindowTextW(TreeView_GetEditControl(Tree().Handle()), L"Own");
  PressOk();
  EXPECT_EQ(ShownTree(), L"Own(Homework),WORK,Music");
  EXPECT_EQ(Panel(1), L"Category : Own\\Homework");
  EXPECT_EQ(Panel(2), L"H_");
}

TEST_F(FindInCategories, DoesNothingWhileAQuestionOrALongOperationWaits) {
  StartWithCategories();
  Open();
  Type(L"work");
  EnableWindow(form->Handle(), FALSE);
  PressOk();
  EnableWindow(form->Handle(), TRUE);
  Parts().busy = true;
  PressOk();
  Parts().busy = false;
  EXPECT_EQ(SelectedText(), L"");
  PressOk();
  EXPECT_EQ(SelectedText(), L"Homework");
}

TEST_F(FindInCategories, IsMagneticAndGluedToTheMainWindowWhileItIsOpen) {
  StartWithCategories();
  ui::cMagneticWnd& magnets = form->Magnets();
  Open();
  const HWND window = Window().Handle();
  EXPECT_FALSE(magnets.AddWindow(window)) << "is registered already";
  RECT main;
  GetWindowRect(form->Handle(), &main);
  SetWindowPos(window, nullptr, main.right, main.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  magnets.CheckGlueing();
  EXPECT_TRUE(magnets.Glued(window));

  Window().Close();

  EXPECT_FALSE(magnets.RemoveWindow(window));
}

TEST_F(FindInCategories, GoesToTheTrayAndComesBackWithTheMainWindow) {
  StartWithCategories();
  Open();
  ShowWindow(form->Handle(), SW_MINIMIZE);
  win::DoEvents();
  EXPECT_FALSE(IsShown());
  SendMessageW(form->Handle(), WM_APP + 1, 1, WM_LBUTTONUP);  // what the icon sends
  win::DoEvents();
  EXPECT_TRUE(IsShown());
}

TEST_F(FindInCategories, MayStillBeOpenWhenTheProgramEnds) {
  StartWithCategories();
  Open();
  const HWND window = Window().Handle();
  End();
  EXPECT_FALSE(IsWindow(window));
}

TEST_F(FindInCategories, IsInTheLanguageInUseWhenItIsOpened) {
  StartWithCategories();
  Command(L"meu_Chinese_Simplified");

  Open();

  EXPECT_EQ(Window().Caption(), L"\x5728\x7C7B\x522B\x4E2D\x67E5\x627E");
  EXPECT_EQ(TextOf(Control(L"Label1")), L"\x67E5\x627E\xFF1A");
  EXPECT_EQ(TextOf(Control(L"Command1", 0)), L"\x786E\x5B9A(&O)");
}

}  // namespace
}  // namespace kestrelon::test
