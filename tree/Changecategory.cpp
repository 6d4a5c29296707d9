#include "tree/Changecategory.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "items/ItemCommands.h"
#include "lang/SelectLanguage.h"
#include "store/SharedConnection.h"
#include "tree/NodeCommands.h"
#include "ui/win/Boxes.h"

namespace kestrelon::tree {
namespace {

enum : int { kOk, kCancel };  // indexes of Command1

constexpr UINT kTreeId = 100;  // below the identifiers that the form gives

constexpr double kWidth = 6300, kMargin = 225, kGap = 120;
constexpr double kInnerWidth = kWidth - 2 * kMargin;
constexpr double kLineHeight = 330, kTreeHeight = 4200;
constexpr double kTreeTop = kMargin + kLineHeight;
constexpr double kLabelTop = kTreeTop + kTreeHeight + kGap;
constexpr double kTextTop = kLabelTop + kLineHeight;
constexpr double kButtonWidth = 1500, kButtonHeight = 420;
constexpr double kButtonTop = kTextTop + kLineHeight + 2 * kGap;
constexpr double kCancelLeft = kWidth - kMargin - kButtonWidth;
constexpr double kHeight = kButtonTop + kButtonHeight + kMargin;

}  // namespace

void CopyCategories(win::TreeView& source, win::TreeView& target) {
  const win::RedrawOff still(target.Handle());
  std::vector<win::TreeNode*> copies(source.Count() + 1, nullptr);  // by the originals' indexes
  std::vector<win::TreeNode*> upwards;
  for (std::size_t index = 1; index <= source.Count(); ++index) {
    // After categories were rearranged a parent may come later than its children.
    for (win::TreeNode* node = &source.At(index); node && !copies[node->Index()]; node = node->Parent()) {
      upwards.push_back(node);
    }
    for (; !upwards.empty(); upwards.pop_back()) {
      const win::TreeNode& node = *upwards.back();
      win::TreeNode* const parent = node.Parent() ? copies[node.Parent()->Index()] : nullptr;
      copies[node.Index()] =
          &target.Add(parent, parent ? win::Relationship::kChild : win::Relationship::kLast, node.Key(),
                      node.Text(), kCategoryImage, kSelectedCategoryImage);
    }
  }
}

void MoveSelectedItems(win::MainParts& parts, const std::wstring& key) {
  win::ListView& list = parts.ListView1;
  const std::vector<std::size_t> selected = list.SelectedRows();
  auto row = selected.rbegin();
  const win::Finally removeRows([&] {
    std::vector<std::size_t> moved(selected.rbegin(), row);
    std::reverse(moved.begin(), moved.end());
    list.RemoveRows(moved);
    win::ShowObjectCount(parts);
    items::EnableItemCommands(parts);
  });
  store::Opened connection(parts.connection);
  for (; row != selected.rend(); ++row) {
    connection->Execute(L"UPDATE FTable SET TreeviewNode=" + store::Quoted(key) + L" WHERE FileIndex=" +
                        store::Quoted(list.Rows()[*row].Tag()));
    win::MarkChanged(parts);
  }
  try {
    connection.Close();
  } catch (...) {
    row = selected.rbegin();  // nothing was moved
    throw;
  }
}

void Changecategory::Show(HWND owner) {
  CreateControls();
  Form_Load();
  ShowModal(owner);
}

void Changecategory::CreateControls() {
  CreateDialogWindow(L"Select category", parts_.form.Handle());

  AddControl({L"Label1",
              -1,
              win::ControlKind::kLabel,
              L"Label1",
              L"Move the selected item(s) to new category",
              {kMargin, kMargin, kInnerWidth, kLineHeight}});
  TreeView1_.Create(Handle(), kTreeId);
  TreeView1_.events.nodeClick = [this](win::TreeNode& node) { TreeView1_NodeClick(node); };
  win::FormControl tree;
  tree.name = L"TreeView1";
  tree.tag = L"TreeView1";
  tree.window = TreeView1_.Handle();
  tree.id = kTreeId;
  tree.place = {kMargin, kTreeTop, kInnerWidth, kTreeHeight};
  tree.placed = true;
  AddExisting(std::move(tree));
  AddControl({L"Label2",
              -1,
              win::ControlKind::kLabel,
              L"Label2",
              L"Category name",
              {kMargin, kLabelTop, kInnerWidth, kLineHeight}});
  AddControl({L"Text1",
              -1,
              win::ControlKind::kTextBox,
              L"Text1",
              L"",
              {kMargin, kTextTop, kInnerWidth, kLineHeight},
              ES_READONLY});
  win::FormControl& ok =
      AddControl({L"Command1",
                  kOk,
                  win::ControlKind::kCommandButton,
                  L"Command1_0",
                  L"&OK",
                  {kCancelLeft - kGap - kButtonWidth, kButtonTop, kButtonWidth, kButtonHeight}});
  SetDefaultButton(ok);
  ::EnableWindow(ok.window, FALSE);
  SetCancelButton(AddControl({L"Command1",
                              kCancel,
                              win::ControlKind::kCommandButton,
                              L"Command1_1",
                              L"&Cancel",
                              {kCancelLeft, kButtonTop, kButtonWidth, kButtonHeight}}));
  SizeClientAndCentre(kWidth, kHeight, parts_.form.Handle());
  LayOut();
}

void Changecategory::Form_Load() {
  lang::ReadLanguage(*this, parts_.program, parts_.program.languageName, parts_.world);
  // A copy of the pictures: those of the main tree go when it gets others for another DPI.
  const auto pictures = reinterpret_cast<HIMAGELIST>(
      ::SendMessageW(parts_.TreeView1.Handle(), TVM_GETIMAGELIST, TVSIL_NORMAL, 0));
  if (pictures) TreeView1_.SetImageList(win::UniqueImageList(::ImageList_Duplicate(pictures)));
  CopyCategories(parts_.TreeView1, TreeView1_);
  ::SetFocus(TreeView1_.Handle());
}

void Changecategory::TreeView1_NodeClick(const win::TreeNode& node) {
  SetControlCaption(*Find(L"Text1"), node.FullPath());
  ::EnableWindow(Find(L"Command1", kOk)->window, TRUE);
}

void Changecategory::Command1_Click(int index) {
  if (index == kCancel || MoveToSelected()) Close();
}

// False when no category is selected, or after a failure.
bool Changecategory::MoveToSelected() {
  const win::TreeNode* const selected = TreeView1_.Selected();
  if (!selected) return false;
  return win::InRoutine(parts_.world, Handle(), L"Changecategory Error:", false, [&] {
    MoveSelectedItems(parts_, selected->Key());
    return true;
  });
}

LRESULT Changecategory::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NOTIFY) {
    const auto& header = *reinterpret_cast<const NMHDR*>(lParam);
    if (header.hwndFrom != nullptr && header.hwndFrom == TreeView1_.Handle())
      return TreeView1_.OnNotify(header);
  }
  return Form::OnMessage(message, wParam, lParam);
}

void Changecategory::OnControl(win::FormControl& control, UINT code) {
  if (control.name == L"Command1" && code == BN_CLICKED) Command1_Click(control.index);
}

void meu_Changecategory_Click(win::MainParts& parts) {
  if (parts.ListView1.SelectedRow()) Changecategory(parts).Show(parts.form.Handle());
}

}  // namespace kestrelon::tree
