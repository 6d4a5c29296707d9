#include <chrono>
#include <fstream>

#include "jet/Ado.h"
#include "tests/jet/Waits.h"
#include "tests/jet/sql/SqlTestSupport.h"

namespace kestrelon::jet {
namespace {

using sqltest::ConnectionStringOf;
using sqltest::Decimal;
using sqltest::ExpectError;
using sqltest::MakeDatabaseFile;
using sqltest::ScopedTestDir;

constexpr std::u16string_view kClosed = u"Operation is not allowed when the object is closed.";
constexpr std::u16string_view kOpen = u"Operation is not allowed when the object is open.";

std::size_t Count(Connection& connection, std::u16string_view table = u"FTable") {
  Recordset rows;
  rows.Open(u"SELECT * FROM " + std::u16string(table), connection);
  return rows.RecordCount();
}

void AddItem(Connection& connection, std::u16string_view index) {
  connection.Execute(u"INSERT INTO FTable VALUES(\"K\",\"" + std::u16string(index) +
                     u"\",\"n\",\"f\",\"l\",\"t\",'')");
}

std::vector<Finding> FaultsOf(const std::filesystem::path& path) {
  return Database::Open(OpenFile(path, OpenMode::kRead), path.u16string())->Check();
}

std::size_t RowsIn(const std::filesystem::path& path) {
  return Database::Open(OpenFile(path, OpenMode::kRead), path.u16string())->OpenTable(u"FTable").RowCount();
}

class Connections : public ::testing::Test {
 protected:
  Connections() : path(MakeDatabaseFile(folder / "default.dat")) {
    connection.SetConnectionString(ConnectionStringOf(path));
  }
  ScopedTestDir folder;
  std::filesystem::path path;
  Connection connection;
};

TEST_F(Connections, FindTheirFileInTheConnectionString) {
  for (const std::u16string& text :
       {u"Provider=Microsoft.Jet.OLEDB.4.0;Persist Security Info=False;Data Source=" + path.u16string(),
        u"data source = " + path.u16string() + u" ;Provider=x",
        u";;x;DATA SOURCE=" + path.u16string() + u";"}) {
    connection.SetConnectionString(text);
    EXPECT_EQ(connection.ConnectionString(), text);
    connection.Open();
    EXPECT_EQ(connection.State(), 1);
    connection.Close();
    EXPECT_EQ(connection.State(), 0);
  }
}

TEST_F(Connections, FindAFileInAFolderWithSemicolonsInItsName) {
  const std::filesystem::path odd = folder / "a;b; c";
  std::filesystem::create_directory(odd);
  const std::filesystem::path moved = MakeDatabaseFile(odd / "x;.dat");
  for (const std::u16string& text : {u"Provider=x;Data Source=" + moved.u16string(),
                                     u"Data Source=" + moved.u16string() + u";Persist Security Info=False"}) {
    connection.SetConnectionString(text);
    connection.Open();
    EXPECT_EQ(connection.State(), 1);
    connection.Close();
  }
}

TEST_F(Connections, KeepTheirRowsFromOneOpeningToTheNext) {
  connection.Open();
  AddItem(connection, u"1#K");
  connection.Close();
  EXPECT_EQ(FaultsOf(path), std::vector<Finding>());

  Connection other;
  other.SetConnectionString(ConnectionStringOf(path));
  other.Open();
  EXPECT_EQ(Count(other), 1u);
}

TEST_F(Connections, RefuseAMissingFile) {
  const std::filesystem::path missing = folder / "missing.dat";
  connection.SetConnectionString(ConnectionStringOf(missing));
  ExpectError(code::kGeneric, u"Could not find file '" + missing.u16string() + u"'.",
              [&] { connection.Open(); });
  EXPECT_EQ(connection.State(), 0);
  connection.SetConnectionString(u"");
  ExpectError(code::kGeneric, u"Could not find file ''.", [&] { connection.Open(); });
}

TEST_F(Connections, RefuseAFileThatIsNoDatabase) {
  const std::filesystem::path text = folder / "text.dat";
  for (const std::size_t size : {0, 5, 4096, 20000}) {
    std::ofstream(text, std::ios::binary | std::ios::trunc) << std::string(size, 'x');
    connection.SetConnectionString(ConnectionStringOf(text));
    ExpectError(code::kGeneric, u"Unrecognized database format '" + text.u16string() + u"'.",
                [&] { connection.Open(); });
    EXPECT_EQ(connection.State(), 0);
  }
}

TEST_F(Connections, OpenTheirFileForThemselvesAlone) {
  const Waits waits;
  connection.Open();
  Connection second;
  second.SetConnectionString(ConnectionStringOf(path));
  ExpectError(code::kGeneric, u"Could not use '" + path.u16string() + u"'; file already in use.",
              [&] { second.Open(); });
  connection.Close();
  second.Open();
  EXPECT_EQ(second.State(), 1);
}

TEST_F(Connections, AreOpenOnlyOnceAndUsedOnlyOpen) {
  ExpectError(code::kObjectClosed, kClosed, [&] { connection.Execute(u"DELETE FROM FTable"); });
  connection.Open();
  ExpectError(code::kObjectOpen, kOpen, [&] { connection.Open(); });
  ExpectError(code::kObjectOpen, kOpen, [&] { connection.SetConnectionString(u""); });
  ExpectError(code::kObjectOpen, kOpen, [&] { connection.Forget(); });
  connection.Close();
  EXPECT_NO_THROW(connection.Close());
}

TEST_F(Connections, StayUsableAfterAFaultyStatement) {
  connection.Open();
  EXPECT_THROW(connection.Execute(u"INSERT INTO FTable VALUES(\"a\"b\")"), Error);
  EXPECT_EQ(connection.State(), 1);
  AddItem(connection, u"1#K");
  EXPECT_EQ(Count(connection), 1u);
}

TEST_F(Connections, LeaveAFileUntouchedThatTheyOnlyRead) {
  const FileStamp before = StampOf(path);
  connection.Open();
  EXPECT_EQ(Count(connection), 0u);
  connection.Close();
  EXPECT_EQ(StampOf(path), before);
}

class CountingFile final : public File {
 public:
  CountingFile(std::unique_ptr<File> inner, std::size_t& reads) : inner_(std::move(inner)), reads_(&reads) {}
  std::uint64_t Size() const override { return inner_->Size(); }
  void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    ++*reads_;
    inner_->ReadAt(offset, bytes);
  }
  void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
    inner_->WriteAt(offset, bytes);
  }
  void Flush() override { inner_->Flush(); }

