#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

// The private-profile functions as the program uses them: always a full path, a buffer of 255 units (so 254
// of a longer value come back), an absent key reads as the empty text.
std::wstring ReadIni(std::wstring_view section, std::wstring_view key, std::wstring_view file);
// Throws std::system_error when the file cannot be written.
void WriteIni(std::wstring_view section, std::wstring_view key, std::wstring_view value,
              std::wstring_view file);

// A section of such a file as it was when this was made. Gives what ReadIni gives (lines that begin with ";"
// apart), for a section that is wanted whole: ReadIni opens the file and looks through it for every key.
class IniSection {
 public:
  IniSection(std::wstring_view section, std::wstring_view file);
  std::wstring Read(std::wstring_view key) const;

 private:
  std::vector<wchar_t> lines_;  // "key=value", each with a NUL behind it
};

// The settings file of one user, section "USER INFO" (some writers spell it "User Info"; the file does not
// care).
class Settings {
 public:
  explicit Settings(std::wstring file) : file_(std::move(file)) {}
  std::wstring Read(std::wstring_view key) const;
  void Write(std::wstring_view key, std::wstring_view value) const;
  void WriteBoolean(std::wstring_view key, bool value) const;  // "True" / "False"
  // Only "True" exactly is true.
  bool ReadBoolean(std::wstring_view key) const;

  // First run: writes every key with its default, in the order of the file, when the file does not exist. An
  // existing file is never touched, even when keys are missing.
  void CreateWithDefaults() const;

 private:
  std::wstring file_;
};

// The five keys of the list's column widths, in column order.
inline constexpr const wchar_t* kWidthKeys[5] = {
    L"DefineName_Length", L"FileName_Length", L"LocalFile_Length", L"InsertTime_Length", L"Comment_Length"};

}  // namespace kestrelon
