#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <string>
#include <system_error>

#include "app/base/File.h"
#include "tests/support/ScopedTestDir.h"

namespace kestrelon {
namespace {

using test::ScopedTestDir;

DWORD ErrorOf(const std::function<void()>& body) {
  try {
    body();
  } catch (const std::system_error& error) {
    return static_cast<DWORD>(error.code().value());
  }
  return ERROR_SUCCESS;
}

// A file that somebody else has open and shares with nobody.
class Locked {
 public:
  explicit Locked(const std::wstring& path)
      : handle_(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
    EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
  }
  ~Locked() { CloseHandle(handle_); }

 private:
  HANDLE handle_;
};

TEST(CutAtNul, GivesTheTextBeforeTheFirstNul) {
  EXPECT_EQ(CutAtNul(std::wstring_view(L"ab\0cd\0", 6)), L"ab");
  EXPECT_EQ(CutAtNul(std::wstring_view(L"\0cd", 3)), L"");
}

TEST(CutAtNul, GivesTheWholeTextWhenThereIsNone) {
  EXPECT_EQ(CutAtNul(L"abc"), L"abc");
  EXPECT_EQ(CutAtNul(L""), L"");
}

TEST(FileNameOfPath, IsThePartAfterTheLastBackslash) {
  EXPECT_EQ(FileNameOfPath(L"C:\\docs\\notes.txt"), L"notes.txt");
  EXPECT_EQ(FileNameOfPath(L"notes.txt"), L"notes.txt");
  EXPECT_EQ(FileNameOfPath(L"C:\\docs\\"), L"");
  EXPECT_EQ(FileNameOfPath(L"C:/docs/notes.txt"), L"C:/docs/notes.txt");
}

TEST(FolderOfPath, GoesUpToAndIncludesTheLastBackslash) {
  EXPECT_EQ(FolderOfPath(L"C:\\docs\\notes.txt"), L"C:\\docs\\");
  EXPECT_EQ(FolderOfPath(L"C:\\docs\\"), L"C:\\docs\\");
  EXPECT_EQ(FolderOfPath(L"notes.txt"), L"");
}

TEST(NameWithoutExtension, IsThePartBeforeTheLastDot) {
  EXPECT_EQ(NameWithoutExtension(L"archive.tar.gz"), L"archive.tar");
  EXPECT_EQ(NameWithoutExtension(L".profile"), L"");
  EXPECT_EQ(NameWithoutExtension(L"README"), L"README");
}

TEST(ExtensionOf, IsThePartAfterTheLastDot) {
  EXPECT_EQ(ExtensionOf(L"archive.tar.gz"), L"gz");
  EXPECT_EQ(ExtensionOf(L"trailing."), L"");
  EXPECT_EQ(ExtensionOf(L"README"), L"");
}

TEST(WithBackslash, AddsOneOnlyWhereThereIsNone) {
  EXPECT_EQ(WithBackslash(L"C:\\docs"), L"C:\\docs\\");
  EXPECT_EQ(WithBackslash(L"C:\\"), L"C:\\");
}

TEST(NetworkPath, BeginsWithTwoBackslashesAndNamesItsServerAfterThem) {
  EXPECT_TRUE(IsNetworkPath(L"\\\\server\\share\\a.txt"));
  EXPECT_FALSE(IsNetworkPath(L"C:\\a.txt"));
  EXPECT_FALSE(IsNetworkPath(L"\\a.txt"));
  EXPECT_EQ(ServerOfPath(L"\\\\server\\share\\a.txt"), L"server");
  EXPECT_EQ(ServerOfPath(L"\\\\server"), L"server");
  EXPECT_EQ(ServerOfPath(L"C:\\a.txt"), L"");
}

TEST(NetworkPath, TakesASlashForABackslash) {
  EXPECT_TRUE(IsNetworkPath(L"//server/share/a.txt"));
  EXPECT_EQ(ServerOfPath(L"//server/share/a.txt"), L"server");
  EXPECT_EQ(ServerOfPath(L"/\\server\\share"), L"server");
}

TEST(NetworkPath, IsNoneBehindAPrefixUnlessThatNamesTheNetwork) {
  for (const wchar_t* local : {L"\\\\?\\C:\\a.txt", L"\\\\?\\Volume{1}\\a", L"\\\\.\\C:\\a.txt",
                               L"\\\\.\\UNC\\server\\a", L"\\\\?\\UNC", L"\\\\?\\UNCLE\\a"}) {
    EXPECT_FALSE(IsNetworkPath(local)) << Narrow(local);
    EXPECT_EQ(ServerOfPath(local), L"");
  }
  for (const wchar_t* network :
       {L"\\\\?\\UNC\\server\\share\\a.txt", L"\\\\?\\unc\\server", L"//?/UNC/server/share"}) {
    EXPECT_TRUE(IsNetworkPath(network)) << Narrow(network);
    EXPECT_EQ(ServerOfPath(network), L"server") << Narrow(network);
  }
}

TEST(SizeText, ShowsLessThan1024BytesWithAtLeastThreeDigits) {
  EXPECT_EQ(SizeText(0), L"000 Bytes");
  EXPECT_EQ(SizeText(5), L"005 Bytes");
  EXPECT_EQ(SizeText(45), L"045 Bytes");
  EXPECT_EQ(SizeText(999), L"999 Bytes");
  EXPECT_EQ(SizeText(1023), L"1,023 Bytes");
}

TEST(SizeText, ShowsMoreInTheLargestUnitWithTheExactCountBehindIt) {
  EXPECT_EQ(SizeText(1024), L"1.00 KB (1,024 Bytes)");
  EXPECT_EQ(SizeText(1536), L"1.50 KB (1,536 Bytes)");
  EXPECT_EQ(SizeText(1048576), L"1.00 MB (1,048,576 Bytes)");
  EXPECT_EQ(SizeText(123456789), L"117.74 MB (123,456,789 Bytes)");
  EXPECT_EQ(SizeText(1073741824), L"1.00 GB (1,073,741,824 Bytes)");
}

TEST(SizeText, RoundsToTwoPlacesWithoutGoingOnToTheNextUnit) {
  EXPECT_EQ(SizeText(1024 * 1024 - 1), L"1024.00 KB (1,048,575 Bytes)");
  EXPECT_EQ(SizeText(1024 + 5), L"1.00 KB (1,029 Bytes)");
  EXPECT_EQ(SizeText(1024 + 6), L"1.01 KB (1,030 Bytes)");
  EXPECT_EQ(SizeText(1024 + 128), L"1.13 KB (1,152 Bytes)");  // 1.125: a half goes up
}

TEST(SizeText, StaysAtGigabytesHoweverLargeTheCount) {
  EXPECT_EQ(SizeText(5ull << 40), L"5120.00 GB (5,497,558,138,880 Bytes)");
  EXPECT_EQ(SizeText(~0ull), L"17179869184.00 GB (18,446,744,073,709,551,615 Bytes)");
}

TEST(FileExists, IsFalseOnlyForTheCodeFileNotFound) {
  const auto existsWith = [](DWORD code) {
    return FileExists(L"C:\\x", [code](const std::wstring&) { return code; });
  };

  EXPECT_TRUE(existsWith(0));
  EXPECT_FALSE(existsWith(ERROR_FILE_NOT_FOUND));
  EXPECT_TRUE(existsWith(ERROR_PATH_NOT_FOUND));
  EXPECT_TRUE(existsWith(ERROR_ACCESS_DENIED));
  EXPECT_TRUE(existsWith(ERROR_INVALID_DATA));
}

TEST(FileExists, IsFalseForAnEmptyPathWithoutAsking) {
  EXPECT_FALSE(FileExists(L"", [](const std::wstring&) -> DWORD {
    ADD_FAILURE() << "asked";
    return 0;
  }));
}

TEST(FileExists, TellsFilesOfTheRealFileSystemApart) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteFile(L"文件 ä.txt");

