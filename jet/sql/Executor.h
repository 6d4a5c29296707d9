#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/database/Database.h"
#include "jet/database/Table.h"
#include "jet/sql/Deletions.h"
#include "jet/sql/Lookups.h"
#include "jet/sql/Statement.h"

namespace kestrelon::jet::sql {

// The rows of one SELECT, as addresses: what is in them is read when it is asked for.
struct Selection {
  std::u16string table;
  std::vector<std::size_t> columns;  // positions in the table
  std::vector<RowId> rows;
};

// Runs statements on one open database. Every change of its tables must go through here: the lookups are kept
// in step with it.
class Executor {
 public:
  explicit Executor(Database& database) : database_(&database) {}
  Executor(const Executor&) = delete;
  Executor& operator=(const Executor&) = delete;

  // Runs one statement that changes rows; returns how many. It applies whole or not at all.
  std::size_t Execute(std::u16string_view sql);
  Selection Select(std::u16string_view sql);
  // Adds one row, its values of the columns' types already.
  RowId Append(std::u16string_view table, std::span<const Value> values);

  // Throws code::kNoSuchTable. The reference is good until Changes() counts on.
  Table& FindTable(std::u16string_view name);
  // Counts the statements that changed something, and those taken back.
  std::uint64_t Changes() const { return changes_; }
  // From now on, for as long as anybody holds the result, it is told of every row that is deleted.
  std::shared_ptr<Deletions> NoteDeletions();

 private:
  struct OpenedTable {
    std::u16string name;  // as it was written
    Table* table;
    Lookups* lookups;
  };
  class Transaction;

  OpenedTable& Open(std::u16string_view name);
  OpenedTable& OpenForWriting(std::u16string_view name);
  std::size_t InsertValues(Statement& statement);
  std::size_t InsertSelect(Statement& statement);
  std::size_t Update(Statement& statement);
  std::size_t Delete(Statement& statement);
  Selection Select(Statement& statement);
  std::vector<RowId> Matching(const OpenedTable& opened, class Condition& condition);

  Database* database_;
  Statement statement_;              // kept for its memory
  std::vector<Value> row_;           // the same
  std::vector<OpenedTable> opened_;  // a few spellings of a few names
  std::map<Table*, Lookups> lookups_;
  std::weak_ptr<Deletions> deletions_;
  std::uint64_t changes_ = 0;
};

}  // namespace kestrelon::jet::sql
