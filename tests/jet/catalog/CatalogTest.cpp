#include "jet/catalog/Catalog.h"
#include "jet/database/DatabaseInternal.h"
#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

TEST(EqualNames, DisregardCaseAndNothingElse) {
  EXPECT_TRUE(EqualNames(u"FTable", u"fTABLE"));
  EXPECT_TRUE(EqualNames(u"Größe", u"GRÖßE"));
  EXPECT_TRUE(EqualNames(u"Ёлка Σ", u"ёЛКА σ"));
  EXPECT_FALSE(EqualNames(u"a", u"ä"));
  EXPECT_FALSE(EqualNames(u"a", u"a "));
  EXPECT_FALSE(EqualNames(u"\u00F7", u"\u00D7")) << "the division sign is no small letter";
}

TEST(Catalog, HasTheObjectsOfANewFileInTheOrderOfTheirIds) {
  const auto database = OpenInMemory(CreateInMemory(ProgramTables()));
  const Catalog& catalog = static_cast<DatabaseImpl&>(*database).Objects();
  std::vector<std::u16string> names;
  for (const CatalogObject& object : catalog.Objects()) names.push_back(object.name);
  EXPECT_THAT(names, testing::ElementsAre(u"MSysObjects", u"MSysACEs", u"MSysQueries", u"MSysRelationships",
                                          u"FTable", u"FBackup", u"TreeviewTable", u"Tables", u"Databases",
                                          u"Relationships", u"MSysDb"));
}

TEST(Catalog, FindsTablesInAnyCaseAndNothingButTables) {
  const auto database = OpenInMemory(CreateInMemory(ProgramTables()));
  const Catalog& catalog = static_cast<DatabaseImpl&>(*database).Objects();
  const CatalogObject* items = catalog.FindTable(u"FTABLE");
  ASSERT_NE(items, nullptr);
  EXPECT_EQ(items->name, u"FTable");
  EXPECT_TRUE(items->UserTable());
  const CatalogObject* objects = catalog.FindTable(u"msysobjects");
  ASSERT_NE(objects, nullptr);
  EXPECT_EQ(objects->id, engine_table::kObjects);
  EXPECT_FALSE(objects->UserTable());
  EXPECT_EQ(catalog.FindTable(u"MSysDb"), nullptr) << "the database itself";
  EXPECT_EQ(catalog.FindTable(u"FTable "), nullptr);
}

TEST(Catalog, IsRefusedWithoutItsColumns) {
  const ByteVector bytes = CreateInMemory({});
  {
    const auto database = OpenInMemory(bytes);
    auto& open = static_cast<DatabaseImpl&>(*database);
    TableDef def = open.TableAt(engine_table::kObjects, u"MSysObjects").Internal().def;
    for (StoredColumn& column : def.columns) {
      if (column.name == u"Flags") column.name = u"Flogs";
    }
    WriteTableDef(open.Pages(), def);
    open.Pages().Flush();
  }
  EXPECT_THROW(OpenInMemory(bytes), CorruptFile);
}

}  // namespace
}  // namespace kestrelon::jet
