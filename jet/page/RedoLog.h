#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "jet/base/File.h"

namespace kestrelon::jet {

// Two files beside a database, written in turn, each of which holds one record: the pages that a write
// changes in place. A write with a log goes
//
//   1. pages that the database does not use yet, into the database; flush
//   2. the record, into the file that holds the older one; flush. From here on the write has taken place.
//   3. the pages in use, into the database; flush
//
// and no write begins before the third step of the one before it is done. So the record that is overwritten
// is never needed, and after a stop only the newest whole record can be. Writing its pages again is harmless
// whenever no later record was begun:
// - Step 3 was cut off: that is what it is for.
// - Step 3 was done: the same bytes are written. That the next write may have been in its first step makes no
//   difference, as that touches pages only that are free in the state which the record leads to, and a record
//   has no pages that are free afterwards, nor any that were free before: its pages and those are distinct.
//   (Pages that it freed may be taken by the next write; it does not hold them. Pages that it holds and that
//   the next write frees are taken by the one after that at the earliest.)
// Where the next record was begun, its pages may already be in the database, and it may be the log that lost
// something since, rather than the write that was cut off. Hence a record is written again only while the
// other file still begins with the record before it.
//
//   OFFSET  SIZE  MEANING                      All integers little-endian
//   0       8     "KstRedo", 1                 the last byte is the version
//   8       8     number of the record, one more than that of the one before
//   16      4     p: pages of the database file after the write; 0: a record without pages that says nothing
//   20      4     m: bytes of the note
//   24      4     n: pages in the record
//   28      4     0
//   32      8     hash of all that follows the header
//   40      8     hash of the header up to here
//   48      m     note
//   ...     4n    page numbers, ascending
//   ...     4096n their bytes
//
// What follows in the file is left of longer records.
class RedoLog {
 public:
  using Note = std::vector<std::uint8_t>;
  // Opens one of the two files (0 or 1), which it makes where there is none.
  using Opener = std::function<std::unique_ptr<File>(std::size_t)>;
  static constexpr std::size_t kMostNoteBytes = 64 * 1024;

  explicit RedoLog(Opener opener) : opener_(std::move(opener)) {}

  // Finds out what the files say, and makes them where there are none. The other functions do so by
  // themselves. Does nothing while they are open.
  void Open();
  // What the next record says. Until it is first set, that of the records found in the files.
  void SetNote(Note note);
  bool NoteChanged() const { return noteChanged_; }
  // Back to the note of the last record.
  void DropNote();

  // To be called before a write's first step, with the number of pages of the file on disk. Sees to it that
  // there is a newest record, of this connection, and where `grows` that it tells that number: pages past the
  // end that no map reaches could not be told from pages in use, so recovery cuts them off.
  void Prepare(std::uint32_t pageCount, bool grows);
  // The second step. `pages` ascending; `bytesOf` gives the bytes of one. After a failure the record is made
  // unreadable; where even that fails, InDoubt().
  void Append(std::uint32_t pageCount, std::span<const std::uint32_t> pages,
              const std::function<const std::uint8_t*(std::uint32_t)>& bytesOf);
  // The third step is done.
  void Done() { pending_ = false; }
  // Whether the third step of the newest record's write has not been done.
  bool Pending() const { return pending_; }
  // Does it, from the record.
  void Finish(File& database);
  // Whether a record of a failed write may be whole.
  bool InDoubt() const { return inDoubt_; }

  // Another file has taken the place of the database, or the same one is read anew.
  void Restart();
  // Leaves two records without pages, which say nothing of any file.
  void Checkpoint();
  // Lets go of the files, which are open; tells which of them (0 or 1) has the older record.
  std::size_t Close();

 private:
  void Settle();
  void Write(std::uint32_t pageCount, const Note& note, std::span<const std::uint32_t> pages,
             const std::function<const std::uint8_t*(std::uint32_t)>& bytesOf);

  Opener opener_;
  std::array<std::unique_ptr<File>, 2> files_;
  std::size_t newest_ = 1;
  std::uint64_t sequence_ = 0;  // of the newest record
  std::uint32_t pageCount_ = 0;
  Note note_, writtenNote_;
  bool noteSet_ = false, noteChanged_ = false;
  bool begun_ = false, pending_ = false, inDoubt_ = false;
};

// Brings a database to the state that the newest whole record leads to, and returns its note; nullopt where
// no record is whole, or where a write without a log was cut off in the database, which no record of a log
// can mend. Either file may be null. `openDatabase` is called only when there is something to do.
std::optional<RedoLog::Note> Recover(const File* first, const File* second,
                                     const std::function<std::unique_ptr<File>()>& openDatabase);

}  // namespace kestrelon::jet
