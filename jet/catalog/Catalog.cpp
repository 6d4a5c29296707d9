#include "jet/catalog/Catalog.h"

#include <algorithm>
#include <optional>

#include "jet/base/Bytes.h"
#include "jet/table/Cursor.h"
#include "jet/table/TableInternal.h"

// MSysObjects: one row for each object of the file.
//
//   COLUMN  TYPE     MEANING
//   Id      long     for a table the page of its definition
//   Name    text
//   Type    integer  1 local table, 2 database, 3 container, 5 query, 6 linked table, 8 relationship
//   Flags   long     80000000h engine table, 2 hidden helper table of Access, 8 hidden

namespace kestrelon::jet {
namespace {

std::size_t PositionOf(const TableInternal& table, std::u16string_view name) {
  for (std::size_t position = 0; position < table.columns.size(); ++position) {
    if (EqualNames(table.columns[position].name, name)) return position;
  }
  ThrowCorrupt("the catalog lacks a column", table.def.page);
}

std::int32_t NumberIn(const Cursor& cursor, std::size_t column) {
  Value value;
  cursor.Read(column, value);
  const auto* number = std::get_if<std::int32_t>(&value);
  return number == nullptr ? 0 : *number;
}

char16_t Fold(char16_t c) {
  if (c >= u'a' && c <= u'z') return static_cast<char16_t>(c - 0x20);
  if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return static_cast<char16_t>(c - 0x20);
  if ((c >= 0x3B1 && c <= 0x3C9 && c != 0x3C2) || (c >= 0x430 && c <= 0x44F))
    return static_cast<char16_t>(c - 0x20);
  if (c >= 0x450 && c <= 0x45F) return static_cast<char16_t>(c - 0x50);
  return c;
}

}  // namespace

bool EqualNames(std::u16string_view a, std::u16string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char16_t left, char16_t right) { return Fold(left) == Fold(right); });
}

void Catalog::Read(const TableInternal& objects) {
  objects_.clear();
  const std::size_t id = PositionOf(objects, u"Id"), name = PositionOf(objects, u"Name"),
                    type = PositionOf(objects, u"Type"), flags = PositionOf(objects, u"Flags");
  if (objects.columns[name].type != ColumnType::kText)
    ThrowCorrupt("the catalog has no names", objects.def.page);
  for (Cursor cursor(objects); cursor.Next();) {
    CatalogObject object;
    object.id = static_cast<std::uint32_t>(NumberIn(cursor, id));
    object.type = NumberIn(cursor, type);
    object.flags = static_cast<std::uint32_t>(NumberIn(cursor, flags));
    cursor.ReadText(name, object.name);
    objects_.push_back(std::move(object));
  }
  std::stable_sort(objects_.begin(), objects_.end(),
                   [](const CatalogObject& a, const CatalogObject& b) { return a.id < b.id; });
}

std::optional<std::uint32_t> Catalog::MissingEngineTable() const {
  using namespace engine_table;
  for (const std::uint32_t page : {kObjects, kAces, kQueries, kRelationships}) {
    const auto isIt = [page](const CatalogObject& object) {
      return object.LocalTable() && object.id == page;
    };
    if (std::none_of(objects_.begin(), objects_.end(), isIt)) return page;
  }
  return std::nullopt;
}

const CatalogObject* Catalog::FindTable(std::u16string_view name) const {
  for (const CatalogObject& object : objects_) {
    if (object.LocalTable() && EqualNames(object.name, name)) return &object;
  }
  return nullptr;
}

}  // namespace kestrelon::jet
