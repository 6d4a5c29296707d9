#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace kestrelon::jet {

// What tells one state of a file from another without reading it. Two equal stamps mean: the same file, not
// changed since. A file that took another's place under its name is another file.
struct FileStamp {
  std::uint64_t size = 0;
  std::int64_t writeTime = 0;  // in the system's own units: 100 ns on Windows, else 1 ns
  std::uint64_t volume = 0;
  std::uint64_t fileId = 0;  // on its volume
  bool operator==(const FileStamp&) const = default;
};

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
  // Whether every write will fail.
  virtual bool ReadOnly() const { return false; }

  // The stamp that the file will have once it is closed; nothing when that is not known. To be asked for
  // after the last write.
  //
  // It is taken while the file is still open, because between closing and opening again another program may
  // have changed the file, and its work would pass for ours. But Windows sets the write time of a file that
  // was written through a handle when it likes, and may do so as late as the closing of the handle. A time
  // that was set through the handle, however, is final: the system leaves it alone for as long as nothing
  // more is written through that handle. So the time of a file that was written is set here, to one that the
  // file has never had.
  virtual std::optional<FileStamp> Stamp() { return std::nullopt; }
};

enum class OpenMode {
  kRead,          // shared with other readers
  kReadWrite,     // for this process alone; a file that others have open is "in use"; a read-only file falls
                  // back to kRead and fails at the first write
  kCreate,        // must not exist yet; for this process alone
  kOpenOrCreate,  // like kReadWrite, but a file that is missing is made and a read-only one is an error
};

// A file that others hold for a moment is waited for, up to about a second (Patience.h).
std::unique_ptr<File> OpenFile(const std::filesystem::path& path, OpenMode mode);
// Waits likewise. False when the file is still there.
bool RemoveFile(const std::filesystem::path& path);

// A file in memory. `bytes` is shared with the caller, who may look at it afterwards.
std::unique_ptr<File> OpenMemoryFile(std::shared_ptr<std::vector<std::uint8_t>> bytes);

// Forwards to `inner` until `writesBeforeFailure` calls of WriteAt or Flush have been made; that call and all
// later ones throw. When `tornBytes` is not 0, the failing WriteAt still writes that many bytes first (a torn
// write).
std::unique_ptr<File> OpenFailingFile(std::unique_ptr<File> inner, std::size_t writesBeforeFailure,
                                      std::size_t tornBytes = 0);

// Of the file at a path. Throws Error (code::kGeneric) when there is none.
FileStamp StampOf(const std::filesystem::path& path);

}  // namespace kestrelon::jet
