#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "jet/base/Bytes.h"
#include "jet/base/File.h"
#include "jet/page/RedoLog.h"

namespace kestrelon::jet {

// What the first byte of a page says.
namespace page_type {
inline constexpr std::uint8_t kHeader = 0x00, kData = 0x01, kDefinition = 0x02, kIndexNode = 0x03,
                              kIndexLeaf = 0x04, kMapBits = 0x05;
}

// The pages of one file, kept in memory once read, and which of them are free.
//
// Pages given back since the last Flush() are not handed out again before the next one: until then the file
// on disk still refers to them, and a write that stops half-way must find them as they were.
class Pager {
 public:
  static constexpr std::uint32_t kGlobalMapPage = 1;
  static constexpr std::uint32_t kMostPages = 1u << 19;  // 2 GiB, the format's limit

  // An existing file; the pages are read when they are first asked for. LoadFreePages() must follow before
  // the first allocation.
  explicit Pager(std::unique_ptr<File> file);
  // A new image: page 0 zeroed, page 1 with an empty global map, both dirty. Written by WriteAll().
  Pager();

  std::uint32_t PageCount() const { return pageCount_; }

  // The bytes of a page. Throws CorruptFile when the file has no such page.
  const std::uint8_t* Read(std::uint32_t page) const {
    if (page >= pageCount_) ThrowCorrupt("a page past the end of the file is named", page);
    const auto& slab = slabs_[page / kSlabPages];
    if (!slab) Load(page / kSlabPages);
    return slab.get() + page % kSlabPages * kPageSize;
  }
  // The same for changing them: the page becomes dirty, and inside a transaction its old state is kept.
  std::uint8_t* Write(std::uint32_t page) {
    auto* bytes = const_cast<std::uint8_t*>(Read(page));
    if (states_[page].epoch != epoch_) Touch(page, bytes);
    return bytes;
  }

  // A free page, zeroed: the lowest one above `above`, else a new one at the end of the file.
  std::uint32_t Allocate(std::uint32_t above = 0);
  // Gives a page back; it can be allocated again after the next Flush(), or at once when it was new since the
  // last.
  void Free(std::uint32_t page);
  // A page at the end of the file for the global map itself, which is in no map.
  std::uint32_t AppendMapPage();
  // What the global map says; pages past its end count as free.
  bool IsFree(std::uint32_t page) const;
  // Reads the global map.
  void LoadFreePages();

  // One bit per page for the layer above: "this page's structure has been checked since it was read". Lost
  // when the page is reused or rolled back.
  bool Checked(std::uint32_t page) const { return (states_[page].flags & kChecked) != 0; }
  void SetChecked(std::uint32_t page) const { states_[page].flags |= kChecked; }
  // A number per page for the layer above: the set of pages (told by its owned map, which is never 0) that
  // has the page in its list of pages with room. Lost like the bit; a page that changed hands is in no list
  // of its old owner.
  bool Open(std::uint32_t page, std::uint32_t set) const { return states_[page].openFor == set; }
  void SetOpen(std::uint32_t page, std::uint32_t set) { states_[page].openFor = set; }
  void SetFull(std::uint32_t page) { states_[page].openFor = 0; }

  void Begin();
  void Commit();
  // Puts every page back as it was at Begin(). Does not throw.
  void Rollback();
  bool InTransaction() const { return inTransaction_; }

  // Writes go through this log from now on; null: no log.
  void SetLog(std::shared_ptr<RedoLog> log) { log_ = std::move(log); }

  bool Dirty() const { return dirtyCount_ != 0 || Unfinished(); }
  // Writes the dirty pages to the file, and the log's note where it changed. Freed pages are not written at
  // all. After a failure it can be called again.
  //
  // Without a log: pages that the file on disk does not use yet, and the mark "being written"; flush; the
  // pages in use; flush; the old value in place of the mark; flush. So a stop at any point leaves the old
  // content, the new content or the mark. (The first two need no order among them: until the pages in use are
  // written, the content is the old one with the mark or without. Only where the global map has to grow is
  // the mark flushed before the new pages.)
  //
  // With a log: see there. A stop at any point leaves what Recover() makes the old content or the new one of.
  void Flush();
  // Whether a Flush() that failed may have left a file that is not whole, or longer than its map: what the
  // file should hold is here only, or in the log.
  bool Unfinished() const {
    return unfinished_ || overlong_ || (log_ && (log_->Pending() || log_->InDoubt()));
  }
  // Writes the whole image of a new file, or what Spill() has left of it. The pages with the header come
  // last: what a stop leaves is no database.
  void WriteAll(File& file);
  // Writes pages of a new image, from the page `first` on, ahead of WriteAll() to the same file, which must
  // live until then, and lets go of their memory; they are read again when needed. No pointer that Read()
  // gave may be in use.
  void Spill(File& file, std::uint32_t first);

