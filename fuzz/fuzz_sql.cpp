// Statements out of arbitrary bytes, run on a small database in memory. Nothing but jet::Error may come out
// of them, and the database must stay sound.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "jet/Database.h"
#include "jet/Error.h"
#include "jet/sql/Executor.h"

namespace {

using namespace kestrelon::jet;

std::vector<std::uint8_t> MakeTemplate() {
  const std::vector<NewColumn> items = {{u"TreeviewNode", ColumnType::kText, 50},
                                        {u"FileIndex", ColumnType::kText, 50},
                                        {u"Comment", ColumnType::kMemo}};
  const std::vector<NewTable> tables = {
      {u"FTable", items, u""},
      {u"FBackup", items, u""},
      {u"T",
       {{u"i", ColumnType::kLong, 0, true}, {u"key", ColumnType::kText, 50}, {u"d", ColumnType::kDate}},
       u"i"}};
  const auto bytes = std::make_shared<std::vector<std::uint8_t>>();
  const std::unique_ptr<File> file = OpenMemoryFile(bytes);
  CreateDatabase(*file, tables, 46341.0);
  return *bytes;
}

void Run(sql::Executor& executor, std::u16string_view text) {
  try {
    executor.Execute(text);
  } catch (const Error&) {
    // Faulty statements are the rule here.
  }
  try {
    executor.Select(text);
  } catch (const Error&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<std::uint8_t> original = MakeTemplate();
  const std::unique_ptr<Database> database =
      Database::Open(OpenMemoryFile(std::make_shared<std::vector<std::uint8_t>>(original)), u"fuzz");
  sql::Executor executor(*database);
  executor.Execute(u"INSERT INTO FTable VALUES('K','1#K','c')");
  executor.Execute(u"INSERT INTO T (key) VALUES('K')");
  // Statements are separated by NUL.
  const std::u16string text = FromUtf8({reinterpret_cast<const char*>(data), size});
  for (std::size_t start = 0; start <= text.size();) {
    std::size_t end = text.find(u'\0', start);
    if (end == std::u16string::npos) end = text.size();
    Run(executor, std::u16string_view(text).substr(start, end - start));
    start = end + 1;
  }
  const std::vector<std::string> faults = database->Check();
  if (!faults.empty()) {
    std::fprintf(stderr, "%s\n", faults[0].c_str());
    std::abort();
  }
  return 0;
}
