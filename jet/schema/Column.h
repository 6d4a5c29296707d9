#pragma once

#include <cstdint>
#include <string>

namespace kestrelon::jet {

enum class ColumnType : std::uint8_t {
  kBoolean = 1,
  kByte = 2,
  kInteger = 3,
  kLong = 4,
  kCurrency = 5,
  kSingle = 6,
  kDouble = 7,
  kDate = 8,
  kBinary = 9,
  kText = 10,
  kOle = 11,
  kMemo = 12,
  kGuid = 15,
  kNumeric = 16,
};

struct Column {
  std::u16string name;
  ColumnType type = ColumnType::kText;
  std::uint16_t number = 0;  // the format's column number: bit in the null mask, never reused
  std::uint16_t length = 0;  // bytes; a text of n characters has 2n; 0 for memo and OLE
  bool autoNumber = false;
};

}  // namespace kestrelon::jet
