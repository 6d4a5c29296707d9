#include <algorithm>
#include <string>
#include <utility>

#include "jet/base/Bytes.h"
#include "jet/page/RedoLog.h"
#include "tests/jet/SimulatedDisk.h"

// What a stop of the program, or of the machine, leaves of a write that goes through a redo log, and what
// recovery makes of it: the state of the last write or of the one under way, with the note of the same.

namespace kestrelon::jet {
namespace {

using testing::IsEmpty;

enum : std::size_t { kDatabase, kFirstLog, kSecondLog };
using Image = SimulatedDisk::Image;
using Note = RedoLog::Note;

ByteVector Shared(const std::vector<std::uint8_t>& bytes) {
  return std::make_shared<std::vector<std::uint8_t>>(bytes);
}

Note NoteOf(std::size_t number) { return Note(number % 7 * 300 + 1, static_cast<std::uint8_t>(number)); }

std::optional<Note> RecoverFiles(Image& image) {
  const ByteVector database = Shared(image[kDatabase]);
  const auto first = OpenMemoryFile(Shared(image[kFirstLog]));
  const auto second = OpenMemoryFile(Shared(image[kSecondLog]));
  const std::optional<Note> note =
      Recover(first.get(), second.get(), [&] { return OpenMemoryFile(database); });
  image[kDatabase] = *database;
  return note;
}

// Recovery that is itself stopped, at its first call, its second, ... or not at all.
void RecoverInPart(Image& image, std::size_t calls) {
  const ByteVector database = Shared(image[kDatabase]);
  const auto first = OpenMemoryFile(Shared(image[kFirstLog]));
  const auto second = OpenMemoryFile(Shared(image[kSecondLog]));
  try {
    Recover(first.get(), second.get(),
            [&] { return OpenFailingFile(OpenMemoryFile(database), calls, 1 + calls * 700); });
  } catch (const Error&) {
  }
  image[kDatabase] = *database;
}

// A process that works on the files of a disk through a log, and what each of its writes led to.
class LoggedWork {
 public:
  explicit LoggedWork(Image image, std::size_t number = 0)
      : disk(std::move(image)),
        log(std::make_shared<RedoLog>([this](std::size_t file) { return disk.Open(kFirstLog + file); })),
        database(Database::Open(disk.Open(kDatabase), u"memory")) {
    database->SetLog(log);
    states.push_back({0, ContentOf(*database), number});
  }

  template <class Change>
  void Record(Change&& change) {
    change(*database);
    const std::size_t number = states.back().number + 1;
    log->SetNote(NoteOf(number));
    database->Flush();
    states.push_back({disk.Steps(), ContentOf(*database), number});
  }

  struct State {
    std::size_t steps;  // calls that led to it
    Content content;
    std::size_t number;  // of its note
  };
  SimulatedDisk disk;
  std::shared_ptr<RedoLog> log;
  std::unique_ptr<Database> database;
  std::vector<State> states;

  // The state of the last write before the call `at`.
  std::size_t StateAt(std::size_t at) const {
    std::size_t state = 0;
    while (state + 1 < states.size() && states[state + 1].steps <= at) ++state;
    return state;
  }

