// Categories in the model: inserting, renaming, selecting, moving, deleting, searching.

#include <algorithm>

#include "app/base/File.h"
#include "app/base/GetFileInfo.h"
#include "tests/model/Model.h"

namespace kestrelon::model {
namespace {

constexpr std::size_t kMostCategories = 45;  // more would not be on the screen together
constexpr std::size_t kLast = static_cast<std::size_t>(-1);
constexpr const wchar_t* kNewCategory = L"New Category ";

bool IsName(const std::wstring& text) {
  const std::size_t length = Trim(text).size();
  return length >= 1 && length <= 254;
}

SYSTEMTIME TimeAt(int seconds) {
  const SYSTEMTIME start{2026, 11, 0, 15, 13, 20, 5, 0};
  FILETIME time;
  SystemTimeToFileTime(&start, &time);
  ULARGE_INTEGER ticks;
  ticks.LowPart = time.dwLowDateTime;
  ticks.HighPart = time.dwHighDateTime;
  ticks.QuadPart += static_cast<ULONGLONG>(seconds) * 10'000'000u;
  time = {ticks.LowPart, ticks.HighPart};
  SYSTEMTIME now;
  FileTimeToSystemTime(&time, &now);
  return now;
}

std::wstring Digits(int value, std::size_t width) {
  const std::wstring text = std::to_wstring(value);
  return text.size() < width ? std::wstring(width - text.size(), L'0') + text : text;
}

// Has one of the same rows another text in the column under the arrow? They need not be in order then.
bool HasNewText(const Screen& before, const Screen& now) {
  if (now.arrow < 1 || now.arrow != before.arrow || now.rows.size() != before.rows.size()) return false;
  const auto column = static_cast<std::size_t>(now.arrow) - 1;
  bool changed = false;
  for (std::size_t row = 0; row < now.rows.size(); ++row) {
    if (now.rows[row].tag != before.rows[row].tag) return false;
    changed = changed || now.rows[row].texts[column] != before.rows[row].texts[column];
  }
  return changed;
}

}  // namespace

Plan Model::Apply(const Step& step) {
  Plan plan;
  plan.kind = step.kind;
  plan.text = step.text;
  state.loose = {};
  ++state.clock;
  const Content before = state;
  const Screen shown = state.screen;
  Categories(step, plan);
  Imports(step, plan);
  List(step, plan);
  EditItems(step, plan);
  FileCommands(step, plan);
  Slots(step, plan);
  if (HasNewText(shown, state.screen)) state.screen.arrow = -1;
  // The tree is kept with each change of the table, otherwise a little later.
  if (state.table != before.table) {
    state.maybeKept.clear();
  } else {
    state.maybeKept.insert(state.maybeKept.end(), plan.between.begin(), plan.between.end());
  }
  if (state.maybeKept.empty() || state.maybeKept.back() != state) state.maybeKept.push_back(state);
  return plan;
}

std::wstring Model::NextKey() {
  const SYSTEMTIME now = Now();
  const auto draw = [this] { return Digits(state.draws++ % 10000 + 1, 4); };
  std::wstring key(1, static_cast<wchar_t>(now.wYear - 1943));
  key += draw();
  for (const int part : {now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond}) key += Digits(part, 2);
  key += draw();
  return key + L"_";
}

SYSTEMTIME Model::Now() const { return TimeAt(state.clock); }

std::wstring Model::TimeText() const { return DateTimeText(Now()); }

std::wstring Model::AnyCategory(unsigned number) const {
  const std::vector<std::wstring> keys = state.tree.Below(L"");
  return keys.empty() ? std::wstring() : keys[number % keys.size()];
}

void Model::ShowCategory(const std::wstring& key) {
  state.screen.current = key;
  state.screen.shown = state.tree.Path(key);
  Refill();
}

void Model::ShowNone() {
  state.screen.current.clear();
  state.screen.shown.clear();
  Refill();
}

void Model::Refill() {
  Screen& screen = state.screen;
  screen.rows.clear();
  screen.focused.reset();
  screen.arrow = -1;
  state.loose.rowOrder = true;
  for (const auto& [index, item] : state.table) {
    if (screen.current.empty() || item[kNode] != screen.current) continue;
    screen.rows.push_back(
        {index, {item[kAlias], item[kName], item[kPath], item[kTime], item[kComment]}, false});
  }
}

void Model::Categories(const Step& step, Plan& plan) {
  Screen& screen = state.screen;
  Tree& tree = state.tree;
  switch (step.kind) {
    case Kind::kAddFirstSibling:
    case Kind::kAddPreviousSibling:
    case Kind::kAddNextSibling:
    case Kind::kAddLastSibling:
    case Kind::kAddChild: InsertCategory(step, plan); break;
    case Kind::kRenameCategory:
      plan.skipped = screen.current.empty();
      plan.way = step.c % 2;
      if (!plan.skipped) EndEdit(step, plan, screen.current);
      break;
    case Kind::kClickCategory:
      plan.key = AnyCategory(step.a);
      plan.skipped = plan.key.empty();
      if (!plan.skipped) ShowCategory(plan.key);
      break;
    case Kind::kRightClickCategory:
      plan.key = AnyCategory(step.a);
      plan.skipped = plan.key.empty();
      if (plan.skipped) break;
      screen.current = plan.key;
      screen.shown = tree.At(plan.key).text;
      break;
    case Kind::kGoToCategory: {
      const std::vector<std::wstring> keys = tree.Below(L"");
      plan.way = step.a % 4;
      plan.skipped = keys.empty() || screen.current.empty();
      if (plan.skipped) break;
      const auto here = std::find(keys.begin(), keys.end(), screen.current);
      auto there = here;
      if (plan.way == 0 && here != keys.begin()) there = here - 1;
      if (plan.way == 1 && here + 1 != keys.end()) there = here + 1;
      if (plan.way == 2) there = keys.begin();
      if (plan.way == 3) there = keys.end() - 1;
      if (there == here) {
        plan.skipped = true;  // the control tells of no change then
      } else {
        ShowCategory(*there);
      }
      break;
    }
    case Kind::kClickEmptyTree: ShowNone(); break;
    case Kind::kCollapse: Collapse(step, plan); break;
    case Kind::kDeleteCategory: DeleteCategory(step, plan); break;
    case Kind::kToggleDrag:
      state.drag = !state.drag;
      state.saved = false;
      break;
    case Kind::kMoveBranch: MoveBranch(step, plan); break;
    case Kind::kFindCategory: FindCategory(plan); break;
    default: break;
  }
}

void Model::InsertCategory(const Step& step, Plan& plan) {
  Tree& tree = state.tree;
  const std::wstring current = state.screen.current;
  plan.skipped = tree.Count() >= kMostCategories;
  if (plan.skipped) return;
  state.saved = false;
  Kind kind = step.kind;
  if (kind == Kind::kAddChild && tree.Empty()) kind = Kind::kAddLastSibling;
  if (current.empty() && kind != Kind::kAddLastSibling) {
    // Nothing to add it beside.
    if (kind == Kind::kAddChild) plan.boxes.push_back({BoxKind::kInform, IDOK});
    return;
  }
  std::wstring parent;
  if (kind == Kind::kAddChild) {
    parent = current;
  } else if (!current.empty()) {
    parent = tree.At(current).parent;
  }
  std::size_t place = kLast;
  if (kind == Kind::kAddFirstSibling) place = 0;
  if (kind == Kind::kAddPreviousSibling) place = tree.PlaceOf(current);
  if (kind == Kind::kAddNextSibling) place = tree.PlaceOf(current) + 1;
  plan.key = NextKey();
  tree.Insert(plan.key, kNewCategory, parent, place);
  state.screen.current.clear();
  Refill();
  state.screen.current = plan.key;
  state.screen.shown = kNewCategory;
  plan.between.push_back(state);
  EndEdit(step, plan, plan.key);
}

void Model::EndEdit(const Step& step, Plan& plan, const std::wstring& key) {
  Tree& tree = state.tree;
  // Half of them by Enter.
  plan.end = step.a % 2 == 0 ? EditEnd::kEnter
                             : static_cast<EditEnd>(step.a / 2 % static_cast<unsigned>(EditEnd::kWays));
  plan.otherKey = AnyCategory(step.b);
  const bool other = plan.end == EditEnd::kClickOther || plan.end == EditEnd::kRightClickOther;
  if (other && plan.otherKey == key) plan.end = EditEnd::kEnter;
  if (plan.end == EditEnd::kEscape) return;
  const bool same = plan.text == tree.At(key).text;
  if (IsName(plan.text) && !same) {
    tree.SetText(key, plan.text);
    state.saved = false;
  }
  switch (plan.end) {
    case EditEnd::kEnter:
      // A name that is left as it was may count as no edit at all.
      if (!same) state.screen.shown = plan.text;
      state.loose.shown = state.loose.saved = same;
      break;
    case EditEnd::kClickOther: ShowCategory(plan.otherKey); break;
    case EditEnd::kRightClickOther:
      state.screen.current = plan.otherKey;
      state.screen.shown = tree.At(plan.otherKey).text;
      break;
    case EditEnd::kCommand: {
      plan.between.push_back(state);
      // A next sibling, which keeps its first name.
      const std::wstring added = NextKey();
      tree.Insert(added, kNewCategory, tree.At(key).parent, tree.PlaceOf(key) + 1);
      state.saved = false;
      state.screen.current.clear();
      Refill();
      state.screen.current = added;
      state.screen.shown = kNewCategory;
      break;
    }
    case EditEnd::kClickEmpty: ShowNone(); break;
    default: break;
  }
}

void Model::Collapse(const Step& step, Plan& plan) {
  Tree& tree = state.tree;
  std::vector<std::wstring> parents;
  for (const std::wstring& key : tree.Below(L"")) {
    if (!tree.At(key).children.empty()) parents.push_back(key);
  }
  plan.skipped = parents.empty();
  if (plan.skipped) return;
  plan.key = parents[step.a % parents.size()];
  const std::wstring current = state.screen.current;
  if (!current.empty() && current != plan.key && tree.IsWithin(current, plan.key)) ShowCategory(plan.key);
}

void Model::DeleteCategory(const Step& step, Plan& plan) {
  plan.way = step.b % 2;
  state.saved = false;
  const std::wstring top = state.screen.current;
  if (top.empty()) {
    plan.boxes.push_back({BoxKind::kInform, IDOK});
    return;
  }
  const bool yes = step.a % 4 != 0;
  plan.boxes.push_back({BoxKind::kYesNo, yes ? IDYES : IDNO, true});
  if (!yes) return;
  for (const std::wstring& key : state.tree.Below(top)) {
    std::erase_if(state.table, [&](const auto& entry) { return entry.second[kNode] == key; });
  }
  state.tree.Remove(top);
  ShowNone();
}

void Model::MoveBranch(const Step& step, Plan& plan) {
  plan.key = AnyCategory(step.a);
  plan.otherKey = AnyCategory(step.b);
  plan.skipped = plan.key.empty();
  if (plan.skipped) return;
  ShowCategory(plan.key);  // the press
  if (!state.drag || state.tree.IsWithin(plan.otherKey, plan.key)) return;
  state.tree.MoveTo(plan.key, plan.otherKey);
  state.saved = false;
  state.screen.shown = state.tree.Path(plan.key);
  state.loose.shown = true;
}

void Model::FindCategory(Plan& plan) {
  plan.skipped = plan.text.empty() || plan.text.find(L'"') != std::wstring::npos;
  if (plan.skipped) return;
  const std::vector<std::wstring>& keys = state.tree.OrderOfAdding();
  const auto selected = std::find(keys.begin(), keys.end(), state.screen.current);
  auto found = selected == keys.end() ? keys.begin() : selected + 1;
  while (found != keys.end() && !ContainsNoCase(state.tree.At(*found).text, plan.text)) ++found;
  if (found == keys.end()) {
    plan.boxes.push_back({BoxKind::kInform, IDOK});
    found = keys.begin();
  }
  if (!keys.empty()) ShowCategory(*found);
}

}  // namespace kestrelon::model
