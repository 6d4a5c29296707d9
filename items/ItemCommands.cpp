#include "items/ItemCommands.h"

namespace kestrelon::items {
namespace {

constexpr const wchar_t* kItemEntries[] = {L"meu_rename",        L"meu_Definenameasfilename",
                                           L"meu_Delete",        L"meu_Properties",
                                           L"meu_Moveto",        L"meu_Copyto",
                                           L"meu_openfile",      L"meu_destinationdirectory",
                                           L"meu_Changecategory"};

struct ItemButton {
  int button;
  const wchar_t* entry;
};
constexpr ItemButton kItemButtons[] = {
    {6, L"meu_openfile"}, {7, L"meu_destinationdirectory"}, {8, L"meu_Properties"}, {9, L"meu_Copyto"}};

}  // namespace

void EnableItemCommands(win::MainParts& parts) {
  const bool selected = parts.ListView1.SelectedRow().has_value();
  for (const wchar_t* entry : kItemEntries) parts.menus.Enable(entry, selected);
  EnableItemButtons(parts, selected);
  if (parts.itemSelected) parts.itemSelected();
}

void EnableItemButtons(win::MainParts& parts, bool enabled) {
  // An entry without a command stays grey, and its button with it.
  for (const ItemButton& item : kItemButtons) {
    parts.Toolbar1.Enable(item.button, enabled && !parts.menus.IsInert(item.entry));
  }
}

}  // namespace kestrelon::items
