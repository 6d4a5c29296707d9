#include "app/base/OutsideWorld.h"

#include <cderr.h>
#include <commdlg.h>
#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>

#include "app/base/File.h"
#include "app/base/HostCheck.h"

namespace kestrelon {

namespace {

// UTF-16 units beyond those that the Open dialog may return: more than any list of names that it can show
// takes.
constexpr std::size_t kRoomBehind = std::size_t{8} << 20;

std::optional<std::wstring> PickFolder(HWND owner) {
  BROWSEINFOW request{};
  request.hwndOwner = owner;
  request.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
  const std::unique_ptr<ITEMIDLIST, decltype(&::CoTaskMemFree)> chosen(::SHBrowseForFolderW(&request),
                                                                       &::CoTaskMemFree);
  if (!chosen) return std::nullopt;
  std::wstring path(32768, L'\0');  // the longest path there is
  if (!::SHGetPathFromIDListEx(chosen.get(), path.data(), static_cast<DWORD>(path.size()), GPFIDL_DEFAULT)) {
    return std::nullopt;
  }
  path.resize(path.find(L'\0'));
  return path;
}

bool ShellFileOperation(HWND owner, UINT function, const std::wstring& from, const std::wstring& to,
                        WORD flags) {
  // Lists of paths end in an empty one.
  const std::wstring sources = from + L'\0', targets = to + L'\0';
  SHFILEOPSTRUCTW operation{};
  operation.hwnd = owner;
  operation.wFunc = function;
  operation.pFrom = sources.c_str();
  operation.pTo = to.empty() ? nullptr : targets.c_str();
  operation.fFlags = flags;
  return ::SHFileOperationW(&operation) == 0 && !operation.fAnyOperationsAborted;
}

bool StartProgram(const std::wstring& commandLine, int show) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = static_cast<WORD>(show);
  PROCESS_INFORMATION process{};
  std::wstring writable = commandLine;  // the function writes into it
  if (!::CreateProcessW(nullptr, writable.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
    return false;
  }
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  return true;
}

// The sequence of a 64-bit counter, scrambled (SplitMix64): small, and quick to seed, which happens before
// every key.
class Chance {
 public:
  Chance() { Reseed(); }
  // Keeps what the state holds, so that two calls within one tick of the timer still differ.
  void Reseed() {
    LARGE_INTEGER timer;
    ::QueryPerformanceCounter(&timer);
    state_ = Next() ^ static_cast<std::uint64_t>(timer.QuadPart);
  }
  double Fraction() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }

 private:
  std::uint64_t Next() {
    std::uint64_t mixed = (state_ += 0x9E3779B97F4A7C15u);
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
    return mixed ^ (mixed >> 31);
  }
  std::uint64_t state_ = ::GetTickCount64();
};

}  // namespace

std::optional<std::wstring> OpenFilesBy(const std::function<BOOL(OPENFILENAMEW&)>& show,
                                        const std::function<DWORD()>& error,
                                        const OpenFilesRequest& request) {
  std::wstring filter = request.filter;
  std::replace(filter.begin(), filter.end(), L'|', L'\0');
  filter.append(2, L'\0');
  // Some systems' dialogs write on past the size that they are told.
  std::wstring buffer(request.maximumSize + kRoomBehind, L'\0');

  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = request.owner;
  dialog.lpstrTitle = request.title.empty() ? nullptr : request.title.c_str();
  dialog.lpstrFilter = filter.c_str();
  dialog.nFilterIndex = request.filterIndex;
  // The dialog would leave its folder behind as the current one, and keep that folder from being removed.
  dialog.Flags = request.flags | OFN_NOCHANGEDIR;
  dialog.lpstrFile = buffer.data();
  dialog.nMaxFile = request.maximumSize;
  if (!show(dialog)) {
    const DWORD code = error();
    if (code == FNERR_BUFFERTOOSMALL) throw TooManyFiles();
    if (code != 0) throw std::runtime_error("The Open dialog failed with code " + std::to_string(code) + ".");
    return std::nullopt;
  }
  const bool several = (request.flags & OFN_ALLOWMULTISELECT) != 0 && (request.flags & OFN_EXPLORER) != 0;
  const std::size_t end = several ? buffer.find(std::wstring_view(L"\0\0", 2)) : buffer.find(L'\0');
  if (end == std::wstring::npos) throw TooManyFiles();
  buffer.resize(end);
  return buffer;
}

OutsideWorld SystemWorld() {
  OutsideWorld world;
  world.messageBox = [](HWND owner, const std::wstring& text, const std::wstring& title, UINT flags) {
    return ::MessageBoxW(owner, text.c_str(), title.c_str(), flags);
  };
  world.browseForFolder = PickFolder;
  world.openFiles = [](const OpenFilesRequest& request) {
    return OpenFilesBy([](OPENFILENAMEW& dialog) { return ::GetOpenFileNameW(&dialog); },
                       [] { return ::CommDlgExtendedError(); }, request);
  };
  world.shellFileOperation = ShellFileOperation;
  world.shellExecute = [](HWND owner, const std::wstring& verb, const std::wstring& target, int show) {
    return reinterpret_cast<INT_PTR>(::ShellExecuteW(owner, verb.empty() ? nullptr : verb.c_str(),
                                                     target.c_str(), nullptr, nullptr, show));
  };
  world.startProgram = StartProgram;
  world.hostAnswers = HostAnswers;
  world.localTime = [] {
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    return now;
  };
  const auto chance = std::make_shared<Chance>();
  world.randomFraction = [chance] { return chance->Fraction(); };
  world.reseedRandom = [chance] { chance->Reseed(); };
  world.cursorPosition = [] {
    POINT point{};
    ::GetCursorPos(&point);
    return point;
  };
  world.workArea = [] {
    RECT area{};
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    return area;
  };
  world.dragButtonDown = [] {
    // The physical button, which for a left-handed user is the right one.
    const int button = ::GetSystemMetrics(SM_SWAPBUTTON) != 0 ? VK_RBUTTON : VK_LBUTTON;
    return (::GetAsyncKeyState(button) & 0x8000) != 0;
  };
  return world;
}

std::wstring BrowseForFolder(const OutsideWorld& world, HWND owner) {
  const std::wstring chosen = CutAtNul(world.browseForFolder(owner).value_or(std::wstring()));
  return chosen.empty() ? chosen : WithBackslash(chosen);
}

}  // namespace kestrelon
