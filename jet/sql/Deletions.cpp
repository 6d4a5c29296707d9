#include "jet/sql/Deletions.h"

namespace kestrelon::jet::sql {

void Deletions::Note(std::u16string_view table, std::span<const RowId> rows, std::uint64_t time) {
  OfTable& noted = tables_[std::u16string(table)];
  for (const RowId row : rows) noted.rows[static_cast<std::uint32_t>(row)] = time;
}

void Deletions::NoteAll(std::u16string_view table, std::uint64_t time) {
  OfTable& noted = tables_[std::u16string(table)];
  noted.rows.clear();
  noted.all = time;
}

bool Deletions::DeletedSince(std::u16string_view table, RowId row, std::uint64_t time) const {
  const auto noted = tables_.find(table);
  if (noted == tables_.end()) return false;
  if (noted->second.all > time) return true;
  const auto found = noted->second.rows.find(static_cast<std::uint32_t>(row));
  return found != noted->second.rows.end() && found->second > time;
}

}  // namespace kestrelon::jet::sql
