#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "jet/base/Value.h"
#include "jet/schema/Column.h"
#include "jet/sql/Statement.h"

namespace kestrelon::jet::sql {

// Whole text as a decimal number, blanks around it allowed; a period is the decimal sign on every system.
std::optional<double> ParseNumber(std::u16string_view text);
// "2026-11-15", "11/15/2026" (month first), each with an optional time ("13:20", "13:20:05", "1:20:05 PM"),
// or a time alone. Days since 1899-12-30; before that day the fraction still counts forward from midnight.
std::optional<double> ParseDate(std::u16string_view text);

// A value of a column of this type as a client sees it in text: numbers in decimal, True and False, dates as
// "2026-11-15 13:20:05" (without the time at midnight), GUIDs as {…}, other bytes in hexadecimal, NULL as "".
std::u16string ToText(const Value& value, ColumnType type);

// Turns a value into one that a column of this type stores: numbers and texts into each other, numbers into
// booleans and dates. Throws Error (code::kTypeMismatch) where that is not possible, also because a number or
// date lies outside the type's range. NULL stays NULL, but for booleans, which have none: it becomes false.
void ConvertTo(ColumnType type, Value& value, bool isDate = false);

}  // namespace kestrelon::jet::sql
