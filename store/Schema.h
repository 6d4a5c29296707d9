#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "jet/database/Database.h"

namespace kestrelon::store {

// The three tables of every database of the program, in the order and with the columns that its statements
// rely on.
std::vector<jet::NewTable> Schema();

// The longest text that a column of the items' table takes, in UTF-16 units: the size of a text column,
// 65,535 for a memo. The name is one of that table's.
std::size_t LongestText(std::u16string_view column);

}  // namespace kestrelon::store
