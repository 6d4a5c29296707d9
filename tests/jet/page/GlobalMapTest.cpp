#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "jet/page/GlobalMap.h"
#include "jet/page/MapRow.h"
#include "jet/page/Pager.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct MapOfPages {
  explicit MapOfPages(std::uint32_t count) {
    while (pager.PageCount() < count) pager.Allocate();
  }
  Pager pager;
};

TEST(GlobalMap, CallsNoPageOfANewFileFreeAndAllBeyondIt) {
  std::uint8_t page[kPageSize];
  global_map::Format(page, 6);
  const std::uint8_t* row = page + kPageSize - map_row::kBytes;
  EXPECT_EQ(row[0], map_row::kInline);
  EXPECT_EQ(Get32(row + 1), 0u);
  EXPECT_EQ(row[map_row::kBits], 0xC0) << "pages 0 to 5 are used";
  EXPECT_EQ(row[map_row::kBits + 1], 0xFF);
  EXPECT_EQ(row[map_row::kBytes - 1], 0xFF);
  for (std::size_t i = 0; i < map_row::kBytes; ++i)
    EXPECT_EQ(row[i - map_row::kBytes], 0) << "the second map";
}

TEST(GlobalMap, HoldsThePagesThatAreFree) {
  MapOfPages file(40);
  EXPECT_THAT(global_map::FreePages(file.pager), IsEmpty());
  global_map::Set(file.pager, 12, true);
  global_map::Set(file.pager, 39, true);
  global_map::Set(file.pager, 7, true);
  global_map::Set(file.pager, 12, false);
  EXPECT_THAT(global_map::FreePages(file.pager), ElementsAre(7, 39));
  EXPECT_THAT(global_map::BitPages(file.pager), IsEmpty());
}

TEST(GlobalMap, GrowsIntoReferencesAndKeepsWhatItHeld) {
  MapOfPages file(512);
  global_map::Set(file.pager, 7, true);
  global_map::Set(file.pager, 511, true);
  while (file.pager.PageCount() < 520) file.pager.Allocate();
  global_map::Set(file.pager, 515, true);
  EXPECT_THAT(global_map::FreePages(file.pager), ElementsAre(7, 511, 515));
  const auto bitPages = global_map::BitPages(file.pager);
  ASSERT_EQ(bitPages.size(), 1u);
  EXPECT_EQ(file.pager.Read(bitPages[0])[0], page_type::kMapBits);
}

TEST(GlobalMap, NeverCallsTheHeaderOrItselfFree) {
  MapOfPages file(10);
  global_map::Set(file.pager, 0, true);
  global_map::Set(file.pager, 1, true);
  global_map::Set(file.pager, 2, true);
  EXPECT_THAT(global_map::FreePages(file.pager), ElementsAre(2));
}

}  // namespace
}  // namespace kestrelon::jet
