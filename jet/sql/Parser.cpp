#include "jet/sql/Parser.h"

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "jet/base/Error.h"
#include "jet/sql/Convert.h"
#include "jet/sql/Lexer.h"

namespace kestrelon::jet::sql {

namespace {

constexpr std::u16string_view kInsertFault = u"Syntax error in INSERT INTO statement.";
constexpr std::u16string_view kUpdateFault = u"Syntax error in UPDATE statement.";
constexpr std::u16string_view kFromFault = u"Syntax error in FROM clause.";
constexpr std::u16string_view kWhereFault = u"Syntax error in WHERE clause.";
constexpr std::u16string_view kOrderFault = u"Syntax error in ORDER BY clause.";
constexpr std::u16string_view kSelectFault =
    u"The SELECT statement includes a reserved word or an argument name that is misspelled or missing, or "
    u"the "
    u"punctuation is incorrect.";

[[noreturn]] void Fail(std::u16string_view description) {
  throw Error(code::kSyntax, std::u16string(description));
}

// Keywords are upper-case ASCII.
bool IsWord(const Token& token, std::u16string_view keyword) {
  if (token.kind != TokenKind::kWord || token.text.size() != keyword.size()) return false;
  for (std::size_t i = 0; i < keyword.size(); ++i) {
    const char16_t c = token.text[i];
    if ((c >= u'a' && c <= u'z' ? c - u'a' + u'A' : c) != keyword[i]) return false;
  }
  return true;
}

bool IsReserved(const Token& token) {
  static constexpr std::array<std::u16string_view, 17> kReserved = {
      u"SELECT", u"INSERT", u"UPDATE", u"DELETE", u"FROM", u"INTO", u"VALUES", u"SET",  u"WHERE",
      u"AND",    u"OR",     u"NOT",    u"IS",     u"NULL", u"TRUE", u"FALSE",  u"ORDER"};
  for (const std::u16string_view word : kReserved) {
    if (IsWord(token, word)) return true;
  }
  return false;
}

class Parser {
 public:
  Parser(std::u16string_view sql, Statement& statement) : sql_(sql), lexer_(sql), statement_(&statement) {
    Advance();
  }

  void Run() {
    if (IsWord(token_, u"INSERT")) return Insert();
    if (IsWord(token_, u"SELECT")) return Select();
    if (IsWord(token_, u"UPDATE")) return Update();
    if (IsWord(token_, u"DELETE")) return Delete();
    Fail(u"Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'.");
  }

 private:
  void Advance() { token_ = lexer_.Next(); }
  bool Accept(TokenKind kind) {
    if (token_.kind != kind) return false;
    Advance();
    return true;
  }
  bool AcceptWord(std::u16string_view keyword) {
    if (!IsWord(token_, keyword)) return false;
    Advance();
    return true;
  }
  bool IsName() const {
    return token_.kind == TokenKind::kQuotedName || (token_.kind == TokenKind::kWord && !IsReserved(token_));
  }
  std::u16string Name(std::u16string_view fault) {
    if (!IsName()) Fail(fault);
    std::u16string name(NameOf(token_));
    Advance();
    return name;
  }
  bool AtEnd() const { return token_.kind == TokenKind::kEnd || token_.kind == TokenKind::kSemicolon; }
  // After everything that belongs to the statement.
  void End(std::u16string_view fault) {
    if (Accept(TokenKind::kSemicolon)) {
      if (token_.kind != TokenKind::kEnd) Fail(u"Characters found after end of SQL statement.");
      return;
    }
    if (token_.kind != TokenKind::kEnd) Fail(fault);
  }
  bool BeginsOperand() const {
    switch (token_.kind) {
      case TokenKind::kWord:
      case TokenKind::kQuotedName:
      case TokenKind::kText:
      case TokenKind::kUnterminatedText:
      case TokenKind::kNumber:
      case TokenKind::kDate:
      case TokenKind::kUnterminatedDate: return true;
      default: return false;
    }
  }

  // --- faults of an expression: both quote it from `start` on to the statement's end ---

