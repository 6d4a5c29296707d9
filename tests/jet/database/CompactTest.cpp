#include <algorithm>

#include "jet/database/DatabaseInternal.h"
#include "tests/jet/Support.h"
#include "tests/jet/index/AddIndex.h"

namespace kestrelon::jet {
namespace {

using testing::IsEmpty;

ByteVector Compact(Database& database) {
  auto packed = std::make_shared<std::vector<std::uint8_t>>();
  database.CompactInto(*OpenMemoryFile(packed));
  return packed;
}

std::vector<Row> RowsInOrder(Database& database, std::u16string_view table) {
  std::vector<Row> rows;
  for (auto& [id, row] : ReadAll(database.OpenTable(table))) rows.push_back(std::move(row));
  return rows;
}

TEST(CompactInto, KeepsTheRowsAndDropsTheFreeSpace) {
  Fixture fixture;
  std::vector<RowId> rows;
  for (int i = 0; i < 1000; ++i) rows.push_back(fixture.Insert(VariedRow(i)));
  fixture.Reopen();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i % 3 != 0) fixture.Delete(rows[i]);
  }
  for (std::size_t i = 0; i < rows.size(); i += 9) fixture.Update(rows[i], 2, Repeat(u"文", 255));
  fixture.database->Flush();

  const ByteVector packed = Compact(*fixture.database);

  EXPECT_LT(packed->size(), fixture.bytes->size() * 6 / 10);
  const auto copy = OpenInMemory(packed);
  EXPECT_THAT(copy->Check(), IsEmpty());
  EXPECT_EQ(copy->TableNames(), fixture.database->TableNames());
  EXPECT_TRUE(RowsInOrder(*copy, u"FTable") == RowsInOrder(*fixture.database, u"FTable"));
}

TEST(CompactInto, OrdersRowsByThePrimaryKeyAndSetsTheCounterToTheHighestNumber) {
  Fixture fixture;
  for (const std::int32_t number : {5, 900, 2, 30, -4}) {
    fixture.Tree().Insert(Row{number, Value(), Value(), Value()});
  }
  for (const auto& [id, row] : ReadAll(fixture.Tree())) {
    if (row[0] == Value(std::int32_t{900})) fixture.Tree().Delete(id);
  }
  EXPECT_EQ(fixture.Tree().LastAutoNumber(), 900);

  const auto copy = OpenInMemory(Compact(*fixture.database));

  std::vector<std::int32_t> numbers;
  for (const Row& row : RowsInOrder(*copy, u"TreeviewTable"))
    numbers.push_back(std::get<std::int32_t>(row[0]));
  EXPECT_THAT(numbers, testing::ElementsAre(-4, 2, 5, 30));
  EXPECT_EQ(copy->OpenTable(u"TreeviewTable").LastAutoNumber(), 30);
}

// Rows of every length, some with long values on pages of their own.
std::unique_ptr<Database> ManyRows() {
  std::unique_ptr<Database> database = OpenInMemory(CreateInMemory(ProgramTables()));
  for (int i = 0; i < 400; ++i) database->OpenTable(u"FTable").Insert(VariedRow(i));
  database->Flush();
  return database;
}

TEST(CompactInto, KeepsTheLongValuesOfRowsThatNobodyTouched) {
  const auto database = ManyRows();

  const auto copy = OpenInMemory(Compact(*database));

  EXPECT_THAT(copy->Check(), IsEmpty());
  EXPECT_TRUE(RowsInOrder(*copy, u"FTable") == RowsInOrder(*database, u"FTable"));
}

TEST(CompactInto, PacksWholePagesJustAsItPacksSingleRows) {
  Fixture whole, shifted;
  const RowId first = shifted.Insert(VariedRow(1));
  for (std::size_t i = 0; i < 400; ++i) {
    const Row row =
        ItemRow(u"node", u"index", Repeat(u"name", i % 60), Repeat(u"file", i % 77), u"", u"", u"");
    whole.Insert(row);
    shifted.Insert(row);
  }
  shifted.Delete(first);  // from here on no page of the copy begins where one of the old file does

  EXPECT_TRUE(*Compact(*whole.database) == *Compact(*shifted.database));
}

