#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

using testing::IsEmpty;

TEST(Rollback, RestoresRowsCountsNumbersAndAllocation) {
  Fixture fixture;
  std::vector<RowId> rows;
  for (int i = 0; i < 300; ++i) rows.push_back(fixture.Insert(VariedRow(i)));
  Row tree = {Value(), std::u16string(u"p"), std::u16string(u"k"), std::u16string(u"t")};
  for (int i = 0; i < 10; ++i) fixture.Tree().Insert(tree);
  fixture.database->Flush();
  const std::vector<std::uint8_t> before = *fixture.bytes;
  const Rows treeBefore = ReadAll(fixture.Tree());

  fixture.database->Begin();
  for (int i = 0; i < 3000; ++i) fixture.Items().Insert(VariedRow(i));
  for (std::size_t i = 0; i < rows.size(); i += 2) fixture.Items().Delete(rows[i]);
  const std::pair<std::size_t, Value> change{6, Repeat(u"c", 30000)};
  fixture.Items().Update(rows[1], {&change, 1});
  fixture.Tree().Insert(tree);
  fixture.database->OpenTable(u"FBackup").DeleteAll();
  fixture.Items().DeleteAll();
  fixture.database->Rollback();

  EXPECT_FALSE(fixture.database->Dirty());
  EXPECT_EQ(fixture.Tree().LastAutoNumber(), 10);
  EXPECT_TRUE(ReadAll(fixture.Tree()) == treeBefore);
  fixture.Compare();
  fixture.database->Flush();
  EXPECT_TRUE(*fixture.bytes == before);
}

TEST(Rollback, LeavesWhatWasCommittedBefore) {
  Fixture fixture;
  for (int i = 0; i < 50; ++i) {
    fixture.database->Begin();
    fixture.Insert(VariedRow(i));
    fixture.database->Commit();
    fixture.database->Begin();
    fixture.Items().Insert(VariedRow(i + 1000));
    fixture.database->Rollback();
  }
  fixture.Compare();
  fixture.FlushAndCompare();
}

TEST(Rollback, ForgetsTheKeysOfItsRows) {
  Fixture fixture;
  Row row = {std::int32_t{5}, Value(), Value(), Value()};
  fixture.Tree().Insert(row);
  fixture.database->Begin();
  row[0] = std::int32_t{3};
  fixture.Tree().Insert(row);
  fixture.database->Rollback();
  EXPECT_NO_THROW(fixture.Tree().Insert(row));
  EXPECT_EQ(ErrorNumberOf([&] { fixture.Tree().Insert(row); }), code::kGeneric);
  fixture.database->Flush();
  EXPECT_THAT(OpenInMemory(fixture.bytes)->Check(), IsEmpty());
}

TEST(Rollback, AppliesToTheChangesSinceTheLastFlushOnly) {
  Fixture fixture;
  for (int i = 0; i < 200; ++i) fixture.Insert(VariedRow(i));
  fixture.database->Flush();
  fixture.Insert(VariedRow(500));
  fixture.database->Begin();
  fixture.Items().DeleteAll();
  fixture.database->Rollback();
  fixture.FlushAndCompare();
}

TEST(Insert, ChangesNothingWhenItFails) {
  Fixture fixture;
  fixture.Insert(VariedRow(1));
  fixture.database->Flush();
  Row row = VariedRow(2);
  row[6] = Repeat(u"c", 70000);
  row[3] = Repeat(u"x", 256);
  EXPECT_THROW(fixture.Items().Insert(row), Error);
  EXPECT_FALSE(fixture.database->Dirty());
  fixture.Compare();
}

}  // namespace
}  // namespace kestrelon::jet
