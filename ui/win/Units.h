#pragma once

namespace kestrelon::win {

// Measures are kept in twips, 1/1440 inch, and become pixels only here. `dpi` is pixels per inch: 96, 120,
// 144, 192.
int PixelsFromTwips(double twips, unsigned dpi);  // rounded to the nearest
double TwipsFromPixels(int pixels, unsigned dpi);

struct TwipsRect {
  double left = 0, top = 0, width = 0, height = 0;
};

}  // namespace kestrelon::win
