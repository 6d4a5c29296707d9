// The comment window.

#include "tests/items/CommentWindowFixture.h"

namespace kestrelon::test {
namespace {

TEST_F(CommentWindow, OpensBesideTheMainWindowByItsMenuEntry) {
  StartWithRows();

  Command(L"meu_comment");

  ASSERT_TRUE(IsShown());
  EXPECT_EQ(Window().Caption(), L"Comment");
  EXPECT_EQ(GetWindow(Window().Handle(), GW_OWNER), form->Handle());
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
  EXPECT_TRUE(Menus().IsChecked(L"meu_comment"));
  EXPECT_TRUE(Parts().commentShown);
  EXPECT_EQ(GetFocus(), Control(L"Text1"));
}

TEST_F(CommentWindow, IsClosedByTheSameEntryByCancelByEscapeAndByItsFrame) {
  StartWithRows();
  const std::function<void()> ways[] = {
      [this] { Command(L"meu_comment"); },
      [this] { SendMessageW(Control(L"Command1", 1), BM_CLICK, 0, 0); },
      [this] { PressKey(Control(L"Text1"), VK_ESCAPE); },
      [this] { SendMessageW(Window().Handle(), WM_CLOSE, 0, 0); },
  };
  for (const auto& close : ways) {
    Command(L"meu_comment");
    ASSERT_TRUE(IsShown());
    close();
    EXPECT_FALSE(IsShown());
    EXPECT_FALSE(Menus().IsChecked(L"meu_comment"));
    EXPECT_FALSE(Parts().commentShown);
  }
}

TEST_F(CommentWindow, ShowsCommentAliasAndLengthOfTheSelectedRow) {
  StartWithRowOneShown();
  EXPECT_EQ(Text(L"Text1"), L"first");
  EXPECT_EQ(Text(L"Label1"), L"Charactor: 5");
  EXPECT_EQ(Text(L"Label2"), L"(one)");
}

TEST_F(CommentWindow, FollowsTheSelectedRow) {
  StartWithRowOneShown();
  Click(List().Handle(), MiddleOfRow(2));
  EXPECT_EQ(Text(L"Text1"), L"third");
  EXPECT_EQ(Text(L"Label2"), L"(three)");
  SendKey(List().Handle(), VK_UP);
  win::DoEvents();
  EXPECT_EQ(Text(L"Text1"), L"second");
  EXPECT_EQ(Text(L"Label1"), L"Charactor: 6");
}

TEST_F(CommentWindow, IsEmptyWhileNoRowIsSelected) {
  StartWithRows();
  Command(L"meu_comment");
  EXPECT_EQ(Text(L"Text1"), L"");
  EXPECT_EQ(Text(L"Label1"), L"Charactor: 0");
  EXPECT_EQ(Text(L"Label2"), L"");
}

TEST_F(CommentWindow, IsEmptiedWhenTheListIsFilledAnew) {
  StartWithRowOneShown();
  items::ShowData(Parts(), L"A_");
  EXPECT_EQ(Text(L"Text1"), L"");
  EXPECT_EQ(Text(L"Label2"), L"");
  Type(L"for whom?");
  Save();
  ExpectUnchanged();
}

TEST_F(CommentWindow, IsEmptiedWhenItsRowIsDeleted) {
  StartWithRowOneShown();
  world.answers = {IDYES, IDNO};
  Command(L"meu_Delete");
  EXPECT_EQ(Text(L"Text1"), L"");
  EXPECT_EQ(Text(L"Label2"), L"");
}

TEST_F(CommentWindow, ForgetsTheItemWhenItIsClosed) {
  StartWithRowOneShown();
  Command(L"meu_comment");
  EXPECT_EQ(Text(L"Text1"), L"");
  Type(L"late");
  Save();
  ExpectUnchanged();
}

TEST_F(CommentWindow, TakesNoTextWhileNoRowIsSelected) {
  StartWithRows();
  Command(L"meu_comment");
  SendMessageW(Control(L"Text1"), WM_CHAR, L'x', 1);
  EXPECT_EQ(Text(L"Text1"), L"");
  EXPECT_FALSE(IsWindowEnabled(Control(L"Command1", 0)));

  Click(List().Handle(), MiddleOfRow(1));

  EXPECT_TRUE(IsWindowEnabled(Control(L"Command1", 0)));
  SendMessageW(Control(L"Text1"), WM_CHAR, L'x', 1);
  EXPECT_EQ(Text(L"Text1"), L"xsecond");
}

TEST_F(CommentWindow, TakesNoDoubleQuote) {
  StartWithRowOneShown();
  const BalloonSpy balloons(Control(L"Text1"));
  for (const wchar_t letter : std::wstring(L"\"a\""))
    SendMessageW(Control(L"Text1"), WM_CHAR, static_cast<WPARAM>(letter), 1);
  EXPECT_EQ(Text(L"Text1"), L"afirst");
  EXPECT_EQ(balloons.Texts(), (Texts{kNoQuoteText, kNoQuoteText}));
}

TEST_F(CommentWindow, KeepsWhatIsTypedWhenItsRowIsClickedAgain) {
  StartWithRowOneShown();
  Type(L"not yet saved");
  Click(List().Handle(), MiddleOfRow(0));
  EXPECT_EQ(Text(L"Text1"), L"not yet saved");
}

TEST_F(CommentWindow, ShowsWhatADialogMadeOfItsRow) {
  StartWithRowOneShown();
  const HWND window = Window().Handle();
  EnableWindow(window, FALSE);  // as a modal dialog does
  List().SetText(0, 1, L"another alias");
  List().SetText(0, 5, L"another comment");
  EnableWindow(window, TRUE);
  win::DoEvents();
  EXPECT_EQ(Text(L"Text1"), L"another comment");
  EXPECT_EQ(Text(L"Label2"), L"(another alias)");
}

TEST_F(CommentWindow, CountsTheUnitsWhileTheUserTypes) {
  StartWithRowOneShown();
  SetFocus(Control(L"Text1"));
  SendMessageW(Control(L"Text1"), EM_SETSEL, 5, 5);
  SendMessageW(Control(L"Text1"), WM_CHAR, L'!', 1);
  EXPECT_EQ(Text(L"Label1"), L"Charactor: 6");
  Type(L"\U0001F426 \x4E2D\r\n.");
  EXPECT_EQ(Text(L"Label1"), L"Charactor: 7");
  Type(L"");
  EXPECT_EQ(Text(L"Label1"), L"Charactor: 0");
}

TEST_F(CommentWindow, TakesUpTo65535Units) {
  StartWithRowOneShown();
  EXPECT_EQ(SendMessageW(Control(L"Text1"), EM_GETLIMITTEXT, 0, 0), 65535);
}

TEST_F(CommentWindow, SavesTheTrimmedTextToTheTableAndTheRow) {
  StartWithRows();
  Click(List().Handle(), MiddleOfRow(1));
  Command(L"meu_comment");
  Type(L"  a new comment   ");

  Save();

  EXPECT_EQ(Comments(), (std::vector<std::wstring>{L"first", L"a new comment", L"third"}));
  EXPECT_EQ(Column(5), (std::vector<std::wstring>{L"first", L"a new comment", L"third"}));
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_TRUE(IsShown());
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(CommentWindow, SavesNothingThatIsBlank) {
  StartWithRowOneShown();
  for (const wchar_t* blank : {L"", L"    "}) {
    Type(blank);
    Save();
    ExpectUnchanged();
  }
}

TEST_F(CommentWindow, ChangesNothingWhenADoubleQuoteMakesTheStatementFailAndSaysSo) {
  StartWithRowOneShown();
  const BalloonSpy balloons(Control(L"Text1"));
  Type(L"a \"quoted\" word");
  Save();
  ExpectUnchanged();
  EXPECT_EQ(Text(L"Text1"), L"a \"quoted\" word");
  EXPECT_EQ(balloons.Texts(), Texts{kNoQuoteText});
  EXPECT_EQ(GetFocus(), Control(L"Text1"));
}

TEST_F(CommentWindow, SavesApostrophesEveryScriptAndLineBreaks) {
  StartWithRowOneShown();
  for (const wchar_t* comment : {L"it's '' fine", L"\x5907\x6CE8 \x8A3B\x89E3", L"\U0001F426 bird",
                                 L"one\r\n\r\ntwo", L"100% [*] # ; --"}) {
    Type(comment);
    Save();
    EXPECT_EQ(Comments().at(0), comment);
    EXPECT_EQ(List().Rows()[0].Text(5), comment);
  }
}

TEST_F(CommentWindow, SavesALongComment) {
  StartWithRowOneShown();
  std::wstring comment;
  while (comment.size() < 65535) comment += std::wstring(30, L'\x8A3B') + L"\r\n";
  comment.resize(65534);
  comment += L'.';
  Type(comment);
  Save();
  EXPECT_EQ(Text(L"Label1"), L"Charactor: 65535");
  EXPECT_TRUE(Comments().at(0) == comment);
}

TEST_F(CommentWindow, SavesToTheItemThatItWasTypedForWhateverRowIsSelected) {
  StartWithRowOneShown();
  Type(L"typed for the first");
  List().SelectOnly(1);  // nobody is told
  Save();
  EXPECT_EQ(Comments(), (Texts{L"typed for the first", L"second", L"third"}));
  EXPECT_EQ(Column(5), (Texts{L"typed for the first", L"second", L"third"}));
}

TEST_F(CommentWindow, ShowsTheSavedCommentWhenTheRowIsSelectedAgain) {
  StartWithRowOneShown();
  Type(L"saved");
  Save();
  Click(List().Handle(), MiddleOfRow(1));
  Click(List().Handle(), MiddleOfRow(0));
  EXPECT_EQ(Text(L"Text1"), L"saved");
}

TEST_F(CommentWindow, BreaksTheLineAtEnter) {
  StartWithRowOneShown();
  SetFocus(Control(L"Text1"));
  SendMessageW(Control(L"Text1"), EM_SETSEL, 5, 5);
  PressKey(Control(L"Text1"), VK_RETURN);
  EXPECT_EQ(Text(L"Text1"), L"first\r\n");
  EXPECT_TRUE(IsShown());
}

TEST_F(CommentWindow, GoesFromControlToControlByTab) {
  StartWithRowOneShown();
  SetFocus(Control(L"Text1"));
  PressKey(Control(L"Text1"), VK_TAB);
  EXPECT_EQ(GetFocus(), Control(L"Command1", 0));
  PressKey(GetFocus(), VK_TAB);
  EXPECT_EQ(GetFocus(), Control(L"Command1", 1));
  PressKey(GetFocus(), VK_TAB);
  EXPECT_EQ(GetFocus(), Control(L"Text1"));
  EXPECT_EQ(Text(L"Text1"), L"first");
}

TEST_F(CommentWindow, ShowsAnAliasWithItsAmpersands) {
  StartWithRows();
  List().SetText(0, 1, L"salt & pepper");
  Click(List().Handle(), MiddleOfRow(0));
  Command(L"meu_comment");
  EXPECT_EQ(Text(L"Label2"), L"(salt & pepper)");
  EXPECT_NE(GetWindowLongPtrW(Control(L"Label2"), GWL_STYLE) & SS_NOPREFIX, 0);
}

TEST_F(CommentWindow, KeepsAHiddenLabelForTheItemsIndex) {
  StartWithRowOneShown();
  EXPECT_EQ(Text(L"Label3"), L"1#A_");
  EXPECT_FALSE(IsWindowVisible(Control(L"Label3")));
}

TEST_F(CommentWindow, GivesItsTextTheRoomAboveTheBottomRow) {
  StartWithRowOneShown();
  for (const SIZE size : {SIZE{700, 500}, SIZE{420, 200}}) {
    SetWindowPos(Window().Handle(), nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER);
    RECT inner, text, save, cancel;
    GetClientRect(Window().Handle(), &inner);
    MapWindowPoints(Window().Handle(), nullptr, reinterpret_cast<POINT*>(&inner), 2);
    GetWindowRect(Control(L"Text1"), &text);
    GetWindowRect(Control(L"Command1", 0), &save);
    GetWindowRect(Control(L"Command1", 1), &cancel);
    EXPECT_EQ(text.left, inner.left);
    EXPECT_EQ(text.top, inner.top);
    EXPECT_EQ(text.right, inner.right);
    EXPECT_GT(text.bottom - text.top, (inner.bottom - inner.top) / 2);
    EXPECT_LE(text.bottom, save.top);
    EXPECT_LE(save.right, cancel.left);
    EXPECT_LE(cancel.right, inner.right);
    EXPECT_LE(cancel.bottom, inner.bottom);
  }
}

TEST_F(CommentWindow, CannotBeMadeTooSmallForItsButtons) {
  StartWithRowOneShown();
  SetWindowPos(Window().Handle(), nullptr, 0, 0, 10, 10, SWP_NOMOVE | SWP_NOZORDER);
  RECT window, save;
  GetWindowRect(Window().Handle(), &window);
  GetWindowRect(Control(L"Command1", 0), &save);
  EXPECT_GT(save.left, window.left);
  EXPECT_GT(save.top, window.top);
}

TEST_F(CommentWindow, ComesBackWhereItWasAndAsLarge) {
  StartWithRowOneShown();
  SetWindowPos(Window().Handle(), nullptr, 30, 40, 500, 300, SWP_NOZORDER);
  Command(L"meu_comment");
  Command(L"meu_comment");
  RECT place;
  GetWindowRect(Window().Handle(), &place);
  EXPECT_EQ(place.left, 30);
  EXPECT_EQ(place.top, 40);
  EXPECT_EQ(place.right, 530);
  EXPECT_EQ(place.bottom, 340);
  EXPECT_EQ(Text(L"Text1"), L"first");
}

TEST_F(CommentWindow, GoesToTheTrayAndComesBackWithTheMainWindow) {
  StartWithRowOneShown();
  Type(L"not yet saved");
  ShowWindow(form->Handle(), SW_MINIMIZE);
  win::DoEvents();
  EXPECT_FALSE(IsShown());
  EXPECT_TRUE(Parts().commentShown);

  SendMessageW(form->Handle(), WM_APP + 1, 1, WM_LBUTTONUP);  // what the icon sends
  win::DoEvents();

  EXPECT_TRUE(IsShown());
  EXPECT_EQ(Text(L"Text1"), L"not yet saved");
}

TEST_F(CommentWindow, StaysClosedWhenTheMainWindowComesBackFromTheTray) {
  StartWithRowOneShown();
  Command(L"meu_comment");
  ShowWindow(form->Handle(), SW_MINIMIZE);
  SendMessageW(form->Handle(), WM_APP + 1, 1, WM_LBUTTONUP);
  win::DoEvents();
  EXPECT_FALSE(IsShown());
}

TEST_F(CommentWindow, IsShownAgainByTheLayoutOfTheMainWindow) {
  StartWithRowOneShown();
  ShowWindow(Window().Handle(), SW_HIDE);
  SetWindowPos(form->Handle(), nullptr, 0, 0, 800, 600, SWP_NOMOVE | SWP_NOZORDER);
  EXPECT_TRUE(IsShown());
}

TEST_F(CommentWindow, GoesWithTheMainWindow) {
  StartWithRowOneShown();
  const HWND window = Window().Handle();
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_FALSE(IsWindow(window));
  EXPECT_FALSE(IsWindow(form->Handle()));
}

TEST_F(CommentWindow, MayStillBeOpenWhenTheProgramEnds) {
  StartWithRowOneShown();
  const HWND window = Window().Handle();
  End();
  EXPECT_FALSE(IsWindow(window));
}

TEST_F(CommentWindow, IsInTheLanguageInUseWhenItIsOpened) {
  StartWithRows();
  Command(L"meu_comment");
  Command(L"meu_Chinese_Traditional");
  EXPECT_EQ(Window().Caption(), L"Comment") << "open windows keep their texts";

  Command(L"meu_comment");
  Command(L"meu_comment");

  EXPECT_EQ(Window().Caption(), L"\x8A3B\x89E3");
  EXPECT_EQ(TextOf(Control(L"Command1", 0)), L"\x5132\x5B58(&S)");
  EXPECT_EQ(TextOf(Control(L"Command1", 1)), L"\x53D6\x6D88(&C)");
  EXPECT_EQ(Text(L"Label1"), L"Charactor: 0");
}

}  // namespace
}  // namespace kestrelon::test
