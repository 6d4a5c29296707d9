#pragma once

#include "app/base/Win32.h"

#include <cstddef>
#include <string>

namespace kestrelon::win {

// Text boxes whose text goes into the database. No statement takes a text with a double quote in it, so these
// boxes take none: one that is typed is dropped, a text that is pasted comes in without them, and a balloon
// at the box says why.

// Makes a text box one of these: `refusal` stands in the balloon, and the user can type up to `longest`
// UTF-16 units. A text that the program sets comes in as it is. A second call changes both. Throws
// std::system_error.
void TakeStorableText(HWND edit, std::size_t longest, const std::wstring& refusal);

// Does the box hold a text that cannot be stored, one that the program set? Then it has the focus now, and
// the balloon.
bool RefusesItsText(HWND edit);

// A balloon with this text at a box of that kind, which gets the focus. It goes when the user types on, when
// the box loses the focus, or after some seconds.
void ShowBalloon(HWND edit, const std::wstring& text);

}  // namespace kestrelon::win
