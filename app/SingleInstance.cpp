#include "app/SingleInstance.h"

#include <cstdint>

#include "app/base/File.h"

namespace kestrelon::app {
namespace {

// Milliseconds.
constexpr DWORD kLookAgain = 50;    // between two looks for the other's window
constexpr UINT kAnswerTime = 2000;  // that a window may take to answer

// A folder that cannot be asked is known by its path.
std::wstring NameOf(const std::wstring& folder) {
  std::wstring name = IdentityOf(folder);
  if (!name.empty()) return name;
  name = folder;
  ::CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
  return name;
}

// FNV-1a: the same folder gives the same mark in every process.
std::uint32_t MarkOf(const std::wstring& folder) {
  std::uint32_t mark = 2166136261u;
  for (const wchar_t unit : NameOf(folder)) mark = (mark ^ unit) * 16777619u;
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
  if (taken) {
    file_.reset(handle);
    return true;
  }
  if (::GetLastError() == ERROR_ACCESS_DENIED) {
    // One that may not be written can be held all the same. No scanner is let in then; this is rare enough.
    handle = ::CreateFileW(path_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
      file_.reset(handle);
      return true;
    }
  }
  return ::GetLastError() != ERROR_SHARING_VIOLATION;
}

DataFolderLock::~DataFolderLock() {
  if (!file_) return;
  file_.reset();
  ::DeleteFileW(path_.c_str());  // another program that has it by now keeps it
}

}  // namespace kestrelon::app
