#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "jet/Ado.h"
#include "tests/jet/sql/SqlTestSupport.h"

// Every call that the engine makes to a file fails once, in each way in which such a call can fail; the work
// that it belongs to is then looked at from outside: the error, the file, and the object that goes on.

namespace kestrelon::jet {
namespace {

using sqltest::ConnectionStringOf;
using sqltest::Decimal;
using sqltest::ScopedTestDir;
using testing::AnyOf;
using testing::HasSubstr;
using testing::IsEmpty;

enum class Failure {
  kInUse,       // opening: another program has the file
  kReadOnly,    // opening: only reading is allowed
  kReadError,   // reading, or asking for the size
  kDiskFull,    // writing: nothing of it
  kShortWrite,  // writing: the first half of it
  kFlushError,  // flushing
};
constexpr Failure kAll[] = {Failure::kInUse,    Failure::kReadOnly,   Failure::kReadError,
                            Failure::kDiskFull, Failure::kShortWrite, Failure::kFlushError};

// Files on disk of which a call can be made to fail. Flushes do not wait for the disk.
class FaultyDisk {
 public:
  // The `call`-th (from 0) of the calls that can fail in this way does so; where `forGood`, all later ones
  // too.
  void FailAt(Failure failure, std::size_t call, bool forGood) {
    failure_ = failure;
    left_ = call;
    forGood_ = forGood;
    armed_ = true;
    hit_ = false;
  }
  void Heal() { armed_ = false; }
  bool Hit() const { return hit_; }
  int OpenFiles() const { return openFiles_; }
  FileOpener Opener() {
    return [this](const std::filesystem::path& path, OpenMode mode) { return Open(path, mode); };
  }

 private:
  class FaultyFile final : public File {
   public:
    FaultyFile(FaultyDisk& disk, std::unique_ptr<File> inner, const std::filesystem::path& path)
        : disk_(&disk), inner_(std::move(inner)), name_(path.u16string()) {
      ++disk_->openFiles_;
    }
    ~FaultyFile() override { --disk_->openFiles_; }
    FaultyFile(const FaultyFile&) = delete;
    FaultyFile& operator=(const FaultyFile&) = delete;
    std::uint64_t Size() const override {
      if (disk_->Fails(Failure::kReadError)) Throw(u"read", u"Input/output error");
      return inner_->Size();
    }
    void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
      if (disk_->Fails(Failure::kReadError)) Throw(u"read", u"Input/output error");
      inner_->ReadAt(offset, bytes);
    }
    void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
      if (disk_->Fails(Failure::kDiskFull)) Throw(u"write", u"No space left on device");
      if (disk_->Fails(Failure::kShortWrite)) {
        inner_->WriteAt(offset, bytes.first(bytes.size() / 2));
        Throw(u"write", u"No space left on device");
      }
      inner_->WriteAt(offset, bytes);
    }
    void Flush() override {
      if (disk_->Fails(Failure::kFlushError)) Throw(u"write", u"Input/output error");
    }
    bool ReadOnly() const override { return inner_->ReadOnly(); }
    std::optional<FileStamp> Stamp() override { return inner_->Stamp(); }

   private:
    [[noreturn]] void Throw(std::u16string_view action, std::u16string_view why) const {
      throw Error(code::kGeneric, u"Could not " + std::u16string(action) + u" '" + name_ + u"': " +
                                      std::u16string(why) + u".");
    }
    FaultyDisk* disk_;
    std::unique_ptr<File> inner_;
    std::u16string name_;
  };

  std::unique_ptr<File> Open(const std::filesystem::path& path, OpenMode mode) {
    if (Fails(Failure::kInUse))
      throw Error(code::kGeneric, u"Could not use '" + path.u16string() + u"'; file already in use.");
    if (mode == OpenMode::kReadWrite && Fails(Failure::kReadOnly)) mode = OpenMode::kRead;
    return std::make_unique<FaultyFile>(*this, OpenFile(path, mode), path);
  }
  bool Fails(Failure failure) {
    if (!armed_ || failure != failure_) return false;
    if (left_ > 0) {
      --left_;
      return false;
    }
    if (hit_ && !forGood_) return false;
    hit_ = true;
    return true;
  }

  Failure failure_ = Failure::kInUse;
  std::size_t left_ = 0;
  bool forGood_ = false, armed_ = false, hit_ = false;
  int openFiles_ = 0;
};

// The rows of the tables as texts, in no order.
using Content = std::vector<std::u16string>;

Content ContentOf(Connection& connection) {
  Content content;
  for (const std::u16string_view table : {u"FTable", u"FBackup", u"TreeviewTable"}) {
    Recordset rows;
    rows.Open(u"SELECT * FROM " + std::u16string(table), connection);
    const std::size_t columns = table == u"TreeviewTable" ? 4 : 7;
    for (; !rows.EndOfFile(); rows.MoveNext()) {
      std::u16string& line = content.emplace_back(table);
      for (std::size_t column = 0; column < columns; ++column) line.append(u"|").append(rows.Text(column));
    }
  }
  std::sort(content.begin(), content.end());
  return content;
}

