#pragma once

#include "app/base/Win32.h"

#include <commctrl.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace kestrelon::win {

// A list with a check box in front of every row, one column without a header, for dialogs. Rows count from 0.
// The user ticks with the mouse or with Space.
class CheckList {
 public:
  struct Events {
    std::function<void(std::size_t row)>
        itemClick;  // clicked, or reached with the keyboard; not by our own changes
  };

  CheckList() = default;
  ~CheckList();
  CheckList(const CheckList&) = delete;
  CheckList& operator=(const CheckList&) = delete;

  void Create(HWND parent, UINT id);
  HWND Handle() const { return handle_; }
  Events events;

  std::size_t Count() const { return texts_.size(); }
  const std::wstring& Text(std::size_t row) const { return texts_.at(row); }
  // Replaces all rows; none is ticked. The column is as wide as the widest text and at least the control.
  // No row is selected then.
  void SetRows(std::vector<std::wstring> texts);
  void Clear() { SetRows({}); }
  bool Ticked(std::size_t row) const;
  void SetTicked(std::size_t row, bool ticked);
  void SetAllTicked(bool ticked);
  std::vector<std::size_t> TickedRows() const;  // ascending
  // As SetRows with the others, none of them ticked; does nothing where none is to go.
  void RemoveRows(const std::vector<std::size_t>& ascendingRows);

  LRESULT OnNotify(const NMHDR& header);  // WM_NOTIFY of this control

 private:
  static LRESULT CALLBACK SubclassProcedure(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);
  LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const;  // to the control's own procedure
  template <class T>
  LRESULT Send(UINT message, WPARAM wParam, T* parameter) const {
    return Send(message, wParam, reinterpret_cast<LPARAM>(parameter));
  }
  void FitColumn();
  void TellClick(int row);  // of the control, -1 for none

  HWND handle_ = nullptr;
  WNDPROC procedure_ = nullptr;  // the control's own
  std::vector<std::wstring> texts_;
  bool quiet_ = false;     // our own changes raise no event
  bool pressing_ = false;  // what the press of a button selects is told by its click
};

}  // namespace kestrelon::win
