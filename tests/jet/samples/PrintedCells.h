#pragma once

#include "jet/database/Database.h"
#include "jet/table/TableInternal.h"
#include "tests/jet/Support.h"
#include "tests/jet/samples/MdbTools.h"

namespace kestrelon::jet {

// The type of a binary column of fixed length, which Access uses in helper tables of its own.
inline constexpr std::uint8_t kFixedBinary = 17;

// A table of ours as the engine's layers share it.
const TableInternal& InternalOf(Table& table);

// What mdb-export must print for a value, character by character. Where the tools are wrong or print less
// than there is, this says what they print instead:
//   empty text    taken for null
//   binary        cut at its first byte 0; of a GUID the hexadecimal form of its text, "{...}" without the
//   last hyphen fixed binary  nothing: they know no such type text          cut at its first U+0000;
//   characters beyond the first plane as two question marks date          before 1899-12-30 nonsense, so such
//   a date is not for this comparison
mdb_tools::Cell PrintedCell(const StoredColumn& column, const Value& value);

// Rows of the table in their order, the columns as `columns` names them.
std::vector<std::vector<mdb_tools::Cell>> PrintedRows(Table& table, const Rows& rows,
                                                      const std::vector<std::string>& columns);

}  // namespace kestrelon::jet
