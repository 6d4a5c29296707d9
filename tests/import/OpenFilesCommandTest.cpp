#include "import/OpenFilesCommand.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;
using namespace std::string_view_literals;

TEST(PathsOfSelection, OfASingleFileIsItsPath) {
  EXPECT_EQ(imports::PathsOfSelection(L"C:\\docs\\a b.txt"), Texts{L"C:\\docs\\a b.txt"});
}

TEST(PathsOfSelection, JoinsTheFolderWithEachName) {
  EXPECT_EQ(imports::PathsOfSelection(L"C:\\docs\0a b.txt\0c.txt"sv),
            (Texts{L"C:\\docs\\a b.txt", L"C:\\docs\\c.txt"}));
}

TEST(PathsOfSelection, DoesNotDoubleTheBackslashOfADrivesRoot) {
  EXPECT_EQ(imports::PathsOfSelection(L"C:\\\0a.txt\0b.txt"sv), (Texts{L"C:\\a.txt", L"C:\\b.txt"}));
}

TEST(PathsOfSelection, LeavesOutTheFolderItself) {
  EXPECT_EQ(imports::PathsOfSelection(L"C:\\docs\0only.txt"sv), Texts{L"C:\\docs\\only.txt"});
}

TEST(PathsOfSelection, OfAnEmptyTextIsEmpty) { EXPECT_TRUE(imports::PathsOfSelection(L"").empty()); }

class InputDialog : public MainFormFixture {
 protected:
  void StartWithCategory() {
    Start();
    SelectCategory(AddCategory(L"K_", L"category"));
    program.databaseSaved = true;
  }
};

TEST_F(InputDialog, AsksForFilesInThisWay) {
  StartWithCategory();
  world.openedFiles = {std::nullopt};

  Command(L"meu_Input_Dialog");

  ASSERT_EQ(world.openRequests.size(), 1u);
  const OpenFilesRequest& request = world.openRequests[0];
  EXPECT_EQ(request.title, L"Select one or More Files");
  EXPECT_EQ(request.filter,
            L"Txt File   (*.txt)|*.txt|Exe File   (*.exe)|*.exe|MP3 File   (*.mp3)|*.mp3|"
            L"BMP File   (*.bmp)|*.bmp|JPG File   (*.jpg)|*.jpg|All Files   (*.*)|*.*");
  EXPECT_EQ(request.filterIndex, 6u);
  EXPECT_EQ(request.flags, 0x380200u);
  EXPECT_EQ(request.maximumSize, 32000u);
  EXPECT_EQ(request.owner, form->Handle());
}

TEST_F(InputDialog, CancelIsSilentAndChangesNothing) {
  StartWithCategory();
  world.openedFiles = {std::nullopt};
  Command(L"meu_Input_Dialog");
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_TRUE(program.databaseSaved);
  EXPECT_TRUE(Query(L"SELECT FileIndex FROM FTable", 1).empty());
}

TEST_F(InputDialog, AnEmptySelectionChangesNothing) {
  StartWithCategory();
  world.openedFiles = {L""};
  Command(L"meu_Input_Dialog");
  EXPECT_TRUE(program.databaseSaved);
  EXPECT_EQ(List().Count(), 0u);
}

TEST_F(InputDialog, AddsTheChosenFilesToTheCurrentCategoryInTheirOrder) {
  StartWithCategory();
  world.openedFiles = {std::wstring(L"C:\\docs\0b.txt\0a.txt"sv)};

  Command(L"meu_Input_Dialog");

  EXPECT_EQ(Query(L"SELECT TreeviewNode, FileIndex, LocalFile FROM FTable", 3),
            (Texts{L"K_|1#K_|C:\\docs\\b.txt", L"K_|2#K_|C:\\docs\\a.txt"}));
  EXPECT_EQ(Column(2), (Texts{L"b.txt", L"a.txt"}));
  EXPECT_EQ(Panel(3), L"2 Objects");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(InputDialog, AsksForACategoryFirstAndOpensNoDialogWithoutOne) {
  Start();
  world.answers = {IDOK};

  Command(L"meu_Input_Dialog");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Please select a category to import !");
  EXPECT_TRUE(world.openRequests.empty());
}

TEST_F(InputDialog, AsksForACategoryInTheLanguageInUse) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[messagebox]\r\n4=Where to?\r\n");
  Start();
  world.answers = {IDOK};
  Command(L"meu_Input_Dialog");
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Where to?");
}

TEST_F(InputDialog, ShowsAFailureInItsOwnBoxAndKeepsTheRowsBeforeIt) {
  StartWithCategory();
  world.openedFiles = {std::wstring(L"C:\\docs\0good.txt\0ba\"d.txt"sv)};
  world.answers = {IDOK};

  Command(L"meu_Input_Dialog");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"meu_Input_Dialog_Click Error:");
  EXPECT_TRUE(world.boxes[0].text.starts_with(L"Unkonw Error:")) << Narrow(world.boxes[0].text);
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONEXCLAMATION));
  EXPECT_EQ(Column(2), Texts{L"good.txt"});
}

TEST_F(InputDialog, SaysThatTooManyFilesWereChosenAndAddsNone) {
  for (const auto& [language, text] :
       {std::pair{L"English", L"Too many files were selected at once. None was added; please select fewer."},
        std::pair{L"Chinese_S", L"一次选择的文件太多，未添加任何文件。请减少选择的数量。"},
        std::pair{L"Chinese_T", L"一次選取的檔案太多，未加入任何檔案。請減少選取的數量。"}}) {
    End();
    StartWithCategory();
    program.languageName = language;
    world.boxes.clear();
    world.openFiles = [](const OpenFilesRequest&) -> std::optional<std::wstring> { throw TooManyFiles(); };
    world.answers = {IDOK};

    Command(L"meu_Input_Dialog");

    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].text, text);
    EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
    EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
    EXPECT_EQ(List().Count(), 0u);
    EXPECT_TRUE(program.databaseSaved);
  }
}

TEST_F(InputDialog, TakesMoreNamesThanTheDialogIsSaidToReturn) {
  StartWithCategory();
  std::wstring selection = L"C:\\docs";
  for (int i = 0; i < 2400; ++i)
    selection += std::wstring(1, L'\0') + L"A file name of some length " + std::to_wstring(i);
  ASSERT_GT(selection.size(), 64000u);
  world.openedFiles = {selection};
  Command(L"meu_Input_Dialog");
  EXPECT_EQ(List().Count(), 2400u);
  EXPECT_EQ(Cell(2399, 2), L"A file name of some length 2399");
}

TEST_F(InputDialog, CountsIn16Bits) {
  StartWithCategory();
  AddItem(L"K_", 32767, {L"last"});
  world.openedFiles = {L"C:\\over.txt"};
  world.answers = {IDOK};

  Command(L"meu_Input_Dialog");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_TRUE(world.boxes[0].text.starts_with(L"Unkonw Error:Overflow")) << Narrow(world.boxes[0].text);
  EXPECT_EQ(List().Count(), 1u);
}

}  // namespace
}  // namespace kestrelon::test
