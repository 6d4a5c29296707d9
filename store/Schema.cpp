#include "store/Schema.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace kestrelon::store {

namespace {

jet::NewColumn Text(std::u16string name, std::uint16_t characters) {
  return {std::move(name), jet::ColumnType::kText, characters, false};
}

jet::NewColumn Memo(std::u16string name) { return {std::move(name), jet::ColumnType::kMemo, 0, false}; }

// Items are added by statements that name no columns: the order is part of the format.
jet::NewTable Items(std::u16string name) {
  return {std::move(name),
          {Text(u"TreeviewNode", 50), Text(u"FileIndex", 50), Text(u"DefineName", 255),
           Text(u"Filename", 255), Memo(u"LocalFile"), Text(u"InsertTime", 50), Memo(u"Comment")},
          u""};
}

}  // namespace

std::vector<jet::NewTable> Schema() {
  return {
      Items(u"FTable"),
      Items(u"FBackup"),
      {u"TreeviewTable",
       {{u"i", jet::ColumnType::kLong, 0, true}, Text(u"parent", 50), Text(u"key", 50), Text(u"text", 255)},
       u"i"}};
}

std::size_t LongestText(std::u16string_view column) {
  constexpr std::size_t kLongestMemo = 65535;
  const std::vector<jet::NewColumn> columns = Schema().front().columns;
  const auto found = std::find_if(columns.begin(), columns.end(),
                                  [&](const jet::NewColumn& candidate) { return candidate.name == column; });
  if (found == columns.end()) throw std::out_of_range("no such column");
  return found->type == jet::ColumnType::kText ? found->characters : kLongestMemo;
}

}  // namespace kestrelon::store
