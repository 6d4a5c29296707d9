#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/base/Value.h"

namespace kestrelon::jet::sql {

// A constant of a statement. A date has its own flag because its value is a number like any other.
struct Literal {
  Value value;
  bool isDate = false;
};

// One node of a WHERE condition or of the right side of an assignment. Nodes refer to their operands by
// position in Statement::nodes.
struct Node {
  enum class Kind {
    kLiteral,
    kColumn,
    kNegative,  // one operand
    kNot,       // one operand
    kAnd,       // two or more
    kOr,        // two or more
    kIsNull,    // one
    kEqual,     // two, like the comparisons below
    kNotEqual,
    kLess,
    kLessEqual,
    kGreater,
    kGreaterEqual,
  };
  Kind kind = Kind::kLiteral;
  Literal literal;
  std::u16string name;     // kColumn
  std::size_t column = 0;  // kColumn: position in the table, filled in by the executor
  std::vector<std::size_t> operands;
};

inline constexpr std::size_t kNoNode = static_cast<std::size_t>(-1);

struct Assignment {
  std::u16string column;
  std::size_t node = kNoNode;
};

struct OrderTerm {
  std::u16string column;
  bool descending = false;
};

// A parsed statement: its form is right, its names are not yet looked up.
struct Statement {
  enum class Verb { kSelect, kInsertValues, kInsertSelect, kUpdate, kDelete };
  Verb verb = Verb::kSelect;
  std::u16string table;
  std::vector<std::u16string> qualifiers;  // what stands before the period of table.column, anywhere

  bool allColumns = false;              // kSelect: *
  std::vector<std::u16string> columns;  // kSelect: the list; INSERT: the names in parentheses, if any
  std::vector<OrderTerm> order;         // kSelect

  std::vector<Value> values;            // kInsertValues
  std::vector<std::size_t> dateValues;  // positions in `values` that were written as #dates#
  bool hasParameter = false;            // kInsertValues: a bare name stands among the values
  std::unique_ptr<Statement> source;    // kInsertSelect
  std::vector<Assignment> assignments;  // kUpdate

  std::vector<Node> nodes;
  std::size_t where = kNoNode;
};

}  // namespace kestrelon::jet::sql
