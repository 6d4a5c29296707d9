// The start-up test, the connection and the tables.

#include <gmock/gmock.h>

#include "tests/store/StoreFixture.h"

namespace kestrelon::store {
namespace {

using test::ScopedTestDir;
using testing::ElementsAre;

class ConnectDatabaseTest : public StoreTest {
 protected:
  void ExpectConnectDataError() {
    EXPECT_FALSE(ConnectDatabase(dir.program, world));
    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].text, L"Connect Data Error, Program will be Exit ! ");
    EXPECT_EQ(world.boxes[0].title, L"ConnectDatabase Error");
    EXPECT_EQ(world.boxes[0].flags, UINT{MB_OK | MB_ICONEXCLAMATION});
  }
};

TEST_F(ConnectDatabaseTest, IsTrueWhenTheTemplateOpensAndLeavesItAsItIs) {
  EXPECT_TRUE(ConnectDatabase(dir.program, world));

  EXPECT_TRUE(ScopedTestDir::ReadBytes(Data(L"Temp.dat")) == TemplateBytes());
  EXPECT_NO_THROW(DeleteIfThere(Data(L"Temp.dat"))) << "nobody holds it open";
}

TEST_F(ConnectDatabaseTest, ShowsItsBoxWhenTheTemplateIsMissing) {
  DeleteIfThere(Data(L"Temp.dat"));
  world.answers = {IDOK};

  ExpectConnectDataError();
}

TEST_F(ConnectDatabaseTest, ShowsItsBoxWhenTheFileIsNoDatabase) {
  dir.WriteFile(L"KestrelonData\\Temp.dat", "this is no database");
  world.answers = {IDOK};

  ExpectConnectDataError();
}

TEST_F(ConnectDatabaseTest, ShowsItsBoxWhenSomebodyElseHoldsTheFile) {
  const Locked locked(Data(L"Temp.dat"));
  world.answers = {IDOK};

  ExpectConnectDataError();
}

TEST_F(ConnectDatabaseTest, ShowsTheDescriptionOfAnyOtherError) {
  world.answers = {IDOK};

  EXPECT_FALSE(ConnectDatabase(world, [] { throw jet::Error(jet::code::kObjectOpen, u"It is open."); }));

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Unkonw Error:It is open.");
  EXPECT_EQ(world.boxes[0].title, L"Error:");
  EXPECT_EQ(world.boxes[0].flags, UINT{MB_OK | MB_ICONEXCLAMATION});
}

TEST(ConnectionString, NamesProviderAndFile) {
  EXPECT_EQ(ConnectionStringOf(L"C:\\d\\default.dat"),
            L"Provider=Microsoft.Jet.OLEDB.4.0;Persist Security Info=False;Data Source=C:\\d\\default.dat");
  EXPECT_EQ(ShortConnectionStringOf(L"C:\\d\\default.dat"),
            L"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\d\\default.dat");
}

TEST(Template, IsASoundDatabaseWithThreeEmptyTables) {
  const auto memory =
      std::make_shared<std::vector<std::uint8_t>>(TemplateBytes().begin(), TemplateBytes().end());
  const auto database = jet::Database::Open(jet::OpenMemoryFile(memory), u"Temp.dat");

  EXPECT_THAT(database->Check(), ElementsAre());
  EXPECT_THAT(database->TableNames(), ElementsAre(u"FTable", u"FBackup", u"TreeviewTable"));
  for (const std::u16string& name : database->TableNames())
    EXPECT_EQ(database->OpenTable(name).RowCount(), 0u);
}

TEST(Template, HasTheItemColumnsInTheOrderOfTheInsertStatement) {
  const auto memory =
      std::make_shared<std::vector<std::uint8_t>>(TemplateBytes().begin(), TemplateBytes().end());
  const auto database = jet::Database::Open(jet::OpenMemoryFile(memory), u"Temp.dat");
  for (const char16_t* table : {u"FTable", u"FBackup"}) {
    std::vector<std::u16string> names;
    for (const jet::Column& column : database->OpenTable(table).Columns()) names.push_back(column.name);
    EXPECT_THAT(names, ElementsAre(u"TreeviewNode", u"FileIndex", u"DefineName", u"Filename", u"LocalFile",
                                   u"InsertTime", u"Comment"));
  }
}

TEST(Template, IsMadeOfTheSameBytesEveryTime) {
  const auto again = std::make_shared<std::vector<std::uint8_t>>();
  jet::CreateDatabase(*jet::OpenMemoryFile(again), Schema(), 46023);

  EXPECT_TRUE(std::string(again->begin(), again->end()) == TemplateBytes());
}

