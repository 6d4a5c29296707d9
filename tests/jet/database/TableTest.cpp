#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

using testing::IsEmpty;

TEST(Table, TakesARowThatFitsOnlyCompressed) {
  NewTable wide{u"Wide", {}, u""};
  for (char16_t name = u'a'; name < u'o'; ++name)
    wide.columns.push_back({std::u16string(1, name), ColumnType::kText, 255});
  wide.columns.push_back({u"last", ColumnType::kText, 255});
  const auto database = OpenInMemory(CreateInMemory({wide}));
  Table& table = database->OpenTable(u"Wide");
  const Row row(15, Value(Repeat(u"x", 255)));
  const RowId id = table.Insert(row);
  EXPECT_EQ(ReadAll(table).at(id), row);
  EXPECT_EQ(ErrorNumberOf([&] { table.Insert(Row(15, Value(Repeat(u"文", 255)))); }), code::kGeneric);
}

TEST(Table, KeepsTextsOfEveryShape) {
  Fixture fixture;
  fixture.Insert(ItemRow(u"", u"", u"", u"", u"", u"", u""));
  fixture.Insert(ItemRow(u"a", u"ab", u"abc", u"é", u"文", u"\U0001F600", u"  "));
  fixture.Insert(ItemRow(Repeat(u"x", 50), Repeat(u"ÿ", 50), Repeat(u"文", 255), Repeat(u"a", 255),
                         u"a\r\n\tb", u"\"'`", u"\uFFFD"));
  fixture.Insert(Row(7));
  fixture.FlushAndCompare();
}

TEST(Table, KeepsMemosOfEveryLength) {
  Fixture fixture;
  for (const std::size_t length : {0,    1,    31,   32,   33,   62,   63,   64,   65,    1024,
                                   1025, 2037, 2038, 2039, 4074, 4075, 4076, 4077, 50000, 65535}) {
    for (const std::u16string_view unit : {u"m", u"备注"}) {
      Row row(7);
      row[4] = Repeat(unit, length);
      row[6] = Repeat(unit, length / 2);
      fixture.Insert(row);
    }
  }
  fixture.FlushAndCompare();
}

TEST(Table, KeepsRowsInTheOrderOfInsertion) {
  Fixture fixture;
  std::vector<RowId> order;
  for (int i = 0; i < 5000; ++i) order.push_back(fixture.Insert(VariedRow(i)));
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  fixture.FlushAndCompare();
}

TEST(Table, KeepsTheOrderOfInsertionWhereLowerPagesAreFree) {
  Fixture fixture;
  Table& backup = fixture.database->OpenTable(u"FBackup");
  for (int i = 0; i < 500; ++i) backup.Insert(VariedRow(i));
  for (int i = 0; i < 500; ++i) fixture.Insert(VariedRow(i));
  backup.DeleteAll();
  fixture.Reopen();
  const RowId last = fixture.model.rbegin()->first;
  for (int i = 0; i < 500; ++i) EXPECT_GT(fixture.Insert(VariedRow(i)), last);
  fixture.FlushAndCompare();
}

TEST(Table, GrowsPast512Pages) {
  Fixture fixture;
  for (int i = 0; i < 1500; ++i) {
    Row row(7);
    row[2] = Repeat(u"文件", 255);
    row[3] = Repeat(u"件文", 255);
    row[4] = Repeat(u"p", 1000);
    fixture.Insert(std::move(row));
  }
  fixture.FlushAndCompare();
  EXPECT_GT(fixture.bytes->size(), 700 * 4096u);
}

TEST(Table, MovesARowThatOutgrowsItsPageAndKeepsItsAddress) {
  Fixture fixture;
  std::vector<RowId> rows;
  for (int i = 0; i < 60; ++i) rows.push_back(fixture.Insert(VariedRow(i)));
  for (const RowId row : rows) fixture.Update(row, 2, Repeat(u"文", 255));
  fixture.Compare();
  for (const RowId row : rows)
    fixture.Update(row, 3, Repeat(u"件", 255));  // from one overflow page to another
  fixture.FlushAndCompare();
  for (const RowId row : rows) fixture.Update(row, 2, u"short");
  for (const RowId row : rows) fixture.Update(row, 3, u"short");  // back home
  fixture.FlushAndCompare();
  for (const RowId row : rows) fixture.Delete(row);
  fixture.FlushAndCompare();
}

