#include "tests/jet/storage/Support.h"

namespace kestrelon::jet {
namespace {

std::vector<Row> AllRows(const ByteVector& bytes) {
  std::vector<Row> rows;
  for (auto& [id, row] : ReadAll(OpenInMemory(bytes)->OpenTable(u"FTable"))) rows.push_back(std::move(row));
  return rows;
}

// The rows by their FileIndex, for tables whose order changes.
using RowsByIndex = std::map<std::u16string, Row>;
std::u16string IndexOf(const Row& row) { return std::get<std::u16string>(row[1]); }
RowsByIndex ByIndex(const std::vector<Row>& rows) {
  RowsByIndex byIndex;
  for (const Row& row : rows) byIndex[IndexOf(row)] = row;
  EXPECT_EQ(byIndex.size(), rows.size());
  return byIndex;
}

// Makes changes to copies of `before`, letting the flush fail at its first, second, ... write until it
// succeeds. Calls `stopped(bytes)` with what each failure leaves, and returns the finished file.
ByteVector FailAtEveryWrite(const ByteVector& before, std::size_t tornBytes, const auto& change,
                            const auto& stopped) {
  for (std::size_t writes = 0;; ++writes) {
    const ByteVector bytes = CopyOf(before);
    const auto database =
        Database::Open(OpenFailingFile(OpenMemoryFile(bytes), writes, tornBytes), u"failing");
    change(*database);
    try {
      database->Flush();
      return bytes;
    } catch (const Error&) {
      EXPECT_TRUE(database->Dirty());
      stopped(bytes, writes);
    }
  }
}

ByteVector FileWithRows(int first, int count) {
  Fixture fixture;
  for (int i = first; i < first + count; ++i) fixture.Insert(VariedRow(i));
  for (int i = 0; i < 500; ++i) fixture.Tree().Insert(Row(4));
  fixture.database->Flush();
  return fixture.bytes;
}

TEST(Flush, ReplacesATablesRowsWholeOrNotAtAll) {
  const ByteVector before = FileWithRows(0, 60);
  const std::vector<Row> oldRows = AllRows(before);
  std::vector<Row> newRows;
  for (int i = 100; i < 180; ++i) newRows.push_back(VariedRow(i));

  const ByteVector after = FailAtEveryWrite(
      before, 0,
      [&](Database& database) {
        Table& items = database.OpenTable(u"FTable");
        items.DeleteAll();
        for (const Row& row : newRows) items.Insert(row);
      },
      [&](const ByteVector& bytes, std::size_t writes) {
        const std::vector<Row> rows = AllRows(bytes);
        EXPECT_TRUE(rows == oldRows || rows == newRows) << "stopped at write " << writes;
      });

  EXPECT_TRUE(AllRows(after) == newRows);
}

// A memo that shares its page with others and is replaced may be gone before its row says so: then reading is
// refused.
TEST(Flush, LeavesEveryRowInItsOldOrItsNewStateOrRefusedWhereItStops) {
  const ByteVector before = FileWithRows(0, 100);
  const RowsByIndex oldRows = ByIndex(AllRows(before));
  RowsByIndex newRows = oldRows;
  for (int i = 0; i < 100; i += 5)
    newRows.at(IndexOf(VariedRow(i)))[6] = Repeat(u"new", 100 * static_cast<std::size_t>(i));
  newRows[IndexOf(VariedRow(1000))] = VariedRow(1000);

  const ByteVector after = FailAtEveryWrite(
      before, 0,
      [&](Database& database) {
        Table& items = database.OpenTable(u"FTable");
        for (const auto& [id, row] : ReadAll(items)) {
          const std::pair<std::size_t, Value> change{6, newRows.at(IndexOf(row))[6]};
          if (change.second != row[6]) items.Update(id, {&change, 1});
        }
        items.Insert(VariedRow(1000));
        database.OpenTable(u"TreeviewTable").Insert(Row(4));
      },
      [&](const ByteVector& bytes, std::size_t writes) {
        RowsByIndex rows;
        try {
          rows = ByIndex(AllRows(bytes));
        } catch (const CorruptFile&) {
          EXPECT_THAT(OpenInMemory(bytes)->Check(), testing::Not(testing::IsEmpty()));
          return;
        }
        for (const auto& [index, row] : rows) {
          EXPECT_TRUE(row == newRows.at(index) || (oldRows.contains(index) && row == oldRows.at(index)))
              << "row " << ToUtf8(index) << ", stopped at write " << writes;
        }
        EXPECT_GE(rows.size(), oldRows.size());
      });

  EXPECT_TRUE(ByIndex(AllRows(after)) == newRows);
  EXPECT_THAT(OpenInMemory(after)->Check(), testing::IsEmpty());
}

TEST(Flush, LeavesAFileThatIsReadOrRefusedWhereAWriteIsTorn) {
  const ByteVector before = FileWithRows(0, 100);
  for (const std::size_t torn : {1, 20, 512, 4000, 5000}) {
    FailAtEveryWrite(
        before, torn,
        [&](Database& database) {
          Table& items = database.OpenTable(u"FTable");
          for (const auto& [id, row] : ReadAll(items)) {
            if (static_cast<std::uint32_t>(id) % 3 == 0) items.Delete(id);
          }
          for (int i = 0; i < 30; ++i) items.Insert(VariedRow(i + 500));
        },
        [](const ByteVector& bytes, std::size_t) {
          try {
            AllRows(bytes);
            OpenInMemory(bytes)->Check();
          } catch (const CorruptFile&) {
          }
        });
  }
}

TEST(Flush, CanBeTriedAgainAfterAFailure) {
  Fixture fixture;
  for (int i = 0; i < 100; ++i) fixture.Insert(VariedRow(i));
  auto file = fixture.database->DetachFile();
  fixture.database->AttachFile(OpenFailingFile(std::move(file), 3));
  EXPECT_THROW(fixture.database->Flush(), Error);
  fixture.database->AttachFile(OpenMemoryFile(fixture.bytes));
  fixture.FlushAndCompare();
}

TEST(Flush, WritesNothingWhenNothingChanged) {
  const ByteVector bytes = FileWithRows(0, 10);
  const auto database = Database::Open(OpenFailingFile(OpenMemoryFile(bytes), 0), u"failing");
  ReadAll(database->OpenTable(u"FTable"));
  EXPECT_NO_THROW(database->Flush());
}

}  // namespace
}  // namespace kestrelon::jet
