#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "jet/index/TextKey.h"

namespace kestrelon::jet {
namespace {

std::string Hex(std::u16string_view text) {
  const auto key = EncodeTextKey(text);
  if (!key) return "none";
  std::string hex;
  for (const char byte : *key) {
    constexpr char kDigits[] = "0123456789abcdef";
    hex += kDigits[static_cast<unsigned char>(byte) >> 4];
    hex += kDigits[static_cast<unsigned char>(byte) & 15];
  }
  return hex;
}

// The keys below stand in index pages that Access wrote.
TEST(TextKey, IsTheOneThatAccessWrites) {
  EXPECT_EQ(Hex(u""), "0100");
  EXPECT_EQ(Hex(u"a"), "4a0100");
  EXPECT_EQ(Hex(u"Tables"), "6d4a4c5e516b0100");
  EXPECT_EQ(Hex(u"0_"), "362b030100");
  EXPECT_EQ(Hex(u"1#K12_"), "380c5c383a2b030100");
  EXPECT_EQ(Hex(u"a-b"), "4a4c01010101800b068200");
  EXPECT_EQ(Hex(u"it's"), "596d6b01010101800f068000");
  EXPECT_EQ(Hex(u"é"), "51010e00");
  EXPECT_EQ(Hex(u"Zoë"), "7864510102021300");
  EXPECT_EQ(Hex(u"straße"), "6b6d694a6b6b510100");
}

TEST(TextKey, IgnoresCaseAndTrailingBlanks) {
  EXPECT_EQ(EncodeTextKey(u"File"), EncodeTextKey(u"fILE  "));
  EXPECT_EQ(EncodeTextKey(u"ÄÖÜ"), EncodeTextKey(u"äöü"));
  EXPECT_NE(EncodeTextKey(u" a"), EncodeTextKey(u"a"));
}

TEST(TextKey, TellsAccentsApart) {
  EXPECT_NE(EncodeTextKey(u"e"), EncodeTextKey(u"é"));
  EXPECT_LT(*EncodeTextKey(u"cote"), *EncodeTextKey(u"coté"));
  EXPECT_LT(*EncodeTextKey(u"coté"), *EncodeTextKey(u"cotf"));
}

TEST(TextKey, SpellsLigaturesOut) {
  EXPECT_EQ(EncodeTextKey(u"æ"), EncodeTextKey(u"ae"));
  EXPECT_EQ(EncodeTextKey(u"ß"), EncodeTextKey(u"SS"));
}

TEST(TextKey, LooksAtTheFirst255UnitsOnly) {
  const std::u16string head(255, u'x');
  EXPECT_EQ(EncodeTextKey(head + u"a"), EncodeTextKey(head + u"b"));
  EXPECT_NE(EncodeTextKey(head.substr(1) + u"a"), EncodeTextKey(head.substr(1) + u"b"));
}

TEST(TextKey, DoesNotExistForCharactersBeyondCodePage1252) {
  EXPECT_EQ(Hex(u"文件"), "none");
  EXPECT_EQ(Hex(u"Привет"), "none");
  EXPECT_EQ(Hex(u"\U0001F4C1"), "none");
  EXPECT_NE(Hex(u"€ „…” ™"), "none");
}

}  // namespace
}  // namespace kestrelon::jet
