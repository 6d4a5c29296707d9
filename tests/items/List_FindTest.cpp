// The window that searches the item list.

#include "items/List_Find.h"
#include "items/ShowData.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class FindInItems : public MainFormFixture {
 protected:
  using Rows = std::vector<std::size_t>;

  // A category with these items; no row is selected.
  void StartWith(const std::vector<Item>& items) {
    Start();
    SelectCategory(AddCategory(L"A_", L"Alpha"));
    int number = 0;
    for (const Item& item : items) AddItem(L"A_", ++number, item);
    items::ShowData(Parts(), L"A_");
    SetFocus(List().Handle());
    win::DoEvents();
    program.databaseSaved = true;
  }
  void StartWithAliases(const std::vector<std::wstring>& aliases) {
    std::vector<Item> items;
    for (const std::wstring& alias : aliases) items.push_back({.alias = alias});
    StartWith(items);
  }
  void Open() {
    SendKey(List().Handle(), 'F', {VK_CONTROL});
    win::DoEvents();
  }
  win::Form& Window() { return *form->ListHelpers().find; }
  bool IsShown() { return form->ListHelpers().find && IsWindowVisible(form->ListHelpers().find->Handle()); }
  HWND Control(const wchar_t* name, int index = -1) { return Window().Find(name, index)->window; }
  void Type(const std::wstring& text) {
    SendMessageW(Control(L"Text1"), EM_SETSEL, 0, -1);
    SendMessageW(Control(L"Text1"), EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
  }
  void Choose(int field) { SendMessageW(Control(L"Combo1"), CB_SETCURSEL, static_cast<WPARAM>(field), 0); }
  void PressFind() { SendMessageW(Control(L"Command1", 0), BM_CLICK, 0, 0); }
  // Opens the window if need be and searches.
  void Find(const std::wstring& text, int field = 0) {
    if (!IsShown()) Open();
    Choose(field);
    Type(text);
    PressFind();
  }
  void FindInVain(const std::wstring& text, int field = 0) {
    const std::size_t boxes = world.boxes.size();
    world.answers = {IDOK};
    Find(text, field);
    EXPECT_EQ(world.boxes.size(), boxes + 1) << Narrow(text);
  }
  void MinimiseAndRestore() {
    ShowWindow(form->Handle(), SW_MINIMIZE);
    win::DoEvents();
    EXPECT_FALSE(IsShown());
    SendMessageW(form->Handle(), WM_APP + 1, 1, WM_LBUTTONUP);  // what the icon sends
    win::DoEvents();
  }
};

TEST_F(FindInItems, OpensByCtrlFBesideTheMainWindow) {
  StartWithAliases({L"one"});

  Open();

  ASSERT_TRUE(IsShown());
  EXPECT_EQ(Window().Caption(), L"Find in item(s)");
  EXPECT_EQ(GetWindow(Window().Handle(), GW_OWNER), form->Handle());
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
  EXPECT_TRUE(Parts().listFindShown);
  EXPECT_FALSE(Parts().treeFindShown);
  EXPECT_EQ(TextOf(Control(L"lblFind")), L"Find");
  EXPECT_EQ(TextOf(Control(L"lblIn")), L"In");
  EXPECT_EQ(TextOf(Control(L"Text1")), L"");
  EXPECT_EQ(TextOf(Control(L"Command1", 0)), L"&Find");
  EXPECT_EQ(TextOf(Control(L"Command1", 1)), L"Cancel");
  EXPECT_EQ(GetFocus(), Control(L"Text1"));
}

TEST_F(FindInItems, OpensByTheToolbarWhileTheListIsActive) {
  StartWithAliases({L"one"});
  EXPECT_TRUE(Parts().Toolbar1.IsEnabled(4));
  form->Toolbar1_ButtonClick(4);
  EXPECT_TRUE(IsShown());
  EXPECT_FALSE(Parts().treeFindShown);
}

TEST_F(FindInItems, OpensByNoOtherKeys) {
  StartWithAliases({L"one"});
  SendKey(List().Handle(), 'F');
  SendKey(List().Handle(), 'F', {VK_CONTROL, VK_SHIFT});
  SendKey(List().Handle(), 'G', {VK_CONTROL});
  EXPECT_FALSE(IsShown());
}

TEST_F(FindInItems, IsLeftAsItIsWhenItIsAskedForWhileItIsOpen) {
  StartWithAliases({L"one"});
  Open();
  Type(L"being typed");
  const HWND window = Window().Handle();

  Open();
  SetFocus(List().Handle());
  form->Toolbar1_ButtonClick(4);

  EXPECT_EQ(Window().Handle(), window);
  EXPECT_EQ(TextOf(Control(L"Text1")), L"being typed");
}

