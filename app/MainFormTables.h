#pragma once

#include <array>
#include <cstddef>

#include "app/MainForm.h"
#include "ui/win/Menus.h"

namespace kestrelon::app {

// What the main window offers, as tables. An entry or button without a handler is shown greyed.
struct MainFormTables {
  struct Command {
    int depth;            // 0: a menu of the bar, 1: its entries, 2: a submenu's
    const wchar_t* name;  // null: a separator
    const wchar_t* caption;
    MainForm::Handler handler;
    bool submenu = false;  // opens a submenu, so it needs no handler
  };
  static const Command kCommands[];
  static const std::size_t kCommandCount;

  struct ToolbarButton {
    int image;                         // of the toolbar's pictures, from 0; -1 for the separator
    MainForm::Handler list, tree;      // by the pane that was last active
    const wchar_t *listTip, *treeTip;  // built-in English texts
  };
  static const std::array<ToolbarButton, 9> kToolbar;  // button 1 first

  struct Language {
    const wchar_t* name;   // as the settings hold it
    const wchar_t* entry;  // of the menu
  };
  static const std::array<Language, 3> kLanguages;
};

}  // namespace kestrelon::app
