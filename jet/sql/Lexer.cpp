#include "jet/sql/Lexer.h"

namespace kestrelon::jet::sql {

namespace {

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }
bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
bool StartsWord(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c > u'\x00BF';
}
bool ContinuesWord(char16_t c) { return StartsWord(c) || IsDigit(c); }

}  // namespace

Token Lexer::Finish(TokenKind kind, std::size_t start, std::size_t end) {
  position_ = end;
  return {kind, start, statement_.substr(start, end - start), false};
}

Token Lexer::Text(std::size_t start) {
  const char16_t quote = statement_[start];
  bool doubled = false;
  std::size_t at = start + 1;
  for (;;) {
    at = statement_.find(quote, at);
    if (at == std::u16string_view::npos) {
      return Finish(TokenKind::kUnterminatedText, start, statement_.size());
    }
    if (at + 1 >= statement_.size() || statement_[at + 1] != quote) break;
    doubled = true;
    at += 2;
  }
  Token token = Finish(TokenKind::kText, start, at + 1);
  token.doubledQuotes = doubled;
  return token;
}

Token Lexer::Number(std::size_t start) {
  std::size_t end = start;
  const auto skipDigits = [&] {
    while (end < statement_.size() && IsDigit(statement_[end])) ++end;
  };
  skipDigits();
  if (end < statement_.size() && statement_[end] == u'.') {
    ++end;
    skipDigits();
  }
  if (end < statement_.size() && (statement_[end] == u'e' || statement_[end] == u'E')) {
    std::size_t exponent = end + 1;
    if (exponent < statement_.size() && (statement_[exponent] == u'+' || statement_[exponent] == u'-'))
      ++exponent;
    if (exponent < statement_.size() && IsDigit(statement_[exponent])) {
      end = exponent;
      skipDigits();
    }
  }
  return Finish(TokenKind::kNumber, start, end);
}

Token Lexer::Next() {
  std::size_t start = position_;
  while (start < statement_.size() && IsBlank(statement_[start])) ++start;
  if (start >= statement_.size()) return Finish(TokenKind::kEnd, statement_.size(), statement_.size());

  const char16_t c = statement_[start];
  const char16_t next = start + 1 < statement_.size() ? statement_[start + 1] : u'\0';
  switch (c) {
    case u'"':
    case u'\'': return Text(start);
    case u',': return Finish(TokenKind::kComma, start, start + 1);
    case u'(': return Finish(TokenKind::kOpen, start, start + 1);
    case u')': return Finish(TokenKind::kClose, start, start + 1);
    case u'=': return Finish(TokenKind::kEqual, start, start + 1);
    case u'*': return Finish(TokenKind::kStar, start, start + 1);
    case u';': return Finish(TokenKind::kSemicolon, start, start + 1);
    case u'+': return Finish(TokenKind::kPlus, start, start + 1);
    case u'-': return Finish(TokenKind::kMinus, start, start + 1);
    case u'<':
      if (next == u'>') return Finish(TokenKind::kNotEqual, start, start + 2);
      if (next == u'=') return Finish(TokenKind::kLessEqual, start, start + 2);
      return Finish(TokenKind::kLess, start, start + 1);
    case u'>':
      if (next == u'=') return Finish(TokenKind::kGreaterEqual, start, start + 2);
      return Finish(TokenKind::kGreater, start, start + 1);
    case u'.':
      if (IsDigit(next)) return Number(start);
      return Finish(TokenKind::kPeriod, start, start + 1);
    case u'[':
    case u'`': {
      const std::size_t close = statement_.find(c == u'[' ? u']' : u'`', start + 1);
      if (close == std::u16string_view::npos || close == start + 1) break;
      return Finish(TokenKind::kQuotedName, start, close + 1);
    }
    case u'#': {
      const std::size_t close = statement_.find(u'#', start + 1);
      if (close == std::u16string_view::npos) {
        return Finish(TokenKind::kUnterminatedDate, start, statement_.size());
      }
      return Finish(TokenKind::kDate, start, close + 1);
    }
    default: break;
  }
  if (IsDigit(c)) return Number(start);
  if (StartsWord(c)) {
    std::size_t end = start + 1;
    while (end < statement_.size() && ContinuesWord(statement_[end])) ++end;
    return Finish(TokenKind::kWord, start, end);
  }
  return Finish(TokenKind::kOther, start, start + 1);
}

void DecodeText(const Token& token, std::u16string& out) {
  const std::u16string_view inside = token.text.substr(1, token.text.size() - 2);
  if (!token.doubledQuotes) {
    out.assign(inside);
    return;
  }
  const char16_t quote = token.text.front();
  out.clear();
  for (std::size_t i = 0; i < inside.size(); ++i) {
    out.push_back(inside[i]);
    if (inside[i] == quote) ++i;
  }
}

std::u16string_view NameOf(const Token& token) {
  return token.kind == TokenKind::kQuotedName ? token.text.substr(1, token.text.size() - 2) : token.text;
}

}  // namespace kestrelon::jet::sql
