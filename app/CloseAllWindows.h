#pragma once

namespace kestrelon::app {

// Unloads every open window of the program, the one in front first and the main window last; then, when none
// is left or when `force` says so, ends the program: its message loop comes to an end.
void CloseAllWindows(bool force);

}  // namespace kestrelon::app
