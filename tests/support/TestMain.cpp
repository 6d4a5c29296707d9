// The main program of every Windows test program.

#include "app/base/Win32.h"

#include <commctrl.h>
#include <gmock/gmock.h>
#include <ole2.h>

#include <cstdio>

namespace {

// A crash ends the program at once with a code of its own: neither a dialog that waits for a click nor a
// debugger that may turn the exit code into success gets a say.
LONG WINAPI ReportCrash(EXCEPTION_POINTERS* crash) {
  std::printf("crash: code %08lx at %p\n", crash->ExceptionRecord->ExceptionCode,
              crash->ExceptionRecord->ExceptionAddress);
  std::fflush(stdout);
  TerminateProcess(GetCurrentProcess(), 99);
  return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

int main(int argc, char** argv) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  SetUnhandledExceptionFilter(ReportCrash);
  const INITCOMMONCONTROLSEX classes{sizeof(INITCOMMONCONTROLSEX), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
  if (!InitCommonControlsEx(&classes)) {
    std::printf("no common controls\n");
    return 98;
  }
  if (FAILED(OleInitialize(nullptr))) {
    std::printf("no OLE\n");
    return 98;
  }
  testing::InitGoogleMock(&argc, argv);
  const int result = RUN_ALL_TESTS();
  OleUninitialize();
  return result;
}
