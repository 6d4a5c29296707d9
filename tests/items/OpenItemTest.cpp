// Opening the selected item's file.

#include "items/ItemCommands.h"
#include "items/OpenItem.h"
#include "items/ShowData.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class OpenItem : public MainFormFixture {
 protected:
  // One row for each path, the first selected.
  void StartWith(const std::vector<std::wstring>& paths) {
    Start();
    int number = 0;
    for (const std::wstring& path : paths) AddItem(L"A_", ++number, {L"alias", L"file", path});
    items::ShowData(Parts(), L"A_");
    List().SelectOnly(0);
    items::EnableItemCommands(Parts());
    win::DoEvents();
  }
  void ExpectCannotOpen() {
    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].text, L"Can not open File!");
    EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
    EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
  }
};

TEST_F(OpenItem, HandsThePathToTheShellWithTheVerbOpen) {
  StartWith({L"C:\\docs\\a b.txt"});
  world.executionResults = {33};

  items::OpenSelectedItem(Parts());

  ASSERT_EQ(world.executions.size(), 1u);
  EXPECT_EQ(world.executions[0].verb, L"open");
  EXPECT_EQ(world.executions[0].target, L"C:\\docs\\a b.txt");
  EXPECT_EQ(world.executions[0].show, 5);
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(OpenItem, SaysThatALocalFileThatIsNotFoundCannotBeOpened) {
  StartWith({L"C:\\gone.txt"});
  world.executionResults = {2};
  world.answers = {IDOK};
  items::OpenSelectedItem(Parts());
  ExpectCannotOpen();
}

TEST_F(OpenItem, IsSilentAboutOtherFailuresOfALocalFile) {
  StartWith({L"C:\\f.unknown"});
  for (const INT_PTR result : {31, 3, 5, 0, 32}) {
    world.executionResults = {result};
    items::OpenSelectedItem(Parts());
  }
  EXPECT_EQ(world.executions.size(), 5u);
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(OpenItem, SaysTheSameBeforeAnyAttemptWhenTheServerIsDown) {
  StartWith({L"\\\\server\\share\\f.txt"});
  world.hostResults = {false};
  world.answers = {IDOK};

  items::OpenSelectedItem(Parts());

  ExpectCannotOpen();
  EXPECT_TRUE(world.executions.empty());
  EXPECT_EQ(world.hostQuestions, std::vector<std::wstring>{L"server"});
}

TEST_F(OpenItem, OpensANetworkFileWhoseServerAnswers) {
  StartWith({L"\\\\server\\share\\f.txt"});
  world.hostResults = {true};
  world.executionResults = {33};
  items::OpenSelectedItem(Parts());
  ASSERT_EQ(world.executions.size(), 1u);
  EXPECT_EQ(world.executions[0].target, L"\\\\server\\share\\f.txt");
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(OpenItem, SaysThatANetworkFileCannotBeOpenedForEveryResultBelow32) {
  for (const INT_PTR result : {2, 31, 0}) {
    End();
    StartWith({L"\\\\server\\share\\f.txt"});
    world.boxes.clear();
    world.hostResults = {true};
    world.executionResults = {result};
    world.answers = {IDOK};
    items::OpenSelectedItem(Parts());
    ExpectCannotOpen();
  }
}

TEST_F(OpenItem, TakesTheResult32OfANetworkFileAsSuccess) {
  StartWith({L"\\\\server\\share\\f.txt"});
  world.hostResults = {true};
  world.executionResults = {32};
  items::OpenSelectedItem(Parts());
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(OpenItem, TakesTheMessageFromTheLanguageInUse) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[messagebox]\r\n11=Not there\r\n");
  StartWith({L"C:\\gone.txt"});
  world.executionResults = {2};
  world.answers = {IDOK};
  items::OpenSelectedItem(Parts());
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Not there");
}

TEST_F(OpenItem, DoesNothingWithoutASelectedRow) {
  StartWith({L"C:\\a.txt"});
  List().SelectNone();
  items::OpenSelectedItem(Parts());
  EXPECT_TRUE(world.executions.empty());
}

TEST_F(OpenItem, ADoubleClickOpensTheRowUnderIt) {
  StartWith({L"C:\\a.txt", L"C:\\b.txt"});
  world.executionResults = {33};
  const POINT point = MiddleOfRow(1);

  Click(List().Handle(), point);
  PostMessageW(List().Handle(), WM_LBUTTONDBLCLK, MK_LBUTTON, MAKELPARAM(point.x, point.y));
  PostMessageW(List().Handle(), WM_LBUTTONUP, 0, MAKELPARAM(point.x, point.y));
  win::DoEvents();

  ASSERT_EQ(world.executions.size(), 1u);
  EXPECT_EQ(world.executions[0].target, L"C:\\b.txt");
}

TEST_F(OpenItem, TheMenuCommandOpensTheSelectedRow) {
  StartWith({L"C:\\a.txt"});
  world.executionResults = {33};
  Command(L"meu_openfile");
  EXPECT_EQ(world.executions.size(), 1u);
}

}  // namespace
}  // namespace kestrelon::test
