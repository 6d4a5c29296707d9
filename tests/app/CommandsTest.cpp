// The menu, the toolbar and the language commands.

#include "app/MainFormTables.h"
#include "items/ShowData.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class MenuBar : public MainFormFixture {
 protected:
  // "Caption" lines of a menu, entries of submenus with a leading blank; separators left out.
  std::vector<std::wstring> Lines(HMENU menu, const std::wstring& indent = L"") {
    std::vector<std::wstring> lines;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
      wchar_t text[100] = L"";
      GetMenuStringW(menu, static_cast<UINT>(i), text, 100, MF_BYPOSITION);
      std::wstring caption = text;
      caption = caption.substr(0, caption.find(L'\t'));
      if (caption.empty()) continue;
      lines.push_back(indent + caption);
      if (const HMENU sub = GetSubMenu(menu, i)) {
        for (const std::wstring& line : Lines(sub, indent + L" ")) lines.push_back(line);
      }
    }
    return lines;
  }
};

const std::vector<std::wstring> kEnglishMenu = {
    L"&File",
    L" &New Database",
    L" &Load Database",
    L" &Save Database",
    L" Save &As ...",
    L" Import Previous Files",
    L" E&xit",
    L"&Category",
    L" Add &First Sibling",
    L" Add &Previous Sibling",
    L" Add &Next Sibling",
    L" Add &Last Sibling",
    L" Add &Directory",
    L" Add &Child",
    L" &Delete...",
    L" &Enabled drag and drop",
    L"&List",
    L" Import Files From",
    L"  Dialog box",
    L"  Clipboard",
    L" Rename",
    L"  Alias",
    L"  Alias as File name",
    L" Delete",
    L" Show item info",
    L" Change category",
    L" Send to ...",
    L" Move to folder...",
    L" Comment...",
    L" Open File",
    L" Open in Explore",
    L" Properties...",
    L"&Misc",
    L" &Language",
    L"  English",
    L"  Chinese_Traditional",
    L"  Chinese_Simplified",
    L"&Help",
    L" &More tips",
    L" &Send E-mail to Author...",
    L" Reporting Bugs...",
    L" about...",
};

TEST_F(MenuBar, HoldsTheseEntriesInThisOrder) {
  DeleteIfThere(program.programFolder + L"Lang\\English.ini");
  Start();
  EXPECT_EQ(Lines(GetMenu(form->Handle())), kEnglishMenu);
}

TEST_F(MenuBar, IsTheSameWithTheEnglishLanguageFile) {
  Start();
  EXPECT_EQ(Lines(GetMenu(form->Handle())), kEnglishMenu);
}

TEST_F(MenuBar, GreysTheEntriesWithoutACommandForGood) {
  Start();
  AddItem(L"A_", 1, {L"item"});
  items::ShowData(Parts(), L"A_");
  Click(List().Handle(), MiddleOfRow(0));
  std::vector<std::wstring> grey;
  for (std::size_t i = 0; i < app::MainFormTables::kCommandCount; ++i) {
    const app::MainFormTables::Command& command = app::MainFormTables::kCommands[i];
    if (command.name && !command.submenu && !Menus().IsEnabled(command.name)) grey.push_back(command.name);
  }
  EXPECT_EQ(grey, (std::vector<std::wstring>{L"meu_NewDatabase", L"meu_saveas", L"meu_ImportPreviousFiles"}));
}

TEST_F(MenuBar, IgnoresTheCommandOfAGreyEntry) {
  Start();
  Command(L"meu_saveas");
  Command(L"meu_NewDatabase");
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_TRUE(IsWindow(form->Handle()));
}

class ToolbarButtons : public MainFormFixture {
 protected:
  void StartWithSelection() {
    Start();
    SelectCategory(AddCategory(L"A_", L"A"));
    AddItem(L"A_", 1, {L"item", L"f.txt", L"C:\\f.txt"});
    items::ShowData(Parts(), L"A_");
    Click(List().Handle(), MiddleOfRow(0));
  }
  // As the toolbar sends it.
  void Press(int button) {
    TBBUTTON info{};
    SendMessageW(Parts().Toolbar1.Handle(), TB_GETBUTTON, static_cast<WPARAM>(button) - 1,
                 reinterpret_cast<LPARAM>(&info));
    SendMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(info.idCommand, 0),
                 reinterpret_cast<LPARAM>(Parts().Toolbar1.Handle()));
    win::DoEvents();
  }
};

TEST_F(ToolbarButtons, TheFirstAddsACategoryWhileTheTreeIsActive) {
  StartWithSelection();
  SetFocus(Tree().Handle());
  Press(1);
  EXPECT_EQ(ShownTree(), L"A(New Category )");
}

TEST_F(ToolbarButtons, TheFirstAddsFilesWhileTheListIsActive) {
  StartWithSelection();
  SetFocus(List().Handle());
  world.openedFiles = {std::nullopt};
  Press(1);
  EXPECT_EQ(world.openRequests.size(), 1u);
  EXPECT_EQ(ShownTree(), L"A");
}

TEST_F(ToolbarButtons, TheSecondEditsTheCategorysCaptionWhileTheTreeIsActive) {
  StartWithSelection();
  SetFocus(Tree().Handle());
  Press(2);
  EXPECT_TRUE(Tree().EditingLabel());
  EXPECT_TRUE(Tree().AutomaticLabelEdit());
}

TEST_F(ToolbarButtons, TheSixthOpensTheFileFromBothPanes) {
  StartWithSelection();
  world.executionResults = {33, 33};
  SetFocus(Tree().Handle());
  Press(6);
  SetFocus(List().Handle());
  Press(6);
  EXPECT_EQ(world.executions.size(), 2u);
}

