#include "fuzz/Seeds.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "fuzz/RowsInput.h"
#include "jet/base/Bytes.h"
#include "jet/database/DatabaseInternal.h"
#include "jet/page/DataPage.h"
#include "jet/page/Pager.h"
#include "jet/schema/TableDef.h"
#include "jet/sql/Executor.h"
#include "store/Schema.h"

namespace kestrelon::fuzz {
namespace {

using namespace jet;

constexpr double kCreated = 46023;

std::u16string Number(int value) { return FromUtf8(std::to_string(value)); }

std::u16string Repeat(std::u16string_view unit, std::size_t length) {
  std::u16string text;
  while (text.size() < length) text += unit;
  text.resize(length);
  return text;
}

std::u16string Category(int number, int parent) {
  return u"INSERT INTO TreeviewTable (parent,[key],[text]) VALUES('" +
         (parent == 0 ? u"0_" : u"K" + Number(parent) + u"_") + u"','K" + Number(number) + u"_','C" +
         Number(number) + u"')";
}

std::u16string Item(int number, int category, std::u16string_view file, std::u16string_view comment) {
  const std::u16string key = u"K" + Number(category) + u"_";
  return u"INSERT INTO FTable VALUES('" + key + u"','" + Number(number) + u"#" + key + u"','Alias " +
         Number(number) + u"','a" + Number(number) + u".txt','" + std::u16string(file) +
         u"','11/15/2026 1:20:05 PM','" + std::u16string(comment) + u"')";
}

// A small collection, with a long value of each kind, a moved row and a deleted one.
std::vector<std::u16string> Collection() {
  std::vector<std::u16string> statements = {Category(1, 0), Category(2, 1), Category(3, 0)};
  for (int i = 1; i <= 8; ++i) statements.push_back(Item(i, 1 + i % 3, u"C:\\a.txt", u""));
  statements.push_back(Item(9, 1, Repeat(u"p\u00E9", 300), Repeat(u"row ", 900)));
  statements.push_back(Item(10, 2, u"\u6F22\u5B57", Repeat(u"chain", 4200)));
  statements.push_back(u"UPDATE FTable SET DefineName='" + Repeat(u"\u0416", 250) + u"', Filename='" +
                       Repeat(u"\u6F22", 255) + u"' WHERE TreeviewNode='K2_'");
  statements.push_back(u"DELETE FROM FTable WHERE FileIndex='3#K1_'");
  statements.push_back(u"DELETE FROM TreeviewTable WHERE [key]='K2_'");
  return statements;
}

std::vector<NewTable> AllTypes() {
  return {{u"T",
           {{u"i", ColumnType::kLong, 0, true},
            {u"b", ColumnType::kBoolean},
            {u"y", ColumnType::kByte},
            {u"n", ColumnType::kInteger},
            {u"c", ColumnType::kCurrency},
            {u"s", ColumnType::kSingle},
            {u"f", ColumnType::kDouble},
            {u"d", ColumnType::kDate},
            {u"x", ColumnType::kText, 20},
            {u"m", ColumnType::kMemo},
            {u"q", ColumnType::kBinary},
            {u"o", ColumnType::kOle},
            {u"g", ColumnType::kGuid},
            {u"p", ColumnType::kNumeric}},
           u"i"}};
}

std::vector<std::u16string> RowsOfAllTypes() {
  return {
      u"INSERT INTO T (b,y,n,c,s,f,d,x,m) VALUES(TRUE,255,-32768,12.5,1.5,-2.25,#11/15/2026#,'text','memo')",
      u"INSERT INTO T (x,m) VALUES('\u6F22','" + Repeat(u"one row ", 200) + u"')",
      u"INSERT INTO T (m) VALUES('" + Repeat(u"chain ", 4500) + u"')", u"INSERT INTO T (n) VALUES(NULL)"};
}

// Two levels of an index: numbers that have little in common fill its pages sooner.
std::vector<std::u16string> ManyCategories() {
  std::vector<std::u16string> statements;
  for (int i = 1; i <= 460; ++i) {
    statements.push_back(u"INSERT INTO TreeviewTable (i,[key]) VALUES(" + Number(i * 4'000'037) + u",'K')");
  }
  return statements;
}

// The bytes of a page of a file.
Input PageOf(const InputBytes& file, std::size_t page) {
  return Input(file).subspan(page * kPageSize, kPageSize);
}

bool IsData(const InputBytes& file, std::size_t page, std::uint32_t owner) {
  const std::uint8_t* bytes = file.data() + page * kPageSize;
  return bytes[0] == page_type::kData && Get32(bytes + 4) == owner;
}

// An input of the target "rows" out of a table of a file.
InputBytes RowsOf(const InputBytes& file, std::u16string_view name) {
  DatabaseImpl database(OpenMemoryFile(std::make_shared<InputBytes>(file)), u"seed");
  const TableInternal& table = static_cast<TableImpl&>(database.OpenTable(name)).Internal();
  InputBytes input(kPageSize);
  rows_input::PutDefinition(table.def, input.data());
  // The references lead to pages by their numbers, so the pages that hold the pieces keep their order, and
  // the numbers are put right.
  std::vector<std::uint32_t> pages = {table.rows.Pages().front()};
  for (std::size_t page = 2; page < file.size() / kPageSize; ++page) {
    if (!IsData(file, page, kLongValueOwner)) continue;
    pages.push_back(static_cast<std::uint32_t>(page));
  }
  for (const std::uint32_t page : pages) {
    const Input bytes = PageOf(file, page);
    input.insert(input.end(), bytes.begin(), bytes.end());
  }
  for (std::size_t at = kPageSize; at + 4 <= input.size(); ++at) {
    const std::uint32_t pointer = Get32(input.data() + at);
    const auto found = std::find(pages.begin(), pages.end(), pointer >> 8);
    if (found == pages.end() || (pointer & 0xFF) > 8) continue;
    Put32(input.data() + at, static_cast<std::uint32_t>(found - pages.begin() + 3) << 8 | (pointer & 0xFF));
    at += 3;
  }
  return input;
}

// An input of the target "index" out of the index of the tree's table.
InputBytes IndexOf(const InputBytes& file) {
  DatabaseImpl database(OpenMemoryFile(std::make_shared<InputBytes>(file)), u"seed");
  const TableInternal& table = static_cast<TableImpl&>(database.OpenTable(u"TreeviewTable")).Internal();
  const RealIndex& index = table.def.indexes.front();
  InputBytes input(kPageSize);
  input[1] = index.flags;
  input[8] = static_cast<std::uint8_t>(ColumnType::kLong);
  input[9] = 1;
  input[10] = 9;
  std::vector<std::uint32_t> pages = {index.root};
  for (const std::uint32_t page : UsageMap(database.Pages(), index.map).Pages()) {
    if (page != index.root) pages.push_back(page);
  }
  const auto numberOf = [&pages](std::uint32_t page) {
    const auto found = std::find(pages.begin(), pages.end(), page);
    return found == pages.end() ? 0 : static_cast<std::uint32_t>(found - pages.begin() + 3);
  };
  for (const std::uint32_t page : pages) {
    InputBytes bytes(PageOf(file, page).begin(), PageOf(file, page).end());
    Put32(bytes.data() + 4, 64);
    for (const std::size_t link : {12u, 16u, 20u})
      Put32(bytes.data() + link, numberOf(Get32(bytes.data() + link)));
    for (std::size_t at = 480; bytes[0] == page_type::kIndexNode && at + 4 <= kPageSize; ++at) {
      if (const std::uint32_t child = numberOf(GetBig32(bytes.data() + at)); child != 0)
        PutBig32(bytes.data() + at, child);
    }
    input.insert(input.end(), bytes.begin(), bytes.end());
  }
  return input;
}

InputBytes Keys(std::initializer_list<std::uint8_t> description, std::string_view values) {
  InputBytes input(3 * kPageSize);
  std::copy(description.begin(), description.end(), input.begin());
  std::copy(values.begin(), values.end(), input.begin() + 32);
  FormatEmptyIndex(input.data() + kPageSize, 64);
  FormatEmptyIndex(input.data() + 2 * kPageSize, 64);
  return input;
}

bool ByName(const Seed& a, const Seed& b) { return a.name < b.name; }

InputBytes Text(std::string_view text) { return {text.begin(), text.end()}; }

}  // namespace

InputBytes MakeFile(const std::vector<NewTable>& tables, const std::vector<std::u16string>& statements) {
  const auto bytes = std::make_shared<InputBytes>();
  CreateDatabase(*OpenMemoryFile(bytes), tables, kCreated);
  if (statements.empty()) return *bytes;
  const std::unique_ptr<Database> database = Database::Open(OpenMemoryFile(bytes), u"seed");
  sql::Executor executor(*database);
  for (const std::u16string& statement : statements) executor.Execute(statement);
  database->Flush();
  return *bytes;
}

std::vector<Seed> SlotSeeds() {
  return {{"empty", MakeFile(store::Schema(), {})},
          {"collection", MakeFile(store::Schema(), Collection())},
          {"categories", MakeFile(store::Schema(), ManyCategories())}};
}

std::vector<Seed> PageSeeds() {
  return {{"no-table", MakeFile({}, {})},
          {"types", MakeFile(AllTypes(), RowsOfAllTypes())},
          {"collection", MakeFile(store::Schema(), Collection())}};
}

std::vector<Seed> RowSeeds() {
  return {{"types", RowsOf(MakeFile(AllTypes(), RowsOfAllTypes()), u"T")},
          {"collection", RowsOf(MakeFile(store::Schema(), Collection()), u"FTable")},
          {"categories", RowsOf(MakeFile(store::Schema(), Collection()), u"TreeviewTable")},
          {"objects", RowsOf(MakeFile({}, {}), u"MSysObjects")}};
}

std::vector<Seed> IndexSeeds() {
  constexpr std::uint8_t kText = 10, kLong = 4, kDouble = 7, kGuid = 15, kBoolean = 1, kNumeric = 16;
  using namespace std::string_view_literals;
  return {{"two-levels", IndexOf(MakeFile(store::Schema(), ManyCategories()))},
          {"one-level", IndexOf(MakeFile(store::Schema(), Collection()))},
          {"texts", Keys({0, 0x81, 0, 0, 0, 0, 0, 0, kText, 1, 9, 0},
                         "\x06"
                         "a\0b\0-\0\x08"
                         "Z\0\xE9\0'\0 \0\x02\xDF\0"sv)},
          {"pairs", Keys({1, 0x82, 0, 0, 0, 0, 0, 0, kLong, 0, 9, 0, kDouble, 1, 9, 0},
                         "\1\0\0\0\0\0\0\0\0\0\0\0\0\0\xF8\x3F\2\0\0\0\0\0\0\0\0\0\0\0\0\0\xF8\xBF"sv)},
          {"others", Keys({2, 0x88, 0, 0, 0, 0, 0, 0, kGuid, 1, 9, 0, kBoolean, 1, 9, 0, kNumeric, 0, 9, 0},
                          "\x10"
                          "0123456789abcdef\1\0\0\0\0\0\0\0\x11\x80"
                          "0123456789abcdef"sv)}};
}

std::vector<Seed> SqlSeeds() {
  return {{"insert", Text("INSERT INTO FTable VALUES(\"K\",\"2#K\",'a memo')")},
          {"columns",
           Text("INSERT INTO T (i,key,b,y,n,c,s,f,d) VALUES(7,\"it's\",TRUE,1,-2,3.5,4e1,.5,#11/15/2026#)")},
          {"select", Text("SELECT FileIndex FROM FTable WHERE TreeviewNode=\"K\"")},
          {"order", Text("SELECT [i],`key` FROM T WHERE d IS NOT NULL ORDER BY key DESC, i;")},
          {"update", Text("UPDATE FTable SET Comment=\"x\" WHERE FileIndex=\"1#K\"")},
          {"condition",
           Text("UPDATE T SET key='q', d=#11/15/2026 1:20:05 PM# WHERE i>=1 AND NOT (key IS NULL OR i<>-3)")},
          {"copy", Text("INSERT INTO FBackup SELECT * FROM FTablE")},
          {"convert", Text("INSERT INTO T (key,d,f) SELECT FileIndex, NULL, '12' FROM FTable")},
          {"delete", Text("DELETE FROM FTable WHERE FileIndex=\"1#K\"")},
          {"all", Text("DELETE * FROM FTable")}};
}

std::string ToText(Input input) {
  std::string text = "size " + std::to_string(input.size()) + "\n";
  char buffer[24];
  for (std::size_t at = 0; at < input.size();) {
    if (input[at] == 0) {
      ++at;
      continue;
    }
    std::snprintf(buffer, sizeof buffer, "%06zX:", at);
    text += buffer;
    // A line ends before zeros or after 32 bytes.
    for (std::size_t line = 0; line < 32 && at < input.size(); ++line, ++at) {
      if (input[at] == 0 && (at + 1 >= input.size() || input[at + 1] == 0)) break;
      std::snprintf(buffer, sizeof buffer, " %02X", unsigned{input[at]});
      text += buffer;
    }
    text += '\n';
  }
  return text;
}

InputBytes FromText(std::string_view text) {
  const auto number = [](std::string_view digits, int base) {
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    if (error != std::errc() || end != digits.data() + digits.size())
      throw std::invalid_argument("no number: " + std::string(digits));
    return value;
  };
  InputBytes bytes;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line.starts_with("size ")) {
      bytes.resize(number(std::string_view(line).substr(5), 10));
      continue;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos) throw std::invalid_argument("no offset: " + line);
    std::size_t at = number(std::string_view(line).substr(0, colon), 16);
    std::istringstream values(line.substr(colon + 1));
    for (std::string value; values >> value; ++at)
      bytes.at(at) = static_cast<std::uint8_t>(number(value, 16));
  }
  return bytes;
}

std::vector<Seed> ReadSamples(const std::filesystem::path& folder) {
  constexpr std::uintmax_t kLargest = 150'000;
  std::vector<Seed> samples;
  std::error_code absent;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, absent)) {
    if (entry.path().extension() != ".mdb" || entry.file_size() > kLargest) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    samples.push_back({entry.path().stem().string(), InputBytes(std::istreambuf_iterator<char>(file), {})});
  }
  std::sort(samples.begin(), samples.end(), ByName);
  return samples;
}

std::vector<Seed> ReadKept(const std::filesystem::path& folder) {
  std::vector<Seed> kept;
  std::error_code absent;
  for (const auto& entry : std::filesystem::directory_iterator(folder, absent)) {
    if (entry.path().extension() != ".txt") continue;
    std::ifstream file(entry.path());
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    kept.push_back({entry.path().stem().string(), FromText(text)});
  }
  std::sort(kept.begin(), kept.end(), ByName);
  return kept;
}

}  // namespace kestrelon::fuzz