  EXPECT_TRUE(FileExists(file));
  EXPECT_TRUE(FileExists(dir.Folder()));
  EXPECT_FALSE(FileExists(dir.Path(L"missing.txt")));
  EXPECT_TRUE(FileExists(dir.Path(L"no folder\\missing.txt"))) << "a missing folder is not a missing file";
}

TEST(FolderExists, IsTrueForFoldersOnly) {
  const ScopedTestDir dir;

  EXPECT_TRUE(FolderExists(dir.Folder()));
  EXPECT_FALSE(FolderExists(dir.WriteFile(L"a.txt")));
  EXPECT_FALSE(FolderExists(dir.Path(L"missing")));
}

TEST(TemporaryFolder, EndsInABackslashAndIsThere) {
  const std::wstring folder = TemporaryFolder();

  EXPECT_TRUE(folder.ends_with(L'\\'));
  EXPECT_TRUE(FolderExists(folder));
  EXPECT_EQ(folder.find(L'\0'), std::wstring::npos);
}

TEST(WriteTest, LeavesNothingBehindInAFolderThatCanBeWritten) {
  const ScopedTestDir dir;

  EXPECT_TRUE(WriteTest(dir.program.dataFolder));
  EXPECT_TRUE(std::filesystem::is_empty(dir.program.dataFolder));
}

TEST(WriteTest, IsFalseForAFolderThatIsNotThere) {
  const ScopedTestDir dir;

  EXPECT_FALSE(WriteTest(dir.Path(L"missing\\")));
}

TEST(WriteTest, KeepsAFileOfTheProbesName) {
  const ScopedTestDir dir;
  const std::wstring own = dir.WriteFile(L"KestrelonData\\WriteTest", "the user's");

  EXPECT_TRUE(WriteTest(dir.program.dataFolder));
  EXPECT_EQ(ScopedTestDir::ReadBytes(own), "the user's");
}

TEST(ReplaceByCopy, MakesAFileThatWasNotThere) {
  const ScopedTestDir dir;
  const std::wstring from = dir.WriteFile(L"from.dat", "new"), to = dir.Path(L"to.dat");

  ReplaceByCopy(from, to);

  EXPECT_EQ(ScopedTestDir::ReadBytes(to), "new");
  EXPECT_EQ(ScopedTestDir::ReadBytes(from), "new");
}

TEST(ReplaceByCopy, PutsTheNewContentInThePlaceOfTheOldAndLeavesNoOtherFile) {
  const ScopedTestDir dir;
  const std::wstring from = dir.WriteFile(L"from.dat", "new");
  const std::wstring to = dir.WriteFile(L"slots\\to.dat", "old and longer");

  ReplaceByCopy(from, to);

  EXPECT_EQ(ScopedTestDir::ReadBytes(to), "new");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path(L"slots")), {}), 1);
}

