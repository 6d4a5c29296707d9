#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/ui/TestForm.h"
#include "ui/win/Form.h"

namespace kestrelon::win {
namespace {

using test::TestForm;

RECT PlaceOf(HWND form, HWND control) {
  RECT place{};
  GetWindowRect(control, &place);
  MapWindowPoints(nullptr, form, reinterpret_cast<POINT*>(&place), 2);
  return place;
}

LOGFONTW FontOf(HWND control) {
  LOGFONTW font{};
  GetObjectW(reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)), sizeof font, &font);
  return font;
}

void ChangeDpi(Form& form, unsigned dpi) {
  RECT suggested{50, 60, 50 + 700, 60 + 500};
  SendMessageW(form.Handle(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&suggested));
}

TEST(Form, MakesItsControlsInTheOrderOfTheTable) {
  TestForm form;
  std::vector<std::wstring> names;
  UINT id = 1000;
  for (const FormControl& control : form.Controls()) {
    names.push_back(control.name);
    EXPECT_EQ(control.id, id);
    EXPECT_EQ(static_cast<UINT>(GetDlgCtrlID(control.window)), id++);
    EXPECT_TRUE(IsChild(form.Handle(), control.window));
  }
  EXPECT_EQ(names, (std::vector<std::wstring>{L"Label1", L"Text1", L"Check1", L"Command1", L"Command2",
                                              L"Command2", L"Frame1"}));
  EXPECT_EQ(form.Name(), L"TestForm");
}

TEST(Form, FindsAControlByItsNameAndIndex) {
  TestForm form;
  EXPECT_EQ(form.Find(L"Command2", 1)->tag, L"14");
  EXPECT_EQ(form.Find(L"Command2"), nullptr);
  EXPECT_EQ(form.Find(L"Command9"), nullptr);
}

TEST(Form, AControlIsOfTheKindThatItsRowSays) {
  TestForm form;
  const auto className = [&](std::wstring_view name) {
    wchar_t text[32] = {};
    GetClassNameW(form.Of(name), text, 32);
    return std::wstring(text);
  };
  EXPECT_EQ(className(L"Label1"), L"Static");
  EXPECT_EQ(className(L"Text1"), L"Edit");
  EXPECT_EQ(className(L"Check1"), L"Button");
  EXPECT_EQ(GetWindowLongPtrW(form.Of(L"Check1"), GWL_STYLE) & BS_TYPEMASK, BS_AUTOCHECKBOX);
  EXPECT_EQ(GetWindowLongPtrW(form.Of(L"Frame1"), GWL_STYLE) & BS_TYPEMASK, BS_GROUPBOX);
  EXPECT_EQ(GetWindowLongPtrW(form.Of(L"Label1"), GWL_STYLE) & WS_TABSTOP, 0);
  EXPECT_NE(GetWindowLongPtrW(form.Of(L"Command1"), GWL_STYLE) & WS_TABSTOP, 0);
}

TEST(Form, ABoxOfSeveralLinesWrapsThem) {
  TestForm form;
  FormControl& box =
      form.AddControl({L"Text2", -1, ControlKind::kTextBox, L"", L"", {0, 0, 900, 900}, ES_MULTILINE});
  EXPECT_EQ(GetWindowLongPtrW(box.window, GWL_STYLE) & ES_AUTOHSCROLL, 0);
  EXPECT_NE(GetWindowLongPtrW(form.Of(L"Text1"), GWL_STYLE) & ES_AUTOHSCROLL, 0);
}

TEST(Form, PlacesItsControlsByTwips) {
  TestForm form;
  const RECT place = PlaceOf(form.Handle(), form.Of(L"Text1"));
  EXPECT_EQ(place.left, 80);
  EXPECT_EQ(place.top, 8);
  EXPECT_EQ(place.right - place.left, 160);
  EXPECT_EQ(place.bottom - place.top, 20);
}

