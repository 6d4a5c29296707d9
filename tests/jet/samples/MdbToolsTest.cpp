#include <limits>

#include "jet/database/DatabaseInternal.h"
#include "tests/jet/Support.h"
#include "tests/jet/samples/MdbTools.h"
#include "tests/jet/samples/PrintedCells.h"

namespace kestrelon::jet {
namespace {

using testing::HasSubstr;

// A text as the mdb-tools give it: they know no characters beyond the first plane and print "?" for each half
// of a pair.
std::string AsExported(const Value& value) {
  if (IsNull(value)) return "";
  std::u16string text = std::get<std::u16string>(value);
  for (char16_t& unit : text) {
    if (unit >= 0xD800 && unit <= 0xDFFF) unit = u'?';
  }
  return ToUtf8(text);
}

// Files that we write, read by the mdb-tools.
class MdbTools : public testing::Test {
 protected:
  void SetUp() override {
    if (!mdb_tools::Present()) GTEST_SKIP() << "the mdb-tools are not installed";
    CreateDatabase(*OpenFile(path_, OpenMode::kCreate), ProgramTables(), 46347.25);
  }
  std::unique_ptr<Database> Open() { return Database::Open(OpenFile(path_, OpenMode::kReadWrite), u"file"); }
  void ExpectExport(const std::filesystem::path& path, const std::vector<Row>& rows) {
    EXPECT_EQ(mdb_tools::Count(path, "FTable"), static_cast<int>(rows.size()));
    // They give a moved row where its bytes lie, so that rows are told by their FileIndex here.
    std::map<std::string, std::map<std::string, std::string>> exported;
    for (const auto& row : mdb_tools::Export(path, "FTable")) exported[row.at("FileIndex")] = row;
    ASSERT_EQ(exported.size(), rows.size());
    const std::vector<NewColumn> columns = ProgramTables()[0].columns;
    for (const Row& row : rows) {
      for (std::size_t column = 0; column < columns.size(); ++column) {
        EXPECT_EQ(exported[AsExported(row[1])][ToUtf8(columns[column].name)], AsExported(row[column]))
            << "row " << AsExported(row[1]) << ", column " << column;
      }
    }
  }

