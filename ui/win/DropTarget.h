#pragma once

#include "app/base/Win32.h"

#include <oleidl.h>

#include <functional>

#include "ui/win/Handles.h"

namespace kestrelon::win {

// Makes a control a target of OLE drag and drop. Points are client pixels; effects are DROPEFFECT_…, and what
// the source does not allow is taken away from them. A control that is disabled, or in a window that is,
// takes nothing: no event is raised and the effect is none; when that comes about under a drag, the drag has
// left it. An exception of an event goes to the last resort; the effect is none then.
class DropTarget {
 public:
  struct Events {
    std::function<bool()> takes;  // false: as if it were disabled
    // The pointer came in or moved, or keys changed: the effect that a drop here would have.
    std::function<DWORD(IDataObject& data, POINT client)> dragOver;
    std::function<void()> dragLeave;  // it went, or the drag was given up
    // Released here: the effect that the drop had.
    std::function<DWORD(IDataObject& data, POINT client)> drop;
  };

  DropTarget() = default;
  ~DropTarget();  // revokes
  DropTarget(const DropTarget&) = delete;
  DropTarget& operator=(const DropTarget&) = delete;

  // OLE must be initialised on this thread. Throws std::system_error.
  void Register(HWND window);
  void Revoke();  // before the window goes; nothing happens when not registered
  // The object that the system calls; for tests. Null when not registered.
  IDropTarget* Object() const;
  Events events;

 private:
  class Target;
  HWND window_ = nullptr;
  Target* target_ = nullptr;  // one reference is ours; the system may keep others longer
};

}  // namespace kestrelon::win
