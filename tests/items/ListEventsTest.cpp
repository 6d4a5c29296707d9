// Keys, mouse, menu and dragging of the item list.

#include <algorithm>

#include "items/ListEvents.h"
#include "items/ShowData.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class ListEvents : public MainFormFixture {
 protected:
  void StartWithRows(int count) {
    Start();
    for (int i = 1; i <= count; ++i)
      AddItem(L"A_", i, {L"n" + std::to_wstring(i), L"f", L"C:\\f" + std::to_wstring(i)});
    items::ShowData(Parts(), L"A_");
    SetFocus(List().Handle());
    win::DoEvents();
  }
  POINT BelowRows() {
    RECT inner;
    GetClientRect(List().Handle(), &inner);
    return {inner.right / 2, inner.bottom - 3};
  }
};

class ListKeys : public ListEvents {};

TEST_F(ListKeys, F6OpensTheSelectedFile) {
  StartWithRows(2);
  List().SelectOnly(1);
  world.executionResults = {33};
  SendKey(List().Handle(), VK_F6);
  ASSERT_EQ(world.executions.size(), 1u);
  EXPECT_EQ(world.executions[0].target, L"C:\\f2");
}

TEST_F(ListKeys, EnterOpensTheSelectedFile) {
  StartWithRows(1);
  List().SelectOnly(0);
  world.executionResults = {33};
  SendKey(List().Handle(), VK_RETURN);
  EXPECT_EQ(world.executions.size(), 1u);
}

TEST_F(ListKeys, EnterThroughTheMessageLoopReachesTheList) {
  StartWithRows(1);
  List().SelectOnly(0);
  world.executionResults = {33};
  PressKey(List().Handle(), VK_RETURN);
  EXPECT_EQ(world.executions.size(), 1u);
}

TEST_F(ListKeys, CtrlASelectsEveryRow) {
  StartWithRows(3);
  SendKey(List().Handle(), 'A', {VK_CONTROL});
  EXPECT_EQ(List().SelectedRows(), (std::vector<std::size_t>{0, 1, 2}));
  EXPECT_EQ(ListView_GetSelectedCount(List().Handle()), 3u);
}

