// What the user sees of a collection that was not saved: the question after an unclean end, the button of the
// Load dialog; and how it gets there.

#include <functional>

#include "app/SlotDialog.h"
#include "store/UnsavedCollection.h"
#include "tests/support/MainFormFixture.h"
#include "ui/win/Handles.h"

namespace kestrelon::test {
namespace {

class Unsaved : public MainFormFixture {
 protected:
  // A category with an item, in no slot.
  void StartWithWork() {
    Start();
    SelectCategory(AddCategory(L"A_", L"work"));
    AddItem(L"A_", 1, {L"item"});
  }
  // Ends without a word, as a crash does, and starts again. The answer to the question, if one is expected.
  void CrashAndStart(std::initializer_list<int> answers = {}) {
    Crash();
    world.boxes.clear();
    world.answers.assign(answers);
    Start();
  }
  void Close(std::initializer_list<int> answers) {
    world.answers.assign(answers);
    SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
    End();
  }
  std::wstring Path() const { return program.dataFolder + store::kUnsavedFile; }

  // Opens the Load dialog, hands it to `act` and closes it if it is still there.
  void OpenLoad(const std::function<void(win::Form&)>& act) {
    const auto isLoad = [](HWND window) {
      const auto* found = dynamic_cast<win::Form*>(win::Window::Of(window));
      return found && found->Name() == L"Load";
    };
    const OnWindow dialog(isLoad, [&](HWND window) {
      act(*dynamic_cast<win::Form*>(win::Window::Of(window)));
      if (IsWindow(window)) SendMessageW(window, WM_CLOSE, 0, 0);
    });
    Command(L"meu_LoadDatabase");
    EXPECT_TRUE(dialog.Done());
  }
  static void Press(win::Form& dialog, const wchar_t* name, int index = -1) {
    const win::FormControl* button = dialog.Find(name, index);
    ASSERT_NE(button, nullptr);
    SendMessageW(button->window, BM_CLICK, 0, 0);
  }
};

TEST_F(Unsaved, IsOfferedOnceAfterAnUncleanEndWithTheTimeOfTheLastChange) {
  StartWithWork();
  CrashAndStart({IDNO});
  ASSERT_EQ(world.boxes.size(), 1u);
  const auto time = store::UnsavedTime(program);
  ASSERT_TRUE(time);
  EXPECT_EQ(world.boxes[0].text,
            L"Kestrelon was not closed properly. Do you want to open the collection that was not saved? "
            L"Last change: " +
                app::TimeText(*time));
  EXPECT_EQ(world.boxes[0].flags, UINT{MB_YESNO | MB_ICONQUESTION});
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].owner, form->Handle());
  EXPECT_EQ(Tree().Count(), 0u);
  EXPECT_TRUE(FileExists(Path())) << "No leaves it where it is";

  CrashAndStart();
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_TRUE(FileExists(Path()));
}

TEST_F(Unsaved, IsOpenedAsUnsavedWork) {
  StartWithWork();
  CrashAndStart({IDYES});
  EXPECT_EQ(ShownTree(), L"work");
  SelectCategory(*Tree().Find(L"A_"));
  EXPECT_EQ(List().Count(), 1u);
  EXPECT_FALSE(program.databaseSaved);
  world.boxes.clear();
  world.answers = {IDCANCEL};
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_EQ(world.boxes.size(), 1u) << "the exit question";
}

TEST_F(Unsaved, IsNotAskedForAfterACleanEnd) {
  StartWithWork();
  Close({IDNO});
  world.boxes.clear();
  Start();
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_EQ(Tree().Count(), 0u);
}

TEST_F(Unsaved, IsKeptWhenTheProgramIsLeftWithoutSaving) {
  StartWithWork();
  Close({IDNO});
  EXPECT_TRUE(FileExists(Path()));
}

TEST_F(Unsaved, IsKeptWhenTheSaveDialogIsLeftWithoutSaving) {
  StartWithWork();
  const OnWindow dialog([](HWND window) { return TextOf(window) == L"Save Database"; },
                        [](HWND window) { SendMessageW(window, WM_CLOSE, 0, 0); });
  Close({IDYES});
  EXPECT_TRUE(dialog.Done());
  EXPECT_TRUE(FileExists(Path()));
}

