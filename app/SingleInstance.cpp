#include "app/SingleInstance.h"

#include <cstdint>

#include "app/base/File.h"

namespace kestrelon::app {
namespace {

// Milliseconds.
constexpr DWORD kLookAgain = 50;    // between two looks for the other's window
constexpr UINT kAnswerTime = 2000;  // that a window may take to answer

// What a folder is, however its path is spelled: its volume and its number there. A folder that cannot be
// asked is known by its path.
std::wstring IdentityOf(const std::wstring& folder) {
  const HANDLE handle = ::CreateFileW(folder.c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  BY_HANDLE_FILE_INFORMATION information{};
  const bool known = handle != INVALID_HANDLE_VALUE && ::GetFileInformationByHandle(handle, &information);
  if (handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
  if (known) {
    return std::to_wstring(information.dwVolumeSerialNumber) + L'-' +
           std::to_wstring(information.nFileIndexHigh) + L'-' + std::to_wstring(information.nFileIndexLow);
  }
  std::wstring path = folder;
  ::CharLowerBuffW(path.data(), static_cast<DWORD>(path.size()));
  return path;
}

// FNV-1a: the same folder gives the same mark in every process.
std::uint32_t MarkOf(const std::wstring& folder) {
  std::uint32_t mark = 2166136261u;
  for (const wchar_t unit : IdentityOf(folder)) mark = (mark ^ unit) * 16777619u;
  return mark;
}

}  // namespace

SingleInstance::SingleInstance(const std::wstring& dataFolder) : mark_(MarkOf(dataFolder)) {
  const std::wstring name = L"Local\\KestrelonData-" + std::to_wstring(mark_);
  mutex_.reset(::CreateMutexW(nullptr, FALSE, name.c_str()));
  if (!mutex_) ThrowLastError(L"Looking for a running Kestrelon");
  Take(0);
}

SingleInstance::~SingleInstance() {
  if (first_) ::ReleaseMutex(mutex_.get());
}

bool SingleInstance::Take(DWORD milliseconds) {
  const DWORD result = ::WaitForSingleObject(mutex_.get(), milliseconds);
  if (result == WAIT_FAILED) ThrowLastError(L"Waiting for a running Kestrelon");
  first_ = result != WAIT_TIMEOUT;  // also when the other was ended from outside
  return first_;
}

bool SingleInstance::BecomeFirst(DWORD milliseconds) {
  const ULONGLONG start = ::GetTickCount64();
  while (!first_ && !WakeTheOther() && !Take(kLookAgain)) {
    if (::GetTickCount64() - start >= milliseconds) break;
  }
  return first_;
}

UINT SingleInstance::WakeMessage() {
  static const UINT message = ::RegisterWindowMessageW(L"KestrelonWake");
  return message;
}

bool SingleInstance::WakeTheOther() const {
  ::AllowSetForegroundWindow(ASFW_ANY);
  for (HWND window = nullptr;
       (window = ::FindWindowExW(nullptr, window, kMainFormClass, nullptr)) != nullptr;) {
    DWORD_PTR answer = 0;
    if (::SendMessageTimeoutW(window, WakeMessage(), mark_, 0, SMTO_ABORTIFHUNG, kAnswerTime, &answer) != 0 &&
        static_cast<LRESULT>(answer) == kAwake)
      return true;
  }
  return false;
}

bool DataFolderLock::Take(const std::wstring& dataFolder) {
  path_ = dataFolder + L"Kestrelon.lock";
  HANDLE handle = INVALID_HANDLE_VALUE;
  // Others may read the file, as scanners and backups do with what a power cut left behind; writing is this
  // program's.
  const bool taken = Persistently([&] {
    handle = ::CreateFileW(path_.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    return handle != INVALID_HANDLE_VALUE;
  });
  if (!taken) return ::GetLastError() != ERROR_SHARING_VIOLATION;
  file_.reset(handle);
  return true;
}

DataFolderLock::~DataFolderLock() {
  if (!file_) return;
  file_.reset();
  ::DeleteFileW(path_.c_str());  // another program that has it by now keeps it
}

}  // namespace kestrelon::app
