#pragma once

#include "app/base/Win32.h"

#include <objidl.h>

#include "ui/win/MainParts.h"

namespace kestrelon::imports {

// Files dragged from the file manager over the item list and dropped on it. Points are client pixels; results
// are DROPEFFECT_….

// Copy while the data holds a list of files, else none.
DWORD ListView1_OLEDragOver(win::MainParts& parts, IDataObject& data, POINT point);
// Adds the dropped files to the current category, all with one insertion time and numbers of 32 bits. Plain
// folders are left out. Rows of the list that come back to it are not added again. A failure shows the box
// "ListView1_OLEDragDrop Error:"; the files before it stay.
DWORD ListView1_OLEDragDrop(win::MainParts& parts, IDataObject& data, POINT point);

}  // namespace kestrelon::imports
