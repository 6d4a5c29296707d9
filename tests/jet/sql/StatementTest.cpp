#include "tests/jet/sql/SqlTestSupport.h"

namespace kestrelon::jet::sql {
namespace {

using sqltest::ExpectError;
using sqltest::MemoryDatabase;

constexpr std::u16string_view kMismatch = u"Data type mismatch in criteria expression.";
constexpr std::u16string_view kParameter = u"No value given for one or more required parameters.";
constexpr std::u16string_view kTooSmall =
    u"The field is too small to accept the amount of data you attempted to add. Try inserting or pasting "
    u"less data.";

class Statements : public ::testing::Test {
 protected:
  void ExpectFailure(std::uint32_t number, std::u16string_view description, std::u16string_view text) {
    SCOPED_TRACE(ToUtf8(text.substr(0, 200)));
    ExpectError(number, description, [&] { memory.Execute(text); });
    EXPECT_EQ(memory.database->Check(), std::vector<Finding>());
  }
  void ExpectSelectFailure(std::uint32_t number, std::u16string_view description, std::u16string_view text) {
    SCOPED_TRACE(ToUtf8(text));
    ExpectError(number, description, [&] { memory.executor->Select(text); });
  }
  // Five items a to e in the categories K1 (a, c, e) and K2 (b, d).
  void AddItems() {
    memory.Execute(u"INSERT INTO FTable VALUES(\"K1\",\"1#K1\",\"a\",\"a.txt\",\"C:\\a.txt\",\"t1\",'')");
    memory.Execute(u"INSERT INTO FTable VALUES(\"K2\",\"1#K2\",\"b\",\"b.txt\",\"C:\\b.txt\",\"t2\",'x')");
    memory.Execute(u"INSERT INTO FTable VALUES(\"K1\",\"2#K1\",\"c\",\"c.txt\",\"C:\\c.txt\",\"t1\",NULL)");
    memory.Execute(u"INSERT INTO FTable VALUES(\"K2\",\"2#K2\",\"d\",\"d.txt\",\"C:\\d.txt\",\"t2\",'')");
    memory.Execute(u"INSERT INTO FTable VALUES(\"K1\",\"3#K1\",\"e\",\"e.txt\",\"C:\\e.txt\",\"t3\",'y')");
  }
  // Names of the items that a condition selects.
  std::u16string Where(std::u16string_view condition) {
    return memory.Column(u"SELECT DefineName FROM FTable WHERE " + std::u16string(condition));
  }

