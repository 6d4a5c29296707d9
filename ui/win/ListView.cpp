// The list's control, columns and events. Its rows and their selection are in ListViewSelection.cpp.

#include "ui/win/ListView.h"

#include <algorithm>
#include <utility>

#include "app/base/File.h"
#include "ui/win/Window.h"

namespace kestrelon::win {

namespace {

constexpr int kLeft = 1, kRight = 2;
constexpr std::size_t kAliasColumn = 1;
constexpr int kRowImage = 2;  // small icon number 3
constexpr UINT kSelectionChanged = WM_APP + 1;

}  // namespace

ListView::~ListView() {
  quiet_ = true;
  if (handle_ != nullptr) ::DestroyWindow(handle_);
}

void ListView::Create(HWND parent, UINT id) {
  const DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA | LVS_SHOWSELALWAYS |
                      LVS_SHAREIMAGELISTS;
  handle_ = ::CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"", style, 0, 0, 0, 0, parent,
                              reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), ::GetModuleHandleW(nullptr),
                              nullptr);
  if (handle_ == nullptr) ThrowLastError(L"list view");
  ::SetWindowLongPtrW(handle_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  procedure_ = reinterpret_cast<WNDPROC>(
      ::SetWindowLongPtrW(handle_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ListView::Procedure)));
  if (procedure_ == nullptr) ThrowLastError(L"SetWindowLongPtrW");
  const DWORD extended = LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER;
  Send(LVM_SETEXTENDEDLISTVIEWSTYLE, extended, extended);
}

LRESULT ListView::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
  return handle_ == nullptr ? 0 : ::CallWindowProcW(procedure_, handle_, message, wParam, lParam);
}

void ListView::AddColumn(const std::wstring& text, int widthPixels, bool fixedWidth) {
  LVCOLUMNW column{};
  column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM | LVCF_FMT;
  column.fmt = LVCFMT_LEFT;
  column.cx = widthPixels;
  column.iSubItem = static_cast<int>(ColumnCount());
  column.pszText = const_cast<wchar_t*>(text.c_str());  // the call only reads it
  Send(LVM_INSERTCOLUMNW, ColumnCount(), &column);
  headerTags_.push_back(0);
  fixedWidths_.push_back(fixedWidth);
}

std::size_t ListView::ColumnCount() const { return headerTags_.size(); }

std::wstring ListView::ColumnText(std::size_t column) const {
  wchar_t text[512] = {};
  LVCOLUMNW query{};
  query.mask = LVCF_TEXT;
  query.pszText = text;
  query.cchTextMax = static_cast<int>(std::size(text));
  Send(LVM_GETCOLUMNW, column, &query);
  return text;
}

void ListView::SetColumnText(std::size_t column, const std::wstring& text) {
  if (ColumnText(column) == text) return;  // the control would lay out everything anew all the same
  LVCOLUMNW change{};
  change.mask = LVCF_TEXT;
  change.pszText = const_cast<wchar_t*>(text.c_str());
  Send(LVM_SETCOLUMNW, column, &change);
}

int ListView::ColumnWidth(std::size_t column) const {
  return static_cast<int>(Send(LVM_GETCOLUMNWIDTH, column, 0));
}

void ListView::SetColumnWidth(std::size_t column, int pixels) {
  if (ColumnWidth(column) == pixels) return;
  Send(LVM_SETCOLUMNWIDTH, column, MAKELPARAM(pixels, 0));
}

void ListView::DropSortOrder() {
  if (!std::exchange(inSortOrder_, false)) return;
  const auto header = reinterpret_cast<HWND>(Send(LVM_GETHEADER, 0, 0));
  for (std::size_t column = 0; column < ColumnCount(); ++column) {
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    ::SendMessageW(header, HDM_GETITEMW, column, reinterpret_cast<LPARAM>(&item));
    if ((item.fmt & HDF_IMAGE) == 0) continue;
    item.fmt &= ~(HDF_IMAGE | HDF_BITMAP_ON_RIGHT);
    ::SendMessageW(header, HDM_SETITEMW, column, reinterpret_cast<LPARAM>(&item));
  }
}

