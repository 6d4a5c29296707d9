#pragma once

#include <cstddef>
#include <string_view>

#include "jet/sql/Statement.h"

namespace kestrelon::jet::sql {

// In UTF-16 units. Room for a text of 65,535 characters, the longest that a comment has, with its statement
// around it.
inline constexpr std::size_t kMaxStatement = 68'000;
// Of parentheses, NOT and minus signs inside each other.
inline constexpr std::size_t kMaxDepth = 100;

// Parses one statement into `statement`, whose memory is reused. Throws Error (code::kSyntax) with the
// sentence that names the faulty clause or expression; the first fault from the left counts.
void Parse(std::u16string_view sql, Statement& statement);

}  // namespace kestrelon::jet::sql
