#include "jet/base/Descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#ifdef _WIN32
#include <windows.h>

#include <io.h>
#include <share.h>
#else
#include <sys/file.h>
#include <unistd.h>

#include <ctime>
#endif

namespace kestrelon::jet::descriptor {

#ifdef _WIN32

namespace {

// What the system's error number means for somebody who wants to open or remove the file.
Outcome OutcomeOf(unsigned long error, const std::filesystem::path& path, bool write) {
  switch (error) {
    case ERROR_SUCCESS: return Outcome::kDone;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND: return Outcome::kMissing;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
    case ERROR_DELETE_PENDING: return Outcome::kHeld;
    case ERROR_WRITE_PROTECT: return Outcome::kReadOnly;
    case ERROR_ACCESS_DENIED: break;
    default: return Outcome::kFailed;
  }
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    // There is no such file, so it is the folder that takes none. Any other error speaks of a file that is
    // about to go.
    return GetLastError() == ERROR_FILE_NOT_FOUND ? Outcome::kFailed : Outcome::kDenied;
  }
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return Outcome::kFailed;
  return write && (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? Outcome::kReadOnly : Outcome::kDenied;
}

HANDLE HandleOf(int descriptor) { return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)); }

std::uint64_t Join(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

bool ReadStampOf(HANDLE handle, FileStamp& stamp) {
  BY_HANDLE_FILE_INFORMATION information;
  if (!GetFileInformationByHandle(handle, &information)) return false;
  stamp.size = Join(information.nFileSizeHigh, information.nFileSizeLow);
  stamp.writeTime = static_cast<std::int64_t>(
      Join(information.ftLastWriteTime.dwHighDateTime, information.ftLastWriteTime.dwLowDateTime));
  stamp.volume = information.dwVolumeSerialNumber;
  stamp.fileId = Join(information.nFileIndexHigh, information.nFileIndexLow);
  return true;
}

}  // namespace

Outcome Open(const std::filesystem::path& path, OpenMode mode, int& descriptor, int& error) {
  const int flags = _O_BINARY | _O_NOINHERIT |
                    (mode == OpenMode::kRead           ? _O_RDONLY
                     : mode == OpenMode::kReadWrite    ? _O_RDWR
                     : mode == OpenMode::kOpenOrCreate ? _O_RDWR | _O_CREAT
                                                       : _O_RDWR | _O_CREAT | _O_EXCL);
  error = _wsopen_s(&descriptor, path.c_str(), flags, mode == OpenMode::kRead ? _SH_DENYWR : _SH_DENYRW,
                    _S_IREAD | _S_IWRITE);
  if (error == 0) return Outcome::kDone;
  const Outcome outcome = OutcomeOf(_doserrno, path, mode == OpenMode::kReadWrite);
  return outcome == Outcome::kDone ? Outcome::kFailed : outcome;
}

Outcome Remove(const std::filesystem::path& path) {
  if (DeleteFileW(path.c_str())) return Outcome::kDone;
  return OutcomeOf(GetLastError(), path, true);
}

void Close(int descriptor) { _close(descriptor); }
std::int64_t Size(int descriptor) { return _lseeki64(descriptor, 0, SEEK_END); }
std::int64_t ReadSome(int descriptor, std::uint64_t offset, std::uint8_t* bytes, std::size_t size) {
  if (_lseeki64(descriptor, static_cast<std::int64_t>(offset), SEEK_SET) < 0) return -1;
  return _read(descriptor, bytes, static_cast<unsigned>(size));
}
std::int64_t WriteSome(int descriptor, std::uint64_t offset, const std::uint8_t* bytes, std::size_t size) {
  if (_lseeki64(descriptor, static_cast<std::int64_t>(offset), SEEK_SET) < 0) return -1;
  return _write(descriptor, bytes, static_cast<unsigned>(size));
}
bool Synchronize(int descriptor) { return _commit(descriptor) == 0; }
bool SetSize(int descriptor, std::uint64_t size) {
  return _chsize_s(descriptor, static_cast<std::int64_t>(size)) == 0;
}

bool ReadStamp(int descriptor, FileStamp& stamp) { return ReadStampOf(HandleOf(descriptor), stamp); }

bool ReadStamp(const std::filesystem::path& path, FileStamp& stamp) {
  const HANDLE handle =
      CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return false;
  const bool read = ReadStampOf(handle, stamp);
  CloseHandle(handle);
  return read;
}

