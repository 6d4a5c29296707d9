#include "jet/table/TableIndexes.h"
#include "tests/jet/Support.h"
#include "tests/jet/index/AddIndex.h"

// Indexes as users of Access make them, on tables of ours.

namespace kestrelon::jet {
namespace {

using testing::IsEmpty;

class TableIndexesTest : public testing::Test {
 protected:
  TableIndexesTest() {
    using enum ColumnType;
    bytes_ = CreateInMemory(
        {{u"T", {{u"text", kText, 50}, {u"number", kLong}, {u"date", kDate}, {u"memo", kMemo}}, u""}});
    database_ = OpenInMemory(bytes_);
  }
  Table& T() { return database_->OpenTable(u"T"); }
  RowId Insert(Value text, Value number, Value date = {}) {
    const Value row[] = {std::move(text), std::move(number), std::move(date), Value()};
    return T().Insert(row);
  }
  void Update(RowId row, std::size_t column, Value value) {
    const std::pair<std::size_t, Value> change{column, std::move(value)};
    T().Update(row, {&change, 1});
  }
  void Index(const std::vector<NewKeyColumn>& columns, unsigned flags = 0) {
    AddIndex(*database_, u"T", columns, flags);
    Reopen();
  }
  void Reopen() {
    database_->Flush();
    database_ = OpenInMemory(bytes_);
    EXPECT_THAT(database_->Check(), IsEmpty());
  }
  std::uint32_t Refusal(Value text, Value number) {
    return ErrorNumberOf([&] { Insert(std::move(text), std::move(number)); });
  }
  std::size_t Entries() { return static_cast<TableImpl&>(T()).Internal().def.indexes.at(0).entries; }

  ByteVector bytes_;
  std::unique_ptr<Database> database_;
};

TEST_F(TableIndexesTest, AreBuiltOverTheRowsThatAreThereAndFollowThem) {
  const RowId row = Insert(u"b", std::int32_t{1});
  Insert(u"a", std::int32_t{2});
  Index({{u"text"}, {u"number", false}});
  EXPECT_EQ(Entries(), 2u);
  Insert(u"c", Value());
  Update(row, 0, u"d");
  Reopen();
  EXPECT_EQ(Entries(), 3u);
  T().DeleteAll();
  Reopen();
  EXPECT_EQ(Entries(), 0u);
}

TEST_F(TableIndexesTest, KeepTheirPromiseToBeUnique) {
  Index({{u"text"}}, RealIndex::kUnique);
  const RowId row = Insert(u"one", Value());
  EXPECT_EQ(Refusal(u"ONE ", Value()), code::kGeneric);
  Insert(Value(), Value());
  Insert(Value(), Value());
  Update(row, 0, u"two");
  EXPECT_EQ(Refusal(u"two", Value()), code::kGeneric);
  EXPECT_EQ(Refusal(u"one", Value()), 0u) << "free again";
  T().Delete(row);
  EXPECT_EQ(Refusal(u"two", Value()), 0u) << "free again";
  Reopen();
  EXPECT_EQ(Entries(), 4u);
}

TEST_F(TableIndexesTest, ForgetWhatIsRolledBack) {
  Index({{u"text"}}, RealIndex::kUnique);
  Insert(u"kept", Value());
  database_->Begin();
  Insert(u"taken back", Value());
  database_->Rollback();
  EXPECT_EQ(Refusal(u"taken back", Value()), 0u);
  EXPECT_EQ(Refusal(u"kept", Value()), code::kGeneric);
  Reopen();
}

TEST_F(TableIndexesTest, ThatRequireAKeyRefuseNullInAnyColumn) {
  Index({{u"text"}, {u"number"}}, RealIndex::kRequired);
  EXPECT_EQ(Refusal(u"a", Value()), code::kGeneric);
  EXPECT_EQ(Refusal(Value(), std::int32_t{1}), code::kGeneric);
  EXPECT_EQ(Refusal(u"a", std::int32_t{1}), 0u);
  EXPECT_EQ(Refusal(u"a", std::int32_t{1}), 0u) << "it is not unique";
}

TEST_F(TableIndexesTest, OnANumberNeedNoLookWhileNumbersRise) {
  Index({{u"number", false}}, RealIndex::kUnique);
  for (std::int32_t number = 0; number < 50; ++number) Insert(Value(), 2 * number);
  EXPECT_EQ(Refusal(Value(), std::int32_t{98}), code::kGeneric);
  EXPECT_EQ(Refusal(Value(), std::int32_t{33}), 0u);
  EXPECT_EQ(Refusal(Value(), std::int32_t{33}), code::kGeneric);
  EXPECT_EQ(Refusal(Value(), std::int32_t{-2}), 0u);
  Reopen();
  EXPECT_EQ(Entries(), 52u);
}

TEST_F(TableIndexesTest, RefuseTheTextThatTheyCannotHoldAndNoOther) {
  Index({{u"text"}});
  EXPECT_NO_THROW(T().CheckChangeable());
  EXPECT_EQ(Refusal(u"文", Value()), code::kGeneric);
  EXPECT_FALSE(database_->Dirty());
  EXPECT_EQ(Refusal(u"naïve", Value()), 0u);
  Reopen();
  EXPECT_EQ(T().RowCount(), 1u);
}

TEST_F(TableIndexesTest, UnderAForeignSortOrderMakeTheirTableReadOnly) {
  const RowId row = Insert(u"a", Value());
  AddIndex(*database_, u"T", {{u"text"}});
  Pager& pager = static_cast<DatabaseImpl&>(*database_).Pages();
  TableDef def = ReadTableDef(pager, static_cast<TableImpl&>(T()).Internal().def.page);
  def.columns[0].collation = 0x041D;
  WriteTableDef(pager, def);
  database_->Flush();
  database_ = OpenInMemory(bytes_);
  EXPECT_THROW(T().CheckChangeable(), Error);
  EXPECT_EQ(Refusal(u"b", Value()), code::kGeneric);
  EXPECT_EQ(ErrorNumberOf([&] { Update(row, 3, u"another column"); }), code::kGeneric);
  EXPECT_EQ(ErrorNumberOf([&] { T().Delete(row); }), code::kGeneric);
  EXPECT_EQ(ErrorNumberOf([&] { T().DeleteAll(); }), code::kGeneric);
  EXPECT_FALSE(database_->Dirty());
  EXPECT_EQ(ReadAll(T()).size(), 1u);
}

TEST_F(TableIndexesTest, OfARelationshipMakeTheirTableReadOnly) {
  AddIndex(*database_, u"T", {{u"number"}}, 0, LogicalIndex::kForeign);
  Reopen();
  EXPECT_THROW(T().CheckChangeable(), Error);
  EXPECT_EQ(Refusal(u"a", std::int32_t{1}), code::kGeneric);
  EXPECT_FALSE(database_->Dirty());
}

TEST(TableIndexes, OfAReplicaMakeTheirTableReadOnly) {
  const ByteVector bytes = CreateInMemory(
      {{u"T", {{u"n", ColumnType::kLong, 0, true}, {u"s_Generation", ColumnType::kLong}}, u"n"}});
  const auto database = OpenInMemory(bytes);
  Table& table = database->OpenTable(u"T");
  EXPECT_THROW(table.CheckChangeable(), Error);
  EXPECT_EQ(ErrorNumberOf([&] { table.Insert(Row(2)); }), code::kGeneric);
  EXPECT_FALSE(database->Dirty());
}

}  // namespace
}  // namespace kestrelon::jet