TEST_F(FindInItems, IsClosedByCancelByEscapeAndByItsFrame) {
  StartWithAliases({L"one"});
  const std::function<void()> ways[] = {
      [this] { SendMessageW(Control(L"Command1", 1), BM_CLICK, 0, 0); },
      [this] { PressKey(Control(L"Text1"), VK_ESCAPE); },
      [this] { SendMessageW(Window().Handle(), WM_CLOSE, 0, 0); },
  };
  for (const auto& close : ways) {
    Open();
    ASSERT_TRUE(IsShown());
    const HWND window = Window().Handle();
    Type(L"text");
    close();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(Parts().listFindShown);
  }
  Open();
  EXPECT_EQ(TextOf(Control(L"Text1")), L"") << "it opens anew";
}

TEST_F(FindInItems, OffersTheHeadersFromTheSecondOn) {
  StartWithAliases({L"one"});
  List().SetColumnText(5, L"Remarks");

  Open();

  std::vector<std::wstring> entries;
  const LRESULT count = SendMessageW(Control(L"Combo1"), CB_GETCOUNT, 0, 0);
  for (LRESULT i = 0; i < count; ++i) {
    wchar_t text[50] = L"";
    SendMessageW(Control(L"Combo1"), CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text));
    entries.push_back(text);
  }
  EXPECT_EQ(entries,
            (std::vector<std::wstring>{L"Alias", L"File name", L"Local File", L"Insert time", L"Remarks"}));
  EXPECT_EQ(SendMessageW(Control(L"Combo1"), CB_GETCURSEL, 0, 0), 0);
}

TEST_F(FindInItems, FindsTheTextAnywhereInTheAliasWhateverTheCase) {
  StartWithAliases({L"other", L"xABCx"});
  Find(L"abc");
  EXPECT_EQ(List().SelectedRows(), Rows{1});
  EXPECT_TRUE(IsShown());
}

TEST_F(FindInItems, FindsLettersOfEveryScriptWhateverTheirCase) {
  StartWithAliases({L"other",
                    L"\x00DC"
                    L"BUNG",
                    L"\x7C7B\x522B"});
  Find(
      L"\x00FC"
      L"bung");
  EXPECT_EQ(List().SelectedRows(), Rows{1});
  Find(L"\x522B");
  EXPECT_EQ(List().SelectedRows(), Rows{2});
}

TEST_F(FindInItems, SearchesAliasFileNameAndPathByTheFirstThreeEntries) {
  StartWith({{L"word", L"a.txt", L"C:\\b.txt"},
             {L"a", L"word.txt", L"C:\\b.txt"},
             {L"a", L"a.txt", L"C:\\word\\b.txt"}});
  const int expected[] = {0, 1, 2};
  for (const int field : expected) {
    List().SelectNone();
    Find(L"word", field);
    EXPECT_EQ(List().SelectedRows(), Rows{static_cast<std::size_t>(field)});
  }
}

TEST_F(FindInItems, SearchesTheCommentsByTheEntryOfTheTime) {
  StartWith({{.alias = L"a", .time = L"word"}, {.alias = L"b", .comment = L"a word"}});
  Find(L"word", 3);
  EXPECT_EQ(List().SelectedRows(), Rows{1});
}

TEST_F(FindInItems, FindsNothingByTheEntryOfTheComments) {
  StartWith({{L"word", L"word", L"word", L"word", L"word"}});
  FindInVain(L"word", 4);
  FindInVain(L" ", 4);
  EXPECT_TRUE(List().SelectedRows().empty());
}

TEST_F(FindInItems, NeverSearchesTheTime) {
  StartWith({{.alias = L"a", .time = L"11/15/2026"}});
  for (int field = 0; field < 5; ++field) FindInVain(L"2026", field);
}

TEST_F(FindInItems, StartsAtTheFirstRowWhenNoneIsSelected) {
  StartWithAliases({L"word", L"word"});
  Find(L"word");
  EXPECT_EQ(List().SelectedRows(), Rows{0});
}

TEST_F(FindInItems, GoesOnBehindTheSelectedRowWithEachPress) {
  StartWithAliases({L"word 1", L"other", L"word 2", L"word 3"});
  Find(L"word");
  PressFind();
  EXPECT_EQ(List().SelectedRows(), Rows{2});
  PressFind();
  EXPECT_EQ(List().SelectedRows(), Rows{3});
  List().SelectOnly(1);
  PressFind();
  EXPECT_EQ(List().SelectedRows(), Rows{2});
}

