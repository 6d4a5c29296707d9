#pragma once

#include "app/base/Win32.h"

#include <functional>
#include <string>

#include "ui/win/MainParts.h"

namespace kestrelon::tree {

// Makes a category key such as "S004211151317037719_" piece by piece at the end of `key`, so that a failing
// draw leaves what was built by then.
//
// now   local time; its year less 1943 is the code of the first character (2026 gives "S").
// draw  gives a whole number from 1 to 10000; called twice, once for each random part.
//
// The result has 20 characters, one more for each draw of 10000. It is not compared with the keys in use: the
// letter and the stamp tell years and seconds apart, the draws do so within a second.
void AppendKey(std::wstring& key, const SYSTEMTIME& now, const std::function<int()>& draw);

// A new key from the clock and the random generator, which is reseeded first. A failure shows its number in
// the box "GetNextKey_Error" and returns what was built by then, possibly nothing.
std::wstring GetNextKey(win::MainParts& parts);

}  // namespace kestrelon::tree
