#include "store/CategoryRows.h"

#include <unordered_set>

#include "app/base/File.h"
#include "store/SharedConnection.h"

namespace kestrelon::store {
namespace {

// The column holds 255 characters. A name may be longer only by the blanks around it, which loading removes
// anyway.
constexpr std::size_t kLongestText = 255;

std::wstring Trimmed(std::u16string_view text) {
  return Trim({reinterpret_cast<const wchar_t*>(text.data()), text.size()});
}

}  // namespace

std::vector<CategoryRow> RowsOfTree(const win::TreeView& tree) {
  std::vector<CategoryRow> rows;
  rows.reserve(tree.Count());
  ForEachNode(tree, [&](const win::TreeNode& node) {
    rows.push_back({node.Parent() != nullptr ? node.Parent()->Key() : kNoParent, node.Key(), node.Text()});
  });
  return rows;
}

std::vector<CategoryRow> ReadCategoryRows(jet::Connection& connection) {
  jet::Recordset table;
  table.Open(u"SELECT * FROM TreeviewTable order by i", connection);
  const std::size_t parent = table.FieldIndex(u"parent"), key = table.FieldIndex(u"key"),
                    text = table.FieldIndex(u"text");
  std::vector<CategoryRow> rows;
  rows.reserve(table.RecordCount());  // the keys stay where they are
  std::unordered_set<std::wstring_view> keys;
  for (; !table.EndOfFile(); table.MoveNext()) {
    rows.push_back({Trimmed(table.Text(parent)), Trimmed(table.Text(key)), Trimmed(table.Text(text))});
    const CategoryRow& row = rows.back();
    if (row.parent != kNoParent && !keys.contains(row.parent))
      throw win::ControlError(win::kElementNotFound, "Element not found");
    if (!row.key.empty() && !keys.insert(row.key).second)
      throw win::ControlError(win::kKeyNotUnique, "Key is not unique in collection");
  }
  table.Close();
  return rows;
}

void WriteCategoryRows(jet::Connection& connection, const std::vector<CategoryRow>& rows) {
  connection.Execute(u"DELETE * FROM TreeviewTable");
  jet::Recordset table;
  table.Open(u"SELECT * FROM TreeviewTable", connection);
  for (const CategoryRow& row : rows) {
    table.AddNew();
    table.SetField(u"parent", ToEngine(row.parent));
    table.SetField(u"key", ToEngine(row.key));
    table.SetField(u"text", ToEngine(row.text.size() > kLongestText ? Trim(row.text) : row.text));
    table.Update();
  }
  table.Close();
}

}  // namespace kestrelon::store
