#pragma once

#include <string>

#include "ui/win/Form.h"
#include "ui/win/MainParts.h"
#include "ui/win/TreeView.h"

namespace kestrelon::tree {

// The dialog in which the user chooses the category that the selected items are moved to. It has a tree of
// its own, with the categories as they are when it opens; no category is chosen at first.
class Changecategory : public win::Form {
 public:
  explicit Changecategory(win::MainParts& parts) : Form(L"Changecategory"), parts_(parts) {}
  ~Changecategory() override { Destroy(); }
  // Makes the window and runs it over `owner` until the items are moved or it is closed.
  void Show(HWND owner);
  win::TreeView& TreeView1() { return TreeView1_; }  // for tests

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
  void OnControl(win::FormControl& control, UINT code) override;

 private:
  void CreateControls();
  void Form_Load();
  void TreeView1_NodeClick(const win::TreeNode& node);
  void Command1_Click(int index);
  bool MoveToSelected();

  win::MainParts& parts_;
  win::TreeView TreeView1_;
};

// Adds every category of `source` to the empty tree `target`, in index order, but none before its parent. The
// pictures are the categories' own.
void CopyCategories(win::TreeView& source, win::TreeView& target);

// Moves the selected items, from the last to the first, to the category of that key and takes their rows out
// of the list, even when it is the category that the list shows: they come back when it is selected again.
// Throws when a statement fails; the items before it are moved then, in the table and in the list alike.
void MoveSelectedItems(win::MainParts& parts, const std::wstring& key);

// Opens the dialog; does nothing while no item is selected.
void meu_Changecategory_Click(win::MainParts& parts);

}  // namespace kestrelon::tree
