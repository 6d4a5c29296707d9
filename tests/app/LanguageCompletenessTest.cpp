// The language files against the windows themselves: every text that a window asks for is there, no other is,
// and each has room where it is shown.

#include <functional>
#include <map>
#include <set>

#include "app/MainFormTables.h"
#include "app/SlotDialog.h"
#include "import/inputDialog.h"
#include "items/FilePropterty.h"
#include "items/FileRename.h"
#include "items/ItemCommands.h"
#include "items/ShowData.h"
#include "items/frmDeletebox.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "tests/support/MainFormFixture.h"
#include "tree/Changecategory.h"
#include "tree/Tree_Find.h"
#include "ui/frmAbout.h"
#include "ui/frmTip.h"

namespace kestrelon::test {
namespace {

constexpr const wchar_t* kLanguages[] = {L"English", L"Chinese_S", L"Chinese_T"};
constexpr unsigned kDpis[] = {96, 120, 144, 192};

using Keys = std::set<std::string>;  // "section/key"

std::string KeyOf(std::wstring_view section, std::wstring_view key) {
  return Narrow(std::wstring(section) + L"/" + std::wstring(key));
}

bool HasCaption(const win::FormControl& control) {
  return control.kind == win::ControlKind::kMenu || control.kind == win::ControlKind::kLabel ||
         control.kind == win::ControlKind::kCommandButton || control.kind == win::ControlKind::kCheckBox;
}

// The texts of a list that ends in an empty one.
std::vector<std::wstring> Split(const std::vector<wchar_t>& list) {
  std::vector<std::wstring> texts;
  for (const wchar_t* text = list.data(); *text; text += texts.back().size() + 1) texts.push_back(text);
  return texts;
}

Keys KeysOfFile(const std::wstring& file) {
  Keys keys;
  std::vector<wchar_t> sections(32000), names(32000);
  GetPrivateProfileStringW(nullptr, nullptr, L"", sections.data(), 32000, file.c_str());
  for (const std::wstring& section : Split(sections)) {
    GetPrivateProfileStringW(section.c_str(), nullptr, L"", names.data(), 32000, file.c_str());
    const std::vector<std::wstring> found = Split(names);
    EXPECT_FALSE(found.empty()) << "an empty section: " << Narrow(section);
    for (const std::wstring& name : found) keys.insert(KeyOf(section, name));
  }
  return keys;
}

// What is in `a` and not in `b`.
Keys Without(Keys a, const Keys& b) {
  std::erase_if(a, [&](const std::string& key) { return b.contains(key); });
  return a;
}

class LanguageCompleteness : public MainFormFixture {
 protected:
  // The main window with a selected category and a selected item, so that every dialog can open.
  void StartWithSelection() {
    Start();
    for (int slot = 0; slot < app::kSlots; ++slot)
      dir.settings.Write(app::SlotKey(slot), app::SlotLabel(slot, world.now));
    dir.WriteFile(L"KestrelonData\\Unsaved.dat", TemplateBytes());  // which the Load dialog offers
    SelectCategory(AddCategory(L"A_", L"A"));
    AddItem(L"A_", 1, {L"item"});
    items::ShowData(Parts(), L"A_");
    List().SelectOnly(0);
    items::EnableItemCommands(Parts());
  }

