#include "app/base/File.h"

#include <optional>
#include <system_error>

namespace kestrelon {

namespace {

// The system's own sentences for its error codes, in UTF-8. The library's category gives them in the code
// page of the system, which is no text that the rest of the program can read.
class WindowsCategory : public std::error_category {
 public:
  const char* name() const noexcept override { return "windows"; }
  std::string message(int code) const override {
    wchar_t text[512];
    DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                         static_cast<DWORD>(code), 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && text[length - 1] <= L' ') --length;
    if (length == 0) return "error " + std::to_string(code);
    return Narrow({text, length});
  }
};

class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) : handle_(handle) {}
  ~FileHandle() {
    if (handle_ != INVALID_HANDLE_VALUE) ::CloseHandle(handle_);
  }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;
  HANDLE get() const { return handle_; }
  explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }

 private:
  HANDLE handle_;
};

// "1234567" with a comma after every third digit from the right.
std::wstring Grouped(std::wstring digits) {
  for (std::size_t at = digits.size(); at > 3;) {
    at -= 3;
    digits.insert(at, 1, L',');
  }
  return digits;
}

bool IsSeparator(wchar_t unit) { return unit == L'\\' || unit == L'/'; }

// What follows the start of a network path: the server first. Nothing for any other path.
std::optional<std::wstring_view> BehindNetworkStart(std::wstring_view path) {
  if (path.size() < 2 || !IsSeparator(path[0]) || !IsSeparator(path[1])) return std::nullopt;
  path.remove_prefix(2);
  if (path.size() < 2 || (path[0] != L'?' && path[0] != L'.') || !IsSeparator(path[1])) return path;
  const bool device = path[0] == L'.';
  path.remove_prefix(2);
  if (device || path.size() < 4 || !EqualNoCase(path.substr(0, 3), L"UNC") || !IsSeparator(path[3]))
    return std::nullopt;
  return path.substr(4);
}

// A copy of a file, flushed to the disk, that goes away again unless it is put in its place.
class TemporaryCopy {
 public:
  explicit TemporaryCopy(std::wstring path) : path_(std::move(path)) {}
  ~TemporaryCopy() {
    if (!placed_) ::DeleteFileW(path_.c_str());
  }
  TemporaryCopy(const TemporaryCopy&) = delete;
  TemporaryCopy& operator=(const TemporaryCopy&) = delete;

  const std::wstring& Path() const { return path_; }
  void Make(const std::wstring& from) {
    ClearReadOnly(path_);  // a crash may have left one that is
    // Copying by itself does not mind that somebody is writing what it copies.
    const FileHandle unchanged(OpenUnchanged(from));
    if (!Persistently([&] { return ::CopyFileW(from.c_str(), path_.c_str(), FALSE) != FALSE; }))
      ThrowLastError(L"Cannot copy " + from + L" to " + path_);
    // A template that was installed read-only must not make read-only copies.
    if (!Persistently([&] { return ::SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL) != FALSE; }))
      ThrowLastError(L"Cannot change " + path_);
    Flush();
  }
  void RenameOver(const std::wstring& to) {
    const auto rename = [&] {
      return ::MoveFileExW(path_.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) !=
             FALSE;
    };
    if (!Persistently(rename)) ThrowLastError(L"Cannot replace " + to);
    placed_ = true;
  }

 private:
  // Until the handle goes, nobody writes the file. Throws where somebody does.
  static HANDLE OpenUnchanged(const std::wstring& path) {
    HANDLE handle = INVALID_HANDLE_VALUE;
    const bool opened = Persistently([&] {
      handle = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
      return handle != INVALID_HANDLE_VALUE;
    });
    if (!opened) ThrowLastError(L"Cannot copy " + path);
    return handle;
  }
  // A fresh file is what virus scanners and indexers open at once: it is shared with them.
  void Flush() {
    HANDLE handle = INVALID_HANDLE_VALUE;
    const auto open = [&] {
      handle =
          ::CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        nullptr, OPEN_EXISTING, 0, nullptr);
      return handle != INVALID_HANDLE_VALUE;
    };
    const bool opened = Persistently(open);
    const FileHandle file(handle);
    if (!opened || !::FlushFileBuffers(file.get())) ThrowLastError(L"Cannot write " + path_);
  }

  std::wstring path_;
  bool placed_ = false;
};

}  // namespace

