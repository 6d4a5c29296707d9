#pragma once

#include <functional>
#include <string>

#include "store/SharedConnection.h"
#include "ui/win/MainParts.h"

namespace kestrelon::tree {

// Deletes the selected category with everything below it, after a question: the items from the database (the
// files themselves stay), then the categories from the tree. No category is current afterwards. A failure
// shows the box "meu_Remove_Click Error:"; what was deleted by then stays deleted, and the category stays in
// the tree and is shown with the items that are left.
void meu_Remove_Click(win::MainParts& parts);

// What one deletion carries from category to category.
struct Deletion {
  store::SharedConnection& connection;                 // open
  std::function<void(const std::wstring& step)> show;  // after each category
};
// Deletes the items of `node`, of its subtree (`descend`) and of its following siblings with theirs
// (`followSiblings`): a category before its children, children in their order. Every category passed takes
// the check state. Nothing happens for a null node. Throws jet::Error.
void DeleteNode(Deletion& deletion, win::TreeNode* node, bool checkedState, bool followSiblings,
                bool descend);

}  // namespace kestrelon::tree
