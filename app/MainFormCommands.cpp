// The menu commands of MainForm. Each is one line: the work lives in the folder that the command belongs to.
#include "app/MainForm.h"
#include "app/SlotDialog.h"
#include "import/DragAndDropCommand.h"
#include "import/OpenFilesCommand.h"
#include "import/inputDialog.h"
#include "items/AliasAsFileName.h"
#include "items/FileOperations.h"
#include "items/FilePropterty.h"
#include "items/FileRename.h"
#include "items/OpenItem.h"
#include "tree/Changecategory.h"
#include "tree/DeleteCategory.h"
#include "tree/DirectoryImport.h"
#include "tree/NodeCommands.h"
#include "ui/Mail.h"
#include "ui/frmAbout.h"
#include "ui/frmTip.h"
#include "ui/win/Boxes.h"

namespace kestrelon::app {

void MainForm::meu_LoadDatabase_Click() { app::Load(parts_).Show(Handle()); }
void MainForm::meu_SaveDatabase_Click() { app::Save(parts_).Show(Handle()); }
void MainForm::meu_exit_Click() { ::SendMessageW(Handle(), WM_CLOSE, 0, 0); }
void MainForm::meu_AddFirstSibling_Click() { tree::AddFirstSibling(parts_); }
void MainForm::meu_AddPreviousSibling_Click() { tree::AddPreviousSibling(parts_); }
void MainForm::meu_AddNextSibling_Click() { tree::AddNextSibling(parts_); }
void MainForm::meu_AddLastSibling_Click() { tree::AddLastSibling(parts_); }
void MainForm::meu_AddDirectory_Click() { tree::meu_AddDirectory_Click(parts_); }
void MainForm::meu_AddChild_Click() { tree::AddChild(parts_); }
void MainForm::meu_Remove_Click() { tree::meu_Remove_Click(parts_); }
void MainForm::meu_aa_Click() { imports::meu_aa_Click(parts_); }
void MainForm::meu_Input_Dialog_Click() { imports::meu_Input_Dialog_Click(parts_); }
void MainForm::meu_Imput_Clipboard_Click() { imports::meu_Imput_Clipboard_Click(parts_); }
void MainForm::meu_rename_Click() { items::meu_rename_Click(parts_); }
void MainForm::meu_Definenameasfilename_Click() { items::meu_Definenameasfilename_Click(parts_); }
void MainForm::meu_ShowItemInfo_Click() { items::meu_ShowItemInfo_Click(parts_, listHelpers_); }
void MainForm::meu_Changecategory_Click() { tree::meu_Changecategory_Click(parts_); }
void MainForm::meu_openfile_Click() { items::OpenSelectedItem(parts_); }
void MainForm::meu_destinationdirectory_Click() { items::meu_destinationdirectory_Click(parts_); }
void MainForm::meu_Copyto_Click() { items::meu_Copyto_Click(parts_); }
void MainForm::meu_Moveto_Click() { items::meu_Moveto_Click(parts_); }
void MainForm::meu_Delete_Click() { items::meu_Delete_Click(parts_); }
void MainForm::meu_comment_Click() { items::meu_comment_Click(parts_, listHelpers_); }
void MainForm::meu_Properties_Click() { items::meu_Properties_Click(parts_); }
void MainForm::meu_English_Click() { SelectLanguageName(L"English"); }
void MainForm::meu_Chinese_Traditional_Click() { SelectLanguageName(L"Chinese_T"); }
void MainForm::meu_Chinese_Simplified_Click() { SelectLanguageName(L"Chinese_S"); }
void MainForm::meu_moretips_Click() { ui::frmTip(program_, world_).Show(Handle()); }
void MainForm::meu_sendemailtoauthor_Click() { ui::meu_sendemailtoauthor_Click(program_, world_, Handle()); }
void MainForm::meu_reportingbugs_Click() { ui::meu_reportingbugs_Click(program_, world_, Handle()); }
void MainForm::meu_about_Click() { ui::frmAbout(program_, world_).Show(Handle()); }
void MainForm::EditCaption() { tree::EditSelectedCaption(parts_); }
void MainForm::FindInItems() { items::OpenListFind(parts_, listHelpers_); }
void MainForm::FindInCategories() { tree::OpenTreeFind(parts_, treeHelpers_); }

void MainForm::SelectLanguageName(const std::wstring& name) {
  program_.languageName = name;
  ApplyLanguage();
  win::InRoutine(world_, Handle(), L"SelectLanguage Error:", false, [&] {
    settings_.Write(L"Language", name);
    return true;
  });
}

}  // namespace kestrelon::app
