#include "jet/base/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>

#ifdef _WIN32
#include <io.h>
#include <share.h>
#else
#include <sys/file.h>
#include <unistd.h>
#endif

#include "jet/base/Error.h"

namespace kestrelon::jet {
namespace {

// One call of the C runtime moves at most this much.
constexpr std::size_t kLargestPiece = std::size_t{1} << 30;

std::u16string NameOf(const std::filesystem::path& path) { return path.u16string(); }

[[noreturn]] void ThrowMissing(const std::filesystem::path& path) {
  throw Error(code::kGeneric, u"Could not find file '" + NameOf(path) + u"'.");
}
[[noreturn]] void ThrowInUse(const std::filesystem::path& path) {
  throw Error(code::kGeneric, u"Could not use '" + NameOf(path) + u"'; file already in use.");
}
[[noreturn]] void ThrowFailed(const char16_t* action, const std::u16string& name, int error) {
  throw Error(code::kGeneric, u"Could not " + std::u16string(action) + u" '" + name + u"': " +
                                  FromUtf8(std::generic_category().message(error)) + u".");
}

#ifdef _WIN32
constexpr int kSharingViolation = 32, kLockViolation = 33;  // numbers of the operating system

int OpenDescriptor(const std::filesystem::path& path, OpenMode mode, int& error, bool& inUse) {
  const int flags = _O_BINARY | _O_NOINHERIT |
                    (mode == OpenMode::kRead           ? _O_RDONLY
                     : mode == OpenMode::kReadWrite    ? _O_RDWR
                     : mode == OpenMode::kOpenOrCreate ? _O_RDWR | _O_CREAT
                                                       : _O_RDWR | _O_CREAT | _O_EXCL);
  int descriptor = -1;
  error = _wsopen_s(&descriptor, path.c_str(), flags, mode == OpenMode::kRead ? _SH_DENYWR : _SH_DENYRW,
                    _S_IREAD | _S_IWRITE);
  inUse = error == EACCES && (_doserrno == kSharingViolation || _doserrno == kLockViolation);
  return error == 0 ? descriptor : -1;
}
void CloseDescriptor(int descriptor) { _close(descriptor); }
std::int64_t SeekEnd(int descriptor) { return _lseeki64(descriptor, 0, SEEK_END); }
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
#else
int OpenDescriptor(const std::filesystem::path& path, OpenMode mode, int& error, bool& inUse) {
  const int flags = O_CLOEXEC | (mode == OpenMode::kRead           ? O_RDONLY
                                 : mode == OpenMode::kReadWrite    ? O_RDWR
                                 : mode == OpenMode::kOpenOrCreate ? O_RDWR | O_CREAT
                                                                   : O_RDWR | O_CREAT | O_EXCL);
  inUse = false;
  const int descriptor = ::open(path.c_str(), flags, 0666);
  error = errno;
  if (descriptor < 0) return -1;
  if (::flock(descriptor, (mode == OpenMode::kRead ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0) {
    inUse = errno == EWOULDBLOCK;
    error = errno;
    ::close(descriptor);
    return -1;
  }
  return descriptor;
}
void CloseDescriptor(int descriptor) { ::close(descriptor); }
std::int64_t SeekEnd(int descriptor) { return ::lseek(descriptor, 0, SEEK_END); }
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
#endif

class DiskFile final : public File {
 public:
  DiskFile(int descriptor, bool readOnly, std::u16string name)
      : descriptor_(descriptor), readOnly_(readOnly), name_(std::move(name)) {}
  ~DiskFile() override { CloseDescriptor(descriptor_); }
  DiskFile(const DiskFile&) = delete;
  DiskFile& operator=(const DiskFile&) = delete;

  std::uint64_t Size() const override {
    const std::int64_t size = SeekEnd(descriptor_);
    if (size < 0) ThrowFailed(u"read", name_, errno);
    return static_cast<std::uint64_t>(size);
  }

  void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    while (!bytes.empty()) {
      const std::int64_t done =
          ReadSome(descriptor_, offset, bytes.data(), std::min(bytes.size(), kLargestPiece));
      if (done < 0) ThrowFailed(u"read", name_, errno);
      if (done == 0)
        throw CorruptFile(u"Unrecognized database format '" + name_ + u"': the file is too short.");
      offset += static_cast<std::uint64_t>(done);
      bytes = bytes.subspan(static_cast<std::size_t>(done));
    }
  }

  void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
    // The system would speak of a bad file descriptor.
    if (readOnly_) throw Error(code::kGeneric, u"Could not write '" + name_ + u"': the file is read-only.");
    while (!bytes.empty()) {
      const std::int64_t done =
          WriteSome(descriptor_, offset, bytes.data(), std::min(bytes.size(), kLargestPiece));
      if (done <= 0) ThrowFailed(u"write", name_, done < 0 ? errno : ENOSPC);
      offset += static_cast<std::uint64_t>(done);
      bytes = bytes.subspan(static_cast<std::size_t>(done));
    }
  }

  void Flush() override {
    if (!Synchronize(descriptor_)) ThrowFailed(u"write", name_, errno);
  }

  void Resize(std::uint64_t size) override {
    if (!SetSize(descriptor_, size)) ThrowFailed(u"write", name_, errno);
  }

 private:
  int descriptor_;
  bool readOnly_;
  std::u16string name_;
};

class MemoryFile final : public File {
 public:
  explicit MemoryFile(std::shared_ptr<std::vector<std::uint8_t>> bytes) : bytes_(std::move(bytes)) {}