  // Every window of the program but the main one. A window that is added to the program is added here.
  std::vector<std::function<void()>> Openings() {
    return {
        [this] { app::Save(Parts()).Show(form->Handle()); },
        [this] { app::Load(Parts()).Show(form->Handle()); },
        [this] { imports::inputDialog(Parts()).Show(form->Handle()); },
        [this] { items::FileRename(Parts()).Show(form->Handle(), 0); },
        [this] { items::FilePropterty(Parts()).Show(form->Handle(), 0); },
        [this] { items::meu_comment_Click(Parts(), form->ListHelpers()); },
        [this] { items::frmDeletebox(Parts()).Ask(form->Handle()); },
        [this] { items::OpenListFind(Parts(), form->ListHelpers()); },
        [this] { tree::OpenTreeFind(Parts(), form->TreeHelpers()); },
        [this] { tree::Changecategory(Parts()).Show(form->Handle()); },
        [this] { ui::frmTip(program, world).Show(form->Handle()); },
        [this] { ui::frmAbout(program, world).Show(form->Handle()); },
    };
  }
  // Opens the windows one after the other in the language in use and hands each to `look`, the main window
  // first.
  void ForEachWindow(const std::function<void(win::Form&)>& look) {
    look(*form);
    for (const std::function<void()>& open : Openings()) {
      const OnWindow opened(
          [this](HWND window) {
            return window != form->Handle() && dynamic_cast<win::Form*>(win::Window::Of(window)) != nullptr;
          },
          [&](HWND window) {
            look(*dynamic_cast<win::Form*>(win::Window::Of(window)));
            SendMessageW(window, WM_CLOSE, 0, 0);
          });
      open();
      EXPECT_TRUE(PumpUntil([&] { return opened.Done(); }));
    }
  }

  // The keys that the windows, the list's headers and the messages look up.
  Keys KeysInUse() {
    // Looked up by the code, not through a control's caption.
    Keys keys = {"FilePropterty/Text1"};
    ForEachWindow([&](win::Form& window) {
      if (&window != form.get()) keys.insert(KeyOf(window.Name(), L"0"));
      for (const win::FormControl& control : window.Controls()) {
        if (HasCaption(control) && !control.tag.empty()) keys.insert(KeyOf(window.Name(), control.tag));
      }
    });
    for (std::size_t i = 0; i < app::MainFormTables::kToolbar.size(); ++i) {
      if (app::MainFormTables::kToolbar[i].image < 0) continue;
      const std::wstring key = L"Toolbar1_" + std::to_wstring(i + 1);
      keys.insert(KeyOf(L"MainForm", key));
      // From button 6 on they do the same in either pane.
      if (i + 1 < 5) keys.insert(KeyOf(L"MainForm", key + L"_tree"));
    }
    for (std::size_t column = 2; column <= List().ColumnCount(); ++column)
      keys.insert(KeyOf(L"listview_header", std::to_wstring(column)));
    for (const lang::MessageText& message : lang::kMessages)
      keys.insert(KeyOf(L"messagebox", std::to_wstring(message.number)));
    return keys;
  }
};

TEST_F(LanguageCompleteness, TheFilesHaveEveryTextInUseAndNoOther) {
  StartWithSelection();
  const Keys inUse = KeysInUse();
  ASSERT_GT(inUse.size(), 100u);

  for (const wchar_t* language : kLanguages) {
    const Keys there = KeysOfFile(lang::LanguageFile(program, language));
    EXPECT_EQ(Without(inUse, there), Keys()) << "missing in " << Narrow(language);
    EXPECT_EQ(Without(there, inUse), Keys()) << "of no use in " << Narrow(language);
  }
}

TEST_F(LanguageCompleteness, EveryWindowHasATitleInEveryLanguage) {
  StartWithSelection();
  std::map<std::wstring, std::set<std::wstring>> titles;
  for (const wchar_t* language : kLanguages) {
    program.languageName = language;
    ForEachWindow([&](win::Form& window) {
      if (&window == form.get()) return;
      EXPECT_NE(window.Caption(), L"") << Narrow(window.Name() + L" " + language);
      titles[window.Name()].insert(window.Caption());
    });
  }
  EXPECT_EQ(titles.size(), Openings().size());  // each opening is another window
  for (const auto& [name, texts] : titles) EXPECT_GE(texts.size(), 2u) << Narrow(name);
}

// A device context with the font of a control.
class FontOf {
 public:
  explicit FontOf(HWND control) : control_(control), context_(GetDC(control)) {
    const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
    before_ = SelectObject(context_, font);
  }
  ~FontOf() {
    SelectObject(context_, before_);
    ReleaseDC(control_, context_);
  }
  FontOf(const FontOf&) = delete;
  FontOf& operator=(const FontOf&) = delete;
  // The room that a text takes up; lines are broken at `width` when that is not 0.
  SIZE Measure(const std::wstring& text, UINT flags, LONG width = 0) const {
    RECT needed{0, 0, width, 0};
    DrawTextW(context_, text.c_str(), -1, &needed,
              DT_CALCRECT | flags | (width != 0 ? DT_WORDBREAK : DT_SINGLELINE));
    return {needed.right, needed.bottom};
  }