void ListView::SetSmallImages(UniqueImageList images) {
  Send(LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(images.get()));
  images_ = std::move(images);  // the old pictures go only after the control has let go of them
}

std::optional<std::size_t> ListView::HitTest(POINT client) const {
  LVHITTESTINFO hit{};
  hit.pt = client;
  const LRESULT row = Send(LVM_SUBITEMHITTEST, 0, &hit);
  if (row < 0 || static_cast<std::size_t>(row) >= rows_.size()) return std::nullopt;
  return static_cast<std::size_t>(row);
}

LRESULT CALLBACK ListView::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<ListView*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  return Guarded(0, [&] { return self->OnControlMessage(message, wParam, lParam); });
}

LRESULT ListView::OnPress(int button, UINT message, WPARAM wParam, LPARAM lParam) {
  const POINT point = PointOf(lParam);
  buttons_.Press(button);
  if (events.mouseDown) events.mouseDown(button, ShiftState(), point);
  if (button == kRight) {
    // The control would wait for the release in a loop of its own, swallow it and offer a context menu.
    ::SetFocus(handle_);
    SelectForRightPress(point);
    return 0;
  }
  const LRESULT result = Send(message, wParam, lParam);
  if (message == WM_LBUTTONDBLCLK && HitTest(point)) {
    DeliverSelectionChanged();
    if (events.doubleClick) events.doubleClick();
  }
  return result;
}

LRESULT ListView::OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  LRESULT result = 0;
  switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK: result = OnPress(kLeft, message, wParam, lParam); break;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONDBLCLK: result = OnPress(kRight, message, wParam, lParam); break;
    case WM_LBUTTONUP:
    case WM_RBUTTONUP: {
      const int button = message == WM_LBUTTONUP ? kLeft : kRight;
      if (button == kLeft) result = Send(message, wParam, lParam);
      DeliverSelectionChanged();
      if (buttons_.Release(button) && events.mouseUp) events.mouseUp(button, ShiftState(), PointOf(lParam));
      return result;
    }
    case WM_MOUSEMOVE:
      result = Send(message, wParam, lParam);
      if (!trackingLeave_) {
        TRACKMOUSEEVENT track{sizeof(TRACKMOUSEEVENT), TME_LEAVE, handle_, 0};
        trackingLeave_ = ::TrackMouseEvent(&track) != FALSE;
      }
      if (events.mouseMove) events.mouseMove(ButtonsOf(wParam), ShiftState(), PointOf(lParam));
      break;
    case WM_MOUSELEAVE:
      trackingLeave_ = false;
      result = Send(message, wParam, lParam);
      if (events.mouseLeave) events.mouseLeave();
      return result;
    case WM_KEYDOWN:
      DeliverSelectionChanged();
      if (events.keyDown) events.keyDown(static_cast<int>(wParam), ShiftState());
      return Send(message, wParam, lParam);
    case WM_SYSKEYDOWN: {
      const int shift = ShiftState();
      DeliverSelectionChanged();
      // The system's own part comes first: it notes that Alt went together with a key. Else the release of
      // Alt would open the system menu of a window that the event has shown meanwhile.
      result = Send(message, wParam, lParam);
      if (handle_ != nullptr && events.keyDown) events.keyDown(static_cast<int>(wParam), shift);
      return result;
    }
    case WM_SYSCHAR:
      // Alt+Enter is the key of no menu; the system would beep.
      if (wParam == VK_RETURN) return 0;
      return Send(message, wParam, lParam);
    case WM_CHAR:
      // Enter, Escape and Ctrl with a letter look for no row; the control would beep.
      if (wParam < L' ') return 0;
      return Send(message, wParam, lParam);
    case WM_SETFOCUS:
      result = Send(message, wParam, lParam);
      if (events.gotFocus) events.gotFocus();
      return result;
    case WM_NOTIFY: {
      const NMHDR& header = *reinterpret_cast<const NMHDR*>(lParam);
      if (header.code == HDN_BEGINTRACKW || header.code == HDN_BEGINTRACKA ||
          header.code == HDN_DIVIDERDBLCLICKW || header.code == HDN_DIVIDERDBLCLICKA) {
        const int column = reinterpret_cast<const NMHEADERW&>(header).iItem;
        if (column >= 0 && static_cast<std::size_t>(column) < fixedWidths_.size() &&
            fixedWidths_[static_cast<std::size_t>(column)])
          return TRUE;
      }
      return Send(message, wParam, lParam);
    }
    case kSelectionChanged: DeliverSelectionChanged(); return 0;
    case WM_NCDESTROY: {
      const HWND window = std::exchange(handle_, nullptr);
      return ::CallWindowProcW(procedure_, window, message, wParam, lParam);
    }
    default: return Send(message, wParam, lParam);
  }
  if (buttons_.ReleaseWasSwallowed(kLeft)) {
    POINT point;
    ::GetCursorPos(&point);
    ::ScreenToClient(handle_, &point);
    DeliverSelectionChanged();
    if (events.mouseUp) events.mouseUp(kLeft, ShiftState(), point);
  }
  return result;
}

