// Closing the main window.

#include "app/MainForm.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

constexpr const wchar_t* kQuestion = L"Program will be exit, Save Changes ? ";

class Closing : public MainFormFixture {
 protected:
  void AskToClose() { SendMessageW(form->Handle(), WM_CLOSE, 0, 0); }
  // Did the window's end end the message loop?
  static bool Quits() {
    MSG message;
    return PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE;
  }
  std::string SettingsBytes() { return ScopedTestDir::ReadBytes(program.settingsFile); }
};

TEST_F(Closing, AsksWithThreeAnswersWhileNothingIsSaved) {
  Start();
  world.answers = {IDCANCEL};

  AskToClose();

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, kQuestion);
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_YESNOCANCEL | MB_ICONQUESTION));
  EXPECT_EQ(world.boxes[0].owner, form->Handle());
}

TEST_F(Closing, AsksWithTheBuiltInTextWithoutALanguageFile) {
  DeleteIfThere(program.programFolder + L"Lang\\English.ini");
  Start();
  world.answers = {IDCANCEL};
  AskToClose();
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, kQuestion);
}

TEST_F(Closing, AsksInTheLanguageInUse) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[messagebox]\r\n1=Really?\r\n");
  Start();
  world.answers = {IDCANCEL};
  AskToClose();
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Really?");
}

TEST_F(Closing, CancelKeepsTheWindowAndAllContent) {
  Start();
  SelectCategory(AddCategory(L"A_", L"A"));
  AddItem(L"A_", 1, {L"item"});
  SelectCategory(*Tree().Find(L"A_"));
  world.answers = {IDCANCEL};

  AskToClose();

  EXPECT_TRUE(IsWindow(form->Handle()));
  EXPECT_TRUE(IsWindowVisible(form->Handle()));
  EXPECT_FALSE(Quits());
  EXPECT_EQ(ShownTree(), L"A");
  EXPECT_EQ(List().Count(), 1u);
  EXPECT_EQ(Panel(2), L"A_");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(Closing, NoEndsTheProgramWithoutSaving) {
  Start();
  world.answers = {IDNO};
  AskToClose();
  EXPECT_EQ(form->Handle(), nullptr);
  EXPECT_TRUE(Quits());
  EXPECT_FALSE(FileExists(program.dataFolder + L"Data0.dat"));
}

TEST_F(Closing, YesOpensTheSaveDialogAndThenEnds) {
  Start();
  AddCategory(L"A_", L"A");
  world.answers = {IDYES, IDOK};
  bool mainStillThere = false;
  const OnWindow dialog([](HWND window) { return TextOf(window) == L"Save Database"; },
                        [&](HWND window) {
                          mainStillThere = form->Handle() != nullptr && !IsWindowEnabled(form->Handle());
                          auto& save = dynamic_cast<win::Form&>(*win::Window::Of(window));
                          SendMessageW(save.Find(L"Command2", 2)->window, BM_CLICK, 0, 0);
                        });

  AskToClose();

  EXPECT_TRUE(dialog.Done());
  EXPECT_TRUE(mainStillThere);
  EXPECT_TRUE(FileExists(program.dataFolder + L"Data2.dat"));
  EXPECT_EQ(form->Handle(), nullptr);
  EXPECT_TRUE(Quits());
}

TEST_F(Closing, YesEndsAlsoWhenTheSaveDialogIsLeftWithoutSaving) {
  Start();
  world.answers = {IDYES};
  const OnWindow dialog([](HWND window) { return TextOf(window) == L"Save Database"; },
                        [](HWND window) { SendMessageW(window, WM_CLOSE, 0, 0); });
  AskToClose();
  EXPECT_TRUE(dialog.Done());
  EXPECT_EQ(form->Handle(), nullptr);
}

TEST_F(Closing, AsksNothingOnceTheDatabaseIsSaved) {
  Start();
  program.databaseSaved = true;
  AskToClose();
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_EQ(form->Handle(), nullptr);
  EXPECT_TRUE(Quits());
}

TEST_F(Closing, AsksAgainAfterAChange) {
  Start();
  program.databaseSaved = true;
  Command(L"meu_AddLastSibling");
  world.answers = {IDCANCEL};
  AskToClose();
  EXPECT_EQ(world.boxes.size(), 1u);
}

TEST_F(Closing, TheExitCommandAsksTheSame) {
  Start();
  world.answers = {IDCANCEL};
  Command(L"meu_exit");
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, kQuestion);
  EXPECT_TRUE(IsWindow(form->Handle()));

  world.answers = {IDNO};
  Command(L"meu_exit");
  EXPECT_EQ(form->Handle(), nullptr);
}

