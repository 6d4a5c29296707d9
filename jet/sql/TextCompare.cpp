#include "jet/sql/TextCompare.h"

#include <array>
#include <cstddef>
#include <optional>

#include "jet/index/TextKey.h"

namespace kestrelon::jet::sql {

namespace {

constexpr std::size_t kKeyCharacters = 255;  // what an index key covers
constexpr char kEndOfInline = '\x01';        // ends the part of a key that holds the characters' weights

std::u16string_view WithoutTrailingBlanks(std::u16string_view text) {
  while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
  return text;
}

// The weights of a key: what stands before the first 01.
std::string_view InlineOf(std::string_view key) { return key.substr(0, key.find(kEndOfInline)); }

// What the printable ASCII characters contribute to a key, taken from the encoder itself so that the two
// cannot disagree. `fold` numbers the characters by equality.
class AsciiTable {
 public:
  struct Entry {
    std::uint8_t first = 0;  // weight, 0 for none (apostrophe, hyphen: they count by position only)
    std::uint8_t second = 0;
    char16_t fold = 0;  // 0: not a printable ASCII character
  };

  static const AsciiTable& Get() {
    static const AsciiTable table;
    return table;
  }
  const Entry& operator[](char16_t c) const { return entries_[c < entries_.size() ? c : 0]; }
  bool Covers(std::u16string_view text) const {
    for (const char16_t c : text) {
      if ((*this)[c].fold == 0) return false;
    }
    return true;
  }

 private:
  AsciiTable() {
    for (char16_t c = u' '; c <= u'~'; ++c) {
      // A blank alone would be dropped as a trailing one.
      const std::optional<std::string> key = EncodeTextKey(c == u' ' ? u" a" : std::u16string(1, c));
      if (!key) continue;  // then texts with it take the slow way
      std::string_view weights = InlineOf(*key);
      if (c == u' ') weights = weights.substr(0, 1);
      Entry& entry = entries_[c];
      if (!weights.empty()) entry.first = static_cast<std::uint8_t>(weights[0]);
      if (weights.size() > 1) entry.second = static_cast<std::uint8_t>(weights[1]);
      entry.fold = c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - u'a' + u'A') : c;
    }
  }

  std::array<Entry, 128> entries_;
};

// Case folding for the alphabets that the key encoder may leave out.
char32_t FoldCase(char32_t c) {
  if (c >= U'A' && c <= U'Z') return c + 0x20;
  if (c < 0xC0) return c;
  if (c <= 0xDE) return c == 0xD7 ? c : c + 0x20;                              // Latin-1
  if ((c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177)) return c | 1;  // Latin Extended-A
  if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) return (c + 1) & ~char32_t{1};
  if (c >= 0x391 && c <= 0x3A9) return c + 0x20;  // Greek
  if (c == 0x3C2) return 0x3C3;
  if (c >= 0x410 && c <= 0x42F) return c + 0x20;  // Cyrillic
  if (c >= 0x400 && c <= 0x40F) return c + 0x50;
  if ((c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0 && c <= 0x52F)) return c | 1;
  if (c >= 0x531 && c <= 0x556) return c + 0x30;      // Armenian
  if (c >= 0x1E00 && c <= 0x1EFF) return c | 1;       // Latin Extended Additional
  if (c >= 0xFF21 && c <= 0xFF3A) return c + 0x20;    // full-width Latin
  if (c >= 0x10400 && c <= 0x10427) return c + 0x28;  // Deseret
  return c;
}

// The code point at `at`, and past it; a lone surrogate counts as itself.
std::u16string_view TakeCharacter(std::u16string_view text, std::size_t& at, char32_t& codePoint) {
  const std::size_t start = at++;
  codePoint = text[start];
  if (codePoint >= 0xD800 && codePoint <= 0xDBFF && at < text.size() && text[at] >= 0xDC00 &&
      text[at] <= 0xDFFF) {
    codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (text[at++] - char32_t{0xDC00});
  }
  return text.substr(start, at - start);
}

