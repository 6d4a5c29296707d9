#include <algorithm>
#include <cassert>
#include <utility>

#include "ui/win/ListView.h"

namespace kestrelon::win {

namespace {

constexpr std::size_t kPieces = ListRow::kColumns;  // five texts and the tag
constexpr std::size_t kTagPiece = kPieces - 1;
// Units. Blocks grow from the one to the other: small lists stay small, and the heap keeps blocks of this
// size for the next list. Larger ones it would take from the system and give back each time, which for
// 100,000 rows costs as much as half the query.
constexpr std::size_t kFirstBlock = 4 * 1024, kLargestBlock = 128 * 1024;

std::size_t LengthOf(const ListRow::Texts& texts, std::wstring_view tag) {
  std::size_t length = tag.size();
  for (const std::wstring_view text : texts) length += text.size();
  return length;
}

// Writes the pieces one behind the other and notes where each ends.
void Join(const ListRow::Texts& texts, std::wstring_view tag, wchar_t* to,
          std::array<std::uint32_t, kPieces>& ends) {
  std::size_t length = 0;
  for (std::size_t piece = 0; piece < kPieces; ++piece) {
    const std::wstring_view text = piece == kTagPiece ? tag : texts[piece];
    std::copy(text.begin(), text.end(), to + length);
    length += text.size();
    ends[piece] = static_cast<std::uint32_t>(length);
  }
}

}  // namespace

std::wstring_view ListRow::Piece(std::size_t index) const {
  const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
  return {joined_.get() + begin, ends_[index] - begin};
}

void ListRow::SetPiece(std::size_t index, std::wstring_view text) {
  std::array<std::wstring_view, kPieces> pieces;
  for (std::size_t piece = 0; piece < kPieces; ++piece) pieces[piece] = piece == index ? text : Piece(piece);
  Texts texts;
  std::copy_n(pieces.begin(), texts.size(), texts.begin());
  Set(texts, pieces[kTagPiece]);
}

std::wstring_view ListRow::Text(std::size_t column) const {
  assert(column < kColumns);
  return column == 0 ? std::wstring_view() : Piece(column - 1);
}

void ListRow::SetText(std::size_t column, std::wstring_view text) {
  assert(column > 0 && column < kColumns);
  SetPiece(column - 1, text);
}

std::wstring_view ListRow::Tag() const { return Piece(kTagPiece); }

void ListRow::SetTag(std::wstring_view tag) { SetPiece(kTagPiece, tag); }

void ListRow::Set(const Texts& texts, std::wstring_view tag) {
  // The old memory goes last: the texts may lie in it.
  const std::shared_ptr<wchar_t[]> joined = std::make_shared_for_overwrite<wchar_t[]>(LengthOf(texts, tag));
  Join(texts, tag, joined.get(), ends_);
  joined_ = joined;
}

ListRow ListRowMaker::Make(std::wstring_view joined,
                           const std::array<std::uint32_t, ListRow::kColumns>& ends) {
  assert(ends.back() == joined.size());
  if (joined.size() > size_ - used_) {
    size_ = std::max(std::clamp(2 * size_, kFirstBlock, kLargestBlock), joined.size());
    block_ = std::make_shared_for_overwrite<wchar_t[]>(size_);
    used_ = 0;
  }
  ListRow row;
  std::copy(joined.begin(), joined.end(), block_.get() + used_);
  row.ends_ = ends;
  row.joined_ = std::shared_ptr<const wchar_t[]>(block_, block_.get() + used_);
  used_ += joined.size();
  return row;
}

}  // namespace kestrelon::win
