#pragma once

#include "app/base/Win32.h"

#include "ui/win/Handles.h"

namespace kestrelon::win {

// What the user sees and the system does of the drag of a tree node, for as long as the object lives: the
// tree has the mouse, a picture is at the pointer, and a timer ticks for the scrolling near the edges. Points
// are client pixels of the tree.
class NodeDrag {
 public:
  static constexpr UINT_PTR kTimer = 0x4E44;  // none of the control's own

  // Without a picture, or while another picture is being dragged, none is shown. `hotSpot` is the point of
  // the picture, in its pixels, that stays at the pointer. Throws std::system_error.
  NodeDrag(HWND tree, UniqueImageList picture, POINT hotSpot, POINT pointer);
  ~NodeDrag();
  NodeDrag(const NodeDrag&) = delete;
  NodeDrag& operator=(const NodeDrag&) = delete;

  // The picture saves what it covers and puts it back: it must be hidden while the tree paints or scrolls.
  void HidePicture();
  void ShowPicture();
  bool PictureShown() const { return shown_; }
  void MovePicture(POINT pointer);

 private:
  POINT InWindow(POINT client) const;
  HWND tree_;
  UniqueImageList picture_;
  bool pictured_ = false, shown_ = false;
};

}  // namespace kestrelon::win
