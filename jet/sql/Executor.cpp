#include "jet/sql/Executor.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "jet/base/Error.h"
#include "jet/sql/Condition.h"
#include "jet/sql/Convert.h"
#include "jet/sql/OrderBy.h"
#include "jet/sql/Parser.h"
#include "jet/sql/TextCompare.h"

namespace kestrelon::jet::sql {

namespace {

[[noreturn]] void MissingParameter() {
  throw Error(code::kMissingParameter, u"No value given for one or more required parameters.");
}

[[noreturn]] void CountDiffers() {
  throw Error(code::kSyntax, u"Number of query values and destination fields are not the same.");
}

std::size_t InsertColumn(const Table& table, const std::u16string& name) {
  if (const std::optional<std::size_t> column = table.FindColumn(name)) return *column;
  throw Error(code::kSyntax,
              u"The INSERT INTO statement contains the following unknown field name: '" + name +
                  u"'. Make sure you have typed the name correctly, and try the operation again.");
}

void CheckUnique(const std::vector<std::size_t>& columns, const Table& table) {
  std::vector<bool> seen(table.Columns().size());
  for (const std::size_t column : columns) {
    if (seen[column]) {
      throw Error(code::kSyntax, u"Duplicate output destination '" + table.Columns()[column].name + u"'.");
    }
    seen[column] = true;
  }
}

void CheckQualifiers(const Statement& statement, const Table& table) {
  for (const std::u16string& qualifier : statement.qualifiers) {
    if (!SameName(qualifier, table.Name())) MissingParameter();
  }
}

// The columns that INSERT fills: those of its list, or all.
std::vector<std::size_t> TargetColumns(const Statement& statement, const Table& table) {
  std::vector<std::size_t> targets;
  for (const std::u16string& name : statement.columns) targets.push_back(InsertColumn(table, name));
  CheckUnique(targets, table);
  return targets;
}

// Rows start as NULL in every column; booleans have no NULL.
void ClearRow(const Table& table, std::vector<Value>& row) {
  row.assign(table.Columns().size(), Value());
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (table.Columns()[i].type == ColumnType::kBoolean) row[i] = false;
  }
}

}  // namespace

// Takes back what was done since its making unless told to keep it.
class Executor::Transaction {
 public:
  explicit Transaction(Executor& executor) : executor_(&executor) { executor_->database_->Begin(); }
  ~Transaction() {
    if (kept_) return;
    executor_->database_->Rollback();
    // The tables are other objects now, and the lookups may be half changed.
    executor_->opened_.clear();
    executor_->lookups_.clear();
    ++executor_->changes_;
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void Keep() {
    executor_->database_->Commit();
    kept_ = true;
    ++executor_->changes_;
  }

 private:
  Executor* executor_;
  bool kept_ = false;
};

Executor::OpenedTable& Executor::Open(std::u16string_view name) {
  for (OpenedTable& opened : opened_) {
    if (opened.name == name) return opened;
  }
  Table& table = database_->OpenTable(name);
  constexpr std::size_t kSpellings = 32;
  if (opened_.size() >= kSpellings) opened_.clear();
  return opened_.emplace_back(OpenedTable{std::u16string(name), &table, &lookups_[&table]});
}

Executor::OpenedTable& Executor::OpenForWriting(std::u16string_view name) {
  OpenedTable& opened = Open(name);
  if (SameName(opened.table->Name().substr(0, 4), u"MSys")) {
    throw Error(code::kGeneric,
                u"Cannot update '" + opened.table->Name() + u"': the engine's own tables are read-only.");
  }
  return opened;
}

std::shared_ptr<Deletions> Executor::NoteDeletions() {
  std::shared_ptr<Deletions> deletions = deletions_.lock();
  if (!deletions) {
    deletions = std::make_shared<Deletions>();
    deletions_ = deletions;
  }
  return deletions;
}

Table& Executor::FindTable(std::u16string_view name) { return *Open(name).table; }

std::size_t Executor::Execute(std::u16string_view sql) {
  Parse(sql, statement_);
  switch (statement_.verb) {
    case Statement::Verb::kInsertValues: return InsertValues(statement_);
    case Statement::Verb::kInsertSelect: return InsertSelect(statement_);
    case Statement::Verb::kUpdate: return Update(statement_);
    case Statement::Verb::kDelete: return Delete(statement_);
    case Statement::Verb::kSelect: break;
  }
  throw Error(code::kGeneric, u"Cannot execute a select query.");
}

std::size_t Executor::InsertValues(Statement& statement) {
  OpenedTable& opened = OpenForWriting(statement.table);
  const std::vector<Column>& columns = opened.table->Columns();
  std::vector<Value>* row = &statement.values;
  if (statement.columns.empty()) {
    if (statement.values.size() != columns.size()) CountDiffers();
    if (statement.hasParameter) MissingParameter();
  } else {
    const std::vector<std::size_t> targets = TargetColumns(statement, *opened.table);
    if (statement.values.size() != targets.size()) CountDiffers();
    if (statement.hasParameter) MissingParameter();
    ClearRow(*opened.table, row_);
    for (std::size_t i = 0; i < targets.size(); ++i) row_[targets[i]] = std::move(statement.values[i]);
    for (std::size_t& position : statement.dateValues) position = targets[position];
    row = &row_;
  }
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].type == ColumnType::kText && std::holds_alternative<std::u16string>((*row)[i])) continue;
    const bool isDate =
        std::find(statement.dateValues.begin(), statement.dateValues.end(), i) != statement.dateValues.end();
    ConvertTo(columns[i].type, (*row)[i], isDate);
  }
  Transaction transaction(*this);
  const RowId added = opened.table->Insert(*row);
  if (opened.lookups->Any()) opened.lookups->Inserted(*opened.table, added);
  transaction.Keep();
  return 1;
}

