#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kestrelon::jet::sql {

enum class TokenKind {
  kEnd,
  kWord,              // keyword or bare name
  kQuotedName,        // [name] or `name`
  kText,              // "…" or '…'
  kUnterminatedText,  // a text literal that the statement ends in
  kNumber,
  kDate,  // #…#
  kUnterminatedDate,
  kLess,
  kLessEqual,
  kGreater,
  kGreaterEqual,
  kEqual,
  kNotEqual,
  kComma,
  kPeriod,
  kStar,
  kOpen,
  kClose,
  kSemicolon,
  kPlus,
  kMinus,
  kOther,  // a character that begins nothing
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::size_t position = 0;    // in the statement, of the token's first character
  std::u16string_view text;    // all of it, quotes included
  bool doubledQuotes = false;  // kText: the delimiter stands doubled inside
};

// Cuts a statement into tokens, one at a time and never further than asked: what a faulty statement is blamed
// for depends on which fault comes first from the left. The statement must outlive the lexer.
class Lexer {
 public:
  explicit Lexer(std::u16string_view statement) : statement_(statement) {}
  Token Next();

 private:
  Token Text(std::size_t start);
  Token Number(std::size_t start);
  Token Finish(TokenKind kind, std::size_t start, std::size_t end);

  std::u16string_view statement_;
  std::size_t position_ = 0;
};

// The characters that a kText token stands for, into `out`, whose memory is reused.
void DecodeText(const Token& token, std::u16string& out);
// The name that a kWord or kQuotedName token stands for.
std::u16string_view NameOf(const Token& token);

}  // namespace kestrelon::jet::sql
