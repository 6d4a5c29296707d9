#include <gmock/gmock.h>

#include <stdexcept>
#include <system_error>

#include "tests/support/MainFormFixture.h"
#include "tree/CategoryKeys.h"

namespace kestrelon::test {
namespace {

using testing::MockFunction;
using testing::Return;

constexpr SYSTEMTIME kNovember2026{2026, 11, 0, 15, 13, 17, 3, 0};

std::wstring Key(const SYSTEMTIME& now, int first, int second) {
  MockFunction<int()> draw;
  EXPECT_CALL(draw, Call()).WillOnce(Return(first)).WillOnce(Return(second));
  std::wstring key;
  tree::AppendKey(key, now, draw.AsStdFunction());
  return key;
}

TEST(AppendKey, PutsYearDrawTimeAndSecondDrawInThatOrder) {
  EXPECT_EQ(Key(kNovember2026, 42, 7719), L"S004211151317037719_");
}

TEST(AppendKey, WritesEveryPartOfTheTimeWithTwoDigitsOnThe24HourClock) {
  EXPECT_EQ(Key({2026, 1, 0, 2, 3, 4, 5, 678}, 1, 1), L"S000101020304050001_");
  EXPECT_EQ(Key({2026, 12, 0, 31, 23, 59, 59, 999}, 1, 1), L"S000112312359590001_");
  EXPECT_EQ(Key({2026, 12, 0, 31, 0, 0, 0, 0}, 1, 1), L"S000112310000000001_");
}

TEST(AppendKey, BeginsWithTheCharacterOfTheYearLess1943) {
  EXPECT_EQ(Key({2008, 1, 0, 1, 0, 0, 0, 0}, 1, 1)[0], L'A');
  EXPECT_EQ(Key({2026, 1, 0, 1, 0, 0, 0, 0}, 1, 1)[0], L'S');
  EXPECT_EQ(Key({2033, 1, 0, 1, 0, 0, 0, 0}, 1, 1)[0], L'Z');
}

TEST(AppendKey, GoesOnPastTheLettersBefore2008AndAfter2033) {
  EXPECT_EQ(Key({2007, 1, 0, 1, 0, 0, 0, 0}, 1, 1)[0], L'@');
  EXPECT_EQ(Key({2034, 1, 0, 1, 0, 0, 0, 0}, 1, 1)[0], L'[');
}

TEST(AppendKey, IsOneCharacterLongerForEachLargestDraw) {
  EXPECT_EQ(Key(kNovember2026, 9999, 1), L"S999911151317030001_");
  EXPECT_EQ(Key(kNovember2026, 10000, 1), L"S1000011151317030001_");
  EXPECT_EQ(Key(kNovember2026, 1, 10000), L"S0001111513170310000_");
  EXPECT_EQ(Key(kNovember2026, 10000, 10000), L"S10000111513170310000_");
  EXPECT_EQ(Key(kNovember2026, 10000, 1).size(), 21u);
  EXPECT_EQ(Key(kNovember2026, 10000, 10000).size(), 22u);
}

class GetNextKey : public MainFormFixture {
 protected:
  // Fractions of the generator, as they come.
  void Fractions(std::deque<double> fractions) {
    world.randomFraction = [fractions]() mutable {
      const double next = fractions.front();
      fractions.pop_front();
      return next;
    };
  }
};

TEST_F(GetNextKey, DrawsFrom1To10000) {
  Start();
  Fractions({0.0, 0.99999999});

  EXPECT_EQ(tree::GetNextKey(Parts()), L"S0001111513200510000_");
}

TEST_F(GetNextKey, TakesTheWholePartOfTheDraw) {
  Start();
  Fractions({0.00419999, 0.5});

  EXPECT_EQ(tree::GetNextKey(Parts()), L"S004211151320055001_");
}

TEST_F(GetNextKey, ReseedsTheGeneratorAtTheStartOfEveryCall) {
  Start();
  std::string order;
  world.reseedRandom = [&] { order += 's'; };
  world.randomFraction = [&] {
    order += 'd';
    return 0.5;
  };

  tree::GetNextKey(Parts());
  tree::GetNextKey(Parts());

  EXPECT_EQ(order, "sddsdd");
}

TEST_F(GetNextKey, DiffersWithinOneSecondUnlessBothDrawsCoincide) {
  Start();
  draws = {7, 8, 7, 9, 6, 8, 7, 8};

  const std::wstring key = tree::GetNextKey(Parts());

  EXPECT_NE(tree::GetNextKey(Parts()), key);
  EXPECT_NE(tree::GetNextKey(Parts()), key);
  EXPECT_EQ(tree::GetNextKey(Parts()), key) << "a key that is taken is not drawn again";
}

TEST_F(GetNextKey, ShowsTheNumberOfAFailureAndReturnsNothingWhenNothingWasBuilt) {
  Start();
  world.localTime = []() -> SYSTEMTIME { throw std::system_error(5, std::system_category(), "clock"); };
  world.answers = {IDOK};

  EXPECT_EQ(tree::GetNextKey(Parts()), L"");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"5");
  EXPECT_EQ(world.boxes[0].title, L"GetNextKey_Error");
  EXPECT_EQ(world.boxes[0].flags & MB_TYPEMASK, static_cast<UINT>(MB_OK));
  world.localTime = [this] { return world.now; };
}

TEST_F(GetNextKey, ReturnsWhatItHasBuiltWhenALaterPieceFails) {
  Start();
  int calls = 0;
  world.randomFraction = [&]() -> double {
    if (++calls == 2) throw std::runtime_error("no more chance");
    return 0.0041;
  };
  world.answers = {IDOK};

  EXPECT_EQ(tree::GetNextKey(Parts()), L"S00421115132005");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"GetNextKey_Error");
}

}  // namespace
}  // namespace kestrelon::test
