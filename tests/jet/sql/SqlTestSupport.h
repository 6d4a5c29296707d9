#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "jet/base/Error.h"
#include "jet/base/File.h"
#include "jet/database/Database.h"
#include "jet/sql/Convert.h"
#include "jet/sql/Executor.h"

namespace kestrelon::jet {

// Lets the messages of failed expectations be read.
inline std::ostream& operator<<(std::ostream& out, RowId row) {
  return out << static_cast<std::uint32_t>(row);
}

inline void PrintTo(const Finding& finding, std::ostream* out) { *out << finding.text; }

namespace sqltest {

inline std::vector<NewTable> ProgramTables() {
  const std::vector<NewColumn> items = {
      {u"TreeviewNode", ColumnType::kText, 50}, {u"FileIndex", ColumnType::kText, 50},
      {u"DefineName", ColumnType::kText, 255},  {u"Filename", ColumnType::kText, 255},
      {u"LocalFile", ColumnType::kMemo},        {u"InsertTime", ColumnType::kText, 50},
      {u"Comment", ColumnType::kMemo}};
  const std::vector<NewColumn> categories = {{u"i", ColumnType::kLong, 0, true},
                                             {u"parent", ColumnType::kText, 50},
                                             {u"key", ColumnType::kText, 50},
                                             {u"text", ColumnType::kText, 255}};
  return {{u"FTable", items, u""}, {u"FBackup", items, u""}, {u"TreeviewTable", categories, u"i"}};
}

// One column of each type that a table can be made with.
inline NewTable AllTypes() {
  return {u"Types",
          {{u"b", ColumnType::kBoolean},
           {u"y", ColumnType::kByte},
           {u"n", ColumnType::kInteger},
           {u"l", ColumnType::kLong},
           {u"c", ColumnType::kCurrency},
           {u"s", ColumnType::kSingle},
           {u"d", ColumnType::kDouble},
           {u"t", ColumnType::kDate},
           {u"x", ColumnType::kText, 20},
           {u"m", ColumnType::kMemo}},
          u""};
}

// A database in memory with the program's tables and one of all types.
class MemoryDatabase {
 public:
  MemoryDatabase() {
    std::vector<NewTable> tables = ProgramTables();
    tables.push_back(AllTypes());
    const std::unique_ptr<File> file = OpenMemoryFile(bytes);
    CreateDatabase(*file, tables, 45000.5);
    Reopen();
  }
  void Reopen() {
    executor.reset();
    database.reset();
    database = Database::Open(OpenMemoryFile(bytes), u"memory");
    executor = std::make_unique<sql::Executor>(*database);
  }
  std::size_t Execute(std::u16string_view text) { return executor->Execute(text); }
  // The rows of a SELECT as texts, NULL as "NULL".
  std::vector<std::vector<std::u16string>> Rows(std::u16string_view text) {
    const sql::Selection selection = executor->Select(text);
    const Table& table = executor->FindTable(selection.table);
    std::vector<std::vector<std::u16string>> rows;
    Cursor cursor = table.Rows();
    Value value;
    for (const RowId id : selection.rows) {
      cursor.MoveTo(id);
      std::vector<std::u16string>& row = rows.emplace_back();
      for (const std::size_t column : selection.columns) {
        cursor.Read(column, value);
        row.push_back(IsNull(value) ? u"NULL" : sql::ToText(value, table.Columns()[column].type));
      }
    }
    return rows;
  }
  // The first column of a SELECT, joined with blanks.
  std::u16string Column(std::u16string_view text) {
    std::u16string joined;
    for (const auto& row : Rows(text)) joined += (joined.empty() ? u"" : u" ") + row.at(0);
    return joined;
  }

  std::shared_ptr<std::vector<std::uint8_t>> bytes = std::make_shared<std::vector<std::uint8_t>>();
  std::unique_ptr<Database> database;
  std::unique_ptr<sql::Executor> executor;
};

// Runs `action`, which must throw an Error with this number and description.
template <class Action>
void ExpectError(std::uint32_t number, std::u16string_view description, Action&& action) {
  try {
    action();
    ADD_FAILURE() << "no error, but expected: " << ToUtf8(description);
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), number) << error.what();
    EXPECT_EQ(ToUtf8(error.Description()), ToUtf8(description));
  }
}

// A folder of the test's own, removed with it.
class ScopedTestDir {
 public:
  ScopedTestDir() {
    static std::atomic<unsigned> count = 0;
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    std::random_device seed;
    path_ = std::filesystem::temp_directory_path() /
            ("jet-sql-" + std::to_string(now) + "-" + std::to_string(seed()) + "-" + std::to_string(++count));
    std::filesystem::create_directories(path_);
  }
  ~ScopedTestDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScopedTestDir(const ScopedTestDir&) = delete;
  ScopedTestDir& operator=(const ScopedTestDir&) = delete;
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

inline std::filesystem::path MakeDatabaseFile(const std::filesystem::path& path) {
  const std::unique_ptr<File> file = OpenFile(path, OpenMode::kCreate);
  CreateDatabase(*file, ProgramTables(), 45000.5);
  return path;
}

inline std::u16string Decimal(std::size_t number) {
  const std::string digits = std::to_string(number);
  return {digits.begin(), digits.end()};
}

inline std::u16string ConnectionStringOf(const std::filesystem::path& path) {
  return u"Provider=Microsoft.Jet.OLEDB.4.0;Persist Security Info=False;Data Source=" + path.u16string();
}

}  // namespace sqltest
}  // namespace kestrelon::jet
