#include "app/base/Win32.h"

#include <commdlg.h>
#include <gtest/gtest.h>
#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "app/base/File.h"
#include "app/base/HostCheck.h"
#include "app/base/OutsideWorld.h"
#include "tests/support/FakeWorld.h"
#include "tests/support/Pump.h"
#include "tests/support/ScopedTestDir.h"

namespace kestrelon {
namespace {

using test::OnDialog;
using test::ScopedTestDir;
using test::TextOf;

constexpr int kBoxText = 0xFFFF;       // the static text of a message box
constexpr int kFileNameCombo = 0x47c;  // of the Open dialog in Explorer style
constexpr int kFileNameEdit = 0x480;   // of the older one

void SetFileNames(HWND dialog, const wchar_t* text) {
  HWND field = GetDlgItem(dialog, kFileNameEdit);
  if (field == nullptr) field = GetDlgItem(dialog, kFileNameCombo);
  SetWindowTextW(field, text);
  PostMessageW(dialog, WM_COMMAND, IDOK, 0);
}

TEST(SystemWorld, ShowsAMessageBoxAndGivesTheButtonPressed) {
  std::wstring text, title;
  const OnDialog answer([&](HWND box) {
    text = TextOf(GetDlgItem(box, kBoxText));
    title = TextOf(box);
    PostMessageW(box, WM_COMMAND, IDNO, 0);
  });

  EXPECT_EQ(SystemWorld().messageBox(nullptr, L"Save Changes ? ", L"Kestrelon", MB_YESNO | MB_ICONQUESTION),
            IDNO);

  EXPECT_EQ(text, L"Save Changes ? ");
  EXPECT_EQ(title, L"Kestrelon");
}

TEST(SystemWorld, GivesTheFolderChosenInThePicker) {
  // The picker opens with the desktop selected.
  wchar_t desktop[MAX_PATH] = L"";
  ASSERT_EQ(SHGetFolderPathW(nullptr, CSIDL_DESKTOPDIRECTORY, nullptr, SHGFP_TYPE_CURRENT, desktop), S_OK);
  const OnDialog answer([](HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDOK, 0); });

  const std::optional<std::wstring> folder = SystemWorld().browseForFolder(nullptr);

  ASSERT_TRUE(folder);
  EXPECT_TRUE(EqualNoCase(*folder, desktop)) << Narrow(*folder);
}

TEST(SystemWorld, GivesNothingWhenThePickerIsCancelled) {
  const OnDialog answer([](HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0); });

  EXPECT_FALSE(SystemWorld().browseForFolder(nullptr));
}

TEST(BrowseForFolder, EndsInABackslashAndIsEmptyOnCancel) {
  test::FakeWorld world;
  world.folders = {L"C:\\books", L"D:\\", std::wstring(L"C:\\a\0rest", 9), std::nullopt};

  EXPECT_EQ(BrowseForFolder(world, nullptr), L"C:\\books\\");
  EXPECT_EQ(BrowseForFolder(world, nullptr), L"D:\\");
  EXPECT_EQ(BrowseForFolder(world, nullptr), L"C:\\a\\");
  EXPECT_EQ(BrowseForFolder(world, nullptr), L"");
}

class OpenDialog : public testing::Test {
 protected:
  OpenDialog() {
    dir_.WriteFile(L"files\\a b.txt");
    dir_.WriteFile(L"files\\c.txt");
    wchar_t current[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, current);
    before_ = current;
    request_.title = L"Select one or More Files";
    request_.filter = L"Txt File   (*.txt)|*.txt|All Files   (*.*)|*.*";
    request_.filterIndex = 2;
    request_.flags = OFN_EXPLORER | OFN_ALLOWMULTISELECT | OFN_LONGNAMES;
  }
  ~OpenDialog() override {
    wchar_t current[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, current);
    EXPECT_EQ(before_, current) << "the current folder stays";
  }

