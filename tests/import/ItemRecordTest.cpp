// How a file becomes an item: fields, statement, numbers.

#include <gtest/gtest.h>

#include <stdexcept>

#include "import/AddFiles.h"

namespace kestrelon::test {
namespace {

TEST(MakeRecord, FillsTheFieldsFromThePath) {
  const imports::ItemRecord record =
      imports::MakeRecord(L"K12", 7, L"C:\\docs\\notes.txt", L"15/11/2026 13:20:05");
  EXPECT_EQ(record.treeviewNode, L"K12");
  EXPECT_EQ(record.fileIndex, L"7#K12");
  EXPECT_EQ(record.defineName, L"notes");
  EXPECT_EQ(record.filename, L"notes.txt");
  EXPECT_EQ(record.localFile, L"C:\\docs\\notes.txt");
  EXPECT_EQ(record.insertTime, L"15/11/2026 13:20:05");
}

TEST(MakeRecord, GivesAFileThatStartsWithItsOnlyDotAnEmptyAlias) {
  const imports::ItemRecord record = imports::MakeRecord(L"K", 1, L"C:\\home\\.profile", L"");
  EXPECT_EQ(record.defineName, L"");
  EXPECT_EQ(record.filename, L".profile");
}

TEST(MakeRecord, CutsTheLastExtensionAlone) {
  EXPECT_EQ(imports::MakeRecord(L"K", 1, L"C:\\archive.tar.gz", L"").defineName, L"archive.tar");
}

TEST(MakeRecord, TakesANameWithoutADotWhole) {
  EXPECT_EQ(imports::MakeRecord(L"K", 1, L"C:\\v1.2\\README", L"").defineName, L"README");
}

TEST(MakeRecord, TakesAPathWithoutABackslashWhole) {
  const imports::ItemRecord record = imports::MakeRecord(L"K", 1, L"loose.txt", L"");
  EXPECT_EQ(record.filename, L"loose.txt");
  EXPECT_EQ(record.localFile, L"loose.txt");
}

TEST(FillRecord, LeavesNothingOfTheRecordBefore) {
  imports::ItemRecord record = imports::MakeRecord(L"K12", 10, L"C:\\long\\name.txt", L"then");
  imports::FillRecord(record, L"K", 2, L"C:\\.b", L"now");
  EXPECT_EQ(imports::InsertStatement(record),
            L"INSERT INTO FTable VALUES(\"K\",\"2#K\",\"\",\".b\",\"C:\\.b\",\"now\",'')");
}

TEST(InsertStatement, ListsSixValuesInDoubleQuotesAndTheEmptyComment) {
  EXPECT_EQ(imports::InsertStatement(
                imports::MakeRecord(L"K12", 1, L"C:\\docs\\notes.txt", L"15/11/2026 13:20:05")),
            L"INSERT INTO FTable VALUES(\"K12\",\"1#K12\",\"notes\",\"notes.txt\",\"C:\\docs\\notes.txt\","
            L"\"15/11/2026 13:20:05\",'')");
}

TEST(InsertStatement, EscapesNothing) {
  EXPECT_EQ(imports::InsertStatement(imports::MakeRecord(L"K", 1, L"C:\\it's so.txt", L"t")),
            L"INSERT INTO FTable VALUES(\"K\",\"1#K\",\"it's so\",\"it's so.txt\","
            L"\"C:\\it's so.txt\",\"t\",'')");
}

TEST(InsertStatement, IsNotMadeOfAFieldWithADoubleQuote) {
  EXPECT_THROW(imports::InsertStatement(imports::MakeRecord(L"K", 1, L"C:\\it's \"so\".txt", L"t")),
               jet::Error);
}

TEST(LeadingNumber, IsTheDecimalNumberAtTheStart) {
  EXPECT_EQ(imports::LeadingNumber(L"7#K12"), 7);
  EXPECT_EQ(imports::LeadingNumber(L"32767#K12"), 32767);
  EXPECT_EQ(imports::LeadingNumber(L"0012#K"), 12);
  EXPECT_EQ(imports::LeadingNumber(L"12"), 12);
}

TEST(LeadingNumber, Is0WhereTheTextDoesNotStartWithADigit) {
  EXPECT_EQ(imports::LeadingNumber(L""), 0);
  EXPECT_EQ(imports::LeadingNumber(L"#K12"), 0);
  EXPECT_EQ(imports::LeadingNumber(L"K7"), 0);
}

TEST(LeadingNumber, OfAnEndlessRowOfDigitsIsPastEveryLimit) {
  EXPECT_GT(imports::LeadingNumber(std::wstring(200, L'9')), imports::kLargest32Bit);
}

TEST(ItemNumbers, CountOnFromTheLargest) {
  imports::ItemNumbers numbers(4, imports::kLargest16Bit);
  EXPECT_EQ(numbers.Next(), 5);
  EXPECT_EQ(numbers.Next(), 6);
}

TEST(ItemNumbers, PassOverThoseThatAreTaken) {
  imports::ItemNumbers numbers(4, imports::kLargest16Bit,
                               [](std::int64_t number) { return number == 5 || number == 6 || number == 8; });
  EXPECT_EQ(numbers.Next(), 7);
  EXPECT_EQ(numbers.Next(), 9);
}

TEST(ItemNumbers, OverflowWhenEveryNumberUpToTheLimitIsTaken) {
  imports::ItemNumbers numbers(32760, imports::kLargest16Bit, [](std::int64_t) { return true; });
  EXPECT_THROW(numbers.Next(), std::overflow_error);
}

TEST(ItemNumbers, OverflowPastTheLimit) {
  imports::ItemNumbers numbers(32766, imports::kLargest16Bit);
  EXPECT_EQ(numbers.Next(), 32767);
  EXPECT_THROW(numbers.Next(), std::overflow_error);
}

TEST(ItemNumbers, OverflowAtOnceWhereTheLargestIsPastTheLimit) {
  imports::ItemNumbers numbers(40000, imports::kLargest16Bit);
  EXPECT_THROW(numbers.Next(), std::overflow_error);
}

}  // namespace
}  // namespace kestrelon::test
