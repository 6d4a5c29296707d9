#include <gtest/gtest.h>

#include <algorithm>

#include "app/base/GetFileInfo.h"
#include "items/ItemInformation.h"
#include "tests/support/FakeWorld.h"
#include "tests/support/ScopedTestDir.h"

namespace kestrelon::test {
namespace {

TEST(ShortenedPath, ShowsUpTo40CharactersWhole) {
  EXPECT_EQ(items::ShortenedPath(L""), L"");
  EXPECT_EQ(items::ShortenedPath(std::wstring(39, L'p')), std::wstring(39, L'p'));
  EXPECT_EQ(items::ShortenedPath(std::wstring(40, L'p')), std::wstring(40, L'p'));
}

TEST(ShortenedPath, Shows41To50CharactersWholeAndAddsTheDots) {
  EXPECT_EQ(items::ShortenedPath(std::wstring(41, L'p')), std::wstring(41, L'p') + L"...");
  EXPECT_EQ(items::ShortenedPath(std::wstring(45, L'p')), std::wstring(45, L'p') + L"...");
  EXPECT_EQ(items::ShortenedPath(std::wstring(50, L'p')), std::wstring(50, L'p') + L"...");
}

TEST(ShortenedPath, CutsLongerPathsToTheirFirst50Characters) {
  EXPECT_EQ(items::ShortenedPath(std::wstring(50, L'p') + L"0123456789"), std::wstring(50, L'p') + L"...");
  EXPECT_EQ(items::ShortenedPath(std::wstring(50, L'p') + L"0"), std::wstring(50, L'p') + L"...");
}

class ItemInformation : public testing::Test {
 protected:
  std::wstring Information(const std::wstring& path) {
    return items::ItemInformation(dir.program, world, path);
  }
  static void SetTimes(const std::wstring& path, const SYSTEMTIME& created, const SYSTEMTIME& accessed,
                       const SYSTEMTIME& written) {
    FILETIME times[3];
    const SYSTEMTIME* local[3] = {&created, &accessed, &written};
    for (int i = 0; i < 3; ++i) {
      SYSTEMTIME universal;
      ASSERT_TRUE(TzSpecificLocalTimeToSystemTime(nullptr, local[i], &universal));
      ASSERT_TRUE(SystemTimeToFileTime(&universal, &times[i]));
    }
    const HANDLE file =
        CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    ASSERT_TRUE(SetFileTime(file, &times[0], &times[1], &times[2]));
    CloseHandle(file);
  }
  // What the system says of a file's times: not every file system keeps a time of creation.
  static std::wstring TimeText(const std::wstring& path, FILETIME WIN32_FILE_ATTRIBUTE_DATA::*which) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    EXPECT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data));
    SYSTEMTIME universal, local;
    FileTimeToSystemTime(&(data.*which), &universal);
    SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local);
    return DateTimeText(local);
  }

  ScopedTestDir dir;
  FakeWorld world;
};

TEST_F(ItemInformation, TellsPlaceSizeAttributesAndTimesInThisForm) {
  const std::wstring path = dir.WriteFile(L"a file.bin", std::string(1536, 'x'));
  const SYSTEMTIME accessed{2026, 3, 0, 4, 15, 6, 7, 0}, written{2025, 12, 0, 31, 23, 59, 58, 0};
  SetTimes(path, {2024, 2, 0, 29, 1, 2, 3, 0}, accessed, written);
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN);

  EXPECT_EQ(Information(path), L"Location: \r\n" + items::ShortenedPath(path) +
                                   L"\r\n\r\n"
                                   L"Size: 1.50 KB (1,536 Bytes)\r\n\r\n"
                                   L"----------------------------------------------------\r\n"
                                   L"Attributes:\r\n\r\n"
                                   L"Archive:    Yes              Read only: No\r\n\r\n"
                                   L"Hidden:     Yes               System:    No\r\n\r\n"
                                   L"----------------------------------------------------\r\n"
                                   L"Created Time    :" +
                                   TimeText(path, &WIN32_FILE_ATTRIBUTE_DATA::ftCreationTime) +
                                   L"\r\n\r\n"
                                   L"Lost Modefieed  :" +
                                   DateTimeText(written) +
                                   L"\r\n\r\n"
                                   L"Last Accessed   :" +
                                   DateTimeText(accessed));
}

