#include "jet/row/RowCodec.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "jet/base/Error.h"
#include "jet/row/LongValue.h"
#include "jet/row/TextCodec.h"

// A row:
//
//   SIZE        MEANING
//   2           columns of the table when the row was written, c
//   f           fixed columns, each at 2 + its offset, present even if null
//   ...         variable columns in order of their index; null takes no bytes
//   2           end of the variable part            | only in tables with variable columns;
//   2 * v       starts, the highest index first     | all counted from the start of the row
//   2           v                                   |
//   (c + 7)/8   mask, bit = column number, 1 = not null; of a boolean: its value

namespace kestrelon::jet {
namespace {

constexpr std::size_t kNumericBytes = 17, kGuidBytes = 16;

[[noreturn]] void ThrowMismatch() {
  throw Error(code::kTypeMismatch, u"Data type mismatch in criteria expression.");
}
[[noreturn]] void ThrowTooLong() {
  throw Error(
      code::kTooLong,
      u"The field is too small to accept the amount of data you attempted to add. Try inserting or pasting "
      u"less data.");
}

template <class T>
const T& As(const Value& value) {
  const T* typed = std::get_if<T>(&value);
  if (typed == nullptr) ThrowMismatch();
  return *typed;
}

std::size_t PutInteger(const Value& value, std::int32_t least, std::int32_t most, std::size_t size,
                       std::uint8_t* out) {
  const std::int32_t number = As<std::int32_t>(value);
  if (number < least || number > most) ThrowMismatch();
  std::uint8_t bytes[4];
  Put32(bytes, static_cast<std::uint32_t>(number));
  std::memcpy(out, bytes, size);
  return size;
}

std::size_t PutBytes(const Value& value, std::size_t size, std::uint8_t* out) {
  const Bytes& bytes = As<Bytes>(value);
  if (bytes.size() != size) ThrowMismatch();
  std::memcpy(out, bytes.data(), size);
  return size;
}

// A value of up to 17 bytes whose size depends on the type only.
std::size_t PutScalar(const StoredColumn& column, const Value& value, std::uint8_t* out) {
  switch (static_cast<ColumnType>(column.type)) {
    case ColumnType::kByte: return PutInteger(value, 0, 255, 1, out);
    case ColumnType::kInteger: return PutInteger(value, -32768, 32767, 2, out);
    case ColumnType::kLong:
      return PutInteger(value, std::numeric_limits<std::int32_t>::min(),
                        std::numeric_limits<std::int32_t>::max(), 4, out);
    case ColumnType::kCurrency: Put64(out, static_cast<std::uint64_t>(As<std::int64_t>(value))); return 8;
    case ColumnType::kSingle:
      Put32(out, std::bit_cast<std::uint32_t>(static_cast<float>(As<double>(value))));
      return 4;
    case ColumnType::kDouble:
    case ColumnType::kDate: Put64(out, std::bit_cast<std::uint64_t>(As<double>(value))); return 8;
    case ColumnType::kGuid: return PutBytes(value, kGuidBytes, out);
    case ColumnType::kNumeric: return PutBytes(value, kNumericBytes, out);
    default: ThrowMismatch();
  }
}

void PutFixed(const StoredColumn& column, const Value& value, std::uint8_t* out) {
  if (column.Is(ColumnType::kText)) {
    const std::u16string& text = As<std::u16string>(value);
    const std::size_t units = column.length / 2;
    if (text.size() > units) ThrowTooLong();
    for (std::size_t i = 0; i < units; ++i) Put16(out + 2 * i, i < text.size() ? text[i] : u' ');
  } else if (column.Is(ColumnType::kBinary)) {
    const Bytes& bytes = As<Bytes>(value);
    if (bytes.size() > column.length) ThrowTooLong();
    if (!bytes.empty()) std::memcpy(out, bytes.data(), bytes.size());
  } else {
    std::uint8_t scalar[kNumericBytes];
    const std::size_t size = PutScalar(column, value, scalar);
    if (size > column.length) ThrowMismatch();
    std::memcpy(out, scalar, size);
  }
}

}  // namespace

void RowView::Fail(const char* what) const { ThrowCorrupt(what, page_); }

RowEncoder::RowEncoder(const TableDef& def, const std::vector<StoredColumn>& columns)
    : columns_(&columns), maxColumns_(def.maxColumns), variable_(def.variableColumns) {
  for (std::size_t position = 0; position < columns.size(); ++position) {
    const StoredColumn& column = columns[position];
    if (column.Is(ColumnType::kBoolean)) continue;
    if (column.Fixed()) {
      fixed_.push_back(position);
      fixedBytes_ = std::max(fixedBytes_, std::size_t{column.fixedOffset} + column.length);
    } else {
      variable_[column.variableIndex] = position;
    }
  }
}

void RowEncoder::Encode(std::span<const Field> fields, EncodedRow& out) const {
  if (TryEncode(fields, long_value::kMostInline, out) || TryEncode(fields, 0, out)) return;
  throw Error(code::kGeneric, u"Record is too large.");
}

bool RowEncoder::TryEncode(std::span<const Field> fields, std::size_t mostInline, EncodedRow& out) const {
  std::uint8_t* row = out.bytes.data();
  out.pendingCount = 0;
  const std::size_t trailer = (variable_.empty() ? 0 : 2 * (variable_.size() + 2)) + (maxColumns_ + 7u) / 8;
  if (2 + fixedBytes_ + trailer > kMostRowBytes) return false;
  const std::size_t limit = kMostRowBytes - trailer;

  std::uint8_t mask[32] = {};
  Put16(row, maxColumns_);
  std::memset(row + 2, 0, fixedBytes_);
  const auto isNull = [&fields](std::size_t position) {
    const Field& field = fields[position];
    return field.value != nullptr ? IsNull(*field.value) : !field.present;
  };
  for (std::size_t position = 0; position < columns_->size(); ++position) {
    const StoredColumn& column = (*columns_)[position];
    bool bit = !isNull(position);
    if (column.Is(ColumnType::kBoolean) && bit && fields[position].value != nullptr) {
      bit = As<bool>(*fields[position].value);
    }
    if (bit)
      mask[column.number / 8] = static_cast<std::uint8_t>(mask[column.number / 8] | 1u << column.number % 8);
  }
  for (const std::size_t position : fixed_) {
    if (isNull(position)) continue;
    const StoredColumn& column = (*columns_)[position];
    const Field& field = fields[position];
    std::uint8_t* at = row + 2 + column.fixedOffset;
    if (field.value != nullptr) {
      PutFixed(column, *field.value, at);
    } else if (field.raw.size() == column.length) {
      std::memcpy(at, field.raw.data(), field.raw.size());
    }
  }

  std::size_t end = 2 + fixedBytes_;
  std::array<std::uint16_t, 256> starts;
  for (std::size_t index = 0; index < variable_.size(); ++index) {
    starts[index] = static_cast<std::uint16_t>(end);
    if (!variable_[index].has_value() || isNull(*variable_[index])) continue;
    const std::size_t position = *variable_[index];
    const StoredColumn& column = (*columns_)[position];
    const Field& field = fields[position];
    if (column.LongValue()) {
      if (end + long_value::kReference + mostInline > limit) return false;
      end += EncodeLongValue(position, field, mostInline, end, out);
    } else if (field.value == nullptr) {
      if (end + field.raw.size() > limit) return false;
      if (!field.raw.empty()) std::memcpy(row + end, field.raw.data(), field.raw.size());
      end += field.raw.size();
    } else if (column.Is(ColumnType::kText)) {
      const std::u16string& text = As<std::u16string>(*field.value);
      if (text.size() > column.length / 2u) ThrowTooLong();
      const bool mayCompress = (column.moreFlags & StoredColumn::kCompressed) != 0;
      if (end + EncodedTextBound(text) > sizeof out.bytes &&
          end + EncodedTextSize(text, mayCompress) > limit) {
        return false;
      }
      end += EncodeText(text, mayCompress, row + end);
      if (end > limit) return false;
    } else if (column.Is(ColumnType::kBinary)) {
      const Bytes& bytes = As<Bytes>(*field.value);
      if (bytes.size() > column.length) ThrowTooLong();
      if (end + bytes.size() > limit) return false;
      if (!bytes.empty()) std::memcpy(row + end, bytes.data(), bytes.size());
      end += bytes.size();
    } else {
      std::uint8_t scalar[kNumericBytes];
      const std::size_t size = PutScalar(column, *field.value, scalar);
      if (end + size > limit) return false;
      std::memcpy(row + end, scalar, size);
      end += size;
    }
  }
  if (!variable_.empty()) {
    Put16(row + end, end);
    std::uint8_t* at = row + end + 2;
    for (std::size_t index = variable_.size(); index-- > 0; at += 2) Put16(at, starts[index]);
    Put16(at, variable_.size());
    end += 2 * (variable_.size() + 2);
  }
  std::memcpy(row + end, mask, (maxColumns_ + 7u) / 8);
  out.size = end + (maxColumns_ + 7u) / 8;
  return true;
}

std::size_t RowEncoder::EncodeLongValue(std::size_t position, const Field& field, std::size_t mostInline,
                                        std::size_t at, EncodedRow& out) const {
  const StoredColumn& column = (*columns_)[position];
  std::uint8_t* reference = out.bytes.data() + at;
  std::uint8_t* body = reference + long_value::kReference;
  const auto pend = [&]() -> std::vector<std::uint8_t>& {
    if (out.pendingCount == out.pending.size()) out.pending.emplace_back();
    PendingLongValue& pending = out.pending[out.pendingCount++];
    pending.column = position;
    pending.reference = at;
    std::memset(reference, 0, long_value::kReference);
    return pending.stored;
  };

  std::span<const std::uint8_t> stored;
  if (field.value == nullptr) {
    if (field.raw.size() < long_value::kReference) {  // another program's way to write an empty one
      long_value::PutInlineReference(reference, 0);
      return long_value::kReference;
    }
    if (long_value::Outside(field.raw)) {
      std::memcpy(reference, field.raw.data(), long_value::kReference);
      return long_value::kReference;
    }
    const std::size_t length = Get32(field.raw.data()) & long_value::kLengthBits;
    stored = field.raw.subspan(long_value::kReference);
    stored = stored.first(std::min(stored.size(), length));
  } else if (column.Is(ColumnType::kMemo)) {
    const std::u16string& text = As<std::u16string>(*field.value);
    const bool mayCompress = (column.moreFlags & StoredColumn::kCompressed) != 0;
    if (EncodedTextBound(text) <= mostInline) {
      const std::size_t size = EncodeText(text, mayCompress, body);
      long_value::PutInlineReference(reference, size);
      return long_value::kReference + size;
    }
    std::uint8_t small[4 * long_value::kMostInline];
    if (EncodedTextBound(text) <= sizeof small) {
      const std::size_t size = EncodeText(text, mayCompress, small);
      if (size <= mostInline) {
        std::memcpy(body, small, size);
        long_value::PutInlineReference(reference, size);
        return long_value::kReference + size;
      }
      pend().assign(small, small + size);
      return long_value::kReference;
    }
    std::vector<std::uint8_t>& buffer = pend();
    buffer.resize(EncodedTextBound(text));
    buffer.resize(EncodeText(text, mayCompress, buffer.data()));
    return long_value::kReference;
  } else {
    stored = As<Bytes>(*field.value);
  }
  if (stored.size() > mostInline && !stored.empty()) {
    pend().assign(stored.begin(), stored.end());
    return long_value::kReference;
  }
  if (!stored.empty()) std::memcpy(body, stored.data(), stored.size());
  long_value::PutInlineReference(reference, stored.size());
  return long_value::kReference + stored.size();
}

void DecodeField(const StoredColumn& column, std::span<const std::uint8_t> bytes, Value& value,
                 std::uint32_t page) {
  const auto need = [&](std::size_t size) {
    if (bytes.size() < size) ThrowCorrupt("a value is cut off", page);
    return bytes.data();
  };
  switch (static_cast<ColumnType>(column.type)) {
    case ColumnType::kByte: value = std::int32_t{*need(1)}; return;
    case ColumnType::kInteger: value = std::int32_t{static_cast<std::int16_t>(Get16(need(2)))}; return;
    case ColumnType::kLong: value = static_cast<std::int32_t>(Get32(need(4))); return;
    case ColumnType::kCurrency: value = static_cast<std::int64_t>(Get64(need(8))); return;
    case ColumnType::kSingle: value = double{std::bit_cast<float>(Get32(need(4)))}; return;
    case ColumnType::kDouble:
    case ColumnType::kDate: value = std::bit_cast<double>(Get64(need(8))); return;
    case ColumnType::kText:
    case ColumnType::kMemo: {
      auto* text = std::get_if<std::u16string>(&value);
      if (text == nullptr) text = &value.emplace<std::u16string>();
      DecodeText(bytes, *text, page);
      return;
    }
    default: {
      auto* out = std::get_if<Bytes>(&value);
      if (out == nullptr) out = &value.emplace<Bytes>();
      out->assign(bytes.begin(), bytes.end());
      return;
    }
  }
}

}  // namespace kestrelon::jet