  std::u16string Quoted(std::size_t start) const {
    std::u16string_view rest = sql_.substr(start);
    while (!rest.empty() && (rest.back() == u' ' || rest.back() == u';')) rest.remove_suffix(1);
    return std::u16string(rest);
  }
  [[noreturn]] void MissingOperator(std::size_t start) const {
    Fail(u"Syntax error (missing operator) in query expression '" + Quoted(start) + u"'.");
  }
  // A value of INSERT ... VALUES: the parenthesis that closes the list is no part of it.
  [[noreturn]] void MissingOperatorInValues(std::size_t start) const {
    std::u16string quoted = Quoted(start);
    if (quoted.back() == u')') quoted.pop_back();
    Fail(u"Syntax error (missing operator) in query expression '" + quoted + u"'.");
  }
  void CheckTerminated(std::size_t start) const {
    if (token_.kind == TokenKind::kUnterminatedText) {
      Fail(u"Syntax error in string in query expression '" + Quoted(start) + u"'.");
    }
    if (token_.kind == TokenKind::kUnterminatedDate) {
      Fail(u"Syntax error in date in query expression '" + Quoted(start) + u"'.");
    }
  }

  // Reads the constant at the current token into `value`; false when there is none. `start` begins the
  // expression.
  bool Constant(std::size_t start, Value& value, bool& isDate) {
    isDate = false;
    switch (token_.kind) {
      case TokenKind::kText:
        if (!std::holds_alternative<std::u16string>(value)) value.emplace<std::u16string>();
        DecodeText(token_, std::get<std::u16string>(value));
        break;
      case TokenKind::kNumber: value = NumberValue(start); break;
      case TokenKind::kDate: {
        const std::optional<double> date = ParseDate(token_.text.substr(1, token_.text.size() - 2));
        if (!date) Fail(u"Syntax error in date in query expression '" + Quoted(start) + u"'.");
        value = *date;
        isDate = true;
        break;
      }
      case TokenKind::kWord:
        if (IsWord(token_, u"NULL")) {
          value = std::monostate();
        } else if (IsWord(token_, u"TRUE")) {
          value = true;
        } else if (IsWord(token_, u"FALSE")) {
          value = false;
        } else {
          return false;
        }
        break;
      default: CheckTerminated(start); return false;
    }
    Advance();
    return true;
  }
  Value NumberValue(std::size_t start) const {
    const std::optional<double> number = ParseNumber(token_.text);
    if (!number) Fail(u"Syntax error in number in query expression '" + Quoted(start) + u"'.");
    const bool whole = token_.text.find_first_not_of(u"0123456789") == std::u16string_view::npos;
    if (whole && *number <= std::numeric_limits<std::int32_t>::max())
      return static_cast<std::int32_t>(*number);
    return *number;
  }

  // --- expressions; every function returns the position of its node ---

  std::size_t Add(Node::Kind kind, std::vector<std::size_t> operands = {}) {
    Node& node = statement_->nodes.emplace_back();
    node.kind = kind;
    node.operands = std::move(operands);
    return statement_->nodes.size() - 1;
  }
  void Deeper() {
    if (++depth_ > kMaxDepth) Fail(u"Query is too complex.");
  }

  std::size_t Condition() {
    return Chain(u"OR", Node::Kind::kOr, [this] { return Conjunction(); });
  }
  std::size_t Conjunction() {
    return Chain(u"AND", Node::Kind::kAnd, [this] { return Negation(); });
  }

  // Operands joined by one word, as many as there are: a long list costs no depth.
  template <class Operand>
  std::size_t Chain(std::u16string_view word, Node::Kind kind, Operand operand) {
    const std::size_t first = operand();
    if (!IsWord(token_, word)) return first;
    std::vector<std::size_t> operands = {first};
    while (AcceptWord(word)) operands.push_back(operand());
    return Add(kind, std::move(operands));
  }

  std::size_t Negation() {
    if (!AcceptWord(u"NOT")) return Predicate();
    Deeper();
    const std::size_t operand = Negation();
    --depth_;
    return Add(Node::Kind::kNot, {operand});
  }

  std::size_t Predicate() {
    const std::size_t left = Operand();
    if (AcceptWord(u"IS")) {
      const bool negated = AcceptWord(u"NOT");
      if (!AcceptWord(u"NULL")) MissingOperator(start_);
      const std::size_t test = Add(Node::Kind::kIsNull, {left});
      return negated ? Add(Node::Kind::kNot, {test}) : test;
    }
    const std::optional<Node::Kind> comparison = ComparisonOf(token_.kind);
    if (!comparison) return left;
    Advance();
    const std::size_t right = Operand();
    return Add(*comparison, {left, right});
  }

