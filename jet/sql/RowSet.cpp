#include "jet/sql/RowSet.h"

#include <utility>

namespace kestrelon::jet::sql {

namespace {

constexpr std::size_t kListLimit = 16;

}  // namespace

std::size_t RowSet::Home(std::uint32_t row) const {
  return static_cast<std::size_t>((std::uint64_t{row} * 0x9E3779B97F4A7C15) >> 32) & (slots_.size() - 1);
}

std::size_t RowSet::Find(RowId rowId) const {
  const auto row = static_cast<std::uint32_t>(rowId);
  if (!hashed_) {
    for (std::size_t i = 0; i < count_; ++i) {
      if (slots_[i] == row) return i;
    }
    return kNowhere;
  }
  for (std::size_t i = Home(row); slots_[i] != 0; i = (i + 1) & (slots_.size() - 1)) {
    if (slots_[i] == row) return i;
  }
  return kNowhere;
}

void RowSet::Rebuild(std::size_t capacity) {
  std::vector<std::uint32_t> old = std::exchange(slots_, {});
  hashed_ = capacity > kListLimit;
  if (!hashed_) slots_.reserve(count_);
  if (hashed_) slots_.assign(capacity, 0);
  for (const std::uint32_t row : old) {
    if (row == 0) continue;
    if (!hashed_) {
      slots_.push_back(row);
      continue;
    }
    std::size_t i = Home(row);
    while (slots_[i] != 0) i = (i + 1) & (slots_.size() - 1);
    slots_[i] = row;
  }
}

void RowSet::Add(RowId rowId) {
  const auto row = static_cast<std::uint32_t>(rowId);
  if (!hashed_ && count_ < kListLimit) {
    slots_.push_back(row);
    ++count_;
    return;
  }
  if (!hashed_) {
    Rebuild(4 * kListLimit);
  } else if ((count_ + 1) * 4 > slots_.size() * 3) {
    Rebuild(slots_.size() * 2);
  }
  std::size_t i = Home(row);
  while (slots_[i] != 0) i = (i + 1) & (slots_.size() - 1);
  slots_[i] = row;
  ++count_;
}

bool RowSet::Remove(RowId rowId) {
  std::size_t hole = Find(rowId);
  if (hole == kNowhere) return false;
  --count_;
  if (!hashed_) {
    slots_[hole] = slots_.back();
    slots_.pop_back();
    return true;
  }
  // Rows that were pushed past the hole move back into it, so that no marks of removed rows pile up.
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = (hole + 1) & mask; slots_[i] != 0; i = (i + 1) & mask) {
    if (((i - Home(slots_[i])) & mask) >= ((i - hole) & mask)) {
      slots_[hole] = slots_[i];
      hole = i;
    }
  }
  slots_[hole] = 0;
  // A sparse table would make Any() and AppendTo() walk over nothing.
  if (count_ * 8 < slots_.size()) Rebuild(count_ <= kListLimit / 2 ? 0 : slots_.size() / 4);
  return true;
}

RowId RowSet::Any() const {
  for (const std::uint32_t row : slots_) {
    if (row != 0) return RowId{row};
  }
  return RowId{0};
}

void RowSet::AppendTo(std::vector<RowId>& rows) const {
  rows.reserve(rows.size() + count_);
  for (const std::uint32_t row : slots_) {
    if (row != 0) rows.push_back(RowId{row});
  }
}

}  // namespace kestrelon::jet::sql
