#pragma once

#include <optional>
#include <string>

#include "ui/win/Form.h"
#include "ui/win/MainParts.h"

namespace kestrelon::items {

struct ListHelpers;

// The comment window: a tool window beside the main window that shows the comment of the selected row and
// saves what the user makes of it. It stays open while the user works on in the main window, and follows the
// selected row. Before a text that was typed and not saved goes away, with the row it was typed for or with
// the window, the user is asked once whether to save it. Closing hides it, so that it comes back at its place
// and in its size.
class Filelist_Comment : public win::Form {
 public:
  explicit Filelist_Comment(win::MainParts& parts);
  ~Filelist_Comment() override;

  // Shows the window with the selected row's comment, in the language in use, and checks `meu_comment`.
  void Open();
  // Hides it, forgets the item and takes the check mark away. Stays when a text that the user wants saved
  // cannot be.
  void Hide();

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
  void OnControl(win::FormControl& control, UINT code) override;
  void LayOut() override;

 private:
  void CreateControls();
  // The selected row may be another one than before, or its comment and alias may be others.
  void FollowSelection();
  void Remember(const std::wstring& fileIndex, const std::wstring& alias, const std::wstring& comment);
  // Is there a text that was typed and not saved, for an item that is still there?
  bool IsUnsaved();
  // Asks about such a text, and saves it or drops it. False when it could not be saved; it is still there
  // then.
  bool Settle();
  HWND OwnerOfQuestion() const;
  void SetComment(const std::wstring& comment);
  void Command1_Save();
  bool SaveText(const std::wstring& fileIndex, const std::wstring& comment);
  void Text1_Change();
  void SetText(std::wstring_view name, const std::wstring& text);
  std::wstring TextOf(std::wstring_view name);

  win::MainParts& parts_;
  std::wstring shownComment_;  // as the row has it
  bool settling_ = false;      // the question is open
  // The row that was selected when saving failed; empty text for none.
  std::optional<std::wstring> failedAt_;
};

// The entry with the check mark: opens the window, or closes it again.
void meu_comment_Click(win::MainParts& parts, ListHelpers& helpers);

}  // namespace kestrelon::items