  static std::optional<Node::Kind> ComparisonOf(TokenKind kind) {
    switch (kind) {
      case TokenKind::kEqual: return Node::Kind::kEqual;
      case TokenKind::kNotEqual: return Node::Kind::kNotEqual;
      case TokenKind::kLess: return Node::Kind::kLess;
      case TokenKind::kLessEqual: return Node::Kind::kLessEqual;
      case TokenKind::kGreater: return Node::Kind::kGreater;
      case TokenKind::kGreaterEqual: return Node::Kind::kGreaterEqual;
      default: return std::nullopt;
    }
  }

  std::size_t Operand() {
    if (token_.kind == TokenKind::kOpen) {
      Deeper();
      Advance();
      const std::size_t inside = Condition();
      if (!Accept(TokenKind::kClose)) {
        CheckTerminated(start_);
        MissingOperator(start_);
      }
      --depth_;
      return inside;
    }
    if (token_.kind == TokenKind::kMinus) {
      Deeper();
      Advance();
      const std::size_t operand = Operand();
      --depth_;
      return Add(Node::Kind::kNegative, {operand});
    }
    if (IsName()) {
      const std::size_t node = Add(Node::Kind::kColumn);
      statement_->nodes[node].name = ColumnName();
      return node;
    }
    Literal literal;
    if (!Constant(start_, literal.value, literal.isDate)) MissingOperator(start_);
    const std::size_t node = Add(Node::Kind::kLiteral);
    statement_->nodes[node].literal = std::move(literal);
    return node;
  }

  // name or table.name; the current token is a name.
  std::u16string ColumnName() {
    std::u16string name(NameOf(token_));
    Advance();
    if (!Accept(TokenKind::kPeriod)) return name;
    if (token_.kind != TokenKind::kWord && token_.kind != TokenKind::kQuotedName) MissingOperator(start_);
    statement_->qualifiers.push_back(std::exchange(name, std::u16string(NameOf(token_))));
    Advance();
    return name;
  }

  void Where() {
    if (AtEnd() || IsWord(token_, u"ORDER")) Fail(kWhereFault);
    start_ = token_.position;
    statement_->where = Condition();
    if (AtEnd() || IsWord(token_, u"ORDER")) return;
    CheckTerminated(start_);
    MissingOperator(start_);
  }

  // --- statements ---

  void Insert() {
    Advance();
    if (!AcceptWord(u"INTO")) Fail(kInsertFault);
    statement_->table = Name(kInsertFault);
    if (Accept(TokenKind::kOpen)) {
      do {
        statement_->columns.push_back(Name(kInsertFault));
      } while (Accept(TokenKind::kComma));
      if (!Accept(TokenKind::kClose)) Fail(kInsertFault);
    }
    if (AcceptWord(u"VALUES")) return Values();
    if (!IsWord(token_, u"SELECT")) Fail(kInsertFault);
    statement_->verb = Statement::Verb::kInsertSelect;
    if (!statement_->source) statement_->source = std::make_unique<Statement>();
    Statement* const outer = std::exchange(statement_, statement_->source.get());
    Reset(*statement_);
    Select();
    statement_ = outer;
  }

  void Values() {
    statement_->verb = Statement::Verb::kInsertValues;
    if (!Accept(TokenKind::kOpen)) Fail(kInsertFault);
    std::size_t count = 0;
    do {
      if (count == statement_->values.size()) statement_->values.emplace_back();
      OneValue(count++);
    } while (Accept(TokenKind::kComma));
    statement_->values.resize(count);
    if (!Accept(TokenKind::kClose)) Fail(kInsertFault);
    End(u"Missing semicolon (;) at end of SQL statement.");
  }

  void OneValue(std::size_t index) {
    const std::size_t start = token_.position;
    Value& value = statement_->values[index];
    bool isDate = false;
    const bool negative = Accept(TokenKind::kMinus);
    if (!Constant(start, value, isDate)) {
      if (!IsName()) Fail(kInsertFault);
      // A bare name can only be a parameter, and nothing gives parameters a value. Told after the whole
      // statement has been read: a fault of form comes first.
      start_ = start;
      ColumnName();
      statement_->qualifiers.clear();
      statement_->hasParameter = true;
      value = std::monostate();
    } else if (negative) {
      if (const auto* whole = std::get_if<std::int32_t>(&value)) {
        value = -*whole;
      } else if (const auto* number = std::get_if<double>(&value); number && !isDate) {
        value = -*number;
      } else {
        Fail(kInsertFault);
      }
    }
    if (isDate) statement_->dateValues.push_back(index);
    if (BeginsOperand()) {
      // A text that ends before it should leaves a name behind; one at the very end leaves an open quote.
      MissingOperatorInValues(start);
    }
  }

