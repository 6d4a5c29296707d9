#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

using DragAndDropCommand = MainFormFixture;

TEST_F(DragAndDropCommand, TurnsTheCheckMarkAndTheSettingOverAtEachClick) {
  Start();
  Command(L"meu_aa");
  EXPECT_TRUE(Menus().IsChecked(L"meu_aa"));
  EXPECT_EQ(dir.settings.Read(L"Drag&Drop"), L"True");
  Command(L"meu_aa");
  EXPECT_FALSE(Menus().IsChecked(L"meu_aa"));
  EXPECT_EQ(dir.settings.Read(L"Drag&Drop"), L"False");
}

TEST_F(DragAndDropCommand, ClearsTheDatabaseSavedFlag) {
  Start();
  program.databaseSaved = true;
  Command(L"meu_aa");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(DragAndDropCommand, KeepsItsMarkForTheNextStart) {
  Start();
  Command(L"meu_aa");
  End();
  Start();
  EXPECT_TRUE(Menus().IsChecked(L"meu_aa"));
}

TEST_F(DragAndDropCommand, ShowsItsOwnBoxWhereTheSettingCannotBeWritten) {
  Start();
  DeleteFileW(program.settingsFile.c_str());
  std::filesystem::create_directories(program.settingsFile);
  world.answers = {IDOK};

  Command(L"meu_aa");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"meu_aa_Click Error:");
  EXPECT_TRUE(Menus().IsChecked(L"meu_aa"));
  std::filesystem::remove(program.settingsFile);
}

}  // namespace
}  // namespace kestrelon::test
