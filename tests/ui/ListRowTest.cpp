#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "ui/win/ListView.h"

namespace kestrelon::win {
namespace {

TEST(ListRow, KeepsFiveTextsAndATag) {
  ListRow row;
  row.Set({L"alias", L"file.txt", L"C:\\a\\file.txt", L"11/15/2026", L"comment"}, L"3#K_");

  EXPECT_EQ(row.Text(0), L"");
  EXPECT_EQ(row.Text(1), L"alias");
  EXPECT_EQ(row.Text(2), L"file.txt");
  EXPECT_EQ(row.Text(3), L"C:\\a\\file.txt");
  EXPECT_EQ(row.Text(4), L"11/15/2026");
  EXPECT_EQ(row.Text(5), L"comment");
  EXPECT_EQ(row.Tag(), L"3#K_");
}

TEST(ListRow, StartsEmpty) {
  const ListRow row;
  for (std::size_t column = 0; column < ListRow::kColumns; ++column) EXPECT_EQ(row.Text(column), L"");
  EXPECT_EQ(row.Tag(), L"");
}

TEST(ListRow, ChangesOneTextAndLeavesTheOthers) {
  ListRow row;
  row.Set({L"a", L"b", L"c", L"d", L"e"}, L"t");

  row.SetText(2, L"longer than before");
  row.SetText(4, L"");
  row.SetText(5, L"last");
  row.SetTag(L"tag");

  EXPECT_EQ(row.Text(1), L"a");
  EXPECT_EQ(row.Text(2), L"longer than before");
  EXPECT_EQ(row.Text(3), L"c");
  EXPECT_EQ(row.Text(4), L"");
  EXPECT_EQ(row.Text(5), L"last");
  EXPECT_EQ(row.Tag(), L"tag");
}

TEST(ListRow, MayBeSetFromItsOwnTexts) {
  ListRow row;
  row.Set({L"alias", L"b", L"c", L"d", L"e"}, L"t");

  row.Set({row.Text(5), row.Text(1), row.Text(3), row.Text(2), row.Text(4)}, row.Tag());

  EXPECT_EQ(row.Text(1), L"e");
  EXPECT_EQ(row.Text(2), L"alias");
  EXPECT_EQ(row.Tag(), L"t");
}

ListRow Made(ListRowMaker& maker, const std::array<std::wstring, 6>& pieces) {
  std::wstring joined;
  std::array<std::uint32_t, 6> ends{};
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    joined += pieces[i];
    ends[i] = static_cast<std::uint32_t>(joined.size());
  }
  return maker.Make(joined, ends);
}

TEST(ListRowMaker, MakesRowsThatOutliveItAndDoNotTouchEachOther) {
  std::vector<ListRow> rows;
  {
    ListRowMaker maker;
    for (int i = 0; i < 5000; ++i) {
      const std::wstring number = std::to_wstring(i);
      rows.push_back(
          Made(maker, {number, L"file " + number, L"", L"time", std::wstring(50, L'c'), L"#" + number}));
    }
  }

  rows[17].SetText(1, L"changed to something longer");

  EXPECT_EQ(rows[16].Text(1), L"16");
  EXPECT_EQ(rows[17].Text(1), L"changed to something longer");
  EXPECT_EQ(rows[17].Text(2), L"file 17");
  EXPECT_EQ(rows[18].Text(1), L"18");
  EXPECT_EQ(rows[4999].Text(2), L"file 4999");
  EXPECT_EQ(rows[4999].Text(3), L"");
  EXPECT_EQ(rows[4999].Tag(), L"#4999");
}

TEST(ListRowMaker, TakesARowLargerThanItsBlocks) {
  ListRowMaker maker;
  const std::wstring comment(200000, L'x');

  const ListRow large = Made(maker, {L"a", L"b", L"c", L"d", comment, L"t"});
  const ListRow next = Made(maker, {L"a2", L"", L"", L"", L"", L"t2"});

  EXPECT_EQ(large.Text(5), comment);
  EXPECT_EQ(large.Tag(), L"t");
  EXPECT_EQ(next.Text(1), L"a2");
}

}  // namespace
}  // namespace kestrelon::win