std::wstring CutAtNul(std::wstring_view text) { return std::wstring(text.substr(0, text.find(L'\0'))); }

std::wstring FileNameOfPath(std::wstring_view path) {
  return std::wstring(path.substr(path.rfind(L'\\') + 1));  // npos + 1 is 0
}

std::wstring FolderOfPath(std::wstring_view path) {
  return std::wstring(path.substr(0, path.rfind(L'\\') + 1));
}

std::wstring NameWithoutExtension(std::wstring_view name) {
  return std::wstring(name.substr(0, name.rfind(L'.')));
}

std::wstring ExtensionOf(std::wstring_view name) {
  const std::size_t dot = name.rfind(L'.');
  return dot == std::wstring_view::npos ? std::wstring() : std::wstring(name.substr(dot + 1));
}

std::wstring WithBackslash(std::wstring_view folder) {
  std::wstring result(folder);
  if (!result.ends_with(L'\\')) result += L'\\';
  return result;
}

bool IsNetworkPath(std::wstring_view path) { return BehindNetworkStart(path).has_value(); }

std::wstring ServerOfPath(std::wstring_view path) {
  const std::wstring_view rest = BehindNetworkStart(path).value_or(std::wstring_view());
  return std::wstring(rest.substr(0, rest.find_first_of(L"\\/")));
}

std::wstring SizeText(std::uint64_t bytes) {
  const std::wstring digits = std::to_wstring(bytes);
  if (bytes < 1024) {  // at least three digits
    return std::wstring(digits.size() < 3 ? 3 - digits.size() : 0, L'0') + Grouped(digits) + L" Bytes";
  }
  constexpr const wchar_t* kUnits[] = {L" KB ", L" MB ", L" GB "};
  std::size_t unit = 0;
  std::uint64_t unitBytes = 1024;
  while (unit + 1 < std::size(kUnits) && bytes / unitBytes >= 1024) {
    unitBytes *= 1024;
    ++unit;
  }
  // Hundredths, a half rounded up. The remainder is below 2^30, so nothing overflows.
  std::uint64_t whole = bytes / unitBytes;
  std::uint64_t hundredths = (bytes % unitBytes * 100 + unitBytes / 2) / unitBytes;
  if (hundredths == 100) {
    ++whole;
    hundredths = 0;
  }
  return std::to_wstring(whole) + (hundredths < 10 ? L".0" : L".") + std::to_wstring(hundredths) +
         kUnits[unit] + L"(" + Grouped(digits) + L" Bytes)";
}

bool FileExists(const std::wstring& path) {
  return FileExists(path, [](const std::wstring& asked) -> DWORD {
    return ::GetFileAttributesW(asked.c_str()) != INVALID_FILE_ATTRIBUTES ? 0 : ::GetLastError();
  });
}

bool FileExists(const std::wstring& path, const std::function<DWORD(const std::wstring&)>& errorOf) {
  return !path.empty() && errorOf(path) != ERROR_FILE_NOT_FOUND;
}