  ScopedTestDir dir_;
  OpenFilesRequest request_;
  std::wstring before_;
};

TEST_F(OpenDialog, GivesOneFileByItsFullPath) {
  std::wstring title;
  const OnDialog answer([&](HWND dialog) {
    title = TextOf(dialog);
    SetFileNames(dialog, dir_.Path(L"files\\c.txt").c_str());
  });

  const std::optional<std::wstring> files = SystemWorld().openFiles(request_);

  ASSERT_TRUE(files);
  EXPECT_TRUE(EqualNoCase(*files, dir_.Path(L"files\\c.txt"))) << Narrow(*files);
  EXPECT_EQ(title, L"Select one or More Files");
}

TEST_F(OpenDialog, GivesSeveralFilesAsTheFolderAndTheirNames) {
  const OnDialog answer([&](HWND dialog) {
    // First into the folder, then the names that are to be found there.
    HWND field = GetDlgItem(dialog, kFileNameEdit);
    if (field == nullptr) field = GetDlgItem(dialog, kFileNameCombo);
    SetWindowTextW(field, dir_.Path(L"files").c_str());
    SendMessageW(dialog, WM_COMMAND, IDOK, 0);
    SetFileNames(dialog, L"\"a b.txt\" \"c.txt\"");
  });

  const std::optional<std::wstring> files = SystemWorld().openFiles(request_);

  ASSERT_TRUE(files);
  EXPECT_TRUE(EqualNoCase(*files, dir_.Path(L"files") + L'\0' + L"a b.txt" + L'\0' + L"c.txt"))
      << Narrow(*files);
}

TEST_F(OpenDialog, GivesNothingOnCancel) {
  const OnDialog answer([](HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0); });

  EXPECT_FALSE(SystemWorld().openFiles(request_));
}

TEST_F(OpenDialog, ReportsASelectionThatIsTooLong) {
  request_.maximumSize = 8;
  const OnDialog answer([&](HWND dialog) { SetFileNames(dialog, dir_.Path(L"files\\c.txt").c_str()); });

  EXPECT_THROW(SystemWorld().openFiles(request_), std::runtime_error);
}

// The Open dialog by functions that stand for those of one system or another.
class ChosenFiles : public testing::Test {
 protected:
  ChosenFiles() { request_.flags = OFN_EXPLORER | OFN_ALLOWMULTISELECT; }
  // A dialog that writes this, whatever it was told of the room.
  std::optional<std::wstring> With(std::wstring_view written) {
    return Choose(
        [&](OPENFILENAMEW& dialog) -> BOOL {
          announced_ = dialog.nMaxFile;
          std::copy(written.begin(), written.end(), dialog.lpstrFile);
          return TRUE;
        },
        0);
  }
  // One that fails with this code.
  std::optional<std::wstring> Failing(DWORD code) {
    return Choose([](OPENFILENAMEW&) -> BOOL { return FALSE; }, code);
  }
  static std::wstring Selection(int names) {
    std::wstring text = L"C:\\docs";
    for (int i = 0; i < names; ++i)
      text += std::wstring(1, L'\0') + L"A file name of some length " + std::to_wstring(i);
    return text;
  }
  OpenFilesRequest request_;
  DWORD announced_ = 0;

 private:
  std::optional<std::wstring> Choose(const std::function<BOOL(OPENFILENAMEW&)>& show, DWORD code) {
    return OpenFilesBy(
        show, [code] { return code; }, request_);
  }
};

TEST_F(ChosenFiles, AnnouncesTheSizeThatIsAskedFor) {
  EXPECT_EQ(With(L"C:\\a.txt"), L"C:\\a.txt");
  EXPECT_EQ(announced_, 32000u);
}

