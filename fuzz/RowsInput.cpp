#include "fuzz/RowsInput.h"

#include <algorithm>
#include <set>

#include "jet/base/Bytes.h"

namespace kestrelon::fuzz::rows_input {
namespace {

constexpr std::size_t kColumns = 8, kColumnBytes = 10;

}  // namespace

jet::TableDef Definition(Input page) {
  jet::TableDef def;
  def.variableColumns = page[1];
  def.maxColumns = page[2];
  for (std::size_t i = 0; i < page[0]; ++i) {
    const std::uint8_t* at = page.data() + kColumns + kColumnBytes * i;
    jet::StoredColumn& column = def.columns.emplace_back();
    column.name = u"c";
    column.type = at[0];
    column.flags = at[1];
    column.moreFlags = at[2];
    column.number = at[3];
    column.variableIndex = jet::Get16(at + 4);
    column.fixedOffset = jet::Get16(at + 6);
    column.length = jet::Get16(at + 8);
  }
  return def;
}

void PutDefinition(const jet::TableDef& def, std::uint8_t* page) {
  page[0] = static_cast<std::uint8_t>(def.columns.size());
  page[1] = static_cast<std::uint8_t>(def.variableColumns);
  page[2] = static_cast<std::uint8_t>(def.maxColumns);
  std::uint8_t* at = page + kColumns;
  for (const jet::StoredColumn& column : def.columns) {
    at[0] = column.type;
    at[1] = column.flags;
    at[2] = column.moreFlags;
    at[3] = static_cast<std::uint8_t>(column.number);
    jet::Put16(at + 4, column.variableIndex);
    jet::Put16(at + 6, column.fixedOffset);
    jet::Put16(at + 8, column.length);
    at += kColumnBytes;
  }
}

bool PlacesAreApart(const jet::TableDef& def) {
  std::set<std::size_t> fixed, variable;
  for (const jet::StoredColumn& column : def.columns) {
    if (column.Is(jet::ColumnType::kBoolean)) continue;
    if (!column.Fixed() && !variable.insert(column.variableIndex).second) return false;
    for (std::size_t i = 0; column.Fixed() && i < column.length; ++i) {
      if (!fixed.insert(column.fixedOffset + i).second) return false;
    }
  }
  return true;
}

}  // namespace kestrelon::fuzz::rows_input
