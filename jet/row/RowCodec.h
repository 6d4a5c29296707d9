#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "jet/base/Value.h"
#include "jet/schema/TableDef.h"

namespace kestrelon::jet {

// A row longer than this is refused; what its memos hold outside the row is not counted.
inline constexpr std::size_t kMostRowBytes = 4060;

// The parts of a row as it stands on a page. Reads nothing until asked; the fields are checked when they are
// asked for.
class RowView {
 public:
  RowView() = default;
  // `variable` says whether the table has variable columns, now or ever. Throws CorruptFile when the row is
  // too short for its own counts.
  RowView(const std::uint8_t* row, std::size_t size, bool variable, std::uint32_t page)
      : row_(row), size_(size), page_(page) {
    if (size < 2) Fail("a row is too short");
    columns_ = Get16(row);
    const std::size_t maskBytes = (columns_ + 7) / 8;
    if (size < 2 + maskBytes) Fail("a row is too short for its mask");
    dataEnd_ = size - maskBytes;
    mask_ = row + dataEnd_;
    if (!variable) return;
    if (dataEnd_ < 6) Fail("a row is too short for its offsets");
    variables_ = Get16(row + dataEnd_ - 2);
    if (dataEnd_ < 2 + 2 * (variables_ + 2)) Fail("a row is too short for its offsets");
    starts_ = row + dataEnd_ - 2;
    dataEnd_ -= 2 * (variables_ + 2);
  }

  // The mask bit: "not null"; for a boolean column the value itself.
  bool Has(std::uint16_t columnNumber) const {
    return columnNumber < columns_ && (mask_[columnNumber / 8] >> columnNumber % 8 & 1) != 0;
  }
  // The bytes of a column that Has(); empty for a variable column that is younger than the row.
  std::span<const std::uint8_t> Field(const StoredColumn& column) const {
    if (column.Fixed()) {
      const std::size_t start = std::size_t{2} + column.fixedOffset;
      if (start + column.length > dataEnd_) Fail("a fixed column lies outside its row");
      return {row_ + start, column.length};
    }
    if (column.variableIndex >= variables_) return {};
    const std::uint8_t* at = starts_ - 2 * (std::size_t{column.variableIndex} + 1);
    const std::size_t start = Get16(at), end = Get16(at - 2);
    if (start > end || end > dataEnd_) Fail("a variable column lies outside its row");
    return {row_ + start, end - start};
  }
  std::size_t ColumnCount() const { return columns_; }
  std::size_t VariableCount() const { return variables_; }
  std::span<const std::uint8_t> Bytes() const { return {row_, size_}; }
  // Offset in the row of a variable field's bytes, for patching.
  std::size_t OffsetOf(std::span<const std::uint8_t> field) const {
    return static_cast<std::size_t>(field.data() - row_);
  }

 private:
  [[noreturn]] void Fail(const char* what) const;

  const std::uint8_t* row_ = nullptr;
  const std::uint8_t* mask_ = nullptr;
  const std::uint8_t* starts_ =
      nullptr;  // just past the offset of variable column 0; the others lie before it
  std::size_t size_ = 0, columns_ = 0, variables_ = 0, dataEnd_ = 0;
  std::uint32_t page_ = 0;
};

// What is to stand in one column of a row that is being built.
struct Field {
  const Value* value = nullptr;  // if not null; else `raw` and `present`, taken from the old row
  std::span<const std::uint8_t> raw;
  bool present = false;
};

// A long value that must be stored before its row: its place in the row and its stored bytes.
struct PendingLongValue {
  std::size_t column = 0;     // position
  std::size_t reference = 0;  // offset in the row
  std::vector<std::uint8_t> stored;
};

struct EncodedRow {
  std::array<std::uint8_t, kPageSize> bytes;
  std::size_t size = 0;
  std::size_t pendingCount = 0;
  std::vector<PendingLongValue> pending;  // the first pendingCount count; the others keep their memory
};

// Turns values into rows of one table.
class RowEncoder {
 public:
  // `columns` by number; must outlive the encoder.
  RowEncoder(const TableDef& def, const std::vector<StoredColumn>& columns);

  // Builds the row; memos that fit go into it, and where the row gets too long, out of it again. Throws
  // code::kTooLong, code::kTypeMismatch, or kGeneric for a row that is too long in any case.
  void Encode(std::span<const Field> fields, EncodedRow& out) const;

 private:
  bool TryEncode(std::span<const Field> fields, std::size_t mostInline, EncodedRow& out) const;
  std::size_t EncodeLongValue(std::size_t position, const Field& field, std::size_t mostInline,
                              std::size_t at, EncodedRow& out) const;

  const std::vector<StoredColumn>* columns_;
  std::uint16_t maxColumns_;
  std::size_t fixedBytes_ = 0;
  std::vector<std::size_t> fixed_;  // positions of the fixed columns
  std::vector<std::optional<std::size_t>>
      variable_;  // by variable index; nothing where the column was dropped
};

// The value of a field whose bytes are at hand; long values as their stored bytes. Reuses the memory of
// `value`.
void DecodeField(const StoredColumn& column, std::span<const std::uint8_t> bytes, Value& value,
                 std::uint32_t page);

}  // namespace kestrelon::jet
