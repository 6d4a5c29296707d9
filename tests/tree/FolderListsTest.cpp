#include <gtest/gtest.h>
#include <shlwapi.h>

#include <random>

#include "app/base/File.h"
#include "tests/support/FolderLink.h"
#include "tests/support/ScopedTestDir.h"
#include "tree/FolderLists.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

struct Entry {
  std::wstring name;
  DWORD attributes = FILE_ATTRIBUTE_ARCHIVE;
  DWORD tag = 0;
};

// The lists of C:\f with these entries; `end` is the code that follows the last one.
tree::FolderLists ListsOf(const std::vector<Entry>& entries, DWORD end = ERROR_NO_MORE_FILES,
                          const std::wstring& folder = L"C:\\f") {
  std::size_t next = 0;
  return tree::ListsOf(folder, [&](WIN32_FIND_DATAW& found) -> DWORD {
    if (next == entries.size()) return end;
    const Entry& entry = entries[next++];
    found = {};
    entry.name.copy(found.cFileName, MAX_PATH - 1);
    found.dwFileAttributes = entry.attributes;
    found.dwReserved0 = entry.tag;
    return 0;
  });
}

constexpr DWORD kFolder = FILE_ATTRIBUTE_DIRECTORY;
constexpr DWORD kPlaceholder = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;

TEST(FolderLists, KeepFilesByNameAndFoldersByPath) {
  const tree::FolderLists lists = ListsOf({{L".", kFolder}, {L"..", kFolder}, {L"a.txt"}, {L"sub", kFolder}});
  EXPECT_EQ(lists.File1, Texts{L"a.txt"});
  EXPECT_EQ(lists.Dir1, Texts{L"C:\\f\\sub"});
  EXPECT_EQ(lists.leftOut, Texts{});
}

TEST(FolderLists, DoNotDoubleTheBackslashOfARoot) {
  EXPECT_EQ(ListsOf({{L"sub", kFolder}}, ERROR_NO_MORE_FILES, L"C:\\").Dir1, Texts{L"C:\\sub"});
}

TEST(FolderLists, HoldHiddenAndSystemEntries) {
  constexpr DWORD kHiddenSystem = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
  const tree::FolderLists lists = ListsOf({{L"h", kHiddenSystem}, {L"s", kFolder | kHiddenSystem}});
  EXPECT_EQ(lists.File1, Texts{L"h"});
  EXPECT_EQ(lists.Dir1, Texts{L"C:\\f\\s"});
}

TEST(FolderLists, StandInTheOrderOfTheFileManager) {
  const std::vector<Entry> names = {{L"file10"}, {L"b"}, {L"file2"}, {L"A"}, {L"File1"}, {L"a2"}};
  EXPECT_EQ(ListsOf(names).File1, (Texts{L"A", L"a2", L"b", L"File1", L"file2", L"file10"}));
}

TEST(FolderLists, StandInTheOrderOfTheSystemAlsoOutsideAscii) {
  const std::vector<Entry> names = {{L"zebra"}, {L"\u00e9t\u00e9"}, {L"apple"}, {L"\u00c4rger"}};
  EXPECT_EQ(ListsOf(names).File1, (Texts{L"apple", L"\u00c4rger", L"\u00e9t\u00e9", L"zebra"}));
}

TEST(FolderLists, TellNamesApartThatDifferInCaseOnly) {
  EXPECT_EQ(ListsOf({{L"readme"}, {L"README"}, {L"Readme"}}).File1, (Texts{L"README", L"Readme", L"readme"}));
}

TEST(FolderLists, SortFoldersToo) {
  const tree::FolderLists lists = ListsOf({{L"Part 10", kFolder}, {L"part 9", kFolder}});
  EXPECT_EQ(lists.Dir1, (Texts{L"C:\\f\\part 9", L"C:\\f\\Part 10"}));
}

TEST(FolderLists, LeaveOutFoldersThatAreLinks) {
  const tree::FolderLists lists = ListsOf({{L"symbolic link", kPlaceholder, IO_REPARSE_TAG_SYMLINK},
                                           {L"junction", kPlaceholder, IO_REPARSE_TAG_MOUNT_POINT},
                                           {L"of a system that gives no tag", kPlaceholder, 0}});
  EXPECT_EQ(lists.Dir1, Texts{});
  EXPECT_EQ(lists.File1, Texts{});
  EXPECT_EQ(lists.leftOut, Texts{}) << "a link is no failure";
}

TEST(FolderLists, KeepFoldersOfACloudStorage) {
  constexpr DWORD kCloud = 0x9000701A;
  EXPECT_EQ(ListsOf({{L"cloud", kPlaceholder, kCloud}}).Dir1, Texts{L"C:\\f\\cloud"});
}

TEST(FolderLists, KeepLinksToFiles) {
  EXPECT_EQ(ListsOf({{L"link", FILE_ATTRIBUTE_REPARSE_POINT, IO_REPARSE_TAG_SYMLINK}}).File1, Texts{L"link"});
}

TEST(FolderLists, LeaveOutPathsThatOtherProgramsCannotOpen) {
  const std::wstring fits(259 - 5, L'n'), tooLong(260 - 5, L'n');  // behind "C:\f\"
  const tree::FolderLists lists = ListsOf({{fits}, {tooLong}, {fits, kFolder}, {tooLong, kFolder}});
  EXPECT_EQ(lists.File1, Texts{fits});
  EXPECT_EQ(lists.Dir1, Texts{L"C:\\f\\" + fits});
  EXPECT_EQ(lists.leftOut, (Texts{L"C:\\f\\" + tooLong, L"C:\\f\\" + tooLong}));
}

