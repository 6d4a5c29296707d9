#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace kestrelon::jet {

// One field of a row, as the caller sees it. std::monostate is NULL, which differs from the empty text.
// Byte, integer and long are std::int32_t; currency is std::int64_t, the amount times 10000; single, double
// and date are double (dates: days since 1899-12-30); numeric, GUID, binary and OLE are Bytes as stored.
using Bytes = std::vector<std::uint8_t>;
using Value = std::variant<std::monostate, bool, std::int32_t, std::int64_t, double, std::u16string, Bytes>;

inline bool IsNull(const Value& value) { return std::holds_alternative<std::monostate>(value); }

}  // namespace kestrelon::jet