 private:
  std::unique_ptr<File> inner_;
  std::size_t* reads_;
};

FileOpener CountingReads(std::size_t& reads) {
  return [&reads](const std::filesystem::path& file, OpenMode mode) {
    return std::make_unique<CountingFile>(OpenFile(file, mode), reads);
  };
}

TEST_F(Connections, DoNotReadAnUnchangedFileAgain) {
  std::size_t reads = 0;
  Connection counted(CountingReads(reads));
  counted.SetConnectionString(ConnectionStringOf(path));
  counted.Open();
  AddItem(counted, u"1#K");
  counted.Close();
  EXPECT_GT(reads, 0u);

  reads = 0;
  counted.Open();
  EXPECT_EQ(Count(counted), 1u);
  AddItem(counted, u"2#K");
  counted.Close();
  EXPECT_EQ(reads, 0u);

  counted.Forget();
  counted.Open();
  EXPECT_EQ(Count(counted), 2u);
  EXPECT_GT(reads, 0u);
}

TEST_F(Connections, DoNotReadAnUnchangedFileAgainThatIsNamedOtherwise) {
  const std::filesystem::path link = folder / "link.dat";
  std::filesystem::create_hard_link(path, link);
  std::size_t reads = 0;
  Connection counted(CountingReads(reads));
  counted.SetConnectionString(ConnectionStringOf(path));
  counted.Open();
  AddItem(counted, u"1#K");
  counted.Close();

  reads = 0;
  counted.SetConnectionString(ConnectionStringOf(link));
  counted.Open();
  EXPECT_EQ(Count(counted), 1u);
  counted.Close();
  EXPECT_EQ(reads, 0u);
}

