#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "jet/page/Pager.h"
#include "jet/schema/Column.h"

namespace kestrelon::jet {

// A column as the definition describes it.
struct StoredColumn {
  static constexpr std::uint8_t kFixed = 0x01, kAlways = 0x02, kAutoNumber = 0x04, kSystem = 0x10,
                                kMasked = 0x20;
  static constexpr std::uint8_t kCompressed = 0x01;

  std::u16string name;
  std::uint8_t type = 0;  // a ColumnType, or a number we do not know
  std::uint16_t number = 0;
  std::uint16_t variableIndex = 0;
  std::uint16_t displayPosition = 0;
  std::uint16_t collation = 0x0409;  // text: sort order; numeric: precision and scale
  std::uint16_t collationVersion = 0;
  std::uint8_t flags = kAlways;
  std::uint8_t moreFlags = 0;
  std::uint16_t fixedOffset = 0;
  std::uint16_t length = 0;

  bool Fixed() const { return (flags & kFixed) != 0; }
  bool Is(ColumnType wanted) const { return type == static_cast<std::uint8_t>(wanted); }
  bool LongValue() const { return Is(ColumnType::kMemo) || Is(ColumnType::kOle); }
  bool Text() const { return Is(ColumnType::kText) || Is(ColumnType::kMemo); }
  bool operator==(const StoredColumn&) const = default;
};

struct KeyColumn {
  std::uint16_t number = 0;
  bool ascending = true;
  bool operator==(const KeyColumn&) const = default;
};

// One index tree.
struct RealIndex {
  static constexpr std::uint8_t kUnique = 0x01, kIgnoreNulls = 0x02, kRequired = 0x08, kAlways = 0x80;

  std::vector<KeyColumn> columns;  // 1 to 10
  std::uint32_t map = 0;
  std::uint32_t root = 0;
  std::uint8_t flags = kAlways;
  std::uint32_t entries = 0, distinct = 0;

  bool Unique() const { return (flags & kUnique) != 0; }
  bool IgnoresNulls() const { return (flags & kIgnoreNulls) != 0; }
};

// An index as the user knows it; several may share one tree.
struct LogicalIndex {
  static constexpr std::uint8_t kOrdinary = 0, kPrimary = 1, kForeign = 2;

  std::u16string name;
  std::uint32_t number = 0, real = 0;
  std::uint8_t otherRole = 0;
  std::uint32_t otherIndex = 0xFFFFFFFF, otherTable = 0;
  std::uint8_t cascadeUpdate = 4, cascadeDelete = 4;  // 4 and 4 stand in every index that is no foreign key
  std::uint8_t kind = kOrdinary;
};

struct LongValueMaps {
  std::uint16_t column = 0;  // number
  std::uint32_t owned = 0, free = 0;
};

struct TableDef {
  static constexpr std::uint8_t kUser = 0x4E, kSystem = 0x53;

  std::uint32_t page = 0;
  std::uint32_t rowCount = 0;
  std::uint32_t autoNumber = 0;
  std::uint8_t kind = kUser;
  std::uint16_t maxColumns = 0, variableColumns = 0;
  std::uint32_t ownedMap = 0, freeMap = 0;
  std::vector<StoredColumn> columns;  // in the order of their blocks
  std::vector<RealIndex> indexes;
  std::vector<LogicalIndex> logicalIndexes;
  std::vector<LongValueMaps> longValues;
  std::vector<std::uint32_t> pages;  // the chain, first page included

  const StoredColumn* FindColumn(std::uint16_t number) const;
};

// Throws CorruptFile when the pages are no table definition.
TableDef ReadTableDef(const Pager& pager, std::uint32_t page);
// Writes the definition over `def.pages`; further pages are allocated as needed and added.
void WriteTableDef(Pager& pager, TableDef& def);
// Writes only what changes with the rows: row count, autonumber, and root, entries and distinct keys of each
// index.
void WriteTableCounts(Pager& pager, const TableDef& def);

}  // namespace kestrelon::jet