TEST_F(FindInItems, SaysThatItCannotFindTheTextBehindTheLastRowEvenIfEarlierRowsMatch) {
  StartWithAliases({L"word", L"word"});
  List().SelectOnly(1);

  FindInVain(L"word");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Cannot find 'word'  ");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags & MB_ICONMASK, static_cast<UINT>(MB_ICONINFORMATION));
  EXPECT_EQ(world.boxes[0].owner, Window().Handle());
  EXPECT_EQ(List().SelectedRows(), Rows{1});
  EXPECT_TRUE(IsShown());
}

TEST_F(FindInItems, SaysSoInAnEmptyListToo) {
  StartWithAliases({});
  FindInVain(L"word");
}

TEST_F(FindInItems, SelectsTheMatchAloneAndScrollsToIt) {
  StartWithAliases(std::vector<std::wstring>(300, L"other"));
  List().SetText(250, 1, L"word");
  List().SelectOnly(0);
  Open();

  Find(L"word");

  EXPECT_EQ(List().SelectedRows(), Rows{250});
  EXPECT_EQ(List().SelectedRow(), 250u);
  RECT inner, row{};
  GetClientRect(List().Handle(), &inner);
  ListView_GetItemRect(List().Handle(), 250, &row, LVIR_BOUNDS);
  EXPECT_GE(row.top, 0);
  EXPECT_LE(row.bottom, inner.bottom);
}

TEST_F(FindInItems, EnablesTheItemCommandsForTheMatchAndShowsItsComment) {
  StartWith({{.alias = L"other"}, {.alias = L"word", .comment = L"of the match"}});
  Command(L"meu_comment");
  EXPECT_FALSE(Menus().IsEnabled(L"meu_Delete"));
  Find(L"word");
  EXPECT_TRUE(Menus().IsEnabled(L"meu_Delete"));
  EXPECT_TRUE(Menus().IsEnabled(L"meu_Changecategory"));
  EXPECT_EQ(TextOf(form->ListHelpers().comment->Find(L"Text1")->window), L"of the match");
}

TEST_F(FindInItems, TrimsTheBlanksAroundTheText) {
  StartWithAliases({L"a word here"});
  Find(L"  word  ");
  EXPECT_EQ(List().SelectedRows(), Rows{0});
  FindInVain(L"  no such  ");
  EXPECT_EQ(world.boxes.at(0).text, L"Cannot find 'no such'  ");
}

TEST_F(FindInItems, TakesBlanksAloneForATextThatEveryFilledCellHolds) {
  StartWithAliases({L"", L"one"});
  Find(L"   ");
  EXPECT_EQ(List().SelectedRows(), Rows{1});
}

TEST_F(FindInItems, CannotSearchForAnEmptyText) {
  StartWithAliases({L"one"});
  Open();
  EXPECT_FALSE(IsWindowEnabled(Control(L"Command1", 0)));
  Type(L"x");
  EXPECT_TRUE(IsWindowEnabled(Control(L"Command1", 0)));
  Type(L"");
  EXPECT_FALSE(IsWindowEnabled(Control(L"Command1", 0)));
  PressKey(Control(L"Text1"), VK_RETURN);
  EXPECT_TRUE(List().SelectedRows().empty());
}

TEST_F(FindInItems, NarrowsTheSelectionToTheRowThatTheSearchStartsBehindWhileTheTextIsTyped) {
  StartWithAliases({L"one", L"two", L"three"});
  Open();
  List().SelectAll();
  Type(L"");
  EXPECT_EQ(List().SelectedRows(), (Rows{0, 1, 2}));
  Type(L"x");
  EXPECT_EQ(List().SelectedRows(), Rows{0});
}

TEST_F(FindInItems, LeavesASingleSelectedRowAndNoneAsTheyAreWhileTheTextIsTyped) {
  StartWithAliases({L"one", L"two"});
  Open();
  Type(L"x");
  EXPECT_TRUE(List().SelectedRows().empty());
  List().SelectOnly(1);
  Type(L"one");
  EXPECT_EQ(List().SelectedRows(), Rows{1});
}

TEST_F(FindInItems, SearchesByEnter) {
  StartWithAliases({L"word", L"word"});
  Open();
  Type(L"word");
  SetFocus(Control(L"Text1"));
  PressKey(Control(L"Text1"), VK_RETURN);
  PressKey(Control(L"Text1"), VK_RETURN);
  EXPECT_EQ(List().SelectedRows(), Rows{1});
  EXPECT_EQ(GetFocus(), Control(L"Text1"));
}

