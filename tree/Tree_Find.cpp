#include "tree/Tree_Find.h"

#include "app/base/File.h"
#include "tree/NodeCommands.h"

namespace kestrelon::tree {
namespace {

constexpr double kWidth = 5400, kMargin = 180, kGap = 120;
constexpr double kLineHeight = 330;
constexpr double kLabelWidth = 900, kLabelDrop = 45;  // so that its text stands beside that of the box
constexpr double kFieldLeft = kMargin + kLabelWidth;
constexpr double kButtonWidth = 1350, kButtonHeight = 390;
constexpr double kButtonTop = kMargin + kLineHeight + kGap + 60;
constexpr double kCancelLeft = kWidth - kMargin - kButtonWidth;
constexpr double kHeight = kButtonTop + kButtonHeight + kMargin;

}  // namespace

void Tree_Find::CreateControls() {
  SetCaption(L"Find in categories");
  AddControl({L"Label1",
              -1,
              win::ControlKind::kLabel,
              L"Label1",
              L"Find:",
              {kMargin, kMargin + kLabelDrop, kLabelWidth, kLineHeight - kLabelDrop}});
  AddControl({L"Text1",
              -1,
              win::ControlKind::kTextBox,
              L"Text1",
              L"",
              {kFieldLeft, kMargin, kWidth - kFieldLeft - kMargin, kLineHeight}});
  SetDefaultButton(
      AddControl({L"Command1",
                  kSearch,
                  win::ControlKind::kCommandButton,
                  L"Command1_0",
                  L"OK",
                  {kCancelLeft - kGap - kButtonWidth, kButtonTop, kButtonWidth, kButtonHeight}}));
  SetCancelButton(AddControl({L"Command1",
                              kCancel,
                              win::ControlKind::kCommandButton,
                              L"Command1_1",
                              L"Cancel",
                              {kCancelLeft, kButtonTop, kButtonWidth, kButtonHeight}}));
  SizeClientAndCentre(kWidth, kHeight, parts_.form.Handle());
}

void Tree_Find::Search(const std::wstring& text) {
  win::TreeView& tree = parts_.TreeView1;
  const win::TreeNode* const selected = tree.Selected();
  for (std::size_t index = selected ? selected->Index() + 1 : 1; index <= tree.Count(); ++index) {
    win::TreeNode& node = tree.At(index);
    if (!ContainsNoCase(node.Text(), text)) continue;
    Show(node);
    return;
  }
  SayNotFound(text);
  if (tree.Count() > 0) Show(tree.At(1));
}

void Tree_Find::Show(win::TreeNode& node) {
  parts_.TreeView1.Select(&node);
  parts_.TreeView1.EnsureVisible(node);
  TreeView1_NodeClick(parts_, node);
}

void OpenTreeFind(win::MainParts& parts, TreeHelpers& helpers) {
  if (!helpers.find) helpers.find = std::make_unique<Tree_Find>(parts);
  helpers.find->Open();
}

}  // namespace kestrelon::tree