TEST(ReplaceByCopy, MakesAWritableCopyOfAReadOnlyFile) {
  const ScopedTestDir dir;
  const std::wstring from = dir.WriteFile(L"from.dat", "new"), to = dir.Path(L"to.dat");
  SetFileAttributesW(from.c_str(), FILE_ATTRIBUTE_READONLY);

  ReplaceByCopy(from, to);

  EXPECT_EQ(GetFileAttributesW(to.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
  SetFileAttributesW(from.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(ReplaceByCopy, ThrowsForAMissingSourceAndKeepsTheTarget) {
  const ScopedTestDir dir;
  const std::wstring to = dir.WriteFile(L"slots\\to.dat", "old");

  EXPECT_EQ(ErrorOf([&] { ReplaceByCopy(dir.Path(L"missing.dat"), to); }), DWORD{ERROR_FILE_NOT_FOUND});

  EXPECT_EQ(ScopedTestDir::ReadBytes(to), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path(L"slots")), {}), 1);
}

TEST(ReplaceByCopy, ThrowsForAMissingTargetFolder) {
  const ScopedTestDir dir;
  const std::wstring from = dir.WriteFile(L"from.dat");

  EXPECT_EQ(ErrorOf([&] { ReplaceByCopy(from, dir.Path(L"missing\\to.dat")); }), DWORD{ERROR_PATH_NOT_FOUND});
}

TEST(ReplaceByCopy, ThrowsForATargetThatIsHeldOpenAndKeepsIt) {
  const ScopedTestDir dir;
  const std::wstring from = dir.WriteFile(L"from.dat", "new");
  const std::wstring to = dir.WriteFile(L"slots\\to.dat", "old");
  {
    const Locked locked(to);

    EXPECT_NE(ErrorOf([&] { ReplaceByCopy(from, to); }), DWORD{ERROR_SUCCESS});
  }
  EXPECT_EQ(ScopedTestDir::ReadBytes(to), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path(L"slots")), {}), 1);
}

