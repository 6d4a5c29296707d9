#include "app/SingleInstance.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

TEST(SingleInstance, IsFirstForAFolderThatNobodyHolds) {
  const app::SingleInstance instance(L"C:\\kestrelon test one\\");
  EXPECT_TRUE(instance.IsFirst());
}

TEST(SingleInstance, IsNotFirstWhileAnotherHoldsTheFolder) {
  const app::SingleInstance first(L"C:\\kestrelon test two\\");
  const app::SingleInstance second(L"C:\\kestrelon test two\\");
  EXPECT_FALSE(second.IsFirst());
}

TEST(SingleInstance, TellsFoldersApartButNotTheirLetterCase) {
  const app::SingleInstance first(L"C:\\kestrelon test three\\");
  EXPECT_TRUE(app::SingleInstance(L"C:\\kestrelon test four\\").IsFirst());
  EXPECT_FALSE(app::SingleInstance(L"C:\\Kestrelon TEST Three\\").IsFirst());
}

TEST(SingleInstance, IsFirstAgainAfterTheOtherHasGone) {
  { const app::SingleInstance first(L"C:\\kestrelon test five\\"); }
  EXPECT_TRUE(app::SingleInstance(L"C:\\kestrelon test five\\").IsFirst());
}

class SecondStart : public MainFormFixture {};

TEST_F(SecondStart, BringsTheMinimisedWindowBackToTheFront) {
  const app::SingleInstance first(program.dataFolder);
  Start();
  form->SetWakeMark(first.FolderMark());
  ShowWindow(form->Handle(), SW_MINIMIZE);
  ASSERT_FALSE(IsWindowVisible(form->Handle()));

  app::SingleInstance(program.dataFolder).WakeTheOther();
  win::DoEvents();

  EXPECT_TRUE(IsWindowVisible(form->Handle()));
  EXPECT_FALSE(IsIconic(form->Handle()));
  EXPECT_EQ(GetForegroundWindow(), form->Handle());
  EXPECT_FALSE(form->SysTray().IsShown());
}

TEST_F(SecondStart, WithAnotherDataFolderLeavesTheWindowAlone) {
  const app::SingleInstance first(program.dataFolder);
  Start();
  form->SetWakeMark(first.FolderMark());
  ShowWindow(form->Handle(), SW_MINIMIZE);

  app::SingleInstance(L"C:\\kestrelon test other\\").WakeTheOther();
  win::DoEvents();

  EXPECT_FALSE(IsWindowVisible(form->Handle()));
}

TEST_F(SecondStart, LeavesAWindowThatIsShownAsLargeAsItIs) {
  const app::SingleInstance first(program.dataFolder);
  Start();
  form->SetWakeMark(first.FolderMark());
  ShowWindow(form->Handle(), SW_MAXIMIZE);

  app::SingleInstance(program.dataFolder).WakeTheOther();
  win::DoEvents();

  EXPECT_TRUE(IsZoomed(form->Handle()));
}

}  // namespace
}  // namespace kestrelon::test
