// What the user sees of a collection that was not saved: the question after an unclean end, the button of the
// Load dialog; and how it gets there.

#include "app/SlotDialog.h"
#include "tests/app/UnsavedFixture.h"
#include "ui/win/Handles.h"

namespace kestrelon::test {
namespace {

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
  const OnForm dialog(L"Save", [](win::Form&) {});
  Close({IDYES});
  EXPECT_TRUE(dialog.Done());
  EXPECT_TRUE(FileExists(Path()));
}

TEST_F(Unsaved, IsKeptWhenSavingFailsOnTheWayOut) {
  StartWithWork();
  std::filesystem::create_directory(program.dataFolder + L"Data0.dat");  // no slot can take its place
  const OnForm dialog(L"Save", [](win::Form& save) { Press(save, L"Command2", 0); });
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
  ExpectNothingBesideTheDatabases();
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

TEST_F(Unsaved, BringsNothingToDiskBeforeAnythingIsDone) {
  Start();
  EXPECT_FALSE(Parts().unsaved->Any());
  SendMessageW(form->Handle(), WM_TIMER, 1, 0);
  ExpectNothingBesideTheDatabases();
}

TEST_F(Unsaved, HasNeitherADeletedCategoryNorItsItems) {
  StartWithWork();
  AddCategory(L"B_", L"other");
  AddItem(L"B_", 1, {L"another"});
  SelectCategory(*Tree().Find(L"A_"));
  world.answers = {IDYES};
  Command(L"meu_Remove");
  KillAndStart({IDYES});
  EXPECT_EQ(ShownTree(), L"other");
  SelectCategory(*Tree().Find(L"B_"));
  EXPECT_EQ(List().Count(), 1u);
}

TEST_F(Unsaved, KeepsItsWindowWhereItCanNeitherBeKeptNorSetAside) {
  Start();
  AddCategory(L"A_", L"work");
  {
    const FileCalls calls(FileCalls::Mode::kDiskFullLong, 0);
    world.answers = {IDNO, IDOK};
    SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  }
  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[1].title, L"Form_Unload Error:");
  ASSERT_NE(form->Handle(), nullptr);
  ASSERT_TRUE(IsWindow(form->Handle()));
  EXPECT_EQ(ShownTree(), L"work");
  Close({IDNO});
  EXPECT_TRUE(FileExists(Path()));
}

TEST_F(Unsaved, IsRecoveredThoughAFileIsHeldForAMoment) {
  for (std::size_t call = 0; !HasFailure(); ++call) {
    SCOPED_TRACE(call);
    StartWithWork();
    Crash();
    world.boxes.clear();
    bool hit = false;
    {
      FileCalls calls(FileCalls::Mode::kHeld, call);
      EXPECT_TRUE(app::Connect(program, world));
      hit = calls.Hit();
    }
    EXPECT_TRUE(program.unsavedFound);
    EXPECT_TRUE(world.boxes.empty());
    program.unsavedFound = false;
    std::filesystem::remove_all(program.dataFolder);
    if (!hit) break;
    ASSERT_LT(call, 100u);
  }
}

// A disk that cannot give back what it was given does so at the next start, too.
TEST_F(Unsaved, IsPutAwayWhereItCannotBeReadAndOtherwiseStaysForTheNextStart) {
  int putAway = 0;
  for (std::size_t call = 0; !HasFailure(); ++call) {
    SCOPED_TRACE(call);
    StartWithWork();
    Crash();
    world.boxes.clear();
    world.answers = {IDOK};
    bool hit = false, connected = false;
    {
      FileCalls calls(FileCalls::Mode::kReadError, call);
      connected = app::Connect(program, world);
      hit = calls.Hit();
    }
    world.answers.clear();
    const std::wstring away = program.dataFolder + L"Unrecovered1.dat";
    if (hit && connected && FileExists(away)) {
      ++putAway;
      ASSERT_EQ(world.boxes.size(), 1u);
      EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
    } else {
      EXPECT_EQ(world.boxes.size(), connected ? 0u : 1u);
      if (!FileExists(Path())) {
        world.answers = {IDYES};
        Start();
        EXPECT_EQ(ShownTree(), L"work");
        End();
      }
    }
    program.unsavedFound = false;
    std::filesystem::remove_all(program.dataFolder);
    if (!hit) break;
  }
  EXPECT_GT(putAway, 5);
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
