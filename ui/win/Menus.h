#pragma once

#include "app/base/Win32.h"

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ui/win/Form.h"

namespace kestrelon::win {

// One line of a menu table. `depth` 0 is the menu bar, 1 its entries, 2 the entries of a submenu. A name of
// nullptr is a separator.
struct MenuLine {
  int depth;
  const wchar_t* name;     // "meu_AddChild"; also the key of its caption in the language files
  const wchar_t* caption;  // "Add &Child", with "\tF2" behind it where a key does the same
};

// The menu bar of a form, its entries reached by name. Adds every entry to the form's controls, in the order
// of the table, with its name as tag.
class Menus {
 public:
  // Identifiers count up from `firstId` in the order of the table, separators included. The form takes the
  // menu over.
  void Create(Form& form, const MenuLine* lines, std::size_t count, UINT firstId);
  UINT IdOf(std::wstring_view name) const;  // 0 for a name that is not there
  std::wstring_view NameOf(UINT id) const;  // empty for an identifier that is not there
  // An entry or a menu of the bar. The bar is drawn anew by the caller, once for all its changes.
  void Enable(std::wstring_view name, bool enabled);
  bool IsEnabled(std::wstring_view name) const;
  // Could the user choose it: it is enabled, and so are the menus that lead to it?
  bool IsWithinReach(std::wstring_view name) const;
  // An entry that has no command: grey for good, whatever Enable() is told.
  void SetInert(std::wstring_view name);
  bool IsInert(std::wstring_view name) const;
  void Check(std::wstring_view name, bool checked);
  bool IsChecked(std::wstring_view name) const;
  // Shows a top-level menu's entries as a context menu at a screen point; the chosen command arrives as
  // WM_COMMAND.
  void PopUp(std::wstring_view name, POINT screen) const;
  // The caption without "&", TAB part and dots: for tooltips.
  std::wstring PlainCaption(std::wstring_view name) const;

 private:
  struct Entry {
    HMENU menu = nullptr;
    UINT position = 0;
    UINT id = 0;
    HMENU submenu = nullptr;
    std::wstring parent{};  // empty for the menus of the bar
  };
  const Entry* Find(std::wstring_view name) const;
  UINT StateOf(std::wstring_view name) const;  // MFS_…; 0 for a name that is not there
  Form* form_ = nullptr;
  std::unordered_map<std::wstring, Entry> entries_;
  std::unordered_map<UINT, std::wstring> names_;
  std::set<std::wstring, std::less<>> inert_;
};

}  // namespace kestrelon::win
