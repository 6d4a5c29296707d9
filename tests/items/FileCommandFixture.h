#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "items/ListEvents.h"
#include "items/ShowData.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {

// A main window over items whose files the tests make, or only name.
class FileCommand : public MainFormFixture {
 protected:
  using Texts = std::vector<std::wstring>;

  // A category with an item for each path; all rows are selected.
  void StartWith(const Texts& paths) {
    Start();
    SelectCategory(AddCategory(L"A_", L"Alpha"));
    int number = 0;
    for (const std::wstring& path : paths) {
      ++number;
      AddItem(L"A_", number, {L"n" + std::to_wstring(number), FileNameOfPath(path), path});
    }
    items::ShowData(Parts(), L"A_");
    SetFocus(List().Handle());
    List().SelectAll();
    items::ListView1_SelectionChanged(Parts());
    program.databaseSaved = true;
  }
  void SelectRows(const std::vector<std::size_t>& rows) {
    List().SelectNone();
    for (const std::size_t row : rows) List().Select(row, true);
    items::ListView1_SelectionChanged(Parts());
  }
  // What the commands ask of the shell is written down as before, and done.
  void UseTheRealShell() {
    world.shellFileOperation = [this, shell = SystemWorld().shellFileOperation](
                                   HWND owner, UINT function, const std::wstring& from,
                                   const std::wstring& to, WORD flags) {
      world.shellOperations.push_back({function, from, to, flags});
      return shell(owner, function, from, to, flags);
    };
  }
  // A folder that exists, as the folder browser gives it.
  std::wstring Folder(const wchar_t* name) {
    std::filesystem::create_directories(dir.Path(name));
    return dir.Path(name);
  }
  std::string Bytes(const std::wstring& relative) { return ScopedTestDir::ReadBytes(dir.Path(relative)); }
  bool Exists(const std::wstring& relative) { return std::filesystem::exists(dir.Path(relative)); }
  Texts TablePaths() { return Query(L"SELECT LocalFile FROM FTable", 1); }
  Texts TableIndexes() { return Query(L"SELECT FileIndex FROM FTable", 1); }
  Texts SourcesGivenToTheShell() {
    Texts sources;
    for (const FakeWorld::ShellOperation& operation : world.shellOperations)
      sources.push_back(operation.from);
    return sources;
  }
  void ExpectOneBox(const std::wstring& text) {
    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].text, text);
    EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
    EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
    EXPECT_EQ(world.boxes[0].owner, form->Handle());
  }
};

}  // namespace kestrelon::test
