#include "tests/jet/samples/MdbTools.h"
#include "tests/jet/samples/PrintedCells.h"
#include "tests/jet/samples/Samples.h"

// Databases that Access wrote: read and compared with what other programs read in them.

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

std::unique_ptr<Database> OpenSample(const std::filesystem::path& path) {
  return Database::Open(OpenFile(path, OpenMode::kRead), path.u16string());
}

// Whether a row's home slot only points to it.
bool AnyRowMoved(Table& table) {
  for (Cursor cursor = table.Rows(); cursor.Next();) {
    if (FindRow(InternalOf(table), cursor.Row()).Moved()) return true;
  }
  return false;
}

// A row as it stands in the file, found with nothing of the engine: the slot of its page, the pointer where
// it moved, the null mask at its end and the starts of its variable columns before that.
class RowOnPage {
 public:
  RowOnPage(const std::vector<std::uint8_t>& file, RowId row) : file_(file) {
    std::size_t page = static_cast<std::size_t>(row) >> 8, slot = static_cast<std::size_t>(row) & 0xFF;
    if ((Slot(page, slot) & 0x4000) != 0) {
      const std::size_t pointer = 4096 * page + (Slot(page, slot) & 0x1FFF);
      slot = file_.at(pointer);
      page = Word(pointer + 1) | static_cast<std::size_t>(file_.at(pointer + 3)) << 16;
    }
    start_ = 4096 * page + (Slot(page, slot) & 0x1FFF);
    const std::size_t end = 4096 * page + (slot == 0 ? 4096 : Slot(page, slot - 1) & std::size_t{0x1FFF});
    columns_ = Word(start_);
    mask_ = end - (columns_ + 7) / 8;
  }
  bool Has(std::size_t column) const {
    return column < columns_ && (file_.at(mask_ + column / 8) >> column % 8 & 1) != 0;
  }
  Bytes Fixed(std::size_t offset, std::size_t size) const { return Part(2 + offset, 2 + offset + size); }
  Bytes Variable(std::size_t index) const {
    const std::size_t at = mask_ - 2 - 2 * (index + 1);
    return Part(Word(at), Word(at - 2));
  }

 private:
  std::size_t Word(std::size_t at) const {
    return file_.at(at) | static_cast<std::size_t>(file_.at(at + 1)) << 8;
  }
  std::size_t Slot(std::size_t page, std::size_t slot) const { return Word(4096 * page + 14 + 2 * slot); }
  Bytes Part(std::size_t from, std::size_t to) const {
    const auto row = file_.begin() + static_cast<std::ptrdiff_t>(start_);
    return {row + static_cast<std::ptrdiff_t>(from), row + static_cast<std::ptrdiff_t>(to)};
  }

  const std::vector<std::uint8_t>& file_;
  std::size_t start_ = 0, columns_ = 0, mask_ = 0;
};

class Sample : public testing::TestWithParam<std::filesystem::path> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Sample);

TEST_P(Sample, IsSound) { EXPECT_THAT(OpenSample(GetParam())->Check(), IsEmpty()); }

TEST_P(Sample, HasTheTablesThatTheMdbToolsFind) {
  if (!mdb_tools::Present()) GTEST_SKIP() << "the mdb-tools are not installed";
  const auto database = OpenSample(GetParam());
  const auto utf8 = [](const std::vector<std::u16string>& names) {
    std::vector<std::string> converted;
    for (const std::u16string& name : names) converted.push_back(ToUtf8(name));
    return converted;
  };
  EXPECT_THAT(utf8(database->TableNames()), UnorderedElementsAreArray(mdb_tools::TableNames(GetParam())));
  EXPECT_THAT(utf8(AllTableNames(*database)),
              UnorderedElementsAreArray(mdb_tools::AllTableNames(GetParam())));
}

