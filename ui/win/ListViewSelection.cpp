// The list's rows and their selection. The control knows the number of rows and which are selected; the rows
// are ours.

#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>

#include "app/base/File.h"
#include "ui/win/ListView.h"

namespace kestrelon::win {

namespace {

constexpr WPARAM kEveryRow = static_cast<WPARAM>(-1);

// Texts made comparable byte by byte, all in one piece of memory: the user's collation, without regard to
// case.
class SortKeys {
 public:
  explicit SortKeys(std::size_t count) { begins_.reserve(count + 1); }
  void Add(std::wstring_view text) {
    begins_.push_back(bytes_.size());
    if (text.empty()) return;  // sorts before everything, as an empty key does
    const auto length = static_cast<int>(text.size());
    const int size = Map(text.data(), length, nullptr, 0);
    if (size <= 0) ThrowLastError(L"LCMapStringEx");
    bytes_.resize(begins_.back() + static_cast<std::size_t>(size));
    Map(text.data(), length, bytes_.data() + begins_.back(), size);
  }
  void Finish() { begins_.push_back(bytes_.size()); }
  int Compare(std::size_t a, std::size_t b) const {
    const std::size_t lengthA = begins_[a + 1] - begins_[a], lengthB = begins_[b + 1] - begins_[b];
    const std::size_t common = std::min(lengthA, lengthB);
    const int order =
        common == 0 ? 0 : std::memcmp(bytes_.data() + begins_[a], bytes_.data() + begins_[b], common);
    if (order != 0) return order;
    return lengthA < lengthB ? -1 : lengthA > lengthB ? 1 : 0;
  }

 private:
  static int Map(const wchar_t* text, int length, char* key, int size) {
    // With LCMAP_SORTKEY the target is bytes, whatever the parameter's type says.
    return ::LCMapStringEx(LOCALE_NAME_USER_DEFAULT, LCMAP_SORTKEY | NORM_IGNORECASE, text, length,
                           reinterpret_cast<wchar_t*>(key), size, nullptr, nullptr, 0);
  }
  std::vector<char> bytes_;
  std::vector<std::size_t> begins_;
};

}  // namespace

void ListView::SetCount(DWORD flags) { Send(LVM_SETITEMCOUNT, rows_.size(), flags); }

void ListView::SetState(WPARAM row, UINT state, UINT mask) {
  LVITEMW item{};
  item.state = state;
  item.stateMask = mask;
  Send(LVM_SETITEMSTATE, row, &item);
}

void ListView::DropStates() {
  // The control goes through all rows for "every row": only where there is something to do.
  if (Send(LVM_GETSELECTEDCOUNT, 0, 0) > 0) SetState(kEveryRow, 0, LVIS_SELECTED);
  if (const std::optional<std::size_t> focused = FocusedRow()) SetState(*focused, 0, LVIS_FOCUSED);
}

void ListView::SetRows(std::vector<ListRow> rows) {
  DropSortOrder();
  const ScopedFlag quiet(quiet_);
  const RedrawOff off(handle_);
  // An empty list in between takes selection and focus away.
  DropStates();
  rows_.clear();
  SetCount(0);
  rows_ = std::move(rows);
  SetCount(0);
  if (!rows_.empty()) EnsureVisible(0);
}

void ListView::Append(ListRow row) {
  DropSortOrder();
  rows_.push_back(std::move(row));
  SetCount(LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL);
}

void ListView::SetText(std::size_t row, std::size_t column, std::wstring_view text) {
  if (static_cast<int>(column) == sortKey_ && rows_.at(row).Text(column) != text) DropSortOrder();
  rows_.at(row).SetText(column, text);
  Send(LVM_REDRAWITEMS, row, static_cast<LPARAM>(row));
}

void ListView::Remove(std::size_t row) { RemoveRows({row}); }

void ListView::RemoveRows(const std::vector<std::size_t>& ascendingRows) {
  if (ascendingRows.empty()) return;
  // The rows left keep their order; `newPlace` counts up along with them.
  std::vector<std::size_t> selected;
  std::optional<std::size_t> focused = FocusedRow();
  std::vector<bool> isSelected(rows_.size(), false);
  for (const std::size_t row : SelectedRows()) isSelected[row] = true;
  std::size_t newPlace = 0;
  auto gone = ascendingRows.begin();
  std::optional<std::size_t> newFocused;
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    if (focused == row) newFocused = newPlace;  // of a removed row: the one that takes its place
    if (gone != ascendingRows.end() && *gone == row) {
      ++gone;
      continue;
    }
    if (isSelected[row]) selected.push_back(newPlace);
    if (newPlace != row) rows_[newPlace] = std::move(rows_[row]);
    ++newPlace;
  }
  rows_.resize(newPlace);
  if (newFocused && *newFocused >= newPlace) {
    newFocused = newPlace == 0 ? std::nullopt : std::optional<std::size_t>(newPlace - 1);
  }
  const ScopedFlag quiet(quiet_);
  const RedrawOff off(handle_);
  DropStates();
  SetCount(LVSICF_NOSCROLL);
  Reselect(selected, newFocused);
}

