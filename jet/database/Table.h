#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jet/base/RowId.h"
#include "jet/base/Value.h"
#include "jet/schema/Column.h"
#include "jet/table/Cursor.h"

namespace kestrelon::jet {

// One local table of an open database. Owned by Database; the reference stays valid until the Database is
// destroyed, or until a statement is rolled back (ask Database::OpenTable again then).
class Table {
 public:
  virtual ~Table() = default;
  virtual const std::u16string& Name() const = 0;
  // By column number, which is the order of VALUES(...) and SELECT *.
  virtual const std::vector<Column>& Columns() const = 0;
  // Without regard to case.
  virtual std::optional<std::size_t> FindColumn(std::u16string_view name) const = 0;
  virtual std::uint32_t RowCount() const = 0;
  // Every row's address in physical order, which for a table only appended to is the order of insertion.
  virtual Cursor Rows() const = 0;

  // Adds a row: one value per column, already of the column's type (see Value.h). NULL in the autonumber
  // column draws the next number, a given number raises the counter. Throws code::kTooLong for a text longer
  // than its column, kGeneric for a duplicate key of a unique index and for a key that an index of the file
  // cannot hold; nothing is changed then.
  virtual RowId Insert(std::span<const Value> values) = 0;
  // Replaces some columns of a row (position, new value). The row keeps its address.
  virtual void Update(RowId row, std::span<const std::pair<std::size_t, Value>> changes) = 0;
  virtual void Delete(RowId row) = 0;
  // Empties the table at the cost of its pages, not its rows. The autonumber counter stays.
  virtual void DeleteAll() = 0;
  // Throws code::kGeneric when no row can be added, changed or removed, whatever is in it: an index of the
  // file holds a text without a key or sorts in an order that we do not know, or the table is part of a
  // relationship or of a replica. The four members above do so too.
  virtual void CheckChangeable() = 0;
  // The last number given out by the autonumber column.
  virtual std::int32_t LastAutoNumber() const = 0;
};

}  // namespace kestrelon::jet
