#pragma once

#include "app/base/Win32.h"

#include <commctrl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ui/win/Handles.h"
#include "ui/win/MouseButtons.h"

namespace kestrelon::win {

// A row of the item list: five texts (columns 1 to 5; column 0 shows the icon alone) and a tag, in one piece
// of memory, which copies of the row share.
class ListRow {
 public:
  static constexpr std::size_t kColumns = 6;
  using Texts = std::array<std::wstring_view, 5>;
  ListRow() = default;
  // column: 1 to 5; 0 gives the empty text.
  std::wstring_view Text(std::size_t column) const;
  void SetText(std::size_t column, std::wstring_view text);
  std::wstring_view Tag() const;
  void SetTag(std::wstring_view tag);
  // All at once, which costs one allocation.
  void Set(const Texts& texts, std::wstring_view tag);

 private:
  friend class ListRowMaker;
  std::wstring_view Piece(std::size_t index) const;
  void SetPiece(std::size_t index, std::wstring_view text);
  std::shared_ptr<const wchar_t[]> joined_;  // texts 1 to 5, then the tag; perhaps within a larger block
  std::array<std::uint32_t, 6> ends_ = {};   // where each piece ends in joined_
};

// Makes many rows at the cost of few allocations: their texts lie one behind the other in large blocks. A
// block lives as long as one of its rows.
class ListRowMaker {
 public:
  // joined: texts 1 to 5 and the tag, one behind the other; ends: where each of them ends in it.
  ListRow Make(std::wstring_view joined, const std::array<std::uint32_t, ListRow::kColumns>& ends);

 private:
  std::shared_ptr<wchar_t[]> block_;
  std::size_t used_ = 0, size_ = 0;  // UTF-16 units
};

// The item list: a virtual report list over a vector of rows. Rows count from 0 here; columns from 0 (the
// icon column).
class ListView {
 public:
  // shift: 1 Shift, 2 Ctrl, 4 Alt; button: 1 left, 2 right; points are client pixels.
  struct Events {
    std::function<void(std::size_t column)> columnClick;
    // The set of selected rows may have changed: once per user action, never for our own changes.
    std::function<void()> selectionChanged;
    std::function<void()> doubleClick;
    std::function<void(int keyCode, int shift)> keyDown;
    std::function<void(int button, int shift, POINT)> mouseDown, mouseMove, mouseUp;
    std::function<void()> mouseLeave;
    std::function<void()> beginDrag;  // the user drags selected rows with the left button
    std::function<void()> gotFocus;
  };

  ListView() = default;
  ~ListView();
  ListView(const ListView&) = delete;
  ListView& operator=(const ListView&) = delete;

  void Create(HWND parent, UINT id);
  HWND Handle() const { return handle_; }
  Events events;

  // Columns. Widths are pixels of the control's DPI.
  void AddColumn(const std::wstring& text, int widthPixels, bool fixedWidth = false);
  std::size_t ColumnCount() const;
  std::wstring ColumnText(std::size_t column) const;
  void SetColumnText(std::size_t column, const std::wstring& text);
  int ColumnWidth(std::size_t column) const;
  void SetColumnWidth(std::size_t column, int pixels);
  // The header's tag: 0 ascending, -1 descending; a header never clicked has 0.
  int HeaderTag(std::size_t column) const { return headerTags_[column]; }
  void SetHeaderTag(std::size_t column, int tag) { headerTags_[column] = tag; }
  // The column that the list was last sorted by; -1 before the first sort.
  int SortKey() const { return sortKey_; }
  // Do the rows stand in that order? Rows that are set or appended since have the order they came in; the
  // arrow in the header, whoever has put it there, goes with the order.
  bool InSortOrder() const { return inSortOrder_; }

  // Rows. Changing them repaints what is needed; SetRows repaints once.
  const std::vector<ListRow>& Rows() const { return rows_; }
  std::size_t Count() const { return rows_.size(); }
  void SetRows(std::vector<ListRow> rows);  // nothing is selected afterwards, the view is at the top
  void Append(ListRow row);
  void SetText(std::size_t row, std::size_t column, std::wstring_view text);
  void Remove(std::size_t row);
  void RemoveRows(const std::vector<std::size_t>& ascendingRows);  // linear in the number of rows
  void Clear();

  // One-shot stable sort by the text of a column, without regard to case, in the user's collation (as the
  // control's own text sort). The selection and the focus stay with their rows.
  void SortBy(std::size_t column, bool descending);

  // Selection.
  std::vector<std::size_t> SelectedRows() const;  // ascending
  // The focused row if it is selected, else the first selected one.
  std::optional<std::size_t> SelectedRow() const;
  bool IsSelected(std::size_t row) const;
  void Select(std::size_t row, bool selected);
  void SelectOnly(std::size_t row);  // selected, focused and scrolled into view; everything else not
  void SelectAll();
  void SelectNone();
  void EnsureVisible(std::size_t row);
  std::optional<std::size_t> HitTest(POINT client) const;  // anywhere on the row

  void SetSmallImages(UniqueImageList images);  // small icon number 3 is what rows show
  LRESULT OnNotify(NMHDR& header);              // WM_NOTIFY of this control or its header

 private:
  static LRESULT CALLBACK Procedure(HWND, UINT, WPARAM, LPARAM);
  LRESULT OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam);
  // A message straight to the control's own procedure: the way through what stands before it (our events, a
  // tooltip's) can cost more than the work itself.
  LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const;
  template <class T>
  LRESULT Send(UINT message, WPARAM wParam, T* parameter) const {
    return Send(message, wParam, reinterpret_cast<LPARAM>(parameter));
  }
  LRESULT OnPress(int button, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT OnDisplayInfo(NMLVDISPINFOW& info);
  LRESULT OnFindItem(const NMLVFINDITEMW& find);
  void SelectForRightPress(POINT client);
  void PostSelectionChanged();
  void DeliverSelectionChanged();  // now, when one is posted: events come in the order of what the user did
  void SetState(WPARAM row, UINT state, UINT mask);
  void DropStates();  // nothing selected, nothing focused
  void Reselect(const std::vector<std::size_t>& selected, std::optional<std::size_t> focused);
  std::optional<std::size_t> FocusedRow() const;
  void SetCount(DWORD flags);
  void DropSortOrder();

  HWND handle_ = nullptr;
  WNDPROC procedure_ = nullptr;  // the control's own
  std::vector<ListRow> rows_;
  std::vector<int> headerTags_;
  std::vector<bool> fixedWidths_;
  MouseButtons buttons_;
  bool trackingLeave_ = false;
  int sortKey_ = -1;
  bool inSortOrder_ = false;
  UniqueImageList images_;
  bool quiet_ = false;            // our own changes of the selection raise no event
  bool selectionPosted_ = false;  // one selectionChanged per user action
};

}  // namespace kestrelon::win
