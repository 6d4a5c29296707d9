#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>

#include "tests/jet/storage/MdbTools.h"
#include "tests/jet/storage/Support.h"

// Databases that Access wrote: read, checked, packed, and compared with what the mdb-tools read.

namespace kestrelon::jet {
namespace {

using testing::IsEmpty;

std::vector<std::filesystem::path> Samples() {
  std::vector<std::filesystem::path> files;
  std::error_code failure;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(KESTRELON_SAMPLES, failure)) {
    if (entry.path().extension() == ".mdb") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::unique_ptr<Database> OpenSample(const std::filesystem::path& path) {
  return Database::Open(OpenFile(path, OpenMode::kRead), path.u16string());
}

ByteVector ReadBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::make_shared<std::vector<std::uint8_t>>(std::istreambuf_iterator<char>(file),
                                                     std::istreambuf_iterator<char>());
}

// A date as "2026-11-21 08:30:00".
std::string DateText(double days) {
  const auto seconds = static_cast<std::int64_t>(std::llround(days * 86400.0));
  const std::chrono::sys_days day =
      std::chrono::sys_days(std::chrono::year(1899) / 12 / 30) +
      std::chrono::days(static_cast<int>(std::floor(double(seconds) / 86400.0)));
  const std::chrono::year_month_day date(day);
  const auto time = (seconds % 86400 + 86400) % 86400;
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d", int(date.year()), unsigned(date.month()),
                unsigned(date.day()), int(time / 3600), int(time / 60 % 60), int(time % 60));
  return text;
}

bool SameCell(const Column& column, const Value& value, const std::string& exported) {
  if (IsNull(value)) return exported.empty();
  if (const auto* text = std::get_if<std::u16string>(&value)) return exported == ToUtf8(*text);
  if (const auto* flag = std::get_if<bool>(&value)) return exported == (*flag ? "1" : "0");
  if (const auto* number = std::get_if<std::int32_t>(&value)) return exported == std::to_string(*number);
  if (const auto* real = std::get_if<double>(&value)) {
    if (column.type == ColumnType::kDate) return exported == DateText(*real);
    return std::abs(std::atof(exported.c_str()) - *real) <= std::abs(*real) * 1e-6;
  }
  const Bytes& bytes = std::get<Bytes>(value);
  if (column.type == ColumnType::kNumeric) {
    return exported == ((bytes[0] & 0x80) != 0 ? "-" : "") + std::to_string(bytes[13] | bytes[14] << 8);
  }
  return exported.size() == 2 * bytes.size();
}

bool SameRow(const std::vector<Column>& columns, const Row& row,
             const std::map<std::string, std::string>& exported) {
  for (std::size_t column = 0; column < row.size(); ++column) {
    if (!SameCell(columns[column], row[column], exported.at(ToUtf8(columns[column].name)))) return false;
  }
  return true;
}

class Sample : public testing::TestWithParam<std::filesystem::path> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Sample);

TEST_P(Sample, IsSound) { EXPECT_THAT(OpenSample(GetParam())->Check(), IsEmpty()); }

TEST_P(Sample, HoldsWhatTheMdbToolsRead) {
  if (!mdb_tools::Present()) GTEST_SKIP() << "the mdb-tools are not installed";
  const auto database = OpenSample(GetParam());
  for (const std::u16string& name : database->TableNames()) {
    SCOPED_TRACE(ToUtf8(name));
    Table& table = database->OpenTable(name);
    auto exported = mdb_tools::Export(GetParam(), ToUtf8(name));
    const Rows rows = ReadAll(table);
    ASSERT_EQ(rows.size(), exported.size());
    // They give a moved row where its bytes lie, so the order is not compared.
    for (const auto& [id, row] : rows) {
      const auto found = std::find_if(exported.begin(), exported.end(),
                                      [&](const auto& each) { return SameRow(table.Columns(), row, each); });
      ASSERT_NE(found, exported.end()) << "row " << static_cast<std::uint32_t>(id);
      exported.erase(found);
    }
  }
}

TEST_P(Sample, KeepsItsRowsWhenPacked) {
  const auto database = OpenSample(GetParam());
  auto packed = std::make_shared<std::vector<std::uint8_t>>();
  database->CompactInto(*OpenMemoryFile(packed));

  const auto copy = OpenInMemory(packed);
  EXPECT_THAT(copy->Check(), IsEmpty());
  EXPECT_EQ(copy->TableNames(), database->TableNames());
  for (const std::u16string& name : database->TableNames()) {
    std::multiset<std::string> before, after;
    const auto collect = [&name](Database& from, std::multiset<std::string>& rows) {
      for (const auto& [id, row] : ReadAll(from.OpenTable(name))) {
        std::string all;
        for (const Value& value : row) {
          if (const auto* text = std::get_if<std::u16string>(&value)) all += ToUtf8(*text);
          if (const auto* number = std::get_if<std::int32_t>(&value)) all += std::to_string(*number);
          if (const auto* bytes = std::get_if<Bytes>(&value)) all.append(bytes->begin(), bytes->end());
          all += '|';
        }
        rows.insert(all);
      }
    };
    collect(*database, before);
    collect(*copy, after);
    EXPECT_EQ(before, after);
  }
}

// Every table either takes the change and stays right, or refuses it and stays as it was.
TEST_P(Sample, TakesADeletionOrRefusesIt) {
  const ByteVector bytes = ReadBytes(GetParam());
  const auto database = OpenInMemory(bytes);
  for (const std::u16string& name : database->TableNames()) {
    Table& table = database->OpenTable(name);
    const Rows rows = ReadAll(table);
    if (rows.empty()) continue;
    std::size_t expected = rows.size();
    try {
      table.Delete(rows.begin()->first);
      --expected;
    } catch (const Error& error) {
      EXPECT_THAT(error.what(), testing::AnyOf(testing::HasSubstr("cannot hold this text"),
                                               testing::HasSubstr("is read-only")));
    }
    EXPECT_EQ(ReadAll(table).size(), expected);
  }
  database->Flush();
  EXPECT_THAT(OpenInMemory(bytes)->Check(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(OfAccess, Sample, testing::ValuesIn(Samples()), [](const auto& sample) {
  std::string name = sample.param.stem().string();
  std::replace_if(
      name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
});

TEST(SampleWithAForeignTextIndex, RefusesRowsWhoseKeysItCannotMake) {
  const std::filesystem::path path =
      std::filesystem::path(KESTRELON_SAMPLES) / "access-files" / "unicode-text.mdb";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "the sample is not there";
  const ByteVector bytes = ReadBytes(path);
  const std::vector<std::uint8_t> before = *bytes;
  const auto database = OpenInMemory(bytes);
  Table& table = database->OpenTable(u"Table");
  EXPECT_EQ(ErrorNumberOf([&] { table.Insert(Row{Value(), std::u16string(u"plain")}); }), code::kGeneric);
  EXPECT_EQ(ErrorNumberOf([&] { table.DeleteAll(); }), code::kGeneric);
  EXPECT_FALSE(database->Dirty());
  database->Flush();
  EXPECT_TRUE(*bytes == before);
}

}  // namespace
}  // namespace kestrelon::jet
