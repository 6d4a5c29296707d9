#pragma once

#include <vector>

#include "jet/database/Database.h"

namespace kestrelon::store {

// The three tables of every database of the program, in the order and with the columns that its statements
// rely on.
std::vector<jet::NewTable> Schema();

}  // namespace kestrelon::store
