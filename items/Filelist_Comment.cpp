#include "items/Filelist_Comment.h"

#include <algorithm>

#include "app/base/File.h"
#include "items/EditItem.h"
#include "items/ListEvents.h"
#include "lang/SelectLanguage.h"
#include "store/SharedConnection.h"
#include "ui/cMagneticWnd.h"

namespace kestrelon::items {
namespace {

constexpr WPARAM kLongestComment = 65535;  // UTF-16 units

constexpr double kWidth = 6300, kHeight = 3600;
constexpr double kMinimumWidth = 5400, kMinimumHeight = 1800;  // of the whole window
constexpr double kMargin = 90;
constexpr double kButtonWidth = 1125, kButtonHeight = 390;
constexpr double kCountWidth = 1650, kLabelHeight = 240;

}  // namespace

Filelist_Comment::Filelist_Comment(win::MainParts& parts) : Form(L"Filelist_Comment"), parts_(parts) {
  parts_.itemSelected = [this] { FollowSelection(); };
}

Filelist_Comment::~Filelist_Comment() {
  parts_.itemSelected = nullptr;
  Destroy();
}

void Filelist_Comment::CreateControls() {
  CreateDialogWindow(L"Comment", parts_.form.Handle(), WS_EX_TOOLWINDOW, WS_THICKFRAME | WS_CLIPCHILDREN);

  using win::ControlKind;
  const win::FormControl& text = AddControl({L"Text1",
                                             -1,
                                             ControlKind::kTextBox,
                                             L"",
                                             L"",
                                             {},
                                             ES_MULTILINE | ES_WANTRETURN | ES_AUTOVSCROLL | WS_VSCROLL});
  ::SendMessageW(text.window, EM_SETLIMITTEXT, kLongestComment, 0);
  AddControl({L"Label1", -1, ControlKind::kLabel, L"", L"Charactor: 0", {}, SS_NOPREFIX});
  // An alias may hold any character, "&" as well, and may be longer than there is room.
  AddControl({L"Label2", -1, ControlKind::kLabel, L"", L"", {}, SS_NOPREFIX | SS_ENDELLIPSIS});
  AddControl({L"Command1", 0, ControlKind::kCommandButton, L"Command1_0", L"&Save", {}});
  SetCancelButton(AddControl({L"Command1", 1, ControlKind::kCommandButton, L"Command1_1", L"Cancel", {}}));
  // Never seen: the FileIndex of the item whose comment is shown; empty for none.
  ::ShowWindow(AddControl({L"Label3", -1, ControlKind::kLabel, L"", L"", {}, SS_NOPREFIX}).window, SW_HIDE);
  SizeClientAndCentre(kWidth, kHeight, parts_.form.Handle());
  LayOut();
}

void Filelist_Comment::Open() {
  if (Handle() == nullptr) CreateControls();
  lang::ReadLanguage(*this, parts_.program, parts_.program.languageName, parts_.world);
  parts_.commentShown = true;
  parts_.menus.Check(L"meu_comment", true);
  FollowSelection();
  if (parts_.magnets) parts_.magnets->AddWindow(Handle(), parts_.form.Handle());
  ::ShowWindow(Handle(), SW_SHOW);
  ::SetFocus(Find(L"Text1")->window);
}

void Filelist_Comment::Hide() {
  parts_.commentShown = false;
  parts_.menus.Check(L"meu_comment", false);
  if (Handle() == nullptr) return;
  Remember(L"", L"", L"");
  if (parts_.magnets) parts_.magnets->RemoveWindow(Handle());
  ::ShowWindow(Handle(), SW_HIDE);
}

void Filelist_Comment::FollowSelection() {
  if (!parts_.commentShown || Handle() == nullptr) return;
  const auto row = parts_.ListView1.SelectedRow();
  if (!row) {
    Remember(L"", L"", L"");
    return;
  }
  const win::ListRow& item = parts_.ListView1.Rows()[*row];
  Remember(std::wstring(item.Tag()), std::wstring(item.Text(kAliasColumn)),
           std::wstring(item.Text(kCommentColumn)));
}

void Filelist_Comment::Remember(const std::wstring& fileIndex, const std::wstring& alias,
                                const std::wstring& comment) {
  SetText(L"Label2", fileIndex.empty() ? std::wstring() : L"(" + alias + L")");
  // A click on the row that is shown already leaves alone what is being typed.
  if (fileIndex == TextOf(L"Label3") && comment == shownComment_ && !fileIndex.empty()) return;
  SetText(L"Label3", fileIndex);
  shownComment_ = comment;
  SetText(L"Text1", comment);
  Text1_Change();  // a box of several lines does not tell of texts that the program sets
}

void Filelist_Comment::Command1_Save() {
  const std::wstring comment = Trim(TextOf(L"Text1"));
  const std::wstring fileIndex = TextOf(L"Label3");
  const auto row = parts_.ListView1.SelectedRow();
  if (comment.empty() || fileIndex.empty()) return;
  // Only ever the item that the user sees selected.
  if (!row || parts_.ListView1.Rows()[*row].Tag() != fileIndex) return;
  if (!ChangeItem(parts_, L"UPDATE FTable SET Comment=" + store::Quoted(comment) + L" WHERE FileIndex=" +
                              store::Quoted(fileIndex))) {
    return;
  }
  shownComment_ = comment;
  parts_.ListView1.SetText(*row, kCommentColumn, comment);
}

void Filelist_Comment::Text1_Change() {
  SetText(L"Label1", L"Charactor: " + std::to_wstring(::GetWindowTextLengthW(Find(L"Text1")->window)));
}

void Filelist_Comment::SetText(std::wstring_view name, const std::wstring& text) {
  ::SetWindowTextW(Find(name)->window, text.c_str());
}

std::wstring Filelist_Comment::TextOf(std::wstring_view name) { return ControlCaption(*Find(name)); }

void Filelist_Comment::OnControl(win::FormControl& control, UINT code) {
  if (control.name == L"Text1" && code == EN_CHANGE) Text1_Change();
  if (control.name != L"Command1" || code != BN_CLICKED) return;
  if (control.index == 0) {
    Command1_Save();
  } else {
    Hide();
  }
}

void Filelist_Comment::LayOut() {
  // Text1 has the client area but for the bottom row: the two labels on the left, the buttons on the right.
  if (Find(L"Command1", 1) == nullptr) return;  // still being made
  RECT inner;
  ::GetClientRect(Handle(), &inner);
  const double width = win::TwipsFromPixels(inner.right, Dpi());
  const double height = win::TwipsFromPixels(inner.bottom, Dpi());
  const double buttonTop = height - kMargin - kButtonHeight;
  const double labelTop = buttonTop + (kButtonHeight - kLabelHeight) / 2;
  const double cancelLeft = width - kMargin - kButtonWidth;
  const double saveLeft = cancelLeft - kMargin - kButtonWidth;
  const double aliasLeft = kMargin + kCountWidth;
  Find(L"Text1")->place = {0, 0, width, std::max(0.0, buttonTop - kMargin)};
  Find(L"Label1")->place = {kMargin, labelTop, kCountWidth, kLabelHeight};
  Find(L"Label2")->place = {aliasLeft, labelTop, std::max(0.0, saveLeft - kMargin - aliasLeft), kLabelHeight};
  Find(L"Command1", 0)->place = {saveLeft, buttonTop, kButtonWidth, kButtonHeight};
  Find(L"Command1", 1)->place = {cancelLeft, buttonTop, kButtonWidth, kButtonHeight};
  Form::LayOut();
}

LRESULT Filelist_Comment::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_SIZE: LayOut(); break;
    case WM_GETMINMAXINFO:
      reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {win::PixelsFromTwips(kMinimumWidth, Dpi()),
                                                               win::PixelsFromTwips(kMinimumHeight, Dpi())};
      return 0;
    case WM_ENABLE:
      // A dialog was open meanwhile, and may have changed the row.
      if (wParam != FALSE) FollowSelection();
      break;
    case WM_CLOSE: Hide(); return 0;
  }
  return Form::OnMessage(message, wParam, lParam);
}

void meu_comment_Click(win::MainParts& parts, ListHelpers& helpers) {
  if (parts.commentShown) {
    helpers.comment->Hide();
    return;
  }
  if (!helpers.comment) helpers.comment = std::make_unique<Filelist_Comment>(parts);
  helpers.comment->Open();
}

}  // namespace kestrelon::items
