// The dialog that shows and changes all of an item but its alias.

#include "app/base/Win32.h"

#include <commdlg.h>

#include "items/FilePropterty.h"
#include "tests/items/ItemDialogFixture.h"
#include "tests/support/BalloonSpy.h"

namespace kestrelon::test {
namespace {

TEST(PropertiesStatement, HasNoBlankBehindTheCommasAndBeforeWhere) {
  EXPECT_EQ(
      items::PropertiesStatement({L"n.txt", L"C:\\n.txt", L"11/15/2026 1:20:05 PM", L"it's", L"3#A_"}),
      L"UPDATE FTable SET Filename=\"n.txt\",LocalFile=\"C:\\n.txt\",InsertTime=\"11/15/2026 1:20:05 PM\","
      L"Comment=\"it's\"WHERE FileIndex=\"3#A_\"");
}

class FilePropterty : public ItemDialogFixture {
 protected:
  void Properties(const std::function<void(win::Form&)>& act) {
    InDialogOf(L"meu_Properties", L"FilePropterty", act);
  }
  static HWND Field(win::Form& dialog, int index) { return ControlOf(dialog, L"Text2", index); }
  static std::wstring Status(win::Form& dialog) { return TextOf(ControlOf(dialog, L"Text1")); }
  static void Put(win::Form& dialog, int field, const std::wstring& text) {
    SetWindowTextW(Field(dialog, field), text.c_str());
  }
  static void PressOk(win::Form& dialog) { Press(dialog, L"Command2", 0); }
  // Opens the dialog, puts in the comment and presses OK.
  void SetComment(const std::wstring& comment) {
    Properties([&](win::Form& dialog) {
      Put(dialog, 3, comment);
      PressOk(dialog);
    });
  }
  Texts Table() {
    return Query(L"SELECT DefineName, Filename, LocalFile, InsertTime, Comment FROM FTable", 5);
  }
  Texts Comments() { return Query(L"SELECT Comment FROM FTable", 1); }
};

TEST_F(FilePropterty, ShowsTheFieldsOfTheSelectedRow) {
  StartWith({{L"one"}, {L"two", L"b.txt", L"C:\\b.txt", L"yesterday", L"first\r\nsecond"}});
  List().SelectOnly(1);
  Properties([](win::Form& dialog) {
    EXPECT_EQ(dialog.Caption(), L"Propterties");
    EXPECT_EQ(TextOf(Field(dialog, 0)), L"b.txt");
    EXPECT_EQ(TextOf(Field(dialog, 1)), L"C:\\b.txt");
    EXPECT_EQ(TextOf(Field(dialog, 2)), L"yesterday");
    EXPECT_EQ(TextOf(Field(dialog, 3)), L"first\r\nsecond");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1")), L"....");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Label2")), L"2#A_");
    EXPECT_FALSE(IsWindowVisible(ControlOf(dialog, L"Label2")));
  });
}

TEST_F(FilePropterty, OkChangesTheFourFieldsInTableAndListAndCloses) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"old"}, {L"two"}});

  Properties([](win::Form& dialog) {
    const HWND window = dialog.Handle();
    Put(dialog, 0, L"n.txt");
    Put(dialog, 1, L"D:\\n.txt");
    Put(dialog, 2, L"now");
    Put(dialog, 3, L"new");
    PressOk(dialog);
    EXPECT_FALSE(IsWindow(window));
  });

  EXPECT_EQ(Table(), (Texts{L"one|n.txt|D:\\n.txt|now|new", L"two|f.txt|C:\\f.txt|11/15/2026 1:20:05 PM|"}));
  EXPECT_EQ(Cell(0, 1), L"one");
  EXPECT_EQ(Cell(0, 2), L"n.txt");
  EXPECT_EQ(Cell(0, 3), L"D:\\n.txt");
  EXPECT_EQ(Cell(0, 4), L"now");
  EXPECT_EQ(Cell(0, 5), L"new");
  EXPECT_EQ(Cell(1, 2), L"f.txt");
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_FALSE(Parts().connection.IsOpen());
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(FilePropterty, OkMayEmptyTheFields) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"old"}});
  Properties([](win::Form& dialog) {
    for (int i = 0; i < 4; ++i) Put(dialog, i, L"");
    PressOk(dialog);
  });
  EXPECT_EQ(Table(), Texts{L"one||||"});
}