TEST_F(Unsaved, IsKeptWhenSavingFailsOnTheWayOut) {
  StartWithWork();
  std::filesystem::create_directory(program.dataFolder + L"Data0.dat");  // no slot can take its place
  const OnWindow dialog([](HWND window) { return TextOf(window) == L"Save Database"; },
                        [](HWND window) {
                          Press(*dynamic_cast<win::Form*>(win::Window::Of(window)), L"Command2", 0);
                          SendMessageW(window, WM_CLOSE, 0, 0);
                        });
  Close({IDYES, IDOK, IDOK});
  EXPECT_TRUE(dialog.Done());
  EXPECT_TRUE(FileExists(Path()));
}

TEST_F(Unsaved, IsNotKeptWhenNothingWasDone) {
  Start();
  Close({IDNO});
  EXPECT_FALSE(FileExists(Path()));
}

TEST_F(Unsaved, LeavesNothingBesideTheDatabasesAfterACleanEnd) {
  StartWithWork();
  Close({IDNO});
  for (const auto& entry : std::filesystem::directory_iterator(program.dataFolder))
    EXPECT_EQ(entry.path().extension(), L".dat") << Narrow(entry.path().wstring());
}

TEST_F(Unsaved, StandsBelowTheSlotsInTheLoadDialogWhileThereIsOne) {
  Start();
  OpenLoad([](win::Form& dialog) { EXPECT_EQ(dialog.Find(L"Command3"), nullptr); });
  AddCategory(L"A_", L"work");
  Close({IDNO});
  Start();
  OpenLoad([&](win::Form& dialog) {
    const win::FormControl* button = dialog.Find(L"Command3");
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(TextOf(button->window), L"Unsaved collection  " + app::TimeText(*store::UnsavedTime(program)));
    RECT slot, unsaved;
    GetWindowRect(dialog.Find(L"Command2", 3)->window, &slot);
    GetWindowRect(button->window, &unsaved);
    EXPECT_GT(unsaved.top, slot.bottom);
    EXPECT_EQ(unsaved.left, slot.left);
    EXPECT_EQ(unsaved.right, slot.right);
    EXPECT_EQ(dialog.Find(L"Command2", 4), nullptr) << "the slots stay four";
  });
}

TEST_F(Unsaved, OpensFromTheLoadDialogLikeASlot) {
  StartWithWork();
  Close({IDNO});
  Start();
  OpenLoad([](win::Form& dialog) { Press(dialog, L"Command3"); });
  EXPECT_EQ(ShownTree(), L"work");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(Unsaved, IsSetAsideWhenASlotIsLoadedOverIt) {
  StartWithWork();
  OpenLoad([](win::Form& dialog) { Press(dialog, L"Command2", 1); });
  EXPECT_EQ(ShownTree(), L"");
  EXPECT_TRUE(FileExists(Path()));
}

TEST_F(Unsaved, LeavesNoItemCommandEnabledWhenItIsLoadedOver) {
  StartWithWork();
  SelectCategory(*Tree().Find(L"A_"));
  List().SelectOnly(0);
  items::ListView1_SelectionChanged(Parts());
  ASSERT_TRUE(Menus().IsEnabled(L"meu_Properties"));
  OpenLoad([](win::Form& dialog) { Press(dialog, L"Command2", 1); });
  EXPECT_FALSE(Menus().IsEnabled(L"meu_Properties"));
  EXPECT_FALSE(Menus().IsEnabled(L"meu_Delete"));
  for (int button = 6; button <= 9; ++button) EXPECT_FALSE(Parts().Toolbar1.IsEnabled(button)) << button;
}

TEST_F(Unsaved, IsKeptWithoutAChangeOfItemsOnceTheWindowIsIdle) {
  Start();
  AddCategory(L"A_", L"alone");
  // What the timer brings.
  SendMessageW(form->Handle(), WM_TIMER, 1, 0);
  CrashAndStart({IDYES});
  EXPECT_EQ(ShownTree(), L"alone");
}

TEST_F(Unsaved, IsKeptByATimerThatEveryChangeOfTheTreeStarts) {
  Start();
  AddCategory(L"A_", L"alone");
  const auto kept = [&] { return !Parts().unsaved->TreeChanged(); };
  EXPECT_FALSE(kept());
  EXPECT_TRUE(PumpUntil(kept));
}

TEST_F(Unsaved, IsKeptAtTheEndOfTheSessionWithoutAQuestion) {
  StartWithWork();
  Tree().SetText(*Tree().Find(L"A_"), L"renamed");
  EXPECT_TRUE(SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0));
  SendMessageW(form->Handle(), WM_ENDSESSION, TRUE, 0);
  EXPECT_TRUE(world.boxes.empty());
  CrashAndStart({IDYES});
  EXPECT_EQ(ShownTree(), L"renamed");
}