TEST_F(Closing, AsksOneQuestionAtATimeHoweverOftenItIsAsked) {
  Start();
  int open = 0, asked = 0;
  bool disables = true;
  world.messageBox = [&](HWND owner, const std::wstring&, const std::wstring&, UINT) {
    ++asked;
    EXPECT_EQ(++open, 1);
    if (disables) EnableWindow(owner, FALSE);  // as a message box does
    for (int i = 0; i < 4; ++i) PostMessageW(form->Handle(), WM_CLOSE, 0, 0);
    PostMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(Menus().IdOf(L"meu_exit"), 0), 0);
    win::DoEvents();
    EnableWindow(owner, TRUE);
    --open;
    return IDCANCEL;
  };

  AskToClose();
  win::DoEvents();
  EXPECT_EQ(asked, 1);

  disables = false;  // and before it does
  AskToClose();
  win::DoEvents();
  EXPECT_EQ(asked, 2) << "a later request asks again";
  EXPECT_TRUE(IsWindow(form->Handle()));
}

TEST_F(Closing, AsksNothingOverADialogWhichComesToTheFront) {
  Start();
  HWND front = nullptr;
  const OnWindow about([](HWND window) { return TextOf(window).find(L"bout") != std::wstring::npos; },
                       [&](HWND window) {
                         SetForegroundWindow(form->Handle());
                         AskToClose();
                         SendMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(Menus().IdOf(L"meu_exit"), 0),
                                      0);
                         front = GetForegroundWindow();
                         EXPECT_EQ(front, window);
                         EXPECT_TRUE(IsWindow(form->Handle()));
                         SendMessageW(window, WM_CLOSE, 0, 0);
                       });
  Command(L"meu_about");
  EXPECT_TRUE(about.Done());
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
}

TEST_F(Closing, TheEndOfTheSessionAsksNothing) {
  Start();
  AddCategory(L"A_", L"A");
  EXPECT_TRUE(SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0));
  SendMessageW(form->Handle(), WM_ENDSESSION, TRUE, 0);
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(Closing, WritesTheViewSettingsBeforeItAsks) {
  Start();
  List().SetColumnWidth(1, 200);
  Command(L"meu_ShowItemInfo");
  Menus().Check(L"meu_aa", true);
  std::wstring width, info, drag;
  world.messageBox = [&](HWND, const std::wstring&, const std::wstring&, UINT) {
    width = dir.settings.Read(L"DefineName_Length");
    info = dir.settings.Read(L"ShowItemInfo");
    drag = dir.settings.Read(L"Drag&Drop");
    return IDCANCEL;
  };

  AskToClose();

  EXPECT_EQ(width, L"3000");
  EXPECT_EQ(info, L"True");
  EXPECT_EQ(drag, L"True");
}

TEST_F(Closing, LeavesTheSettingsByteForByteWhereTheUserChangedNothing) {
  Start();
  const std::string before = SettingsBytes();
  world.answers = {IDNO};
  AskToClose();
  EXPECT_EQ(SettingsBytes(), before);
}

TEST_F(Closing, KeepsTheTextOfAWidthThatWasNotTouched) {
  ASSERT_TRUE(app::Connect(program, world));
  dir.settings.Write(L"FileName_Length", L"2234.83500");
  Start();
  List().SetColumnWidth(3, 100);
  world.answers = {IDNO};
  AskToClose();
  EXPECT_EQ(dir.settings.Read(L"FileName_Length"), L"2234.83500");
  EXPECT_EQ(dir.settings.Read(L"DefineName_Length"), L"1874.835");
  EXPECT_EQ(dir.settings.Read(L"LocalFile_Length"), L"1500");
}

TEST_F(Closing, WritesTheWidthsOfAllFiveColumns) {
  Start();
  for (std::size_t column = 1; column <= 5; ++column)
    List().SetColumnWidth(column, static_cast<int>(column) * 20);
  world.answers = {IDNO};
  AskToClose();
  EXPECT_EQ(dir.settings.Read(L"DefineName_Length"), L"300");
  EXPECT_EQ(dir.settings.Read(L"FileName_Length"), L"600");
  EXPECT_EQ(dir.settings.Read(L"LocalFile_Length"), L"900");
  EXPECT_EQ(dir.settings.Read(L"InsertTime_Length"), L"1200");
  EXPECT_EQ(dir.settings.Read(L"Comment_Length"), L"1500");
}

TEST_F(Closing, WidthsComeBackAtTheNextStart) {
  Start();
  List().SetColumnWidth(2, 333);
  world.answers = {IDNO};
  AskToClose();
  End();
  Start();
  EXPECT_EQ(List().ColumnWidth(2), 333);
}

TEST_F(Closing, ShowsAFailureToWriteTheSettingsAndStillAsks) {
  Start();
  DeleteIfThere(program.settingsFile);
  std::filesystem::create_directories(program.settingsFile);
  world.answers = {IDOK, IDCANCEL};
  AskToClose();
  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[0].title, L"Form_QueryUnload Error:");
  EXPECT_EQ(world.boxes[1].text, kQuestion);
}

}  // namespace
}  // namespace kestrelon::test
