// Looks into a database file with the engine alone. Output is UTF-8 on every system.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jet/base/Error.h"
#include "jet/database/Database.h"
#include "jet/sql/Convert.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace {

namespace jet = kestrelon::jet;

constexpr int kFaults = 1;
constexpr int kBadUsage = 2;

constexpr const char* kUsage =
    "usage: jettool tables FILE         names of the tables\n"
    "       jettool schema FILE         columns of every table\n"
    "       jettool dump [TABLE] FILE   rows as CSV, of one table or of all\n"
    "       jettool check FILE          integrity walk; a line for each finding: damage, an index that "
    "does not\n"
    "                                   fit, waste; exit code 1 unless all of it is waste\n";

void Print(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }
void Print(std::u16string_view text) { Print(jet::ToUtf8(text)); }

const char* TypeName(jet::ColumnType type) {
  switch (type) {
    case jet::ColumnType::kBoolean: return "Boolean";
    case jet::ColumnType::kByte: return "Byte";
    case jet::ColumnType::kInteger: return "Integer";
    case jet::ColumnType::kLong: return "Long";
    case jet::ColumnType::kCurrency: return "Currency";
    case jet::ColumnType::kSingle: return "Single";
    case jet::ColumnType::kDouble: return "Double";
    case jet::ColumnType::kDate: return "Date";
    case jet::ColumnType::kBinary: return "Binary";
    case jet::ColumnType::kText: return "Text";
    case jet::ColumnType::kOle: return "OLE";
    case jet::ColumnType::kMemo: return "Memo";
    case jet::ColumnType::kGuid: return "GUID";
    case jet::ColumnType::kNumeric: return "Numeric";
  }
  return "?";
}

std::u16string Quoted(std::u16string_view text) {
  std::u16string quoted = u"\"";
  for (const char16_t c : text) {
    if (c == u'"') quoted += u'"';
    quoted += c;
  }
  return quoted + u'"';
}

void PrintTables(jet::Database& database) {
  for (const std::u16string& name : database.TableNames()) Print(name + u"\n");
}

void PrintSchema(jet::Database& database) {
  for (const std::u16string& name : database.TableNames()) {
    const jet::Table& table = database.OpenTable(name);
    Print(name + u" (" + jet::FromUtf8(std::to_string(table.RowCount())) + u" rows)\n");
    for (const jet::Column& column : table.Columns()) {
      std::string line = "  " + jet::ToUtf8(column.name) + " " + TypeName(column.type);
      if (column.type == jet::ColumnType::kText) line += "(" + std::to_string(column.length / 2) + ")";
      if (column.type == jet::ColumnType::kBinary) line += "(" + std::to_string(column.length) + ")";
      if (column.autoNumber) line += " AutoNumber";
      Print(line + "\n");
    }
  }
}

// Texts, dates and bytes are quoted, numbers are not; NULL is nothing at all.
void PrintRows(const jet::Table& table) {
  const std::vector<jet::Column>& columns = table.Columns();
  std::u16string line;
  for (std::size_t i = 0; i < columns.size(); ++i) line += (i == 0 ? u"" : u",") + columns[i].name;
  Print(line + u"\n");
  jet::Value value;
  for (jet::Cursor rows = table.Rows(); rows.Next();) {
    line.clear();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (i > 0) line += u',';
      rows.Read(i, value);
      if (jet::IsNull(value)) continue;
      const std::u16string text = jet::sql::ToText(value, columns[i].type);
      const bool plain = value.index() < 5 && columns[i].type != jet::ColumnType::kDate;
      line += plain ? text : Quoted(text);
    }
    Print(line + u"\n");
  }
}

void PrintAllRows(jet::Database& database) {
  for (const std::u16string& name : database.TableNames()) {
    Print(u"# " + name + u"\n");
    PrintRows(database.OpenTable(name));
  }
}

int Check(jet::Database& database) {
  int exitCode = 0;
  for (const jet::Finding& finding : database.Check()) {
    switch (finding.kind) {
      case jet::Finding::Kind::kDamage: Print("damage: "); break;
      case jet::Finding::Kind::kIndex: Print("index: "); break;
      case jet::Finding::Kind::kWaste: Print("waste: "); break;
    }
    Print(finding.text + "\n");
    if (finding.kind != jet::Finding::Kind::kWaste) exitCode = kFaults;
  }
  return exitCode;
}

int Run(const std::vector<std::filesystem::path>& arguments) {
  const std::u16string command = arguments.empty() ? std::u16string() : arguments[0].u16string();
  const bool oneTable = command == u"dump" && arguments.size() == 3;
  const bool known =
      command == u"tables" || command == u"schema" || command == u"dump" || command == u"check";
  if (!known || (arguments.size() != 2 && !oneTable)) {
    std::fputs(kUsage, stderr);
    return kBadUsage;
  }
  const std::filesystem::path& path = arguments.back();
  try {
    const auto database = jet::Database::Open(jet::OpenFile(path, jet::OpenMode::kRead), path.u16string());
    if (command == u"check") return Check(*database);
    if (command == u"tables") PrintTables(*database);
    if (command == u"schema") PrintSchema(*database);
    if (oneTable) PrintRows(database->OpenTable(arguments[1].u16string()));
    if (command == u"dump" && !oneTable) PrintAllRows(*database);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "jettool: %s\n", error.what());
    return kFaults;
  }
}

}  // namespace

#ifdef _WIN32
// The C runtime hands the command line over in UTF-16.
extern "C" int wmain(int count, wchar_t** values) {
  _setmode(_fileno(stdout), _O_BINARY);
  return Run({values + (count > 0 ? 1 : 0), values + count});
}
#else
int main(int count, char** values) { return Run({values + (count > 0 ? 1 : 0), values + count}); }
#endif