TEST(ReplaceByCopy, UsesAgainWhatACrashLeftBehind) {
  const ScopedTestDir dir;
  const std::wstring from = dir.WriteFile(L"from.dat", "new");
  const std::wstring to = dir.WriteFile(L"slots\\to.dat", "old");
  dir.WriteFile(L"slots\\to.dat.new", "half a copy, longer than the new content");

  ReplaceByCopy(from, to);

  EXPECT_EQ(ScopedTestDir::ReadBytes(to), "new");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path(L"slots")), {}), 1);
}

TEST(ReplaceByCopy, KeepsTheTargetWhenTheCheckOfTheCopyThrows) {
  const ScopedTestDir dir;
  const std::wstring from = dir.WriteFile(L"from.dat", "new");
  const std::wstring to = dir.WriteFile(L"slots\\to.dat", "old");
  std::string seen;

  EXPECT_THROW(ReplaceByCopy(from, to,
                             [&](const std::wstring& copy) {
                               seen = ScopedTestDir::ReadBytes(copy);
                               throw std::runtime_error("not ours");
                             }),
               std::runtime_error);

  EXPECT_EQ(seen, "new");
  EXPECT_EQ(ScopedTestDir::ReadBytes(to), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path(L"slots")), {}), 1);
}

TEST(ReplaceByCopy, WorksOnPathsLongerThan260Characters) {
  const ScopedTestDir dir;
  std::wstring folder = dir.Folder();
  while (folder.size() < 300) folder += std::wstring(49, L'd') + L"\\";
  std::filesystem::create_directories(folder);
  const std::wstring from = dir.WriteFile(L"from.dat", "new");

  ReplaceByCopy(from, folder + L"to.dat");

  EXPECT_EQ(ScopedTestDir::ReadBytes(folder + L"to.dat"), "new");
  EXPECT_TRUE(FileExists(folder + L"to.dat"));
  EXPECT_FALSE(FileExists(folder + L"missing.dat"));
}

TEST(DeleteIfThere, DeletesAFileAndIsContentWithoutOne) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteFile(L"a.dat");

  DeleteIfThere(file);
  EXPECT_FALSE(FileExists(file));
  EXPECT_NO_THROW(DeleteIfThere(file));
  EXPECT_NO_THROW(DeleteIfThere(dir.Path(L"missing\\a.dat")));
}

TEST(DeleteIfThere, ThrowsWhenTheFileStays) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteFile(L"a.dat");
  const Locked locked(file);

  EXPECT_EQ(ErrorOf([&] { DeleteIfThere(file); }), DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_TRUE(FileExists(file));
}

