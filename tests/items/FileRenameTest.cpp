// The dialog that gives an item another alias.

#include "items/FileRename.h"
#include "tests/items/ItemDialogFixture.h"
#include "tests/support/BalloonSpy.h"

namespace kestrelon::test {
namespace {

TEST(StoredAlias, IsTheWholeTextUpTo255Units) {
  EXPECT_EQ(items::StoredAlias(L""), L"");
  EXPECT_EQ(items::StoredAlias(L" a b "), L" a b ");
  EXPECT_EQ(items::StoredAlias(std::wstring(255, L'x')), std::wstring(255, L'x'));
}

TEST(StoredAlias, IsTheFirst255UnitsOfALongerText) {
  EXPECT_EQ(items::StoredAlias(std::wstring(255, L'x') + L"y"), std::wstring(255, L'x'));
}

TEST(StoredAlias, DoesNotCutACharacterInTwo) {
  EXPECT_EQ(items::StoredAlias(std::wstring(254, L'x') + L"\U0001F600"), std::wstring(254, L'x'));
  EXPECT_EQ(items::StoredAlias(std::wstring(253, L'x') + L"\U0001F600z"),
            std::wstring(253, L'x') + L"\U0001F600");
}

TEST(RenameStatement, QuotesItsValues) {
  EXPECT_EQ(items::RenameStatement(L"Bob's", L"3#A_"),
            L"UPDATE FTable SET DefineName=\"Bob's\" WHERE FileIndex=\"3#A_\"");
}

class FileRename : public ItemDialogFixture {
 protected:
  void Rename(const std::function<void(win::Form&)>& act) { InDialogOf(L"meu_rename", L"FileRename", act); }
  // Opens the dialog, puts in the alias and presses OK.
  void RenameTo(const std::wstring& alias) {
    Rename([&](win::Form& dialog) {
      SetWindowTextW(ControlOf(dialog, L"Text1"), alias.c_str());
      Press(dialog, L"Command1", 0);
    });
  }
  Texts Aliases() { return Query(L"SELECT DefineName FROM FTable", 1); }
};

TEST_F(FileRename, ChangesTheAliasInTableAndListAndCloses) {
  StartWith({{L"one"}, {L"two"}});

  Rename([&](win::Form& dialog) {
    const HWND window = dialog.Handle();
    SetWindowTextW(ControlOf(dialog, L"Text1"), L"new");
    Press(dialog, L"Command1", 0);
    EXPECT_FALSE(IsWindow(window));
  });

  EXPECT_EQ(Aliases(), (Texts{L"new", L"two"}));
  EXPECT_EQ(Column(1), (Texts{L"new", L"two"}));
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_FALSE(Parts().connection.IsOpen());
}

TEST_F(FileRename, ShowsTheAliasOfTheSelectedRow) {
  StartWith({{L"one"}, {L"two & three's"}});
  List().SelectOnly(1);
  Rename([](win::Form& dialog) {
    EXPECT_EQ(dialog.Caption(), L"Rename");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Text1")), L"two & three's");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Label2")), L"2#A_");
    EXPECT_FALSE(IsWindowVisible(ControlOf(dialog, L"Label2")));
  });
}

TEST_F(FileRename, ActsOnTheFocusedOneOfSeveralSelectedRows) {
  StartWith({{L"one"}, {L"two"}, {L"three"}});
  List().SelectOnly(2);
  List().Select(0, true);
  RenameTo(L"new");
  EXPECT_EQ(Aliases(), (Texts{L"one", L"two", L"new"}));
}

TEST_F(FileRename, OpensWithTheWholeTextSelectedAndFocused) {
  StartWith({{L"some alias"}});
  Rename([](win::Form& dialog) {
    EXPECT_EQ(GetFocus(), ControlOf(dialog, L"Text1"));
    EXPECT_EQ(SelectionOf(ControlOf(dialog, L"Text1")), L"some alias");
  });
}

TEST_F(FileRename, SelectsTheWholeTextAgainWhenItIsActivatedAgain) {
  StartWith({{L"some alias"}});
  Rename([](win::Form& dialog) {
    PutCaretAtStart(ControlOf(dialog, L"Text1"));
    SendMessageW(dialog.Handle(), WM_ACTIVATE, WA_INACTIVE, 0);
    EXPECT_EQ(SelectionOf(ControlOf(dialog, L"Text1")), L"");
    SendMessageW(dialog.Handle(), WM_ACTIVATE, WA_ACTIVE, 0);
    EXPECT_EQ(SelectionOf(ControlOf(dialog, L"Text1")), L"some alias");
  });
}

TEST_F(FileRename, DisablesOkForABlankOnlyAlias) {
  StartWith({{L"alias"}});
  Rename([](win::Form& dialog) {
    const HWND text = ControlOf(dialog, L"Text1"), ok = ControlOf(dialog, L"Command1", 0);
    EXPECT_TRUE(IsWindowEnabled(ok));
    for (const wchar_t* blank : {L"", L" ", L"     "}) {
      SetWindowTextW(text, blank);
      EXPECT_FALSE(IsWindowEnabled(ok));
      SetWindowTextW(text, L"  x ");
      EXPECT_TRUE(IsWindowEnabled(ok));
    }
  });
}

TEST_F(FileRename, OpensWithOkDisabledForAnItemWithoutAlias) {
  StartWith({{L""}});
  Rename([](win::Form& dialog) {
    EXPECT_FALSE(IsWindowEnabled(ControlOf(dialog, L"Command1", 0)));
    SendMessageW(ControlOf(dialog, L"Text1"), WM_CHAR, L'n', 1);
    EXPECT_TRUE(IsWindowEnabled(ControlOf(dialog, L"Command1", 0)));
  });
}

TEST_F(FileRename, EnterDoesNothingWhileOkIsDisabled) {
  StartWith({{L"alias"}});
  Rename([](win::Form& dialog) {
    SetWindowTextW(ControlOf(dialog, L"Text1"), L" ");
    PressKey(ControlOf(dialog, L"Text1"), VK_RETURN);
    EXPECT_TRUE(IsWindow(dialog.Handle()));
  });
  EXPECT_EQ(Aliases(), Texts{L"alias"});
}

TEST_F(FileRename, EnterIsOk) {
  StartWith({{L"alias"}});
  Rename([](win::Form& dialog) {
    SetWindowTextW(ControlOf(dialog, L"Text1"), L"by Enter");
    PressKey(ControlOf(dialog, L"Text1"), VK_RETURN);
  });
  EXPECT_EQ(Aliases(), Texts{L"by Enter"});
}

TEST_F(FileRename, CancelAndEscapeChangeNothing) {
  StartWith({{L"alias"}});
  for (const bool escape : {false, true}) {
    Rename([&](win::Form& dialog) {
      const HWND window = dialog.Handle();
      SetWindowTextW(ControlOf(dialog, L"Text1"), L"other");
      if (escape) {
        PressKey(ControlOf(dialog, L"Text1"), VK_ESCAPE);
      } else {
        Press(dialog, L"Command1", 1);
      }
      EXPECT_FALSE(IsWindow(window));
    });
  }
  EXPECT_EQ(Aliases(), Texts{L"alias"});
  EXPECT_EQ(Column(1), Texts{L"alias"});
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(FileRename, StoresTheFirst255CharactersOf300) {
  StartWith({{L"alias"}});
  std::wstring text;
  while (text.size() < 300) text += std::to_wstring(text.size()) + L" ";
  text.resize(300);
  const std::wstring stored = text.substr(0, 255);

  RenameTo(text);

  EXPECT_EQ(Aliases(), Texts{stored});
  EXPECT_EQ(Column(1), Texts{stored});
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(FileRename, StoresApostrophesChineseAndEmojiAsTheyAre) {
  StartWith({{L"alias"}});
  for (const wchar_t* alias : {L"Bob's 'file'", L"季度报告 繁體", L"smile \U0001F600", L" blanks "}) {
    RenameTo(alias);
    EXPECT_EQ(Aliases(), Texts{alias});
    EXPECT_EQ(Column(1), Texts{alias});
  }
}

TEST_F(FileRename, ADoubleQuoteFailsChangesNothingAndLeavesTheDialogOpen) {
  StartWith({{L"alias"}});

  Rename([](win::Form& dialog) {
    const BalloonSpy balloons(ControlOf(dialog, L"Text1"));
    SetWindowTextW(ControlOf(dialog, L"Text1"), L"say \"hello\"");
    SetFocus(ControlOf(dialog, L"Command1", 0));
    Press(dialog, L"Command1", 0);
    EXPECT_TRUE(IsWindow(dialog.Handle()));
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Text1")), L"say \"hello\"");
    EXPECT_EQ(GetFocus(), ControlOf(dialog, L"Text1"));
    EXPECT_EQ(balloons.Texts(), Texts{kNoQuoteText});
  });

  EXPECT_EQ(Aliases(), Texts{L"alias"});
  EXPECT_EQ(Column(1), Texts{L"alias"});
  EXPECT_TRUE(program.databaseSaved);
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_FALSE(Parts().connection.IsOpen());
}

TEST_F(FileRename, TakesNoDoubleQuoteThatIsTyped) {
  for (const auto& [language, text] :
       {std::pair{L"English", kNoQuoteText}, std::pair{L"Chinese_S", L"无法存储双引号，请改用“ ”。"},
        std::pair{L"Chinese_T", L"無法儲存雙引號，請改用“ ”。"}}) {
    End();
    dir.settings.Write(L"Language", language);
    StartWith({{L"alias"}});
    Rename([&](win::Form& dialog) {
      const BalloonSpy balloons(ControlOf(dialog, L"Text1"));
      for (const wchar_t letter : std::wstring(L"x\", Filename=\"y"))
        SendMessageW(ControlOf(dialog, L"Text1"), WM_CHAR, static_cast<WPARAM>(letter), 1);
      EXPECT_EQ(balloons.Texts(), (Texts{text, text}));
      Press(dialog, L"Command1", 0);
    });
    EXPECT_EQ(Query(L"SELECT DefineName, Filename FROM FTable", 2), Texts{L"x, Filename=y|f.txt"});
  }
}

// What such an alias made of its statement would have given the item another file.
TEST_F(FileRename, BalancedQuotesChangeNoOtherField) {
  StartWith({{L"alias"}});
  Rename([](win::Form& dialog) {
    SetWindowTextW(ControlOf(dialog, L"Text1"), L"x\", Filename=\"gone");
    Press(dialog, L"Command1", 0);
    EXPECT_TRUE(IsWindow(dialog.Handle()));
  });
  EXPECT_EQ(Query(L"SELECT DefineName, Filename FROM FTable", 2), Texts{L"alias|f.txt"});
}

TEST_F(FileRename, LimitsWhatIsTypedToTheColumn) {
  StartWith({{L"alias"}});
  Rename([](win::Form& dialog) {
    EXPECT_EQ(SendMessageW(ControlOf(dialog, L"Text1"), EM_GETLIMITTEXT, 0, 0), 255);
  });
}

TEST_F(FileRename, SaysWhyAnAliasCouldNotBeStored) {
  StartWith({{L"alias"}});
  const std::wstring database = program.dataFolder + L"default.dat";
  Rename([&](win::Form& dialog) {
    const BalloonSpy balloons(ControlOf(dialog, L"Text1"));
    DeleteIfThere(database);
    SetWindowTextW(ControlOf(dialog, L"Text1"), L"new");
    Press(dialog, L"Command1", 0);
    EXPECT_TRUE(IsWindow(dialog.Handle()));
    ASSERT_EQ(balloons.Texts().size(), 1u);
    EXPECT_NE(balloons.Texts()[0].find(L"default.dat"), std::wstring::npos) << Narrow(balloons.Texts()[0]);
  });
  EXPECT_EQ(Column(1), Texts{L"alias"});
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(FileRename, LeavesTheSelectionAndTheOtherColumnsAlone) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"now", L"remark"}, {L"two"}});
  RenameTo(L"new");
  EXPECT_EQ(List().SelectedRows(), std::vector<std::size_t>{0});
  EXPECT_EQ(Query(L"SELECT DefineName, Filename, LocalFile, InsertTime, Comment FROM FTable", 5)[0],
            L"new|a.txt|C:\\a.txt|now|remark");
  EXPECT_EQ(Cell(0, 3), L"C:\\a.txt");
}