TEST_F(FilePropterty, CancelAndEscapeChangeNothing) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"old"}});
  for (const bool escape : {false, true}) {
    Properties([&](win::Form& dialog) {
      const HWND window = dialog.Handle();
      Put(dialog, 3, L"new");
      if (escape) {
        PressKey(Field(dialog, 3), VK_ESCAPE);
      } else {
        Press(dialog, L"Command2", 1);
      }
      EXPECT_FALSE(IsWindow(window));
    });
  }
  EXPECT_EQ(Table(), Texts{L"one|a.txt|C:\\a.txt|then|old"});
  EXPECT_EQ(Cell(0, 5), L"old");
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(FilePropterty, StoresApostrophesChineseEmojiAndLineBreaksAsTheyAre) {
  StartWith({{L"one"}});
  for (const wchar_t* comment :
       {L"Bob's 'file'", L"季度报告 繁體", L"smile \U0001F600", L"a\r\nb\r\n\r\nc", L" x "}) {
    SetComment(comment);
    EXPECT_EQ(Comments(), Texts{comment});
    EXPECT_EQ(List().Rows()[0].Text(5), comment);
  }
}

TEST_F(FilePropterty, ADoubleQuoteInAnyFieldFailsChangesNothingAndLeavesTheDialogOpen) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"old"}});
  for (int field = 0; field < 4; ++field) {
    Properties([&](win::Form& dialog) {
      const BalloonSpy balloons(Field(dialog, field));
      Put(dialog, field, L"say \"hello\"");
      PressOk(dialog);
      EXPECT_TRUE(IsWindow(dialog.Handle()));
      EXPECT_EQ(GetFocus(), Field(dialog, field));
      EXPECT_EQ(balloons.Texts(), Texts{kNoQuoteText});
      EXPECT_EQ(TextOf(Field(dialog, field)), L"say \"hello\"");
    });
  }
  EXPECT_EQ(Table(), Texts{L"one|a.txt|C:\\a.txt|then|old"});
  EXPECT_EQ(Cell(0, 5), L"old");
  EXPECT_TRUE(program.databaseSaved);
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_FALSE(Parts().connection.IsOpen());
}

TEST_F(FilePropterty, ATextLongerThanItsColumnFailsAndChangesNothing) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"old"}});
  Properties([](win::Form& dialog) {
    const BalloonSpy nameBalloons(Field(dialog, 0)), timeBalloons(Field(dialog, 2));
    Put(dialog, 0, std::wstring(256, L'x'));
    PressOk(dialog);
    ASSERT_TRUE(IsWindow(dialog.Handle()));
    EXPECT_EQ(nameBalloons.Texts().size(), 1u);
    Put(dialog, 0, std::wstring(255, L'x'));
    Put(dialog, 2, std::wstring(51, L't'));
    PressOk(dialog);
    ASSERT_TRUE(IsWindow(dialog.Handle()));
    EXPECT_EQ(nameBalloons.Texts().size(), 1u);
    EXPECT_EQ(timeBalloons.Texts().size(), 1u);
    EXPECT_EQ(GetFocus(), Field(dialog, 2));
  });
  EXPECT_EQ(Table(), Texts{L"one|a.txt|C:\\a.txt|then|old"});
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(FilePropterty, LimitsEachFieldToItsColumnAndTakesNoDoubleQuote) {
  StartWith({{L"one"}});
  Properties([&](win::Form& dialog) {
    constexpr LRESULT kLimits[] = {255, 65535, 50, 65535};
    for (int field = 0; field < 4; ++field) {
      const BalloonSpy balloons(Field(dialog, field));
      EXPECT_EQ(SendMessageW(Field(dialog, field), EM_GETLIMITTEXT, 0, 0), kLimits[field]);
      Put(dialog, field, L"");
      for (const wchar_t letter : std::wstring(L"\"a\""))
        SendMessageW(Field(dialog, field), WM_CHAR, static_cast<WPARAM>(letter), 1);
      EXPECT_EQ(TextOf(Field(dialog, field)), L"a");
      EXPECT_EQ(balloons.Texts(), (Texts{kNoQuoteText, kNoQuoteText}));
    }
  });
}

TEST_F(FilePropterty, TakesTextsAsLongAsTheirColumns) {
  StartWith({{L"one"}});
  const std::wstring name(255, L'n'), time(50, L't'), path = L"C:\\" + std::wstring(1000, L'p');
  Properties([&](win::Form& dialog) {
    Put(dialog, 0, name);
    Put(dialog, 1, path);
    Put(dialog, 2, time);
    PressOk(dialog);
  });
  EXPECT_EQ(Table(), Texts{L"one|" + name + L"|" + path + L"|" + time + L"|"});
}

