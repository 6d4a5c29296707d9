#pragma once

#include "ui/win/MainParts.h"

namespace kestrelon::items {

// Opens the selected item's file with the program that the shell knows for it; does nothing without a
// selected row. "Can not open File!" (message 11) is shown when a server does not answer or its file cannot
// be opened, and for a local file that is not there; other failures are silent.
void OpenSelectedItem(win::MainParts& parts);

}  // namespace kestrelon::items
