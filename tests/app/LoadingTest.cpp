// What the main window is once it has loaded.

#include "app/MainForm.h"
#include "app/SingleInstance.h"
#include "packaging/resource.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class Loading : public MainFormFixture {};

TEST_F(Loading, TitlesTheWindowWithTheProductName) {
  Start();
  EXPECT_EQ(form->Caption(), L"Kestrelon");
}

TEST_F(Loading, CentresTheWindowOnTheScreen) {
  Start();
  RECT window;
  GetWindowRect(form->Handle(), &window);
  EXPECT_NEAR(window.left, GetSystemMetrics(SM_CXSCREEN) - window.right, 1);
  EXPECT_NEAR(window.top, GetSystemMetrics(SM_CYSCREEN) - window.bottom, 1);
}

TEST_F(Loading, ShowsNoCategoryAndNoObjects) {
  Start();
  EXPECT_EQ(Panel(1), L"Category : ");
  EXPECT_EQ(Panel(2), L"");
  EXPECT_EQ(Panel(3), L"0 Objects");
  EXPECT_EQ(ShownTree(), L"");
}

TEST_F(Loading, StatusBarShowsWhatItsPanelsHold) {
  Start();
  wchar_t text[100] = L"";
  SendMessageW(Parts().StatusBar1.Handle(), SB_GETTEXTW, 2, reinterpret_cast<LPARAM>(text));
  EXPECT_STREQ(text, L"0 Objects");
  EXPECT_EQ(SendMessageW(Parts().StatusBar1.Handle(), SB_GETPARTS, 0, 0), 3);
}

TEST_F(Loading, LoadsTheTreeOfTheWorkingDatabase) {
  ASSERT_TRUE(app::Connect(program, world));
  {
    store::SharedConnection connection(program.connectionString);
    store::Opened opened(connection);
    connection.Execute(L"INSERT INTO TreeviewTable (parent, [key], [text]) VALUES(\"0_\",\"A_\",\"A\")");
    connection.Execute(L"INSERT INTO TreeviewTable (parent, [key], [text]) VALUES(\"A_\",\"B_\",\"B\")");
    opened.Close();
  }
  form = std::make_unique<app::MainForm>(program, world);
  form->Load();
  EXPECT_EQ(ShownTree(), L"A(B)");
  EXPECT_EQ(Panel(2), L"");
}

TEST_F(Loading, ShowsAFailureOfTheTreeInABoxAndGoesOn) {
  ASSERT_TRUE(app::Connect(program, world));
  DeleteIfThere(program.dataFolder + L"default.dat");
  world.answers = {IDOK};
  form = std::make_unique<app::MainForm>(program, world);
  form->Load();
  EXPECT_EQ(world.boxes.size(), 1u);
  EXPECT_TRUE(IsWindow(form->Handle()));
}

TEST_F(Loading, GivesTheListItsSixColumns) {
  Start();
  ASSERT_EQ(List().ColumnCount(), 6u);
  EXPECT_EQ(List().ColumnText(0), L"");
  EXPECT_EQ(List().ColumnText(1), L"Alias");
  EXPECT_EQ(List().ColumnText(2), L"File name");
  EXPECT_EQ(List().ColumnText(3), L"Local File");
  EXPECT_EQ(List().ColumnText(4), L"Insert time");
  EXPECT_EQ(List().ColumnText(5), L"Comment");
}

TEST_F(Loading, GivesTheColumnsTheWidthsOfTheSettings) {
  dir.settings.Write(L"DefineName_length", L"3000");
  dir.settings.Write(L"FileName_length", L"1500.4");
  dir.settings.Write(L"LocalFile_length", L"7409.764");
  dir.settings.Write(L"InsertTime_length", L"1440");
  dir.settings.Write(L"Comment_length", L"750");
  Start();
  EXPECT_EQ(List().ColumnWidth(1), 200);
  EXPECT_EQ(List().ColumnWidth(2), 100);
  EXPECT_EQ(List().ColumnWidth(3), 494);
  EXPECT_EQ(List().ColumnWidth(4), 96);
  EXPECT_EQ(List().ColumnWidth(5), 50);
}

TEST_F(Loading, LeavesAColumnAsDesignedWhereItsWidthIsMissingOrUnreadable) {
  dir.WriteFile(L"KestrelonData\\Kestrelon.dat",
                "[USER INFO]\r\nLanguage=English\r\nFileName_Length=wide\r\nLocalFile_Length=-5\r\n"
                "InsertTime_Length=1e300\r\n");
  Start();
  EXPECT_EQ(List().ColumnWidth(1), 125);
  EXPECT_EQ(List().ColumnWidth(2), 149);
  EXPECT_EQ(List().ColumnWidth(3), 494);
  EXPECT_EQ(List().ColumnWidth(4), 96);
}

