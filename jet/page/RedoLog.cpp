#include "jet/page/RedoLog.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "jet/base/Bytes.h"
#include "jet/page/GlobalMap.h"
#include "jet/page/Header.h"
#include "jet/page/Pager.h"

namespace kestrelon::jet {
namespace {

constexpr std::array<std::uint8_t, 8> kMagic = {'K', 's', 't', 'R', 'e', 'd', 'o', 1};
constexpr std::size_t kHeaderBytes = 48, kHashed = 40;
constexpr std::size_t kPiece = 1u << 20;                      // read and written at a time
constexpr std::uint64_t kKeptBytes = std::uint64_t{1} << 20;  // a file does not stay longer without need

// Of a stream of bytes, whatever the pieces it comes in. Every step is reversible, so that no change of a
// single word goes unseen.
class Hash {
 public:
  explicit Hash(std::uint64_t seed) : state_(seed ^ 0x9E3779B97F4A7C15u) {}
  void Add(std::span<const std::uint8_t> bytes) {
    size_ += bytes.size();
    while (!bytes.empty() && held_ != 0) TakeByte(bytes);
    for (; bytes.size() >= 8; bytes = bytes.subspan(8)) AddWord(Get64(bytes.data()));
    while (!bytes.empty()) TakeByte(bytes);
  }
  std::uint64_t Value() const {
    Hash end = *this;
    end.AddWord(word_);
    end.AddWord(size_);
    return end.state_;
  }

 private:
  void TakeByte(std::span<const std::uint8_t>& bytes) {
    word_ |= std::uint64_t{bytes[0]} << 8 * held_;
    bytes = bytes.subspan(1);
    if (++held_ < 8) return;
    AddWord(word_);
    word_ = 0;
    held_ = 0;
  }
  void AddWord(std::uint64_t word) {
    state_ = (state_ ^ word) * 0xD6E8FEB86659FD93u;
    state_ ^= state_ >> 32;
  }

  std::uint64_t state_;
  std::uint64_t word_ = 0, size_ = 0;
  unsigned held_ = 0;
};

struct Record {
  std::uint64_t sequence = 0;
  std::uint32_t pageCount = 0, noteBytes = 0, pages = 0;
  std::uint64_t hash = 0;

  std::uint64_t NumbersAt() const { return kHeaderBytes + std::uint64_t{noteBytes}; }
  std::uint64_t ImagesAt() const { return NumbersAt() + std::uint64_t{4} * pages; }
  std::uint64_t End() const { return ImagesAt() + std::uint64_t{kPageSize} * pages; }
};

std::array<std::uint8_t, kHeaderBytes> HeaderOf(const Record& record) {
  std::array<std::uint8_t, kHeaderBytes> header{};
  std::copy(kMagic.begin(), kMagic.end(), header.begin());
  Put64(header.data() + 8, record.sequence);
  Put32(header.data() + 16, record.pageCount);
  Put32(header.data() + 20, record.noteBytes);
  Put32(header.data() + 24, record.pages);
  Put64(header.data() + 32, record.hash);
  Hash hash(0);
  hash.Add(std::span(header).first(kHashed));
  Put64(header.data() + kHashed, hash.Value());
  return header;
}

// The record that a file begins with; nothing is known of its body yet.
std::optional<Record> ReadHeader(const File& file) {
  if (file.Size() < kHeaderBytes) return std::nullopt;
  std::array<std::uint8_t, kHeaderBytes> header;
  file.ReadAt(0, header);
  Record record;
  record.sequence = Get64(header.data() + 8);
  record.pageCount = Get32(header.data() + 16);
  record.noteBytes = Get32(header.data() + 20);
  record.pages = Get32(header.data() + 24);
  record.hash = Get64(header.data() + 32);
  if (header != HeaderOf(record)) return std::nullopt;
  return record;
}

RedoLog::Note ReadNote(const File& file, const Record& record) {
  RedoLog::Note note(record.noteBytes);
  file.ReadAt(kHeaderBytes, note);
  return note;
}

std::vector<std::uint32_t> ReadNumbers(const File& file, const Record& record) {
  std::vector<std::uint8_t> bytes(std::size_t{4} * record.pages);
  file.ReadAt(record.NumbersAt(), bytes);
  std::vector<std::uint32_t> numbers(record.pages);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = Get32(bytes.data() + 4 * i);
  return numbers;
}

bool IsWhole(const File& file, const Record& record) {
  if (record.noteBytes > RedoLog::kMostNoteBytes || record.pageCount > Pager::kMostPages ||
      record.pages > record.pageCount || record.End() > file.Size())
    return false;
  Hash hash(record.sequence);
  std::vector<std::uint8_t> bytes;
  for (std::uint64_t at = kHeaderBytes; at < record.End(); at += bytes.size()) {
    bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, record.End() - at)));
    file.ReadAt(at, bytes);
    hash.Add(bytes);
  }
  if (hash.Value() != record.hash) return false;
  const std::vector<std::uint32_t> numbers = ReadNumbers(file, record);
  return std::all_of(numbers.begin(), numbers.end(),
                     [&record](std::uint32_t page) { return page < record.pageCount; });
}

