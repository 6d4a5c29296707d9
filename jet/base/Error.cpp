#include "jet/base/Error.h"

#include <utility>

#include "jet/base/Bytes.h"

namespace kestrelon::jet {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void AppendUtf8(std::string& out, char32_t c) {
  const auto append = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (c < 0x80) {
    append(c);
  } else if (c < 0x800) {
    append(0xC0 | c >> 6);
    append(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    append(0xE0 | c >> 12);
    append(0x80 | (c >> 6 & 0x3F));
    append(0x80 | (c & 0x3F));
  } else {
    append(0xF0 | c >> 18);
    append(0x80 | (c >> 12 & 0x3F));
    append(0x80 | (c >> 6 & 0x3F));
    append(0x80 | (c & 0x3F));
  }
}

void AppendUtf16(std::u16string& out, char32_t c) {
  if (c < 0x10000) {
    out.push_back(static_cast<char16_t>(c));
  } else {
    out.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 | (c & 0x3FF)));
  }
}

}  // namespace

Error::Error(std::uint32_t number, std::u16string description)
    : number_(number), description_(std::move(description)), what_(ToUtf8(description_)) {}

std::string ToUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      AppendUtf8(out, 0x10000 + ((unit & 0x3FFu) << 10) + (text[++i] & 0x3FFu));
    } else {
      AppendUtf8(out, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit);
    }
  }
  return out;
}

std::u16string FromUtf8(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    const std::size_t more = lead < 0x80   ? 0
                             : lead < 0xC2 ? 9
                             : lead < 0xE0 ? 1
                             : lead < 0xF0 ? 2
                             : lead < 0xF5 ? 3
                                           : 9;
    if (more == 9) {
      AppendUtf16(out, kReplacement);
      continue;
    }
    char32_t c = more == 0 ? lead : lead & (0x3Fu >> more);
    std::size_t seen = 0;
    while (seen < more && i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) {
      c = c << 6 | (static_cast<unsigned char>(text[i++]) & 0x3Fu);
      ++seen;
    }
    const bool tooShort = seen < more || (more == 2 && c < 0x800) || (more == 3 && c < 0x10000);
    const bool noCharacter = c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF);
    AppendUtf16(out, tooShort || noCharacter ? kReplacement : c);
  }
  return out;
}

void ThrowCorrupt(const char* what, std::uint32_t page) {
  throw CorruptFile(FromUtf8("Unrecognized database format: " + std::string(what) + " (page " +
                             std::to_string(page) + ")."));
}

}  // namespace kestrelon::jet
