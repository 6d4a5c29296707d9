#include "tests/model/Comparison.h"

#include <commctrl.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "app/base/File.h"
#include "jet/database/Database.h"
#include "store/SharedConnection.h"
#include "store/UnsavedCollection.h"

namespace kestrelon::model {
namespace {

constexpr const wchar_t* kItemEntries[] = {L"meu_rename",        L"meu_Definenameasfilename",
                                           L"meu_Delete",        L"meu_Properties",
                                           L"meu_Moveto",        L"meu_Copyto",
                                           L"meu_openfile",      L"meu_destinationdirectory",
                                           L"meu_Changecategory"};
constexpr const wchar_t* kMenus[] = {L"meu_file", L"meu_Category", L"meu_List", L"meu_misc", L"meu_help"};

const win::TreeNode* NodeOf(HWND tree, HTREEITEM item) {
  TVITEMW info{};
  info.mask = TVIF_PARAM | TVIF_HANDLE;
  info.hItem = item;
  if (item == nullptr || SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&info)) == 0)
    return nullptr;
  return reinterpret_cast<const win::TreeNode*>(info.lParam);
}

// As the control shows them: which texts, in which order and depth.
void ReadShown(HWND tree, HTREEITEM item, const std::wstring& parent, std::vector<Tree::Line>& lines) {
  for (; item; item = TreeView_GetNextSibling(tree, item)) {
    wchar_t text[300] = L"";
    TVITEMW info{};
    info.mask = TVIF_TEXT | TVIF_PARAM | TVIF_HANDLE | TVIF_STATE;
    info.stateMask = TVIS_DROPHILITED;
    info.hItem = item;
    info.pszText = text;
    info.cchTextMax = 300;
    SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&info));
    const std::wstring key = reinterpret_cast<const win::TreeNode*>(info.lParam)->Key();
    const wchar_t* const marked = (info.state & TVIS_DROPHILITED) != 0 ? L" (marked for a drop)" : L"";
    lines.push_back({parent, key, std::wstring(info.pszText).substr(0, 255) + marked});
    ReadShown(tree, TreeView_GetChild(tree, item), key, lines);
  }
}

std::wstring Joined(const std::vector<std::wstring>& texts) {
  std::wstring joined;
  for (const std::wstring& text : texts) joined += (joined.empty() ? L"" : L", ") + text;
  return joined;
}

std::wstring Shown(const Row& row) {
  std::wstring text = (row.selected ? L"*" : L"") + row.tag;
  for (const std::wstring& each : row.texts) text += L" | " + each.substr(0, 60);
  return text;
}

std::wstring TextOfPanel(HWND bar, int panel) {
  std::wstring text(LOWORD(SendMessageW(bar, SB_GETTEXTLENGTHW, static_cast<WPARAM>(panel) - 1, 0)), L'\0');
  SendMessageW(bar, SB_GETTEXTW, static_cast<WPARAM>(panel) - 1, reinterpret_cast<LPARAM>(text.data()));
  return text;
}

}  // namespace

Content ContentOf(TestProgram& program) {
  Content content = ReadContent(program.DataFile(L"default.dat"));
  std::vector<Tree::Line> lines;
  std::vector<const win::TreeNode*> waiting{program.Parts().TreeView1.FirstRoot()};
  while (!waiting.empty()) {
    const win::TreeNode* const node = waiting.back();
    waiting.pop_back();
    if (!node) continue;
    lines.push_back({node->Parent() ? node->Parent()->Key() : std::wstring(), node->Key(), node->Text()});
    waiting.push_back(node->Next());
    waiting.push_back(node->Child());
  }
  content.tree = Tree::FromLines(lines);
  return content;
}

void Comparison::Differ(const std::string& what, const std::wstring& expected, const std::wstring& found) {
  if (expected != found)
    program_.Fault(what + ": expected \"" + Narrow(expected) + "\", found \"" + Narrow(found) + "\"");
}

