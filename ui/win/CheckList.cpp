#include "ui/win/CheckList.h"

#include <algorithm>
#include <utility>

#include "app/base/File.h"
#include "ui/win/Handles.h"
#include "ui/win/Window.h"

namespace kestrelon::win {

namespace {

// The picture of a row's state: its box, from 1.
constexpr UINT kEmptyBox = 1, kTickedBox = 2;

LVITEMW BoxState(bool ticked) {
  LVITEMW item{};
  item.stateMask = LVIS_STATEIMAGEMASK;
  item.state = INDEXTOSTATEIMAGEMASK(ticked ? kTickedBox : kEmptyBox);
  return item;
}

}  // namespace

CheckList::~CheckList() {
  quiet_ = true;
  if (handle_ != nullptr) ::DestroyWindow(handle_);
}

void CheckList::Create(HWND parent, UINT id) {
  const DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_NOCOLUMNHEADER |
                      LVS_SHOWSELALWAYS | LVS_SINGLESEL;
  handle_ = ::CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"", style, 0, 0, 0, 0, parent,
                              reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), ::GetModuleHandleW(nullptr),
                              nullptr);
  if (handle_ == nullptr) ThrowLastError(L"check list");
  procedure_ = reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(handle_, GWLP_WNDPROC));
  const DWORD extended = LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER;
  Send(LVM_SETEXTENDEDLISTVIEWSTYLE, extended, extended);
  LVCOLUMNW column{};
  column.mask = LVCF_FMT;
  column.fmt = LVCFMT_LEFT;
  Send(LVM_INSERTCOLUMNW, 0, &column);
  if (!::SetWindowSubclass(handle_, &CheckList::SubclassProcedure, 0, reinterpret_cast<DWORD_PTR>(this)))
    ThrowLastError(L"SetWindowSubclass");
}

LRESULT CheckList::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
  return handle_ == nullptr ? 0 : ::CallWindowProcW(procedure_, handle_, message, wParam, lParam);
}

void CheckList::SetRows(std::vector<std::wstring> texts) {
  texts_ = std::move(texts);
  if (handle_ == nullptr) return;
  const ScopedFlag quiet(quiet_);
  {
    const RedrawOff off(handle_);
    Send(LVM_DELETEALLITEMS, 0, 0);
    Send(LVM_SETITEMCOUNT, texts_.size(), 0);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    for (std::wstring& text : texts_) {
      item.pszText = text.data();
      Send(LVM_INSERTITEMW, 0, &item);
      ++item.iItem;
    }
  }
  FitColumn();  // with the scroll bar there that the rows brought
}

void CheckList::FitColumn() {
  const RedrawOff off(handle_);
  Send(LVM_SETCOLUMNWIDTH, 0, MAKELPARAM(LVSCW_AUTOSIZE, 0));
  RECT client{};
  ::GetClientRect(handle_, &client);
  if (Send(LVM_GETCOLUMNWIDTH, 0, 0) < client.right) Send(LVM_SETCOLUMNWIDTH, 0, MAKELPARAM(client.right, 0));
}

bool CheckList::Ticked(std::size_t row) const {
  return Send(LVM_GETITEMSTATE, row, LVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(kTickedBox);
}

void CheckList::SetTicked(std::size_t row, bool ticked) {
  const ScopedFlag quiet(quiet_);
  LVITEMW item = BoxState(ticked);
  Send(LVM_SETITEMSTATE, row, &item);
}

void CheckList::SetAllTicked(bool ticked) {
  const ScopedFlag quiet(quiet_);
  const RedrawOff off(handle_);
  LVITEMW item = BoxState(ticked);
  Send(LVM_SETITEMSTATE, static_cast<WPARAM>(-1), &item);
}

std::vector<std::size_t> CheckList::TickedRows() const {
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < Count(); ++row)
    if (Ticked(row)) rows.push_back(row);
  return rows;
}

void CheckList::RemoveRows(const std::vector<std::size_t>& ascendingRows) {
  if (ascendingRows.empty()) return;
  // Every row that the control deletes moves all rows behind it: filling anew costs the same for one and for
  // all.
  std::vector<std::wstring> kept;
  kept.reserve(Count() - ascendingRows.size());
  auto next = ascendingRows.begin();
  for (std::size_t row = 0; row < Count(); ++row) {
    if (next != ascendingRows.end() && *next == row)
      ++next;
    else
      kept.push_back(std::move(texts_[row]));
  }
  SetRows(std::move(kept));
}

LRESULT CALLBACK CheckList::SubclassProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                              UINT_PTR, DWORD_PTR self) {
  return Guarded(0, [&] {
    CheckList& list = *reinterpret_cast<CheckList*>(self);
    switch (message) {
      case WM_LBUTTONDOWN:
      case WM_LBUTTONDBLCLK: {
        const ScopedFlag pressing(list.pressing_);
        return ::DefSubclassProc(window, message, wParam, lParam);
      }
      case WM_NCDESTROY:
        list.handle_ = nullptr;
        ::RemoveWindowSubclass(window, &CheckList::SubclassProcedure, 0);
        break;
    }
    return ::DefSubclassProc(window, message, wParam, lParam);
  });
}

void CheckList::TellClick(int row) {
  if (row >= 0 && static_cast<std::size_t>(row) < Count() && events.itemClick)
    events.itemClick(static_cast<std::size_t>(row));
}

LRESULT CheckList::OnNotify(const NMHDR& header) {
  switch (header.code) {
    case NM_CLICK: TellClick(reinterpret_cast<const NMITEMACTIVATE&>(header).iItem); return 0;
    case LVN_ITEMCHANGED: {
      const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
      const bool selected =
          (change.uChanged & LVIF_STATE) != 0 && (change.uNewState & ~change.uOldState & LVIS_SELECTED) != 0;
      if (selected && !quiet_ && !pressing_) TellClick(change.iItem);
      return 0;
    }
    case LVN_DELETEALLITEMS: return TRUE;  // not each row one by one as well
    default: return 0;
  }
}

}  // namespace kestrelon::win