TEST(Form, SizesItsClientAreaAndCentresOverTheOwner) {
  Window owner;
  owner.Create({.x = 100, .y = 100, .width = 600, .height = 500});
  ShowWindow(owner.Handle(), SW_SHOW);
  TestForm form(owner.Handle());

  RECT client{}, whole{};
  GetClientRect(form.Handle(), &client);
  GetWindowRect(form.Handle(), &whole);
  EXPECT_EQ(client.right, 280);
  EXPECT_EQ(client.bottom, 180);
  EXPECT_NEAR((whole.left + whole.right) / 2, 400, 1);
  EXPECT_NEAR((whole.top + whole.bottom) / 2, 350, 1);
}

TEST(Form, StaysOnTheWorkAreaWhenItsOwnerIsAtTheEdge) {
  Window owner;
  owner.Create({.x = -290, .y = -290, .width = 300, .height = 300});
  ShowWindow(owner.Handle(), SW_SHOW);
  TestForm form(owner.Handle());
  RECT whole{};
  GetWindowRect(form.Handle(), &whole);
  EXPECT_GE(whole.left, 0);
  EXPECT_GE(whole.top, 0);
}

TEST(Form, GivesAndTakesCaptions) {
  TestForm form;
  FormControl& label = *form.Find(L"Label1");
  EXPECT_EQ(form.ControlCaption(label), L"&Name:");
  form.SetControlCaption(label, L"\u540D\u79F0(&N):");
  EXPECT_EQ(form.ControlCaption(label), L"\u540D\u79F0(&N):");
  EXPECT_EQ(test::TextOf(label.window), L"\u540D\u79F0(&N):");
}

TEST(Form, ControlsStartWithTheSystemsMessageFont) {
  TestForm form;
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, form.Dpi());
  const LOGFONTW font = FontOf(form.Of(L"Command1"));
  EXPECT_STREQ(font.lfFaceName, metrics.lfMessageFont.lfFaceName);
  EXPECT_EQ(font.lfHeight, metrics.lfMessageFont.lfHeight);
}

TEST(Form, AFontIsMadeByFaceCharsetAndPoints) {
  TestForm form;
  form.SetControlFont(*form.Find(L"Label1"), {L"SimSun", GB2312_CHARSET, 12});
  const LOGFONTW font = FontOf(form.Of(L"Label1"));
  EXPECT_STREQ(font.lfFaceName, L"SimSun");
  EXPECT_EQ(font.lfCharSet, GB2312_CHARSET);
  EXPECT_EQ(font.lfHeight, -16);  // 12 points at 96 dpi
}

TEST(Form, EqualFontsAreMadeOnce) {
  TestForm form;
  EXPECT_EQ(form.FontFor({L"Arial", 1, 10}), form.FontFor({L"Arial", 1, 10}));
  EXPECT_NE(form.FontFor({L"Arial", 1, 10}), form.FontFor({L"Arial", 1, 12}));
  EXPECT_EQ(form.FontFor({}), form.MessageFont());
}

TEST(Form, ANewDpiPlacesTheControlsAndMakesTheFontsAnew) {
  TestForm form;
  form.SetControlFont(*form.Find(L"Label1"), {L"Arial", 1, 10});
  const LONG systemHeight = FontOf(form.Of(L"Command1")).lfHeight;
  EXPECT_EQ(FontOf(form.Of(L"Label1")).lfHeight, -13);

  ChangeDpi(form, 192);

  EXPECT_EQ(form.Dpi(), 192u);
  const RECT place = PlaceOf(form.Handle(), form.Of(L"Text1"));
  EXPECT_EQ(place.left, 160);
  EXPECT_EQ(place.right - place.left, 320);
  EXPECT_EQ(FontOf(form.Of(L"Label1")).lfHeight, -27);
  EXPECT_NEAR(FontOf(form.Of(L"Command1")).lfHeight, 2 * systemHeight, 1);
  RECT whole{};
  GetWindowRect(form.Handle(), &whole);
  EXPECT_EQ(whole.left, 50);
  EXPECT_EQ(whole.right, 750);

  ChangeDpi(form, 96);
  EXPECT_EQ(PlaceOf(form.Handle(), form.Of(L"Text1")).left, 80);
  EXPECT_EQ(FontOf(form.Of(L"Label1")).lfHeight, -13);
}

