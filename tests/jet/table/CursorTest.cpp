#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

std::vector<std::u16string> IndexesOf(Table& items) {
  std::vector<std::u16string> texts;
  for (Cursor cursor = items.Rows(); cursor.Next();) cursor.ReadText(1, texts.emplace_back());
  return texts;
}

RowId InsertNamed(Fixture& fixture, const std::u16string& index, std::size_t bytes) {
  return fixture.Insert(
      ItemRow(u"", index, Repeat(u"a", bytes / 2), Repeat(u"b", bytes - bytes / 2), u"", u"", u""));
}

TEST(Cursor, MeetsNothingInAnEmptyTable) {
  Fixture fixture;
  Cursor cursor = fixture.Items().Rows();
  EXPECT_FALSE(cursor.Next());
  EXPECT_FALSE(cursor.Next());
}

TEST(Cursor, WalksTheRowsOfAllPagesInTheOrderTheyWereAdded) {
  Fixture fixture;
  std::vector<std::u16string> expected;
  for (int i = 0; i < 40; ++i) {
    expected.push_back(FromUtf8(std::to_string(i)));
    InsertNamed(fixture, expected.back(), 400);
  }
  EXPECT_EQ(IndexesOf(fixture.Items()), expected);
}

TEST(Cursor, MeetsAMovedRowAtHomeAndADeletedOneNowhere) {
  Fixture fixture;
  std::vector<RowId> rows;
  for (const char16_t* index : {u"a", u"b", u"c", u"d"}) {
    rows.push_back(InsertNamed(fixture, index, 450));
    InsertNamed(fixture, std::u16string(index) + u"+", 450);
  }
  fixture.Update(rows[1], 3, Repeat(u"文", 255));
  fixture.Update(rows[1], 2, Repeat(u"文", 255));
  fixture.Delete(rows[2]);

  EXPECT_THAT(IndexesOf(fixture.Items()), testing::ElementsAre(u"a", u"a+", u"b", u"b+", u"c+", u"d", u"d+"));
}

TEST(Cursor, StandsWhereItIsSentAndWalksOnFromThere) {
  Fixture fixture;
  std::vector<RowId> rows;
  for (int i = 0; i < 30; ++i) rows.push_back(InsertNamed(fixture, FromUtf8(std::to_string(i)), 450));
  Cursor cursor = fixture.Items().Rows();
  std::u16string text;
  cursor.MoveTo(rows[12]);
  EXPECT_EQ(cursor.Row(), rows[12]);
  EXPECT_TRUE(cursor.ReadText(1, text));
  EXPECT_EQ(text, u"12");
  EXPECT_THROW(cursor.MoveTo(RowId{0}), CorruptFile);
}

TEST(Cursor, TellsNullFromTheEmptyText) {
  Fixture fixture;
  Row row = ItemRow(u"", u"k", u"", u"", u"", u"", u"");
  row[2] = Value();
  row[6] = Value();
  fixture.Insert(row);
  Cursor cursor = fixture.Items().Rows();
  ASSERT_TRUE(cursor.Next());
  std::u16string text = u"old";
  EXPECT_FALSE(cursor.ReadText(2, text));
  EXPECT_EQ(text, u"");
  EXPECT_TRUE(cursor.ReadText(3, text));
  EXPECT_FALSE(cursor.ReadText(6, text)) << "a memo";
  EXPECT_TRUE(cursor.ReadText(4, text)) << "an empty memo";
  Value value = std::int32_t{3};
  cursor.Read(2, value);
  EXPECT_TRUE(IsNull(value));
  cursor.Read(3, value);
  EXPECT_EQ(value, Value(std::u16string()));
}

}  // namespace
}  // namespace kestrelon::jet
