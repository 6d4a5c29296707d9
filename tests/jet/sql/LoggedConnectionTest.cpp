#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "jet/Ado.h"
#include "tests/jet/sql/SqlTestSupport.h"

// Connections that keep a redo log. What stops leave is in StoppedLogTest.cpp.

namespace kestrelon::jet {
namespace {

using sqltest::ConnectionStringOf;
using sqltest::Decimal;
using sqltest::MakeDatabaseFile;
using sqltest::ScopedTestDir;
using testing::IsEmpty;

using Note = std::vector<std::uint8_t>;

std::vector<Finding> FaultsOf(const std::filesystem::path& path) {
  return Database::Open(OpenFile(path, OpenMode::kRead), path.u16string())->Check();
}

void AddItem(Connection& connection, std::size_t number) {
  connection.Execute(u"INSERT INTO FTable VALUES(\"K\",\"" + Decimal(number) +
                     u"#K\",\"n\",\"f\",\"l\",\"t\",\"c\")");
}

std::size_t Count(Connection& connection) {
  Recordset rows;
  rows.Open(u"SELECT * FROM FTable", connection);
  return rows.RecordCount();
}

std::size_t RowsIn(const std::filesystem::path& path) {
  Connection other;
  other.SetConnectionString(ConnectionStringOf(path));
  other.Open();
  return Count(other);
}

// Fails in the given calls of WriteAt, Flush and Resize, counted over all of its files.
class FailingDisk {
 public:
  std::size_t first = SIZE_MAX, last = SIZE_MAX;  // calls that fail
  std::size_t calls = 0;

  FileOpener Opener() {
    return [this](const std::filesystem::path& path, OpenMode mode) -> std::unique_ptr<File> {
      return std::make_unique<FailingFile>(*this, OpenFile(path, mode));
    };
  }
  bool Hit() const { return calls > first; }

 private:
  class FailingFile final : public File {
   public:
    FailingFile(FailingDisk& disk, std::unique_ptr<File> inner) : disk_(&disk), inner_(std::move(inner)) {}
    std::uint64_t Size() const override { return inner_->Size(); }
    void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
      inner_->ReadAt(offset, bytes);
    }
    void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
      if (disk_->Fails()) {
        inner_->WriteAt(offset, bytes.first(bytes.size() / 2));
        Throw();
      }
      inner_->WriteAt(offset, bytes);
    }
    void Resize(std::uint64_t size) override {
      if (disk_->Fails()) Throw();
      inner_->Resize(size);
    }
    void Flush() override {
      if (disk_->Fails()) Throw();
    }

   private:
    [[noreturn]] static void Throw() { throw Error(code::kGeneric, u"Could not write: no reason."); }
    FailingDisk* disk_;
    std::unique_ptr<File> inner_;
  };
  bool Fails() {
    const std::size_t call = calls++;
    return call >= first && call <= last;
  }
};

class LoggedConnections : public testing::Test {
 protected:
  LoggedConnections() {
    MakeDatabaseFile(path);
    connection.SetConnectionString(ConnectionStringOf(path));
    connection.SetLog(log);
  }
  std::optional<Note> Recovered() { return RecoverFromLog(path, log); }

  ScopedTestDir folder;
  std::filesystem::path path = folder / "default.dat", log = folder / "default.log";
  std::filesystem::path first = folder / "default.log.1", second = folder / "default.log.2";
  Connection connection;
};

TEST_F(LoggedConnections, KeepANoteInStepWithTheRows) {
  EXPECT_EQ(Recovered(), std::nullopt);
  connection.Open();
  EXPECT_FALSE(connection.Changed());
  AddItem(connection, 1);
  EXPECT_TRUE(connection.Changed());
  connection.SetNote({1, 2, 3});
  connection.Close();
  EXPECT_FALSE(connection.Changed());
  connection = Connection();
  EXPECT_EQ(Recovered(), (Note{1, 2, 3}));
  EXPECT_EQ(RowsIn(path), 1u);
}

TEST_F(LoggedConnections, WriteAChangedNoteByItself) {
  connection.Open();
  connection.SetNote({1});
  EXPECT_TRUE(connection.Changed());
  connection.Close();
  connection.Open();
  connection.SetNote({1});
  EXPECT_FALSE(connection.Changed());
  connection.SetNote({2});
  EXPECT_TRUE(connection.Changed());
  connection.Flush();
  EXPECT_FALSE(connection.Changed());
  connection = Connection();
  EXPECT_EQ(Recovered(), Note{2});
}

