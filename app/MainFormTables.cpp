#include "app/MainFormTables.h"

namespace kestrelon::app {

const MainFormTables::Command MainFormTables::kCommands[] = {
    {0, L"meu_file", L"&File", nullptr, true},
    {1, L"meu_NewDatabase", L"&New Database", nullptr},
    {1, L"meu_LoadDatabase", L"&Load Database", &MainForm::meu_LoadDatabase_Click},
    {1, L"meu_SaveDatabase", L"&Save Database", &MainForm::meu_SaveDatabase_Click},
    {1, L"meu_saveas", L"Save &As ...", nullptr},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_ImportPreviousFiles", L"Import Previous Files", nullptr},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_exit", L"E&xit", &MainForm::meu_exit_Click},

    {0, L"meu_Category", L"&Category", nullptr, true},
    {1, L"meu_AddFirstSibling", L"Add &First Sibling", &MainForm::meu_AddFirstSibling_Click},
    {1, L"meu_AddPreviousSibling", L"Add &Previous Sibling", &MainForm::meu_AddPreviousSibling_Click},
    {1, L"meu_AddNextSibling", L"Add &Next Sibling", &MainForm::meu_AddNextSibling_Click},
    {1, L"meu_AddLastSibling", L"Add &Last Sibling", &MainForm::meu_AddLastSibling_Click},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_AddDirectory", L"Add &Directory", &MainForm::meu_AddDirectory_Click},
    {1, L"meu_AddChild", L"Add &Child", &MainForm::meu_AddChild_Click},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_Remove", L"&Delete...", &MainForm::meu_Remove_Click},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_aa", L"&Enabled drag and drop", &MainForm::meu_aa_Click},

    {0, L"meu_List", L"&List", nullptr, true},
    {1, L"meu_Importfiles", L"Import Files From", nullptr, true},
    {2, L"meu_Input_Dialog", L"Dialog box", &MainForm::meu_Input_Dialog_Click},
    {2, L"meu_Imput_Clipboard", L"Clipboard", &MainForm::meu_Imput_Clipboard_Click},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_renames", L"Rename", nullptr, true},
    {2, L"meu_rename", L"Alias", &MainForm::meu_rename_Click},
    {2, L"meu_Definenameasfilename", L"Alias as File name", &MainForm::meu_Definenameasfilename_Click},
    {1, L"meu_Delete", L"Delete", &MainForm::meu_Delete_Click},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_ShowItemInfo", L"Show item info", &MainForm::meu_ShowItemInfo_Click},
    {1, L"meu_Changecategory", L"Change category", &MainForm::meu_Changecategory_Click},
    {1, L"meu_Copyto", L"Send to ...", &MainForm::meu_Copyto_Click},
    {1, L"meu_Moveto", L"Move to folder...", &MainForm::meu_Moveto_Click},
    {1, L"meu_comment", L"Comment...", &MainForm::meu_comment_Click},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_openfile", L"Open File\tF6", &MainForm::meu_openfile_Click},
    {1, L"meu_destinationdirectory", L"Open in Explore", &MainForm::meu_destinationdirectory_Click},
    {1, L"meu_Properties", L"Properties...", &MainForm::meu_Properties_Click},

    {0, L"meu_misc", L"&Misc", nullptr, true},
    {1, L"meu_language", L"&Language", nullptr, true},
    {2, L"meu_English", L"English", &MainForm::meu_English_Click},
    {2, L"meu_Chinese_Traditional", L"Chinese_Traditional", &MainForm::meu_Chinese_Traditional_Click},
    {2, L"meu_Chinese_Simplified", L"Chinese_Simplified", &MainForm::meu_Chinese_Simplified_Click},

    {0, L"meu_help", L"&Help", nullptr, true},
    {1, L"meu_moretips", L"&More tips", &MainForm::meu_moretips_Click},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_sendemailtoauthor", L"&Send E-mail to Author...", &MainForm::meu_sendemailtoauthor_Click},
    {1, L"meu_reportingbugs", L"Reporting Bugs...", &MainForm::meu_reportingbugs_Click},
    {1, nullptr, nullptr, nullptr},
    {1, L"meu_about", L"about...", &MainForm::meu_about_Click},
};
const std::size_t MainFormTables::kCommandCount = sizeof(kCommands) / sizeof(kCommands[0]);

const std::array<MainFormTables::ToolbarButton, 9> MainFormTables::kToolbar = {{
    {0, &MainForm::meu_Input_Dialog_Click, &MainForm::meu_AddChild_Click, L"Add files", L"Add category"},
    {1, &MainForm::meu_rename_Click, &MainForm::EditCaption, L"Rename alias", L"Rename category"},
    {2, &MainForm::meu_Delete_Click, &MainForm::meu_Remove_Click, L"Delete items", L"Delete category"},
    {3, &MainForm::FindInItems, &MainForm::FindInCategories, L"Find in items", L"Find in categories"},
    {-1, nullptr, nullptr, L"", L""},
    {4, &MainForm::meu_openfile_Click, &MainForm::meu_openfile_Click, L"Open file", L"Open file"},
    {5, &MainForm::meu_destinationdirectory_Click, &MainForm::meu_destinationdirectory_Click,
     L"Open in Explore", L"Open in Explore"},
    {6, &MainForm::meu_Properties_Click, &MainForm::meu_Properties_Click, L"Properties", L"Properties"},
    {7, &MainForm::meu_Copyto_Click, &MainForm::meu_Copyto_Click, L"Send to", L"Send to"},
}};

const std::array<MainFormTables::Language, 3> MainFormTables::kLanguages = {
    {{L"English", L"meu_English"},
     {L"Chinese_T", L"meu_Chinese_Traditional"},
     {L"Chinese_S", L"meu_Chinese_Simplified"}}};

}  // namespace kestrelon::app
