#include "jet/sql/Parser.h"
#include "tests/jet/sql/SqlTestSupport.h"

namespace kestrelon::jet::sql {
namespace {

using sqltest::ExpectError;

Statement Parsed(std::u16string_view text) {
  Statement statement;
  Parse(text, statement);
  return statement;
}

void ExpectSyntaxError(std::u16string_view text, std::u16string_view description) {
  SCOPED_TRACE(ToUtf8(text.substr(0, 200)));
  ExpectError(code::kSyntax, description, [&] { Parsed(text); });
}

std::u16string MissingOperator(const std::u16string& quoted) {
  return u"Syntax error (missing operator) in query expression '" + quoted + u"'.";
}
std::u16string OpenString(const std::u16string& quoted) {
  return u"Syntax error in string in query expression '" + quoted + u"'.";
}

constexpr std::u16string_view kInvalid =
    u"Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'.";
constexpr std::u16string_view kSelectFault =
    u"The SELECT statement includes a reserved word or an argument name that is misspelled or missing, or "
    u"the "
    u"punctuation is incorrect.";
constexpr std::u16string_view kFromFault = u"Syntax error in FROM clause.";
constexpr std::u16string_view kInsertFault = u"Syntax error in INSERT INTO statement.";
constexpr std::u16string_view kUpdateFault = u"Syntax error in UPDATE statement.";

std::u16string TextValue(const Statement& statement, std::size_t index) {
  return std::get<std::u16string>(statement.values.at(index));
}

TEST(Parse, TakesTheInsertOfAnItem) {
  const Statement statement = Parsed(
      u"INSERT INTO FTable VALUES(\"K12\",\"1#K12\",\"notes\",\"notes.txt\",\"C:\\docs\\notes.txt\","
      u"\"15/11/2026 13:20:05\",'')");

  EXPECT_EQ(statement.verb, Statement::Verb::kInsertValues);
  EXPECT_EQ(statement.table, u"FTable");
  ASSERT_EQ(statement.values.size(), 7u);
  EXPECT_EQ(TextValue(statement, 1), u"1#K12");
  EXPECT_EQ(TextValue(statement, 4), u"C:\\docs\\notes.txt");
  EXPECT_EQ(TextValue(statement, 6), u"");
}

TEST(Parse, TakesDoubledQuotesForOneAndLeavesTheOtherQuoteAlone) {
  const Statement statement =
      Parsed(u"INSERT INTO t VALUES(\"a\"\"b\",'a''b',\"it's\",'say \"hi\"',\"\"\"\",'''')");

  EXPECT_EQ(TextValue(statement, 0), u"a\"b");
  EXPECT_EQ(TextValue(statement, 1), u"a'b");
  EXPECT_EQ(TextValue(statement, 2), u"it's");
  EXPECT_EQ(TextValue(statement, 3), u"say \"hi\"");
  EXPECT_EQ(TextValue(statement, 4), u"\"");
  EXPECT_EQ(TextValue(statement, 5), u"'");
}

TEST(Parse, KeepsLineBreaksTabsAndBackslashesInTexts) {
  EXPECT_EQ(TextValue(Parsed(u"INSERT INTO t VALUES(\"a\r\n\tb\\n\")"), 0), u"a\r\n\tb\\n");
}

TEST(Parse, ReadsConstantsOfEveryKind) {
  const Statement statement =
      Parsed(u"INSERT INTO t VALUES(1,-2,2.5,-.5,1e3,3000000000,NULL,true,False,#11/15/2026#)");

  const std::vector<Value> expected = {std::int32_t{1}, std::int32_t{-2}, 2.5,  -0.5,  1000.0,
                                       3000000000.0,    Value(),          true, false, 46341.0};
  EXPECT_EQ(statement.values, expected);
  EXPECT_EQ(statement.dateValues, std::vector<std::size_t>{9});
}

TEST(Parse, IgnoresLetterCaseWhiteSpaceAndATrailingSemicolon) {
  const Statement statement =
      Parsed(u"\t sElEcT\r\n*\nfrom\tFTABLE\nWHERE[FileIndex]=\"x\"order  by `i` desc ; ");

  EXPECT_TRUE(statement.allColumns);
  EXPECT_EQ(statement.table, u"FTABLE");
  ASSERT_EQ(statement.order.size(), 1u);
  EXPECT_EQ(statement.order[0].column, u"i");
  EXPECT_TRUE(statement.order[0].descending);
}

TEST(Parse, NeedsNoBlankBetweenATextAndTheNextWord) {
  const Statement statement =
      Parsed(u"UPDATE FTable SET Filename=\"f\",LocalFile=\"l\",Comment=\"c\"WHERE FileIndex=\"1#K\"");

  EXPECT_EQ(statement.assignments.size(), 3u);
  EXPECT_NE(statement.where, kNoNode);
}

TEST(Parse, TakesDeleteWithAndWithoutAStar) {
  EXPECT_EQ(Parsed(u"DELETE * FROM Fbackup").table, u"Fbackup");
  EXPECT_EQ(Parsed(u"DELETE FROM FBackup").table, u"FBackup");
  EXPECT_EQ(Parsed(u"DELETE FBackup.* FROM FBackup").table, u"FBackup");
  EXPECT_NE(Parsed(u"DELETE From FTable WHERE TreeViewNode=\"K\"").where, kNoNode);
}

TEST(Parse, TakesInsertFromSelect) {
  const Statement statement = Parsed(u"INSERT INTO FBackup SELECT * FROM FTablE");

  EXPECT_EQ(statement.verb, Statement::Verb::kInsertSelect);
  EXPECT_EQ(statement.table, u"FBackup");
  EXPECT_EQ(statement.source->table, u"FTablE");
}

TEST(Parse, ForgetsThePreviousStatement) {
  Statement statement;
  Parse(u"INSERT INTO t VALUES(\"a long text with its own memory\",#1/1/2020#,x)", statement);
  Parse(u"INSERT INTO u VALUES(1)", statement);

  EXPECT_EQ(statement.values, std::vector<Value>{std::int32_t{1}});
  EXPECT_TRUE(statement.dateValues.empty());
  EXPECT_FALSE(statement.hasParameter);
}

TEST(Parse, RefusesUnknownVerbs) {
  for (const char16_t* text : {u"", u"  ", u"DROP TABLE FTable", u"\"SELECT\"", u"SELECTED * FROM t", u"*"}) {
    ExpectSyntaxError(text, kInvalid);
  }
}

TEST(Parse, NamesABrokenInsert) {
  for (const char16_t* text : {u"INSERT",
                               u"INSERT FTable VALUES(1)",
                               u"INSERT INTO",
                               u"INSERT INTO \"t\" VALUES(1)",
                               u"INSERT INTO t",
                               u"INSERT INTO t VALUES",
                               u"INSERT INTO t VALUES 1",
                               u"INSERT INTO t VALUES()",
                               u"INSERT INTO t VALUES(1",
                               u"INSERT INTO t VALUES(1,)",
                               u"INSERT INTO t VALUES(,1)",
                               u"INSERT INTO t VALUES(1+1)",
                               u"INSERT INTO t VALUES(-\"x\")",
                               u"INSERT INTO t (a VALUES(1)",
                               u"INSERT INTO t () VALUES(1)",
                               u"INSERT INTO t (a,) VALUES(1)",
                               u"INSERT INTO t DELETE FROM u",
                               u"INSERT INTO SELECT VALUES(1)",
                               u"INSERT INTO [] VALUES(1)",
                               u"INSERT INTO [t VALUES(1)"}) {
    ExpectSyntaxError(text, kInsertFault);
  }
}

TEST(Parse, NamesABrokenUpdate) {
  for (const char16_t* text :
       {u"UPDATE", u"UPDATE t", u"UPDATE t SET", u"UPDATE t SET a", u"UPDATE t SET a=", u"UPDATE t SET =1",
        u"UPDATE t SET a=,b=1", u"UPDATE t SET a=1,", u"UPDATE t SET a=1)", u"UPDATE t SET a<1",
        u"UPDATE t a=1", u"UPDATE t SET a=1 WHERE a=1 ORDER BY a"}) {
    ExpectSyntaxError(text, kUpdateFault);
  }
}

TEST(Parse, NamesABrokenSelect) {
  for (const char16_t* text :
       {u"SELECT FROM t", u"SELECT a, FROM t", u"SELECT a b FROM t", u"SELECT * a FROM t",
        u"SELECT \"x\" FROM t", u"SELECT a. FROM t", u"SELECT COUNT(*) FROM t"}) {
    ExpectSyntaxError(text, kSelectFault);
  }
  ExpectSyntaxError(u"SELECT", kSelectFault);
  ExpectSyntaxError(u"SELECT *", u"Query input must contain at least one table or query.");
  ExpectSyntaxError(u"SELECT a;", u"Query input must contain at least one table or query.");
  ExpectSyntaxError(u"DELETE", u"Query input must contain at least one table or query.");
}

TEST(Parse, NamesABrokenFromClause) {
  for (const char16_t* text :
       {u"SELECT * FROM", u"SELECT * FROM \"t\"", u"SELECT * FROM t u", u"SELECT * FROM t,u",
        u"SELECT * FROM WHERE a=1", u"DELETE * t", u"DELETE FROM", u"DELETE FROM t u", u"DELETE a FROM t",
        u"DELETE FROM t ORDER BY a"}) {
    ExpectSyntaxError(text, kFromFault);
  }
}

TEST(Parse, NamesABrokenOrderByClause) {
  for (const char16_t* text :
       {u"SELECT * FROM t ORDER", u"SELECT * FROM t ORDER i", u"SELECT * FROM t ORDER BY",
        u"SELECT * FROM t ORDER BY i,", u"SELECT * FROM t ORDER BY i j", u"SELECT * FROM t ORDER BY \"i\"",
        u"SELECT * FROM t ORDER BY i DESC ASC"}) {
    ExpectSyntaxError(text, u"Syntax error in ORDER BY clause.");
  }
}

TEST(Parse, NamesAnEmptyWhereClause) {
  for (const char16_t* text : {u"SELECT * FROM t WHERE", u"SELECT * FROM t WHERE ORDER BY i",
                               u"DELETE FROM t WHERE;", u"UPDATE t SET a=1 WHERE"}) {
    ExpectSyntaxError(text, u"Syntax error in WHERE clause.");
  }
}

TEST(Parse, RefusesAnythingAfterTheStatement) {
  ExpectSyntaxError(u"DELETE FROM t; DELETE FROM u", u"Characters found after end of SQL statement.");
  ExpectSyntaxError(u"SELECT * FROM t;;", u"Characters found after end of SQL statement.");
  ExpectSyntaxError(u"INSERT INTO t VALUES(1) x", u"Missing semicolon (;) at end of SQL statement.");
}

TEST(Parse, BlamesALoneQuoteInAValueOnAMissingOperator) {
  ExpectSyntaxError(u"INSERT INTO t VALUES(\"a\"b\")", MissingOperator(u"\"a\"b\""));
  ExpectSyntaxError(u"INSERT INTO t VALUES(\"K\",\"a\"b\",\"c\",'')", MissingOperator(u"\"a\"b\",\"c\",''"));
  ExpectSyntaxError(u"UPDATE t SET a=\"a\"b\" WHERE c=\"1#K\"", MissingOperator(u"\"a\"b\" WHERE c=\"1#K\""));
  ExpectSyntaxError(u"SELECT * FROM t WHERE c=\"a\"b\"", MissingOperator(u"c=\"a\"b\""));
}

TEST(Parse, LetsAQuoteAtAValuesEndSwallowWhatFollows) {
  // "ab"","x" is the text ab",  followed by the name x.
  ExpectSyntaxError(u"INSERT INTO t VALUES(\"K\",\"ab\"\",\"x\",'')", MissingOperator(u"\"ab\"\",\"x\",''"));
  EXPECT_EQ(Parsed(u"INSERT INTO t VALUES(\"ab\"\",\",1)").values.size(), 2u);
}

TEST(Parse, BlamesAnUnclosedTextOnItsString) {
  ExpectSyntaxError(u"INSERT INTO t VALUES(\"K\",\"\"\")", OpenString(u"\"\"\")"));
  ExpectSyntaxError(u"INSERT INTO t VALUES('abc)", OpenString(u"'abc)"));
  ExpectSyntaxError(u"UPDATE t SET a=\"\"\" WHERE b='1'", OpenString(u"\"\"\" WHERE b='1'"));
  ExpectSyntaxError(u"SELECT * FROM t WHERE a=\"x", OpenString(u"a=\"x"));
  ExpectSyntaxError(u"DELETE FROM t WHERE (a=1 AND b='x)", OpenString(u"(a=1 AND b='x)"));
}

TEST(Parse, BlamesFaultyDatesOnTheirExpression) {
  ExpectSyntaxError(u"SELECT * FROM t WHERE a=#2026", u"Syntax error in date in query expression 'a=#2026'.");
  ExpectSyntaxError(u"SELECT * FROM t WHERE a=#x#", u"Syntax error in date in query expression 'a=#x#'.");
}

TEST(Parse, BlamesAnIncompleteConditionOnAMissingOperator) {
  for (const char16_t* text : {u"a=", u"=1", u"a=1 AND", u"NOT", u"(a=1", u"a=1)", u"a b", u"a=1 b=2",
                               u"a IS 1", u"a LIKE 'x'", u"a==1", u"a=1 +1", u"a!b", u"t.=1"}) {
    ExpectSyntaxError(u"SELECT * FROM t WHERE " + std::u16string(text), MissingOperator(text));
  }
}

TEST(Parse, RefusesNestingBeyondItsLimit) {
  const auto nested = [](std::size_t depth) {
    return u"SELECT * FROM t WHERE " + std::u16string(depth, u'(') + u"a=1" + std::u16string(depth, u')');
  };
  EXPECT_NO_THROW(Parsed(nested(kMaxDepth)));
  ExpectSyntaxError(nested(kMaxDepth + 1), u"Query is too complex.");
  ExpectSyntaxError(nested(30000), u"Query is too complex.");
  ExpectSyntaxError(u"SELECT * FROM t WHERE a=" + std::u16string(30000, u'-') + u"1",
                    u"Query is too complex.");

  std::u16string negations = u"SELECT * FROM t WHERE ";
  for (int i = 0; i < 10000; ++i) negations += u"NOT ";
  ExpectSyntaxError(negations + u"a=1", u"Query is too complex.");
}

TEST(Parse, TakesLongChainsWithoutNesting) {
  std::u16string text = u"SELECT * FROM t WHERE a=1";
  for (int i = 0; i < 6000; ++i) text += u" OR a=1";
  EXPECT_EQ(Parsed(text).nodes.size(), 3u * 6001u + 1u);
}

TEST(Parse, RefusesStatementsBeyondTheirLimit) {
  const std::u16string head = u"UPDATE t SET a=\"";
  const auto statement = [&head](std::size_t size) {
    return head + std::u16string(size - head.size() - 1, u'x') + u'"';
  };
  EXPECT_NO_THROW(Parsed(statement(kMaxStatement)));
  ExpectSyntaxError(statement(kMaxStatement + 1),
                    u"The SQL statement is too long: it has more than 68,000 characters.");
}

}  // namespace
}  // namespace kestrelon::jet::sql
