#include "jet/table/TableIndexes.h"

#include <algorithm>
#include <limits>

#include "jet/page/UsageMap.h"
#include "jet/table/Cursor.h"

namespace kestrelon::jet {
namespace {

[[noreturn]] void ThrowDuplicate() {
  throw Error(
      code::kGeneric,
      u"The changes you requested to the table were not successful because they would create duplicate "
      u"values "
      u"in the index, primary key, or relationship. Change the data in the field or fields that contain "
      u"duplicate data, remove the index, or redefine the index to permit duplicate entries and try again.");
}
[[noreturn]] void ThrowNullKey() {
  throw Error(code::kGeneric, u"Index or primary key cannot contain a Null value.");
}
[[noreturn]] void ThrowNoKey(const std::u16string& table) {
  throw Error(code::kGeneric,
              u"The table '" + table +
                  u"' has an index that cannot hold this text: it knows the characters of Western "
                  u"European languages only. Nothing was changed.");
}
[[noreturn]] void ThrowUnknownOrder(const std::u16string& table) {
  throw Error(code::kGeneric,
              u"The table '" + table +
                  u"' has an index in a sort order that cannot be kept right, so it is read-only.");
}

// Whether rows may come and go depends on another table then, and on cascades.
[[noreturn]] void ThrowRelated(const std::u16string& table) {
  throw Error(
      code::kGeneric,
      u"The table '" + table + u"' is part of a relationship that cannot be enforced, so it is read-only.");
}

// Each row of a replica carries a generation and a history, from which other replicas learn what changed.
[[noreturn]] void ThrowReplicated(const std::u16string& table) {
  throw Error(code::kGeneric, u"The table '" + table + u"' belongs to a replica, so it is read-only.");
}

bool IsInteger(const StoredColumn& column) {
  return column.Is(ColumnType::kLong) || column.Is(ColumnType::kInteger) || column.Is(ColumnType::kByte);
}

std::vector<std::size_t> PositionsOf(const TableInternal& table, const RealIndex& index) {
  std::vector<std::size_t> positions;
  for (const KeyColumn& column : index.columns) {
    const auto position = table.PositionOf(column.number);
    if (!position) ThrowCorrupt("an index names a column that is not there", table.def.page);
    positions.push_back(*position);
  }
  if (positions.empty()) ThrowCorrupt("an index has no columns", table.def.page);
  return positions;
}

}  // namespace

bool TableIndexes::Uses(std::size_t position) const {
  const std::uint16_t number = table_->stored[position].number;
  for (const RealIndex& index : table_->def.indexes) {
    for (const KeyColumn& column : index.columns) {
      if (column.number == number) return true;
    }
  }
  return false;
}

// The pages of a stale tree are given back unread, so they had better be the index's own.
void TableIndexes::CheckPages(const RealIndex& index) const {
  bool hasRoot = false;
  for (const std::uint32_t page : UsageMap(*table_->pager, index.map).Pages()) {
    const std::uint8_t* bytes = table_->pager->Read(page);
    const bool isIndex = bytes[0] == page_type::kIndexLeaf || bytes[0] == page_type::kIndexNode;
    if (!isIndex || Get32(bytes + 4) != table_->def.page)
      ThrowCorrupt("an index owns a page of something else", page);
    hasRoot = hasRoot || page == index.root;
  }
  if (!hasRoot) ThrowCorrupt("an index has lost its root", index.root);
}

void TableIndexes::Prepare() {
  if (prepared_) return;
  for (const LogicalIndex& index : table_->def.logicalIndexes) {
    if (index.kind == LogicalIndex::kForeign) ThrowRelated(table_->name);
  }
  for (const StoredColumn& column : table_->stored) {
    if (column.name == u"s_Generation") ThrowReplicated(table_->name);
  }
  keys_.clear();
  for (const RealIndex& index : table_->def.indexes) {
    Keys& keys = keys_.emplace_back();
    keys.columns = PositionsOf(*table_, index);
    bool text = false;
    for (const std::size_t position : keys.columns) {
      if (!KnowsKeysOf(table_->stored[position])) ThrowUnknownOrder(table_->name);
      text = text || table_->stored[position].Text();
    }
    CheckPages(index);
    keys.integer = keys.columns.size() == 1 && IsInteger(table_->stored[keys.columns.front()]);
    if (keys.integer && index.Unique()) {
      keys.highest = std::numeric_limits<std::int64_t>::min();
      Value value;
      for (Cursor cursor(*table_); cursor.Next();) {
        cursor.Read(keys.columns.front(), value);
        if (const auto* number = std::get_if<std::int32_t>(&value))
          keys.highest = std::max<std::int64_t>(keys.highest, *number);
      }
    } else if (text || index.Unique()) {
      Learn(keys_.size() - 1);
    }
  }
  prepared_ = true;
}

// Reads the keys of all rows; this is also where a row without a key is met before anything has been changed.
void TableIndexes::Learn(std::size_t index) {
  Keys& keys = keys_[index];
  const IndexEntries entries = CollectEntries(*table_, table_->def.indexes[index]);
  keys.used.clear();
  keys.known = table_->def.indexes[index].Unique();
  for (std::size_t i = 0; keys.known && i < entries.size(); ++i) {
    const auto entry = entries[i];
    keys.used.emplace(reinterpret_cast<const char*>(entry.data()), entry.size() - kRowPointer);
  }
}

bool TableIndexes::KeyOf(std::size_t index, const ValueOf& valueOf, std::string& key, bool& anyNull,
                         bool& allNull) const {
  key.clear();
  anyNull = false;
  allNull = true;
  const RealIndex& definition = table_->def.indexes[index];
  for (std::size_t i = 0; i < definition.columns.size(); ++i) {
    const std::size_t position = keys_[index].columns[i];
    const Value& value = valueOf(position);
    const bool null = IsNull(value) && !table_->stored[position].Is(ColumnType::kBoolean);
    anyNull = anyNull || null;
    allNull = allNull && null;
    if (!AppendKey(table_->stored[position], value, definition.columns[i].ascending, key)) return false;
  }
  return true;
}

void TableIndexes::Check(const ValueOf& after, const ValueOf* before) {
  Prepare();
  for (std::size_t index = 0; index < keys_.size(); ++index) {
    Keys& keys = keys_[index];
    const RealIndex& definition = table_->def.indexes[index];
    bool anyNull = false, allNull = false;
    if (!KeyOf(index, after, keys.added, anyNull, allNull)) ThrowNoKey(table_->name);
    if (keys.added.size() + kRowPointer > kLongestEntry)
      throw Error(code::kGeneric, u"An index key is too long.");
    keys.removed.clear();
    bool ignored = false;
    if (before != nullptr && !KeyOf(index, *before, keys.removed, ignored, ignored)) ThrowNoKey(table_->name);
    keys.changes = before == nullptr || keys.added != keys.removed;
    if (!keys.changes) continue;
    if (anyNull && (definition.flags & RealIndex::kRequired) != 0) ThrowNullKey();
    if (!definition.Unique() || allNull) continue;
    if (keys.integer && !keys.known) {
      const Value& value = after(keys.columns.front());
      const auto* number = std::get_if<std::int32_t>(&value);
      if (number != nullptr && *number > keys.highest) continue;
      Learn(index);
    }
    if (keys.used.contains(keys.added)) ThrowDuplicate();
  }
}

void TableIndexes::Accept(const ValueOf& after) {
  for (Keys& keys : keys_) {
    if (!keys.changes) continue;
    stale_ = true;
    if (keys.known) {
      keys.used.erase(keys.removed);
      keys.used.insert(keys.added);
    }
    if (!keys.integer) continue;
    if (const auto* number = std::get_if<std::int32_t>(&after(keys.columns.front()))) {
      keys.highest = std::max<std::int64_t>(keys.highest, *number);
    }
  }
}

void TableIndexes::Remove(const ValueOf& before) {
  Prepare();
  for (std::size_t index = 0; index < keys_.size(); ++index) {
    stale_ = true;
    if (!keys_[index].known) continue;
    bool ignored = false;
    if (KeyOf(index, before, keys_[index].removed, ignored, ignored))
      keys_[index].used.erase(keys_[index].removed);
  }
}

void TableIndexes::RemoveAll() {
  Prepare();
  for (Keys& keys : keys_) {
    stale_ = true;
    keys.used.clear();
    keys.highest = std::numeric_limits<std::int64_t>::min();
  }
}

void TableIndexes::Rebuild() {
  for (RealIndex& index : table_->def.indexes) {
    IndexEntries entries = CollectEntries(*table_, index);
    entries.Sort();
    BuildIndex(*table_->pager, table_->def.page, index, entries);
  }
  stale_ = false;
}

IndexEntries CollectEntries(const TableInternal& table, const RealIndex& index) {
  const std::vector<std::size_t> positions = PositionsOf(table, index);
  IndexEntries entries;
  entries.Reserve(table.LikelyRows(), 5 * positions.size());
  std::string key;
  Value value;
  for (Cursor cursor(table); cursor.Next();) {
    key.clear();
    bool allNull = true;
    for (std::size_t i = 0; i < positions.size(); ++i) {
      const StoredColumn& column = table.stored[positions[i]];
      cursor.Read(positions[i], value);
      allNull = allNull && IsNull(value);
      if (!AppendKey(column, value, index.columns[i].ascending, key)) ThrowNoKey(table.name);
    }
    if (allNull && index.IgnoresNulls()) continue;
    entries.Add(key, cursor.Row());
  }
  return entries;
}

}  // namespace kestrelon::jet
