#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "jet/base/RowId.h"

namespace kestrelon::jet::sql {

// Which rows were deleted, and when: an address does not tell, since another row may have got it. Times are
// the executor's count of changes.
class Deletions {
 public:
  void Note(std::u16string_view table, std::span<const RowId> rows, std::uint64_t time);
  // Every row of the table.
  void NoteAll(std::u16string_view table, std::uint64_t time);
  // Whether the row that had this address at a time was deleted later.
  bool DeletedSince(std::u16string_view table, RowId row, std::uint64_t time) const;

 private:
  struct OfTable {
    std::unordered_map<std::uint32_t, std::uint64_t> rows;  // the last time
    std::uint64_t all = 0;
  };
  std::map<std::u16string, OfTable, std::less<>> tables_;
};

}  // namespace kestrelon::jet::sql