// Built like an index key, character by character: weights, 01, what the characters have beside a weight, 00.
// A character without a key has the weight FF (no real weight begins so) and its folded code point. No byte
// of the second part is below 02 but its end, so that sort keys of several columns can be chained.
std::string FallbackKey(std::u16string_view text) {
  std::string weights;
  std::string rest;
  for (std::size_t at = 0; at < text.size();) {
    char32_t codePoint = 0;
    const std::u16string_view character = TakeCharacter(text, at, codePoint);
    const bool blank = codePoint == U' ';  // alone it would be dropped as a trailing one
    const std::optional<std::string> key = EncodeTextKey(blank ? std::u16string_view(u" a") : character);
    if (!key) {
      const char32_t folded = FoldCase(codePoint);
      weights += '\xFF';
      // 02 is added to each byte's seven bits: none is an end mark.
      for (int shift = 14; shift >= 0; shift -= 7)
        weights += static_cast<char>(((folded >> shift) & 0x7F) + 2);
    } else if (blank) {
      weights += InlineOf(*key)[0];
    } else {
      const std::string_view inlinePart = InlineOf(*key);
      weights += inlinePart;
      const std::string_view tail = std::string_view(*key).substr(inlinePart.size() + 1);
      if (tail.size() <= 1) continue;  // only the closing 00
      rest += static_cast<char>((at >> 7) + 2);
      rest += static_cast<char>((at & 0x7F) + 2);
      for (const char byte : tail) {
        rest += static_cast<char>(((static_cast<unsigned char>(byte) >> 4) & 0xF) + 2);
        rest += static_cast<char>((static_cast<unsigned char>(byte) & 0xF) + 2);
      }
    }
  }
  weights += kEndOfInline;
  weights += rest;
  weights += '\0';
  return weights;
}

std::string PieceKey(std::u16string_view piece) {
  if (std::optional<std::string> key = EncodeTextKey(piece)) return *std::move(key);
  return FallbackKey(WithoutTrailingBlanks(piece));
}

}  // namespace

bool TextsEqual(std::u16string_view a, std::u16string_view b) {
  a = WithoutTrailingBlanks(a);
  b = WithoutTrailingBlanks(b);
  if (a == b) return true;
  const AsciiTable& ascii = AsciiTable::Get();
  std::size_t i = 0;
  for (; i < a.size() && i < b.size(); ++i) {
    const char16_t fold = ascii[a[i]].fold;
    if (fold == 0 || fold != ascii[b[i]].fold) break;
  }
  if (i == a.size() && i == b.size()) return true;
  // Printable ASCII texts are equal only character by character; others may make up for a difference (sharp
  // s, "ss").
  if (ascii.Covers(a.substr(i)) && ascii.Covers(b.substr(i))) return false;
  return TextSortKey(a) == TextSortKey(b);
}

int CompareTexts(std::u16string_view a, std::u16string_view b) {
  if (TextsEqual(a, b)) return 0;
  return TextSortKey(a).compare(TextSortKey(b)) < 0 ? -1 : 1;
}

std::uint32_t HashText(std::u16string_view text) {
  if (text.size() > kKeyCharacters) text = text.substr(0, kKeyCharacters);
  text = WithoutTrailingBlanks(text);
  constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15;
  std::uint64_t hash = kMultiplier;
  const auto add = [&hash](std::uint8_t byte) { hash = (hash ^ byte) * kMultiplier; };
  const AsciiTable& ascii = AsciiTable::Get();
  bool plain = true;
  for (const char16_t c : text) {
    const AsciiTable::Entry& entry = ascii[c];
    if (entry.fold == 0) {
      plain = false;
      break;
    }
    if (entry.first != 0) add(entry.first);
    if (entry.second != 0) add(entry.second);
  }
  if (!plain) {
    hash = kMultiplier;
    const std::string key = PieceKey(text);
    for (const char byte : InlineOf(key)) add(static_cast<std::uint8_t>(byte));
  }
  hash ^= hash >> 32;
  hash *= kMultiplier;
  return static_cast<std::uint32_t>(hash >> 32);
}

std::string TextSortKey(std::u16string_view text) {
  text = WithoutTrailingBlanks(text);
  std::string key = PieceKey(text.substr(0, kKeyCharacters));
  for (std::size_t at = kKeyCharacters; at < text.size(); at += kKeyCharacters) {
    key += PieceKey(text.substr(at, kKeyCharacters));
  }
  return key;
}

bool SameName(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && FoldCase(a[i]) != FoldCase(b[i])) return false;
  }
  return true;
}

}  // namespace kestrelon::jet::sql
