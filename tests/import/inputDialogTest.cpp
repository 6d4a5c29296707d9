#include <functional>

#include "import/inputDialog.h"
#include "tests/import/ClipboardContents.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;
using Rows = std::vector<std::size_t>;
using imports::inputDialog;

class ClipboardDialog : public MainFormFixture {
 protected:
  ClipboardDialog() { EmptyTheClipboard(); }
  void StartWithCategory() {
    Start();
    SelectCategory(AddCategory(L"K_", L"category"));
    program.databaseSaved = true;
  }
  static bool IsDialog(HWND window) { return dynamic_cast<inputDialog*>(win::Window::Of(window)) != nullptr; }
  // Opens the dialog by its command, hands it to `act` and closes it afterwards if it is still there.
  void Open(const std::function<void(inputDialog&)>& act) {
    const OnWindow watch(&IsDialog, [&](HWND window) {
      act(*dynamic_cast<inputDialog*>(win::Window::Of(window)));
      if (IsWindow(window)) SendMessageW(window, WM_CLOSE, 0, 0);
    });
    Command(L"meu_Imput_Clipboard");
    EXPECT_TRUE(watch.Done());
    EXPECT_TRUE(IsWindowEnabled(form->Handle()));
  }
  // The same, with these files copied before.
  void OpenWith(const Texts& paths, const std::function<void(inputDialog&)>& act) {
    CopyFiles(paths);
    Open(act);
  }

  static HWND Of(inputDialog& dialog, const wchar_t* name, int index = -1) {
    const win::FormControl* control = dialog.Find(name, index);
    EXPECT_NE(control, nullptr) << Narrow(name);
    return control ? control->window : nullptr;
  }
  static std::wstring Label1(inputDialog& dialog) { return TextOf(Of(dialog, L"Label1")); }
  static bool Check1(inputDialog& dialog) {
    return SendMessageW(Of(dialog, L"Check1"), BM_GETCHECK, 0, 0) == BST_CHECKED;
  }
  static void ClickCheck1(inputDialog& dialog) { SendMessageW(Of(dialog, L"Check1"), BM_CLICK, 0, 0); }
  static void Insert(inputDialog& dialog) { SendMessageW(Of(dialog, L"Command1", 0), BM_CLICK, 0, 0); }
  static void Tick(inputDialog& dialog, const Rows& rows) {
    for (const std::size_t row : rows) dialog.ListView1().SetTicked(row, true);
  }
  static Texts Shown(inputDialog& dialog) {
    Texts texts;
    for (std::size_t row = 0; row < dialog.ListView1().Count(); ++row) {
      texts.push_back(dialog.ListView1().Text(row));
    }
    return texts;
  }
  static Rows Ticked(inputDialog& dialog) { return dialog.ListView1().TickedRows(); }
  static void ClickRow(inputDialog& dialog, int row) {
    RECT text{};
    ListView_GetItemRect(dialog.ListView1().Handle(), row, &text, LVIR_LABEL);
    Click(dialog.ListView1().Handle(), {text.left + 10, (text.top + text.bottom) / 2});
  }
  static bool Shows(inputDialog& dialog, const Texts& paths) {
    return PumpUntil([&] { return Shown(dialog) == paths; });
  }
  Texts Items() { return Query(L"SELECT TreeviewNode, FileIndex, LocalFile FROM FTable", 3); }
};

// Opening.

TEST_F(ClipboardDialog, IsNotOpenedWithoutACategory) {
  Start();
  world.answers = {IDOK};

  Command(L"meu_Imput_Clipboard");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Please select a category to import !");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
}