TEST(CompactInto, OfACopyGivesTheSameAgain) {
  const auto database = ManyRows();
  for (int i = 0; i < 400; ++i) database->OpenTable(u"TreeviewTable").Insert(Row(4));
  const ByteVector once = Compact(*database);
  EXPECT_TRUE(*Compact(*OpenInMemory(once)) == *once);
}

TEST(CompactInto, RefusesATableWhosePrimaryKeyMissesARow) {
  for (const bool ascending : {true, false}) {
    Fixture fixture;
    for (const std::int32_t number : {1, 2, ascending ? 3 : 0, 4})
      fixture.Tree().Insert(Row{number, Value(), Value(), Value()});
    fixture.database->Flush();
    const auto last = static_cast<std::uint32_t>(ReadAll(fixture.Tree()).rbegin()->first);
    // The row is marked as deleted, but the tree still leads to it.
    (*fixture.bytes)[(last >> 8) * 4096 + 14 + 2 * (last & 0xFF) + 1] |= 0xC0;
    EXPECT_THROW(Compact(*OpenInMemory(fixture.bytes)), CorruptFile) << ascending;
  }
}

TEST(CompactInto, StartsAnEmptyTablesCounterAnew) {
  Fixture fixture;
  fixture.Tree().Insert(Row(4));
  fixture.Tree().DeleteAll();
  const auto copy = OpenInMemory(Compact(*fixture.database));
  EXPECT_EQ(copy->OpenTable(u"TreeviewTable").LastAutoNumber(), 0);
}

TEST(CompactInto, OfAFreshFileChangesNothing) {
  const ByteVector bytes = CreateInMemory(ProgramTables());
  EXPECT_EQ(Compact(*OpenInMemory(bytes))->size(), bytes->size());
}

TEST(CompactInto, GivesAFileThatTakesFurtherChanges) {
  Fixture fixture;
  for (int i = 0; i < 500; ++i) fixture.Insert(VariedRow(i));
  const ByteVector packed = Compact(*fixture.database);
  const auto copy = OpenInMemory(packed);
  Table& items = copy->OpenTable(u"FTable");
  for (int i = 0; i < 500; ++i) items.Insert(VariedRow(i));
  copy->Flush();
  ExpectRows(packed, u"FTable", ReadAll(items));
  EXPECT_EQ(items.RowCount(), 1000u);
}

TEST(CompactInto, TakesChangesThatAreNotYetWritten) {
  Fixture fixture;
  for (int i = 0; i < 50; ++i) fixture.Insert(VariedRow(i));
  for (int i = 0; i < 50; ++i) fixture.Tree().Insert(Row(4));
  const auto copy = OpenInMemory(Compact(*fixture.database));
  EXPECT_EQ(copy->OpenTable(u"FTable").RowCount(), 50u);
  EXPECT_EQ(copy->OpenTable(u"TreeviewTable").RowCount(), 50u);
  EXPECT_THAT(copy->Check(), IsEmpty());
  fixture.FlushAndCompare();
}

TEST(CompactInto, IsRefusedWithinATransaction) {
  Fixture fixture;
  fixture.database->Begin();
  EXPECT_THROW(Compact(*fixture.database), Error);
}

TEST(CompactInto, RefusesAFileWhoseTablesHaveMoreIndexesThanThereArePages) {
  Fixture fixture;
  auto& database = static_cast<DatabaseImpl&>(*fixture.database);
  TableDef& tree = static_cast<TableImpl&>(fixture.Tree()).Internal().def;
  tree.indexes.resize(500, tree.indexes.front());
  WriteTableDef(database.Pages(), tree);
  database.Flush();
  auto packed = std::make_shared<std::vector<std::uint8_t>>();
  EXPECT_THROW(OpenInMemory(fixture.bytes)->CompactInto(*OpenMemoryFile(packed)), CorruptFile);
}

