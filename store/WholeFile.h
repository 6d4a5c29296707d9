#pragma once

#include <string>

namespace kestrelon::store {

// Throws unless the file is a whole database: one that another program was writing while it was copied is
// not. An index that does not fit its rows does no harm, since packing makes it anew.
void CheckIsWhole(const std::wstring& path);

}  // namespace kestrelon::store
