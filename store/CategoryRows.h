#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/Ado.h"
#include "ui/win/TreeView.h"

namespace kestrelon::store {

// What stands in the table as the parent of a top-level category.
inline constexpr wchar_t kNoParent[] = L"0_";

// A category as TreeviewTable has it.
struct CategoryRow {
  std::wstring parent, key, text;
  bool operator==(const CategoryRow&) const = default;
};

// Calls `visit` for every node, parents before children and siblings in order. It goes along the links and
// does not call itself: a tree may be deeper than the stack.
template <class Visit>
void ForEachNode(const win::TreeView& tree, Visit visit) {
  const win::TreeNode* node = tree.FirstRoot();
  while (node != nullptr) {
    visit(*node);
    if (node->Child() != nullptr) {
      node = node->Child();
      continue;
    }
    while (node != nullptr && node->Next() == nullptr) node = node->Parent();
    if (node != nullptr) node = node->Next();
  }
}

// The rows that the tree control's nodes give, in that order.
std::vector<CategoryRow> RowsOfTree(const win::TreeView& tree);

// The rows of TreeviewTable, ordered by `i`, without the blanks at the ends of their texts. Throws
// win::ControlError for a row whose parent does not stand before it or whose key is taken: the tree control
// would refuse it.
std::vector<CategoryRow> ReadCategoryRows(jet::Connection& connection);
// Replaces the rows of TreeviewTable. The connection is open. Throws jet::Error.
void WriteCategoryRows(jet::Connection& connection, const std::vector<CategoryRow>& rows);

}  // namespace kestrelon::store
