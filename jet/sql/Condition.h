#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "jet/base/Value.h"
#include "jet/database/Table.h"
#include "jet/sql/Statement.h"

namespace kestrelon::jet::sql {

// Finds the columns that the nodes of a statement name. Throws Error (code::kMissingParameter) for a name
// that is no column of the table.
void Bind(Statement& statement, const Table& table);

// A bound WHERE condition, or any other expression of the statement. The statement and the table must outlive
// it.
class Condition {
 public:
  // Throws Error (code::kTypeMismatch) when types that cannot be compared are, whatever the rows hold.
  Condition(const Statement& statement, std::size_t root, const Table& table);

  // Throws the same for another expression of the statement. Before Evaluate() of a node outside the
  // condition.
  void CheckOperand(std::size_t node) const { Check(node); }

  // Whether the row is selected: NULL counts as false.
  bool Selects(const Cursor& row);
  // The value of an operand (a constant, a column or the negative of one).
  const Value& Evaluate(std::size_t node, const Cursor& row);
  // Whether that value is a date.
  bool IsDate(std::size_t node) const;

  // A column that must equal a constant in every selected row and has a type that can be looked up.
  std::optional<std::pair<std::size_t, Value>> Equality() const;

 private:
  enum class Truth { kFalse, kUnknown, kTrue };
  enum class Kind { kNull, kText, kNumber, kBytes };

  Kind Check(std::size_t node) const;
  std::optional<std::pair<std::size_t, Value>> EqualityOf(std::size_t node) const;
  Truth Test(std::size_t node, const Cursor& row);
  Truth Compare(const Node& node, const Cursor& row);

  const Statement* statement_;
  std::size_t root_;
  const Table* table_;
  std::vector<Value> registers_;  // one for each node; kept for its memory
};

}  // namespace kestrelon::jet::sql
