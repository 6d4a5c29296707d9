#include "import/inputDialog.h"

#include <utility>

#include "app/base/File.h"
#include "import/AddFiles.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "ui/win/Boxes.h"
#include "ui/win/FileDrop.h"

namespace kestrelon::imports {
namespace {

enum : int { kInsert, kCancel };  // indexes of Command1

constexpr UINT kListId = 100;  // below the identifiers that the form gives

constexpr double kWidth = 9000, kHeight = 6000, kMargin = 225, kGap = 120;
constexpr double kInnerWidth = kWidth - 2 * kMargin;
constexpr double kButtonWidth = 1500, kButtonHeight = 420;
constexpr double kLineHeight = 330;
constexpr double kButtonTop = kHeight - kMargin - kButtonHeight;
constexpr double kCancelLeft = kWidth - kMargin - kButtonWidth;
constexpr double kInsertLeft = kCancelLeft - kGap - kButtonWidth;
constexpr double kLabelTop = kButtonTop - kGap - kLineHeight;
constexpr double kCheckTop = kButtonTop + (kButtonHeight - kLineHeight) / 2;

}  // namespace

void inputDialog::Show(HWND owner) {
  CreateControls();
  Form_Load();
  ShowModal(owner);
}

void inputDialog::CreateControls() {
  CreateDialogWindow(L"Import files from clipboard", parts_.form.Handle());

  ListView1_.Create(Handle(), kListId);
  ListView1_.events.itemClick = [this](std::size_t row) { ListView1_ItemClick(row); };
  win::FormControl list;
  list.name = L"ListView1";
  list.window = ListView1_.Handle();
  list.id = kListId;
  list.place = {kMargin, kMargin, kInnerWidth, kLabelTop - kGap - kMargin};
  list.placed = true;
  AddExisting(std::move(list));
  // No tag: the text is a file's name, in every language. An ampersand in it is no access key.
  Label1_ = &AddControl({L"Label1",
                         -1,
                         win::ControlKind::kLabel,
                         L"",
                         L"",
                         {kMargin, kLabelTop, kInnerWidth, kLineHeight},
                         SS_NOPREFIX | SS_ENDELLIPSIS});
  Check1_ = &AddControl({L"Check1",
                         -1,
                         win::ControlKind::kCheckBox,
                         L"Check1",
                         L"Select &All",
                         {kMargin, kCheckTop, kInsertLeft - kGap - kMargin, kLineHeight}});
  SetDefaultButton(AddControl({L"Command1",
                               kInsert,
                               win::ControlKind::kCommandButton,
                               L"Command1_0",
                               L"&Insert",
                               {kInsertLeft, kButtonTop, kButtonWidth, kButtonHeight}}));
  SetCancelButton(AddControl({L"Command1",
                              kCancel,
                              win::ControlKind::kCommandButton,
                              L"Command1_1",
                              L"&Cancel",
                              {kCancelLeft, kButtonTop, kButtonWidth, kButtonHeight}}));
  SizeClientAndCentre(kWidth, kHeight, parts_.form.Handle());
  LayOut();
}

void inputDialog::Form_Load() {
  lang::ReadLanguage(*this, parts_.program, parts_.program.languageName, parts_.world);
  hook_.Install(Handle(), [this] { ShowClipboardFiles(); });
}

void inputDialog::Form_Unload() { hook_.Remove(); }

void inputDialog::ShowClipboardFiles() {
  // The rows that are being inserted are those that the user sees.
  clipboardChanged_ = inserting_;
  if (inserting_) return;
  ListView1_.Clear();
  RowsReplaced();
  std::vector<std::wstring> paths = ReadClipboardFiles(Handle());
  std::erase_if(paths, win::IsPlainFolder);
  ListView1_.SetRows(std::move(paths));
}

void inputDialog::RowsReplaced() {
  SetControlCaption(*Label1_, L"");
  ::SendMessageW(Check1_->window, BM_SETCHECK, BST_UNCHECKED, 0);
}

void inputDialog::Check1_Click() {
  ListView1_.SetAllTicked(::SendMessageW(Check1_->window, BM_GETCHECK, 0, 0) == BST_CHECKED);
}

void inputDialog::ListView1_ItemClick(std::size_t row) {
  SetControlCaption(*Label1_, FileNameOfPath(ListView1_.Text(row)));
}

void inputDialog::Command1_Click(int index) {
  if (index == kCancel) {
    Close();
    return;
  }
  {
    const win::ScopedFlag inserting(inserting_);
    win::InRoutine(parts_.world, Handle(), L"Command1_Click Error:", false, [&] {
      InsertTicked();
      if (::SendMessageW(Check1_->window, BM_GETCHECK, 0, 0) == BST_CHECKED) {
        ::SendMessageW(Check1_->window, BM_SETCHECK, BST_UNCHECKED, 0);
        Check1_Click();
      }
      return true;
    });
  }
  if (clipboardChanged_ && Handle() != nullptr) win::Quietly([this] { ShowClipboardFiles(); });
}

void inputDialog::InsertTicked() {
  const std::wstring key = TargetCategory(parts_, lang::kSelectCategoryToImport);
  if (key.empty()) return;
  std::vector<std::size_t> rows = ListView1_.TickedRows();
  std::vector<std::wstring> paths;
  for (const std::size_t row : rows) paths.push_back(ListView1_.Text(row));
  const auto remove = [&] {
    if (rows.empty()) return;
    ListView1_.RemoveRows(rows);
    RowsReplaced();
  };
  if (!paths.empty()) {
    AddFiles(parts_, key, paths, {.oneTime = true}, [&](std::size_t added) {
      // A second try must not add these again.
      rows.resize(added);
      remove();
    });
  }
  remove();
  SetControlCaption(*Label1_, L"");
  win::MarkChanged(parts_);  // also when nothing was ticked: it errs on the side of asking
}

LRESULT inputDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CLOSE:
      if (inserting_) return 0;  // a box that belongs to the main window leaves this one within reach
      break;
    case WM_NOTIFY: {
      const auto& header = *reinterpret_cast<const NMHDR*>(lParam);
      if (header.hwndFrom != nullptr && header.hwndFrom == ListView1_.Handle())
        return ListView1_.OnNotify(header);
      break;
    }
    case WM_DESTROY: Form_Unload(); break;
  }
  return Form::OnMessage(message, wParam, lParam);
}

void inputDialog::OnControl(win::FormControl& control, UINT code) {
  if (code != BN_CLICKED || inserting_) return;
  if (control.name == L"Check1") Check1_Click();
  if (control.name == L"Command1") Command1_Click(control.index);
}

void meu_Imput_Clipboard_Click(win::MainParts& parts) {
  win::InRoutine(parts.world, parts.form.Handle(), L"meu_Imput_Clipboard_Click Error:", false, [&] {
    if (TargetCategory(parts, lang::kSelectCategoryToImport).empty()) return false;
    inputDialog(parts).Show(parts.form.Handle());
    return true;
  });
}

}  // namespace kestrelon::imports
