#pragma once

#include "app/base/Win32.h"

#include <commctrl.h>

#include <cstddef>
#include <optional>
#include <string>

namespace kestrelon::ui {

enum class TipStyle { kRectangular = 0, kBalloon = 1 };
enum class TipIcon { kNone = 0, kInformation = 1, kWarning = 2, kError = 3 };

// A rectangular or balloon tooltip of one control, with title, icon and colours. The whole control is its
// area: a tip that shall show something else for another row of a list is destroyed and created again with
// the new text, and then shown at once with PopUp().
class CTooltip {
 public:
  // The size that the tool's description carries. A 64-bit tooltip refuses any size but those of its own
  // versions of the structure; this is the oldest one, which every version of the common controls takes.
  // (TTTOOLINFOW_V1_SIZE, which this compiler's headers do not let be a constant.)
  static constexpr UINT kToolInfoSize = offsetof(TTTOOLINFOW, lpszText) + sizeof(LPWSTR);

  CTooltip();
  ~CTooltip() { Destroy(); }
  CTooltip(const CTooltip&) = delete;
  CTooltip& operator=(const CTooltip&) = delete;

  // Makes the tooltip window for a control of this process, with the properties as they stand. A tooltip that
  // exists is destroyed first. Throws std::system_error when the window cannot be made.
  void Create(HWND parent);
  void Destroy();  // does nothing when there is no tooltip
  // Tells a new tooltip that the pointer rests over its control already, at this place in client pixels: the
  // tip comes after the standard time, and not only after the next movement.
  void PointerIsAt(POINT client);
  // Hides the tip without destroying it.
  void Hide();

  HWND Handle() const { return handle_; }         // null when there is no tooltip
  HWND ParentControl() const { return parent_; }  // the control that the tooltip was created for

  // These two hold from the next Create() on.
  TipStyle Style() const { return style_; }
  void SetStyle(TipStyle style) { style_ = style; }
  bool Centered() const { return centered_; }
  void SetCentered(bool centered) { centered_ = centered; }

  // A change of these five shows at once in a tooltip that exists.
  TipIcon Icon() const { return icon_; }
  void SetIcon(TipIcon icon);
  std::optional<COLORREF> ForeColor() const { return foreColor_; }  // nullopt: the system's colour
  void SetForeColor(std::optional<COLORREF> color);
  std::optional<COLORREF> BackColor() const { return backColor_; }  // nullopt: the system's colour
  void SetBackColor(std::optional<COLORREF> color);
  const std::wstring& Title() const { return title_; }
  void SetTitle(const std::wstring& title);  // the control shows its first 99 units
  const std::wstring& TipText() const { return tipText_; }
  void SetTipText(const std::wstring& text);  // lines are separated by CR LF

  // Milliseconds. They are handed over but never take effect: the tooltip keeps its standard timing.
  int VisibleTime() const { return visibleTime_; }
  void SetVisibleTime(int milliseconds) { visibleTime_ = milliseconds; }
  int DelayTime() const { return delayTime_; }
  void SetDelayTime(int milliseconds) { delayTime_ = milliseconds; }

 private:
  TTTOOLINFOW Tool();
  void SendTitle();

  HWND handle_ = nullptr;
  HWND parent_ = nullptr;
  TipStyle style_ = TipStyle::kRectangular;
  bool centered_ = false;
  TipIcon icon_ = TipIcon::kNone;
  std::optional<COLORREF> foreColor_, backColor_;
  std::wstring title_, tipText_;
  int visibleTime_ = 5000;
  int delayTime_ = 500;
};

}  // namespace kestrelon::ui
