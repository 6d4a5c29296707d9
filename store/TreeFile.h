#pragma once

#include <string>
#include <vector>

#include "store/CategoryRows.h"

namespace kestrelon::store {

// The categories as the tree control shows them, in a file of their own. The working database gets the tree
// only when a slot is saved; until then this is where a tree outlives the program.

// Writes a new file and flushes it to the disk. Throws std::system_error.
void WriteTreeFile(const std::wstring& path, const win::TreeView& tree);
// Throws std::runtime_error for a file that is not whole.
std::vector<CategoryRow> ReadTreeFile(const std::wstring& path);

}  // namespace kestrelon::store