void ListView::PostSelectionChanged() {
  if (quiet_ || selectionPosted_) return;
  selectionPosted_ = ::PostMessageW(handle_, kSelectionChanged, 0, 0) != FALSE;
}

void ListView::DeliverSelectionChanged() {
  if (!std::exchange(selectionPosted_, false)) return;
  if (events.selectionChanged) events.selectionChanged();
}

LRESULT ListView::OnDisplayInfo(NMLVDISPINFOW& info) {
  LVITEMW& item = info.item;
  if (item.iItem < 0 || static_cast<std::size_t>(item.iItem) >= rows_.size()) return 0;
  if ((item.mask & LVIF_IMAGE) != 0) item.iImage = kRowImage;
  if ((item.mask & LVIF_TEXT) != 0 && item.pszText != nullptr && item.cchTextMax > 0) {
    const auto column = static_cast<std::size_t>(item.iSubItem);
    const std::wstring_view text = column < ListRow::kColumns
                                       ? rows_[static_cast<std::size_t>(item.iItem)].Text(column)
                                       : std::wstring_view();
    const std::size_t length = text.copy(item.pszText, static_cast<std::size_t>(item.cchTextMax) - 1);
    item.pszText[length] = L'\0';
  }
  return 0;
}

LRESULT ListView::OnFindItem(const NMLVFINDITEMW& find) {
  // Letters typed look for the alias: the first column, which the control would search, has no text.
  if ((find.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) == 0 || find.lvfi.psz == nullptr || rows_.empty())
    return -1;
  const std::wstring_view wanted = find.lvfi.psz;
  const bool partial = (find.lvfi.flags & LVFI_PARTIAL) != 0;
  const std::size_t start = find.iStart > 0 ? static_cast<std::size_t>(find.iStart) % rows_.size() : 0;
  const std::size_t steps = (find.lvfi.flags & LVFI_WRAP) != 0 ? rows_.size() : rows_.size() - start;
  for (std::size_t i = 0; i < steps; ++i) {
    const std::size_t row = (start + i) % rows_.size();
    const std::wstring_view alias = rows_[row].Text(kAliasColumn);
    if (EqualNoCase(partial ? alias.substr(0, wanted.size()) : alias, wanted))
      return static_cast<LRESULT>(row);
  }
  return -1;
}

LRESULT ListView::OnNotify(NMHDR& header) {
  switch (header.code) {
    case LVN_GETDISPINFOW: return OnDisplayInfo(reinterpret_cast<NMLVDISPINFOW&>(header));
    case LVN_ODFINDITEMW: return OnFindItem(reinterpret_cast<const NMLVFINDITEMW&>(header));
    case LVN_COLUMNCLICK:
      if (events.columnClick)
        events.columnClick(static_cast<std::size_t>(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem));
      return 0;
    case LVN_ITEMCHANGED: {
      const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
      if ((change.uChanged & LVIF_STATE) != 0 && ((change.uNewState ^ change.uOldState) & LVIS_SELECTED) != 0)
        PostSelectionChanged();
      return 0;
    }
    case LVN_ODSTATECHANGED: PostSelectionChanged(); return 0;
    case LVN_BEGINDRAG:
      DeliverSelectionChanged();
      if (events.beginDrag) events.beginDrag();
      return 0;
    default: return 0;
  }
}

}  // namespace kestrelon::win
