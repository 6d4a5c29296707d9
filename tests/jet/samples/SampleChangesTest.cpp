#include <set>

#include "jet/index/Index.h"
#include "jet/page/UsageMap.h"
#include "tests/jet/samples/MdbTools.h"
#include "tests/jet/samples/PrintedCells.h"
#include "tests/jet/samples/Samples.h"

// Databases that Access wrote, changed by us: the changed table holds exactly what it should, the others what
// they held, and the indexes keep the promises of their flags.

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::map<std::u16string, Rows> ReadAllTables(Database& database) {
  std::map<std::u16string, Rows> tables;
  for (const std::u16string& name : AllTableNames(database)) tables[name] = ReadAll(database.OpenTable(name));
  return tables;
}

// A value for a column that no other `number` has, as far as the type goes.
Value NewValue(const StoredColumn& column, int number) {
  const auto low = static_cast<std::uint8_t>(number);
  Bytes bytes(column.Is(ColumnType::kNumeric) ? 17 : 16, low);
  switch (static_cast<ColumnType>(column.type)) {
    case ColumnType::kBoolean: return number % 2 == 0;
    case ColumnType::kByte: return std::int32_t{low};
    case ColumnType::kInteger: return std::int32_t{1000 + number};
    case ColumnType::kLong: return std::int32_t{1000000 + number};
    case ColumnType::kCurrency: return std::int64_t{10000} * number;
    case ColumnType::kSingle:
    case ColumnType::kDouble: return number + 0.25;
    case ColumnType::kDate: return 46000.0 + number;
    case ColumnType::kText:
      return (u"N" + FromUtf8(std::to_string(number)) + u" é, \"x\"").substr(0, column.length / 2u);
    case ColumnType::kMemo: return Repeat(u"memo文 ", static_cast<std::size_t>(number * 97 % 9000));
    case ColumnType::kOle: return Bytes(static_cast<std::size_t>(1 + number * 131 % 9000), low);
    case ColumnType::kBinary: bytes.resize(std::min<std::size_t>(bytes.size(), column.length)); return bytes;
    case ColumnType::kNumeric: bytes[0] = 0; return bytes;
    case ColumnType::kGuid: return bytes;
  }
  return {};  // a fixed binary, for one: only read
}

Row NewRow(Table& table, int number) {
  Row row;
  for (std::size_t position = 0; position < table.Columns().size(); ++position) {
    const bool automatic = table.Columns()[position].autoNumber;
    row.push_back(automatic ? Value() : NewValue(InternalOf(table).stored[position], number));
  }
  return row;
}

// Inserts, changes of all columns and deletions, mixed. The rows afterwards.
Rows ChangeRows(Table& table) {
  Rows model = ReadAll(table);
  for (int i = 0; i < 60; ++i) {
    Row row = NewRow(table, i);
    const RowId id = table.Insert(row);
    for (std::size_t position = 0; position < row.size(); ++position) {
      if (table.Columns()[position].autoNumber) row[position] = table.LastAutoNumber();
    }
    model[id] = std::move(row);
  }
  int number = 0;
  for (auto row = model.begin(); row != model.end(); ++number) {
    if (number % 4 == 1) {
      table.Delete(row->first);
      row = model.erase(row);
      continue;
    }
    if (number % 4 == 2) {
      std::vector<std::pair<std::size_t, Value>> changes;
      const Row changed = NewRow(table, 100 + number);
      for (std::size_t position = 0; position < changed.size(); ++position) {
        if (!table.Columns()[position].autoNumber) changes.emplace_back(position, changed[position]);
      }
      table.Update(row->first, changes);
      for (const auto& [position, value] : changes) row->second[position] = value;
    }
    ++row;
  }
  return model;
}

class SampleChanges : public testing::TestWithParam<std::filesystem::path> {
 protected:
  void ExpectChanged(const std::vector<std::uint8_t>& bytes, const std::u16string& name, const Rows& model,
                     const std::map<std::u16string, Rows>& before) {
    const auto database = OpenInMemory(std::make_shared<std::vector<std::uint8_t>>(bytes));
    EXPECT_THAT(database->Check(), IsEmpty());
    for (const auto& [each, rows] : before) {
      EXPECT_TRUE(ReadAll(database->OpenTable(each)) == (each == name ? model : rows)) << ToUtf8(each);
    }
    Table& table = database->OpenTable(name);
    EXPECT_EQ(table.RowCount(), model.size());

    if (!mdb_tools::Present()) return;
    const std::filesystem::path file = folder_ / "changed.mdb";
    WriteBytes(file, bytes);
    auto [columns, theirs] = mdb_tools::ExportCells(file, ToUtf8(name));
    auto ours = PrintedRows(table, model, columns);
    std::sort(ours.begin(), ours.end());
    std::sort(theirs.begin(), theirs.end());
    EXPECT_EQ(ours, theirs);
  }

