#pragma once

#include <string>
#include <string_view>

#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"
#include "app/base/Settings.h"
#include "lang/Messages.h"

namespace kestrelon::win {
class Form;
struct FontSpec;
}  // namespace kestrelon::win

namespace kestrelon::lang {

// Full path of a language's file; empty for any name but "English", "Chinese_S" and "Chinese_T", so that
// every look-up then yields an empty text.
std::wstring LanguageFile(const Program& program, std::wstring_view languageName);

// Applies a language to one window: its caption (key "0" of the section named after the window, even when
// empty; not for MainForm), for MainForm the list's headers from column 2 on (section "listview_header", even
// when empty), and for every control with a tag the font and, where the file has a text for the tag, the
// caption. A failure shows the information box "ReadLanguage Error." and keeps what was applied so far.
void ReadLanguage(win::Form& window, const Program& program, std::wstring_view languageName);
// The same with the world that shows that box.
void ReadLanguage(win::Form& window, const Program& program, std::wstring_view languageName,
                  OutsideWorld& world);

// Text of a numbered message in the current language; empty when the file has none.
std::wstring ReadMessage(const Program& program, int number);
// The same with the built-in English text behind it. `number` and `english` are one row of the table in
// Messages.h.
std::wstring Message(const Program& program, int number, std::wstring_view english);
std::wstring Message(const Program& program, const MessageText& message);
// A text of a window's section under any key, with the built-in text behind it.
std::wstring WindowText(const Program& program, std::wstring_view window, std::wstring_view key,
                        std::wstring_view builtIn);

// Many of them at one stroke.
class WindowTexts {
 public:
  WindowTexts(const Program& program, std::wstring_view window);
  std::wstring Text(std::wstring_view key, std::wstring_view builtIn) const;

 private:
  IniSection texts_;
};

// The font of localised controls depends on the user's locale alone, never on the language chosen.
win::FontSpec FontOfLocale(unsigned localeIdentifier);

}  // namespace kestrelon::lang
