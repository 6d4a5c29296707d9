#include <cmath>
#include <limits>

#include "jet/sql/Convert.h"
#include "tests/jet/sql/SqlTestSupport.h"

namespace kestrelon::jet::sql {
namespace {

using sqltest::ExpectError;

Value Converted(ColumnType type, Value value, bool isDate = false) {
  ConvertTo(type, value, isDate);
  return value;
}

void ExpectMismatch(ColumnType type, const Value& value) {
  ExpectError(code::kTypeMismatch, u"Data type mismatch in criteria expression.",
              [&] { Converted(type, value); });
}

TEST(ConvertTo, WritesNumbersIntoTextsInDecimal) {
  EXPECT_EQ(Converted(ColumnType::kText, std::int32_t{-12}), Value(u"-12"));
  EXPECT_EQ(Converted(ColumnType::kMemo, 0.5), Value(u"0.5"));
  EXPECT_EQ(Converted(ColumnType::kText, std::int64_t{-12500}), Value(u"-1.25"));
  EXPECT_EQ(Converted(ColumnType::kText, true), Value(u"-1"));
  EXPECT_EQ(Converted(ColumnType::kText, 46341.5, true), Value(u"2026-11-15 12:00:00"));
}

TEST(ConvertTo, ReadsNumbersOutOfTexts) {
  EXPECT_EQ(Converted(ColumnType::kLong, std::u16string(u" 42 ")), Value(std::int32_t{42}));
  EXPECT_EQ(Converted(ColumnType::kDouble, std::u16string(u"-1.5e3")), Value(-1500.0));
  EXPECT_EQ(Converted(ColumnType::kCurrency, std::u16string(u"1.25")), Value(std::int64_t{12500}));
  EXPECT_EQ(Converted(ColumnType::kBoolean, std::u16string(u"-1")), Value(true));
}

TEST(ConvertTo, RefusesTextsThatAreNoNumbers) {
  for (const char16_t* text : {u"", u"x", u"1x", u"0x10", u"inf", u"nan", u"--1", u"+-1", u"1,5"}) {
    ExpectMismatch(ColumnType::kLong, std::u16string(text));
    ExpectMismatch(ColumnType::kDouble, std::u16string(text));
  }
}

TEST(ConvertTo, RoundsHalvesToTheEvenNeighbour) {
  EXPECT_EQ(Converted(ColumnType::kLong, 2.5), Value(std::int32_t{2}));
  EXPECT_EQ(Converted(ColumnType::kLong, 3.5), Value(std::int32_t{4}));
}

void ExpectOutOfRange(ColumnType type, const Value& value) {
  ExpectError(code::kTypeMismatch, u"The number or date lies outside the range of its column.",
              [&] { Converted(type, value); });
}

TEST(ConvertTo, RefusesNumbersOutOfRange) {
  ExpectOutOfRange(ColumnType::kByte, std::int32_t{256});
  ExpectOutOfRange(ColumnType::kByte, std::int32_t{-1});
  ExpectOutOfRange(ColumnType::kInteger, std::int32_t{32768});
  ExpectOutOfRange(ColumnType::kLong, 2147483648.0);
  ExpectOutOfRange(ColumnType::kCurrency, 1e16);
  for (const double number : {1e39, -1e39, 3.40282357e38, std::numeric_limits<double>::infinity()})
    ExpectOutOfRange(ColumnType::kSingle, number);
  ExpectOutOfRange(ColumnType::kSingle, std::u16string(u"1e39"));
  for (const double number : {std::numeric_limits<double>::infinity(), std::nan("")}) {
    ExpectOutOfRange(ColumnType::kDouble, number);
    ExpectOutOfRange(ColumnType::kDate, number);
  }
}

TEST(ConvertTo, TakesTheLargestSingle) {
  const Value largest = Converted(ColumnType::kSingle, std::u16string(u"3.4028235e38"));
  EXPECT_EQ(ToText(largest, ColumnType::kSingle), u"3.4028235e+38");
  EXPECT_EQ(Converted(ColumnType::kSingle, -3.4028234e38), Value(-3.4028234e38));
}

TEST(ConvertTo, RefusesDatesOutsideOfTheYears100To9999) {
  for (const double date : {2958466.0, -657435.0, 3e6, 1e300, -1e300})
    ExpectOutOfRange(ColumnType::kDate, date);
  ExpectOutOfRange(ColumnType::kDate, std::int32_t{2147483647});
  ExpectOutOfRange(ColumnType::kDate, std::u16string(u"2958466"));
  ExpectMismatch(ColumnType::kDate, std::u16string(u"10000-01-01"));
  for (const char16_t* text : {u"9999-12-31 23:59:59", u"0100-01-01", u"0100-01-01 23:59:59"})
    EXPECT_EQ(ToText(Converted(ColumnType::kDate, std::u16string(text)), ColumnType::kDate), text);
}

TEST(ConvertTo, LeavesNullAloneButInBooleans) {
  EXPECT_TRUE(IsNull(Converted(ColumnType::kLong, Value())));
  EXPECT_TRUE(IsNull(Converted(ColumnType::kText, Value())));
  EXPECT_EQ(Converted(ColumnType::kBoolean, Value()), Value(false));
}

TEST(ConvertTo, TakesBytesOnlyIntoColumnsOfBytes) {
  EXPECT_EQ(Converted(ColumnType::kBinary, Bytes{1}), Value(Bytes{1}));
  ExpectMismatch(ColumnType::kText, Bytes{1});
  ExpectMismatch(ColumnType::kLong, Bytes{1});
  ExpectMismatch(ColumnType::kOle, std::u16string(u"x"));
}

TEST(ParseDate, ReadsBothOrdersAndTimes) {
  EXPECT_EQ(ParseDate(u"2026-11-15"), 46341.0);
  EXPECT_EQ(ParseDate(u"11/15/2026"), 46341.0);
  EXPECT_EQ(ParseDate(u"2026-11-15 06:00"), 46341.25);
  EXPECT_EQ(ParseDate(u"11/15/26 6:00:00 PM"), 46341.75);
  EXPECT_EQ(ParseDate(u"12:00 AM"), 0.0);
  EXPECT_EQ(ParseDate(u"1899-12-30"), 0.0);
  EXPECT_EQ(ParseDate(u"1899-12-29 06:00"), -1.25);
  EXPECT_EQ(ParseDate(u"2024-02-29"), 45351.0);
}

TEST(ParseDate, RefusesWhatIsNoDate) {
  for (const char16_t* text : {u"", u"x", u"2026-13-01", u"2026-02-29", u"2026-04-31", u"24:00", u"1:60",
                               u"2026-11-15x", u"2026-11-15 25:00", u"15.11.2026", u"13:00 PM", u"2026-11"}) {
    EXPECT_EQ(ParseDate(text), std::nullopt) << ToUtf8(text);
  }
}

TEST(ToText, ShowsEveryType) {
  EXPECT_EQ(ToText(Value(), ColumnType::kText), u"");
  EXPECT_EQ(ToText(Value(true), ColumnType::kBoolean), u"True");
  EXPECT_EQ(ToText(Value(std::int32_t{-7}), ColumnType::kLong), u"-7");
  EXPECT_EQ(ToText(Value(std::int64_t{-5}), ColumnType::kCurrency), u"-0.0005");
  EXPECT_EQ(ToText(Value(static_cast<double>(0.1F)), ColumnType::kSingle), u"0.1");
  EXPECT_EQ(ToText(Value(46341.0), ColumnType::kDate), u"2026-11-15");
  EXPECT_EQ(ToText(Value(-1.25), ColumnType::kDate), u"1899-12-29 06:00:00");
  EXPECT_EQ(ToText(Value(Bytes{0x0A, 0xFF}), ColumnType::kBinary), u"0AFF");
  EXPECT_EQ(ToText(Value(Bytes{0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66, 0x88, 0x99, 0xAA, 0xBB, 0xCC,
                               0xDD, 0xEE, 0xFF}),
                   ColumnType::kGuid),
            u"{00112233-4455-6677-8899-AABBCCDDEEFF}");
}

}  // namespace
}  // namespace kestrelon::jet::sql
