#include "ui/win/StoredText.h"

#include <commctrl.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "app/base/File.h"
#include "ui/win/Handles.h"
#include "ui/win/Units.h"
#include "ui/win/Window.h"

namespace kestrelon::win {
namespace {

constexpr UINT_PTR kSubclass = 0x53746F72;
constexpr UINT_PTR kTipTimer = 0x53746F72;
constexpr UINT kTipMilliseconds = 8000;
constexpr double kTipWidth = 4800;  // twips
constexpr wchar_t kQuote = L'"', kControlV = 0x16;

// What belongs to one box; goes with its window.
struct Storable {
  std::wstring refusal;
  HWND tip = nullptr;
};

constexpr const wchar_t* kStorable = L"KestrelonStorable";  // a property of the box

Storable* Of(HWND edit) { return static_cast<Storable*>(::GetPropW(edit, kStorable)); }

std::wstring TextOf(HWND edit) {
  std::wstring text(static_cast<std::size_t>(::GetWindowTextLengthW(edit)), L'\0');
  text.resize(
      static_cast<std::size_t>(::GetWindowTextW(edit, text.data(), static_cast<int>(text.size()) + 1)));
  return text;
}

bool Is(HWND edit, DWORD style) { return (::GetWindowLongPtrW(edit, GWL_STYLE) & style) != 0; }

// The text on the clipboard; empty when there is none.
std::wstring ClipboardText(HWND owner) {
  if (!::IsClipboardFormatAvailable(CF_UNICODETEXT) || !::OpenClipboard(owner)) return {};
  const Finally close([] { ::CloseClipboard(); });
  const HANDLE memory = ::GetClipboardData(CF_UNICODETEXT);  // stays the clipboard's
  const auto* text = memory ? static_cast<const wchar_t*>(::GlobalLock(memory)) : nullptr;
  if (text == nullptr) return {};
  const Finally unlock([memory] { ::GlobalUnlock(memory); });
  return CutAtNul({text, ::GlobalSize(memory) / sizeof(wchar_t)});
}

void HideTip(HWND edit, Storable& storable) {
  ::KillTimer(edit, kTipTimer);
  if (const HWND tip = std::exchange(storable.tip, nullptr)) ::DestroyWindow(tip);
}

// A tip of our own below the box, where the control has no balloon or the user has switched balloons off.
void ShowTip(HWND edit, Storable& storable, const std::wstring& text) {
  HideTip(edit, storable);
  storable.tip =
      ::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, 0,
                        0, 0, 0, edit, nullptr, ::GetModuleHandleW(nullptr), nullptr);
  if (storable.tip == nullptr) return;
  TTTOOLINFOW tool{};
  // The oldest size, which every version of the control takes.
  tool.cbSize = offsetof(TTTOOLINFOW, lpszText) + sizeof(LPWSTR);
  tool.uFlags = TTF_TRACK | TTF_ABSOLUTE;
  tool.hwnd = edit;
  tool.lpszText = const_cast<wchar_t*>(text.c_str());  // the call copies it
  RECT place{};
  ::GetWindowRect(edit, &place);
  ::SendMessageW(storable.tip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  ::SendMessageW(storable.tip, TTM_SETMAXTIPWIDTH, 0, PixelsFromTwips(kTipWidth, ::GetDpiForWindow(edit)));
  ::SendMessageW(storable.tip, TTM_TRACKPOSITION, 0, MAKELPARAM(place.left, place.bottom + 2));
  ::SendMessageW(storable.tip, TTM_TRACKACTIVATE, TRUE, reinterpret_cast<LPARAM>(&tool));
  ::SetTimer(edit, kTipTimer, kTipMilliseconds, nullptr);
}

void Explain(HWND edit, Storable& storable, const std::wstring& text) {
  const EDITBALLOONTIP balloon{sizeof balloon, nullptr, text.c_str(), TTI_NONE};
  if (!::SendMessageW(edit, EM_SHOWBALLOONTIP, 0, reinterpret_cast<LPARAM>(&balloon)))
    ShowTip(edit, storable, text);
}

// Puts a text with quotes in as the control would put it in, without them: a single line ends at the first
// line's end, and no more comes in than there is room for. False where the clipboard holds none.
bool PasteWithoutQuotes(HWND edit, Storable& storable) {
  std::wstring text = ClipboardText(edit);
  if (std::erase(text, kQuote) == 0) return false;
  if (!Is(edit, ES_MULTILINE)) text.resize(std::min(text.size(), text.find_first_of(L"\r\n")));
  DWORD start = 0, end = 0;
  ::SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
  const auto limit = static_cast<std::size_t>(::SendMessageW(edit, EM_GETLIMITTEXT, 0, 0));
  const std::size_t kept = static_cast<std::size_t>(::GetWindowTextLengthW(edit)) - (end - start);
  const std::size_t room = limit > kept ? limit - kept : 0;
  if (text.size() > room) {
    const bool halved = room > 0 && IS_SURROGATE_PAIR(text[room - 1], text[room]);
    text.resize(halved ? room - 1 : room);
  }
  ::SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
  Explain(edit, storable, storable.refusal);
  return true;
}

LRESULT CALLBACK Procedure(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR data) {
  return Guarded(0, [&]() -> LRESULT {
    auto& storable = *reinterpret_cast<Storable*>(data);
    switch (message) {
      case WM_KEYDOWN:
        // The control's own way to paste by these keys need not lead through the message.
        if (wParam != VK_INSERT || ::GetKeyState(VK_SHIFT) >= 0 || ::GetKeyState(VK_CONTROL) < 0) break;
        ::SendMessageW(edit, WM_PASTE, 0, 0);
        return 0;
      case WM_CHAR:
        HideTip(edit, storable);
        if (wParam == kControlV) {
          ::SendMessageW(edit, WM_PASTE, 0, 0);
          return 0;
        }
        if (wParam == kQuote && !Is(edit, ES_READONLY)) {
          Explain(edit, storable, storable.refusal);
          return 0;
        }
        break;
      case WM_PASTE:
        if (!Is(edit, ES_READONLY) && PasteWithoutQuotes(edit, storable)) return 0;
        break;
      case WM_KILLFOCUS: HideTip(edit, storable); break;
      case WM_TIMER:
        if (wParam != kTipTimer) break;
        HideTip(edit, storable);
        return 0;
      case WM_NCDESTROY: {
        const std::unique_ptr<Storable> last(&storable);
        HideTip(edit, storable);
        ::RemovePropW(edit, kStorable);
        ::RemoveWindowSubclass(edit, &Procedure, kSubclass);
        return ::DefSubclassProc(edit, message, wParam, lParam);
      }
    }
    return ::DefSubclassProc(edit, message, wParam, lParam);
  });
}

}  // namespace

void TakeStorableText(HWND edit, std::size_t longest, const std::wstring& refusal) {
  ::SendMessageW(edit, EM_SETLIMITTEXT, longest, 0);
  if (Storable* const known = Of(edit)) {
    known->refusal = refusal;
    return;
  }
  auto storable = std::make_unique<Storable>(Storable{refusal});
  if (!::SetWindowSubclass(edit, &Procedure, kSubclass, reinterpret_cast<DWORD_PTR>(storable.get())))
    ThrowLastError(L"SetWindowSubclass");
  ::SetPropW(edit, kStorable, storable.get());
  storable.release();  // the window's from now on
}

bool RefusesItsText(HWND edit) {
  const Storable* const storable = Of(edit);
  if (storable == nullptr || TextOf(edit).find(kQuote) == std::wstring::npos) return false;
  ShowBalloon(edit, storable->refusal);
  return true;
}

void ShowBalloon(HWND edit, const std::wstring& text) {
  ::SetFocus(edit);
  if (Storable* const storable = Of(edit)) Explain(edit, *storable, text);
}

}  // namespace kestrelon::win
