#pragma once

#include "ui/win/MainParts.h"

namespace kestrelon::tree {

struct TreeHelpers;

// The pictures of every category, counted from 1 in the tree's image list.
inline constexpr int kCategoryImage = 1;
inline constexpr int kSelectedCategoryImage = 2;

// The five insertion commands. Each adds a category named "New Category " beside or below the selected one,
// selects it, shows it as the current category, empties the item list and starts editing its name. Without a
// selected category they add nothing, but AddLastSibling, which then adds a top-level category. A failed
// insertion shows nothing.
void AddFirstSibling(win::MainParts& parts);
void AddPreviousSibling(win::MainParts& parts);
void AddNextSibling(win::MainParts& parts);
void AddLastSibling(win::MainParts& parts);
// In an empty tree the same as AddLastSibling. Without a current category it says so and adds nothing.
void AddChild(win::MainParts& parts);

// Starts editing the current category's name in place: F2, and a button of the toolbar.
void EditSelectedCaption(win::MainParts& parts);

// What happens in the tree. Points are client pixels; button 1 is left, 2 right; shift 1, 2, 4 Shift, Ctrl,
// Alt.
void TreeView1_NodeClick(win::MainParts& parts, win::TreeNode& node);
// False keeps the old name: the new one without its outer blanks is empty or longer than 254 characters.
bool TreeView1_AfterLabelEdit(win::MainParts& parts, const std::wstring& newText);
void TreeView1_KeyDown(win::MainParts& parts, TreeHelpers& helpers, int keyCode, int shift);
void TreeView1_MouseDown(win::MainParts& parts, int button, int shift, POINT point);
void TreeView1_MouseUp(win::MainParts& parts, int button, int shift, POINT point);

// No category is current: the list is emptied and the status bar says so.
void ShowNoCategory(win::MainParts& parts);

}  // namespace kestrelon::tree