TEST_F(ListKeys, CtrlAInAnEmptyListDoesNothing) {
  StartWithRows(0);
  SendKey(List().Handle(), 'A', {VK_CONTROL});
  EXPECT_TRUE(List().SelectedRows().empty());
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(ListKeys, AAloneOrWithShiftAndCtrlSelectsNotEverything) {
  StartWithRows(3);
  SendKey(List().Handle(), 'A');
  SendKey(List().Handle(), 'A', {VK_CONTROL, VK_SHIFT});
  EXPECT_LT(List().SelectedRows().size(), 3u);
}

TEST_F(ListKeys, NothingIsOpenedWithoutASelection) {
  StartWithRows(2);
  List().SelectNone();
  SendKey(List().Handle(), VK_F6);
  SendKey(List().Handle(), VK_RETURN);
  EXPECT_TRUE(world.executions.empty());
}

class ItemEntries : public ListEvents {
 protected:
  std::vector<std::wstring> Enabled() {
    std::vector<std::wstring> names;
    for (const wchar_t* name :
         {L"meu_rename", L"meu_Definenameasfilename", L"meu_Delete", L"meu_Properties", L"meu_Moveto",
          L"meu_Copyto", L"meu_openfile", L"meu_destinationdirectory", L"meu_Changecategory"}) {
      if (Menus().IsEnabled(name)) names.push_back(name);
    }
    return names;
  }
};

const std::vector<std::wstring> kItemEntries = {L"meu_rename",        L"meu_Definenameasfilename",
                                                L"meu_Delete",        L"meu_Properties",
                                                L"meu_Moveto",        L"meu_Copyto",
                                                L"meu_openfile",      L"meu_destinationdirectory",
                                                L"meu_Changecategory"};

TEST_F(ItemEntries, AreDisabledWhileNoRowIsSelected) {
  StartWithRows(2);
  EXPECT_TRUE(Enabled().empty());
  for (int button = 6; button <= 9; ++button) EXPECT_FALSE(Parts().Toolbar1.IsEnabled(button)) << button;
}

TEST_F(ItemEntries, AreEnabledByAClickOnARow) {
  StartWithRows(2);
  Click(List().Handle(), MiddleOfRow(1));
  EXPECT_EQ(List().SelectedRow(), std::size_t{1});
  EXPECT_EQ(Enabled(), kItemEntries);
  for (int button = 6; button <= 9; ++button) EXPECT_TRUE(Parts().Toolbar1.IsEnabled(button)) << button;
}

TEST_F(ItemEntries, AreDisabledAgainByAClickBesideTheRows) {
  StartWithRows(2);
  Click(List().Handle(), MiddleOfRow(1));
  Click(List().Handle(), BelowRows());
  EXPECT_EQ(List().SelectedRow(), std::nullopt);
  EXPECT_TRUE(Enabled().empty());
  EXPECT_FALSE(Parts().Toolbar1.IsEnabled(6));
}

TEST_F(ItemEntries, FollowTheSelectionByKeysToo) {
  StartWithRows(2);
  SendKey(List().Handle(), VK_DOWN);
  win::DoEvents();
  EXPECT_EQ(Enabled(), kItemEntries);
}

class ContextMenu : public ListEvents {};

TEST_F(ContextMenu, OpensWithTheItemEntriesByTheRightButton) {
  StartWithRows(2);
  const PopupMenuEntries menu;

  Click(List().Handle(), MiddleOfRow(1), true);

  EXPECT_TRUE(menu.Shown());
  std::vector<std::wstring> captions = menu.Captions();
  for (std::wstring& caption : captions) caption = caption.substr(0, caption.find(L'\t'));
  EXPECT_EQ(captions,
            (std::vector<std::wstring>{L"Import Files From", L"Rename", L"Delete", L"Show item info",
                                       L"Change category", L"Send to ...", L"Move to folder...",
                                       L"Comment...", L"Open File", L"Open in Explore", L"Properties..."}));
}

TEST_F(ContextMenu, OpensForTheRowUnderThePointer) {
  StartWithRows(3);
  const PopupMenuEntries menu;
  Click(List().Handle(), MiddleOfRow(2), true);
  EXPECT_EQ(List().SelectedRows(), std::vector<std::size_t>{2});
  EXPECT_TRUE(Menus().IsEnabled(L"meu_openfile"));
}

TEST_F(ContextMenu, DoesNotOpenByTheLeftButton) {
  StartWithRows(1);
  const PopupMenuEntries menu;
  Click(List().Handle(), MiddleOfRow(0));
  EXPECT_FALSE(PumpUntil([&] { return menu.Shown(); }, 100));
}

class Dragging : public ListEvents {
 protected:
  void StartWithPaths(const std::vector<std::wstring>& paths) {
    Start();
    int number = 0;
    for (const std::wstring& path : paths) AddItem(L"A_", ++number, {L"alias", L"file", path});
    items::ShowData(Parts(), L"A_");
    SetFocus(List().Handle());
    win::DoEvents();
  }
};

TEST_F(Dragging, OffersThePathsOfTheSelectedRowsInListOrder) {
  const std::wstring a = dir.WriteFile(L"a.txt"), b = dir.WriteFile(L"b.txt"), c = dir.WriteFile(L"c.txt");
  StartWithPaths({c, b, a});
  List().Select(2, true);
  List().Select(0, true);
  EXPECT_EQ(items::DraggedPaths(Parts()), (std::vector<std::wstring>{c, a}));
}

TEST_F(Dragging, SkipsFilesThatAreNotThere) {
  const std::wstring a = dir.WriteFile(L"a.txt");
  StartWithPaths({dir.Path(L"gone.txt"), a, L""});
  List().SelectAll();
  EXPECT_EQ(items::DraggedPaths(Parts()), std::vector<std::wstring>{a});
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(Dragging, SkipsFilesOfServersThatDoNotAnswer) {
  const std::wstring a = dir.WriteFile(L"a.txt");
  StartWithPaths({L"\\\\server\\share\\f.txt", a});
  List().SelectAll();
  world.hostResults = {false};
  EXPECT_EQ(items::DraggedPaths(Parts()), std::vector<std::wstring>{a});
  EXPECT_EQ(world.hostQuestions, std::vector<std::wstring>{L"server"});
}

TEST_F(Dragging, OffersNothingWithoutASelection) {
  StartWithPaths({dir.WriteFile(L"a.txt")});
  EXPECT_TRUE(items::DraggedPaths(Parts()).empty());
}

TEST_F(Dragging, OffersOnlyPathsThatDoNotDependOnTheCurrentFolder) {
  const std::wstring a = dir.WriteFile(L"a.txt");
  std::wstring slashes = a;
  std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
  StartWithPaths({L"a.txt", L"\\windows", L"C:windows", slashes});
  List().SelectAll();
  EXPECT_EQ(items::DraggedPaths(Parts()), std::vector<std::wstring>{a});
}

// What the drag's own message loop sees of the window's flags, before Escape ends the drag.
struct FlagsDuringDrag {
  static inline win::MainParts* parts = nullptr;
  static inline bool internalDrag = false, listDrag = false;
  static void CALLBACK Look(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    internalDrag = parts->internalDrag;
    listDrag = parts->listDrag;
    PostMessageW(parts->ListView1.Handle(), WM_KEYDOWN, VK_ESCAPE, 1);
  }
};

// A server may take seconds to answer, or not to.
TEST_F(Dragging, DoesNotBeginWhenTheButtonIsUpOnceTheServersHaveAnswered) {
  StartWithPaths({dir.WriteFile(L"a.txt"), L"\\\\server\\share\\f.txt"});
  List().SelectAll();
  FlagsDuringDrag::parts = &Parts();
  FlagsDuringDrag::internalDrag = FlagsDuringDrag::listDrag = false;
  world.hostAnswers = [this](const std::wstring&) {
    world.dragging = false;
    return false;
  };
  const UINT_PTR timer = SetTimer(nullptr, 0, 10, &FlagsDuringDrag::Look);

  items::ListView1_OLEStartDrag(Parts());

  EXPECT_FALSE(FlagsDuringDrag::internalDrag) << "no drag ran";
  KillTimer(nullptr, timer);
  EXPECT_FALSE(Parts().internalDrag);
  EXPECT_FALSE(Parts().listDrag);
}

TEST_F(Dragging, SetsBothDragFlagsWhileItLastsAndNoLonger) {
  StartWithPaths({dir.WriteFile(L"a.txt")});
  List().SelectOnly(0);
  FlagsDuringDrag::parts = &Parts();
  const KeysDown button{VK_LBUTTON};
  SetTimer(nullptr, 0, 10, &FlagsDuringDrag::Look);

  items::ListView1_OLEStartDrag(Parts());

  EXPECT_TRUE(FlagsDuringDrag::internalDrag);
  EXPECT_TRUE(FlagsDuringDrag::listDrag);
  EXPECT_FALSE(Parts().internalDrag);
  EXPECT_FALSE(Parts().listDrag);
  EXPECT_EQ(List().Count(), 1u);
  EXPECT_TRUE(FileExists(dir.Path(L"a.txt")));
}

}  // namespace
}  // namespace kestrelon::test
