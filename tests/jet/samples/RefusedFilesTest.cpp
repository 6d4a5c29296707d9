#include <functional>

#include "jet/Ado.h"
#include "tests/jet/samples/Samples.h"

// Files that a connection does not open, or does not write: with an error that says why, without a changed
// byte, and letting go of the file.

namespace kestrelon::jet {
namespace {

std::u16string ConnectionTo(const std::filesystem::path& path) {
  return u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path.u16string();
}

// The error of `body` as "number description".
std::string ErrorOf(const std::function<void()>& body) {
  try {
    body();
  } catch (const Error& error) {
    char number[16];
    std::snprintf(number, sizeof number, "%08X ", static_cast<unsigned>(error.Number()));
    return number + std::string(error.what());
  }
  return "no error";
}

void Flip(std::vector<std::uint8_t>& file, std::size_t offset, std::uint32_t bits) {
  Put32(file.data() + offset, Get32(file.data() + offset) ^ bits);
}

// A file that we made and all that Access made.
std::vector<ByteVector> SoundFiles() {
  std::vector<ByteVector> files = {CreateInMemory(ProgramTables())};
  for (const auto& path : Samples()) files.push_back(ReadBytes(path));
  return files;
}

class RefusedFiles : public testing::Test {
 protected:
  // `{}` in `error` stands for the file's path.
  void ExpectRefused(const std::vector<std::uint8_t>& bytes, std::string error) {
    WriteBytes(path_, bytes);
    if (const std::size_t at = error.find("{}"); at != std::string::npos) {
      error.replace(at, 2, ToUtf8(path_.u16string()));
    }
    Connection connection;
    connection.SetConnectionString(ConnectionTo(path_));
    EXPECT_EQ(ErrorOf([&] { connection.Open(); }), error);
    EXPECT_EQ(connection.State(), 0);
    EXPECT_EQ(ErrorOf([&] { JetEngine().CompactDatabase(ConnectionTo(path_), ConnectionTo(other_)); }),
              error);
    EXPECT_FALSE(std::filesystem::exists(other_));
    EXPECT_TRUE(*ReadBytes(path_) == bytes);
    ExpectLetGo();
  }
  // Nobody holds the file: it can be opened for one alone, renamed and removed.
  void ExpectLetGo() {
    EXPECT_NO_THROW(OpenFile(path_, OpenMode::kReadWrite));
    EXPECT_NO_THROW(std::filesystem::rename(path_, other_));
    EXPECT_TRUE(std::filesystem::remove(other_));
  }

  ScopedFolder folder_;
  std::filesystem::path path_ = folder_ / "slot.dat", other_ = folder_ / "other.dat";
};

TEST_F(RefusedFiles, AreThoseWithAPassword) {
  for (const ByteVector& file : SoundFiles()) {
    Flip(*file, 0x42, u's' | std::uint32_t{u'e'} << 16);  // the password "se": page 0 is masked by a XOR
    ExpectRefused(*file, "80040E4D Not a valid password.");
  }
}

TEST_F(RefusedFiles, AreThoseThatAreEncoded) {
  for (const ByteVector& file : SoundFiles()) {
    Flip(*file, 0x3E, 0x12345678);
    ExpectRefused(*file,
                  "80004005 The database '{}' is encoded. Decode it with Access before using it here.");
  }
}

TEST_F(RefusedFiles, AreThoseOfEarlierGenerations) {
  for (const ByteVector& file : SoundFiles()) {
    Flip(*file, 0x14, 1 ^ 0);
    ExpectRefused(*file,
                  "80004005 Unrecognized database format '{}'. It is of Access 97 or earlier; save it with "
                  "Access as an Access 2000 database.");
  }
}

TEST_F(RefusedFiles, AreThoseOfLaterGenerations) {
  for (const ByteVector& file : SoundFiles()) {
    Flip(*file, 0x14, 1 ^ 2);
    ExpectRefused(*file,
                  "80004005 Unrecognized database format '{}'. It is of Access 2007 or later; save it with "
                  "Access as an Access 2000 database.");
  }
}

TEST_F(RefusedFiles, AreThoseOfOtherPrograms) {
  for (const ByteVector& file : SoundFiles()) {
    Flip(*file, 0x08, 0x20);
    ExpectRefused(*file, "80004005 Unrecognized database format '{}'.");
  }
}

TEST_F(RefusedFiles, LeaveTheConnectionReadyForAnother) {
  const ByteVector good = CreateInMemory(ProgramTables()), bad = CopyOf(good);
  Flip(*bad, 0x42, u'p');
  WriteBytes(path_, *bad);
  Connection connection;
  connection.SetConnectionString(ConnectionTo(path_));
  EXPECT_EQ(ErrorOf([&] { connection.Open(); }), "80040E4D Not a valid password.");
  WriteBytes(path_, *good);
  connection.Open();
  EXPECT_EQ(connection.Execute(u"INSERT INTO FTable (FileIndex) VALUES('1#K')"), 1u);
  connection.Close();
  ExpectLetGo();
}

// Tables of a file that opens, each statement refused for a reason of the table's own.
class RefusedTables : public RefusedFiles {
 protected:
  void Open(const char* sample) {
    if (const ByteVector bytes = SampleInMemory(sample)) {
      before_ = *bytes;
      WriteBytes(path_, before_);
      connection_.SetConnectionString(ConnectionTo(path_));
      connection_.Open();
    }
  }
  std::size_t Count(std::u16string_view select) {
    Recordset rows;
    rows.Open(select, connection_);
    return rows.RecordCount();
  }
  void ExpectUnchanged() {
    connection_.Close();
    EXPECT_TRUE(*ReadBytes(path_) == before_);
    ExpectLetGo();
  }

