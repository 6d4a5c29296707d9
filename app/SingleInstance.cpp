#include "app/SingleInstance.h"

#include <cstdint>

#include "app/base/File.h"

namespace kestrelon::app {
namespace {

// Milliseconds.
constexpr DWORD kLookAgain = 50;    // between two looks for the other's window
constexpr UINT kAnswerTime = 2000;  // that a window may take to answer

// FNV-1a over the folder in lower case: the same folder gives the same mark in every process.
std::uint32_t MarkOf(std::wstring folder) {
  ::CharLowerBuffW(folder.data(), static_cast<DWORD>(folder.size()));
  std::uint32_t mark = 2166136261u;
  for (const wchar_t unit : folder) mark = (mark ^ unit) * 16777619u;
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

}  // namespace kestrelon::app
