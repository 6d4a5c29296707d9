#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kestrelon::jet::sql {

// Comparison of texts as the database engine does it. Two texts are equal when their index keys are equal:
// case and trailing blanks do not count, accents do, a sharp s equals "ss". A character that has no index key
// counts as its code point with the case folded, after all characters that have one. Texts of more than 255
// characters, of which a key holds only so many, compare piece by piece. All four functions agree with each
// other: equal texts have equal hashes and equal sort keys, and sort keys compare bytewise as CompareTexts
// does.

bool TextsEqual(std::u16string_view a, std::u16string_view b);
// Negative, 0 or positive.
int CompareTexts(std::u16string_view a, std::u16string_view b);
std::uint32_t HashText(std::u16string_view text);
std::string TextSortKey(std::u16string_view text);

// Whether two names of tables or columns are the same: without regard to case, everything else counts.
bool SameName(std::u16string_view a, std::u16string_view b);

}  // namespace kestrelon::jet::sql
