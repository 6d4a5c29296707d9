// The small dialog with the two ways of deleting items.

#include "items/frmDeletebox.h"
#include "tests/items/ItemDialogFixture.h"

namespace kestrelon::test {
namespace {

using items::DeleteChoice;

class frmDeletebox : public ItemDialogFixture {
 protected:
  // Opens the dialog, lets `act` use it and returns the choice.
  DeleteChoice Ask(const std::function<void(win::Form&)>& act) {
    if (!form) Start();
    DeleteChoice choice = DeleteChoice::kNone;
    InDialog(
        L"frmDeletebox", [&] { choice = items::frmDeletebox(Parts()).Ask(form->Handle()); }, act);
    return choice;
  }
  static HWND Option(win::Form& dialog, int index) { return ControlOf(dialog, L"Option1", index); }
  static bool Marked(win::Form& dialog, int index) {
    return SendMessageW(Option(dialog, index), BM_GETCHECK, 0, 0) == BST_CHECKED;
  }
};

TEST_F(frmDeletebox, ShowsTheTwoActionsAndCancel) {
  Ask([](win::Form& dialog) {
    EXPECT_EQ(dialog.Caption(), L"Delete");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Frame1")), L"Select Action");
    EXPECT_EQ(TextOf(Option(dialog, 0)), L"Delete selected item(s) to the Recycle Bin.");
    EXPECT_EQ(TextOf(Option(dialog, 1)), L"Delete selected item(s) in list only.");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1")), L"&Cancel");
  });
}

TEST_F(frmDeletebox, OpensWithNothingMarkedAndTheFocusOnCancel) {
  Ask([](win::Form& dialog) {
    EXPECT_FALSE(Marked(dialog, 0));
    EXPECT_FALSE(Marked(dialog, 1));
    EXPECT_EQ(GetFocus(), ControlOf(dialog, L"Command1"));
  });
}

TEST_F(frmDeletebox, AClickOnAnOptionIsTheChoice) {
  const auto click = [](int index) {
    return [index](win::Form& dialog) {
      const HWND window = dialog.Handle();
      Click(Option(dialog, index), {5, 5});
      EXPECT_FALSE(IsWindow(window));
    };
  };
  EXPECT_EQ(Ask(click(0)), DeleteChoice::kToRecycleBin);
  EXPECT_EQ(Ask(click(1)), DeleteChoice::kListOnly);
}

TEST_F(frmDeletebox, APressThatIsLetGoBesideTheOptionIsNone) {
  EXPECT_EQ(Ask([](win::Form& dialog) {
              SendMouse(Option(dialog, 0), WM_LBUTTONDOWN, {5, 5}, MK_LBUTTON);
              SendMouse(Option(dialog, 0), WM_MOUSEMOVE, {-50, -50}, MK_LBUTTON);
              SendMouse(Option(dialog, 0), WM_LBUTTONUP, {-50, -50});
              EXPECT_TRUE(IsWindow(dialog.Handle()));
            }),
            DeleteChoice::kNone);
}

// Windows reports one when an option gets the focus.
TEST_F(frmDeletebox, AClickThatNobodyMadeIsNone) {
  EXPECT_EQ(Ask([](win::Form& dialog) {
              const UINT id = dialog.Find(L"Option1", 0)->id;
              SendMessageW(dialog.Handle(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                           reinterpret_cast<LPARAM>(Option(dialog, 0)));
              EXPECT_TRUE(IsWindow(dialog.Handle()));
            }),
            DeleteChoice::kNone);
}

TEST_F(frmDeletebox, TheArrowKeysMarkAnOptionWithoutChoosingIt) {
  EXPECT_EQ(Ask([](win::Form& dialog) {
              SetFocus(Option(dialog, 0));
              EXPECT_TRUE(Marked(dialog, 0));
              PressKey(Option(dialog, 0), VK_DOWN);
              ASSERT_TRUE(IsWindow(dialog.Handle()));
              EXPECT_EQ(GetFocus(), Option(dialog, 1));
              EXPECT_FALSE(Marked(dialog, 0));
              EXPECT_TRUE(Marked(dialog, 1));
              PressKey(Option(dialog, 1), VK_UP);
              ASSERT_TRUE(IsWindow(dialog.Handle()));
              EXPECT_EQ(GetFocus(), Option(dialog, 0));
              EXPECT_TRUE(Marked(dialog, 0));
            }),
            DeleteChoice::kNone);
}

TEST_F(frmDeletebox, TheTabKeyChoosesNothing) {
  EXPECT_EQ(Ask([](win::Form& dialog) {
              for (int i = 0; i < 4; ++i) {
                PressKey(GetFocus(), VK_TAB);
                ASSERT_TRUE(IsWindow(dialog.Handle()));
              }
            }),
            DeleteChoice::kNone);
}

TEST_F(frmDeletebox, EnterAndTheSpaceBarChooseTheFocusedOption) {
  for (const WORD key : {WORD{VK_RETURN}, WORD{VK_SPACE}}) {
    const auto press = [key](int index) {
      return [index, key](win::Form& dialog) {
        const HWND window = dialog.Handle();
        SetFocus(Option(dialog, index));
        PressKey(Option(dialog, index), key);
        EXPECT_FALSE(IsWindow(window)) << key;
      };
    };
    EXPECT_EQ(Ask(press(0)), DeleteChoice::kToRecycleBin);
    EXPECT_EQ(Ask(press(1)), DeleteChoice::kListOnly);
  }
}

TEST_F(frmDeletebox, CancelEscapeAndClosingAreNoChoice) {
  EXPECT_EQ(Ask([](win::Form& dialog) { Press(dialog, L"Command1"); }), DeleteChoice::kNone);
  EXPECT_EQ(Ask([](win::Form& dialog) { PressKey(Option(dialog, 1), VK_ESCAPE); }), DeleteChoice::kNone);
  EXPECT_EQ(Ask([](win::Form& dialog) { SendMessageW(dialog.Handle(), WM_CLOSE, 0, 0); }),
            DeleteChoice::kNone);
}

TEST_F(frmDeletebox, EnterOnTheFocusedCancelButtonIsCancel) {
  EXPECT_EQ(Ask([](win::Form& dialog) {
              const HWND window = dialog.Handle();
              PressKey(GetFocus(), VK_RETURN);
              EXPECT_FALSE(IsWindow(window));
            }),
            DeleteChoice::kNone);
}

TEST_F(frmDeletebox, CanBeAskedAgain) {
  Start();
  items::frmDeletebox dialog(Parts());
  DeleteChoice first{}, second{};
  InDialog(
      L"frmDeletebox", [&] { first = dialog.Ask(form->Handle()); },
      [](win::Form& shown) { Press(shown, L"Option1", 1); });
  InDialog(
      L"frmDeletebox", [&] { second = dialog.Ask(form->Handle()); },
      [](win::Form& shown) { Press(shown, L"Command1"); });
  EXPECT_EQ(first, DeleteChoice::kListOnly);
  EXPECT_EQ(second, DeleteChoice::kNone);
}

// Of options and frames localisation changes the font alone.
TEST_F(frmDeletebox, TakesCaptionAndCancelFromTheLanguageInUse) {
  dir.settings.Write(L"Language", L"Chinese_S");
  Ask([](win::Form& dialog) {
    EXPECT_EQ(dialog.Caption(), L"删除");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1")), L"取消(&C)");
    EXPECT_EQ(TextOf(Option(dialog, 1)), L"Delete selected item(s) in list only.");
    EXPECT_EQ(dialog.Find(L"Option1", 1)->font.face, L"Arial");
  });
}

}  // namespace
}  // namespace kestrelon::test
