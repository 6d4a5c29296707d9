#pragma once

#include "app/base/Win32.h"

#include <objidl.h>

#include "ui/win/MainParts.h"

namespace kestrelon::tree {

// Items dragged from the item list, and files dragged in from other programs, over and onto a category.
// Points are client pixels of the tree; the results are effects (DROPEFFECT_…).

// The category under the pointer is highlighted and opened, so that its children can be reached. Copy is
// offered for files and for items, nothing for anything else.
DWORD TreeView1_OLEDragOver(win::MainParts& parts, IDataObject& data, POINT point);
void TreeView1_OLEDragLeave(win::MainParts& parts);
// Items of the list move to the category, and the list shows what stays. Files become new items of it,
// numbered on, with one insertion time; the list is not filled anew for them. A failure shows the box
// "TreeView1_OLEDragDrop Error:" and leaves what was written by then.
DWORD TreeView1_OLEDragDrop(win::MainParts& parts, IDataObject& data, POINT point);

}  // namespace kestrelon::tree
