#include "bench/Subjects.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "jet/database/Database.h"

namespace kestrelon::bench {

namespace {

void Check(int result, sqlite3* database) {
  if (result == SQLITE_OK || result == SQLITE_ROW || result == SQLITE_DONE) return;
  std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(database));
  std::abort();
}

std::string Padded(std::size_t number, std::size_t digits) {
  std::string text = std::to_string(number);
  return std::string(digits > text.size() ? digits - text.size() : 0, '0') + text;
}

}  // namespace

Text MakeText(const std::string& utf8) { return {jet::FromUtf8(utf8), utf8}; }

std::string CategoryKey(std::size_t category) { return "S00421115131703" + Padded(category, 4) + "_"; }

std::string FileIndex(std::size_t item) {
  return std::to_string(item % kPerCategory + 1) + "#" + CategoryKey(item / kPerCategory);
}

Text InsertItem(std::size_t item) {
  const std::string name = "Quarterly report " + std::to_string(item);
  return MakeText("INSERT INTO FTable VALUES(\"" + CategoryKey(item / kPerCategory) + "\",\"" +
                  FileIndex(item) + "\",\"" + name + "\",\"" + name +
                  ".docx\",\"C:\\Users\\someone\\Documents\\Reports\\" + name +
                  ".docx\",\"15/11/2026 13:20:05\",'')");
}

Text InsertCategory(std::size_t category) {
  return MakeText("INSERT INTO TreeviewTable(parent,key,text) VALUES(\"" + CategoryKey(category / 20) +
                  "\",\"" + CategoryKey(category) + "\",\"Category " + std::to_string(category) + "\")");
}

Folder::Folder() {
  static std::atomic<unsigned> count = 0;
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  path_ = std::filesystem::temp_directory_path() /
          ("jet-bench-" + std::to_string(now) + "-" + std::to_string(++count));
  std::filesystem::create_directories(path_);
}

Folder::~Folder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

JetSubject::JetSubject() {
  using jet::ColumnType;
  const std::vector<jet::NewTable> tables = {{u"FTable",
                                              {{u"TreeviewNode", ColumnType::kText, 50},
                                               {u"FileIndex", ColumnType::kText, 50},
                                               {u"DefineName", ColumnType::kText, 255},
                                               {u"Filename", ColumnType::kText, 255},
                                               {u"LocalFile", ColumnType::kMemo},
                                               {u"InsertTime", ColumnType::kText, 50},
                                               {u"Comment", ColumnType::kMemo}},
                                              u""},
                                             {u"TreeviewTable",
                                              {{u"i", ColumnType::kLong, 0, true},
                                               {u"parent", ColumnType::kText, 50},
                                               {u"key", ColumnType::kText, 50},
                                               {u"text", ColumnType::kText, 255}},
                                              u"i"}};
  jet::CreateDatabase(*jet::OpenFile(File(), jet::OpenMode::kCreate), tables, 46341.0);
  BuildLookups();
}

JetSubject::JetSubject(const JetSubject& other) {
  std::filesystem::copy_file(other.File(), File());
  BuildLookups();
}

// From here on both lookups exist and every statement pays for them.
void JetSubject::BuildLookups() {
  connection_.SetConnectionString(ConnectionString());
  connection_.Open();
  connection_.Execute(u"DELETE FROM FTable WHERE TreeviewNode=\"none\"");
  connection_.Execute(u"DELETE FROM FTable WHERE FileIndex=\"none\"");
  connection_.Close();
}

std::u16string JetSubject::ConnectionString() const { return u"Data Source=" + File().u16string(); }

std::size_t JetSubject::Read(const Text& text) {
  jet::Recordset rows;
  rows.Open(text.utf16, connection_);
  std::size_t size = 0;
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    for (std::size_t column = 0; column < 7; ++column) size += rows.Text(column).size();
  }
  return size;
}

SqliteSubject::SqliteSubject() {
  Open();
  // Texts compare without regard to case in both.
  for (const char* text :
       {"CREATE TABLE FTable (TreeviewNode TEXT COLLATE NOCASE, FileIndex TEXT COLLATE NOCASE, DefineName "
        "TEXT, "
        "Filename TEXT, LocalFile TEXT, InsertTime TEXT, Comment TEXT)",
        "CREATE INDEX ByNode ON FTable (TreeviewNode)", "CREATE INDEX ByIndex ON FTable (FileIndex)",
        "CREATE TABLE TreeviewTable (i INTEGER PRIMARY KEY, parent TEXT, key TEXT, text TEXT)"}) {
    Execute(MakeText(text));
  }
}

SqliteSubject::SqliteSubject(const SqliteSubject& other) {
  std::filesystem::copy_file(other.File(), File());
  Open();
}

SqliteSubject::~SqliteSubject() { sqlite3_close(database_); }

void SqliteSubject::Open() {
  Check(sqlite3_open(File().string().c_str(), &database_), database_);
  Execute(MakeText("PRAGMA locking_mode=EXCLUSIVE"));
  Execute(MakeText("PRAGMA journal_mode=MEMORY"));
  Execute(MakeText("PRAGMA synchronous=NORMAL"));
  Execute(MakeText("PRAGMA cache_size=-1000000"));
}

void SqliteSubject::UseDefaultCache() { Execute(MakeText("PRAGMA cache_size=-2000")); }

void SqliteSubject::Forget() {
  sqlite3_close(database_);
  Open();
}

void SqliteSubject::Execute(const Text& text) {
  sqlite3_stmt* statement = nullptr;
  Check(sqlite3_prepare_v2(database_, text.utf8.data(), static_cast<int>(text.utf8.size()), &statement,
                           nullptr),
        database_);
  Check(sqlite3_step(statement), database_);
  sqlite3_finalize(statement);
}

std::size_t SqliteSubject::Read(const Text& text) {
  sqlite3_stmt* statement = nullptr;
  Check(sqlite3_prepare_v2(database_, text.utf8.data(), static_cast<int>(text.utf8.size()), &statement,
                           nullptr),
        database_);
  std::size_t size = 0;
  while (sqlite3_step(statement) == SQLITE_ROW) {
    for (int column = 0; column < 7; ++column) {
      if (sqlite3_column_text(statement, column) != nullptr) {
        size += static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
      }
    }
  }
  sqlite3_finalize(statement);
  return size;
}

void SqliteSubject::Begin() { Execute(MakeText("BEGIN")); }
void SqliteSubject::End() { Execute(MakeText("COMMIT")); }

}  // namespace kestrelon::bench