TEST_F(ChosenFiles, TakesAllOfASelectionThatWasWrittenPastTheAnnouncedSize) {
  for (const int names : {2400, 100'000}) {
    const std::wstring selection = Selection(names);
    ASSERT_GT(selection.size(), 32000u);
    EXPECT_TRUE(With(selection) == selection);
  }
}

TEST_F(ChosenFiles, TakesNoneOfASelectionWithoutAnEnd) {
  EXPECT_THROW(OpenFilesBy(
                   [&](OPENFILENAMEW& dialog) -> BOOL {
                     // All the room there is.
                     for (wchar_t* unit = dialog.lpstrFile;
                          unit != dialog.lpstrFile + dialog.nMaxFile + (8 << 20); ++unit)
                       *unit = L'x';
                     return TRUE;
                   },
                   [] { return DWORD{0}; }, request_),
               TooManyFiles);
}

TEST_F(ChosenFiles, ThrowsTooManyFilesWhereTheDialogRefusesThem) {
  EXPECT_THROW(Failing(0x3003), TooManyFiles);  // FNERR_BUFFERTOOSMALL
}

TEST_F(ChosenFiles, GivesNothingOnCancelAndTellsOfOtherFailures) {
  EXPECT_EQ(Failing(0), std::nullopt);
  try {
    Failing(0x3001);
    ADD_FAILURE() << "no exception";
  } catch (const TooManyFiles&) {
    ADD_FAILURE() << "not that failure";
  } catch (const std::runtime_error&) {
  }
}

TEST(SystemWorld, KnowsWhetherTheButtonThatDragsIsDown) {
  const OutsideWorld world = SystemWorld();
  EXPECT_FALSE(world.dragButtonDown());
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
  SendInput(1, &input, sizeof input);
  EXPECT_TRUE(world.dragButtonDown());
  input.mi.dwFlags = MOUSEEVENTF_LEFTUP;
  SendInput(1, &input, sizeof input);
  EXPECT_FALSE(world.dragButtonDown());
}

TEST(SystemWorld, RenamesCopiesAndMovesFilesThroughTheShell) {
  const ScopedTestDir dir;
  const OutsideWorld world = SystemWorld();
  const std::wstring old = dir.WriteFile(L"old.txt", "content"), renamed = dir.Path(L"别名.txt");
  constexpr WORD kQuiet = FOF_NOERRORUI | FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_SILENT;

  EXPECT_TRUE(world.shellFileOperation(nullptr, FO_RENAME, old, renamed, kQuiet));
  EXPECT_FALSE(FileExists(old));
  EXPECT_TRUE(world.shellFileOperation(nullptr, FO_COPY, renamed, dir.program.dataFolder, kQuiet));
  EXPECT_EQ(ScopedTestDir::ReadBytes(dir.program.dataFolder + L"别名.txt"), "content");
  EXPECT_TRUE(world.shellFileOperation(nullptr, FO_MOVE, renamed, dir.program.templateFolder, kQuiet));
  EXPECT_EQ(ScopedTestDir::ReadBytes(dir.program.templateFolder + L"别名.txt"), "content");
  EXPECT_FALSE(FileExists(renamed));
  EXPECT_TRUE(
      world.shellFileOperation(nullptr, FO_DELETE, dir.program.templateFolder + L"别名.txt", L"", kQuiet));
  EXPECT_FALSE(FileExists(dir.program.templateFolder + L"别名.txt"));
}

TEST(SystemWorld, ReportsAFailedFileOperation) {
  const ScopedTestDir dir;

  EXPECT_FALSE(SystemWorld().shellFileOperation(nullptr, FO_RENAME, dir.Path(L"missing.txt"),
                                                dir.Path(L"b.txt"), FOF_NOERRORUI | FOF_SILENT));
}

TEST(SystemWorld, GivesTheShellsCodeForAMissingFile) {
  const ScopedTestDir dir;

  EXPECT_EQ(SystemWorld().shellExecute(nullptr, L"open", dir.Path(L"missing.txt"), SW_SHOW), 2);
}

TEST(SystemWorld, StartsAProgramByItsCommandLine) {
  const ScopedTestDir dir;
  const std::wstring made = dir.Path(L"made");

  EXPECT_TRUE(SystemWorld().startProgram(L"cmd.exe /c mkdir " + made, SW_HIDE));
  EXPECT_TRUE(test::PumpUntil([&] { return FolderExists(made); }, 20000));
}

TEST(SystemWorld, ReportsAProgramThatCannotBeStarted) {
  EXPECT_FALSE(SystemWorld().startProgram(L"no-such-program-anywhere.exe", SW_HIDE));
}

TEST(SystemWorld, KnowsThatThisMachineAnswers) { EXPECT_TRUE(SystemWorld().hostAnswers(L"127.0.0.1")); }

TEST(SystemWorld, KnowsThatANameWithoutAHostDoesNotAnswer) {
  const OutsideWorld world = SystemWorld();

  EXPECT_FALSE(world.hostAnswers(L"no-such-host.invalid"));
  EXPECT_FALSE(world.hostAnswers(L""));
  EXPECT_FALSE(world.hostAnswers(L"a\nb"));
}

TEST(PingQuery, KeepsEveryNameInsideItsLiteral) {
  EXPECT_EQ(PingQuery(L"server"),
            L"SELECT StatusCode FROM Win32_PingStatus WHERE Address='server' AND Timeout=1000");
  EXPECT_EQ(
      PingQuery(L"x' OR Address='\\"),
      L"SELECT StatusCode FROM Win32_PingStatus WHERE Address='x\\' OR Address=\\'\\\\' AND Timeout=1000");
}

TEST(SystemWorld, DrawsFractionsFromZeroUpToOne) {
  const OutsideWorld world = SystemWorld();
  double least = 1, greatest = 0, sum = 0;
  for (int draw = 0; draw < 100'000; ++draw) {
    const double fraction = world.randomFraction();
    least = std::min(least, fraction);
    greatest = std::max(greatest, fraction);
    sum += fraction;
  }

  EXPECT_GE(least, 0.0);
  EXPECT_LT(greatest, 1.0);
  EXPECT_LT(least, 0.001);
  EXPECT_GT(greatest, 0.999);
  EXPECT_NEAR(sum / 100'000, 0.5, 0.01);
}

TEST(SystemWorld, GoesOnDifferentlyAfterEachReseeding) {
  const OutsideWorld world = SystemWorld();
  std::set<double> seen;
  for (int draw = 0; draw < 1000; ++draw) {
    world.reseedRandom();
    seen.insert(world.randomFraction());
  }

  EXPECT_EQ(seen.size(), 1000u) << "also within one tick of the timer";
}

TEST(SystemWorld, TellsTheLocalTime) {
  SYSTEMTIME before, after;
  GetLocalTime(&before);
  const SYSTEMTIME now = SystemWorld().localTime();
  GetLocalTime(&after);
  FILETIME times[3];
  SystemTimeToFileTime(&before, &times[0]);
  SystemTimeToFileTime(&now, &times[1]);
  SystemTimeToFileTime(&after, &times[2]);

  EXPECT_LE(CompareFileTime(&times[0], &times[1]), 0);
  EXPECT_LE(CompareFileTime(&times[1], &times[2]), 0);
}

TEST(SystemWorld, KnowsThePointerAndTheWorkArea) {
  const OutsideWorld world = SystemWorld();
  const RECT area = world.workArea();
  SetCursorPos(area.left + 10, area.top + 20);
  POINT expected;
  GetCursorPos(&expected);

  EXPECT_GT(area.right - area.left, 0);
  EXPECT_GT(area.bottom - area.top, 0);
  EXPECT_EQ(world.cursorPosition().x, expected.x);
  EXPECT_EQ(world.cursorPosition().y, expected.y);
}

}  // namespace
}  // namespace kestrelon
