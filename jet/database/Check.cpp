#include <algorithm>
#include <array>
#include <deque>
#include <exception>
#include <map>
#include <string>
#include <utility>

#include "jet/database/DatabaseInternal.h"
#include "jet/index/Index.h"
#include "jet/page/DataPage.h"
#include "jet/page/GlobalMap.h"
#include "jet/row/LongValue.h"

// The integrity walk. It relies on nothing that was read before but the catalog: every definition is read
// anew, every page that it leads to is claimed, and what is left must be free.

namespace kestrelon::jet {
namespace {

// Of one kind: a file of garbage has more to say than anybody wants to read.
constexpr std::size_t kMostFindings = 1000;

std::string At(std::uint32_t page, std::size_t slot) {
  return " (page " + std::to_string(page) + ", row " + std::to_string(slot) + ")";
}

// The long-value rows of one table, and which of them a row names.
class Pieces {
 public:
  explicit Pieces(std::uint32_t pageCount) : start_(pageCount) {}

  void Clear() {
    for (const std::uint32_t page : pages_) start_[page] = 0;
    pages_.clear();
    states_.clear();
  }
  void AddPage(std::uint32_t page, const std::uint8_t* bytes) {
    start_[page] = static_cast<std::uint32_t>(states_.size()) + 1;
    pages_.push_back(page);
    const std::size_t slots = std::min(data_page::SlotCount(bytes), kMostSlots);
    states_.push_back(static_cast<std::uint8_t>(slots));
    for (std::size_t slot = 0; slot < slots; ++slot) {
      const bool deleted = (data_page::Slot(bytes, slot) & kSlotDeleted) == kSlotDeleted;
      states_.push_back(deleted ? kDeleted : kUnused);
    }
  }
  enum class Use { kFirst, kAgain, kNoPiece };
  Use Take(std::uint32_t pointer) {
    const std::uint32_t page = pointer >> 8, slot = pointer & 0xFF;
    if (page >= start_.size() || start_[page] == 0) return Use::kNoPiece;
    const std::size_t start = start_[page];
    if (slot >= states_[start - 1] || states_[start + slot] == kDeleted) return Use::kNoPiece;
    return std::exchange(states_[start + slot], kUsed) == kUsed ? Use::kAgain : Use::kFirst;
  }
  template <class Each>
  void ForEachUnused(Each&& each) const {
    for (const std::uint32_t page : pages_) {
      const std::size_t start = start_[page];
      for (std::size_t slot = 0; slot < states_[start - 1]; ++slot) {
        if (states_[start + slot] == kUnused) each(page, slot);
      }
    }
  }

 private:
  enum : std::uint8_t { kUnused, kUsed, kDeleted };

  std::vector<std::uint32_t>
      start_;  // by page: 1 + where its count of slots stands, with the slots behind it
  std::vector<std::uint32_t> pages_;
  std::vector<std::uint8_t> states_;
};

class Checker {
 public:
  explicit Checker(const Pager& pager)
      : pager_(pager), owner_(pager.PageCount()), names_(1), pieces_(pager.PageCount()) {}

  std::vector<Finding> Take() { return std::move(findings_); }

  void Fault(std::string text) { Note(Finding::Kind::kDamage, std::move(text)); }

  void CheckGlobalMap() {
    Guard("the map of free pages", [&] {
      Claim(0, OwnerNamed("the header"));
      const std::uint32_t map = OwnerNamed("the map of free pages");
      Claim(Pager::kGlobalMapPage, map);
      for (const std::uint32_t page : global_map::BitPages(pager_)) Claim(page, map);
    });
  }

  // `stale`: the trees of the table are about to be rebuilt, so that they need not fit its rows.
  void CheckTable(const TableImpl& table, bool stale) {
    const TableInternal& internal = table.Internal();
    const std::string name = internal.name.empty() ? "a table without a name" : ToUtf8(internal.name);
    const TableDef& def = internal.def;
    if (internal.name.empty()) Fault("a table has no name (page " + std::to_string(def.page) + ")");
    const std::uint32_t owner = OwnerNamed(name);
    Guard(name, [&] {
      for (const std::uint32_t page : def.pages) Claim(page, owner);
      ClaimMap(def.ownedMap, name);
      if (def.freeMap != 0) ClaimMap(def.freeMap, name);
      for (const std::uint32_t page : internal.rows.Pages()) Claim(page, owner);
      CheckSubset(internal.rows, name);
    });
    pieces_.Clear();
    for (std::size_t position = 0; position < internal.stored.size(); ++position) {
      if (!internal.stored[position].LongValue()) continue;
      Guard(name, [&] { ClaimLongValues(internal, position); });
    }
    std::vector<RowId> rows;
    Guard(name, [&] {
      internal.CheckSize();
      CheckRows(internal, name, rows);
    });
    if (def.kind == TableDef::kUser && rows.size() != table.RowCount()) {
      Fault(name + ": the definition says " + std::to_string(table.RowCount()) + " rows, the pages hold " +
            std::to_string(rows.size()));
    }
    pieces_.ForEachUnused([&](std::uint32_t page, std::size_t slot) {
      Note(Finding::Kind::kWaste, name + ": a long value belongs to no row" + At(page, slot));
    });
    for (const RealIndex& index : def.indexes) {
      Guard(name, [&] { CheckIndex(internal, index, owner, rows, stale); });
    }
  }