TEST_F(Connections, RefuseChangesToAFileThatMayNotBeWritten) {
  const std::u16string kReadOnly = u"Could not write '" + path.u16string() + u"': the file is read-only.";
  connection.Open();
  AddItem(connection, u"1#K");
  connection.Close();
  Connection reader(
      [](const std::filesystem::path& file, OpenMode) { return OpenFile(file, OpenMode::kRead); });
  reader.SetConnectionString(ConnectionStringOf(path));
  for (int opening = 0; opening < 2; ++opening) {
    reader.Open();
    EXPECT_EQ(Count(reader), 1u);
    ExpectError(code::kGeneric, kReadOnly, [&] { AddItem(reader, u"2#K"); });
    ExpectError(code::kGeneric, kReadOnly, [&] { reader.Execute(u"DELETE FROM FTable"); });
    Recordset rows;
    rows.Open(u"SELECT * FROM TreeviewTable", reader);
    rows.AddNew();
    ExpectError(code::kGeneric, kReadOnly, [&] { rows.Update(); });
    EXPECT_EQ(Count(reader), 1u);
    EXPECT_NO_THROW(reader.Close());
  }
  EXPECT_EQ(RowsIn(path), 1u);
}

// A file that another program gets hold of, and changes, as soon as it is closed.
class SnatchedFile final : public File {
 public:
  SnatchedFile(std::unique_ptr<File> inner, std::function<void()> snatch)
      : inner_(std::move(inner)), snatch_(std::move(snatch)) {}
  ~SnatchedFile() override {
    inner_.reset();
    snatch_();
  }
  SnatchedFile(const SnatchedFile&) = delete;
  SnatchedFile& operator=(const SnatchedFile&) = delete;
  std::uint64_t Size() const override { return inner_->Size(); }
  void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    inner_->ReadAt(offset, bytes);
  }
  void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
    inner_->WriteAt(offset, bytes);
  }
  void Flush() override { inner_->Flush(); }
  std::optional<FileStamp> Stamp() override { return inner_->Stamp(); }

 private:
  std::unique_ptr<File> inner_;
  std::function<void()> snatch_;
};

TEST_F(Connections, DoNotTakeAnotherProgramsWorkForTheirOwn) {
  bool snatch = true;
  Connection mine([&](const std::filesystem::path& file, OpenMode mode) {
    return std::make_unique<SnatchedFile>(OpenFile(file, mode), [&] {
      if (!std::exchange(snatch, false)) return;
      connection.Open();
      AddItem(connection, u"theirs#K");
      connection.Close();
    });
  });
  mine.SetConnectionString(ConnectionStringOf(path));
  mine.Open();
  AddItem(mine, u"1#K");
  mine.Close();

  mine.Open();
  EXPECT_EQ(Count(mine), 2u);
  AddItem(mine, u"2#K");
  mine.Close();
  EXPECT_EQ(RowsIn(path), 3u);
  EXPECT_EQ(FaultsOf(path), std::vector<Finding>());
}

TEST_F(Connections, NoticeAFileReplacedUnderThem) {
  const std::filesystem::path slot = MakeDatabaseFile(folder / "slot.dat");
  connection.Open();
  AddItem(connection, u"1#K");
  connection.Close();

  std::filesystem::remove(path);
  std::filesystem::copy_file(slot, path);

  connection.Open();
  EXPECT_EQ(Count(connection), 0u);
  AddItem(connection, u"2#K");
  connection.Close();
  EXPECT_EQ(FaultsOf(path), std::vector<Finding>());
}

TEST_F(Connections, NoticeAFileThatAnotherOneChanged) {
  connection.Open();
  AddItem(connection, u"1#K");
  connection.Close();
  {
    Connection other;
    other.SetConnectionString(ConnectionStringOf(path));
    other.Open();
    AddItem(other, u"2#K");
    other.Close();
  }
  // A file system's clock may be coarse; the change is made an hour old so that only the stamp tells it.
  std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) - std::chrono::hours(1));
  connection.Open();
  EXPECT_EQ(Count(connection), 2u);
}

