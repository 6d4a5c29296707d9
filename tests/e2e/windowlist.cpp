// windowlist FILE: writes every visible window of the desktop into FILE (UTF-8), one line each:
//   depth TAB class TAB control id TAB left TAB top TAB right TAB bottom TAB enabled TAB caption
// in screen pixels, children below their parents. The end-to-end tests look up where to click with it.
#include "app/base/Win32.h"

#include <cstdio>
#include <fstream>
#include <string>

#include "app/base/File.h"

namespace {

void Write(std::ofstream& out, HWND window, int depth) {
  if (!::IsWindowVisible(window)) return;
  RECT place;
  ::GetWindowRect(window, &place);
  wchar_t name[256] = L"", caption[512] = L"";
  ::GetClassNameW(window, name, 256);
  ::GetWindowTextW(window, caption, 512);
  for (wchar_t& unit : caption) {
    if (unit == L'\t' || unit == L'\r' || unit == L'\n') unit = L' ';
  }
  out << depth << '\t' << kestrelon::Narrow(name) << '\t' << ::GetDlgCtrlID(window) << '\t' << place.left
      << '\t' << place.top << '\t' << place.right << '\t' << place.bottom << '\t' << ::IsWindowEnabled(window)
      << '\t' << kestrelon::Narrow(caption) << '\n';
  for (HWND child = ::GetWindow(window, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
    Write(out, child, depth + 1);
  }
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 2) return 2;
  ::SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
  const std::wstring file = arguments[1], unfinished = file + L".part";
  {
    std::ofstream out(std::string(kestrelon::Narrow(unfinished)), std::ios::binary);
    ::EnumWindows(
        [](HWND window, LPARAM stream) -> BOOL {
          Write(*reinterpret_cast<std::ofstream*>(stream), window, 0);
          return TRUE;
        },
        reinterpret_cast<LPARAM>(&out));
  }
  ::MoveFileExW(unfinished.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING);
  return 0;
}