  void CheckAllPages() {
    for (std::uint32_t page = 0; page < pager_.PageCount(); ++page) {
      const bool free = pager_.IsFree(page);
      if (owner_[page] == kNobody && !free) {
        Note(Finding::Kind::kWaste, "page " + std::to_string(page) + " belongs to nothing and is not free");
      }
      if (owner_[page] != kNobody && free)
        Fault("page " + std::to_string(page) + " is free but belongs to " + names_[owner_[page]]);
    }
  }

  template <class Body>
  void Guard(const std::string& who, Body&& body) {
    try {
      body();
    } catch (const std::exception& error) {
      Fault(who + ": " + error.what());
    }
  }

 private:
  static constexpr std::uint32_t kNobody = 0;

  void Note(Finding::Kind kind, std::string text) {
    if (counts_[static_cast<std::size_t>(kind)]++ < kMostFindings)
      findings_.push_back({kind, std::move(text)});
  }
  std::uint32_t OwnerNamed(std::string name) {
    names_.push_back(std::move(name));
    return static_cast<std::uint32_t>(names_.size() - 1);
  }

  void Claim(std::uint32_t page, std::uint32_t owner) {
    pager_.Read(page);
    if (owner_[page] != kNobody) {
      Fault("page " + std::to_string(page) + " belongs to " + names_[owner_[page]] + " and to " +
            names_[owner]);
    }
    owner_[page] = owner;
  }

  void ClaimMap(std::uint32_t pointer, const std::string& who) {
    if (maps_ == kNobody) maps_ = OwnerNamed("usage maps");
    for (const std::uint32_t page : UsageMap(const_cast<Pager&>(pager_), pointer).BitPages())
      Claim(page, maps_);
    if (!mapRows_.emplace(pointer, who).second) {
      Fault(who + ": its usage map serves " + mapRows_[pointer] + " too" + At(pointer >> 8, pointer & 0xFF));
    }
    const std::uint32_t page = pointer >> 8;
    if (owner_.at(page) != maps_) Claim(page, maps_);
    CheckFreeBytes(pager_.Read(page), page);
  }

  void CheckSubset(const PageSet& set, const std::string& who) {
    if (set.FreeMap() == 0) return;
    const auto owned = UsageMap(const_cast<Pager&>(pager_), set.OwnedMap()).Pages();
    for (const std::uint32_t page : UsageMap(const_cast<Pager&>(pager_), set.FreeMap()).Pages()) {
      if (!std::binary_search(owned.begin(), owned.end(), page)) {
        Fault(who + ": page " + std::to_string(page) + " has room but is not owned");
      }
    }
  }

  void CheckFreeBytes(const std::uint8_t* bytes, std::uint32_t page) {
    if (Get16(bytes + 2) != data_page::FreeBytes(bytes)) {
      Fault("page " + std::to_string(page) + ": the free-space field says " +
            std::to_string(Get16(bytes + 2)) + ", there are " + std::to_string(data_page::FreeBytes(bytes)));
    }
  }

  void ClaimLongValues(const TableInternal& table, std::size_t position) {
    const PageSet& set = table.LongValuesOf(position);
    const std::string who = ToUtf8(table.name) + "." + ToUtf8(table.stored[position].name);
    ClaimMap(set.OwnedMap(), who);
    if (set.FreeMap() != 0) ClaimMap(set.FreeMap(), who);
    const std::uint32_t owner = OwnerNamed(who);
    for (const std::uint32_t page : set.Pages()) {
      Claim(page, owner);
      const std::uint8_t* bytes = set.Read(page);
      CheckFreeBytes(bytes, page);
      pieces_.AddPage(page, bytes);
    }
    CheckSubset(set, who);
  }

