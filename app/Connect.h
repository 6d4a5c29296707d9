#pragma once

#include <string>

#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"

namespace kestrelon::app {

// Start-up, up to but not including the main window. `programFolder` is the executable's folder, `appData`
// the value of the environment variable APPDATA; either may end in a backslash or not.

// The names of everything: folders, settings file, product strings. Touches nothing on disk.
Program NameProgram(const std::wstring& programFolder, const std::wstring& appData);

// Makes the data folder where it is missing. A failure shows later: nothing can be put into it.
void MakeDataFolder(const Program& program);

// Makes the data folder, and the settings file with its defaults, where they are missing; reads the language;
// copies the empty template, tests it, sets aside what an unclean end left unsaved, and remakes the working
// database. False when the program cannot
// go on; why has been shown by then, in exactly one box.
bool Connect(Program& program, OutsideWorld& world);

// Folder of the running executable, ending in a backslash.
std::wstring ExecutableFolder();
// Value of an environment variable; empty when there is none.
std::wstring EnvironmentValue(const wchar_t* name);

}  // namespace kestrelon::app
