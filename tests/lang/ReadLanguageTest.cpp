#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "lang/SelectLanguage.h"
#include "tests/support/FakeWorld.h"
#include "tests/support/Pump.h"
#include "tests/support/ScopedTestDir.h"
#include "ui/win/Form.h"
#include "ui/win/ListView.h"
#include "ui/win/Menus.h"

namespace kestrelon::lang {
namespace {

using test::FakeWorld;
using test::ScopedTestDir;
using test::TextOf;
using win::ControlKind;

class TestForm : public win::Form {
 public:
  explicit TestForm(const std::wstring& name) : Form(name) {
    win::WindowSpec spec;
    spec.caption = L"designed";
    Create(spec);
  }
  win::ListView* LocalisedHeaders() override {
    if (headersFail) throw std::runtime_error("no headers today");
    return headers;
  }
  win::FormControl& Add(const wchar_t* name, ControlKind kind, const wchar_t* tag) {
    return AddControl({name, -1, kind, tag, L"designed", {0, 0, 1000, 300}});
  }

  win::ListView* headers = nullptr;
  bool headersFail = false;
};

// A main window's list with three columns.
struct ThreeColumns {
  explicit ThreeColumns(TestForm& form) {
    list.Create(form.Handle(), 100);
    list.AddColumn(L"one", 20);
    list.AddColumn(L"two", 20);
    list.AddColumn(L"three", 20);
    form.headers = &list;
  }
  win::ListView list;
};

class ReadLanguageTest : public testing::Test {
 protected:
  void English(std::wstring_view text) { dir.WriteIniFile(L"Program\\Lang\\English.ini", text); }
  void Read(win::Form& form, std::wstring_view language = L"English") {
    ReadLanguage(form, dir.program, language, world);
  }

