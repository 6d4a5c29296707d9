#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "jet/page/PageSet.h"

namespace kestrelon::jet {

// A memo or OLE value, which the row holds as a reference:
//
//   OFFSET  SIZE  MEANING
//   0       4     bits 0-29 length of the stored bytes; bit 31: they follow here; bit 30: they are one row
//   elsewhere;
//                 neither: they are a chain of rows, each u32 next piece (page << 8 | slot, 0 at the end) +
//                 bytes
//   4       4     first row (page << 8 | slot), 0 if inline
//   8       4     0; for a chain the dword at 8 of the page that holds the first piece
//   12      n     the bytes, if inline
//
// The rows lie on pages of the column, owner "LVAL"; a row belongs to exactly one reference. We write inline
// up to 64 bytes, one row up to 4076, else pieces of 4072, each alone on its page, with 0 as the dword at 8.
namespace long_value {

inline constexpr std::size_t kReference = 12;
inline constexpr std::size_t kMostInline = 64;
inline constexpr std::size_t kMostInRow = 4076;
inline constexpr std::size_t kPiece = 4072;
inline constexpr std::uint32_t kInlineBit = 0x80000000, kRowBit = 0x40000000, kLengthBits = 0x3FFFFFFF;

// The stored bytes of the value that `field` (the reference, as it stands in the row) leads to. They lie in
// the field, in a page, or, for a chain, in `buffer`. Throws CorruptFile.
std::span<const std::uint8_t> Read(const Pager& pager, const PageSet& pages,
                                   std::span<const std::uint8_t> field, std::vector<std::uint8_t>& buffer);
// Stores more than inline bytes and fills the 12 bytes of `reference`.
void Write(Pager& pager, PageSet& pages, std::span<const std::uint8_t> stored, std::uint8_t* reference);
inline void PutInlineReference(std::uint8_t* reference, std::size_t size) {
  Put32(reference, static_cast<std::uint32_t>(size) | kInlineBit);
  Put64(reference + 4, 0);
}
// Whether the value lies outside the row.
bool Outside(std::span<const std::uint8_t> field);
// The rows (page << 8 | slot) that hold the value; none if inline. Throws CorruptFile, also when a row is
// named twice.
std::vector<std::uint32_t> Pieces(const Pager& pager, const PageSet& pages,
                                  std::span<const std::uint8_t> field);
// Removes these rows, and pages that become empty.
void Free(PageSet& pages, const std::vector<std::uint32_t>& pieces);

}  // namespace long_value
}  // namespace kestrelon::jet
