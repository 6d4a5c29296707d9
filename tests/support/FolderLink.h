#pragma once

#include "app/base/Win32.h"

#include <string>

#include "app/base/File.h"
#include "tests/support/Pump.h"

namespace kestrelon::test {

// A symbolic link to a folder, removed at the end of the scope; it must not outlive its folder, since
// removing that would go through the link. Under Wine, which makes no links, the host's own tools make it.
class FolderLink {
 public:
  FolderLink(const std::wstring& link, const std::wstring& target) : link_(link) {
    CreateSymbolicLinkW(link.c_str(), target.c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY | 2 /* unprivileged */);
    if (Made() || HostPath(link).empty()) return;
    RunOnHost(L"ln -s \"" + HostPath(target) + L"\" \"" + HostPath(link) + L"\"");
    PumpUntil([this] { return Made(); });
  }
  ~FolderLink() {
    if (!Made()) return;
    if (HostPath(link_).empty()) {
      RemoveDirectoryW(link_.c_str());
    } else {
      RunOnHost(L"rm \"" + HostPath(link_) + L"\"");
      PumpUntil([this] { return !Made(); });
    }
  }
  FolderLink(const FolderLink&) = delete;
  FolderLink& operator=(const FolderLink&) = delete;

  // False where links cannot be made.
  bool Made() const { return GetFileAttributesW(link_.c_str()) != INVALID_FILE_ATTRIBUTES; }

 private:
  // The path as the host names it; empty on Windows itself.
  static std::wstring HostPath(const std::wstring& path) {
    using Function = char*(CDECL*)(const wchar_t*);
    const auto function = reinterpret_cast<Function>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (function == nullptr) return {};
    char* const found = function(path.c_str());
    if (found == nullptr) return {};
    const std::wstring text = Widen(found);
    HeapFree(GetProcessHeap(), 0, found);
    return text;
  }
  static void RunOnHost(const std::wstring& command) {
    std::wstring line = L"\\\\?\\unix\\bin\\" + command;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    // The process is the host's: there is nothing to wait for but what it does.
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &process)) {
      if (process.hThread != nullptr) CloseHandle(process.hThread);
      if (process.hProcess != nullptr) CloseHandle(process.hProcess);
    }
  }

  std::wstring link_;
};

}  // namespace kestrelon::test