TEST_F(ClipboardDialog, ShowsTheFilesCopiedBeforeInTheirOrderAndUnticked) {
  StartWithCategory();
  OpenWith({L"C:\\b.txt", L"C:\\文件\\甲.txt", L"C:\\a.txt"}, [](inputDialog& dialog) {
    EXPECT_EQ(Shown(dialog), (Texts{L"C:\\b.txt", L"C:\\文件\\甲.txt", L"C:\\a.txt"}));
    EXPECT_EQ(Ticked(dialog), Rows{});
    EXPECT_EQ(Label1(dialog), L"");
    EXPECT_FALSE(Check1(dialog));
  });
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(ClipboardDialog, IsModalOverTheMainWindow) {
  StartWithCategory();
  Open([this](inputDialog& dialog) {
    EXPECT_FALSE(IsWindowEnabled(form->Handle()));
    EXPECT_EQ(GetWindow(dialog.Handle(), GW_OWNER), form->Handle());
  });
}

TEST_F(ClipboardDialog, LaysItsControlsOutInsideTheWindowWithoutAnOverlap) {
  StartWithCategory();
  Open([](inputDialog& dialog) {
    RECT inner;
    GetClientRect(dialog.Handle(), &inner);
    EXPECT_EQ(inner.right, 600);  // 9000 by 6000 twips, at the 96 pixels an inch of the tests' screen
    EXPECT_EQ(inner.bottom, 400);
    std::vector<RECT> places;
    for (const win::FormControl& control : dialog.Controls()) {
      RECT place, common;
      GetWindowRect(control.window, &place);
      MapWindowPoints(nullptr, dialog.Handle(), reinterpret_cast<POINT*>(&place), 2);
      EXPECT_TRUE(IntersectRect(&common, &place, &inner) && EqualRect(&common, &place))
          << Narrow(control.name);
      for (const RECT& other : places) EXPECT_FALSE(IntersectRect(&common, &place, &other));
      places.push_back(place);
    }
    EXPECT_EQ(places.size(), 5u);
    EXPECT_EQ(places[0].right - places[0].left, 570) << "the list has the window's width";
  });
}

TEST_F(ClipboardDialog, FollowsTheClipboardAgainWhenItIsOpenedASecondTime) {
  StartWithCategory();
  OpenWith({L"C:\\1.txt"}, [](inputDialog& dialog) { EXPECT_EQ(Shown(dialog), Texts{L"C:\\1.txt"}); });
  CopyFiles({L"C:\\2.txt"});
  Open([](inputDialog& dialog) {
    EXPECT_EQ(Shown(dialog), Texts{L"C:\\2.txt"});
    CopyFiles({L"C:\\3.txt"});
    EXPECT_TRUE(Shows(dialog, {L"C:\\3.txt"}));
  });
  CopyFiles({L"C:\\4.txt"});
  win::DoEvents();
  EXPECT_EQ(Items(), Texts{});
}

// The clipboard.

TEST_F(ClipboardDialog, ShowsNewlyCopiedFilesInsteadOfTheOthersAndEmptiesTheLabel) {
  StartWithCategory();
  OpenWith({L"C:\\old1.txt", L"C:\\old2.txt"}, [](inputDialog& dialog) {
    Tick(dialog, {0, 1});
    ClickRow(dialog, 0);
    ASSERT_EQ(Label1(dialog), L"old1.txt");

    CopyFiles({L"C:\\new1.txt", L"C:\\new2.txt", L"C:\\new3.txt"});

    EXPECT_TRUE(Shows(dialog, {L"C:\\new1.txt", L"C:\\new2.txt", L"C:\\new3.txt"}));
    EXPECT_EQ(Ticked(dialog), Rows{});
    EXPECT_EQ(Label1(dialog), L"");
  });
}

TEST_F(ClipboardDialog, EmptiesItsListWhenATextIsCopied) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt"}, [](inputDialog& dialog) {
    ClickRow(dialog, 0);
    CopyText(L"C:\\b.txt");
    EXPECT_TRUE(Shows(dialog, {}));
    EXPECT_EQ(Label1(dialog), L"");
  });
}

TEST_F(ClipboardDialog, IsEmptyWhileAnotherWindowKeepsTheClipboardOpen) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt"}, [this](inputDialog& dialog) {
    ASSERT_TRUE(OpenClipboard(form->Handle()));
    SendMessageW(dialog.Handle(), WM_DRAWCLIPBOARD, 0, 0);
    EXPECT_EQ(Shown(dialog), Texts{});
    CloseClipboard();
    SendMessageW(dialog.Handle(), WM_DRAWCLIPBOARD, 0, 0);
    EXPECT_EQ(Shown(dialog), Texts{L"C:\\a.txt"});
  });
}

TEST_F(ClipboardDialog, LeavesPlainFoldersOutAndTakesThoseWithAFurtherAttributeLikeFiles) {
  StartWithCategory();
  const std::wstring file = dir.WriteFile(L"f\\a.txt"), inside = dir.WriteFile(L"f\\locked\\x.txt");
  const std::wstring plain = dir.Path(L"f"), locked = dir.Path(L"f\\locked");
  // Not every file system keeps the first of these for a folder.
  SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
  const win::Finally unlock([&] { SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_NORMAL); });
  OpenWith({plain, file, locked}, [&](inputDialog& dialog) {
    EXPECT_EQ(Shown(dialog), (Texts{file, locked}));
  });
}

