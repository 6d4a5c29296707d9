#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kestrelon::jet {

// The stored form of a text:
//
//   plain        UTF-16LE
//   compressed   FF FE, then one byte a character; a byte 00 switches to two bytes a character and back
//
// A text is written compressed where its column allows it, it has 3 to 1024 characters and all are
// U+0001..U+00FF, as Access does; the switch is read but never written. A first character U+FEFF is dropped
// on writing, because a plain text may not begin with the mark of a compressed one.

// Bytes that EncodeText() may need at most.
inline std::size_t EncodedTextBound(std::u16string_view text) { return 2 * text.size(); }
// Bytes that EncodeText() needs.
std::size_t EncodedTextSize(std::u16string_view text, bool mayCompress);
// Writes the stored form and returns its size. `out` has room for EncodedTextSize(text, mayCompress) bytes.
std::size_t EncodeText(std::u16string_view text, bool mayCompress, std::uint8_t* out);
// Appends to `text`. Throws CorruptFile (naming `page`) when a two-byte character is cut in half.
void AppendDecoded(std::span<const std::uint8_t> stored, std::u16string& text, std::uint32_t page);
// Replaces `text`.
inline void DecodeText(std::span<const std::uint8_t> stored, std::u16string& text, std::uint32_t page) {
  text.clear();
  AppendDecoded(stored, text, page);
}

}  // namespace kestrelon::jet