TEST(Form, NewSystemFontsAreTakenOver) {
  TestForm form;
  SendMessageW(form.Handle(), WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
  const auto font = reinterpret_cast<HFONT>(SendMessageW(form.Of(L"Command1"), WM_GETFONT, 0, 0));
  EXPECT_EQ(font, form.MessageFont());
  EXPECT_EQ(GetObjectType(font), DWORD{OBJ_FONT});
}

TEST(Form, LabelsHaveTheColourOfTheForm) {
  TestForm form;
  const HDC dc = GetDC(form.Of(L"Label1"));
  const LRESULT brush = SendMessageW(form.Handle(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc),
                                     reinterpret_cast<LPARAM>(form.Of(L"Label1")));
  LOGBRUSH made{};
  GetObjectW(reinterpret_cast<HBRUSH>(brush), sizeof made, &made);
  EXPECT_EQ(made.lbColor, GetSysColor(COLOR_BTNFACE));
  EXPECT_EQ(GetBkColor(dc), GetSysColor(COLOR_BTNFACE));
  ReleaseDC(form.Of(L"Label1"), dc);
}

TEST(Form, TellsWhatItsControlsNotify) {
  TestForm form;
  ShowWindow(form.Handle(), SW_SHOW);
  SetFocus(form.Of(L"Text1"));
  form.events.clear();

  SetWindowTextW(form.Of(L"Text1"), L"x");
  SetFocus(form.Of(L"Command2", 1));
  SendMessageW(form.Of(L"Command2", 1), BM_CLICK, 0, 0);

  EXPECT_EQ(form.Count(L"Text1", EN_CHANGE), 1);
  EXPECT_GE(form.Count(L"Command2(1)", BN_SETFOCUS), 1);
  EXPECT_EQ(form.Count(L"Command2(1)", BN_CLICKED), 1);
  EXPECT_EQ(form.Count(L"Command2(0)", BN_CLICKED), 0);
}

TEST(Form, ADefaultButtonStillTellsThatItHasTheFocus) {
  TestForm form;
  form.SetDefaultButton(*form.Find(L"Command1"));
  ShowWindow(form.Handle(), SW_SHOW);
  SetFocus(form.Of(L"Text1"));
  SetFocus(form.Of(L"Command1"));
  EXPECT_GE(form.Count(L"Command1", BN_SETFOCUS), 1);
  EXPECT_EQ(GetWindowLongPtrW(form.Of(L"Command1"), GWL_STYLE) & BS_TYPEMASK, BS_DEFPUSHBUTTON);
}

TEST(Form, ReferencesToItsControlsOutliveItsWindow) {
  TestForm form;
  FormControl& button = *form.Find(L"Command1");
  form.Close();
  EXPECT_EQ(form.Handle(), nullptr);
  EXPECT_EQ(button.name, L"Command1");
  EXPECT_EQ(button.window, nullptr);
  form.Close();  // gone already
}

struct ShownForm : testing::Test {
  ShownForm() {
    ShowWindow(form.Handle(), SW_SHOW);
    SetForegroundWindow(form.Handle());
    SetFocus(form.Of(L"Text1"));
    form.events.clear();
  }
  TestForm form;
};
using FormKeys = ShownForm;

TEST_F(FormKeys, EnterPressesTheDefaultButton) {
  form.SetDefaultButton(*form.Find(L"Command1"));
  test::PressKey(GetFocus(), VK_RETURN);
  EXPECT_EQ(form.Count(L"Command1", BN_CLICKED), 1);
}

TEST_F(FormKeys, EnterPressesTheButtonThatHasTheFocusInstead) {
  form.SetDefaultButton(*form.Find(L"Command1"));
  SetFocus(form.Of(L"Command2", 0));
  test::PressKey(GetFocus(), VK_RETURN);
  EXPECT_EQ(form.Count(L"Command2(0)", BN_CLICKED), 1);
  EXPECT_EQ(form.Count(L"Command1", BN_CLICKED), 0);
}

TEST_F(FormKeys, EscapePressesTheCancelButton) {
  form.SetCancelButton(*form.Find(L"Command2", 1));
  test::PressKey(GetFocus(), VK_ESCAPE);
  EXPECT_EQ(form.Count(L"Command2(1)", BN_CLICKED), 1);
}

TEST_F(FormKeys, ADisabledButtonIsNotPressed) {
  form.SetDefaultButton(*form.Find(L"Command1"));
  EnableWindow(form.Of(L"Command1"), FALSE);
  test::PressKey(GetFocus(), VK_RETURN);
  EXPECT_EQ(form.Count(L"Command1", BN_CLICKED), 0);
}

TEST_F(FormKeys, WithoutSuchButtonsNothingIsPressed) {
  test::PressKey(GetFocus(), VK_RETURN);
  test::PressKey(GetFocus(), VK_ESCAPE);
  for (const auto& [name, code] : form.events) EXPECT_NE(code, UINT{BN_CLICKED}) << name.size();
}

TEST_F(FormKeys, TabGoesThroughTheControlsInTheirOrder) {
  test::PressKey(GetFocus(), VK_TAB);
  EXPECT_EQ(GetFocus(), form.Of(L"Check1"));
  test::PressKey(GetFocus(), VK_TAB);
  EXPECT_EQ(GetFocus(), form.Of(L"Command1"));
  const test::KeysDown shift({VK_SHIFT});
  MSG message{};
  message.hwnd = GetFocus();
  message.message = WM_KEYDOWN;
  message.wParam = VK_TAB;
  EXPECT_TRUE(form.TranslateDialogMessage(message));
  EXPECT_EQ(GetFocus(), form.Of(L"Check1"));
}

TEST_F(FormKeys, TheAccessKeyOfALabelGoesToTheControlBehindIt) {
  SetFocus(form.Of(L"Command1"));
  PostMessageW(GetFocus(), WM_SYSCHAR, L'n', 1 << 29);
  win::DoEvents();
  EXPECT_EQ(GetFocus(), form.Of(L"Text1"));
}

TEST_F(FormKeys, TheAccessKeyOfACheckBoxTicksIt) {
  PostMessageW(GetFocus(), WM_SYSCHAR, L'w', 1 << 29);
  win::DoEvents();
  EXPECT_EQ(SendMessageW(form.Of(L"Check1"), BM_GETCHECK, 0, 0), BST_CHECKED);
}

TEST_F(FormKeys, EnterBreaksTheLineInABoxThatTakesIt) {
  form.SetDefaultButton(*form.Find(L"Command1"));
  FormControl& box = form.AddControl(
      {L"Text2", -1, ControlKind::kTextBox, L"", L"", {0, 0, 900, 900}, ES_MULTILINE | ES_WANTRETURN});
  SetFocus(box.window);
  test::PressKey(box.window, VK_RETURN);
  EXPECT_EQ(form.Count(L"Command1", BN_CLICKED), 0);
  EXPECT_EQ(test::TextOf(box.window), L"\r\n");
}

TEST_F(FormKeys, LettersReachTheTextBox) {
  test::TypeKeys({'A', 'B'});
  EXPECT_TRUE(test::PumpUntil([&] { return test::TextOf(form.Of(L"Text1")) == L"ab"; }));
}

TEST_F(FormKeys, TheFocusComesBackWithTheWindow) {
  Window other;
  other.Create({});
  ShowWindow(other.Handle(), SW_SHOW);
  SetFocus(form.Of(L"Command1"));

  SetActiveWindow(other.Handle());
  ASSERT_NE(GetFocus(), form.Of(L"Command1"));
  SetActiveWindow(form.Handle());

  EXPECT_EQ(GetFocus(), form.Of(L"Command1"));
}

}  // namespace
}  // namespace kestrelon::win
