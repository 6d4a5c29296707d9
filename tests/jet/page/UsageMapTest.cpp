#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "jet/catalog/Layout.h"
#include "jet/page/DataPage.h"
#include "jet/page/MapRow.h"
#include "jet/page/UsageMap.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct MapFixture {
  MapFixture() : map(pager, MapRows(pager).Add()) {
    while (pager.PageCount() < 2000) pager.Allocate();
  }
  bool IsReference() const {
    return pager.Read(2)[data_page::Start(pager.Read(2), 0)] == map_row::kReferences;
  }
  Pager pager;
  UsageMap map;
};

TEST(UsageMap, HoldsWhatWasAdded) {
  MapFixture fixture;
  for (const std::uint32_t page : {5u, 511u, 64u}) fixture.map.Add(page);
  fixture.map.Remove(64);

  EXPECT_THAT(fixture.map.Pages(), ElementsAre(5, 511));
  EXPECT_TRUE(fixture.map.Has(5));
  EXPECT_FALSE(fixture.map.Has(64));
}

TEST(UsageMap, MovesItsWindowWhileAllPagesFit) {
  MapFixture fixture;
  fixture.map.Add(1003);
  fixture.map.Add(700);
  fixture.map.Add(1200);

  EXPECT_FALSE(fixture.IsReference());
  EXPECT_THAT(fixture.map.Pages(), ElementsAre(700, 1003, 1200));
}

TEST(UsageMap, TurnsIntoAReferenceMapPast512Pages) {
  MapFixture fixture;
  fixture.map.Add(5);
  fixture.map.Add(511);
  EXPECT_FALSE(fixture.IsReference());

  fixture.map.Add(512);

  EXPECT_TRUE(fixture.IsReference());
  EXPECT_THAT(fixture.map.Pages(), ElementsAre(5, 511, 512));
  fixture.map.Remove(511);
  EXPECT_THAT(fixture.map.Pages(), ElementsAre(5, 512));
  fixture.map.Clear();
  EXPECT_THAT(fixture.map.Pages(), IsEmpty());
}

TEST(UsageMap, IsRefusedWhereNoneIs) {
  MapFixture fixture;
  EXPECT_THROW(UsageMap(fixture.pager, 2 << 8 | 9).Pages(), CorruptFile);
  EXPECT_THROW(UsageMap(fixture.pager, 3 << 8).Pages(), CorruptFile);
  EXPECT_THROW(UsageMap(fixture.pager, 99999 << 8).Pages(), CorruptFile);
}

TEST(UsageMap, IsRefusedWhenItNamesAPageOutsideTheFile) {
  MapFixture fixture;
  std::uint8_t* page = fixture.pager.Write(2);
  Put32(page + data_page::Start(page, 0) + 1, 1u << 20);
  page[data_page::Start(page, 0) + 5] = 1;
  EXPECT_THROW(fixture.map.Pages(), CorruptFile);
}

}  // namespace
}  // namespace kestrelon::jet