TEST(Table, LeavesNothingBehindWhenAMemoChanges) {
  Fixture fixture;
  const RowId row = fixture.Insert(VariedRow(1));
  for (const std::size_t length : {50000, 10, 3000, 70, 0, 4077, 65535, 64, 65}) {
    fixture.Update(row, 6, Repeat(u"c", length));
    fixture.Compare();
    fixture.Update(row, 4, Repeat(u"文", length));
    fixture.FlushAndCompare();
  }
  fixture.Update(row, 6, Value());
  fixture.Update(row, 4, Value());
  fixture.FlushAndCompare();
}

TEST(Table, KeepsAMemoThatAnUpdateDoesNotName) {
  Fixture fixture;
  Row row = VariedRow(2);
  row[6] = Repeat(u"long", 20000);
  const RowId id = fixture.Insert(row);
  fixture.Update(id, 0, u"S0");
  fixture.FlushAndCompare();
}

TEST(Table, ReadsOneRowByItsAddress) {
  Fixture fixture;
  std::vector<RowId> rows;
  for (int i = 0; i < 300; ++i) rows.push_back(fixture.Insert(VariedRow(i)));
  fixture.Update(rows[5], 2, Repeat(u"文", 255));
  Cursor cursor = fixture.Items().Rows();
  std::u16string text;
  for (const std::size_t i : {299u, 0u, 5u, 150u}) {
    cursor.MoveTo(rows[i]);
    EXPECT_EQ(cursor.Row(), rows[i]);
    EXPECT_TRUE(cursor.ReadText(1, text));
    EXPECT_EQ(Value(text), fixture.model[rows[i]][1]);
  }
  EXPECT_EQ(cursor.ReadText(6, text), !IsNull(fixture.model[rows[150]][6]));
}

TEST(Table, RefusesAnAddressThatNamesNoRow) {
  Fixture fixture;
  const RowId first = fixture.Insert(VariedRow(1));
  const RowId second = fixture.Insert(VariedRow(2));
  fixture.Delete(first);
  Cursor cursor = fixture.Items().Rows();
  EXPECT_THROW(cursor.MoveTo(first), CorruptFile);
  EXPECT_THROW(cursor.MoveTo(RowId{static_cast<std::uint32_t>(second) + 1}), CorruptFile);
  EXPECT_THROW(cursor.MoveTo(RowId{2 << 8}), CorruptFile);
  EXPECT_THROW(cursor.MoveTo(RowId{0xFFFFFFFF}), CorruptFile);
  EXPECT_THROW(fixture.Items().Delete(first), CorruptFile);
  fixture.Compare();
}

TEST(Table, GivesPagesBackWhenTheirRowsAreDeleted) {
  Fixture fixture;
  std::vector<RowId> rows;
  for (int i = 0; i < 2000; ++i) rows.push_back(fixture.Insert(VariedRow(i)));
  fixture.Reopen();
  for (const RowId row : rows) fixture.Delete(row);
  fixture.FlushAndCompare();
  const std::size_t size = fixture.bytes->size();
  fixture.Reopen();
  for (int i = 0; i < 1500; ++i) fixture.Insert(VariedRow(i));
  fixture.FlushAndCompare();
  EXPECT_EQ(fixture.bytes->size(), size);
}

TEST(Table, IsEmptyAfterDeleteAllAndGivesItsPagesBack) {
  Fixture fixture;
  for (int i = 0; i < 1000; ++i) fixture.Insert(VariedRow(i));
  fixture.Reopen();
  fixture.Items().DeleteAll();
  fixture.model.clear();
  fixture.Compare();
  fixture.FlushAndCompare();
  const std::size_t size = fixture.bytes->size();
  for (int i = 0; i < 900; ++i) fixture.Insert(VariedRow(i));
  fixture.FlushAndCompare();
  EXPECT_EQ(fixture.bytes->size(), size);
}

TEST(Table, NumbersRowsByItself) {
  Fixture fixture;
  Row row = {Value(), std::u16string(u"p"), std::u16string(u"k"), std::u16string(u"t")};
  for (int i = 0; i < 3; ++i) fixture.Tree().Insert(row);
  row[0] = std::int32_t{10};
  fixture.Tree().Insert(row);
  row[0] = std::int32_t{7};
  fixture.Tree().Insert(row);
  row[0] = Value();
  fixture.Tree().Insert(row);
  EXPECT_EQ(fixture.Tree().LastAutoNumber(), 11);

  fixture.Reopen();
  std::vector<std::int32_t> numbers;
  for (const auto& [id, values] : ReadAll(fixture.Tree()))
    numbers.push_back(std::get<std::int32_t>(values[0]));
  EXPECT_THAT(numbers, testing::ElementsAre(1, 2, 3, 10, 7, 11));
  EXPECT_EQ(fixture.Tree().LastAutoNumber(), 11);
  fixture.Tree().DeleteAll();
  fixture.Tree().Insert(row);
  EXPECT_EQ(fixture.Tree().LastAutoNumber(), 12);
  fixture.database->Flush();
  EXPECT_THAT(OpenInMemory(fixture.bytes)->Check(), IsEmpty());
}

