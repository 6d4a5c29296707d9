#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/catalog/Layout.h"
#include "jet/database/DatabaseInternal.h"
#include "jet/page/UsageMap.h"

namespace kestrelon::jet {

// A column of a key, by its name.
struct NewKeyColumn {
  std::u16string_view name;
  bool ascending = true;
};

// Gives a table an index, as a user of Access may; CreateDatabase makes none but primary keys. `flags` are
// those of RealIndex. The database must be flushed and opened anew before the table is changed.
inline void AddIndex(Database& database, std::u16string_view table, const std::vector<NewKeyColumn>& columns,
                     unsigned flags = 0, std::uint8_t kind = LogicalIndex::kOrdinary) {
  auto& open = static_cast<DatabaseImpl&>(database);
  const TableInternal& internal = static_cast<TableImpl&>(open.OpenTable(table)).Internal();
  Pager& pager = open.Pages();
  TableDef def = ReadTableDef(pager, internal.def.page);  // with what was added before
  RealIndex index;
  index.flags = static_cast<std::uint8_t>(RealIndex::kAlways | flags);
  for (const NewKeyColumn& column : columns) {
    for (const StoredColumn& stored : def.columns) {
      if (EqualNames(stored.name, column.name)) index.columns.push_back({stored.number, column.ascending});
    }
  }
  MapRows maps(pager);
  index.map = maps.Add();
  index.root = pager.Allocate();
  FormatEmptyIndex(pager.Write(index.root), def.page);
  UsageMap(pager, index.map).Add(index.root);
  IndexEntries entries = CollectEntries(internal, index);
  entries.Sort();
  BuildIndex(pager, def.page, index, entries);

  LogicalIndex logical;
  logical.number = logical.real = static_cast<std::uint32_t>(def.indexes.size());
  logical.name = u"Index" + FromUtf8(std::to_string(logical.number));
  logical.kind = kind;
  def.indexes.push_back(index);
  def.logicalIndexes.push_back(logical);
  WriteTableDef(pager, def);
}

}  // namespace kestrelon::jet
