#include "lang/SelectLanguage.h"

#include "app/base/Win32.h"

#include <algorithm>
#include <iterator>

#include "app/base/File.h"
#include "ui/win/Boxes.h"
#include "ui/win/Form.h"
#include "ui/win/ListView.h"

namespace kestrelon::lang {

namespace {

// The languages that have a file.
constexpr const wchar_t* kLanguages[] = {L"English", L"Chinese_S", L"Chinese_T"};

bool HasCaption(win::ControlKind kind) {
  return kind == win::ControlKind::kMenu || kind == win::ControlKind::kLabel ||
         kind == win::ControlKind::kCommandButton || kind == win::ControlKind::kCheckBox;
}

void Apply(win::Form& window, const std::wstring& file) {
  const std::wstring& section = window.Name();
  // The main window's caption is the product name in every language.
  const IniSection texts(section, file);
  if (section != L"MainForm") window.SetCaption(texts.Read(L"0"));
  if (win::ListView* list = window.LocalisedHeaders()) {
    const IniSection headers(L"listview_header", file);
    // Headers are numbered from 1; the first stands over the icons and has no text.
    for (std::size_t number = 2; number <= list->ColumnCount(); ++number) {
      list->SetColumnText(number - 1, headers.Read(std::to_wstring(number)));
    }
  }
  const win::FontSpec font = FontOfLocale(::GetUserDefaultLCID());
  for (win::FormControl& control : window.Controls()) {
    if (control.tag.empty()) continue;
    window.SetControlFont(control, font);
    if (!HasCaption(control.kind)) continue;
    const std::wstring caption = texts.Read(control.tag);
    if (!caption.empty()) window.SetControlCaption(control, caption);
  }
}

}  // namespace

std::wstring LanguageFile(const Program& program, std::wstring_view languageName) {
  if (std::find(std::begin(kLanguages), std::end(kLanguages), languageName) == std::end(kLanguages))
    return {};
  return program.programFolder + L"Lang\\" + std::wstring(languageName) + L".ini";
}

void ReadLanguage(win::Form& window, const Program& program, std::wstring_view languageName) {
  OutsideWorld world = SystemWorld();
  ReadLanguage(window, program, languageName, world);
}

void ReadLanguage(win::Form& window, const Program& program, std::wstring_view languageName,
                  OutsideWorld& world) {
  // Unlike other routines this one tells of its failure by an information box, without "Unkonw Error:".
  try {
    Apply(window, LanguageFile(program, languageName));
  } catch (const std::exception& error) {
    win::Inform(world, window.Handle(), Widen(error.what()), L"ReadLanguage Error.");
  }
}

std::wstring ReadMessage(const Program& program, int number) {
  return ReadIni(L"messagebox", std::to_wstring(number), LanguageFile(program, program.languageName));
}

std::wstring Message(const Program& program, int number, std::wstring_view english) {
  std::wstring text = ReadMessage(program, number);
  return text.empty() ? std::wstring(english) : text;
}

std::wstring Message(const Program& program, const MessageText& message) {
  return Message(program, message.number, message.english);
}

std::wstring WindowText(const Program& program, std::wstring_view window, std::wstring_view key,
                        std::wstring_view builtIn) {
  std::wstring text = ReadIni(window, key, LanguageFile(program, program.languageName));
  return text.empty() ? std::wstring(builtIn) : text;
}

WindowTexts::WindowTexts(const Program& program, std::wstring_view window)
    : texts_(window, LanguageFile(program, program.languageName)) {}

std::wstring WindowTexts::Text(std::wstring_view key, std::wstring_view builtIn) const {
  std::wstring text = texts_.Read(key);
  return text.empty() ? std::wstring(builtIn) : text;
}

win::FontSpec FontOfLocale(unsigned localeIdentifier) {
  switch (localeIdentifier) {
    case 1042: return {L"굴림", HANGUL_CHARSET, 10};
    case 1028: return {L"新細明體", CHINESEBIG5_CHARSET, 10};
    // Full-width letters with one ordinary blank: the face's own name.
    case 1041: return {L"ＭＳ Ｐゴシック", SHIFTJIS_CHARSET, 10};
    case 2052: return {L"宋体", GB2312_CHARSET, 10};
  }
  return {L"Arial", DEFAULT_CHARSET, 10};
}

}  // namespace kestrelon::lang
