#include "tests/jet/storage/MdbTools.h"

#include "tests/jet/storage/Support.h"

namespace kestrelon::jet {
namespace {

using testing::HasSubstr;

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
    const auto exported = mdb_tools::Export(path, "FTable");
    ASSERT_EQ(exported.size(), rows.size());
    const std::vector<NewColumn> columns = ProgramTables()[0].columns;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      for (std::size_t column = 0; column < columns.size(); ++column) {
        const Value& value = rows[i][column];
        EXPECT_EQ(exported[i].at(ToUtf8(columns[column].name)), IsNull(value) ? "" : ToUtf8(std::get<std::u16string>(value)))
            << "row " << i << ", column " << column;
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