  std::vector<std::uint8_t> before_;
  Connection connection_;
};

TEST_F(RefusedTables, AreThoseWithAnIndexOverTextsThatHaveNoKey) {
  Open("unicode-text.mdb");
  if (before_.empty()) GTEST_SKIP() << "the sample is not there";
  const std::string refusal =
      "80004005 The table 'Table' has an index that cannot hold this text: it knows the characters of "
      "Western "
      "European languages only. Nothing was changed.";
  EXPECT_EQ(Count(u"SELECT * FROM [Table] WHERE Unicode=\"Мир\""), 1u);
  EXPECT_EQ(ErrorOf([&] { connection_.Execute(u"INSERT INTO [Table] (Unicode) VALUES(\"plain\")"); }),
            refusal);
  EXPECT_EQ(ErrorOf([&] { connection_.Execute(u"UPDATE [Table] SET Unicode=\"plain\" WHERE ID=1"); }),
            refusal);
  EXPECT_EQ(ErrorOf([&] { connection_.Execute(u"DELETE FROM [Table] WHERE ID=1"); }), refusal);
  EXPECT_EQ(ErrorOf([&] { connection_.Execute(u"DELETE FROM [Table]"); }), refusal);
  EXPECT_EQ(ErrorOf([&] {
              Recordset rows;
              rows.Open(u"SELECT * FROM [Table]", connection_);
              rows.AddNew();
              rows.SetField(u"Unicode", std::u16string(u"plain"));
              rows.Update();
            }),
            refusal);
  EXPECT_EQ(Count(u"SELECT * FROM [Table]"), 8u);
  ExpectUnchanged();
}

TEST_F(RefusedTables, AreTheEnginesOwn) {
  Open("unique-and-null-indexes.mdb");
  if (before_.empty()) GTEST_SKIP() << "the sample is not there";
  for (const char16_t* table : {u"MSysObjects", u"MSysACEs", u"MSysQueries", u"msysrelationships",
                                u"MSysAccessObjects", u"MSysAccessXML"}) {
    const std::u16string name(table);
    EXPECT_NE(ErrorOf([&] { connection_.Execute(u"DELETE FROM " + name); }), "no error") << ToUtf8(name);
    EXPECT_NO_THROW(Count(u"SELECT * FROM " + name)) << ToUtf8(name);
  }
  EXPECT_EQ(Count(u"SELECT * FROM MSysObjects"), 25u);
  ExpectUnchanged();
}

TEST_F(RefusedTables, LeaveTheOthersOfTheirFileWritable) {
  Open("unique-and-null-indexes.mdb");
  if (before_.empty()) GTEST_SKIP() << "the sample is not there";
  EXPECT_EQ(connection_.Execute(u"INSERT INTO TableUnique1_temp VALUES(\"new\", \"words\")"), 1u);
  EXPECT_NE(ErrorOf([&] {
              connection_.Execute(u"INSERT INTO TableUnique1_temp VALUES(\"newer\", \"WORDS\")");
            }).find("80004005 The changes you requested to the table were not successful"),
            std::string::npos);
  connection_.Close();
  connection_.Open();
  EXPECT_EQ(Count(u"SELECT * FROM TableUnique1_temp WHERE data=\"words\""), 1u);
  connection_.Close();
  ExpectLetGo();
}

}  // namespace
}  // namespace kestrelon::jet