  MemoryDatabase memory;
};

TEST_F(Statements, InsertStoresValuesAsGiven) {
  EXPECT_EQ(
      memory.Execute(
          u"INSERT INTO FTable VALUES(\"K12\",\"1#K12\",\" it's \",\"a\tb\",\"\u0436\u6F22\xD83D\xDE00\","
          u"\"15/11/2026 13:20:05\",'')"),
      1u);

  const std::vector<std::vector<std::u16string>> expected = {
      {u"K12", u"1#K12", u" it's ", u"a\tb", u"\u0436\u6F22\xD83D\xDE00", u"15/11/2026 13:20:05", u""}};
  EXPECT_EQ(memory.Rows(u"SELECT * FROM FTable"), expected);
}

TEST_F(Statements, InsertKeepsTheEmptyTextAndNullApart) {
  AddItems();
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable WHERE Comment IS NULL"), u"c");
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable WHERE Comment=''"), u"a d");
}

TEST_F(Statements, InsertTakesAColumnListInAnyOrderAndLeavesTheRestNull) {
  memory.Execute(u"INSERT INTO FTable (comment, [FileIndex]) VALUES(5, \"1#K\")");

  const std::vector<std::vector<std::u16string>> expected = {
      {u"NULL", u"1#K", u"NULL", u"NULL", u"NULL", u"NULL", u"5"}};
  EXPECT_EQ(memory.Rows(u"SELECT * FROM FTable"), expected);
}

TEST_F(Statements, InsertNeedsAsManyValuesAsColumns) {
  const std::u16string_view expected = u"Number of query values and destination fields are not the same.";
  ExpectFailure(code::kSyntax, expected, u"INSERT INTO FTable VALUES('a','b')");
  ExpectFailure(code::kSyntax, expected, u"INSERT INTO FTable VALUES(1,2,3,4,5,6,7,8)");
  ExpectFailure(code::kSyntax, expected, u"INSERT INTO FTable (FileIndex) VALUES(1,2)");
  ExpectFailure(code::kSyntax, expected,
                u"INSERT INTO FTable (FileIndex) SELECT parent, key FROM TreeviewTable");
}

TEST_F(Statements, InsertNamesAnUnknownColumnOfItsList) {
  ExpectFailure(
      code::kSyntax,
      u"The INSERT INTO statement contains the following unknown field name: 'Nmae'. Make sure you have "
      u"typed the name correctly, and try the operation again.",
      u"INSERT INTO FTable (Nmae) VALUES(1)");
}

TEST_F(Statements, InsertAndUpdateRefuseAColumnNamedTwice) {
  ExpectFailure(code::kSyntax, u"Duplicate output destination 'Comment'.",
                u"INSERT INTO FTable (Comment,comment) VALUES(1,2)");
  ExpectFailure(code::kSyntax, u"Duplicate output destination 'Comment'.",
                u"UPDATE FTable SET Comment=1, COMMENT=2");
}

TEST_F(Statements, InsertTakesABareNameForAParameterWithoutValue) {
  ExpectFailure(code::kMissingParameter, kParameter, u"INSERT INTO FTable VALUES(K,'','','','','','')");
  ExpectFailure(code::kMissingParameter, kParameter, u"INSERT INTO FTable (Comment) VALUES([x y])");
}

TEST_F(Statements, RefuseATextLongerThanItsColumnAndCutNothing) {
  AddItems();
  const std::u16string longText(256, u'x');
  ExpectFailure(code::kTooLong, kTooSmall,
                u"INSERT INTO FTable VALUES('','','" + longText + u"','','','','')");
  ExpectFailure(code::kTooLong, kTooSmall, u"UPDATE FTable SET DefineName='" + longText + u"'");

  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable"), u"a b c d e");
}

TEST_F(Statements, RefuseADateOrASingleOutsideOfItsRange) {
  constexpr std::u16string_view kRange = u"The number or date lies outside the range of its column.";
  ExpectFailure(code::kTypeMismatch, kRange, u"INSERT INTO Types (s) VALUES(1e39)");
  ExpectFailure(code::kTypeMismatch, kRange, u"INSERT INTO Types (t) VALUES(2958466)");
  memory.Execute(u"INSERT INTO Types (d, s, t) VALUES(-1e300, 1, #12/31/9999 23:59:59#)");
  ExpectFailure(code::kTypeMismatch, kRange, u"UPDATE Types SET s=d");
  ExpectFailure(code::kTypeMismatch, kRange, u"UPDATE Types SET t=d");
  ExpectFailure(code::kTypeMismatch, kRange, u"INSERT INTO Types (s) SELECT d FROM Types");
  EXPECT_EQ(memory.Column(u"SELECT t FROM Types"), u"9999-12-31 23:59:59");
}

TEST_F(Statements, FillATextColumnToItsLastCharacter) {
  const std::u16string full(255, u'x');
  memory.Execute(u"INSERT INTO FTable (DefineName) VALUES('" + full + u"')");
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable"), full);
}

TEST_F(Statements, StoreTheLongestCommentThereIs) {
  AddItems();
  const std::u16string comment(65535, u'\u00E9');
  EXPECT_EQ(memory.Execute(u"UPDATE FTable SET Comment=\"" + comment + u"\" WHERE FileIndex=\"2#K1\""), 1u);
  EXPECT_EQ(memory.Column(u"SELECT Comment FROM FTable WHERE FileIndex='2#K1'"), comment);
}

TEST_F(Statements, SelectGivesColumnsAsListedAndRowsInPhysicalOrder) {
  AddItems();
  const std::vector<std::vector<std::u16string>> expected = {
      {u"1#K1", u"K1"}, {u"2#K1", u"K1"}, {u"3#K1", u"K1"}};
  EXPECT_EQ(memory.Rows(u"SELECT FileIndex, FTable.TREEVIEWNODE FROM FTable WHERE TreeviewNode=\"K1\""),
            expected);
}

TEST_F(Statements, NamesAreFoundInAnyLetterCase) {
  AddItems();
  EXPECT_EQ(memory.Column(u"SELECT definename FROM FTablE WHERE TreeViewNode=\"K2\""), u"b d");
  EXPECT_EQ(memory.Execute(u"DELETE From FTable WHERE TreeViewNode=\"K2\""), 2u);
}

TEST_F(Statements, ConditionsCompareTextsWithoutRegardToCaseAndTrailingBlanks) {
  AddItems();
  EXPECT_EQ(Where(u"DefineName=\"A\""), u"a");
  EXPECT_EQ(Where(u"TreeviewNode='k1  '"), u"a c e");
  EXPECT_EQ(Where(u"DefineName<>'A'"), u"b c d e");
  EXPECT_EQ(Where(u"DefineName>'B'"), u"c d e");
  EXPECT_EQ(Where(u"DefineName>='B'"), u"b c d e");
  EXPECT_EQ(Where(u"DefineName<'B'"), u"a");
  EXPECT_EQ(Where(u"DefineName<='B'"), u"a b");
}

TEST_F(Statements, ConditionsCombineWithAndOrNotAndParentheses) {
  AddItems();
  EXPECT_EQ(Where(u"TreeviewNode='K1' AND InsertTime='t1'"), u"a c");
  EXPECT_EQ(Where(u"InsertTime='t1' AND TreeviewNode='K2'"), u"");
  EXPECT_EQ(Where(u"DefineName='a' OR DefineName='b' AND InsertTime='t9'"), u"a");
  EXPECT_EQ(Where(u"(DefineName='a' OR DefineName='b') AND InsertTime='t2'"), u"b");
  EXPECT_EQ(Where(u"NOT TreeviewNode='K1'"), u"b d");
  EXPECT_EQ(Where(u"NOT (TreeviewNode='K1' OR DefineName='b')"), u"d");
  EXPECT_EQ(Where(u"DefineName=Filename"), u"");
  EXPECT_EQ(Where(u"'a'=DefineName"), u"a");
}

TEST_F(Statements, ConditionsThatMeetNullSelectNothing) {
  AddItems();
  EXPECT_EQ(Where(u"Comment=NULL"), u"");
  EXPECT_EQ(Where(u"Comment<>NULL"), u"");
  EXPECT_EQ(Where(u"NOT Comment='x'"), u"a d e");
  EXPECT_EQ(Where(u"Comment='x' OR DefineName='c'"), u"b c");
  EXPECT_EQ(Where(u"Comment IS NULL"), u"c");
  EXPECT_EQ(Where(u"Comment IS NOT NULL"), u"a b d e");
  EXPECT_EQ(Where(u"NULL"), u"");
  EXPECT_EQ(Where(u"TRUE"), u"a b c d e");
  EXPECT_EQ(Where(u"0"), u"");
}

TEST_F(Statements, ConditionsRefuseToCompareTextsWithNumbers) {
  for (const char16_t* condition : {u"key=1", u"1=key", u"i='12'", u"i='x'", u"'1'=1", u"key", u"NOT key",
                                    u"-key=1", u"key='a' AND text"}) {
    const std::u16string where = u" WHERE " + std::u16string(condition);
    ExpectSelectFailure(code::kTypeMismatch, kMismatch, u"SELECT * FROM TreeviewTable" + where);
    ExpectFailure(code::kTypeMismatch, kMismatch, u"DELETE FROM TreeviewTable" + where);
    ExpectFailure(code::kTypeMismatch, kMismatch, u"UPDATE TreeviewTable SET text=''" + where);
  }
  ExpectFailure(code::kTypeMismatch, kMismatch, u"UPDATE TreeviewTable SET text=(key=1)");
}

TEST_F(Statements, UnknownNamesAreParametersWithoutValue) {
  for (const char16_t* text : {u"SELECT Nmae FROM FTable", u"SELECT * FROM FTable WHERE Nmae=1",
                               u"SELECT * FROM FTable ORDER BY Nmae", u"SELECT FBackup.FileIndex FROM FTable",
                               u"SELECT FBackup.* FROM FTable"}) {
    ExpectSelectFailure(code::kMissingParameter, kParameter, text);
  }
  for (const char16_t* text :
       {u"DELETE FROM FTable WHERE Nmae=1", u"DELETE FBackup.* FROM FTable", u"UPDATE FTable SET Nmae=1",
        u"UPDATE FTable SET Comment=Nmae", u"UPDATE FTable SET Comment='' WHERE FBackup.FileIndex='1'",
        u"UPDATE FTable SET FBackup.Comment=''"}) {
    ExpectFailure(code::kMissingParameter, kParameter, text);
  }
}

TEST_F(Statements, UnknownTablesAreNamed) {
  const std::u16string_view expected =
      u"The Microsoft Jet database engine cannot find the input table or query 'FTabel'. Make sure it exists "
      u"and that "
      u"its name is spelled correctly.";
  ExpectSelectFailure(code::kNoSuchTable, expected, u"SELECT * FROM FTabel");
  ExpectFailure(code::kNoSuchTable, expected, u"INSERT INTO FTabel VALUES(1)");
  ExpectFailure(code::kNoSuchTable, expected, u"INSERT INTO FTable SELECT * FROM FTabel");
  ExpectFailure(code::kNoSuchTable, expected, u"UPDATE FTabel SET a=1");
  ExpectFailure(code::kNoSuchTable, expected, u"DELETE * FROM FTabel");
}

TEST_F(Statements, TheEnginesOwnTablesAreReadOnly) {
  const std::u16string_view expected = u"Cannot update 'MSysObjects': the engine's own tables are read-only.";
  ExpectFailure(code::kGeneric, expected, u"DELETE FROM msysobjects");
  ExpectFailure(code::kGeneric, expected, u"UPDATE MSysObjects SET Name='x'");
  EXPECT_FALSE(memory.Rows(u"SELECT Name FROM MSysObjects").empty());
}

TEST_F(Statements, ASelectIsNotExecutedAndAChangeNotSelected) {
  ExpectFailure(code::kGeneric, u"Cannot execute a select query.", u"SELECT * FROM FTable");
  ExpectSelectFailure(code::kSyntax, u"Invalid SQL statement; expected 'SELECT'.", u"DELETE FROM FTable");
}

TEST_F(Statements, OrderBySortsTextsByTheirKeysWithNullsFirst) {
  AddItems();
  memory.Execute(u"UPDATE FTable SET Comment='B' WHERE DefineName='a'");
  memory.Execute(u"UPDATE FTable SET Comment='\u00E0' WHERE DefineName='b'");
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable ORDER BY Comment"), u"c d b a e");
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable ORDER BY Comment DESC"), u"e a b d c");
}

TEST_F(Statements, OrderByTakesSeveralColumnsAndKeepsEqualRowsInOrder) {
  AddItems();
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable ORDER BY TreeviewNode DESC, InsertTime ASC"),
            u"b d a c e");
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable ORDER BY InsertTime DESC, DefineName DESC"),
            u"e d b c a");
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable WHERE TreeviewNode='K1' ORDER BY InsertTime DESC"),
            u"e a c");
}