void WritePages(const File& file, const Record& record, File& database) {
  const std::vector<std::uint32_t> numbers = ReadNumbers(file, record);
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < numbers.size();) {
    std::size_t next = i + 1;
    while (next < numbers.size() && numbers[next] == numbers[next - 1] + 1 && next - i < kPiece / kPageSize)
      ++next;
    bytes.resize((next - i) * kPageSize);
    file.ReadAt(record.ImagesAt() + std::uint64_t{i} * kPageSize, bytes);
    database.WriteAt(std::uint64_t{numbers[i]} * kPageSize, bytes);
    i = next;
  }
  database.Flush();
}

// What the two files say together.
struct Newest {
  std::size_t file = 0;
  Record record;
  bool before = false;  // whether the other file begins with the record before it
};

std::optional<Newest> FindNewest(const std::array<const File*, 2>& files) {
  std::array<std::optional<Record>, 2> records;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (files[i] != nullptr) records[i] = ReadHeader(*files[i]);
  }
  std::optional<Newest> newest;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (!records[i] || !IsWhole(*files[i], *records[i])) continue;
    if (newest && newest->record.sequence >= records[i]->sequence) continue;
    const std::optional<Record>& other = records[1 - i];
    newest = {i, *records[i], other && other->sequence + 1 == records[i]->sequence};
  }
  return newest;
}

// Cuts off what the first step of a write that did not take place left behind the end. Where the map of free
// pages reaches, such pages are free in it; and where it does not, there are none of a write that took place,
// even if the log has lost its record.
void CutOff(std::unique_ptr<File>& database, std::uint32_t pageCount) {
  if (pageCount == 0) return;
  std::uint64_t reach = 0;
  Pager pager(std::move(database));
  try {
    reach = global_map::Reach(pager);
  } catch (const CorruptFile&) {
    reach = Pager::kMostPages;  // opening it will tell
  }
  database = pager.DetachFile();
  const std::uint64_t end = std::max<std::uint64_t>(pageCount, reach) * kPageSize;
  if (database->Size() <= end) return;
  database->Resize(end);
  database->Flush();
}

}  // namespace

void RedoLog::SetNote(Note note) {
  if (note.size() > kMostNoteBytes) throw Error(code::kGeneric, u"The note of a redo log is too long.");
  noteChanged_ = !files_[0] || note != writtenNote_;
  noteSet_ = true;
  note_ = std::move(note);
}

void RedoLog::DropNote() {
  note_ = writtenNote_;
  noteChanged_ = false;
  noteSet_ = files_[0] != nullptr;
}

void RedoLog::Open() {
  if (files_[0]) return;
  std::unique_ptr<File> first = opener_(0), second = opener_(1);
  if (const std::optional<Newest> newest = FindNewest({first.get(), second.get()})) {
    newest_ = newest->file;
    sequence_ = newest->record.sequence;
    pageCount_ = newest->record.pageCount;
    writtenNote_ = ReadNote(newest->file == 0 ? *first : *second, newest->record);
  } else {
    newest_ = 1;
    sequence_ = 0;
    pageCount_ = 0;
    writtenNote_.clear();
  }
  if (!noteSet_) note_ = writtenNote_;
  noteSet_ = true;
  noteChanged_ = note_ != writtenNote_;
  begun_ = false;
  files_ = {std::move(first), std::move(second)};
}

// Makes sure that no record of a failed write comes back.
void RedoLog::Settle() {
  if (!inDoubt_) return;
  files_[1 - newest_]->Resize(0);
  files_[1 - newest_]->Flush();
  inDoubt_ = false;
}