TEST_F(LoggedConnections, KeepTheNoteOfTheLogUntilTheySetOne) {
  connection.Open();
  connection.SetNote({9});
  connection.Close();
  connection = Connection();
  connection.SetConnectionString(ConnectionStringOf(path));
  connection.SetLog(log);
  connection.Open();
  AddItem(connection, 1);
  connection.Close();
  connection = Connection();
  EXPECT_EQ(Recovered(), Note{9});
}

// What is on disk after a flush is what is left when nothing can be written from then on.
void ExpectFlushed(const std::filesystem::path& path, const std::filesystem::path& log) {
  FailingDisk disk;
  Connection connection(disk.Opener());
  EXPECT_THROW(connection.Flush(), Error);
  connection.SetConnectionString(ConnectionStringOf(path));
  connection.SetLog(log);
  connection.Open();
  for (std::size_t i = 0; i < 3; ++i) AddItem(connection, i);
  Recordset rows;
  rows.Open(u"SELECT * FROM FTable", connection);
  rows.MoveNext();
  connection.Flush();
  EXPECT_FALSE(connection.Changed());
  EXPECT_EQ(rows.Text(u"FileIndex"), u"1#K");
  rows.MoveNext();
  EXPECT_EQ(rows.Text(u"FileIndex"), u"2#K");
  AddItem(connection, 4);
  EXPECT_TRUE(connection.Changed());
  disk.first = disk.calls;
  EXPECT_THROW(connection.Flush(), Error);
  EXPECT_EQ(Count(connection), 4u);
  EXPECT_THROW(connection.Close(), Error);
  connection = Connection();
  if (!log.empty()) RecoverFromLog(path, log);
  EXPECT_EQ(RowsIn(path), 3u);
}

TEST_F(LoggedConnections, StayOpenAfterAFlushWithTheirRecordsets) { ExpectFlushed(path, log); }

TEST_F(LoggedConnections, NeedNoLogToFlush) {
  ExpectFlushed(path, {});
  EXPECT_FALSE(std::filesystem::exists(first));
}

TEST_F(LoggedConnections, GoOnWithTheSameFileAfterAFlush) {
  connection.Open();
  AddItem(connection, 1);
  connection.Flush();
  connection.Close();
  connection.Open();
  AddItem(connection, 2);
  connection.Close();
  EXPECT_EQ(RowsIn(path), 2u);
}

TEST_F(LoggedConnections, IgnoreANoteWithoutALog) {
  connection.SetLog({});
  connection.Open();
  connection.SetNote({1});
  EXPECT_FALSE(connection.Changed());
}

TEST_F(LoggedConnections, LetTheFileBeReplacedAfterACheckpoint) {
  connection.Open();
  for (std::size_t i = 0; i < 100; ++i) AddItem(connection, i);
  connection.SetNote({7});
  EXPECT_THROW(connection.Checkpoint(), Error);
  connection.Close();
  connection.Checkpoint();
  std::filesystem::remove(path);
  MakeDatabaseFile(path);
  connection.Forget();
  connection.Open();
  EXPECT_EQ(Count(connection), 0u);
  AddItem(connection, 1);
  connection.Close();
  connection = Connection();
  EXPECT_EQ(Recovered(), Note{7});
  EXPECT_EQ(RowsIn(path), 1u);
  EXPECT_THAT(FaultsOf(path), IsEmpty());
}

TEST_F(LoggedConnections, BringNothingIntoAFileThatTookThePlaceAfterACheckpoint) {
  connection.Open();
  for (std::size_t i = 0; i < 100; ++i) AddItem(connection, i);
  connection.SetNote({7});
  connection.Close();
  connection.Checkpoint();
  connection = Connection();
  std::filesystem::remove(path);
  MakeDatabaseFile(path);
  EXPECT_EQ(Recovered(), Note{7});
  EXPECT_EQ(RowsIn(path), 0u);
  EXPECT_THAT(FaultsOf(path), IsEmpty());
}

TEST_F(LoggedConnections, RemoveTheFilesOfTheLog) {
  connection.RemoveLog();
  connection.Open();
  AddItem(connection, 1);
  connection.SetNote({1});
  connection.Close();
  EXPECT_TRUE(std::filesystem::exists(first) && std::filesystem::exists(second));
  connection.RemoveLog();
  EXPECT_FALSE(std::filesystem::exists(first) || std::filesystem::exists(second));
  EXPECT_EQ(Recovered(), std::nullopt);
  // They come back with the next write.
  connection.Open();
  connection.SetNote({2});
  connection.Close();
  connection = Connection();
  EXPECT_EQ(Recovered(), Note{2});
}

