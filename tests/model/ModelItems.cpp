// Items in the model: the list, and what is done with the items that are selected in it.

#include "app/base/Win32.h"

#include <algorithm>
#include <numeric>

#include "app/base/File.h"
#include "items/FileRename.h"
#include "tests/model/Model.h"

namespace kestrelon::model {
namespace {

// The list's sort: by text, without regard to case, as the user's language orders.
int Compared(const std::wstring& a, const std::wstring& b) {
  return CompareStringEx(LOCALE_NAME_USER_DEFAULT, NORM_IGNORECASE, a.data(), static_cast<int>(a.size()),
                         b.data(), static_cast<int>(b.size()), nullptr, nullptr, 0) -
         CSTR_EQUAL;
}

bool IsDeviceName(std::wstring_view name) {
  const std::wstring base = Folded(Trim(name.substr(0, name.find(L'.'))));
  for (const wchar_t* device : {L"con", L"prn", L"aux", L"nul"}) {
    if (base == device) return true;
  }
  return base.size() == 4 && (base.starts_with(L"com") || base.starts_with(L"lpt")) && base[3] >= L'1' &&
         base[3] <= L'9';
}

std::wstring WithoutQuotes(std::wstring text) {
  std::erase(text, L'"');
  return text;
}

}  // namespace

bool NamesFile(std::wstring_view path) {
  return path.size() > 3 && path[1] == L':' && path[2] == L'\\' &&
         path.find_first_of(L"*?\"<>|") == std::wstring_view::npos;
}

bool IsFileName(std::wstring_view name) {
  return !name.empty() && name.find_first_of(L"\\/:*?\"<>|") == std::wstring_view::npos &&
         name.back() != L'.' && name.back() != L' ' && !IsDeviceName(name);
}

void Model::SelectOnly(std::size_t row) {
  for (Row& each : state.screen.rows) each.selected = false;
  state.screen.rows[row].selected = true;
  state.screen.focused = row;
}

void Model::RemoveSelectedRows() {
  std::erase_if(state.screen.rows, [](const Row& row) { return row.selected; });
  state.screen.focused.reset();
  state.loose.primary = true;
}

void Model::List(const Step& step, Plan& plan) {
  Screen& screen = state.screen;
  std::vector<Row>& rows = screen.rows;
  switch (step.kind) {
    case Kind::kClickRow:
    case Kind::kControlClickRow:
      plan.skipped = rows.empty();
      if (plan.skipped) break;
      plan.row = step.a % rows.size();
      if (step.kind == Kind::kClickRow) {
        SelectOnly(plan.row);
      } else {
        rows[plan.row].selected = !rows[plan.row].selected;
        screen.focused = plan.row;
      }
      break;
    case Kind::kSelectAllRows:
      for (Row& row : rows) row.selected = true;
      state.loose.primary = true;
      break;
    case Kind::kClickEmptyList:
      for (Row& row : rows) row.selected = false;
      break;
    case Kind::kSort: {
      plan.column = 1 + step.a % 5;
      int& tag = screen.headerTags[plan.column];
      if (screen.sortKey == static_cast<int>(plan.column)) tag = ~tag;
      screen.sortKey = screen.arrow = static_cast<int>(plan.column);
      const std::wstring focused = screen.focused ? rows[*screen.focused].tag : std::wstring();
      std::stable_sort(rows.begin(), rows.end(), [&](const Row& a, const Row& b) {
        const int compared = Compared(a.texts[plan.column - 1], b.texts[plan.column - 1]);
        return tag == 0 ? compared < 0 : compared > 0;
      });
      for (std::size_t row = 0; row < rows.size(); ++row) {
        if (rows[row].tag == focused) screen.focused = row;
      }
      break;
    }
    case Kind::kFindItem: FindItem(step, plan); break;
    default: break;
  }
}

void Model::FindItem(const Step& step, Plan& plan) {
  Screen& screen = state.screen;
  plan.column = step.a % 5;
  plan.skipped = Trim(plan.text).empty() || plan.text.find(L'"') != std::wstring::npos;
  if (plan.skipped) return;
  // The entry of the time searches the comments, that of the comments nothing.
  constexpr std::size_t kSearched[] = {0, 1, 2, 4};
  std::size_t row = 0;
  if (const auto primary = screen.Primary()) {
    if (screen.Selected().size() > 1) SelectOnly(*primary);  // by typing
    row = *primary + 1;
  }
  const std::wstring wanted = Trim(plan.text);
  for (; plan.column < 4 && row < screen.rows.size(); ++row) {
    if (!ContainsNoCase(screen.rows[row].texts[kSearched[plan.column]], wanted)) continue;
    SelectOnly(row);
    return;
  }
  plan.boxes.push_back({BoxKind::kInform, IDOK});
}

void Model::EditItems(const Step& step, Plan& plan) {
  Screen& screen = state.screen;
  const auto primary = screen.Primary();
  switch (step.kind) {
    case Kind::kAliasOfItem: {
      plan.skipped = !primary;
      plan.way = step.a % 5 == 0;  // Cancel
      if (!primary || plan.way == 1) break;
      const std::wstring alias = items::StoredAlias(WithoutQuotes(plan.text));
      if (Trim(alias).empty()) {
        plan.way = 1;  // there is nothing else to press
        break;
      }
      Row& row = screen.rows[*primary];
      row.texts[0] = state.table.at(row.tag)[kAlias] = alias;
      state.saved = false;
      break;
    }
    case Kind::kAliasAsFileName:
      plan.skipped = !primary;
      tooLong_ = false;
      for (Row& row : screen.rows) {
        if (!row.selected) continue;
        NameFileAsItem(row);
        plan.between.push_back(state);
      }
      if (tooLong_) plan.boxes.push_back({BoxKind::kInform, IDOK});
      break;
    case Kind::kCommentOfItem: {
      plan.way = step.a % 4;  // saved; saved and the window left open; not saved, and the question: Yes, No
      plan.text = WithoutQuotes(plan.text);
      plan.skipped = !primary || Trim(plan.text).empty();
      if (plan.skipped) break;
      Row& row = screen.rows[*primary];
      screen.comment = plan.way == 1;
      const std::wstring comment = Trim(plan.text);
      if (plan.way >= 2) {
        if (comment == row.texts[4] || plan.text == row.texts[4]) break;
        plan.boxes.push_back({BoxKind::kYesNo, plan.way == 2 ? IDYES : IDNO});
        if (plan.way == 3) break;
      }
      row.texts[4] = state.table.at(row.tag)[kComment] = comment;
      state.saved = false;
      break;
    }
    case Kind::kProperties: ChangeProperties(step, plan); break;
    case Kind::kChangeCategory: {
      plan.key = AnyCategory(step.a);
      plan.way = step.b % 4;  // Cancel, OK without a choice, OK
      plan.skipped = !primary || plan.key.empty();
      if (plan.skipped || plan.way < 2) break;
      for (const Row& row : screen.rows) {
        if (row.selected) state.table.at(row.tag)[kNode] = plan.key;
      }
      RemoveSelectedRows();
      state.saved = false;
      break;
    }
    case Kind::kMoveItems:
      plan.key = AnyCategory(step.a);
      plan.skipped = !primary;
      if (plan.skipped) break;
      for (const Row& row : screen.rows) {
        if (row.selected) state.table.at(row.tag)[kNode] = plan.key;
      }
      state.saved = false;
      Refill();
      break;
    case Kind::kDeleteItems: DeleteItems(step, plan); break;
    default: break;
  }
}

bool Model::IsTooLong(const std::wstring& path) {
  tooLong_ = tooLong_ || path.size() > 259;
  return path.size() > 259;
}

void Model::NameFileAsItem(Row& row) {
  const std::wstring& alias = row.texts[0];
  const std::wstring path = row.texts[2];
  if (alias.empty() || path.empty()) return;
  const std::wstring name = alias + L"." + ExtensionOf(path);
  const std::wstring newPath = FolderOfPath(path) + name;
  const auto file = state.files.find(Folded(path));
  if (!IsFileName(name) || !NamesFile(path) || IsTooLong(newPath) || file == state.files.end()) return;
  // On the disk of the tests a name has room for 255 bytes.
  if (Narrow(name).size() > 255) return;
  if (Folded(newPath) != Folded(path) && state.files.count(Folded(newPath)) > 0) return;
  if (newPath == path) state.loose.saved = true;
  File moved = file->second;
  moved.path = newPath;
  state.files.erase(file);
  state.files[Folded(newPath)] = moved;
  Item& item = state.table.at(row.tag);
  row.texts[1] = item[kName] = name;
  row.texts[2] = item[kPath] = newPath;
  state.saved = false;
}

void Model::ChangeProperties(const Step& step, Plan& plan) {
  const auto primary = state.screen.Primary();
  plan.skipped = !primary;
  plan.way = step.c % 4 == 0;  // Cancel
  if (!primary) return;
  Row& row = state.screen.rows[*primary];
  plan.fields = {row.texts[1], row.texts[2], row.texts[3], row.texts[4]};
  const std::wstring text = WithoutQuotes(plan.text).substr(0, 40);
  if (step.a % 2 != 0) plan.fields[0] = text + L".txt";
  if (step.a / 2 % 2 != 0) {
    const std::vector<std::wstring> paths = ChosenFiles({Kind::kOpenDialog, step.b, 0, 0, L""}, false);
    if (step.b % 3 == 0) {
      plan.fields[1] = L"C:\\nowhere\\" + text + L".*";
    } else if (!paths.empty()) {
      plan.fields[1] = paths.front();
    }
  }
  if (step.a / 4 % 2 != 0) plan.fields[2] = L"1/2/2003 4:05:06 AM";
  if (step.a / 8 % 2 != 0) plan.fields[3] = text;
  if (plan.way == 1) return;
  Item& item = state.table.at(row.tag);
  for (std::size_t i = 0; i < 4; ++i) row.texts[i + 1] = item[kName + i] = plan.fields[i];
  state.saved = false;
}

void Model::DeleteItems(const Step& step, Plan& plan) {
  if (!state.screen.Primary()) {
    plan.boxes.push_back({BoxKind::kInform, IDOK});
    return;
  }
  const bool yes = step.a % 4 != 0, files = step.a % 3 == 0;
  plan.boxes.push_back({BoxKind::kYesNo, yes ? IDYES : IDNO});
  if (!yes) return;
  plan.boxes.push_back({BoxKind::kYesNo, files ? IDYES : IDNO, true});
  for (const Row& row : state.screen.rows) {
    if (!row.selected) continue;
    if (files) state.files.erase(Folded(row.texts[2]));
    state.table.erase(row.tag);
  }
  RemoveSelectedRows();
  state.saved = false;
}

}  // namespace kestrelon::model
