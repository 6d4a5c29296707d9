#include <atomic>
#include <memory>
#include <thread>

#include "app/SingleInstance.h"
#include "tests/support/FileCalls.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

constexpr DWORD kPatience = 20'000;

// The mark is a thread's: another process has another one.
bool IsFirstElsewhere(const std::wstring& dataFolder) {
  bool first = false;
  std::thread([&] { first = app::SingleInstance(dataFolder).IsFirst(); }).join();
  return first;
}

TEST(SingleInstance, IsFirstForAFolderThatNobodyHolds) {
  const app::SingleInstance instance(L"C:\\kestrelon test one\\");
  EXPECT_TRUE(instance.IsFirst());
}

TEST(SingleInstance, IsNotFirstWhileAnotherHoldsTheFolder) {
  const app::SingleInstance first(L"C:\\kestrelon test two\\");
  EXPECT_FALSE(IsFirstElsewhere(L"C:\\kestrelon test two\\"));
}

TEST(SingleInstance, TellsFoldersApartButNotTheirLetterCase) {
  const app::SingleInstance first(L"C:\\kestrelon test three\\");
  EXPECT_TRUE(IsFirstElsewhere(L"C:\\kestrelon test four\\"));
  EXPECT_FALSE(IsFirstElsewhere(L"C:\\Kestrelon TEST Three\\"));
}

TEST(SingleInstance, KnowsAFolderHoweverItsPathIsSpelled) {
  const ScopedTestDir dir;
  dir.WriteFile(L"Data folder\\file", "x");
  const app::SingleInstance first(dir.Folder() + L"Data folder\\");
  for (const wchar_t* spelling : {L"Data folder", L"DATA Folder\\", L"Data folder\\.\\", L".\\Data folder\\",
                                  L"Data folder\\..\\Data folder\\", L"Data folder/"}) {
    EXPECT_FALSE(IsFirstElsewhere(dir.Folder() + spelling)) << Narrow(spelling);
  }
  dir.WriteFile(L"Data folder 2\\file", "x");
  EXPECT_TRUE(IsFirstElsewhere(dir.Folder() + L"Data folder 2\\"));
}

TEST(DataFolderLock, IsTakenThoughAScannerIsAtItsFileForAMoment) {
  const ScopedTestDir dir;
  dir.WriteFile(L"Data\\Kestrelon.lock", "");  // left by a power cut
  app::DataFolderLock lock;
  const FileCalls calls(FileCalls::Mode::kHeld, 0);
  EXPECT_TRUE(lock.Take(dir.Folder() + L"Data\\"));
  EXPECT_TRUE(calls.Hit());
}

TEST(DataFolderLock, IsTakenByOneAtATimeThoughItsFileIsReadOnly) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteFile(L"Data\\Kestrelon.lock", "");
  ASSERT_TRUE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY));
  {
    app::DataFolderLock first;
    EXPECT_TRUE(first.Take(dir.Folder() + L"Data\\"));
    app::DataFolderLock second;
    EXPECT_FALSE(second.Take(dir.Folder() + L"Data\\"));
  }
  SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(DataFolderLock, IsTakenByOneAtATimeHoweverTheFolderIsSpelled) {
  const ScopedTestDir dir;
  dir.WriteFile(L"Data\\file", "x");
  {
    app::DataFolderLock first;
    EXPECT_TRUE(first.Take(dir.Folder() + L"Data\\"));
    app::DataFolderLock second;
    EXPECT_FALSE(second.Take(dir.Folder() + L"Data\\.\\"));
  }
  EXPECT_FALSE(FileExists(dir.Folder() + L"Data\\Kestrelon.lock")) << "goes with the program";
  app::DataFolderLock next;
  EXPECT_TRUE(next.Take(dir.Folder() + L"Data\\"));
}

TEST(DataFolderLock, IsTakenThoughAFileWasLeftBehind) {
  const ScopedTestDir dir;
  dir.WriteFile(L"Kestrelon.lock", "left by a power cut");
  app::DataFolderLock lock;
  EXPECT_TRUE(lock.Take(dir.Folder() + L"\\"));
}

TEST(DataFolderLock, LeavesAFolderThatCannotBeWrittenToWhatFollows) {
  app::DataFolderLock lock;
  EXPECT_TRUE(lock.Take(L"C:\\no such folder here\\"));
}

TEST(SingleInstance, IsFirstAgainAfterTheOtherHasGone) {
  { const app::SingleInstance first(L"C:\\kestrelon test five\\"); }
  EXPECT_TRUE(IsFirstElsewhere(L"C:\\kestrelon test five\\"));
}

TEST(SingleInstance, IsFirstAtOnceWithoutWaiting) {
  app::SingleInstance first(L"C:\\kestrelon test six\\");
  EXPECT_TRUE(first.BecomeFirst(INFINITE));
}