TEST_F(Statements, OrderBySortsNumbersByValue) {
  for (const char16_t* number : {u"10", u"-3", u"9", u"NULL", u"0"}) {
    memory.Execute(u"INSERT INTO Types (l, d) VALUES(" + std::u16string(number) + u"," + number + u")");
  }
  EXPECT_EQ(memory.Column(u"SELECT l FROM Types ORDER BY l"), u"NULL -3 0 9 10");
  EXPECT_EQ(memory.Column(u"SELECT l FROM Types ORDER BY l DESC"), u"10 9 0 -3 NULL");
  EXPECT_EQ(memory.Column(u"SELECT l FROM Types ORDER BY d DESC, l"), u"10 9 0 -3 NULL");
}

TEST_F(Statements, UpdateChangesTheMatchingRowsAndCountsThem) {
  AddItems();
  EXPECT_EQ(memory.Execute(u"UPDATE FTable SET TreeviewNode=\"K3\" WHERE FileIndex=\"2#K1\""), 1u);
  EXPECT_EQ(
      memory.Execute(u"UPDATE FTable SET Filename=\"f\",LocalFile=\"l\",InsertTime=\"n\",Comment=\"c\"WHERE "
                     u"FileIndex=\"1#K2\""),
      1u);
  EXPECT_EQ(memory.Execute(u"UPDATE FTable SET InsertTime=DefineName"), 5u);
  EXPECT_EQ(memory.Execute(u"UPDATE FTable SET Comment='' WHERE FileIndex='none'"), 0u);

  EXPECT_EQ(memory.Column(u"SELECT TreeviewNode FROM FTable"), u"K1 K2 K3 K2 K1");
  EXPECT_EQ(memory.Column(u"SELECT InsertTime FROM FTable"), u"a b c d e");
  EXPECT_EQ(memory.Column(u"SELECT Comment FROM FTable WHERE LocalFile='L'"), u"c");
}

