#include "items/Filelist_Comment.h"

#include <algorithm>
#include <stdexcept>

#include "app/base/File.h"
#include "items/EditItem.h"
#include "items/ListEvents.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "store/SharedConnection.h"
#include "ui/cMagneticWnd.h"
#include "ui/win/Boxes.h"
#include "ui/win/StoredText.h"

namespace kestrelon::items {
namespace {

// Follows the selected row once the dialog is gone that kept this window disabled.
constexpr UINT kFollow = WM_APP + 1;

constexpr double kWidth = 6300, kHeight = 3600;
constexpr double kMinimumWidth = 5400, kMinimumHeight = 1800;  // of the whole window
constexpr double kMargin = 90;
constexpr double kButtonWidth = 1125, kButtonHeight = 390;
constexpr double kCountWidth = 1650, kLabelHeight = 240;

}  // namespace

Filelist_Comment::Filelist_Comment(win::MainParts& parts) : Form(L"Filelist_Comment"), parts_(parts) {
  parts_.itemSelected = [this] { FollowSelection(); };
  parts_.settleComment = [this] {
    if (!Settle()) throw std::runtime_error("The comment could not be saved.");
  };
  parts_.keepComment = [this] {
    if (IsUnsaved()) SaveText(TextOf(L"Label3"), Trim(TextOf(L"Text1")));
  };
}

Filelist_Comment::~Filelist_Comment() {
  parts_.itemSelected = nullptr;
  parts_.settleComment = parts_.keepComment = nullptr;
  Destroy();
}

void Filelist_Comment::CreateControls() {
  CreateDialogWindow(L"Comment", parts_.form.Handle(), WS_EX_TOOLWINDOW, WS_THICKFRAME | WS_CLIPCHILDREN);

  using win::ControlKind;
  AddControl({L"Text1",
              -1,
              ControlKind::kTextBox,
              L"",
              L"",
              {},
              ES_MULTILINE | ES_WANTRETURN | ES_AUTOVSCROLL | WS_VSCROLL});
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
  StoreIn(parts_, *Find(L"Text1"), u"Comment");
  parts_.commentShown = true;
  parts_.menus.Check(L"meu_comment", true);
  FollowSelection();
  if (parts_.magnets) parts_.magnets->AddWindow(Handle(), parts_.form.Handle());
  ::ShowWindow(Handle(), SW_SHOW);
  ::SetFocus(Find(L"Text1")->window);
}

void Filelist_Comment::Hide() {
  if (!Settle()) return;
  parts_.commentShown = false;
  parts_.menus.Check(L"meu_comment", false);
  if (Handle() == nullptr) return;
  Remember(L"", L"", L"");
  if (parts_.magnets) parts_.magnets->RemoveWindow(Handle());
  ::ShowWindow(Handle(), SW_HIDE);
}

void Filelist_Comment::FollowSelection() {
  if (!parts_.commentShown || Handle() == nullptr || settling_) return;
  const auto selected = parts_.ListView1.SelectedRow();
  const bool another = !selected || parts_.ListView1.Rows()[*selected].Tag() != TextOf(L"Label3") ||
                       parts_.ListView1.Rows()[*selected].Text(kCommentColumn) != shownComment_;
  // The user knows that it could not be saved; another selection asks again.
  const std::wstring tag(selected ? parts_.ListView1.Rows()[*selected].Tag() : std::wstring_view());
  if (another && failedAt_ == tag) return;
  failedAt_.reset();
  if (another && !Settle()) {
    failedAt_ = tag;
    return;
  }
  // The question may have taken its time.
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
  SetComment(comment);
  // What is typed for no item could not be saved.
  ::SendMessageW(Find(L"Text1")->window, EM_SETREADONLY, fileIndex.empty(), 0);
  ::EnableWindow(Find(L"Command1", 0)->window, !fileIndex.empty());
}

void Filelist_Comment::SetComment(const std::wstring& comment) {
  shownComment_ = comment;
  if (Handle() == nullptr) return;
  SetText(L"Text1", comment);
  Text1_Change();  // a box of several lines does not tell of texts that the program sets
}

bool Filelist_Comment::IsUnsaved() {
  if (Handle() == nullptr || TextOf(L"Label3").empty()) return false;
  const std::wstring text = TextOf(L"Text1"), comment = Trim(text);
  if (text == shownComment_ || comment.empty() || comment == shownComment_) return false;
  // An item that was deleted meanwhile has taken its comment along. One that cannot be looked up may be
  // there.
  bool there = true;
  win::Quietly([&] {
    store::Opened connection(parts_.connection);
    jet::Recordset rows;
    rows.Open(
        store::ToEngine(L"SELECT FileIndex FROM FTable WHERE FileIndex=" + store::Quoted(TextOf(L"Label3"))),
        connection->Ado());
    there = !rows.EndOfFile();
    rows.Close();
    connection.Close();
  });
  return there;
}

bool Filelist_Comment::Settle() {
  if (settling_ || !IsUnsaved()) return true;
  const win::ScopedFlag settling(settling_);
  const std::wstring fileIndex = TextOf(L"Label3"), comment = Trim(TextOf(L"Text1"));
  // The question is about the text as it stands.
  const HWND window = Handle(), focus = ::GetFocus();
  const bool enabled = ::IsWindowEnabled(window) != FALSE;
  ::EnableWindow(window, FALSE);
  const int answer = parts_.world.messageBox(
      OwnerOfQuestion(),
      TextOf(L"Label2") + L"\n\n" + lang::Message(parts_.program, lang::kSaveCommentQuestion),
      parts_.program.productName, MB_YESNO | MB_ICONQUESTION);
  if (Handle() != window) return true;  // the program came to its end meanwhile
  ::EnableWindow(window, enabled);
  if (focus != nullptr && ::GetFocus() == nullptr) ::SetFocus(focus);
  if (answer == IDYES) return SaveText(fileIndex, comment);
  SetComment(shownComment_);
  return true;
}

HWND Filelist_Comment::OwnerOfQuestion() const {
  const HWND main = parts_.form.Handle();
  return ::IsWindowEnabled(main) ? main : ::GetLastActivePopup(main);
}

void Filelist_Comment::Command1_Save() {
  const std::wstring comment = Trim(TextOf(L"Text1"));
  const std::wstring fileIndex = TextOf(L"Label3");
  if (!comment.empty() && !fileIndex.empty()) SaveText(fileIndex, comment);
}

// To the item that it was typed for, whether or not the list shows that now.
bool Filelist_Comment::SaveText(const std::wstring& fileIndex, const std::wstring& comment) {
  const HWND text = Find(L"Text1")->window;
  if (win::RefusesItsText(text)) return false;
  if (const auto failure = ChangeItem(parts_, [&] {
        return L"UPDATE FTable SET Comment=" + store::Quoted(comment) + L" WHERE FileIndex=" +
               store::Quoted(fileIndex);
      })) {
    win::ShowBalloon(text, *failure);
    return false;
  }
  shownComment_ = comment;
  if (const auto row = RowOfItem(parts_.ListView1, fileIndex))
    parts_.ListView1.SetText(*row, kCommentColumn, comment);
  return true;
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
      if (wParam != FALSE && !settling_) ::PostMessageW(Handle(), kFollow, 0, 0);
      break;
    case kFollow: FollowSelection(); return 0;
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