Content ContentOf(const std::filesystem::path& path) {
  Connection connection;
  connection.SetConnectionString(ConnectionStringOf(path));
  connection.Open();
  return ContentOf(connection);
}

std::vector<Finding> FaultsOf(const std::filesystem::path& path) {
  return Database::Open(OpenFile(path, OpenMode::kRead), path.u16string())->Check();
}

std::u16string InsertItem(std::size_t number, std::size_t commentLength) {
  return u"INSERT INTO FTable VALUES(\"K" + Decimal(number % 5) + u"\",\"" + Decimal(number) +
         u"#K\",\"name " + Decimal(number) + u"\",\"f\",\"" + std::u16string(90, u'\u6587') + u"\",\"t\",\"" +
         std::u16string(commentLength, u'x') + u"\")";
}

// Statements of the kinds that the program makes; kFirst of them in a first opening, the others in a second.
const std::vector<std::u16string>& Statements() {
  static const std::vector<std::u16string> statements = {
      InsertItem(100, 20),
      InsertItem(101, 6000),
      u"UPDATE FTable SET Comment=\"" + std::u16string(150, u'n') + u"\" WHERE TreeviewNode=\"K1\"",
      u"DELETE FROM FTable WHERE TreeviewNode=\"K2\"",
      u"INSERT INTO TreeviewTable(parent,[key],[text]) VALUES(\"0_\",\"K9\",\"category\")",
      u"DELETE FROM FBackup",
      u"INSERT INTO FBackup SELECT * FROM FTable",
      u"DELETE * FROM TreeviewTable",
      u"UPDATE FTable SET TreeviewNode=\"K7\" WHERE FileIndex=\"100#K\"",
  };
  return statements;
}
constexpr std::size_t kFirst = 5;

class FailingFiles : public testing::TestWithParam<std::tuple<Failure, bool>> {
 protected:
  FailingFiles() {
    base = sqltest::MakeDatabaseFile(folder / "base.dat");
    Connection connection;
    connection.SetConnectionString(ConnectionStringOf(base));
    connection.Open();
    for (std::size_t i = 0; i < 60; ++i) connection.Execute(InsertItem(i, i % 20 == 0 ? 5000 : i));
    connection.Execute(u"INSERT INTO FBackup SELECT * FROM FTable WHERE TreeviewNode=\"K3\"");
    for (std::size_t i = 0; i < 20; ++i) {
      connection.Execute(u"INSERT INTO TreeviewTable(parent,[key],[text]) VALUES(\"0_\",\"" + Decimal(i) +
                         u"\",\"category\")");
    }
    contents.push_back(ContentOf(connection));
    connection.Close();
    baseBytes = BytesOf(base);

    std::filesystem::copy_file(base, path);
    connection.SetConnectionString(ConnectionStringOf(path));
    connection.Open();
    for (const std::u16string& statement : Statements()) {
      connection.Execute(statement);
      contents.push_back(ContentOf(connection));
    }
    connection.Close();
  }

  static std::string BytesOf(const std::filesystem::path& file) {
    std::string bytes(static_cast<std::size_t>(std::filesystem::file_size(file)), '\0');
    if (!bytes.empty()) {
      OpenFile(file, OpenMode::kRead)
          ->ReadAt(0, {reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()});
    }
    return bytes;
  }

  void ExpectClear(const Error& error, const std::filesystem::path& file) {
    EXPECT_EQ(error.Number(), code::kGeneric);
    EXPECT_THAT(error.what(), AllOf(HasSubstr(ToUtf8(file.u16string())), testing::EndsWith(".")));
  }

  // Runs the statements from `done` on, up to `last`, in one opening. False when something failed; `done`
  // then tells how many took place, and `closing` whether it was Close() that failed.
  bool Run(Connection& connection, std::size_t& done, std::size_t last, bool& closing) {
    try {
      closing = false;
      connection.Open();
      while (done < last) {
        connection.Execute(Statements()[done]);
        ++done;
      }
      EXPECT_EQ(ContentOf(connection), contents[done]);
      closing = true;
      connection.Close();
      return true;
    } catch (const Error& error) {
      ExpectClear(error, path);
      return false;
    }
  }

  // Runs `body` with the first call failing, the second, ... until it has no further call.
  void UntilNothingFails(const auto& body) {
    const auto [failure, forGood] = GetParam();
    for (std::size_t call = 0; !HasFailure(); ++call) {
      SCOPED_TRACE("failing call " + std::to_string(call));
      disk.FailAt(failure, call, forGood);
      body();
      if (!disk.Hit()) {
        EXPECT_GT(call, 0u);
        break;
      }
    }
  }

  ScopedTestDir folder;
  std::filesystem::path base, path = folder / "default.dat";
  std::string baseBytes;
  std::vector<Content> contents;  // after so many statements
  FaultyDisk disk;
};

