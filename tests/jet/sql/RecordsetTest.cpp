#include "jet/Ado.h"
#include "tests/jet/sql/SqlTestSupport.h"

namespace kestrelon::jet {
namespace {

using sqltest::ConnectionStringOf;
using sqltest::ExpectError;
using sqltest::MakeDatabaseFile;
using sqltest::ScopedTestDir;

constexpr std::u16string_view kNoRow =
    u"Either BOF or EOF is True, or the current record has been deleted. Requested operation requires a "
    u"current "
    u"record.";
constexpr std::u16string_view kClosed = u"Operation is not allowed when the object is closed.";
constexpr std::u16string_view kOpen = u"Operation is not allowed when the object is open.";
constexpr std::u16string_view kNoField =
    u"Item cannot be found in the collection corresponding to the requested name or ordinal.";

class Recordsets : public ::testing::Test {
 protected:
  Recordsets() {
    connection.SetConnectionString(ConnectionStringOf(MakeDatabaseFile(folder / "default.dat")));
    connection.Open();
  }
  void AddCategories() {
    for (const char16_t* key : {u"a", u"b", u"c"}) {
      connection.Execute(u"INSERT INTO TreeviewTable (parent, key, text) VALUES(\"0_\",\"" +
                         std::u16string(key) + u"\",\" T" + key + u" \")");
    }
  }
  ScopedTestDir folder;
  Connection connection;
  Recordset rows;
};

TEST_F(Recordsets, WalkTheRowsToTheEnd) {
  AddCategories();
  rows.Open(u"SELECT * FROM TreeviewTable order by i", connection);
  EXPECT_EQ(rows.State(), 1);
  EXPECT_EQ(rows.RecordCount(), 3u);

  std::u16string seen;
  rows.MoveFirst();
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    seen += rows.Text(u"I");
    seen += rows.Text(u"KEY");
    seen += rows.Text(3);
    seen += std::get<std::u16string>(rows.Fields(u"parent"));
  }

  EXPECT_EQ(seen, u"1a Ta 0_2b Tb 0_3c Tc 0_");
  rows.MoveFirst();
  EXPECT_EQ(rows.Text(u"key"), u"a");
}

TEST_F(Recordsets, StandOnTheFirstRowWhenOpened) {
  AddCategories();
  rows.Open(u"SELECT key FROM TreeviewTable WHERE i>1", connection);
  EXPECT_FALSE(rows.EndOfFile());
  EXPECT_EQ(rows.Text(u"key"), u"b");
}

TEST_F(Recordsets, OfNoRowsHaveNoCurrentRow) {
  rows.Open(u"SELECT * FROM FTable", connection);
  EXPECT_TRUE(rows.EndOfFile());
  EXPECT_EQ(rows.RecordCount(), 0u);
  ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.MoveFirst(); });
  ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.MoveNext(); });
  ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.Text(u"FileIndex"); });
  ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.Fields(u"FileIndex"); });
}

TEST_F(Recordsets, HaveNoCurrentRowPastTheLast) {
  AddCategories();
  rows.Open(u"SELECT * FROM TreeviewTable WHERE key='c'", connection);
  rows.MoveNext();
  EXPECT_TRUE(rows.EndOfFile());
  ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.MoveNext(); });
  ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.Text(1); });
}

TEST_F(Recordsets, KnowOnlyTheColumnsOfTheirList) {
  AddCategories();
  rows.Open(u"SELECT key FROM TreeviewTable", connection);
  ExpectError(code::kNoSuchField, kNoField, [&] { rows.Text(u"text"); });
  ExpectError(code::kNoSuchField, kNoField, [&] { rows.Fields(u"text"); });
  ExpectError(code::kNoSuchField, kNoField, [&] { rows.Text(1); });
  rows.AddNew();
  ExpectError(code::kNoSuchField, kNoField, [&] { rows.SetField(u"text", std::u16string(u"x")); });
}

TEST_F(Recordsets, ReadNullAsTheEmptyText) {
  connection.Execute(u"INSERT INTO FTable (FileIndex, Comment) VALUES('1', NULL)");
  rows.Open(u"SELECT Comment FROM FTable", connection);
  EXPECT_EQ(rows.Text(u"Comment"), u"");
  EXPECT_TRUE(IsNull(rows.Fields(u"Comment")));
}