// Finds out which of the contents that may have been on disk was there, by what the start made of it.
void Comparison::TakeRecovered(State& expected) {
  if (expected.loose.recovered.empty()) return;
  std::optional<Content> found;
  try {
    const std::wstring path = program_.DataFile(store::kUnsavedFile);
    if (FileExists(path)) found = ReadContent(path);
  } catch (const std::exception& error) {
    program_.Fault(std::string("the unsaved collection: ") + error.what());
  }
  const std::vector<Content> candidates = std::exchange(expected.loose.recovered, {});
  for (auto each = candidates.rbegin(); each != candidates.rend(); ++each) {
    const bool offered = IsUnsaved(expected, *each);
    const std::optional<Content> before = expected.unsaved;
    SetAside(expected, *each);
    if (program_.offers == offered && found == expected.unsaved) {
      if (offered && expected.loose.openRecovered) OpenUnsaved(expected);
      return;
    }
    expected.unsaved = before;
  }
  program_.Fault("asked " + std::to_string(program_.offers) + " times about what the end has left; " +
                 (found ? "in the unsaved collection:\n" + Difference(candidates.back(), *found)
                        : std::string("there is no unsaved collection")));
}

void Comparison::Compare(State& expected) {
  TakeRecovered(expected);
  CompareTree(expected);
  CompareTable(expected);
  CompareList(expected);
  CompareCommands(expected);
  CompareFiles(expected);
  CompareSlots(expected);
}

void Comparison::CompareTree(const State& expected) {
  const HWND tree = program_.Parts().TreeView1.Handle();
  std::vector<Tree::Line> lines, shown = expected.tree.Lines();
  ReadShown(tree, TreeView_GetRoot(tree), L"", lines);
  // The control may keep no more of a text than it can show.
  for (Tree::Line& line : shown) line[2] = line[2].substr(0, 255);
  if (lines != shown) {
    program_.Fault("the tree on the screen differs:\n" +
                   Difference({Tree::FromLines(shown), {}}, {Tree::FromLines(lines), {}}));
  }
  std::vector<std::wstring> order;
  win::TreeView& model = program_.Parts().TreeView1;
  for (std::size_t index = 1; index <= model.Count(); ++index) order.push_back(model.At(index).Key());
  Differ("the order of adding", Joined(expected.tree.OrderOfAdding()), Joined(order));
  const win::TreeNode* const highlighted = NodeOf(tree, TreeView_GetSelection(tree));
  Differ("the highlighted category", expected.screen.current, highlighted ? highlighted->Key() : L"");
}

void Comparison::CompareTable(State& expected) {
  try {
    const Content found = ContentOf(program_);
    if (found != expected) program_.Fault("the content differs:\n" + Difference(expected, found));
  } catch (const std::exception& error) {
    program_.Fault(std::string("the working database: ") + error.what());
  }
}

void Comparison::CompareList(State& expected) {
  Screen& screen = expected.screen;
  const win::ListView& list = program_.Parts().ListView1;
  std::vector<Row> rows;
  for (std::size_t i = 0; i < list.Count(); ++i) {
    const win::ListRow& row = list.Rows()[i];
    Row& found = rows.emplace_back(Row{std::wstring(row.Tag()), {}, false});
    for (std::size_t column = 1; column <= 5; ++column) found.texts[column - 1] = row.Text(column);
    found.selected =
        (ListView_GetItemState(list.Handle(), static_cast<int>(i), LVIS_SELECTED) & LVIS_SELECTED) != 0;
  }
  if (ListView_GetItemCount(list.Handle()) != static_cast<int>(list.Count()))
    program_.Fault("the control has another number of rows");
  if (expected.loose.rowOrder) {
    const auto byTag = [](const Row& a, const Row& b) { return a.tag < b.tag; };
    std::vector<Row> sorted = rows;
    std::sort(sorted.begin(), sorted.end(), byTag);
    std::sort(screen.rows.begin(), screen.rows.end(), byTag);
    if (sorted == screen.rows) screen.rows = rows;
  }
  for (std::size_t i = 0; i < std::max(rows.size(), screen.rows.size()); ++i) {
    const std::wstring wanted = i < screen.rows.size() ? Shown(screen.rows[i]) : L"none";
    Differ("row " + std::to_string(i), wanted, i < rows.size() ? Shown(rows[i]) : L"none");
  }
  const auto primary = list.SelectedRow();
  if (expected.loose.primary) {
    screen.focused = primary;
  } else if (primary != screen.Primary()) {
    program_.Fault("another row is the focused one of those selected");
  }
  const HWND bar = program_.Parts().StatusBar1.Handle();
  std::wstring panel = program_.Parts().StatusBar1.PanelText(1);
  const std::wstring name = screen.current.empty() || !expected.tree.Has(screen.current)
                                ? std::wstring()
                                : expected.tree.At(screen.current).text;
  if (expected.loose.shown && panel == L"Category : " + name) screen.shown = name;
  Differ("panel 1", L"Category : " + screen.shown, panel);
  Differ("panel 2", screen.current, program_.Parts().StatusBar1.PanelText(2));
  Differ("panel 3", std::to_wstring(screen.rows.size()) + L" Objects",
         program_.Parts().StatusBar1.PanelText(3));
  Differ("panel 3 on the screen", std::to_wstring(screen.rows.size()) + L" Objects", TextOfPanel(bar, 3));
  int arrow = -1;
  const HWND header = ListView_GetHeader(list.Handle());
  for (int column = 0; column < 6; ++column) {
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&item));
    if ((item.fmt & HDF_IMAGE) != 0) arrow = column;
  }
  if (screen.rows.empty()) screen.arrow = arrow;  // over no rows it says nothing
  if (arrow != screen.arrow)
    program_.Fault("the arrow stands over column " + std::to_string(arrow) + ", not " +
                   std::to_string(screen.arrow));
}

