#include "app/MainLayout.h"

#include <algorithm>
#include <cmath>

namespace kestrelon::app {

PaneLayout PanesOnResize(double barLeft, double barWidth, double innerWidth) {
  return {barLeft, barLeft, barLeft + barWidth, innerWidth - barLeft - 80};
}

double BarWhileDragging(double barLeft, double mouseX) { return barLeft + mouseX - 35; }

PaneLayout PanesOnRelease(double barLeft, double barWidth, double innerWidth) {
  double place = std::max(10.0, std::round(barLeft));
  if (place > innerWidth) place = innerWidth - 100;
  return {place + 25, place, place + barWidth + 25, innerWidth - place - 90};
}

}  // namespace kestrelon::app
