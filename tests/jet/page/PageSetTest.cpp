#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "jet/catalog/Layout.h"
#include "jet/page/DataPage.h"
#include "jet/page/PageSet.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kOwner = 5;

struct SetFixture {
  SetFixture() {
    MapRows maps(pager);
    owned = maps.Add();
    free = maps.Add();
    set = std::make_unique<PageSet>(pager, owned, free, kOwner, true);
  }
  std::uint32_t AddRow(std::size_t size) {
    const std::uint32_t page = set->PageWithRoom(size);
    data_page::Append(set->Write(page), size, 0);
    return page;
  }
  std::vector<std::uint32_t> PagesOf(std::uint32_t map) { return UsageMap(pager, map).Pages(); }

  Pager pager;
  std::uint32_t owned = 0, free = 0;
  std::unique_ptr<PageSet> set;
};

TEST(PageSet, FillsAPageBeforeItTakesANewOne) {
  SetFixture fixture;
  const std::uint32_t first = fixture.AddRow(2000);
  EXPECT_EQ(fixture.AddRow(2000), first);
  const std::uint32_t second = fixture.AddRow(2000);
  EXPECT_GT(second, first);
  EXPECT_THAT(fixture.set->Pages(), ElementsAre(first, second));
  EXPECT_THAT(fixture.PagesOf(fixture.owned), ElementsAre(first, second));
  EXPECT_THAT(fixture.PagesOf(fixture.free), ElementsAre(second)) << "a page found too full is closed";
  EXPECT_EQ(data_page::Owner(fixture.set->Read(first)), kOwner);
}

TEST(PageSet, FillsAReopenedPageFirst) {
  SetFixture fixture;
  const std::uint32_t first = fixture.AddRow(4000);
  const std::uint32_t second = fixture.AddRow(4000);
  data_page::Delete(fixture.set->Write(first), 0);
  fixture.set->Reopen(first);
  EXPECT_THAT(fixture.PagesOf(fixture.free), ElementsAre(first, second));
  EXPECT_EQ(fixture.AddRow(1000), first);
}

TEST(PageSet, KeepsAPageThatWasAskedForAloneOutOfTheOthers) {
  SetFixture fixture;
  const std::uint32_t alone = fixture.set->NewPage();
  EXPECT_NE(fixture.AddRow(10), alone);
  EXPECT_EQ(fixture.set->Pages().size(), 2u);
}

TEST(PageSet, GivesPagesBackOneByOneOrAll) {
  SetFixture fixture;
  const std::uint32_t first = fixture.AddRow(4000), second = fixture.AddRow(4000);
  fixture.set->Remove(first);
  EXPECT_THAT(fixture.set->Pages(), ElementsAre(second));
  EXPECT_THAT(fixture.PagesOf(fixture.owned), ElementsAre(second));
  EXPECT_TRUE(fixture.pager.IsFree(first));
  fixture.set->Clear();
  EXPECT_THAT(fixture.set->Pages(), IsEmpty());
  EXPECT_THAT(fixture.PagesOf(fixture.free), IsEmpty());
  EXPECT_TRUE(fixture.pager.IsFree(second));
}

TEST(PageSet, MirrorsItsMapsAnewAfterARollback) {
  SetFixture fixture;
  const std::uint32_t first = fixture.AddRow(4000);
  fixture.pager.Begin();
  fixture.AddRow(4000);
  fixture.pager.Rollback();
  fixture.set->Forget();
  EXPECT_THAT(fixture.set->Pages(), ElementsAre(first));
}

TEST(PageSet, RefusesAPageOfAnotherOwner) {
  SetFixture fixture;
  const std::uint32_t page = fixture.pager.Allocate();
  data_page::Format(fixture.pager.Write(page), kOwner + 1);
  EXPECT_THROW(fixture.set->Read(page), CorruptFile);
  EXPECT_THROW(fixture.set->Read(fixture.pager.Allocate()), CorruptFile) << "a page of zeros";
}

}  // namespace
}  // namespace kestrelon::jet
