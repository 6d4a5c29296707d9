#include "jet/row/TextCodec.h"

#include <algorithm>
#include <cstring>

#include "jet/base/Bytes.h"

namespace kestrelon::jet {
namespace {

constexpr std::size_t kLeastCompressed = 3, kMostCompressed = 1024;
constexpr char16_t kByteOrderMark = 0xFEFF;

// Every unit is 0001h..00FFh. (0 wraps around to FFFFh.)
bool IsSingleByte(std::u16string_view text) {
  unsigned all = 0;
  for (const char16_t unit : text)
    all |= static_cast<std::uint16_t>(unit - 1) + (unit == 0x100 ? 0x100u : 0u);
  return all < 0x100;
}

bool Compresses(std::u16string_view text) {
  return text.size() >= kLeastCompressed && text.size() <= kMostCompressed && IsSingleByte(text);
}

std::u16string_view WithoutMark(std::u16string_view text) {
  if (!text.empty() && text.front() == kByteOrderMark) text.remove_prefix(1);
  return text;
}

void Widen(const std::uint8_t* from, std::size_t count, char16_t* to) {
  for (std::size_t i = 0; i < count; ++i) to[i] = from[i];
}

void DecodeSwitching(std::span<const std::uint8_t> stored, std::u16string& text, std::uint32_t page) {
  bool single = true;
  for (std::size_t i = 0; i < stored.size();) {
    if (stored[i] == 0) {
      single = !single;
      ++i;
    } else if (single) {
      text.push_back(stored[i++]);
    } else {
      if (i + 1 == stored.size()) ThrowCorrupt("a text ends within a character", page);
      text.push_back(static_cast<char16_t>(stored[i] | stored[i + 1] << 8));
      i += 2;
    }
  }
}

}  // namespace

std::size_t EncodedTextSize(std::u16string_view text, bool mayCompress) {
  text = WithoutMark(text);
  return mayCompress && Compresses(text) ? text.size() + 2 : 2 * text.size();
}

std::size_t EncodeText(std::u16string_view text, bool mayCompress, std::uint8_t* out) {
  text = WithoutMark(text);
  const std::size_t size = text.size();
  if (mayCompress && Compresses(text)) {
    out[0] = 0xFF;
    out[1] = 0xFE;
    for (std::size_t i = 0; i < size; ++i) out[2 + i] = static_cast<std::uint8_t>(text[i]);
    return size + 2;
  }
  for (std::size_t i = 0; i < size; ++i) Put16(out + 2 * i, text[i]);
  return 2 * size;
}

void AppendDecoded(std::span<const std::uint8_t> stored, std::u16string& text, std::uint32_t page) {
  if (stored.size() >= 2 && stored[0] == 0xFF && stored[1] == 0xFE) {
    stored = stored.subspan(2);
    if (!stored.empty() && std::memchr(stored.data(), 0, stored.size()) != nullptr) {
      DecodeSwitching(stored, text, page);
      return;
    }
    const std::size_t start = text.size();
    text.resize(start + stored.size());
    Widen(stored.data(), stored.size(), text.data() + start);
    return;
  }
  if (stored.size() % 2 != 0) ThrowCorrupt("a text ends within a character", page);
  const std::size_t start = text.size(), count = stored.size() / 2;
  text.resize(start + count);
  for (std::size_t i = 0; i < count; ++i)
    text[start + i] = static_cast<char16_t>(Get16(stored.data() + 2 * i));
}

}  // namespace kestrelon::jet