 private:
  HWND control_;
  HDC context_;
  HGDIOBJ before_;
};

// Empty when the control's caption can be read in full, else what is wrong.
std::string Trouble(const win::Form& window, const win::FormControl& control, unsigned dpi) {
  const bool measured =
      control.kind == win::ControlKind::kLabel || control.kind == win::ControlKind::kFrame ||
      control.kind == win::ControlKind::kCommandButton || control.kind == win::ControlKind::kCheckBox ||
      control.kind == win::ControlKind::kOptionButton;
  if (!measured || control.window == nullptr || !IsWindowVisible(control.window)) return {};
  const LONG_PTR style = GetWindowLongPtrW(control.window, GWL_STYLE);
  const bool label = control.kind == win::ControlKind::kLabel;
  if (label && (style & SS_ELLIPSISMASK) != 0) return {};  // meant to be cut off
  const std::wstring caption = window.ControlCaption(control);
  if (caption.empty()) return {};

  RECT room;
  GetClientRect(control.window, &room);
  const auto pixels = [dpi](int at96) { return MulDiv(at96, static_cast<int>(dpi), 96); };
  // What the control draws beside its text: the edges of a button, the box before a check box, the ends of a
  // frame's line.
  if (control.kind == win::ControlKind::kCommandButton) room.right -= pixels(8);
  if (control.kind == win::ControlKind::kCheckBox || control.kind == win::ControlKind::kOptionButton)
    room.right -= pixels(18);
  if (control.kind == win::ControlKind::kFrame) room.right -= pixels(20);
  const FontOf font(control.window);
  const UINT prefix = label && (style & SS_NOPREFIX) != 0 ? DT_NOPREFIX : 0U;
  const SIZE needed = font.Measure(caption, prefix, label ? room.right : 0);
  if (needed.cx <= room.right && needed.cy <= room.bottom) return {};
  return Narrow(window.Name() + L"." + control.name + L" \"" + caption + L"\"") + " needs " +
         std::to_string(needed.cx) + " x " + std::to_string(needed.cy) + " of " + std::to_string(room.right) +
         " x " + std::to_string(room.bottom) + " pixels at " + std::to_string(dpi);
}

// As on a monitor with that many pixels an inch.
void ChangeDpi(win::Form& window, unsigned dpi) {
  RECT whole;
  GetWindowRect(window.Handle(), &whole);
  const int before = static_cast<int>(window.Dpi()), now = static_cast<int>(dpi);
  const RECT suggested{0, 0, MulDiv(whole.right - whole.left, now, before),
                       MulDiv(whole.bottom - whole.top, now, before)};
  SendMessageW(window.Handle(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&suggested));
}

class CaptionRoom : public LanguageCompleteness, public testing::WithParamInterface<const wchar_t*> {};

TEST_P(CaptionRoom, IsEnoughAtEveryDpi) {
  StartWithSelection();
  program.languageName = GetParam();
  int looks = 0;

  ForEachWindow([&](win::Form& window) {
    if (&window == form.get()) return;  // its texts are in menus and tips, which make their own room
    for (const unsigned dpi : kDpis) {
      ChangeDpi(window, dpi);
      ASSERT_EQ(window.Dpi(), dpi);
      for (const win::FormControl& control : window.Controls()) {
        EXPECT_EQ(Trouble(window, control, dpi), "");
        ++looks;
      }
    }
  });

  EXPECT_GT(looks, 4 * 50);
}

INSTANTIATE_TEST_SUITE_P(Languages, CaptionRoom, testing::ValuesIn(kLanguages),
                         [](const auto& language) { return Narrow(language.param); });

}  // namespace
}  // namespace kestrelon::test