TEST_F(Loading, TheIconColumnsWidthIsFixed) {
  Start();
  NMHEADERW track{};
  const HWND header = ListView_GetHeader(List().Handle());
  track.hdr = {header, 0, HDN_BEGINTRACKW};
  track.iItem = 0;
  EXPECT_TRUE(SendMessageW(List().Handle(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&track)));
  track.iItem = 1;
  EXPECT_FALSE(SendMessageW(List().Handle(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&track)));
}

TEST_F(Loading, TrueSetsTheCheckMarks) {
  dir.settings.Write(L"ShowItemInfo", L"True");
  dir.settings.Write(L"Drag&Drop", L"True");
  Start();
  EXPECT_TRUE(Menus().IsChecked(L"meu_ShowItemInfo"));
  EXPECT_TRUE(Menus().IsChecked(L"meu_aa"));
}

TEST_F(Loading, TrueInLowerCaseDoesNotSetTheCheckMarks) {
  dir.settings.Write(L"ShowItemInfo", L"true");
  dir.settings.Write(L"Drag&Drop", L"TRUE");
  Start();
  EXPECT_FALSE(Menus().IsChecked(L"meu_ShowItemInfo"));
  EXPECT_FALSE(Menus().IsChecked(L"meu_aa"));
}

TEST_F(Loading, TheTreeShowsNoTipsOfItsOwn) {
  Start();
  const LONG_PTR style = GetWindowLongPtrW(Tree().Handle(), GWL_STYLE);
  EXPECT_NE(style & 0x80, 0);
  EXPECT_NE(style & TVS_EDITLABELS, 0) << "the other styles stay";
}

TEST_F(Loading, GivesTheTreeATipInABalloon) {
  Start();
  HWND tip = nullptr;
  for (HWND window = nullptr;
       (window = FindWindowExW(nullptr, window, TOOLTIPS_CLASSW, nullptr)) != nullptr && tip == nullptr;) {
    TTTOOLINFOW tool{};
    tool.cbSize = ui::CTooltip::kToolInfoSize;
    if (GetWindow(window, GW_OWNER) == form->Handle() &&
        SendMessageW(window, TTM_ENUMTOOLSW, 0, reinterpret_cast<LPARAM>(&tool)) &&
        tool.hwnd == Tree().Handle())
      tip = window;
  }
  ASSERT_NE(tip, nullptr);
  EXPECT_NE(GetWindowLongPtrW(tip, GWL_STYLE) & TTS_BALLOON, 0);
}

TEST_F(Loading, PutsTheFocusOnText1) {
  Start();
  EXPECT_EQ(GetFocus(), Parts().Text1);
  EXPECT_FALSE(Parts().listPaneActive);
}

TEST_F(Loading, DisablesTheItemButtons) {
  Start();
  for (int button = 6; button <= 9; ++button) EXPECT_FALSE(Parts().Toolbar1.IsEnabled(button)) << button;
}

TEST_F(Loading, FillsTheImageLists) {
  Start();
  EXPECT_EQ(ImageList_GetImageCount(TreeView_GetImageList(Tree().Handle(), TVSIL_NORMAL)), 2);
  const auto toolbar =
      reinterpret_cast<HIMAGELIST>(SendMessageW(Parts().Toolbar1.Handle(), TB_GETIMAGELIST, 0, 0));
  EXPECT_EQ(ImageList_GetImageCount(toolbar), 8);
}

TEST_F(Loading, GivesTheSplitterTheEastWestPointer) {
  Start();
  const HWND bar = form->Picture1().Handle();
  SendMessageW(bar, WM_SETCURSOR, reinterpret_cast<WPARAM>(bar), MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
  EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_SIZEWE));
}

TEST_F(Loading, SaysWithoutALanguageFileWhatTheProgramHoldsExceptInTheHeaders) {
  DeleteIfThere(program.programFolder + L"Lang\\English.ini");
  Start();
  EXPECT_EQ(Menus().PlainCaption(L"meu_exit"), L"Exit");
  EXPECT_EQ(List().ColumnText(1), L"");
}

TEST_F(Loading, AnUnknownLanguageChangesNoCaptionButBlanksTheHeaders) {
  dir.WriteFile(L"KestrelonData\\Kestrelon.dat", "[USER INFO]\r\nLanguage=Klingon\r\n");
  Start();
  EXPECT_EQ(Menus().PlainCaption(L"meu_AddChild"), L"Add Child");
  for (std::size_t column = 1; column < 6; ++column) EXPECT_EQ(List().ColumnText(column), L"");
}

TEST_F(Loading, IsFoundByItsClass) {
  Start();
  wchar_t name[100];
  GetClassNameW(form->Handle(), name, 100);
  EXPECT_STREQ(name, app::kMainFormClass);
}

}  // namespace
}  // namespace kestrelon::test
