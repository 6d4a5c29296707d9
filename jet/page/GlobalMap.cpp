#include "jet/page/GlobalMap.h"

#include <cstring>

#include "jet/page/DataPage.h"
#include "jet/page/MapRow.h"
#include "jet/page/Pager.h"

namespace kestrelon::jet::global_map {
namespace {

constexpr std::uint32_t kRow = Pager::kGlobalMapPage << 8;

// Gives the entry for `page` a page of bits: everything used, apart from what lies past the end of the file.
void AddBitPage(Pager& pager, std::uint32_t page) {
  const std::uint32_t k = page / map_row::kPagesPerBitPage;
  const std::uint32_t bitPage = pager.AppendMapPage();
  std::uint8_t* bytes = pager.Write(bitPage);
  map_row::FormatBitPage(bytes);
  for (std::uint32_t bit = 0; bit < map_row::kPagesPerBitPage; ++bit) {
    if (k * map_row::kPagesPerBitPage + bit >= pager.PageCount())
      map_row::SetBit(bytes + map_row::kPageBits, bit, true);
  }
  const map_row::Place place = map_row::Find(pager, kRow);
  Put32(pager.Write(place.page) + place.offset + 1 + 4 * k, bitPage);
  Set(pager, bitPage, false);
}

void TurnIntoReferences(Pager& pager) {
  const std::vector<std::uint32_t> free = FreePages(pager);
  const map_row::Place place = map_row::Find(pager, kRow);
  if (place.size < map_row::kBytes) ThrowCorrupt("the map of free pages is too short", Pager::kGlobalMapPage);
  std::uint8_t* row = pager.Write(place.page) + place.offset;
  std::memset(row, 0, place.size);
  row[0] = map_row::kReferences;
  for (const std::uint32_t page : free) Set(pager, page, true);
}

}  // namespace

void Format(std::uint8_t* page, std::uint32_t pageCount) {
  data_page::Format(page, Pager::kGlobalMapPage);
  for (int row = 0; row < 2; ++row) {
    const std::size_t slot = data_page::Append(page, map_row::kBytes, 0);
    std::memset(page + data_page::Start(page, slot), 0, map_row::kBytes);
  }
  std::uint8_t* bits = page + data_page::Start(page, 0) + map_row::kBits;
  for (std::uint32_t bit = pageCount; bit < 8 * (map_row::kBytes - map_row::kBits); ++bit) {
    map_row::SetBit(bits, bit, true);
  }
}

std::vector<std::uint32_t> FreePages(const Pager& pager) {
  std::vector<std::uint32_t> pages;
  const map_row::Place place = map_row::Find(pager, kRow);
  const auto add = [&pages, &pager](std::uint64_t page) {
    if (page > Pager::kGlobalMapPage && page < pager.PageCount())
      pages.push_back(static_cast<std::uint32_t>(page));
  };
  if (map_row::Type(pager, place) == map_row::kInline) {
    const std::uint64_t first = map_row::First(pager, place);
    map_row::ForEachBit({pager.Read(place.page) + place.offset + map_row::kBits, place.size - map_row::kBits},
                        [&](std::uint32_t bit) { add(first + bit); });
    return pages;
  }
  for (std::size_t k = 0; k < map_row::kEntries; ++k) {
    if (const std::uint32_t bitPage = map_row::Entry(pager, place, k); bitPage != 0) {
      map_row::ForEachBit(map_row::PageBits(pager, bitPage), [&](std::uint32_t bit) {
        add(std::uint64_t{k} * map_row::kPagesPerBitPage + bit);
      });
    }
  }
  return pages;
}

std::uint32_t Reach(const Pager& pager) {
  const map_row::Place place = map_row::Find(pager, kRow);
  if (map_row::Type(pager, place) == map_row::kInline)
    return map_row::First(pager, place) + map_row::InlineBits(place);
  std::uint32_t k = 0;
  while (k < map_row::kEntries && map_row::Entry(pager, place, k) != 0) ++k;
  return k * map_row::kPagesPerBitPage;
}

void Set(Pager& pager, std::uint32_t page, bool free) {
  map_row::Place place = map_row::Find(pager, kRow);
  if (map_row::Type(pager, place) == map_row::kInline) {
    const std::uint32_t first = map_row::First(pager, place);
    if (page >= first && page - first < map_row::InlineBits(place)) {
      map_row::SetBit(pager.Write(place.page) + place.offset + map_row::kBits, page - first, free);
      return;
    }
    TurnIntoReferences(pager);
    place = map_row::Find(pager, kRow);
  }
  const std::uint32_t k = page / map_row::kPagesPerBitPage;
  if (map_row::Entry(pager, place, k) == 0) AddBitPage(pager, page);
  const std::uint32_t bitPage = map_row::Entry(pager, place, k);
  map_row::SetBit(pager.Write(bitPage) + map_row::kPageBits, page % map_row::kPagesPerBitPage, free);
}

std::vector<std::uint32_t> BitPages(const Pager& pager) {
  std::vector<std::uint32_t> pages;
  const map_row::Place place = map_row::Find(pager, kRow);
  if (map_row::Type(pager, place) == map_row::kInline) return pages;
  for (std::size_t k = 0; k < map_row::kEntries; ++k) {
    if (const std::uint32_t page = map_row::Entry(pager, place, k); page != 0) pages.push_back(page);
  }
  return pages;
}

}  // namespace kestrelon::jet::global_map