TEST_F(FilePropterty, LimitsTheCommentTo65535Units) {
  StartWith({{L"one"}});
  // In lines: the control takes seconds for a single one of that length.
  std::wstring longest;
  while (longest.size() < 65500) longest += std::wstring(98, L'c') + L"\r\n";
  longest.resize(65535, L'd');
  Properties([&](win::Form& dialog) {
    const HWND comment = Field(dialog, 3);
    Put(dialog, 3, longest);
    SetFocus(comment);
    SendMessageW(comment, EM_SETSEL, 65535, 65535);
    SendMessageW(comment, WM_CHAR, L'x', 1);
    EXPECT_EQ(GetWindowTextLengthW(comment), 65535);
    PressOk(dialog);
  });
  EXPECT_EQ(Comments(), Texts{longest});
}

// Where the file is.
class FileProptertyStatus : public FilePropterty {};

TEST_F(FileProptertyStatus, IsThePathOfAFileThatIsThere) {
  const std::wstring path = dir.WriteFile(L"there.txt");
  StartWith({{L"one", L"there.txt", path}});
  Properties([&](win::Form& dialog) {
    EXPECT_EQ(Status(dialog), path);
    EXPECT_TRUE(GetWindowLongPtrW(ControlOf(dialog, L"Text1"), GWL_STYLE) & ES_READONLY);
  });
}

TEST_F(FileProptertyStatus, SaysThatAFileIsNotFound) {
  StartWith({{L"one", L"gone.txt", dir.Path(L"gone.txt")}, {L"two", L"", L""}});
  Properties([](win::Form& dialog) { EXPECT_EQ(Status(dialog), L"File Not Found!"); });
  List().SelectOnly(1);
  Properties([](win::Form& dialog) { EXPECT_EQ(Status(dialog), L"File Not Found!"); });
}

TEST_F(FileProptertyStatus, SaysTheSameOfANetworkFileWhoseServerDoesNotAnswer) {
  StartWith({{L"one", L"f.txt", L"\\\\server\\share\\f.txt"}});
  world.hostAnswers = [this](const std::wstring& host) {
    world.hostQuestions.push_back(host);
    return false;
  };
  Properties([](win::Form& dialog) { EXPECT_EQ(Status(dialog), L"File Not Found!"); });
  ASSERT_FALSE(world.hostQuestions.empty());
  EXPECT_EQ(world.hostQuestions[0], L"server");
}

TEST_F(FileProptertyStatus, IsLookedUpAgainWheneverTheDialogIsActivated) {
  const std::wstring path = dir.Path(L"late.txt");
  StartWith({{L"one", L"late.txt", path}});
  Properties([&](win::Form& dialog) {
    dir.WriteFile(L"late.txt");
    SendMessageW(dialog.Handle(), WM_ACTIVATE, WA_INACTIVE, 0);
    EXPECT_EQ(Status(dialog), L"File Not Found!");
    SendMessageW(dialog.Handle(), WM_ACTIVATE, WA_ACTIVE, 0);
    EXPECT_EQ(Status(dialog), path);
  });
}

// The browse button.
class FileProptertyBrowse : public FilePropterty {};

TEST_F(FileProptertyBrowse, AsksForAFileInThisWay) {
  StartWith({{L"one"}});
  world.openedFiles = {std::nullopt};
  Properties([&](win::Form& dialog) {
    Press(dialog, L"Command1");
    ASSERT_EQ(world.openRequests.size(), 1u);
    const OpenFilesRequest& request = world.openRequests[0];
    EXPECT_EQ(request.title, L"Select 1 File");
    EXPECT_EQ(request.filter,
              L"Txt File (*.txt)|*.txt|Exe File (*.exe)|*.exe|MP3 File (*.mp3)|*.mp3|BMP (*.bmp)|*.bmp|"
              L"JPG (*.jpg)|*.jpg|All Files (*.*)|*.*");
    EXPECT_EQ(request.owner, dialog.Handle());
    EXPECT_EQ(request.flags & OFN_ALLOWMULTISELECT, 0u);
    EXPECT_EQ(request.flags & OFN_FILEMUSTEXIST, OFN_FILEMUSTEXIST);
  });
}

