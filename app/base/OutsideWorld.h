#pragma once

#include "app/base/Win32.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

struct tagOFNW;  // OPENFILENAMEW

namespace kestrelon {

// One call of the common Open dialog.
struct OpenFilesRequest {
  HWND owner = nullptr;
  std::wstring title;
  std::wstring filter;        // "Text (*.txt)|*.txt|All|*.*"
  DWORD filterIndex = 1;      // one-based
  DWORD flags = 0;            // OFN_…
  DWORD maximumSize = 32000;  // UTF-16 units that the dialog may return
};

// More files were chosen than the Open dialog can give.
struct TooManyFiles : std::runtime_error {
  TooManyFiles() : runtime_error("Too many files were selected at once.") {}
};

// Everything that the program asks of the world around it: questions to the user, pickers, the shell, the
// network, time, chance, pointer and screen. Tests replace single functions; SystemWorld() gives the real
// ones. Nothing else in the program calls the functions behind these.
struct OutsideWorld {
  // MessageBoxW: flags are MB_…, the result is IDOK, IDYES, …
  std::function<int(HWND owner, const std::wstring& text, const std::wstring& title, UINT flags)> messageBox;
  // The system's folder picker: the chosen path without a trailing backslash (roots have one); nullopt on
  // Cancel.
  std::function<std::optional<std::wstring>(HWND owner)> browseForFolder;
  // The common Open dialog: its raw result (one path, or folder NUL names), cut before the final two NULs;
  // nullopt on Cancel. Throws TooManyFiles.
  std::function<std::optional<std::wstring>(const OpenFilesRequest&)> openFiles;
  // SHFileOperationW with one source and at most one target. True when it returned 0 and nothing was aborted.
  // (By the integer function code FO_… and the FOF_… flags.)
  std::function<bool(HWND owner, UINT function, const std::wstring& from, const std::wstring& to, WORD flags)>
      shellFileOperation;
  // ShellExecuteW; `verb` may be empty for none. Above 32 is success, 2 is "file not found".
  std::function<INT_PTR(HWND owner, const std::wstring& verb, const std::wstring& target, int show)>
      shellExecute;
  // Starts a program by its command line with a window style (SW_…). False when it could not be started.
  std::function<bool(const std::wstring& commandLine, int show)> startProgram;
  // Does the host answer? Through WMI Win32_PingStatus; an ICMP echo where WMI has no such class.
  std::function<bool(const std::wstring& host)> hostAnswers;
  std::function<SYSTEMTIME()> localTime;
  std::function<double()> randomFraction;  // [0, 1)
  std::function<void()> reseedRandom;      // from the system timer
  std::function<POINT()> cursorPosition;   // screen pixels
  std::function<RECT()> workArea;          // of the primary screen, pixels
  // Is the button down with which things are dragged, at this moment and not as of the message being handled?
  std::function<bool()> dragButtonDown;
};

OutsideWorld SystemWorld();

// The Open dialog by way of the given functions, which SystemWorld() takes from the system: the dialog, and
// the error that it failed with. All the files chosen come back, or none.
std::optional<std::wstring> OpenFilesBy(const std::function<BOOL(tagOFNW&)>& show,
                                        const std::function<DWORD()>& error, const OpenFilesRequest& request);

// Lets the user choose a folder: its path, cut at the first NUL and ending in a backslash; empty on Cancel.
std::wstring BrowseForFolder(const OutsideWorld& world, HWND owner);

}  // namespace kestrelon