TEST_F(Statements, UpdateReadsTheRowAsItWasBeforeIt) {
  AddItems();
  memory.Execute(u"UPDATE FTable SET DefineName=InsertTime, InsertTime=DefineName WHERE FileIndex='1#K1'");
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable WHERE InsertTime='a'"), u"t1");
}

TEST_F(Statements, UpdateConvertsNumbersForTextsAndTextsForNumbers) {
  memory.Execute(u"INSERT INTO Types (l, x) VALUES('12', 3.5)");
  EXPECT_EQ(memory.Execute(u"UPDATE Types SET x=l, d='1.5', t='2026-11-15', b=1"), 1u);
  EXPECT_EQ(memory.Column(u"SELECT x FROM Types WHERE l=12 AND d=1.5 AND t=#11/15/2026# AND b=TRUE"), u"12");
  ExpectFailure(code::kTypeMismatch, kMismatch, u"UPDATE Types SET l=''");
  ExpectFailure(code::kTypeMismatch, kMismatch, u"INSERT INTO Types (d) VALUES('x')");
  ExpectFailure(code::kTypeMismatch, kMismatch, u"INSERT INTO Types (t) VALUES('')");
}

TEST_F(Statements, EveryTypeComparesByValue) {
  memory.Execute(u"INSERT INTO Types VALUES(TRUE,1,-2,3,4.5,0.5,6.25,#2026-11-15 06:00#,'x','m')");
  for (const char16_t* condition :
       {u"b=TRUE", u"b=-1", u"y=1", u"n=-2", u"n<0", u"l>=3", u"c=4.5", u"c>4", u"s=0.5", u"d=6.25",
        u"t=#11/15/2026 6:00:00 AM#", u"t<#2027-01-01#", u"-l=-3", u"l=3.0"}) {
    EXPECT_EQ(memory.Column(u"SELECT x FROM Types WHERE " + std::u16string(condition)), u"x")
        << ToUtf8(condition);
  }
}

