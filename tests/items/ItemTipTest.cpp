#include "items/ItemInformation.h"
#include "items/ItemTip.h"
#include "items/ShowData.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class ItemTip : public MainFormFixture {
 protected:
  void StartWithItems(const wchar_t* show) {
    dir.settings.Write(L"ShowItemInfo", show);
    Start();
    path_ = dir.WriteFile(L"one.txt", "12345");
    AddItem(L"A_", 1, {L"first", L"one.txt", path_});
    AddItem(L"A_", 2, {L"second", L"two.txt", dir.Path(L"two.txt")});
    items::ShowData(Parts(), L"A_");
  }
  void MoveTo(POINT point) { SendMouse(List().Handle(), WM_MOUSEMOVE, point); }
  items::ItemTip& Tip() { return form->ListHelpers().tip; }
  POINT BelowRows() {
    RECT inner;
    GetClientRect(List().Handle(), &inner);
    return {inner.right / 2, inner.bottom - 3};
  }
  std::wstring path_;
};

TEST_F(ItemTip, ShowsTheRowUnderThePointerWithItsFileNameAsTitle) {
  StartWithItems(L"True");

  MoveTo(MiddleOfRow(0));

  EXPECT_EQ(Tip().Row(), std::size_t{0});
  EXPECT_EQ(Tip().Tooltip().Title(), L"one.txt");
  EXPECT_EQ(Tip().Tooltip().TipText(), items::ItemInformation(program, world, path_));
  EXPECT_EQ(Tip().Tooltip().Style(), ui::TipStyle::kBalloon);
  EXPECT_EQ(Tip().Tooltip().ParentControl(), List().Handle());
  EXPECT_TRUE(IsWindow(Tip().Tooltip().Handle()));
}

TEST_F(ItemTip, SaysThatAFileCannotBeOpenedInTheTipAndNotInABox) {
  StartWithItems(L"True");
  MoveTo(MiddleOfRow(1));
  EXPECT_EQ(Tip().Tooltip().Title(), L"two.txt");
  EXPECT_EQ(Tip().Tooltip().TipText(), L"Can not open File!");
}

TEST_F(ItemTip, IsBuiltOnceForARowAndAnewForAnother) {
  StartWithItems(L"True");
  MoveTo(MiddleOfRow(0));
  const HWND first = Tip().Tooltip().Handle();

  POINT beside = MiddleOfRow(0);
  beside.x += 5;
  MoveTo(beside);
  EXPECT_EQ(Tip().Tooltip().Handle(), first);

  MoveTo(MiddleOfRow(1));
  EXPECT_EQ(Tip().Row(), std::size_t{1});
  EXPECT_EQ(Tip().Tooltip().Title(), L"two.txt");
}

TEST_F(ItemTip, GoesOffTheRows) {
  StartWithItems(L"True");
  MoveTo(MiddleOfRow(0));
  MoveTo(BelowRows());
  EXPECT_EQ(Tip().Row(), std::nullopt);
  EXPECT_EQ(Tip().Tooltip().Handle(), nullptr);
}

TEST_F(ItemTip, GoesWhenThePointerLeavesTheList) {
  StartWithItems(L"True");
  MoveTo(MiddleOfRow(0));
  SendMessageW(List().Handle(), WM_MOUSELEAVE, 0, 0);
  EXPECT_EQ(Tip().Row(), std::nullopt);
}

TEST_F(ItemTip, IsNotShownWhileTheEntryIsUnchecked) {
  StartWithItems(L"False");
  MoveTo(MiddleOfRow(0));
  EXPECT_EQ(Tip().Row(), std::nullopt);
  EXPECT_EQ(Tip().Tooltip().Handle(), nullptr);
}

TEST_F(ItemTip, TheMenuEntrySwitchesItOnAndOff) {
  StartWithItems(L"False");

  Command(L"meu_ShowItemInfo");
  EXPECT_TRUE(Menus().IsChecked(L"meu_ShowItemInfo"));
  MoveTo(MiddleOfRow(0));
  EXPECT_EQ(Tip().Row(), std::size_t{0});

  Command(L"meu_ShowItemInfo");
  EXPECT_FALSE(Menus().IsChecked(L"meu_ShowItemInfo"));
  EXPECT_EQ(Tip().Row(), std::nullopt);
  MoveTo(MiddleOfRow(0));
  EXPECT_EQ(Tip().Row(), std::nullopt);
}

TEST_F(ItemTip, DoesNotOutliveTheRowsItWasBuiltFor) {
  StartWithItems(L"True");
  AddItem(L"B_", 1, {L"other", L"other.txt", dir.Path(L"other.txt")});
  MoveTo(MiddleOfRow(0));

  items::ShowData(Parts(), L"B_");
  POINT beside = MiddleOfRow(0);
  beside.x += 5;
  MoveTo(beside);

  EXPECT_EQ(Tip().Tooltip().Title(), L"other.txt");
}

}  // namespace
}  // namespace kestrelon::test
