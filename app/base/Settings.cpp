#include "app/base/Settings.h"

#include "app/base/Win32.h"

#include <algorithm>

#include "app/base/File.h"

namespace kestrelon {

namespace {

constexpr std::size_t kValueUnits = 255;  // with the NUL

// The marks around a text that is quoted belong to the file, not to the text.
std::wstring_view WithoutQuotes(std::wstring_view text) {
  const bool quoted =
      text.size() > 1 && text.front() == text.back() && (text.front() == L'"' || text.front() == L'\'');
  return quoted ? text.substr(1, text.size() - 2) : text;
}

constexpr wchar_t kSection[] = L"USER INFO";

// In the order in which a new settings file lists them.
constexpr struct {
  const wchar_t* key;
  const wchar_t* value;
} kDefaults[] = {
    {L"Language", L"English"},
    {L"DefineName_Length", L"1874.835"},
    {L"FileName_Length", L"2234.835"},
    {L"LocalFile_Length", L"7409.764"},
    {L"InsertTime_Length", L"1440"},
    {L"Comment_Length", L"1440"},
    {L"ShowItemInfo", L"False"},
    {L"Drag&Drop", L"False"},
    {L"Data0", L"1. Null"},
    {L"Data1", L"2. Null"},
    {L"Data2", L"3. Null"},
    {L"Data3", L"4. Null"},
};

}  // namespace

std::wstring ReadIni(std::wstring_view section, std::wstring_view key, std::wstring_view file) {
  // Without a file name the function would look into the system's own "win.ini"; no file has no texts.
  if (file.empty()) return {};
  wchar_t buffer[kValueUnits];
  const DWORD length =
      ::GetPrivateProfileStringW(std::wstring(section).c_str(), std::wstring(key).c_str(), L"", buffer,
                                 static_cast<DWORD>(std::size(buffer)), std::wstring(file).c_str());
  return std::wstring(buffer, length);
}

IniSection::IniSection(std::wstring_view section, std::wstring_view file) {
  if (file.empty()) return;
  constexpr DWORD kCut = 2;  // a buffer that is too small is filled but for the two NULs at its end
  const std::wstring name(section), path(file);
  for (DWORD size = 8192;; size *= 2) {
    lines_.resize(size);
    const DWORD length = ::GetPrivateProfileSectionW(name.c_str(), lines_.data(), size, path.c_str());
    if (length == size - kCut && size <= 64 * 1024 * 1024) continue;
    lines_.resize(length);
    return;
  }
}

std::wstring IniSection::Read(std::wstring_view key) const {
  std::wstring_view rest(lines_.data(), lines_.size());
  while (!rest.empty()) {
    const std::wstring_view line = rest.substr(0, rest.find(L'\0'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    const std::size_t sign = line.find(L'=');
    if (sign == std::wstring_view::npos || !EqualNoCase(Trim(line.substr(0, sign)), key)) continue;
    return std::wstring(WithoutQuotes(Trim(line.substr(sign + 1))).substr(0, kValueUnits - 1));
  }
  return {};
}

void WriteIni(std::wstring_view section, std::wstring_view key, std::wstring_view value,
              std::wstring_view file) {
  const std::wstring path(file);
  if (!::WritePrivateProfileStringW(std::wstring(section).c_str(), std::wstring(key).c_str(),
                                    std::wstring(value).c_str(), path.c_str())) {
    ThrowLastError(L"Cannot write " + path);
  }
}

std::wstring Settings::Read(std::wstring_view key) const { return ReadIni(kSection, key, file_); }

void Settings::Write(std::wstring_view key, std::wstring_view value) const {
  WriteIni(kSection, key, value, file_);
}

void Settings::WriteBoolean(std::wstring_view key, bool value) const {
  Write(key, value ? L"True" : L"False");
}

bool Settings::ReadBoolean(std::wstring_view key) const { return Read(key) == L"True"; }

void Settings::CreateWithDefaults() const {
  if (FileExists(file_)) return;
  for (const auto& setting : kDefaults) Write(setting.key, setting.value);
}

}  // namespace kestrelon
