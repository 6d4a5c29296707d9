#include "ui/MagneticGeometry.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace kestrelon::ui {

namespace {

// Both directions obey the same rules: each looks at a rectangle as a stretch of one axis. In 64 bits, since
// any snap width is allowed.
struct Stretch {
  long long low, high;
};

Stretch Across(const RECT& r) { return {r.left, r.right}; }
Stretch Down(const RECT& r) { return {r.top, r.bottom}; }

bool Meet(const Stretch& a, const Stretch& b) {
  return std::max(a.high, b.high) - std::min(a.low, b.low) <= (a.high - a.low) + (b.high - b.low);
}

bool ShareAnEnd(const Stretch& a, const Stretch& b) {
  return a.low == b.low || a.low == b.high || a.high == b.low || a.high == b.high;
}

bool WithinReach(const Stretch& a, const Stretch& b, int snapWidth) {
  return a.low < b.high + snapWidth && a.high > b.low - snapWidth;
}

// The way from an end of a stretch to the end of the magnet that draws it: the low end goes before the high
// one.
std::optional<LONG> WayToMagnet(long long end, const Stretch& magnet, int snapWidth) {
  for (const long long target : {magnet.low, magnet.high}) {
    const long long way = target - end;
    if (std::max(way, -way) < snapWidth) return static_cast<LONG>(way);
  }
  return std::nullopt;
}

std::optional<LONG> WayToMagnet(const Stretch& moving, const Stretch& magnet, int snapWidth) {
  const std::optional<LONG> way = WayToMagnet(moving.low, magnet, snapWidth);
  return way ? way : WayToMagnet(moving.high, magnet, snapWidth);
}

enum class MovingEnd { kNone, kLow, kHigh };

MovingEnd MovingEndAcross(WPARAM edges) {
  switch (edges) {
    case WMSZ_LEFT:
    case WMSZ_TOPLEFT:
    case WMSZ_BOTTOMLEFT: return MovingEnd::kLow;
    case WMSZ_RIGHT:
    case WMSZ_TOPRIGHT:
    case WMSZ_BOTTOMRIGHT: return MovingEnd::kHigh;
    default: return MovingEnd::kNone;
  }
}

MovingEnd MovingEndDown(WPARAM edges) {
  switch (edges) {
    case WMSZ_TOP:
    case WMSZ_TOPLEFT:
    case WMSZ_TOPRIGHT: return MovingEnd::kLow;
    case WMSZ_BOTTOM:
    case WMSZ_BOTTOMLEFT:
    case WMSZ_BOTTOMRIGHT: return MovingEnd::kHigh;
    default: return MovingEnd::kNone;
  }
}

void SnapEnd(MovingEnd end, const Stretch& sizing, const Stretch& magnet, int snapWidth, LONG& low,
             LONG& high) {
  if (end == MovingEnd::kNone) return;
  const long long from = end == MovingEnd::kLow ? sizing.low : sizing.high;
  if (const std::optional<LONG> way = WayToMagnet(from, magnet, snapWidth))
    (end == MovingEnd::kLow ? low : high) = static_cast<LONG>(from + *way);
}

}  // namespace

bool Touch(const RECT& a, const RECT& b) {
  return Meet(Across(a), Across(b)) && Meet(Down(a), Down(b)) &&
         (ShareAnEnd(Across(a), Across(b)) || ShareAnEnd(Down(a), Down(b)));
}

void Attract(const RECT& moving, const RECT& magnet, int snapWidth, POINT& correction) {
  if (WithinReach(Down(moving), Down(magnet), snapWidth))
    correction.x = WayToMagnet(Across(moving), Across(magnet), snapWidth).value_or(correction.x);
  if (WithinReach(Across(moving), Across(magnet), snapWidth))
    correction.y = WayToMagnet(Down(moving), Down(magnet), snapWidth).value_or(correction.y);
}

POINT CorrectionOf(const std::vector<RECT>& group, const std::vector<RECT>& magnets, int snapWidth) {
  POINT correction{0, 0};
  for (const RECT& moving : group)
    for (const RECT& magnet : magnets) Attract(moving, magnet, snapWidth, correction);
  return correction;
}

RECT SnapEdges(const RECT& sizing, WPARAM edges, const std::vector<RECT>& magnets, int snapWidth) {
  RECT snapped = sizing;
  for (const RECT& magnet : magnets) {
    if (WithinReach(Down(sizing), Down(magnet), snapWidth))
      SnapEnd(MovingEndAcross(edges), Across(sizing), Across(magnet), snapWidth, snapped.left, snapped.right);
    if (WithinReach(Across(sizing), Across(magnet), snapWidth))
      SnapEnd(MovingEndDown(edges), Down(sizing), Down(magnet), snapWidth, snapped.top, snapped.bottom);
  }
  return snapped;
}

std::vector<bool> GluedOf(const std::vector<GlueCandidate>& windows) {
  const std::size_t count = windows.size();
  std::vector<bool> glued(count);
  for (std::size_t i = 0; i < count; ++i) {
    const int parent = windows[i].parent;
    glued[i] =
        parent >= 0 && Touch(windows[static_cast<std::size_t>(parent)].rectangle, windows[i].rectangle);
  }
  // A chain has at most as many links as there are windows.
  for (std::size_t round = 0; round < count; ++round)
    for (std::size_t a = 0; a < count; ++a) {
      if (!glued[a]) continue;
      for (std::size_t b = 0; b < count; ++b)
        if (!glued[b] && windows[b].parent == windows[a].parent)
          glued[b] = Touch(windows[a].rectangle, windows[b].rectangle);
    }
  return glued;
}

}  // namespace kestrelon::ui
