#pragma once

#include "app/base/Win32.h"

#include <commctrl.h>

#include <string>
#include <vector>

namespace kestrelon::test {

// Writes down the balloons that a text box is asked for, and answers like a box that can show them.
class BalloonSpy {
 public:
  explicit BalloonSpy(HWND edit) : edit_(edit) {
    SetWindowSubclass(edit_, &Procedure, reinterpret_cast<UINT_PTR>(this), reinterpret_cast<DWORD_PTR>(this));
  }
  ~BalloonSpy() { RemoveWindowSubclass(edit_, &Procedure, reinterpret_cast<UINT_PTR>(this)); }
  BalloonSpy(const BalloonSpy&) = delete;
  BalloonSpy& operator=(const BalloonSpy&) = delete;
  const std::vector<std::wstring>& Texts() const { return texts_; }
  bool shows = true;  // false: as where balloons are switched off

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                    DWORD_PTR self) {
    auto& spy = *reinterpret_cast<BalloonSpy*>(self);
    if (message == EM_SHOWBALLOONTIP) {
      const auto& balloon = *reinterpret_cast<const EDITBALLOONTIP*>(lParam);
      spy.texts_.push_back(balloon.cbStruct == sizeof balloon ? balloon.pszText
                                                              : L"a structure of another size");
      return spy.shows;
    }
    return DefSubclassProc(window, message, wParam, lParam);
  }
  HWND edit_;
  std::vector<std::wstring> texts_;
};

inline constexpr const wchar_t* kNoQuoteText = L"A double quote cannot be stored. Use \u201C \u201D instead.";

}  // namespace kestrelon::test
