// The driver with slots and the unsaved collection, at the ends of the program and its next starts.

#include "app/base/Win32.h"

#include <filesystem>
#include <fstream>

#include "app/SlotDialog.h"
#include "app/base/File.h"
#include "jet/Ado.h"
#include "store/SharedConnection.h"
#include "store/UnsavedCollection.h"
#include "tests/model/Driver.h"
#include "tests/support/Dialogs.h"

namespace kestrelon::model {
namespace {

constexpr WPARAM kKeepTimer = 1;  // of the main window: brings the tree to disk

void Write(const std::wstring& path, const std::string& bytes) {
  std::ofstream(std::filesystem::path(path), std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// Categories that make no tree, in a file that is sound otherwise.
void AddRows(const std::wstring& path, const std::vector<Tree::Line>& lines) {
  jet::Connection connection;
  connection.SetConnectionString(u"Data Source=" + store::ToEngine(path));
  connection.Open();
  jet::Recordset rows;
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  for (const Tree::Line& line : lines) {
    rows.AddNew();
    rows.SetField(u"parent", store::ToEngine(line[0]));
    rows.SetField(u"key", store::ToEngine(line[1]));
    rows.SetField(u"text", store::ToEngine(line[2]));
    rows.Update();
  }
  rows.Close();
  connection.Close();
}

}  // namespace

void Driver::Slots(const Plan& plan, const State& after) {
  switch (plan.kind) {
    case Kind::kLanguage:
      Command(plan.text == L"English"     ? L"meu_English"
              : plan.text == L"Chinese_S" ? L"meu_Chinese_Simplified"
                                          : L"meu_Chinese_Traditional");
      break;
    case Kind::kSave:
      SlotDialog(plan, true);
      if (program_.Parts().settings.Read(L"Data" + std::to_wstring(plan.slot)) != after.labels[plan.slot])
        program_.Fault("the slot has another label than " + Narrow(after.labels[plan.slot]));
      break;
    case Kind::kLoad: SlotDialog(plan, false); break;
    case Kind::kLoadUnsaved: LoadUnsaved(plan); break;
    case Kind::kLoadDamaged: LoadDamaged(plan); break;
    case Kind::kExit: Exit(plan); break;
    case Kind::kUncleanEnd:
      if (plan.way == 1) SendMessageW(program_.form->Handle(), WM_TIMER, kKeepTimer, 0);
      StartAnew(plan);
      break;
    case Kind::kEndSession: EndSession(plan); break;
    default: break;
  }
}

void Driver::SlotDialog(const Plan& plan, bool save) {
  InDialog(
      save ? L"Save" : L"Load", [&] { Command(save ? L"meu_SaveDatabase" : L"meu_LoadDatabase"); },
      [&](win::Form& form) {
        if (!save) CheckOffer(form);
        const bool left = save ? plan.way == 2 : plan.way == 1;
        if (!left) Press(form, L"Command2", static_cast<int>(plan.slot));
      });
}

void Driver::LoadDamaged(const Plan& plan) {
  const std::wstring slot = program_.DataFile(L"Data" + std::to_wstring(plan.slot) + L".dat");
  const std::string bytes = BytesOf(slot);
  switch (plan.damage) {
    case Damage::kCut: Write(slot, bytes.substr(0, bytes.size() / 2)); break;
    case Damage::kText: Write(slot, "no database"); break;
    case Damage::kNoParent: AddRows(slot, {{L"0_", L"first_", L"x"}, {L"nowhere_", L"lost_", L"y"}}); break;
    case Damage::kKeyTwice: AddRows(slot, {{L"0_", L"twin_", L"x"}, {L"0_", L"twin_", L"y"}}); break;
    default: AddRows(slot, {{L"b_", L"a_", L"x"}, {L"a_", L"b_", L"y"}}); break;
  }
  SlotDialog(plan, false);
  Write(slot, bytes);
}

// The unsaved collection has a button with its time, while there is one.
void Driver::CheckOffer(win::Form& dialog) {
  const auto time = store::UnsavedTime(program_.program);
  const win::FormControl* const button = dialog.Find(L"Command3");
  if ((button != nullptr) != time.has_value()) {
    program_.Fault("the button of the unsaved collection, there or not");
  } else if (button && !test::TextOf(button->window).ends_with(app::TimeText(*time))) {
    program_.Fault("the button of the unsaved collection: " + Narrow(test::TextOf(button->window)));
  }
}

void Driver::LoadUnsaved(const Plan& plan) {
  InDialog(
      L"Load", [&] { Command(L"meu_LoadDatabase"); },
      [&](win::Form& form) {
        CheckOffer(form);
        if (plan.way == 0) Press(form, L"Command3");
      });
}

void Driver::Close(bool stays) {
  SendMessageW(program_.form->Handle(), WM_CLOSE, 0, 0);
  win::DoEvents();
  if (stays != (IsWindow(program_.form->Handle()) != FALSE))
    program_.Fault(stays ? "the window went" : "the window stayed");
}

void Driver::Exit(const Plan& plan) {
  const std::wstring slot = program_.DataFile(L"Data" + std::to_wstring(plan.slot) + L".dat");
  switch (plan.leaving) {
    case Leaving::kCancel: Close(true); return;
    case Leaving::kNo: Close(false); break;
    default: {
      // A folder in the slot's place: nothing can be saved there.
      if (plan.leaving == Leaving::kSaveFails) std::filesystem::create_directory(slot);
      const test::OnForm dialog(L"Save", [&](win::Form& form) {
        if (plan.leaving != Leaving::kDialogLeft) Press(form, L"Command2", static_cast<int>(plan.slot));
      });
      Close(false);
      if (!dialog.Done()) program_.Fault("the Save dialog did not come up at the end");
      if (plan.leaving == Leaving::kSaveFails) std::filesystem::remove(slot);
    }
  }
  StartAnew(plan);
}

void Driver::EndSession(const Plan& plan) {
  const HWND window = program_.form->Handle();
  const bool ends = plan.way == 0;
  if (SendMessageW(window, WM_QUERYENDSESSION, 0, 0) != TRUE) program_.Fault("the session was not to end");
  if (plan.close && !ends) Close(true);
  SendMessageW(window, WM_ENDSESSION, ends, 0);
  if (!ends) return;
  if (plan.close) Close(false);
  StartAnew(plan);
}

// Whatever is left of the program goes without a word.
void Driver::StartAnew(const Plan& plan) {
  program_.End();
  program_.Start(plan.answer);
  InDialog(
      L"Load", [&] { Command(L"meu_LoadDatabase"); }, [&](win::Form& form) { CheckOffer(form); });
}

}  // namespace kestrelon::model
