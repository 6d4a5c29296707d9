// How the program is left, and what becomes of content that is in no slot.

#include <utility>

#include "app/CloseAllWindows.h"
#include "app/MainForm.h"
#include "app/SlotDialog.h"
#include "items/ItemCommands.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "store/Store.h"
#include "ui/win/Boxes.h"

namespace kestrelon::app {

void MainForm::OnClose() {
  if (parts_.busy) {
    parts_.closeRequested = true;  // once what is going on has come to its end
    return;
  }
  if (sessionEnding_) {
    // Nobody is there to be asked. Before the system has made up its mind the window stays.
    if (!sessionEnded_) return;
    KeepComment();
    KeepUnsaved();
    CloseAllWindows(false);
    return;
  }
  if (WaitsForDialog()) {
    cSysTray1_Activated();
    return;
  }
  const win::ScopedFlag closing(closing_);
  TreeView1_.EndLabelEdit();
  if (Form_QueryUnload() && LeaveCollection()) CloseAllWindows(false);
}

bool MainForm::Form_QueryUnload() {
  const bool settled = win::InRoutine(world_, Handle(), L"Form_QueryUnload Error:", false, [&] {
    if (parts_.settleComment) parts_.settleComment();
    return true;
  });
  if (!settled) return false;
  win::InRoutine(world_, Handle(), L"Form_QueryUnload Error:", false, [&] {
    win::WriteViewSettings(parts_);
    return true;
  });
  if (program_.databaseSaved) return true;
  switch (world_.messageBox(Handle(), lang::Message(program_, lang::kExitQuestion), program_.productName,
                            MB_YESNOCANCEL | MB_ICONQUESTION)) {
    case IDYES: app::Save(parts_).Show(Handle()); return true;
    case IDNO: return true;
    default: return false;
  }
}

bool MainForm::LeaveCollection() {
  KeepUnsaved();
  const bool left = win::InRoutine(world_, Handle(), L"Form_Unload Error:", false, [&] {
    unsaved_.SetAside();
    return true;
  });
  if (left) unsaved_.Finish();
  // What cannot be set aside stays beside the working database, where the next start finds it. Where not even
  // that could be written, the window has the only copy.
  return left || !unsaved_.TreeChanged();
}

void MainForm::OfferUnsaved() {
  const auto time = store::UnsavedTime(program_);
  if (!std::exchange(program_.unsavedFound, false) || !time) return;
  const std::wstring question = lang::Message(program_, lang::kOpenUnsavedQuestion) + TimeText(*time);
  if (world_.messageBox(Handle(), question, program_.productName, MB_YESNO | MB_ICONQUESTION) != IDYES)
    return;
  store::LoadData(parts_, store::kUnsavedFile);
  items::EnableItemCommands(parts_);
}

void MainForm::KeepSoon() {
  if (keepPending_) return;
  // A long operation changes the tree all the time, and is not to be held up by writing it.
  constexpr UINT kSoon = 2000, kLater = 10'000;  // milliseconds
  keepPending_ = ::SetTimer(Handle(), kKeepTimer, parts_.busy ? kLater : kSoon, nullptr) != 0;
}

void MainForm::KeepUnsaved() {
  ::KillTimer(Handle(), kKeepTimer);
  keepPending_ = false;
  // A disk that is full now may have room later.
  constexpr UINT kMuchLater = 30'000;  // milliseconds
  if (!win::Quietly([&] { unsaved_.Keep(); }))
    keepPending_ = ::SetTimer(Handle(), kKeepTimer, kMuchLater, nullptr) != 0;
}

void MainForm::KeepComment() {
  win::Quietly([&] {
    if (parts_.keepComment) parts_.keepComment();
  });
}

LRESULT MainForm::OnQueryEndSession() {
  sessionEnding_ = true;
  // What goes wrong now is no reason to keep the system from ending, and nobody is there to be told.
  win::Quietly([&] { TreeView1_.EndLabelEdit(); });
  KeepComment();
  if (parts_.busy) parts_.closeRequested = true;  // what is going on ends at its next step
  KeepUnsaved();
  return TRUE;
}

// The program may be ended as soon as this returns.
void MainForm::OnEndSession(bool ends) {
  if (!ends) {
    sessionEnding_ = parts_.closeRequested = false;
    return;
  }
  sessionEnded_ = true;
  win::Quietly([&] { win::WriteViewSettings(parts_); });
  KeepUnsaved();
  if (connection_.IsOpen()) win::Quietly([&] { connection_.Write(); });
  if (!unsaved_.Any()) unsaved_.Finish();
  cSysTray1_.Remove();
}

}  // namespace kestrelon::app