void Comparison::CompareCommands(State& expected) {
  win::MainParts& parts = program_.Parts();
  const bool selected = expected.screen.Primary().has_value();
  for (const wchar_t* entry : kItemEntries) {
    if (parts.menus.IsEnabled(entry) != selected) program_.Fault("wrongly on or off: " + Narrow(entry));
  }
  for (const wchar_t* menu : kMenus) {
    if (!parts.menus.IsEnabled(menu)) program_.Fault("the menu is off: " + Narrow(menu));
  }
  for (int button = 1; button <= 9; ++button) {
    if (button != 5 && parts.Toolbar1.IsEnabled(button) != (button < 5 || selected))
      program_.Fault("wrongly on or off: button " + std::to_string(button));
  }
  if (parts.menus.IsChecked(L"meu_aa") != expected.drag) program_.Fault("the check mark of meu_aa");
  if (parts.commentShown != expected.screen.comment) program_.Fault("the comment window, shown or not");
  Differ("the language", expected.language, program_.program.languageName);
  if (expected.loose.saved) expected.saved = program_.program.databaseSaved;
  if (program_.program.databaseSaved != expected.saved)
    program_.Fault(expected.saved ? "the exit question would be asked"
                                  : "the exit question would be left out");
  if (parts.busy) program_.Fault("a long operation goes on");
  if (parts.connection.IsOpen()) program_.Fault("the connection is open");
  if (parts.TreeView1.EditingLabel()) program_.Fault("the edit of a name goes on");
  if (parts.TreeView1.Dragging()) program_.Fault("a drag goes on");
  if (!IsWindowEnabled(program_.form->Handle())) program_.Fault("the window is disabled");
}

void Comparison::CompareFiles(const State& expected) {
  // A file that replaces one whose name differs in its case alone may get either.
  std::map<std::wstring, std::string> wanted, found;
  for (const auto& [folded, file] : expected.files) wanted[folded] = file.bytes;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(program_.Root() + L"Files")) {
    if (entry.is_regular_file()) found[Folded(entry.path().wstring())] = BytesOf(entry.path().wstring());
  }
  for (const auto& [path, bytes] : wanted) {
    const auto there = found.find(path);
    if (there == found.end() || there->second != bytes)
      program_.Fault("the file is not there as it should: " + Narrow(path));
  }
  for (const auto& [path, bytes] : found) {
    if (wanted.count(path) == 0) program_.Fault("a file that should not be there: " + Narrow(path));
  }
}

void Comparison::CompareSlots(const State& expected) {
  for (std::size_t slot = 0; slot < expected.slots.size(); ++slot)
    CompareDatabase(L"Data" + std::to_wstring(slot) + L".dat", expected.slots[slot]);
  CompareDatabase(store::kUnsavedFile, expected.unsaved);
}

void Comparison::CompareDatabase(const std::wstring& name, const std::optional<Content>& expected) {
  const std::wstring path = program_.DataFile(name);
  const bool there = std::filesystem::exists(path);
  if (there != expected.has_value()) program_.Fault(Narrow(name) + ", there or not");
  if (!there || !expected) return;
  std::string bytes = BytesOf(path);
  Known& known = known_[path];
  try {
    if (bytes != known.bytes) known = {{}, ReadContent(path)};
    known.bytes = std::move(bytes);
    if (known.content != *expected)
      program_.Fault(Narrow(name) + " differs:\n" + Difference(*expected, known.content));
  } catch (const std::exception& error) {
    program_.Fault(Narrow(name) + ": " + error.what());
  }
}

}  // namespace kestrelon::model
