#include "jet/sql/Convert.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "jet/base/Error.h"

namespace kestrelon::jet::sql {

namespace {

std::u16string_view Trimmed(std::u16string_view text) {
  while (!text.empty() && text.front() == u' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
  return text;
}

std::u16string FromAscii(std::string_view text) { return {text.begin(), text.end()}; }

[[noreturn]] void Mismatch() {
  throw Error(code::kTypeMismatch, u"Data type mismatch in criteria expression.");
}

[[noreturn]] void OutOfRange() {
  throw Error(code::kTypeMismatch, u"The number or date lies outside the range of its column.");
}

// The largest single is half a step below this: from here on a number is stored as infinity.
constexpr double kSinglesEnd = 0x1.ffffffp127;
// Dates run from 0100-01-01 to the end of 9999-12-31. Before day 0 the time of the day is taken off the day.
constexpr double kDayBeforeDates = -657435, kDayAfterDates = 2958466;

// Days since 1970-01-01 of a day of the Gregorian calendar (the usual era arithmetic), and back.
std::int64_t DaysFromCivil(std::int64_t year, unsigned month, unsigned day) {
  year -= month <= 2;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const auto yearOfEra = static_cast<std::int64_t>(year - era * 400);
  const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}
struct Civil {
  std::int64_t year;
  unsigned month;
  unsigned day;
};
Civil CivilFromDays(std::int64_t days) {
  days += 719468;
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const std::int64_t dayOfEra = days - era * 146097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t shifted = (5 * dayOfYear + 2) / 153;
  const auto month = static_cast<unsigned>(shifted < 10 ? shifted + 3 : shifted - 9);
  return {yearOfEra + era * 400 + (month <= 2), month,
          static_cast<unsigned>(dayOfYear - (153 * shifted + 2) / 5 + 1)};
}
constexpr std::int64_t kDayZero = -25569;  // 1899-12-30, counted from 1970-01-01

// Reads digits off the front of `text`.
std::optional<unsigned> TakeNumber(std::u16string_view& text, std::size_t maxDigits) {
  unsigned number = 0;
  std::size_t digits = 0;
  while (digits < text.size() && digits < maxDigits && text[digits] >= u'0' && text[digits] <= u'9') {
    number = number * 10 + static_cast<unsigned>(text[digits++] - u'0');
  }
  if (digits == 0) return std::nullopt;
  text.remove_prefix(digits);
  return number;
}
bool Take(std::u16string_view& text, char16_t c) {
  if (text.empty() || text.front() != c) return false;
  text.remove_prefix(1);
  return true;
}

// Fraction of a day; takes what it reads off `text`.
std::optional<double> TakeTime(std::u16string_view& text) {
  std::optional<unsigned> hour = TakeNumber(text, 2);
  if (!hour || !Take(text, u':')) return std::nullopt;
  const std::optional<unsigned> minute = TakeNumber(text, 2);
  std::optional<unsigned> second = 0;
  if (Take(text, u':')) second = TakeNumber(text, 2);
  if (!minute || !second || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  const std::u16string_view half = Trimmed(text);
  if (half.size() == 2 && (half[1] == u'M' || half[1] == u'm')) {
    const bool afternoon = half[0] == u'P' || half[0] == u'p';
    if ((!afternoon && half[0] != u'A' && half[0] != u'a') || *hour == 0 || *hour > 12) return std::nullopt;
    hour = *hour % 12 + (afternoon ? 12 : 0);
    text = {};
  }
  return (*hour * 3600 + *minute * 60 + *second) / 86400.0;
}

std::optional<std::int64_t> TakeDay(std::u16string_view& text) {
  std::optional<unsigned> year, month, day;
  const std::optional<unsigned> first = TakeNumber(text, 4);
  if (Take(text, u'-')) {
    year = first;
    month = TakeNumber(text, 2);
    if (!Take(text, u'-')) return std::nullopt;
    day = TakeNumber(text, 2);
  } else if (Take(text, u'/')) {
    month = first;
    day = TakeNumber(text, 2);
    if (!Take(text, u'/')) return std::nullopt;
    year = TakeNumber(text, 4);
  }
  if (!year || !month || !day) return std::nullopt;
  if (*year < 100) *year += *year < 30 ? 2000 : 1900;
  if (*month < 1 || *month > 12 || *day < 1 || *day > 31) return std::nullopt;
  const std::int64_t days = DaysFromCivil(*year, *month, *day);
  if (CivilFromDays(days).day != *day) return std::nullopt;  // 31 April
  return days - kDayZero;
}

std::u16string DateText(double date) {
  if (!std::isfinite(date) || std::abs(date) > 3'000'000) return u"";
  double day = std::trunc(date);
  double seconds = std::round(std::abs(date - day) * 86400);
  if (seconds >= 86400) {
    seconds = 0;
    day += 1;
  }
  const Civil civil = CivilFromDays(static_cast<std::int64_t>(day) + kDayZero);
  const auto time = static_cast<int>(seconds);
  char buffer[64];
  int length = std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u", static_cast<int>(civil.year),
                             civil.month, civil.day);
  if (time != 0) {
    length += std::snprintf(buffer + length, sizeof buffer - static_cast<std::size_t>(length),
                            " %02d:%02d:%02d", time / 3600, time / 60 % 60, time % 60);
  }
  return FromAscii({buffer, static_cast<std::size_t>(length)});
}

template <class Number>
std::u16string NumberText(Number number) {
  char buffer[64];
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, number);
  return FromAscii({buffer, static_cast<std::size_t>(result.ptr - buffer)});
}

std::u16string CurrencyText(std::int64_t amount) {
  const bool negative = amount < 0;
  const std::uint64_t size =
      negative ? 0 - static_cast<std::uint64_t>(amount) : static_cast<std::uint64_t>(amount);
  std::u16string text = (negative ? u"-" : u"") + NumberText(size / 10000);
  if (size % 10000 != 0) {
    std::u16string fraction = NumberText(size % 10000 + 10000);
    fraction[0] = u'.';
    while (fraction.back() == u'0') fraction.pop_back();
    text += fraction;
  }
  return text;
}

std::u16string Hex(const Bytes& bytes) {
  static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
  std::u16string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

std::u16string GuidText(const Bytes& bytes) {
  if (bytes.size() != 16) return Hex(bytes);
  // The first three groups are stored with the low byte first.
  static constexpr std::array<std::size_t, 16> kOrder = {3, 2, 1,  0,  5,  4,  7,  6,
                                                         8, 9, 10, 11, 12, 13, 14, 15};
  Bytes ordered;
  for (const std::size_t at : kOrder) ordered.push_back(bytes[at]);
  const std::u16string hex = Hex(ordered);
  return u"{" + hex.substr(0, 8) + u"-" + hex.substr(8, 4) + u"-" + hex.substr(12, 4) + u"-" +
         hex.substr(16, 4) + u"-" + hex.substr(20) + u"}";
}

double NumberOf(const Value& value) {
  if (const auto* number = std::get_if<std::int32_t>(&value)) return *number;
  if (const auto* number = std::get_if<double>(&value)) return *number;
  if (const auto* number = std::get_if<bool>(&value)) return *number ? -1 : 0;
  if (const auto* amount = std::get_if<std::int64_t>(&value)) return static_cast<double>(*amount) / 10000;
  if (const auto* text = std::get_if<std::u16string>(&value)) {
    if (const std::optional<double> number = ParseNumber(*text)) return *number;
  }
  Mismatch();
}

std::int32_t WholeNumber(const Value& value, double lowest, double highest) {
  // Halves go to the even neighbour, as in every conversion of this kind.
  const double number = std::nearbyint(NumberOf(value));
  if (!(number >= lowest && number <= highest)) OutOfRange();
  return static_cast<std::int32_t>(number);
}

}  // namespace

std::optional<double> ParseNumber(std::u16string_view text) {
  text = Trimmed(text);
  if (!text.empty() && text.front() == u'+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == u'-') return std::nullopt;
  }
  if (text.empty() || text.size() > 400) return std::nullopt;
  std::string ascii;
  for (const char16_t c : text) {
    // No "inf", "nan" or hexadecimal forms.
    if (!((c >= u'0' && c <= u'9') || c == u'.' || c == u'-' || c == u'+' || c == u'e' || c == u'E')) {
      return std::nullopt;
    }
    ascii.push_back(static_cast<char>(c));
  }
  double number = 0;
  const std::from_chars_result result = std::from_chars(ascii.data(), ascii.data() + ascii.size(), number);
  if (result.ec != std::errc() || result.ptr != ascii.data() + ascii.size()) return std::nullopt;
  return number;
}

std::optional<double> ParseDate(std::u16string_view text) {
  text = Trimmed(text);
  std::u16string_view rest = text;
  if (const std::optional<double> time = TakeTime(rest); time && rest.empty()) return time;
  const std::optional<std::int64_t> day = TakeDay(text);
  if (!day) return std::nullopt;
  const auto date = static_cast<double>(*day);
  if (text.empty()) return date;
  if (!Take(text, u' ')) return std::nullopt;
  text = Trimmed(text);
  const std::optional<double> time = TakeTime(text);
  if (!time || !text.empty()) return std::nullopt;
  return date < 0 ? date - *time : date + *time;
}

std::u16string ToText(const Value& value, ColumnType type) {
  switch (value.index()) {
    case 1: return std::get<bool>(value) ? u"True" : u"False";
    case 2: return NumberText(std::get<std::int32_t>(value));
    case 3: return CurrencyText(std::get<std::int64_t>(value));
    case 4:
      if (type == ColumnType::kDate) return DateText(std::get<double>(value));
      if (type == ColumnType::kSingle) return NumberText(static_cast<float>(std::get<double>(value)));
      return NumberText(std::get<double>(value));
    case 5: return std::get<std::u16string>(value);
    case 6: return type == ColumnType::kGuid ? GuidText(std::get<Bytes>(value)) : Hex(std::get<Bytes>(value));
    default: return {};
  }
}

void ConvertTo(ColumnType type, Value& value, bool isDate) {
  if (IsNull(value)) {
    if (type == ColumnType::kBoolean) value = false;
    return;
  }
  switch (type) {
    case ColumnType::kText:
    case ColumnType::kMemo:
      if (std::holds_alternative<std::u16string>(value)) return;
      if (std::holds_alternative<Bytes>(value)) Mismatch();
      if (const auto* truth = std::get_if<bool>(&value)) {
        value = std::u16string(*truth ? u"-1" : u"0");
      } else {
        value = ToText(value, isDate ? ColumnType::kDate : ColumnType::kDouble);
      }
      return;
    case ColumnType::kBoolean:
      if (!std::holds_alternative<bool>(value)) value = NumberOf(value) != 0;
      return;
    case ColumnType::kByte: value = WholeNumber(value, 0, 255); return;
    case ColumnType::kInteger: value = WholeNumber(value, -32768, 32767); return;
    case ColumnType::kLong:
      if (!std::holds_alternative<std::int32_t>(value)) {
        value = WholeNumber(value, std::numeric_limits<std::int32_t>::min(),
                            std::numeric_limits<std::int32_t>::max());
      }
      return;
    case ColumnType::kCurrency: {
      if (std::holds_alternative<std::int64_t>(value)) return;
      const double amount = std::nearbyint(NumberOf(value) * 10000);
      if (!(std::abs(amount) < 9.2e18)) OutOfRange();
      value = static_cast<std::int64_t>(amount);
      return;
    }
    case ColumnType::kSingle:
    case ColumnType::kDouble: {
      const double number = NumberOf(value);
      if (!std::isfinite(number)) OutOfRange();
      if (type == ColumnType::kSingle && std::abs(number) >= kSinglesEnd) OutOfRange();
      value = number;
      return;
    }
    case ColumnType::kDate: {
      const auto* text = std::get_if<std::u16string>(&value);
      const std::optional<double> parsed = text != nullptr ? ParseDate(*text) : std::nullopt;
      const double date = parsed ? *parsed : NumberOf(value);
      if (!(date > kDayBeforeDates && date < kDayAfterDates)) OutOfRange();
      value = date;
      return;
    }
    case ColumnType::kBinary:
    case ColumnType::kOle:
    case ColumnType::kGuid:
    case ColumnType::kNumeric:
      // Their bytes come only from a column of the same kind.
      if (!std::holds_alternative<Bytes>(value)) Mismatch();
      return;
  }
  Mismatch();
}

}  // namespace kestrelon::jet::sql
