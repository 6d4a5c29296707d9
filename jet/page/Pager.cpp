#include "jet/page/Pager.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "jet/page/GlobalMap.h"
#include "jet/page/Header.h"

namespace kestrelon::jet {

Pager::Pager(std::unique_ptr<File> file) : file_(std::move(file)) {
  // A last page that was written only in part is nobody's yet: new pages are written before anything names
  // them.
  const std::uint64_t pages = file_->Size() / kPageSize;
  if (pages < 2) throw CorruptFile(u"Unrecognized database format: the file is too short.");
  if (pages > kMostPages) throw CorruptFile(u"Unrecognized database format: the file is longer than 2 GB.");
  pageCount_ = pagesOnDisk_ = static_cast<std::uint32_t>(pages);
  slabs_.resize((pageCount_ + kSlabPages - 1) / kSlabPages);
  states_.resize(pageCount_);
  free_.resize(pageCount_ / 64 + 1);
}

Pager::Pager() {
  free_.resize(1);
  for (std::uint32_t page = 0; page <= kGlobalMapPage; ++page) {
    ++pageCount_;
    slabs_.resize(1);
    states_.resize(pageCount_);
    Touch(page, nullptr);
    states_[page].flags |= kNew;
    if (!slabs_[0]) {
      slabs_[0] = TakeSlab();
      std::memset(slabs_[0].get(), 0, kSlabPages * kPageSize);
    }
  }
  global_map::Format(Write(kGlobalMapPage), pageCount_);
}

// Memory for a slab, with whatever it holds.
Pager::Slab Pager::TakeSlab() const {
  pagesTaken_ += kSlabPages;
  if (spareSlabs_.empty()) return std::make_unique_for_overwrite<std::uint8_t[]>(kSlabPages * kPageSize);
  Slab slab = std::move(spareSlabs_.back());
  spareSlabs_.pop_back();
  return slab;
}

void Pager::Release(std::size_t slab) {
  constexpr std::size_t kMostSpare = 64;
  if (spareSlabs_.size() < kMostSpare) spareSlabs_.push_back(std::move(slabs_[slab]));
  slabs_[slab].reset();
  const auto first = static_cast<std::uint32_t>(slab) * kSlabPages;
  for (std::uint32_t page = first; page < std::min(first + kSlabPages, pageCount_); ++page) {
    states_[page].flags = static_cast<std::uint8_t>(states_[page].flags & ~kChecked);
  }
}

bool Pager::AnyDirty(std::size_t slab) const {
  const auto first = static_cast<std::uint32_t>(slab) * kSlabPages;
  for (std::uint32_t page = first; page < std::min(first + kSlabPages, pageCount_); ++page) {
    if ((states_[page].flags & kDirty) != 0) return true;
  }
  return false;
}

void Pager::Load(std::size_t slab) const {
  const File* file = file_ ? file_.get() : spilledTo_;
  if (file == nullptr)
    throw Error(code::kObjectClosed, u"Operation is not allowed when the object is closed.");
  Slab bytes = TakeSlab();
  const std::uint64_t offset = std::uint64_t{slab} * kSlabPages * kPageSize;
  std::size_t inFile = 0;
  if (const std::uint64_t size = file->Size(); size > offset) {
    inFile = static_cast<std::size_t>(std::min<std::uint64_t>(size - offset, kSlabPages * kPageSize));
    file->ReadAt(offset, {bytes.get(), inFile});
  }
  std::memset(bytes.get() + inFile, 0, kSlabPages * kPageSize - inFile);
  slabs_[slab] = std::move(bytes);
}

void Pager::Touch(std::uint32_t page, const std::uint8_t* bytes) {
  State& state = states_[page];
  if (inTransaction_ && page < pageCountAtBegin_) {
    std::unique_ptr<Image> image;
    if (spareImages_.empty()) {
      image = std::make_unique<Image>();
    } else {
      image = std::move(spareImages_.back());
      spareImages_.pop_back();
    }
    std::memcpy(image->data(), bytes, kPageSize);
    before_.push_back({page, state.flags, std::move(image)});
  }
  if ((state.flags & kDirty) == 0) {
    dirty_.push_back(page);
    state.flags |= kDirty;
    ++dirtyCount_;
  }
  state.epoch = epoch_;
}

void Pager::SetFreeBit(std::uint32_t page, bool free) {
  if (page / 64 >= free_.size()) free_.resize(page / 64 + 1);
  if (inTransaction_) freeBitChanges_.emplace_back(page, FreeBit(page));
  const std::uint64_t bit = std::uint64_t{1} << page % 64;
  free_[page / 64] = free ? free_[page / 64] | bit : free_[page / 64] & ~bit;
}

std::uint32_t Pager::Append() {
  if (pageCount_ >= kMostPages)
    throw Error(code::kGeneric, u"The database has reached its largest size of 2 GB.");
  const std::uint32_t page = pageCount_;
  if (page / kSlabPages >= slabs_.size()) {
    slabs_.push_back(TakeSlab());
  }
  states_.resize(page + 1);
  ++pageCount_;
  std::uint8_t* bytes = Write(page);
  states_[page].flags |= kNew;
  std::memset(bytes, 0, kPageSize);
  return page;
}

std::uint32_t Pager::Allocate(std::uint32_t above) {
  std::uint32_t page = above + 1;
  while (page < pageCount_) {
    const std::uint64_t word = page / 64 < free_.size() ? free_[page / 64] >> page % 64 : 0;
    if (word != 0) {
      page += static_cast<std::uint32_t>(std::countr_zero(word));
      break;
    }
    page = (page / 64 + 1) * 64;
  }
  if (page < pageCount_) {
    global_map::Set(*this, page, false);
    SetFreeBit(page, false);
    std::uint8_t* bytes = Write(page);
    std::memset(bytes, 0, kPageSize);
    states_[page].flags = kDirty | kNew;
    return page;
  }
  page = Append();
  global_map::Set(*this, page, false);
  return page;
}

std::uint32_t Pager::AppendMapPage() { return Append(); }

void Pager::Free(std::uint32_t page) {
  if (page <= kGlobalMapPage || page >= pageCount_)
    ThrowCorrupt("a page that cannot be free is given back", page);
  State& state = states_[page];
  if ((state.flags & kFreed) != 0 || FreeBit(page)) ThrowCorrupt("a page is given back twice", page);
  if ((state.flags & kNew) != 0) {
    global_map::Set(*this, page, true);
    SetFreeBit(page, true);
  } else {
    state.flags |= kFreed;
    freedRecently_.push_back(page);
  }
  state.flags = static_cast<std::uint8_t>(state.flags & ~kChecked);
  state.openFor = 0;
}

bool Pager::IsFree(std::uint32_t page) const {
  return page >= pageCount_ || FreeBit(page) || (states_[page].flags & kFreed) != 0;
}

void Pager::LoadFreePages() {
  std::fill(free_.begin(), free_.end(), 0);
  free_.resize(pageCount_ / 64 + 1);
  for (const std::uint32_t page : global_map::FreePages(*this)) {
    if ((states_[page].flags & kFreed) == 0) SetFreeBit(page, true);
  }
  mapReach_ = global_map::Reach(*this);
}

void Pager::Begin() {
  inTransaction_ = true;
  pageCountAtBegin_ = pageCount_;
  freedAtBegin_ = freedRecently_.size();
  ++epoch_;
}

void Pager::Commit() {
  constexpr std::size_t kSpare = 64;  // enough for the usual statement; a large one gives its memory back
  for (Before& before : before_) {
    if (spareImages_.size() < kSpare) spareImages_.push_back(std::move(before.bytes));
  }
  before_.clear();
  freeBitChanges_.clear();
  inTransaction_ = false;
}

void Pager::Rollback() {
  inTransaction_ = false;
  for (std::size_t i = freeBitChanges_.size(); i-- > 0;)
    SetFreeBit(freeBitChanges_[i].first, freeBitChanges_[i].second);
  for (std::size_t i = freedAtBegin_; i < freedRecently_.size(); ++i) {
    State& state = states_[freedRecently_[i]];
    state.flags = static_cast<std::uint8_t>(state.flags & ~kFreed);
  }
  freedRecently_.resize(freedAtBegin_);
  for (std::uint32_t page = pageCountAtBegin_; page < pageCount_; ++page) {
    if ((states_[page].flags & kDirty) != 0) --dirtyCount_;
  }
  pageCount_ = pageCountAtBegin_;
  states_.resize(pageCount_);
  for (const Before& before : before_) {
    std::memcpy(const_cast<std::uint8_t*>(Read(before.page)), before.bytes->data(), kPageSize);
    State& state = states_[before.page];
    if ((state.flags & kDirty) != 0 && (before.flags & kDirty) == 0) --dirtyCount_;
    state.flags = static_cast<std::uint8_t>(before.flags & ~kChecked);
    state.openFor = 0;
  }
  Commit();
  ++epoch_;
}

std::vector<std::uint32_t> Pager::DirtyPages(bool fresh) const {
  std::vector<std::uint32_t> pages;
  for (const std::uint32_t page : dirty_) {
    if (page >= pageCount_ || (states_[page].flags & kDirty) == 0 || IsFree(page)) continue;
    if (((states_[page].flags & kNew) != 0) == fresh) pages.push_back(page);
  }
  std::sort(pages.begin(), pages.end());
  pages.erase(std::unique(pages.begin(), pages.end()), pages.end());
  return pages;
}

void Pager::WritePages(File& file, const std::vector<std::uint32_t>& pages) const {
  for (std::size_t i = 0; i < pages.size();) {
    std::size_t next = i + 1;
    while (next < pages.size() && pages[next] == pages[next - 1] + 1 && pages[next] % kSlabPages != 0) ++next;
    file.WriteAt(std::uint64_t{pages[i]} * kPageSize, {Read(pages[i]), (next - i) * kPageSize});
    i = next;
  }
}

// Two bytes of one sector: no stop leaves one of them and not the other.
void Pager::WriteQuietPair() {
  file_->WriteAt(header::kCommitPair, {Read(0) + header::kCommitPair, header::kCommitPairBytes});
}

void Pager::WriteMark() {
  Read(0);  // while the file still says what to put back
  try {
    file_->WriteAt(header::kCommitPair, header::kUnfinished);
    file_->Flush();
  } catch (...) {
    if (unfinished_) throw;
    // Nothing has changed in place, so the file is still the old one.
    unfinished_ = true;
    try {
      WriteQuietPair();
      unfinished_ = false;
    } catch (...) {
      // The first failure is the one to tell.
    }
    throw;
  }
  unfinished_ = true;
}

void Pager::Flush() {
  if (!AnythingToWrite() && !Unfinished()) return;
  if (!file_) throw Error(code::kObjectClosed, u"Operation is not allowed when the object is closed.");
  if (log_ && log_->Pending()) log_->Finish(*file_);
  if (!AnythingToWrite()) return;
  // The map to be written has them free; they are not handed out before it is written.
  for (const std::uint32_t page : freedRecently_) global_map::Set(*this, page, true);
  const std::vector<std::uint32_t> fresh = DirtyPages(true), inUse = DirtyPages(false);
  // What the mark was set for is not in the log.
  if (!log_ || unfinished_) {
    FlushWithMark(fresh, inUse);
  } else {
    FlushWithLog(fresh, inUse);
  }
}

void Pager::FlushWithMark(const std::vector<std::uint32_t>& fresh, const std::vector<std::uint32_t>& inUse) {
  // Left behind by a stop, pages that the file's map does not reach could never be told from pages in use.
  if (!fresh.empty() && fresh.back() >= mapReach_) WriteMark();
  WritePages(*file_, fresh);
  WriteMark();
  WritePages(*file_, inUse);
  file_->Flush();
  WriteQuietPair();
  file_->Flush();
  unfinished_ = false;
  Written();
}

void Pager::FlushWithLog(const std::vector<std::uint32_t>& fresh, const std::vector<std::uint32_t>& inUse) {
  const bool grows = !fresh.empty() && fresh.back() >= mapReach_;
  log_->Prepare(pagesOnDisk_, grows);
  try {
    overlong_ = overlong_ || grows;
    if (!fresh.empty()) {
      WritePages(*file_, fresh);
      file_->Flush();
    }
    log_->Append(pageCount_, inUse, [this](std::uint32_t page) { return Read(page); });
  } catch (...) {
    // The file is still the old one, but for pages behind its end.
    try {
      if (overlong_ && !log_->InDoubt()) {
        file_->Resize(std::min(file_->Size(), std::uint64_t{pagesOnDisk_} * kPageSize));
        overlong_ = false;
      }
    } catch (...) {
      // The first failure is the one to tell.
    }
    throw;
  }
  Written();
  if (inUse.empty()) return;
  WritePages(*file_, inUse);
  file_->Flush();
  log_->Done();
}

// The file on disk, or the log, has everything now.
void Pager::Written() {
  overlong_ = false;
  for (const std::uint32_t page : freedRecently_) {
    states_[page].flags = static_cast<std::uint8_t>(states_[page].flags & ~kFreed);
    SetFreeBit(page, true);
  }
  freedRecently_.clear();
  for (const std::uint32_t page : dirty_) {
    if (page >= pageCount_) continue;
    states_[page].flags = static_cast<std::uint8_t>(states_[page].flags & ~(kDirty | kNew));
  }
  dirty_.clear();
  dirtyCount_ = 0;
  mapReach_ = global_map::Reach(*this);
  pagesOnDisk_ = pageCount_;
  ++epoch_;
}

void Pager::ReleaseClean() {
  pagesTaken_ = 0;
  if (!file_ || Unfinished()) return;  // the file may say less than the memory
  for (std::size_t slab = 0; slab < slabs_.size(); ++slab) {
    if (slabs_[slab] && !AnyDirty(slab)) Release(slab);
  }
}

void Pager::Spill(File& file, std::uint32_t first) {
  pagesTaken_ = 0;
  spilledTo_ = &file;
  // The last slab may still be filling.
  for (std::size_t slab = (first + kSlabPages - 1) / kSlabPages; slab + 1 < slabs_.size(); ++slab) {
    if (slab == 0 || !slabs_[slab]) continue;
    if (AnyDirty(slab)) WriteSlab(file, slab);
    Release(slab);
  }
}

void Pager::WriteSlab(File& file, std::size_t slab) {
  const auto first = static_cast<std::uint32_t>(slab) * kSlabPages;
  const std::uint32_t count = std::min(kSlabPages, pageCount_ - first);
  file.WriteAt(std::uint64_t{first} * kPageSize, {Read(first), count * kPageSize});
  for (std::uint32_t page = first; page < first + count; ++page) {
    State& state = states_[page];
    if ((state.flags & kDirty) != 0) --dirtyCount_;
    state.flags = static_cast<std::uint8_t>(state.flags & ~kDirty);
    state.epoch = 0;  // of no transaction: the next Write() notes it as dirty
  }
}

void Pager::WriteAll(File& file) {
  for (std::size_t slab = 1; slab < slabs_.size(); ++slab) {
    if (AnyDirty(slab)) WriteSlab(file, slab);
  }
  WriteSlab(file, 0);
  file.Flush();
}

}  // namespace kestrelon::jet
