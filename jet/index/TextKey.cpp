#include "jet/index/TextKey.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

// A key of the sort order "General" (1033, version 0), ascending, without the flag byte:
//
//   SIZE  MEANING
//   n     one or two bytes for each character that has a place in the order ("inline" bytes)
//   1     01
//   m     one byte per such character up to the last one with an accent: its accent, 02 where there is none
//   3+4k  only if characters are ignored in the first place (hyphen, apostrophe, control characters): 01 01
//   01, then
//         for each: u16 big-endian 8000h | (7 + 4 * characters with inline bytes before it), 06, its code
//   1     00

namespace kestrelon::jet {
namespace {

constexpr std::size_t kKeyUnits = 255;  // an index looks at no more
constexpr std::uint8_t kNoAccent = 0x02;
constexpr std::uint8_t kEndOfPart = 0x01;

struct Weight {
  enum class Kind : std::uint8_t { kUnknown, kNothing, kInline, kIgnored };
  Kind kind = Kind::kUnknown;
  std::uint8_t first = 0;   // inline byte, or the code of an ignored character
  std::uint8_t second = 0;  // second inline byte or 0
  std::uint8_t accent = 0;
};

using Latin1 = std::array<Weight, 256>;

constexpr Weight Inline(unsigned bytes, std::uint8_t accent = 0) {
  Weight weight;
  weight.kind = Weight::Kind::kInline;
  weight.first = static_cast<std::uint8_t>(bytes > 0xFF ? bytes >> 8 : bytes);
  weight.second = static_cast<std::uint8_t>(bytes > 0xFF ? bytes & 0xFF : 0);
  weight.accent = accent;
  return weight;
}

constexpr Weight Ignored(unsigned code) {
  Weight weight;
  weight.kind = Weight::Kind::kIgnored;
  weight.first = static_cast<std::uint8_t>(code);
  return weight;
}

constexpr std::array<std::uint8_t, 26> kLetters = {0x4A, 0x4C, 0x4D, 0x4F, 0x51, 0x53, 0x55, 0x57, 0x59,
                                                   0x5B, 0x5C, 0x5E, 0x60, 0x62, 0x64, 0x66, 0x68, 0x69,
                                                   0x6B, 0x6D, 0x6F, 0x71, 0x73, 0x75, 0x76, 0x78};

constexpr Weight Letter(char letter, std::uint8_t accent = 0) {
  return Inline(kLetters[static_cast<std::size_t>(letter - 'a')], accent);
}

constexpr std::uint8_t kGrave = 0x0F, kAcute = 0x0E, kCircumflex = 0x12, kTilde = 0x19, kDiaeresis = 0x13,
                       kRing = 0x1A, kCedilla = 0x1C, kStroke = 0x21, kEth = 0x68, kOrdinal = 0x03,
                       kCaron = 0x14, kHook = 0x7B;

struct Entry {
  char16_t character;
  unsigned inlineBytes;
};

constexpr Entry kSigns[] = {
    {u' ', 0x07},     {u'!', 0x09},     {u'"', 0x0A},     {u'#', 0x0C},     {u'$', 0x0E},
    {u'%', 0x10},     {u'&', 0x12},     {u'(', 0x14},     {u')', 0x16},     {u'*', 0x18},
    {u',', 0x1A},     {u'.', 0x1C},     {u'/', 0x1E},     {u':', 0x20},     {u';', 0x22},
    {u'?', 0x24},     {u'@', 0x26},     {u'[', 0x27},     {u'\\', 0x29},    {u']', 0x2A},
    {u'+', 0x2C},     {u'<', 0x2E},     {u'=', 0x30},     {u'>', 0x32},     {u'^', 0x2B02},
    {u'_', 0x2B03},   {u'`', 0x2B07},   {u'{', 0x2B09},   {u'|', 0x2B0B},   {u'}', 0x2B0D},
    {u'~', 0x2B0F},   {u'\t', 0x0803},  {u'\n', 0x0804},  {u'\v', 0x0805},  {u'\f', 0x0806},
    {u'\r', 0x0807},  {0x00A0, 0x0802}, {0x00A1, 0x2B10}, {0x00A6, 0x2B11}, {0x00A8, 0x2B12},
    {0x00AF, 0x2B13}, {0x00B4, 0x2B14}, {0x00B8, 0x2B15}, {0x00BF, 0x2B16}, {0x00A2, 0x34A6},
    {0x00A3, 0x34A7}, {0x00A4, 0x34A8}, {0x00A5, 0x34A9}, {0x00A7, 0x34AA}, {0x00A9, 0x34AB},
    {0x00AC, 0x34AC}, {0x00AE, 0x34AD}, {0x00B0, 0x34AE}, {0x00B5, 0x34AF}, {0x00B6, 0x34B0},
    {0x00B7, 0x34B1}, {0x00AB, 0x3305}, {0x00BB, 0x3307}, {0x00B1, 0x3304}, {0x00D7, 0x3309},
    {0x00F7, 0x330A}, {0x00B9, 0x38},   {0x00B2, 0x3A},   {0x00B3, 0x3C},   {0x00BC, 0x3712},
    {0x00BD, 0x3716}, {0x00BE, 0x371A}, {0x00C6, 0x4A51}, {0x00E6, 0x4A51}, {0x00DF, 0x6B6B},
    {0x00DE, 0x6D57}, {0x00FE, 0x6D57},
};

struct Accented {
  char16_t upper;  // the lower form is 20h higher and weighs the same
  char letter;
  std::uint8_t accent;
};

constexpr Accented kAccented[] = {
    {0xC0, 'a', kGrave},     {0xC1, 'a', kAcute},      {0xC2, 'a', kCircumflex}, {0xC3, 'a', kTilde},
    {0xC4, 'a', kDiaeresis}, {0xC5, 'a', kRing},       {0xC7, 'c', kCedilla},    {0xC8, 'e', kGrave},
    {0xC9, 'e', kAcute},     {0xCA, 'e', kCircumflex}, {0xCB, 'e', kDiaeresis},  {0xCC, 'i', kGrave},
    {0xCD, 'i', kAcute},     {0xCE, 'i', kCircumflex}, {0xCF, 'i', kDiaeresis},  {0xD0, 'd', kEth},
    {0xD1, 'n', kTilde},     {0xD2, 'o', kGrave},      {0xD3, 'o', kAcute},      {0xD4, 'o', kCircumflex},
    {0xD5, 'o', kTilde},     {0xD6, 'o', kDiaeresis},  {0xD8, 'o', kStroke},     {0xD9, 'u', kGrave},
    {0xDA, 'u', kAcute},     {0xDB, 'u', kCircumflex}, {0xDC, 'u', kDiaeresis},  {0xDD, 'y', kAcute},
};

constexpr Latin1 MakeLatin1() {
  Latin1 table{};
  table[0].kind = Weight::Kind::kNothing;
  for (unsigned c = 0x01; c <= 0x08; ++c) table[c] = Ignored(c + 2);
  for (unsigned c = 0x0E; c <= 0x1F; ++c) table[c] = Ignored(c - 3);
  for (unsigned c = 0x7F; c <= 0x9F; ++c) table[c] = Ignored(c - 0x62);
  table[u'\''] = Ignored(0x80);
  table[u'-'] = Ignored(0x82);
  table[0xAD] = Ignored(0x83);
  for (unsigned digit = 0; digit < 10; ++digit) table[u'0' + digit] = Inline(0x36 + 2 * digit);
  for (unsigned i = 0; i < 26; ++i) table[u'a' + i] = table[u'A' + i] = Inline(kLetters[i]);
  for (const Entry& sign : kSigns) table[sign.character] = Inline(sign.inlineBytes);
  for (const Accented& accented : kAccented) {
    table[accented.upper] = table[accented.upper + 0x20u] = Letter(accented.letter, accented.accent);
  }
  table[0xFF] = Letter('y', kDiaeresis);
  table[0xAA] = Letter('a', kOrdinal);
  table[0xBA] = Letter('o', kOrdinal);
  return table;
}

constexpr Latin1 kLatin1 = MakeLatin1();

struct Other {
  char16_t character;
  Weight weight;
};

// What code page 1252 has beyond Latin-1, in code point order.
constexpr Other kOthers[] = {
    {0x0152, Inline(0x6451)},      {0x0153, Inline(0x6451)},          {0x0160, Letter('s', kCaron)},
    {0x0161, Letter('s', kCaron)}, {0x0178, Letter('y', kDiaeresis)}, {0x017D, Letter('z', kCaron)},
    {0x017E, Letter('z', kCaron)}, {0x0192, Letter('f', kHook)},      {0x02C6, Inline(0x2B02, 0x03)},
    {0x02DC, Inline(0x2B1C)},      {0x2013, Ignored(0x89)},           {0x2014, Ignored(0x8B)},
    {0x2018, Inline(0x2B37)},      {0x2019, Inline(0x2B38)},          {0x201A, Inline(0x2B39)},
    {0x201C, Inline(0x2B3B)},      {0x201D, Inline(0x2B3C)},          {0x201E, Inline(0x2B3D)},
    {0x2020, Inline(0x34B3)},      {0x2021, Inline(0x34B4)},          {0x2022, Inline(0x34B5)},
    {0x2026, Inline(0x34B9)},      {0x2030, Inline(0x34BA)},          {0x2039, Inline(0x2B46)},
    {0x203A, Inline(0x2B47)},      {0x20AC, Inline(0x35A1)},          {0x2122, Inline(0x6E04)},
};

Weight WeightOf(char16_t character) {
  if (character < kLatin1.size()) return kLatin1[character];
  const auto* found = std::lower_bound(std::begin(kOthers), std::end(kOthers), character,
                                       [](const Other& other, char16_t c) { return other.character < c; });
  return found != std::end(kOthers) && found->character == character ? found->weight : Weight{};
}

}  // namespace

std::optional<std::string> EncodeTextKey(std::u16string_view text) {
  text = text.substr(0, kKeyUnits);
  while (!text.empty() && text.back() == u' ') text.remove_suffix(1);

  std::string key, accents, ignored;
  key.reserve(2 * text.size() + 2);
  const auto append = [](std::string& part, unsigned byte) { part.push_back(static_cast<char>(byte)); };
  std::size_t positions = 0;
  for (const char16_t character : text) {
    const Weight weight = WeightOf(character);
    switch (weight.kind) {
      case Weight::Kind::kUnknown: return std::nullopt;
      case Weight::Kind::kNothing: break;
      case Weight::Kind::kInline:
        append(key, weight.first);
        if (weight.second != 0) append(key, weight.second);
        if (weight.accent != 0) {
          accents.resize(positions, static_cast<char>(kNoAccent));
          append(accents, weight.accent);
        }
        ++positions;
        break;
      case Weight::Kind::kIgnored: {
        const std::size_t place = 0x8000 | (7 + 4 * positions);
        append(ignored, static_cast<unsigned>(place >> 8 & 0xFF));
        append(ignored, static_cast<unsigned>(place & 0xFF));
        append(ignored, 0x06);
        append(ignored, weight.first);
        break;
      }
    }
  }
  append(key, kEndOfPart);
  key += accents;
  if (!ignored.empty()) {
    key.append(3, static_cast<char>(kEndOfPart));
    key += ignored;
  }
  append(key, 0x00);
  return key;
}

}  // namespace kestrelon::jet
