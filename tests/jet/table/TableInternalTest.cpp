#include "jet/database/DatabaseInternal.h"
#include "jet/table/TableInternal.h"
#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

TableInternal& InternalOf(Table& table) { return static_cast<TableImpl&>(table).Internal(); }

TEST(LikelyRows, AreThoseOfTheDefinition) {
  Fixture fixture;
  for (int i = 0; i < 20; ++i) fixture.Insert(VariedRow(i));
  EXPECT_EQ(InternalOf(fixture.Items()).LikelyRows(), 20u);
}

TEST(LikelyRows, AreNoMoreThanThePagesCanHoldWhateverTheDefinitionSays) {
  Fixture fixture;
  for (int i = 0; i < 20; ++i) fixture.Insert(VariedRow(i));
  TableInternal& items = InternalOf(fixture.Items());
  items.def.rowCount = 1'000'000;
  EXPECT_LE(items.LikelyRows(), 255 * items.rows.Pages().size());
  EXPECT_GE(items.LikelyRows(), 20u);
}

}  // namespace
}  // namespace kestrelon::jet
