#include "tree/NodeCommands.h"

#include "items/ItemCommands.h"
#include "items/ShowData.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "tree/CategoryKeys.h"
#include "tree/DeleteCategory.h"
#include "tree/Tree_Find.h"
#include "ui/win/Boxes.h"

namespace kestrelon::tree {
namespace {

constexpr int kControl = 2;

// Blank at the end and no number: every new category has this name until the user types another.
constexpr const wchar_t* kNewCategory = L"New Category ";

// What follows the insertion of a node, whichever command made it.
void ShowNewCategory(win::MainParts& parts, win::TreeNode& node, bool scroll) {
  parts.TreeView1.Select(&node);
  if (scroll) parts.TreeView1.EnsureVisible(node);
  const std::wstring key = node.Key();
  win::SetCurrentCategory(parts, node.Text(), key);
  items::ClearList(parts);
  // Last: a question that clearing the list leads to, about a comment, would end the edit.
  if (win::CurrentCategory(parts) != key) return;
  parts.TreeView1.SetAutomaticLabelEdit(true);
  parts.TreeView1.StartLabelEdit();
}

void InsertBesideSelected(win::MainParts& parts, win::Relationship relationship, bool scroll) {
  win::Quietly([&] {
    win::TreeNode* relative = win::CurrentNode(parts);
    if (!relative) return;
    const std::wstring key = GetNextKey(parts);
    ShowNewCategory(parts,
                    parts.TreeView1.Add(relative, relationship, key, kNewCategory, kCategoryImage,
                                        kSelectedCategoryImage),
                    scroll);
  });
}

// The mouse is on the button that opens and closes a branch: that is neither a category nor empty space.
bool OnExpander(const win::TreeView& tree, POINT point) {
  TVHITTESTINFO hit{};
  hit.pt = point;
  ::SendMessageW(tree.Handle(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
  return (hit.flags & TVHT_ONITEMBUTTON) != 0;
}

}  // namespace

void AddFirstSibling(win::MainParts& parts) {
  InsertBesideSelected(parts, win::Relationship::kFirst, true);
  win::MarkChanged(parts);
}

void AddPreviousSibling(win::MainParts& parts) {
  InsertBesideSelected(parts, win::Relationship::kPrevious, true);
  win::MarkChanged(parts);
}

void AddNextSibling(win::MainParts& parts) {
  // The only one of the five that does not scroll to what it added.
  InsertBesideSelected(parts, win::Relationship::kNext, false);
  win::MarkChanged(parts);
}

void AddLastSibling(win::MainParts& parts) {
  win::Quietly([&] {
    const std::wstring key = GetNextKey(parts);
    win::TreeNode* relative = win::CurrentNode(parts);
    win::TreeNode& added = parts.TreeView1.Add(relative, win::Relationship::kLast, key, kNewCategory,
                                               kCategoryImage, kSelectedCategoryImage);
    ShowNewCategory(parts, added, relative != nullptr);
  });
  win::MarkChanged(parts);
}

void AddChild(win::MainParts& parts) {
  if (parts.TreeView1.Count() == 0) {
    AddLastSibling(parts);
    return;
  }
  if (win::CurrentCategory(parts).empty()) {
    win::Inform(parts.world, parts.form.Handle(), lang::Message(parts.program, lang::kSelectCategoryFirst),
                parts.program.productName + L" (AddChild)");
  } else {
    InsertBesideSelected(parts, win::Relationship::kChild, true);
  }
  win::MarkChanged(parts);
}

void EditSelectedCaption(win::MainParts& parts) {
  if (!win::CurrentNode(parts)) return;
  parts.TreeView1.SetAutomaticLabelEdit(true);
  parts.TreeView1.StartLabelEdit();
}

void TreeView1_NodeClick(win::MainParts& parts, win::TreeNode& node) {
  win::SetCurrentCategory(parts, node.FullPath(), node.Key());
  items::EnableItemButtons(parts, false);
  items::ShowData(parts, node.Key());
}

bool TreeView1_AfterLabelEdit(win::MainParts& parts, const std::wstring& newText) {
  const std::size_t length = Trim(newText).size();
  const bool accepted = length >= 1 && length <= 254;
  // The status bar shows a rejected name too, until the next selection: it is what was typed.
  if (win::TreeNode* selected = parts.TreeView1.Selected()) {
    win::SetCurrentCategory(parts, newText, selected->Key());
  }
  if (accepted) win::MarkChanged(parts);
  return accepted;
}

void TreeView1_KeyDown(win::MainParts& parts, TreeHelpers& helpers, int keyCode, int shift) {
  if (keyCode == VK_RETURN) parts.TreeView1.SetAutomaticLabelEdit(false);
  if (keyCode == 'F' && shift == kControl) OpenTreeFind(parts, helpers);
  if (keyCode == VK_F2) EditSelectedCaption(parts);
  if (keyCode == VK_DELETE) meu_Remove_Click(parts);
}

void TreeView1_MouseDown(win::MainParts& parts, int button, int /*shift*/, POINT point) {
  win::TreeView& tree = parts.TreeView1;
  tree.SetAutomaticLabelEdit(false);
  win::TreeNode* node = tree.HitTest(point);
  parts.pressedCategory = node ? node->Key() : std::wstring();
  if (!node) {
    if (OnExpander(tree, point)) return;
    tree.Select(nullptr);
    ShowNoCategory(parts);
    return;
  }
  if (parts.menus.IsChecked(L"meu_aa")) {
    tree.SetDropHighlight(node);
    tree.SetDropHighlight(nullptr);
  }
  tree.Select(node);
  // A right click makes the category current for the menu that follows; the list keeps what it shows.
  if (button == 2) {
    win::SetCurrentCategory(parts, node->Text(), node->Key());
    parts.pressedCategory.clear();
  }
}

void TreeView1_MouseUp(win::MainParts& parts, int button, int /*shift*/, POINT point) {
  parts.pressedCategory.clear();
  if (button != 2) return;
  ::ClientToScreen(parts.TreeView1.Handle(), &point);
  parts.menus.PopUp(L"meu_Category", point);
}

void ShowNoCategory(win::MainParts& parts) {
  win::SetCurrentCategory(parts, L"", L"");
  items::ClearList(parts);
}

}  // namespace kestrelon::tree
