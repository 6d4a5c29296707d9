// What becomes of a comment that was typed and not saved.

#include <functional>

#include "tests/items/CommentWindowFixture.h"

namespace kestrelon::test {
namespace {

class UnsavedComment : public CommentWindow {};

TEST_F(UnsavedComment, DropsWhatWasTypedForTheRowBeforeWhenItIsNotToBeSaved) {
  StartWithRowOneShown();
  Type(L"not saved");
  world.answers = {IDNO};
  Click(List().Handle(), MiddleOfRow(1));
  EXPECT_EQ(Text(L"Text1"), L"second");
  Click(List().Handle(), MiddleOfRow(0));
  EXPECT_EQ(Text(L"Text1"), L"first");
  ExpectOneQuestion();
  world.boxes.clear();
  ExpectUnchanged();
}

TEST_F(UnsavedComment, SavesWhatWasTypedForTheRowBeforeWhenTheUserWantsIt) {
  StartWithRowOneShown();
  Type(L" typed ");
  world.answers = {IDYES};

  Click(List().Handle(), MiddleOfRow(1));

  EXPECT_EQ(Comments(), (Texts{L"typed", L"second", L"third"}));
  EXPECT_EQ(Column(5), (Texts{L"typed", L"second", L"third"}));
  EXPECT_EQ(Text(L"Text1"), L"second");
  EXPECT_EQ(Text(L"Label2"), L"(two)");
  EXPECT_EQ(List().SelectedRows(), std::vector<std::size_t>{1});
  EXPECT_FALSE(program.databaseSaved);
  ExpectOneQuestion();
}

TEST_F(UnsavedComment, AsksNothingAboutATextThatWouldNotBeSavedOrIsTheSame) {
  StartWithRowOneShown();
  for (const wchar_t* text : {L"", L"   ", L"first", L" first "}) {
    Type(text);
    Click(List().Handle(), MiddleOfRow(1));
    Click(List().Handle(), MiddleOfRow(0));
    EXPECT_EQ(Text(L"Text1"), L"first");
  }
  ExpectUnchanged();
}

TEST_F(UnsavedComment, AsksNothingAboutATextThatWasSaved) {
  StartWithRowOneShown();
  Type(L"saved");
  Save();
  Click(List().Handle(), MiddleOfRow(1));
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(UnsavedComment, AsksBeforeItIsClosedInWhateverWay) {
  const std::function<void()> ways[] = {
      [this] { Command(L"meu_comment"); },
      [this] { SendMessageW(Control(L"Command1", 1), BM_CLICK, 0, 0); },
      [this] { PressKey(Control(L"Text1"), VK_ESCAPE); },
      [this] { SendMessageW(Window().Handle(), WM_CLOSE, 0, 0); },
  };
  for (const int answer : {IDYES, IDNO}) {
    for (const auto& close : ways) {
      End();
      world.boxes.clear();
      StartWithRowOneShown();
      Type(L"typed");
      world.answers = {answer};
      close();
      EXPECT_FALSE(IsShown());
      ExpectOneQuestion();
      EXPECT_EQ(Comments().at(0), answer == IDYES ? L"typed" : L"first");
    }
  }
}

TEST_F(UnsavedComment, AsksWhenTheListShowsAnotherCategoryAndSavesToTheItemItWasTypedFor) {
  StartWithRowOneShown();
  win::TreeNode& other = AddCategory(L"B_", L"Beta");
  AddItem(L"B_", 1, {.alias = L"one of B", .comment = L"B's"});
  Type(L"typed for A");
  world.answers = {IDYES};

  SelectCategory(other);

  EXPECT_EQ(Column(5), Texts{L"B's"});
  EXPECT_EQ(Comments(), (Texts{L"typed for A", L"second", L"third", L"B's"}));
  EXPECT_EQ(Text(L"Text1"), L"");
  ExpectOneQuestion();
}

TEST_F(UnsavedComment, AsksWhenTheListIsFilledAnewAndShowsWhatIsSavedThere) {
  StartWithRowOneShown();
  Type(L"typed");
  world.answers = {IDYES};
  items::ShowData(Parts(), L"A_");
  EXPECT_EQ(Column(5), (Texts{L"typed", L"second", L"third"}));
  ExpectOneQuestion();
}

TEST_F(UnsavedComment, AsksNothingForAnItemThatWasDeleted) {
  StartWithRowOneShown();
  Type(L"typed");
  world.answers = {IDYES, IDNO};  // to the deletion's questions
  Command(L"meu_Delete");
  EXPECT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(Text(L"Text1"), L"");
}

TEST_F(UnsavedComment, AsksBeforeAnotherCollectionIsLoadedAndBeforeTheProgramIsLeft) {
  for (const int answer : {IDYES, IDNO}) {
    End();
    world.boxes.clear();
    StartWithRowOneShown();
    Type(L"typed");
    world.answers = {answer};
    ASSERT_TRUE(Parts().settleComment);
    Parts().settleComment();
    EXPECT_EQ(Comments().at(0), answer == IDYES ? L"typed" : L"first");
    Parts().settleComment();
    ExpectOneQuestion();
    EXPECT_TRUE(IsShown());
  }
}

TEST_F(UnsavedComment, AsksFirstWhenTheMainWindowIsClosed) {
  StartWithRowOneShown();
  Type(L"typed");
  world.answers = {IDYES, IDCANCEL};
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[0].text, L"(one)\n\nThe comment was changed. Save it?");
  EXPECT_EQ(world.boxes[1].text, L"Program will be exit, Save Changes ? ") << "for what was just saved";
  EXPECT_EQ(Text(L"Text1"), L"typed");
}

TEST_F(UnsavedComment, AsksOneQuestionAtATime) {
  StartWithRowOneShown();
  Type(L"typed");
  int questions = 0;
  world.messageBox = [&](HWND, const std::wstring&, const std::wstring&, UINT) {
    ++questions;
    EXPECT_FALSE(IsWindowEnabled(Window().Handle())) << "the text stays as it is asked about";
    List().SelectOnly(2);
    items::EnableItemCommands(Parts());
    Parts().settleComment();
    win::DoEvents();
    EXPECT_EQ(Text(L"Text1"), L"typed");
    return IDYES;
  };

  Click(List().Handle(), MiddleOfRow(1));

  EXPECT_EQ(questions, 1);
  EXPECT_EQ(Comments(), (Texts{L"typed", L"second", L"third"}));
  EXPECT_EQ(Text(L"Text1"), L"third") << "the row that is selected in the end";
  EXPECT_TRUE(IsWindowEnabled(Window().Handle()));
}

TEST_F(UnsavedComment, AsksOverTheDialogThatIsOpen) {
  StartWithRowOneShown();
  Type(L"typed");
  EnableWindow(form->Handle(), FALSE);
  world.answers = {IDNO};
  Parts().settleComment();
  EnableWindow(form->Handle(), TRUE);
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].owner, GetLastActivePopup(form->Handle()));
}

TEST_F(UnsavedComment, AsksInTheLanguageInUse) {
  StartWithRowOneShown();
  program.languageName = L"Chinese_S";
  Type(L"typed");
  world.answers = {IDNO};
  Click(List().Handle(), MiddleOfRow(1));
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"(one)\n\n备注已更改。要保存吗？");
}

TEST_F(UnsavedComment, KeepsTheTextAndItsItemWhereItCannotBeSaved) {
  StartWithRowOneShown();
  const BalloonSpy balloons(Control(L"Text1"));
  Type(L"a \"quoted\" word");
  world.answers = {IDYES, IDYES, IDNO};

  Click(List().Handle(), MiddleOfRow(1));

  EXPECT_EQ(Text(L"Text1"), L"a \"quoted\" word");
  EXPECT_EQ(Text(L"Label2"), L"(one)");
  EXPECT_EQ(balloons.Texts(), Texts{kNoQuoteText});
  SendMessageW(Window().Handle(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(IsShown());
  SendMessageW(Window().Handle(), WM_CLOSE, 0, 0);
  EXPECT_FALSE(IsShown());
  EXPECT_EQ(Comments().at(0), L"first");
}

}  // namespace
}  // namespace kestrelon::test
