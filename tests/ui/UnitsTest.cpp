#include <gtest/gtest.h>

#include "ui/win/Units.h"

namespace kestrelon::win {
namespace {

TEST(Units, AnInchIsAsManyPixelsAsTheDpiSays) {
  EXPECT_EQ(PixelsFromTwips(1440, 96), 96);
  EXPECT_EQ(PixelsFromTwips(1440, 144), 144);
  EXPECT_EQ(PixelsFromTwips(1440, 192), 192);
}

TEST(Units, PixelsAreTheNearestWholeNumber) {
  EXPECT_EQ(PixelsFromTwips(1874.835, 96), 125);  // 124.989
  EXPECT_EQ(PixelsFromTwips(7, 96), 0);
  EXPECT_EQ(PixelsFromTwips(8, 96), 1);
  EXPECT_EQ(PixelsFromTwips(-8, 96), -1);
}

TEST(Units, PixelsGoBackToTwipsUnrounded) {
  EXPECT_DOUBLE_EQ(TwipsFromPixels(1, 96), 15);
  EXPECT_DOUBLE_EQ(TwipsFromPixels(3, 192), 22.5);
  EXPECT_DOUBLE_EQ(TwipsFromPixels(125, 120), 1500);
}

}  // namespace
}  // namespace kestrelon::win
