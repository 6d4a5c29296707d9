#include "jet/base/File.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>

#include "jet/base/Descriptor.h"
#include "jet/base/Error.h"
#include "jet/base/Patience.h"

namespace kestrelon::jet {
namespace {

// One call of the C runtime moves at most this much.
constexpr std::size_t kLargestPiece = std::size_t{1} << 30;

std::u16string NameOf(const std::filesystem::path& path) { return path.u16string(); }

[[noreturn]] void ThrowMissing(const std::filesystem::path& path) {
  throw FileRefused(u"Could not find file '" + NameOf(path) + u"'.");
}
[[noreturn]] void ThrowInUse(const std::filesystem::path& path) {
  throw FileRefused(u"Could not use '" + NameOf(path) + u"'; file already in use.");
}
[[noreturn]] void ThrowFailed(const char16_t* action, const std::u16string& name, int error) {
  throw FileRefused(u"Could not " + std::u16string(action) + u" '" + name + u"': " +
                    FromUtf8(std::generic_category().message(error)) + u".");
}

[[noreturn]] void ThrowUnread(const std::u16string& name, int error) {
  if (error == EACCES) ThrowFailed(u"read", name, error);  // a part of it is locked
  throw Error(code::kGeneric,
              u"Could not read '" + name + u"': " + FromUtf8(std::generic_category().message(error)) + u".");
}

class DiskFile final : public File {
 public:
  DiskFile(int descriptor, bool readOnly, std::u16string name)
      : descriptor_(descriptor), readOnly_(readOnly), name_(std::move(name)) {}
  ~DiskFile() override { descriptor::Close(descriptor_); }
  DiskFile(const DiskFile&) = delete;
  DiskFile& operator=(const DiskFile&) = delete;

  std::uint64_t Size() const override {
    const std::int64_t size = descriptor::Size(descriptor_);
    if (size < 0) ThrowUnread(name_, errno);
    return static_cast<std::uint64_t>(size);
  }

  void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    while (!bytes.empty()) {
      const std::int64_t done =
          descriptor::ReadSome(descriptor_, offset, bytes.data(), std::min(bytes.size(), kLargestPiece));
      if (done < 0) ThrowUnread(name_, errno);
      if (done == 0)
        throw CorruptFile(u"Unrecognized database format '" + name_ + u"': the file is too short.");
      offset += static_cast<std::uint64_t>(done);
      bytes = bytes.subspan(static_cast<std::size_t>(done));
    }
  }

  void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
    // The system would speak of a bad file descriptor.
    if (readOnly_) throw FileRefused(u"Could not write '" + name_ + u"': the file is read-only.");
    written_ = true;
    while (!bytes.empty()) {
      const std::int64_t done =
          descriptor::WriteSome(descriptor_, offset, bytes.data(), std::min(bytes.size(), kLargestPiece));
      if (done <= 0) ThrowFailed(u"write", name_, done < 0 ? errno : ENOSPC);
      offset += static_cast<std::uint64_t>(done);
      bytes = bytes.subspan(static_cast<std::size_t>(done));
    }
  }

  void Flush() override {
    if (!descriptor::Synchronize(descriptor_)) ThrowFailed(u"write", name_, errno);
  }

  bool ReadOnly() const override { return readOnly_; }

  std::optional<FileStamp> Stamp() override {
    if (written_ && !descriptor::RenewWriteTime(descriptor_)) return std::nullopt;
    written_ = false;
    FileStamp stamp;
    if (!descriptor::ReadStamp(descriptor_, stamp)) return std::nullopt;
    return stamp;
  }

  void Resize(std::uint64_t size) override {
    if (!descriptor::SetSize(descriptor_, size)) ThrowFailed(u"write", name_, errno);
  }

 private:
  int descriptor_;
  bool readOnly_;
  bool written_ = false;  // since the write time was last renewed
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
  bool ReadOnly() const override { return inner_->ReadOnly(); }
  std::optional<FileStamp> Stamp() override { return inner_->Stamp(); }

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
  const OpenMode wanted = mode;
  int opened = -1, error = 0;
  switch (OpenPatiently(mode, [&](OpenMode by) { return descriptor::Open(path, by, opened, error); })) {
    case Outcome::kDone: return std::make_unique<DiskFile>(opened, mode == OpenMode::kRead, NameOf(path));
    case Outcome::kHeld: ThrowInUse(path);
    case Outcome::kMissing:
      if (wanted != OpenMode::kCreate) ThrowMissing(path);
      break;
    default: break;
  }
  ThrowFailed(wanted == OpenMode::kCreate ? u"create" : u"open", NameOf(path), error);
}

bool RemoveFile(const std::filesystem::path& path) {
  const Outcome outcome = WithPatience([&path] { return descriptor::Remove(path); });
  return outcome == Outcome::kDone || outcome == Outcome::kMissing;
}

std::unique_ptr<File> OpenMemoryFile(std::shared_ptr<std::vector<std::uint8_t>> bytes) {
  return std::make_unique<MemoryFile>(std::move(bytes));
}

std::unique_ptr<File> OpenFailingFile(std::unique_ptr<File> inner, std::size_t writesBeforeFailure,
                                      std::size_t tornBytes) {
  return std::make_unique<FailingFile>(std::move(inner), writesBeforeFailure, tornBytes);
}

FileStamp StampOf(const std::filesystem::path& path) {
  FileStamp stamp;
  if (!descriptor::ReadStamp(path, stamp)) ThrowMissing(path);
  return stamp;
}

}  // namespace kestrelon::jet
