#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "jet/base/Bytes.h"

namespace kestrelon::jet {
namespace {

TEST(Bytes, StandInTheFileLowestFirst) {
  std::array<std::uint8_t, 8> bytes{};
  Put16(bytes.data(), 0x0102);
  EXPECT_EQ(bytes[0], 0x02);
  EXPECT_EQ(bytes[1], 0x01);
  Put24(bytes.data(), 0x010203);
  EXPECT_EQ(Get24(bytes.data()), 0x010203u);
  EXPECT_EQ(bytes[2], 0x01);
  EXPECT_EQ(bytes[3], 0x00) << "the fourth byte is left alone";
  Put64(bytes.data(), 0x8899AABBCCDDEEFF);
  EXPECT_EQ(bytes[0], 0xFF);
  EXPECT_EQ(Get32(bytes.data()), 0xCCDDEEFFu);
  EXPECT_EQ(Get64(bytes.data()), 0x8899AABBCCDDEEFFu);
}

TEST(Bytes, OfAnIndexEntryStandHighestFirst) {
  std::array<std::uint8_t, 4> bytes{};
  PutBig32(bytes.data(), 0x01020304);
  EXPECT_EQ(bytes[0], 0x01);
  EXPECT_EQ(GetBig32(bytes.data()), 0x01020304u);
  EXPECT_EQ(Get32(bytes.data()), 0x04030201u);
}

TEST(Bytes, AreNotReadPastTheirEnd) {
  const std::array<std::uint8_t, 4> bytes = {1, 2, 3, 4};
  EXPECT_EQ(Get16(bytes, 2, 9), 0x0403);
  EXPECT_EQ(Get32(bytes, 0, 9), 0x04030201u);
  EXPECT_EQ(At(bytes, 4, 0, 9), bytes.data() + 4);
  EXPECT_THROW(Get16(bytes, 3, 9), CorruptFile);
  EXPECT_THROW(Get32(bytes, 1, 9), CorruptFile);
  EXPECT_THROW(At(bytes, 5, 0, 9), CorruptFile);
  EXPECT_THROW(At(bytes, 1, std::numeric_limits<std::size_t>::max(), 9), CorruptFile);
}

TEST(Bytes, ThatContradictTheFormatNameTheirPage) {
  try {
    ThrowCorrupt("a row is too short", 71);
  } catch (const CorruptFile& error) {
    EXPECT_EQ(error.Number(), code::kGeneric);
    EXPECT_STREQ(error.what(), "Unrecognized database format: a row is too short (page 71).");
  }
}

}  // namespace
}  // namespace kestrelon::jet
