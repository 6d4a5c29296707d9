#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>

#include "jet/catalog/Layout.h"
#include "jet/index/Index.h"
#include "jet/page/UsageMap.h"
#include "tests/jet/index/Keys.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t kDefinition = 2;

struct TreeFixture {
  TreeFixture() {
    while (pager.PageCount() < 6) pager.Allocate();
    MapRows maps(pager);
    index.map = maps.Add();
    index.root = pager.Allocate();
    FormatEmptyIndex(pager.Write(index.root), kDefinition);
    UsageMap(pager, index.map).Add(index.root);
  }
  std::vector<std::pair<std::string, RowId>> Walk() {
    std::vector<std::pair<std::string, RowId>> seen;
    IndexWalk walk;
    walk.entry = [&](std::span<const std::uint8_t> key, RowId row) {
      seen.emplace_back(std::string(key.begin(), key.end()), row);
    };
    WalkIndex(pager, kDefinition, index, walk);
    return seen;
  }
  Pager pager;
  RealIndex index;
};

TEST(Index, GivesBackWhatItWasBuiltFromInOrder) {
  for (const std::size_t count : {0u, 1u, 2u, 400u, 401u, 30000u}) {
    TreeFixture fixture;
    IndexEntries entries;
    std::vector<std::pair<std::string, RowId>> expected;
    std::mt19937 random(1);
    for (std::size_t i = 0; i < count; ++i) {
      const auto key = KeyOf(ColumnType::kLong, static_cast<std::int32_t>(random() % 20000));
      const RowId row{static_cast<std::uint32_t>(i + 256)};
      entries.Add(key, row);
      expected.emplace_back(key, row);
    }
    std::sort(expected.begin(), expected.end());
    entries.Sort();
    BuildIndex(fixture.pager, kDefinition, fixture.index, entries);

    EXPECT_TRUE(fixture.Walk() == expected) << count;
    EXPECT_EQ(fixture.index.entries, count);
  }
}

TEST(Index, BearsKeysOfAllLengths) {
  TreeFixture fixture;
  IndexEntries entries;
  std::vector<std::pair<std::string, RowId>> expected;
  for (std::uint32_t i = 0; i < 3000; ++i) {
    std::string key =
        KeyOf(ColumnType::kText, std::u16string(i % 255, u'a') + FromUtf8(std::to_string(i % 13)));
    if (i % 100 == 0) key += KeyOf(ColumnType::kText, std::u16string(255, u'_'));
    entries.Add(key, RowId{i});
    expected.emplace_back(key, RowId{i});
  }
  std::sort(expected.begin(), expected.end());
  entries.Sort();
  BuildIndex(fixture.pager, kDefinition, fixture.index, entries);
  EXPECT_TRUE(fixture.Walk() == expected);
}

TEST(Index, OrdersAndCountsKeysThatDifferLate) {
  IndexEntries entries;
  std::set<std::string> keys;
  std::mt19937 random(1);
  for (std::uint32_t i = 0; i < 3000; ++i) {
    std::string key(1 + random() % 20, '\x7F');
    key[random() % key.size()] = static_cast<char>(random() % 3 * 0x7F);
    key.push_back('\x01');  // no key begins another one
    entries.Add(key, RowId{i});
    keys.insert(key);
  }
  entries.Sort();
  for (std::size_t i = 1; i < entries.size(); ++i) {
    EXPECT_LE(std::string(entries[i - 1].begin(), entries[i - 1].end()),
              std::string(entries[i].begin(), entries[i].end()));
  }
  EXPECT_EQ(entries.Distinct(), keys.size());
}

TEST(Index, KeepsItsRootAndOwnsThePagesOfItsTree) {
  TreeFixture fixture;
  const std::uint32_t root = fixture.index.root;
  for (const std::uint32_t count : {5000u, 10u, 8000u}) {
    IndexEntries entries;
    for (std::uint32_t i = 0; i < count; ++i)
      entries.Add(KeyOf(ColumnType::kLong, static_cast<std::int32_t>(i)), RowId{i});
    entries.Sort();
    BuildIndex(fixture.pager, kDefinition, fixture.index, entries);
    std::vector<std::uint32_t> pages;
    IndexWalk walk;
    walk.entry = [](std::span<const std::uint8_t>, RowId) {};
    walk.page = [&](std::uint32_t page) { pages.push_back(page); };
    WalkIndex(fixture.pager, kDefinition, fixture.index, walk);
    std::sort(pages.begin(), pages.end());
    EXPECT_EQ(pages, UsageMap(fixture.pager, fixture.index.map).Pages());
    EXPECT_EQ(fixture.index.root, root);
    EXPECT_EQ(fixture.index.distinct, count);
  }
}

TEST(Index, RefusesAKeyLongerThanHalfAPage) {
  IndexEntries entries;
  EXPECT_THROW(entries.Add(std::string(kLongestEntry - kRowPointer + 1, 'x'), RowId{}), Error);
  EXPECT_NO_THROW(entries.Add(std::string(kLongestEntry - kRowPointer, 'x'), RowId{}));
}

TEST(Index, IsRefusedWhenANodeLeadsBackToItself) {
  TreeFixture fixture;
  IndexEntries entries;
  for (std::uint32_t i = 0; i < 5000; ++i)
    entries.Add(KeyOf(ColumnType::kLong, static_cast<std::int32_t>(i)), RowId{i});
  entries.Sort();
  BuildIndex(fixture.pager, kDefinition, fixture.index, entries);
  ASSERT_EQ(fixture.pager.Read(fixture.index.root)[0], page_type::kIndexNode);
  Put32(fixture.pager.Write(fixture.index.root) + 20, fixture.index.root);
  EXPECT_THROW(fixture.Walk(), CorruptFile);
}

}  // namespace
}  // namespace kestrelon::jet
