#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "jet/page/Pager.h"
#include "jet/schema/TableDef.h"

namespace kestrelon::jet {

// Hands out rows for usage maps, packed on pages of their own.
class MapRows {
 public:
  explicit MapRows(Pager& pager) : pager_(&pager) {}
  // An empty map (page << 8 | slot).
  std::uint32_t Add();

 private:
  Pager* pager_;
  std::uint32_t page_ = 0;
};

// Gives the columns their places: fixed offsets and variable indexes in order of the column numbers, and the
// counts of the definition. Numbers must be 0, 1, 2, ...
void AssignPlaces(TableDef& def);

// Makes an empty table of a definition whose page, columns and indexes are set: maps, an empty leaf for each
// index, and the definition itself.
void LayDownTable(Pager& pager, MapRows& maps, TableDef& def);

// The definitions of the engine's own tables, in page order.
struct NamedTableDef {
  std::u16string name;
  TableDef def;
};
std::vector<NamedTableDef> EngineTables();

// The stored size of a type's values; 0 where it varies.
std::uint16_t SizeOf(ColumnType type);

}  // namespace kestrelon::jet