TEST(FolderLists, KeepWhatWasReadBeforeAFailureAndNameTheFolder) {
  const tree::FolderLists lists = ListsOf({{L"b"}, {L"a"}, {L"sub", kFolder}}, ERROR_NETNAME_DELETED);
  EXPECT_EQ(lists.File1, (Texts{L"a", L"b"}));
  EXPECT_EQ(lists.Dir1, Texts{L"C:\\f\\sub"});
  EXPECT_EQ(lists.leftOut, Texts{L"C:\\f"});
}

TEST(ReadFolder, ListsARealFolder) {
  const ScopedTestDir dir;
  dir.WriteFile(L"f\\file10.txt");
  const std::wstring hidden = dir.WriteFile(L"f\\file9.txt");
  SetFileAttributesW(hidden.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  dir.WriteFile(L"f\\sub\\below.txt");

  const tree::FolderLists lists = tree::ReadFolder(dir.Path(L"f"));

  EXPECT_EQ(lists.File1, (Texts{L"file9.txt", L"file10.txt"}));
  EXPECT_EQ(lists.Dir1, Texts{dir.Path(L"f\\sub")});
  EXPECT_EQ(lists.leftOut, Texts{});
}

TEST(ReadFolder, TakesAFolderWithABackslashAtItsEnd) {
  const ScopedTestDir dir;
  dir.WriteFile(L"f\\a.txt");
  EXPECT_EQ(tree::ReadFolder(dir.Path(L"f\\")).File1, Texts{L"a.txt"});
}

TEST(ReadFolder, NamesAFolderThatIsNotThere) {
  const ScopedTestDir dir;
  const tree::FolderLists lists = tree::ReadFolder(dir.Path(L"missing"));
  EXPECT_EQ(lists.leftOut, Texts{dir.Path(L"missing")});
  EXPECT_EQ(lists.File1, Texts{});
}

TEST(ReadFolder, LeavesOutALinkToAFolder) {
  const ScopedTestDir dir;
  dir.WriteFile(L"target\\inside.txt");
  dir.WriteFile(L"f\\own.txt");
  const FolderLink link(dir.Path(L"f\\link"), dir.Path(L"target"));
  if (!link.Made()) GTEST_SKIP() << "links cannot be made here";

  const tree::FolderLists lists = tree::ReadFolder(dir.Path(L"f"));

  EXPECT_EQ(lists.Dir1, Texts{});
  EXPECT_EQ(lists.File1, Texts{L"own.txt"});
}

TEST(ReadFolder, FollowsALinkThatWasChosenItself) {
  const ScopedTestDir dir;
  dir.WriteFile(L"target\\inside.txt");
  const FolderLink link(dir.Path(L"link"), dir.Path(L"target"));
  if (!link.Made()) GTEST_SKIP() << "links cannot be made here";
  EXPECT_EQ(tree::ReadFolder(dir.Path(L"link")).File1, Texts{L"inside.txt"});
}

TEST(UnlimitedForm, PutsThePrefixOfItsKindBeforeAPath) {
  EXPECT_EQ(tree::UnlimitedForm(L"C:\\x"), L"\\\\?\\C:\\x");
  EXPECT_EQ(tree::UnlimitedForm(L"\\\\server\\share\\x"), L"\\\\?\\UNC\\server\\share\\x");
  EXPECT_EQ(tree::UnlimitedForm(L"\\\\?\\C:\\x"), L"\\\\?\\C:\\x");
}

TEST(CompareNames, ReadsDigitsAsNumbersAndLettersWithoutCase) {
  EXPECT_LT(tree::CompareNames(L"file2", L"file10"), 0);
  EXPECT_GT(tree::CompareNames(L"file10", L"FILE2"), 0);
  EXPECT_EQ(tree::CompareNames(L"File2", L"file2"), 0);
  EXPECT_LT(tree::CompareNames(L"file", L"file2"), 0);
  EXPECT_EQ(tree::CompareNames(L"same", L"same"), 0);
}

int SystemsOrder(const std::wstring& a, const std::wstring& b) {
  const int order = StrCmpLogicalW(a.c_str(), b.c_str());
  return (order > 0) - (order < 0);
}

// What the names have in common is not compared by the system: that must not show.
TEST(CompareNames, AgreesWithTheSystemOnNamesThatHaveMuchInCommon) {
  const Texts pieces = {
      L"a", L"B",  L"ch",  L"c", L"h",      L"\u00e9", L"e\u0301",   L"e",          L"\u0301",    L"0",
      L"1", L"12", L"007", L"7", L"\u0661", L"\uff11", L"999999999", L"1234567890", L"-",         L"'",
      L" ", L".",  L"_",   L"(", L"\u6587", L"\u4ef6", L"\u00df",    L"ss",         L"4294967297"};
  std::mt19937 random(1);
  const auto name = [&](std::size_t count) {
    std::wstring text;
    while (count-- > 0) text += pieces[random() % pieces.size()];
    return text;
  };
  for (int round = 0; round < 10000; ++round) {
    const std::wstring common = name(random() % 4);
    const std::wstring a = common + name(random() % 3), b = common + name(random() % 3);
    ASSERT_EQ(tree::CompareNames(a, b), SystemsOrder(a, b)) << Narrow(a) << " | " << Narrow(b);
  }
}

}  // namespace
}  // namespace kestrelon::test
