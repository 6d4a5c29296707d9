#pragma once

#include "app/base/Win32.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

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
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
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
  static std::wstring MakeFolder() {
    static int made = 0;
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() /
        (L"kestrelon-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++made));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder.wstring() + L"\\";
  }

  std::wstring folder_;

 public:
  Program program;
  Settings settings;
};

}  // namespace kestrelon::test