TEST_F(Recordsets, DoNotTakeARowForTheirsThatGotTheAddressOfADeletedOne) {
  for (const char16_t* deletion : {u"DELETE FROM FTable WHERE FileIndex='1'", u"DELETE FROM FTable"}) {
    connection.Execute(u"INSERT INTO FTable (FileIndex) VALUES('1')");
    rows.Open(u"SELECT FileIndex FROM FTable", connection);
    EXPECT_EQ(rows.Text(u"FileIndex"), u"1");
    connection.Execute(deletion);
    connection.Execute(u"INSERT INTO FTable (FileIndex) VALUES('2')");
    ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.Text(u"FileIndex"); });
    ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.Fields(u"FileIndex"); });
    EXPECT_EQ(rows.RecordCount(), 1u);
    rows.Close();
    connection.Execute(u"DELETE FROM FTable");
  }
}

TEST_F(Recordsets, TellTheRowsThatTheyAddedFromThoseThatGotTheirAddress) {
  rows.Open(u"SELECT * FROM FTable", connection);
  for (const char16_t* index : {u"1", u"2"}) {
    rows.AddNew();
    rows.SetField(u"FileIndex", std::u16string(index));
    rows.Update();
    EXPECT_EQ(rows.Text(u"FileIndex"), index);
    if (*index == u'1') connection.Execute(u"DELETE FROM FTable");
  }
  EXPECT_EQ(rows.Text(u"FileIndex"), u"2");
  rows.MoveFirst();
  ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.Text(u"FileIndex"); });
}

TEST_F(Recordsets, KeepTheirRowThroughADeletionThatFails) {
  AddCategories();
  rows.Open(u"SELECT key FROM TreeviewTable", connection);
  EXPECT_THROW(connection.Execute(u"DELETE FROM TreeviewTable WHERE key='a' AND text=1"), Error);
  EXPECT_THROW(connection.Execute(u"UPDATE TreeviewTable SET key='" + std::u16string(51, u'x') + u"'"),
               Error);
  EXPECT_EQ(rows.Text(u"key"), u"a");
}

TEST_F(Recordsets, AddRowsWhoseAutonumberIsReadableAfterUpdate) {
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  for (int n = 1; n <= 3; ++n) {
    rows.AddNew();
    rows.SetField(u"parent", std::u16string(u"0_"));
    rows.SetField(u"KEY", std::u16string(u"k"));
    EXPECT_EQ(rows.Text(u"key"), u"k");
    rows.Update();
    EXPECT_EQ(std::get<std::int32_t>(rows.Fields(u"i")), n);
    EXPECT_TRUE(IsNull(rows.Fields(u"text")));
    EXPECT_FALSE(rows.EndOfFile());
  }
  EXPECT_EQ(rows.RecordCount(), 3u);
  Recordset again;
  again.Open(u"SELECT * FROM TreeviewTable order by i", connection);
  EXPECT_EQ(again.RecordCount(), 3u);
  EXPECT_EQ(again.Text(u"parent"), u"0_");
}

TEST_F(Recordsets, AddTheRowBegunBeforeTheNextOrAMove) {
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  rows.AddNew();
  rows.SetField(u"key", std::u16string(u"a"));
  rows.AddNew();
  rows.SetField(u"key", std::u16string(u"b"));
  rows.MoveFirst();
  EXPECT_EQ(rows.Text(u"key"), u"a");
  rows.MoveNext();
  EXPECT_EQ(rows.Text(u"key"), u"b");
  rows.AddNew();
  rows.Close();  // the row begun last is dropped
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  EXPECT_EQ(rows.RecordCount(), 2u);
}

TEST_F(Recordsets, TurnNumbersIntoTextsAndTextsIntoNumbers) {
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  rows.AddNew();
  rows.SetField(u"i", std::u16string(u"41"));
  rows.SetField(u"text", std::int32_t{7});
  rows.Update();
  EXPECT_EQ(std::get<std::int32_t>(rows.Fields(u"i")), 41);
  EXPECT_EQ(rows.Text(u"i"), u"41");
  EXPECT_EQ(rows.Text(u"text"), u"7");
  rows.AddNew();
  ExpectError(code::kTypeMismatch, u"Data type mismatch in criteria expression.",
              [&] { rows.SetField(u"i", std::u16string(u"x")); });
}

