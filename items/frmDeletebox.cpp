#include "items/frmDeletebox.h"

#include <commctrl.h>

#include "lang/SelectLanguage.h"

namespace kestrelon::items {
namespace {

constexpr int kOptions = 2;  // Option1: to the Recycle Bin, list only
constexpr int kNoOption = -1;

constexpr double kWidth = 5700, kMargin = 225, kGap = 120;
constexpr double kLineHeight = 330, kStep = kLineHeight + kGap;
constexpr double kFrameTop = 150, kFirstOption = kFrameTop + 330;
constexpr double kFrameHeight = kFirstOption - kFrameTop + kOptions * kStep;
constexpr double kOptionLeft = kMargin + 180;
constexpr double kButtonWidth = 1500, kButtonHeight = 420;
constexpr double kButtonTop = kFrameTop + kFrameHeight + 2 * kGap;
constexpr double kHeight = kButtonTop + kButtonHeight + kMargin;

}  // namespace

DeleteChoice frmDeletebox::Ask(HWND owner) {
  choice_ = DeleteChoice::kNone;
  CreateControls();
  lang::ReadLanguage(*this, parts_.program, parts_.program.languageName, parts_.world);
  // Where Enter does no harm.
  ::SetFocus(Find(L"Command1")->window);
  ShowModal(owner);
  return choice_;
}

void frmDeletebox::CreateControls() {
  CreateDialogWindow(L"Delete", parts_.form.Handle());

  AddControl({L"Frame1",
              -1,
              win::ControlKind::kFrame,
              L"Frame1",
              L"Select Action",
              {kMargin, kFrameTop, kWidth - 2 * kMargin, kFrameHeight}});
  AddOption(0, L"Delete selected item(s) to the Recycle Bin.", kFirstOption, WS_GROUP);
  AddOption(1, L"Delete selected item(s) in list only.", kFirstOption + kStep, 0);
  SetCancelButton(AddControl({L"Command1",
                              -1,
                              win::ControlKind::kCommandButton,
                              L"Command1",
                              L"&Cancel",
                              {kWidth - kMargin - kButtonWidth, kButtonTop, kButtonWidth, kButtonHeight},
                              WS_GROUP}));
  SizeClientAndCentre(kWidth, kHeight, parts_.form.Handle());
}

void frmDeletebox::AddOption(int index, const wchar_t* caption, double top, DWORD style) {
  const win::FormControl& option = AddControl({L"Option1",
                                               index,
                                               win::ControlKind::kOptionButton,
                                               L"Option1",
                                               caption,
                                               {kOptionLeft, top, kWidth - 2 * kOptionLeft, kLineHeight},
                                               style});
  ::SetWindowSubclass(option.window, &frmDeletebox::OptionProcedure, static_cast<UINT_PTR>(index),
                      reinterpret_cast<DWORD_PTR>(this));
}

// An option button reports a click also when it merely gets the focus, which here would delete something.
LRESULT CALLBACK frmDeletebox::OptionProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                               UINT_PTR index, DWORD_PTR self) {
  return win::Guarded(0, [&]() -> LRESULT {
    auto& box = *reinterpret_cast<frmDeletebox*>(self);
    if (message == WM_KEYDOWN && wParam == VK_RETURN) {
      box.Option1_Click(static_cast<int>(index));
      return 0;
    }
    if (message == WM_LBUTTONUP || (message == WM_KEYUP && wParam == VK_SPACE)) {
      const win::ScopedFlag pressed(box.pressed_);
      return ::DefSubclassProc(window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) ::RemoveWindowSubclass(window, &frmDeletebox::OptionProcedure, index);
    return ::DefSubclassProc(window, message, wParam, lParam);
  });
}

void frmDeletebox::Mark(int index) {
  for (int i = 0; i < kOptions; ++i) {
    ::SendMessageW(Find(L"Option1", i)->window, BM_SETCHECK, i == index ? BST_CHECKED : BST_UNCHECKED, 0);
  }
}

void frmDeletebox::Option1_Click(int index) {
  choice_ = index == 0 ? DeleteChoice::kToRecycleBin : DeleteChoice::kListOnly;
  Close();
}

void frmDeletebox::OnControl(win::FormControl& control, UINT code) {
  if (control.name == L"Option1" && code == BN_SETFOCUS) Mark(control.index);
  if (control.name == L"Option1" && code == BN_KILLFOCUS) Mark(kNoOption);
  if (control.name == L"Option1" && code == BN_CLICKED && pressed_) Option1_Click(control.index);
  if (control.name == L"Command1" && code == BN_CLICKED) Close();
}

}  // namespace kestrelon::items
