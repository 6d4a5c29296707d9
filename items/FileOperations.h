#pragma once

#include "ui/win/MainParts.h"

namespace kestrelon::items {

// Shows the selected row's file in the file manager.
//
// All of these leave a row's file alone whose path does not name one file wherever the program stands (see
// ShellPathOf), and tell at the end of paths that are too long for the shell.
void meu_destinationdirectory_Click(win::MainParts& parts);

// Copies the files of the selected rows into a folder that the user chooses; a file of the same name there is
// replaced without a question. Files that cannot be copied are left out without a word.
void meu_Copyto_Click(win::MainParts& parts);

// Moves the files of the selected rows into a folder that the user chooses, and the rows with them. Before a
// file of the same name there is replaced the user is asked. A file that cannot be moved keeps its row as it
// is.
void meu_Moveto_Click(win::MainParts& parts);

// Removes the selected rows from the category and, when the user wants it, sends their files to the Recycle
// Bin.
void meu_Delete_Click(win::MainParts& parts);

}  // namespace kestrelon::items
