#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ui/win/MainParts.h"

namespace kestrelon::imports {

// The full paths in what the Open dialog returned: one path, or a folder and the names in it, separated by
// NULs. A folder that already ends in "\" gets no second one. Empty for an empty text.
std::vector<std::wstring> PathsOfSelection(std::wstring_view returned);

// Lets the user pick files with the Open dialog and adds them to the current category. Cancel is silent; a
// failure shows the box "meu_Input_Dialog_Click Error:".
void meu_Input_Dialog_Click(win::MainParts& parts);

}  // namespace kestrelon::imports
