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

// Items in categories of `perCategory`, with keys, names and paths as long as the program's.
std::string CategoryKey(std::size_t category);
std::string FileIndex(std::size_t item, std::size_t perCategory);
std::vector<Text> InsertTexts(std::size_t items, std::size_t perCategory);

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

// Either database as the benchmarks use it: FTable alone, with an index or a lookup on TreeviewNode and on
// FileIndex.
class JetSubject {
 public:
  JetSubject();
  void Execute(const Text& text) { connection_.Execute(text.utf16); }
  // Bytes of all fields of all rows of the SELECT.
  std::size_t Read(const Text& text);
  // One connection's work is done: everything goes to the disk.
  void Begin() { connection_.Open(); }
  void End() { connection_.Close(); }
  std::filesystem::path File() const { return folder_.Path() / "bench.mdb"; }
  std::u16string ConnectionString() const;

 private:
  Folder folder_;
  jet::Connection connection_;
};

class SqliteSubject {
 public:
  SqliteSubject();
  ~SqliteSubject();
  SqliteSubject(const SqliteSubject&) = delete;
  SqliteSubject& operator=(const SqliteSubject&) = delete;
  void Execute(const Text& text);
  std::size_t Read(const Text& text);
  // One transaction.
  void Begin();
  void End();

 private:
  Folder folder_;
  sqlite3* database_ = nullptr;
};

}  // namespace kestrelon::bench
