// The Save and the Load dialog.

#include <functional>

#include "app/SlotDialog.h"
#include "items/ItemCommands.h"
#include "store/Store.h"
#include "tests/support/Dialogs.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

constexpr const wchar_t* kReplaceQuestion = L"All records in your Database will be Replaced, Are you sure?";

TEST(SlotNames, AreTheKeysAndFilesOfTheFourSlots) {
  EXPECT_EQ(app::SlotKey(0), L"Data0");
  EXPECT_EQ(store::SlotFile(3), L"Data3.dat");
}

TEST(SlotLabel, IsTheNumberAndTheTime) {
  EXPECT_EQ(app::SlotLabel(2, {2007, 5, 0, 14, 21, 9, 33, 0}), L"3. 2007-05-14 21:09:33");
  EXPECT_EQ(app::SlotLabel(0, {2026, 11, 0, 15, 3, 4, 5, 0}), L"1. 2026-11-15 03:04:05");
}

class SlotDialog : public MainFormFixture {
 protected:
  // Opens a dialog by its command, hands its form to `act` and closes it afterwards if it is still there.
  void Open(const wchar_t* command, const std::function<void(win::Form&)>& act) {
    const std::wstring name = command == std::wstring(L"meu_SaveDatabase") ? L"Save" : L"Load";
    const OnForm dialog(name, act);
    Command(command);
    EXPECT_TRUE(dialog.Done());
    EXPECT_TRUE(IsWindowEnabled(form->Handle()));
  }
  static HWND Button(win::Form& dialog, int slot) { return ControlOf(dialog, L"Command2", slot); }
  static void Press(win::Form& dialog, int slot) { SendMessageW(Button(dialog, slot), BM_CLICK, 0, 0); }
  static std::vector<std::wstring> Captions(win::Form& dialog) {
    std::vector<std::wstring> captions;
    for (int slot = 0; slot < 4; ++slot) captions.push_back(TextOf(Button(dialog, slot)));
    return captions;
  }
  // In points, at the 96 pixels an inch of the tests' screen.
  static std::vector<LONG> FontSizes(win::Form& dialog) {
    std::vector<LONG> sizes;
    for (int slot = 0; slot < 4; ++slot) {
      LOGFONTW font{};
      GetObjectW(reinterpret_cast<HFONT>(SendMessageW(Button(dialog, slot), WM_GETFONT, 0, 0)), sizeof font,
                 &font);
      sizes.push_back(MulDiv(-font.lfHeight, 72, 96));
    }
    return sizes;
  }
  // A category with one item, not saved.
  void StartWithContent() {
    Start();
    SelectCategory(AddCategory(L"A_", L"A"));
    AddItem(L"A_", 1, {L"item"});
  }
  std::wstring SlotPath(const wchar_t* name) { return program.dataFolder + name; }
};

TEST_F(SlotDialog, ShowsTheLabelsOfTheSettings) {
  Start();
  dir.settings.Write(L"Data2", L"3. 2007-05-14 21:09:33");
  const std::vector<std::wstring> labels = {L"1. Null", L"2. Null", L"3. 2007-05-14 21:09:33", L"4. Null"};
  Open(L"meu_SaveDatabase", [&](win::Form& dialog) { EXPECT_EQ(Captions(dialog), labels); });
  Open(L"meu_LoadDatabase", [&](win::Form& dialog) { EXPECT_EQ(Captions(dialog), labels); });
}

TEST_F(SlotDialog, ShowsAMissingLabelAsEmpty) {
  dir.WriteFile(L"KestrelonData\\Kestrelon.dat", "[USER INFO]\r\nData1=two\r\n");
  Start();
  Open(L"meu_SaveDatabase", [&](win::Form& dialog) {
    EXPECT_EQ(Captions(dialog), (std::vector<std::wstring>{L"", L"two", L"", L""}));
  });
}

TEST_F(SlotDialog, MakesTheFocusedButtonsFont12PointsAndTheOthers10) {
  Start();
  for (const wchar_t* command : {L"meu_SaveDatabase", L"meu_LoadDatabase"}) {
    Open(command, [](win::Form& dialog) {
      for (int slot : {2, 0, 3, 1}) {
        SetFocus(Button(dialog, slot));
        std::vector<LONG> expected(4, 10);
        expected[static_cast<std::size_t>(slot)] = 12;
        EXPECT_EQ(FontSizes(dialog), expected) << slot;
      }
    });
  }
}

TEST_F(SlotDialog, OpensWithTheFirstSlotFocused) {
  Start();
  Open(L"meu_SaveDatabase", [](win::Form& dialog) {
    EXPECT_EQ(GetFocus(), Button(dialog, 0));
    EXPECT_EQ(FontSizes(dialog), (std::vector<LONG>{12, 10, 10, 10}));
  });
}