void ListView::Clear() { SetRows({}); }

void ListView::Reselect(const std::vector<std::size_t>& selected, std::optional<std::size_t> focused) {
  const ScopedFlag quiet(quiet_);
  DropStates();
  if (!selected.empty() && selected.size() == rows_.size()) {
    SetState(kEveryRow, LVIS_SELECTED, LVIS_SELECTED);
  } else {
    for (const std::size_t row : selected) SetState(row, LVIS_SELECTED, LVIS_SELECTED);
  }
  if (focused) {
    SetState(*focused, LVIS_FOCUSED, LVIS_FOCUSED);
    Send(LVM_SETSELECTIONMARK, 0, static_cast<LPARAM>(*focused));
  }
}

void ListView::SortBy(std::size_t column, bool descending) {
  SortKeys keys(rows_.size());
  for (const ListRow& row : rows_) keys.Add(row.Text(column));
  keys.Finish();
  std::vector<std::size_t> order(rows_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const int compared = keys.Compare(a, b);
    return descending ? compared > 0 : compared < 0;
  });

  std::vector<bool> wasSelected(rows_.size(), false);
  for (const std::size_t row : SelectedRows()) wasSelected[row] = true;
  const std::optional<std::size_t> wasFocused = FocusedRow();
  std::vector<ListRow> sorted;
  sorted.reserve(rows_.size());
  std::vector<std::size_t> selected;
  std::optional<std::size_t> focused;
  for (std::size_t place = 0; place < order.size(); ++place) {
    if (wasSelected[order[place]]) selected.push_back(place);
    if (wasFocused == order[place]) focused = place;
    sorted.push_back(std::move(rows_[order[place]]));
  }
  rows_ = std::move(sorted);
  inSortOrder_ = true;
  sortKey_ = static_cast<int>(column);
  const RedrawOff off(handle_);
  Reselect(selected, focused);
}

std::optional<std::size_t> ListView::FocusedRow() const {
  const LRESULT row = Send(LVM_GETNEXTITEM, kEveryRow, LVNI_FOCUSED);
  return row < 0 ? std::nullopt : std::optional<std::size_t>(static_cast<std::size_t>(row));
}

std::vector<std::size_t> ListView::SelectedRows() const {
  const auto count = static_cast<std::size_t>(Send(LVM_GETSELECTEDCOUNT, 0, 0));
  std::vector<std::size_t> selected(count);
  if (count == rows_.size()) {
    std::iota(selected.begin(), selected.end(), std::size_t{0});
    return selected;
  }
  LRESULT row = -1;
  for (std::size_t& each : selected) {
    row = Send(LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED);
    each = static_cast<std::size_t>(row);
  }
  return selected;
}

std::optional<std::size_t> ListView::SelectedRow() const {
  const std::optional<std::size_t> focused = FocusedRow();
  if (focused && IsSelected(*focused)) return focused;
  const LRESULT first = Send(LVM_GETNEXTITEM, kEveryRow, LVNI_SELECTED);
  return first < 0 ? std::nullopt : std::optional<std::size_t>(static_cast<std::size_t>(first));
}

bool ListView::IsSelected(std::size_t row) const {
  return (Send(LVM_GETITEMSTATE, row, LVIS_SELECTED) & LVIS_SELECTED) != 0;
}

void ListView::Select(std::size_t row, bool selected) {
  const ScopedFlag quiet(quiet_);
  SetState(row, selected ? UINT{LVIS_SELECTED} : 0U, LVIS_SELECTED);
}

void ListView::SelectOnly(std::size_t row) {
  Reselect({row}, row);
  EnsureVisible(row);
}

void ListView::SelectAll() {
  const ScopedFlag quiet(quiet_);
  const RedrawOff off(handle_);  // one repaint, not one a row
  SetState(kEveryRow, LVIS_SELECTED, LVIS_SELECTED);
}

void ListView::SelectNone() {
  const ScopedFlag quiet(quiet_);
  const RedrawOff off(handle_);  // one repaint, not one a row
  SetState(kEveryRow, 0, LVIS_SELECTED);
}

void ListView::EnsureVisible(std::size_t row) { Send(LVM_ENSUREVISIBLE, row, FALSE); }

void ListView::SelectForRightPress(POINT client) {
  // As the file manager does: a selected row keeps the whole selection, another row becomes the only one.
  const std::optional<std::size_t> row = HitTest(client);
  if (row && IsSelected(*row)) {
    SetState(*row, LVIS_FOCUSED, LVIS_FOCUSED);
    return;
  }
  if (row) {
    Reselect({*row}, row);
  } else {
    SelectNone();
  }
  PostSelectionChanged();
}

}  // namespace kestrelon::win