TEST_F(FindInItems, LeavesEnterAndEscapeToTheOpenListOfFields) {
  StartWithAliases({L"word"});
  Open();
  Type(L"word");
  SetFocus(Control(L"Combo1"));
  for (const WORD key : {WORD{VK_RETURN}, WORD{VK_ESCAPE}}) {
    SendMessageW(Control(L"Combo1"), CB_SHOWDROPDOWN, TRUE, 0);
    PressKey(Control(L"Combo1"), key);
    EXPECT_FALSE(SendMessageW(Control(L"Combo1"), CB_GETDROPPEDSTATE, 0, 0));
    EXPECT_TRUE(IsShown());
    EXPECT_TRUE(List().SelectedRows().empty());
  }
  PressKey(Control(L"Combo1"), VK_RETURN);
  EXPECT_EQ(List().SelectedRows(), Rows{0});
  PressKey(Control(L"Combo1"), VK_ESCAPE);
  EXPECT_FALSE(IsShown());
}

TEST_F(FindInItems, GoesFromControlToControlByTab) {
  StartWithAliases({L"one"});
  Open();
  Type(L"x");
  const HWND order[] = {Control(L"Combo1"), Control(L"Command1", 0), Control(L"Command1", 1),
                        Control(L"Text1")};
  for (const HWND next : order) {
    PressKey(GetFocus(), VK_TAB);
    EXPECT_EQ(GetFocus(), next);
  }
}

TEST_F(FindInItems, ChangesNothingOfTheCollection) {
  StartWithAliases({L"one", L"word"});
  Find(L"word");
  FindInVain(L"word");
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(FindInItems, DoesNothingWhileAQuestionOrALongOperationWaits) {
  StartWithAliases({L"one", L"word"});
  Open();
  List().SelectAll();
  const std::function<void(bool)> waits[] = {
      [this](bool on) { EnableWindow(form->Handle(), !on); },
      [this](bool on) { Parts().busy = on; },
  };
  for (const auto& wait : waits) {
    wait(true);
    Type(L"word");
    PressFind();
    EXPECT_EQ(List().SelectedRows(), (Rows{0, 1}));
    EXPECT_TRUE(IsWindowEnabled(Control(L"Command1", 0)));
    wait(false);
  }
  PressFind();
  EXPECT_EQ(List().SelectedRows(), Rows{1});
}

TEST_F(FindInItems, MakesTheMainWindowWaitWhileItSaysThatThereIsNone) {
  StartWithAliases({L"one"});
  bool enabled = true;
  world.messageBox = [&](HWND, const std::wstring&, const std::wstring&, UINT) {
    enabled = IsWindowEnabled(form->Handle());
    return IDOK;
  };
  Find(L"no such");
  EXPECT_FALSE(enabled);
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
}

TEST_F(FindInItems, IsMagneticAndGluedToTheMainWindowWhileItIsOpen) {
  StartWithAliases({L"one"});
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

TEST_F(FindInItems, GoesToTheTrayAndComesBackWithTheMainWindow) {
  StartWithAliases({L"one"});
  Open();
  Type(L"text");
  MinimiseAndRestore();
  EXPECT_TRUE(IsShown());
  EXPECT_EQ(TextOf(Control(L"Text1")), L"text");
}

TEST_F(FindInItems, StaysClosedWhenTheMainWindowComesBackFromTheTray) {
  StartWithAliases({L"one"});
  Open();
  Window().Close();
  MinimiseAndRestore();
  EXPECT_FALSE(IsShown());
}

TEST_F(FindInItems, IsShownAgainByTheLayoutOfTheMainWindow) {
  StartWithAliases({L"one"});
  Open();
  ShowWindow(Window().Handle(), SW_HIDE);
  SetWindowPos(form->Handle(), nullptr, 0, 0, 800, 600, SWP_NOMOVE | SWP_NOZORDER);
  EXPECT_TRUE(IsShown());
}

TEST_F(FindInItems, GoesWithTheMainWindow) {
  StartWithAliases({L"one"});
  Open();
  const HWND window = Window().Handle();
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_FALSE(IsWindow(window));
  EXPECT_FALSE(Parts().listFindShown);
}

TEST_F(FindInItems, MayStillBeOpenWhenTheProgramEnds) {
  StartWithAliases({L"one"});
  Open();
  const HWND window = Window().Handle();
  End();
  EXPECT_FALSE(IsWindow(window));
}

TEST_F(FindInItems, IsInTheLanguageInUseWhenItIsOpened) {
  StartWithAliases({L"one"});
  Command(L"meu_Chinese_Traditional");

  Open();

  EXPECT_EQ(Window().Caption(), L"\x5728\x9805\x76EE\x4E2D\x5C0B\x627E");
  EXPECT_EQ(TextOf(Control(L"lblFind")), L"\x5C0B\x627E");
  EXPECT_EQ(TextOf(Control(L"Command1", 1)), L"\x53D6\x6D88(&C)");
  EXPECT_EQ(TextOf(Control(L"Combo1")), L"\x5225\x540D");
}

}  // namespace
}  // namespace kestrelon::test
