#include "tests/jet/storage/Support.h"

namespace kestrelon::jet {
namespace {

std::vector<Row> AllRows(const ByteVector& bytes) {
  std::vector<Row> rows;
  for (auto& [id, row] : ReadAll(OpenInMemory(bytes)->OpenTable(u"FTable"))) rows.push_back(std::move(row));
  return rows;
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
  const std::vector<Row> oldRows = AllRows(before);
  std::vector<Row> newRows = oldRows;
  for (std::size_t i = 0; i < newRows.size(); i += 5) newRows[i][6] = Repeat(u"new", 100 * i);
  newRows.push_back(VariedRow(1000));

  const ByteVector after = FailAtEveryWrite(
      before, 0,
      [&](Database& database) {
        Table& items = database.OpenTable(u"FTable");
        std::size_t i = 0;
        for (const auto& [id, row] : ReadAll(items)) {
          const std::pair<std::size_t, Value> change{6, newRows[i][6]};
          if (i++ % 5 == 0) items.Update(id, {&change, 1});
        }
        items.Insert(newRows.back());
        database.OpenTable(u"TreeviewTable").Insert(Row(4));
      },
      [&](const ByteVector& bytes, std::size_t writes) {
        std::vector<Row> rows;
        try {
          rows = AllRows(bytes);
        } catch (const CorruptFile&) {
          EXPECT_THAT(OpenInMemory(bytes)->Check(), testing::Not(testing::IsEmpty()));
          return;
        }
        for (std::size_t i = 0; i < rows.size(); ++i) {
          EXPECT_TRUE(rows[i] == newRows[i] || (i < oldRows.size() && rows[i] == oldRows[i]))
              << "row " << i << ", stopped at write " << writes;
        }
        EXPECT_GE(rows.size(), oldRows.size());
      });

  EXPECT_TRUE(AllRows(after) == newRows);
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