TEST_F(ToolbarButtons, StayWithThePaneThatWasLastActive) {
  StartWithSelection();
  SetFocus(List().Handle());
  SetFocus(Parts().Text1);
  world.openedFiles = {std::nullopt};
  Press(1);
  EXPECT_EQ(world.openRequests.size(), 1u);
}

TEST_F(ToolbarButtons, HaveASeparatorAtPlace5) {
  Start();
  EXPECT_EQ(SendMessageW(Parts().Toolbar1.Handle(), TB_BUTTONCOUNT, 0, 0), 9);
  TBBUTTON info{};
  SendMessageW(Parts().Toolbar1.Handle(), TB_GETBUTTON, 4, reinterpret_cast<LPARAM>(&info));
  EXPECT_EQ(info.fsStyle, BTNS_SEP);
}

TEST_F(ToolbarButtons, HaveACommandInEitherPane) {
  StartWithSelection();
  for (const HWND pane : {List().Handle(), Tree().Handle()}) {
    SetFocus(pane);
    for (const int button : {1, 2, 3, 4, 6, 7, 8, 9}) {
      EXPECT_TRUE(Parts().Toolbar1.IsEnabled(button)) << button;
    }
  }
  for (const app::MainFormTables::ToolbarButton& button : app::MainFormTables::kToolbar) {
    if (button.image < 0) continue;
    EXPECT_NE(button.list, nullptr) << button.image;
    EXPECT_NE(button.tree, nullptr) << button.image;
  }
}

TEST_F(ToolbarButtons, SayWhatTheyDoInTheActivePane) {
  Start();
  SetFocus(Tree().Handle());
  EXPECT_EQ(Parts().Toolbar1.Tip(1), L"Add category");
  SetFocus(List().Handle());
  EXPECT_EQ(Parts().Toolbar1.Tip(1), L"Add files");
  EXPECT_EQ(Parts().Toolbar1.Tip(6), L"Open file");
}

class LanguageMenu : public MainFormFixture {
 protected:
  std::wstring Caption(std::wstring_view name) { return form->ControlCaption(*form->Find(name)); }
};

TEST_F(LanguageMenu, ChangesCaptionsHeadersAndSettingsAtOnce) {
  Start();

  Command(L"meu_Chinese_Simplified");

  const std::wstring file = program.programFolder + L"Lang\\Chinese_S.ini";
  EXPECT_EQ(program.languageName, L"Chinese_S");
  EXPECT_EQ(dir.settings.Read(L"Language"), L"Chinese_S");
  EXPECT_EQ(Caption(L"meu_exit"), ReadIni(L"MainForm", L"meu_exit", file));
  EXPECT_NE(Caption(L"meu_exit"), L"E&xit");
  EXPECT_EQ(List().ColumnText(1), ReadIni(L"listview_header", L"2", file));
  EXPECT_NE(List().ColumnText(1), L"Alias");
  EXPECT_EQ(List().ColumnText(5), ReadIni(L"listview_header", L"6", file));
  EXPECT_EQ(List().ColumnText(0), L"");
  EXPECT_EQ(form->Caption(), L"Kestrelon");
}

TEST_F(LanguageMenu, LeavesTheArrowOverTheSortedColumn) {
  Start();
  win::TreeNode& category = AddCategory(L"A_", L"A");
  AddItem(L"A_", 1, {L"item"});
  SelectCategory(category);
  ClickHeader(2);
  const auto arrow = [&] {
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    SendMessageW(ListView_GetHeader(List().Handle()), HDM_GETITEMW, 2, reinterpret_cast<LPARAM>(&item));
    return (item.fmt & HDF_IMAGE) != 0;
  };
  ASSERT_TRUE(arrow());
  Command(L"meu_Chinese_Simplified");
  EXPECT_TRUE(arrow());
}

TEST_F(LanguageMenu, GoesToEachLanguageAndBackToEnglish) {
  Start();
  Command(L"meu_Chinese_Traditional");
  EXPECT_EQ(dir.settings.Read(L"Language"), L"Chinese_T");
  Command(L"meu_English");
  EXPECT_EQ(dir.settings.Read(L"Language"), L"English");
  EXPECT_EQ(Caption(L"meu_exit"), L"E&xit");
  EXPECT_EQ(List().ColumnText(1), L"Alias");
}

TEST_F(LanguageMenu, MarksTheLanguageInUse) {
  Start();
  EXPECT_TRUE(Menus().IsChecked(L"meu_English"));
  Command(L"meu_Chinese_Traditional");
  EXPECT_FALSE(Menus().IsChecked(L"meu_English"));
  EXPECT_TRUE(Menus().IsChecked(L"meu_Chinese_Traditional"));
  EXPECT_FALSE(Menus().IsChecked(L"meu_Chinese_Simplified"));
}

TEST_F(LanguageMenu, IsRememberedAtTheNextStart) {
  Start();
  Command(L"meu_Chinese_Simplified");
  End();
  Start();
  EXPECT_EQ(program.languageName, L"Chinese_S");
  EXPECT_NE(List().ColumnText(1), L"Alias");
}

TEST_F(LanguageMenu, ChangesTheMessagesToo) {
  Start();
  Command(L"meu_Chinese_Simplified");
  AddCategory(L"A_", L"A");
  world.answers = {IDOK};
  Command(L"meu_AddChild");
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text,
            ReadIni(L"messagebox", L"3", program.programFolder + L"Lang\\Chinese_S.ini"));
  EXPECT_NE(world.boxes[0].text, L"Please select a category at first!");
}

TEST_F(LanguageMenu, IsNoChangeOfTheData) {
  Start();
  program.databaseSaved = true;
  Command(L"meu_Chinese_Simplified");
  EXPECT_TRUE(program.databaseSaved);
}

}  // namespace
}  // namespace kestrelon::test
