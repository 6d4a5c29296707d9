#pragma once

#include "app/base/Win32.h"

#include <functional>
#include <stdexcept>
#include <string>

#include "app/base/File.h"
#include "app/base/OutsideWorld.h"

namespace kestrelon::win {

// An OK box with the exclamation icon, and one with the information icon.
void Exclaim(OutsideWorld& world, HWND owner, const std::wstring& text, const std::wstring& title);
void Inform(OutsideWorld& world, HWND owner, const std::wstring& text, const std::wstring& title);

// Text of the exception for a routine's box: "Unkonw Error:" and the description.
std::wstring ErrorText(const std::exception& error);

// Runs `body` as one routine: a failure is shown in the routine's own box and `onFailure` is returned. What
// `body` had already written stays written.
template <class R, class Body>
R InRoutine(OutsideWorld& world, HWND owner, const std::wstring& title, R onFailure, Body&& body) {
  try {
    return body();
  } catch (const std::exception& error) {
    Exclaim(world, owner, ErrorText(error), title);
  }
  return onFailure;
}

// The silent twin, for routines that show nothing on failure. True when the body came to its end.
template <class Body>
bool Quietly(Body&& body) {
  try {
    body();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace kestrelon::win
