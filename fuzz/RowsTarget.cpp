// Rows and long values, without a file around them. Page 0 of the input says which columns the table has
// (RowsInput.h), page 1 is a page of its rows, the pages after it hold long values. Every field is read by
// its value, by its text and by its bytes, and each row is built anew from both.

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <optional>

#include "fuzz/PageMutator.h"
#include "fuzz/RowsInput.h"
#include "fuzz/Target.h"
#include "jet/catalog/Layout.h"
#include "jet/database/Table.h"
#include "jet/page/DataPage.h"
#include "jet/page/UsageMap.h"
#include "jet/row/LongValue.h"
#include "jet/row/RowCodec.h"
#include "jet/sql/Convert.h"
#include "jet/table/TableInternal.h"

namespace kestrelon::fuzz {
namespace {

using namespace jet;

// Two values are the same; a number that is none is the same as any other such.
bool Same(const Value& a, const Value& b) {
  const auto *x = std::get_if<double>(&a), *y = std::get_if<double>(&b);
  if (x != nullptr && y != nullptr && std::isnan(*x) && std::isnan(*y)) return true;
  return a == b;
}

class Rows {
 public:
  Rows(Input input) : input_(input) {
    const std::size_t pages = input.size() / kPageSize;
    MapRows maps(pager_);
    TableDef def = rows_input::Definition(input.first(kPageSize));
    def.ownedMap = maps.Add();  // the maps lie on page 2
    def.freeMap = maps.Add();
    const std::uint32_t longOwned = maps.Add(), longFree = maps.Add();
    for (const StoredColumn& column : def.columns) {
      if (column.LongValue()) def.longValues.push_back({column.number, longOwned, longFree});
    }
    for (std::size_t page = 1; page < pages; ++page) {
      const std::uint32_t number = pager_.Allocate();
      std::uint8_t* bytes = pager_.Write(number);
      std::copy_n(input.begin() + static_cast<std::ptrdiff_t>(page * kPageSize), kPageSize, bytes);
      UsageMap(pager_, page == 1 ? def.ownedMap : longOwned).Add(number);
    }
    def.page = pager_.Allocate();
    Put32(pager_.Write(kFragmentShift + 1) + 4, def.page);  // the rows belong to this table
    WriteTableDef(pager_, def);
    table_.emplace(pager_, u"t", ReadTableDef(pager_, def.page));
    encoder_.emplace(table_->def, table_->stored);
  }

  void ReadAll() {
    std::vector<RowId> rows;
    Try([&] {
      for (Cursor cursor(*table_); cursor.Next();) {
        if (!rows.empty() && rows.back() >= cursor.Row()) throw Finding("two rows have one address");
        rows.push_back(cursor.Row());
        for (std::size_t column = 0; column < table_->columns.size(); ++column)
          Try([&] { ReadColumn(cursor, column); });
      }
    });
    for (const RowId row : rows) Try([&] { Rebuild(FindRow(*table_, row)); });
    // Addresses as an index or a chain may give them.
    for (const std::uint32_t row : {0x300u, 0x301u, 0x3FFu, 0x400u, 0xFFFFFF00u})
      Try([&] { Rebuild(FindRow(*table_, RowId{row})); });
  }

 private:
  void ReadColumn(const Cursor& cursor, std::size_t column) {
    Value value;
    cursor.Read(column, value);
    sql::ToText(value, table_->columns[column].type);
    if (!table_->stored[column].Text()) return;
    std::u16string text;
    const bool present = cursor.ReadText(column, text);
    if (present == IsNull(value) || (present && std::get<std::u16string>(value) != text))
      throw Finding("a text is read in two ways");
  }

  // Pages lie one behind the other in memory, so that a sanitizer would not notice.
  static void ExpectWithin(Input whole, Input part, const char* what) {
    const std::less_equal<> notAfter;
    if (!part.empty() &&
        !(notAfter(whole.data(), part.data()) &&
          notAfter(part.data() + part.size(), whole.data() + whole.size()) && part.size() <= whole.size()))
      throw Finding(what);
  }

  void ExpectLength(std::size_t position, const RowView& row, Input field) {
    if (!long_value::Outside(field)) return;
    std::vector<std::uint8_t> buffer;
    const auto stored = StoredField(*table_, row, position, buffer);
    if (stored->size() != (Get32(field.data()) & long_value::kLengthBits))
      throw Finding("a long value has another length than its reference says");
  }

  void Rebuild(const RowPlace& place) {
    ExpectWithin({pager_.Read(place.page), kPageSize}, {place.bytes, place.size},
                 "a row lies outside its page");
    const RowView row(place.bytes, place.size, table_->HasVariableColumns(), place.page);
    const std::size_t columns = table_->stored.size();
    std::vector<Field> raw(columns), decoded(columns);
    std::vector<Value> values(columns);
    for (std::size_t position = 0; position < columns; ++position) {
      const StoredColumn& column = table_->stored[position];
      raw[position].present = row.Has(column.number);
      if (raw[position].present && !column.Is(ColumnType::kBoolean)) raw[position].raw = row.Field(column);
      ExpectWithin(row.Bytes(), raw[position].raw, "a field lies outside its row");
      if (column.LongValue()) ExpectLength(position, row, raw[position].raw);
      ReadField(*table_, row, position, values[position]);
      decoded[position].value = &values[position];
      if (column.LongValue() && raw[position].present)
        long_value::Pieces(pager_, table_->LongValuesOf(position), raw[position].raw);
    }
    EncodedRow out;
    Try([&] { encoder_->Encode(raw, out); });
    encoder_->Encode(decoded, out);
    for (std::size_t i = 0; i < out.pendingCount; ++i) {
      const PendingLongValue& pending = out.pending[i];
      long_value::Write(pager_, table_->LongValuesOf(pending.column), pending.stored,
                        out.bytes.data() + pending.reference);
    }
    if (!rows_input::PlacesAreApart(table_->def)) return;
    const RowView again(out.bytes.data(), out.size, table_->HasVariableColumns(), 0);
    for (std::size_t position = 0; position < columns; ++position) {
      if (table_->stored[position].Fixed() && table_->stored[position].Text()) continue;  // padded
      Value value;
      ReadField(*table_, again, position, value);
      if (!Same(value, values[position])) throw Finding("a row that was written is read as another");
    }
  }

  Input input_;
  Pager pager_;
  std::optional<TableInternal> table_;
  std::optional<RowEncoder> encoder_;
};

}  // namespace

void RunRows(Input input) {
  if (input.size() < 2 * kPageSize) return;
  Try([&] { Rows(input).ReadAll(); });
}

}  // namespace kestrelon::fuzz
