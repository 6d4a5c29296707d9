// Start-up, up to the main window.

#include <filesystem>

#include "app/Connect.h"
#include "app/base/File.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

TEST(NameProgram, HoldsTheProductStrings) {
  const Program program = app::NameProgram(L"C:\\Program", L"C:\\Users\\me");
  EXPECT_EQ(program.productName, L"Kestrelon");
  EXPECT_EQ(program.versionLabel, L"V10.12");
  EXPECT_EQ(program.editionLabel, L"Pro");
  EXPECT_EQ(program.workingDatabase, L"default.dat");
  EXPECT_FALSE(program.databaseSaved);
}

TEST(NameProgram, PutsTheDataFolderIntoAppData) {
  const Program program = app::NameProgram(L"C:\\Program", L"C:\\Users\\me");
  EXPECT_EQ(program.dataFolder, L"C:\\Users\\me\\KestrelonData\\");
  EXPECT_EQ(program.settingsFile, L"C:\\Users\\me\\KestrelonData\\Kestrelon.dat");
  EXPECT_EQ(program.connectionString,
            L"Provider=Microsoft.Jet.OLEDB.4.0;Persist Security Info=False;Data Source="
            L"C:\\Users\\me\\KestrelonData\\default.dat");
}

TEST(NameProgram, DoesNotDoubleTheBackslashOfAppData) {
  EXPECT_EQ(app::NameProgram(L"C:\\Program", L"C:\\Users\\me\\").dataFolder,
            L"C:\\Users\\me\\KestrelonData\\");
}

TEST(NameProgram, TakesTheProgramFolderWithAndWithoutABackslash) {
  EXPECT_EQ(app::NameProgram(L"C:\\Program", L"x").templateFolder, L"C:\\Program\\Data\\");
  EXPECT_EQ(app::NameProgram(L"C:\\Program\\", L"x").templateFolder, L"C:\\Program\\Data\\");
  EXPECT_EQ(app::NameProgram(L"C:\\", L"x").templateFolder, L"C:\\Data\\");
}

TEST(ExecutableFolder, IsAnExistingFolderThatEndsInABackslash) {
  const std::wstring folder = app::ExecutableFolder();
  EXPECT_TRUE(folder.ends_with(L'\\'));
  EXPECT_TRUE(FolderExists(folder));
}

TEST(EnvironmentValue, IsTheVariablesTextOrEmpty) {
  SetEnvironmentVariableW(L"KESTRELON_TEST_VALUE", L"C:\\some where");
  EXPECT_EQ(app::EnvironmentValue(L"KESTRELON_TEST_VALUE"), L"C:\\some where");
  SetEnvironmentVariableW(L"KESTRELON_TEST_VALUE", nullptr);
  EXPECT_EQ(app::EnvironmentValue(L"KESTRELON_TEST_VALUE"), L"");
}

class Connect : public MainFormFixture {
 protected:
  bool Run() { return app::Connect(program, world); }
  std::string SettingsBytes() { return ScopedTestDir::ReadBytes(program.settingsFile); }
  std::wstring InDataFolder(const wchar_t* name) { return program.dataFolder + name; }
  void ExpectOneBox(const std::wstring& text, const std::wstring& title) {
    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].text, text);
    EXPECT_EQ(world.boxes[0].title, title);
    EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONEXCLAMATION));
  }
};

constexpr const char* kDefaults =
    "[USER INFO]\r\n"
    "Language=English\r\n"
    "DefineName_Length=1874.835\r\n"
    "FileName_Length=2234.835\r\n"
    "LocalFile_Length=7409.764\r\n"
    "InsertTime_Length=1440\r\n"
    "Comment_Length=1440\r\n"
    "ShowItemInfo=False\r\n"
    "Drag&Drop=False\r\n"
    "Data0=1. Null\r\n"
    "Data1=2. Null\r\n"
    "Data2=3. Null\r\n"
    "Data3=4. Null\r\n";

