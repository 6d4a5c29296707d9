#include "tree/TreeDrop.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "import/AddFiles.h"
#include "items/ShowData.h"
#include "store/SharedConnection.h"
#include "ui/win/Boxes.h"
#include "ui/win/FileDrop.h"

namespace kestrelon::tree {
namespace {

void MoveSelectedItems(win::MainParts& parts, const std::wstring& targetKey) {
  // Whatever stops it: the list shows the category as it then is.
  const win::Finally refill([&] { items::ShowData(parts, win::CurrentCategory(parts)); });
  store::Opened connection(parts.connection);
  for (const std::size_t row : parts.ListView1.SelectedRows()) {
    const std::wstring fileIndex(parts.ListView1.Rows()[row].Tag());
    connection->Execute(L"UPDATE FTable SET TreeviewNode=" + store::Quoted(targetKey) + L" WHERE FileIndex=" +
                        store::Quoted(fileIndex));
    win::MarkChanged(parts);
  }
  connection.Close();
}

void AddDroppedFiles(win::MainParts& parts, IDataObject& data, const std::wstring& targetKey) {
  std::vector<std::wstring> paths = win::DroppedPaths(data);
  std::erase_if(paths, win::IsPlainFolder);
  if (paths.empty() || !parts.TreeView1.Find(targetKey)) return;
  store::Opened connection(parts.connection);
  imports::InsertFiles(parts, *connection, targetKey, paths,
                       {.largestNumber = imports::kLargest32Bit, .oneTime = true, .separator = L", "});
  connection.Close();
}

}  // namespace

DWORD TreeView1_OLEDragOver(win::MainParts& parts, IDataObject& data, POINT point) {
  win::TreeView& tree = parts.TreeView1;
  tree.ScrollNearEdge(point);
  win::TreeNode* const node = tree.HitTest(point);
  tree.SetDropHighlight(node);
  if (node) tree.Expand(*node);
  return parts.internalDrag || win::OffersFiles(data) ? DROPEFFECT_COPY : DROPEFFECT_NONE;
}

void TreeView1_OLEDragLeave(win::MainParts& parts) { parts.TreeView1.SetDropHighlight(nullptr); }

DWORD TreeView1_OLEDragDrop(win::MainParts& parts, IDataObject& data, POINT point) {
  win::TreeView& tree = parts.TreeView1;
  win::TreeNode* const target = tree.HitTest(point);
  // Fetching what is dropped, and boxes, let messages in: from here on the category is known by its key.
  const std::wstring key = target ? target->Key() : std::wstring();
  const bool internal = std::exchange(parts.internalDrag, false);
  tree.SetDropHighlight(target);
  const win::Finally clear([&] { tree.SetDropHighlight(nullptr); });
  if (!target) return DROPEFFECT_NONE;
  return win::InRoutine(parts.world, parts.form.Handle(), L"TreeView1_OLEDragDrop Error:",
                        DWORD{DROPEFFECT_NONE}, [&] {
                          if (internal) {
                            MoveSelectedItems(parts, key);
                          } else {
                            AddDroppedFiles(parts, data, key);
                          }
                          if (win::TreeNode* const node = tree.Find(key)) tree.Expand(*node);
                          return DWORD{DROPEFFECT_COPY};
                        });
}

}  // namespace kestrelon::tree
