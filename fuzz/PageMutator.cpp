#include "fuzz/PageMutator.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "jet/base/Bytes.h"
#include "jet/page/DataPage.h"
#include "jet/page/Header.h"
#include "jet/page/MapRow.h"
#include "jet/page/Pager.h"

namespace kestrelon::fuzz {
namespace {

using jet::Get16;
using jet::Get32;
using jet::kPageSize;
using jet::Put16;
using jet::Put32;

// The input as pages, with the numbers that they have in the file.
class Pages {
 public:
  Pages(InputBytes& bytes, std::size_t most, std::uint32_t shift, std::uint32_t seed)
      : random(seed), bytes_(bytes), most_(most / kPageSize), shift_(shift) {
    bytes_.resize(std::max<std::size_t>(1, (bytes_.size() + kPageSize - 1) / kPageSize) * kPageSize);
    if (bytes_.size() / kPageSize > most_ && most_ > 0) bytes_.resize(most_ * kPageSize);
  }

  bool Fragments() const { return shift_ != 0; }
  std::size_t Count() const { return bytes_.size() / kPageSize; }
  std::uint8_t* At(std::size_t page) { return bytes_.data() + page * kPageSize; }
  bool Append(std::size_t copyOf) {
    if (Count() >= most_) return false;
    bytes_.resize(bytes_.size() + kPageSize);
    std::memcpy(At(Count() - 1), At(copyOf), kPageSize);
    return true;
  }
  void Drop() {
    if (Count() > 1) bytes_.resize(bytes_.size() - kPageSize);
  }

  std::size_t Any() { return random.Below(Count()); }
  // A page with this first byte, or any.
  std::size_t AnyOf(std::uint8_t type) {
    const std::size_t start = Any();
    for (std::size_t i = 0; i < Count(); ++i) {
      const std::size_t page = (start + i) % Count();
      if (page > 0 && At(page)[0] == type) return page;
    }
    return start;
  }
  // The number that a page is named by.
  std::uint32_t Number(std::size_t page) const { return static_cast<std::uint32_t>(page) + shift_; }
  std::uint32_t AnyNumber() {
    if (random.OneIn(12)) return static_cast<std::uint32_t>(random.Below(4) * 0x400 + Count());
    return Number(Any());
  }
  // Page and slot of a row.
  std::uint32_t AnyRow() {
    return AnyNumber() << 8 |
           static_cast<std::uint32_t>(random.OneIn(8) ? random.Below(256) : random.Below(6));
  }
  // What a number of this width may become.
  std::uint32_t Near(std::uint32_t value, unsigned width) {
    const std::uint32_t most = width >= 4 ? 0xFFFFFFFF : (1u << 8 * width) - 1;
    switch (random.Below(12)) {
      case 0: return 0;
      case 1: return most;
      case 2: return most >> 1;
      case 3: return value + 1;
      case 4: return value - 1;
      case 5: return value * 2;
      case 6: return value / 2;
      case 7: return value ^ 1u << random.Below(8 * width);
      case 8: return static_cast<std::uint32_t>(random.Below(300));
      case 9: return static_cast<std::uint32_t>(random.Below(kPageSize + 2));
      case 10: return width >= 3 ? AnyRow() : static_cast<std::uint32_t>(random.Below(20));
      default: return width >= 3 ? AnyNumber() : static_cast<std::uint32_t>(random.Below(20));
    }
  }
  void ChangeNumber(std::uint8_t* at, unsigned width) {
    const std::uint32_t value = Near(width == 1 ? at[0] : width == 2 ? Get16(at) : Get32(at), width);
    if (width == 1) at[0] = static_cast<std::uint8_t>(value);
    if (width == 2) Put16(at, value & 0xFFFF);
    if (width == 4) Put32(at, value);
  }

  Random random;

