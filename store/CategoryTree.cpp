// The category tree between the control and TreeviewTable.

#include "app/base/File.h"
#include "store/SharedConnection.h"
#include "store/Store.h"
#include "ui/win/Handles.h"

namespace kestrelon::store {

namespace {

// What stands in the table as the parent of a top-level category.
constexpr wchar_t kNoParent[] = L"0_";
// Pictures of a category, at rest and selected.
constexpr int kImage = 1, kSelectedImage = 2;

// The column holds 255 characters. A name may be longer only by the blanks around it, which loading removes
// anyway.
constexpr std::size_t kLongestText = 255;

void SaveNode(jet::Recordset& rows, std::wstring_view parent, const win::TreeNode& node) {
  rows.AddNew();
  rows.SetField(u"parent", ToEngine(parent));
  rows.SetField(u"key", ToEngine(node.Key()));
  rows.SetField(u"text", ToEngine(node.Text().size() > kLongestText ? Trim(node.Text()) : node.Text()));
  rows.Update();
}

// Everything below `top`, each node before its children and these before its next sibling. It goes along the
// links and does not call itself: a tree may be deeper than the stack.
void SaveTreeChildren(jet::Recordset& rows, const win::TreeNode& top) {
  const win::TreeNode* node = &top;
  for (;;) {
    if (node->Child() != nullptr) {
      node = node->Child();
    } else {
      while (node != &top && node->Next() == nullptr) node = node->Parent();
      if (node == &top) return;
      node = node->Next();
    }
    SaveNode(rows, node->Parent()->Key(), *node);
  }
}

// The text without the blanks at its ends; it lives as long as the recordset's text.
std::wstring_view TrimmedView(std::u16string_view text) {
  std::wstring_view view(reinterpret_cast<const wchar_t*>(text.data()), text.size());
  const std::size_t first = view.find_first_not_of(L' ');
  if (first == std::wstring_view::npos) return {};
  return view.substr(first, view.find_last_not_of(L' ') - first + 1);
}

// The node of a parent's key. Rows stand depth first, so it is mostly the node added last or that one's
// parent.
win::TreeNode* ParentNode(win::TreeView& tree, std::wstring_view key, win::TreeNode* last) {
  if (last != nullptr && last->Key() == key) return last;
  if (last != nullptr && last->Parent() != nullptr && last->Parent()->Key() == key) return last->Parent();
  return tree.Find(std::wstring(key));
}

}  // namespace

void SaveTree(win::MainParts& parts) {
  Opened database(parts.connection);
  database->Execute(L"DELETE * FROM TreeviewTable");
  jet::Recordset rows;
  rows.Open(u"SELECT * FROM TreeviewTable", database->Ado());
  for (const win::TreeNode* node = parts.TreeView1.FirstRoot(); node != nullptr; node = node->Next()) {
    SaveNode(rows, kNoParent, *node);
    SaveTreeChildren(rows, *node);
  }
  rows.Close();
  database.Close();
}

void LoadTree(win::MainParts& parts) {
  win::TreeView& tree = parts.TreeView1;
  const win::RedrawOff redrawOff(tree.Handle());
  ShowEmptyTree(parts);

  Opened database(parts.connection);
  jet::Recordset rows;
  rows.Open(u"SELECT * FROM TreeviewTable order by i", database->Ado());
  const std::size_t parentField = rows.FieldIndex(u"parent"), keyField = rows.FieldIndex(u"key"),
                    textField = rows.FieldIndex(u"text");
  win::TreeNode* last = nullptr;  // added
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    const std::wstring_view parent = TrimmedView(rows.Text(parentField));
    const std::wstring key(TrimmedView(rows.Text(keyField)));
    const std::wstring text(TrimmedView(rows.Text(textField)));
    if (parent == kNoParent) {
      last = &tree.Add(nullptr, win::Relationship::kLast, key, text, kImage, kSelectedImage);
      continue;
    }
    win::TreeNode* const parentNode = ParentNode(tree, parent, last);
    if (parentNode == nullptr) throw win::ControlError(win::kElementNotFound, "Element not found");
    last = &tree.Add(parentNode, win::Relationship::kChild, key, text, kImage, kSelectedImage);
  }
  rows.Close();
  database.Close();
}

void ShowEmptyTree(win::MainParts& parts) {
  parts.TreeView1.Clear();
  parts.ListView1.Clear();  // no category is current, so none has items to show
  win::SetCurrentCategory(parts, L"", L"");
  win::ShowObjectCount(parts);
}

}  // namespace kestrelon::store
