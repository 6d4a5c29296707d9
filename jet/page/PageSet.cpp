#include "jet/page/PageSet.h"

#include <algorithm>

#include "jet/page/DataPage.h"

namespace kestrelon::jet {

PageSet::PageSet(Pager& pager, std::uint32_t ownedMap, std::uint32_t freeMap, std::uint32_t owner,
                 bool ascending)
    : pager_(&pager), ownedMap_(ownedMap), freeMap_(freeMap), owner_(owner), ascending_(ascending) {}

void PageSet::Load() const {
  pages_ = UsageMap(*pager_, ownedMap_).Pages();
  removed_.clear();
  open_.clear();
  for (const std::uint32_t page : pages_) pager_->SetFull(page);
  if (freeMap_ != 0) {
    for (const std::uint32_t page : UsageMap(*pager_, freeMap_).Pages()) {
      if (!std::binary_search(pages_.begin(), pages_.end(), page)) continue;
      open_.push_back(page);
      pager_->SetOpen(page, ownedMap_);
    }
  }
  loaded_ = true;
}

void PageSet::DropRemoved() const {
  if (removed_.empty()) return;
  std::sort(removed_.begin(), removed_.end());
  std::erase_if(
      pages_, [&](std::uint32_t page) { return std::binary_search(removed_.begin(), removed_.end(), page); });
  removed_.clear();
}

const std::vector<std::uint32_t>& PageSet::Pages() const {
  if (!loaded_) Load();
  DropRemoved();
  return pages_;
}

void PageSet::Check(std::uint32_t page, const std::uint8_t* bytes) const {
  data_page::Check(bytes, page);
  if (data_page::Owner(bytes) != owner_) ThrowCorrupt("a data page belongs to another owner", page);
  pager_->SetChecked(page);
}

std::uint32_t PageSet::PageWithRoom(std::size_t rowBytes) {
  if (!loaded_) Load();
  while (!open_.empty()) {
    const std::uint32_t page = open_.back();
    if (pager_->Open(page, ownedMap_) && data_page::HasRoomFor(Read(page), rowBytes)) return page;
    open_.pop_back();
    if (!pager_->Open(page, ownedMap_)) continue;
    pager_->SetFull(page);
    if (freeMap_ != 0) UsageMap(*pager_, freeMap_).Remove(page);
  }
  const std::uint32_t page = NewPage();
  Reopen(page);
  return page;
}

std::uint32_t PageSet::NewPage() {
  if (!loaded_) Load();
  DropRemoved();
  const std::uint32_t page = pager_->Allocate(ascending_ && !pages_.empty() ? pages_.back() : 0);
  data_page::Format(pager_->Write(page), owner_);
  pager_->SetChecked(page);
  UsageMap(*pager_, ownedMap_).Add(page);
  pages_.push_back(page);
  return page;
}

void PageSet::Reopen(std::uint32_t page) {
  if (!loaded_) Load();
  if (pager_->Open(page, ownedMap_)) return;
  if (freeMap_ != 0) UsageMap(*pager_, freeMap_).Add(page);
  pager_->SetOpen(page, ownedMap_);
  open_.push_back(page);
}

void PageSet::Remove(std::uint32_t page) {
  if (!loaded_) Load();
  UsageMap(*pager_, ownedMap_).Remove(page);
  if (freeMap_ != 0) UsageMap(*pager_, freeMap_).Remove(page);
  pager_->Free(page);
  removed_.push_back(page);
}

void PageSet::Clear() {
  for (const std::uint32_t page : Pages()) Read(page);  // no page of another owner is given back
  for (const std::uint32_t page : Pages()) pager_->Free(page);
  UsageMap(*pager_, ownedMap_).Clear();
  if (freeMap_ != 0) UsageMap(*pager_, freeMap_).Clear();
  Forget();
}

}  // namespace kestrelon::jet
