#pragma once

#include <functional>
#include <string>

#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"
#include "app/base/Settings.h"
#include "ui/win/ListView.h"
#include "ui/win/Menus.h"
#include "ui/win/StatusBar.h"
#include "ui/win/Toolbar.h"
#include "ui/win/TreeView.h"

namespace kestrelon::store {
class SharedConnection;
class UnsavedCollection;
}  // namespace kestrelon::store
namespace kestrelon::ui {
class cMagneticWnd;
}

namespace kestrelon::win {

// The list's column widths, as the settings keep them. A width that the user did not change is written back
// with the text it was read with, since 1/1440 inch does not survive the way through pixels.
struct ColumnWidthTexts {
  std::wstring text[5];
  int pixels[5] = {-1, -1, -1, -1, -1};
};

// What of MainForm the other folders may touch. MainForm makes it once and hands it down.
struct MainParts {
  Program& program;
  OutsideWorld& world;
  Settings& settings;
  Form& form;
  TreeView& TreeView1;
  ListView& ListView1;
  StatusBar& StatusBar1;  // panel 2 is the key of the current category; there is no second copy
  Toolbar& Toolbar1;
  Menus& menus;
  store::SharedConnection& connection;
  ui::cMagneticWnd* magnets = nullptr;          // null where windows do not snap
  store::UnsavedCollection* unsaved = nullptr;  // null where nothing is kept for after a crash
  HWND Text1 = nullptr;                         // holds the focus when neither pane does
  ColumnWidthTexts widthTexts{};
  bool internalDrag = false;  // rows of our own list are being dragged
  bool listDrag = false;      // the list's second drag flag
  // Keys of categories: under the pointer at the last press of a button in the tree; being dragged in the
  // tree. Empty for none.
  std::wstring pressedCategory{}, draggedCategory{};
  bool busy = false;            // a long operation runs; the window stays open as long
  bool closeRequested = false;  // the user closed the window meanwhile
  bool listPaneActive = false;  // the pane that last had the focus: list, or tree
  // Tool dialogs that the user has open.
  bool listFindShown = false, treeFindShown = false, commentShown = false;
  // Set by the comment window, which follows the list: called when another row may be selected than before.
  std::function<void()> itemSelected{};
  // Set by the comment window: to be called before content goes away, that is before another collection is
  // loaded and before the program is left. Asks whether to save a comment that was typed and not saved.
  std::function<void()> settleComment{};
  // Saves such a comment without asking: at the end of the session nobody can be asked.
  std::function<void()> keepComment{};
};

// The key of the current category; empty when none is.
inline std::wstring CurrentCategory(const MainParts& parts) { return parts.StatusBar1.PanelText(2); }
// The category to work on: the selected one, as long as it is the current one too; null for none.
TreeNode* CurrentNode(MainParts& parts);
// Panels 1 and 2 together: panel 1 becomes "Category : " and `shownText` (a name or a path, empty for none),
// panel 2 the key (empty: no category is current).
void SetCurrentCategory(MainParts& parts, const std::wstring& shownText, const std::wstring& key);
// Panel 3: "12 Objects".
void ShowObjectCount(MainParts& parts);
// Every change of categories or items.
inline void MarkChanged(MainParts& parts) { parts.program.databaseSaved = false; }

// The widths, ShowItemInfo and Drag&Drop, written to the settings file from what the window shows.
void WriteViewSettings(MainParts& parts);

}  // namespace kestrelon::win