TEST_F(LoggedConnections, CannotChangeTheLogWhileOpen) {
  connection.Open();
  EXPECT_THROW(connection.SetLog(folder / "other"), Error);
  connection.Close();
  connection.SetLog({});
  connection.Open();
  AddItem(connection, 1);
  connection.Close();
  EXPECT_FALSE(std::filesystem::exists(first));
}

TEST_F(LoggedConnections, LeaveTheDatabaseAsItWasWhereThereCanBeNoLog) {
  std::filesystem::create_directory(first);
  const FileStamp before = StampOf(path);
  connection.Open();
  AddItem(connection, 1);
  EXPECT_THROW(connection.Flush(), Error);
  EXPECT_TRUE(connection.Changed());
  EXPECT_THROW(connection.Close(), Error);
  EXPECT_EQ(StampOf(path), before);
  std::filesystem::remove(first);
  connection.Open();
  EXPECT_EQ(Count(connection), 0u);
  AddItem(connection, 2);
  connection.Close();
  EXPECT_EQ(RowsIn(path), 1u);
}

TEST_F(LoggedConnections, TellOfALogThatCannotBeRead) {
  connection.Open();
  AddItem(connection, 1);
  connection.Close();
  EXPECT_THROW(Recovered(), Error);  // in use
}

// Every call fails in turn: once, twice running, or from then on.
TEST_F(LoggedConnections, GoOnAfterAFailureOfAnyCall) {
  connection.Open();
  for (std::size_t i = 0; i < 50; ++i) AddItem(connection, i);
  connection.Close();
  connection = Connection();
  std::filesystem::remove(first);
  std::filesystem::remove(second);
  std::filesystem::rename(path, folder / "base.dat");
  std::size_t failures = 0, kept = 0, lost = 0;
  for (const std::size_t running : {std::size_t{1}, std::size_t{2}, std::size_t{1000}}) {
    for (std::size_t call = 0; !HasFailure(); ++call) {
      SCOPED_TRACE(std::to_string(running) + " from call " + std::to_string(call));
      for (const auto& file : {path, first, second}) std::filesystem::remove(file);
      std::filesystem::copy_file(folder / "base.dat", path);
      FailingDisk disk;
      disk.first = call;
      disk.last = call + running - 1;
      std::size_t rows = 50;
      bool unwritten = false;
      {
        Connection failing(disk.Opener());
        failing.SetConnectionString(ConnectionStringOf(path));
        failing.SetLog(log);
        for (std::size_t opening = 0; opening < 3; ++opening) {
          const std::size_t before = rows;
          try {
            failing.Open();
            for (std::size_t i = 0; i < 40; ++i) AddItem(failing, 100 * opening + i);
            failing.Execute(u"UPDATE FTable SET Comment=\"new\" WHERE FileIndex=\"7#K\"");
            failing.SetNote({static_cast<std::uint8_t>(opening + 1), 1});
            rows += 40;
            failing.Close();
          } catch (const Error&) {
            ++failures;
            unwritten = true;
          }
          if (!unwritten) continue;
          EXPECT_EQ(failing.State(), 0);
          if (running == 1000) break;
          // The failure has gone.
          disk.first = disk.last = SIZE_MAX;
          failing.Open();
          const std::size_t now = Count(failing);
          EXPECT_TRUE(now == rows || now == before) << now;
          ++(now == rows ? kept : lost);
          rows = now;
          failing.SetNote({static_cast<std::uint8_t>(opening + 1), 2});
          AddItem(failing, 1000 + opening);
          ++rows;
          failing.Close();
          EXPECT_EQ(RowsIn(path), rows);
          EXPECT_THAT(FaultsOf(path), IsEmpty());
          unwritten = false;
        }
      }
      const std::optional<Note> note = Recovered();
      const std::size_t found = RowsIn(path);
      EXPECT_THAT(FaultsOf(path), IsEmpty());
      if (unwritten) {
        EXPECT_TRUE(found == rows || found == rows - 40) << found;
        const auto number = static_cast<std::uint8_t>((found - 50) / 40);
        EXPECT_TRUE(number == 0 ? !note || note->empty() : note == (Note{number, 1})) << found;
      } else {
        EXPECT_EQ(found, rows);
      }
      if (disk.calls <= call && disk.first == call) break;
      ASSERT_LT(call, 1000u);
    }
  }
  EXPECT_GT(failures, 50u);
  EXPECT_GT(kept, 0u);
  EXPECT_GT(lost, 0u);
}

}  // namespace
}  // namespace kestrelon::jet
