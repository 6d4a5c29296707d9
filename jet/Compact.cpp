#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>
#include <utility>

#include "jet/DataPage.h"
#include "jet/DatabaseInternal.h"
#include "jet/Index.h"
#include "jet/Layout.h"
#include "jet/LongValue.h"

// Compaction: a new file from the definitions and rows of an old one. Page 0 is copied as it is, because the
// security identifiers in the catalog are masked with a string that depends on it. Tables follow one another
// in order of their object ids, rows in the order of the primary key where there is one. Numbers that change
// are those of the definition pages, which are the tables' object ids (MSysObjects, MSysACEs, MSysQueries and
// foreign keys name them), and those of columns after dropped ones.

namespace kestrelon::jet {
namespace {

constexpr std::uint32_t kRowsPerRelease = 4096;  // how often the old file's pages are let go

using IdMap = std::map<std::uint32_t, std::uint32_t>;  // old definition page -> new

std::uint32_t Mapped(const IdMap& ids, std::uint32_t id) {
  const auto found = ids.find(id);
  return found == ids.end() ? id : found->second;
}

// The definition of the copy: columns numbered without gaps, no pages yet.
TableDef CopyDefinition(const TableInternal& source) {
  TableDef def;
  def.kind = source.def.kind;
  std::map<std::uint16_t, std::uint16_t> numbers;
  for (const StoredColumn& column : source.stored) {
    const auto number = static_cast<std::uint16_t>(def.columns.size());
    numbers[column.number] = number;
    def.columns.push_back(column);
    def.columns.back().number = number;
  }
  AssignPlaces(def);
  def.indexes = source.def.indexes;
  for (RealIndex& index : def.indexes) {
    for (KeyColumn& column : index.columns) {
      if (!numbers.contains(column.number))
        ThrowCorrupt("an index names a column that is not there", source.def.page);
      column.number = numbers[column.number];
    }
  }
  def.logicalIndexes = source.def.logicalIndexes;
  return def;
}

class TableCopy {
 public:
  TableCopy(Pager& sourcePager, const TableInternal& source, TableImpl& target, const IdMap& ids)
      : sourcePager_(sourcePager),
        source_(source),
        target_(target),
        ids_(ids),
        encoder_(target.Internal().def, target.Internal().stored),
        fields_(source.stored.size()) {
    // A row may be copied as it is where every column keeps its place.
    samePlaces_ = source.def.maxColumns == target.Internal().def.maxColumns &&
                  source.def.variableColumns == target.Internal().def.variableColumns;
    for (std::size_t position = 0; position < source.stored.size(); ++position) {
      const StoredColumn &before = source.stored[position], &after = target.Internal().stored[position];
      if (before.LongValue()) longValues_.push_back(position);
      samePlaces_ = samePlaces_ && before.number == after.number && before.fixedOffset == after.fixedOffset &&
                    (before.Fixed() || before.variableIndex == after.variableIndex);
    }
    FindIdColumn();
  }

  void Run() {
    source_.CheckSize();
    std::uint32_t count = 0;
    if (const RealIndex* primary = PrimaryKey()) {
      for (const RowId row : RowsInOrderOf(*primary)) {
        Copy(row, FindRow(source_, row));
        if (++count % kRowsPerRelease == 0) sourcePager_.ReleaseClean();
      }
    } else {
      for (const std::uint32_t page : source_.rows.Pages()) {
        for (std::size_t slot = 0; slot < data_page::SlotCount(source_.rows.Read(page)); ++slot) {
          if ((data_page::Slot(source_.rows.Read(page), slot) & kSlotHidden) != 0) continue;
          const RowId row = MakeRowId(page, slot);
          Copy(row, FindRow(source_, row));
          if (++count % kRowsPerRelease == 0) sourcePager_.ReleaseClean();
        }
      }
    }
    target_.SetCounts(count, static_cast<std::uint32_t>(highestNumber_));
    for (std::size_t index = 0; index < source_.def.indexes.size(); ++index) CopyIndex(index);
    sourcePager_.ReleaseClean();
  }

 private:
  void FindIdColumn() {
    const char16_t* name =
        source_.def.page == engine_table::kObjects                                              ? u"Id"
        : source_.def.page == engine_table::kAces || source_.def.page == engine_table::kQueries ? u"ObjectId"
                                                                                                : nullptr;
    for (std::size_t position = 0; position < source_.columns.size(); ++position) {
      const Column& column = source_.columns[position];
      if (column.autoNumber) autoNumber_ = position;
      if (name != nullptr && EqualNames(column.name, name) && column.type == ColumnType::kLong)
        idColumn_ = position;
      if (source_.def.page == engine_table::kObjects && EqualNames(column.name, u"Type"))
        typeColumn_ = position;
    }
  }

  const RealIndex* PrimaryKey() const {
    for (const LogicalIndex& index : source_.def.logicalIndexes) {
      if (index.kind == LogicalIndex::kPrimary) return &source_.def.indexes[index.real];
    }
    return nullptr;
  }

