#pragma once

// A data page: rows of a table, pieces of long values, or usage maps.
//
//   OFFSET  SIZE  MEANING
//   0       2     01 01
//   2       2     free bytes: start of the lowest row - (14 + 2 * slots)
//   4       4     definition page of the table; "LVAL" for long values; 0 for usage maps; 1 on page 1
//   8       4     0; on the first page of a chained long value its token
//   12      2     number of slots
//   14      2n    slots: bits 0-12 start of the row, 8000h hidden or deleted, 4000h the row lies elsewhere
//   ...           free
//   ...           rows, the first at the end of the page; row r ends where row r-1 starts
//
// A slot with both flags is deleted and stays, because other pages name rows by page and slot.

#include <cstdint>
#include <span>

#include "jet/base/Bytes.h"

namespace kestrelon::jet {

inline constexpr std::size_t kDataHeader = 14;
inline constexpr std::size_t kMostSlots = 255;                // a slot number is one byte in every pointer
inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;  // "LVAL"
inline constexpr std::uint16_t kSlotHidden = 0x8000, kSlotMoved = 0x4000, kSlotOffset = 0x1FFF;
inline constexpr std::uint16_t kSlotDeleted = kSlotHidden | kSlotMoved;

namespace data_page {

// An empty page for `owner`.
void Format(std::uint8_t* page, std::uint32_t owner);

// Throws CorruptFile unless the page is a data page whose slot table and rows lie within it in order. The
// other functions may be used on a page that passed.
void Check(const std::uint8_t* page, std::uint32_t number);

inline std::uint32_t Owner(const std::uint8_t* page) { return Get32(page + 4); }
inline std::size_t SlotCount(const std::uint8_t* page) { return Get16(page + 12); }
inline std::uint16_t Slot(const std::uint8_t* page, std::size_t slot) {
  return Get16(page + kDataHeader + 2 * slot);
}
inline std::size_t Start(const std::uint8_t* page, std::size_t slot) {
  return Slot(page, slot) & kSlotOffset;
}
inline std::size_t End(const std::uint8_t* page, std::size_t slot) {
  return slot == 0 ? kPageSize : Start(page, slot - 1);
}
inline std::size_t FreeBytes(const std::uint8_t* page) {
  const std::size_t slots = SlotCount(page);
  return (slots == 0 ? kPageSize : Start(page, slots - 1)) - (kDataHeader + 2 * slots);
}
// Whether a further row of this size may be appended.
inline bool HasRoomFor(const std::uint8_t* page, std::size_t rowBytes) {
  return SlotCount(page) < kMostSlots && FreeBytes(page) >= rowBytes + 2;
}

// Appends a row of `size` bytes, to be filled by the caller; there must be room. Returns its slot.
std::size_t Append(std::uint8_t* page, std::size_t size, std::uint16_t flags);
// Gives a row another size; the rows after it are moved so that no gap stays, and its bytes are undefined
// beyond the shorter of the two sizes. There must be room for growth.
void Resize(std::uint8_t* page, std::size_t slot, std::size_t size, std::uint16_t flags);
inline void Delete(std::uint8_t* page, std::size_t slot) { Resize(page, slot, 0, kSlotDeleted); }
// Makes the rows of another sound page those of an empty page, slot by slot.
void CopyRows(std::uint8_t* page, const std::uint8_t* from);
// No slot is in use.
bool Empty(const std::uint8_t* page);

}  // namespace data_page
}  // namespace kestrelon::jet
