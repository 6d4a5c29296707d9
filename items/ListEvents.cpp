#include "items/ListEvents.h"

#include <cstdlib>
#include <optional>
#include <utility>

#include "app/base/File.h"
#include "app/base/FileNames.h"
#include "items/FileListDataObject.h"
#include "items/FileOperations.h"
#include "items/FilePropterty.h"
#include "items/ItemCommands.h"
#include "items/ItemInformation.h"
#include "items/OpenItem.h"
#include "ui/win/Boxes.h"

namespace kestrelon::items {
namespace {

constexpr int kControl = 2;
constexpr int kAlt = 4;

}  // namespace

void ListView1_ColumnClick(win::MainParts& parts, ListHelpers& helpers, std::size_t column) {
  win::ListView& list = parts.ListView1;
  if (list.SortKey() == static_cast<int>(column)) list.SetHeaderTag(column, ~list.HeaderTag(column));
  const bool descending = std::abs(list.HeaderTag(column)) == 1;
  list.SortBy(column, descending);
  helpers.tip.Hide();
  if (!helpers.sortIcons) {
    helpers.sortIcons = std::make_unique<ui::cLVHeaderSortIcons>(parts.program.programFolder);
  }
  helpers.sortIcons->ShowSortIcon(list.Handle(), static_cast<int>(column), descending);
}

void ListView1_DblClick(win::MainParts& parts) { OpenSelectedItem(parts); }

void ListView1_KeyDown(win::MainParts& parts, ListHelpers& helpers, int keyCode, int shift) {
  if (keyCode == VK_F6) OpenSelectedItem(parts);
  if (keyCode == 'F' && shift == kControl) OpenListFind(parts, helpers);
  if (keyCode == 'A' && shift == kControl && parts.ListView1.Count() > 0) {
    parts.ListView1.SelectAll();
    EnableItemCommands(parts);
  }
  if (keyCode == VK_DELETE && parts.menus.IsEnabled(L"meu_Delete")) meu_Delete_Click(parts);
  if (keyCode == VK_RETURN && (shift & kAlt) == 0) OpenSelectedItem(parts);
  if (keyCode == VK_RETURN && shift == kAlt) meu_Properties_Click(parts);
}

void ListView1_MouseUp(win::MainParts& parts, int button, int /*shift*/, POINT point) {
  EnableItemCommands(parts);
  if (button != 2) return;
  ::ClientToScreen(parts.ListView1.Handle(), &point);
  parts.menus.PopUp(L"meu_List", point);
}

void ListView1_SelectionChanged(win::MainParts& parts) { EnableItemCommands(parts); }

std::vector<std::wstring> DraggedPaths(win::MainParts& parts) {
  std::vector<std::wstring> files, paths;
  for (const std::size_t row : parts.ListView1.SelectedRows()) {
    if (auto file = ShellPathOf(parts.ListView1.Rows()[row].Text(3))) files.push_back(std::move(*file));
  }
  // Asking a server lets messages in: from here on the rows may be others.
  for (std::wstring& file : files) {
    if (ServerAnswers(parts.world, file) && FileExists(file)) paths.push_back(std::move(file));
  }
  return paths;
}

void ListView1_OLEStartDrag(win::MainParts& parts) {
  win::Quietly([&] {
    const std::vector<std::wstring> paths = DraggedPaths(parts);
    // To ask a server takes its time: a drag that begins with the button up would drop at once, wherever the
    // pointer is by then.
    if (!parts.world.dragButtonDown() || parts.busy || !::IsWindowEnabled(parts.form.Handle())) return;
    // While these are set, a drop on the tree moves the items instead of adding the files.
    parts.internalDrag = parts.listDrag = true;
    const win::Finally completed([&] { ListView1_OLECompleteDrag(parts); });
    DragFilesOut(paths);
  });
}

void ListView1_OLECompleteDrag(win::MainParts& parts) { parts.internalDrag = parts.listDrag = false; }

void meu_ShowItemInfo_Click(win::MainParts& parts, ListHelpers& helpers) {
  const bool show = !parts.menus.IsChecked(L"meu_ShowItemInfo");
  parts.menus.Check(L"meu_ShowItemInfo", show);
  if (!show) helpers.tip.Hide();
}

}  // namespace kestrelon::items
