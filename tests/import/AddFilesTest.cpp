#include <stdexcept>

#include "app/base/GetFileInfo.h"
#include "import/AddFiles.h"
#include "items/ShowData.h"
#include "jet/base/Error.h"
#include "lang/Messages.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

class AddFiles : public MainFormFixture {
 protected:
  void StartWithCategory() {
    Start();
    SelectCategory(AddCategory(L"K_", L"category"));
    program.databaseSaved = true;
  }
  void Add(const std::vector<std::wstring>& paths) { imports::AddFiles(Parts(), L"K_", paths, {}); }
  Texts FileIndexes(const std::wstring& key = L"K_") {
    return Query(L"SELECT FileIndex FROM FTable WHERE TreeviewNode=" + store::Quoted(key), 1);
  }
};

TEST_F(AddFiles, NumbersFrom1InAnEmptyCategoryAndOnInTheNextImport) {
  StartWithCategory();
  Add({L"C:\\a.txt", L"C:\\b.txt"});
  EXPECT_EQ(FileIndexes(), (Texts{L"1#K_", L"2#K_"}));
  Add({L"C:\\c.txt"});
  EXPECT_EQ(FileIndexes(), (Texts{L"1#K_", L"2#K_", L"3#K_"}));
}

TEST_F(AddFiles, GivesTheNumberOfADeletedLastItemAgain) {
  StartWithCategory();
  Add({L"C:\\1", L"C:\\2", L"C:\\3", L"C:\\4", L"C:\\5"});
  Execute(L"DELETE FROM FTable WHERE FileIndex=\"5#K_\"");
  Add({L"C:\\6"});
  EXPECT_EQ(FileIndexes().back(), L"5#K_");
  EXPECT_EQ(FileIndexes().size(), 5u);
}

TEST_F(AddFiles, CountsOnFromTheLargestNumberWhereverItStands) {
  StartWithCategory();
  AddItem(L"K_", 9, {L"nine"});
  AddItem(L"K_", 10, {L"ten"});
  AddItem(L"K_", 2, {L"two"});
  Add({L"C:\\a"});
  EXPECT_EQ(FileIndexes().back(), L"11#K_");
}

TEST_F(AddFiles, CountsEachCategoryByItself) {
  StartWithCategory();
  AddItem(L"other_", 50, {L"fifty"});
  Add({L"C:\\a"});
  EXPECT_EQ(FileIndexes(), Texts{L"1#K_"});
}

TEST_F(AddFiles, CountsAnItemThatCameFromAnotherCategoryByItsLeadingNumber) {
  StartWithCategory();
  Execute(L"INSERT INTO FTable VALUES(\"K_\",\"12#old_\",\"\",\"\",\"\",\"\",'')");
  Add({L"C:\\a"});
  EXPECT_EQ(FileIndexes(), (Texts{L"12#old_", L"13#K_"}));
}

// An item keeps its index wherever it goes.
TEST_F(AddFiles, PassesOverANumberWhoseItemWasMovedToAnotherCategory) {
  StartWithCategory();
  Add({L"C:\\1.txt", L"C:\\2.txt", L"C:\\3.txt"});
  Execute(L"UPDATE FTable SET TreeviewNode=\"B_\" WHERE FileIndex=\"3#K_\"");
  Execute(L"UPDATE FTable SET TreeviewNode=\"B_\" WHERE FileIndex=\"2#K_\"");

  Add({L"C:\\4.txt", L"C:\\5.txt"});

  EXPECT_EQ(FileIndexes(), (Texts{L"1#K_", L"4#K_", L"5#K_"}));
  EXPECT_EQ(FileIndexes(L"B_"), (Texts{L"2#K_", L"3#K_"}));
}

TEST_F(AddFiles, OverflowsWhereTheLastNumbersAreTakenElsewhere) {
  StartWithCategory();
  AddItem(L"K_", 32766, {L"old"});
  Execute(L"INSERT INTO FTable VALUES(\"B_\",\"32767#K_\",\"\",\"\",\"\",\"\",'')");
  EXPECT_THROW(Add({L"C:\\over.txt"}), std::overflow_error);
  EXPECT_EQ(FileIndexes(), Texts{L"32766#K_"});
}

TEST_F(AddFiles, WritesAllSevenFields) {
  StartWithCategory();
  Add({L"C:\\docs\\my notes.txt"});
  EXPECT_EQ(Query(L"SELECT * FROM FTable", 7),
            Texts{L"K_|1#K_|my notes|my notes.txt|C:\\docs\\my notes.txt|" + DateTimeText(world.now) + L"|"});
}

