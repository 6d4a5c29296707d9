#include "items/List_Find.h"

#include <array>
#include <memory>
#include <utility>

#include "app/base/File.h"
#include "items/EditItem.h"
#include "items/ItemCommands.h"
#include "items/ListEvents.h"

namespace kestrelon::items {
namespace {

// The column that is searched, by the position of Combo1. It is not that of the entry everywhere: the time is
// never searched, its entry searches the comments, and the comments' own entry searches the icon column,
// whose texts are empty, so that it finds nothing. Required in this order.
constexpr std::size_t kIconColumn = 0;
constexpr std::array<std::size_t, 5> kSearchedColumns = {kAliasColumn, kFileNameColumn, kPathColumn,
                                                         kCommentColumn, kIconColumn};

constexpr UINT kComboId = 100;  // below the identifiers that the form gives

constexpr double kWidth = 5400, kMargin = 180, kGap = 120;
constexpr double kLineHeight = 330, kStep = kLineHeight + kGap;
constexpr double kLabelWidth = 900, kLabelDrop = 45;  // so that its text stands beside that of the box
constexpr double kFieldLeft = kMargin + kLabelWidth, kFieldWidth = kWidth - kFieldLeft - kMargin;
constexpr double kListHeight = 2100;  // of Combo1 with its list open
constexpr double kButtonWidth = 1350, kButtonHeight = 390;
constexpr double kButtonTop = kMargin + 2 * kStep + 60;
constexpr double kCancelLeft = kWidth - kMargin - kButtonWidth;
constexpr double kHeight = kButtonTop + kButtonHeight + kMargin;

// Nothing holds a text where there is none, not even one of blanks alone, which are trimmed away.
bool Holds(std::wstring_view text, std::wstring_view wanted) {
  return !text.empty() && ContainsNoCase(text, wanted);
}

}  // namespace

void List_Find::CreateControls() {
  SetCaption(L"Find in item(s)");
  AddControl({L"lblFind",
              -1,
              win::ControlKind::kLabel,
              L"lblFind",
              L"Find",
              {kMargin, kMargin + kLabelDrop, kLabelWidth, kLineHeight - kLabelDrop}});
  AddControl({L"Text1",
              -1,
              win::ControlKind::kTextBox,
              L"Text1",
              L"",
              {kFieldLeft, kMargin, kFieldWidth, kLineHeight}});
  AddControl({L"lblIn",
              -1,
              win::ControlKind::kLabel,
              L"lblIn",
              L"In",
              {kMargin, kMargin + kStep + kLabelDrop, kLabelWidth, kLineHeight - kLabelDrop}});

  win::FormControl combo;
  combo.name = L"Combo1";
  combo.tag = L"Combo1";
  combo.id = kComboId;
  combo.window = ::CreateWindowExW(
      0, L"COMBOBOX", L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, 0, 0, 0, 0,
      Handle(), reinterpret_cast<HMENU>(UINT_PTR{kComboId}), ::GetModuleHandleW(nullptr), nullptr);
  if (combo.window == nullptr) ThrowLastError(L"control Combo1");
  combo.place = {kFieldLeft, kMargin + kStep, kFieldWidth, kListHeight};
  combo.placed = true;
  // The first header stands over the icons and has no text.
  for (std::size_t column = 1; column < parts_.ListView1.ColumnCount(); ++column) {
    ::SendMessageW(combo.window, CB_ADDSTRING, 0,
                   reinterpret_cast<LPARAM>(parts_.ListView1.ColumnText(column).c_str()));
  }
  ::SendMessageW(combo.window, CB_SETCURSEL, 0, 0);
  AddExisting(std::move(combo));

  SetDefaultButton(
      AddControl({L"Command1",
                  kSearch,
                  win::ControlKind::kCommandButton,
                  L"Command1_0",
                  L"&Find",
                  {kCancelLeft - kGap - kButtonWidth, kButtonTop, kButtonWidth, kButtonHeight}}));
  SetCancelButton(AddControl({L"Command1",
                              kCancel,
                              win::ControlKind::kCommandButton,
                              L"Command1_1",
                              L"Cancel",
                              {kCancelLeft, kButtonTop, kButtonWidth, kButtonHeight}}));
  SizeClientAndCentre(kWidth, kHeight, parts_.form.Handle());
  LayOut();
}

void List_Find::TextChanged() {
  win::ListView& list = parts_.ListView1;
  const auto row = list.SelectedRow();
  if (row && list.SelectedRows().size() > 1) list.SelectOnly(*row);
}

std::size_t List_Find::SearchedColumn() {
  const LRESULT position = ::SendMessageW(Find(L"Combo1")->window, CB_GETCURSEL, 0, 0);
  const bool known = position >= 0 && static_cast<std::size_t>(position) < kSearchedColumns.size();
  return known ? kSearchedColumns[static_cast<std::size_t>(position)] : kIconColumn;
}

void List_Find::Search(const std::wstring& text) {
  win::ListView& list = parts_.ListView1;
  const std::wstring wanted = Trim(text);
  const std::size_t column = SearchedColumn();
  const auto selected = list.SelectedRow();
  for (std::size_t row = selected ? *selected + 1 : 0; row < list.Count(); ++row) {
    if (!Holds(list.Rows()[row].Text(column), wanted)) continue;
    list.SelectOnly(row);
    EnableItemCommands(parts_);
    return;
  }
  SayNotFound(wanted);
}

void OpenListFind(win::MainParts& parts, ListHelpers& helpers) {
  if (!helpers.find) helpers.find = std::make_unique<List_Find>(parts);
  helpers.find->Open();
}

}  // namespace kestrelon::items