// Choosing.

TEST_F(ClipboardDialog, SelectAllTicksEveryRow) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt", L"C:\\b.txt", L"C:\\c.txt"}, [](inputDialog& dialog) {
    Tick(dialog, {1});
    ClickCheck1(dialog);
    EXPECT_EQ(Ticked(dialog), (Rows{0, 1, 2}));
  });
}

TEST_F(ClipboardDialog, UncheckingSelectAllUnticksRowsThatWereTickedByHand) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt", L"C:\\b.txt"}, [](inputDialog& dialog) {
    ClickCheck1(dialog);
    dialog.ListView1().SetAllTicked(false);
    Tick(dialog, {1});
    ClickCheck1(dialog);
    EXPECT_FALSE(Check1(dialog));
    EXPECT_EQ(Ticked(dialog), Rows{});
  });
}

TEST_F(ClipboardDialog, ShowsTheFileNameOfTheRowLastClickedOrReachedByKey) {
  StartWithCategory();
  OpenWith({L"C:\\docs\\first.txt", L"C:\\docs\\R&D.txt", L"C:\\文件\\第三.txt"}, [](inputDialog& dialog) {
    ClickRow(dialog, 1);
    EXPECT_EQ(Label1(dialog), L"R&D.txt");
    EXPECT_NE(GetWindowLongPtrW(Of(dialog, L"Label1"), GWL_STYLE) & SS_NOPREFIX, 0) << "no underlined D";
    PressKey(dialog.ListView1().Handle(), VK_DOWN);
    EXPECT_EQ(Label1(dialog), L"第三.txt");
  });
}

TEST_F(ClipboardDialog, ClickingBesideTheRowsLeavesTheLabelAsItIs) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt"}, [](inputDialog& dialog) {
    ClickRow(dialog, 0);
    RECT inner;
    GetClientRect(dialog.ListView1().Handle(), &inner);
    Click(dialog.ListView1().Handle(), {20, inner.bottom - 5});
    EXPECT_EQ(Label1(dialog), L"a.txt");
  });
}

// Inserting.

TEST_F(ClipboardDialog, InsertsTheTickedRowsInListOrderWithOneInsertTime) {
  StartWithCategory();
  world.localTime = [this] {
    ++world.now.wSecond;  // the clock goes on from file to file
    return world.now;
  };
  OpenWith({L"C:\\d\\c.tar.gz", L"C:\\d\\left.txt", L"C:\\d\\甲.txt", L"C:\\d\\a"},
           [this](inputDialog& dialog) {
             Tick(dialog, {3, 0, 2});
             Insert(dialog);
             EXPECT_EQ(List().Count(), 3u) << "the main list shows them while the dialog is open";
           });

  EXPECT_EQ(Items(), (Texts{L"K_|1#K_|C:\\d\\c.tar.gz", L"K_|2#K_|C:\\d\\甲.txt", L"K_|3#K_|C:\\d\\a"}));
  EXPECT_EQ(Column(1), (Texts{L"c.tar", L"甲", L"a"}));
  EXPECT_EQ(Column(2), (Texts{L"c.tar.gz", L"甲.txt", L"a"}));
  EXPECT_EQ(Column(4), Texts(3, L"11/15/2026 1:20:06 PM"));
  EXPECT_EQ(Column(5), Texts(3, L""));
  EXPECT_EQ(Panel(3), L"3 Objects");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(ClipboardDialog, NumbersContinueThoseOfTheCategoryFromInsertToInsert) {
  StartWithCategory();
  AddItem(L"K_", 7, {L"old"});
  OpenWith({L"C:\\a.txt", L"C:\\b.txt"}, [](inputDialog& dialog) {
    Tick(dialog, {1});
    Insert(dialog);
    Tick(dialog, {0});
    Insert(dialog);
  });
  EXPECT_EQ(Query(L"SELECT FileIndex, Filename FROM FTable", 2),
            (Texts{L"7#K_|f.txt", L"8#K_|b.txt", L"9#K_|a.txt"}));
}

TEST_F(ClipboardDialog, TakesTheInsertedRowsAwayAndEmptiesTheLabelAndStaysOpen) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt", L"C:\\b.txt", L"C:\\c.txt"}, [](inputDialog& dialog) {
    ClickRow(dialog, 1);
    Tick(dialog, {0, 2});
    Insert(dialog);
    EXPECT_TRUE(IsWindow(dialog.Handle()));
    EXPECT_EQ(Shown(dialog), Texts{L"C:\\b.txt"});
    EXPECT_EQ(Ticked(dialog), Rows{});
    EXPECT_EQ(Label1(dialog), L"");
  });
}

