#include "jet/page/DataPage.h"
#include "jet/page/Pager.h"
#include "jet/schema/TableDef.h"
#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

using testing::Contains;
using testing::Each;
using testing::Field;
using testing::HasSubstr;

constexpr auto kDamage = Finding::Kind::kDamage, kIndex = Finding::Kind::kIndex,
               kWaste = Finding::Kind::kWaste;

// A file with one fault, made by hand.
struct Faulty {
  Faulty() {
    for (int i = 0; i < 20; ++i) last = fixture.Insert(VariedRow(i));
    Row tree = {Value(), Value(), Value(), Value()};
    for (int i = 0; i < 20; ++i) fixture.Tree().Insert(tree);
    fixture.database->Flush();
    Pager pager(OpenMemoryFile(fixture.bytes));
    for (std::uint32_t page = 6; page < pager.PageCount(); ++page) {
      const std::uint8_t* bytes = pager.Read(page);
      if (bytes[0] == page_type::kDefinition && itemsDefinition == 0) itemsDefinition = page;
      if (bytes[0] == page_type::kData && data_page::Owner(bytes) == kLongValueOwner) longValues = page;
      if (bytes[0] == page_type::kIndexLeaf && Get16(bytes + 2) < 3600) leaf = page;
    }
  }
  std::uint8_t* Page(std::uint32_t page) { return fixture.bytes->data() + page * kPageSize; }
  std::vector<Finding> Check() { return OpenInMemory(fixture.bytes)->Check(); }

  Fixture fixture;
  RowId last{};
  std::uint32_t itemsDefinition = 0, longValues = 0, leaf = 0;
};

TEST(Check, FindsNothingInASoundFile) { EXPECT_THAT(Faulty().Check(), testing::IsEmpty()); }

TEST(Check, FindsAWrongRowCount) {
  Faulty file;
  Put32(file.Page(file.itemsDefinition) + 16, 21);
  EXPECT_THAT(file.Check(), Contains(IsFinding(kDamage, "the definition says 21 rows, the pages hold 20")));
}

TEST(Check, FindsAWrongFreeSpaceField) {
  Faulty file;
  std::uint8_t* page = file.Page(static_cast<std::uint32_t>(file.last) >> 8);
  Put16(page + 2, Get16(page + 2) + 1u);
  EXPECT_THAT(file.Check(), Contains(IsFinding(kDamage, "the free-space field says")));
}

TEST(Check, FindsALongValueThatBelongsToNoRow) {
  Faulty file;
  std::uint8_t* page = file.Page(static_cast<std::uint32_t>(file.last) >> 8);
  for (std::size_t slot = 0; slot < data_page::SlotCount(page); ++slot) data_page::Delete(page, slot);
  EXPECT_THAT(file.Check(), Contains(IsFinding(kWaste, "a long value belongs to no row")));
}

TEST(Check, FindsABrokenTextAndStillTheLongValuesOfItsRow) {
  Faulty file;
  const RowId row = file.fixture.Insert(ItemRow(u"K", u"1#K", u"\u6F22\u5B57", u"\u6F22\u5B57",
                                                Repeat(u"path", 5000), u"now", Repeat(u"comment", 5000)));
  file.fixture.database->Flush();
  std::uint8_t* page = file.Page(static_cast<std::uint32_t>(row) >> 8);
  std::uint8_t* end = page + data_page::End(page, static_cast<std::uint32_t>(row) & 0xFF);
  // From the end of the row: the mask, the number of columns, the places of columns 0, 1, 2 and 3. The last
  // of them one byte to the left cuts the third text.
  std::uint8_t* place = end - 1 - 2 - 4 * 2;
  Put16(place, Get16(place) - 1u);
  EXPECT_THAT(file.Check(), testing::AllOf(testing::Not(testing::IsEmpty()),
                                           Each(IsFinding(kDamage, "a text ends within a character"))));
}

TEST(Check, FindsALostLongValue) {
  Faulty file;
  data_page::Delete(file.Page(file.longValues), 0);
  EXPECT_THAT(file.Check(), Contains(IsFinding(kDamage, "a long value has lost a piece")));
}

TEST(Check, FindsIndexEntriesOutOfOrder) {
  Faulty file;
  file.Page(file.leaf)[480] ^= 0x80;
  EXPECT_THAT(file.Check(), Contains(IsFinding(kIndex, "TreeviewTable")));
}

