#include "items/FileRename.h"

#include "app/base/File.h"
#include "items/EditItem.h"
#include "lang/SelectLanguage.h"
#include "store/Schema.h"
#include "store/SharedConnection.h"
#include "ui/win/StoredText.h"

namespace kestrelon::items {
namespace {

enum : int { kOk, kCancel };  // indexes of Command1

constexpr double kWidth = 5400, kMargin = 225, kGap = 120;
constexpr double kButtonWidth = 1500, kButtonHeight = 420;
constexpr double kLineHeight = 330;
constexpr double kTextTop = kMargin + kLineHeight;
constexpr double kButtonTop = kTextTop + kLineHeight + 2 * kGap;
constexpr double kCancelLeft = kWidth - kMargin - kButtonWidth;
constexpr double kHeight = kButtonTop + kButtonHeight + kMargin;

}  // namespace

std::wstring StoredAlias(std::wstring_view text) {
  const std::size_t longest = store::LongestText(u"DefineName");
  if (text.size() <= longest) return std::wstring(text);
  // Half a character would show as a box, and no file could be named by it.
  const bool halved = IS_SURROGATE_PAIR(text[longest - 1], text[longest]);
  return std::wstring(text.substr(0, halved ? longest - 1 : longest));
}

std::wstring RenameStatement(std::wstring_view alias, std::wstring_view fileIndex) {
  return L"UPDATE FTable SET DefineName=" + store::Quoted(alias) + L" WHERE FileIndex=" +
         store::Quoted(fileIndex);
}

void FileRename::Show(HWND owner, std::size_t row) {
  CreateControls();
  Form_Load(row);
  ShowModal(owner);
}

void FileRename::CreateControls() {
  CreateDialogWindow(L"Rename", parts_.form.Handle());

  AddControl({L"Label1",
              -1,
              win::ControlKind::kLabel,
              L"Label1",
              L"&Alias:",
              {kMargin, kMargin, kWidth - 2 * kMargin, kLineHeight}});
  Text1_ = &AddControl({L"Text1",
                        -1,
                        win::ControlKind::kTextBox,
                        L"Text1",
                        L"",
                        {kMargin, kTextTop, kWidth - 2 * kMargin, kLineHeight}});
  StoreIn(parts_, *Text1_, u"DefineName");
  Ok_ = &AddControl({L"Command1",
                     kOk,
                     win::ControlKind::kCommandButton,
                     L"Command1_0",
                     L"&OK",
                     {kCancelLeft - kGap - kButtonWidth, kButtonTop, kButtonWidth, kButtonHeight}});
  SetDefaultButton(*Ok_);
  SetCancelButton(AddControl({L"Command1",
                              kCancel,
                              win::ControlKind::kCommandButton,
                              L"Command1_1",
                              L"Cancel",
                              {kCancelLeft, kButtonTop, kButtonWidth, kButtonHeight}}));
  Label2_ = &AddControl({L"Label2", -1, win::ControlKind::kLabel, L"", L"", {}});
  ::ShowWindow(Label2_->window, SW_HIDE);
  SizeClientAndCentre(kWidth, kHeight, parts_.form.Handle());
}

void FileRename::Form_Load(std::size_t row) {
  lang::ReadLanguage(*this, parts_.program, parts_.program.languageName, parts_.world);
  const win::ListRow& item = parts_.ListView1.Rows()[row];
  SetControlCaption(*Text1_, std::wstring(item.Text(kAliasColumn)));
  SetControlCaption(*Label2_, std::wstring(item.Tag()));
  Text1_Change();
}

void FileRename::Form_Activate() { ::SendMessageW(Text1_->window, EM_SETSEL, 0, -1); }

void FileRename::Text1_Change() { ::EnableWindow(Ok_->window, !Trim(ControlCaption(*Text1_)).empty()); }

void FileRename::Command1_Click(int index) {
  if (index == kOk) {
    const std::wstring alias = StoredAlias(ControlCaption(*Text1_));
    const std::wstring fileIndex = ControlCaption(*Label2_);
    if (win::RefusesItsText(Text1_->window)) return;
    if (const auto failure = ChangeItem(parts_, [&] { return RenameStatement(alias, fileIndex); })) {
      win::ShowBalloon(Text1_->window, *failure);
      return;
    }
    if (const auto row = RowOfItem(parts_.ListView1, fileIndex)) {
      parts_.ListView1.SetText(*row, kAliasColumn, alias);
    }
  }
  Close();
}

LRESULT FileRename::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  const LRESULT result = Form::OnMessage(message, wParam, lParam);
  if (message == WM_ACTIVATE && LOWORD(wParam) != WA_INACTIVE) Form_Activate();
  return result;
}

void FileRename::OnControl(win::FormControl& control, UINT code) {
  if (control.name == L"Text1" && code == EN_CHANGE) Text1_Change();
  if (control.name == L"Command1" && code == BN_CLICKED) Command1_Click(control.index);
}

void meu_rename_Click(win::MainParts& parts) {
  if (const auto row = parts.ListView1.SelectedRow()) FileRename(parts).Show(parts.form.Handle(), *row);
}

}  // namespace kestrelon::items
