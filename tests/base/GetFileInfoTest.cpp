#include <gtest/gtest.h>

#include "app/base/GetFileInfo.h"
#include "tests/support/ScopedTestDir.h"

namespace kestrelon {
namespace {

using test::ScopedTestDir;

constexpr LCID kEnglishUnitedStates = 1033, kChinesePrc = 2052;

TEST(GetFileInfo, GivesSizeFlagsAndTimes) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteFile(L"a.txt", "12345");
  SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
  SYSTEMTIME now;
  GetLocalTime(&now);

  const std::optional<FileInfo> info = GetFileInfo(file);

  ASSERT_TRUE(info);
  EXPECT_EQ(info->size, 5u);
  EXPECT_EQ(info->readOnly, L"Yes");
  EXPECT_EQ(info->hidden, L"Yes");
  EXPECT_EQ(info->archive, L"Yes");
  EXPECT_EQ(info->system, L"No");
  const std::wstring today = DateTimeText(now).substr(0, DateTimeText(now).find(L' '));
  EXPECT_TRUE(info->lastWritten.starts_with(today)) << "local time";
  EXPECT_FALSE(info->created.empty());
  EXPECT_FALSE(info->lastAccessed.empty());
  SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(GetFileInfo, SaysNoForAFlagThatIsNotSet) {
  const ScopedTestDir dir;

  const std::optional<FileInfo> info = GetFileInfo(dir.Folder());

  ASSERT_TRUE(info);
  EXPECT_EQ(info->archive, L"No");
  EXPECT_EQ(info->readOnly, L"No");
  EXPECT_EQ(info->hidden, L"No");
  EXPECT_EQ(info->system, L"No");
}

TEST(GetFileInfo, ShowsTheLastWriteInLocalTime) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteFile(L"a.txt");
  const SYSTEMTIME universal{2026, 11, 0, 15, 13, 20, 5, 0};
  SYSTEMTIME local;
  FILETIME time;
  ASSERT_TRUE(SystemTimeToFileTime(&universal, &time));
  ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local));
  const HANDLE handle =
      CreateFileW(file.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_TRUE(SetFileTime(handle, nullptr, nullptr, &time));
  CloseHandle(handle);

  EXPECT_EQ(GetFileInfo(file)->lastWritten, DateTimeText(local));
}

TEST(GetFileInfo, KnowsSizesPastFourGigabytes) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteFile(L"a.txt");
  const HANDLE handle = CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  LARGE_INTEGER end;
  end.QuadPart = 5'000'000'000;
  const bool extended = SetFilePointerEx(handle, end, nullptr, FILE_BEGIN) && SetEndOfFile(handle);
  CloseHandle(handle);
  if (!extended) GTEST_SKIP() << "the file system holds no file that large";

  EXPECT_EQ(GetFileInfo(file)->size, 5'000'000'000u);
}

TEST(GetFileInfo, IsEmptyForAFileThatIsNotThere) {
  const ScopedTestDir dir;

  EXPECT_FALSE(GetFileInfo(dir.Path(L"missing.txt")));
}

TEST(DateTimeText, IsTheShortDateABlankAndTheTimeOfTheLocale) {
  const SYSTEMTIME time{2026, 11, 0, 15, 13, 20, 5, 0};

  EXPECT_EQ(DateTimeText(time, kEnglishUnitedStates), L"11/15/2026 1:20:05 PM");
  EXPECT_EQ(DateTimeText(time, kChinesePrc), L"2026/11/15 13:20:05");
}

}  // namespace
}  // namespace kestrelon
