#include <algorithm>
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

constexpr std::size_t kMostFaults = 1000;  // a file of garbage has more to say than anybody wants to read

std::string At(std::uint32_t page, std::size_t slot) {
  return " (page " + std::to_string(page) + ", row " + std::to_string(slot) + ")";
}

class Checker {
 public:
  Checker(const Pager& pager, std::vector<std::string>& faults)
      : pager_(pager), faults_(faults), owner_(pager.PageCount()) {}

  void CheckGlobalMap() {
    Guard("the map of free pages", [&] {
      Claim(0, "the header");
      Claim(Pager::kGlobalMapPage, "the map of free pages");
      for (const std::uint32_t page : global_map::BitPages(pager_)) Claim(page, "the map of free pages");
    });
  }

  // `stale`: the trees of the table are about to be rebuilt, so that they need not fit its rows.
  void CheckTable(const TableImpl& table, bool stale) {
    const TableInternal& internal = table.Internal();
    const std::string name = internal.name.empty() ? "a table without a name" : ToUtf8(internal.name);
    const TableDef& def = internal.def;
    if (internal.name.empty()) Fault("a table has no name (page " + std::to_string(def.page) + ")");
    Guard(name, [&] {
      for (const std::uint32_t page : def.pages) Claim(page, name);
      ClaimMap(def.ownedMap, name);
      if (def.freeMap != 0) ClaimMap(def.freeMap, name);
      for (const std::uint32_t page : internal.rows.Pages()) Claim(page, name);
      CheckSubset(internal.rows, name);
    });
    std::map<std::uint32_t, bool> pieces;  // long-value rows that lie on pages of the table -> named by a row
    for (std::size_t position = 0; position < internal.stored.size(); ++position) {
      if (!internal.stored[position].LongValue()) continue;
      Guard(name, [&] { ClaimLongValues(internal, position, pieces); });
    }
    std::vector<RowId> rows;
    Guard(name, [&] {
      internal.CheckSize();
      CheckRows(internal, rows, pieces);
    });
    if (def.kind == TableDef::kUser && rows.size() != table.RowCount()) {
      Fault(name + ": the definition says " + std::to_string(table.RowCount()) + " rows, the pages hold " +
            std::to_string(rows.size()));
    }
    for (const auto& [pointer, used] : pieces) {
      if (!used) Fault(name + ": a long value belongs to no row" + At(pointer >> 8, pointer & 0xFF));
    }
    for (const RealIndex& index : def.indexes) {
      Guard(name, [&] { CheckIndex(internal, index, rows, stale); });
    }
  }

