#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "jet/database/Table.h"

namespace kestrelon::jet::sql {

// Sorts rows by columns (position, descending), texts as CompareTexts orders them, NULL before everything.
// Rows that are equal in all of them stay in the order they had. Throws Error (code::kTypeMismatch) for a
// column of bytes.
void SortRows(const Table& table, const std::vector<std::pair<std::size_t, bool>>& columns,
              std::vector<RowId>& rows);

}  // namespace kestrelon::jet::sql
