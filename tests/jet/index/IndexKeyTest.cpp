#include <limits>

#include "tests/jet/index/Keys.h"

namespace kestrelon::jet {
namespace {

std::string Hex(const std::string& key) {
  std::string hex;
  for (const char byte : key) {
    constexpr char kDigits[] = "0123456789abcdef";
    hex += kDigits[static_cast<unsigned char>(byte) >> 4];
    hex += kDigits[static_cast<unsigned char>(byte) & 15];
  }
  return hex;
}

TEST(IndexKey, IsTheOneThatAccessWrites) {
  EXPECT_EQ(Hex(KeyOf(ColumnType::kLong, std::int32_t{1})), "7f80000001");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kLong, std::numeric_limits<std::int32_t>::min())), "7f00000000");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kText, u"a")), "7f4a0100");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kText, u"a", false)), "80b5feff00");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kLong, Value())), "00");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kLong, Value(), false)), "ff");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kBoolean, true)), "7f00");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kBoolean, false)), "7fff");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kBinary, Bytes{1, 2, 3})), "7f010203000000000003");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kBinary, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9})),
            "7f0102030405060708090900000000000000"
            "01");
}

TEST(IndexKey, SortsAsItsValueDoes) {
  const double doubles[] = {-1e300, -1.5, -1.0, 0.0, 1e-9, 1.0, 2.5, 1e300};
  for (std::size_t i = 1; i < std::size(doubles); ++i) {
    EXPECT_LT(KeyOf(ColumnType::kDouble, doubles[i - 1]), KeyOf(ColumnType::kDouble, doubles[i]));
    EXPECT_LT(KeyOf(ColumnType::kSingle, -1.0 / double(i)), KeyOf(ColumnType::kSingle, -1.0 / double(i + 1)));
    EXPECT_GT(KeyOf(ColumnType::kDouble, doubles[i - 1], false),
              KeyOf(ColumnType::kDouble, doubles[i], false));
  }
  EXPECT_LT(KeyOf(ColumnType::kCurrency, std::int64_t{-10000}),
            KeyOf(ColumnType::kCurrency, std::int64_t{5}));
  EXPECT_LT(KeyOf(ColumnType::kInteger, std::int32_t{-1}), KeyOf(ColumnType::kInteger, std::int32_t{0}));
  EXPECT_LT(KeyOf(ColumnType::kByte, std::int32_t{1}), KeyOf(ColumnType::kByte, std::int32_t{200}));
  Bytes minusTwo(17), minusOne(17), two(17);
  minusTwo[0] = minusOne[0] = 0x80;
  minusTwo[13] = two[13] = 2;
  minusOne[13] = 1;
  EXPECT_LT(KeyOf(ColumnType::kNumeric, minusTwo), KeyOf(ColumnType::kNumeric, minusOne));
  EXPECT_LT(KeyOf(ColumnType::kNumeric, minusOne), KeyOf(ColumnType::kNumeric, two));
}

TEST(IndexKey, DoesNotExistUnderAForeignSortOrder) {
  StoredColumn swedish = ColumnOf(ColumnType::kText);
  swedish.collation = 0x041D;
  std::string key;
  EXPECT_FALSE(KnowsKeysOf(swedish));
  EXPECT_FALSE(AppendKey(swedish, u"a", true, key));
  EXPECT_FALSE(AppendKey(ColumnOf(ColumnType::kText), u"文", true, key));
}

}  // namespace
}  // namespace kestrelon::jet
