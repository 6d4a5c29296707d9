#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tests/ui/Rectangles.h"
#include "ui/MagneticGeometry.h"

namespace kestrelon::ui {
namespace {

using Rects = std::vector<RECT>;
using Flags = std::vector<bool>;

constexpr int kSnap = 10;
constexpr RECT kMagnet{300, 200, 500, 400};
constexpr LONG kKept = 777;  // what a correction has before, to tell "not drawn" from "drawn by nothing"

POINT Attracted(const RECT& moving, const RECT& magnet, int snapWidth = kSnap) {
  POINT correction{kKept, kKept};
  Attract(moving, magnet, snapWidth, correction);
  return correction;
}

// How far off the magnet's edge line, and the correction that follows.
struct Distance {
  LONG off, correction;
};
constexpr Distance kDistances[] = {{-11, kKept}, {-10, kKept}, {-9, 9},     {-1, 1},    {0, 0},
                                   {1, -1},      {9, -9},      {10, kKept}, {11, kKept}};

struct EdgePair {
  const char* name;
  RECT onTheLine;
};

TEST(Attract, DrawsEachEdgeAcrossFromLessThanTheSnapWidth) {
  const EdgePair pairs[] = {{"left to left", {300, 260, 400, 340}},
                            {"left to right", {500, 260, 600, 340}},
                            {"right to left", {200, 260, 300, 340}},
                            {"right to right", {400, 260, 500, 340}}};
  for (const EdgePair& pair : pairs)
    for (const Distance& distance : kDistances) {
      SCOPED_TRACE(pair.name + (" " + std::to_string(distance.off)));
      RECT moving = pair.onTheLine;
      OffsetRect(&moving, distance.off, 0);
      EXPECT_EQ(Attracted(moving, kMagnet), (POINT{distance.correction, kKept}));
    }
}

TEST(Attract, DrawsEachEdgeDownFromLessThanTheSnapWidth) {
  const EdgePair pairs[] = {{"top to top", {350, 200, 450, 280}},
                            {"top to bottom", {350, 400, 450, 480}},
                            {"bottom to top", {350, 120, 450, 200}},
                            {"bottom to bottom", {350, 320, 450, 400}}};
  for (const EdgePair& pair : pairs)
    for (const Distance& distance : kDistances) {
      SCOPED_TRACE(pair.name + (" " + std::to_string(distance.off)));
      RECT moving = pair.onTheLine;
      OffsetRect(&moving, 0, distance.off);
      EXPECT_EQ(Attracted(moving, kMagnet), (POINT{kKept, distance.correction}));
    }
}

TEST(Attract, DrawsAcrossOnlyWhereBothAreNearlyBesideEachOther) {
  EXPECT_EQ(Attracted({305, 409, 405, 489}, kMagnet).x, -5);
  EXPECT_EQ(Attracted({305, 410, 405, 490}, kMagnet).x, kKept);
  EXPECT_EQ(Attracted({305, 111, 405, 191}, kMagnet).x, -5);
  EXPECT_EQ(Attracted({305, 110, 405, 190}, kMagnet).x, kKept);
}

TEST(Attract, DrawsDownOnlyWhereBothAreNearlyAboveEachOther) {
  EXPECT_EQ(Attracted({509, 205, 609, 285}, kMagnet).y, -5);
  EXPECT_EQ(Attracted({510, 205, 610, 285}, kMagnet).y, kKept);
  EXPECT_EQ(Attracted({191, 205, 291, 285}, kMagnet).y, -5);
  EXPECT_EQ(Attracted({190, 205, 290, 285}, kMagnet).y, kKept);
}

TEST(Attract, DrawsBothWaysAtACorner) {
  EXPECT_EQ(Attracted({504, 407, 604, 487}, kMagnet), (POINT{-4, -7}));
}

TEST(Attract, PrefersTheLeftEdgeAndThenTheMagnetsLeftEdge) {
  // left to left by 4, right to right by 1
  EXPECT_EQ(Attracted({304, 260, 501, 340}, kMagnet).x, -4);
  // left to left by 6, left to right by 2
  EXPECT_EQ(Attracted({106, 260, 206, 340}, {100, 200, 108, 400}).x, -6);
  // left to right by 9, right to right by 1
  EXPECT_EQ(Attracted({491, 260, 501, 340}, kMagnet).x, 9);
  // right to left by 6, right to right by 2
  EXPECT_EQ(Attracted({6, 260, 106, 340}, {100, 200, 108, 400}).x, -6);
}

TEST(Attract, PrefersTheTopEdgeAndThenTheMagnetsTopEdge) {
  EXPECT_EQ(Attracted({350, 204, 450, 401}, kMagnet).y, -4);
  EXPECT_EQ(Attracted({350, 106, 450, 206}, {300, 100, 500, 108}).y, -6);
  EXPECT_EQ(Attracted({350, 391, 450, 401}, kMagnet).y, 9);
  EXPECT_EQ(Attracted({350, 6, 450, 106}, {300, 100, 500, 108}).y, -6);
}

TEST(Attract, DrawsNothingWithASnapWidthOfZeroOrLess) {
  EXPECT_EQ(Attracted({300, 200, 400, 300}, kMagnet, 0), (POINT{kKept, kKept}));
  EXPECT_EQ(Attracted({300, 200, 400, 300}, kMagnet, -5), (POINT{kKept, kKept}));
  EXPECT_EQ(Attracted({300, 200, 400, 300}, kMagnet, INT_MIN), (POINT{kKept, kKept}));
}

TEST(Attract, TakesTheLargestSnapWidth) {
  EXPECT_EQ(Attracted({30000, 30000, 30100, 30100}, {-300, -200, -100, -50}, INT_MAX),
            (POINT{-30300, -30200}));
}

TEST(CorrectionOf, IsNoneWithoutAMagnetInReach) {
  EXPECT_EQ(CorrectionOf({{100, 100, 200, 200}}, {}, kSnap), (POINT{0, 0}));
  EXPECT_EQ(CorrectionOf({{100, 100, 200, 200}}, {kMagnet}, kSnap), (POINT{0, 0}));
}

TEST(CorrectionOf, ALaterMagnetOverwritesANearerEarlierOne) {
  const RECT moving{301, 260, 401, 340};
  const RECT later{292, 100, 700, 600};
  EXPECT_EQ(CorrectionOf({moving}, {kMagnet}, kSnap), (POINT{-1, 0}));
  EXPECT_EQ(CorrectionOf({moving}, {kMagnet, later}, kSnap), (POINT{-9, 0}));
  EXPECT_EQ(CorrectionOf({moving}, {later, kMagnet}, kSnap), (POINT{-1, 0}));
}

TEST(CorrectionOf, ALaterMagnetThatIsReachedAlreadyHoldsTheRectangle) {
  EXPECT_EQ(CorrectionOf({{301, 260, 401, 340}}, {kMagnet, {301, 100, 700, 600}}, kSnap), (POINT{0, 0}));
}

TEST(CorrectionOf, ALaterMagnetOutOfReachLeavesTheEarlierCorrection) {
  EXPECT_EQ(CorrectionOf({{301, 260, 401, 340}}, {kMagnet, {1000, 100, 1200, 600}}, kSnap), (POINT{-1, 0}));
}

TEST(CorrectionOf, TakesEachDirectionFromTheLastThatDrawsInIt) {
  // The first magnet is at the right, the second below.
  EXPECT_EQ(CorrectionOf({{197, 100, 297, 196}}, {{300, 50, 400, 150}, {150, 200, 250, 300}}, kSnap),
            (POINT{3, 4}));
}

TEST(CorrectionOf, ALaterOneOfTheGroupOverwritesAnEarlierOne) {
  const RECT first{302, 260, 402, 340};
  const RECT second{107, 700, 207, 780};
  const RECT lower{100, 600, 300, 1000};
  EXPECT_EQ(CorrectionOf({first, second}, {kMagnet}, kSnap), (POINT{-2, 0}));
  EXPECT_EQ(CorrectionOf({first, second}, {kMagnet, lower}, kSnap), (POINT{-7, 0}));
  EXPECT_EQ(CorrectionOf({second, first}, {kMagnet, lower}, kSnap), (POINT{-2, 0}));
}

TEST(SnapEdges, MovesTheEdgesThatTheCodeNames) {
  const RECT sizing{105, 106, 207, 208};
  const Rects magnets{{100, 100, 200, 200}};
  EXPECT_EQ(SnapEdges(sizing, 0, magnets, kSnap), sizing);
  EXPECT_EQ(SnapEdges(sizing, 1, magnets, kSnap), (RECT{100, 106, 207, 208}));
  EXPECT_EQ(SnapEdges(sizing, 2, magnets, kSnap), (RECT{105, 106, 200, 208}));
  EXPECT_EQ(SnapEdges(sizing, 3, magnets, kSnap), (RECT{105, 100, 207, 208}));
  EXPECT_EQ(SnapEdges(sizing, 4, magnets, kSnap), (RECT{100, 100, 207, 208}));
  EXPECT_EQ(SnapEdges(sizing, 5, magnets, kSnap), (RECT{105, 100, 200, 208}));
  EXPECT_EQ(SnapEdges(sizing, 6, magnets, kSnap), (RECT{105, 106, 207, 200}));
  EXPECT_EQ(SnapEdges(sizing, 7, magnets, kSnap), (RECT{100, 106, 207, 200}));
  EXPECT_EQ(SnapEdges(sizing, 8, magnets, kSnap), (RECT{105, 106, 200, 200}));
  EXPECT_EQ(SnapEdges(sizing, 9, magnets, kSnap), sizing);
}

TEST(SnapEdges, JumpsFromLessThanTheSnapWidthToEitherEdgeOfTheMagnet) {
  for (const LONG line : {300, 500})  // the magnet's left and right edge
    for (const Distance& distance : kDistances) {
      SCOPED_TRACE(std::to_string(line) + " " + std::to_string(distance.off));
      const LONG edge = line + distance.off;
      const LONG snapped = distance.correction == kKept ? edge : line;
      EXPECT_EQ(SnapEdges({edge, 260, 900, 340}, WMSZ_LEFT, {kMagnet}, kSnap),
                (RECT{snapped, 260, 900, 340}));
      EXPECT_EQ(SnapEdges({10, 260, edge, 340}, WMSZ_RIGHT, {kMagnet}, kSnap), (RECT{10, 260, snapped, 340}));
    }
  for (const LONG line : {200, 400})  // its top and bottom edge
    for (const Distance& distance : kDistances) {
      SCOPED_TRACE(std::to_string(line) + " " + std::to_string(distance.off));
      const LONG edge = line + distance.off;
      const LONG snapped = distance.correction == kKept ? edge : line;
      EXPECT_EQ(SnapEdges({350, edge, 450, 900}, WMSZ_TOP, {kMagnet}, kSnap), (RECT{350, snapped, 450, 900}));
      EXPECT_EQ(SnapEdges({350, 10, 450, edge}, WMSZ_BOTTOM, {kMagnet}, kSnap),
                (RECT{350, 10, 450, snapped}));
    }
}

TEST(SnapEdges, JumpsOnlyToMagnetsThatAreNearlyBeside) {
  EXPECT_EQ(SnapEdges({305, 409, 900, 489}, WMSZ_LEFT, {kMagnet}, kSnap), (RECT{300, 409, 900, 489}));
  EXPECT_EQ(SnapEdges({305, 410, 900, 490}, WMSZ_LEFT, {kMagnet}, kSnap), (RECT{305, 410, 900, 490}));
  EXPECT_EQ(SnapEdges({305, 111, 900, 191}, WMSZ_LEFT, {kMagnet}, kSnap), (RECT{300, 111, 900, 191}));
  EXPECT_EQ(SnapEdges({305, 110, 900, 190}, WMSZ_LEFT, {kMagnet}, kSnap), (RECT{305, 110, 900, 190}));
  EXPECT_EQ(SnapEdges({509, 205, 609, 900}, WMSZ_TOP, {kMagnet}, kSnap), (RECT{509, 200, 609, 900}));
  EXPECT_EQ(SnapEdges({510, 205, 610, 900}, WMSZ_TOP, {kMagnet}, kSnap), (RECT{510, 205, 610, 900}));
  EXPECT_EQ(SnapEdges({191, 205, 291, 900}, WMSZ_TOP, {kMagnet}, kSnap), (RECT{191, 200, 291, 900}));
  EXPECT_EQ(SnapEdges({190, 205, 290, 900}, WMSZ_TOP, {kMagnet}, kSnap), (RECT{190, 205, 290, 900}));
}

TEST(SnapEdges, ALaterMagnetOverwritesAnEarlierOne) {
  const RECT other{292, 100, 700, 600};
  EXPECT_EQ(SnapEdges({299, 260, 900, 340}, WMSZ_LEFT, {kMagnet, other}, kSnap), (RECT{292, 260, 900, 340}));
  EXPECT_EQ(SnapEdges({299, 260, 900, 340}, WMSZ_LEFT, {other, kMagnet}, kSnap), (RECT{300, 260, 900, 340}));
}

TEST(SnapEdges, IsNotLedOnFromOneMagnetToTheNext) {
  // 91 is within reach of the first magnet's 100, from which the second one's 109 would be within reach.
  EXPECT_EQ(SnapEdges({91, 260, 900, 340}, WMSZ_LEFT, {{100, 200, 400, 400}, {109, 200, 500, 400}}, kSnap),
            (RECT{100, 260, 900, 340}));
}

TEST(SnapEdges, DoesNothingWithASnapWidthOfZero) {
  EXPECT_EQ(SnapEdges({300, 200, 900, 900}, WMSZ_TOPLEFT, {kMagnet}, 0), (RECT{300, 200, 900, 900}));
}

TEST(Touch, NeighboursThatShareAnEdge) {
  EXPECT_TRUE(Touch({0, 0, 100, 100}, {100, 20, 200, 60}));
  EXPECT_TRUE(Touch({100, 20, 200, 60}, {0, 0, 100, 100}));
  EXPECT_TRUE(Touch({0, 0, 100, 100}, {30, 100, 60, 200}));
  EXPECT_TRUE(Touch({30, 100, 60, 200}, {0, 0, 100, 100}));
}

TEST(Touch, NeighboursThatShareACornerOnly) {
  EXPECT_TRUE(Touch({0, 0, 100, 100}, {100, 100, 200, 200}));
  EXPECT_TRUE(Touch({100, 0, 200, 100}, {0, 100, 100, 200}));
}

TEST(Touch, OverlappingWithAnEdgeOnOneLine) {
  EXPECT_TRUE(Touch({0, 0, 100, 100}, {0, 50, 60, 150}));      // left and left
  EXPECT_TRUE(Touch({0, 0, 100, 100}, {40, 50, 100, 150}));    // right and right
  EXPECT_TRUE(Touch({0, 0, 100, 100}, {50, 0, 150, 60}));      // top and top
  EXPECT_TRUE(Touch({0, 0, 100, 100}, {50, 40, 150, 100}));    // bottom and bottom
  EXPECT_TRUE(Touch({10, 20, 110, 120}, {10, 20, 110, 120}));  // the same
  EXPECT_TRUE(Touch({0, 0, 100, 100}, {0, 20, 50, 80}));       // inside, at the edge
}

TEST(Touch, NotWhereTheyOverlapWithoutAnEdgeOnOneLine) {
  EXPECT_FALSE(Touch({0, 0, 100, 100}, {50, 50, 150, 150}));
  EXPECT_FALSE(Touch({0, 0, 100, 100}, {99, 20, 200, 60}));
}

TEST(Touch, NotWhereOneLiesInsideTheOther) {
  EXPECT_FALSE(Touch({0, 0, 100, 100}, {20, 30, 60, 70}));
  EXPECT_FALSE(Touch({20, 30, 60, 70}, {0, 0, 100, 100}));
}

TEST(Touch, NotWhereTheyAreApart) {
  EXPECT_FALSE(Touch({0, 0, 100, 100}, {101, 20, 200, 60}));
  EXPECT_FALSE(Touch({0, 0, 100, 100}, {300, 300, 400, 400}));
}

TEST(Touch, NotWhereEdgesOnOneLineAreApart) {
  EXPECT_FALSE(Touch({0, 0, 100, 100}, {101, 0, 200, 100}));    // tops and bottoms
  EXPECT_FALSE(Touch({0, 0, 100, 100}, {0, 101, 100, 200}));    // lefts and rights
  EXPECT_FALSE(Touch({0, 0, 100, 100}, {100, 101, 200, 200}));  // right and left
  EXPECT_FALSE(Touch({0, 0, 100, 100}, {101, 100, 200, 200}));  // bottom and top
}

constexpr RECT kParent{100, 100, 300, 300};

TEST(GluedOf, IsEmptyWithoutWindows) { EXPECT_EQ(GluedOf({}), Flags()); }

TEST(GluedOf, AWindowThatTouchesItsParentIsGlued) {
  EXPECT_EQ(GluedOf({{kParent, -1}, {{300, 100, 400, 200}, 0}, {{301, 210, 390, 290}, 0}}),
            (Flags{false, true, false}));
}

TEST(GluedOf, AWindowWithoutAParentIsNever) {
  EXPECT_EQ(GluedOf({{kParent, -1}, {{300, 100, 400, 200}, -1}}), (Flags{false, false}));
}

TEST(GluedOf, ATouchingSiblingOfAGluedOneIsGlued) {
  EXPECT_EQ(GluedOf({{kParent, -1}, {{300, 100, 400, 200}, 0}, {{400, 100, 500, 200}, 0}}),
            (Flags{false, true, true}));
}

TEST(GluedOf, ALongChainHoldsInAnyOrderOfTheList) {
  EXPECT_EQ(GluedOf({{{700, 100, 800, 200}, 4},
                     {{600, 100, 700, 200}, 4},
                     {{500, 100, 600, 200}, 4},
                     {{400, 100, 500, 200}, 4},
                     {kParent, -1},
                     {{300, 100, 400, 200}, 4}}),
            (Flags{true, true, true, true, false, true}));
}

TEST(GluedOf, AMissingLinkLeavesTheRestOfTheChain) {
  EXPECT_EQ(GluedOf({{kParent, -1}, {{300, 100, 400, 200}, 0}, {{500, 100, 600, 200}, 0}}),
            (Flags{false, true, false}));
}

TEST(GluedOf, AGluedWindowOfAnotherParentHoldsNoChain) {
  EXPECT_EQ(
      GluedOf(
          {{kParent, -1}, {{300, 100, 400, 200}, 0}, {{800, 800, 900, 900}, -1}, {{400, 100, 500, 200}, 2}}),
      (Flags{false, true, false, false}));
}

TEST(GluedOf, AWindowWhoseParentWasRemovedIsNoLinkEither) {
  EXPECT_EQ(GluedOf({{kParent, -1}, {{300, 100, 400, 200}, -1}, {{400, 100, 500, 200}, 0}}),
            (Flags{false, false, false}));
}

TEST(GluedOf, AGluedWindowMayItselfBeAParent) {
  EXPECT_EQ(GluedOf({{kParent, -1}, {{300, 100, 400, 200}, 0}, {{400, 100, 500, 200}, 1}}),
            (Flags{false, true, true}));
}

}  // namespace
}  // namespace kestrelon::ui
