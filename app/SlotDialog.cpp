#include "app/SlotDialog.h"

#include "lang/SelectLanguage.h"
#include "store/Store.h"
#include "ui/win/Boxes.h"

namespace kestrelon::app {
namespace {

constexpr double kFocusedPoints = 12;
constexpr double kPoints = 10;

constexpr double kWidth = 5100, kMargin = 225;
constexpr double kButtonHeight = 540, kButtonStep = 630;
constexpr double kFirstButton = 675;
constexpr double kHeight = kFirstButton + kSlots * kButtonStep + 120 + 420 + kMargin;

std::wstring TwoDigits(WORD value) { return (value < 10 ? L"0" : L"") + std::to_wstring(value); }

}  // namespace

std::wstring SlotKey(int slot) { return L"Data" + std::to_wstring(slot); }

std::wstring SlotFile(int slot) { return SlotKey(slot) + L".dat"; }

std::wstring SlotLabel(int slot, const SYSTEMTIME& time) {
  return std::to_wstring(slot + 1) + L". " + std::to_wstring(time.wYear) + L"-" + TwoDigits(time.wMonth) +
         L"-" + TwoDigits(time.wDay) + L" " + TwoDigits(time.wHour) + L":" + TwoDigits(time.wMinute) + L":" +
         TwoDigits(time.wSecond);
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
  win::FormControl& cancel =
      AddControl({L"Command1",
                  -1,
                  win::ControlKind::kCommandButton,
                  L"Command1",
                  L"&Cancel",
                  {kWidth - kMargin - 1500, kFirstButton + kSlots * kButtonStep + 120, 1500, 420}});
  SetCancelButton(cancel);
  SizeClientAndCentre(kWidth, kHeight, parts_.form.Handle());
}

void SlotDialog::Show(HWND owner) {
  CreateControls(BuiltInCaption(), BuiltInExplanation());
  lang::ReadLanguage(*this, parts_.program, parts_.program.languageName, parts_.world);
  for (int slot = 0; slot < kSlots; ++slot)
    SetControlCaption(Slot(slot), parts_.settings.Read(SlotKey(slot)));
  ::SetFocus(Slot(0).window);
  ShowModal(owner);
}

void SlotDialog::OnControl(win::FormControl& control, UINT code) {
  const bool slot = control.name == L"Command2";
  if (slot && code == BN_SETFOCUS) Command2_GotFocus(control.index);
  if (slot && code == BN_CLICKED) {
    Command2_Click(control.index);  // may close the dialog
  } else if (control.name == L"Command1" && code == BN_CLICKED) {
    Close();
  }
}

void SlotDialog::Command2_GotFocus(int focused) {
  for (int slot = 0; slot < kSlots; ++slot) {
    win::FontSpec font = Slot(slot).font;
    font.points = slot == focused ? kFocusedPoints : kPoints;
    SetControlFont(Slot(slot), font);
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
    saved = store::SaveData(parts_, SlotFile(slot), Handle());
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
  if (slot >= kSlots) return;
  if (parts_.settleComment) parts_.settleComment();
  store::LoadData(parts_, SlotFile(slot));
  Close();
}

}  // namespace kestrelon::app
