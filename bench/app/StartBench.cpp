// start-bench: the time from starting a program to its window on the screen, for several programs in turns;
// the median and the fastest of each go into the file. start_bench.py runs it on a desktop.
//
//   start-bench FILE ROUNDS PROGRAM OTHER-PROGRAM...
#include "app/base/Win32.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

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
  if (count < 5 || ::_wfreopen(arguments[1], L"w", stdout) == nullptr) {
    std::puts("usage: start-bench FILE ROUNDS PROGRAM OTHER-PROGRAM...");
    return 2;
  }
  try {
    const std::vector<std::wstring> programs(arguments + 3, arguments + count);
    std::vector<std::vector<double>> times(programs.size());
    const int rounds = std::max(1, std::stoi(arguments[2]));
    for (int round = 0; round < rounds; ++round) {
      for (std::size_t i = 0; i < programs.size(); ++i) times[i].push_back(StartAndEnd(programs[i]));
    }
    for (std::vector<double>& each : times) std::sort(each.begin(), each.end());
    const auto median = [&](std::size_t i) { return times[i][times[i].size() / 2]; };
    std::printf("from start to window: median %.1f ms, fastest %.1f ms\n", median(0), times[0].front());
    for (std::size_t i = 1; i < programs.size(); ++i) {
      const std::wstring name = programs[i].substr(programs[i].rfind(L'\\') + 1);
      std::printf("   %.2f, %.2f times %ls with its %.1f ms, %.1f ms\n", median(0) / median(i),
                  times[0].front() / times[i].front(), name.c_str(), median(i), times[i].front());
    }
    return 0;
  } catch (const std::exception& error) {
    std::printf("%s\n", error.what());
    return 1;
  }
}
