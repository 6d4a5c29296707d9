#pragma once

#include "ui/win/MainParts.h"

namespace kestrelon::imports {

// Switches dragging in the category tree on or off: turns the entry's check mark over, clears the
// database-saved flag and writes the setting "Drag&Drop". Files dropped on the item list are taken either
// way. A setting that cannot be written shows the box "meu_aa_Click Error:"; the mark stays turned.
void meu_aa_Click(win::MainParts& parts);

}  // namespace kestrelon::imports