  ScopedFolder folder_;
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SampleChanges);

TEST_P(SampleChanges, ReachTheirTableAndNoOtherOrAreRefused) {
  const std::vector<std::uint8_t> original = *ReadBytes(GetParam());
  std::set<std::string> refused;
  const auto names = AllTableNames(*OpenInMemory(ReadBytes(GetParam())));
  for (const std::u16string& name : names) {
    SCOPED_TRACE(ToUtf8(name));
    const ByteVector bytes = ReadBytes(GetParam());
    const auto database = OpenInMemory(bytes);
    Table& table = database->OpenTable(name);
    if (InternalOf(table).def.kind == TableDef::kSystem) continue;
    const auto before = ReadAllTables(*database);
    try {
      const Rows model = ChangeRows(table);
      database->Flush();
      ExpectChanged(*bytes, name, model, before);
    } catch (const Error& error) {
      refused.insert(ToUtf8(name));
      EXPECT_EQ(error.Number(), code::kGeneric);
      EXPECT_THAT(error.what(), testing::AnyOf(HasSubstr("cannot hold this text"), HasSubstr("read-only")));
      EXPECT_FALSE(database->Dirty());
      database->Flush();
      EXPECT_TRUE(*bytes == original);
    }
  }
  // Texts beyond code page 1252 in an index; relationships; nothing else.
  const std::set<std::string> expected =
      GetParam().stem() == "unicode-text"
          ? std::set<std::string>{"MSysNavPaneGroupCategories", "MSysNavPaneGroupToObjects",
                                  "MSysNavPaneGroups", "Table"}
          : std::set<std::string>{};
  EXPECT_EQ(refused, expected);
}

TEST_P(SampleChanges, LeaveNothingBehindWhenAllRowsGo) {
  const ByteVector bytes = ReadBytes(GetParam());
  auto database = OpenInMemory(bytes);
  for (const std::u16string& name : database->TableNames()) {
    if (name == u"Table") continue;  // refused, see above
    database->OpenTable(name).DeleteAll();
  }
  database->Flush();
  database = OpenInMemory(bytes);
  EXPECT_THAT(database->Check(), IsEmpty());
  for (const std::u16string& name : database->TableNames()) {
    if (name == u"Table") continue;
    Table& table = database->OpenTable(name);
    EXPECT_THAT(ReadAll(table), IsEmpty());
    EXPECT_EQ(table.RowCount(), 0u);
  }
}

INSTANTIATE_TEST_SUITE_P(OfAccess, SampleChanges, testing::ValuesIn(Samples()), NameOfSample);

// The indexes of one sample's tables, followed through changes.
class SampleIndexes : public testing::Test {
 protected:
  void Open(const char* name, const char16_t* table) {
    bytes_ = SampleInMemory(name);
    name_ = table;
    if (bytes_ != nullptr) database_ = OpenInMemory(bytes_);
  }
  Table& Rows() { return database_->OpenTable(name_); }
  RowId Insert(Row row) { return Rows().Insert(row); }
  void Update(RowId row, std::size_t column, Value value) {
    const std::pair<std::size_t, Value> change{column, std::move(value)};
    Rows().Update(row, {&change, 1});
  }
  std::string Refusal(Row row) {
    try {
      Insert(std::move(row));
    } catch (const Error& error) {
      return error.what();
    }
    return "";
  }
  void Reopen() {
    database_->Flush();
    database_ = OpenInMemory(bytes_);
    EXPECT_THAT(database_->Check(), IsEmpty());
  }
  RealIndex IndexOver(std::vector<std::uint16_t> numbers) {
    for (const RealIndex& index : InternalOf(Rows()).def.indexes) {
      std::vector<std::uint16_t> columns;
      for (const KeyColumn& column : index.columns) columns.push_back(column.number);
      if (columns == numbers) return index;
    }
    ADD_FAILURE() << "no such index";
    return {};
  }
  // The rows that an index names, in its order.
  std::vector<Row> InOrderOf(const std::vector<std::uint16_t>& numbers) {
    std::vector<Row> rows;
    Table& table = Rows();
    IndexWalk walk;
    walk.entry = [&](std::span<const std::uint8_t>, RowId id) {
      Cursor cursor = table.Rows();
      cursor.MoveTo(id);
      Row& row = rows.emplace_back(table.Columns().size());
      for (std::size_t column = 0; column < row.size(); ++column) cursor.Read(column, row[column]);
    };
    WalkIndex(*InternalOf(table).pager, InternalOf(table).def.page, IndexOver(numbers), walk);
    return rows;
  }