TEST_F(SlotDialog, IsModalOverTheMainWindow) {
  Start();
  for (const wchar_t* command : {L"meu_SaveDatabase", L"meu_LoadDatabase"}) {
    Open(command, [this](win::Form& dialog) {
      EXPECT_FALSE(IsWindowEnabled(form->Handle()));
      EXPECT_EQ(GetWindow(dialog.Handle(), GW_OWNER), form->Handle());
    });
  }
}

TEST_F(SlotDialog, EscapeClosesItWithoutAChange) {
  Start();
  const std::string before = ScopedTestDir::ReadBytes(program.settingsFile);
  for (const wchar_t* command : {L"meu_SaveDatabase", L"meu_LoadDatabase"}) {
    Open(command, [](win::Form& dialog) {
      const HWND window = dialog.Handle();
      PostMessageW(Button(dialog, 1), WM_KEYDOWN, VK_ESCAPE, 1);
      EXPECT_TRUE(PumpUntil([&] { return !IsWindow(window); }));
    });
  }
  EXPECT_EQ(ScopedTestDir::ReadBytes(program.settingsFile), before);
}

TEST_F(SlotDialog, TakesItsTextsFromTheLanguageInUse) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[Save]\r\n0=Keep\r\nLabel1=Where?\r\n");
  Start();
  Open(L"meu_SaveDatabase", [](win::Form& dialog) {
    EXPECT_EQ(dialog.Caption(), L"Keep");
    EXPECT_EQ(TextOf(dialog.Find(L"Label1")->window), L"Where?");
    EXPECT_EQ(Captions(dialog)[0], L"1. Null") << "the labels are no texts of the language";
  });
}

// Saving.
class Save : public SlotDialog {};

TEST_F(Save, WritesTheSlotItsLabelAndTheCaptionAndCloses) {
  StartWithContent();
  world.answers = {IDOK};

  Open(L"meu_SaveDatabase", [this](win::Form& dialog) {
    const HWND window = dialog.Handle();
    Press(dialog, 1);
    EXPECT_FALSE(IsWindow(window));
  });

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, kReplaceQuestion);
  EXPECT_EQ(dir.settings.Read(L"Data1"), L"2. 2026-11-15 13:20:05");
  EXPECT_TRUE(FileExists(SlotPath(L"Data1.dat")));
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(Save, LeavesTheOtherLabelsAlone) {
  StartWithContent();
  world.answers = {IDOK};
  Open(L"meu_SaveDatabase", [](win::Form& dialog) { Press(dialog, 2); });
  EXPECT_EQ(dir.settings.Read(L"Data0"), L"1. Null");
  EXPECT_EQ(dir.settings.Read(L"Data1"), L"2. Null");
  EXPECT_EQ(dir.settings.Read(L"Data3"), L"4. Null");
}

TEST_F(Save, StaysOpenWithItsLabelWhenTheQuestionIsCancelled) {
  StartWithContent();
  dir.WriteFile(L"KestrelonData\\Data0.dat", "as it was");
  world.answers = {IDCANCEL};

  Open(L"meu_SaveDatabase", [](win::Form& dialog) {
    Press(dialog, 0);
    EXPECT_TRUE(IsWindow(dialog.Handle()));
    EXPECT_TRUE(IsWindowEnabled(dialog.Handle()));
    EXPECT_EQ(Captions(dialog)[0], L"1. Null");
  });

  EXPECT_EQ(dir.settings.Read(L"Data0"), L"1. Null");
  EXPECT_EQ(ScopedTestDir::ReadBytes(SlotPath(L"Data0.dat")), "as it was");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(Save, StaysOpenWithItsLabelWhenTheSavingFails) {
  StartWithContent();
  std::filesystem::create_directories(SlotPath(L"Data0.dat"));
  world.answers = {IDOK, IDOK};

  Open(L"meu_SaveDatabase", [](win::Form& dialog) {
    Press(dialog, 0);
    EXPECT_TRUE(IsWindow(dialog.Handle()));
    EXPECT_EQ(Captions(dialog)[0], L"1. Null");
  });

  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[1].title, L"SaveData Error:");
  EXPECT_EQ(dir.settings.Read(L"Data0"), L"1. Null");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(Save, IsDisabledWithTheHourglassWhileItSaves) {
  StartWithContent();
  bool enabled = true;
  HCURSOR pointer = nullptr;
  const auto box = world.messageBox;
  world.messageBox = [&](HWND owner, const std::wstring& text, const std::wstring& title, UINT flags) {
    enabled = IsWindowEnabled(owner);
    pointer = GetCursor();
    return box(owner, text, title, flags);
  };
  world.answers = {IDCANCEL};

  Open(L"meu_SaveDatabase", [](win::Form& dialog) {
    Press(dialog, 0);
    EXPECT_TRUE(IsWindowEnabled(dialog.Handle()));
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_ARROW));
  });

  EXPECT_FALSE(enabled);
  EXPECT_EQ(pointer, LoadCursorW(nullptr, IDC_WAIT));
}

