#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jet/base/Error.h"
#include "jet/database/Database.h"

namespace kestrelon::jet {

using ByteVector = std::shared_ptr<std::vector<std::uint8_t>>;
using Row = std::vector<Value>;
// The rows of a table by their address, which is also their physical order.
using Rows = std::map<RowId, Row>;

// The tables that the program itself uses.
std::vector<NewTable> ProgramTables();
// A row of FTable with these texts.
Row ItemRow(std::u16string node, std::u16string index, std::u16string name, std::u16string file,
            std::u16string localFile, std::u16string time, std::u16string comment);
// A row whose texts differ from row to row in length and kind of characters.
Row VariedRow(int number);
// `length` characters made of `unit` repeated.
std::u16string Repeat(std::u16string_view unit, std::size_t length);

// A file in memory with these tables.
ByteVector CreateInMemory(const std::vector<NewTable>& tables);
std::unique_ptr<Database> OpenInMemory(const ByteVector& bytes);
// A second, independent copy of a file.
ByteVector CopyOf(const ByteVector& bytes);

Rows ReadAll(Table& table);
// Reads the file anew and compares; the file must also pass its check.
void ExpectRows(const ByteVector& bytes, std::u16string_view table, const Rows& expected);

// A database over a file in memory, and what its FTable should hold.
struct Fixture {
  explicit Fixture(const std::vector<NewTable>& tables = ProgramTables());
  Table& Items() { return database->OpenTable(u"FTable"); }
  Table& Tree() { return database->OpenTable(u"TreeviewTable"); }
  RowId Insert(Row row);
  void Update(RowId row, std::size_t column, Value value);
  void Delete(RowId row);
  // Flushes, reads the file anew and compares FTable with the model.
  void FlushAndCompare();
  // The rows as they are now, without a flush.
  void Compare();
  void Reopen();

  ByteVector bytes;
  std::unique_ptr<Database> database;
  Rows model;
};

// What a file holds: the rows of all tables with their addresses.
using Content = std::map<std::u16string, Rows>;
Content ContentOf(Database& database);

// A file with rows of every shape: short memos that share pages, memos of several pages, and a category table
// with its index.
ByteVector FileWithRows(int items, int categories);
// Changes of many rows at once. Every `step`-th row from the first one on.
void UpdateEvery(Table& table, int step, std::size_t column, const Value& value);
void DeleteEvery(Table& table, int step);
// VariedRow(first) and those behind it.
void InsertRows(Table& table, int first, int count);

// Lets the messages of failed expectations be read.
inline void PrintTo(const Finding& finding, std::ostream* out) { *out << finding.text; }

// A finding of a kind whose text holds `part`.
inline auto IsFinding(Finding::Kind kind, const std::string& part) {
  return testing::AllOf(testing::Field(&Finding::kind, kind),
                        testing::Field(&Finding::text, testing::HasSubstr(part)));
}

// A folder of the test's own, removed at its end.
class ScopedFolder {
 public:
  ScopedFolder();
  ~ScopedFolder();
  ScopedFolder(const ScopedFolder&) = delete;
  ScopedFolder& operator=(const ScopedFolder&) = delete;
  std::filesystem::path operator/(const char* name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// Runs `body`, which must throw Error, and returns the error's number.
template <class Body>
std::uint32_t ErrorNumberOf(Body&& body) {
  try {
    body();
  } catch (const Error& error) {
    return error.Number();
  }
  return 0;
}

}  // namespace kestrelon::jet