  std::uint64_t Size() const override { return bytes_->size(); }

  void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    if (offset > bytes_->size() || bytes.size() > bytes_->size() - offset) {
      throw CorruptFile(u"Unrecognized database format: the file in memory is too short.");
    }
    std::copy_n(bytes_->begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
  }

  void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
    const auto at = static_cast<std::size_t>(offset);
    if (bytes_->size() < at + bytes.size()) bytes_->resize(at + bytes.size());
    std::copy(bytes.begin(), bytes.end(), bytes_->begin() + static_cast<std::ptrdiff_t>(at));
  }

  void Flush() override {}
  void Resize(std::uint64_t size) override { bytes_->resize(static_cast<std::size_t>(size)); }

 private:
  std::shared_ptr<std::vector<std::uint8_t>> bytes_;
};

class FailingFile final : public File {
 public:
  FailingFile(std::unique_ptr<File> inner, std::size_t writesBeforeFailure, std::size_t tornBytes)
      : inner_(std::move(inner)), left_(writesBeforeFailure), tornBytes_(tornBytes) {}

  std::uint64_t Size() const override { return inner_->Size(); }
  void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    inner_->ReadAt(offset, bytes);
  }

  void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
    if (left_ == 0) {
      const std::size_t torn = std::min(std::exchange(tornBytes_, 0), bytes.size());
      if (torn > 0) inner_->WriteAt(offset, bytes.first(torn));
      Fail();
    }
    --left_;
    inner_->WriteAt(offset, bytes);
  }

  void Flush() override {
    if (left_ == 0) Fail();
    --left_;
    inner_->Flush();
  }

  void Resize(std::uint64_t size) override {
    if (left_ == 0) Fail();
    --left_;
    inner_->Resize(size);
  }

 private:
  [[noreturn]] static void Fail() { ThrowFailed(u"write", u"the failing file", ENOSPC); }

  std::unique_ptr<File> inner_;
  std::size_t left_;
  std::size_t tornBytes_;
};

}  // namespace

void File::Resize(std::uint64_t /*size*/) {
  throw Error(code::kGeneric, u"The length of this file cannot be changed.");
}

std::unique_ptr<File> OpenFile(const std::filesystem::path& path, OpenMode mode) {
  int error = 0;
  bool inUse = false;
  int descriptor = OpenDescriptor(path, mode, error, inUse);
  if (descriptor < 0 && !inUse && mode == OpenMode::kReadWrite && (error == EACCES || error == EROFS)) {
    mode = OpenMode::kRead;
    descriptor = OpenDescriptor(path, mode, error, inUse);
  }
  if (descriptor >= 0) return std::make_unique<DiskFile>(descriptor, mode == OpenMode::kRead, NameOf(path));
  if (inUse) ThrowInUse(path);
  if (mode != OpenMode::kCreate && (error == ENOENT || error == ENOTDIR)) ThrowMissing(path);
  ThrowFailed(mode == OpenMode::kCreate ? u"create" : u"open", NameOf(path), error);
}

std::unique_ptr<File> OpenMemoryFile(std::shared_ptr<std::vector<std::uint8_t>> bytes) {
  return std::make_unique<MemoryFile>(std::move(bytes));
}

std::unique_ptr<File> OpenFailingFile(std::unique_ptr<File> inner, std::size_t writesBeforeFailure,
                                      std::size_t tornBytes) {
  return std::make_unique<FailingFile>(std::move(inner), writesBeforeFailure, tornBytes);
}

FileStamp StampOf(const std::filesystem::path& path) {
  std::error_code failure;
  FileStamp stamp;
  stamp.size = std::filesystem::file_size(path, failure);
  if (failure) ThrowMissing(path);
  stamp.writeTime = std::filesystem::last_write_time(path, failure).time_since_epoch().count();
  if (failure) ThrowMissing(path);
#ifndef _WIN32
  struct stat status = {};
  if (::stat(path.c_str(), &status) == 0) stamp.fileId = static_cast<std::uint64_t>(status.st_ino);
#endif
  return stamp;
}

}  // namespace kestrelon::jet
