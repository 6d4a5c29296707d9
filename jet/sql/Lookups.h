#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "jet/database/Table.h"
#include "jet/sql/RowSet.h"

namespace kestrelon::jet::sql {

// The rows of one table by the value of one column, in memory: a hash table that holds row addresses and no
// values (8 bytes of each, in slots of which 3/8 to 3/4 are used); a candidate is compared with the row
// itself.
class Lookup {
 public:
  Lookup(const Table& table, std::size_t column);  // one scan

  // Whether columns of this type can be looked up: texts, memos and whole numbers.
  static bool Supports(ColumnType type);
  // The hash of a value of the column; equal values have equal hashes.
  static std::uint32_t Hash(const Value& value);

  // Appends the rows with this value, in no order. NULL equals nothing.
  void Find(const Table& table, const Value& value, std::vector<RowId>& rows) const;
  // The row is in the table with this value already.
  void Add(const Table& table, RowId row, const Value& value);
  // `hash` is that of the value under which the row was added.
  void Remove(RowId row, std::uint32_t hash);

 private:
  // `rows` is 0 for an empty slot, else a row, or with kGroup set the position in groups_ of several rows.
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t rows = 0;
  };
  static constexpr std::uint32_t kGroup = 0x80000000;
  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

  std::size_t Home(std::uint32_t hash) const { return hash & (slots_.size() - 1); }
  RowId Representative(const Slot& slot) const;
  std::size_t Locate(const Table& table, const Value& value, std::uint32_t hash) const;
  void Grow();
  void Erase(std::size_t slot);

  std::size_t column_;
  std::vector<Slot> slots_;
  std::size_t used_ = 0;
  std::vector<RowSet> groups_;
  std::vector<std::uint32_t> freeGroups_;
  mutable Value scratch_;  // of a candidate row, kept for its memory
};

// The lookups of one table, each built when it is first asked for. Whoever changes the table tells: nothing
// built, nothing to do.
class Lookups {
 public:
  // Rows whose column equals the value, in physical order. The column's type must be one that Lookup
  // supports, the value of that type.
  std::vector<RowId> Find(const Table& table, std::size_t column, const Value& value);

  bool Any() const { return !built_.empty(); }
  // After the row was added. What it holds is read from it: values may be stored otherwise than they were
  // given.
  void Inserted(const Table& table, RowId row);

  // Hashes of a row's values in the columns that have a lookup; taken before the row is deleted or changed.
  struct Old {
    std::vector<std::uint32_t> hashes;  // one for each lookup
    std::vector<bool> present;          // false: NULL
  };
  void Remember(const Cursor& row, Old& old) const;
  void Deleted(RowId row, const Old& old);
  // After the changes to these columns were made.
  void Updated(const Table& table, RowId row, std::span<const std::size_t> columns, const Old& old);
  void Clear() { built_.clear(); }

 private:
  struct Built {
    std::size_t column;
    Lookup lookup;
  };
  void AddStored(Built& built, const Table& table, RowId row);

  std::vector<Built> built_;
  Value stored_;  // kept for its memory
};

}  // namespace kestrelon::jet::sql
