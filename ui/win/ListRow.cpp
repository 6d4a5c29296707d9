#include <cassert>

#include "ui/win/ListView.h"

namespace kestrelon::win {

namespace {
constexpr std::size_t kTagPiece = ListRow::kColumns - 1;
}

std::wstring_view ListRow::Piece(std::size_t index) const {
  const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
  return std::wstring_view(joined_).substr(begin, ends_[index] - begin);
}

void ListRow::SetPiece(std::size_t index, std::wstring_view text) {
  const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
  const std::size_t oldLength = ends_[index] - begin;
  joined_.replace(begin, oldLength, text);
  for (std::size_t i = index; i < ends_.size(); ++i)
    ends_[i] = static_cast<std::uint32_t>(ends_[i] - oldLength + text.size());
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

void ListRow::Set(const std::array<std::wstring_view, 5>& texts, std::wstring_view tag) {
  std::size_t length = tag.size();
  for (const std::wstring_view text : texts) length += text.size();
  std::wstring joined;
  joined.reserve(length);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    joined += texts[i];
    ends_[i] = static_cast<std::uint32_t>(joined.size());
  }
  joined += tag;
  ends_[kTagPiece] = static_cast<std::uint32_t>(joined.size());
  joined_ = std::move(joined);
}

}  // namespace kestrelon::win
