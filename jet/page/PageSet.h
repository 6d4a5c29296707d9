#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "jet/page/Pager.h"
#include "jet/page/UsageMap.h"

namespace kestrelon::jet {

// The data pages of one owner: the rows of a table, or the long values of one column. Mirrors the owner's two
// usage maps, "owned" and "has room", which are kept in step.
class PageSet {
 public:
  // owner     what the pages carry at offset 4: the table's definition page, or kLongValueOwner.
  // freeMap   0 where the table has none.
  // ascending new pages come after all others, so that rows keep their order of insertion.
  PageSet(Pager& pager, std::uint32_t ownedMap, std::uint32_t freeMap, std::uint32_t owner, bool ascending);

  // Ascending where so asked for, else in no order.
  const std::vector<std::uint32_t>& Pages() const;
  // The bytes of one of the pages; throws CorruptFile when it is no sound data page of this owner.
  const std::uint8_t* Read(std::uint32_t page) const {
    const std::uint8_t* bytes = pager_->Read(page);
    if (!pager_->Checked(page) || Get32(bytes + 4) != owner_) Check(page, bytes);
    return bytes;
  }
  std::uint8_t* Write(std::uint32_t page) {
    Read(page);
    return pager_->Write(page);
  }

  // A page with room for a further row of this size: the one that got room last, or a new one.
  std::uint32_t PageWithRoom(std::size_t rowBytes);
  // A new empty page that does not take part in PageWithRoom().
  std::uint32_t NewPage();
  // The page has room again.
  void Reopen(std::uint32_t page);
  // Gives one page back; gives all back.
  void Remove(std::uint32_t page);
  void Clear();
  // Forgets the mirror, after a rollback.
  void Forget() { loaded_ = false; }

  std::uint32_t OwnedMap() const { return ownedMap_; }
  std::uint32_t FreeMap() const { return freeMap_; }
  // Whether the page is in the owned map; for checking what a file says.
  bool Owns(std::uint32_t page) const { return UsageMap(*pager_, ownedMap_).Has(page); }

 private:
  void Load() const;
  void Check(std::uint32_t page, const std::uint8_t* bytes) const;
  void DropRemoved() const;

  Pager* pager_;
  std::uint32_t ownedMap_, freeMap_, owner_;
  bool ascending_;
  mutable bool loaded_ = false;
  mutable std::vector<std::uint32_t> pages_;
  mutable std::vector<std::uint32_t> removed_;  // still in pages_
  mutable std::vector<std::uint32_t> open_;     // a stack; an entry counts only while the pager marks it open
};

}  // namespace kestrelon::jet
