// Statements, separated by NUL, on a small database in memory that has a column of each type. The database
// must stay sound whatever they are.

#include <memory>
#include <string>

#include "fuzz/Seeds.h"
#include "fuzz/Target.h"
#include "jet/database/Database.h"
#include "jet/sql/Executor.h"

namespace kestrelon::fuzz {
namespace {

using namespace jet;

InputBytes MakeOriginal() {
  const std::vector<NewColumn> items = {{u"TreeviewNode", ColumnType::kText, 50},
                                        {u"FileIndex", ColumnType::kText, 50},
                                        {u"Comment", ColumnType::kMemo}};
  const std::vector<NewTable> tables = {{u"FTable", items, u""},
                                        {u"FBackup", items, u""},
                                        {u"T",
                                         {{u"i", ColumnType::kLong, 0, true},
                                          {u"key", ColumnType::kText, 50},
                                          {u"d", ColumnType::kDate},
                                          {u"b", ColumnType::kBoolean},
                                          {u"y", ColumnType::kByte},
                                          {u"n", ColumnType::kInteger},
                                          {u"c", ColumnType::kCurrency},
                                          {u"s", ColumnType::kSingle},
                                          {u"f", ColumnType::kDouble},
                                          {u"x", ColumnType::kBinary}},
                                         u"i"}};
  return MakeFile(tables,
                  {u"INSERT INTO FTable VALUES('K','1#K','c')", u"INSERT INTO T (key,n) VALUES('K',7)"});
}

void ExpectSound(Database& database, const char* when) {
  const std::vector<jet::Finding> findings = database.Check();
  if (!findings.empty()) throw Finding(std::string(when) + ": " + findings.front().text);
}

}  // namespace

void RunSql(Input input) {
  static const InputBytes original = MakeOriginal();
  const auto bytes = std::make_shared<InputBytes>(original);
  const std::unique_ptr<Database> database = Database::Open(OpenMemoryFile(bytes), u"fuzz");
  sql::Executor executor(*database);
  const std::u16string text = FromUtf8({reinterpret_cast<const char*>(input.data()), input.size()});
  std::size_t changed = 0;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find(u'\0', start), text.size());
    const std::u16string_view statement = std::u16string_view(text).substr(start, end - start);
    start = end + 1;
    // Faulty statements are the rule here.
    Try([&] { changed += executor.Execute(statement); });
    Try([&] { executor.Select(statement); });
  }
  ExpectSound(*database, "after the statements");
  if (changed == 0) return;
  database->Flush();
  ExpectSound(*Database::Open(OpenMemoryFile(bytes), u"fuzz"), "opened anew");
}

}  // namespace kestrelon::fuzz