TEST_F(Statements, DeleteRemovesMatchingRowsOrAll) {
  AddItems();
  EXPECT_EQ(memory.Execute(u"DELETE FROM FTable WHERE FileIndex=\"1#K1\""), 1u);
  EXPECT_EQ(memory.Execute(u"DELETE FROM FTable WHERE FileIndex=\"1#K1\""), 0u);
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable"), u"b c d e");
  EXPECT_EQ(memory.Execute(u"DELETE * FROM FTable"), 4u);
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable"), u"");
  EXPECT_EQ(memory.Execute(u"DELETE FROM FTable"), 0u);
}

TEST_F(Statements, InsertFromSelectCopiesByName) {
  AddItems();
  EXPECT_EQ(memory.Execute(u"INSERT INTO FBackup SELECT * FROM FTablE"), 5u);
  EXPECT_EQ(memory.Rows(u"SELECT * FROM FBackup"), memory.Rows(u"SELECT * FROM FTable"));

  memory.Execute(u"DELETE FROM FBackup");
  EXPECT_EQ(memory.Execute(u"INSERT INTO FBackup SELECT Comment, FileIndex FROM FTable WHERE DefineName='b'"),
            1u);
  EXPECT_EQ(memory.Column(u"SELECT FileIndex FROM FBackup WHERE Comment='x' AND TreeviewNode IS NULL"),
            u"1#K2");
}

TEST_F(Statements, InsertFromSelectWithAListCopiesByPosition) {
  AddItems();
  memory.Execute(
      u"INSERT INTO TreeviewTable (text, key) SELECT DefineName, FileIndex FROM FTable ORDER BY DefineName "
      u"DESC");
  EXPECT_EQ(memory.Column(u"SELECT text FROM TreeviewTable ORDER BY i"), u"e d c b a");
  EXPECT_EQ(memory.Column(u"SELECT key FROM TreeviewTable WHERE i=1"), u"3#K1");
}

TEST_F(Statements, InsertFromSelectOfTheSameTableDoublesIt) {
  AddItems();
  EXPECT_EQ(memory.Execute(u"INSERT INTO FTable SELECT * FROM FTable"), 5u);
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable"), u"a b c d e a b c d e");
}

TEST_F(Statements, InsertFromSelectNamesAColumnThatTheTargetLacks) {
  AddItems();
  ExpectFailure(
      code::kSyntax,
      u"The INSERT INTO statement contains the following unknown field name: 'TreeviewNode'. Make sure you "
      u"have typed the name correctly, and try the operation again.",
      u"INSERT INTO TreeviewTable SELECT * FROM FTable");
}

