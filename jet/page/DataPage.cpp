#include "jet/page/DataPage.h"

#include <cstring>

namespace kestrelon::jet::data_page {
namespace {

void PutFreeBytes(std::uint8_t* page) { Put16(page + 2, FreeBytes(page)); }

}  // namespace

void Format(std::uint8_t* page, std::uint32_t owner) {
  std::memset(page, 0, kPageSize);
  page[0] = 0x01;
  page[1] = 0x01;
  Put32(page + 4, owner);
  PutFreeBytes(page);
}

void Check(const std::uint8_t* page, std::uint32_t number) {
  if (page[0] != 0x01 || page[1] != 0x01) ThrowCorrupt("a data page is expected", number);
  const std::size_t slots = SlotCount(page);
  if (slots > (kPageSize - kDataHeader) / 2) ThrowCorrupt("too many rows on a page", number);
  std::size_t end = kPageSize;
  for (std::size_t slot = 0; slot < slots; ++slot) {
    const std::size_t start = Start(page, slot);
    if (start > end || start < kDataHeader + 2 * slots) ThrowCorrupt("a row lies outside its page", number);
    if ((Slot(page, slot) & kSlotDeleted) == kSlotMoved && end - start < 4) {
      ThrowCorrupt("a row pointer is cut off", number);
    }
    end = start;
  }
}

std::size_t Append(std::uint8_t* page, std::size_t size, std::uint16_t flags) {
  const std::size_t slot = SlotCount(page);
  const std::size_t start = End(page, slot) - size;
  Put16(page + kDataHeader + 2 * slot, start | flags);
  Put16(page + 12, slot + 1);
  Put16(page + 2, start - (kDataHeader + 2 * (slot + 1)));
  return slot;
}

void Resize(std::uint8_t* page, std::size_t slot, std::size_t size, std::uint16_t flags) {
  const std::size_t slots = SlotCount(page);
  const std::size_t start = Start(page, slot), end = End(page, slot), lowest = Start(page, slots - 1);
  const std::size_t newStart = end - size;
  if (newStart != start) {
    // The bytes below move by the difference; what of the row itself survives moves with them.
    const std::size_t kept = size < end - start ? size : end - start;
    std::memmove(page + lowest + newStart - start, page + lowest, start - lowest + kept);
    for (std::size_t later = slot + 1; later < slots; ++later) {
      const std::uint16_t entry = Slot(page, later);
      Put16(page + kDataHeader + 2 * later,
            ((entry & kSlotOffset) + newStart - start) | (entry & ~unsigned{kSlotOffset}));
    }
  }
  Put16(page + kDataHeader + 2 * slot, newStart | flags);
  PutFreeBytes(page);
}

void CopyRows(std::uint8_t* page, const std::uint8_t* from) {
  const std::size_t slots = SlotCount(from), lowest = End(from, slots);
  std::memcpy(page + kDataHeader, from + kDataHeader, 2 * slots);
  std::memcpy(page + lowest, from + lowest, kPageSize - lowest);
  Put16(page + 12, slots);
  PutFreeBytes(page);
}

bool Empty(const std::uint8_t* page) {
  const std::size_t slots = SlotCount(page);
  for (std::size_t slot = 0; slot < slots; ++slot) {
    if ((Slot(page, slot) & kSlotDeleted) != kSlotDeleted) return false;
  }
  return true;
}

}  // namespace kestrelon::jet::data_page