  std::vector<RowId> RowsInOrderOf(const RealIndex& index) const {
    std::vector<RowId> rows, live;
    IndexWalk walk;
    walk.entry = [&rows](std::span<const std::uint8_t>, RowId row) { rows.push_back(row); };
    WalkIndex(*source_.pager, source_.def.page, index, walk);
    for (Cursor cursor(source_); cursor.Next();) live.push_back(cursor.Row());
    std::vector<RowId> sorted = rows;
    std::sort(sorted.begin(), sorted.end());
    std::sort(live.begin(), live.end());
    if (sorted != live) ThrowCorrupt("the primary key does not fit the rows", source_.def.page);
    return rows;
  }

  void Copy(RowId old, const RowPlace& place) {
    const RowView row(place.bytes, place.size, source_.HasVariableColumns(), place.page);
    if (samePlaces_ && row.ColumnCount() == source_.def.maxColumns &&
        row.VariableCount() == source_.def.variableColumns && place.size <= kMostRowBytes) {
      std::memcpy(row_.bytes.data(), place.bytes, place.size);
      row_.size = place.size;
      row_.pendingCount = 0;
    } else {
      Encode(row);
    }
    TableInternal& target = target_.Internal();
    for (const std::size_t position : longValues_) {
      const StoredColumn& column = source_.stored[position];
      if (!row.Has(column.number)) continue;
      const auto field = row.Field(column);
      if (!long_value::Outside(field)) continue;
      const auto stored = long_value::Read(*source_.pager, source_.LongValuesOf(position), field, buffer_);
      std::uint8_t* reference = FieldInCopy(position, long_value::kReference);
      long_value::Write(*target.pager, target.LongValuesOf(position), stored, reference);
    }
    for (std::size_t i = 0; i < row_.pendingCount; ++i) {
      const PendingLongValue& pending = row_.pending[i];
      long_value::Write(*target.pager, target.LongValuesOf(pending.column), pending.stored,
                        row_.bytes.data() + pending.reference);
    }
    PatchId(row);
    NoteAutoNumber(row);
    const RowId now = target_.AppendRaw({row_.bytes.data(), row_.size});
    if (!source_.def.indexes.empty()) moved_.emplace_back(old, now);
  }

  void Encode(const RowView& row) {
    for (std::size_t position = 0; position < fields_.size(); ++position) {
      const StoredColumn& column = source_.stored[position];
      Field& field = fields_[position];
      field = {};
      field.present = row.Has(column.number);
      if (field.present && !column.Is(ColumnType::kBoolean)) field.raw = row.Field(column);
    }
    encoder_.Encode(fields_, row_);
  }

  // Where a column's bytes stand in the row being built.
  std::uint8_t* FieldInCopy(std::size_t position, std::size_t size) {
    const TableInternal& target = target_.Internal();
    const RowView copy(row_.bytes.data(), row_.size, target.HasVariableColumns(), 0);
    const auto field = copy.Field(target.stored[position]);
    if (field.size() < size) ThrowCorrupt("a value is cut off", source_.def.page);
    return row_.bytes.data() + copy.OffsetOf(field);
  }

  std::int32_t NumberIn(const RowView& row, std::size_t position) const {
    Value value;
    ReadField(source_, row, position, value);
    const auto* number = std::get_if<std::int32_t>(&value);
    return number == nullptr ? 0 : *number;
  }

  void PatchId(const RowView& row) {
    if (!idColumn_ || !row.Has(source_.stored[*idColumn_].number)) return;
    if (typeColumn_ && NumberIn(row, *typeColumn_) != CatalogObject::kTable) return;
    const std::uint32_t id = Mapped(ids_, static_cast<std::uint32_t>(NumberIn(row, *idColumn_)));
    Put32(FieldInCopy(*idColumn_, 4), id);
  }

  void NoteAutoNumber(const RowView& row) {
    if (autoNumber_) highestNumber_ = std::max(highestNumber_, NumberIn(row, *autoNumber_));
  }

  void CopyIndex(std::size_t number) {
    TableInternal& target = target_.Internal();
    RealIndex& index = target.def.indexes[number];
    IndexEntries entries = KeysAreKnown(index) ? CollectEntries(target, index) : EntriesOfOldTree(number);
    entries.Sort();
    if (index.Unique()) RefuseRepeatedKeys(index, entries);
    BuildIndex(*target.pager, target.def.page, index, entries);
  }

  // Keys of nothing but NULL may repeat.
  void RefuseRepeatedKeys(const RealIndex& index, const IndexEntries& entries) const {
    std::string nulls;
    for (const KeyColumn& column : index.columns) nulls.push_back(column.ascending ? '\x00' : '\xFF');
    const auto keyOf = [&entries](std::size_t i) {
      const auto entry = entries[i];
      return std::string_view(reinterpret_cast<const char*>(entry.data()), entry.size() - kRowPointer);
    };
    for (std::size_t i = 1; i < entries.size(); ++i) {
      if (keyOf(i) == keyOf(i - 1) && keyOf(i) != nulls)
        ThrowCorrupt("a unique index has a key twice", source_.def.page);
    }
  }

