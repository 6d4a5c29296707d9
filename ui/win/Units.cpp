#include "ui/win/Units.h"

#include <cmath>

namespace kestrelon::win {

namespace {
constexpr double kTwipsPerInch = 1440;
}

int PixelsFromTwips(double twips, unsigned dpi) {
  return static_cast<int>(std::lround(twips * dpi / kTwipsPerInch));
}

double TwipsFromPixels(int pixels, unsigned dpi) { return pixels * kTwipsPerInch / dpi; }

}  // namespace kestrelon::win
