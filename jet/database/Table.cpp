#include <cstring>
#include <limits>

#include "jet/database/DatabaseInternal.h"
#include "jet/page/DataPage.h"
#include "jet/row/LongValue.h"

namespace kestrelon::jet {

TableImpl::TableImpl(DatabaseImpl& database, std::u16string name, TableDef def)
    : database_(&database),
      table_(database.Pages(), std::move(name), std::move(def)),
      encoder_(table_.def, table_.stored),
      indexes_(table_),
      fields_(table_.columns.size()) {
  for (std::size_t position = 0; position < table_.columns.size(); ++position) {
    if (table_.columns[position].autoNumber) autoNumber_ = position;
  }
}

std::optional<std::size_t> TableImpl::FindColumn(std::u16string_view name) const {
  for (std::size_t position = 0; position < table_.columns.size(); ++position) {
    if (EqualNames(table_.columns[position].name, name)) return position;
  }
  return std::nullopt;
}

void TableImpl::Touch() {
  if (touched_) return;
  touched_ = true;
  before_ = {table_.def.rowCount, table_.def.autoNumber, countsChanged_, indexes_.Stale()};
  database_->NoteTouched(*this);
}

void TableImpl::RolledBack() {
  touched_ = false;
  table_.def.rowCount = before_.rowCount;
  table_.def.autoNumber = before_.autoNumber;
  countsChanged_ = before_.countsChanged;
  indexes_.SetStale(before_.indexesStale);
  indexes_.Forget();
  table_.Forget();
}

std::int32_t TableImpl::NextAutoNumber() const {
  const std::int32_t last = LastAutoNumber();
  if (last == std::numeric_limits<std::int32_t>::max()) {
    throw Error(code::kGeneric, u"The autonumber column has no numbers left.");
  }
  return last + 1;
}

void TableImpl::StorePending(EncodedRow& row) {
  for (std::size_t i = 0; i < row.pendingCount; ++i) {
    const PendingLongValue& pending = row.pending[i];
    long_value::Write(*table_.pager, table_.LongValuesOf(pending.column), pending.stored,
                      row.bytes.data() + pending.reference);
  }
}

RowId TableImpl::AppendRaw(std::span<const std::uint8_t> row) {
  const std::uint32_t page = table_.rows.PageWithRoom(row.size());
  std::uint8_t* bytes = table_.rows.Write(page);
  const std::size_t slot = data_page::Append(bytes, row.size(), 0);
  std::memcpy(bytes + data_page::Start(bytes, slot), row.data(), row.size());
  return MakeRowId(page, slot);
}

void TableImpl::SetCounts(std::uint32_t rowCount, std::uint32_t autoNumber) {
  table_.def.rowCount = rowCount;
  table_.def.autoNumber = autoNumber;
}

RowId TableImpl::Insert(std::span<const Value> values) {
  if (values.size() != table_.columns.size()) {
    throw Error(code::kGeneric, u"Number of query values and destination fields are not the same.");
  }
  for (std::size_t position = 0; position < values.size(); ++position)
    fields_[position].value = &values[position];
  Value number;
  std::int32_t counter = LastAutoNumber();
  if (autoNumber_) {
    if (IsNull(values[*autoNumber_])) {
      counter = NextAutoNumber();
      number = counter;
      fields_[*autoNumber_].value = &number;
    } else if (const auto* given = std::get_if<std::int32_t>(&values[*autoNumber_])) {
      counter = std::max(counter, *given);
    }
  }
  encoder_.Encode(fields_, row_);
  const TableIndexes::ValueOf valueOf = [this](std::size_t position) -> const Value& {
    return *fields_[position].value;
  };
  if (!indexes_.None()) indexes_.Check(valueOf, nullptr);

  Atomic atomic(*database_);
  Touch();
  StorePending(row_);
  const RowId row = AppendRaw({row_.bytes.data(), row_.size});
  ++table_.def.rowCount;
  table_.def.autoNumber = static_cast<std::uint32_t>(counter);
  countsChanged_ = true;
  if (!indexes_.None()) indexes_.Accept(valueOf);
  atomic.Done();
  return row;
}

void TableImpl::Update(RowId row, std::span<const std::pair<std::size_t, Value>> changes) {
  const RowPlace place = FindRow(table_, row);
  // The encoder reads the old row while the page changes below it.
  oldRow_.assign(place.bytes, place.bytes + place.size);
  const RowView old(oldRow_.data(), oldRow_.size(), table_.HasVariableColumns(), place.page);
  std::vector<const Value*> changed(table_.columns.size());
  for (const auto& [position, value] : changes) changed.at(position) = &value;

  bool keysTouched = false;
  std::vector<std::pair<std::size_t, std::vector<std::uint32_t>>>
      freed;  // column, pieces of its old long value
  for (std::size_t position = 0; position < changed.size(); ++position) {
    const StoredColumn& column = table_.stored[position];
    Field& field = fields_[position];
    field = {};
    field.value = changed[position];
    const bool boolean = column.Is(ColumnType::kBoolean);
    field.present = old.Has(column.number);
    if (field.present && !boolean) field.raw = old.Field(column);
    if (field.value == nullptr) continue;
    keysTouched = keysTouched || indexes_.Uses(position);
    if (column.LongValue() && field.present) {
      auto pieces = long_value::Pieces(*table_.pager, table_.LongValuesOf(position), field.raw);
      if (!pieces.empty()) freed.emplace_back(position, std::move(pieces));
    }
  }
  std::int32_t counter = LastAutoNumber();
  if (autoNumber_ && changed[*autoNumber_] != nullptr) {
    if (const auto* given = std::get_if<std::int32_t>(changed[*autoNumber_]))
      counter = std::max(counter, *given);
  }
  encoder_.Encode(fields_, row_);

  std::vector<Value> oldValues(table_.columns.size());
  const TableIndexes::ValueOf before = [&](std::size_t position) -> const Value& {
    ReadField(table_, old, position, oldValues[position]);
    return oldValues[position];
  };
  const TableIndexes::ValueOf after = [&](std::size_t position) -> const Value& {
    return changed[position] != nullptr ? *changed[position] : before(position);
  };
  // A table that could not be kept right is not written at all, whatever the column.
  if (!indexes_.None()) indexes_.Check(after, &before);

  Atomic atomic(*database_);
  Touch();
  StorePending(row_);
  Place(place, row_);
  for (const auto& [position, pieces] : freed) long_value::Free(table_.LongValuesOf(position), pieces);
  if (counter != LastAutoNumber()) {
    table_.def.autoNumber = static_cast<std::uint32_t>(counter);
    countsChanged_ = true;
  }
  if (keysTouched) indexes_.Accept(after);
  atomic.Done();
}

// Puts a row's new bytes where the old ones were if there is room, else on another page with a pointer at
// home.
void TableImpl::Place(const RowPlace& place, const EncodedRow& row) {
  constexpr std::size_t kPointer = 4;
  const auto fits = [this](std::uint32_t page, std::size_t slot, std::size_t size) {
    const std::uint8_t* bytes = table_.rows.Read(page);
    const std::size_t had = data_page::End(bytes, slot) - data_page::Start(bytes, slot);
    return size <= had + data_page::FreeBytes(bytes);
  };
  const auto put = [this, &row](std::uint32_t page, std::size_t slot, std::uint16_t flags) {
    std::uint8_t* bytes = table_.rows.Write(page);
    const std::size_t freeBefore = data_page::FreeBytes(bytes);
    data_page::Resize(bytes, slot, row.size, flags);
    std::memcpy(bytes + data_page::Start(bytes, slot), row.bytes.data(), row.size);
    if (data_page::FreeBytes(bytes) > freeBefore) table_.rows.Reopen(page);
  };

  if (fits(place.homePage, place.homeSlot, row.size)) {
    put(place.homePage, place.homeSlot, 0);
    if (place.Moved()) RemoveSlot(place.page, place.slot);
    return;
  }
  if (place.Moved() && fits(place.page, place.slot, row.size)) {
    put(place.page, place.slot, kSlotHidden);
    return;
  }
  if (!fits(place.homePage, place.homeSlot, kPointer)) throw Error(code::kGeneric, u"Record is too large.");
  const std::uint32_t page = table_.rows.PageWithRoom(row.size);
  std::uint8_t* bytes = table_.rows.Write(page);
  const std::size_t slot = data_page::Append(bytes, row.size, kSlotHidden);
  std::memcpy(bytes + data_page::Start(bytes, slot), row.bytes.data(), row.size);
  std::uint8_t* home = table_.rows.Write(place.homePage);
  data_page::Resize(home, place.homeSlot, kPointer, kSlotMoved);
  Put32(home + data_page::Start(home, place.homeSlot), static_cast<std::uint32_t>(MakeRowId(page, slot)));
  if (place.Moved()) {
    RemoveSlot(place.page, place.slot);
  } else {
    table_.rows.Reopen(place.homePage);
  }
}

void TableImpl::RemoveSlot(std::uint32_t page, std::size_t slot) {
  std::uint8_t* bytes = table_.rows.Write(page);
  data_page::Delete(bytes, slot);
  if (data_page::Empty(bytes)) {
    table_.rows.Remove(page);
  } else {
    table_.rows.Reopen(page);
  }
}

void TableImpl::Delete(RowId row) {
  const RowPlace place = FindRow(table_, row);
  const RowView old(place.bytes, place.size, table_.HasVariableColumns(), place.page);
  std::vector<std::pair<std::size_t, std::vector<std::uint32_t>>> freed;
  for (std::size_t position = 0; position < table_.stored.size(); ++position) {
    const StoredColumn& column = table_.stored[position];
    if (!column.LongValue() || !old.Has(column.number)) continue;
    auto pieces = long_value::Pieces(*table_.pager, table_.LongValuesOf(position), old.Field(column));
    if (!pieces.empty()) freed.emplace_back(position, std::move(pieces));
  }

  Atomic atomic(*database_);
  Touch();
  if (!indexes_.None()) {
    std::vector<Value> values(table_.columns.size());
    indexes_.Remove([&](std::size_t position) -> const Value& {
      ReadField(table_, old, position, values[position]);
      return values[position];
    });
  }
  for (const auto& [position, pieces] : freed) long_value::Free(table_.LongValuesOf(position), pieces);
  if (place.Moved()) RemoveSlot(place.page, place.slot);
  RemoveSlot(place.homePage, place.homeSlot);
  if (table_.def.rowCount > 0) --table_.def.rowCount;
  countsChanged_ = true;
  atomic.Done();
}

void TableImpl::DeleteAll() {
  Atomic atomic(*database_);
  Touch();
  if (!indexes_.None()) indexes_.RemoveAll();
  table_.rows.Clear();
  for (auto& pages : table_.longValues) {
    if (pages && pages->OwnedMap() != 0) pages->Clear();
  }
  table_.def.rowCount = 0;
  countsChanged_ = true;
  atomic.Done();
}

void TableImpl::CheckChangeable() {
  if (!indexes_.None()) indexes_.CheckAll();
}

void TableImpl::Settle() {
  if (!Changed()) return;
  if (indexes_.Stale()) indexes_.Rebuild();
  WriteTableCounts(*table_.pager, table_.def);
  countsChanged_ = false;
}

}  // namespace kestrelon::jet
