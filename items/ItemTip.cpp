#include "items/ItemTip.h"

#include "items/ItemInformation.h"
#include "ui/win/Boxes.h"

namespace kestrelon::items {

void ItemTip::MouseMove(win::MainParts& parts, POINT point) {
  const auto row = parts.menus.IsChecked(L"meu_ShowItemInfo") ? parts.ListView1.HitTest(point) : std::nullopt;
  if (row == row_ && (!row || parts.ListView1.Rows()[*row].Text(3) == path_)) return;
  Hide();
  if (!row) return;
  win::Quietly([&] {
    const win::ListRow& item = parts.ListView1.Rows()[*row];
    tooltip_.SetStyle(ui::TipStyle::kBalloon);
    tooltip_.SetIcon(ui::TipIcon::kInformation);
    tooltip_.SetTitle(std::wstring(item.Text(2)));
    tooltip_.SetTipText(ItemInformation(parts.program, parts.world, std::wstring(item.Text(3))));
    tooltip_.Create(parts.ListView1.Handle());
    row_ = row;
    path_ = item.Text(3);
    tooltip_.PointerIsAt(point);
  });
}

void ItemTip::Hide() {
  tooltip_.Destroy();
  row_.reset();
}

}  // namespace kestrelon::items
