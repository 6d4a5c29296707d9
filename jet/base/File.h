#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace kestrelon::jet {

// A random-access file, as far as the engine needs one. Offsets and sizes are bytes. Every failure throws
// Error (code::kGeneric) with a description that names the file.
class File {
 public:
  virtual ~File() = default;
  virtual std::uint64_t Size() const = 0;
  // Fills the whole span; a shorter file is an error.
  virtual void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const = 0;
  // Writing past the end makes the file longer.
  virtual void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) = 0;
  // Returns when what was written is on the disk.
  virtual void Flush() = 0;
  // Makes the file shorter, or longer by zeros. Not every file can.
  virtual void Resize(std::uint64_t size);
};

enum class OpenMode {
  kRead,          // shared with other readers
  kReadWrite,     // for this process alone; a file that others have open is "in use"; a read-only file falls
                  // back to kRead and fails at the first write
  kCreate,        // must not exist yet; for this process alone
  kOpenOrCreate,  // like kReadWrite, but a file that is missing is made and a read-only one is an error
};

std::unique_ptr<File> OpenFile(const std::filesystem::path& path, OpenMode mode);

// A file in memory. `bytes` is shared with the caller, who may look at it afterwards.
std::unique_ptr<File> OpenMemoryFile(std::shared_ptr<std::vector<std::uint8_t>> bytes);

// Forwards to `inner` until `writesBeforeFailure` calls of WriteAt or Flush have been made; that call and all
// later ones throw. When `tornBytes` is not 0, the failing WriteAt still writes that many bytes first (a torn
// write).
std::unique_ptr<File> OpenFailingFile(std::unique_ptr<File> inner, std::size_t writesBeforeFailure,
                                      std::size_t tornBytes = 0);

// What tells one state of a file from another without reading it. Two equal stamps mean: not changed since.
struct FileStamp {
  std::uint64_t size = 0;
  std::int64_t writeTime = 0;  // as fine as the library tells it: on Windows whole seconds
  std::uint64_t fileId = 0;    // inode where the system has one, else 0
  bool operator==(const FileStamp&) const = default;
};
FileStamp StampOf(const std::filesystem::path& path);

}  // namespace kestrelon::jet