 private:
  InputBytes& bytes_;
  std::size_t most_;
  std::uint32_t shift_;
};

struct Place {
  std::uint16_t offset;
  std::uint8_t width;
};

template <std::size_t N>
void ChangeOneOf(Pages& pages, std::uint8_t* base, const Place (&places)[N]) {
  const Place place = places[pages.random.Below(N)];
  pages.ChangeNumber(base + place.offset, place.width);
}

void ChangeHeader(Pages& pages, std::uint8_t* page) {
  // What stands below the mask is changed there: both sides have the same mask.
  static const std::array<std::uint8_t, kPageSize> fresh = jet::header::NewPage();
  static constexpr Place kPlaces[] = {{0x00, 4}, {0x04, 4}, {0x14, 4}, {0x18, 4},  {0x20, 4},
                                      {0x24, 4}, {0x3C, 2}, {0x3E, 4}, {0x42, 4},  {0x6A, 4},
                                      {0x6E, 4}, {0x72, 4}, {0x98, 4}, {0xE00, 2}, {0xE02, 2}};
  const Place place = kPlaces[pages.random.Below(std::size(kPlaces))];
  if (place.offset >= 0x18 && place.offset < 0x98) {
    std::uint8_t plain[4];
    Put32(plain, pages.Near(0, 4));
    for (std::size_t i = 0; i < place.width; ++i)
      page[place.offset + i] = static_cast<std::uint8_t>(fresh[place.offset + i] ^ plain[i]);
  } else {
    pages.ChangeNumber(page + place.offset, place.width);
  }
}

// Makes the free-space field of a data page what it must be.
void RepairFreeBytes(std::uint8_t* page) {
  const std::size_t slots = jet::data_page::SlotCount(page);
  if (jet::kDataHeader + 2 * slots <= kPageSize) Put16(page + 2, jet::data_page::FreeBytes(page) & 0xFFFF);
}

// A row's bytes by a slot that lies within the page; nothing otherwise.
std::span<std::uint8_t> RowOf(std::uint8_t* page, std::size_t slot) {
  const std::size_t slots = jet::data_page::SlotCount(page);
  if (slot >= slots || slots > (kPageSize - jet::kDataHeader) / 2) return {};
  const std::size_t start = jet::data_page::Start(page, slot), end = jet::data_page::End(page, slot);
  if (start > end || end > kPageSize) return {};
  return {page + start, end - start};
}

void ChangeSlots(Pages& pages, std::uint8_t* page) {
  Random& random = pages.random;
  const std::size_t slots = std::min<std::size_t>(jet::data_page::SlotCount(page), 2000);
  std::uint8_t* const slot = page + jet::kDataHeader + 2 * random.Below(slots);
  static constexpr std::uint16_t kFlags[] = {0x8000, 0x4000, 0xC000, 0x2000};
  switch (random.Below(6)) {
    case 0:
    case 1: Put16(slot, Get16(slot) ^ kFlags[random.Below(4)]); break;
    case 2: Put16(slot, Get16(slot) + random.Below(9) - 4); break;
    case 3:
      Put16(slot, (Get16(page + jet::kDataHeader + 2 * random.Below(slots)) & jet::kSlotOffset) |
                      (Get16(slot) & 0xE000));
      break;
    case 4: Put16(page + 12, Get16(page + 12) + random.Below(3) - 1); break;
    default: pages.ChangeNumber(page + 12, 2); break;
  }
}

void ChangeRow(Pages& pages, std::uint8_t* page) {
  Random& random = pages.random;
  const std::span<std::uint8_t> row = RowOf(page, random.Below(jet::data_page::SlotCount(page)));
  if (row.size() < 4) return;
  const std::size_t last = row.size() - 4;
  switch (random.Below(8)) {
    case 0: pages.ChangeNumber(row.data(), 2); return;                   // its number of columns
    case 1: pages.ChangeNumber(row.data() + row.size() - 1, 1); return;  // its mask
    case 2: pages.ChangeNumber(row.data() + last - random.Below(std::min<std::size_t>(last, 24)), 2); return;
    case 3: Put32(row.data(), pages.AnyRow()); return;  // the next piece, the place of a moved row
    case 4:
    case 5: {
      // Something like a reference to a long value: lengths with one of the two highest bits, and a row.
      for (std::size_t tries = 0; tries < 16 && row.size() >= 12; ++tries) {
        std::uint8_t* at = row.data() + random.Below(row.size() - 11);
        if (Get32(at + 8) != 0 || (Get32(at) & 0x3FFFFFFF) > (1u << 20)) continue;
        switch (random.Below(4)) {
          case 0: Put32(at, Get32(at) ^ (random.OneIn(2) ? 0x80000000 : 0x40000000)); return;
          case 1:
            Put32(at, (pages.Near(Get32(at) & 0x3FFFFFFF, 4) & 0x3FFFFFFF) | (Get32(at) & 0xC0000000));
            return;
          case 2: Put32(at + 4, pages.AnyRow()); return;
          default: Put32(at + 8, pages.Near(0, 4)); return;
        }
      }
      return;
    }
    default: {
      static constexpr unsigned kWidths[] = {1, 2, 4};
      pages.ChangeNumber(row.data() + random.Below(last + 1), kWidths[random.Below(3)]);
      return;
    }
  }
}

// A second row with the same bytes.
void DoubleRow(Pages& pages, std::uint8_t* page) {
  try {
    jet::data_page::Check(page, 0);
  } catch (const jet::Error&) {
    return;
  }
  const std::size_t from = pages.random.Below(jet::data_page::SlotCount(page));
  const std::span<std::uint8_t> row = RowOf(page, from);
  if (row.empty() || !jet::data_page::HasRoomFor(page, row.size())) return;
  const std::uint16_t flags = jet::data_page::Slot(page, from) & jet::kSlotDeleted;
  const InputBytes copy(row.begin(), row.end());
  const std::size_t slot = jet::data_page::Append(page, copy.size(), flags);
  std::copy(copy.begin(), copy.end(), page + jet::data_page::Start(page, slot));
}

void FormatBits(std::uint8_t* page) { jet::map_row::FormatBitPage(page); }

void ChangeMapRow(Pages& pages, std::size_t number) {
  Random& random = pages.random;
  std::uint8_t* page = pages.At(number);
  const std::size_t slot = random.Below(jet::data_page::SlotCount(page));
  std::span<std::uint8_t> row = RowOf(page, slot);
  if (row.size() < 5) return;
  switch (random.Below(6)) {
    case 0: row[0] ^= 1; return;
    case 1:
      Put32(row.data() + 1, random.OneIn(2)
                                ? static_cast<std::uint32_t>(random.Below(pages.Count() + 9) / 8 * 8)
                                : pages.Near(0, 4));
      return;
    case 2:
      if (row.size() >= jet::map_row::kBytes)
        Put32(row.data() + 1 + 4 * random.Below(jet::map_row::kEntries), pages.AnyNumber());
      return;
    case 3: {
      // An inline map becomes one of references, its bits on a page at the end.
      if (row[0] != 0 || row.size() < jet::map_row::kBytes) return;
      const InputBytes bits(row.begin() + jet::map_row::kBits, row.end());
      if (!pages.Append(number)) return;
      row = RowOf(pages.At(number), slot);  // the memory has moved
      FormatBits(pages.At(pages.Count() - 1));
      std::copy(bits.begin(), bits.end(), pages.At(pages.Count() - 1) + jet::map_row::kPageBits);
      std::fill(row.begin(), row.end(), std::uint8_t{0});
      row[0] = jet::map_row::kReferences;
      Put32(row.data() + 1, pages.Number(pages.Count() - 1));
      return;
    }
    default: {
      const std::size_t bit = random.Below(std::min(pages.Count() + 2, 8 * (row.size() - 5)));
      if (bit / 8 + 5 < row.size())
        row[5 + bit / 8] = static_cast<std::uint8_t>(row[5 + bit / 8] ^ 1u << bit % 8);
      return;
    }
  }
}

void ChangeData(Pages& pages, std::size_t number) {
  Random& random = pages.random;
  std::uint8_t* page = pages.At(number);
  const std::uint32_t owner = jet::data_page::Owner(page);
  if (random.OneIn(20)) {
    Put32(page + 4, random.OneIn(3)   ? jet::kLongValueOwner
                    : random.OneIn(2) ? pages.Near(owner, 4)
                                      : pages.AnyNumber());
  } else if ((owner == 0 || (number == 1 && !pages.Fragments())) && !random.OneIn(4)) {
    ChangeMapRow(pages, number);
  } else if (random.OneIn(4)) {
    ChangeSlots(pages, page);
  } else if (random.OneIn(6)) {
    DoubleRow(pages, page);
  } else {
    ChangeRow(pages, page);
  }
  if (!random.OneIn(3)) RepairFreeBytes(pages.At(number));
}

void ChangeDefinition(Pages& pages, std::uint8_t* page) {
  Random& random = pages.random;
  static constexpr Place kHead[] = {{4, 4},  {8, 4},  {16, 4}, {20, 4}, {40, 1}, {41, 2},
                                    {43, 2}, {45, 2}, {47, 4}, {51, 4}, {55, 4}, {59, 4}};
  static constexpr Place kColumn[] = {{0, 1},  {5, 2},  {7, 2},  {9, 2},  {11, 2},
                                      {13, 2}, {15, 1}, {16, 1}, {21, 2}, {23, 2}};
  static constexpr Place kIndex[] = {{4, 2}, {6, 1}, {7, 2}, {9, 1}, {34, 4}, {38, 4}, {46, 1}};
  static constexpr Place kLogical[] = {{4, 4}, {8, 4}, {12, 1}, {13, 4}, {17, 4}, {23, 1}};
  const std::size_t columns = Get16(page + 45), logical = Get32(page + 47) & 0xFFFF,
                    real = Get32(page + 51) & 0xFFFF;
  const std::size_t blocks = 63 + 12 * real;
  std::size_t names = blocks + 25 * columns;
  switch (random.Below(5)) {
    case 0: break;
    case 1:
    case 2: {
      const std::size_t at = blocks + 25 * random.Below(columns);
      if (at + 25 > kPageSize) break;
      static constexpr std::uint8_t kTypes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 15, 16, 17};
      if (random.OneIn(4)) {
        page[at] = kTypes[random.Below(std::size(kTypes))];
      } else {
        ChangeOneOf(pages, page + at, kColumn);
      }
      return;
    }
    default: {
      for (std::size_t i = 0; i < columns && names + 2 <= kPageSize; ++i) names += 2u + Get16(page + names);
      const bool inLogical = real == 0 || random.OneIn(4);
      const std::size_t at =
          inLogical ? names + 52 * real + 28 * random.Below(logical) : names + 52 * random.Below(real);
      const std::size_t tail = names + 80 * real;
      if (random.OneIn(3) && tail + 60 <= kPageSize) {  // near the maps of the long values
        pages.ChangeNumber(page + tail + random.Below(56), random.OneIn(2) ? 4 : 2);
        return;
      }
      if (at + 52 > kPageSize || (real == 0 && logical == 0)) break;
      if (inLogical) {
        ChangeOneOf(pages, page + at, kLogical);
      } else {
        ChangeOneOf(pages, page + at, kIndex);
      }
      return;
    }
  }
  ChangeOneOf(pages, page, kHead);
}

void ChangeIndexPage(Pages& pages, std::uint8_t* page) {
  constexpr std::size_t kMask = 27, kEntries = 480;
  Random& random = pages.random;
  static constexpr Place kHead[] = {{2, 2}, {4, 4}, {12, 4}, {16, 4}, {20, 4}, {24, 2}, {24, 1}, {26, 1}};
  std::array<std::uint16_t, 512> ends;
  std::size_t count = 0;
  for (std::size_t bit = 1; bit <= kPageSize - kEntries && count < ends.size(); ++bit) {
    if ((page[kMask + bit / 8] >> bit % 8 & 1) != 0) ends[count++] = static_cast<std::uint16_t>(bit);
  }
  const std::size_t end = count == 0 ? 0 : ends[random.Below(count)];
  switch (random.Below(7)) {
    case 0:
    case 1: ChangeOneOf(pages, page, kHead); return;
    case 2:
      if (random.OneIn(4)) page[0] ^= 7;  // a leaf becomes a node
      jet::Put16(page + 2, kPageSize - kEntries - (count == 0 ? 0 : ends[count - 1]));
      return;
    case 3:
    case 4: {
      const std::size_t bit = random.OneIn(2) ? end : end + random.Below(17) - 8;
      if (bit <= kPageSize - kEntries)
        page[kMask + bit / 8] = static_cast<std::uint8_t>(page[kMask + bit / 8] ^ 1u << bit % 8);
      return;
    }
    case 5:
      // The child of a node, the row of a leaf.
      if (end >= 4)
        jet::PutBig32(page + kEntries + end - 4, random.OneIn(2) ? pages.AnyNumber() : pages.AnyRow());
      return;
    default:
      if (end > 0) pages.ChangeNumber(page + kEntries + random.Below(end), 1);
      return;
  }
}

void ChangePage(Pages& pages, std::size_t number) {
  std::uint8_t* page = pages.At(number);
  if (number == 0 && !pages.Fragments()) return ChangeHeader(pages, page);
  if (number == 0)
    return pages.ChangeNumber(page + pages.random.Below(kPageSize - 4) / (pages.random.OneIn(2) ? 1 : 32), 1);
  switch (page[0]) {
    case jet::page_type::kData: return ChangeData(pages, number);
    case jet::page_type::kDefinition: return ChangeDefinition(pages, page);
    case jet::page_type::kIndexNode:
    case jet::page_type::kIndexLeaf: return ChangeIndexPage(pages, page);
    case jet::page_type::kMapBits: {
      const std::size_t bit = pages.random.Below(pages.Count() + 2);
      page[4 + bit / 8] = static_cast<std::uint8_t>(page[4 + bit / 8] ^ 1u << bit % 8);
      return;
    }
    default:
      page[0] = static_cast<std::uint8_t>(1 + pages.random.Below(5));
      page[1] = 1;
      return;
  }
}

std::size_t AnyChangeable(Pages& pages) {
  // The kinds of pages are chosen between, not the pages: most pages of a file are of one or two kinds.
  static constexpr std::uint8_t kTypes[] = {jet::page_type::kData,       jet::page_type::kData,
                                            jet::page_type::kDefinition, jet::page_type::kIndexLeaf,
                                            jet::page_type::kIndexNode,  jet::page_type::kMapBits};
  if (pages.random.OneIn(24) || pages.Count() == 1) return 0;
  if (pages.random.OneIn(4)) return pages.Any();
  return pages.AnyOf(kTypes[pages.random.Below(std::size(kTypes))]);
}

void ChangeOnce(Pages& pages, Mutate plain) {
  Random& random = pages.random;
  switch (random.Below(24)) {
    case 0: std::memcpy(pages.At(pages.Any()), pages.At(pages.Any()), kPageSize); return;
    case 1: {
      std::uint8_t *a = pages.At(pages.Any()), *b = pages.At(pages.Any());
      if (a != b) std::swap_ranges(a, a + kPageSize, b);
      return;
    }
    case 2: pages.Append(pages.Any()); return;
    case 3:
      if (random.OneIn(3)) pages.Drop();
      return;
    case 4:
    case 5: {
      const std::size_t offset = random.Below(kPageSize - 16),
                        size = 1 + random.Below(random.OneIn(4) ? 512 : 16);
      const std::size_t room = std::min(size, kPageSize - offset);
      plain(pages.At(AnyChangeable(pages)) + offset, room, room);
      return;
    }
    default: ChangePage(pages, AnyChangeable(pages)); return;
  }
}

std::size_t MutatePages(std::uint8_t* data, std::size_t size, std::size_t most, std::uint32_t shift,
                        std::uint32_t seed, Mutate plain) {
  if (most < kPageSize) return plain(data, size, most);
  InputBytes bytes(data, data + size);
  Pages pages(bytes, most, shift, seed);
  if (pages.random.OneIn(200)) return plain(data, size, most);
  for (std::size_t changes = 1 + pages.random.Below(pages.random.OneIn(4) ? 8 : 2); changes > 0; --changes)
    ChangeOnce(pages, plain);
  const std::size_t kept = std::min(bytes.size(), most);
  std::copy_n(bytes.begin(), kept, data);
  return kept;
}

}  // namespace

