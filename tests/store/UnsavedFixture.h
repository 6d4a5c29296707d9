#pragma once

#include <filesystem>
#include <memory>

#include "store/UnsavedCollection.h"
#include "tests/store/StoreFixture.h"

namespace kestrelon::store {

// The store with what is kept beside it for after a crash.
class UnsavedCollectionTest : public StoreTest {
 protected:
  UnsavedCollectionTest() { StartSession(); }

  void StartSession() {
    connection.Forget();
    unsaved = std::make_unique<UnsavedCollection>(parts);
  }
  std::wstring Unsaved() const { return Data(kUnsavedFile); }
  bool IsThere() const { return FileExists(Unsaved()); }

  void AddItem(const std::wstring& key, int number) {
    Execute(InsertItem(key, std::to_wstring(number) + L"#" + key, L"item " + std::to_wstring(number)));
  }
  // Two categories and an item, as a user's first work.
  void Work() {
    AddCategory(&AddCategory(nullptr, L"A", L"top"), L"B", L"child");
    AddItem(L"B", 1);
  }
  Content Worked() const { return {L"B|1#B|item 1", L"0_|A|top", L"A|B|child"}; }

  // The program ends here, without a word, and is started again: was there something to recover?
  bool Restart() {
    connection.Forget();
    unsaved.reset();
    const bool found = RecoverUnsaved(dir.program);
    DeleteIfThere(Working());
    dir.WriteFile(L"KestrelonData\\default.dat", TemplateBytes());
    tree.Clear();
    StartSession();
    return found;
  }
  bool Save(int slot) {
    world.answers.push_back(IDOK);
    return SaveData(parts, SlotFile(slot), form.Handle());
  }
  void ExpectNothingBesideTheDatabases() { ExpectOnlyWholeFiles(); }

  std::unique_ptr<UnsavedCollection> unsaved;
};

}  // namespace kestrelon::store
