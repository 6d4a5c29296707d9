#pragma once

#include "app/base/Win32.h"

#include <commctrl.h>

#include <utility>

namespace kestrelon::win {

// Owner of one Windows handle; move-only; a null handle means "nothing owned".
template <class Handle, auto Close>
class Unique {
 public:
  explicit Unique(Handle handle = {}) noexcept : handle_(handle) {}
  Unique(Unique&& other) noexcept : handle_(other.release()) {}
  Unique& operator=(Unique&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~Unique() { reset(); }
  Handle get() const noexcept { return handle_; }
  Handle release() noexcept { return std::exchange(handle_, Handle{}); }
  void reset(Handle handle = {}) noexcept {
    if (Handle old = std::exchange(handle_, handle)) Close(old);
  }
  explicit operator bool() const noexcept { return handle_ != Handle{}; }

 private:
  Handle handle_;
};

template <class T>
void ReleaseCom(T* object) noexcept {
  object->Release();
}

template <class Handle>
void DeleteGdi(Handle handle) noexcept {
  ::DeleteObject(handle);
}

using UniqueMenu = Unique<HMENU, ::DestroyMenu>;
using UniqueImageList = Unique<HIMAGELIST, ::ImageList_Destroy>;
using UniqueFont = Unique<HFONT, &DeleteGdi<HFONT>>;
using UniqueIcon = Unique<HICON, ::DestroyIcon>;
using UniqueBitmap = Unique<HBITMAP, &DeleteGdi<HBITMAP>>;
using UniqueDc = Unique<HDC, ::DeleteDC>;
using UniqueBrush = Unique<HBRUSH, &DeleteGdi<HBRUSH>>;
template <class T>
using ComPtr = Unique<T*, &ReleaseCom<T>>;

// Runs a function on the way out of a scope.
template <class Function>
class Finally {
 public:
  explicit Finally(Function function) : function_(std::move(function)) {}
  ~Finally() { function_(); }
  Finally(const Finally&) = delete;
  Finally& operator=(const Finally&) = delete;

 private:
  Function function_;
};

// Sets a flag for a scope.
class ScopedFlag {
 public:
  explicit ScopedFlag(bool& flag) : flag_(flag), before_(std::exchange(flag, true)) {}
  ~ScopedFlag() { flag_ = before_; }
  ScopedFlag(const ScopedFlag&) = delete;
  ScopedFlag& operator=(const ScopedFlag&) = delete;

 private:
  bool& flag_;
  bool before_;
};

// Switches a window's redrawing off, and on again with one repaint of everything. Nests: the outermost one
// counts.
class RedrawOff {
 public:
  explicit RedrawOff(HWND window) : window_(window) {
    const INT_PTR depth = reinterpret_cast<INT_PTR>(::GetPropW(window_, kDepth));
    ::SetPropW(window_, kDepth, reinterpret_cast<HANDLE>(depth + 1));
    if (depth == 0) ::SendMessageW(window_, WM_SETREDRAW, FALSE, 0);
  }
  ~RedrawOff() {
    const INT_PTR depth = reinterpret_cast<INT_PTR>(::GetPropW(window_, kDepth)) - 1;
    if (depth > 0) {
      ::SetPropW(window_, kDepth, reinterpret_cast<HANDLE>(depth));
      return;
    }
    ::RemovePropW(window_, kDepth);
    ::SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
    ::InvalidateRect(window_, nullptr, TRUE);
  }
  RedrawOff(const RedrawOff&) = delete;
  RedrawOff& operator=(const RedrawOff&) = delete;

 private:
  static constexpr const wchar_t* kDepth = L"KestrelonRedrawOff";
  HWND window_;
};

}  // namespace kestrelon::win
