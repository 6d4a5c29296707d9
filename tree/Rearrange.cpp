#include "tree/Rearrange.h"

#include "ui/win/Boxes.h"

namespace kestrelon::tree {

void TreeView1_MouseMove(win::MainParts& parts, int button, int /*shift*/, POINT point) {
  if (!parts.menus.IsChecked(L"meu_aa")) return;
  win::TreeView& tree = parts.TreeView1;
  win::TreeNode* dragged = tree.HitTest(point);
  if (!dragged || button != 1) return;
  // A quick hand may be over another category by the first move: what was pressed is what is meant, and what
  // the drag's picture shows.
  if (win::TreeNode* const pressed = tree.Find(parts.pressedCategory)) dragged = pressed;
  parts.draggedCategory = dragged->Key();
  win::TreeNode* const selected = tree.Selected();
  tree.BeginDrag(selected ? *selected : *dragged);
}

void TreeView1_DragOver(win::MainParts& parts, POINT point) {
  parts.TreeView1.SetDropHighlight(parts.TreeView1.HitTest(point));
}

void TreeView1_DragDrop(win::MainParts& parts) {
  win::TreeView& tree = parts.TreeView1;
  win::TreeNode* const target = tree.DropHighlight();
  win::TreeNode* const dragged = tree.Find(parts.draggedCategory);
  if (target && dragged && parts.menus.IsChecked(L"meu_aa")) {
    // The tree refuses what would make a loop; then nothing has changed.
    win::Quietly([&] {
      tree.SetParent(*dragged, *target);
      win::MarkChanged(parts);
      // The status bar shows the current category's path, which may lead through what was moved.
      const win::TreeNode* const current = tree.Find(win::CurrentCategory(parts));
      if (current) win::SetCurrentCategory(parts, current->FullPath(), current->Key());
    });
  }
  TreeView1_DragCancel(parts);
}

void TreeView1_DragCancel(win::MainParts& parts) {
  parts.TreeView1.SetDropHighlight(nullptr);
  parts.draggedCategory.clear();
}

}  // namespace kestrelon::tree
