#include "import/DragAndDropCommand.h"

#include "ui/win/Boxes.h"

namespace kestrelon::imports {

void meu_aa_Click(win::MainParts& parts) {
  const bool enabled = !parts.menus.IsChecked(L"meu_aa");
  parts.menus.Check(L"meu_aa", enabled);
  win::MarkChanged(parts);
  win::InRoutine(parts.world, parts.form.Handle(), L"meu_aa_Click Error:", false, [&] {
    parts.settings.WriteBoolean(L"Drag&Drop", enabled);
    return true;
  });
}

}  // namespace kestrelon::imports
