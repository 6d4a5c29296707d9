#pragma once

#include "app/base/Win32.h"

#include <vector>

namespace kestrelon::ui {

// How magnetic windows attract each other: rectangles of the screen, in pixels. The snap width is the
// distance from which on nothing is attracted; with 0 or less nothing ever is.

// Whether two rectangles are neighbours: they meet, at least in a corner, and an edge of one lies on the same
// line as an edge of the other. Two that merely overlap are no neighbours.
bool Touch(const RECT& a, const RECT& b);

// The way that a magnet draws a moving rectangle, for x and y each on its own. Where it does not draw the
// rectangle, `correction` keeps what it has; where an edge lies on the magnet's already, it becomes 0.
void Attract(const RECT& moving, const RECT& magnet, int snapWidth, POINT& correction);

// The way that all magnets draw a group of rectangles that moves as one: each of the group in its order
// against each magnet in its order, and the last that draws has its way.
POINT CorrectionOf(const std::vector<RECT>& group, const std::vector<RECT>& magnets, int snapWidth);

// A rectangle that is being sized, with the edges that move put on those of the magnets. `edges` is the code
// of WM_SIZING (WMSZ_…). Every magnet is compared with `sizing` as it is given, and the last has its way.
RECT SnapEdges(const RECT& sizing, WPARAM edges, const std::vector<RECT>& magnets, int snapWidth);

// A window that may be glued to another one. `parent` is the index of that one in the same list; negative for
// none.
struct GlueCandidate {
  RECT rectangle;
  int parent;
};
// Says of each, whether it is glued to its parent: it touches it, or it touches one with the same parent that
// is glued.
std::vector<bool> GluedOf(const std::vector<GlueCandidate>& windows);

}  // namespace kestrelon::ui
