#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "jet/Index.h"
#include "jet/Layout.h"
#include "jet/UsageMap.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t kDefinition = 2;

StoredColumn ColumnOf(ColumnType type) {
  StoredColumn column;
  column.type = static_cast<std::uint8_t>(type);
  return column;
}

std::string KeyOf(ColumnType type, const Value& value, bool ascending = true) {
  std::string key;
  EXPECT_TRUE(AppendKey(ColumnOf(type), value, ascending, key));
  return key;
}

std::string Hex(const std::string& key) {
  std::string hex;
  for (const char byte : key) {
    constexpr char kDigits[] = "0123456789abcdef";
    hex += kDigits[static_cast<unsigned char>(byte) >> 4];
    hex += kDigits[static_cast<unsigned char>(byte) & 15];
  }
  return hex;
}

TEST(IndexKey, IsTheOneThatAccessWrites) {
  EXPECT_EQ(Hex(KeyOf(ColumnType::kLong, std::int32_t{1})), "7f80000001");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kLong, std::numeric_limits<std::int32_t>::min())), "7f00000000");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kText, u"a")), "7f4a0100");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kText, u"a", false)), "80b5feff00");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kLong, Value())), "00");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kLong, Value(), false)), "ff");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kBoolean, true)), "7f00");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kBoolean, false)), "7fff");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kBinary, Bytes{1, 2, 3})), "7f010203000000000003");
  EXPECT_EQ(Hex(KeyOf(ColumnType::kBinary, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9})),
            "7f0102030405060708090900000000000000"
            "01");
}

TEST(IndexKey, SortsAsItsValueDoes) {
  const double doubles[] = {-1e300, -1.5, -1.0, 0.0, 1e-9, 1.0, 2.5, 1e300};
  for (std::size_t i = 1; i < std::size(doubles); ++i) {
    EXPECT_LT(KeyOf(ColumnType::kDouble, doubles[i - 1]), KeyOf(ColumnType::kDouble, doubles[i]));
    EXPECT_LT(KeyOf(ColumnType::kSingle, -1.0 / double(i)), KeyOf(ColumnType::kSingle, -1.0 / double(i + 1)));
    EXPECT_GT(KeyOf(ColumnType::kDouble, doubles[i - 1], false),
              KeyOf(ColumnType::kDouble, doubles[i], false));
  }
  EXPECT_LT(KeyOf(ColumnType::kCurrency, std::int64_t{-10000}),
            KeyOf(ColumnType::kCurrency, std::int64_t{5}));
  EXPECT_LT(KeyOf(ColumnType::kInteger, std::int32_t{-1}), KeyOf(ColumnType::kInteger, std::int32_t{0}));
  EXPECT_LT(KeyOf(ColumnType::kByte, std::int32_t{1}), KeyOf(ColumnType::kByte, std::int32_t{200}));
  Bytes minusTwo(17), minusOne(17), two(17);
  minusTwo[0] = minusOne[0] = 0x80;
  minusTwo[13] = two[13] = 2;
  minusOne[13] = 1;
  EXPECT_LT(KeyOf(ColumnType::kNumeric, minusTwo), KeyOf(ColumnType::kNumeric, minusOne));
  EXPECT_LT(KeyOf(ColumnType::kNumeric, minusOne), KeyOf(ColumnType::kNumeric, two));
}

TEST(IndexKey, DoesNotExistUnderAForeignSortOrder) {
  StoredColumn swedish = ColumnOf(ColumnType::kText);
  swedish.collation = 0x041D;
  std::string key;
  EXPECT_FALSE(KnowsKeysOf(swedish));
  EXPECT_FALSE(AppendKey(swedish, u"a", true, key));
  EXPECT_FALSE(AppendKey(ColumnOf(ColumnType::kText), u"文", true, key));
}

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
