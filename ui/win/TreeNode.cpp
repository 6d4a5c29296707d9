#include "ui/win/TreeView.h"

namespace kestrelon::win {

TreeNode& TreeNode::FirstSibling() { return parent_ != nullptr ? *parent_->firstChild_ : *view_->firstRoot_; }

TreeNode& TreeNode::LastSibling() { return parent_ != nullptr ? *parent_->lastChild_ : *view_->lastRoot_; }

std::wstring TreeNode::FullPath() const {
  std::vector<const TreeNode*> upwards;
  for (const TreeNode* node = this; node != nullptr; node = node->parent_) upwards.push_back(node);
  std::wstring path;
  for (auto node = upwards.rbegin(); node != upwards.rend(); ++node) {
    if (node != upwards.rbegin()) path += L'\\';
    path += (*node)->text_;
  }
  return path;
}

}  // namespace kestrelon::win