// A file with an index over a text that has no key which we could make, so that a copy takes its keys from
// the old tree. The other text is found once more: `spoil` changes it behind the index's back.
ByteVector FileWithATextWithoutKey(bool spoil) {
  Fixture fixture;
  fixture.Insert(ItemRow(u"K", u"1#K", u"\u0152uvre", u"", u"", u"", u""));  // not stored as single bytes
  fixture.Insert(ItemRow(u"K", u"2#K", u"beta", u"", u"", u"", u""));
  AddIndex(*fixture.database, u"FTable", {{u"DefineName"}});
  fixture.database->Flush();
  const auto replace = [&](std::vector<std::uint8_t> from, std::vector<std::uint8_t> to) {
    const auto found = std::search(fixture.bytes->begin(), fixture.bytes->end(), from.begin(), from.end());
    ASSERT_NE(found, fixture.bytes->end());
    std::copy(to.begin(), to.end(), found);
  };
  replace({0x52, 0x01, 'u', 0, 'v', 0}, {0x22, 0x6F, 'u', 0, 'v', 0});
  if (spoil) replace({0xFF, 0xFE, 'b', 'e', 't', 'a'}, {0xFF, 0xFE, 'z', 'e', 't', 'a'});
  return fixture.bytes;
}

TEST(CompactInto, TakesTheKeysOfTheOldTreeForATextWithoutAKey) {
  const ByteVector packed = Compact(*OpenInMemory(FileWithATextWithoutKey(false)));
  EXPECT_THAT(OpenInMemory(packed)->Check(), IsEmpty());
}

TEST(CompactInto, DoesNotHandOnAWrongKeyOfTheOldTree) {
  const ByteVector file = FileWithATextWithoutKey(true);
  EXPECT_THROW(Compact(*OpenInMemory(file)), CorruptFile);
}

TEST(CompactInto, RefusesATableWithoutAName) {
  Fixture fixture(std::vector<NewTable>{{u"", {{u"Word", ColumnType::kText, 10, false}}, u""}});
  auto packed = std::make_shared<std::vector<std::uint8_t>>();
  EXPECT_THROW(fixture.database->CompactInto(*OpenMemoryFile(packed)), CorruptFile);
}

TEST(CompactInto, WritesNothingWhenTheSourceIsDamaged) {
  Fixture fixture;
  const RowId row = fixture.Insert(VariedRow(1));
  fixture.database->Flush();
  (*fixture.bytes)[(static_cast<std::uint32_t>(row) >> 8) * 4096 + 12] = 0xFF;  // its slot count
  (*fixture.bytes)[(static_cast<std::uint32_t>(row) >> 8) * 4096 + 13] = 0xFF;
  auto packed = std::make_shared<std::vector<std::uint8_t>>();
  EXPECT_THROW(OpenInMemory(fixture.bytes)->CompactInto(*OpenMemoryFile(packed)), CorruptFile);
  EXPECT_TRUE(packed->empty());
}

TEST(CompactInto, LeavesNoDatabaseWhenTheSourceIsDamagedFarIn) {
  Fixture fixture;
  const Value text = Repeat(u"long text ", 5000);
  RowId row{};
  for (int i = 0; i < 200; ++i)
    row = fixture.Items().Insert(Row{Value(), Value(), Value(), Value(), text, Value(), Value()});
  fixture.database->Flush();
  (*fixture.bytes)[(static_cast<std::uint32_t>(row) >> 8) * 4096] = 0xFF;  // no data page any more
  auto packed = std::make_shared<std::vector<std::uint8_t>>();

  EXPECT_THROW(OpenInMemory(fixture.bytes)->CompactInto(*OpenMemoryFile(packed)), CorruptFile);

  ASSERT_GT(packed->size(), 500'000u);  // what was packed is no longer held in memory
  EXPECT_THROW(OpenInMemory(packed), Error);
}

}  // namespace
}  // namespace kestrelon::jet