  void Select() {
    Advance();
    statement_->verb = Statement::Verb::kSelect;
    SelectList();
    if (AtEnd()) Fail(u"Query input must contain at least one table or query.");
    if (!AcceptWord(u"FROM")) Fail(kSelectFault);
    statement_->table = Name(kFromFault);
    if (AcceptWord(u"WHERE")) Where();
    if (AcceptWord(u"ORDER")) Order();
    End(kFromFault);
  }

  void SelectList() {
    if (Accept(TokenKind::kStar)) {
      statement_->allColumns = true;
      return;
    }
    do {
      if (!IsName()) Fail(kSelectFault);
      std::u16string name(NameOf(token_));
      Advance();
      if (Accept(TokenKind::kPeriod)) {
        statement_->qualifiers.push_back(name);
        if (Accept(TokenKind::kStar)) {
          statement_->allColumns = true;
          statement_->columns.clear();
          return;
        }
        if (!IsName()) Fail(kSelectFault);
        name = NameOf(token_);
        Advance();
      }
      statement_->columns.push_back(std::move(name));
    } while (Accept(TokenKind::kComma));
  }

  void Order() {
    if (!AcceptWord(u"BY")) Fail(kOrderFault);
    do {
      if (!IsName()) Fail(kOrderFault);
      OrderTerm& term = statement_->order.emplace_back();
      start_ = token_.position;
      term.column = ColumnName();
      term.descending = AcceptWord(u"DESC");
      if (!term.descending) AcceptWord(u"ASC");
    } while (Accept(TokenKind::kComma));
    if (!AtEnd()) Fail(kOrderFault);
  }

  void Update() {
    Advance();
    statement_->verb = Statement::Verb::kUpdate;
    statement_->table = Name(kUpdateFault);
    if (!AcceptWord(u"SET")) Fail(kUpdateFault);
    do {
      Assign();
    } while (Accept(TokenKind::kComma));
    if (AcceptWord(u"WHERE")) Where();
    End(kUpdateFault);
  }

  void Assign() {
    if (!IsName()) Fail(kUpdateFault);
    Assignment assignment;
    start_ = token_.position;
    assignment.column = ColumnName();
    if (!Accept(TokenKind::kEqual)) Fail(kUpdateFault);
    if (AtEnd() || token_.kind == TokenKind::kComma) Fail(kUpdateFault);
    start_ = token_.position;
    assignment.node = Operand();
    if (BeginsOperand() && !IsWord(token_, u"WHERE")) MissingOperator(start_);
    statement_->assignments.push_back(std::move(assignment));
  }

  void Delete() {
    Advance();
    statement_->verb = Statement::Verb::kDelete;
    if (!Accept(TokenKind::kStar) && IsName()) {  // DELETE table.* FROM table
      statement_->qualifiers.emplace_back(NameOf(token_));
      Advance();
      if (!Accept(TokenKind::kPeriod) || !Accept(TokenKind::kStar)) Fail(kFromFault);
    }
    if (AtEnd()) Fail(u"Query input must contain at least one table or query.");
    if (!AcceptWord(u"FROM")) Fail(kFromFault);
    statement_->table = Name(kFromFault);
    if (AcceptWord(u"WHERE")) Where();
    End(kFromFault);
  }

 public:
  static void Reset(Statement& statement) {
    statement.table.clear();
    statement.qualifiers.clear();
    statement.allColumns = false;
    statement.columns.clear();
    statement.order.clear();
    // The values stay: their texts' memory serves the next statement.
    statement.dateValues.clear();
    statement.hasParameter = false;
    statement.assignments.clear();
    statement.nodes.clear();
    statement.where = kNoNode;
  }

 private:
  std::u16string_view sql_;
  Lexer lexer_;
  Statement* statement_;
  Token token_;
  std::size_t start_ = 0;  // of the expression being read
  std::size_t depth_ = 0;
};

}  // namespace

void Parse(std::u16string_view sql, Statement& statement) {
  if (sql.size() > kMaxStatement) {
    Fail(u"The SQL statement is too long: it has more than 68,000 characters.");
  }
  Parser::Reset(statement);
  Parser(sql, statement).Run();
}

}  // namespace kestrelon::jet::sql
