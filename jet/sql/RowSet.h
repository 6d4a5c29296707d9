#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "jet/base/RowId.h"

namespace kestrelon::jet::sql {

// A set of row addresses of any size in 4 to 16 bytes a row. Adding and removing one row takes the same time
// in a set of a hundred thousand as in a set of two. No order.
class RowSet {
 public:
  std::size_t Size() const { return count_; }
  // The row must not be in the set.
  void Add(RowId row);
  // False when the row was not in the set.
  bool Remove(RowId row);
  bool Contains(RowId row) const { return Find(row) != kNowhere; }
  // Any row; the set must not be empty.
  RowId Any() const;
  void AppendTo(std::vector<RowId>& rows) const;

 private:
  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

  bool Hashed() const { return hashed_; }
  std::size_t Home(std::uint32_t row) const;
  std::size_t Find(RowId row) const;
  void Rebuild(std::size_t capacity);

  // Up to a few rows: a plain list. More: a hash table with open addressing in a power of two of slots, 0 for
  // empty (page 0 holds no rows).
  std::vector<std::uint32_t> slots_;
  std::uint32_t count_ = 0;
  bool hashed_ = false;
};

}  // namespace kestrelon::jet::sql
