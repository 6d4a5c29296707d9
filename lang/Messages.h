#pragma once

namespace kestrelon::lang {

// One numbered message: its key in section "messagebox" of the language files and the built-in English text,
// which is shown to the blank where the language file has none. Some texts end in blanks or differ only by
// one: they are fixed.
struct MessageText {
  int number;
  const wchar_t* english;
};

inline constexpr MessageText kExitQuestion{1, L"Program will be exit, Save Changes ? "};
inline constexpr MessageText kReplaceQuestion{
    2, L"All records in your Database will be Replaced, Are you sure?"};
inline constexpr MessageText kSelectCategoryFirst{3, L"Please select a category at first!"};
// The menu commands and the file selection dialog; files dropped on the list have their own text, without the
// blank.
inline constexpr MessageText kSelectCategoryToImport{4, L"Please select a category to import !"};
inline constexpr MessageText kSelectCategoryToDropOn{5, L"Please select a category to import!"};
inline constexpr MessageText kNoCategorySelected{
    6, L"No nodes selected. You need to select files for this operation."};
inline constexpr MessageText kDeleteCategoryQuestion{
    7, L"Delete Category and all it's sub-categories ? (don't delete the original of the file)"};
inline constexpr MessageText kCannotOpenFile{11, L"Can not open File!"};
inline constexpr MessageText kOperationFinished{13, L"Operation Finished!"};
inline constexpr MessageText kDeleteItemsQuestion{17, L"Delete selected item(s) in list? "};
inline constexpr MessageText kDeleteFilesQuestion{18, L"delete the original of the file at the same time? "};
inline constexpr MessageText kNoItemSelected{
    20, L"No files selected. You need to select files for this operation."};
// Behind it a number, and on lines of their own the paths.
inline constexpr MessageText kSkippedAtImport{21, L"Could not be read and was left out: "};
inline constexpr MessageText kCannotWriteToFolder{22, L"Can not write to this folder!"};
inline constexpr MessageText kNoSystemInformation{23,
                                                  L"System information is not available on this computer."};
inline constexpr MessageText kNoDoubleQuote{24,
                                            L"A double quote cannot be stored. Use \u201C \u201D instead."};
// Behind it a number.
inline constexpr MessageText kPathTooLong{25, L"The path is longer than 259 characters; left out: "};
inline constexpr MessageText kTooManyFiles{
    26, L"Too many files were selected at once. None was added; please select fewer."};
// Before each of these two stands the name that it is about, on a line of its own.
inline constexpr MessageText kReplaceFileQuestion{
    27, L"A file of this name is in the folder already. Replace it?"};
inline constexpr MessageText kSaveCommentQuestion{28, L"The comment was changed. Save it?"};
// Behind it the time of the last change.
inline constexpr MessageText kOpenUnsavedQuestion{
    29,
    L"Kestrelon was not closed properly. Do you want to open the collection that was not saved? "
    L"Last change: "};
// Behind it a path.
inline constexpr MessageText kNotRecovered{
    30, L"The collection that was not saved could not be recovered. What is left of it is kept as: "};
inline constexpr MessageText kDataFolderInUse{
    31, L"Your collections are open in another session of Windows. Please close Kestrelon there first."};

// Every message, in order of number: the language files are checked against it.
inline constexpr MessageText kMessages[] = {kExitQuestion,
                                            kReplaceQuestion,
                                            kSelectCategoryFirst,
                                            kSelectCategoryToImport,
                                            kSelectCategoryToDropOn,
                                            kNoCategorySelected,
                                            kDeleteCategoryQuestion,
                                            kCannotOpenFile,
                                            kOperationFinished,
                                            kDeleteItemsQuestion,
                                            kDeleteFilesQuestion,
                                            kNoItemSelected,
                                            kSkippedAtImport,
                                            kCannotWriteToFolder,
                                            kNoSystemInformation,
                                            kNoDoubleQuote,
                                            kPathTooLong,
                                            kTooManyFiles,
                                            kReplaceFileQuestion,
                                            kSaveCommentQuestion,
                                            kOpenUnsavedQuestion,
                                            kNotRecovered,
                                            kDataFolderInUse};

}  // namespace kestrelon::lang
