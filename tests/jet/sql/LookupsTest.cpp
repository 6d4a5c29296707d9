#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "jet/sql/Lookups.h"
#include "jet/sql/RowSet.h"
#include "tests/jet/sql/SqlTestSupport.h"

namespace kestrelon::jet::sql {
namespace {

using sqltest::Decimal;
using sqltest::MemoryDatabase;

std::vector<RowId> Sorted(const RowSet& set) {
  std::vector<RowId> rows;
  set.AppendTo(rows);
  std::sort(rows.begin(), rows.end());
  return rows;
}

TEST(RowSet, HoldsWhatASetHoldsThroughRandomChanges) {
  std::mt19937 random(3);
  RowSet set;
  std::set<RowId> model;
  for (int step = 0; step < 60000; ++step) {
    const RowId row{static_cast<std::uint32_t>(1 + random() % 3000)};
    // Long phases of growth and of shrinking, down to nothing.
    const bool add = (step / 10000) % 2 == 0 ? random() % 4 != 0 : random() % 4 == 0;
    if (add) {
      if (!set.Contains(row)) set.Add(row);
      model.insert(row);
    } else {
      EXPECT_EQ(set.Remove(row), model.erase(row) == 1);
    }
    ASSERT_EQ(set.Size(), model.size());
    if (!model.empty()) {
      ASSERT_TRUE(model.contains(set.Any()));
    }
    if (step % 997 == 0) {
      ASSERT_EQ(Sorted(set), std::vector<RowId>(model.begin(), model.end()));
    }
  }
  for (const RowId row : std::vector<RowId>(model.begin(), model.end())) EXPECT_TRUE(set.Remove(row));
  EXPECT_EQ(set.Size(), 0u);
}

class LookupsOfItems : public ::testing::Test {
 protected:
  void Insert(std::u16string_view node, std::u16string_view index) {
    memory.Execute(u"INSERT INTO FTable (TreeviewNode, FileIndex) VALUES(\"" + std::u16string(node) +
                   u"\",\"" + std::u16string(index) + u"\")");
  }
  std::u16string Of(std::u16string_view node) {
    return memory.Column(u"SELECT FileIndex FROM FTable WHERE TreeviewNode=\"" + std::u16string(node) +
                         u"\"");
  }
  MemoryDatabase memory;
};

TEST_F(LookupsOfItems, FollowInserts) {
  Insert(u"K", u"1");
  EXPECT_EQ(Of(u"K"), u"1");
  Insert(u"k ", u"2");
  Insert(u"L", u"3");
  EXPECT_EQ(Of(u"K"), u"1 2");
  EXPECT_EQ(Of(u"L"), u"3");
}

TEST_F(LookupsOfItems, FollowUpdatesOfTheColumnAndOfOthers) {
  Insert(u"K", u"1");
  Insert(u"K", u"2");
  Insert(u"L", u"3");
  EXPECT_EQ(Of(u"K"), u"1 2");
  memory.Execute(u"UPDATE FTable SET TreeviewNode=\"L\" WHERE FileIndex=\"1\"");
  EXPECT_EQ(Of(u"K"), u"2");
  EXPECT_EQ(Of(u"L"), u"1 3");
  memory.Execute(u"UPDATE FTable SET Comment=\"c\" WHERE TreeviewNode=\"L\"");
  memory.Execute(u"UPDATE FTable SET TreeviewNode=NULL WHERE FileIndex=\"3\"");
  EXPECT_EQ(Of(u"L"), u"1");
  memory.Execute(u"UPDATE FTable SET TreeviewNode=\"L\" WHERE TreeviewNode IS NULL");
  EXPECT_EQ(Of(u"L"), u"1 3");
}

TEST_F(LookupsOfItems, FollowDeletes) {
  for (const char16_t* index : {u"1", u"2", u"3"}) Insert(u"K", index);
  EXPECT_EQ(Of(u"K"), u"1 2 3");
  memory.Execute(u"DELETE FROM FTable WHERE FileIndex=\"2\"");
  EXPECT_EQ(Of(u"K"), u"1 3");
  memory.Execute(u"DELETE FROM FTable");
  EXPECT_EQ(Of(u"K"), u"");
  Insert(u"K", u"4");
  EXPECT_EQ(Of(u"K"), u"4");
}

TEST_F(LookupsOfItems, ForgetWhatIsRolledBack) {
  Insert(u"K", u"1");
  Insert(u"M", u"2");
  EXPECT_EQ(Of(u"K"), u"1");
  memory.Execute(u"INSERT INTO FBackup (TreeviewNode, DefineName) VALUES('K', 'short')");
  memory.Execute(u"INSERT INTO FBackup (TreeviewNode, DefineName) VALUES('K', '" + std::u16string(100, u'x') +
                 u"')");
  EXPECT_THROW(
      memory.Execute(
          u"INSERT INTO FTable (TreeviewNode, FileIndex) SELECT TreeviewNode, DefineName FROM FBackup"),
      Error);
  EXPECT_EQ(Of(u"K"), u"1");
  EXPECT_THROW(memory.Execute(u"UPDATE FTable SET TreeviewNode='" + std::u16string(51, u'x') + u"'"), Error);
  EXPECT_EQ(Of(u"K"), u"1");
}

TEST_F(LookupsOfItems, HoldWhatIsStoredNotWhatWasGiven) {
  EXPECT_EQ(Of(u"K"), u"");
  Insert(u"\uFEFFK", u"1");  // the mark is not stored
  EXPECT_EQ(Of(u"K"), u"1");
  memory.Execute(u"UPDATE FTable SET TreeviewNode='\uFEFFL' WHERE FileIndex='1'");
  EXPECT_EQ(Of(u"K"), u"");
  EXPECT_EQ(Of(u"L"), u"1");
  memory.Execute(u"DELETE FROM FTable WHERE TreeviewNode='L'");
  EXPECT_EQ(Of(u"L"), u"");
}

TEST_F(LookupsOfItems, FindNumbersAndDrawnAutonumbers) {
  memory.Execute(u"INSERT INTO TreeviewTable (key) VALUES('a')");
  EXPECT_EQ(memory.Column(u"SELECT key FROM TreeviewTable WHERE i=1"), u"a");
  memory.Execute(u"INSERT INTO TreeviewTable (key) VALUES('b')");
  EXPECT_EQ(memory.Column(u"SELECT key FROM TreeviewTable WHERE i=2"), u"b");
  EXPECT_EQ(memory.Column(u"SELECT key FROM TreeviewTable WHERE i=3"), u"");
}

TEST_F(LookupsOfItems, CompareTheRowWhereHashesCollide) {
  // Two texts with the same hash: hyphens have no part in it.
  Insert(u"a-b", u"1");
  Insert(u"ab-", u"2");
  Insert(u"ab", u"3");
  EXPECT_EQ(Of(u"ab-"), u"2");
  Insert(u"ab-", u"4");
  memory.Execute(u"DELETE FROM FTable WHERE FileIndex='1'");
  EXPECT_EQ(Of(u"a-b"), u"");
  EXPECT_EQ(Of(u"ab-"), u"2 4");
  EXPECT_EQ(Of(u"ab"), u"3");
}

TEST_F(LookupsOfItems, AgreeWithScansThroughRandomChanges) {
  std::mt19937 random(11);
  const std::vector<std::u16string> nodes = {u"K1",          u"k1 ",     u"K2",     u"a-b",    u"ab-",
                                             u"stra\u00DFe", u"strasse", u"\u0436", u"\u0416", u"\uFEFFK2"};
  std::size_t next = 0;
  const auto node = [&] { return nodes[random() % nodes.size()]; };
  const auto index = [&] { return Decimal(random() % (next + 1)); };
  for (int step = 0; step < 3000; ++step) {
    switch (random() % 5) {
      case 0:
      case 1: Insert(node(), Decimal(next++)); break;
      case 2:
        memory.Execute(u"UPDATE FTable SET TreeviewNode='" + node() + u"' WHERE FileIndex='" + index() +
                       u"'");
        break;
      case 3: memory.Execute(u"DELETE FROM FTable WHERE FileIndex='" + index() + u"'"); break;
      default: {
        const std::u16string key = node();
        // A condition with OR is answered by a scan.
        ASSERT_EQ(Of(key),
                  memory.Column(u"SELECT FileIndex FROM FTable WHERE TreeviewNode='" + key + u"' OR FALSE"));
      }
    }
  }
  EXPECT_EQ(memory.database->Check(), std::vector<Finding>());
}

}  // namespace
}  // namespace kestrelon::jet::sql
