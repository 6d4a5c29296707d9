#include "app/SlotDialog.h"

#include <algorithm>

#include "items/ItemCommands.h"
#include "lang/SelectLanguage.h"
#include "store/Store.h"
#include "store/UnsavedCollection.h"
#include "ui/win/Boxes.h"

namespace kestrelon::app {
namespace {

constexpr double kFocusedPoints = 12;
constexpr double kPoints = 10;

constexpr double kWidth = 5100, kMargin = 225;
constexpr double kButtonHeight = 540, kButtonStep = 630;
constexpr double kFirstButton = 675;
constexpr double kCancelGap = 120, kCancelHeight = 420;

std::wstring TwoDigits(WORD value) { return (value < 10 ? L"0" : L"") + std::to_wstring(value); }

}  // namespace

std::wstring TimeText(const SYSTEMTIME& time) {
  return std::to_wstring(time.wYear) + L"-" + TwoDigits(time.wMonth) + L"-" + TwoDigits(time.wDay) + L" " +
         TwoDigits(time.wHour) + L":" + TwoDigits(time.wMinute) + L":" + TwoDigits(time.wSecond);
}

std::wstring SlotKey(int slot) { return L"Data" + std::to_wstring(slot); }

std::wstring SlotLabel(int slot, const SYSTEMTIME& time) {
  return std::to_wstring(slot + 1) + L". " + TimeText(time);
}

void SlotDialog::CreateControls(const std::wstring& caption, const wchar_t* explanation) {
  CreateDialogWindow(caption, parts_.form.Handle());

  AddControl({L"Label1",
              -1,
              win::ControlKind::kLabel,
              L"Label1",
              explanation,
              {kMargin, 225, kWidth - 2 * kMargin, 330}});
  for (int slot = 0; slot < kSlots; ++slot) {
    // No tag: the caption is the slot's label, in every language.
    win::FormControl& button =
        AddControl({L"Command2",
                    slot,
                    win::ControlKind::kCommandButton,
                    L"",
                    L"",
                    {kMargin, kFirstButton + slot * kButtonStep, kWidth - 2 * kMargin, kButtonHeight}});
    win::FontSpec font = lang::FontOfLocale(::GetUserDefaultLCID());
    font.points = kPoints;
    SetControlFont(button, font);
    slots_[static_cast<std::size_t>(slot)] = &button;
  }
  const double cancelTop = CreateMore(kFirstButton + kSlots * kButtonStep) + kCancelGap;
  win::FormControl& cancel = AddControl({L"Command1",
                                         -1,
                                         win::ControlKind::kCommandButton,
                                         L"Command1",
                                         L"&Cancel",
                                         {kWidth - kMargin - 1500, cancelTop, 1500, kCancelHeight}});
  SetCancelButton(cancel);
  SizeClientAndCentre(kWidth, cancelTop + kCancelHeight + kMargin, parts_.form.Handle());
}

void SlotDialog::Show(HWND owner) {
  CreateControls(BuiltInCaption(), BuiltInExplanation());
  lang::ReadLanguage(*this, parts_.program, parts_.program.languageName, parts_.world);
  for (int slot = 0; slot < kSlots; ++slot)
    SetControlCaption(Slot(slot), parts_.settings.Read(SlotKey(slot)));
  ShowMore();
  ::SetFocus(First().window);
  ShowModal(owner);
}

void SlotDialog::OnControl(win::FormControl& control, UINT code) {
  const bool slot = control.name == L"Command2";
  if (slot && code == BN_SETFOCUS) GiveLargerFont(control);
  if (slot && code == BN_CLICKED) {
    Command2_Click(control.index);  // may close the dialog
  } else if (control.name == L"Command1" && code == BN_CLICKED) {
    Close();
  }
}

void SlotDialog::GiveLargerFont(const win::FormControl& focused) {
  for (win::FormControl& control : Controls()) {
    if (control.kind != win::ControlKind::kCommandButton || control.name == L"Command1") continue;
    win::FontSpec font = control.font;
    font.points = &control == &focused ? kFocusedPoints : kPoints;
    SetControlFont(control, font);
  }
}

void Save::Command2_Click(int slot) {
  bool saved = false;
  {
    busy_ = true;
    ::SetCursor(::LoadCursorW(nullptr, IDC_WAIT));
    ::EnableWindow(Handle(), FALSE);
    const win::Finally enableAgain([&] {
      ::EnableWindow(Handle(), TRUE);
      busy_ = false;
      ::SetCursor(::LoadCursorW(nullptr, IDC_ARROW));
      ::SetFocus(Slot(slot).window);
    });
    const std::wstring label = SlotLabel(slot, parts_.world.localTime());
    saved = store::SaveData(parts_, store::SlotFile(slot), Handle());
    if (saved) {
      win::InRoutine(parts_.world, Handle(), L"Save Error:", false, [&] {
        parts_.settings.Write(SlotKey(slot), label);
        return true;
      });
      SetControlCaption(Slot(slot), label);
    }
  }
  if (saved) Close();
}

LRESULT Save::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_SETCURSOR && busy_) {
    ::SetCursor(::LoadCursorW(nullptr, IDC_WAIT));
    return TRUE;
  }
  return SlotDialog::OnMessage(message, wParam, lParam);
}

void Load::Command2_Click(int slot) {
  if (slot < kSlots) LoadFrom(store::SlotFile(slot));
}

void Load::LoadFrom(const std::wstring& fileName) {
  const bool settled = win::InRoutine(parts_.world, Handle(), L"LoadData Error:", false, [&] {
    if (parts_.settleComment) parts_.settleComment();
    return true;
  });
  if (!settled) return;
  store::LoadData(parts_, fileName);
  items::EnableItemCommands(parts_);  // no item is selected any more
  Close();
}

double Load::CreateMore(double top) {
  unsaved_ = nullptr;
  if (!store::UnsavedTime(parts_.program)) return top;
  unsaved_ = &AddControl({L"Command3",
                          -1,
                          win::ControlKind::kCommandButton,
                          L"Command3",
                          L"Unsaved collection",
                          {kMargin, top, kWidth - 2 * kMargin, kButtonHeight}});
  return top + kButtonStep;
}

void Load::ShowMore() {
  const auto time = store::UnsavedTime(parts_.program);
  if (unsaved_ && time) SetControlCaption(*unsaved_, ControlCaption(*unsaved_) + L"  " + TimeText(*time));
}

// The slot that was saved last, by its label; without one what was not saved.
win::FormControl& Load::First() {
  int last = 0;
  std::wstring lastTime;
  for (int slot = 0; slot < kSlots; ++slot) {
    // "3. 2007-05-14 21:09:33"; a slot never saved has a word there.
    const std::wstring label = ControlCaption(Slot(slot));
    const std::wstring time = label.substr(std::min(label.size(), label.find(L' ')));
    if (time.size() < 2 || time[1] < L'0' || time[1] > L'9' || time <= lastTime) continue;
    last = slot;
    lastTime = time;
  }
  return lastTime.empty() && unsaved_ ? *unsaved_ : Slot(last);
}

void Load::OnControl(win::FormControl& control, UINT code) {
  if (control.name == L"Command3" && code == BN_SETFOCUS) GiveLargerFont(control);
  if (control.name == L"Command3" && code == BN_CLICKED) {
    LoadFrom(store::kUnsavedFile);  // closes the dialog
  } else {
    SlotDialog::OnControl(control, code);
  }
}

}  // namespace kestrelon::app
