#pragma once

namespace kestrelon::app {

// Where the two panes and the bar between them stand, in twips from the left edge of the inner window.
struct PaneLayout {
  double barLeft = 0;
  double treeWidth = 0;  // the tree keeps its left edge at 0
  double listLeft = 0;
  double listWidth = 0;
};

// After the window was sized: the bar stays where it is.
PaneLayout PanesOnResize(double barLeft, double barWidth, double innerWidth);
// The bar while it is dragged; `mouseX` is the pointer's place within the bar.
double BarWhileDragging(double barLeft, double mouseX);
// After the bar was let go: at least 10 from the left edge, and 100 inside the window when it was beyond its
// right edge. The figures differ from those of PanesOnResize; that is wanted.
PaneLayout PanesOnRelease(double barLeft, double barWidth, double innerWidth);

}  // namespace kestrelon::app
