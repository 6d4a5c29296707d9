#include "items/FilePropterty.h"

#include <commdlg.h>

#include "app/base/File.h"
#include "items/EditItem.h"
#include "items/ItemInformation.h"
#include "lang/SelectLanguage.h"
#include "store/Schema.h"
#include "store/SharedConnection.h"
#include "ui/win/Boxes.h"
#include "ui/win/StoredText.h"

namespace kestrelon::items {
namespace {

enum : int { kOk, kCancel };                                                   // indexes of Command2
enum : std::size_t { kFileNameField, kPathField, kTimeField, kCommentField };  // indexes of Text2

// The column of the item list that each field shows.
constexpr std::size_t kColumns[] = {kFileNameColumn, kPathColumn, kTimeColumn, kCommentColumn};
constexpr std::u16string_view kTableColumns[] = {u"Filename", u"LocalFile", u"InsertTime", u"Comment"};
constexpr const wchar_t* kFieldCaptions[] = {L"&File name:", L"&Path:", L"&Time added:", L"Co&mment:"};
constexpr const wchar_t* kFieldTags[] = {L"Label1_0", L"Label1_1", L"Label1_2", L"Label1_3"};

// Selects a field once the press of the mouse that gave it the focus is dealt with.
constexpr UINT kSelectField = WM_APP + 1;

constexpr double kWidth = 8400, kMargin = 225, kGap = 120;
constexpr double kLineHeight = 330, kStep = kLineHeight + kGap;
constexpr double kCommentHeight = 1800;
constexpr double kFieldLeft = 1875, kFieldWidth = kWidth - kMargin - kFieldLeft;
constexpr double kBrowseWidth = 600;
constexpr double kStatusTop = kMargin + 3 * kStep + kCommentHeight + kGap;
constexpr double kButtonWidth = 1500, kButtonHeight = 420;
constexpr double kButtonTop = kStatusTop + kStep + kGap;
constexpr double kCancelLeft = kWidth - kMargin - kButtonWidth;
constexpr double kHeight = kButtonTop + kButtonHeight + kMargin;

constexpr const wchar_t* kFilter =
    L"Txt File (*.txt)|*.txt|"
    L"Exe File (*.exe)|*.exe|"
    L"MP3 File (*.mp3)|*.mp3|"
    L"BMP (*.bmp)|*.bmp|"
    L"JPG (*.jpg)|*.jpg|"
    L"All Files (*.*)|*.*";

}  // namespace

std::wstring PropertiesStatement(const std::array<std::wstring, 5>& texts) {
  // Without blanks behind the commas and before WHERE: a quote ends its token.
  return L"UPDATE FTable SET Filename=" + store::Quoted(texts[0]) + L"," + L"LocalFile=" +
         store::Quoted(texts[1]) + L"," + L"InsertTime=" + store::Quoted(texts[2]) + L"," + L"Comment=" +
         store::Quoted(texts[3]) + L"WHERE FileIndex=" + store::Quoted(texts[4]);
}

void FilePropterty::Show(HWND owner, std::size_t row) {
  CreateControls();
  Form_Load(row);
  ShowModal(owner);
}

void FilePropterty::CreateControls() {
  CreateDialogWindow(L"Propterties", parts_.form.Handle());

  const auto label = [this](int index, const wchar_t* tag, const wchar_t* caption, double top) {
    AddControl({L"Label1",
                index,
                win::ControlKind::kLabel,
                tag,
                caption,
                {kMargin, top, kFieldLeft - kGap - kMargin, kLineHeight}});
  };
  double top = kMargin;
  for (std::size_t i = 0; i < kFields; ++i, top += kStep) {
    label(static_cast<int>(i), kFieldTags[i], kFieldCaptions[i], top);
    const bool comment = i == kCommentField;
    text2_[i] =
        &AddControl({L"Text2",
                     static_cast<int>(i),
                     win::ControlKind::kTextBox,
                     L"Text2",
                     L"",
                     {kFieldLeft, top, i == kPathField ? kFieldWidth - kGap - kBrowseWidth : kFieldWidth,
                      comment ? kCommentHeight : kLineHeight},
                     comment ? DWORD{ES_MULTILINE | ES_WANTRETURN | ES_AUTOVSCROLL | WS_VSCROLL} : DWORD{0}});
    StoreIn(parts_, Text2(i), kTableColumns[i]);
    if (i != kPathField) continue;
    // No tag: dots are dots in every language.
    AddControl({L"Command1",
                -1,
                win::ControlKind::kCommandButton,
                L"",
                L"....",
                {kWidth - kMargin - kBrowseWidth, top, kBrowseWidth, kLineHeight}});
  }
  label(static_cast<int>(kFields), L"Label1_4", L"&Status:", kStatusTop);
  Text1_ = &AddControl({L"Text1",
                        -1,
                        win::ControlKind::kTextBox,
                        L"Text1",
                        L"",
                        {kFieldLeft, kStatusTop, kFieldWidth, kLineHeight},
                        ES_READONLY});
  SetDefaultButton(
      AddControl({L"Command2",
                  kOk,
                  win::ControlKind::kCommandButton,
                  L"Command2_0",
                  L"&OK",
                  {kCancelLeft - kGap - kButtonWidth, kButtonTop, kButtonWidth, kButtonHeight}}));
  SetCancelButton(AddControl({L"Command2",
                              kCancel,
                              win::ControlKind::kCommandButton,
                              L"Command2_1",
                              L"Cancel",
                              {kCancelLeft, kButtonTop, kButtonWidth, kButtonHeight}}));
  Label2_ = &AddControl({L"Label2", -1, win::ControlKind::kLabel, L"", L"", {}});
  ::ShowWindow(Label2_->window, SW_HIDE);
  SizeClientAndCentre(kWidth, kHeight, parts_.form.Handle());
}

void FilePropterty::Form_Load(std::size_t row) {
  lang::ReadLanguage(*this, parts_.program, parts_.program.languageName, parts_.world);
  const win::ListRow& item = parts_.ListView1.Rows()[row];
  for (std::size_t i = 0; i < kFields; ++i) {
    SetControlCaption(Text2(i), std::wstring(item.Text(kColumns[i])));
  }
  SetControlCaption(*Label2_, std::wstring(item.Tag()));
}

void FilePropterty::Form_Activate() {
  const std::wstring path = ControlCaption(Text2(kPathField));
  const bool there = ServerAnswers(parts_.world, path) && FileExists(path);
  SetControlCaption(*Text1_,
                    there ? path : lang::WindowText(parts_.program, Name(), L"Text1", L"File Not Found!"));
}

void FilePropterty::GotFocus(win::FormControl& field) {
  ::SendMessageW(field.window, EM_SETSEL, 0, -1);
  ::PostMessageW(Handle(), kSelectField, reinterpret_cast<WPARAM>(field.window), 0);
}

void FilePropterty::Command1_Click() {
  win::InRoutine(parts_.world, Handle(), L"Command1_Click Error:", false, [&] {
    OpenFilesRequest request;
    request.owner = Handle();
    request.title = L"Select 1 File";
    request.filter = kFilter;
    request.flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY;
    const std::wstring path = CutAtNul(parts_.world.openFiles(request).value_or(std::wstring()));
    if (path.empty()) return false;
    SetControlCaption(Text2(kFileNameField), FileNameOfPath(path));
    SetControlCaption(*Text1_, FolderOfPath(path));
    SetControlCaption(Text2(kPathField), path);
    return true;
  });
}

void FilePropterty::Command2_Click(int index) {
  if (index == kOk) {
    std::array<std::wstring, kFields + 1> texts;
    for (std::size_t i = 0; i < kFields; ++i) {
      if (win::RefusesItsText(Text2(i).window)) return;
      texts[i] = ControlCaption(Text2(i));
    }
    const std::wstring& fileIndex = texts[kFields] = ControlCaption(*Label2_);
    if (const auto failure = ChangeItem(parts_, [&] { return PropertiesStatement(texts); })) {
      // At the field that is too long, which is what a table refuses; the first one where it was something
      // else.
      std::size_t field = 0;
      while (field < kFields && texts[field].size() <= store::LongestText(kTableColumns[field])) ++field;
      win::ShowBalloon(Text2(field < kFields ? field : 0).window, *failure);
      return;
    }
    if (const auto row = RowOfItem(parts_.ListView1, fileIndex)) {
      for (std::size_t i = 0; i < kFields; ++i) parts_.ListView1.SetText(*row, kColumns[i], texts[i]);
    }
  }
  Close();
}

LRESULT FilePropterty::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == kSelectField) {
    const auto field = reinterpret_cast<HWND>(wParam);
    if (::GetFocus() == field) ::SendMessageW(field, EM_SETSEL, 0, -1);
    return 0;
  }
  const LRESULT result = Form::OnMessage(message, wParam, lParam);
  if (message == WM_ACTIVATE && LOWORD(wParam) != WA_INACTIVE) Form_Activate();
  return result;
}

void FilePropterty::OnControl(win::FormControl& control, UINT code) {
  if (control.kind == win::ControlKind::kTextBox && code == EN_SETFOCUS) GotFocus(control);
  if (control.name == L"Command1" && code == BN_CLICKED) Command1_Click();
  if (control.name == L"Command2" && code == BN_CLICKED) Command2_Click(control.index);
}

void meu_Properties_Click(win::MainParts& parts) {
  if (const auto row = parts.ListView1.SelectedRow()) FilePropterty(parts).Show(parts.form.Handle(), *row);
}

}  // namespace kestrelon::items
