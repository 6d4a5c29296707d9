// Thousands of random statements, run on the engine and on a model that is as simple as can be: a vector of
// rows of texts.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "jet/Ado.h"
#include "jet/sql/TextCompare.h"
#include "tests/jet/sql/SqlTestSupport.h"

namespace kestrelon::jet {
namespace {

using sqltest::ConnectionStringOf;
using sqltest::Decimal;
using sqltest::MakeDatabaseFile;
using sqltest::ScopedTestDir;

constexpr std::array<const char16_t*, 7> kColumns = {
    u"TreeviewNode", u"FileIndex", u"DefineName", u"Filename", u"LocalFile", u"InsertTime", u"Comment"};
constexpr std::array<std::size_t, 7> kLengths = {50, 50, 255, 255, 65535, 50, 65535};

using Field = std::optional<std::u16string>;  // empty: NULL
using Row = std::array<Field, 7>;

// A condition on one column, or none.
struct Filter {
  std::size_t column = 0;
  Field value;
  bool all = false;
  bool negated = false;

  bool Selects(const Row& row) const {
    if (all) return true;
    if (!value) return row[column].has_value() == negated;
    if (!row[column]) return false;
    return sql::TextsEqual(*row[column], *value) != negated;
  }
  std::u16string Sql() const {
    if (all) return u"";
    const std::u16string column_ = kColumns[column];
    if (!value) return u" WHERE " + column_ + (negated ? u" IS NOT NULL" : u" IS NULL");
    return u" WHERE " + column_ + (negated ? u"<>" : u"=") + Quoted(*value);
  }
  static std::u16string Quoted(const std::u16string& text) {
    std::u16string quoted = u"\"";
    for (const char16_t c : text) quoted += c == u'"' ? std::u16string(u"\"\"") : std::u16string(1, c);
    return quoted + u"\"";
  }
};

class RandomStatements : public ::testing::TestWithParam<unsigned> {
 protected:
  RandomStatements() : random(GetParam()), path(MakeDatabaseFile(folder / "random.dat")) {
    connection.SetConnectionString(ConnectionStringOf(path));
    connection.Open();
  }

  std::size_t Below(std::size_t limit) { return random() % limit; }

  std::u16string Text(std::size_t column) {
    static const std::u16string alphabet = u"aAbB zZ019_-'\"\\.#\t\r\n\u00E9\u00DF\u00FF\u0416\u6F22";
    if (column == 0) return u"K" + Decimal(Below(12)) + u"_";
    std::size_t length = Below(30);
    if (column == 4) length = Below(120);
    if (column == 6 && Below(8) == 0) length = Below(9000);  // beyond what fits in a row and in one page
    if (Below(40) == 0) length = 300;                        // too long for a text column
    std::u16string text;
    const bool ascii = Below(2) == 0;
    while (text.size() < length) text += alphabet[Below(ascii ? 14 : alphabet.size())];
    return text;
  }
  Field AnyField(std::size_t column) {
    if (column == 1) return Decimal(Below(400)) + u"#K";
    if (Below(10) == 0) return std::nullopt;
    return Text(column);
  }
  static std::u16string Literal(const Field& field) { return field ? Filter::Quoted(*field) : u"NULL"; }

  Filter AnyFilter(bool mayBeAll) {
    Filter filter;
    filter.all = mayBeAll && Below(40) == 0;
    filter.column = Below(10) == 0 ? Below(7) : Below(2);
    filter.value =
        filter.column > 1 && Below(10) == 0 ? std::nullopt : Field(AnyField(filter.column).value_or(u""));
    filter.negated = Below(60) == 0;
    return filter;
  }

  // Runs the statement; the model's result tells whether it must fail.
  void Execute(const std::u16string& sql, std::optional<std::size_t> expected) {
    SCOPED_TRACE(ToUtf8(sql.substr(0, 300)));
    try {
      const std::size_t count = connection.Execute(sql);
      ASSERT_TRUE(expected.has_value()) << "should have failed";
      ASSERT_EQ(count, *expected);
    } catch (const Error& error) {
      ASSERT_FALSE(expected.has_value()) << error.what();
      ASSERT_EQ(error.Number(), code::kTooLong) << error.what();
    }
  }

  void Insert() {
    Row row;
    std::u16string sql = u"INSERT INTO FTable VALUES(";
    bool fits = true;
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i] = AnyField(i);
      fits = fits && row[i].value_or(u"").size() <= kLengths[i];
      sql += (i == 0 ? u"" : u",") + Literal(row[i]);
    }
    if (fits) items.push_back(row);
    Execute(sql + u")", fits ? std::optional<std::size_t>(1) : std::nullopt);
  }

  void Update() {
    const Filter filter = AnyFilter(false);
    const std::size_t first = Below(7);
    const std::size_t second = (first + 1 + Below(6)) % 7;
    const Field value = AnyField(first);
    const bool copy = Below(4) == 0;
    const Field otherValue = AnyField(second);
    std::u16string sql = u"UPDATE FTable SET " + std::u16string(kColumns[first]) + u"=" + Literal(value);
    sql += u"," + std::u16string(kColumns[second]) + u"=" +
           (copy ? std::u16string(kColumns[first]) : Literal(otherValue));

    std::vector<Row> changed = items;
    std::size_t count = 0;
    bool fits = true;
    for (Row& row : changed) {
      if (!filter.Selects(row)) continue;
      ++count;
      const Field source = copy ? row[first] : otherValue;
      row[first] = value;
      row[second] = source;
      fits = fits && value.value_or(u"").size() <= kLengths[first] &&
             source.value_or(u"").size() <= kLengths[second];
    }
    if (fits) items = changed;
    Execute(sql + filter.Sql(), fits ? std::optional(count) : std::nullopt);
  }

