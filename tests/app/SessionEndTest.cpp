// The end of the Windows session: nobody is asked, and nothing is lost.

#include <stdexcept>

#include "store/Store.h"
#include "tests/app/UnsavedFixture.h"
#include "ui/win/CommandsOff.h"

namespace kestrelon::test {
namespace {

using SessionEnd = Unsaved;

TEST_F(SessionEnd, IsKeptAtTheEndOfTheSessionWithoutAQuestion) {
  StartWithWork();
  Tree().SetText(*Tree().Find(L"A_"), L"renamed");
  EXPECT_TRUE(SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0));
  SendMessageW(form->Handle(), WM_ENDSESSION, TRUE, 0);
  EXPECT_TRUE(world.boxes.empty());
  CrashAndStart({IDYES});
  EXPECT_EQ(ShownTree(), L"renamed");
}

TEST_F(SessionEnd, IsAskedForAgainWhenTheSessionGoesOn) {
  StartWithWork();
  SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0);
  SendMessageW(form->Handle(), WM_ENDSESSION, FALSE, 0);
  world.answers = {IDCANCEL};
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_EQ(world.boxes.size(), 1u);
}

TEST_F(SessionEnd, KeepsItsWindowUntilTheSessionIsKnownToEnd) {
  StartWithWork();
  SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0);
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(IsWindow(form->Handle()));
  EXPECT_TRUE(world.boxes.empty());
  SendMessageW(form->Handle(), WM_ENDSESSION, FALSE, 0);
  EXPECT_TRUE(IsWindow(form->Handle()));
}

TEST_F(SessionEnd, IsNotAskedForByAWindowThatIsClosedAsTheSessionEnds) {
  StartWithWork();
  SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, ENDSESSION_CLOSEAPP);
  SendMessageW(form->Handle(), WM_ENDSESSION, TRUE, ENDSESSION_CLOSEAPP);
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(world.boxes.empty());
  CrashAndStart({IDYES});
  EXPECT_EQ(ShownTree(), L"work");
}

TEST_F(SessionEnd, LeavesNothingToRecoverOfASavedCollection) {
  StartWithWork();
  world.answers = {IDOK};
  ASSERT_TRUE(store::SaveData(Parts(), L"Data1.dat", form->Handle()));
  world.boxes.clear();
  EXPECT_TRUE(SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0));
  SendMessageW(form->Handle(), WM_ENDSESSION, TRUE, 0);
  ExpectNothingBesideTheDatabases();
  KillAndStart({});
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(SessionEnd, StopsALongOperationAtItsNextStep) {
  Start();
  {
    const win::CommandsOff off(Parts(), {L"meu_file"});
    EXPECT_TRUE(SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0));
    EXPECT_TRUE(Parts().closeRequested);
    SendMessageW(form->Handle(), WM_ENDSESSION, FALSE, 0);
    EXPECT_FALSE(Parts().closeRequested) << "the session goes on, and so does the operation";
  }
}

TEST_F(SessionEnd, BringsToDiskWhatALongOperationHasDone) {
  StartWithWork();
  SendMessageW(form->Handle(), WM_TIMER, 1, 0);  // the tree is kept
  {
    const win::CommandsOff off(Parts(), {L"meu_file"});
    Parts().connection.Ado().Open();
    Parts().connection.Execute(L"DELETE FROM FTable");
    EXPECT_TRUE(SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0));
    SendMessageW(form->Handle(), WM_ENDSESSION, TRUE, 0);
  }
  KillAndStart({IDYES});
  EXPECT_EQ(ShownTree(), L"work");
  SelectCategory(*Tree().Find(L"A_"));
  EXPECT_EQ(List().Count(), 0u);
}

TEST_F(SessionEnd, KeepsACommentThatIsBeingTyped) {
  StartWithWork();
  int kept = 0;
  Parts().keepComment = [&] { ++kept; };
  EXPECT_TRUE(SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0));
  EXPECT_EQ(kept, 1);
  Parts().keepComment = nullptr;
}

TEST_F(SessionEnd, IsNotRefusedForAFailure) {
  StartWithWork();
  Parts().keepComment = [] { throw std::runtime_error("no room for a comment"); };
  EXPECT_TRUE(SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0));
  SendMessageW(form->Handle(), WM_ENDSESSION, TRUE, 0);
  EXPECT_TRUE(world.boxes.empty());
  Parts().keepComment = nullptr;
}

}  // namespace
}  // namespace kestrelon::test