TEST(Table, RefusesANumberThatIsTaken) {
  Fixture fixture;
  Row row = {std::int32_t{5}, std::u16string(u"p"), std::u16string(u"k"), std::u16string(u"t")};
  const RowId five = fixture.Tree().Insert(row);
  row[0] = Value();
  const RowId six = fixture.Tree().Insert(row);
  row[0] = std::int32_t{5};
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Tree().Insert(row); }), code::kGeneric);
  const std::pair<std::size_t, Value> toFive{0, std::int32_t{5}}, toSame{0, std::int32_t{6}},
      toNull{0, Value()};
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Tree().Update(six, {&toFive, 1}); }), code::kGeneric);
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Tree().Update(six, {&toNull, 1}); }), code::kGeneric);
  EXPECT_NO_THROW(fixture.Tree().Update(six, {&toSame, 1}));
  fixture.Tree().Delete(five);
  EXPECT_NO_THROW(fixture.Tree().Insert(row));
  EXPECT_EQ(fixture.Tree().RowCount(), 2u);
  EXPECT_THAT(fixture.database->Check(), IsEmpty());
}

TEST(Table, RunsOutOfNumbersWithAnError) {
  Fixture fixture;
  Row row = {std::numeric_limits<std::int32_t>::max(), Value(), Value(), Value()};
  fixture.Tree().Insert(row);
  row[0] = Value();
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Tree().Insert(row); }), code::kGeneric);
}

TEST(Table, RefusesATextLongerThanItsColumn) {
  Fixture fixture;
  Row row = VariedRow(1);
  row[0] = Repeat(u"x", 51);
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Items().Insert(row); }), code::kTooLong);
  const RowId id = fixture.Insert(VariedRow(1));
  const std::pair<std::size_t, Value> change{3, Repeat(u"x", 256)};
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Items().Update(id, {&change, 1}); }), code::kTooLong);
  fixture.FlushAndCompare();
}

TEST(Table, RefusesAValueOfAnotherType) {
  Fixture fixture;
  Row row = VariedRow(1);
  row[0] = std::int32_t{5};
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Items().Insert(row); }), code::kTypeMismatch);
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Items().Insert(Row(6)); }), code::kGeneric);
  fixture.FlushAndCompare();
}

TEST(Table, MovesMemosOutOfARowThatWouldBeTooLong) {
  NewTable table{u"FTable", {}, u""};
  for (int i = 0; i < 7; ++i)
    table.columns.push_back({u"t" + FromUtf8(std::to_string(i)), ColumnType::kText, 255});
  for (int i = 0; i < 5; ++i)
    table.columns.push_back({u"m" + FromUtf8(std::to_string(i)), ColumnType::kMemo});
  Fixture fixture({table});
  Row row(7, Value(Repeat(u"文", 255)));
  for (int i = 0; i < 5; ++i) row.emplace_back(Repeat(u"文", 32));
  const RowId id = fixture.Insert(row);
  fixture.Update(id, 0, u"shorter");
  fixture.FlushAndCompare();
}

TEST(Table, RefusesARowThatIsTooLongInAnyCase) {
  NewTable table{u"FTable", {}, u""};
  for (int i = 0; i < 9; ++i)
    table.columns.push_back({u"t" + FromUtf8(std::to_string(i)), ColumnType::kText, 255});
  Fixture fixture({table});
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Items().Insert(Row(9, Value(Repeat(u"文", 255)))); }),
            code::kGeneric);
  fixture.Insert(Row(9, Value(Repeat(u"a", 255))));
  fixture.FlushAndCompare();
}

TEST(Database, KnowsNoTableOfAnotherName) {
  Fixture fixture;
  EXPECT_EQ(ErrorNumberOf([&] { fixture.database->OpenTable(u"FTable2"); }), code::kNoSuchTable);
}

TEST(Database, KeepsItsPagesWhileTheFileIsDetached) {
  Fixture fixture;
  fixture.Insert(VariedRow(1));
  auto file = fixture.database->DetachFile();
  EXPECT_EQ(ReadAll(fixture.Items()).size(), 1u);
  EXPECT_THROW(fixture.database->Flush(), Error);
  fixture.database->AttachFile(std::move(file));
  fixture.FlushAndCompare();
}

}  // namespace
}  // namespace kestrelon::jet
