#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "jet/catalog/Layout.h"
#include "jet/index/Index.h"
#include "jet/page/DataPage.h"
#include "jet/page/MapRow.h"
#include "jet/page/UsageMap.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

StoredColumn ColumnOf(ColumnType type, std::uint16_t number) {
  StoredColumn column;
  column.type = static_cast<std::uint8_t>(type);
  column.number = number;
  column.length = SizeOf(type);
  if (column.length != 0) column.flags |= StoredColumn::kFixed;
  return column;
}

TEST(AssignPlaces, PutsFixedColumnsBehindEachOtherAndNumbersTheOthers) {
  using enum ColumnType;
  TableDef def;
  for (const ColumnType type : {kLong, kText, kBoolean, kInteger, kMemo, kDouble}) {
    def.columns.push_back(ColumnOf(type, static_cast<std::uint16_t>(def.columns.size())));
  }
  AssignPlaces(def);
  std::vector<std::uint16_t> offsets, indexes;
  for (const StoredColumn& column : def.columns) {
    offsets.push_back(column.fixedOffset);
    indexes.push_back(column.variableIndex);
  }
  EXPECT_THAT(offsets, ElementsAre(0, 0, 4, 4, 0, 6)) << "a boolean takes no bytes";
  EXPECT_THAT(indexes, ElementsAre(0, 0, 1, 1, 1, 2));
  EXPECT_EQ(def.maxColumns, 6);
  EXPECT_EQ(def.variableColumns, 2);
}

TEST(MapRows, PacksTheMapsOfAllOwnersOnPagesOfTheirOwn) {
  Pager pager;
  MapRows maps(pager);
  std::vector<std::uint32_t> pointers;
  for (int i = 0; i < 58; ++i) pointers.push_back(maps.Add());
  EXPECT_EQ(pointers[0], 2u << 8);
  EXPECT_EQ(pointers[56], 2u << 8 | 56) << "57 rows of 69 bytes fill a page";
  EXPECT_EQ(pointers[57], 3u << 8);
  EXPECT_EQ(data_page::Owner(pager.Read(2)), 0u);
  EXPECT_THAT(UsageMap(pager, pointers[30]).Pages(), IsEmpty());
}

TEST(LayDownTable, GivesEveryPartItsMapAndEveryIndexALeaf) {
  using enum ColumnType;
  Pager pager;
  MapRows maps(pager);
  TableDef def;
  def.columns = {ColumnOf(kLong, 0), ColumnOf(kMemo, 1)};
  def.indexes.resize(1);
  def.indexes[0].columns.push_back({0, true});
  def.logicalIndexes.resize(1);
  AssignPlaces(def);
  def.page = pager.Allocate();
  LayDownTable(pager, maps, def);

  EXPECT_NE(def.ownedMap, def.freeMap);
  ASSERT_EQ(def.longValues.size(), 1u);
  EXPECT_EQ(def.longValues[0].column, 1);
  EXPECT_NE(def.longValues[0].owned, def.longValues[0].free);
  EXPECT_THAT(UsageMap(pager, def.indexes[0].map).Pages(), ElementsAre(def.indexes[0].root));
  EXPECT_EQ(pager.Read(def.indexes[0].root)[0], page_type::kIndexLeaf);
  EXPECT_EQ(ReadTableDef(pager, def.page).ownedMap, def.ownedMap);
}

TEST(EngineTables, StandOnTheirFixedPagesWithTheirColumns) {
  const auto tables = EngineTables();
  ASSERT_EQ(tables.size(), 4u);
  for (std::uint32_t i = 0; i < 4; ++i) {
    EXPECT_EQ(tables[i].def.page, 2 + i);
    EXPECT_EQ(tables[i].def.kind, TableDef::kSystem);
  }
  const TableDef& objects = tables[0].def;
  EXPECT_EQ(tables[0].name, u"MSysObjects");
  ASSERT_EQ(objects.columns.size(), 17u);
  EXPECT_EQ(objects.columns[7].name, u"Flags");
  EXPECT_EQ(objects.columns[7].fixedOffset, 26);
  EXPECT_EQ(objects.columns[6].flags, 0x32) << "owners are masked";
  EXPECT_EQ(objects.columns[16].variableIndex, 10);
  EXPECT_THAT(objects.indexes[0].columns, ElementsAre(KeyColumn{1, true}, KeyColumn{2, true}));
  EXPECT_EQ(tables[1].def.indexes[0].flags, 0x88);
  EXPECT_EQ(tables[3].def.indexes[2].flags, 0x82);
}

}  // namespace
}  // namespace kestrelon::jet
