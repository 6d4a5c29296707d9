#pragma once

#include "app/base/Win32.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "app/base/Program.h"
#include "app/base/Settings.h"

namespace kestrelon::test {

// A folder of the test's own, removed with everything in it at the end of the scope. In it stand a program
// folder and an empty data folder, and `program` and `settings` point there.
class ScopedTestDir {
 public:
  ScopedTestDir() : folder_(MakeFolder()), settings(folder_ + L"KestrelonData\\Kestrelon.dat") {
    program.programFolder = folder_ + L"Program\\";
    program.templateFolder = program.programFolder + L"Data\\";
    program.dataFolder = folder_ + L"KestrelonData\\";
    program.settingsFile = program.dataFolder + L"Kestrelon.dat";
    program.languageName = L"English";
    program.connectionString = L"Provider=Microsoft.Jet.OLEDB.4.0;Persist Security Info=False;Data Source=" +
                               program.dataFolder + L"default.dat";
    for (const std::wstring& folder : {program.templateFolder, program.programFolder + L"Lang\\",
                                       program.programFolder + L"ico\\", program.dataFolder})
      std::filesystem::create_directories(folder);
  }
  ~ScopedTestDir() {
    // In this form also what has a path of more than 260 units, which the library leaves behind.
    Remove(L"\\\\?\\" + folder_);
  }
  ScopedTestDir(const ScopedTestDir&) = delete;
  ScopedTestDir& operator=(const ScopedTestDir&) = delete;

  const std::wstring& Folder() const { return folder_; }  // ends in a backslash
  std::wstring Path(std::wstring_view relative) const { return folder_ + std::wstring(relative); }

  // Makes a file (and the folders above it) with these bytes; returns its full path.
  std::wstring WriteFile(std::wstring_view relative, std::string_view bytes = "x") const {
    const std::filesystem::path path = Path(relative);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path.wstring();
  }
  // The same for a text file as the profile functions read it on every locale: UTF-16 with a byte order mark.
  std::wstring WriteIniFile(std::wstring_view relative, std::wstring_view text) const {
    std::string bytes = "\xFF\xFE";
    for (const wchar_t unit : text) {
      bytes.push_back(static_cast<char>(unit & 0xFF));
      bytes.push_back(static_cast<char>(unit >> 8));
    }
    return WriteFile(relative, bytes);
  }
  // The bytes of a file; empty when it cannot be read.
  static std::string ReadBytes(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
  }

 private:
  // A folder, ending in a backslash, with everything in it; of a link to a folder the link alone.
  static void Remove(const std::wstring& folder) {
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((folder + L"*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
      const std::wstring name = entry.cFileName, path = folder + name;
      if (name == L"." || name == L"..") continue;
      if ((entry.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0)
        SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
      if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        DeleteFileW(path.c_str());
      else if ((entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
        RemoveDirectoryW(path.c_str());
      else
        Remove(path + L"\\");
    } while (FindNextFileW(search, &entry));
    FindClose(search);
    RemoveDirectoryW(folder.c_str());
  }
  static std::wstring MakeFolder() {
    static int made = 0;
    std::filesystem::path folder;
    do {  // one that a program with the same number left behind may still be there
      folder = std::filesystem::temp_directory_path() /
               (L"kestrelon-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++made));
    } while (!std::filesystem::create_directories(folder));
    return folder.wstring() + L"\\";
  }

  std::wstring folder_;

 public:
  Program program;
  Settings settings;
};

}  // namespace kestrelon::test