TEST_F(ClipboardDialog, InsertWithNoRowTickedInsertsNothingAndLeavesTheListAsItWas) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt", L"C:\\b.txt"}, [](inputDialog& dialog) {
    Insert(dialog);
    EXPECT_EQ(Shown(dialog), (Texts{L"C:\\a.txt", L"C:\\b.txt"}));
  });
  EXPECT_EQ(Items(), Texts{});
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(ClipboardDialog, InsertUnchecksSelectAll) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt", L"C:\\b.txt"}, [](inputDialog& dialog) {
    ClickCheck1(dialog);
    dialog.ListView1().SetTicked(1, false);
    Insert(dialog);
    EXPECT_FALSE(Check1(dialog));
    EXPECT_EQ(Shown(dialog), Texts{L"C:\\b.txt"});
  });
}

TEST_F(ClipboardDialog, InsertWithoutACategoryAsksForOneAndUnticksWithSelectAll) {
  StartWithCategory();
  world.answers = {IDOK};
  OpenWith({L"C:\\a.txt", L"C:\\b.txt"}, [this](inputDialog& dialog) {
    ClickCheck1(dialog);
    win::SetCurrentCategory(Parts(), L"", L"");
    Insert(dialog);
    EXPECT_EQ(Shown(dialog).size(), 2u);
    EXPECT_FALSE(Check1(dialog));
    EXPECT_EQ(Ticked(dialog), Rows{});
  });
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Please select a category to import !");
  EXPECT_EQ(Items(), Texts{});
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(ClipboardDialog, ShowsAFailureInItsOwnBoxAndKeepsTheRowsThatWereNotInserted) {
  StartWithCategory();
  world.answers = {IDOK};
  OpenWith({L"C:\\good.txt", L"C:\\ba\"d.txt", L"C:\\never.txt"}, [this](inputDialog& dialog) {
    ClickCheck1(dialog);
    Insert(dialog);
    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].owner, dialog.Handle());
    EXPECT_EQ(Shown(dialog), (Texts{L"C:\\ba\"d.txt", L"C:\\never.txt"}));
    EXPECT_EQ(Ticked(dialog), Rows{});
    EXPECT_FALSE(Check1(dialog));
  });
  EXPECT_EQ(world.boxes[0].title, L"Command1_Click Error:");
  EXPECT_TRUE(world.boxes[0].text.starts_with(L"Unkonw Error:")) << Narrow(world.boxes[0].text);
  EXPECT_EQ(Items(), Texts{L"K_|1#K_|C:\\good.txt"});
  EXPECT_EQ(Column(2), Texts{L"good.txt"});
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(ClipboardDialog, AddsNothingTwiceWhenInsertIsPressedAgainAfterAFailure) {
  StartWithCategory();
  world.answers = {IDOK};
  OpenWith({L"C:\\left.txt", L"C:\\1.txt", L"C:\\2.txt", L"C:\\ba\"d.txt", L"C:\\3.txt"},
           [](inputDialog& dialog) {
             Tick(dialog, {1, 2, 3, 4});
             Insert(dialog);
             ASSERT_EQ(Shown(dialog), (Texts{L"C:\\left.txt", L"C:\\ba\"d.txt", L"C:\\3.txt"}));
             Tick(dialog, {0, 2});
             Insert(dialog);
             EXPECT_EQ(Shown(dialog), Texts{L"C:\\ba\"d.txt"});
           });
  EXPECT_EQ(Items(), (Texts{L"K_|1#K_|C:\\1.txt", L"K_|2#K_|C:\\2.txt", L"K_|3#K_|C:\\left.txt",
                            L"K_|4#K_|C:\\3.txt"}));
}

TEST_F(ClipboardDialog, KeepsTheTicksWhereNothingWasInserted) {
  StartWithCategory();
  world.answers = {IDOK};
  OpenWith({L"C:\\ba\"d.txt", L"C:\\never.txt"}, [](inputDialog& dialog) {
    ClickCheck1(dialog);
    Insert(dialog);
    EXPECT_EQ(Ticked(dialog), (Rows{0, 1}));
    EXPECT_TRUE(Check1(dialog));
  });
}