TEST_P(Sample, HoldsInEveryCellWhatTheMdbToolsPrint) {
  if (!mdb_tools::Present()) GTEST_SKIP() << "the mdb-tools are not installed";
  const auto database = OpenSample(GetParam());
  for (const std::u16string& name : AllTableNames(*database)) {
    SCOPED_TRACE(ToUtf8(name));
    Table& table = database->OpenTable(name);
    auto [columns, theirs] = mdb_tools::ExportCells(GetParam(), ToUtf8(name));
    ASSERT_EQ(columns.size(), table.Columns().size());
    auto ours = PrintedRows(table, ReadAll(table), columns);
    if (AnyRowMoved(table)) {  // they give such a row where its bytes lie
      std::sort(ours.begin(), ours.end());
      std::sort(theirs.begin(), theirs.end());
    }
    EXPECT_EQ(ours, theirs);
  }
}

// Where the mdb-tools are no help: they print the empty text as they print null, binary values up to their
// first byte 0, and fixed binary values not at all.
TEST_P(Sample, HoldsTheNullsAndBinariesThatItsPagesHold) {
  const std::vector<std::uint8_t> bytes = *ReadBytes(GetParam());
  const auto database = OpenSample(GetParam());
  for (const std::u16string& name : AllTableNames(*database)) {
    Table& table = database->OpenTable(name);
    for (const auto& [id, values] : ReadAll(table)) {
      const RowOnPage row(bytes, id);
      for (std::size_t position = 0; position < values.size(); ++position) {
        const StoredColumn& column = InternalOf(table).stored[position];
        const Value& value = values[position];
        SCOPED_TRACE(ToUtf8(name + u"." + column.name) + ", row " + std::to_string(std::uint32_t(id)));
        const bool* flag = std::get_if<bool>(&value);
        EXPECT_EQ(row.Has(column.number), flag != nullptr ? *flag : !IsNull(value));
        if (IsNull(value) || !(column.Is(ColumnType::kBinary) || column.type == kFixedBinary)) continue;
        EXPECT_EQ(std::get<Bytes>(value), column.Fixed() ? row.Fixed(column.fixedOffset, column.length)
                                                         : row.Variable(column.variableIndex));
      }
    }
  }
}

TEST_P(Sample, KeepsItsRowsWhenPacked) {
  const auto database = OpenSample(GetParam());
  auto packed = std::make_shared<std::vector<std::uint8_t>>();
  database->CompactInto(*OpenMemoryFile(packed));

  const auto copy = OpenInMemory(packed);
  EXPECT_THAT(copy->Check(), IsEmpty());
  EXPECT_EQ(copy->TableNames(), database->TableNames());
  for (const std::u16string& name : database->TableNames()) {
    const auto rowsOf = [&name](Database& from) {
      std::vector<Row> rows;
      for (auto& [id, row] : ReadAll(from.OpenTable(name))) rows.push_back(std::move(row));
      std::sort(rows.begin(), rows.end());
      return rows;
    };
    EXPECT_TRUE(rowsOf(*database) == rowsOf(*copy)) << ToUtf8(name);
  }
}

INSTANTIATE_TEST_SUITE_P(OfAccess, Sample, testing::ValuesIn(Samples()), NameOfSample);

// What the samples hold, read off their bytes by hand: so much is known without another reader.
class SampleOfAccess : public testing::Test {
 protected:
  void Open(const char* name) {
    bytes_ = SampleInMemory(name);
    if (bytes_ != nullptr) database_ = OpenInMemory(bytes_);
  }
  std::vector<Row> RowsOf(std::u16string_view table) {
    std::vector<Row> rows;
    for (auto& [id, row] : ReadAll(database_->OpenTable(table))) rows.push_back(std::move(row));
    return rows;
  }

  ByteVector bytes_;
  std::unique_ptr<Database> database_;
};

TEST_F(SampleOfAccess, HasNumericsInFixedColumns) {
  Open("fixed-numeric.mdb");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  const auto numeric = [](std::uint8_t sign, std::uint8_t digit) {
    Bytes bytes(17);
    bytes[0] = sign;
    bytes[13] = digit;
    return bytes;
  };
  EXPECT_THAT(RowsOf(u"test"), ElementsAre(Row{u"some data", numeric(0, 1), numeric(0, 0), numeric(0, 0),
                                               numeric(0, 4), numeric(0x80, 1), numeric(0, 1)}));
}

