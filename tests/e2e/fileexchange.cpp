// fileexchange: another program to exchange files with, for the end-to-end tests. LIST and RECEIVED are text
// files (UTF-8) with one path a line.
//   fileexchange window LIST RECEIVED LEFT TOP   a window at that place; the paths of LIST can be dragged out
//   of it, and
//                                                paths dropped on it are written into RECEIVED
//   fileexchange clipboard LIST                  copies the files of LIST to the clipboard
//   fileexchange text TEXT                       copies a text to the clipboard
//   fileexchange hold FILE RELEASE               holds the file, shared with readers, until RELEASE is there
#include "app/base/Win32.h"

#include <ole2.h>

#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "app/base/File.h"
#include "items/FileListDataObject.h"
#include "ui/win/DropTarget.h"
#include "ui/win/FileDrop.h"

namespace {

using namespace kestrelon;

std::vector<std::wstring> ReadList(const std::wstring& file) {
  std::ifstream in(Narrow(file));
  std::vector<std::wstring> paths;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty()) paths.push_back(Widen(line));
  }
  return paths;
}

void WriteList(const std::wstring& file, const std::vector<std::wstring>& paths) {
  const std::wstring unfinished = file + L".part";
  {
    std::ofstream out(Narrow(unfinished), std::ios::binary);
    for (const std::wstring& path : paths) out << Narrow(path) << '\n';
  }
  ::MoveFileExW(unfinished.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING);
}

int SetClipboard(UINT format, const void* bytes, std::size_t size) {
  if (!::OpenClipboard(nullptr)) return 1;
  ::EmptyClipboard();
  const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, size);
  std::memcpy(::GlobalLock(memory), bytes, size);
  ::GlobalUnlock(memory);
  const bool done = ::SetClipboardData(format, memory) != nullptr;  // takes the memory over
  ::CloseClipboard();
  return done ? 0 : 1;
}

int HoldFile(const wchar_t* file, const wchar_t* release) {
  const HANDLE handle = ::CreateFileW(file, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return 1;
  while (!FileExists(release)) ::Sleep(20);
  ::CloseHandle(handle);
  return 0;
}

std::vector<std::wstring> offered;

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_LBUTTONDOWN) {
    items::DragFilesOut(offered);
    return 0;
  }
  if (message == WM_DESTROY) ::PostQuitMessage(0);
  return ::DefWindowProcW(window, message, wParam, lParam);
}

int RunWindow(wchar_t** arguments) {
  offered = ReadList(arguments[2]);
  const std::wstring received = arguments[3];
  WNDCLASSW kind{};
  kind.lpfnWndProc = Procedure;
  kind.lpszClassName = L"FileExchange";
  kind.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
  kind.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
  ::RegisterClassW(&kind);
  const HWND window = ::CreateWindowExW(WS_EX_TOPMOST, L"FileExchange", L"File exchange",
                                        WS_CAPTION | WS_SYSMENU | WS_VISIBLE, std::stoi(arguments[4]),
                                        std::stoi(arguments[5]), 200, 120, nullptr, nullptr,
                                        ::GetModuleHandleW(nullptr), nullptr);
  if (!window) return 1;
  win::DropTarget target;
  target.events.dragOver = [](IDataObject& data, POINT) {
    return static_cast<DWORD>(win::OffersFiles(data) ? DROPEFFECT_COPY : DROPEFFECT_NONE);
  };
  target.events.drop = [&](IDataObject& data, POINT) {
    WriteList(received, win::DroppedPaths(data));
    return DWORD{DROPEFFECT_COPY};
  };
  target.Register(window);
  for (MSG message; ::GetMessageW(&message, nullptr, 0, 0) > 0;) ::DispatchMessageW(&message);
  return 0;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  ::SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
  if (FAILED(::OleInitialize(nullptr))) return 2;
  const std::wstring mode = count > 2 ? arguments[1] : L"";
  int result = 2;
  if (mode == L"window" && count == 6) {
    result = RunWindow(arguments);
  } else if (mode == L"clipboard") {
    const std::vector<std::uint8_t> bytes = items::FileDropBytes(ReadList(arguments[2]));
    result = SetClipboard(CF_HDROP, bytes.data(), bytes.size());
  } else if (mode == L"hold" && count == 4) {
    result = HoldFile(arguments[2], arguments[3]);
  } else if (mode == L"text") {
    const std::wstring text = arguments[2];
    result = SetClipboard(CF_UNICODETEXT, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  }
  ::OleUninitialize();
  return result;
}
