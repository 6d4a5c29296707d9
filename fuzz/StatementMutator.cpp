#include "fuzz/StatementMutator.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

#include "fuzz/PageMutator.h"

namespace kestrelon::fuzz {
namespace {

constexpr std::string_view kTokens[] = {"SELECT",
                                        "INSERT",
                                        "UPDATE",
                                        "DELETE",
                                        "INTO",
                                        "VALUES",
                                        "FROM",
                                        "WHERE",
                                        "SET",
                                        "ORDER",
                                        "BY",
                                        "ASC",
                                        "DESC",
                                        "AND",
                                        "OR",
                                        "NOT",
                                        "NULL",
                                        "IS",
                                        "TRUE",
                                        "FALSE",
                                        "*",
                                        ",",
                                        ".",
                                        "(",
                                        ")",
                                        ";",
                                        "=",
                                        "<",
                                        "<=",
                                        ">",
                                        ">=",
                                        "<>",
                                        "+",
                                        "-",
                                        "\"",
                                        "'",
                                        "#",
                                        "[",
                                        "]",
                                        "`",
                                        "FTable",
                                        "FBackup",
                                        "T",
                                        "MSysObjects",
                                        "MSysACEs",
                                        "[FTable]",
                                        "FTable.",
                                        "i",
                                        "key",
                                        "d",
                                        "b",
                                        "y",
                                        "n",
                                        "c",
                                        "s",
                                        "f",
                                        "x",
                                        "Comment",
                                        "FileIndex",
                                        "TreeviewNode",
                                        "\"1#K\"",
                                        "\"K\"",
                                        "''",
                                        "\"\"\"\"",
                                        "0",
                                        "1",
                                        "-1",
                                        "255",
                                        "256",
                                        "32768",
                                        "2147483647",
                                        "-2147483648",
                                        "1e308",
                                        "1e-400",
                                        ".5",
                                        "99999999999999999999",
                                        "#11/15/2026#",
                                        "#11/15/2026 1:20:05 PM#",
                                        "#2026-02-30#",
                                        "#0:0#",
                                        "\"12\"",
                                        "\"\xC3\xA9\xC3\x9F\"",
                                        "\"\xE6\xBC\xA2\"",
                                        "\xEF\xBB\xBF",
                                        "\r\n",
                                        "i=1"};

bool InWord(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }

// A place between two words, or the end.
std::size_t Boundary(const std::string& text, Random& random) {
  std::size_t at = random.Below(text.size() + 1);
  while (at < text.size() && at > 0 && InWord(text[at]) && InWord(text[at - 1])) ++at;
  return at;
}

std::size_t EndOfToken(const std::string& text, std::size_t at) {
  if (at >= text.size()) return at;
  if (!InWord(text[at])) return at + 1;
  while (at < text.size() && InWord(text[at])) ++at;
  return at;
}

void ChangeOnce(std::string& text, Random& random) {
  const std::string_view token = kTokens[random.Below(std::size(kTokens))];
  const std::size_t at = Boundary(text, random), end = EndOfToken(text, at);
  switch (random.Below(6)) {
    case 0: text.insert(at, std::string(token) + " "); return;
    case 1: text.insert(at, " " + std::string(token)); return;
    case 2: text.replace(at, end - at, token); return;
    case 3: text.erase(at, end - at); return;
    case 4: text.insert(at, text.substr(at, random.Below(40))); return;
    default:
      // A piece of the text at another place, or a new statement.
      if (random.OneIn(3)) {
        text.insert(at, 1, '\0');
      } else {
        text.insert(Boundary(text, random), text.substr(at, end - at));
      }
      return;
  }
}

}  // namespace

std::size_t MutateStatements(std::uint8_t* data, std::size_t size, std::size_t most, std::uint32_t seed,
                             Mutate plain) {
  Random random(seed);
  if (random.OneIn(3)) return plain(data, size, most);
  std::string text(reinterpret_cast<const char*>(data), size);
  for (std::size_t changes = 1 + random.Below(4); changes > 0; --changes) ChangeOnce(text, random);
  const std::size_t kept = std::min(text.size(), most);
  std::copy_n(text.begin(), kept, data);
  return kept;
}

}  // namespace kestrelon::fuzz
