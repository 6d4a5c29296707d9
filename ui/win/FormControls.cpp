// The controls of a form: making them, their captions, fonts and places.

#include "app/base/Win32.h"

#include <commctrl.h>

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <utility>

#include "app/base/File.h"
#include "ui/win/Form.h"

namespace kestrelon::win {

namespace {

struct Making {
  const wchar_t* className;
  DWORD style;
  DWORD extendedStyle;
};

Making MakingOf(ControlKind kind, DWORD asked) {
  switch (kind) {
    case ControlKind::kCommandButton: return {WC_BUTTONW, BS_PUSHBUTTON | BS_NOTIFY | WS_TABSTOP, 0};
    case ControlKind::kCheckBox: return {WC_BUTTONW, BS_AUTOCHECKBOX | BS_NOTIFY | WS_TABSTOP, 0};
    case ControlKind::kOptionButton: return {WC_BUTTONW, BS_RADIOBUTTON | BS_NOTIFY | WS_TABSTOP, 0};
    case ControlKind::kFrame: return {WC_BUTTONW, BS_GROUPBOX, 0};
    case ControlKind::kTextBox:
      // A multi-line box that scrolls sideways would not wrap its lines.
      return {WC_EDITW, WS_TABSTOP | ((asked & ES_MULTILINE) != 0 ? 0UL : DWORD{ES_AUTOHSCROLL}),
              WS_EX_CLIENTEDGE};
    case ControlKind::kMenu:
    case ControlKind::kLabel:
    case ControlKind::kOther: break;
  }
  return {WC_STATICW, SS_LEFT, 0};
}

// The text of a menu entry, accelerator part included.
std::wstring MenuText(const FormControl& control) {
  MENUITEMINFOW item{};
  item.cbSize = sizeof item;
  item.fMask = MIIM_STRING;
  if (!::GetMenuItemInfoW(control.menu, control.menuPosition, TRUE, &item)) return {};
  std::wstring text(item.cch, L'\0');
  item.dwTypeData = text.data();
  item.cch = static_cast<UINT>(text.size()) + 1;
  ::GetMenuItemInfoW(control.menu, control.menuPosition, TRUE, &item);
  return text;
}

LOGFONTW SystemMessageFont(unsigned dpi) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  if (!::SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi))
    ThrowLastError(L"message font");
  return metrics.lfMessageFont;
}

constexpr double kPointsPerInch = 72;

}  // namespace

FormControl* Form::Find(std::wstring_view name, int index) {
  const auto found = std::find_if(controls_.begin(), controls_.end(), [&](const FormControl& control) {
    return control.name == name && control.index == index;
  });
  return found == controls_.end() ? nullptr : &*found;
}

FormControl* Form::FindWindowOf(HWND control) {
  const auto found = std::find_if(controls_.begin(), controls_.end(),
                                  [&](const FormControl& candidate) { return candidate.window == control; });
  return found == controls_.end() ? nullptr : &*found;
}

std::wstring Form::ControlCaption(const FormControl& control) const {
  if (control.kind == ControlKind::kMenu) {
    const std::wstring text = MenuText(control);
    return text.substr(0, text.find(L'\t'));
  }
  std::wstring text(static_cast<std::size_t>(::GetWindowTextLengthW(control.window)), L'\0');
  text.resize(static_cast<std::size_t>(
      ::GetWindowTextW(control.window, text.data(), static_cast<int>(text.size()) + 1)));
  return text;
}

void Form::SetControlCaption(FormControl& control, const std::wstring& text) {
  if (control.kind != ControlKind::kMenu) {
    ::SetWindowTextW(control.window, text.c_str());
    return;
  }
  const std::wstring before = MenuText(control);
  const std::size_t tab = before.find(L'\t');
  std::wstring whole = tab == std::wstring::npos ? text : text + before.substr(tab);
  MENUITEMINFOW item{};
  item.cbSize = sizeof item;
  item.fMask = MIIM_STRING;
  item.dwTypeData = whole.data();
  ::SetMenuItemInfoW(control.menu, control.menuPosition, TRUE, &item);
}