  ByteVector bytes_;
  std::u16string name_;
  std::unique_ptr<Database> database_;
};

const char* const kDuplicate = "would create duplicate values";
const char* const kNullKey = "cannot contain a Null value";

TEST_F(SampleIndexes, ThatAreUniqueRefuseDuplicatesButNotOfNull) {
  Open("unique-and-null-indexes.mdb", u"TableUnique1_temp");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  EXPECT_THAT(Refusal({u"new1", u"stuff"}), HasSubstr(kDuplicate));
  EXPECT_THAT(Refusal({u"new1", u"STUFF  "}), HasSubstr(kDuplicate));
  EXPECT_THAT(Refusal({u"ROW0", u"unheard of"}), HasSubstr(kDuplicate));
  EXPECT_THAT(Refusal({Value(), u"unheard of"}), HasSubstr(kNullKey));
  EXPECT_FALSE(database_->Dirty());
  const RowId row = Insert({u"new1", Value()});
  Insert({u"new2", Value()});
  EXPECT_THAT(ErrorNumberOf([&] { Update(row, 1, u"Lots of stuff"); }), code::kGeneric);
  Update(row, 1, u"lots of other stuff");
  Reopen();
  EXPECT_EQ(Rows().RowCount(), 12u);
  EXPECT_EQ(InOrderOf({1}).size(), 12u) << "an index that ignores no nulls names every row";
  EXPECT_THAT(Refusal({u"new3", u"Lots of other stuff"}), HasSubstr(kDuplicate));
}

TEST_F(SampleIndexes, OverTwoColumnsCompareThePair) {
  Open("unique-and-null-indexes.mdb", u"TableUnique2_temp");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  EXPECT_THAT(Refusal({u"new1", u"stuff", std::int32_t{13}}), HasSubstr(kDuplicate));
  EXPECT_THAT(Refusal({u"new1", Value(), std::int32_t{49}}), HasSubstr(kDuplicate));
  EXPECT_THAT(Refusal({u"new1", u"more", Value()}), HasSubstr(kDuplicate));
  Insert({u"new1", u"stuff", std::int32_t{14}});
  Insert({u"new2", u"stuff", std::int32_t{-14}});
  Insert({u"new3", Value(), Value()});  // all of it null, for the third time
  Insert({u"new4", u"stuff", Value()});
  Reopen();
  const std::vector<Row> rows = InOrderOf({1, 2});
  ASSERT_EQ(rows.size(), 15u);
  std::vector<Value> numbersOfStuff;
  for (const Row& row : rows) {
    if (row[1] == Value(u"stuff")) numbersOfStuff.push_back(row[2]);
  }
  EXPECT_THAT(numbersOfStuff, ElementsAre(Value(), Value(std::int32_t{-14}), Value(std::int32_t{13}),
                                          Value(std::int32_t{14})));
}

TEST_F(SampleIndexes, ThatIgnoreNullsNameNoRowWithoutAKey) {
  Open("unique-and-null-indexes.mdb", u"TableIgnoreNulls1");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  EXPECT_EQ(InOrderOf({1}).size(), 6u);
  const RowId null = Insert({u"new1", Value()}), text = Insert({u"new2", u"stuff"});
  Reopen();
  EXPECT_EQ(InOrderOf({1}).size(), 7u);
  Update(null, 1, u"stuff");
  Update(text, 1, Value());
  Reopen();
  EXPECT_EQ(InOrderOf({1}).size(), 7u);
  EXPECT_EQ(InOrderOf({0}).size(), 12u);
  Rows().Delete(null);
  Reopen();
  EXPECT_EQ(InOrderOf({1}).size(), 6u);
}

TEST_F(SampleIndexes, ThatIgnoreNullsNameARowWithHalfAKey) {
  Open("unique-and-null-indexes.mdb", u"TableIgnoreNulls2");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  EXPECT_EQ(InOrderOf({1, 2}).size(), 10u);
  Insert({u"new1", Value(), Value()});
  Insert({u"new2", Value(), std::int32_t{5}});
  Insert({u"new3", u"half", Value()});
  Reopen();
  EXPECT_EQ(InOrderOf({1, 2}).size(), 12u);
}