  void CheckRows(const TableInternal& table, const std::string& name, std::vector<RowId>& rows) {
    std::map<RowId, bool> hidden;  // rows that others point to -> pointed to
    for (const std::uint32_t page : table.rows.Pages()) {
      const std::uint8_t* bytes = table.rows.Read(page);
      CheckFreeBytes(bytes, page);
      for (std::size_t slot = 0; slot < data_page::SlotCount(bytes); ++slot) {
        const std::uint16_t entry = data_page::Slot(bytes, slot);
        if ((entry & kSlotHidden) == 0) rows.push_back(MakeRowId(page, slot));
        if ((entry & kSlotDeleted) == kSlotHidden) hidden[MakeRowId(page, slot)] = false;
      }
    }
    Value value;
    for (const RowId row : rows) {
      Guard(name, [&] {
        const RowPlace place = FindRow(table, row);
        if (place.Moved()) {
          if (std::exchange(hidden[MakeRowId(place.page, place.slot)], true)) {
            Fault(name + ": two rows are at one place" + At(place.page, place.slot));
          }
        }
        const RowView view(place.bytes, place.size, table.HasVariableColumns(), place.page);
        for (std::size_t position = 0; position < table.stored.size(); ++position) {
          // One by one: a fault in one column says nothing of the long values of the others.
          Guard(name, [&] {
            const StoredColumn& column = table.stored[position];
            if (column.LongValue() && view.Has(column.number))
              UsePieces(table, name, position, view.Field(column));
            ReadField(table, view, position, value);
          });
        }
      });
    }
    for (const auto& [row, used] : hidden) {
      const auto number = static_cast<std::uint32_t>(row);
      if (!used) {
        Note(Finding::Kind::kWaste,
             name + ": a moved row belongs to no row" + At(number >> 8, number & 0xFF));
      }
    }
  }

  void UsePieces(const TableInternal& table, const std::string& name, std::size_t position,
                 std::span<const std::uint8_t> field) {
    const auto used = long_value::Pieces(pager_, table.LongValuesOf(position), field);
    for (const std::uint32_t piece : used) {
      switch (pieces_.Take(piece)) {
        case Pieces::Use::kFirst: break;
        case Pieces::Use::kAgain:
          Fault(name + ": two rows share a long value" + At(piece >> 8, piece & 0xFF));
          break;
        case Pieces::Use::kNoPiece:
          Fault(name + ": a long value lies on a page of something else" + At(piece >> 8, piece & 0xFF));
      }
    }
    // Of a chain, the reference and the first page carry the same token.
    const bool chain = !used.empty() && (Get32(field.data()) & long_value::kRowBit) == 0;
    if (chain && Get32(field.data() + 8) != Get32(pager_.Read(used.front() >> 8) + 8)) {
      Fault(name + ": a long value's token differs from its page's" +
            At(used.front() >> 8, used.front() & 0xFF));
    }
  }

  // What is wrong with an index, and whether that can be helped.
  struct IndexFaults {
    std::vector<std::string> texts;
    bool ofTree = false;        // a walk that trusts the tree would end early
    bool ofKeylessRow = false;  // the tree has not one key for a row whose key we cannot make
    bool anyKeylessRow = false;
  };

  void CheckIndex(const TableInternal& table, const RealIndex& index, std::uint32_t owner,
                  const std::vector<RowId>& rows, bool stale) {
    const std::string& name = names_[owner];
    ClaimMap(index.map, name);
    const std::vector<std::uint32_t> owned = UsageMap(const_cast<Pager&>(pager_), index.map).Pages();
    for (const std::uint32_t page : owned) {
      Claim(page, owner);
      // Changing the table gives these pages back unread.
      const std::uint8_t* bytes = pager_.Read(page);
      const bool isIndex = bytes[0] == page_type::kIndexLeaf || bytes[0] == page_type::kIndexNode;
      if (!isIndex || Get32(bytes + 4) != table.def.page)
        Fault(name + ": an index owns a page of something else (page " + std::to_string(page) + ")");
    }
    if (!std::binary_search(owned.begin(), owned.end(), index.root))
      Fault(name + ": an index has lost its root");

    IndexFaults faults;
    std::vector<std::uint32_t> inTree;
    std::vector<std::pair<RowId, std::string>> entries;
    IndexWalk walk;
    walk.entry = [&](std::span<const std::uint8_t> key, RowId row) {
      entries.emplace_back(row, std::string(key.begin(), key.end()));
    };
    walk.page = [&](std::uint32_t page) { inTree.push_back(page); };
    walk.fault = [&](const std::string& fault) {
      faults.texts.push_back("index: " + fault);
      faults.ofTree = true;
    };
    WalkIndex(pager_, table.def.page, index, walk);
    std::sort(inTree.begin(), inTree.end());
    if (inTree != owned) faults.texts.emplace_back("the pages of an index are not those of its map");
    if (!stale) CompareWithRows(table, index, rows, entries, faults);

    const bool lost = faults.ofKeylessRow || (faults.ofTree && faults.anyKeylessRow);
    for (const std::string& text : faults.texts)
      Note(lost ? Finding::Kind::kDamage : Finding::Kind::kIndex, name + ": " + text);
    if (!faults.texts.empty() && index.Unique() && !stale) RequireDifferentKeys(table, name, index, rows);
  }

