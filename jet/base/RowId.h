#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrelon::jet {

// The address of a row: page and slot. Stays the same as long as the row lives, also when it grows.
enum class RowId : std::uint32_t {};  // page << 8 | slot

inline RowId MakeRowId(std::uint32_t page, std::size_t slot) {
  return RowId{page << 8 | static_cast<std::uint32_t>(slot)};
}

}  // namespace kestrelon::jet
