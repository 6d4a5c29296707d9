#include "jet/row/LongValue.h"

#include <algorithm>
#include <cstring>

#include "jet/base/Error.h"
#include "jet/page/DataPage.h"

namespace kestrelon::jet::long_value {
namespace {

std::span<const std::uint8_t> PieceAt(const PageSet& pages, std::uint32_t pointer) {
  const std::uint32_t page = pointer >> 8, slot = pointer & 0xFF;
  const std::uint8_t* bytes = pages.Read(page);
  if (slot >= data_page::SlotCount(bytes) || (data_page::Slot(bytes, slot) & kSlotDeleted) != 0) {
    ThrowCorrupt("a long value has lost a piece", page);
  }
  const std::size_t start = data_page::Start(bytes, slot);
  return {bytes + start, data_page::End(bytes, slot) - start};
}

// Walks a chain; `each` gets the address and the bytes of every piece.
template <class Each>
void ForEachPiece(const Pager& pager, const PageSet& pages, std::span<const std::uint8_t> field,
                  Each&& each) {
  const std::uint32_t length = Get32(field.data()) & kLengthBits;
  // No honest value is longer than the file; this bounds the walk of a chain that bites its tail.
  if (length > std::uint64_t{pager.PageCount()} * kPageSize)
    ThrowCorrupt("a long value is longer than the file", 0);
  std::uint32_t pointer = Get32(field.data() + 4);
  for (std::size_t done = 0; done < length;) {
    if (pointer == 0) ThrowCorrupt("a long value ends early", 0);
    const auto row = PieceAt(pages, pointer);
    if (row.size() <= 4 || row.size() - 4 > length - done)
      ThrowCorrupt("a long value's piece is too long", pointer >> 8);
    each(pointer, row.subspan(4));
    done += row.size() - 4;
    pointer = Get32(row.data());
  }
}

std::uint32_t AppendRow(PageSet& pages, std::uint32_t page, std::span<const std::uint8_t> head,
                        std::span<const std::uint8_t> body) {
  std::uint8_t* bytes = pages.Write(page);
  const std::size_t slot = data_page::Append(bytes, head.size() + body.size(), 0);
  std::uint8_t* at = bytes + data_page::Start(bytes, slot);
  std::copy(head.begin(), head.end(), at);
  std::copy(body.begin(), body.end(), at + head.size());
  return page << 8 | static_cast<std::uint32_t>(slot);
}

}  // namespace

bool Outside(std::span<const std::uint8_t> field) {
  return field.size() >= kReference && (Get32(field.data()) & kInlineBit) == 0;
}

std::span<const std::uint8_t> Read(const Pager& pager, const PageSet& pages,
                                   std::span<const std::uint8_t> field, std::vector<std::uint8_t>& buffer) {
  if (field.empty()) return {};
  if (field.size() < kReference) ThrowCorrupt("a long value's reference is cut off", 0);
  const std::uint32_t head = Get32(field.data());
  const std::size_t length = head & kLengthBits;
  if ((head & kInlineBit) != 0) {
    if (length > field.size() - kReference) ThrowCorrupt("a long value is cut off", 0);
    return field.subspan(kReference, length);
  }
  if ((head & kRowBit) != 0) {
    const auto row = PieceAt(pages, Get32(field.data() + 4));
    if (length > row.size()) ThrowCorrupt("a long value is cut off", Get24(field.data() + 5));
    return row.first(length);
  }
  buffer.clear();
  ForEachPiece(pager, pages, field, [&buffer](std::uint32_t, std::span<const std::uint8_t> piece) {
    buffer.insert(buffer.end(), piece.begin(), piece.end());
  });
  return buffer;
}

void Write(Pager& pager, PageSet& pages, std::span<const std::uint8_t> stored, std::uint8_t* reference) {
  if (stored.size() > kLengthBits)
    throw Error(code::kTooLong,
                u"The field is too small to accept the amount of data you attempted to add. Try inserting or "
                u"pasting less data.");
  const auto length = static_cast<std::uint32_t>(stored.size());
  Put32(reference + 8, 0);
  if (stored.size() <= kMostInRow) {
    Put32(reference, length | kRowBit);
    Put32(reference + 4, AppendRow(pages, pages.PageWithRoom(stored.size()), {}, stored));
    return;
  }
  Put32(reference, length);
  std::uint32_t before = 0;  // the piece that must learn where the next one is
  for (std::size_t done = 0; done < stored.size(); done += kPiece) {
    const std::uint8_t end[4] = {};
    const std::uint32_t piece =
        AppendRow(pages, pages.NewPage(), end, stored.subspan(done, std::min(kPiece, stored.size() - done)));
    if (before == 0) {
      Put32(reference + 4, piece);
    } else {
      std::uint8_t* page = pager.Write(before >> 8);
      Put32(page + data_page::Start(page, before & 0xFF), piece);
    }
    before = piece;
  }
}

std::vector<std::uint32_t> Pieces(const Pager& pager, const PageSet& pages,
                                  std::span<const std::uint8_t> field) {
  std::vector<std::uint32_t> pieces;
  if (field.empty()) return pieces;
  if (field.size() < kReference) ThrowCorrupt("a long value's reference is cut off", 0);
  const std::uint32_t head = Get32(field.data());
  if ((head & kInlineBit) != 0) return pieces;
  if ((head & kRowBit) != 0) {
    const std::uint32_t pointer = Get32(field.data() + 4);
    PieceAt(pages, pointer);
    pieces.push_back(pointer);
    return pieces;
  }
  ForEachPiece(pager, pages, field, [&pieces](std::uint32_t pointer, std::span<const std::uint8_t>) {
    pieces.push_back(pointer);
  });
  std::vector<std::uint32_t> sorted = pieces;
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end())
    ThrowCorrupt("a long value repeats itself", 0);
  return pieces;
}

void Free(PageSet& pages, const std::vector<std::uint32_t>& pieces) {
  for (const std::uint32_t pointer : pieces) {
    const std::uint32_t page = pointer >> 8;
    if (!pages.Owns(page)) ThrowCorrupt("a long value lies on a page of something else", page);
    std::uint8_t* bytes = pages.Write(page);
    if ((pointer & 0xFF) >= data_page::SlotCount(bytes)) ThrowCorrupt("a long value has lost a piece", page);
    data_page::Delete(bytes, pointer & 0xFF);
    if (data_page::Empty(bytes)) {
      pages.Remove(page);
    } else {
      pages.Reopen(page);
    }
  }
}

}  // namespace kestrelon::jet::long_value