TEST_F(AddFiles, AddsTheSameFileAsOftenAsItIsGiven) {
  StartWithCategory();
  Add({L"C:\\a.txt", L"C:\\a.txt"});
  Add({L"C:\\a.txt"});
  EXPECT_EQ(Column(3), (Texts{L"C:\\a.txt", L"C:\\a.txt", L"C:\\a.txt"}));
}

TEST_F(AddFiles, LeavesTheListAsShowDataWouldFillIt) {
  StartWithCategory();
  Add({L"C:\\b.txt", L"C:\\.profile", L"C:\\archive.tar.gz"});
  const std::vector<win::ListRow> after = List().Rows();
  EXPECT_EQ(Column(1), (Texts{L"b", L"", L"archive.tar"}));
  EXPECT_EQ(Panel(3), L"3 Objects");

  items::ShowData(Parts(), L"K_");

  ASSERT_EQ(List().Count(), after.size());
  for (std::size_t row = 0; row < after.size(); ++row) {
    for (std::size_t column = 0; column < 6; ++column) {
      EXPECT_EQ(List().Rows()[row].Text(column), after[row].Text(column));
    }
    EXPECT_EQ(List().Rows()[row].Tag(), after[row].Tag());
  }
}

TEST_F(AddFiles, ClearsTheDatabaseSavedFlag) {
  StartWithCategory();
  Add({L"C:\\a.txt"});
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(AddFiles, FailsAtAPathWithADoubleQuoteAndKeepsTheRowsBeforeIt) {
  StartWithCategory();

  EXPECT_THROW(Add({L"C:\\good.txt", L"C:\\ba\"d.txt", L"C:\\never.txt"}), jet::Error);

  EXPECT_EQ(Query(L"SELECT Filename FROM FTable", 1), Texts{L"good.txt"});
  EXPECT_EQ(Column(2), Texts{L"good.txt"});
  EXPECT_EQ(Panel(3), L"1 Objects");
  EXPECT_FALSE(Parts().connection.IsOpen());
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(AddFiles, TakesASingleQuoteAndLettersOfAnyLanguage) {
  StartWithCategory();
  Add({L"C:\\it's \u4E2D\u6587.txt"});
  EXPECT_EQ(Column(1), Texts{L"it's \u4E2D\u6587"});
}

TEST_F(AddFiles, TakesAPathThatIsLongerThanATextColumn) {
  StartWithCategory();
  const std::wstring path = L"C:\\" + std::wstring(400, L'd') + L"\\f.txt";
  Add({path});
  EXPECT_EQ(Column(3), Texts{path});
}

TEST_F(AddFiles, OverflowsAfterNumber32767AndKeepsTheRowsBeforeIt) {
  StartWithCategory();
  AddItem(L"K_", 32766, {L"old"});

  EXPECT_THROW(Add({L"C:\\last.txt", L"C:\\over.txt"}), std::overflow_error);

  EXPECT_EQ(FileIndexes(), (Texts{L"32766#K_", L"32767#K_"}));
  EXPECT_EQ(Column(2), (Texts{L"f.txt", L"last.txt"}));
  EXPECT_FALSE(Parts().connection.IsOpen());
}

TEST_F(AddFiles, CountsOnPast32767WhereTheLimitIsHigher) {
  StartWithCategory();
  AddItem(L"K_", 32767, {L"old"});
  imports::AddFiles(Parts(), L"K_", {L"C:\\next.txt"}, {.largestNumber = imports::kLargest32Bit});
  EXPECT_EQ(FileIndexes().back(), L"32768#K_");
}

TEST_F(AddFiles, ShowsTheEndOfTheList) {
  StartWithCategory();
  std::vector<std::wstring> paths;
  for (int i = 0; i < 300; ++i) paths.push_back(L"C:\\f" + std::to_wstring(i));
  Add(paths);
  const HWND list = List().Handle();
  EXPECT_GT(ListView_GetTopIndex(list), 0);
  EXPECT_GE(ListView_GetTopIndex(list) + ListView_GetCountPerPage(list), 300);
}

TEST_F(AddFiles, NoneAddsNothing) {
  StartWithCategory();
  Add({});
  EXPECT_TRUE(FileIndexes().empty());
  EXPECT_TRUE(program.databaseSaved);
}

class TargetCategory : public AddFiles {
 protected:
  std::wstring Ask() { return imports::TargetCategory(Parts(), lang::kSelectCategoryToImport); }
};

TEST_F(TargetCategory, IsThatOfPanel2) {
  StartWithCategory();
  EXPECT_EQ(Ask(), L"K_");
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(TargetCategory, IsAskedForWhereThereIsNone) {
  Start();
  world.answers = {IDOK};

  EXPECT_EQ(Ask(), L"");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Please select a category to import !");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
}

}  // namespace
}  // namespace kestrelon::test