TEST(SingleInstance, WaitsForAnotherThatEndsAndHasNoWindowAnyMore) {
  auto ending = std::make_unique<app::SingleInstance>(L"C:\\kestrelon test seven\\");
  std::atomic<bool> looking = false, first = false;
  std::thread next([&] {
    app::SingleInstance instance(L"C:\\kestrelon test seven\\");
    looking = !instance.IsFirst();
    first = instance.BecomeFirst(kPatience);
  });
  while (!looking) ::SwitchToThread();
  EXPECT_FALSE(first);
  ending.reset();
  next.join();
  EXPECT_TRUE(first);
}

TEST(SingleInstance, IsFirstAfterAnotherThatWasEndedFromOutside) {
  HANDLE mutex = nullptr;
  // A thread that ends without letting go, as a process does that is ended.
  std::thread([&] {
    const app::SingleInstance known(L"C:\\kestrelon test eight\\");
    const std::wstring name = L"Local\\KestrelonData-" + std::to_wstring(known.FolderMark());
    mutex = ::CreateMutexW(nullptr, TRUE, name.c_str());
    ::WaitForSingleObject(mutex, INFINITE);
  }).join();
  EXPECT_TRUE(app::SingleInstance(L"C:\\kestrelon test eight\\").IsFirst());
  ::CloseHandle(mutex);
}

TEST(SingleInstance, GivesUpOnAnotherThatNeverShowsAWindow) {
  const app::SingleInstance first(L"C:\\kestrelon test nine\\");
  bool second = true;
  std::thread([&] { second = app::SingleInstance(L"C:\\kestrelon test nine\\").BecomeFirst(100); }).join();
  EXPECT_FALSE(second);
}

class SecondStart : public MainFormFixture {
 protected:
  // What a second process does, while this one serves its window.
  static bool BecomesFirst(const std::wstring& dataFolder, DWORD milliseconds) {
    std::atomic<bool> done = false;
    bool first = false;
    std::thread second([&] {
      first = app::SingleInstance(dataFolder).BecomeFirst(milliseconds);
      done = true;
    });
    while (!done) win::DoEvents();
    second.join();
    return first;
  }
};

TEST_F(SecondStart, BringsTheMinimisedWindowBackToTheFront) {
  const app::SingleInstance first(program.dataFolder);
  Start();
  form->SetWakeMark(first.FolderMark());
  ShowWindow(form->Handle(), SW_MINIMIZE);
  ASSERT_FALSE(IsWindowVisible(form->Handle()));

  EXPECT_FALSE(BecomesFirst(program.dataFolder, kPatience));

  EXPECT_TRUE(IsWindowVisible(form->Handle()));
  EXPECT_FALSE(IsIconic(form->Handle()));
  EXPECT_EQ(GetForegroundWindow(), form->Handle());
  EXPECT_FALSE(form->SysTray().IsShown());
}

TEST_F(SecondStart, WithAnotherDataFolderLeavesTheWindowAlone) {
  const app::SingleInstance first(program.dataFolder), other(L"C:\\kestrelon test other\\");
  Start();
  form->SetWakeMark(first.FolderMark());
  ShowWindow(form->Handle(), SW_MINIMIZE);

  EXPECT_FALSE(BecomesFirst(L"C:\\kestrelon test other\\", 200));

  EXPECT_FALSE(IsWindowVisible(form->Handle()));
}

TEST_F(SecondStart, BringsTheOpenDialogToTheFrontAndChangesNothingElse) {
  const app::SingleInstance first(program.dataFolder);
  Start();
  form->SetWakeMark(first.FolderMark());
  for (const bool minimised : {false, true}) {
    const OnWindow about([](HWND window) { return TextOf(window).find(L"bout") != std::wstring::npos; },
                         [&](HWND window) {
                           SetForegroundWindow(form->Handle());
                           if (minimised) ShowWindow(form->Handle(), SW_MINIMIZE);
                           EXPECT_FALSE(BecomesFirst(program.dataFolder, kPatience));
                           EXPECT_EQ(GetForegroundWindow(), window);
                           EXPECT_TRUE(IsWindowVisible(window));
                           EXPECT_TRUE(IsWindowVisible(form->Handle()));
                           EXPECT_FALSE(IsIconic(form->Handle()));
                           EXPECT_FALSE(IsWindowEnabled(form->Handle()));
                           EXPECT_FALSE(form->SysTray().IsShown());
                           SendMessageW(window, WM_CLOSE, 0, 0);
                         });
    SendMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(Menus().IdOf(L"meu_about"), 0), 0);
    EXPECT_TRUE(about.Done());
    EXPECT_TRUE(IsWindowEnabled(form->Handle()));
  }
}

TEST_F(SecondStart, LeavesAWindowThatIsShownAsLargeAsItIs) {
  const app::SingleInstance first(program.dataFolder);
  Start();
  form->SetWakeMark(first.FolderMark());
  ShowWindow(form->Handle(), SW_MAXIMIZE);

  EXPECT_FALSE(BecomesFirst(program.dataFolder, kPatience));

  EXPECT_TRUE(IsZoomed(form->Handle()));
}

}  // namespace
}  // namespace kestrelon::test
