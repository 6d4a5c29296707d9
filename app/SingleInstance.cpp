#include "app/SingleInstance.h"

#include <cstdint>

#include "app/base/File.h"

namespace kestrelon::app {
namespace {

// FNV-1a over the folder in lower case: the same folder gives the same mark in every process.
std::uint32_t MarkOf(std::wstring folder) {
  ::CharLowerBuffW(folder.data(), static_cast<DWORD>(folder.size()));
  std::uint32_t mark = 2166136261u;
  for (const wchar_t unit : folder) mark = (mark ^ unit) * 16777619u;
  return mark;
}

}  // namespace

SingleInstance::SingleInstance(const std::wstring& dataFolder) : mark_(MarkOf(dataFolder)), first_(true) {
  const std::wstring name = L"Local\\KestrelonData-" + std::to_wstring(mark_);
  mutex_.reset(::CreateMutexW(nullptr, FALSE, name.c_str()));
  const DWORD error = ::GetLastError();
  if (!mutex_) ThrowLastError(L"Looking for a running Kestrelon", error);
  first_ = error != ERROR_ALREADY_EXISTS;
}

UINT SingleInstance::WakeMessage() {
  static const UINT message = ::RegisterWindowMessageW(L"KestrelonWake");
  return message;
}

void SingleInstance::WakeTheOther() const {
  ::AllowSetForegroundWindow(ASFW_ANY);
  for (HWND window = nullptr;
       (window = ::FindWindowExW(nullptr, window, kMainFormClass, nullptr)) != nullptr;) {
    ::PostMessageW(window, WakeMessage(), mark_, 0);
  }
}

}  // namespace kestrelon::app
