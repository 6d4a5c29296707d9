#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "jet/catalog/Catalog.h"
#include "jet/database/Database.h"
#include "jet/table/TableIndexes.h"
#include "jet/table/TableInternal.h"

namespace kestrelon::jet {

class DatabaseImpl;

class TableImpl final : public Table {
 public:
  TableImpl(DatabaseImpl& database, std::u16string name, TableDef def);

  const std::u16string& Name() const override { return table_.name; }
  const std::vector<Column>& Columns() const override { return table_.columns; }
  std::optional<std::size_t> FindColumn(std::u16string_view name) const override;
  std::uint32_t RowCount() const override { return table_.def.rowCount; }
  Cursor Rows() const override { return Cursor(table_); }
  RowId Insert(std::span<const Value> values) override;
  void Update(RowId row, std::span<const std::pair<std::size_t, Value>> changes) override;
  void Delete(RowId row) override;
  void DeleteAll() override;
  void CheckChangeable() override;
  std::int32_t LastAutoNumber() const override { return static_cast<std::int32_t>(table_.def.autoNumber); }

  TableInternal& Internal() { return table_; }
  const TableInternal& Internal() const { return table_; }

  // Adds a row whose bytes are ready, without a look at the indexes; for laying down a whole table.
  // SetCounts(), the indexes and the definition follow.
  RowId AppendRaw(std::span<const std::uint8_t> row);
  void SetCounts(std::uint32_t rowCount, std::uint32_t autoNumber);

  bool IndexesStale() const { return indexes_.Stale(); }
  bool Changed() const { return countsChanged_ || indexes_.Stale(); }
  // Writes what is kept beside the pages: stale indexes, row count, autonumber.
  void Settle();
  // Ends a transaction that touched the table.
  void Committed() { touched_ = false; }
  void RolledBack();

 private:
  struct Before {
    std::uint32_t rowCount, autoNumber;
    bool countsChanged, indexesStale;
  };

  void Touch();
  void StorePending(EncodedRow& row);
  void Place(const RowPlace& place, const EncodedRow& row);
  void RemoveSlot(std::uint32_t page, std::size_t slot);
  std::int32_t NextAutoNumber() const;

  DatabaseImpl* database_;
  TableInternal table_;
  RowEncoder encoder_;
  TableIndexes indexes_;
  std::optional<std::size_t> autoNumber_;  // position
  bool countsChanged_ = false;
  bool touched_ = false;
  Before before_{};
  EncodedRow row_;  // scratch
  std::vector<Field> fields_;
  std::vector<std::uint8_t> oldRow_;
};

class DatabaseImpl final : public Database {
 public:
  DatabaseImpl(std::unique_ptr<File> file, std::u16string name);
  // A new image, without tables; the header is written and pages up to the engine's definitions are reserved.
  explicit DatabaseImpl(std::span<const std::uint8_t> headerPage);

  std::vector<std::u16string> TableNames() const override;
  Table& OpenTable(std::u16string_view name) override;
  void Begin() override;
  void Commit() override;
  void Rollback() override;
  void SetLog(std::shared_ptr<RedoLog> log) override { pager_.SetLog(std::move(log)); }
  void Flush() override;
  bool Unfinished() const override { return pager_.Unfinished(); }
  bool Dirty() const override;
  std::unique_ptr<File> DetachFile() override { return pager_.DetachFile(); }
  void AttachFile(std::unique_ptr<File> file) override { pager_.AttachFile(std::move(file)); }
  void CompactInto(File& destination) override;
  std::vector<Finding> Check() override;

  Pager& Pages() { return pager_; }
  Catalog& Objects() { return catalog_; }
  // The table whose definition stands on this page.
  TableImpl& TableAt(std::uint32_t page, const std::u16string& name);
  void NoteTouched(TableImpl& table) { touched_.push_back(&table); }
  // Settles all tables: afterwards the pages hold everything.
  void Settle();

 private:
  Pager pager_;
  std::u16string name_;
  Catalog catalog_;
  std::map<std::uint32_t, std::unique_ptr<TableImpl>> tables_;
  std::vector<TableImpl*> touched_;
};

// Makes the changes of one call whole or not at all, unless the caller already sees to that.
class Atomic {
 public:
  explicit Atomic(DatabaseImpl& database) : database_(database), own_(!database.Pages().InTransaction()) {
    if (own_) database_.Begin();
  }
  ~Atomic() {
    if (own_) database_.Rollback();
  }
  Atomic(const Atomic&) = delete;
  Atomic& operator=(const Atomic&) = delete;
  void Done() {
    if (own_) database_.Commit();
    own_ = false;
  }

 private:
  DatabaseImpl& database_;
  bool own_;
};

}  // namespace kestrelon::jet