std::size_t MutateFile(std::uint8_t* data, std::size_t size, std::size_t most, std::uint32_t seed,
                       Mutate plain) {
  return MutatePages(data, size, most, 0, seed, plain);
}

std::size_t MutateFragments(std::uint8_t* data, std::size_t size, std::size_t most, std::uint32_t seed,
                            Mutate plain) {
  return MutatePages(data, size, most, kFragmentShift, seed, plain);
}

std::size_t CrossOver(Input a, Input b, std::span<std::uint8_t> out, std::uint32_t seed) {
  Random random(seed);
  const std::size_t size = std::min(a.size(), out.size());
  std::copy_n(a.begin(), size, out.begin());
  const std::size_t unit = size >= kPageSize && b.size() >= kPageSize ? kPageSize : 16;
  for (std::size_t pieces = 1 + random.Below(3); pieces > 0 && size >= unit && b.size() >= unit; --pieces) {
    const std::size_t from = random.Below(b.size() / unit),
                      to = random.OneIn(2) ? random.Below(size / unit) : from;
    if ((to + 1) * unit <= size)
      std::copy_n(b.begin() + static_cast<std::ptrdiff_t>(from * unit), unit,
                  out.begin() + static_cast<std::ptrdiff_t>(to * unit));
  }
  return size;
}

}  // namespace kestrelon::fuzz
