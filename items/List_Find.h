#pragma once

#include <string>

#include "ui/FindWindow.h"
#include "ui/win/MainParts.h"

namespace kestrelon::items {

struct ListHelpers;

// The window that searches the list's rows for a text in one field. A search starts at the row after the
// selected one, at the first row when none is selected, ends at the last row, and selects the first row that
// holds the text. Case and blanks around the text do not count.
//
// While the text is being typed, a selection of several rows is narrowed to the one that the search starts
// behind, so that the user sees where that is; none selected stays none.
class List_Find : public ui::FindWindow {
 public:
  explicit List_Find(win::MainParts& parts) : FindWindow(L"List_Find", parts, parts.listFindShown) {}

 protected:
  void CreateControls() override;
  void TextChanged() override;
  void Search(const std::wstring& text) override;

 private:
  std::size_t SearchedColumn();
};

// Ctrl+F in the list, and a button of the toolbar. Does nothing while the window is open.
void OpenListFind(win::MainParts& parts, ListHelpers& helpers);

}  // namespace kestrelon::items
