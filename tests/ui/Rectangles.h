#pragma once

#include "app/base/Win32.h"

#include <ostream>

// Lets GoogleTest compare and show the rectangles and points of Windows; in the global namespace, where these
// are.

inline bool operator==(const RECT& a, const RECT& b) { return EqualRect(&a, &b) != FALSE; }
inline bool operator==(const POINT& a, const POINT& b) { return a.x == b.x && a.y == b.y; }

inline void PrintTo(const RECT& r, std::ostream* out) {
  *out << "{" << r.left << ", " << r.top << ", " << r.right << ", " << r.bottom << "}";
}
inline void PrintTo(const POINT& p, std::ostream* out) { *out << "{" << p.x << ", " << p.y << "}"; }
