#include "tests/jet/storage/MdbTools.h"
#include "tests/jet/storage/Support.h"

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

}  // namespace
}  // namespace kestrelon::jet