  // Recovers an image of a stop before the call `at`, and looks at it. The state that it is in.
  std::size_t Look(Image& image, std::size_t at, std::mt19937& random, const std::string& where) const {
    RecoverInPart(image, random() % 12);
    const std::optional<Note> note = RecoverFiles(image);
    const std::size_t old = StateAt(at), next = std::min(old + 1, states.size() - 1);
    try {
      const auto opened = OpenInMemory(Shared(image[kDatabase]));
      EXPECT_THAT(opened->Check(), IsEmpty()) << where;
      const Content content = ContentOf(*opened);
      const bool isOld = content == states[old].content;
      EXPECT_TRUE(isOld || content == states[next].content) << where;
      // Before the first record there is no note.
      const std::optional<Note> oldNote = states[old].number == 0
                                              ? (note ? std::optional(Note()) : std::nullopt)
                                              : NoteOf(states[old].number);
      if (isOld && !(content == states[next].content)) {
        EXPECT_TRUE(note == oldNote) << where;
        return old;
      }
      // Where only the note changed the content does not tell the two.
      EXPECT_TRUE(note == NoteOf(states[next].number) || (isOld && note == oldNote)) << where;
      return note == NoteOf(states[next].number) ? next : old;
    } catch (const Error& error) {
      ADD_FAILURE() << error.what() << " " << where;
      return old;
    }
  }
};

Image NewImage(const ByteVector& database) { return {*database, {}, {}}; }

struct Outcomes {
  std::size_t old = 0, fresh = 0;
};

// Stops at every so many-th call.
Outcomes StopEverywhere(LoggedWork& work, std::size_t every = 1) {
  Outcomes outcomes;
  std::mt19937 random(20261122);
  for (std::size_t at = 0; at <= work.disk.Steps() && !testing::Test::HasFailure(); ++at) {
    if (at % every != 0 && at != work.disk.Steps()) continue;
    int number = 0;
    for (Image& image : work.disk.Stops(at, 4, random)) {
      const std::size_t state = work.Look(
          image, at, random, "at call " + std::to_string(at) + ", image " + std::to_string(number++));
      ++(state == work.StateAt(at) && at != work.disk.Steps() ? outcomes.old : outcomes.fresh);
    }
  }
  EXPECT_GT(outcomes.old, 0u);
  EXPECT_GT(outcomes.fresh, 0u);
  return outcomes;
}

TEST(StoppedLog, OfOneWriteLeavesTheOldContentOrTheNew) {
  LoggedWork work(NewImage(FileWithRows(40, 100)));
  work.Record([](Database& database) {
    InsertRows(database.OpenTable(u"FTable"), 100, 20);
    DeleteEvery(database.OpenTable(u"TreeviewTable"), 2);
    UpdateEvery(database.OpenTable(u"FTable"), 5, 6, Repeat(u"new", 700));
  });
  StopEverywhere(work);
}

TEST(StoppedLog, OfManyWritesThatTakePagesFreedBeforeLeavesOneOrTheNext) {
  LoggedWork work(NewImage(FileWithRows(40, 100)));
  for (int i = 0; i < 6; ++i) {
    work.Record([i](Database& database) {
      Table& items = database.OpenTable(u"FTable");
      if (i % 2 == 0) items.DeleteAll();
      InsertRows(items, 100 * i, 25);
      UpdateEvery(items, 4, 6, Repeat(u"memo", 100 + static_cast<std::size_t>(i) * 800));
    });
  }
  StopEverywhere(work);
}

TEST(StoppedLog, OfSmallWritesAndNotesAloneLeavesOneOrTheNext) {
  LoggedWork work(NewImage(FileWithRows(20, 100)));
  for (int i = 0; i < 8; ++i) {
    work.Record([i](Database& database) {
      if (i % 3 != 1) database.OpenTable(u"FTable").Insert(VariedRow(500 + i));
    });
  }
  StopEverywhere(work);
}

TEST(StoppedLog, OfGrowthPastTheMapOfFreePagesLeavesNoPageBehind) {
  LoggedWork work(NewImage(CreateInMemory(ProgramTables())));
  for (int import = 0; import < 4; ++import) {
    work.Record(
        [import](Database& database) { InsertRows(database.OpenTable(u"FTable"), 800 * import, 800); });
  }
  EXPECT_GT(work.disk.Current()[kDatabase].size() / kPageSize, 512u);
  StopEverywhere(work, 7);
}

TEST(StoppedLog, OfGrowthPastTheMapRightAfterACheckpointLeavesNoPageBehind) {
  LoggedWork work(NewImage(CreateInMemory(ProgramTables())));
  work.Record([](Database& database) { InsertRows(database.OpenTable(u"FTable"), 0, 1500); });
  LoggedWork other(work.disk.Current(), 1);
  other.log->SetNote(NoteOf(1));
  other.log->Checkpoint();
  other.states[0].steps = other.disk.Steps();
  const std::size_t checkpoint = other.disk.Steps();
  other.Record([](Database& database) { InsertRows(database.OpenTable(u"FTable"), 1500, 1700); });
  EXPECT_GT(other.disk.Current()[kDatabase].size() / kPageSize, 512u);
  std::mt19937 random(1);
  for (std::size_t at = checkpoint; at <= other.disk.Steps(); at += 9) {
    for (Image& image : other.disk.Stops(at, 2, random)) other.Look(image, at, random, std::to_string(at));
    if (HasFailure()) break;
  }
}

TEST(StoppedLog, OfRandomWorkThatGoesOnAfterEachStop) {
  std::mt19937 random(7);
  Image image = NewImage(FileWithRows(10, 100));
  std::size_t number = 0;
  for (int round = 0; round < 150 && !HasFailure(); ++round) {
    LoggedWork work(image, number);
    for (unsigned write = 0; write < 1 + random() % 4; ++write) {
      work.Record([&](Database& database) {
        Table &items = database.OpenTable(u"FTable"), &tree = database.OpenTable(u"TreeviewTable");
        const auto some = [&random] { return 1 + static_cast<int>(random() % 20); };
        switch (random() % 7) {
          case 0: items.DeleteAll(); break;
          case 1: DeleteEvery(items, 1 + some() / 4); break;
          case 2: UpdateEvery(items, some(), 6, Repeat(u"memo ", random() % 9000)); break;
          case 3: tree.Insert(Row{Value(), u"0_", u"K", u"text"}); break;
          case 4: DeleteEvery(tree, some()); break;
          case 5: break;
          default: InsertRows(items, some() * 100, some());
        }
      });
    }
    // The last write is the likeliest to be cut off.
    const std::size_t at = random() % (work.disk.Steps() + 1);
    std::vector<Image> stops = work.disk.Stops(at, 4, random);
    image = stops[random() % stops.size()];
    number = work.states[work.Look(image, at, random, "round " + std::to_string(round))].number;
  }
  EXPECT_GT(number, 100u);
}

TEST(StoppedLog, OfAFileThatTookThePlaceOfAnotherLeavesItAlone) {
  LoggedWork work(NewImage(FileWithRows(40, 100)));
  for (int i = 0; i < 3; ++i)
    work.Record([i](Database& database) {
      UpdateEvery(database.OpenTable(u"FTable"), 2, 2, FromUtf8(std::to_string(i)));
    });
  work.log->Checkpoint();
  Image image = work.disk.Current();
  for (const int rows : {3, 500}) {
    image[kDatabase] = *FileWithRows(rows, 100);
    Image recovered = image;
    EXPECT_EQ(RecoverFiles(recovered), NoteOf(3));
    EXPECT_TRUE(recovered == image);
    // The log goes on with it.
    LoggedWork next(image, 3);
    next.Record([](Database& database) { database.OpenTable(u"FTable").DeleteAll(); });
    next.Record([](Database& database) { InsertRows(database.OpenTable(u"FTable"), 0, 9); });
    std::mt19937 random(2);
    for (std::size_t at = 0; at <= next.disk.Steps() && !HasFailure(); ++at) {
      for (Image& stop : next.disk.Stops(at, 2, random)) next.Look(stop, at, random, std::to_string(at));
    }
  }
}

TEST(StoppedLog, LeavesAFileAloneThatWasBeingWrittenWithoutIt) {
  LoggedWork work(NewImage(FileWithRows(5, 100)));
  work.Record([](Database& database) { InsertRows(database.OpenTable(u"FTable"), 0, 5); });
  Image image = work.disk.Current();
  image[kDatabase][0xE00] = image[kDatabase][0xE01] = 0;
  Image recovered = image;
  EXPECT_EQ(RecoverFiles(recovered), std::nullopt);
  EXPECT_TRUE(recovered == image);
}

// Damage to the log's files after the last write, while the database is sound.
TEST(DamagedLog, NeverDamagesASoundDatabase) {
  LoggedWork work(NewImage(FileWithRows(40, 100)));
  for (int i = 0; i < 5; ++i) {
    work.Record([i](Database& database) {
      Table& items = database.OpenTable(u"FTable");
      UpdateEvery(items, 1, 2, FromUtf8(std::to_string(i)));
      if (i % 2 == 1) DeleteEvery(items, 3);
      InsertRows(items, i * 100, 10);
    });
  }
  const Image sound = work.disk.Current();
  std::mt19937 random(3);
  int none = 0, last = 0, before = 0;
  for (int round = 0; round < 4000 && !HasFailure(); ++round) {
    Image image = sound;
    for (const std::size_t file : {kFirstLog, kSecondLog}) {
      if (random() % 2 == 0) continue;
      std::vector<std::uint8_t>& bytes = image[file];
      switch (random() % 6) {
        case 0: bytes.clear(); break;
        case 1: bytes.resize(random() % (bytes.size() + 1)); break;
        case 2:
          for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
          break;
        case 3: bytes[random() % 48] ^= static_cast<std::uint8_t>(1u << random() % 8); break;
        case 4: bytes[random() % bytes.size()] ^= static_cast<std::uint8_t>(1u << random() % 8); break;
        default: std::fill_n(bytes.begin() + 8 * (random() % 6), 8, std::uint8_t{0xFF});
      }
    }
    const std::optional<Note> note = RecoverFiles(image);
    EXPECT_TRUE(image[kDatabase] == sound[kDatabase]) << round;
    EXPECT_TRUE(!note || note == NoteOf(5) || note == NoteOf(4)) << round;
    ++(!note ? none : note == NoteOf(5) ? last : before);
    // A log of garbage is no hindrance to the next write.
    if (round % 100 == 0) {
      LoggedWork next(image, 5);
      next.Record([](Database& database) { InsertRows(database.OpenTable(u"FTable"), 900, 3); });
      Image after = next.disk.Current();
      EXPECT_EQ(RecoverFiles(after), NoteOf(6));
      EXPECT_TRUE(after == next.disk.Current());
    }
  }
  EXPECT_GT(none, 0);
  EXPECT_GT(last, 0);
  EXPECT_GT(before, 0);
}

TEST(RedoLog, DoesNotStayLongAfterALongRecord) {
  LoggedWork work(NewImage(FileWithRows(4000, 100)));
  work.Record([](Database& database) { UpdateEvery(database.OpenTable(u"FTable"), 1, 2, u"x"); });
  Image image = work.disk.Current();
  EXPECT_GT(std::max(image[kFirstLog].size(), image[kSecondLog].size()), 1u << 20);
  for (int i = 0; i < 2; ++i)
    work.Record([i](Database& database) { database.OpenTable(u"FTable").Insert(VariedRow(i)); });
  image = work.disk.Current();
  EXPECT_LE(std::max(image[kFirstLog].size(), image[kSecondLog].size()), 1u << 20);
  StopEverywhere(work, 5);
}

TEST(RedoLog, CostsNoMoreFlushesThanTheMark) {
  const auto insert = [](Database& database) { database.OpenTable(u"FTable").Insert(VariedRow(7)); };
  LoggedWork logged(NewImage(FileWithRows(5, 100)));
  logged.Record(insert);  // begins the log
  SimulatedDisk plain(NewImage(FileWithRows(5, 100)));
  const auto database = Database::Open(plain.Open(kDatabase), u"memory");
  insert(*database);
  database->Flush();
  for (int i = 0; i < 20; ++i) {
    const std::size_t withLog = logged.disk.Flushes(), withMark = plain.Flushes();
    logged.Record(insert);
    insert(*database);
    database->Flush();
    EXPECT_LE(logged.disk.Flushes() - withLog, plain.Flushes() - withMark);
  }
}

TEST(RedoLog, RefusesANoteThatIsTooLong) {
  RedoLog log([](std::size_t) { return OpenMemoryFile(Shared({})); });
  log.SetNote(Note(RedoLog::kMostNoteBytes));
  EXPECT_THROW(log.SetNote(Note(RedoLog::kMostNoteBytes + 1)), Error);
}

}  // namespace
}  // namespace kestrelon::jet
