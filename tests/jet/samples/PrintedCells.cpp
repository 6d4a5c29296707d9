#include "tests/jet/samples/PrintedCells.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <span>

#include "jet/database/DatabaseInternal.h"

namespace kestrelon::jet {
namespace {

std::string Hex(std::span<const std::uint8_t> bytes) {
  std::string hex;
  for (const std::uint8_t byte : bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    hex += kDigits[byte >> 4];
    hex += kDigits[byte & 15];
  }
  return hex;
}

template <class... Arguments>
std::string Formatted(const char* format, Arguments... arguments) {
  char text[64];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

// Whole seconds, the half rounded up, as in "2026-11-21 08:30:00".
std::string DateText(double days) {
  const double whole = std::floor(days);
  const auto seconds = static_cast<int>((days - whole) * 86400.0 + 0.5);
  const std::chrono::year_month_day date(std::chrono::sys_days(std::chrono::year(1899) / 12 / 30) +
                                         std::chrono::days(static_cast<int>(whole)));
  return Formatted("%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                   static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), seconds / 3600,
                   seconds / 60 % 60, seconds % 60);
}

std::string WithPoint(bool negative, std::string digits, std::size_t scale) {
  if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
  if (scale > 0) digits.insert(digits.size() - scale, ".");
  return negative ? "-" + digits : digits;
}

std::string CurrencyText(std::int64_t amount) {
  const auto magnitude =
      amount < 0 ? ~static_cast<std::uint64_t>(amount) + 1 : static_cast<std::uint64_t>(amount);
  return WithPoint(amount < 0, std::to_string(magnitude), 4);
}

// A sign and four words, the most significant first: long division by ten.
std::string NumericText(const Bytes& stored, std::size_t scale) {
  std::uint32_t words[4];
  for (std::size_t i = 0; i < 4; ++i) words[i] = Get32(stored.data() + 1 + 4 * i);
  std::string digits;
  do {
    std::uint64_t remainder = 0;
    for (std::uint32_t& word : words) {
      const std::uint64_t part = remainder << 32 | word;
      word = static_cast<std::uint32_t>(part / 10);
      remainder = part % 10;
    }
    digits.insert(digits.begin(), static_cast<char>('0' + remainder));
  } while ((words[0] | words[1] | words[2] | words[3]) != 0);
  return WithPoint((stored[0] & 0x80) != 0, digits, scale);
}

std::string GuidText(const Bytes& stored) {
  static constexpr int kShownOrder[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  std::string text = "{";
  for (std::size_t i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8) text += '-';
    text += Hex({&stored[static_cast<std::size_t>(kShownOrder[i])], 1});
  }
  return text + "}";
}

mdb_tools::Cell NothingIfEmpty(std::string text) {
  return text.empty() ? mdb_tools::Cell() : mdb_tools::Cell(std::move(text));
}

}  // namespace

const TableInternal& InternalOf(Table& table) { return static_cast<TableImpl&>(table).Internal(); }

mdb_tools::Cell PrintedCell(const StoredColumn& column, const Value& value) {
  if (IsNull(value) || column.type == kFixedBinary) return std::nullopt;
  switch (static_cast<ColumnType>(column.type)) {
    case ColumnType::kBoolean: return std::get<bool>(value) ? "1" : "0";
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong: return std::to_string(std::get<std::int32_t>(value));
    case ColumnType::kCurrency: return CurrencyText(std::get<std::int64_t>(value));
    case ColumnType::kSingle: return Formatted("%.8g", std::get<double>(value));
    case ColumnType::kDouble: return Formatted("%.16g", std::get<double>(value));
    case ColumnType::kDate: return DateText(std::get<double>(value));
    case ColumnType::kText:
    case ColumnType::kMemo: {
      std::u16string text = std::get<std::u16string>(value);
      text.resize(std::min(text.size(), text.find(u'\0')));
      for (char16_t& unit : text) {
        if (unit >= 0xD800 && unit <= 0xDFFF) unit = u'?';
      }
      return NothingIfEmpty(ToUtf8(text));
    }
    case ColumnType::kBinary: {
      const Bytes& bytes = std::get<Bytes>(value);
      return NothingIfEmpty(Hex({bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)}));
    }
    case ColumnType::kOle: return Hex(std::get<Bytes>(value));
    case ColumnType::kGuid: {
      const std::string text = GuidText(std::get<Bytes>(value));
      return Hex({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }
    case ColumnType::kNumeric: return NumericText(std::get<Bytes>(value), column.collation >> 8);
  }
  ADD_FAILURE() << "a type without a printed form: " << int{column.type};
  return std::nullopt;
}

std::vector<std::vector<mdb_tools::Cell>> PrintedRows(Table& table, const Rows& rows,
                                                      const std::vector<std::string>& columns) {
  std::vector<std::size_t> positions;
  for (const std::string& column : columns) {
    const auto position = table.FindColumn(FromUtf8(column));
    EXPECT_TRUE(position.has_value()) << column;
    positions.push_back(position.value_or(0));
  }
  std::vector<std::vector<mdb_tools::Cell>> printed;
  for (const auto& [id, row] : rows) {
    auto& cells = printed.emplace_back();
    for (const std::size_t position : positions) {
      cells.push_back(PrintedCell(InternalOf(table).stored[position], row[position]));
    }
  }
  return printed;
}

}  // namespace kestrelon::jet