void Form::SetControlFont(FormControl& control, const FontSpec& font) {
  control.font = font;
  if (control.window != nullptr)
    ::SendMessageW(control.window, WM_SETFONT, reinterpret_cast<WPARAM>(FontFor(font)), TRUE);
}

FormControl& Form::AddControl(const ControlSpec& spec) {
  FormControl control;
  control.name = spec.name;
  control.index = spec.index;
  control.kind = spec.kind;
  control.tag = spec.tag;
  control.id = nextId_++;
  control.place = spec.place;
  control.placed = true;
  const Making making = MakingOf(spec.kind, spec.style);
  control.window = ::CreateWindowExW(making.extendedStyle, making.className, spec.caption,
                                     WS_CHILD | WS_VISIBLE | making.style | spec.style, 0, 0, 0, 0, Handle(),
                                     reinterpret_cast<HMENU>(static_cast<UINT_PTR>(control.id)),
                                     ::GetModuleHandleW(nullptr), nullptr);
  if (control.window == nullptr) ThrowLastError(std::wstring(L"control ") + spec.name);
  const TwipsRect& place = control.place;
  ::SetWindowPos(control.window, nullptr, PixelsFromTwips(place.left, Dpi()),
                 PixelsFromTwips(place.top, Dpi()), PixelsFromTwips(place.width, Dpi()),
                 PixelsFromTwips(place.height, Dpi()), SWP_NOZORDER | SWP_NOACTIVATE);
  return AddExisting(std::move(control));
}

FormControl& Form::AddExisting(FormControl control) {
  controls_.push_back(std::move(control));
  FormControl& added = controls_.back();
  SetControlFont(added, FontSpec(added.font));
  return added;
}

void Form::LayOut() {
  for (const FormControl& control : controls_) {
    if (!control.placed || control.window == nullptr) continue;
    const TwipsRect& place = control.place;
    ::SetWindowPos(control.window, nullptr, PixelsFromTwips(place.left, Dpi()),
                   PixelsFromTwips(place.top, Dpi()), PixelsFromTwips(place.width, Dpi()),
                   PixelsFromTwips(place.height, Dpi()), SWP_NOZORDER | SWP_NOACTIVATE);
  }
}

HFONT Form::MessageFont() { return FontFor(FontSpec()); }

HFONT Form::FontFor(const FontSpec& spec) {
  const unsigned dpi = Dpi();
  const bool system = spec.face.empty();
  const std::wstring key = system ? L"|" + std::to_wstring(dpi)
                                  : spec.face + L"|" + std::to_wstring(spec.charset) + L"|" +
                                        std::to_wstring(spec.points) + L"|" + std::to_wstring(dpi);
  const auto known = fonts_.find(key);
  if (known != fonts_.end()) return known->second.get();
  LOGFONTW font{};
  if (system) {
    font = SystemMessageFont(dpi);
  } else {
    font.lfHeight = -static_cast<LONG>(std::lround(spec.points * dpi / kPointsPerInch));
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = spec.charset;
    font.lfQuality = CLEARTYPE_QUALITY;
    // A face longer than the structure holds names no font; the mapper then chooses by the charset.
    spec.face.copy(font.lfFaceName, LF_FACESIZE - 1);
  }
  UniqueFont made(::CreateFontIndirectW(&font));
  if (!made) ThrowLastError(L"CreateFontIndirectW");
  return fonts_.emplace(key, std::move(made)).first->second.get();
}

void Form::ApplyFonts() {
  // The old fonts live until every control has its new one.
  const auto old = std::exchange(fonts_, {});
  for (FormControl& control : controls_) SetControlFont(control, FontSpec(control.font));
}

}  // namespace kestrelon::win