TEST_F(Connect, MakesTheDataFolderAndTheSettingsWithTheirDefaultsOnACleanProfile) {
  std::filesystem::remove_all(program.dataFolder);

  EXPECT_TRUE(Run());

  EXPECT_EQ(SettingsBytes(), kDefaults);
  EXPECT_EQ(program.languageName, L"English");
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(Connect, MakesTheSettingsInADataFolderThatIsThere) {
  EXPECT_TRUE(Run());
  EXPECT_EQ(SettingsBytes(), kDefaults);
}

TEST_F(Connect, NeverRewritesExistingSettingsEvenWithKeysMissing) {
  const std::string bytes = "[user info]\r\nlanguage=Chinese_S\r\nData2=mine\r\n";
  dir.WriteFile(L"KestrelonData\\Kestrelon.dat", bytes);

  EXPECT_TRUE(Run());

  EXPECT_EQ(SettingsBytes(), bytes);
  EXPECT_EQ(program.languageName, L"Chinese_S");
  EXPECT_EQ(dir.settings.Read(L"Data0"), L"");
}

TEST_F(Connect, ReadsAMissingLanguageAsEmpty) {
  dir.WriteFile(L"KestrelonData\\Kestrelon.dat", "[USER INFO]\r\n");
  EXPECT_TRUE(Run());
  EXPECT_EQ(program.languageName, L"");
}

TEST_F(Connect, CopiesTheTemplateIntoTheDataFolderAndMakesTheWorkingDatabaseOfIt) {
  EXPECT_TRUE(Run());
  EXPECT_EQ(ScopedTestDir::ReadBytes(InDataFolder(L"Temp.dat")), TemplateBytes());
  EXPECT_EQ(ScopedTestDir::ReadBytes(InDataFolder(L"default.dat")), TemplateBytes());
}

TEST_F(Connect, ReplacesWhatWasInTheTwoDatabases) {
  dir.WriteFile(L"KestrelonData\\Temp.dat", "old template");
  dir.WriteFile(L"KestrelonData\\default.dat", "old content");
  EXPECT_TRUE(Run());
  EXPECT_EQ(ScopedTestDir::ReadBytes(InDataFolder(L"Temp.dat")), TemplateBytes());
  EXPECT_EQ(ScopedTestDir::ReadBytes(InDataFolder(L"default.dat")), TemplateBytes());
}

TEST_F(Connect, LeavesTheSlotsAlone) {
  dir.WriteFile(L"KestrelonData\\Data0.dat", "slot 0");
  EXPECT_TRUE(Run());
  EXPECT_EQ(ScopedTestDir::ReadBytes(InDataFolder(L"Data0.dat")), "slot 0");
  EXPECT_FALSE(FileExists(InDataFolder(L"Data1.dat")));
}

TEST_F(Connect, MakesCopiesThatCanBeWrittenOfAReadOnlyTemplate) {
  const std::wstring original = program.templateFolder + L"Temp.dat";
  SetFileAttributesW(original.c_str(), FILE_ATTRIBUTE_READONLY);

  EXPECT_TRUE(Run());

  EXPECT_EQ(GetFileAttributesW(InDataFolder(L"Temp.dat").c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
  EXPECT_EQ(GetFileAttributesW(InDataFolder(L"default.dat").c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
  EXPECT_TRUE(Run()) << "the next start replaces them";
  SetFileAttributesW(original.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Connect, WithoutATemplateEndsInExactlyTheConnectionTestsBox) {
  DeleteIfThere(program.templateFolder + L"Temp.dat");
  world.answers = {IDOK};

  EXPECT_FALSE(Run());

  ExpectOneBox(L"Connect Data Error, Program will be Exit ! ", L"ConnectDatabase Error");
  EXPECT_FALSE(FileExists(InDataFolder(L"default.dat")));
}

TEST_F(Connect, WithoutATemplateDoesNotGoOnWithTheCopyOfAnEarlierStart) {
  ASSERT_TRUE(Run());
  DeleteIfThere(program.templateFolder + L"Temp.dat");
  world.answers = {IDOK};
  EXPECT_FALSE(Run());
  ExpectOneBox(L"Connect Data Error, Program will be Exit ! ", L"ConnectDatabase Error");
}

TEST_F(Connect, WithATemplateThatIsNoDatabaseEndsInTheSameBox) {
  dir.WriteFile(L"Program\\Data\\Temp.dat", "this is no database");
  world.answers = {IDOK};
  EXPECT_FALSE(Run());
  ExpectOneBox(L"Connect Data Error, Program will be Exit ! ", L"ConnectDatabase Error");
}

TEST_F(Connect, WithoutADataFolderThatCanBeMadeEndsInTheSameBox) {
  std::filesystem::remove_all(program.dataFolder);
  dir.WriteFile(L"KestrelonData", "a file of that name");
  world.answers = {IDOK};
  EXPECT_FALSE(Run());
  ExpectOneBox(L"Connect Data Error, Program will be Exit ! ", L"ConnectDatabase Error");
}

TEST_F(Connect, MakesTheDataFolderOneLevelDeepOnly) {
  program = app::NameProgram(program.programFolder, dir.Path(L"no\\such\\folder"));
  world.answers = {IDOK};
  EXPECT_FALSE(Run());
  EXPECT_FALSE(FolderExists(dir.Path(L"no")));
}

TEST_F(Connect, ShowsItsOwnBoxWhenTheWorkingDatabaseCannotBeReplaced) {
  std::filesystem::create_directories(InDataFolder(L"default.dat"));
  world.answers = {IDOK};
  EXPECT_FALSE(Run());
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"Connect Error:");
}

TEST_F(Connect, EachStartBeginsWithAnEmptyTree) {
  Start();
  SelectCategory(AddCategory(L"A_", L"A"));
  AddItem(L"A_", 1, {L"item"});
  End();

  Start();

  EXPECT_EQ(ShownTree(), L"");
  EXPECT_TRUE(Query(L"SELECT FileIndex FROM FTable", 1).empty());
}

}  // namespace
}  // namespace kestrelon::test
