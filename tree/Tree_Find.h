#pragma once

#include <memory>
#include <string>

#include "ui/FindWindow.h"
#include "ui/win/MainParts.h"

namespace kestrelon::tree {

// The window that searches the categories for one whose name contains a text, without regard to case. They
// are searched in the order in which they were added to the tree, from the one after the selected one (the
// first when none is) to the last. A match becomes the current category, as if it had been clicked, and is
// scrolled into view: what the user does next goes where the tree says.
//
// When there is no match the same is done with the first category, so that the next search starts behind it:
// that one is passed over then.
class Tree_Find : public ui::FindWindow {
 public:
  explicit Tree_Find(win::MainParts& parts) : FindWindow(L"Tree_Find", parts, parts.treeFindShown) {}

 protected:
  void CreateControls() override;
  void Search(const std::wstring& text) override;

 private:
  void Show(win::TreeNode& node);
};

// What the tree's events share: the search window, made when it is first opened.
struct TreeHelpers {
  std::unique_ptr<Tree_Find> find;
};

// Ctrl+F in the tree, and a button of the toolbar. Does nothing while the window is open.
void OpenTreeFind(win::MainParts& parts, TreeHelpers& helpers);

}  // namespace kestrelon::tree
