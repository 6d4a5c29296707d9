#include <gtest/gtest.h>

#include <string>
#include <system_error>
#include <vector>

#include "tests/support/ScopedTestDir.h"
#include "tests/support/TestDataObject.h"
#include "ui/win/FileDrop.h"
#include "ui/win/Handles.h"

namespace kestrelon::win {
namespace {

using Paths = std::vector<std::wstring>;
using test::TestDataObject;

TEST(FileDrop, GivesThePathsInTheirOrder) {
  TestDataObject data = TestDataObject::Files({L"C:\\b.txt", L"C:\\A b.txt", L"\\\\server\\share\\c.doc"});
  EXPECT_EQ(DroppedPaths(data), (Paths{L"C:\\b.txt", L"C:\\A b.txt", L"\\\\server\\share\\c.doc"}));
}

TEST(FileDrop, GivesChineseNames) {
  TestDataObject data = TestDataObject::Files({L"D:\\\u6587\u4EF6\\\u8D44\u6599.txt"});
  EXPECT_EQ(DroppedPaths(data), Paths{L"D:\\\u6587\u4EF6\\\u8D44\u6599.txt"});
}

TEST(FileDrop, GivesLongPathsWhole) {
  const std::wstring path = L"C:\\" + std::wstring(397, L'p');
  TestDataObject data = TestDataObject::Files({path, L"C:\\short"});
  EXPECT_EQ(DroppedPaths(data), (Paths{path, L"C:\\short"}));
}

TEST(FileDrop, OfAnEmptyListIsNothing) {
  TestDataObject data = TestDataObject::Files({});
  EXPECT_EQ(DroppedPaths(data), Paths{});
}

TEST(FileDrop, OnlyAsksWhetherFilesAreOffered) {
  TestDataObject files = TestDataObject::Files({L"C:\\a"});
  TestDataObject text = TestDataObject::Text();

  EXPECT_TRUE(OffersFiles(files));
  EXPECT_FALSE(OffersFiles(text));

  EXPECT_EQ(files.transfers, 0);
}

TEST(FileDrop, OfAnObjectWithTextOnlyIsNothing) {
  TestDataObject text = TestDataObject::Text();
  EXPECT_EQ(DroppedPaths(text), Paths{});
  EXPECT_EQ(text.transfers, 0);
}

TEST(FileDrop, ThatIsOfferedAndNotGivenThrows) {
  TestDataObject data = TestDataObject::Files({L"C:\\a"});
  data.broken = true;
  EXPECT_THROW(DroppedPaths(data), std::system_error);
}

TEST(IsPlainFolder, IsTrueForAFolderWithoutOtherAttributes) {
  const test::ScopedTestDir dir;
  EXPECT_TRUE(IsPlainFolder(dir.Path(L"Program")));
  EXPECT_TRUE(IsPlainFolder(dir.Path(L"Program\\")));
}

TEST(IsPlainFolder, IsFalseForAHiddenFolder) {
  const test::ScopedTestDir dir;
  const std::wstring folder = dir.Path(L"Program");
  ASSERT_TRUE(SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_HIDDEN));
  EXPECT_FALSE(IsPlainFolder(folder));
}

TEST(IsPlainFolder, IsFalseForAReadOnlyFolder) {
  const test::ScopedTestDir dir;
  const std::wstring folder = dir.Path(L"Program");
  ASSERT_TRUE(SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_READONLY));
  const Finally restore([&] { SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_NORMAL); });
  if ((GetFileAttributesW(folder.c_str()) & FILE_ATTRIBUTE_READONLY) == 0)
    GTEST_SKIP() << "this system keeps no read-only attribute of a folder";
  EXPECT_FALSE(IsPlainFolder(folder));
}

TEST(IsPlainFolder, IsFalseForFilesAndForWhatIsGone) {
  const test::ScopedTestDir dir;
  EXPECT_FALSE(IsPlainFolder(dir.WriteFile(L"file.txt")));
  EXPECT_FALSE(IsPlainFolder(dir.Path(L"missing")));
  EXPECT_FALSE(IsPlainFolder(L""));
}

}  // namespace
}  // namespace kestrelon::win
