#include "tree/DeleteCategory.h"

#include "items/ShowData.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "tree/NodeCommands.h"
#include "ui/win/Boxes.h"
#include "ui/win/CommandsOff.h"

namespace kestrelon::tree {
namespace {

// How far a deletion came, also after a failure.
enum class Stage { kNothing, kItems, kCategory };

void Delete(win::MainParts& parts, win::TreeNode& node, Stage& stage) {
  store::Opened connection(parts.connection);
  const win::CommandsOff off(parts, {L"meu_file", L"meu_Category", L"meu_List"});
  ::UpdateWindow(parts.TreeView1.Handle());  // what a dialog covered would stay blank
  const win::RedrawOff still(parts.TreeView1.Handle());
  win::ProgressText progress(parts.StatusBar1);
  Deletion deletion{*connection, [&](const std::wstring& step) {
                      stage = Stage::kItems;
                      progress.ShowInPassing(step);
                    }};
  DeleteNode(deletion, &node, node.Checked(), false, true);
  // Before the items' end is written, so that no crash leaves the category without them.
  parts.TreeView1.Remove(node);
  stage = Stage::kCategory;
  connection.Close();
}

void DeleteSelected(win::MainParts& parts) {
  const HWND owner = parts.form.Handle();
  const std::wstring& title = parts.program.productName;
  const std::wstring key = win::CurrentCategory(parts);
  if (key.empty()) {
    win::Inform(parts.world, owner, lang::Message(parts.program, lang::kNoCategorySelected), title);
    return;
  }
  if (parts.world.messageBox(owner, lang::Message(parts.program, lang::kDeleteCategoryQuestion), title,
                             MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES) {
    return;
  }
  // Messages were handled since the question was asked: it was asked about this one.
  win::TreeNode* const node = win::CurrentNode(parts);
  if (!node || node->Key() != key) return;
  Stage stage = Stage::kNothing;
  try {
    Delete(parts, *node, stage);
  } catch (...) {
    // The category may still be there, with the items that are left.
    if (stage == Stage::kItems) TreeView1_NodeClick(parts, *node);
    if (stage == Stage::kCategory) ShowNoCategory(parts);
    throw;
  }
  ShowNoCategory(parts);
}

}  // namespace

void meu_Remove_Click(win::MainParts& parts) {
  win::InRoutine(parts.world, parts.form.Handle(), L"meu_Remove_Click Error:", false, [&] {
    DeleteSelected(parts);
    return true;
  });
  ::SetFocus(parts.Text1);
  win::MarkChanged(parts);
}

void DeleteNode(Deletion& deletion, win::TreeNode* node, bool checkedState, bool followSiblings,
                bool descend) {
  // A walk without recursion: a tree may be deeper than the stack. `depth` counts levels below `node`'s own.
  std::size_t depth = 0;
  while (node) {
    node->SetChecked(checkedState);
    deletion.connection.Execute(L"DELETE From FTable WHERE TreeViewNode=" + store::Quoted(node->Key()));
    deletion.show(L"Delete Node -> " + node->Text());
    if (descend && node->Child()) {
      node = node->Child();
      ++depth;
      continue;
    }
    while (depth > 0 && !node->Next()) {
      node = node->Parent();
      --depth;
    }
    node = depth > 0 || followSiblings ? node->Next() : nullptr;
  }
}

}  // namespace kestrelon::tree
