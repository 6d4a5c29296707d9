#pragma once

#include "ui/win/MainParts.h"

namespace kestrelon::items {

// To be called whenever another row may be selected than before, or none: the menu entries and toolbar
// buttons that act on selected items are enabled exactly while a row is selected, and MainParts::itemSelected
// is called.
void EnableItemCommands(win::MainParts& parts);
// The toolbar's share of it: buttons 6 to 9.
void EnableItemButtons(win::MainParts& parts, bool enabled);

}  // namespace kestrelon::items