TEST_F(Statements, InsertDrawsAutonumbersAndTakesGivenOnes) {
  memory.Execute(u"INSERT INTO TreeviewTable (key) VALUES('a')");
  memory.Execute(u"INSERT INTO TreeviewTable VALUES(10,'','b','')");
  memory.Execute(u"INSERT INTO TreeviewTable VALUES(NULL,'','c','')");
  EXPECT_EQ(memory.Column(u"SELECT i FROM TreeviewTable"), u"1 10 11");
  memory.Execute(u"DELETE FROM TreeviewTable");
  memory.Execute(u"INSERT INTO TreeviewTable (key) VALUES('d')");
  EXPECT_EQ(memory.Column(u"SELECT i FROM TreeviewTable"), u"12");
}

TEST_F(Statements, RefuseADuplicateOfAPrimaryKey) {
  memory.Execute(u"INSERT INTO TreeviewTable (key) VALUES('a')");
  try {
    memory.Execute(u"INSERT INTO TreeviewTable VALUES(1,'','b','')");
    FAIL() << "no error";
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), code::kGeneric);
    EXPECT_TRUE(
        error.Description().starts_with(u"The changes you requested to the table were not successful because "
                                        u"they would create duplicate values in the index, primary key, or "
                                        u"relationship."))
        << error.what();
  }
  EXPECT_EQ(memory.Column(u"SELECT key FROM TreeviewTable"), u"a");
}

TEST_F(Statements, AnInsertFromSelectThatFailsInTheMiddleLeavesNothing) {
  AddItems();
  for (int i = 0; i < 7; ++i) memory.Execute(u"INSERT INTO FTable SELECT * FROM FTable");
  const std::u16string longComment(300, u'z');
  memory.Execute(u"UPDATE FTable SET Comment='" + longComment + u"' WHERE DefineName='e'");
  memory.Execute(u"INSERT INTO TreeviewTable (key) VALUES('before')");

  ExpectFailure(code::kTooLong, kTooSmall,
                u"INSERT INTO TreeviewTable (key, text) SELECT FileIndex, Comment FROM FTable");

  EXPECT_EQ(memory.Column(u"SELECT key FROM TreeviewTable"), u"before");
  memory.Execute(u"INSERT INTO TreeviewTable (key) VALUES('after')");
  EXPECT_EQ(memory.Column(u"SELECT key FROM TreeviewTable"), u"before after");
}

TEST_F(Statements, AnUpdateThatFailsInTheMiddleLeavesEveryRowAsItWas) {
  AddItems();
  for (int i = 0; i < 6; ++i) memory.Execute(u"INSERT INTO FTable SELECT * FROM FTable");
  memory.Execute(u"UPDATE FTable SET Comment='" + std::u16string(300, u'z') + u"' WHERE DefineName='e'");
  const auto before = memory.Rows(u"SELECT * FROM FTable");

  ExpectFailure(code::kTooLong, kTooSmall, u"UPDATE FTable SET DefineName=Comment");

  EXPECT_EQ(memory.Rows(u"SELECT * FROM FTable"), before);
}

TEST_F(Statements, AnUpdateOfAPrimaryKeyThatMeetsADuplicateLeavesEveryRowAsItWas) {
  for (const char16_t* key : {u"a", u"b", u"c"}) {
    memory.Execute(u"INSERT INTO TreeviewTable (key) VALUES('" + std::u16string(key) + u"')");
  }
  EXPECT_THROW(memory.Execute(u"UPDATE TreeviewTable SET i=7"), Error);
  EXPECT_EQ(memory.Column(u"SELECT i FROM TreeviewTable"), u"1 2 3");
  EXPECT_EQ(memory.Execute(u"UPDATE TreeviewTable SET i=7 WHERE key='b'"), 1u);
  EXPECT_EQ(memory.Column(u"SELECT key FROM TreeviewTable ORDER BY i"), u"a c b");
}

TEST_F(Statements, AnErrorLeavesTheExecutorUsable) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_THROW(memory.Execute(u"INSERT INTO FTable VALUES(\"a\"b\")"), Error);
    EXPECT_THROW(memory.Execute(u"DELETE FROM FTable WHERE x=1"), Error);
    memory.Execute(u"INSERT INTO FTable (DefineName) VALUES('ok')");
  }
  EXPECT_EQ(memory.Column(u"SELECT DefineName FROM FTable"), u"ok ok ok");
}

}  // namespace
}  // namespace kestrelon::jet::sql