TEST_F(ItemInformation, TellsTheOtherAttributesTheOtherWayRound) {
  const std::wstring path = dir.WriteFile(L"f");
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM);

  const std::wstring text = Information(path);
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);

  EXPECT_NE(text.find(L"              Read only: Yes\r\n\r\n"
                      L"Hidden:     No               System:    Yes\r\n\r\n"),
            std::wstring::npos)
      << Narrow(text);
}

TEST_F(ItemInformation, TellsWhatIsNotToBeArchived) {
  // A folder: some systems give every file the archive flag.
  const std::wstring text = Information(dir.Path(L"Program"));
  EXPECT_NE(text.find(L"Attributes:\r\n\r\nArchive:    No              Read only: No\r\n\r\n"),
            std::wstring::npos)
      << Narrow(text);
}

TEST_F(ItemInformation, CountsSmallFilesInBytes) {
  EXPECT_NE(Information(dir.WriteFile(L"f", "12345")).find(L"\r\n\r\nSize: 005 Bytes\r\n\r\n"),
            std::wstring::npos);
}

TEST_F(ItemInformation, RulesHave52Hyphens) {
  const std::wstring text = Information(dir.WriteFile(L"name"));
  const std::size_t first = text.find(L"\r\n" + std::wstring(52, L'-') + L"\r\n");
  ASSERT_NE(first, std::wstring::npos);
  EXPECT_NE(text.find(L"\r\n" + std::wstring(52, L'-') + L"\r\n", first + 54), std::wstring::npos);
}

TEST_F(ItemInformation, OfAMissingFileIsTheMessageAloneWithoutABox) {
  EXPECT_EQ(Information(dir.Path(L"gone.txt")), L"Can not open File!");
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(ItemInformation, OfAnEmptyPathIsTheMessage) { EXPECT_EQ(Information(L""), L"Can not open File!"); }

TEST_F(ItemInformation, TakesTheMessageFromTheLanguageInUse) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[messagebox]\r\n11=Not there\r\n");
  EXPECT_EQ(Information(dir.Path(L"gone.txt")), L"Not there");
}

TEST_F(ItemInformation, OfAServerThatDoesNotAnswerReadsNoFile) {
  world.hostResults = {false};
  EXPECT_EQ(Information(L"\\\\server\\share\\f.txt"), L"Can not open File!");
  EXPECT_EQ(world.hostQuestions, std::vector<std::wstring>{L"server"});
}

TEST_F(ItemInformation, AsksNoHostForALocalPath) {
  Information(dir.WriteFile(L"f"));
  EXPECT_TRUE(world.hostQuestions.empty());
}

TEST(ServerAnswers, IsTrueForLocalPathsWithoutAsking) {
  FakeWorld world;
  EXPECT_TRUE(items::ServerAnswers(world, L"C:\\f.txt"));
  EXPECT_TRUE(world.hostQuestions.empty());
}

TEST(ServerAnswers, AsksForTheNameUpToTheNextBackslash) {
  FakeWorld world;
  world.hostResults = {true, false, true};
  EXPECT_TRUE(items::ServerAnswers(world, L"\\\\alpha\\b\\c.txt"));
  EXPECT_FALSE(items::ServerAnswers(world, L"\\\\beta\\x"));
  EXPECT_TRUE(items::ServerAnswers(world, L"\\\\gamma"));
  EXPECT_EQ(world.hostQuestions, (std::vector<std::wstring>{L"alpha", L"beta", L"gamma"}));
}

}  // namespace
}  // namespace kestrelon::test