  // Lets go of the memory of pages that the file holds unchanged; they are read again when needed. No pointer
  // that Read() gave may be in use.
  void ReleaseClean();
  // Pages that memory was taken for since the last Spill() or ReleaseClean().
  std::uint32_t PagesTaken() const { return pagesTaken_; }

  std::unique_ptr<File> DetachFile() { return std::move(file_); }
  void AttachFile(std::unique_ptr<File> file) { file_ = std::move(file); }

 private:
  static constexpr std::uint32_t kSlabPages = 16;  // read, kept and written together: 64 KiB
  enum : std::uint8_t { kDirty = 1, kNew = 2, kChecked = 4, kFreed = 16 };

  struct State {
    std::uint64_t epoch = 0;
    std::uint32_t openFor = 0;
    std::uint8_t flags = 0;
  };
  using Image = std::array<std::uint8_t, kPageSize>;
  using Slab = std::unique_ptr<std::uint8_t[]>;
  struct Before {
    std::uint32_t page;
    std::uint8_t flags;
    std::unique_ptr<Image> bytes;
  };

  Slab TakeSlab() const;
  void Release(std::size_t slab);
  bool AnyDirty(std::size_t slab) const;
  void WriteSlab(File& file, std::size_t slab);
  void Load(std::size_t slab) const;
  void Touch(std::uint32_t page, const std::uint8_t* bytes);
  std::uint32_t Append();
  // Ascending: those that the file on disk does not use, or those that it does.
  std::vector<std::uint32_t> DirtyPages(bool fresh) const;
  void WritePages(File& file, const std::vector<std::uint32_t>& pages) const;
  bool FreeBit(std::uint32_t page) const {
    return page / 64 < free_.size() && (free_[page / 64] >> page % 64 & 1) != 0;
  }
  void SetFreeBit(std::uint32_t page, bool free);
  bool AnythingToWrite() const {
    return dirtyCount_ != 0 || !freedRecently_.empty() || unfinished_ || (log_ && log_->NoteChanged());
  }
  void FlushWithMark(const std::vector<std::uint32_t>& fresh, const std::vector<std::uint32_t>& inUse);
  void FlushWithLog(const std::vector<std::uint32_t>& fresh, const std::vector<std::uint32_t>& inUse);
  void Written();
  void WriteMark();
  void WriteQuietPair();

  std::unique_ptr<File> file_;
  const File* spilledTo_ = nullptr;
  std::uint32_t pageCount_ = 0;
  mutable std::vector<Slab> slabs_;
  mutable std::vector<Slab> spareSlabs_;  // released; taking them again is cheaper than new memory
  mutable std::uint32_t pagesTaken_ = 0;
  mutable std::vector<State> states_;
  std::vector<std::uint32_t> dirty_;  // may name a page twice or one that is clean again
  std::size_t dirtyCount_ = 0;

  std::vector<std::uint64_t> free_;           // pages that may be handed out now
  std::vector<std::uint32_t> freedRecently_;  // free, but still in use by the file on disk
  std::uint32_t mapReach_ = 0;                // of the global map in the file on disk
  std::uint32_t pagesOnDisk_ = 0;             // in the state that the file on disk is in
  std::shared_ptr<RedoLog> log_;
  bool unfinished_ = false;  // the file may be marked
  bool overlong_ = false;    // there may be pages behind those on disk that its map does not reach

  std::uint64_t epoch_ =
      1;  // counts transactions; of 32 bits it would come round, and a page would pass for kept
  bool inTransaction_ = false;
  std::vector<Before> before_;
  std::vector<std::unique_ptr<Image>> spareImages_;
  std::vector<std::pair<std::uint32_t, bool>> freeBitChanges_;  // page, and its bit before
  std::uint32_t pageCountAtBegin_ = 0;
  std::size_t freedAtBegin_ = 0;
};

}  // namespace kestrelon::jet