TEST_F(Connections, MoveFromOneFileToAnother) {
  const std::filesystem::path second = MakeDatabaseFile(folder / "second.dat");
  connection.Open();
  AddItem(connection, u"1#K");
  connection.Close();
  connection.SetConnectionString(ConnectionStringOf(second));
  connection.Open();
  EXPECT_EQ(Count(connection), 0u);
  connection.Close();
  connection.SetConnectionString(ConnectionStringOf(path));
  connection.Open();
  EXPECT_EQ(Count(connection), 1u);
}

TEST_F(Connections, WriteTheirChangesWhenDestroyedOrMovedOver) {
  {
    Connection first;
    first.SetConnectionString(ConnectionStringOf(path));
    first.Open();
    AddItem(first, u"1#K");
    Connection second(std::move(first));
    AddItem(second, u"2#K");
    second = Connection();
    connection.Open();
    AddItem(connection, u"3#K");
    connection.Close();
  }
  connection.Forget();
  connection.Open();
  EXPECT_EQ(Count(connection), 3u);
}

// What could not be written is lost where the file has its old content still, and is kept in memory where it
// has not.
TEST_F(Connections, LoseOrKeepTheirChangesWhenAWriteFailsButNeverTheFile) {
  int damaged = 0;
  for (std::size_t writes = 0;; ++writes) {
    const std::filesystem::path file = MakeDatabaseFile(folder / ("failing" + std::to_string(writes)));
    std::size_t failAfter = writes;
    Connection failing([&failAfter](const std::filesystem::path& name, OpenMode mode) {
      return OpenFailingFile(OpenFile(name, mode), failAfter, failAfter % 2 == 0 ? 0 : 100);
    });
    failing.SetConnectionString(ConnectionStringOf(file));
    failing.Open();
    for (std::size_t i = 0; i < 100; ++i) AddItem(failing, Decimal(i));
    bool failed = false;
    try {
      failing.Close();
    } catch (const Error& error) {
      failed = true;
      EXPECT_EQ(error.Number(), code::kGeneric);
    }
    EXPECT_EQ(failing.State(), 0);
    if (!failed) {
      EXPECT_GT(writes, 4u);
      break;
    }
    std::size_t others = 0;  // rows that another one sees
    try {
      others = RowsIn(file);
      EXPECT_TRUE(others == 0 || others == 100) << writes;
    } catch (const Error& error) {
      ++damaged;
      EXPECT_EQ(ToUtf8(error.Description()), "The database '" + ToUtf8(file.u16string()) +
                                                 "' is damaged: writing to it was stopped before its end.");
      others = 100;  // kept in memory
    }
    failAfter = 1000000;
    failing.Open();
    AddItem(failing, u"again");
    failing.Close();
    EXPECT_EQ(RowsIn(file), others + 1) << writes;
    EXPECT_EQ(FaultsOf(file), std::vector<Finding>());
    ASSERT_LT(writes, 1000u);
  }
  EXPECT_GT(damaged, 2);
}

TEST_F(Connections, GiveUpWhatTheyCouldNotWriteForAFileThatTookItsPlace) {
  std::size_t failAfter = 4;
  Connection failing([&failAfter](const std::filesystem::path& name, OpenMode mode) {
    return OpenFailingFile(OpenFile(name, mode), failAfter);
  });
  failing.SetConnectionString(ConnectionStringOf(path));
  failing.Open();
  AddItem(failing, u"1#K");
  EXPECT_THROW(failing.Close(), Error);
  EXPECT_THROW(RowsIn(path), Error);  // marked as damaged

  std::filesystem::remove(path);
  MakeDatabaseFile(path);
  // A clock may be coarse, as above.
  std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) - std::chrono::hours(1));
  failAfter = 1000000;
  failing.Open();
  EXPECT_EQ(Count(failing), 0u);
  failing.Close();
  EXPECT_EQ(FaultsOf(path), std::vector<Finding>());
}

TEST_F(Connections, ForgetWhatTheyCouldNotWriteWhenToldTo) {
  std::size_t failAfter = 4;
  Connection failing([&failAfter](const std::filesystem::path& name, OpenMode mode) {
    return OpenFailingFile(OpenFile(name, mode), failAfter);
  });
  failing.SetConnectionString(ConnectionStringOf(path));
  failing.Open();
  AddItem(failing, u"1#K");
  EXPECT_THROW(failing.Close(), Error);

  failing.Forget();
  EXPECT_THROW(failing.Open(), Error);
  EXPECT_EQ(failing.State(), 0);
}

