#include "tests/jet/Support.h"

#include <random>

namespace kestrelon::jet {
namespace {

NewTable ItemTable(std::u16string name) {
  using enum ColumnType;
  return {std::move(name),
          {{u"TreeviewNode", kText, 50},
           {u"FileIndex", kText, 50},
           {u"DefineName", kText, 255},
           {u"Filename", kText, 255},
           {u"LocalFile", kMemo},
           {u"InsertTime", kText, 50},
           {u"Comment", kMemo}},
          u""};
}

}  // namespace

std::vector<NewTable> ProgramTables() {
  using enum ColumnType;
  return {
      ItemTable(u"FTable"), ItemTable(u"FBackup"),
      NewTable{u"TreeviewTable",
               {{u"i", kLong, 0, true}, {u"parent", kText, 50}, {u"key", kText, 50}, {u"text", kText, 255}},
               u"i"}};
}

Row ItemRow(std::u16string node, std::u16string index, std::u16string name, std::u16string file,
            std::u16string localFile, std::u16string time, std::u16string comment) {
  return {std::move(node),      std::move(index), std::move(name),   std::move(file),
          std::move(localFile), std::move(time),  std::move(comment)};
}

std::u16string Repeat(std::u16string_view unit, std::size_t length) {
  std::u16string text;
  while (text.size() < length) text += unit.substr(0, length - text.size());
  return text;
}

Row VariedRow(int number) {
  static constexpr std::u16string_view kUnits[] = {
      u"a", u"Grüße ", u"文件", u"\U0001F4C1", u"naïve, \"quoted\" ", u"Привет "};
  const auto n = static_cast<std::size_t>(number);
  const auto text = [n](std::size_t salt, std::size_t most) {
    const std::u16string_view unit = kUnits[(n + salt) % std::size(kUnits)];
    std::size_t length = (n * 7 + salt * 13) % (most + 1);
    if (unit.size() == 2 && length % 2 == 1) --length;  // no half of a pair
    return Repeat(unit, length);
  };
  Row row = ItemRow(text(0, 50), u"K" + FromUtf8(std::to_string(number)), text(1, 60), text(2, 255),
                    text(3, 120), u"2026-11-21 10:00:00", text(4, number % 50 == 0 ? 9000 : 80));
  if (number % 7 == 3) row[6] = std::monostate{};
  return row;
}

ByteVector CreateInMemory(const std::vector<NewTable>& tables) {
  auto bytes = std::make_shared<std::vector<std::uint8_t>>();
  CreateDatabase(*OpenMemoryFile(bytes), tables, 46347.25);
  return bytes;
}

std::unique_ptr<Database> OpenInMemory(const ByteVector& bytes) {
  return Database::Open(OpenMemoryFile(bytes), u"memory");
}

ByteVector CopyOf(const ByteVector& bytes) { return std::make_shared<std::vector<std::uint8_t>>(*bytes); }

Rows ReadAll(Table& table) {
  Rows rows;
  for (Cursor cursor = table.Rows(); cursor.Next();) {
    Row& row = rows[cursor.Row()];
    row.resize(table.Columns().size());
    for (std::size_t column = 0; column < row.size(); ++column) cursor.Read(column, row[column]);
  }
  return rows;
}

void ExpectRows(const ByteVector& bytes, std::u16string_view table, const Rows& expected) {
  const auto database = OpenInMemory(bytes);
  Table& opened = database->OpenTable(table);
  EXPECT_EQ(opened.RowCount(), expected.size());
  EXPECT_TRUE(ReadAll(opened) == expected);
  EXPECT_THAT(database->Check(), testing::IsEmpty());
}

Fixture::Fixture(const std::vector<NewTable>& tables)
    : bytes(CreateInMemory(tables)), database(OpenInMemory(bytes)) {}

RowId Fixture::Insert(Row row) {
  const RowId id = Items().Insert(row);
  model[id] = std::move(row);
  return id;
}

void Fixture::Update(RowId row, std::size_t column, Value value) {
  const std::pair<std::size_t, Value> change{column, value};
  Items().Update(row, {&change, 1});
  model[row][column] = std::move(value);
}

void Fixture::Delete(RowId row) {
  Items().Delete(row);
  model.erase(row);
}

void Fixture::FlushAndCompare() {
  database->Flush();
  EXPECT_FALSE(database->Dirty());
  ExpectRows(bytes, u"FTable", model);
}

void Fixture::Compare() {
  EXPECT_EQ(Items().RowCount(), model.size());
  EXPECT_TRUE(ReadAll(Items()) == model);
  EXPECT_THAT(database->Check(), testing::IsEmpty());
}

void Fixture::Reopen() {
  database->Flush();
  database = OpenInMemory(bytes);
}

ScopedFolder::ScopedFolder() {
  std::random_device random;
  path_ = std::filesystem::temp_directory_path() /
          ("kestrelon-" + std::to_string(random()) + "-" + std::to_string(random()));
  std::filesystem::create_directories(path_);
}

ScopedFolder::~ScopedFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

Content ContentOf(Database& database) {
  Content content;
  for (const std::u16string& name : database.TableNames()) content[name] = ReadAll(database.OpenTable(name));
  return content;
}

ByteVector FileWithRows(int items, int categories) {
  Fixture fixture;
  for (int i = 0; i < items; ++i) fixture.Insert(VariedRow(i));
  for (int i = 0; i < categories; ++i) fixture.Tree().Insert(Row(4));
  fixture.database->Flush();
  return fixture.bytes;
}

void UpdateEvery(Table& table, int step, std::size_t column, const Value& value) {
  int number = 0;
  for (const auto& [id, row] : ReadAll(table)) {
    const std::pair<std::size_t, Value> change{column, value};
    if (number++ % step == 0) table.Update(id, {&change, 1});
  }
}

void DeleteEvery(Table& table, int step) {
  int number = 0;
  for (const auto& [id, row] : ReadAll(table)) {
    if (number++ % step == 0) table.Delete(id);
  }
}

void InsertRows(Table& table, int first, int count) {
  for (int i = first; i < first + count; ++i) table.Insert(VariedRow(i));
}

}  // namespace kestrelon::jet
