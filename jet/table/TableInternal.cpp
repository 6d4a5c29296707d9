#include "jet/table/TableInternal.h"

#include <algorithm>
#include <utility>

#include "jet/page/DataPage.h"
#include "jet/row/LongValue.h"

namespace kestrelon::jet {

TableInternal::TableInternal(Pager& pagerOfFile, std::u16string tableName, TableDef definition)
    : pager(&pagerOfFile),
      name(std::move(tableName)),
      def(std::move(definition)),
      stored(def.columns),
      rows(pagerOfFile, def.ownedMap, def.freeMap, def.page, true) {
  std::sort(stored.begin(), stored.end(),
            [](const StoredColumn& a, const StoredColumn& b) { return a.number < b.number; });
  longValues.resize(stored.size());
  for (std::size_t position = 0; position < stored.size(); ++position) {
    const StoredColumn& column = stored[position];
    columns.push_back({column.name, static_cast<ColumnType>(column.type), column.number, column.length,
                       column.Is(ColumnType::kLong) && (column.flags & StoredColumn::kAutoNumber) != 0});
    if (!column.LongValue()) continue;
    LongValueMaps maps;
    for (const LongValueMaps& each : def.longValues) {
      if (each.column == column.number) maps = each;
    }
    longValues[position].emplace(pagerOfFile, maps.owned, maps.free, kLongValueOwner, false);
  }
}

std::optional<std::size_t> TableInternal::PositionOf(std::uint16_t number) const {
  for (std::size_t position = 0; position < stored.size(); ++position) {
    if (stored[position].number == number) return position;
  }
  return std::nullopt;
}

void TableInternal::Forget() {
  rows.Forget();
  for (auto& pages : longValues) {
    if (pages) pages->Forget();
  }
}

namespace {

// The bytes of a row that may be shared with another one: its own if it was moved, and its long values. None
// where it cannot be read, since nobody gets at them then.
std::uint64_t SharableBytes(const TableInternal& table, const std::vector<const StoredColumn*>& longColumns,
                            RowId row) {
  try {
    const RowPlace place = FindRow(table, row);
    std::uint64_t bytes = place.Moved() ? place.size : 0;
    if (longColumns.empty()) return bytes;
    const RowView view(place.bytes, place.size, table.HasVariableColumns(), place.page);
    for (const StoredColumn* column : longColumns) {
      if (!view.Has(column->number)) continue;
      const auto field = view.Field(*column);
      if (!long_value::Outside(field)) continue;
      const std::uint32_t head = Get32(field.data()), length = head & long_value::kLengthBits;
      const bool oneRow = (head & long_value::kRowBit) != 0;
      if (length <= (oneRow ? kPageSize : table.pager->PageCount() * std::uint64_t{kPageSize}))
        bytes += length;
    }
    return bytes;
  } catch (const CorruptFile&) {
    return 0;
  }
}

}  // namespace

std::size_t TableInternal::LikelyRows() const {
  return std::min<std::size_t>(def.rowCount, rows.Pages().size() * kMostSlots);
}

void TableInternal::LookAtSize() const {
  std::vector<const StoredColumn*> longColumns;
  for (const StoredColumn& column : stored) {
    if (column.LongValue()) longColumns.push_back(&column);
  }
  const std::uint64_t most = MostSharableBytes();
  std::uint64_t bytes = 0;
  for (const std::uint32_t page : rows.Pages()) {
    const std::uint8_t* start = nullptr;
    try {
      start = rows.Read(page);
    } catch (const CorruptFile&) {
      continue;
    }
    for (std::size_t slot = 0; slot < std::min(data_page::SlotCount(start), kMostSlots); ++slot) {
      const std::uint16_t entry = data_page::Slot(start, slot);
      if ((entry & kSlotHidden) != 0 || ((entry & kSlotMoved) == 0 && longColumns.empty())) continue;
      bytes += SharableBytes(*this, longColumns, MakeRowId(page, slot));
      if (bytes > most) ThrowOversize();
    }
  }
  sizeChecked_ = true;
}

RowPlace FindRow(const TableInternal& table, RowId row) {
  RowPlace place;
  place.homePage = place.page = static_cast<std::uint32_t>(row) >> 8;
  place.homeSlot = place.slot = static_cast<std::uint32_t>(row) & 0xFF;
  const std::uint8_t* page = table.rows.Read(place.page);
  if (place.slot >= data_page::SlotCount(page)) ThrowCorrupt("a row does not exist", place.page);
  const std::uint16_t entry = data_page::Slot(page, place.slot);
  if ((entry & kSlotHidden) != 0) ThrowCorrupt("a row does not exist", place.page);
  if ((entry & kSlotMoved) != 0) {
    const std::uint32_t pointer = Get32(page + data_page::Start(page, place.slot));
    place.page = pointer >> 8;
    place.slot = pointer & 0xFF;
    page = table.rows.Read(place.page);
    if (place.slot >= data_page::SlotCount(page) ||
        (data_page::Slot(page, place.slot) & kSlotDeleted) != kSlotHidden) {
      ThrowCorrupt("a moved row does not exist", place.page);
    }
  }
  const std::size_t start = data_page::Start(page, place.slot);
  place.bytes = page + start;
  place.size = data_page::End(page, place.slot) - start;
  return place;
}

std::optional<std::span<const std::uint8_t>> StoredField(const TableInternal& table, const RowView& row,
                                                         std::size_t position,
                                                         std::vector<std::uint8_t>& buffer) {
  const StoredColumn& column = table.stored[position];
  if (!row.Has(column.number)) return std::nullopt;
  const auto field = row.Field(column);
  if (!column.LongValue()) return field;
  return long_value::Read(*table.pager, table.LongValuesOf(position), field, buffer);
}

void ReadField(const TableInternal& table, const RowView& row, std::size_t position, Value& value) {
  const StoredColumn& column = table.stored[position];
  if (column.Is(ColumnType::kBoolean)) {
    value = row.Has(column.number);
    return;
  }
  if (!row.Has(column.number)) {
    value = std::monostate{};
  } else if (!column.LongValue()) {
    DecodeField(column, row.Field(column), value, 0);
  } else {
    std::vector<std::uint8_t> buffer;
    DecodeField(column,
                long_value::Read(*table.pager, table.LongValuesOf(position), row.Field(column), buffer),
                value, 0);
  }
}

}  // namespace kestrelon::jet
