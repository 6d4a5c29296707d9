#include "jet/sql/OrderBy.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>

#include "jet/base/Error.h"
#include "jet/sql/TextCompare.h"

namespace kestrelon::jet::sql {

namespace {

// An unsigned number that sorts as the double does.
std::uint64_t Sortable(double number) {
  if (number == 0) number = 0;  // no negative zero
  const auto bits = std::bit_cast<std::uint64_t>(number);
  return (bits >> 63) != 0 ? ~bits : bits | std::uint64_t{1} << 63;
}

std::uint64_t Sortable(const Value& value) {
  if (const auto* number = std::get_if<std::int32_t>(&value)) return Sortable(static_cast<double>(*number));
  if (const auto* number = std::get_if<double>(&value)) return Sortable(*number);
  if (const auto* truth = std::get_if<bool>(&value)) return Sortable(*truth ? -1.0 : 0.0);
  if (const auto* amount = std::get_if<std::int64_t>(&value)) {
    return static_cast<std::uint64_t>(*amount) ^ std::uint64_t{1} << 63;
  }
  return 0;
}

void AppendKey(const Value& value, bool descending, std::string& key) {
  const std::size_t start = key.size();
  if (IsNull(value)) {
    key += '\x00';
  } else {
    key += '\x7F';
    if (const auto* text = std::get_if<std::u16string>(&value)) {
      key += TextSortKey(*text);
      key += '\x00';
    } else {
      const std::uint64_t number = Sortable(value);
      for (int shift = 56; shift >= 0; shift -= 8) key += static_cast<char>(number >> shift & 0xFF);
    }
  }
  if (!descending) return;
  for (std::size_t i = start; i < key.size(); ++i) key[i] = static_cast<char>(~key[i]);
}

template <class Key>
void SortBy(std::vector<std::pair<Key, RowId>>& keyed, std::vector<RowId>& rows) {
  const auto less = [](const auto& a, const auto& b) { return a.first < b.first; };
  if (!std::is_sorted(keyed.begin(), keyed.end(), less)) std::stable_sort(keyed.begin(), keyed.end(), less);
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = keyed[i].second;
}

}  // namespace

void SortRows(const Table& table, const std::vector<std::pair<std::size_t, bool>>& columns,
              std::vector<RowId>& rows) {
  for (const auto& [column, descending] : columns) {
    switch (table.Columns()[column].type) {
      case ColumnType::kBinary:
      case ColumnType::kOle:
      case ColumnType::kGuid:
      case ColumnType::kNumeric:
        throw Error(code::kTypeMismatch, u"Data type mismatch in criteria expression.");
      default: break;
    }
  }
  Cursor cursor = table.Rows();
  Value value;
  const ColumnType first = table.Columns()[columns.front().first].type;
  if (columns.size() == 1 && first != ColumnType::kText && first != ColumnType::kMemo) {
    // NULL sorts as 0 does here: below every number that Sortable gives.
    std::vector<std::pair<std::uint64_t, RowId>> keyed;
    keyed.reserve(rows.size());
    for (const RowId row : rows) {
      cursor.MoveTo(row);
      cursor.Read(columns.front().first, value);
      const std::uint64_t key = IsNull(value) ? 0 : Sortable(value);
      keyed.emplace_back(columns.front().second ? ~key : key, row);
    }
    SortBy(keyed, rows);
    return;
  }
  std::vector<std::pair<std::string, RowId>> keyed;
  keyed.reserve(rows.size());
  for (const RowId row : rows) {
    cursor.MoveTo(row);
    std::string key;
    for (const auto& [column, descending] : columns) {
      cursor.Read(column, value);
      AppendKey(value, descending, key);
    }
    keyed.emplace_back(std::move(key), row);
  }
  SortBy(keyed, rows);
}

}  // namespace kestrelon::jet::sql