TEST(Check, FindsARowThatItsIndexLacks) {
  Faulty file;
  std::uint32_t page = 0;
  for (const auto& [id, row] : ReadAll(file.fixture.Tree())) page = static_cast<std::uint32_t>(id) >> 8;
  std::uint8_t* bytes = file.Page(page);
  const std::size_t size = data_page::End(bytes, 0) - data_page::Start(bytes, 0);
  const std::size_t slot = data_page::Append(bytes, size, 0);
  std::copy_n(bytes + data_page::Start(bytes, 0), size, bytes + data_page::Start(bytes, slot));
  EXPECT_THAT(file.Check(), Contains(IsFinding(kIndex, "an index lacks a row")));
}

// Gives the catalog's row of a table another object's number.
void Unlist(Faulty& file, std::uint32_t table) {
  constexpr std::uint32_t kCatalog = 2;
  for (std::uint32_t page = 6; page * kPageSize < file.fixture.bytes->size(); ++page) {
    std::uint8_t* bytes = file.Page(page);
    if (bytes[0] != page_type::kData || data_page::Owner(bytes) != kCatalog) continue;
    for (std::size_t slot = 0; slot < data_page::SlotCount(bytes); ++slot) {
      std::uint8_t* id = bytes + data_page::Start(bytes, slot) + 2;  // behind the number of columns
      if (Get32(id) == table) Put32(id, 0x0F00000F);
    }
  }
}

TEST(Check, FindsACatalogThatDoesNotListItselfOrAnotherOfTheEnginesTables) {
  for (const std::uint32_t table : {2u, 3u, 4u, 5u}) {
    Faulty file;
    Unlist(file, table);
    EXPECT_THAT(file.Check(),
                Contains(IsFinding(kDamage, "the catalog does not list the engine's table of page " +
                                                std::to_string(table))));
    EXPECT_THROW(OpenInMemory(file.fixture.bytes)
                     ->CompactInto(*OpenMemoryFile(std::make_shared<std::vector<std::uint8_t>>())),
                 CorruptFile);
  }
}

TEST(Check, FindsATableWithoutAName) {
  Fixture fixture(std::vector<NewTable>{{u"", {{u"Word", ColumnType::kText, 10, false}}, u""}});
  EXPECT_THAT(fixture.database->Check(), testing::ElementsAre(IsFinding(kDamage, "a table has no name")));
}

TEST(Check, FindsAPageThatIsFreeAndOwned) {
  Faulty file;
  std::uint8_t* map = file.Page(Pager::kGlobalMapPage);
  const std::uint32_t page = static_cast<std::uint32_t>(file.last) >> 8;
  map[data_page::Start(map, 0) + 5 + page / 8] |= static_cast<std::uint8_t>(1u << page % 8);
  EXPECT_THAT(file.Check(), Contains(IsFinding(kDamage, "is free but belongs to FTable")));
}

TEST(Check, FindsAPageThatIsNeitherFreeNorOwned) {
  Faulty file;
  const std::size_t page = file.fixture.bytes->size() / kPageSize;
  file.fixture.bytes->resize((page + 1) * kPageSize);
  std::uint8_t* map = file.Page(Pager::kGlobalMapPage);
  map[data_page::Start(map, 0) + 5 + page / 8] &= static_cast<std::uint8_t>(~(1u << page % 8));
  EXPECT_THAT(file.Check(), testing::ElementsAre(IsFinding(kWaste, "belongs to nothing and is not free")));
}

TEST(Check, DoesNotLoseDamageAmongWaste) {
  Faulty file;
  for (int i = 0; i < 1100; ++i)
    file.fixture.Insert(ItemRow(u"", u"", u"", u"", Repeat(u"path", 100), u"", u""));
  file.fixture.database->Flush();
  // Rows go, and their long values stay.
  for (std::uint32_t page = 6; page * kPageSize < file.fixture.bytes->size(); ++page) {
    std::uint8_t* bytes = file.Page(page);
    if (bytes[0] != page_type::kData || data_page::Owner(bytes) != file.itemsDefinition) continue;
    for (std::size_t slot = 0; slot < data_page::SlotCount(bytes); ++slot) data_page::Delete(bytes, slot);
  }
  std::uint8_t* map = file.Page(Pager::kGlobalMapPage);
  const std::uint32_t owned = static_cast<std::uint32_t>(file.last) >> 8;
  map[data_page::Start(map, 0) + 5 + owned / 8] |= static_cast<std::uint8_t>(1u << owned % 8);
  const auto findings = file.Check();
  EXPECT_THAT(findings, Contains(Field(&Finding::kind, kWaste)).Times(1000));
  EXPECT_THAT(findings, Contains(IsFinding(kDamage, "is free but belongs to FTable")));
}

}  // namespace
}  // namespace kestrelon::jet
