// What paths and names mean to the system.

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <string_view>
#include <vector>

#include "app/base/File.h"
#include "app/base/FileNames.h"

namespace kestrelon {
namespace {

using namespace std::string_view_literals;

TEST(IsFileName, IsTrueForOrdinaryNames) {
  for (const wchar_t* name : {L"a", L"a.txt", L"report 2026.tar.gz", L".profile", L" a", L"it's", L"报告",
                              L"\U0001F426", L"%temp%", L"a&b;c=d,e+f[g]{h}~`!@#$^()", L"...a"})
    EXPECT_TRUE(IsFileName(name)) << Narrow(name);
}

TEST(IsFileName, IsFalseForNoNameAndForDotsAndBlanksAtTheEnd) {
  for (const wchar_t* name : {L"", L".", L"..", L" ", L"a.", L"a ", L"a. ", L"a .", L"a.txt.", L"a.txt "})
    EXPECT_FALSE(IsFileName(name)) << Narrow(name);
}

TEST(IsFileName, RefusesExactlyTheSystemsCharactersWhereverTheyStand) {
  for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
    const auto letter = static_cast<wchar_t>(unit);
    const bool refused = unit < 32 || L"\\/:*?\"<>|"sv.find(letter) != std::wstring_view::npos;
    const std::wstring first = std::wstring(1, letter) + L"bc",
                       middle = L"a" + std::wstring(1, letter) + L"c";
    ASSERT_EQ(IsFileName(first), !refused) << unit;
    ASSERT_EQ(IsFileName(middle), !refused) << unit;
    const bool atTheEnd = refused || letter == L'.' || letter == L' ';
    ASSERT_EQ(IsFileName(L"ab" + std::wstring(1, letter)), !atTheEnd) << unit;
  }
}

TEST(IsFileName, RefusesTheNamesOfDevicesWithAndWithoutExtension) {
  std::vector<std::wstring> devices = {L"CON", L"PRN", L"AUX", L"NUL"};
  for (const wchar_t* port : {L"COM", L"LPT"}) {
    for (const wchar_t digit : L"123456789\u00B9\u00B2\u00B3"sv)
      devices.push_back(port + std::wstring(1, digit));
  }
  for (const std::wstring& device : devices) {
    std::wstring lower = device;
    for (wchar_t& letter : lower) letter = letter < 128 ? static_cast<wchar_t>(tolower(letter)) : letter;
    for (const std::wstring& name : {device, lower, device.substr(0, 1) + lower.substr(1)}) {
      for (const wchar_t* behind : {L"", L".txt", L".tar.gz", L" .txt", L"  .x", L".a b"})
        EXPECT_FALSE(IsFileName(name + behind)) << Narrow(name + behind);
      for (const wchar_t* behind : {L"x", L"0", L" x", L"-.txt"})
        EXPECT_TRUE(IsFileName(name + behind)) << Narrow(name + behind);
      EXPECT_TRUE(IsFileName(L"x" + name));
      EXPECT_TRUE(IsFileName(L"x." + name));
      EXPECT_TRUE(IsFileName(L" " + name));
    }
  }
  for (const wchar_t* name :
       {L"COM", L"LPT", L"COM0", L"LPT0", L"COM10", L"COMA", L"COM\u2074", L"CO", L"CONSOLE"})
    EXPECT_TRUE(IsFileName(name)) << Narrow(name);
}

TEST(ShellPathOf, IsAnAbsolutePathAsItStands) {
  for (const wchar_t* path :
       {L"C:\\a", L"z:\\dir\\a b.txt", L"\\\\server\\share\\a.txt", L"C:\\a\\..\\b", L"C:\\\u6587"})
    EXPECT_EQ(ShellPathOf(path), path);
}

TEST(ShellPathOf, HasBackslashesForSlashes) {
  EXPECT_EQ(ShellPathOf(L"C:/dir/a.txt"), L"C:\\dir\\a.txt");
  EXPECT_EQ(ShellPathOf(L"//server/share/dir/a.txt"), L"\\\\server\\share\\dir\\a.txt");
}

TEST(ShellPathOf, IsNothingForAPathThatDependsOnTheCurrentFolder) {
  for (const wchar_t* path :
       {L"", L"a.txt", L"dir\\a.txt", L".\\a", L"..\\a", L"\\a.txt", L"/a.txt", L"C:a.txt", L"C:", L"1:\\a",
        L"CC:\\a", L":\\a", L"http://host/a.txt", L"file:///C:/a.txt"})
    EXPECT_EQ(ShellPathOf(path), std::nullopt) << Narrow(path);
}

TEST(ShellPathOf, IsNothingForARootOrAShare) {
  for (const wchar_t* path :
       {L"C:\\", L"C:/", L"C:\\.", L"C:\\dir\\..", L"C:\\dir\\", L"C:\\ ", L"C:\\. .", L"\\\\server",
        L"\\\\server\\", L"\\\\server\\share", L"\\\\server\\share\\", L"\\\\\\share\\a", L"\\\\server\\\\a"})
    EXPECT_EQ(ShellPathOf(path), std::nullopt) << Narrow(path);
}

TEST(ShellPathOf, IsNothingForSeveralFiles) {
  for (const std::wstring_view path :
       {L"C:\\*.txt"sv, L"C:\\a?.txt"sv, L"C:\\d*r\\a.txt"sv, L"C:\\<.txt"sv, L"C:\\a>"sv, L"C:\\a\"txt"sv,
        L"C:\\a\0C:\\b"sv, L"C:\\a\0"sv, L"\\\\?\\C:\\*.txt"sv, L"\\\\?\\C:\\a?"sv})
    EXPECT_EQ(ShellPathOf(path), std::nullopt) << Narrow(path);
}

TEST(ShellPathOf, IsWithoutThePrefixForLongPaths) {
  EXPECT_EQ(ShellPathOf(L"\\\\?\\C:\\dir\\a.txt"), L"C:\\dir\\a.txt");
  EXPECT_EQ(ShellPathOf(L"\\\\?\\UNC\\server\\share\\a.txt"), L"\\\\server\\share\\a.txt");
  EXPECT_EQ(ShellPathOf(L"\\\\?\\unc\\server\\share\\a.txt"), L"\\\\server\\share\\a.txt");
}

TEST(ShellPathOf, IsNothingWhereThePathMeansAnotherFileWithoutItsPrefix) {
  for (const wchar_t* path :
       {L"\\\\?\\C:\\a.", L"\\\\?\\C:\\a ", L"\\\\?\\C:\\dir.\\a", L"\\\\?\\C:\\..\\a", L"\\\\?\\C:/a",
        L"\\\\?\\C:\\a/b", L"\\\\?\\C:\\nul", L"\\\\?\\Volume{1}\\a", L"\\\\?\\\\\\server\\share\\a",
        L"\\\\?\\", L"\\\\?\\UNC\\", L"\\\\?\\a.txt", L"//?/C:/a.txt"})
    EXPECT_EQ(ShellPathOf(path), std::nullopt) << Narrow(path);
}

TEST(ShellPathOf, IsNothingForADevice) {
  for (const wchar_t* path :
       {L"\\\\.\\C:\\a", L"\\\\.\\PhysicalDrive0", L"//./C:/a", L"\\\\.\\UNC\\server\\share\\a"})
    EXPECT_EQ(ShellPathOf(path), std::nullopt) << Narrow(path);
}

}  // namespace
}  // namespace kestrelon