TEST_F(Unsaved, IsAskedForAgainWhenTheSessionGoesOn) {
  StartWithWork();
  SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0);
  SendMessageW(form->Handle(), WM_ENDSESSION, FALSE, 0);
  world.answers = {IDCANCEL};
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_EQ(world.boxes.size(), 1u);
}

TEST_F(Unsaved, KeepsItsWindowUntilTheSessionIsKnownToEnd) {
  StartWithWork();
  SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0);
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(IsWindow(form->Handle()));
  EXPECT_TRUE(world.boxes.empty());
  SendMessageW(form->Handle(), WM_ENDSESSION, FALSE, 0);
  EXPECT_TRUE(IsWindow(form->Handle()));
}

TEST_F(Unsaved, IsNotAskedForByAWindowThatIsClosedAsTheSessionEnds) {
  StartWithWork();
  SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, ENDSESSION_CLOSEAPP);
  SendMessageW(form->Handle(), WM_ENDSESSION, TRUE, ENDSESSION_CLOSEAPP);
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(world.boxes.empty());
  CrashAndStart({IDYES});
  EXPECT_EQ(ShownTree(), L"work");
}

TEST_F(Unsaved, LeavesNothingToRecoverWhenTheSessionEndsWithASavedCollection) {
  Start();
  SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0);
  SendMessageW(form->Handle(), WM_ENDSESSION, TRUE, 0);
  CrashAndStart();
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(Unsaved, OpensTheLoadDialogOnTheSlotSavedLast) {
  Start();
  dir.settings.Write(L"Data1", L"2. 2026-01-02 03:04:05");
  dir.settings.Write(L"Data2", L"3. 2026-03-02 03:04:05");
  dir.settings.Write(L"Data3", L"4. 2025-12-31 23:59:59");
  OpenLoad([](win::Form& dialog) { EXPECT_EQ(GetFocus(), dialog.Find(L"Command2", 2)->window); });
}

TEST_F(Unsaved, OpensTheLoadDialogOnTheUnsavedCollectionWhereNoSlotWasSaved) {
  Start();
  OpenLoad([](win::Form& dialog) { EXPECT_EQ(GetFocus(), dialog.Find(L"Command2", 0)->window); });
  AddCategory(L"A_", L"work");
  Close({IDNO});
  Start();
  OpenLoad([](win::Form& dialog) { EXPECT_EQ(GetFocus(), dialog.Find(L"Command3")->window); });
}

// What holds it may have let go of it by the next start.
TEST_F(Unsaved, ThatIsHeldByAnotherProgramStaysForTheNextStart) {
  for (const wchar_t* held : {L"", L".log.1", L".log.2"}) {
    StartWithWork();
    const std::wstring path = program.dataFolder + program.workingDatabase + held;
    Crash();
    world.boxes.clear();
    {
      const win::Unique<HANDLE, ::CloseHandle> file(
          CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
      ASSERT_NE(file.get(), INVALID_HANDLE_VALUE) << Narrow(path);
      world.answers = {IDOK};
      EXPECT_FALSE(app::Connect(program, world)) << Narrow(path);
      ASSERT_EQ(world.boxes.size(), 1u) << Narrow(path);
      EXPECT_EQ(world.boxes[0].title, L"Connect Error:") << Narrow(path);
    }
    world.boxes.clear();
    world.answers = {IDYES};
    Start();
    EXPECT_EQ(world.boxes.size(), 1u) << Narrow(path);
    EXPECT_EQ(ShownTree(), L"work") << Narrow(path);
    Close({IDNO});
    DeleteIfThere(Path());
  }
}

// The database is of somebody else's making, and the log goes with it.
TEST_F(Unsaved, ThatCannotBeRecoveredIsPutAwayAndTheProgramStarts) {
  StartWithWork();
  const std::wstring database = program.dataFolder + program.workingDatabase;
  Crash();
  std::string bytes = ScopedTestDir::ReadBytes(database);
  for (std::size_t page = 2; page * 4096 < bytes.size(); ++page)
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(page * 4096), 4096, 'x');
  dir.WriteFile(L"KestrelonData\\default.dat", bytes);
  world.boxes.clear();
  world.answers = {IDOK};
  Start();
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_TRUE(world.boxes[0].text.starts_with(
      L"The collection that was not saved could not be recovered. What is left of it is kept as: " +
      program.dataFolder + L"Unrecovered1.dat"))
      << Narrow(world.boxes[0].text);
  EXPECT_TRUE(FileExists(program.dataFolder + L"Unrecovered1.dat"));
}

}  // namespace
}  // namespace kestrelon::test
