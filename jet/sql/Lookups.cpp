#include "jet/sql/Lookups.h"

#include <algorithm>

#include "jet/sql/TextCompare.h"

namespace kestrelon::jet::sql {

namespace {

bool SameValue(const Value& a, const Value& b) {
  if (const auto* text = std::get_if<std::u16string>(&a)) {
    const auto* other = std::get_if<std::u16string>(&b);
    return other != nullptr && TextsEqual(*text, *other);
  }
  return a == b;
}

}  // namespace

bool Lookup::Supports(ColumnType type) {
  switch (type) {
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kText:
    case ColumnType::kMemo: return true;
    default: return false;
  }
}

std::uint32_t Lookup::Hash(const Value& value) {
  if (const auto* text = std::get_if<std::u16string>(&value)) return HashText(*text);
  if (const auto* number = std::get_if<std::int32_t>(&value)) {
    return static_cast<std::uint32_t>((static_cast<std::uint32_t>(*number) * 0x9E3779B97F4A7C15) >> 32);
  }
  return 0;
}

Lookup::Lookup(const Table& table, std::size_t column) : column_(column), slots_(64) {
  Value value;
  for (Cursor rows = table.Rows(); rows.Next();) {
    rows.Read(column_, value);
    if (!IsNull(value)) Add(table, rows.Row(), value);
  }
}

RowId Lookup::Representative(const Slot& slot) const {
  if ((slot.rows & kGroup) == 0) return RowId{slot.rows};
  return groups_[slot.rows & ~kGroup].Any();
}

std::size_t Lookup::Locate(const Table& table, const Value& value, std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = Home(hash); slots_[i].rows != 0; i = (i + 1) & mask) {
    if (slots_[i].hash != hash) continue;
    Cursor row = table.Rows();
    row.MoveTo(Representative(slots_[i]));
    row.Read(column_, scratch_);
    if (SameValue(scratch_, value)) return i;
  }
  return kNowhere;
}

void Lookup::Find(const Table& table, const Value& value, std::vector<RowId>& rows) const {
  const std::size_t at = Locate(table, value, Hash(value));
  if (at == kNowhere) return;
  const Slot& slot = slots_[at];
  if ((slot.rows & kGroup) == 0) {
    rows.push_back(RowId{slot.rows});
  } else {
    groups_[slot.rows & ~kGroup].AppendTo(rows);
  }
}

void Lookup::Grow() {
  std::vector<Slot> old(slots_.size() * 2);
  old.swap(slots_);
  const std::size_t mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (slot.rows == 0) continue;
    std::size_t i = Home(slot.hash);
    while (slots_[i].rows != 0) i = (i + 1) & mask;
    slots_[i] = slot;
  }
}

void Lookup::Add(const Table& table, RowId row, const Value& value) {
  const std::uint32_t hash = Hash(value);
  const std::size_t at = Locate(table, value, hash);
  if (at != kNowhere) {
    Slot& slot = slots_[at];
    if ((slot.rows & kGroup) == 0) {
      std::uint32_t group = 0;
      if (freeGroups_.empty()) {
        group = static_cast<std::uint32_t>(groups_.size());
        groups_.emplace_back();
      } else {
        group = freeGroups_.back();
        freeGroups_.pop_back();
      }
      groups_[group].Add(RowId{slot.rows});
      slot.rows = group | kGroup;
    }
    groups_[slot.rows & ~kGroup].Add(row);
    return;
  }
  if ((used_ + 1) * 4 > slots_.size() * 3) Grow();
  const std::size_t mask = slots_.size() - 1;
  std::size_t i = Home(hash);
  while (slots_[i].rows != 0) i = (i + 1) & mask;
  slots_[i] = {hash, static_cast<std::uint32_t>(row)};
  ++used_;
}

void Lookup::Remove(RowId row, std::uint32_t hash) {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = Home(hash); slots_[i].rows != 0; i = (i + 1) & mask) {
    Slot& slot = slots_[i];
    if (slot.hash != hash) continue;
    if ((slot.rows & kGroup) == 0) {
      if (slot.rows != static_cast<std::uint32_t>(row)) continue;
      Erase(i);
      return;
    }
    const std::uint32_t index = slot.rows & ~kGroup;
    RowSet& group = groups_[index];
    if (!group.Remove(row)) continue;
    if (group.Size() == 1) {
      slot.rows = static_cast<std::uint32_t>(group.Any());
      group = RowSet();
      freeGroups_.push_back(index);
    }
    return;
  }
}

void Lookup::Erase(std::size_t hole) {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = (hole + 1) & mask; slots_[i].rows != 0; i = (i + 1) & mask) {
    if (((i - Home(slots_[i].hash)) & mask) >= ((i - hole) & mask)) {
      slots_[hole] = slots_[i];
      hole = i;
    }
  }
  slots_[hole] = {};
  --used_;
}

std::vector<RowId> Lookups::Find(const Table& table, std::size_t column, const Value& value) {
  auto found = std::find_if(built_.begin(), built_.end(), [&](const Built& b) { return b.column == column; });
  if (found == built_.end()) found = built_.insert(built_.end(), Built{column, Lookup(table, column)});
  std::vector<RowId> rows;
  found->lookup.Find(table, value, rows);
  std::sort(rows.begin(), rows.end());
  return rows;
}

void Lookups::AddStored(Built& built, const Table& table, RowId row) {
  Cursor cursor = table.Rows();
  cursor.MoveTo(row);
  cursor.Read(built.column, stored_);
  if (!IsNull(stored_)) built.lookup.Add(table, row, stored_);
}

void Lookups::Inserted(const Table& table, RowId row) {
  for (Built& built : built_) AddStored(built, table, row);
}

void Lookups::Remember(const Cursor& row, Old& old) const {
  old.hashes.assign(built_.size(), 0);
  old.present.assign(built_.size(), false);
  Value value;
  for (std::size_t i = 0; i < built_.size(); ++i) {
    row.Read(built_[i].column, value);
    if (IsNull(value)) continue;
    old.present[i] = true;
    old.hashes[i] = Lookup::Hash(value);
  }
}

void Lookups::Deleted(RowId row, const Old& old) {
  for (std::size_t i = 0; i < built_.size(); ++i) {
    if (old.present[i]) built_[i].lookup.Remove(row, old.hashes[i]);
  }
}

void Lookups::Updated(const Table& table, RowId row, std::span<const std::size_t> columns, const Old& old) {
  for (std::size_t i = 0; i < built_.size(); ++i) {
    if (std::find(columns.begin(), columns.end(), built_[i].column) == columns.end()) continue;
    if (old.present[i]) built_[i].lookup.Remove(row, old.hashes[i]);
    AddStored(built_[i], table, row);
  }
}

}  // namespace kestrelon::jet::sql