  void CompareWithRows(const TableInternal& table, const RealIndex& index, const std::vector<RowId>& rows,
                       std::vector<std::pair<RowId, std::string>>& entries, IndexFaults& faults) {
    const auto note = [&faults](const char* what, RowId row) {
      const auto number = static_cast<std::uint32_t>(row);
      faults.texts.push_back(what + At(number >> 8, number & 0xFF));
    };
    if (index.Unique()) {
      const std::string nulls = KeyOfNulls(index);
      for (std::size_t i = 1; i < entries.size(); ++i) {
        const std::string& key = entries[i].second;
        if (key == entries[i - 1].second && key != nulls)
          note("a unique index has a key twice", entries[i].first);
      }
    }
    std::sort(entries.begin(), entries.end());
    std::vector<RowId> sortedRows = rows;
    std::sort(sortedRows.begin(), sortedRows.end());
    Cursor cursor(table);
    auto entry = entries.begin();
    for (const RowId row : sortedRows) {
      while (entry != entries.end() && entry->first < row) {
        note("an index names a row that is not there", (entry++)->first);
      }
      cursor.MoveTo(row);
      bool known = true, allNull = true;
      const std::string key = KeyOf(table, index, cursor, known, allNull);
      faults.anyKeylessRow = faults.anyKeylessRow || !known;
      if (entry == entries.end() || entry->first != row) {
        if (allNull && index.IgnoresNulls()) continue;
        note("an index lacks a row", row);
        faults.ofKeylessRow = faults.ofKeylessRow || !known;
        continue;
      }
      if (known && entry->second != key) note("an index has another key for a row", row);
      ++entry;
      for (; entry != entries.end() && entry->first == row; ++entry) {
        note("an index has a row twice", row);
        faults.ofKeylessRow = faults.ofKeylessRow || !known;
      }
    }
    for (; entry != entries.end(); ++entry) note("an index names a row that is not there", entry->first);
  }

  // Once the tree has said something else than the rows: no tree can be made of rows that have one key.
  void RequireDifferentKeys(const TableInternal& table, const std::string& name, const RealIndex& index,
                            const std::vector<RowId>& rows) {
    std::vector<std::pair<std::string, RowId>> keys;
    const std::string nulls = KeyOfNulls(index);
    Cursor cursor(table);
    for (const RowId row : rows) {
      cursor.MoveTo(row);
      bool known = true, allNull = true;
      std::string key = KeyOf(table, index, cursor, known, allNull);
      if (known && key != nulls) keys.emplace_back(std::move(key), row);
    }
    std::sort(keys.begin(), keys.end());
    for (std::size_t i = 1; i < keys.size(); ++i) {
      if (keys[i].first == keys[i - 1].first)
        FaultAtRow(name, "a row has the key of another in a unique index", keys[i].second);
    }
  }

  static std::string KeyOfNulls(const RealIndex& index) {
    std::string nulls;
    for (const KeyColumn& column : index.columns) nulls.push_back(column.ascending ? '\x00' : '\xFF');
    return nulls;
  }

  std::string KeyOf(const TableInternal& table, const RealIndex& index, const Cursor& cursor, bool& known,
                    bool& allNull) {
    std::string key;
    Value value;
    for (const KeyColumn& column : index.columns) {
      const auto position = table.PositionOf(column.number);
      if (!position) ThrowCorrupt("an index names a column that is not there", table.def.page);
      cursor.Read(*position, value);
      allNull = allNull && IsNull(value);
      known = known && AppendKey(table.stored[*position], value, column.ascending, key);
    }
    return key;
  }

  void FaultAtRow(const std::string& name, const char* what, RowId row) {
    const auto number = static_cast<std::uint32_t>(row);
    Fault(name + ": " + what + At(number >> 8, number & 0xFF));
  }

  const Pager& pager_;
  std::vector<Finding> findings_;
  std::array<std::size_t, 3> counts_{};  // by kind
  std::vector<std::uint32_t> owner_;     // by page; a position in names_
  std::deque<std::string> names_;        // the first is nobody's; they stay where they are
  std::uint32_t maps_ = kNobody;
  Pieces pieces_;
  std::map<std::uint32_t, std::string> mapRows_;
};

}  // namespace

std::vector<Finding> DatabaseImpl::Check() {
  Checker checker(pager_);
  checker.CheckGlobalMap();
  if (const auto missing = catalog_.MissingEngineTable())
    checker.Fault("the catalog does not list the engine's table of page " + std::to_string(*missing));
  for (const CatalogObject& object : catalog_.Objects()) {
    if (!object.LocalTable()) continue;
    checker.Guard(ToUtf8(object.name), [&] {
      TableImpl& table = TableAt(object.id, object.name);
      checker.CheckTable(table, table.IndexesStale());
    });
  }
  checker.CheckAllPages();
  return checker.Take();
}

}  // namespace kestrelon::jet
