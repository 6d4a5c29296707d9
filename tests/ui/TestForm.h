#pragma once

#include "app/base/Win32.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/KeyInput.h"
#include "tests/support/Pump.h"
#include "ui/win/Form.h"

namespace kestrelon::test {

// A small dialog: a label with an access key for the text box behind it, a check box, two buttons.
inline constexpr win::ControlSpec kTestControls[] = {
    {L"Label1", -1, win::ControlKind::kLabel, L"10", L"&Name:", {120, 120, 900, 300}},
    {L"Text1", -1, win::ControlKind::kTextBox, L"", L"", {1200, 120, 2400, 300}},
    {L"Check1", -1, win::ControlKind::kCheckBox, L"11", L"&Whole word", {120, 600, 2400, 300}},
    {L"Command1", -1, win::ControlKind::kCommandButton, L"12", L"&OK", {120, 1080, 1200, 375}},
    {L"Command2", 0, win::ControlKind::kCommandButton, L"13", L"One", {1440, 1080, 1200, 375}},
    {L"Command2", 1, win::ControlKind::kCommandButton, L"14", L"Two", {2760, 1080, 1200, 375}},
    {L"Frame1", -1, win::ControlKind::kFrame, L"15", L"Frame", {120, 1600, 3900, 900}},
};

class TestForm : public win::Form {
 public:
  explicit TestForm(HWND owner = nullptr) : Form(L"TestForm") {
    win::WindowSpec spec;
    spec.caption = L"Dialog";
    spec.style = WS_POPUP | WS_CAPTION | WS_SYSMENU;
    spec.owner = owner;
    Create(spec);
    for (const win::ControlSpec& control : kTestControls) AddControl(control);
    SizeClientAndCentre(4200, 2700, owner);
  }
  ~TestForm() override { Destroy(); }
  using Form::FontFor;
  using Form::MessageFont;

  HWND Of(std::wstring_view name, int index = -1) { return Find(name, index)->window; }
  int Count(const std::wstring& name, UINT code) {
    int count = 0;
    for (const auto& event : events) count += event == std::pair(name, code);
    return count;
  }
  std::vector<std::pair<std::wstring, UINT>> events;
  std::function<void(win::FormControl&, UINT)> onControl;

 protected:
  void OnControl(win::FormControl& control, UINT code) override {
    std::wstring name = control.name;
    if (control.index >= 0) name += L"(" + std::to_wstring(control.index) + L")";
    events.emplace_back(name, code);
    if (onControl) onControl(control, code);
  }
};

}  // namespace kestrelon::test
