#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "jet/catalog/Layout.h"
#include "jet/schema/TableDef.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;

StoredColumn ColumnOf(ColumnType type, std::uint16_t number, std::u16string name) {
  StoredColumn column;
  column.type = static_cast<std::uint8_t>(type);
  column.number = number;
  column.name = std::move(name);
  column.length = SizeOf(type);
  if (column.length != 0) column.flags |= StoredColumn::kFixed;
  return column;
}

// A definition on page 2 with something in every part.
struct DefFixture {
  DefFixture() {
    def.page = pager.Allocate();
    def.rowCount = 70000;
    def.autoNumber = 80000;
    def.columns = {ColumnOf(ColumnType::kLong, 0, u"number"), ColumnOf(ColumnType::kMemo, 1, u"Größe 文"),
                   ColumnOf(ColumnType::kText, 2, u"t")};
    def.columns[2].length = 100;
    def.columns[2].collation = 0x041D;
    AssignPlaces(def);
    def.ownedMap = 0x300;
    def.freeMap = 0x301;
    RealIndex index;
    index.columns = {{2, true}, {0, false}};
    index.map = 0x302;
    index.root = 9;
    index.flags = RealIndex::kAlways | RealIndex::kUnique;
    index.entries = 5;
    index.distinct = 4;
    def.indexes = {index};
    LogicalIndex plain, foreign;
    plain.name = u"by text";
    plain.kind = LogicalIndex::kPrimary;
    foreign.name = u"other";
    foreign.number = 1;
    foreign.otherRole = 1;
    foreign.otherIndex = 3;
    foreign.otherTable = 77;
    foreign.cascadeDelete = 1;
    foreign.kind = LogicalIndex::kForeign;
    def.logicalIndexes = {plain, foreign};
    def.longValues = {{1, 0x303, 0x304}};
    WriteTableDef(pager, def);
  }
  Pager pager;
  TableDef def;
};

TEST(TableDef, ReadsBackAsItWasWritten) {
  DefFixture fixture;
  const TableDef read = ReadTableDef(fixture.pager, fixture.def.page);
  EXPECT_EQ(read.rowCount, 70000u);
  EXPECT_EQ(read.autoNumber, 80000u);
  EXPECT_EQ(read.kind, TableDef::kUser);
  EXPECT_EQ(read.maxColumns, 3);
  EXPECT_EQ(read.variableColumns, 2);
  EXPECT_EQ(read.ownedMap, 0x300u);
  EXPECT_EQ(read.freeMap, 0x301u);
  EXPECT_EQ(read.columns, fixture.def.columns);
  ASSERT_EQ(read.indexes.size(), 1u);
  EXPECT_THAT(read.indexes[0].columns, ElementsAre(KeyColumn{2, true}, KeyColumn{0, false}));
  EXPECT_EQ(read.indexes[0].map, 0x302u);
  EXPECT_EQ(read.indexes[0].root, 9u);
  EXPECT_EQ(read.indexes[0].flags, 0x81);
  EXPECT_EQ(read.indexes[0].entries, 5u);
  EXPECT_EQ(read.indexes[0].distinct, 4u);
  ASSERT_EQ(read.logicalIndexes.size(), 2u);
  EXPECT_EQ(read.logicalIndexes[0].name, u"by text");
  EXPECT_EQ(read.logicalIndexes[0].kind, LogicalIndex::kPrimary);
  EXPECT_EQ(read.logicalIndexes[0].cascadeDelete, 4);
  EXPECT_EQ(read.logicalIndexes[1].otherTable, 77u);
  EXPECT_EQ(read.logicalIndexes[1].otherIndex, 3u);
  EXPECT_EQ(read.logicalIndexes[1].cascadeDelete, 1);
  ASSERT_EQ(read.longValues.size(), 1u);
  EXPECT_EQ(read.longValues[0].column, 1);
  EXPECT_EQ(read.longValues[0].free, 0x304u);
  EXPECT_EQ(read.FindColumn(2)->name, u"t");
  EXPECT_EQ(read.FindColumn(3), nullptr);
}

TEST(TableDef, CountsItsFreeBytesAsAccessDoes) {
  DefFixture fixture;
  const std::uint8_t* page = fixture.pager.Read(fixture.def.page);
  EXPECT_EQ(Get16(page + 2), kPageSize - Get32(page + 8) - 8);
  EXPECT_EQ(Get16(page + Get32(page + 8) - 2), 0xFFFF) << "the mark at the end";
}

