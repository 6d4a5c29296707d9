#pragma once

#include <gtest/gtest.h>

#include <string>

#include "jet/index/Index.h"

namespace kestrelon::jet {

inline StoredColumn ColumnOf(ColumnType type) {
  StoredColumn column;
  column.type = static_cast<std::uint8_t>(type);
  return column;
}

// The key of one value, which must have one.
inline std::string KeyOf(ColumnType type, const Value& value, bool ascending = true) {
  std::string key;
  EXPECT_TRUE(AppendKey(ColumnOf(type), value, ascending, key));
  return key;
}

}  // namespace kestrelon::jet
