#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jet/Value.h"

namespace kestrelon::jet {

enum class ColumnType : std::uint8_t {
  kBoolean = 1,
  kByte = 2,
  kInteger = 3,
  kLong = 4,
  kCurrency = 5,
  kSingle = 6,
  kDouble = 7,
  kDate = 8,
  kBinary = 9,
  kText = 10,
  kOle = 11,
  kMemo = 12,
  kGuid = 15,
  kNumeric = 16,
};

struct Column {
  std::u16string name;
  ColumnType type = ColumnType::kText;
  std::uint16_t number = 0;  // the format's column number: bit in the null mask, never reused
  std::uint16_t length = 0;  // bytes; a text of n characters has 2n; 0 for memo and OLE
  bool autoNumber = false;
};

// The address of a row: page and slot. Stays the same as long as the row lives, also when it grows.
enum class RowId : std::uint32_t {};  // page << 8 | slot

struct TableInternal;

// Reads the rows of a table one after the other in physical order, or one row by its address. Decodes only
// the columns that are asked for. Valid until the table is changed.
class Cursor {
 public:
  // Throws CorruptFile for a table whose rows cannot all be different ones: they hold more than the file.
  explicit Cursor(const TableInternal& table);
  // Steps to the next live row; false at the end.
  bool Next();
  // Stands on one row; throws CorruptFile when the address names no live row.
  void MoveTo(RowId row);
  RowId Row() const;
  // The column's value (`column` is the position in Table::Columns()). Reuses the memory of `value` where it
  // can.
  void Read(std::size_t column, Value& value) const;
  // The same for text and memo columns: false and an empty text for NULL.
  bool ReadText(std::size_t column, std::u16string& text) const;
  // Appends to `text`; false for NULL, which is nothing to append.
  bool AppendText(std::size_t column, std::u16string& text) const;

 private:
  const TableInternal* table_;
  std::uint32_t page_ = 0;
  std::size_t position_ = 0;  // in the table's page list
  int slot_ = -1;
  const std::uint8_t* row_ = nullptr;
  std::size_t size_ = 0;
};

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
