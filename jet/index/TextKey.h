#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrelon::jet {

// The sort key of a text under the file format's sort order 1033, version 0 ("General"), without the flag
// byte that an index entry puts before it. Two texts are equal for the engine exactly when their keys are
// equal, and they sort as their keys do, byte by byte: letter case and trailing blanks do not count, accents
// count after all letters, hyphen and apostrophe last.
//
// Only the first 255 UTF-16 units take part. Known are the characters of Latin-1 and code page 1252; a text
// that holds any other character has no key here and gives nothing.
std::optional<std::string> EncodeTextKey(std::u16string_view text);

}  // namespace kestrelon::jet
