#include "jet/catalog/Layout.h"

#include <cstring>

#include "jet/catalog/Catalog.h"
#include "jet/index/Index.h"
#include "jet/page/DataPage.h"
#include "jet/page/MapRow.h"
#include "jet/page/UsageMap.h"

namespace kestrelon::jet {
namespace {

constexpr std::uint16_t kEngineTextBytes = 510;

struct EngineColumn {
  const char16_t* name;
  ColumnType type;
  bool masked = false;
};

StoredColumn MakeEngineColumn(const EngineColumn& column) {
  StoredColumn stored;
  stored.name = column.name;
  stored.type = static_cast<std::uint8_t>(column.type);
  stored.flags = column.masked ? StoredColumn::kAlways | StoredColumn::kSystem | StoredColumn::kMasked
                               : StoredColumn::kAlways | StoredColumn::kSystem;
  const bool varies = SizeOf(column.type) == 0;
  if (!varies) stored.flags |= StoredColumn::kFixed;
  stored.length = !varies ? SizeOf(column.type) : stored.LongValue() ? std::uint16_t{0} : kEngineTextBytes;
  return stored;
}

struct EngineIndex {
  const char16_t* name;
  std::vector<std::uint16_t> columns;
  std::uint8_t flags;
  bool primary = false;
};

NamedTableDef MakeEngineTable(const char16_t* name, std::uint32_t page, std::span<const EngineColumn> columns,
                              std::span<const EngineIndex> indexes) {
  NamedTableDef table{name, {}};
  table.def.page = page;
  table.def.kind = TableDef::kSystem;
  for (const EngineColumn& column : columns) {
    table.def.columns.push_back(MakeEngineColumn(column));
    table.def.columns.back().number = static_cast<std::uint16_t>(table.def.columns.size() - 1);
  }
  for (const EngineIndex& index : indexes) {
    const auto number = static_cast<std::uint32_t>(table.def.indexes.size());
    RealIndex& real = table.def.indexes.emplace_back();
    for (const std::uint16_t column : index.columns) real.columns.push_back({column, true});
    real.flags = RealIndex::kAlways | index.flags;
    LogicalIndex& logical = table.def.logicalIndexes.emplace_back();
    logical.name = index.name;
    logical.number = logical.real = number;
    logical.kind = index.primary ? LogicalIndex::kPrimary : LogicalIndex::kOrdinary;
  }
  AssignPlaces(table.def);
  return table;
}

}  // namespace

std::uint16_t SizeOf(ColumnType type) {
  switch (type) {
    case ColumnType::kBoolean:
    case ColumnType::kByte: return 1;
    case ColumnType::kInteger: return 2;
    case ColumnType::kLong:
    case ColumnType::kSingle: return 4;
    case ColumnType::kCurrency:
    case ColumnType::kDouble:
    case ColumnType::kDate: return 8;
    case ColumnType::kGuid: return 16;
    case ColumnType::kNumeric: return 17;
    default: return 0;
  }
}

std::uint32_t MapRows::Add() {
  if (page_ == 0 || !data_page::HasRoomFor(pager_->Read(page_), map_row::kBytes)) {
    page_ = pager_->Allocate();
    data_page::Format(pager_->Write(page_), 0);
  }
  std::uint8_t* bytes = pager_->Write(page_);
  const std::size_t slot = data_page::Append(bytes, map_row::kBytes, 0);
  std::memset(bytes + data_page::Start(bytes, slot), 0, map_row::kBytes);
  return page_ << 8 | static_cast<std::uint32_t>(slot);
}

void AssignPlaces(TableDef& def) {
  std::uint16_t offset = 0, variable = 0;
  for (StoredColumn& column : def.columns) {
    column.variableIndex = variable;
    if (column.Is(ColumnType::kBoolean)) {
      column.fixedOffset = offset;
    } else if (column.Fixed()) {
      column.fixedOffset = offset;
      offset = static_cast<std::uint16_t>(offset + column.length);
    } else {
      ++variable;
    }
  }
  def.maxColumns = static_cast<std::uint16_t>(def.columns.size());
  def.variableColumns = variable;
}

void LayDownTable(Pager& pager, MapRows& maps, TableDef& def) {
  def.ownedMap = maps.Add();
  def.freeMap = maps.Add();
  for (RealIndex& index : def.indexes) index.map = maps.Add();
  def.longValues.clear();
  for (const StoredColumn& column : def.columns) {
    if (column.LongValue()) {
      const std::uint32_t owned = maps.Add();
      def.longValues.push_back({column.number, owned, maps.Add()});
    }
  }
  for (RealIndex& index : def.indexes) {
    index.root = pager.Allocate();
    index.entries = index.distinct = 0;
    FormatEmptyIndex(pager.Write(index.root), def.page);
    UsageMap(pager, index.map).Add(index.root);
  }
  WriteTableDef(pager, def);
}

std::vector<NamedTableDef> EngineTables() {
  using enum ColumnType;
  static constexpr EngineColumn kObjects[] = {
      {u"Id", kLong},         {u"ParentId", kLong},   {u"Name", kText},          {u"Type", kInteger},
      {u"DateCreate", kDate}, {u"DateUpdate", kDate}, {u"Owner", kBinary, true}, {u"Flags", kLong},
      {u"Database", kMemo},   {u"Connect", kMemo},    {u"ForeignName", kText},   {u"RmtInfoShort", kBinary},
      {u"RmtInfoLong", kOle}, {u"Lv", kOle},          {u"LvProp", kOle},         {u"LvModule", kOle},
      {u"LvExtra", kOle}};
  static constexpr EngineColumn kAces[] = {
      {u"ObjectId", kLong}, {u"SID", kBinary, true}, {u"ACM", kLong}, {u"FInheritable", kBoolean}};
  static constexpr EngineColumn kQueries[] = {
      {u"ObjectId", kLong}, {u"Attribute", kByte},  {u"Order", kBinary}, {u"Name1", kText},
      {u"Name2", kText},    {u"Expression", kMemo}, {u"Flag", kInteger}, {u"LvExtra", kLong}};
  static constexpr EngineColumn kRelationships[] = {{u"szRelationship", kText},
                                                    {u"grbit", kLong},
                                                    {u"ccolumn", kLong},
                                                    {u"icolumn", kLong},
                                                    {u"szObject", kText},
                                                    {u"szColumn", kText},
                                                    {u"szReferencedObject", kText},
                                                    {u"szReferencedColumn", kText}};

  constexpr std::uint8_t kUnique = RealIndex::kUnique, kIgnore = RealIndex::kIgnoreNulls;
  const EngineIndex objectIndexes[] = {{u"ParentIdName", {1, 2}, kUnique}, {u"Id", {0}, kUnique, true}};
  const EngineIndex aceIndexes[] = {{u"ObjectId", {0}, RealIndex::kRequired}};
  const EngineIndex queryIndexes[] = {{u"ObjectIdAttribute", {0, 1, 2}, kUnique, true}};
  const EngineIndex relationshipIndexes[] = {
      {u"szRelationship", {0}, kIgnore}, {u"szObject", {4}, kIgnore}, {u"szReferencedObject", {6}, kIgnore}};

  std::vector<NamedTableDef> tables;
  tables.push_back(MakeEngineTable(u"MSysObjects", engine_table::kObjects, kObjects, objectIndexes));
  tables.push_back(MakeEngineTable(u"MSysACEs", engine_table::kAces, kAces, aceIndexes));
  tables.push_back(MakeEngineTable(u"MSysQueries", engine_table::kQueries, kQueries, queryIndexes));
  tables.push_back(MakeEngineTable(u"MSysRelationships", engine_table::kRelationships, kRelationships,
                                   relationshipIndexes));
  return tables;
}

}  // namespace kestrelon::jet