TEST(ThrowLastError, SaysWhatWasTriedAndWhyItFailed) {
  try {
    ThrowLastError(L"Cannot read Ä", ERROR_FILE_NOT_FOUND);
  } catch (const std::system_error& error) {
    const std::wstring text = Widen(error.what());
    EXPECT_EQ(error.code().value(), ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(text.starts_with(L"Cannot read Ä: "));
    EXPECT_GT(text.size(), std::wstring(L"Cannot read Ä: ").size());
    EXPECT_EQ(text.find_first_of(L"\r\n"), std::wstring::npos);
  }
}

TEST(ThrowLastError, NamesACodeThatTheSystemHasNoSentenceFor) {
  EXPECT_THAT([] { ThrowLastError(L"Cannot", 0x2FFFFFFF); },
              testing::ThrowsMessage<std::system_error>(testing::StrEq("Cannot: error 805306367")));
}

TEST(Utf8, GoesBothWays) {
  EXPECT_EQ(Narrow(L"aä别\xD83D\xDE00"), "a\xC3\xA4\xE5\x88\xAB\xF0\x9F\x98\x80");
  EXPECT_EQ(Widen("a\xC3\xA4\xE5\x88\xAB\xF0\x9F\x98\x80"), L"aä别\xD83D\xDE00");
  EXPECT_EQ(Narrow(L""), "");
  EXPECT_EQ(Widen(""), L"");
}

TEST(EqualNoCase, DoesNotRegardTheCaseOfAnyLetter) {
  EXPECT_TRUE(EqualNoCase(L"Straße Ä.TXT", L"sTRAßE ä.txt"));
  EXPECT_TRUE(EqualNoCase(L"", L""));
  EXPECT_FALSE(EqualNoCase(L"a", L"ab"));
}

TEST(ContainsNoCase, FindsAPartAnywhere) {
  EXPECT_TRUE(ContainsNoCase(L"Homework", L"WORK"));
  EXPECT_TRUE(ContainsNoCase(L"xÄBx", L"äb"));
  EXPECT_TRUE(ContainsNoCase(L"abc", L""));
  EXPECT_TRUE(ContainsNoCase(L"", L""));
  EXPECT_FALSE(ContainsNoCase(L"", L"a"));
  EXPECT_FALSE(ContainsNoCase(L"wor", L"work"));
}

TEST(Trim, TakesBlanksOffBothEndsAndNothingElse) {
  EXPECT_EQ(Trim(L"  a b  "), L"a b");
  EXPECT_EQ(Trim(L"\t a \n"), L"\t a \n");
  EXPECT_EQ(Trim(L"   "), L"");
  EXPECT_EQ(Trim(L""), L"");
}

class PersistentlyTest : public testing::Test {
 protected:
  // Fails with `error` so many times, then succeeds.
  bool Try(DWORD error, int failures) {
    return Persistently(
        [&] {
          ++attempts;
          SetLastError(attempts <= failures ? error : 0);
          return attempts > failures;
        },
        [&](DWORD milliseconds) {
          waits.push_back(milliseconds);
          SetLastError(0);
        });
  }
  DWORD Waited() const { return std::accumulate(waits.begin(), waits.end(), DWORD{0}); }
  int attempts = 0;
  std::vector<DWORD> waits;
};

TEST_F(PersistentlyTest, WaitsForNothingThatSucceedsAtOnce) {
  EXPECT_TRUE(Try(ERROR_SHARING_VIOLATION, 0));
  EXPECT_TRUE(waits.empty());
}

TEST_F(PersistentlyTest, TriesAgainWhatSomebodyHoldsForAMoment) {
  for (const DWORD error : {ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION, ERROR_ACCESS_DENIED}) {
    attempts = 0;
    waits.clear();
    EXPECT_TRUE(Try(error, 3)) << error;
    EXPECT_EQ(attempts, 4);
    EXPECT_TRUE(std::is_sorted(waits.begin(), waits.end()));
  }
}

TEST_F(PersistentlyTest, GivesUpAfterAboutASecondWithTheErrorOfTheLastAttempt) {
  EXPECT_FALSE(Try(ERROR_SHARING_VIOLATION, 1000));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_GE(Waited(), 700u);
  EXPECT_LE(Waited(), 1300u);
}

TEST_F(PersistentlyTest, DoesNotWaitWhereWaitingDoesNotHelp) {
  EXPECT_FALSE(Try(ERROR_DISK_FULL, 1000));
  EXPECT_EQ(attempts, 1);
  EXPECT_TRUE(waits.empty());
}

}  // namespace
}  // namespace kestrelon
