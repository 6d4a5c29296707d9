#include <bit>
#include <cstdint>
#include <optional>
#include <string>

#include "jet/index/Index.h"
#include "jet/index/TextKey.h"

// The key of one column of an index entry: a flag byte and the value. Ascending 7Fh + value, null 00h alone;
// descending 80h + the value inverted, null FFh alone.
//
//   TYPE                    ASCENDING FORM
//   byte                    the byte
//   integer, long, currency big-endian, top bit flipped
//   single, double, date    big-endian; top bit flipped if not negative, else all bits inverted
//   boolean                 00 for true, FF for false; it has no null form
//   binary, GUID            groups of 8 bytes, each followed by 09; the last one padded with 00 and followed
//   by its length
//                           (descending: the 09 stays as it is); a GUID in the order in which it is shown
//   numeric                 FF (00 if negative), then 16 bytes big-endian, inverted if negative; descending
//   inverts
//                           the 16 bytes once more but not the first
//   text, memo              see TextKey.cpp; descending inverts all and adds 00

namespace kestrelon::jet {
namespace {

constexpr std::uint8_t kAscending = 0x7F, kDescending = 0x80, kNullAscending = 0x00, kNullDescending = 0xFF;
constexpr std::uint16_t kGeneralOrder = 0x0409;
constexpr std::size_t kGroup = 8, kNumericBytes = 17;

void Append(std::string& key, unsigned byte) { key.push_back(static_cast<char>(byte & 0xFF)); }

void AppendBigEndian(std::string& key, std::uint64_t value, std::size_t size) {
  char bytes[8];
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(value >> 8 * (size - 1 - i) & 0xFF);
  key.append(bytes, size);
}

void AppendFloating(std::string& key, std::uint64_t bits, std::size_t size) {
  const std::uint64_t sign = std::uint64_t{1} << (8 * size - 1);
  AppendBigEndian(key, (bits & sign) != 0 ? ~bits : bits | sign, size);
}

void Invert(std::string& key, std::size_t from) {
  for (std::size_t i = from; i < key.size(); ++i)
    key[i] = static_cast<char>(~static_cast<unsigned char>(key[i]));
}

void AppendBinary(std::string& key, std::span<const std::uint8_t> bytes, bool ascending) {
  while (!bytes.empty()) {
    const std::size_t taken = bytes.size() < kGroup ? bytes.size() : kGroup;
    const std::size_t start = key.size();
    for (std::size_t i = 0; i < kGroup; ++i) Append(key, i < taken ? bytes[i] : 0u);
    const bool last = taken == bytes.size();
    if (last) Append(key, static_cast<unsigned>(taken));
    if (!ascending) Invert(key, start);
    if (!last) Append(key, 0x09);
    bytes = bytes.subspan(taken);
  }
}

void AppendGuid(std::string& key, const Bytes& stored, bool ascending) {
  static constexpr std::size_t kShownOrder[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  std::uint8_t shown[16] = {};
  for (std::size_t i = 0; i < 16 && stored.size() == 16; ++i) shown[i] = stored[kShownOrder[i]];
  AppendBinary(key, shown, ascending);
}

bool AppendNumeric(std::string& key, const Bytes& stored, bool ascending) {
  if (stored.size() != kNumericBytes) return false;
  const bool negative = (stored[0] & 0x80) != 0;
  Append(key, negative ? 0x00 : 0xFF);
  const std::size_t start = key.size();
  for (std::size_t word = 0; word < 4; ++word) AppendBigEndian(key, Get32(stored.data() + 1 + 4 * word), 4);
  if (negative == ascending) Invert(key, start);
  return true;
}

}  // namespace

bool KnowsKeysOf(const StoredColumn& column) {
  switch (static_cast<ColumnType>(column.type)) {
    case ColumnType::kText:
    case ColumnType::kMemo: return column.collation == kGeneralOrder && column.collationVersion == 0;
    case ColumnType::kBoolean:
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kCurrency:
    case ColumnType::kSingle:
    case ColumnType::kDouble:
    case ColumnType::kDate:
    case ColumnType::kBinary:
    case ColumnType::kGuid:
    case ColumnType::kNumeric: return true;
    default: return false;
  }
}

std::array<std::uint8_t, 5> LongKey(std::int32_t value, bool ascending) {
  std::array<std::uint8_t, 5> key = {ascending ? kAscending : kDescending};
  const std::uint32_t bits = static_cast<std::uint32_t>(value) ^ 0x80000000;
  PutBig32(key.data() + 1, ascending ? bits : ~bits);
  return key;
}

bool AppendKey(const StoredColumn& column, const Value& value, bool ascending, std::string& key) {
  if (column.Is(ColumnType::kBoolean)) {
    const bool* set = std::get_if<bool>(&value);
    Append(key, ascending ? kAscending : kDescending);
    Append(key, (set != nullptr && *set) == ascending ? 0x00 : 0xFF);
    return true;
  }
  if (IsNull(value)) {
    Append(key, ascending ? kNullAscending : kNullDescending);
    return true;
  }
  Append(key, ascending ? kAscending : kDescending);
  const std::size_t start = key.size();
  const auto integer = [&value] {
    const auto* number = std::get_if<std::int32_t>(&value);
    return number == nullptr ? 0u : static_cast<std::uint32_t>(*number);
  };
  const auto floating = [&value] {
    const auto* number = std::get_if<double>(&value);
    return number == nullptr ? 0.0 : *number;
  };
  switch (static_cast<ColumnType>(column.type)) {
    case ColumnType::kByte: Append(key, integer()); break;
    case ColumnType::kInteger: AppendBigEndian(key, (integer() & 0xFFFF) ^ 0x8000, 2); break;
    case ColumnType::kLong: {
      const auto whole = LongKey(static_cast<std::int32_t>(integer()), ascending);
      key.append(whole.begin() + 1, whole.end());
      return true;
    }
    case ColumnType::kCurrency: {
      const auto* amount = std::get_if<std::int64_t>(&value);
      const std::uint64_t bits = amount == nullptr ? 0 : static_cast<std::uint64_t>(*amount);
      AppendBigEndian(key, bits ^ std::uint64_t{1} << 63, 8);
      break;
    }
    case ColumnType::kSingle:
      AppendFloating(key, std::bit_cast<std::uint32_t>(static_cast<float>(floating())), 4);
      break;
    case ColumnType::kDouble:
    case ColumnType::kDate: AppendFloating(key, std::bit_cast<std::uint64_t>(floating()), 8); break;
    case ColumnType::kText:
    case ColumnType::kMemo: {
      const auto* text = std::get_if<std::u16string>(&value);
      if (text == nullptr || !KnowsKeysOf(column)) return false;
      const std::optional<std::string> textKey = EncodeTextKey(*text);
      if (!textKey) return false;
      key += *textKey;
      if (!ascending) {
        Invert(key, start);
        Append(key, 0x00);
      }
      return true;
    }
    case ColumnType::kBinary:
    case ColumnType::kGuid:
    case ColumnType::kNumeric: {
      const auto* bytes = std::get_if<Bytes>(&value);
      if (bytes == nullptr) return false;
      if (column.Is(ColumnType::kNumeric)) return AppendNumeric(key, *bytes, ascending);
      if (column.Is(ColumnType::kGuid)) {
        AppendGuid(key, *bytes, ascending);
      } else {
        AppendBinary(key, *bytes, ascending);
      }
      return true;
    }
    default: return false;
  }
  if (!ascending) Invert(key, start);
  return true;
}

}  // namespace kestrelon::jet