bool FolderExists(const std::wstring& path) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::wstring IdentityOf(const std::wstring& path) {
  const FileHandle handle(::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                        OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  BY_HANDLE_FILE_INFORMATION information{};
  if (!handle || !::GetFileInformationByHandle(handle.get(), &information)) return {};
  return std::to_wstring(information.dwVolumeSerialNumber) + L'-' +
         std::to_wstring(information.nFileIndexHigh) + L'-' + std::to_wstring(information.nFileIndexLow);
}

bool IsSameFile(const std::wstring& a, const std::wstring& b) {
  if (EqualNoCase(a, b)) return true;
  const std::wstring identity = IdentityOf(a);
  return !identity.empty() && identity == IdentityOf(b);
}

std::wstring TemporaryFolder() {
  wchar_t buffer[MAX_PATH + 1] = L"";  // the longest that the system returns
  const DWORD length = ::GetTempPathW(static_cast<DWORD>(std::size(buffer)), buffer);
  if (length == 0 || length >= std::size(buffer)) return {};
  return CutAtNul({buffer, length});
}

bool WriteTest(const std::wstring& folder) {
  // A file of that name may be the user's own: it is neither opened nor replaced, the next name is tried.
  for (int attempt = 0; attempt < 10; ++attempt) {
    const std::wstring probe = folder + L"WriteTest" + (attempt == 0 ? L"" : std::to_wstring(attempt));
    const FileHandle file(::CreateFileW(probe.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (file) return true;
    const DWORD error = ::GetLastError();
    if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) return false;
  }
  return false;
}

bool Persistently(const std::function<bool()>& attempt) {
  return Persistently(attempt, [](DWORD milliseconds) { ::Sleep(milliseconds); });
}

bool Persistently(const std::function<bool()>& attempt, const std::function<void(DWORD)>& wait) {
  constexpr DWORD kWaits[] = {10, 20, 40, 80, 160, 300, 400};  // milliseconds; about a second together
  for (const DWORD milliseconds : kWaits) {
    if (attempt()) return true;
    const DWORD error = ::GetLastError();
    if (error != ERROR_SHARING_VIOLATION && error != ERROR_LOCK_VIOLATION && error != ERROR_ACCESS_DENIED)
      return false;
    wait(milliseconds);
  }
  return attempt();
}

void ReplaceByCopy(const std::wstring& from, const std::wstring& to) {
  ReplaceByCopy(from, to, [](const std::wstring&) {});
}

void ReplaceByCopy(const std::wstring& from, const std::wstring& to,
                   const std::function<void(const std::wstring& copy)>& check) {
  // Always the same name, so that what a crash left behind is used again and does not pile up.
  TemporaryCopy copy(to + L".new");
  copy.Make(from);
  check(copy.Path());
  copy.RenameOver(to);
}

void DeleteIfThere(const std::wstring& path) {
  if (Persistently([&] { return ::DeleteFileW(path.c_str()) != FALSE; })) return;
  const DWORD error = ::GetLastError();
  if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) {
    ThrowLastError(L"Cannot delete " + path, error);
  }
}

void ClearReadOnly(const std::wstring& path) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

bool CannotBeRead(DWORD error) {
  switch (error) {
    case ERROR_CRC:
    case ERROR_SECTOR_NOT_FOUND:
    case ERROR_READ_FAULT:
    case ERROR_IO_DEVICE:
    case ERROR_FILE_CORRUPT:
    case ERROR_DISK_CORRUPT: return true;
    default: return false;
  }
}

void ThrowLastError(const std::wstring& what, DWORD error) {
  static const WindowsCategory category;
  throw std::system_error(std::error_code(static_cast<int>(error), category), Narrow(what));
}

std::string Narrow(std::wstring_view text) {
  if (text.empty()) return {};
  const int units = static_cast<int>(text.size());
  const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(bytes), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, text.data(), units, result.data(), bytes, nullptr, nullptr);
  return result;
}

std::wstring Widen(std::string_view text) {
  if (text.empty()) return {};
  const int bytes = static_cast<int>(text.size());
  const int units = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
  std::wstring result(static_cast<std::size_t>(units), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, result.data(), units);
  return result;
}

bool EqualNoCase(std::wstring_view a, std::wstring_view b) {
  return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                                TRUE) == CSTR_EQUAL;
}

bool ContainsNoCase(std::wstring_view text, std::wstring_view part) {
  if (part.empty()) return true;
  return ::FindStringOrdinal(FIND_FROMSTART, text.data(), static_cast<int>(text.size()), part.data(),
                             static_cast<int>(part.size()), TRUE) >= 0;
}

std::wstring Trim(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(L' ');
  if (first == std::wstring_view::npos) return {};
  return std::wstring(text.substr(first, text.find_last_not_of(L' ') - first + 1));
}

}  // namespace kestrelon
