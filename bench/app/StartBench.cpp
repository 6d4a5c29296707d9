// start-bench: the time from starting a program to its window on the screen, for two programs in turns; the
// fastest of each goes into the file. start_bench.py runs it on a desktop.
//
//   start-bench FILE PROGRAM OTHER-PROGRAM [rounds]
#include "app/base/Win32.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "bench/app/Timing.h"

namespace {

using kestrelon::Milliseconds;

struct Search {
  DWORD process;
  HWND window;
};

// The program's captioned window, once it is shown.
HWND ShownWindow(DWORD process) {
  Search search{process, nullptr};
  ::EnumWindows(
      [](HWND window, LPARAM parameter) -> BOOL {
        auto& wanted = *reinterpret_cast<Search*>(parameter);
        DWORD owner = 0;
        ::GetWindowThreadProcessId(window, &owner);
        const bool captioned = (::GetWindowLongPtrW(window, GWL_STYLE) & WS_CAPTION) == WS_CAPTION;
        if (owner == wanted.process && captioned && ::IsWindowVisible(window)) wanted.window = window;
        return wanted.window == nullptr;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.window;
}

double StartAndEnd(std::wstring program) {
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  HWND window = nullptr;
  const double milliseconds = Milliseconds([&] {
    if (!::CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                          &process))
      throw std::runtime_error("the program could not be started");
    while ((window = ShownWindow(process.dwProcessId)) == nullptr) {
      if (::WaitForSingleObject(process.hProcess, 1) == WAIT_OBJECT_0)
        throw std::runtime_error("the program ended without a window");
    }
  });
  ::TerminateProcess(process.hProcess, 0);  // to be asked about changes would take a hand
  ::WaitForSingleObject(process.hProcess, INFINITE);
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  return milliseconds;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count < 4 || ::_wfreopen(arguments[1], L"w", stdout) == nullptr) {
    std::puts("usage: start-bench FILE PROGRAM OTHER-PROGRAM [rounds]");
    return 2;
  }
  try {
    double first = 1e9, second = 1e9;
    for (int round = count > 4 ? std::stoi(arguments[4]) : 10; round > 0; --round) {
      first = std::min(first, StartAndEnd(arguments[2]));
      second = std::min(second, StartAndEnd(arguments[3]));
    }
    std::printf("from start to window: %.1f ms / %.1f ms   ratio %.2f\n", first, second, first / second);
    return 0;
  } catch (const std::exception& error) {
    std::printf("%s\n", error.what());
    return 1;
  }
}
