#include "import/ClipboardFiles.h"

#include <commctrl.h>
#include <shellapi.h>

#include <utility>

#include "app/base/File.h"
#include "ui/win/Boxes.h"
#include "ui/win/Handles.h"
#include "ui/win/Window.h"

namespace kestrelon::imports {
namespace {

constexpr UINT kCount = 0xFFFFFFFF;  // instead of a path's number: asks how many there are
constexpr UINT_PTR kSubclass = 1;

}  // namespace

std::vector<std::wstring> ReadClipboardFiles(HWND owner) {
  if (!::IsClipboardFormatAvailable(CF_HDROP) || !::OpenClipboard(owner)) return {};
  const win::Finally close([] { ::CloseClipboard(); });
  const auto list = static_cast<HDROP>(::GetClipboardData(CF_HDROP));  // stays the clipboard's
  if (list == nullptr) return {};
  std::vector<std::wstring> paths;
  const UINT count = ::DragQueryFileW(list, kCount, nullptr, 0);
  for (UINT i = 0; i < count; ++i) {
    wchar_t buffer[MAX_PATH] = {};
    ::DragQueryFileW(list, i, buffer, MAX_PATH);
    std::wstring path = CutAtNul({buffer, MAX_PATH});
    // What some systems find in an empty list, and what cannot be read, is an empty name.
    if (!path.empty()) paths.push_back(std::move(path));
  }
  return paths;
}

void ClipboardHook::Install(HWND window, std::function<void()> changed) {
  if (!::SetWindowSubclass(window, &ClipboardHook::Procedure, kSubclass, reinterpret_cast<DWORD_PTR>(this)))
    ThrowLastError(L"SetWindowSubclass");
  window_ = window;
  changed_ = std::move(changed);
  ::SetClipboardViewer(window);  // the next viewer, its result, is left alone: see above the class
}

void ClipboardHook::Remove() {
  if (const HWND window = std::exchange(window_, nullptr))
    ::RemoveWindowSubclass(window, &ClipboardHook::Procedure, kSubclass);
}

LRESULT CALLBACK ClipboardHook::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                          DWORD_PTR self) noexcept {
  const LRESULT result = ::DefSubclassProc(window, message, wParam, lParam);
  auto& hook = *reinterpret_cast<ClipboardHook*>(self);
  // The message may have taken the hook away.
  if (message == WM_DRAWCLIPBOARD && hook.window_ == window)
    win::Guarded(0, [&] {
      win::Quietly(hook.changed_);
      return 0;
    });
  return result;
}

}  // namespace kestrelon::imports
