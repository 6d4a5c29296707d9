#include <random>
#include <string>
#include <utility>

#include "jet/base/Bytes.h"
#include "tests/jet/SimulatedDisk.h"

// What a stop of the program, or of the machine, leaves of a flush. The writes are recorded once; from the
// record the file is put together as it may stand after a stop at each of them.

namespace kestrelon::jet {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

// Counts what the stops left, and finds fault with everything but the old content, the new one and the
// refusal.
struct Outcomes {
  int old = 0, fresh = 0, refused = 0;

  void Look(const std::vector<std::uint8_t>& file, const Content& before, const Content& after,
            const std::string& where) {
    std::unique_ptr<Database> database;
    const auto bytes = std::make_shared<std::vector<std::uint8_t>>(file);
    try {
      database = OpenInMemory(bytes);
    } catch (const Error& error) {
      EXPECT_THAT(error.what(), HasSubstr("The database 'memory' is damaged")) << where;
      ++refused;
      return;
    }
    try {
      const Content content = ContentOf(*database);
      EXPECT_TRUE(content == before || content == after) << where;
      ++(content == after ? fresh : old);
      EXPECT_THAT(database->Check(), IsEmpty()) << where;
    } catch (const Error& error) {
      ADD_FAILURE() << "misread: " << error.what() << " " << where;
    }
  }
};

class Stops {
 public:
  explicit Stops(const ByteVector& before) : disk_({*before}), contents_{ContentOf(*OpenInMemory(before))} {}

  // Makes a change and writes it; to be called once for each flush.
  template <class Change>
  void Record(Change&& change) {
    if (!database_) database_ = Database::Open(disk_.Open(0), u"memory");
    change(*database_);
    database_->Flush();
    flushes_.push_back(disk_.Steps());
    contents_.push_back(ContentOf(*database_));
  }

  std::size_t Pages() const { return disk_.Current()[0].size() / kPageSize; }

  // Tries the stops. `every`: only each so many-th call is stopped at.
  Outcomes Try(std::size_t every = 1) {
    Outcomes outcomes;
    std::size_t flush = 0;
    for (std::size_t at = 0; at <= disk_.Steps(); ++at) {
      if (flush + 1 < flushes_.size() && at > flushes_[flush]) ++flush;
      if (at % every != 0 && at != disk_.Steps()) continue;
      int number = 0;
      for (const SimulatedDisk::Image& image : disk_.Stops(at, 4, random_)) {
        outcomes.Look(image[0], contents_[flush], contents_[flush + 1],
                      "at call " + std::to_string(at) + ", image " + std::to_string(number++));
      }
    }
    return outcomes;
  }

 private:
  SimulatedDisk disk_;
  std::vector<Content> contents_;
  std::vector<std::size_t> flushes_;  // number of calls after each
  std::unique_ptr<Database> database_;
  std::mt19937 random_{20261121};
};

Outcomes StopEverywhere(const ByteVector& before, const auto& change) {
  Stops stops(before);
  stops.Record(change);
  const Outcomes outcomes = stops.Try();
  EXPECT_GT(outcomes.old, 0);
  EXPECT_GT(outcomes.fresh, 0);
  EXPECT_GT(outcomes.refused, 0);
  return outcomes;
}

TEST(StoppedFlush, OfInsertedRowsLeavesTheOldContentTheNewOneOrARefusal) {
  StopEverywhere(FileWithRows(40, 600), [](Database& database) {
    InsertRows(database.OpenTable(u"FTable"), 100, 60);
    InsertRows(database.OpenTable(u"FBackup"), 0, 3);
  });
}

TEST(StoppedFlush, OfShortMemosThatShareAPageLeavesTheOldContentTheNewOneOrARefusal) {
  Fixture fixture;
  for (int i = 0; i < 100; ++i)
    fixture.Insert(ItemRow(u"", u"", u"", u"", Repeat(u"文", 60), u"", Repeat(u"short ", 100)));
  fixture.database->Flush();
  StopEverywhere(fixture.bytes, [](Database& database) {
    UpdateEvery(database.OpenTable(u"FTable"), 3, 6, Repeat(u"longer ", 130));
  });
}

TEST(StoppedFlush, OfLongMemosLeavesTheOldContentTheNewOneOrARefusal) {
  StopEverywhere(FileWithRows(60, 600), [](Database& database) {
    Table& items = database.OpenTable(u"FTable");
    UpdateEvery(items, 10, 6, Repeat(u"chain of pages ", 12000));
    UpdateEvery(items, 15, 4, Repeat(u"文件", 3000));
  });
}

TEST(StoppedFlush, OfDeletedRowsLeavesTheOldContentTheNewOneOrARefusal) {
  StopEverywhere(FileWithRows(120, 600), [](Database& database) {
    DeleteEvery(database.OpenTable(u"FTable"), 3);
    DeleteEvery(database.OpenTable(u"TreeviewTable"), 2);
  });
}

TEST(StoppedFlush, OfAReplacedTableLeavesTheOldContentTheNewOneOrARefusal) {
  StopEverywhere(FileWithRows(60, 600), [](Database& database) {
    Table& items = database.OpenTable(u"FTable");
    items.DeleteAll();
    InsertRows(items, 200, 80);
  });
}

TEST(StoppedFlush, OfCategoriesAndTheirIndexLeavesTheOldContentTheNewOneOrARefusal) {
  StopEverywhere(FileWithRows(5, 600), [](Database& database) {
    Table& tree = database.OpenTable(u"TreeviewTable");
    for (int i = 0; i < 700; ++i)
      tree.Insert(Row{Value(), u"0_", u"K" + FromUtf8(std::to_string(i)), u"text"});
    DeleteEvery(tree, 5);
    UpdateEvery(tree, 7, 3, std::u16string(u"another text"));
  });
}

TEST(StoppedFlush, OfEverythingAtOnceLeavesTheOldContentTheNewOneOrARefusal) {
  StopEverywhere(FileWithRows(100, 600), [](Database& database) {
    Table &items = database.OpenTable(u"FTable"), &backup = database.OpenTable(u"FBackup");
    for (const auto& [id, row] : ReadAll(items)) backup.Insert(row);
    DeleteEvery(items, 4);
    UpdateEvery(items, 5, 6, Repeat(u"new", 700));
    InsertRows(items, 300, 20);
    database.OpenTable(u"TreeviewTable").DeleteAll();
  });
}

TEST(StoppedFlush, OfOneOfManyImportsLeavesTheOneBeforeItOrItselfOrARefusal) {
  Stops stops(CreateInMemory(ProgramTables()));
  for (int import = 0; import < 4; ++import) {
    stops.Record(
        [import](Database& database) { InsertRows(database.OpenTable(u"FTable"), 800 * import, 800); });
  }
  EXPECT_GT(stops.Pages(), 512u);  // the map of free pages had to grow on the way
  const Outcomes outcomes = stops.Try(8);
  EXPECT_GT(outcomes.old, 0);
  EXPECT_GT(outcomes.fresh, 0);
  EXPECT_GT(outcomes.refused, 0);
}

}  // namespace
}  // namespace kestrelon::jet
