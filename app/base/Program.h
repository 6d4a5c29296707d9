#pragma once

#include <string>

namespace kestrelon {

// The program-wide values, all of them. Made once by start-up and passed by reference.
struct Program {
  std::wstring productName = L"Kestrelon";  // titles of windows and boxes
  std::wstring versionLabel = L"V10.12";
  std::wstring editionLabel = L"Pro";

  std::wstring programFolder;                     // folder of the executable; ends in a backslash
  std::wstring dataFolder;                        // "KestrelonData" of this user; ends in a backslash
  std::wstring settingsFile;                      // full path of "Kestrelon.dat"
  std::wstring templateFolder;                    // "Data" beside the executable; ends in a backslash
  std::wstring workingDatabase = L"default.dat";  // bare name, in the data folder
  std::wstring connectionString;                  // of the working database
  std::wstring languageName;  // "English", "Chinese_S", "Chinese_T", or whatever the settings hold

  std::wstring homePage = L"https://kestrelon.example.org/";
  std::wstring bugReportAddress = L"bugs@kestrelon.example.org";
  std::wstring feedbackAddress = L"feedback@kestrelon.example.org";

  // Start-up has found a collection that the last end of the program left unsaved, and has set it aside.
  bool unsavedFound = false;

  // Set by a successful save of the database, cleared by every change; the exit question is asked while it is
  // clear.
  bool databaseSaved = false;
};

}  // namespace kestrelon