TEST_F(ClipboardDialog, UnticksSelectAllWhenOtherFilesAreCopied) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt", L"C:\\b.txt"}, [](inputDialog& dialog) {
    ClickCheck1(dialog);
    ASSERT_TRUE(Check1(dialog));
    CopyFiles({L"C:\\c.txt"});
    EXPECT_TRUE(Shows(dialog, {L"C:\\c.txt"}));
    EXPECT_FALSE(Check1(dialog));
    EXPECT_EQ(Ticked(dialog), Rows{});
  });
}

// A box that an insert shows lets messages in.
TEST_F(ClipboardDialog, ShowsWhatIsCopiedDuringAnInsertOnlyAfterIt) {
  StartWithCategory();
  OpenWith({L"C:\\good.txt", L"C:\\ba\"d.txt", L"C:\\never.txt"}, [this](inputDialog& dialog) {
    Texts during;
    world.messageBox = [&](HWND, const std::wstring&, const std::wstring&, UINT) {
      CopyFiles({L"C:\\new 1.txt", L"C:\\new 2.txt"});
      SendMessageW(dialog.Handle(), WM_DRAWCLIPBOARD, 0, 0);
      SendMessageW(dialog.Handle(), WM_CLOSE, 0, 0);
      Insert(dialog);
      during = Shown(dialog);
      return IDOK;
    };
    Tick(dialog, {0, 1});
    Insert(dialog);
    EXPECT_EQ(during, (Texts{L"C:\\ba\"d.txt", L"C:\\never.txt"}));
    EXPECT_TRUE(Shows(dialog, {L"C:\\new 1.txt", L"C:\\new 2.txt"}));
  });
  EXPECT_EQ(Items(), Texts{L"K_|1#K_|C:\\good.txt"});
}

TEST_F(ClipboardDialog, RemovesOnlyItsOwnRowsWhenTheListCannotBeShownAndFilesAreCopiedMeanwhile) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt", L"C:\\b.txt"}, [this](inputDialog& dialog) {
    Texts titles;
    world.messageBox = [&](HWND, const std::wstring&, const std::wstring& title, UINT) {
      titles.push_back(title);
      CopyFiles({L"C:\\new.txt"});
      SendMessageW(dialog.Handle(), WM_DRAWCLIPBOARD, 0, 0);
      EXPECT_EQ(Shown(dialog), (Texts{L"C:\\a.txt", L"C:\\b.txt"}));
      return IDOK;
    };
    win::SetCurrentCategory(Parts(), L"", L"K\"_");  // a key that no statement takes
    Tick(dialog, {0});
    Insert(dialog);
    EXPECT_EQ(titles, (Texts{L"ShowData Error:", L"Command1_Click Error:"}));
    EXPECT_TRUE(Shows(dialog, {L"C:\\new.txt"}));
  });
  EXPECT_EQ(Items(), Texts{});
}

TEST_F(ClipboardDialog, CountsIn16Bits) {
  StartWithCategory();
  AddItem(L"K_", 32766, {L"old"});
  world.answers = {IDOK};
  OpenWith({L"C:\\last.txt", L"C:\\over.txt"}, [](inputDialog& dialog) {
    Tick(dialog, {0, 1});
    Insert(dialog);
  });
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_TRUE(world.boxes[0].text.starts_with(L"Unkonw Error:Overflow")) << Narrow(world.boxes[0].text);
  EXPECT_EQ(Column(2), (Texts{L"f.txt", L"last.txt"}));
}

TEST_F(ClipboardDialog, TakesThousandsOfFiles) {
  StartWithCategory();
  Texts paths;
  for (int i = 0; i < 5000; ++i) paths.push_back(L"C:\\many\\" + std::to_wstring(i) + L".txt");
  OpenWith(paths, [&](inputDialog& dialog) {
    EXPECT_EQ(Shown(dialog), paths);
    ClickCheck1(dialog);
    dialog.ListView1().SetTicked(4321, false);
    Insert(dialog);
    EXPECT_EQ(Shown(dialog), Texts{L"C:\\many\\4321.txt"});
  });
  EXPECT_EQ(List().Count(), 4999u);
  EXPECT_EQ(Cell(4998, 3), L"C:\\many\\4999.txt");
}

// Keys.

