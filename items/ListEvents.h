#pragma once

#include <memory>
#include <string>
#include <vector>

#include "items/Filelist_Comment.h"
#include "items/ItemTip.h"
#include "items/List_Find.h"
#include "ui/cLVHeaderSortIcons.h"
#include "ui/win/MainParts.h"

namespace kestrelon::items {

// What the list's events share: the header arrows, made at the first sort, the information tip, and the
// comment and the search window, made when they are first opened.
struct ListHelpers {
  std::unique_ptr<ui::cLVHeaderSortIcons> sortIcons;
  ItemTip tip;
  std::unique_ptr<Filelist_Comment> comment;
  std::unique_ptr<List_Find> find;
};

// Columns count from 0 (the icon column); points are client pixels; button 1 is left, 2 right; shift 1, 2, 4
// is Shift, Ctrl, Alt.

// Sorts once by the text of the column. A click on the column that the list is sorted by turns its direction;
// any other column comes back with the direction it had.
void ListView1_ColumnClick(win::MainParts& parts, ListHelpers& helpers, std::size_t column);
void ListView1_DblClick(win::MainParts& parts);
void ListView1_KeyDown(win::MainParts& parts, ListHelpers& helpers, int keyCode, int shift);
void ListView1_MouseUp(win::MainParts& parts, int button, int shift, POINT point);
void ListView1_SelectionChanged(win::MainParts& parts);

// The paths that dragging the selected rows offers, in list order: those whose server answers and whose file
// is there.
std::vector<std::wstring> DraggedPaths(win::MainParts& parts);
// Drags the selected rows out as a list of files, to be copied and never moved. Returns when the drag is
// over. Does nothing when the button was let go of meanwhile.
void ListView1_OLEStartDrag(win::MainParts& parts);
// The end of that drag: neither of its flags is set any more.
void ListView1_OLECompleteDrag(win::MainParts& parts);

// Switches the tip on or off.
void meu_ShowItemInfo_Click(win::MainParts& parts, ListHelpers& helpers);

}  // namespace kestrelon::items
