#pragma once

// The form of a usage map, the row of a data page that holds a set of pages:
//
//   inline map                             reference map
//   OFFSET  SIZE  MEANING                  OFFSET  SIZE  MEANING
//   0       1     0                        0       1     1
//   1       4     first page f             1       68    17 page numbers or 0: entry k leads to the bits of
//   the pages 5       n     bit b: page f + b                      k * 32736 and up
//
// Page of bits: 05 01 00 00, then 4092 bytes, lowest bit first. Rows are 69 bytes long as we write them;
// other programs also write longer ones.

#include <cstdint>
#include <span>

#include "jet/page/Pager.h"

namespace kestrelon::jet::map_row {

inline constexpr std::uint8_t kInline = 0, kReferences = 1;
inline constexpr std::size_t kBits = 5;      // offset of an inline map's bits
inline constexpr std::size_t kEntries = 17;  // of a reference map
inline constexpr std::size_t kBytes = 1 + 4 * kEntries;
inline constexpr std::size_t kPageBits = 4;  // offset of the bits on a page of bits
inline constexpr std::uint32_t kPagesPerBitPage = 8 * (kPageSize - kPageBits);

struct Place {
  std::uint32_t page = 0;
  std::size_t offset = 0;  // of the row on its page
  std::size_t size = 0;
};

// Finds the row page << 8 | slot. Throws CorruptFile when it is no usage map.
Place Find(const Pager& pager, std::uint32_t pointer);

inline std::uint8_t Type(const Pager& pager, const Place& place) {
  return pager.Read(place.page)[place.offset];
}
inline std::uint32_t First(const Pager& pager, const Place& place) {
  return Get32(pager.Read(place.page) + place.offset + 1);
}
inline std::uint32_t InlineBits(const Place& place) {
  return static_cast<std::uint32_t>(8 * (place.size - kBits));
}
// Entry k of a reference map; checks that a page named there is a page of bits.
std::uint32_t Entry(const Pager& pager, const Place& place, std::size_t k);

inline bool Bit(const std::uint8_t* bits, std::uint32_t bit) { return (bits[bit / 8] >> bit % 8 & 1) != 0; }
inline void SetBit(std::uint8_t* bits, std::uint32_t bit, bool on) {
  const unsigned mask = 1u << bit % 8;
  bits[bit / 8] = static_cast<std::uint8_t>(on ? bits[bit / 8] | mask : bits[bit / 8] & ~mask);
}
// Calls each(bit) for every 1 bit, ascending.
template <class Each>
void ForEachBit(std::span<const std::uint8_t> bits, Each&& each) {
  for (std::size_t i = 0; i < bits.size(); ++i) {
    for (unsigned byte = bits[i], bit = 0; byte != 0; byte >>= 1, ++bit) {
      if ((byte & 1) != 0) each(static_cast<std::uint32_t>(8 * i + bit));
    }
  }
}
inline std::span<const std::uint8_t> PageBits(const Pager& pager, std::uint32_t page) {
  return {pager.Read(page) + kPageBits, kPageSize - kPageBits};
}
void FormatBitPage(std::uint8_t* page);

}  // namespace kestrelon::jet::map_row
