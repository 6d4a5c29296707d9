#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>
#include <utility>

#include "jet/catalog/Layout.h"
#include "jet/database/DatabaseInternal.h"
#include "jet/index/Index.h"
#include "jet/page/DataPage.h"
#include "jet/row/LongValue.h"

// Compaction: a new file from the definitions and rows of an old one. Page 0 is copied as it is, because the
// security identifiers in the catalog are masked with a string that depends on it. Tables follow one another
// in order of their object ids, rows in the order of the primary key where there is one. Indexes are made
// from the rows: an old tree may be wrong, and is asked only for keys that we cannot make. Numbers that
// change are those of the definition pages, which are the tables' object ids (MSysObjects, MSysACEs,
// MSysQueries and foreign keys name them), and those of columns after dropped ones.

namespace kestrelon::jet {
namespace {

constexpr std::uint32_t kMostPagesHeld = 128;  // of either file: 512 KiB

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

// An index of a table being copied. Its entries are collected as the rows are laid down; the rows whose keys
// we cannot make are noted, and their keys are taken from the old tree.
struct IndexCopy {
  IndexCopy(const TableInternal& table, const RealIndex& index) : old(&index) {
    for (const KeyColumn& column : index.columns) {
      const auto position = table.PositionOf(column.number);
      if (!position) ThrowCorrupt("an index names a column that is not there", table.def.page);
      positions.push_back(*position);
    }
    number = positions.size() == 1 && table.stored[positions.front()].Is(ColumnType::kLong);
  }
  void Reserve(const TableInternal& table) { entries.Reserve(table.LikelyRows(), 5 * positions.size()); }

  const RealIndex* old;
  std::vector<std::size_t> positions;  // of its columns
  bool number = false;                 // of one kLong column
  IndexEntries entries;
  std::vector<std::pair<RowId, RowId>> keyless;  // old place, new place
};

class TableCopy {
 public:
  // `spillFrom`: the first page of the copy that may be written ahead.
  TableCopy(const TableInternal& source, TableImpl& target, const IdMap& ids, File& destination,
            std::uint32_t spillFrom)
      : source_(source),
        target_(target),
        ids_(ids),
        destination_(destination),
        spillFrom_(spillFrom),
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
    for (const RealIndex& index : source.def.indexes) indexes_.emplace_back(source, index);
  }