  ScopedFolder folder_;
  std::filesystem::path path_ = folder_ / "ours.mdb";
};

TEST_F(MdbTools, SeeTheTablesAndColumnsThatWeMade) {
  EXPECT_THAT(mdb_tools::TableNames(path_), testing::ElementsAre("FTable", "FBackup", "TreeviewTable"));
  const std::string schema = mdb_tools::Schema(path_);
  EXPECT_THAT(schema, HasSubstr("[TreeviewNode]\t\t\tText (50)"));
  EXPECT_THAT(schema, HasSubstr("[Filename]\t\t\tText (255)"));
  EXPECT_THAT(schema, HasSubstr("[LocalFile]\t\t\tMemo/Hyperlink"));
  EXPECT_THAT(schema, HasSubstr("[i]\t\t\tLong Integer"));
}

TEST_F(MdbTools, ReadTheRowsThatWeWrote) {
  for (const int count : {0, 1, 10, 1200}) {
    std::vector<Row> rows;
    {
      const auto database = Open();
      Table& items = database->OpenTable(u"FTable");
      items.DeleteAll();
      for (int i = 0; i < count; ++i) items.Insert(rows.emplace_back(VariedRow(i)));
      database->Flush();
    }
    ExpectExport(path_, rows);
  }
}

TEST_F(MdbTools, ReadRowsThatWeChangedAndPacked) {
  std::vector<Row> rows;
  {
    const auto database = Open();
    Table& items = database->OpenTable(u"FTable");
    std::vector<RowId> ids;
    for (int i = 0; i < 400; ++i) {
      rows.push_back(VariedRow(i));
      ids.push_back(items.Insert(rows.back()));
    }
    for (std::size_t i = 0; i < ids.size(); i += 3) {
      rows[i][2] = Repeat(u"文", 255);
      rows[i][6] = Repeat(u"c", 40 * i);
      const std::pair<std::size_t, Value> changes[] = {{2, rows[i][2]}, {6, rows[i][6]}};
      items.Update(ids[i], changes);
    }
    for (std::size_t i = ids.size(); i-- > 0;) {
      if (i % 5 != 0) continue;
      items.Delete(ids[i]);
      rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(i));
    }
    database->Flush();
    database->CompactInto(*OpenFile(folder_ / "packed.mdb", OpenMode::kCreate));
  }
  ExpectExport(path_, rows);
  ExpectExport(folder_ / "packed.mdb", rows);
}

// Each type once as its largest, its least, its usual value and null.
TEST_F(MdbTools, PrintEveryTypeAsWeStoreIt) {
  using enum ColumnType;
  const std::filesystem::path path = folder_ / "types.mdb";
  CreateDatabase(*OpenFile(path, OpenMode::kCreate),
                 std::vector<NewTable>{{u"All",
                                        {{u"boolean", kBoolean},
                                         {u"byte", kByte},
                                         {u"integer", kInteger},
                                         {u"long", kLong},
                                         {u"currency", kCurrency},
                                         {u"single", kSingle},
                                         {u"double", kDouble},
                                         {u"date", kDate},
                                         {u"binary", kBinary},
                                         {u"text", kText, 20},
                                         {u"ole", kOle},
                                         {u"memo", kMemo},
                                         {u"guid", kGuid},
                                         {u"numeric", kNumeric}},
                                        u""}},
                 46347.25);
  const auto numeric = [](bool negative, std::uint8_t low, std::uint8_t high) {
    Bytes bytes(17, high);
    bytes[0] = negative ? 0x80 : 0;
    bytes[13] = low;
    return bytes;
  };
  const Bytes guid = {0xD4, 0x78, 0x81, 0xBF, 0x98, 0xEB, 0xA7, 0x43,
                      0x9E, 0xDA, 0x6D, 0x21, 0xC3, 0x26, 0xC5, 0xC8};
  const std::vector<Row> rows = {
      {true, std::int32_t{255}, std::int32_t{-32768}, std::int32_t{-2147483647 - 1},
       std::numeric_limits<std::int64_t>::min(), 0.1, -1.0 / 3, 46347.999, Bytes{1, 0xFF}, u"NULL",
       Bytes(23000, 7), Repeat(u"memo, \"quoted\"\r\n", 9000), guid, numeric(true, 7, 0)},
      {false, std::int32_t{0}, std::int32_t{32767}, std::int32_t{2147483647}, std::int64_t{-5}, -3.4e38,
       1.7976931348623157e308, 0.0, Bytes{0x80}, u"文件", Bytes{0}, u"m", guid, numeric(false, 0, 0)},
      {true, std::int32_t{7}, std::int32_t{-1}, std::int32_t{0}, std::int64_t{123456}, 1e10, 5e-324, 1e5,
       Bytes(255, 0x41), u"\t", Bytes{}, u"é", guid, numeric(false, 0xFF, 0x7F)},
      Row(14)};
  {
    const auto database = Database::Open(OpenFile(path, OpenMode::kReadWrite), u"file");
    for (const Row& row : rows) database->OpenTable(u"All").Insert(row);
    // A scale, which CreateDatabase gives no column: 18 digits, 4 of them behind the point.
    auto& open = static_cast<DatabaseImpl&>(*database);
    TableDef def = InternalOf(database->OpenTable(u"All")).def;
    def.columns[13].collation = 18 | 4 << 8;
    WriteTableDef(open.Pages(), def);
    database->Flush();
  }
  const auto database = Database::Open(OpenFile(path, OpenMode::kRead), u"file");
  const auto printed = mdb_tools::ExportCells(path, "All");
  Table& all = database->OpenTable(u"All");
  EXPECT_EQ(PrintedRows(all, ReadAll(all), printed.columns), printed.rows);
  ASSERT_EQ(printed.rows.size(), 4u);
  EXPECT_EQ(printed.rows[0][3], "-2147483648");
  EXPECT_EQ(printed.rows[0][4], "-922337203685477.5808");
  EXPECT_EQ(printed.rows[0][7], "2026-11-21 23:58:34");
  EXPECT_EQ(printed.rows[0][9], "NULL");
  EXPECT_EQ(printed.rows[0][13], "-0.0007");
  EXPECT_EQ(printed.rows[1][4], "-0.0005");
  EXPECT_EQ(printed.rows[3][9], std::nullopt);
}

}  // namespace
}  // namespace kestrelon::jet
