#pragma once

#include <string>

#include "ui/win/MainParts.h"

namespace kestrelon::items {

// The one routine that fills the item list: every item of the category, in the database's own order, painted
// once at the end; the count stands in panel 3. Nothing is selected afterwards. A failure shows the box
// "ShowData Error:" and leaves an empty list.
void ShowData(win::MainParts& parts, const std::wstring& nodeKey);

// Empties the list and shows "0 Objects".
void ClearList(win::MainParts& parts);

}  // namespace kestrelon::items
