kst_test(jet_sql_tests
  SOURCES
    sql/ConnectionTest.cpp
    sql/ConvertTest.cpp
    sql/FailingFilesTest.cpp
    sql/LookupsTest.cpp
    sql/ParserTest.cpp
    sql/RandomStatementsTest.cpp
    sql/RecordsetTest.cpp
    sql/StatementTest.cpp
    sql/TextCompareTest.cpp
  DEPENDS kst::jet)
