#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "jet/index/TextKey.h"
#include "jet/sql/TextCompare.h"

namespace kestrelon::jet::sql {
namespace {

int Sign(int number) { return number < 0 ? -1 : number > 0 ? 1 : 0; }

// Everything that must hold between the four functions for one pair of texts.
void ExpectConsistent(const std::u16string& a, const std::u16string& b) {
  const int order = CompareTexts(a, b);
  EXPECT_EQ(Sign(order), -Sign(CompareTexts(b, a)));
  EXPECT_EQ(TextsEqual(a, b), order == 0);
  EXPECT_EQ(TextSortKey(a) < TextSortKey(b), order < 0);
  EXPECT_EQ(TextSortKey(a) == TextSortKey(b), order == 0);
  if (order == 0) {
    EXPECT_EQ(HashText(a), HashText(b));
  }
}

TEST(TextsEqual, DisregardsCase) {
  EXPECT_TRUE(TextsEqual(u"s004211151317037719_", u"S004211151317037719_"));
  EXPECT_TRUE(TextsEqual(u"\u00E9t\u00E9", u"\u00C9T\u00C9"));
}

TEST(TextsEqual, DisregardsTrailingBlanksOnly) {
  EXPECT_TRUE(TextsEqual(u"a", u"a  "));
  EXPECT_TRUE(TextsEqual(u"", u"   "));
  EXPECT_FALSE(TextsEqual(u" a", u"a"));
  EXPECT_FALSE(TextsEqual(u"a b", u"a  b"));
  EXPECT_FALSE(TextsEqual(u"a\t", u"a"));
}

TEST(TextsEqual, HonoursAccents) {
  EXPECT_FALSE(TextsEqual(u"\u00E9", u"e"));
  EXPECT_FALSE(TextsEqual(u"\u00E9", u"\u00E8"));
}

TEST(TextsEqual, TakesLigaturesAndSuperscriptsForTheirLetters) {
  EXPECT_TRUE(TextsEqual(u"stra\u00DFe", u"STRASSE"));
  EXPECT_TRUE(TextsEqual(u"\u00E6on", u"aeon"));
  EXPECT_TRUE(TextsEqual(u"m\u00B2", u"m2"));
  EXPECT_EQ(HashText(u"stra\u00DFe"), HashText(u"STRASSE"));
}

TEST(TextsEqual, TellsHyphensApostrophesAndTheirPlacesApart) {
  EXPECT_FALSE(TextsEqual(u"a-b", u"ab"));
  EXPECT_FALSE(TextsEqual(u"a-b", u"ab-"));
  EXPECT_FALSE(TextsEqual(u"a-b", u"a'b"));
  EXPECT_TRUE(TextsEqual(u"A-b", u"a-B"));
}

TEST(TextsEqual, FoldsTheCaseOfLettersWithoutAKey) {
  EXPECT_TRUE(TextsEqual(u"\u041F\u0430\u043F\u043A\u0430", u"\u043F\u0410\u041F\u041A\u0410"));
  EXPECT_TRUE(TextsEqual(u"\u0391\u03B2 x", u"\u03B1\u0392 X "));
  EXPECT_FALSE(TextsEqual(u"\u043F", u"\u0440"));
  EXPECT_FALSE(TextsEqual(u"\u6F22\u5B57", u"\u6F22"));
}

TEST(TextsEqual, ComparesAllOfTextsThatAreLongerThanAKey) {
  const std::u16string common(300, u'p');
  EXPECT_TRUE(TextsEqual(common + u"X", common + u"x "));
  EXPECT_FALSE(TextsEqual(common + u"X", common + u"y"));
  EXPECT_FALSE(TextsEqual(common, common + u"y"));
  EXPECT_FALSE(TextsEqual(common + u"\u00DF", common + u"s"));
}

TEST(CompareTexts, SortsPunctuationDigitsLettersThenCharactersWithoutAKey) {
  std::vector<std::u16string> texts = {u"\u0436", u"b", u"A", u"1", u"!", u"", u"\u00E0", u"a-", u"ab"};
  std::sort(texts.begin(), texts.end(),
            [](const std::u16string& a, const std::u16string& b) { return CompareTexts(a, b) < 0; });
  EXPECT_EQ(texts,
            (std::vector<std::u16string>{u"", u"!", u"1", u"A", u"a-", u"\u00E0", u"ab", u"b", u"\u0436"}));
}

TEST(CompareTexts, PutsAMixedTextBesideItsLatinPart) {
  EXPECT_LT(CompareTexts(u"Report B", u"Report \u0416"), 0);
  EXPECT_LT(CompareTexts(u"Report \u0416", u"Reports"), 0);
}

TEST(CompareTexts, AgreesWithTheIndexKeysWhereThereAreAny) {
  const std::vector<std::u16string> texts = {
      u"",  u"a", u"A ",     u"b", u"a-b", u"ab", u"a'b",  u"\u00E4", u"ae",  u"\u00E6", u"\u00DF", u"ss",
      u"S", u"1", u"\u00B9", u"_", u"~",   u"\t", u"a\nb", u" a",     u"a a", u"K12_",   u"1#K12_"};
  for (const std::u16string& a : texts) {
    for (const std::u16string& b : texts) {
      EXPECT_EQ(Sign(CompareTexts(a, b)), Sign(EncodeTextKey(a)->compare(*EncodeTextKey(b))));
      ExpectConsistent(a, b);
    }
  }
}

TEST(CompareTexts, IsAConsistentOrderOverRandomTexts) {
  std::mt19937 random(7);
  const std::u16string alphabet =
      u"aAbBsS -'_\u00DF\u00E9\u00C9\u00E6e1\u00B9\u0436\u0416\u6F22\u00AD\x01\t\xD83D\xDE00";
  std::vector<std::u16string> texts;
  for (int i = 0; i < 250; ++i) {
    std::u16string text;
    for (std::size_t length = random() % 6; length > 0; --length)
      text += alphabet[random() % alphabet.size()];
    texts.push_back(text);
  }
  for (const std::u16string& a : texts) {
    for (const std::u16string& b : texts) ExpectConsistent(a, b);
  }
}

TEST(HashText, SpreadsTheKeysOfOneCategory) {
  std::vector<std::uint32_t> hashes;
  for (int i = 1; i <= 100000; ++i) {
    const std::string number = std::to_string(i);
    hashes.push_back(HashText(std::u16string(number.begin(), number.end()) + u"#S004211151317037719_"));
  }
  std::sort(hashes.begin(), hashes.end());
  const auto different = std::unique(hashes.begin(), hashes.end()) - hashes.begin();
  EXPECT_GT(different, 99990);  // of 100,000 draws out of 2^32, one pair collides on average
}

TEST(SameName, DisregardsCaseAndNothingElse) {
  EXPECT_TRUE(SameName(u"TreeviewNode", u"TREEVIEWNODE"));
  EXPECT_TRUE(SameName(u"Gr\u00F6\u00DFe", u"GR\u00D6\u00DFE"));
  EXPECT_FALSE(SameName(u"a", u"a "));
  EXPECT_FALSE(SameName(u"a", u"\u00E0"));
}

}  // namespace
}  // namespace kestrelon::jet::sql