// The system stamps writes with a clock that stands still for some milliseconds: one unit more is a time that
// another program's write within the same span does not get.
bool RenewWriteTime(int descriptor) {
  FileStamp before;
  if (!ReadStamp(descriptor, before)) return false;
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  const auto clock = static_cast<std::int64_t>(Join(now.dwHighDateTime, now.dwLowDateTime));
  const std::int64_t renewed = std::max(clock, before.writeTime) + 1;
  const FILETIME time = {static_cast<DWORD>(renewed & 0xFFFFFFFF), static_cast<DWORD>(renewed >> 32)};
  return SetFileTime(HandleOf(descriptor), nullptr, nullptr, &time) != 0;
}

void Sleep(std::chrono::milliseconds time) { ::Sleep(static_cast<DWORD>(time.count())); }

#else

namespace {

constexpr std::int64_t kBillion = 1'000'000'000;

void Take(const struct stat& status, FileStamp& stamp) {
  stamp.size = static_cast<std::uint64_t>(status.st_size);
  stamp.writeTime = std::int64_t{status.st_mtim.tv_sec} * kBillion + status.st_mtim.tv_nsec;
  stamp.volume = static_cast<std::uint64_t>(status.st_dev);
  stamp.fileId = static_cast<std::uint64_t>(status.st_ino);
}

}  // namespace

Outcome Open(const std::filesystem::path& path, OpenMode mode, int& descriptor, int& error) {
  const int flags = O_CLOEXEC | (mode == OpenMode::kRead           ? O_RDONLY
                                 : mode == OpenMode::kReadWrite    ? O_RDWR
                                 : mode == OpenMode::kOpenOrCreate ? O_RDWR | O_CREAT
                                                                   : O_RDWR | O_CREAT | O_EXCL);
  descriptor = ::open(path.c_str(), flags, 0666);
  error = errno;
  if (descriptor < 0) {
    switch (error) {
      case ENOENT:
      case ENOTDIR: return Outcome::kMissing;
      // Rights and mounts: nothing here is denied for a moment only.
      case EACCES:
      case EROFS: return mode == OpenMode::kReadWrite ? Outcome::kReadOnly : Outcome::kFailed;
      default: return Outcome::kFailed;
    }
  }
  if (::flock(descriptor, (mode == OpenMode::kRead ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0) {
    error = errno;
    ::close(descriptor);
    descriptor = -1;
    return error == EWOULDBLOCK ? Outcome::kHeld : Outcome::kFailed;
  }
  return Outcome::kDone;
}

Outcome Remove(const std::filesystem::path& path) {
  if (::unlink(path.c_str()) == 0) return Outcome::kDone;
  return errno == ENOENT || errno == ENOTDIR ? Outcome::kMissing : Outcome::kFailed;
}

void Close(int descriptor) { ::close(descriptor); }
std::int64_t Size(int descriptor) { return ::lseek(descriptor, 0, SEEK_END); }
std::int64_t ReadSome(int descriptor, std::uint64_t offset, std::uint8_t* bytes, std::size_t size) {
  return ::pread(descriptor, bytes, size, static_cast<off_t>(offset));
}
std::int64_t WriteSome(int descriptor, std::uint64_t offset, const std::uint8_t* bytes, std::size_t size) {
  return ::pwrite(descriptor, bytes, size, static_cast<off_t>(offset));
}
bool Synchronize(int descriptor) { return ::fsync(descriptor) == 0; }
bool SetSize(int descriptor, std::uint64_t size) {
  return ::ftruncate(descriptor, static_cast<off_t>(size)) == 0;
}

bool ReadStamp(int descriptor, FileStamp& stamp) {
  struct stat status = {};
  if (::fstat(descriptor, &status) != 0) return false;
  Take(status, stamp);
  return true;
}

bool ReadStamp(const std::filesystem::path& path, FileStamp& stamp) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) return false;
  Take(status, stamp);
  return true;
}

// The system stamps writes with a clock that stands still for some milliseconds; this one does not, so that
// another program's write within the same span gets another time.
bool RenewWriteTime(int descriptor) {
  FileStamp before;
  timespec now = {};
  if (!ReadStamp(descriptor, before) || ::clock_gettime(CLOCK_REALTIME, &now) != 0) return false;
  const std::int64_t renewed =
      std::max(std::int64_t{now.tv_sec} * kBillion + now.tv_nsec, before.writeTime) + 1;
  const timespec times[2] = {
      {0, UTIME_OMIT}, {static_cast<time_t>(renewed / kBillion), static_cast<long>(renewed % kBillion)}};
  return ::futimens(descriptor, times) == 0;
}

void Sleep(std::chrono::milliseconds time) {
  const timespec span = {static_cast<time_t>(time.count() / 1000),
                         static_cast<long>(time.count() % 1000 * 1'000'000)};
  ::nanosleep(&span, nullptr);
}

#endif

}  // namespace kestrelon::jet::descriptor
