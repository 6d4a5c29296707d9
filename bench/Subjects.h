#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "jet/Ado.h"

namespace kestrelon::bench {

// A statement in the form each of the two takes; made before the clock starts.
struct Text {
  std::u16string utf16;
  std::string utf8;
};
Text MakeText(const std::string& utf8);

// Items in categories of a hundred, with keys, names and paths as long as the program's.
inline constexpr std::size_t kPerCategory = 100;
std::string CategoryKey(std::size_t category);
std::string FileIndex(std::size_t item);
Text InsertItem(std::size_t item);
Text InsertCategory(std::size_t category);

// A folder that is removed with the object.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Either database as the benchmarks use it: FTable with an index or a lookup on TreeviewNode and on
// FileIndex, and TreeviewTable with its primary key. One connection's work stands between Begin() and End(),
// after which everything is on the disk.
class JetSubject {
 public:
  static constexpr const char* kName = "engine";

  JetSubject();                         // empty
  JetSubject(const JetSubject& other);  // a copy of the file, closed
  JetSubject& operator=(const JetSubject&) = delete;
  void Execute(const Text& text) { connection_.Execute(text.utf16); }
  // Bytes of all fields of all rows of the SELECT.
  std::size_t Read(const Text& text);
  void Connect() {}
  void Begin() { connection_.Open(); }
  void End() { connection_.Close(); }
  // The next Begin() finds a file that this process has not read.
  void Forget() { connection_.Forget(); }
  std::filesystem::path File() const { return folder_.Path() / "bench.mdb"; }
  std::u16string ConnectionString() const;

 private:
  void BuildLookups();

  Folder folder_;
  jet::Connection connection_;
};

class SqliteSubject {
 public:
  static constexpr const char* kName = "SQLite";

  SqliteSubject();
  SqliteSubject(const SqliteSubject& other);
  ~SqliteSubject();
  SqliteSubject& operator=(const SqliteSubject&) = delete;
  void Execute(const Text& text);
  std::size_t Read(const Text& text);
  // A new connection; the first one stays open from Begin() to Begin().
  void Connect() { Forget(); }
  // One transaction.
  void Begin();
  void End();
  void Forget();
  std::filesystem::path File() const { return folder_.Path() / "bench.sqlite"; }
  // The page cache that it has unless told otherwise, 2 MB.
  void UseDefaultCache();

 private:
  void Open();

  Folder folder_;
  sqlite3* database_ = nullptr;
};

template <class Subject>
void Fill(Subject& subject, std::size_t items, std::size_t categories) {
  subject.Begin();
  for (std::size_t i = 0; i < items; ++i) subject.Execute(InsertItem(i));
  for (std::size_t i = 0; i < categories; ++i) subject.Execute(InsertCategory(i));
  subject.End();
}

}  // namespace kestrelon::bench