TEST_P(FailingFiles, LeaveAConnectionUsableAndItsFileWholeOrRefused) {
  UntilNothingFails([&] {
    std::filesystem::remove(path);
    std::filesystem::copy_file(base, path);
    Connection connection(disk.Opener());
    connection.SetConnectionString(ConnectionStringOf(path));
    std::size_t opened = 0, done = 0;  // statements before this opening, statements that took place
    bool closing = false;
    bool well = Run(connection, done, kFirst, closing);
    if (well) {
      opened = done;
      well = Run(connection, done, Statements().size(), closing);
    }
    EXPECT_EQ(well, !disk.Hit());
    if (connection.State() == 1) {
      // A statement failed and changed nothing; what went before it can still be written, or it cannot.
      EXPECT_FALSE(closing);
      try {
        EXPECT_EQ(ContentOf(connection), contents[done]);
      } catch (const Error& error) {
        ExpectClear(error, path);
      }
      try {
        connection.Close();
      } catch (const Error& error) {
        ExpectClear(error, path);
      }
    }
    EXPECT_EQ(connection.State(), 0);
    EXPECT_EQ(disk.OpenFiles(), 0);
    disk.Heal();

    bool refused = false;
    try {
      EXPECT_THAT(ContentOf(path), AnyOf(contents[opened], contents[done]));
      EXPECT_THAT(FaultsOf(path), IsEmpty());
    } catch (const Error& error) {
      EXPECT_THAT(error.what(), HasSubstr("is damaged: writing to it was stopped"));
      refused = true;
    }
    // The failure has gone: the connection goes on, even from a file that others cannot use any more.
    connection.Open();
    Content content = ContentOf(connection);
    EXPECT_THAT(content, AnyOf(contents[opened], contents[done]));
    EXPECT_TRUE(!refused || content == contents[done]);
    connection.Execute(u"INSERT INTO TreeviewTable(parent,[key],[text]) VALUES(\"p\",\"again\",\"t\")");
    content = ContentOf(connection);
    connection.Close();
    EXPECT_EQ(ContentOf(path), content);
    EXPECT_THAT(FaultsOf(path), IsEmpty());
  });
}

TEST_P(FailingFiles, LeaveTheSourceOfACompactionAsItIsAndNoDestination) {
  const std::filesystem::path packed = folder / "packed.dat";
  UntilNothingFails([&] {
    JetEngine engine(disk.Opener());
    std::filesystem::remove(packed);
    try {
      engine.CompactDatabase(ConnectionStringOf(base), ConnectionStringOf(packed));
      // A source that can only be read is enough.
      EXPECT_TRUE(!disk.Hit() || std::get<0>(GetParam()) == Failure::kReadOnly);
      EXPECT_EQ(ContentOf(packed), contents[0]);
      EXPECT_THAT(FaultsOf(packed), IsEmpty());
    } catch (const Error& error) {
      EXPECT_TRUE(disk.Hit());
      EXPECT_EQ(error.Number(), code::kGeneric);
      EXPECT_THAT(error.what(), AnyOf(HasSubstr("base.dat"), HasSubstr("packed.dat")));
      EXPECT_FALSE(std::filesystem::exists(packed));
    }
    EXPECT_EQ(disk.OpenFiles(), 0);
    EXPECT_TRUE(BytesOf(base) == baseBytes);
  });
}

std::string NameOf(const testing::TestParamInfo<std::tuple<Failure, bool>>& info) {
  static constexpr const char* kNames[] = {"InUse",    "ReadOnly",   "ReadError",
                                           "DiskFull", "ShortWrite", "FlushError"};
  return std::string(kNames[static_cast<std::size_t>(std::get<0>(info.param))]) +
         (std::get<1>(info.param) ? "ForGood" : "Once");
}

INSTANTIATE_TEST_SUITE_P(EveryCall, FailingFiles, testing::Combine(testing::ValuesIn(kAll), testing::Bool()),
                         NameOf);

bool IsSound(const std::filesystem::path& path) {
  try {
    return FaultsOf(path).empty();
  } catch (const Error&) {
    return false;
  }
}

TEST(FailingCreation, ThrowsAtEveryCall) {
  const ScopedTestDir folder;
  for (const Failure failure : {Failure::kInUse, Failure::kDiskFull, Failure::kShortWrite}) {
    FaultyDisk disk;
    for (std::size_t call = 0;; ++call) {
      const std::filesystem::path path = folder / "new.dat";
      std::filesystem::remove(path);
      disk.FailAt(failure, call, false);
      try {
        CreateDatabase(*disk.Opener()(path, OpenMode::kCreate), sqltest::ProgramTables(), 45000.5);
      } catch (const Error& error) {
        EXPECT_TRUE(disk.Hit());
        EXPECT_THAT(error.what(), HasSubstr("new.dat"));
        // A file of which only a part was written is not taken for a sound one.
        EXPECT_FALSE(std::filesystem::exists(path) && IsSound(path)) << call;
      }
      EXPECT_EQ(disk.OpenFiles(), 0);
      if (!disk.Hit()) {
        EXPECT_THAT(FaultsOf(path), IsEmpty());
        EXPECT_GT(call, 0u);
        break;
      }
    }
  }
}

}  // namespace
}  // namespace kestrelon::jet
