// The category tree between the control and TreeviewTable.

#include "store/CategoryRows.h"
#include "store/SharedConnection.h"
#include "store/Store.h"
#include "ui/win/Handles.h"

namespace kestrelon::store {

namespace {

// Pictures of a category, at rest and selected.
constexpr int kImage = 1, kSelectedImage = 2;

// The node of a parent's key. Rows stand depth first, so it is mostly the node added last or that one's
// parent.
win::TreeNode* ParentNode(win::TreeView& tree, const std::wstring& key, win::TreeNode* last) {
  if (last != nullptr && last->Key() == key) return last;
  if (last != nullptr && last->Parent() != nullptr && last->Parent()->Key() == key) return last->Parent();
  return tree.Find(key);
}

}  // namespace

void SaveTree(win::MainParts& parts) {
  Opened database(parts.connection);
  WriteCategoryRows(database->Ado(), RowsOfTree(parts.TreeView1));
  database.Close();
}

void LoadTree(win::MainParts& parts) {
  Opened database(parts.connection);
  const std::vector<CategoryRow> rows = ReadCategoryRows(database->Ado());
  database.Close();
  ShowTree(parts, rows);
}

void ShowTree(win::MainParts& parts, const std::vector<CategoryRow>& rows) {
  win::TreeView& tree = parts.TreeView1;
  const win::RedrawOff redrawOff(tree.Handle());
  ShowEmptyTree(parts);
  win::TreeNode* last = nullptr;  // added
  for (const CategoryRow& row : rows) {
    const bool top = row.parent == kNoParent;
    win::TreeNode* const parent = top ? nullptr : ParentNode(tree, row.parent, last);
    if (!top && parent == nullptr) throw win::ControlError(win::kElementNotFound, "Element not found");
    last = &tree.Add(parent, top ? win::Relationship::kLast : win::Relationship::kChild, row.key, row.text,
                     kImage, kSelectedImage);
  }
}

void ShowEmptyTree(win::MainParts& parts) {
  parts.TreeView1.Clear();
  parts.ListView1.Clear();  // no category is current, so none has items to show
  win::SetCurrentCategory(parts, L"", L"");
  win::ShowObjectCount(parts);
}

}  // namespace kestrelon::store