  void CheckAllPages() {
    for (std::uint32_t page = 0; page < pager_.PageCount(); ++page) {
      const bool free = pager_.IsFree(page);
      if (owner_[page].empty() && !free)
        Fault("page " + std::to_string(page) + " belongs to nothing and is not free");
      if (!owner_[page].empty() && free) {
        Fault("page " + std::to_string(page) + " is free but belongs to " + owner_[page]);
      }
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
  void Fault(std::string fault) {
    if (faults_.size() < kMostFaults) faults_.push_back(std::move(fault));
  }

  void Claim(std::uint32_t page, const std::string& who) {
    pager_.Read(page);
    if (!owner_[page].empty()) {
      Fault("page " + std::to_string(page) + " belongs to " + owner_[page] + " and to " + who);
    }
    owner_[page] = who;
  }

  void ClaimMap(std::uint32_t pointer, const std::string& who) {
    static const std::string kMaps = "usage maps";
    for (const std::uint32_t page : UsageMap(const_cast<Pager&>(pager_), pointer).BitPages())
      Claim(page, kMaps);
    if (!mapRows_.emplace(pointer, who).second) {
      Fault(who + ": its usage map serves " + mapRows_[pointer] + " too" + At(pointer >> 8, pointer & 0xFF));
    }
    const std::uint32_t page = pointer >> 8;
    if (owner_.at(page) != kMaps) Claim(page, kMaps);
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

  void ClaimLongValues(const TableInternal& table, std::size_t position,
                       std::map<std::uint32_t, bool>& pieces) {
    const PageSet& set = table.LongValuesOf(position);
    const std::string who = ToUtf8(table.name) + "." + ToUtf8(table.stored[position].name);
    ClaimMap(set.OwnedMap(), who);
    if (set.FreeMap() != 0) ClaimMap(set.FreeMap(), who);
    for (const std::uint32_t page : set.Pages()) {
      Claim(page, who);
      const std::uint8_t* bytes = set.Read(page);
      CheckFreeBytes(bytes, page);
      for (std::size_t slot = 0; slot < data_page::SlotCount(bytes); ++slot) {
        if ((data_page::Slot(bytes, slot) & kSlotDeleted) != kSlotDeleted) {
          pieces[static_cast<std::uint32_t>(MakeRowId(page, slot))] = false;
        }
      }
    }
    CheckSubset(set, who);
  }

  void CheckRows(const TableInternal& table, std::vector<RowId>& rows,
                 std::map<std::uint32_t, bool>& pieces) {
    const std::string name = ToUtf8(table.name);
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
              UsePieces(table, position, view.Field(column), pieces);
            ReadField(table, view, position, value);
          });
        }
      });
    }
    for (const auto& [row, used] : hidden) {
      const auto number = static_cast<std::uint32_t>(row);
      if (!used) Fault(name + ": a moved row belongs to no row" + At(number >> 8, number & 0xFF));
    }
  }

  void UsePieces(const TableInternal& table, std::size_t position, std::span<const std::uint8_t> field,
                 std::map<std::uint32_t, bool>& pieces) {
    const std::string name = ToUtf8(table.name);
    const auto used = long_value::Pieces(pager_, table.LongValuesOf(position), field);
    for (const std::uint32_t piece : used) {
      const auto found = pieces.find(piece);
      if (found == pieces.end()) {
        Fault(name + ": a long value lies on a page of something else" + At(piece >> 8, piece & 0xFF));
      } else if (std::exchange(found->second, true)) {
        Fault(name + ": two rows share a long value" + At(piece >> 8, piece & 0xFF));
      }
    }
    // Of a chain, the reference and the first page carry the same token.
    const bool chain = !used.empty() && (Get32(field.data()) & long_value::kRowBit) == 0;
    if (chain && Get32(field.data() + 8) != Get32(pager_.Read(used.front() >> 8) + 8)) {
      Fault(name + ": a long value's token differs from its page's" +
            At(used.front() >> 8, used.front() & 0xFF));
    }
  }

  void CheckIndex(const TableInternal& table, const RealIndex& index, const std::vector<RowId>& rows,
                  bool stale) {
    const std::string name = ToUtf8(table.name);
    ClaimMap(index.map, name);
    std::vector<std::uint32_t> owned = UsageMap(const_cast<Pager&>(pager_), index.map).Pages(), inTree;
    for (const std::uint32_t page : owned) Claim(page, name);

    std::vector<std::pair<RowId, std::string>> entries;
    IndexWalk walk;
    walk.entry = [&](std::span<const std::uint8_t> key, RowId row) {
      entries.emplace_back(row, std::string(key.begin(), key.end()));
    };
    walk.page = [&](std::uint32_t page) { inTree.push_back(page); };
    walk.fault = [&](const std::string& fault) { Fault(name + ": index: " + fault); };
    WalkIndex(pager_, table.def.page, index, walk);
    std::sort(inTree.begin(), inTree.end());
    if (inTree != owned) Fault(name + ": the pages of an index are not those of its map");
    if (stale) return;

    if (index.Unique()) CheckUnique(name, index, entries);
    std::sort(entries.begin(), entries.end());
    std::vector<RowId> sortedRows = rows;
    std::sort(sortedRows.begin(), sortedRows.end());
    Cursor cursor(table);
    auto entry = entries.begin();
    for (const RowId row : sortedRows) {
      while (entry != entries.end() && entry->first < row) {
        FaultAtRow(name, "an index names a row that is not there", (entry++)->first);
      }
      cursor.MoveTo(row);
      bool known = true, allNull = true;
      const std::string key = KeyOf(table, index, cursor, known, allNull);
      if (entry == entries.end() || entry->first != row) {
        if (!(allNull && index.IgnoresNulls())) FaultAtRow(name, "an index lacks a row", row);
        continue;
      }
      if (known && entry->second != key) FaultAtRow(name, "an index has another key for a row", row);
      ++entry;
    }
    for (; entry != entries.end(); ++entry)
      FaultAtRow(name, "an index names a row that is not there", entry->first);
  }

  void CheckUnique(const std::string& name, const RealIndex& index,
                   const std::vector<std::pair<RowId, std::string>>& entries) {
    std::string nulls;
    for (const KeyColumn& column : index.columns) nulls.push_back(column.ascending ? '\x00' : '\xFF');
    for (std::size_t i = 1; i < entries.size(); ++i) {
      const std::string& key = entries[i].second;
      if (key == entries[i - 1].second && key != nulls) {
        FaultAtRow(name, "a unique index has a key twice", entries[i].first);
      }
    }
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
  std::vector<std::string>& faults_;
  std::vector<std::string> owner_;  // by page; empty: nobody
  std::map<std::uint32_t, std::string> mapRows_;
};

}  // namespace

std::vector<std::string> DatabaseImpl::Check() {
  std::vector<std::string> faults;
  Checker checker(pager_, faults);
  checker.CheckGlobalMap();
  if (const auto missing = catalog_.MissingEngineTable())
    faults.push_back("the catalog does not list the engine's table of page " + std::to_string(*missing));
  for (const CatalogObject& object : catalog_.Objects()) {
    if (!object.LocalTable()) continue;
    checker.Guard(ToUtf8(object.name), [&] {
      TableImpl& table = TableAt(object.id, object.name);
      checker.CheckTable(table, table.IndexesStale());
    });
  }
  checker.CheckAllPages();
  return faults;
}

}  // namespace kestrelon::jet