TEST_F(ClipboardDialog, EnterInsertsAndEscapeCloses) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt", L"C:\\b.txt"}, [](inputDialog& dialog) {
    const HWND window = dialog.Handle(), list = dialog.ListView1().Handle();
    EXPECT_EQ(GetFocus(), list);
    Tick(dialog, {0});
    PressKey(list, VK_RETURN);
    EXPECT_EQ(Shown(dialog), Texts{L"C:\\b.txt"});
    PostMessageW(list, WM_KEYDOWN, VK_ESCAPE, 1);
    EXPECT_TRUE(PumpUntil([&] { return !IsWindow(window); }));
  });
  EXPECT_EQ(Column(2), Texts{L"a.txt"});
}

TEST_F(ClipboardDialog, CancelClosesItWithoutAnInsert) {
  StartWithCategory();
  OpenWith({L"C:\\a.txt"}, [](inputDialog& dialog) {
    const HWND window = dialog.Handle();
    Tick(dialog, {0});
    SendMessageW(Of(dialog, L"Command1", 1), BM_CLICK, 0, 0);
    EXPECT_FALSE(IsWindow(window));
  });
  EXPECT_EQ(Items(), Texts{});
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(ClipboardDialog, AnswersItsAccessKeysInEveryLanguage) {
  StartWithCategory();
  for (const wchar_t* language : {L"English", L"Chinese_S", L"Chinese_T"}) {
    program.languageName = language;
    OpenWith({L"C:\\a.txt", L"C:\\b.txt"}, [](inputDialog& dialog) {
      const HWND window = dialog.Handle(), list = dialog.ListView1().Handle();
      PostMessageW(list, WM_SYSCHAR, L'a', 1 << 29);
      EXPECT_TRUE(PumpUntil([&] { return Ticked(dialog) == Rows{0, 1}; }));
      PostMessageW(list, WM_SYSCHAR, L'i', 1 << 29);
      EXPECT_TRUE(PumpUntil([&] { return Shown(dialog).empty(); }));
      PostMessageW(list, WM_SYSCHAR, L'c', 1 << 29);
      EXPECT_TRUE(PumpUntil([&] { return !IsWindow(window); }));
    });
  }
}

// Texts.

TEST_F(ClipboardDialog, TakesItsTextsFromTheLanguageInUse) {
  StartWithCategory();
  struct Captions {
    const wchar_t *language, *title, *all, *insert, *cancel;
  };
  for (const Captions& captions :
       {Captions{L"English", L"Import files from clipboard", L"Select &All", L"&Insert", L"&Cancel"},
        Captions{L"Chinese_S", L"从剪贴板导入文件", L"全选(&A)", L"插入(&I)", L"取消(&C)"},
        Captions{L"Chinese_T", L"從剪貼簿匯入檔案", L"全選(&A)", L"插入(&I)", L"取消(&C)"}}) {
    program.languageName = captions.language;
    Open([&](inputDialog& dialog) {
      EXPECT_EQ(dialog.Caption(), captions.title);
      EXPECT_EQ(TextOf(Of(dialog, L"Check1")), captions.all);
      EXPECT_EQ(TextOf(Of(dialog, L"Command1", 0)), captions.insert);
      EXPECT_EQ(TextOf(Of(dialog, L"Command1", 1)), captions.cancel);
    });
  }
}

TEST_F(ClipboardDialog, KeepsItsBuiltInCaptionsWithoutALanguageFileAndLosesItsTitle) {
  StartWithCategory();
  program.languageName = L"none";
  Open([](inputDialog& dialog) {
    EXPECT_EQ(dialog.Caption(), L"");
    EXPECT_EQ(TextOf(Of(dialog, L"Check1")), L"Select &All");
    EXPECT_EQ(TextOf(Of(dialog, L"Command1", 0)), L"&Insert");
    EXPECT_EQ(TextOf(Of(dialog, L"Command1", 1)), L"&Cancel");
  });
}

TEST_F(ClipboardDialog, KeepsTheLabelOutOfTheLanguage) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[inputDialog]\r\n0=Title\r\nLabel1=text\r\n");
  StartWithCategory();
  Open([](inputDialog& dialog) {
    EXPECT_EQ(dialog.Caption(), L"Title");
    EXPECT_EQ(Label1(dialog), L"");
    EXPECT_EQ(dialog.Find(L"Label1")->font, win::FontSpec());
    EXPECT_NE(dialog.Find(L"Check1")->font, win::FontSpec());
  });
}

}  // namespace
}  // namespace kestrelon::test