TEST_F(SampleIndexes, MixAscendingAndDescendingColumns) {
  Open("unique-and-null-indexes.mdb", u"TableIgnoreNulls2_temp");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  TableDef def = InternalOf(Rows()).def;
  for (RealIndex& index : def.indexes) {
    if (index.columns.size() == 2) index.columns[1].ascending = false;
  }
  WriteTableDef(static_cast<DatabaseImpl&>(*database_).Pages(), def);
  Reopen();
  int number = 0;
  for (const char16_t* text : {u"b", u"a", u"B"}) {
    for (const std::int32_t value : {-70000, 3, 70000}) {
      Insert({u"r" + FromUtf8(std::to_string(number++)), std::u16string(text), value});
    }
  }
  Insert({u"r9", u"a", Value()});
  Insert({u"rA", Value(), std::int32_t{1}});
  Reopen();
  std::vector<Value> numbers;
  for (const Row& row : InOrderOf({1, 2})) numbers.push_back(row[2]);
  const auto n = [](std::int32_t value) { return Value(value); };
  EXPECT_THAT(numbers, ElementsAre(n(1), n(70000), n(3), n(-70000), Value(), n(70000), n(70000), n(3), n(3),
                                   n(-70000), n(-70000)));
}

TEST_F(SampleIndexes, OfTwoLevelsGrowAndShrink) {
  Open("two-level-index.mdb", u"Table1");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  const auto pages = [&] {
    return UsageMap(static_cast<DatabaseImpl&>(*database_).Pages(), IndexOver({0}).map).Pages().size();
  };
  const auto expectOrder = [&](std::size_t count) {
    const std::vector<Row> rows = InOrderOf({0});
    EXPECT_EQ(rows.size(), count);
    EXPECT_TRUE(
        std::is_sorted(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return b[0] < a[0]; }));
  };
  EXPECT_EQ(pages(), 3u);
  std::vector<RowId> added;
  for (int i = 0; i < 3000; ++i) {
    added.push_back(Insert({std::int32_t{i * 7919 % 100003 - 50000}, u"x", Value()}));
  }
  Reopen();
  EXPECT_EQ(pages(), 8u);
  expectOrder(3512);
  for (const RowId row : added) Rows().Delete(row);
  Reopen();
  EXPECT_EQ(pages(), 3u);
  expectOrder(512);
  int left = 512;
  for (const auto& [row, values] : ReadAll(Rows())) {
    if (left-- > 5) Rows().Delete(row);
  }
  Reopen();
  EXPECT_EQ(pages(), 1u);
  expectOrder(5);
}

TEST_F(SampleIndexes, WithTextsThatHaveNoKeyLetTheirTableBeRead) {
  Open("unicode-text.mdb", u"Table");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  const std::vector<std::uint8_t> before = *bytes_;
  EXPECT_THAT(Refusal({Value(), u"plain"}), HasSubstr("has an index that cannot hold this text"));
  const RowId first = ReadAll(Rows()).begin()->first;
  EXPECT_EQ(ErrorNumberOf([&] { Update(first, 0, std::int32_t{99}); }), code::kGeneric);
  EXPECT_EQ(ErrorNumberOf([&] { Rows().Delete(first); }), code::kGeneric);
  EXPECT_EQ(ErrorNumberOf([&] { Rows().DeleteAll(); }), code::kGeneric);
  EXPECT_EQ(ReadAll(Rows()).size(), 8u);
  EXPECT_FALSE(database_->Dirty());
  database_->Flush();
  EXPECT_TRUE(*bytes_ == before);
}

TEST_F(SampleIndexes, OfARelationshipMakeItsTablesReadOnly) {
  Open("unicode-text.mdb", u"MSysNavPaneGroups");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  EXPECT_THAT(Refusal(Row(Rows().Columns().size())), HasSubstr("relationship"));
  const RowId first = ReadAll(Rows()).begin()->first;
  EXPECT_EQ(ErrorNumberOf([&] { Rows().Delete(first); }), code::kGeneric);
  EXPECT_EQ(ErrorNumberOf([&] { Rows().DeleteAll(); }), code::kGeneric);
  EXPECT_EQ(ReadAll(Rows()).size(), 10u);
  EXPECT_FALSE(database_->Dirty());
}

}  // namespace
}  // namespace kestrelon::jet
