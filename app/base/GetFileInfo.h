#pragma once

#include "app/base/Win32.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kestrelon {

// What is shown of a file's data.
struct FileInfo {
  std::uint64_t size = 0;
  std::wstring archive, readOnly, hidden, system;   // "Yes" / "No"
  std::wstring created, lastWritten, lastAccessed;  // local time: short date, blank, time
};

// nullopt when the file's data cannot be read.
std::optional<FileInfo> GetFileInfo(const std::wstring& path);

// "11/15/2026 1:20:05 PM": short date, one blank and the time in the forms of a locale (default: the user's).
std::wstring DateTimeText(const SYSTEMTIME& local, LCID locale = LOCALE_USER_DEFAULT);

}  // namespace kestrelon
