#pragma once

#include "app/base/Win32.h"

#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ui/win/Handles.h"
#include "ui/win/Units.h"
#include "ui/win/Window.h"

namespace kestrelon::win {

class ListView;

// The font of a control. Points are 1/72 inch, turned into pixels by the form's DPI.
struct FontSpec {
  std::wstring face;
  BYTE charset = DEFAULT_CHARSET;
  double points = 10;
  bool operator==(const FontSpec&) const = default;
};

// The kinds that localisation tells apart; everything else gets a font but no caption. An option button does
// not check itself: what a click on it means is its form's affair.
enum class ControlKind { kMenu, kLabel, kCommandButton, kCheckBox, kTextBox, kFrame, kOptionButton, kOther };

// One named control of a form, a menu entry included. `Tag` is the key under which its caption stands in the
// language files; an empty tag keeps the control out of localisation altogether.
struct FormControl {
  std::wstring name;  // "Command2", "meu_exit"
  int index = -1;     // of a control array, from 0; -1 for a single control
  ControlKind kind = ControlKind::kOther;
  std::wstring tag;
  HWND window = nullptr;  // null for menu entries
  HMENU menu = nullptr;   // menu entries: the menu that holds the entry
  UINT menuPosition = 0;  // menu entries: its position there
  UINT id = 0;            // command or control identifier
  TwipsRect place;  // client coordinates; unused for menu entries and controls that the form lays out itself
  FontSpec font;    // empty face: the system's message font
  bool placed = false;  // `place` holds
};

// A row of the table from which a form makes its controls.
struct ControlSpec {
  const wchar_t* name;
  int index;
  ControlKind kind;
  const wchar_t* tag;
  const wchar_t* caption;
  TwipsRect place;
  // Added to the kind's own style (WS_CHILD | WS_VISIBLE, WS_TABSTOP for what takes the focus).
  DWORD style = 0;
};

// A window with named controls in a fixed order, laid out in twips, that follows the monitor's DPI: on
// WM_DPICHANGED the controls are placed and the fonts made anew.
class Form : public Window {
 public:
  // The window's name: its section in the language files.
  explicit Form(std::wstring name) : name_(std::move(name)) {}
  ~Form() override;

  const std::wstring& Name() const { return name_; }
  // In the order in which they were added. References stay valid.
  const std::deque<FormControl>& Controls() const { return controls_; }
  std::deque<FormControl>& Controls() { return controls_; }
  FormControl* Find(std::wstring_view name, int index = -1);

  // For MainForm: the list whose headers are localised; null for every other form.
  virtual ListView* LocalisedHeaders() { return nullptr; }

  // Caption of a label, button of any kind, frame or menu entry. In a menu the accelerator text after a TAB
  // stays. After changes in the menu bar the caller draws it anew, once.
  std::wstring ControlCaption(const FormControl& control) const;
  void SetControlCaption(FormControl& control, const std::wstring& text);
  // No effect on menu entries beyond remembering it.
  void SetControlFont(FormControl& control, const FontSpec& font);

  // Makes the control's window (STATIC, BUTTON, EDIT) and adds it; identifiers count up from 1000 in the
  // order of adding.
  FormControl& AddControl(const ControlSpec& spec);
  // Adds a control or menu entry that was made elsewhere.
  FormControl& AddExisting(FormControl control);

  // Makes the window of a dialog or tool window, hidden and without a size: a caption with a system menu
  // (`style` adds to that), owned by `owner`. Throws as Create() does.
  void CreateDialogWindow(const std::wstring& caption, HWND owner, DWORD extendedStyle = WS_EX_DLGMODALFRAME,
                          DWORD style = 0);
  // The whole window's size so that the client area has this size, centred over `owner` (or the work area
  // when null).
  void SizeClientAndCentre(double widthTwips, double heightTwips, HWND owner);

  // Shows the form, disables the owner and runs its own message loop until Close() or the window is gone.
  // Enter presses the default button, Escape the cancel button. The owner is enabled before the window goes.
  void ShowModal(HWND owner);
  void Close();  // ends ShowModal and destroys the window; does nothing for a window that is gone
  // The dialog keys for a message of this form or its children (Tab, arrows, access keys, Enter, Escape).
  // False when the message is to be translated and dispatched as usual.
  bool TranslateDialogMessage(MSG& message);

  void SetDefaultButton(FormControl& control);
  void SetCancelButton(FormControl& control) { cancelId_ = control.id; }

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
  // A notification of a control (WM_COMMAND with its window); `code` is BN_CLICKED, BN_SETFOCUS, EN_CHANGE, …
  virtual void OnControl(FormControl& /*control*/, UINT /*code*/) {}
  // Places the controls that have a place. Called after creation, on a new DPI and by forms that lay out
  // themselves.
  virtual void LayOut();
  // The font of controls without one of their own, for the present DPI.
  HFONT MessageFont();
  HFONT FontFor(const FontSpec& spec);

 private:
  FormControl* FindWindowOf(HWND control);
  bool PressesButton(HWND focus, WPARAM key);
  void ApplyFonts();
  void OnActivate(bool active);
  void FocusAControl();
  void EnableOthers();

  static constexpr UINT kFirstId = 1000;
  std::wstring name_;
  std::deque<FormControl> controls_;
  std::map<std::wstring, UniqueFont> fonts_;  // by face, charset, points and DPI
  UINT defaultId_ = 0, cancelId_ = 0, nextId_ = kFirstId;
  bool modal_ = false;
  std::vector<HWND> disabled_;  // windows that ShowModal disabled
  HWND lastFocus_ = nullptr;    // the control that had the focus when the form was last left
};

// The message pump that the program's loops share: one message, with dialog keys for the form that holds the
// focus. Returns false when it was WM_QUIT, which is posted again for the outer loop.
bool PumpOneMessage(MSG& message);
// Handles every message that waits, and returns. "Yields to the message loop."
void DoEvents();

}  // namespace kestrelon::win