void RedoLog::Prepare(std::uint32_t pageCount, bool grows) {
  Open();
  Settle();
  if (begun_ && !(grows && pageCount_ != pageCount)) return;
  const Note note = writtenNote_;
  Write(pageCount, note, {}, nullptr);
  begun_ = true;
}

void RedoLog::Append(std::uint32_t pageCount, std::span<const std::uint32_t> pages,
                     const std::function<const std::uint8_t*(std::uint32_t)>& bytesOf) {
  Write(pageCount, note_, pages, bytesOf);
  noteChanged_ = false;
  pending_ = !pages.empty();
}

void RedoLog::Write(std::uint32_t pageCount, const Note& note, std::span<const std::uint32_t> pages,
                    const std::function<const std::uint8_t*(std::uint32_t)>& bytesOf) {
  File& file = *files_[1 - newest_];
  Record record{sequence_ + 1, pageCount, static_cast<std::uint32_t>(note.size()),
                static_cast<std::uint32_t>(pages.size()), 0};
  try {
    if (const std::uint64_t size = file.Size(); size > kKeptBytes && size > record.End())
      file.Resize(std::max(kKeptBytes, record.End()));
    Hash hash(record.sequence);
    std::vector<std::uint8_t> bytes(kHeaderBytes);
    std::uint64_t at = 0;
    const auto add = [&](std::span<const std::uint8_t> more) {
      hash.Add(more);
      bytes.insert(bytes.end(), more.begin(), more.end());
      if (bytes.size() < kPiece) return;
      file.WriteAt(at, bytes);
      at += bytes.size();
      bytes.clear();
    };
    bytes.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(record.End(), kPiece + kPageSize)));
    add(note);
    for (const std::uint32_t page : pages) {
      std::array<std::uint8_t, 4> number;
      Put32(number.data(), page);
      add(number);
    }
    for (const std::uint32_t page : pages) add({bytesOf(page), kPageSize});
    record.hash = hash.Value();
    const auto header = HeaderOf(record);
    if (at == 0) {
      std::copy(header.begin(), header.end(), bytes.begin());
    } else {
      file.WriteAt(0, header);
    }
    if (!bytes.empty()) file.WriteAt(at, bytes);
    file.Flush();
  } catch (...) {
    inDoubt_ = true;
    try {
      Settle();
    } catch (...) {
      // The first failure is the one to tell.
    }
    throw;
  }
  newest_ = 1 - newest_;
  sequence_ = record.sequence;
  pageCount_ = pageCount;
  writtenNote_ = note;
}

void RedoLog::Finish(File& database) {
  const File& file = *files_[newest_];
  const std::optional<Record> record = ReadHeader(file);
  if (!record || record->sequence != sequence_ || !IsWhole(file, *record))
    throw Error(code::kGeneric, u"The redo log was changed by another program.");
  WritePages(file, *record, database);
  Done();
}

void RedoLog::Restart() {
  begun_ = false;
  pending_ = false;
}

void RedoLog::Checkpoint() {
  Open();
  Settle();
  Write(0, note_, {}, nullptr);
  Write(0, note_, {}, nullptr);
  noteChanged_ = false;
  pending_ = false;
  begun_ = true;
}

std::size_t RedoLog::Close() {
  const std::size_t older = 1 - newest_;
  files_ = {};
  begun_ = pending_ = inDoubt_ = false;
  DropNote();
  return older;
}

std::optional<RedoLog::Note> Recover(const File* first, const File* second,
                                     const std::function<std::unique_ptr<File>()>& openDatabase) {
  const std::array<const File*, 2> files = {first, second};
  const std::optional<Newest> newest = FindNewest(files);
  if (!newest) return std::nullopt;
  const File& file = *files[newest->file];
  const Record& record = newest->record;
  if (record.pageCount != 0) {
    std::unique_ptr<File> database = openDatabase();
    std::array<std::uint8_t, kPageSize> header;
    if (database->Size() < 2 * kPageSize) return std::nullopt;
    database->ReadAt(0, header);
    if (header::WriteUnfinished(header.data())) return std::nullopt;
    if (newest->before && record.pages != 0) WritePages(file, record, *database);
    CutOff(database, record.pageCount);
  }
  return ReadNote(file, record);
}

}  // namespace kestrelon::jet
