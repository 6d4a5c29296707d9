#include <algorithm>

#include "jet/database/DatabaseInternal.h"
#include "jet/page/DataPage.h"
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

// The numbers of the tree's rows in a packed copy, which must be sound.
std::vector<std::int32_t> PackedNumbers(const ByteVector& bytes) {
  const auto copy = OpenInMemory(Compact(*OpenInMemory(bytes)));
  EXPECT_THAT(copy->Check(), IsEmpty());
  std::vector<std::int32_t> numbers;
  for (const Row& row : RowsInOrder(*copy, u"TreeviewTable"))
    numbers.push_back(std::get<std::int32_t>(row[0]));
  return numbers;
}

// A file whose tree has rows with these numbers, and the page of its primary key.
struct FileWithNumbers {
  explicit FileWithNumbers(const std::vector<std::int32_t>& numbers) {
    for (const std::int32_t number : numbers) fixture.Tree().Insert(Row{number, Value(), Value(), Value()});
    fixture.database->Flush();
    root = static_cast<TableImpl&>(fixture.Tree()).Internal().def.indexes[0].root * kPageSize;
  }
  std::uint8_t& InRoot(std::size_t offset) { return (*fixture.bytes)[root + offset]; }

  Fixture fixture;
  std::size_t root = 0;
};

TEST(CompactInto, SortsRowsAnewWhosePrimaryKeyLeadsToARowThatIsNotThere) {
  for (const bool ascending : {true, false}) {
    FileWithNumbers file({1, 2, ascending ? 3 : 0, 4});
    const auto last = static_cast<std::uint32_t>(ReadAll(file.fixture.Tree()).rbegin()->first);
    // The row is marked as deleted, but the tree still leads to it.
    (*file.fixture.bytes)[(last >> 8) * 4096 + 14 + 2 * (last & 0xFF) + 1] |= 0xC0;
    if (ascending) {
      EXPECT_THAT(PackedNumbers(file.fixture.bytes), testing::ElementsAre(1, 2, 3));
    } else {
      EXPECT_THAT(PackedNumbers(file.fixture.bytes), testing::ElementsAre(0, 1, 2));
    }
  }
}

TEST(CompactInto, SortsRowsAnewWhosePrimaryKeyIsWrongInAnyWay) {
  constexpr std::size_t kFirst = 480;  // entry: a flag, four bytes of key, three of the page, one of the row
  for (const std::vector<std::int32_t>& numbers :
       {std::vector<std::int32_t>{3, 1, 4, 2}, std::vector<std::int32_t>{1, 2, 3, 4}}) {
    for (const std::size_t offset : {std::size_t{0}, std::size_t{4}, kFirst + 4, kFirst + 6, kFirst + 8}) {
      FileWithNumbers file(numbers);
      file.InRoot(offset) ^= 0x03;
      EXPECT_THAT(OpenInMemory(file.fixture.bytes)->Check(), testing::Not(IsEmpty())) << offset;
      EXPECT_THAT(PackedNumbers(file.fixture.bytes), testing::ElementsAre(1, 2, 3, 4)) << offset;
    }
  }
}

TEST(CompactInto, SortsRowsAnewThatThePrimaryKeyLacks) {
  FileWithNumbers file({4, 2, 1, 3});
  // The last entry is taken off the leaf: it is one of three that share four bytes with the first.
  constexpr std::size_t kMask = 27, kEnd = 9 + 3 * 5;  // a bit for each place where an entry ends
  ASSERT_EQ(file.InRoot(kMask + kEnd / 8), 1u << kEnd % 8);
  file.InRoot(kMask + kEnd / 8) = 0;
  file.InRoot(2) = static_cast<std::uint8_t>(file.InRoot(2) + 5);
  EXPECT_THAT(OpenInMemory(file.fixture.bytes)->Check(),
              testing::Contains(IsFinding(Finding::Kind::kIndex, "an index lacks a row")));
  EXPECT_THAT(PackedNumbers(file.fixture.bytes), testing::ElementsAre(1, 2, 3, 4));
}

TEST(CompactInto, RefusesRowsThatHaveOneKey) {
  FileWithNumbers file({1, 2, 3});
  const auto last = static_cast<std::uint32_t>(ReadAll(file.fixture.Tree()).rbegin()->first);
  std::uint8_t* page = file.fixture.bytes->data() + (last >> 8) * kPageSize;
  page[data_page::Start(page, last & 0xFF) + 2] = 1;
  EXPECT_THAT(OpenInMemory(file.fixture.bytes)->Check(),
              testing::Contains(IsFinding(Finding::Kind::kDamage, "the key of another in a unique index")));
  EXPECT_THROW(Compact(*OpenInMemory(file.fixture.bytes)), CorruptFile);
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
  EXPECT_THAT(OpenInMemory(file)->Check(),
              testing::Contains(IsFinding(Finding::Kind::kIndex, "an index has another key for a row")));
  const ByteVector packed = Compact(*OpenInMemory(file));
  EXPECT_THAT(OpenInMemory(packed)->Check(), IsEmpty());
}

TEST(CompactInto, RefusesATextWithoutAKeyThatTheOldTreeLacks) {
  const ByteVector file = FileWithATextWithoutKey(false);
  std::size_t root = 0;
  {
    const auto database = OpenInMemory(file);
    root = static_cast<TableImpl&>(database->OpenTable(u"FTable")).Internal().def.indexes[0].root * kPageSize;
  }
  // An entry ends with the slot of its row: where that of the first row becomes 1, the second row is led to
  // twice.
  const auto findings = [&] { return OpenInMemory(file)->Check(); };
  bool met = false;
  for (std::size_t at = 480; at < 560 && !met; ++at) {
    std::uint8_t& byte = (*file)[root + at];
    if (byte != 0) continue;
    byte = 1;
    met = std::ranges::any_of(findings(), [](const Finding& finding) {
      return finding.kind == Finding::Kind::kDamage && finding.text.find("lacks a row") != std::string::npos;
    });
    if (!met) byte = 0;
  }
  ASSERT_TRUE(met);
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
