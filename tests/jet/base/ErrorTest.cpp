#include <gtest/gtest.h>

#include "jet/base/Error.h"

namespace kestrelon::jet {
namespace {

TEST(Error, CarriesItsNumberAndItsSentenceInBothForms) {
  const Error error(code::kTooLong, u"Zu lang: größer als 文.");
  EXPECT_EQ(error.Number(), 0x80040E57u);
  EXPECT_EQ(error.Description(), u"Zu lang: größer als 文.");
  EXPECT_STREQ(error.what(), "Zu lang: größer als 文.");
}

TEST(Error, OfACorruptFileIsGeneric) {
  EXPECT_EQ(CorruptFile(u"Unrecognized database format.").Number(), 0x80004005u);
}

TEST(Utf8, GoesToUtf16AndBack) {
  const std::u16string text = u"a\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF";
  const std::string utf8 = "a\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
  EXPECT_EQ(ToUtf8(text), utf8);
  EXPECT_EQ(FromUtf8(utf8), text);
}

TEST(Utf8, ReplacesHalvesOfPairs) {
  const char16_t halves[] = {u'a', 0xD83D, u'b', 0xDCC1, 0xD83D};
  EXPECT_EQ(ToUtf8({halves, 5}),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Utf8, ReplacesWhatIsNone) {
  EXPECT_EQ(FromUtf8("a\x80z"), u"a\uFFFDz");          // goes on from nothing
  EXPECT_EQ(FromUtf8("\xC3"), u"\uFFFD");              // stops in the middle
  EXPECT_EQ(FromUtf8("\xE2\x82z"), u"\uFFFDz");        // another character begins
  EXPECT_EQ(FromUtf8("\xC0\xAF"), u"\uFFFD\uFFFD");    // longer than it need be
  EXPECT_EQ(FromUtf8("\xE0\x80\xAF"), u"\uFFFD");      // likewise
  EXPECT_EQ(FromUtf8("\xED\xA0\x80"), u"\uFFFD");      // half of a pair
  EXPECT_EQ(FromUtf8("\xF4\x90\x80\x80"), u"\uFFFD");  // past the last character
  EXPECT_EQ(FromUtf8("\xFF"), u"\uFFFD");
}

}  // namespace
}  // namespace kestrelon::jet
