#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(CreateDatabase, MakesASoundFileWithItsTables) {
  const auto database = OpenInMemory(CreateInMemory(ProgramTables()));
  EXPECT_THAT(database->TableNames(), ElementsAre(u"FTable", u"FBackup", u"TreeviewTable"));
  EXPECT_THAT(database->Check(), IsEmpty());
  EXPECT_FALSE(database->Dirty());
}

TEST(CreateDatabase, GivesEqualBytesForEqualArguments) {
  EXPECT_EQ(*CreateInMemory(ProgramTables()), *CreateInMemory(ProgramTables()));
}

TEST(CreateDatabase, MakesTheColumnsInOrder) {
  const auto database = OpenInMemory(CreateInMemory(ProgramTables()));
  const Table& tree = database->OpenTable(u"TREEVIEWTABLE");
  ASSERT_EQ(tree.Columns().size(), 4u);
  EXPECT_EQ(tree.Name(), u"TreeviewTable");
  EXPECT_EQ(tree.Columns()[0].name, u"i");
  EXPECT_TRUE(tree.Columns()[0].autoNumber);
  EXPECT_EQ(tree.Columns()[3].length, 510);
  EXPECT_EQ(tree.FindColumn(u"KEY"), 2u);
  EXPECT_EQ(tree.FindColumn(u"nope"), std::nullopt);
  EXPECT_EQ(tree.RowCount(), 0u);
}

TEST(CreateDatabase, WritesTheEnginesOwnTables) {
  const auto database = OpenInMemory(CreateInMemory({}));
  EXPECT_THAT(database->TableNames(), IsEmpty());
  EXPECT_EQ(database->OpenTable(u"MSysObjects").RowCount(), 8u);
  EXPECT_EQ(database->OpenTable(u"MSysACEs").RowCount(), 16u);
  EXPECT_EQ(database->OpenTable(u"MSysQueries").RowCount(), 0u);
  EXPECT_EQ(database->OpenTable(u"MSysRelationships").RowCount(), 0u);
  EXPECT_THAT(database->Check(), IsEmpty());
}

TEST(CreateDatabase, MakesColumnsOfEveryType) {
  using enum ColumnType;
  const ByteVector bytes = CreateInMemory({{u"All",
                                            {{u"a", kBoolean},
                                             {u"b", kByte},
                                             {u"c", kInteger},
                                             {u"d", kLong},
                                             {u"e", kCurrency},
                                             {u"f", kSingle},
                                             {u"g", kDouble},
                                             {u"h", kDate},
                                             {u"i", kBinary},
                                             {u"j", kText, 20},
                                             {u"k", kOle},
                                             {u"l", kMemo},
                                             {u"m", kGuid},
                                             {u"n", kNumeric}},
                                            u"d"}});
  const Row row = {true,
                   std::int32_t{255},
                   std::int32_t{-32768},
                   std::int32_t{-5},
                   std::int64_t{123456789012},
                   1.5,
                   -2.25,
                   46347.5,
                   Bytes{1, 2, 3},
                   std::u16string(u"text"),
                   Bytes(5000, 7),
                   std::u16string(u"memo"),
                   Bytes(16, 3),
                   Bytes(17, 0)};
  {
    const auto database = OpenInMemory(bytes);
    database->OpenTable(u"All").Insert(row);
    Row nulls(row.size());
    nulls[3] = std::int32_t{9};
    database->OpenTable(u"All").Insert(nulls);
    database->Flush();
  }
  const auto database = OpenInMemory(bytes);
  const Rows rows = ReadAll(database->OpenTable(u"All"));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_TRUE(rows.begin()->second == row);
  const Row& nulls = rows.rbegin()->second;
  EXPECT_EQ(nulls[0], Value(false));  // a boolean has no null
  EXPECT_TRUE(IsNull(nulls[1]) && IsNull(nulls[9]) && IsNull(nulls[13]));
  EXPECT_THAT(database->Check(), IsEmpty());
}

TEST(CreateDatabase, SpreadsALargeDefinitionOverSeveralPages) {
  NewTable wide{u"Wide", {}, u""};
  for (int i = 0; i < 255; ++i) {
    wide.columns.push_back(
        {u"A column with a rather long name, number " + FromUtf8(std::to_string(i)), ColumnType::kText, 10});
  }
  const ByteVector bytes = CreateInMemory({wide});
  const auto database = OpenInMemory(bytes);
  Table& table = database->OpenTable(u"wide");
  EXPECT_EQ(table.Columns().size(), 255u);
  EXPECT_EQ(table.Columns()[254].name, u"A column with a rather long name, number 254");
  Row row(255, Value(std::u16string(u"x")));
  table.Insert(row);
  database->Flush();
  ExpectRows(bytes, u"Wide", ReadAll(table));
}

TEST(CreateDatabase, RefusesAPrimaryKeyThatIsNoLong) {
  EXPECT_THROW(CreateInMemory({{u"T", {{u"a", ColumnType::kText, 10}}, u"a"}}), Error);
  EXPECT_THROW(CreateInMemory({{u"T", {{u"a", ColumnType::kText, 0}}, u""}}), Error);
  EXPECT_THROW(CreateInMemory({{u"T", {{u"a", ColumnType::kText, 10, true}}, u""}}), Error);
}

}  // namespace
}  // namespace kestrelon::jet
