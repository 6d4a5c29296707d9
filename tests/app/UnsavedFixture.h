#pragma once

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string>

#include "store/UnsavedCollection.h"
#include "tests/support/Dialogs.h"
#include "tests/support/FileCalls.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {

// The whole program with work that is in no slot.
class Unsaved : public MainFormFixture {
 protected:
  // A category with an item, in no slot.
  void StartWithWork() {
    Start();
    SelectCategory(AddCategory(L"A_", L"work"));
    AddItem(L"A_", 1, {L"item"});
  }
  // Ends without a word, as a crash does, and starts again. The answer to the question, if one is expected.
  void CrashAndStart(std::initializer_list<int> answers = {}) {
    Crash();
    world.boxes.clear();
    world.answers.assign(answers);
    Start();
  }
  // The same with everything that the end of the objects here would still bring to disk left out.
  void KillAndStart(std::initializer_list<int> answers) {
    {
      const FileCalls calls(FileCalls::Mode::kStop, 0);
      Crash();
    }
    CrashAndStart(answers);
  }
  void Close(std::initializer_list<int> answers) {
    world.answers.assign(answers);
    SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
    End();
  }
  std::wstring Path() const { return program.dataFolder + store::kUnsavedFile; }

  void ExpectNothingBesideTheDatabases() {
    for (const auto& entry : std::filesystem::directory_iterator(program.dataFolder))
      EXPECT_EQ(entry.path().extension(), L".dat") << Narrow(entry.path().wstring());
  }

  // Opens the Load dialog, hands it to `act` and closes it if it is still there.
  void OpenLoad(const std::function<void(win::Form&)>& act) {
    const OnForm dialog(L"Load", act);
    Command(L"meu_LoadDatabase");
    EXPECT_TRUE(dialog.Done());
  }
};

}  // namespace kestrelon::test
