#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "jet/base/RowId.h"
#include "jet/base/Value.h"

namespace kestrelon::jet {

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

}  // namespace kestrelon::jet
