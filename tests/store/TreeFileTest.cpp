// The file that the tree outlives the program in.

#include <gmock/gmock.h>

#include "store/TreeFile.h"
#include "tests/store/StoreFixture.h"

namespace kestrelon::store {
namespace {

using test::ScopedTestDir;

class TreeFileTest : public StoreTest {
 protected:
  std::wstring Path() const { return dir.Path(L"tree"); }
  std::vector<CategoryRow> ThereAndBack() {
    WriteTreeFile(Path(), tree);
    return ReadTreeFile(Path());
  }
};

TEST_F(TreeFileTest, GivesBackTheRowsThatASlotWouldHave) {
  win::TreeNode& a = AddCategory(nullptr, L"A", L"top ");
  win::TreeNode& b = AddCategory(&a, L"B", L"\x6587\x4EF6 \xD83D\xDE00");
  AddCategory(&b, L"C", std::wstring(254, L'x'));
  AddCategory(&a, L"D", L"a \"quote\"");
  AddCategory(nullptr, L"E", L"");
  const std::vector<CategoryRow> rows = ThereAndBack();
  EXPECT_EQ(rows, RowsOfTree(tree));
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[3], (CategoryRow{L"A", L"D", L"a \"quote\""}));
  EXPECT_EQ(rows[4].parent, kNoParent);
}

TEST_F(TreeFileTest, HoldsAnEmptyTree) { EXPECT_TRUE(ThereAndBack().empty()); }

TEST_F(TreeFileTest, HoldsATreeThatIsDeeperThanTheStack) {
  win::TreeNode* node = nullptr;
  for (int depth = 0; depth < 3000; ++depth)
    node = &AddCategory(node, L"K" + std::to_wstring(depth), L"category");
  EXPECT_EQ(ThereAndBack(), RowsOfTree(tree));
}

TEST_F(TreeFileTest, IsRefusedWithAnyByteChangedAndWithAnyMissing) {
  AddCategory(&AddCategory(nullptr, L"A", L"top"), L"B", L"child");
  WriteTreeFile(Path(), tree);
  const std::string whole = ScopedTestDir::ReadBytes(Path());
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string bytes = whole;
    bytes[at] = static_cast<char>(bytes[at] ^ 0x41);
    dir.WriteFile(L"tree", bytes);
    EXPECT_THROW(ReadTreeFile(Path()), std::runtime_error) << at;
    dir.WriteFile(L"tree", whole.substr(0, at));
    EXPECT_THROW(ReadTreeFile(Path()), std::runtime_error) << at;
  }
}

TEST_F(TreeFileTest, ThatIsNotThereIsAnError) { EXPECT_THROW(ReadTreeFile(Path()), std::system_error); }

}  // namespace
}  // namespace kestrelon::store
