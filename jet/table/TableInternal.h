#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jet/base/RowId.h"
#include "jet/base/Value.h"
#include "jet/page/PageSet.h"
#include "jet/page/Pager.h"
#include "jet/row/RowCodec.h"
#include "jet/schema/Column.h"
#include "jet/schema/TableDef.h"

namespace kestrelon::jet {

// A table as the layers below the SQL share it: its definition and its pages.
struct TableInternal {
  TableInternal(Pager& pagerOfFile, std::u16string tableName, TableDef definition);
  TableInternal(const TableInternal&) = delete;
  TableInternal& operator=(const TableInternal&) = delete;

  bool HasVariableColumns() const { return def.variableColumns > 0; }
  // Position of the column with this number.
  std::optional<std::size_t> PositionOf(std::uint16_t number) const;
  // The long values of the column at a position; only memo and OLE columns have them.
  PageSet& LongValuesOf(std::size_t position) { return *longValues[position]; }
  const PageSet& LongValuesOf(std::size_t position) const { return *longValues[position]; }
  // Forgets what mirrors the pages, after a rollback.
  void Forget();
  // Throws CorruptFile when the moved rows and the long values hold several times more than the file. Nothing
  // but bytes that many rows share makes that so, and of such a table even reading it could take any time,
  // and copying it any memory. Looks at the rows once, and into no long value.
  void CheckSize() const {
    if (!sizeChecked_) LookAtSize();
  }
  // What to reserve memory for: the count of the definition, but no more than the table's pages can hold.
  std::size_t LikelyRows() const;
  // One wrong length may count as much as the whole file, and is no reason to refuse the other rows.
  std::uint64_t MostSharableBytes() const { return 4 * std::uint64_t{pager->PageCount()} * kPageSize; }
  [[noreturn]] void ThrowOversize() const {
    ThrowCorrupt("rows hold many times more than the file", def.page);
  }

  Pager* pager;
  std::u16string name;
  TableDef def;
  std::vector<Column> columns;       // by number
  std::vector<StoredColumn> stored;  // the same columns
  PageSet rows;
  std::vector<std::optional<PageSet>> longValues;  // by position

 private:
  void LookAtSize() const;

  mutable bool sizeChecked_ = false;
};

// Where a row lies: its home slot, which never changes, and the slot that holds its bytes.
struct RowPlace {
  std::uint32_t homePage = 0, page = 0;
  std::size_t homeSlot = 0, slot = 0;
  const std::uint8_t* bytes = nullptr;
  std::size_t size = 0;
  bool Moved() const { return homePage != page || homeSlot != slot; }
};
// Throws CorruptFile when the address names no live row of the table.
RowPlace FindRow(const TableInternal& table, RowId row);

// The bytes of a column of a row, long values resolved to what they store; nothing if null. `buffer` serves
// chains.
std::optional<std::span<const std::uint8_t>> StoredField(const TableInternal& table, const RowView& row,
                                                         std::size_t position,
                                                         std::vector<std::uint8_t>& buffer);
// The value of a column of a row.
void ReadField(const TableInternal& table, const RowView& row, std::size_t position, Value& value);

}  // namespace kestrelon::jet
