#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string_view>

#include "jet/catalog/Layout.h"
#include "jet/row/LongValue.h"
#include "jet/row/RowCodec.h"

// Rows byte by byte; the long ones among the literals stand so in files of Access.

namespace kestrelon::jet {
namespace {

std::vector<std::uint8_t> FromHex(std::string_view hex) {
  std::vector<std::uint8_t> bytes;
  const auto digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
  for (std::size_t i = 0; i < hex.size(); i += 2)
    bytes.push_back(static_cast<std::uint8_t>(digit(hex[i]) << 4 | digit(hex[i + 1])));
  return bytes;
}

// A table of these columns, and rows to and from bytes.
class RowCodec : public testing::Test {
 protected:
  void Columns(const std::vector<ColumnType>& types) {
    for (const ColumnType type : types) {
      StoredColumn column;
      column.type = static_cast<std::uint8_t>(type);
      column.number = static_cast<std::uint16_t>(def_.columns.size());
      column.length = SizeOf(type);
      if (column.length != 0) column.flags |= StoredColumn::kFixed;
      if (type == ColumnType::kText) column.length = 510;
      if (type == ColumnType::kBinary) column.length = 255;
      if (column.Text()) column.moreFlags = StoredColumn::kCompressed;
      def_.columns.push_back(column);
    }
    AssignPlaces(def_);
  }
  std::vector<std::uint8_t> Encode(const std::vector<Value>& values) {
    std::vector<Field> fields(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) fields[i].value = &values[i];
    RowEncoder(def_, def_.columns).Encode(fields, row_);
    return {row_.bytes.begin(), row_.bytes.begin() + static_cast<std::ptrdiff_t>(row_.size)};
  }
  RowView View(const std::vector<std::uint8_t>& row) {
    return RowView(row.data(), row.size(), def_.variableColumns > 0, 1);
  }
  Value Decode(const std::vector<std::uint8_t>& row, std::size_t column) {
    const RowView view = View(row);
    Value value;
    if (view.Has(def_.columns[column].number))
      DecodeField(def_.columns[column], view.Field(def_.columns[column]), value, 1);
    return value;
  }