TEST_F(FileProptertyBrowse, FillsNameFolderAndPathFromTheChosenFile) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"remark"}});
  world.openedFiles = {L"D:\\music\\song one.mp3"};

  Properties([](win::Form& dialog) {
    Press(dialog, L"Command1");
    EXPECT_EQ(TextOf(Field(dialog, 0)), L"song one.mp3");
    EXPECT_EQ(TextOf(Field(dialog, 1)), L"D:\\music\\song one.mp3");
    EXPECT_EQ(Status(dialog), L"D:\\music\\");
    EXPECT_EQ(TextOf(Field(dialog, 2)), L"then");
    EXPECT_EQ(TextOf(Field(dialog, 3)), L"remark");
    PressOk(dialog);
  });

  EXPECT_EQ(Table(), Texts{L"one|song one.mp3|D:\\music\\song one.mp3|then|remark"});
}

TEST_F(FileProptertyBrowse, ChangesNothingForAnEmptyChoice) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"remark"}});
  world.openedFiles = {std::nullopt, L""};
  Properties([](win::Form& dialog) {
    for (int i = 0; i < 2; ++i) {
      Press(dialog, L"Command1");
      EXPECT_EQ(TextOf(Field(dialog, 0)), L"a.txt");
      EXPECT_EQ(TextOf(Field(dialog, 1)), L"C:\\a.txt");
      EXPECT_EQ(Status(dialog), L"File Not Found!");
    }
  });
}

TEST_F(FileProptertyBrowse, ShowsAFailureOfTheOpenDialogInABox) {
  StartWith({{L"one"}});
  world.openFiles = [](const OpenFilesRequest&) -> std::optional<std::wstring> {
    throw std::runtime_error("no dialog");
  };
  world.answers = {IDOK};
  Properties([](win::Form& dialog) {
    Press(dialog, L"Command1");
    EXPECT_TRUE(IsWindow(dialog.Handle()));
  });
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"Command1_Click Error:");
  EXPECT_EQ(world.boxes[0].text, L"Unkonw Error:no dialog");
}

// Keys and focus.
class FileProptertyKeys : public FilePropterty {};

TEST_F(FileProptertyKeys, OpensWithTheFileNameFocusedAndSelected) {
  StartWith({{L"one", L"a.txt"}});
  Properties([](win::Form& dialog) {
    EXPECT_EQ(GetFocus(), Field(dialog, 0));
    EXPECT_EQ(SelectionOf(Field(dialog, 0)), L"a.txt");
  });
}

TEST_F(FileProptertyKeys, AFieldThatGetsTheFocusIsSelectedAsAWhole) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"line\r\nline"}});
  Properties([](win::Form& dialog) {
    for (const HWND field : {Field(dialog, 1), Field(dialog, 2), Field(dialog, 3),
                             ControlOf(dialog, L"Text1"), Field(dialog, 0)}) {
      PutCaretAtStart(field);
      SetFocus(field);
      EXPECT_EQ(SelectionOf(field), TextOf(field));
    }
  });
}

TEST_F(FileProptertyKeys, AFieldThatGetsTheFocusByTheMouseIsSelectedAsAWhole) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt"}});
  Properties([](win::Form& dialog) {
    PutCaretAtStart(Field(dialog, 1));
    Click(Field(dialog, 1), {5, 5});
    EXPECT_EQ(GetFocus(), Field(dialog, 1));
    EXPECT_EQ(SelectionOf(Field(dialog, 1)), L"C:\\a.txt");
    Click(Field(dialog, 1), {5, 5});
    EXPECT_EQ(SelectionOf(Field(dialog, 1)), L"") << "a second click puts the caret";
  });
}

TEST_F(FileProptertyKeys, EnterInAFieldIsOkAndInTheCommentALineBreak) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"ab"}});
  Properties([](win::Form& dialog) {
    const HWND comment = Field(dialog, 3);
    SetFocus(comment);
    win::DoEvents();
    SendMessageW(comment, EM_SETSEL, 1, 1);
    PressKey(comment, VK_RETURN);
    ASSERT_TRUE(IsWindow(dialog.Handle()));
    EXPECT_EQ(TextOf(comment), L"a\r\nb");
    PressKey(Field(dialog, 0), VK_RETURN);
  });
  EXPECT_EQ(Comments(), Texts{L"a\r\nb"});
}

TEST_F(FileProptertyKeys, TabLeavesTheComment) {
  StartWith({{L"one", L"a.txt", L"C:\\a.txt", L"then", L"ab"}});
  Properties([](win::Form& dialog) {
    SetFocus(Field(dialog, 3));
    PressKey(Field(dialog, 3), VK_TAB);
    EXPECT_EQ(GetFocus(), ControlOf(dialog, L"Text1"));
    EXPECT_EQ(TextOf(Field(dialog, 3)), L"ab");
  });
}

