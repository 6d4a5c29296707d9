#include "ui/win/MainParts.h"

#include <cwchar>

namespace kestrelon::win {

namespace {

// Decimal text of a measure, with as many decimals as it needs, at most three.
std::wstring DecimalText(double value) {
  wchar_t buffer[64];
  std::wstring text(buffer,
                    static_cast<std::size_t>(std::swprintf(buffer, std::size(buffer), L"%.3f", value)));
  text.resize(text.find_last_not_of(L'0') + 1);
  if (text.back() == L'.') text.pop_back();
  return text;
}

}  // namespace

TreeNode* CurrentNode(MainParts& parts) {
  TreeNode* const selected = parts.TreeView1.Selected();
  return selected != nullptr && selected->Key() == CurrentCategory(parts) ? selected : nullptr;
}

void SetCurrentCategory(MainParts& parts, const std::wstring& shownText, const std::wstring& key) {
  parts.StatusBar1.SetPanelText(1, L"Category : " + shownText);
  parts.StatusBar1.SetPanelText(2, key);
}

void ShowObjectCount(MainParts& parts) {
  parts.StatusBar1.SetPanelText(3, std::to_wstring(parts.ListView1.Count()) + L" Objects");
}

void WriteViewSettings(MainParts& parts) {
  ColumnWidthTexts& kept = parts.widthTexts;
  for (std::size_t i = 0; i < std::size(kWidthKeys); ++i) {
    const int pixels = parts.ListView1.ColumnWidth(i + 1);
    if (pixels != kept.pixels[i] || kept.text[i].empty()) {
      kept.text[i] = DecimalText(TwipsFromPixels(pixels, parts.form.Dpi()));
      kept.pixels[i] = pixels;
    }
    parts.settings.Write(kWidthKeys[i], kept.text[i]);
  }
  parts.settings.WriteBoolean(L"ShowItemInfo", parts.menus.IsChecked(L"meu_ShowItemInfo"));
  parts.settings.WriteBoolean(L"Drag&Drop", parts.menus.IsChecked(L"meu_aa"));
}

}  // namespace kestrelon::win