TEST(TableDef, TakesItsNewCountsWithoutBeingWrittenAnew) {
  DefFixture fixture;
  const std::vector<std::uint8_t> before(fixture.pager.Read(2), fixture.pager.Read(2) + kPageSize);
  fixture.def.rowCount = 1;
  fixture.def.autoNumber = 2;
  fixture.def.indexes[0].entries = 3;
  fixture.def.indexes[0].distinct = 4;
  fixture.def.indexes[0].root = 5;
  WriteTableCounts(fixture.pager, fixture.def);
  const TableDef read = ReadTableDef(fixture.pager, 2);
  EXPECT_EQ(read.rowCount, 1u);
  EXPECT_EQ(read.autoNumber, 2u);
  EXPECT_EQ(read.indexes[0].entries, 3u);
  EXPECT_EQ(read.indexes[0].root, 5u);
  std::size_t changed = 0;
  for (std::size_t i = 0; i < kPageSize; ++i) changed += fixture.pager.Read(2)[i] != before[i] ? 1 : 0;
  EXPECT_LE(changed, 8u);
}

TEST(TableDef, GoesOnOverAsManyPagesAsItNeeds) {
  DefFixture fixture;
  TableDef& def = fixture.def;
  def.columns.clear();
  for (std::uint16_t i = 0; i < 255; ++i) {
    def.columns.push_back(ColumnOf(ColumnType::kText, i, std::u16string(60, u'a') + char16_t(0x4E00 + i)));
  }
  AssignPlaces(def);
  WriteTableDef(fixture.pager, def);
  EXPECT_EQ(def.pages.size(), 10u);
  def.indexes[0].root = 0x01020304;
  WriteTableCounts(fixture.pager, def);
  const TableDef read = ReadTableDef(fixture.pager, 2);
  EXPECT_EQ(read.pages, def.pages);
  EXPECT_EQ(read.columns, def.columns);
  EXPECT_EQ(read.indexes[0].root, 0x01020304u);
}

TEST(TableDef, IsRefusedWhenItContradictsItself) {
  const auto expectRefused = [](const char* what, const std::function<void(std::uint8_t*)>& damage) {
    DefFixture fixture;
    damage(fixture.pager.Write(2));
    EXPECT_THROW(ReadTableDef(fixture.pager, 2), CorruptFile) << what;
  };
  constexpr std::size_t kColumn = 63 + 12;  // after the counts of the one index
  expectRefused("not a definition", [](std::uint8_t* page) { page[0] = page_type::kData; });
  expectRefused("it leads back to itself", [](std::uint8_t* page) { Put32(page + 4, 2); });
  expectRefused("it goes on outside the file", [](std::uint8_t* page) { Put32(page + 4, 99); });
  expectRefused("longer than its pages", [](std::uint8_t* page) { Put32(page + 8, 5000); });
  expectRefused("shorter than its head", [](std::uint8_t* page) { Put32(page + 8, 62); });
  expectRefused("of no known kind", [](std::uint8_t* page) { page[40] = 0x4F; });
  expectRefused("too many columns", [](std::uint8_t* page) { Put16(page + 45, 256); });
  expectRefused("more columns than it holds", [](std::uint8_t* page) { Put16(page + 45, 200); });
  expectRefused("too many indexes", [](std::uint8_t* page) { Put32(page + 51, 0x10000000); });
  expectRefused("a column twice", [](std::uint8_t* page) { Put16(page + kColumn + 5, 1); });
  expectRefused("a number past the highest", [](std::uint8_t* page) { Put16(page + kColumn + 5, 3); });
  expectRefused("a variable column without a place",
                [](std::uint8_t* page) { Put16(page + kColumn + 25 + 7, 2); });
  expectRefused("a fixed memo", [](std::uint8_t* page) { page[kColumn + 25 + 15] |= 1; });
  expectRefused("a name of half a character", [](std::uint8_t* page) { Put16(page + kColumn + 3 * 25, 11); });
  constexpr std::size_t kIndex = kColumn + 3 * 25 + (2 + 12) + (2 + 14) + (2 + 2);  // after columns and names
  expectRefused("an index of no columns", [](std::uint8_t* page) {
    for (std::size_t slot = 0; slot < 2; ++slot) Put16(page + kIndex + 4 + 3 * slot, 0xFFFF);
  });
}

}  // namespace
}  // namespace kestrelon::jet