TEST_F(Recordsets, ReportATooLongTextWithTheGenericCode) {
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  rows.AddNew();
  rows.SetField(u"key", std::u16string(51, u'x'));
  ExpectError(code::kGeneric,
              u"The field is too small to accept the amount of data you attempted to add. Try inserting or "
              u"pasting less "
              u"data.",
              [&] { rows.Update(); });
  rows.SetField(u"key", std::u16string(50, u'x'));
  rows.Update();
  EXPECT_EQ(rows.RecordCount(), 1u);
}

TEST_F(Recordsets, ChangeNothingWithoutAddNew) {
  AddCategories();
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  const std::u16string_view expected = u"Update or CancelUpdate without AddNew or Edit.";
  ExpectError(code::kGeneric, expected, [&] { rows.SetField(u"key", std::u16string(u"x")); });
  ExpectError(code::kGeneric, expected, [&] { rows.Update(); });
}

TEST_F(Recordsets, AppendTheTextsOfARowOneBehindTheOther) {
  AddCategories();
  connection.Execute(u"UPDATE TreeviewTable SET parent=NULL WHERE key='c'");
  rows.Open(u"SELECT * FROM TreeviewTable order by i", connection);
  std::u16string text = u">";
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    for (const std::size_t column : {0, 1, 2, 3}) rows.AppendText(column, text);
  }
  EXPECT_EQ(text, u">10_a Ta 20_b Tb 3c Tc ");
  ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.AppendText(1, text); });
  ExpectError(code::kNoSuchField, kNoField, [&] { rows.AppendText(4, text); });
}

TEST_F(Recordsets, SeeChangesMadeByStatementsMeanwhile) {
  AddCategories();
  rows.Open(u"SELECT * FROM TreeviewTable order by i", connection);
  EXPECT_EQ(rows.Text(u"text"), u" Ta ");
  connection.Execute(u"UPDATE TreeviewTable SET text='new' WHERE key='a'");
  EXPECT_EQ(rows.Text(u"text"), u"new");
  connection.Execute(u"DELETE FROM TreeviewTable WHERE key='b'");
  connection.Execute(u"INSERT INTO TreeviewTable (key) VALUES('d')");
  rows.MoveNext();
  ExpectError(code::kNoCurrentRow, kNoRow, [&] { rows.Text(u"key"); });
  rows.MoveNext();
  EXPECT_EQ(rows.Text(u"key"), u"c");
  rows.MoveNext();
  EXPECT_TRUE(rows.EndOfFile());
}

TEST_F(Recordsets, SurviveAStatementThatIsTakenBack) {
  AddCategories();
  rows.Open(u"SELECT * FROM TreeviewTable order by i", connection);
  EXPECT_THROW(connection.Execute(u"UPDATE TreeviewTable SET i=9"), Error);
  EXPECT_EQ(rows.Text(u"key"), u"a");
  rows.MoveNext();
  EXPECT_EQ(rows.Text(u"key"), u"b");
}

TEST_F(Recordsets, AreClosedUntilOpenedAndOpenOnlyOnce) {
  EXPECT_EQ(rows.State(), 0);
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.MoveFirst(); });
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.MoveNext(); });
  ExpectError(code::kObjectClosed, kClosed, [&] { static_cast<void>(rows.EndOfFile()); });
  ExpectError(code::kObjectClosed, kClosed, [&] { static_cast<void>(rows.RecordCount()); });
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.Text(u"i"); });
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.Fields(u"i"); });
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.AddNew(); });
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.SetField(u"i", Value()); });
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.Update(); });
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.Close(); });
  rows.Open(u"SELECT * FROM FTable", connection);
  ExpectError(code::kObjectOpen, kOpen, [&] { rows.Open(u"SELECT * FROM FTable", connection); });
}

TEST_F(Recordsets, AreClosedWithTheirConnection) {
  AddCategories();
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  connection.Close();
  EXPECT_EQ(rows.State(), 0);
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.MoveNext(); });
  ExpectError(code::kObjectClosed, kClosed, [&] { rows.Open(u"SELECT * FROM TreeviewTable", connection); });
  connection.Open();
  EXPECT_EQ(rows.State(), 0);
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  EXPECT_EQ(rows.RecordCount(), 3u);
}

TEST_F(Recordsets, StayClosedAfterAFailedOpen) {
  EXPECT_THROW(rows.Open(u"SELECT * FROM Nothing", connection), Error);
  EXPECT_EQ(rows.State(), 0);
  rows.Open(u"SELECT * FROM FTable", connection);
  EXPECT_EQ(rows.State(), 1);
}

}  // namespace
}  // namespace kestrelon::jet