  TableDef def_;
  EncodedRow row_;
};

using enum ColumnType;

TEST_F(RowCodec, WritesWhatAccessWrites) {
  Columns({kLong, kText});
  EXPECT_EQ(Encode({std::int32_t{1}, u"only ascii chars"}),
            FromHex("020001000000fffe6f6e6c79206173636969206368617273180006000100"
                    "03"));
  EXPECT_EQ(Encode({std::int32_t{3}, u"Мир"}), FromHex("0200030000001c04380440040c000600010003"));
}

TEST_F(RowCodec, ReadsWhatAccessWrote) {
  Columns({kLong, kText});
  const auto row = FromHex("0200030000001c04380440040c000600010003");
  EXPECT_EQ(Decode(row, 0), Value(std::int32_t{3}));
  EXPECT_EQ(Decode(row, 1), Value(u"Мир"));
}

TEST_F(RowCodec, KeepsABooleanInTheMaskOnly) {
  Columns({kLong, kBinary, kLong, kBoolean});  // a row of rights
  const auto row = FromHex("040000000080ffff0f00a7330c000a0001000f");
  EXPECT_EQ(
      Encode({std::numeric_limits<std::int32_t>::min(), Bytes{0xA7, 0x33}, std::int32_t{1048575}, true}),
      row);
  EXPECT_TRUE(View(row).Has(3));
}

TEST_F(RowCodec, TellsNullFromEmptyByTheMask) {
  Columns({kText, kText});
  const auto row = Encode({Value(), std::u16string()});
  EXPECT_EQ(row, FromHex("02000200020002000200"
                         "02"));
  EXPECT_TRUE(IsNull(Decode(row, 0)));
  EXPECT_EQ(Decode(row, 1), Value(std::u16string()));
}

TEST_F(RowCodec, HasNoOffsetsInATableOfFixedColumns) {
  Columns({kInteger, kByte});
  EXPECT_EQ(Encode({std::int32_t{-2}, std::int32_t{255}}), FromHex("0200feffff03"));
  EXPECT_EQ(Encode({Value(), std::int32_t{1}}), FromHex("020000000102"));
}

TEST_F(RowCodec, ReadsARowOlderThanItsTableAsNull) {
  Columns({kText, kText, kText, kText, kText, kText, kText, kText, kText});
  const auto row = FromHex(
      "0200610062000400020002000200"
      "03");
  EXPECT_EQ(View(FromHex("01006100040002000100"
                         "01"))
                .ColumnCount(),
            1u);
  EXPECT_EQ(View(row).VariableCount(), 2u);
  for (std::size_t column = 2; column < 9; ++column) EXPECT_TRUE(IsNull(Decode(row, column)));
}

TEST_F(RowCodec, PutsAShortMemoIntoTheRowAndALongOneAside) {
  Columns({kMemo});
  EXPECT_EQ(Encode({u"abc"}), FromHex("01000500008000000000"
                                      "00000000fffe616263"
                                      "13000200010001"));
  EXPECT_EQ(row_.pendingCount, 0u);
  Encode({std::u16string(200, u'x')});
  ASSERT_EQ(row_.pendingCount, 1u);
  EXPECT_EQ(row_.pending[0].reference, 2u);
  EXPECT_EQ(row_.pending[0].stored.size(), 202u);
}

TEST_F(RowCodec, TakesFieldsOfAnOldRowAsTheyStand) {
  Columns({kLong, kText});
  const auto old = FromHex("0200030000001c04380440040c000600010003");
  const RowView view = View(old);
  std::vector<Field> fields(2);
  const Value number = std::int32_t{4};
  fields[0].value = &number;
  fields[1].raw = view.Field(def_.columns[1]);
  fields[1].present = true;
  RowEncoder(def_, def_.columns).Encode(fields, row_);
  EXPECT_EQ(std::vector<std::uint8_t>(row_.bytes.begin(), row_.bytes.begin() + 19),
            FromHex("0200040000001c04380440040c000600010003"));
}

TEST_F(RowCodec, RefusesValuesThatTheColumnCannotHold) {
  Columns({kByte, kInteger, kText, kGuid});
  const auto numberOf = [this](const std::vector<Value>& values) {
    try {
      Encode(values);
    } catch (const Error& error) {
      return error.Number();
    }
    return std::uint32_t{0};
  };
  const Value null;
  EXPECT_EQ(numberOf({std::int32_t{256}, null, null, null}), code::kTypeMismatch);
  EXPECT_EQ(numberOf({std::int32_t{-1}, null, null, null}), code::kTypeMismatch);
  EXPECT_EQ(numberOf({null, std::int32_t{32768}, null, null}), code::kTypeMismatch);
  EXPECT_EQ(numberOf({null, u"1", null, null}), code::kTypeMismatch);
  EXPECT_EQ(numberOf({null, null, std::u16string(256, u'x'), null}), code::kTooLong);
  EXPECT_EQ(numberOf({null, null, null, Bytes(15)}), code::kTypeMismatch);
  EXPECT_EQ(numberOf({null, null, std::u16string(255, u'x'), Bytes(16)}), 0u);
}

TEST_F(RowCodec, RefusesRowsThatContradictThemselves) {
  Columns({kLong, kText});
  for (const char* row : {
           "02",                             // no count
           "ff0001000000",                   // a mask longer than the row
           "0200000003",                     // no room for any offset
           "020001000000610008000600ff0003"  // nor for 255 of them
       }) {
    EXPECT_THROW(View(FromHex(row)), CorruptFile) << row;
  }
  EXPECT_THROW(Decode(FromHex("02000100000061000800090001"
                              "0003"),
                      1),
               CorruptFile)
      << "it starts behind its end";
  EXPECT_THROW(Decode(FromHex("0200010000006100ff00060001"
                              "0003"),
                      1),
               CorruptFile)
      << "it ends outside";
  EXPECT_THROW(Decode(FromHex("0200010006000600010003"), 0), CorruptFile) << "no room for the number";
}

TEST_F(RowCodec, ReadsScalarsOfEveryType) {
  const auto decoded = [](ColumnType type, const char* hex) {
    StoredColumn column;
    column.type = static_cast<std::uint8_t>(type);
    Value value;
    DecodeField(column, FromHex(hex), value, 1);
    return value;
  };
  EXPECT_EQ(decoded(kByte, "ff"), Value(std::int32_t{255}));
  EXPECT_EQ(decoded(kInteger, "ffff"), Value(std::int32_t{-1}));
  EXPECT_EQ(decoded(kLong, "00000080"), Value(std::numeric_limits<std::int32_t>::min()));
  EXPECT_EQ(decoded(kCurrency, "d2feffffffffffff"), Value(std::int64_t{-302}));
  EXPECT_EQ(decoded(kSingle, "0000c03f"), Value(1.5));
  EXPECT_EQ(decoded(kDouble, "000000000000f4bf"), Value(-1.25));
  EXPECT_EQ(decoded(kDate, "000000000000f43f"), Value(1.25));
  EXPECT_EQ(decoded(kBinary, "00ff"), Value(Bytes{0, 0xFF}));
  EXPECT_THROW(decoded(kLong, "000000"), CorruptFile);
}

}  // namespace
}  // namespace kestrelon::jet