RowId Executor::Append(std::u16string_view name, std::span<const Value> values) {
  OpenedTable& opened = OpenForWriting(name);
  Transaction transaction(*this);
  const RowId added = opened.table->Insert(values);
  if (opened.lookups->Any()) opened.lookups->Inserted(*opened.table, added);
  transaction.Keep();
  return added;
}

std::size_t Executor::InsertSelect(Statement& statement) {
  const OpenedTable opened = OpenForWriting(statement.table);
  const Selection source = Select(*statement.source);
  Table& from = *Open(source.table).table;

  std::vector<std::size_t> targets = TargetColumns(statement, *opened.table);
  if (statement.columns.empty()) {
    for (const std::size_t column : source.columns) {
      targets.push_back(InsertColumn(*opened.table, from.Columns()[column].name));
    }
    CheckUnique(targets, *opened.table);
  } else if (targets.size() != source.columns.size()) {
    CountDiffers();
  }

  Transaction transaction(*this);
  ClearRow(*opened.table, row_);
  Cursor cursor = from.Rows();
  for (const RowId row : source.rows) {
    if (&from == opened.table) cursor = from.Rows();  // the table has changed under it
    cursor.MoveTo(row);
    for (std::size_t i = 0; i < targets.size(); ++i) {
      const Column& column = from.Columns()[source.columns[i]];
      const Column& target = opened.table->Columns()[targets[i]];
      Value& value = row_[targets[i]];
      cursor.Read(source.columns[i], value);
      if (column.type != target.type || IsNull(value)) {
        ConvertTo(target.type, value, column.type == ColumnType::kDate);
      }
    }
    const RowId added = opened.table->Insert(row_);
    if (opened.lookups->Any()) opened.lookups->Inserted(*opened.table, added);
  }
  transaction.Keep();
  return source.rows.size();
}

std::vector<RowId> Executor::Matching(const OpenedTable& opened, Condition& condition) {
  const Table& table = *opened.table;
  std::vector<RowId> rows;
  if (const auto equality = condition.Equality()) {
    rows = opened.lookups->Find(table, equality->first, equality->second);
    Cursor cursor = table.Rows();
    std::erase_if(rows, [&](RowId row) {
      cursor.MoveTo(row);
      return !condition.Selects(cursor);
    });
    return rows;
  }
  for (Cursor cursor = table.Rows(); cursor.Next();) {
    if (condition.Selects(cursor)) rows.push_back(cursor.Row());
  }
  return rows;
}

