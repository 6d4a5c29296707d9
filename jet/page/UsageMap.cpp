#include "jet/page/UsageMap.h"

#include <cstring>

#include "jet/page/DataPage.h"
#include "jet/page/MapRow.h"

namespace kestrelon::jet {
namespace map_row {

Place Find(const Pager& pager, std::uint32_t pointer) {
  const std::uint32_t page = pointer >> 8, slot = pointer & 0xFF;
  const std::uint8_t* bytes = pager.Read(page);
  if (!pager.Checked(page)) {
    data_page::Check(bytes, page);
    pager.SetChecked(page);
  }
  if (bytes[0] != page_type::kData || slot >= data_page::SlotCount(bytes) ||
      (data_page::Slot(bytes, slot) & kSlotDeleted) != 0) {
    ThrowCorrupt("a usage map does not exist", page);
  }
  if (const std::uint32_t owner = data_page::Owner(bytes);
      owner != (page == Pager::kGlobalMapPage ? page : 0)) {
    ThrowCorrupt("a usage map lies on a page of something else", page);
  }
  Place place{page, data_page::Start(bytes, slot), 0};
  place.size = data_page::End(bytes, slot) - place.offset;
  const bool sound = place.size >= kBits && (bytes[place.offset] == kInline ||
                                             (bytes[place.offset] == kReferences && place.size >= kBytes));
  if (!sound) ThrowCorrupt("a usage map has no known form", page);
  return place;
}

std::uint32_t Entry(const Pager& pager, const Place& place, std::size_t k) {
  if (k >= kEntries) ThrowCorrupt("a page lies past the end of a usage map", place.page);
  const std::uint32_t page = Get32(pager.Read(place.page) + place.offset + 1 + 4 * k);
  if (page != 0 && pager.Read(page)[0] != page_type::kMapBits)
    ThrowCorrupt("a page of map bits is expected", page);
  return page;
}

void FormatBitPage(std::uint8_t* page) {
  std::memset(page, 0, kPageSize);
  page[0] = page_type::kMapBits;
  page[1] = 0x01;
}

}  // namespace map_row

std::vector<std::uint32_t> UsageMap::Pages() const {
  std::vector<std::uint32_t> pages;
  const map_row::Place place = map_row::Find(*pager_, pointer_);
  const auto add = [&](std::uint64_t page) {
    if (page < 2 || page >= pager_->PageCount())
      ThrowCorrupt("a usage map names a page outside the file", place.page);
    pages.push_back(static_cast<std::uint32_t>(page));
  };
  if (map_row::Type(*pager_, place) == map_row::kInline) {
    const std::uint64_t first = map_row::First(*pager_, place);
    map_row::ForEachBit(
        {pager_->Read(place.page) + place.offset + map_row::kBits, place.size - map_row::kBits},
        [&](std::uint32_t bit) { add(first + bit); });
    return pages;
  }
  for (std::size_t k = 0; k < map_row::kEntries; ++k) {
    if (const std::uint32_t bitPage = map_row::Entry(*pager_, place, k); bitPage != 0) {
      map_row::ForEachBit(map_row::PageBits(*pager_, bitPage), [&](std::uint32_t bit) {
        add(std::uint64_t{k} * map_row::kPagesPerBitPage + bit);
      });
    }
  }
  return pages;
}

bool UsageMap::Has(std::uint32_t page) const {
  const map_row::Place place = map_row::Find(*pager_, pointer_);
  if (map_row::Type(*pager_, place) == map_row::kInline) {
    const std::uint32_t first = map_row::First(*pager_, place);
    return page >= first && page - first < map_row::InlineBits(place) &&
           map_row::Bit(pager_->Read(place.page) + place.offset + map_row::kBits, page - first);
  }
  const std::uint32_t bitPage = map_row::Entry(*pager_, place, page / map_row::kPagesPerBitPage);
  return bitPage != 0 &&
         map_row::Bit(pager_->Read(bitPage) + map_row::kPageBits, page % map_row::kPagesPerBitPage);
}

void UsageMap::Add(std::uint32_t page) {
  map_row::Place place = map_row::Find(*pager_, pointer_);
  if (map_row::Type(*pager_, place) == map_row::kInline) {
    const std::uint32_t first = map_row::First(*pager_, place), bits = map_row::InlineBits(place);
    if (page >= first && page - first < bits) {
      map_row::SetBit(pager_->Write(place.page) + place.offset + map_row::kBits, page - first, true);
      return;
    }
    // Outside the window: the window moves when it can hold all pages, else the map becomes a reference map.
    std::vector<std::uint32_t> pages = Pages();
    pages.push_back(page);
    std::uint32_t lowest = page, highest = page;
    for (const std::uint32_t other : pages) {
      lowest = other < lowest ? other : lowest;
      highest = other > highest ? other : highest;
    }
    const std::uint32_t newFirst = highest < bits ? 0 : lowest / 8 * 8;
    if (highest - newFirst >= bits) {
      TurnIntoReferences(pages);
      return;
    }
    std::uint8_t* row = pager_->Write(place.page) + place.offset;
    std::memset(row, 0, place.size);
    Put32(row + 1, newFirst);
    for (const std::uint32_t each : pages) map_row::SetBit(row + map_row::kBits, each - newFirst, true);
    return;
  }
  const std::uint32_t k = page / map_row::kPagesPerBitPage;
  std::uint32_t bitPage = map_row::Entry(*pager_, place, k);
  if (bitPage == 0) {
    bitPage = pager_->Allocate();
    map_row::FormatBitPage(pager_->Write(bitPage));
    Put32(pager_->Write(place.page) + place.offset + 1 + 4 * k, bitPage);
  }
  map_row::SetBit(pager_->Write(bitPage) + map_row::kPageBits, page % map_row::kPagesPerBitPage, true);
}

void UsageMap::TurnIntoReferences(const std::vector<std::uint32_t>& pages) {
  const map_row::Place place = map_row::Find(*pager_, pointer_);
  if (place.size < map_row::kBytes) ThrowCorrupt("a usage map is too short to grow", place.page);
  std::uint8_t* row = pager_->Write(place.page) + place.offset;
  std::memset(row, 0, place.size);
  row[0] = map_row::kReferences;
  for (const std::uint32_t page : pages) Add(page);
}

void UsageMap::Remove(std::uint32_t page) {
  if (!Has(page)) return;
  const map_row::Place place = map_row::Find(*pager_, pointer_);
  if (map_row::Type(*pager_, place) == map_row::kInline) {
    const std::uint32_t first = map_row::First(*pager_, place);
    map_row::SetBit(pager_->Write(place.page) + place.offset + map_row::kBits, page - first, false);
    return;
  }
  const std::uint32_t bitPage = map_row::Entry(*pager_, place, page / map_row::kPagesPerBitPage);
  map_row::SetBit(pager_->Write(bitPage) + map_row::kPageBits, page % map_row::kPagesPerBitPage, false);
}

void UsageMap::Clear() {
  const map_row::Place place = map_row::Find(*pager_, pointer_);
  if (map_row::Type(*pager_, place) == map_row::kInline) {
    std::memset(pager_->Write(place.page) + place.offset + 1, 0, place.size - 1);
    return;
  }
  for (const std::uint32_t bitPage : BitPages()) map_row::FormatBitPage(pager_->Write(bitPage));
}

std::vector<std::uint32_t> UsageMap::BitPages() const {
  std::vector<std::uint32_t> pages;
  const map_row::Place place = map_row::Find(*pager_, pointer_);
  if (map_row::Type(*pager_, place) == map_row::kInline) return pages;
  for (std::size_t k = 0; k < map_row::kEntries; ++k) {
    if (const std::uint32_t page = map_row::Entry(*pager_, place, k); page != 0) pages.push_back(page);
  }
  return pages;
}

}  // namespace kestrelon::jet