  void Run() {
    std::vector<RowId> order;
    if (const RealIndex* primary = PrimaryKey()) order = RowsInOrderOf(*primary);
    for (IndexCopy& index : indexes_) index.Reserve(source_);
    if (std::is_sorted(order.begin(), order.end())) {
      CopyInPlace();
    } else {
      CopyRows(order, false);
    }
    target_.SetCounts(count_, static_cast<std::uint32_t>(highestNumber_));
    for (std::size_t index = 0; index < indexes_.size(); ++index) {
      IndexCopy copy = std::move(indexes_[index]);
      TakeKeysOfOldTree(copy);
      copy.entries.Sort();
      RealIndex& built = target_.Internal().def.indexes[index];
      if (built.Unique()) RefuseRepeatedKeys(built, copy.entries);
      BuildIndex(*target_.Internal().pager, target_.Internal().def.page, built, copy.entries);
      LetGo(true);
    }
    source_.pager->ReleaseClean();
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

  // All rows by their keys, as the rows give them; those without a key come last, as they lie.
  std::vector<RowId> RowsInOrderOf(const RealIndex& index) {
    IndexCopy copy(source_, index);
    copy.Reserve(source_);
    const auto isLong = [this](std::size_t position) { return source_.stored[position].LongValue(); };
    if (std::any_of(copy.positions.begin(), copy.positions.end(), isLong)) source_.CheckSize();
    std::vector<RowId> last;
    ForEachPage([&](const std::vector<RowId>& rows) {
      for (const RowId row : rows) {
        const RowPlace place = FindRow(source_, row);
        const RowView view(place.bytes, place.size, source_.HasVariableColumns(), place.page);
        if (AddKeyIfReadable(copy, row, row, source_, view) == Key::kNone) last.push_back(row);
      }
    });
    try {
      TakeKeysOfOldTree(copy);
    } catch (const CorruptFile&) {
      for (const auto& [row, same] : copy.keyless) last.push_back(row);
      std::sort(last.begin(), last.end());
    }
    copy.entries.Sort();
    std::vector<RowId> order;
    order.reserve(copy.entries.size() + last.size());
    for (std::size_t i = 0; i < copy.entries.size(); ++i) {
      const auto entry = copy.entries[i];
      order.push_back(RowId{GetBig32(entry.data() + entry.size() - kRowPointer)});
    }
    order.insert(order.end(), last.begin(), last.end());
    return order;
  }

  // Page by page, so that no more than a few are held.
  template <class Each>
  void ForEachPage(Each&& each) {
    std::vector<RowId> rows;
    for (const std::uint32_t page : source_.rows.Pages()) {
      rows.clear();
      const std::uint8_t* bytes = source_.rows.Read(page);
      for (std::size_t slot = 0; slot < data_page::SlotCount(bytes); ++slot) {
        if ((data_page::Slot(bytes, slot) & kSlotHidden) != 0) continue;
        if (slot >= kMostSlots) ThrowCorrupt("too many rows on a page", page);
        rows.push_back(MakeRowId(page, slot));
      }
      each(rows);
      LetGo(true);
    }
  }

  void CopyInPlace() {
    ForEachPage([this](const std::vector<RowId>& rows) {
      if (rows.empty()) return;
      if (!CopyPage(static_cast<std::uint32_t>(rows.front()) >> 8)) CopyRows(rows, true);
    });
  }

  // `inPlace`: the rows follow one another in the source, whose pages need not be kept.
  void CopyRows(const std::vector<RowId>& rows, bool inPlace) {
    for (const RowId row : rows) {
      CopyRow(row);
      LetGo(inPlace);
    }
  }

  void LetGo(bool ofSource) {
    if (ofSource && source_.pager->PagesTaken() >= kMostPagesHeld) source_.pager->ReleaseClean();
    Pager& pager = *target_.Internal().pager;
    if (pager.PagesTaken() >= kMostPagesHeld) pager.Spill(destination_, spillFrom_);
  }

  bool CopiesAsItIs(const RowView& row) const {
    return samePlaces_ && row.ColumnCount() == source_.def.maxColumns &&
           row.VariableCount() == source_.def.variableColumns && row.Bytes().size() <= kMostRowBytes;
  }

  // Copies the rows of a page at one stroke; false when the page would look another way if they were copied
  // one by one: when rows have gone from it or grown out of it, or when there is room for them before a new
  // page is begun.
  bool CopyPage(std::uint32_t page) {
    const std::uint8_t* from = source_.rows.Read(page);
    const std::size_t slots = data_page::SlotCount(from);
    if (slots == 0 || slots > kMostSlots || idColumn_) return false;
    views_.clear();
    for (std::size_t slot = 0; slot < slots; ++slot) {
      const std::size_t start = data_page::Start(from, slot);
      if ((data_page::Slot(from, slot) & kSlotDeleted) != 0) return false;
      views_.emplace_back(from + start, data_page::End(from, slot) - start, source_.HasVariableColumns(),
                          page);
      if (!CopiesAsItIs(views_.back())) return false;
    }
    PageSet& rows = target_.Internal().rows;
    const std::uint32_t copy = rows.PageWithRoom(views_.front().Bytes().size());
    std::uint8_t* to = rows.Write(copy);
    if (data_page::SlotCount(to) != 0) return false;
    data_page::CopyRows(to, from);
    for (std::size_t slot = 0; slot < slots; ++slot) {
      const RowView& row = views_[slot];
      MoveLongValues(row, {to + data_page::Start(to, slot), row.Bytes().size()});
      NoteRow(MakeRowId(page, slot), MakeRowId(copy, slot), source_, row);
    }
    return true;
  }

  void CopyRow(RowId old) {
    const RowPlace place = FindRow(source_, old);
    if (place.Moved()) CountSharable(place.size);
    const RowView row(place.bytes, place.size, source_.HasVariableColumns(), place.page);
    TableInternal& target = target_.Internal();
    if (CopiesAsItIs(row)) {
      std::memcpy(row_.bytes.data(), place.bytes, place.size);
      row_.size = place.size;
      row_.pendingCount = 0;
    } else {
      Encode(row);
    }
    MoveLongValues(row, {row_.bytes.data(), row_.size});
    for (std::size_t i = 0; i < row_.pendingCount; ++i) {
      const PendingLongValue& pending = row_.pending[i];
      long_value::Write(*target.pager, target.LongValuesOf(pending.column), pending.stored,
                        row_.bytes.data() + pending.reference);
    }
    if (idColumn_) PatchId(row);
    const std::span<const std::uint8_t> bytes(row_.bytes.data(), row_.size);
    const RowId now = target_.AppendRaw(bytes);
    NoteRow(old, now, target, RowView(bytes.data(), bytes.size(), target.HasVariableColumns(), 0));
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

  // Copies the values that lie outside the row, and lets its copy refer to the copies.
  void MoveLongValues(const RowView& row, std::span<std::uint8_t> copy) {
    TableInternal& target = target_.Internal();
    for (const std::size_t position : longValues_) {
      const StoredColumn& column = source_.stored[position];
      if (!row.Has(column.number)) continue;
      const auto field = row.Field(column);
      if (!long_value::Outside(field)) continue;
      const auto stored = long_value::Read(*source_.pager, source_.LongValuesOf(position), field, buffer_);
      CountSharable(stored.size());
      long_value::Write(*target.pager, target.LongValuesOf(position), stored,
                        FieldInCopy(copy, position, long_value::kReference));
    }
  }

  // What TableInternal::CheckSize() looks for before rows are read is met here as they pass by.
  void CountSharable(std::size_t bytes) {
    sharableBytes_ += bytes;
    if (sharableBytes_ > source_.MostSharableBytes()) source_.ThrowOversize();
  }

  // Where a column's bytes stand in the copy of a row.
  std::uint8_t* FieldInCopy(std::span<std::uint8_t> copy, std::size_t position, std::size_t size) const {
    const TableInternal& target = target_.Internal();
    const RowView row(copy.data(), copy.size(), target.HasVariableColumns(), 0);
    const auto field = row.Field(target.stored[position]);
    if (field.size() < size) ThrowCorrupt("a value is cut off", source_.def.page);
    return copy.data() + row.OffsetOf(field);
  }

  std::int32_t NumberIn(const RowView& row, std::size_t position) const {
    Value value;
    ReadField(source_, row, position, value);
    const auto* number = std::get_if<std::int32_t>(&value);
    return number == nullptr ? 0 : *number;
  }

  void PatchId(const RowView& row) {
    if (!row.Has(source_.stored[*idColumn_].number)) return;
    if (typeColumn_ && NumberIn(row, *typeColumn_) != CatalogObject::kTable) return;
    const std::uint32_t id = Mapped(ids_, static_cast<std::uint32_t>(NumberIn(row, *idColumn_)));
    Put32(FieldInCopy({row_.bytes.data(), row_.size}, *idColumn_, 4), id);
  }

  // Keys of nothing but NULL may repeat.
  void RefuseRepeatedKeys(const RealIndex& index, const IndexEntries& entries) const {
    if (entries.Distinct() == entries.size()) return;
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

  // A row has its copy; `table` and `row`: either of the two, as the copy reads.
  void NoteRow(RowId old, RowId now, const TableInternal& table, const RowView& row) {
    ++count_;
    if (autoNumber_ && row.Has(table.stored[*autoNumber_].number)) {
      const auto number = row.Field(table.stored[*autoNumber_]);
      if (number.size() >= 4)
        highestNumber_ = std::max(highestNumber_, static_cast<std::int32_t>(Get32(number.data())));
    }
    for (IndexCopy& index : indexes_) AddKeyIfReadable(index, old, now, table, row);
  }

  enum class Key { kMade, kNone, kUnknown };  // kNone: a row that has no entry

  Key AddKey(IndexCopy& index, RowId old, RowId now, const TableInternal& table, const RowView& row) {
    if (index.number && row.Has(table.stored[index.positions.front()].number)) {
      const auto number = row.Field(table.stored[index.positions.front()]);
      if (number.size() < 4) ThrowCorrupt("a value is cut off", source_.def.page);
      index.entries.Add(
          LongKey(static_cast<std::int32_t>(Get32(number.data())), index.old->columns[0].ascending), now);
      return Key::kMade;
    }
    const Key key = MakeKey(index, table, row);
    if (key == Key::kMade) index.entries.Add(key_, now);
    if (key == Key::kUnknown) index.keyless.emplace_back(old, now);
    return key;
  }

  // A row is copied as it is, though a value of it be damaged.
  Key AddKeyIfReadable(IndexCopy& index, RowId old, RowId now, const TableInternal& table,
                       const RowView& row) {
    try {
      return AddKey(index, old, now, table, row);
    } catch (const CorruptFile&) {
      index.keyless.emplace_back(old, now);
      return Key::kUnknown;
    }
  }

  // Makes `key_` of a row.
  Key MakeKey(const IndexCopy& index, const TableInternal& table, const RowView& row) {
    key_.clear();
    bool allNull = true;
    for (std::size_t i = 0; i < index.positions.size(); ++i) {
      const std::size_t position = index.positions[i];
      ReadField(table, row, position, value_);
      allNull = allNull && IsNull(value_);
      if (!AppendKey(table.stored[position], value_, index.old->columns[i].ascending, key_))
        return Key::kUnknown;
    }
    return allNull && index.old->IgnoresNulls() ? Key::kNone : Key::kMade;
  }

  // For the rows whose keys we cannot make: exact, whatever the sort order is. What the tree says of other
  // rows does not count. Throws CorruptFile, and adds nothing, unless it has one entry for each of them.
  void TakeKeysOfOldTree(IndexCopy& index) {
    std::vector<std::pair<RowId, RowId>>& rows = index.keyless;
    if (rows.empty()) return;
    std::sort(rows.begin(), rows.end());
    IndexEntries taken;
    std::vector<bool> found(rows.size());
    IndexWalk walk;
    walk.entry = [&](std::span<const std::uint8_t> key, RowId row) {
      const auto at = std::lower_bound(rows.begin(), rows.end(), std::pair{row, RowId{}});
      if (at == rows.end() || at->first != row) return;
      const auto position = static_cast<std::size_t>(at - rows.begin());
      if (found[position]) ThrowCorrupt("an index has a row twice", source_.def.page);
      found[position] = true;
      taken.Add(key, at->second);
    };
    WalkIndex(*source_.pager, source_.def.page, *index.old, walk);
    if (taken.size() != rows.size()) ThrowCorrupt("an index lacks a row", source_.def.page);
    for (std::size_t i = 0; i < taken.size(); ++i) index.entries.Add(taken[i]);
    rows.clear();
  }

  const TableInternal& source_;
  TableImpl& target_;
  const IdMap& ids_;
  File& destination_;
  std::uint32_t spillFrom_;
  RowEncoder encoder_;
  bool samePlaces_ = false;
  std::vector<std::size_t> longValues_;  // positions
  std::optional<std::size_t> autoNumber_, idColumn_, typeColumn_;
  std::int32_t highestNumber_ = 0;
  std::uint32_t count_ = 0;
  std::uint64_t sharableBytes_ = 0;
  std::vector<IndexCopy> indexes_;  // as in the definition
  EncodedRow row_;                  // scratch, like all that follows
  std::vector<RowView> views_;
  std::vector<Field> fields_;
  std::vector<std::uint8_t> buffer_;
  Value value_;
  std::string key_;
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
  if (const auto missing = catalog_.MissingEngineTable())
    ThrowCorrupt("the catalog does not list one of the engine's tables", *missing);
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
    if (object.name.empty()) ThrowCorrupt("a table has no name", object.id);
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
  for (const CatalogObject& object : catalog_.Objects()) {
    const bool clash = !object.LocalTable() && std::any_of(ids.begin(), ids.end(), [&](const auto& each) {
      return each.second == object.id;
    });
    if (clash) throw Error(code::kGeneric, u"The object '" + object.name + u"' cannot be carried over.");
  }
  const std::uint32_t firstRows =
      target.Pages().PageCount();  // definitions and maps are written again and again
  for (const auto& [source, copy] : tables) {
    for (LogicalIndex& index : copy->Internal().def.logicalIndexes) {
      if (index.kind == LogicalIndex::kForeign) index.otherTable = Mapped(ids, index.otherTable);
    }
    TableCopy(source->Internal(), *copy, ids, destination, firstRows).Run();
    WriteTableDef(target.Pages(), copy->Internal().def);
  }
  target.Pages().WriteAll(destination);
}

}  // namespace kestrelon::jet