std::size_t Executor::Update(Statement& statement) {
  const OpenedTable opened = OpenForWriting(statement.table);
  Table& table = *opened.table;
  CheckQualifiers(statement, table);
  Bind(statement, table);
  std::vector<std::size_t> targets;
  for (const Assignment& assignment : statement.assignments) {
    const std::optional<std::size_t> column = table.FindColumn(assignment.column);
    if (!column) MissingParameter();
    targets.push_back(*column);
  }
  CheckUnique(targets, table);

  Condition condition(statement, statement.where, table);
  for (const Assignment& assignment : statement.assignments) condition.CheckOperand(assignment.node);
  const std::vector<RowId> rows = Matching(opened, condition);
  if (rows.empty()) return 0;
  Transaction transaction(*this);
  std::vector<std::pair<std::size_t, Value>> changes(targets.size());
  Lookups::Old old;
  for (const RowId row : rows) {
    Cursor cursor = table.Rows();
    cursor.MoveTo(row);
    for (std::size_t i = 0; i < targets.size(); ++i) {
      const std::size_t node = statement.assignments[i].node;
      changes[i].first = targets[i];
      changes[i].second = condition.Evaluate(node, cursor);
      ConvertTo(table.Columns()[targets[i]].type, changes[i].second, condition.IsDate(node));
    }
    if (opened.lookups->Any()) opened.lookups->Remember(cursor, old);
    table.Update(row, changes);
    if (opened.lookups->Any()) opened.lookups->Updated(table, row, targets, old);
  }
  transaction.Keep();
  return rows.size();
}

std::size_t Executor::Delete(Statement& statement) {
  const OpenedTable opened = OpenForWriting(statement.table);
  Table& table = *opened.table;
  CheckQualifiers(statement, table);
  if (statement.where == kNoNode) {
    const std::size_t count = table.RowCount();
    Transaction transaction(*this);
    table.DeleteAll();
    opened.lookups->Clear();
    transaction.Keep();
    if (const auto deletions = deletions_.lock()) deletions->NoteAll(table.Name(), changes_);
    return count;
  }
  Bind(statement, table);
  Condition condition(statement, statement.where, table);
  const std::vector<RowId> rows = Matching(opened, condition);
  if (rows.empty()) return 0;
  Transaction transaction(*this);
  Lookups::Old old;
  for (const RowId row : rows) {
    if (opened.lookups->Any()) {
      Cursor cursor = table.Rows();
      cursor.MoveTo(row);
      opened.lookups->Remember(cursor, old);
    }
    table.Delete(row);
    if (opened.lookups->Any()) opened.lookups->Deleted(row, old);
  }
  transaction.Keep();
  if (const auto deletions = deletions_.lock()) deletions->Note(table.Name(), rows, changes_);
  return rows.size();
}

Selection Executor::Select(std::u16string_view sql) {
  Parse(sql, statement_);
  if (statement_.verb != Statement::Verb::kSelect) {
    throw Error(code::kSyntax, u"Invalid SQL statement; expected 'SELECT'.");
  }
  return Select(statement_);
}

Selection Executor::Select(Statement& statement) {
  const OpenedTable opened = Open(statement.table);
  const Table& table = *opened.table;
  CheckQualifiers(statement, table);
  Selection selection;
  selection.table = table.Name();
  const auto columnOf = [&table](const std::u16string& name) {
    const std::optional<std::size_t> column = table.FindColumn(name);
    if (!column) MissingParameter();
    return *column;
  };
  if (statement.allColumns) {
    for (std::size_t i = 0; i < table.Columns().size(); ++i) selection.columns.push_back(i);
  }
  for (const std::u16string& name : statement.columns) selection.columns.push_back(columnOf(name));
  std::vector<std::pair<std::size_t, bool>> order;
  for (const OrderTerm& term : statement.order) order.emplace_back(columnOf(term.column), term.descending);
  Bind(statement, table);

  Condition condition(statement, statement.where, table);
  selection.rows = Matching(opened, condition);
  if (!order.empty()) SortRows(table, order, selection.rows);
  return selection;
}

}  // namespace kestrelon::jet::sql