TEST_F(Connections, KeepLookupsRightAcrossClosing) {
  connection.Open();
  AddItem(connection, u"1#K");
  EXPECT_EQ(connection.Execute(u"UPDATE FTable SET Comment='x' WHERE FileIndex='1#K'"), 1u);
  connection.Close();
  connection.Open();
  AddItem(connection, u"2#K");
  EXPECT_EQ(connection.Execute(u"UPDATE FTable SET Comment='x' WHERE FileIndex='2#K'"), 1u);
  EXPECT_EQ(connection.Execute(u"DELETE FROM FTable WHERE FileIndex='1#K'"), 1u);
  connection.Close();
  connection.Forget();
  connection.Open();
  EXPECT_EQ(Count(connection), 1u);
}

class Compaction : public Connections {
 protected:
  void Compact() { engine.CompactDatabase(ConnectionStringOf(path), ConnectionStringOf(packed)); }
  std::filesystem::path packed = folder / "packed.dat";
  JetEngine engine;
};

TEST_F(Compaction, KeepsTheRowsAndDropsTheFreeSpace) {
  connection.Open();
  for (std::size_t i = 0; i < 5000; ++i) AddItem(connection, Decimal(i));
  connection.Close();
  connection.Open();
  connection.Execute(u"DELETE FROM FTable WHERE FileIndex<>'7' AND FileIndex<>'8'");
  connection.Close();

  Compact();

  EXPECT_LT(std::filesystem::file_size(packed), std::filesystem::file_size(path) / 2);
  EXPECT_EQ(FaultsOf(packed), std::vector<Finding>());
  connection.SetConnectionString(ConnectionStringOf(packed));
  connection.Open();
  Recordset rows;
  rows.Open(u"SELECT FileIndex FROM FTable", connection);
  ASSERT_EQ(rows.RecordCount(), 2u);
  EXPECT_EQ(rows.Text(u"FileIndex"), u"7");
}

TEST_F(Compaction, RefusesADestinationThatExists) {
  std::ofstream(packed) << "mine";
  ExpectError(code::kGeneric, u"Database '" + packed.u16string() + u"' already exists.", [&] { Compact(); });
  EXPECT_EQ(std::filesystem::file_size(packed), 4u);
  EXPECT_THROW(engine.CompactDatabase(ConnectionStringOf(path), ConnectionStringOf(path)), Error);
  EXPECT_EQ(FaultsOf(path), std::vector<Finding>());
}

TEST_F(Compaction, RefusesAnOpenOrMissingSource) {
  const Waits waits;
  connection.Open();
  ExpectError(code::kGeneric, u"Could not use '" + path.u16string() + u"'; file already in use.",
              [&] { Compact(); });
  connection.Close();
  std::filesystem::remove(path);
  ExpectError(code::kGeneric, u"Could not find file '" + path.u16string() + u"'.", [&] { Compact(); });
  EXPECT_FALSE(std::filesystem::exists(packed));
}

TEST_F(Compaction, LeavesNoDestinationWhenAWriteFails) {
  connection.Open();
  for (std::size_t i = 0; i < 100; ++i) AddItem(connection, Decimal(i));
  connection.Close();
  for (std::size_t writes = 0;; ++writes) {
    JetEngine failing([writes](const std::filesystem::path& name, OpenMode mode) {
      std::unique_ptr<File> file = OpenFile(name, mode);
      return mode == OpenMode::kCreate ? OpenFailingFile(std::move(file), writes) : std::move(file);
    });
    try {
      failing.CompactDatabase(ConnectionStringOf(path), ConnectionStringOf(packed));
      EXPECT_GT(writes, 1u);
      break;
    } catch (const Error& error) {
      EXPECT_EQ(error.Number(), code::kGeneric);
      ASSERT_FALSE(std::filesystem::exists(packed)) << writes;
      ASSERT_LT(writes, 1000u) << error.what();
    }
  }
  EXPECT_EQ(FaultsOf(packed), std::vector<Finding>());
}

}  // namespace
}  // namespace kestrelon::jet
