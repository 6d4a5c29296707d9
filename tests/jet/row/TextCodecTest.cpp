#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "jet/base/Error.h"
#include "jet/row/TextCodec.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;

std::vector<std::uint8_t> Encode(std::u16string_view text, bool mayCompress = true) {
  std::vector<std::uint8_t> stored(EncodedTextBound(text));
  stored.resize(EncodeText(text, mayCompress, stored.data()));
  return stored;
}

std::u16string Decode(const std::vector<std::uint8_t>& stored) {
  std::u16string text = u"left over";
  DecodeText(stored, text, 0);
  return text;
}

TEST(TextCodec, CompressesFromThreeCharactersOn) {
  EXPECT_THAT(Encode(u"ab"), ElementsAre('a', 0, 'b', 0));
  EXPECT_THAT(Encode(u"abc"), ElementsAre(0xFF, 0xFE, 'a', 'b', 'c'));
  EXPECT_THAT(Encode(u"äöü"), ElementsAre(0xFF, 0xFE, 0xE4, 0xF6, 0xFC));
}

TEST(TextCodec, AppendsEveryFormToWhatIsThere) {
  std::u16string text = u"a";
  AppendDecoded(Encode(u"bcd"), text, 0);
  AppendDecoded(Encode(u"文"), text, 0);
  AppendDecoded(std::vector<std::uint8_t>{0xFF, 0xFE, 'e', 0, 0x87, 0x65, 0, 'f'}, text, 0);
  AppendDecoded({}, text, 0);
  EXPECT_EQ(text, u"abcd文e文f");
}

TEST(TextCodec, StoresPlainWhatHasAnyOtherCharacter) {
  EXPECT_EQ(Encode(u"abc文").size(), 8u);
  EXPECT_EQ(Encode(u"abcĀ").size(), 8u);  // U+0100, the first beyond one byte
  EXPECT_EQ(Encode(std::u16string_view(u"ab\0d", 4)).size(), 8u);
}

TEST(TextCodec, StoresPlainWhereTheColumnSaysSo) { EXPECT_EQ(Encode(u"abc", false).size(), 6u); }

TEST(TextCodec, CompressesUpTo1024Characters) {
  EXPECT_EQ(Encode(std::u16string(1024, u'x')).size(), 1026u);
  EXPECT_EQ(Encode(std::u16string(1025, u'x')).size(), 2050u);
}

TEST(TextCodec, DropsALeadingByteOrderMark) {
  EXPECT_EQ(Decode(Encode(u"\uFEFF文")), u"文");
  EXPECT_EQ(Decode(Encode(u"文\uFEFF")), u"文\uFEFF");
}

TEST(TextCodec, GivesBackWhatItStored) {
  for (const std::u16string_view text :
       {u"", u"a", u"abc", u"ÿ", u"文件夹", u"\U0001F4C1 folder", u"a\r\n\tb"}) {
    EXPECT_EQ(Decode(Encode(text)), text);
    EXPECT_EQ(Decode(Encode(text, false)), text);
  }
}

TEST(TextCodec, FollowsTheSwitchBetweenOneAndTwoBytes) {
  EXPECT_EQ(Decode({0xFF, 0xFE, 'a', 0, 0x87, 0x65, 0, 'b'}), u"a文b");
  EXPECT_EQ(Decode({0xFF, 0xFE}), u"");
}

TEST(TextCodec, RefusesHalfACharacter) {
  EXPECT_THROW(Decode({'a', 0, 'b'}), CorruptFile);
  EXPECT_THROW(Decode({0xFF, 0xFE, 'a', 0, 0x87}), CorruptFile);
}

}  // namespace
}  // namespace kestrelon::jet