TEST_F(SampleOfAccess, HasRowsOlderThanTheirTableAndRowsThatMoved) {
  Open("overflow-rows.mdb");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  const Value null;
  const auto text = [](const char16_t* characters) { return Value(std::u16string(characters)); };
  EXPECT_THAT(
      RowsOf(u"Table1"),
      ElementsAre(Row{text(u"row1col1"), null, null, null, null, null, null, null, null},
                  Row{text(u"row2col1"), text(u"row2col3"), null, null, null, null, null, null, null},
                  Row{null, text(u"row3col3"), null, null, null, null, null, text(u"row3col9"), null},
                  Row{text(u"row4col1"), text(u"row4col2"), null, null, null, null, null, null, null},
                  Row{null, text(u"row5col2"), null, null, null, null, null, null, null},
                  Row{null, text(u"row6col2"), text(u"row6col3"), null, null, null, null, null, null},
                  Row{text(u"row7col1"), null, null, null, null, text(u"row7col7"), null, null, null}));
  EXPECT_TRUE(AnyRowMoved(database_->OpenTable(u"Table1")));
}

TEST_F(SampleOfAccess, HasTextsCompressedAndPlain) {
  Open("unicode-text.mdb");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  const std::vector<Row> rows = RowsOf(u"Table");
  ASSERT_EQ(rows.size(), 8u);
  EXPECT_EQ(rows[0], (Row{std::int32_t{1}, u"only ascii chars"}));
  EXPECT_EQ(rows[1], (Row{std::int32_t{2}, u"ääkkösiä"}));
  EXPECT_EQ(rows[2], (Row{std::int32_t{3}, u"Мир"}));
  EXPECT_EQ(rows[4], (Row{std::int32_t{5}, u"漢字仮名交じり文"}));
  std::u16string all;
  for (char16_t c = 0x01; c <= 0xFF; ++c) all += c;
  EXPECT_EQ(rows[7], (Row{std::int32_t{8}, all}));
}

TEST_F(SampleOfAccess, HasLongValuesInChainsOfPages) {
  Open("long-values.mdb");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  const std::vector<Row> rows = RowsOf(u"MSP_PROJECTS");
  ASSERT_EQ(rows.size(), 1u);
  ASSERT_EQ(rows[0].size(), 74u);
  const Table& table = database_->OpenTable(u"MSP_PROJECTS");
  std::size_t ole = 0;
  for (std::size_t position = 0; position < rows[0].size(); ++position) {
    if (table.Columns()[position].type != ColumnType::kOle) continue;
    ++ole;
    EXPECT_EQ(std::get<Bytes>(rows[0][position]).size(), 22970u);
  }
  EXPECT_EQ(ole, 1u);
}

TEST_F(SampleOfAccess, HasKeysInDescendingOrder) {
  Open("two-level-index.mdb");
  if (database_ == nullptr) GTEST_SKIP() << "the sample is not there";
  Table& table = database_->OpenTable(u"Table1");
  EXPECT_EQ(table.RowCount(), 512u);
  const RealIndex& index = InternalOf(table).def.indexes.at(0);
  ASSERT_EQ(index.columns.size(), 1u);
  EXPECT_FALSE(index.columns[0].ascending);
  std::vector<Value> keys;
  IndexWalk walk;
  walk.entry = [&](std::span<const std::uint8_t>, RowId row) {
    Cursor cursor = table.Rows();
    cursor.MoveTo(row);
    cursor.Read(0, keys.emplace_back());
  };
  WalkIndex(*InternalOf(table).pager, InternalOf(table).def.page, index, walk);
  EXPECT_EQ(keys.size(), 512u);
  EXPECT_TRUE(std::is_sorted(keys.rbegin(), keys.rend()));  // as for a Value, null is least
  EXPECT_EQ(keys.front(), Value(std::int32_t{4813}));
  EXPECT_EQ(keys[510], Value());
  EXPECT_EQ(keys[511], Value());
}

}  // namespace
}  // namespace kestrelon::jet
