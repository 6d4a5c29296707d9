#pragma once

#include "ui/win/MainParts.h"

namespace kestrelon::tree {

// Moving a category, with everything below it, under another one by dragging it with the left button. Only
// while "Enabled drag and drop" is checked. Points are client pixels of the tree.

// Starts the drag: a category is under the pointer and the left button alone is down.
void TreeView1_MouseMove(win::MainParts& parts, int button, int shift, POINT point);
// Highlights the category under the pointer, none over empty space.
void TreeView1_DragOver(win::MainParts& parts, POINT point);
// Makes the dragged category the last child of the highlighted one. On itself or below itself it stays where
// it is. There is no place to drop on that would make it a top-level category.
void TreeView1_DragDrop(win::MainParts& parts);
// The drag ended elsewhere, or was given up: nothing moves.
void TreeView1_DragCancel(win::MainParts& parts);

}  // namespace kestrelon::tree
