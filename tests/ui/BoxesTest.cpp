#include <gtest/gtest.h>

#include "tests/support/FakeWorld.h"
#include "ui/win/Boxes.h"

namespace kestrelon::win {
namespace {

using test::FakeWorld;

TEST(Boxes, ExclaimShowsTheExclamationIconAndOneButton) {
  FakeWorld world;
  world.answers = {IDOK};
  const auto owner = reinterpret_cast<HWND>(INT_PTR{5});

  Exclaim(world, owner, L"text", L"LoadData Error:");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].owner, owner);
  EXPECT_EQ(world.boxes[0].text, L"text");
  EXPECT_EQ(world.boxes[0].title, L"LoadData Error:");
  EXPECT_EQ(world.boxes[0].flags, 48u);
}

TEST(Boxes, InformShowsTheInformationIconAndOneButton) {
  FakeWorld world;
  world.answers = {IDOK};

  Inform(world, nullptr, L"Can not open File!", L"Kestrelon");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].flags, 64u);
}

TEST(InRoutine, GivesWhatTheBodyGives) {
  FakeWorld world;

  EXPECT_EQ(InRoutine(world, nullptr, L"A Error", -1, [] { return 7; }), 7);
}

TEST(InRoutine, ShowsAFailureInTheRoutinesOwnBoxAndGivesTheFailureValue) {
  FakeWorld world;
  world.answers = {IDOK};

  const int result = InRoutine(world, nullptr, L"SSplitNode_Error", -1,
                               []() -> int { throw std::runtime_error("no such table \xC3\xA4"); });

  EXPECT_EQ(result, -1);
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"SSplitNode_Error");
  EXPECT_EQ(world.boxes[0].text, L"Unkonw Error:no such table \u00E4");
}

TEST(Quietly, SaysWhetherTheBodyCameToItsEndAndShowsNothing) {
  EXPECT_TRUE(Quietly([] {}));
  EXPECT_FALSE(Quietly([] { throw std::runtime_error("x"); }));
}

}  // namespace
}  // namespace kestrelon::win