TEST(Quoted, PutsTheValueBetweenDoubleQuotesAndEscapesNothing) {
  EXPECT_EQ(Quoted(L"a'b"), L"\"a'b\"");
  EXPECT_EQ(Quoted(L"\u201Ca\u201D"), L"\"\u201Ca\u201D\"");
  EXPECT_EQ(Quoted(L""), L"\"\"");
}

// Two of them would make statements that are sound and mean something else.
TEST(Quoted, RefusesEveryDoubleQuoteAsABrokenStatementIsRefused) {
  for (const wchar_t* value :
       {L"\"", L"a\"b", L"x\", Filename=\"gone", L"x\" OR \"1\"=\"1", L"\"\"", L"ends\""}) {
    std::wstring sql = L"begun ";
    try {
      AppendQuoted(sql, value);
      ADD_FAILURE() << Narrow(value);
    } catch (const jet::Error& error) {
      EXPECT_EQ(error.Number(), jet::code::kSyntax);
      EXPECT_EQ(ToWindows(error.Description()),
                L"Syntax error (missing operator) in query expression '\"" + std::wstring(value) + L"\"'.");
    }
    EXPECT_EQ(sql, L"begun ");
    EXPECT_THROW(Quoted(value), jet::Error);
  }
}

class SharedConnectionTest : public StoreTest {};

TEST_F(SharedConnectionTest, IsOpenedOnUseAndClosedAtTheEnd) {
  EXPECT_FALSE(connection.IsOpen());
  {
    const Opened database(connection);
    EXPECT_TRUE(connection.IsOpen());
  }
  EXPECT_FALSE(connection.IsOpen());
}

TEST_F(SharedConnectionTest, StaysOpenForTheOneWhoOpenedIt) {
  const Opened outer(connection);
  {
    Opened inner(connection);
    inner->Execute(InsertItem(L"K1", L"1#K1", L"a"));
    inner.Close();
    EXPECT_TRUE(connection.IsOpen());
  }
  EXPECT_TRUE(connection.IsOpen());
}

TEST_F(SharedConnectionTest, TakesASingleQuoteInsideAValue) {
  Execute(InsertItem(L"K1", L"1#K1", L"it's"));

  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"DefineName"}), ElementsAre(L"it's"));
}

TEST_F(SharedConnectionTest, FailsTheStatementWhoseValueHoldsADoubleQuote) {
  Opened database(connection);

  std::uint32_t byTheEngine = 0, byUs = 0;
  try {
    database->Execute(L"INSERT INTO FTable VALUES(\"K1\",\"1#K1\",\"say \"hi\" there\",\"\",\"\",\"\",'')");
  } catch (const jet::Error& error) {
    byTheEngine = error.Number();
  }
  try {
    database->Execute(InsertItem(L"K1", L"1#K1", L"say \"hi\" there"));
  } catch (const jet::Error& error) {
    byUs = error.Number();
  }
  EXPECT_EQ(byUs, jet::code::kSyntax);
  EXPECT_EQ(byTheEngine, byUs);
  database->Execute(InsertItem(L"K1", L"2#K1", L"next"));
  database.Close();

  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"DefineName"}), ElementsAre(L"next"));
}

TEST_F(SharedConnectionTest, ReadsCategoriesOrderedByIInTheOrderOfAdding) {
  Execute(InsertCategory(L"0_", L"K9", L"first"));
  Execute(InsertCategory(L"K9", L"K1", L"second"));
  Execute(InsertCategory(L"0_", L"K5", L"third"));

  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM TreeviewTable order by i", {u"text"}),
              ElementsAre(L"first", L"second", L"third"));
}

TEST_F(SharedConnectionTest, ThrowsWhenTheWorkingDatabaseIsMissing) {
  DeleteIfThere(Working());

  EXPECT_THROW(Opened database(connection), jet::Error);
  EXPECT_FALSE(connection.IsOpen());
}

TEST_F(SharedConnectionTest, SeesAFileThatWasPutInThePlaceOfTheOld) {
  Execute(InsertItem(L"K1", L"1#K1", L"old"));
  MakeDatabase(Data(L"other.dat"), {InsertItem(L"K1", L"1#K1", L"new")});

  ReplaceByCopy(Data(L"other.dat"), Working());
  connection.Forget();

  Opened database(connection);
  jet::Recordset rows;
  rows.Open(u"SELECT * FROM FTable", database->Ado());
  EXPECT_EQ(rows.Text(u"DefineName"), u"new");
}

}  // namespace
}  // namespace kestrelon::store