  FakeWorld world;
  ScopedTestDir dir;
  const win::FontSpec localeFont = FontOfLocale(GetUserDefaultLCID());
};

TEST(LanguageFile, StandsInTheFolderLangBesideTheProgram) {
  Program program;
  program.programFolder = L"C:\\Kestrelon\\";

  EXPECT_EQ(LanguageFile(program, L"English"), L"C:\\Kestrelon\\Lang\\English.ini");
  EXPECT_EQ(LanguageFile(program, L"Chinese_S"), L"C:\\Kestrelon\\Lang\\Chinese_S.ini");
  EXPECT_EQ(LanguageFile(program, L"Chinese_T"), L"C:\\Kestrelon\\Lang\\Chinese_T.ini");
}

TEST(LanguageFile, IsEmptyForAnyOtherName) {
  Program program;
  program.programFolder = L"C:\\Kestrelon\\";

  for (const wchar_t* name : {L"", L"english", L"German", L"..\\English"})
    EXPECT_EQ(LanguageFile(program, name), L"");
}

TEST(FontOfLocale, HasItsOwnFaceAndCharsetForTheFourEastAsianLocales) {
  EXPECT_EQ(FontOfLocale(1042), (win::FontSpec{L"\xAD74\xB9BC", 129, 10}));
  EXPECT_EQ(FontOfLocale(1028), (win::FontSpec{L"\x65B0\x7D30\x660E\x9AD4", 136, 10}));
  EXPECT_EQ(FontOfLocale(1041), (win::FontSpec{L"\xFF2D\xFF33 \xFF30\x30B4\x30B7\x30C3\x30AF", 128, 10}));
  EXPECT_EQ(FontOfLocale(2052), (win::FontSpec{L"\x5B8B\x4F53", 134, 10}));
}

TEST(FontOfLocale, IsArialInTheDefaultCharsetForEveryOther) {
  for (const unsigned locale : {1033u, 1031u, 3076u, 4100u, 0u}) {
    EXPECT_EQ(FontOfLocale(locale), (win::FontSpec{L"Arial", 1, 10})) << locale;
  }
}

TEST_F(ReadLanguageTest, SetsTheCaptionsOfMenusLabelsButtonsAndCheckBoxes) {
  English(L"[Dialog]\r\n0=Caption\r\nL=Label\r\nB=&Button\r\nC=Check\r\nmeu_x=Entry\r\n");
  TestForm form(L"Dialog");
  const win::FormControl& label = form.Add(L"Label1", ControlKind::kLabel, L"L");
  const win::FormControl& button = form.Add(L"Command1", ControlKind::kCommandButton, L"B");
  const win::FormControl& check = form.Add(L"Check1", ControlKind::kCheckBox, L"C");
  win::Menus menus;
  const win::MenuLine lines[] = {{0, L"meu_top", L"Top"}, {1, L"meu_x", L"designed"}};
  menus.Create(form, lines, std::size(lines), 200);

  Read(form);

  EXPECT_EQ(form.Caption(), L"Caption");
  EXPECT_EQ(TextOf(label.window), L"Label");
  EXPECT_EQ(TextOf(button.window), L"&Button");
  EXPECT_EQ(TextOf(check.window), L"Check");
  EXPECT_EQ(form.ControlCaption(*form.Find(L"meu_x")), L"Entry");
  EXPECT_EQ(form.ControlCaption(*form.Find(L"meu_top")), L"Top") << "no key, no change";
}

TEST_F(ReadLanguageTest, KeepsTheKeyHintOfAMenuEntry) {
  English(L"[Dialog]\r\nmeu_x=Entry\r\n");
  TestForm form(L"Dialog");
  win::Menus menus;
  const win::MenuLine lines[] = {{0, L"meu_top", L"Top"}, {1, L"meu_x", L"designed\tF2"}};
  menus.Create(form, lines, std::size(lines), 200);

  Read(form);

  wchar_t text[64] = L"";
  GetMenuStringW(GetMenu(form.Handle()), menus.IdOf(L"meu_x"), text, 64, MF_BYCOMMAND);
  EXPECT_STREQ(text, L"Entry\tF2");
}

TEST_F(ReadLanguageTest, GivesOtherControlsTheFontAlone) {
  English(L"[Dialog]\r\nT=text\r\nF=frame\r\n");
  TestForm form(L"Dialog");
  const win::FormControl& text = form.Add(L"Text1", ControlKind::kTextBox, L"T");
  const win::FormControl& frame = form.Add(L"Frame1", ControlKind::kFrame, L"F");

  Read(form);

  EXPECT_EQ(TextOf(text.window), L"designed");
  EXPECT_EQ(TextOf(frame.window), L"designed");
  EXPECT_EQ(text.font, localeFont);
  EXPECT_EQ(frame.font, localeFont);
}

TEST_F(ReadLanguageTest, GivesTheControlsWindowTheFontOfTheLocale) {
  English(L"");
  TestForm form(L"Dialog");
  const win::FormControl& label = form.Add(L"Label1", ControlKind::kLabel, L"L");

  Read(form);

  LOGFONTW font{};
  GetObjectW(reinterpret_cast<HFONT>(SendMessageW(label.window, WM_GETFONT, 0, 0)), sizeof font, &font);
  EXPECT_EQ(font.lfFaceName, localeFont.face);
  EXPECT_EQ(font.lfCharSet, localeFont.charset);
  EXPECT_EQ(font.lfHeight, -MulDiv(10, static_cast<int>(form.Dpi()), 72));
}

TEST_F(ReadLanguageTest, BlanksTheHeadersFromTheSecondOnWithoutASectionForThem) {
  English(L"[MainForm]\r\nmeu_file=&File\r\n");
  TestForm form(L"MainForm");
  const ThreeColumns columns(form);

  Read(form);

  EXPECT_EQ(columns.list.ColumnText(0), L"one");
  EXPECT_EQ(columns.list.ColumnText(1), L"");
  EXPECT_EQ(columns.list.ColumnText(2), L"");
}

TEST_F(ReadLanguageTest, NumbersTheHeadersFromOneAndNeverTouchesTheFirst) {
  English(L"[listview_header]\r\n1=never\r\n2=Alias\r\n3=File name\r\n4=too many\r\n");
  TestForm form(L"MainForm");
  const ThreeColumns columns(form);

  Read(form);

  EXPECT_EQ(columns.list.ColumnText(0), L"one");
  EXPECT_EQ(columns.list.ColumnText(1), L"Alias");
  EXPECT_EQ(columns.list.ColumnText(2), L"File name");
}

TEST_F(ReadLanguageTest, NeverTouchesTheMainWindowsCaption) {
  English(L"[MainForm]\r\n0=other\r\n");
  TestForm form(L"MainForm");

  Read(form);

  EXPECT_EQ(form.Caption(), L"designed");
}

TEST_F(ReadLanguageTest, BlanksTheCaptionOfADialogWhoseSectionLacksKey0) {
  English(L"[Dialog]\r\nL=Label\r\n");
  TestForm form(L"Dialog");

  Read(form);

  EXPECT_EQ(form.Caption(), L"");
}

TEST_F(ReadLanguageTest, LeavesAControlWhoseKeyIsMissingItsCaption) {
  English(L"[Dialog]\r\n0=Caption\r\nempty=\r\n");
  TestForm form(L"Dialog");
  const win::FormControl& missing = form.Add(L"Label1", ControlKind::kLabel, L"missing");
  const win::FormControl& empty = form.Add(L"Label2", ControlKind::kLabel, L"empty");

  Read(form);

  EXPECT_EQ(TextOf(missing.window), L"designed");
  EXPECT_EQ(TextOf(empty.window), L"designed");
  EXPECT_EQ(missing.font, localeFont);
}

TEST_F(ReadLanguageTest, LeavesALabelWithAnEmptyTagItsCaptionAndItsFont) {
  English(L"[Dialog]\r\n=nameless\r\nLabel1=other\r\n");
  TestForm form(L"Dialog");
  const win::FormControl& label = form.Add(L"Label1", ControlKind::kLabel, L"");
  const win::FontSpec before = label.font;
  const LRESULT fontBefore = SendMessageW(label.window, WM_GETFONT, 0, 0);

  Read(form);

  EXPECT_EQ(TextOf(label.window), L"designed");
  EXPECT_EQ(label.font, before);
  EXPECT_EQ(SendMessageW(label.window, WM_GETFONT, 0, 0), fontBefore);
}

TEST_F(ReadLanguageTest, WithAnUnknownLanguageBlanksCaptionsAndHeadersButNoControls) {
  English(L"[Dialog]\r\n0=Caption\r\nL=Label\r\n[listview_header]\r\n2=Alias\r\n");
  TestForm dialog(L"Dialog");
  const win::FormControl& label = dialog.Add(L"Label1", ControlKind::kLabel, L"L");
  TestForm mainForm(L"MainForm");
  const ThreeColumns columns(mainForm);

  Read(dialog, L"Klingon");
  Read(mainForm, L"Klingon");

  EXPECT_EQ(dialog.Caption(), L"");
  EXPECT_EQ(TextOf(label.window), L"designed");
  EXPECT_EQ(label.font, localeFont);
  EXPECT_EQ(columns.list.ColumnText(0), L"one");
  EXPECT_EQ(columns.list.ColumnText(1), L"");
}

TEST_F(ReadLanguageTest, ShowsChineseTextsInTheFontOfTheLocale) {
  dir.WriteIniFile(L"Program\\Lang\\Chinese_S.ini", L"[Dialog]\r\n0=标题\r\nL=别名\r\n");
  TestForm form(L"Dialog");
  const win::FormControl& label = form.Add(L"Label1", ControlKind::kLabel, L"L");

  Read(form, L"Chinese_S");

  EXPECT_EQ(form.Caption(), L"标题");
  EXPECT_EQ(TextOf(label.window), L"别名");
  EXPECT_EQ(label.font, localeFont);
}

TEST_F(ReadLanguageTest, ShowsAFailureInABoxAndKeepsWhatWasApplied) {
  English(L"[Dialog]\r\n0=Caption\r\nL=Label\r\n");
  TestForm form(L"Dialog");
  const win::FormControl& label = form.Add(L"Label1", ControlKind::kLabel, L"L");
  form.headersFail = true;
  world.answers = {IDOK};

  Read(form);

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"ReadLanguage Error.");
  EXPECT_EQ(world.boxes[0].text, L"no headers today");
  EXPECT_EQ(world.boxes[0].flags, UINT{MB_OK | MB_ICONINFORMATION});
  EXPECT_EQ(form.Caption(), L"Caption");
  EXPECT_EQ(TextOf(label.window), L"designed");
}

TEST_F(ReadLanguageTest, ReportsThroughARealBoxWhenNoWorldIsGiven) {
  TestForm form(L"Dialog");
  form.headersFail = true;
  std::wstring title;
  const test::OnDialog answer([&](HWND box) {
    title = TextOf(box);
    PostMessageW(box, WM_COMMAND, IDOK, 0);
  });

  ReadLanguage(form, dir.program, L"English");

  EXPECT_EQ(title, L"ReadLanguage Error.");
}

TEST_F(ReadLanguageTest, IsSeenByTheNextWindowAfterTheLanguageHasChanged) {
  English(L"[Dialog]\r\n0=Caption\r\n");
  dir.WriteIniFile(L"Program\\Lang\\Chinese_T.ini", L"[Dialog]\r\n0=標題\r\n");
  TestForm first(L"Dialog");
  Read(first, L"English");

  TestForm second(L"Dialog");
  Read(second, L"Chinese_T");

  EXPECT_EQ(first.Caption(), L"Caption") << "an open window keeps its texts";
  EXPECT_EQ(second.Caption(), L"標題");
}

TEST_F(ReadLanguageTest, LooksMessagesUpByNumberInTheCurrentLanguage) {
  English(L"[messagebox]\r\n11=no file\r\n");
  dir.WriteIniFile(L"Program\\Lang\\Chinese_S.ini", L"[messagebox]\r\n11=无法打开文件\r\n");

  EXPECT_EQ(ReadMessage(dir.program, 11), L"no file");
  EXPECT_EQ(ReadMessage(dir.program, 12), L"");
  dir.program.languageName = L"Chinese_S";
  EXPECT_EQ(ReadMessage(dir.program, 11), L"无法打开文件");
  dir.program.languageName = L"Klingon";
  EXPECT_EQ(ReadMessage(dir.program, 11), L"");
}

TEST_F(ReadLanguageTest, FallsBackOnTheBuiltInEnglishMessage) {
  English(L"[messagebox]\r\n11=no file\r\n13=\r\n");

  EXPECT_EQ(Message(dir.program, kCannotOpenFile), L"no file");
  EXPECT_EQ(Message(dir.program, kOperationFinished), L"Operation Finished!");
  EXPECT_EQ(Message(dir.program, 99, L"built in "), L"built in ");
}

TEST_F(ReadLanguageTest, LooksUpOtherTextsOfAWindowWithTheBuiltInBehindThem) {
  English(L"[MainForm]\r\nToolbar1_1=Add\r\n");

  EXPECT_EQ(WindowText(dir.program, L"MainForm", L"Toolbar1_1", L"Add files"), L"Add");
  EXPECT_EQ(WindowText(dir.program, L"MainForm", L"Toolbar1_2", L"Rename alias"), L"Rename alias");
}

}  // namespace
}  // namespace kestrelon::lang