TEST_F(Save, TakesTheTimeBeforeItSaves) {
  StartWithContent();
  const auto box = world.messageBox;
  world.messageBox = [&](HWND owner, const std::wstring& text, const std::wstring& title, UINT flags) {
    world.now.wHour = 14;
    return box(owner, text, title, flags);
  };
  world.answers = {IDOK};
  Open(L"meu_SaveDatabase", [](win::Form& dialog) { Press(dialog, 0); });
  EXPECT_EQ(dir.settings.Read(L"Data0"), L"1. 2026-11-15 13:20:05");
}

TEST_F(Save, TwoWithinOneSecondGiveLabelsThatDifferInTheirNumbersAlone) {
  StartWithContent();
  world.answers = {IDOK, IDOK};
  Open(L"meu_SaveDatabase", [](win::Form& dialog) { Press(dialog, 0); });
  Open(L"meu_SaveDatabase", [](win::Form& dialog) { Press(dialog, 3); });
  EXPECT_EQ(dir.settings.Read(L"Data0"), L"1. 2026-11-15 13:20:05");
  EXPECT_EQ(dir.settings.Read(L"Data3"), L"4. 2026-11-15 13:20:05");
}

TEST_F(Save, ShowsItsNewLabelWhenItIsOpenedAgain) {
  StartWithContent();
  world.answers = {IDOK};
  Open(L"meu_SaveDatabase", [](win::Form& dialog) { Press(dialog, 0); });
  Open(L"meu_SaveDatabase",
       [](win::Form& dialog) { EXPECT_EQ(Captions(dialog)[0], L"1. 2026-11-15 13:20:05"); });
}

// Loading.
class Load : public SlotDialog {};

TEST_F(Load, BringsBackWhatWasSavedAndCloses) {
  StartWithContent();
  AddCategory(L"a_", L"child", Tree().Find(L"A_"));
  world.answers = {IDOK};
  Open(L"meu_SaveDatabase", [](win::Form& dialog) { Press(dialog, 0); });
  End();
  Start();
  ASSERT_EQ(ShownTree(), L"");

  Open(L"meu_LoadDatabase", [](win::Form& dialog) {
    const HWND window = dialog.Handle();
    Press(dialog, 0);
    EXPECT_FALSE(IsWindow(window));
  });

  EXPECT_EQ(ShownTree(), L"A(child)");
  EXPECT_EQ(Panel(1), L"Category : ");
  EXPECT_EQ(Panel(3), L"0 Objects");
  SelectCategory(*Tree().Find(L"A_"));
  EXPECT_EQ(Column(1), std::vector<std::wstring>{L"item"});
}

TEST_F(Load, ChangesNoLabel) {
  StartWithContent();
  world.answers = {IDOK};
  Open(L"meu_SaveDatabase", [](win::Form& dialog) { Press(dialog, 0); });
  world.now.wHour = 20;
  Open(L"meu_LoadDatabase", [](win::Form& dialog) { Press(dialog, 0); });
  EXPECT_EQ(dir.settings.Read(L"Data0"), L"1. 2026-11-15 13:20:05");
}

TEST_F(Load, OfASlotNeverSavedMakesItFromTheTemplateAndShowsAnEmptyTree) {
  StartWithContent();

  Open(L"meu_LoadDatabase", [](win::Form& dialog) { Press(dialog, 1); });

  EXPECT_EQ(ShownTree(), L"");
  EXPECT_EQ(ScopedTestDir::ReadBytes(SlotPath(L"Data1.dat")), TemplateBytes());
  EXPECT_EQ(dir.settings.Read(L"Data1"), L"2. Null");
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(Load, AsksBeforeAboutACommentThatIsNotSaved) {
  StartWithContent();
  SelectCategory(*Tree().Find(L"A_"));
  List().SelectOnly(0);
  items::EnableItemCommands(Parts());
  Command(L"meu_comment");
  win::Form& comment = *form->ListHelpers().comment;
  SendMessageW(comment.Find(L"Text1")->window, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(L"typed"));
  int questions = 0;
  world.messageBox = [&](HWND owner, const std::wstring& text, const std::wstring&, UINT) {
    EXPECT_TRUE(text.ends_with(L"The comment was changed. Save it?")) << Narrow(text);
    EXPECT_NE(owner, form->Handle()) << "the dialog that is open";
    EXPECT_NE(ShownTree(), L"") << "before anything is replaced";
    ++questions;
    return IDYES;
  };

  Open(L"meu_LoadDatabase", [](win::Form& dialog) { Press(dialog, 1); });

  EXPECT_EQ(questions, 1);
  EXPECT_EQ(ShownTree(), L"");
  EXPECT_EQ(TextOf(comment.Find(L"Text1")->window), L"");
}

TEST_F(Load, ClosesAfterAFailureToo) {
  StartWithContent();
  dir.WriteFile(L"KestrelonData\\Data0.dat", "no database");
  world.answers = {IDOK};

  Open(L"meu_LoadDatabase", [](win::Form& dialog) {
    const HWND window = dialog.Handle();
    Press(dialog, 0);
    EXPECT_FALSE(IsWindow(window));
  });

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"LoadData Error:");
}

}  // namespace
}  // namespace kestrelon::test