  bool KeysAreKnown(const RealIndex& index) const {
    const TableInternal& target = target_.Internal();
    std::vector<std::size_t> texts;
    for (const KeyColumn& column : index.columns) {
      const auto position = target.PositionOf(column.number);
      if (!position || !KnowsKeysOf(target.stored[*position])) return false;
      if (target.stored[*position].Text()) texts.push_back(*position);
    }
    if (texts.empty()) return true;
    std::string key;
    Value value;
    for (Cursor cursor(target); cursor.Next();) {
      for (const std::size_t position : texts) {
        key.clear();
        cursor.Read(position, value);
        if (!AppendKey(target.stored[position], value, true, key)) return false;
      }
    }
    return true;
  }

  // Takes the keys from the old index: exact, whatever its sort order is.
  IndexEntries EntriesOfOldTree(std::size_t number) {
    const RealIndex& old = source_.def.indexes[number];
    std::sort(moved_.begin(), moved_.end());
    IndexEntries entries;
    IndexWalk walk;
    walk.entry = [&](std::span<const std::uint8_t> key, RowId row) {
      const auto found = std::lower_bound(moved_.begin(), moved_.end(), std::pair{row, RowId{}});
      if (found == moved_.end() || found->first != row)
        ThrowCorrupt("an index names a row that is not there", source_.def.page);
      entries.Add(key, found->second);
    };
    WalkIndex(*source_.pager, source_.def.page, old, walk);
    if (entries.size() > moved_.size() || (entries.size() < moved_.size() && !old.IgnoresNulls())) {
      ThrowCorrupt("an index does not fit the rows", source_.def.page);
    }
    return entries;
  }

  Pager& sourcePager_;
  const TableInternal& source_;
  TableImpl& target_;
  const IdMap& ids_;
  RowEncoder encoder_;
  bool samePlaces_ = false;
  std::vector<std::size_t> longValues_;  // positions
  std::optional<std::size_t> autoNumber_, idColumn_, typeColumn_;
  std::int32_t highestNumber_ = 0;
  std::vector<std::pair<RowId, RowId>> moved_;  // old place, new place
  EncodedRow row_;
  std::vector<Field> fields_;
  std::vector<std::uint8_t> buffer_;
};

// Tables that only a replica has; its rows carry identities that a copy may not share.
void RefuseReplicas(const Catalog& catalog) {
  for (const char16_t* name : {u"MSysReplicas", u"MSysTableGuids"}) {
    if (catalog.FindTable(name) != nullptr) {
      throw Error(code::kGeneric, u"A replicated database cannot be compacted.");
    }
  }
}

}  // namespace

void DatabaseImpl::CompactInto(File& destination) {
  if (pager_.InTransaction())
    throw Error(code::kGeneric, u"A database cannot be compacted within a transaction.");
  RefuseReplicas(catalog_);
  Settle();

  DatabaseImpl target({pager_.Read(0), kPageSize});
  struct Pair {
    TableImpl* source;
    TableImpl* target;
  };
  std::vector<Pair> tables;
  IdMap ids;
  MapRows engineMaps(target.Pages());
  std::size_t pagesAtLeast = 0;  // of the old file
  for (const CatalogObject& object : catalog_.Objects()) {
    if (!object.LocalTable()) continue;
    TableImpl& source = TableAt(object.id, object.name);
    pagesAtLeast += 1 + source.Internal().def.indexes.size();
    if (pagesAtLeast > pager_.PageCount()) ThrowCorrupt("tables or indexes share their pages", object.id);
    TableDef def = CopyDefinition(source.Internal());
    const bool engine = object.id >= engine_table::kObjects && object.id <= engine_table::kRelationships;
    def.page = engine ? object.id : target.Pages().Allocate();
    if (!ids.emplace(object.id, def.page).second) ThrowCorrupt("two tables have one definition", object.id);
    MapRows ownMaps(target.Pages());
    LayDownTable(target.Pages(), engine ? engineMaps : ownMaps, def);
    tables.push_back({&source, &target.TableAt(def.page, object.name)});
  }
  if (!ids.contains(engine_table::kObjects))
    ThrowCorrupt("the catalog does not list itself", engine_table::kObjects);
  for (const CatalogObject& object : catalog_.Objects()) {
    const bool clash = !object.LocalTable() && std::any_of(ids.begin(), ids.end(), [&](const auto& each) {
      return each.second == object.id;
    });
    if (clash) throw Error(code::kGeneric, u"The object '" + object.name + u"' cannot be carried over.");
  }
  for (const auto& [source, copy] : tables) {
    for (LogicalIndex& index : copy->Internal().def.logicalIndexes) {
      if (index.kind == LogicalIndex::kForeign) index.otherTable = Mapped(ids, index.otherTable);
    }
    TableCopy(pager_, source->Internal(), *copy, ids).Run();
    WriteTableDef(target.Pages(), copy->Internal().def);
  }
  target.Pages().WriteAll(destination);
}

}  // namespace kestrelon::jet