TEST_F(FileRename, DoesNotOpenWithoutASelectedRow) {
  StartWith({{L"alias"}});
  List().SelectNone();
  items::meu_rename_Click(Parts());
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
  EXPECT_EQ(Aliases(), Texts{L"alias"});
}

TEST_F(FileRename, TakesItsTextsFromTheLanguageInUse) {
  dir.settings.Write(L"Language", L"Chinese_S");
  StartWith({{L"alias"}});
  Rename([](win::Form& dialog) {
    EXPECT_EQ(dialog.Caption(), L"修改别名");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Label1")), L"别名(&A)：");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1", 0)), L"确定(&O)");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1", 1)), L"取消(&C)");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Text1")), L"alias");
  });
}

TEST_F(FileRename, KeepsItsBuiltInTextsWithoutALanguageFile) {
  StartWith({{L"alias"}});
  DeleteIfThere(program.programFolder + L"Lang\\English.ini");
  Rename([](win::Form& dialog) {
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1", 0)), L"&OK");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1", 1)), L"Cancel");
  });
}

TEST_F(FileRename, OpensByTheSecondToolbarButtonWhileTheListIsActive) {
  StartWith({{L"alias"}});
  InDialog(
      L"FileRename", [&] { form->Toolbar1_ButtonClick(2); }, [](win::Form&) {});
}

}  // namespace
}  // namespace kestrelon::test
