#include "tests/support/FakeWorld.h"
#include "tests/support/ScopedTestDir.h"
#include "tests/ui/ListFixture.h"
#include "ui/win/MainParts.h"

namespace kestrelon::win {
namespace {

constexpr MenuLine kLines[] = {
    {0, L"meu_Category", L"&Category"},
    {1, L"meu_aa", L"&Enabled drag and drop"},
    {0, L"meu_List", L"&List"},
    {1, L"meu_ShowItemInfo", L"Show item info"},
};

struct MainPartsFixture : test::ListFixture {
  MainPartsFixture() {
    tree.Create(host.Handle(), 60);
    host.tree = &tree;
    bar.Create(host.Handle(), 50);
    menus.Create(host, kLines, std::size(kLines), 100);
  }
  std::wstring Setting(const wchar_t* key) { return dir.settings.Read(key); }

  test::ScopedTestDir dir;
  test::FakeWorld world;
  TreeView tree;
  StatusBar bar;
  Toolbar toolbar;
  Menus menus;
  char noConnection = 0;  // nothing here touches the database
  MainParts parts{
      dir.program, world, dir.settings, host,  tree,
      list,        bar,   toolbar,      menus, reinterpret_cast<store::SharedConnection&>(noConnection)};
};
using MainPartsTest = MainPartsFixture;

TEST_F(MainPartsTest, TheCurrentCategoryStandsInTheFirstTwoPanels) {
  EXPECT_EQ(CurrentCategory(parts), L"");

  SetCurrentCategory(parts, L"Books\\Old", L"S004211151317037719_");

  EXPECT_EQ(bar.PanelText(1), L"Category : Books\\Old");
  EXPECT_EQ(bar.PanelText(2), L"S004211151317037719_");
  EXPECT_EQ(CurrentCategory(parts), L"S004211151317037719_");

  SetCurrentCategory(parts, L"", L"");
  EXPECT_EQ(bar.PanelText(1), L"Category : ");
  EXPECT_EQ(CurrentCategory(parts), L"");
}

TEST_F(MainPartsTest, TheThirdPanelCountsTheRows) {
  ShowObjectCount(parts);
  EXPECT_EQ(bar.PanelText(3), L"0 Objects");

  Fill(test::Names(12, L"x"));
  ShowObjectCount(parts);
  EXPECT_EQ(bar.PanelText(3), L"12 Objects");
}

TEST_F(MainPartsTest, AChangeClearsTheSavedFlag) {
  dir.program.databaseSaved = true;
  MarkChanged(parts);
  EXPECT_FALSE(dir.program.databaseSaved);
}

TEST_F(MainPartsTest, AWidthThatNobodyChangedIsWrittenAsItWasRead) {
  parts.widthTexts.text[0] = L"1874.835";
  list.SetColumnWidth(1, 125);
  parts.widthTexts.pixels[0] = 125;

  WriteViewSettings(parts);

  EXPECT_EQ(Setting(L"DefineName_Length"), L"1874.835");
}

TEST_F(MainPartsTest, AChangedWidthIsWrittenInTwips) {
  parts.widthTexts.text[1] = L"2234.835";
  parts.widthTexts.pixels[1] = 149;
  list.SetColumnWidth(2, 100);
  list.SetColumnWidth(5, 96);

  WriteViewSettings(parts);

  EXPECT_EQ(Setting(L"FileName_Length"), L"1500");
  EXPECT_EQ(Setting(L"Comment_Length"), L"1440");
}

TEST_F(MainPartsTest, AChangedWidthMayHaveDecimals) {
  RECT suggested{0, 0, 800, 600};
  SendMessageW(host.Handle(), WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&suggested));
  list.SetColumnWidth(1, 125);

  WriteViewSettings(parts);

  EXPECT_EQ(Setting(L"DefineName_Length"), L"937.5");
}

TEST_F(MainPartsTest, TheCheckMarksAreWrittenAsTrueAndFalse) {
  menus.Check(L"meu_ShowItemInfo", true);

  WriteViewSettings(parts);
  EXPECT_EQ(Setting(L"ShowItemInfo"), L"True");
  EXPECT_EQ(Setting(L"Drag&Drop"), L"False");

  menus.Check(L"meu_ShowItemInfo", false);
  menus.Check(L"meu_aa", true);
  WriteViewSettings(parts);
  EXPECT_EQ(Setting(L"ShowItemInfo"), L"False");
  EXPECT_EQ(Setting(L"Drag&Drop"), L"True");
}

TEST_F(MainPartsTest, OtherSettingsStayAsTheyAre) {
  dir.settings.Write(L"Language", L"Chinese_S");
  WriteViewSettings(parts);
  EXPECT_EQ(Setting(L"Language"), L"Chinese_S");
}

}  // namespace
}  // namespace kestrelon::win
