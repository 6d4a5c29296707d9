#pragma once

// Page 0 of an input of the target "rows":
//
//   OFFSET  SIZE  MEANING
//   0       1     columns
//   1       1     variable columns ever
//   2       1     columns ever
//   8       10n   columns: type, flags, more flags, number, u16 variable index, u16 fixed offset, u16 length

#include "fuzz/Target.h"
#include "jet/schema/TableDef.h"

namespace kestrelon::fuzz::rows_input {

jet::TableDef Definition(Input page);
void PutDefinition(const jet::TableDef& def, std::uint8_t* page);
// No two columns of the definition share a byte of the row or a place among the variable ones.
bool PlacesAreApart(const jet::TableDef& def);

}  // namespace kestrelon::fuzz::rows_input