  void Delete() {
    const Filter filter = AnyFilter(true);
    const std::size_t count = std::erase_if(items, [&](const Row& row) { return filter.Selects(row); });
    Execute((Below(2) == 0 ? u"DELETE * FROM ftable" : u"DELETE FROM FTable") + filter.Sql(), count);
  }

  void Copy() {
    if (Below(2) == 0) {
      Execute(u"DELETE FROM FBackup", backup.size());
      backup.clear();
    }
    const Filter filter = AnyFilter(true);
    std::size_t count = 0;
    for (const Row& row : items) {
      if (!filter.Selects(row)) continue;
      backup.push_back(row);
      ++count;
    }
    Execute(u"INSERT INTO FBackup SELECT * FROM FTablE" + filter.Sql(), count);
  }

  void Select() {
    const Filter filter = AnyFilter(true);
    std::vector<Row> expected;
    std::copy_if(items.begin(), items.end(), std::back_inserter(expected),
                 [&](const Row& row) { return filter.Selects(row); });
    std::vector<Row> actual = Read(u"SELECT * FROM FTable" + filter.Sql());
    ExpectSameRows(actual, expected);
  }

  std::vector<Row> Read(const std::u16string& sql) {
    std::vector<Row> rows;
    Recordset records;
    records.Open(sql, connection);
    for (; !records.EndOfFile(); records.MoveNext()) {
      Row& row = rows.emplace_back();
      for (std::size_t i = 0; i < row.size(); ++i) {
        const Value value = records.Fields(kColumns[i]);
        if (const auto* text = std::get_if<std::u16string>(&value)) row[i] = *text;
      }
    }
    return rows;
  }

  // Deleted rows leave room that later rows may take, so the order is not the model's.
  void ExpectSameRows(std::vector<Row> actual, std::vector<Row> expected) {
    ASSERT_EQ(actual.size(), expected.size());
    std::sort(actual.begin(), actual.end());
    std::sort(expected.begin(), expected.end());
    for (std::size_t i = 0; i < actual.size(); ++i) {
      for (std::size_t column = 0; column < kColumns.size(); ++column) {
        ASSERT_EQ(actual[i][column].has_value(), expected[i][column].has_value());
        ASSERT_EQ(ToUtf8(actual[i][column].value_or(u"")), ToUtf8(expected[i][column].value_or(u"")));
      }
    }
  }

  void CheckFile() {
    connection.Close();
    const std::unique_ptr<Database> file = Database::Open(OpenFile(path, OpenMode::kRead), path.u16string());
    EXPECT_EQ(file->Check(), std::vector<Finding>());
  }

  std::mt19937 random;
  ScopedTestDir folder;
  std::filesystem::path path;
  Connection connection;
  std::vector<Row> items;
  std::vector<Row> backup;
};

#ifndef _WIN32
// What an independent reader of the format sees in FTable, rows by 0x1E and fields by 0x1F; nothing where it
// is not installed. It shows no difference between NULL and the empty text.
std::optional<std::string> IndependentReading(const std::filesystem::path& path) {
  if (std::system("command -v mdb-export >/dev/null 2>&1") != 0) return std::nullopt;
  const std::string command = "mdb-export -H -Q -d \"$(printf '\\037')\" -R \"$(printf '\\036')\" '" +
                              path.string() + "' FTable 2>/dev/null";
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return std::nullopt;
  std::string output;
  char buffer[65536];
  for (std::size_t size = 0; (size = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    output.append(buffer, size);
  return pclose(pipe) == 0 ? std::optional(output) : std::nullopt;
}
#endif

TEST_P(RandomStatements, DoWhatTheyDoToAModel) {
  for (int step = 1; step <= 2500; ++step) {
    const std::size_t kind = Below(100);
    if (kind < 45) {
      Insert();
    } else if (kind < 65) {
      Update();
    } else if (kind < 75) {
      Delete();
    } else if (kind < 77) {
      Copy();
    } else {
      Select();
    }
    if (HasFatalFailure()) return;
    if (step % 500 == 0) {
      CheckFile();
      if (step % 1000 == 0) connection.Forget();
      connection.Open();
      ExpectSameRows(Read(u"SELECT * FROM FTable"), items);
      ExpectSameRows(Read(u"SELECT * FROM FBackup"), backup);
      if (HasFailure()) return;
    }
  }
}

#ifndef _WIN32
TEST_P(RandomStatements, LeaveAFileThatAnotherReaderReadsTheSame) {
  for (int step = 1; step <= 1500; ++step) {
    const std::size_t kind = Below(100);
    if (kind < 70) {
      Insert();
    } else if (kind < 85) {
      Update();
    } else {
      Delete();
    }
    if (HasFatalFailure()) return;
  }
  connection.Close();
  const std::optional<std::string> reading = IndependentReading(path);
  if (!reading) GTEST_SKIP() << "mdb-export is not installed";

  std::vector<std::string> actual, expected;
  for (std::size_t start = 0; start < reading->size();) {
    const std::size_t end = reading->find('\x1E', start);
    ASSERT_NE(end, std::string::npos);
    actual.push_back(reading->substr(start, end - start));
    start = end + 1;
  }
  for (const Row& row : items) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i)
      line += (i == 0 ? "" : "\x1F") + ToUtf8(row[i].value_or(u""));
    expected.push_back(line);
  }
  std::sort(actual.begin(), actual.end());
  std::sort(expected.begin(), expected.end());
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) ASSERT_EQ(actual[i], expected[i]);
}
#endif

INSTANTIATE_TEST_SUITE_P(Seeds, RandomStatements, ::testing::Values(1U, 2U, 3U, 4U));

}  // namespace
}  // namespace kestrelon::jet
