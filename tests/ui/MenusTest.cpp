#include <gtest/gtest.h>

#include "tests/support/KeyInput.h"
#include "tests/ui/Host.h"
#include "ui/win/Menus.h"

namespace kestrelon::win {
namespace {

constexpr MenuLine kLines[] = {
    {0, L"meu_file", L"&File"},
    {1, L"meu_SaveDatabase", L"&Save Database\tCtrl+S"},
    {1, L"meu_saveas", L"Save &As ..."},
    {1, nullptr, nullptr},
    {1, L"meu_exit", L"E&xit"},
    {0, L"meu_List", L"&List"},
    {1, L"meu_Importfiles", L"Import Files From"},
    {2, L"meu_Input_Dialog", L"Dialog box"},
    {2, L"meu_Imput_Clipboard", L"Clipboard"},
    {1, L"meu_ShowItemInfo", L"Show item info"},
};
constexpr UINT kFirstId = 100;

struct MenusFixture : testing::Test {
  MenusFixture() { menus.Create(host, kLines, std::size(kLines), kFirstId); }
  std::wstring TextOf(std::wstring_view name) {
    const FormControl& control = *host.Find(name);
    wchar_t text[100] = {};
    GetMenuStringW(control.menu, control.menuPosition, text, 100, MF_BYPOSITION);
    return text;
  }
  test::Host host;
  Menus menus;
};
using MenusTest = MenusFixture;

TEST_F(MenusTest, BuildsTheBarWithEntriesAndSubmenus) {
  const HMENU bar = GetMenu(host.Handle());
  ASSERT_EQ(GetMenuItemCount(bar), 2);
  const HMENU file = GetSubMenu(bar, 0), list = GetSubMenu(bar, 1);
  EXPECT_EQ(GetMenuItemCount(file), 4);
  EXPECT_EQ(GetMenuState(file, 2, MF_BYPOSITION) & MF_SEPARATOR, UINT{MF_SEPARATOR});
  ASSERT_EQ(GetMenuItemCount(list), 2);
  const HMENU import = GetSubMenu(list, 0);
  EXPECT_EQ(GetMenuItemCount(import), 2);
  EXPECT_EQ(GetMenuItemID(import, 1), menus.IdOf(L"meu_Imput_Clipboard"));
}

TEST_F(MenusTest, AnEntryIsWithinReachWhileItAndAllMenusThatLeadToItAreEnabled) {
  const auto reach = [this] { return menus.IsWithinReach(L"meu_Input_Dialog"); };
  EXPECT_TRUE(reach());
  for (const wchar_t* name : {L"meu_List", L"meu_Importfiles", L"meu_Input_Dialog"}) {
    menus.Enable(name, false);
    EXPECT_FALSE(reach()) << name;
    EXPECT_TRUE(menus.IsWithinReach(L"meu_exit"));
    menus.Enable(name, true);
  }
  EXPECT_TRUE(reach());
  EXPECT_FALSE(menus.IsWithinReach(L"meu_nothing"));
}

TEST_F(MenusTest, NumbersTheEntriesInTheOrderOfTheTable) {
  EXPECT_EQ(menus.IdOf(L"meu_file"), 100u);
  EXPECT_EQ(menus.IdOf(L"meu_exit"), 104u);  // the separator before it took 103
  EXPECT_EQ(menus.NameOf(109), L"meu_ShowItemInfo");
  EXPECT_EQ(menus.NameOf(103), L"");
  EXPECT_EQ(menus.IdOf(L"meu_nothing"), 0u);
}

TEST_F(MenusTest, MakesEveryEntryAControlOfTheFormInTheOrderOfTheTable) {
  std::vector<std::wstring> names;
  for (const FormControl& control : host.Controls()) {
    names.push_back(control.name);
    EXPECT_EQ(control.kind, ControlKind::kMenu);
    EXPECT_EQ(control.tag, control.name);
  }
  EXPECT_EQ(names, (std::vector<std::wstring>{L"meu_file", L"meu_SaveDatabase", L"meu_saveas", L"meu_exit",
                                              L"meu_List", L"meu_Importfiles", L"meu_Input_Dialog",
                                              L"meu_Imput_Clipboard", L"meu_ShowItemInfo"}));
}

TEST_F(MenusTest, AnotherCaptionKeepsTheKeyTheCheckAndTheEnabledState) {
  menus.Enable(L"meu_SaveDatabase", false);
  menus.Check(L"meu_ShowItemInfo", true);

  host.SetControlCaption(*host.Find(L"meu_SaveDatabase"), L"\u4FDD\u5B58(&S)");
  host.SetControlCaption(*host.Find(L"meu_ShowItemInfo"), L"Info");

  EXPECT_EQ(TextOf(L"meu_SaveDatabase"), L"\u4FDD\u5B58(&S)\tCtrl+S");
  EXPECT_EQ(host.ControlCaption(*host.Find(L"meu_SaveDatabase")), L"\u4FDD\u5B58(&S)");
  EXPECT_FALSE(menus.IsEnabled(L"meu_SaveDatabase"));
  EXPECT_TRUE(menus.IsChecked(L"meu_ShowItemInfo"));
  EXPECT_EQ(menus.IdOf(L"meu_ShowItemInfo"), 109u);
}

TEST_F(MenusTest, AnotherCaptionOfASubmenuKeepsTheSubmenu) {
  host.SetControlCaption(*host.Find(L"meu_List"), L"Liste");

  EXPECT_EQ(TextOf(L"meu_List"), L"Liste");
  EXPECT_EQ(GetMenuItemCount(GetSubMenu(GetMenu(host.Handle()), 1)), 2);
}

TEST_F(MenusTest, DisablesEntriesAndWholeMenus) {
  menus.Enable(L"meu_List", false);
  menus.Enable(L"meu_Importfiles", false);

  EXPECT_FALSE(menus.IsEnabled(L"meu_List"));
  EXPECT_FALSE(menus.IsEnabled(L"meu_Importfiles"));
  EXPECT_TRUE(menus.IsEnabled(L"meu_file"));
  EXPECT_NE(GetMenuState(GetMenu(host.Handle()), 1, MF_BYPOSITION) & (MF_GRAYED | MF_DISABLED), 0u);

  menus.Enable(L"meu_List", true);
  EXPECT_TRUE(menus.IsEnabled(L"meu_List"));
}

TEST_F(MenusTest, ChecksAndUnchecks) {
  EXPECT_FALSE(menus.IsChecked(L"meu_ShowItemInfo"));
  menus.Check(L"meu_ShowItemInfo", true);
  EXPECT_TRUE(menus.IsChecked(L"meu_ShowItemInfo"));
  menus.Check(L"meu_ShowItemInfo", false);
  EXPECT_FALSE(menus.IsChecked(L"meu_ShowItemInfo"));
}

TEST_F(MenusTest, IgnoresNamesThatAreNotThere) {
  menus.Enable(L"meu_nothing", true);
  menus.Check(L"meu_nothing", true);
  menus.PopUp(L"meu_nothing", {0, 0});
  EXPECT_FALSE(menus.IsEnabled(L"meu_nothing"));
  EXPECT_FALSE(menus.IsChecked(L"meu_nothing"));
  EXPECT_EQ(menus.PlainCaption(L"meu_nothing"), L"");
}

TEST_F(MenusTest, PlainCaptionsHaveNoMarksKeysOrDots) {
  EXPECT_EQ(menus.PlainCaption(L"meu_SaveDatabase"), L"Save Database");
  EXPECT_EQ(menus.PlainCaption(L"meu_saveas"), L"Save As");
  host.SetControlCaption(*host.Find(L"meu_exit"), L"This && &that...");
  EXPECT_EQ(menus.PlainCaption(L"meu_exit"), L"This & that");
}

TEST_F(MenusTest, AContextMenuSendsItsCommandToTheForm) {
  // Inside the menu's own loop: the third entry that can be chosen.
  const test::OnWindow pick(
      [](HWND window) {
        wchar_t name[16] = {};
        GetClassNameW(window, name, 16);
        return lstrcmpW(name, L"#32768") == 0;
      },
      [this](HWND) {
        for (const WPARAM key : {VK_DOWN, VK_DOWN, VK_DOWN, VK_RETURN})
          PostMessageW(host.Handle(), WM_KEYDOWN, key, 0);
      });

  menus.PopUp(L"meu_file", {50, 50});
  win::DoEvents();

  EXPECT_TRUE(pick.Done());
  EXPECT_EQ(host.commands, std::vector<UINT>{menus.IdOf(L"meu_exit")});
}

}  // namespace
}  // namespace kestrelon::win
