#include <random>

#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

// A walk of random changes, compared with a plain map after every few steps.
class RandomChanges : public testing::TestWithParam<unsigned> {
 protected:
  std::u16string Text(std::size_t most) {
    static constexpr std::u16string_view kUnits[] = {u"a", u"é", u"文", u"\U0001F600", u"Z "};
    const std::u16string_view unit = kUnits[random_() % std::size(kUnits)];
    return Repeat(unit, random_() % (most + 1) / unit.size() * unit.size());
  }
  std::u16string Memo() {
    switch (random_() % 6) {
      case 0: return Text(9000);
      case 1: return Text(2200);
      default: return Text(90);
    }
  }
  Row NewRow() { return ItemRow(Text(50), Text(50), Text(255), Text(255), Memo(), Text(50), Memo()); }
  RowId AnyRow(const Rows& rows) {
    auto at = rows.begin();
    std::advance(at, static_cast<std::ptrdiff_t>(random_() % rows.size()));
    return at->first;
  }
  void ChangeOnce(Fixture& fixture) {
    const auto choice = random_() % 10;
    if (fixture.model.empty() || choice < 4) {
      fixture.Insert(NewRow());
    } else if (choice < 8) {
      const std::size_t column = random_() % 7;
      const std::size_t most = column == 2 || column == 3 ? 255 : 50;
      Value value = column == 4 || column == 6 ? Memo() : Text(most);
      if (random_() % 8 == 0) value = std::monostate{};
      fixture.Update(AnyRow(fixture.model), column, std::move(value));
    } else {
      fixture.Delete(AnyRow(fixture.model));
    }
  }

  std::mt19937 random_{GetParam()};
};

TEST_P(RandomChanges, LeaveTheFileAsAPlainMapHasIt) {
  Fixture fixture;
  for (int round = 0; round < 12; ++round) {
    for (int step = 0; step < 120; ++step) ChangeOnce(fixture);
    const Rows before = fixture.model;
    fixture.database->Begin();
    for (int step = 0; step < 40; ++step) ChangeOnce(fixture);
    if (random_() % 2 == 0) {
      fixture.database->Rollback();
      fixture.model = before;
    } else {
      fixture.database->Commit();
    }
    if (round == 6) {
      fixture.Items().DeleteAll();
      fixture.model.clear();
    }
    fixture.Compare();
    if (round % 2 == 0) fixture.FlushAndCompare();
    if (round % 4 == 0) fixture.Reopen();
  }
  fixture.FlushAndCompare();

  auto packed = std::make_shared<std::vector<std::uint8_t>>();
  fixture.database->CompactInto(*OpenMemoryFile(packed));
  const auto copy = OpenInMemory(packed);
  EXPECT_THAT(copy->Check(), testing::IsEmpty());
  std::vector<Row> expected, found;
  for (const auto& [id, row] : fixture.model) expected.push_back(row);
  for (const auto& [id, row] : ReadAll(copy->OpenTable(u"FTable"))) found.push_back(row);
  EXPECT_TRUE(found == expected);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomChanges, testing::Range(1u, 9u));

}  // namespace
}  // namespace kestrelon::jet
