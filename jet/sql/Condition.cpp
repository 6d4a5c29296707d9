#include "jet/sql/Condition.h"

#include <cmath>
#include <limits>

#include "jet/base/Error.h"
#include "jet/sql/Lookups.h"
#include "jet/sql/TextCompare.h"

namespace kestrelon::jet::sql {

namespace {

[[noreturn]] void Mismatch() {
  throw Error(code::kTypeMismatch, u"Data type mismatch in criteria expression.");
}

double NumberOf(const Value& value) {
  if (const auto* number = std::get_if<std::int32_t>(&value)) return *number;
  if (const auto* number = std::get_if<double>(&value)) return *number;
  if (const auto* amount = std::get_if<std::int64_t>(&value)) return static_cast<double>(*amount) / 10000;
  if (const auto* truth = std::get_if<bool>(&value)) return *truth ? -1 : 0;
  return 0;
}

// Negative, 0 or positive; the two are of the same kind and not NULL. Not-a-number sorts before every number.
int CompareValues(const Value& a, const Value& b) {
  if (const auto* text = std::get_if<std::u16string>(&a))
    return CompareTexts(*text, std::get<std::u16string>(b));
  const double left = NumberOf(a);
  const double right = NumberOf(b);
  if (std::isnan(left) || std::isnan(right))
    return static_cast<int>(std::isnan(right)) - static_cast<int>(std::isnan(left));
  return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace

void Bind(Statement& statement, const Table& table) {
  for (Node& node : statement.nodes) {
    if (node.kind != Node::Kind::kColumn) continue;
    const std::optional<std::size_t> column = table.FindColumn(node.name);
    if (!column) throw Error(code::kMissingParameter, u"No value given for one or more required parameters.");
    node.column = *column;
  }
}

Condition::Condition(const Statement& statement, std::size_t root, const Table& table)
    : statement_(&statement), root_(root), table_(&table), registers_(statement.nodes.size()) {
  if (root_ != kNoNode && Check(root_) == Kind::kText) Mismatch();
}

Condition::Kind Condition::Check(std::size_t index) const {
  const Node& node = statement_->nodes[index];
  switch (node.kind) {
    case Node::Kind::kLiteral:
      if (IsNull(node.literal.value)) return Kind::kNull;
      return std::holds_alternative<std::u16string>(node.literal.value) ? Kind::kText : Kind::kNumber;
    case Node::Kind::kColumn:
      switch (table_->Columns()[node.column].type) {
        case ColumnType::kText:
        case ColumnType::kMemo: return Kind::kText;
        case ColumnType::kBinary:
        case ColumnType::kOle:
        case ColumnType::kGuid:
        case ColumnType::kNumeric: return Kind::kBytes;
        default: return Kind::kNumber;
      }
    case Node::Kind::kNegative: {
      const Kind kind = Check(node.operands[0]);
      if (kind == Kind::kText || kind == Kind::kBytes) Mismatch();
      return kind;
    }
    case Node::Kind::kNot:
    case Node::Kind::kAnd:
    case Node::Kind::kOr:
      for (const std::size_t operand : node.operands) {
        const Kind kind = Check(operand);
        if (kind == Kind::kText || kind == Kind::kBytes) Mismatch();
      }
      return Kind::kNumber;
    case Node::Kind::kIsNull: Check(node.operands[0]); return Kind::kNumber;
    default: {
      const Kind left = Check(node.operands[0]);
      const Kind right = Check(node.operands[1]);
      if (left == Kind::kNull || right == Kind::kNull) return Kind::kNumber;
      if (left != right || left == Kind::kBytes) Mismatch();
      return Kind::kNumber;
    }
  }
}

bool Condition::IsDate(std::size_t index) const {
  const Node& node = statement_->nodes[index];
  if (node.kind == Node::Kind::kLiteral) return node.literal.isDate;
  return node.kind == Node::Kind::kColumn && table_->Columns()[node.column].type == ColumnType::kDate;
}

const Value& Condition::Evaluate(std::size_t index, const Cursor& row) {
  const Node& node = statement_->nodes[index];
  Value& result = registers_[index];
  switch (node.kind) {
    case Node::Kind::kLiteral: return node.literal.value;
    case Node::Kind::kColumn: row.Read(node.column, result); return result;
    case Node::Kind::kNegative: {
      const Value& operand = Evaluate(node.operands[0], row);
      const auto* whole = std::get_if<std::int32_t>(&operand);
      if (IsNull(operand)) {
        result = std::monostate();
      } else if (whole != nullptr && *whole != std::numeric_limits<std::int32_t>::min()) {
        result = -*whole;
      } else {
        result = -NumberOf(operand);
      }
      return result;
    }
    default: {
      const Truth truth = Test(index, row);
      if (truth == Truth::kUnknown) {
        result = std::monostate();
      } else {
        result = truth == Truth::kTrue;
      }
      return result;
    }
  }
}

Condition::Truth Condition::Compare(const Node& node, const Cursor& row) {
  const Value& left = Evaluate(node.operands[0], row);
  const Value& right = Evaluate(node.operands[1], row);
  if (IsNull(left) || IsNull(right)) return Truth::kUnknown;
  const bool equality = node.kind == Node::Kind::kEqual || node.kind == Node::Kind::kNotEqual;
  if (const auto* text = std::get_if<std::u16string>(&left); text != nullptr && equality) {
    const bool equal = TextsEqual(*text, std::get<std::u16string>(right));
    return equal == (node.kind == Node::Kind::kEqual) ? Truth::kTrue : Truth::kFalse;
  }
  const int order = CompareValues(left, right);
  bool holds = false;
  switch (node.kind) {
    case Node::Kind::kEqual: holds = order == 0; break;
    case Node::Kind::kNotEqual: holds = order != 0; break;
    case Node::Kind::kLess: holds = order < 0; break;
    case Node::Kind::kLessEqual: holds = order <= 0; break;
    case Node::Kind::kGreater: holds = order > 0; break;
    default: holds = order >= 0; break;
  }
  return holds ? Truth::kTrue : Truth::kFalse;
}

Condition::Truth Condition::Test(std::size_t index, const Cursor& row) {
  const Node& node = statement_->nodes[index];
  switch (node.kind) {
    case Node::Kind::kNot: {
      const Truth operand = Test(node.operands[0], row);
      if (operand == Truth::kUnknown) return operand;
      return operand == Truth::kTrue ? Truth::kFalse : Truth::kTrue;
    }
    case Node::Kind::kAnd: {
      Truth all = Truth::kTrue;
      for (const std::size_t operand : node.operands) {
        const Truth one = Test(operand, row);
        if (one == Truth::kFalse) return one;
        if (one == Truth::kUnknown) all = one;
      }
      return all;
    }
    case Node::Kind::kOr: {
      Truth any = Truth::kFalse;
      for (const std::size_t operand : node.operands) {
        const Truth one = Test(operand, row);
        if (one == Truth::kTrue) return one;
        if (one == Truth::kUnknown) any = one;
      }
      return any;
    }
    case Node::Kind::kIsNull: return IsNull(Evaluate(node.operands[0], row)) ? Truth::kTrue : Truth::kFalse;
    case Node::Kind::kLiteral:
    case Node::Kind::kColumn:
    case Node::Kind::kNegative: {
      const Value& value = Evaluate(index, row);
      if (IsNull(value)) return Truth::kUnknown;
      return NumberOf(value) != 0 ? Truth::kTrue : Truth::kFalse;
    }
    default: return Compare(node, row);
  }
}

bool Condition::Selects(const Cursor& row) { return root_ == kNoNode || Test(root_, row) == Truth::kTrue; }

std::optional<std::pair<std::size_t, Value>> Condition::EqualityOf(std::size_t index) const {
  const Node& node = statement_->nodes[index];
  if (node.kind != Node::Kind::kEqual) return std::nullopt;
  const Node* column = &statement_->nodes[node.operands[0]];
  const Node* literal = &statement_->nodes[node.operands[1]];
  if (column->kind != Node::Kind::kColumn) std::swap(column, literal);
  if (column->kind != Node::Kind::kColumn || literal->kind != Node::Kind::kLiteral) return std::nullopt;
  const ColumnType type = table_->Columns()[column->column].type;
  if (!Lookup::Supports(type)) return std::nullopt;
  const bool isText = type == ColumnType::kText || type == ColumnType::kMemo;
  const Value& value = literal->literal.value;
  if (isText ? !std::holds_alternative<std::u16string>(value)
             : !std::holds_alternative<std::int32_t>(value)) {
    return std::nullopt;
  }
  return std::pair(column->column, value);
}

std::optional<std::pair<std::size_t, Value>> Condition::Equality() const {
  if (root_ == kNoNode) return std::nullopt;
  if (statement_->nodes[root_].kind != Node::Kind::kAnd) return EqualityOf(root_);
  for (const std::size_t operand : statement_->nodes[root_].operands) {
    if (auto equality = EqualityOf(operand)) return equality;
  }
  return std::nullopt;
}

}  // namespace kestrelon::jet::sql