TEST_F(FileProptertyKeys, TabGoesThroughFieldsAndButtonsInTheirOrder) {
  StartWith({{L"one"}});
  Properties([](win::Form& dialog) {
    const HWND order[] = {Field(dialog, 0),
                          Field(dialog, 1),
                          ControlOf(dialog, L"Command1"),
                          Field(dialog, 2),
                          Field(dialog, 3),
                          ControlOf(dialog, L"Text1"),
                          ControlOf(dialog, L"Command2", 0),
                          ControlOf(dialog, L"Command2", 1)};
    for (const HWND control : order) {
      EXPECT_EQ(GetFocus(), control);
      PressKey(control, VK_TAB);
    }
  });
}

// How it is opened.
class FileProptertyOpening : public FilePropterty {
 protected:
  static constexpr LPARAM kAltDown = 1 | (1 << 29);
  void AltEnter() {
    const KeysDown alt{VK_MENU};
    SendMessageW(List().Handle(), WM_SYSKEYDOWN, VK_RETURN, kAltDown);
  }
};

TEST_F(FileProptertyOpening, AltEnterInTheListShowsTheSelectedRow) {
  StartWith({{L"one"}, {L"two", L"b.txt"}});
  List().SelectOnly(1);
  InDialog(
      L"FilePropterty", [&] { AltEnter(); },
      [](win::Form& dialog) { EXPECT_EQ(TextOf(Field(dialog, 0)), L"b.txt"); });
  EXPECT_TRUE(world.executions.empty());
}

TEST_F(FileProptertyOpening, AltEnterThroughTheMessageLoopShowsItWithoutABeep) {
  StartWith({{L"one"}});
  // The system answers a character that is the key of no menu by this command, and that by a beep.
  const MessageSpy commands(List().Handle(), WM_SYSCOMMAND);
  const MessageSpy characters(List().Handle(), WM_SYSCHAR);
  InDialog(
      L"FilePropterty",
      [&] {
        const KeysDown alt{VK_MENU};
        PostMessageW(List().Handle(), WM_SYSKEYDOWN, VK_RETURN, kAltDown);
        PostMessageW(List().Handle(), WM_SYSCHAR, VK_RETURN, kAltDown);
        win::DoEvents();
      },
      [](win::Form&) {});
  EXPECT_TRUE(PumpUntil([&] { return characters.Count() > 0; }));
  EXPECT_EQ(commands.Count(), 0);
}

// Alt goes up only once the dialog is there. The system must know by then that it went together with a key,
// or it would open the dialog's system menu.
TEST_F(FileProptertyOpening, TheListReportsAltEnterAfterTheSystemHasSeenIt) {
  StartWith({{L"one"}});
  const HWND other =
      CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
  const MessageSpy commands(other, WM_SYSCOMMAND);
  int reported = 0;
  List().events.keyDown = [&](int key, int) {
    if (key != VK_RETURN) return;
    ++reported;
    SendMessageW(other, WM_SYSKEYUP, VK_MENU, 1);
  };
  SendMessageW(List().Handle(), WM_SYSKEYDOWN, VK_MENU, kAltDown);
  AltEnter();
  EXPECT_EQ(reported, 1);
  EXPECT_EQ(commands.Count(), 0);
  DestroyWindow(other);
}

TEST_F(FileProptertyOpening, NothingOpensWithoutASelectedRow) {
  StartWith({{L"one"}});
  List().SelectNone();
  AltEnter();
  items::meu_Properties_Click(Parts());
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
}

TEST_F(FileProptertyOpening, TheEighthToolbarButtonOpensItFromBothPanes) {
  StartWith({{L"one"}});
  for (const HWND pane : {List().Handle(), Tree().Handle()}) {
    SetFocus(pane);
    InDialog(
        L"FilePropterty", [&] { form->Toolbar1_ButtonClick(8); }, [](win::Form&) {});
  }
}

TEST_F(FileProptertyOpening, TakesItsTextsFromTheLanguageInUse) {
  dir.settings.Write(L"Language", L"Chinese_T");
  StartWith({{L"one", L"f.txt", dir.Path(L"gone.txt")}});
  Properties([](win::Form& dialog) {
    EXPECT_EQ(dialog.Caption(), L"內容");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Label1", 0)), L"檔案名稱(&F)：");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Label1", 4)), L"狀態(&S)：");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command2", 0)), L"確定(&O)");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1")), L"....");
    EXPECT_EQ(Status(dialog), L"找不到檔案！");
  });
}

}  // namespace
}  // namespace kestrelon::test
