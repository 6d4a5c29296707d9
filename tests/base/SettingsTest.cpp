#include <gtest/gtest.h>

#include <string>
#include <system_error>

#include "app/base/File.h"
#include "app/base/Settings.h"
#include "tests/support/ScopedTestDir.h"

namespace kestrelon {
namespace {

using test::ScopedTestDir;

TEST(Settings, AreMadeWithExactlyTheDefaultsOnFirstRun) {
  const ScopedTestDir dir;

  dir.settings.CreateWithDefaults();

  EXPECT_EQ(ScopedTestDir::ReadBytes(dir.program.settingsFile),
            "[USER INFO]\r\n"
            "Language=English\r\n"
            "DefineName_Length=1874.835\r\n"
            "FileName_Length=2234.835\r\n"
            "LocalFile_Length=7409.764\r\n"
            "InsertTime_Length=1440\r\n"
            "Comment_Length=1440\r\n"
            "ShowItemInfo=False\r\n"
            "Drag&Drop=False\r\n"
            "Data0=1. Null\r\n"
            "Data1=2. Null\r\n"
            "Data2=3. Null\r\n"
            "Data3=4. Null\r\n");
}

TEST(Settings, AreNeverRewrittenWhenTheFileIsThere) {
  const ScopedTestDir dir;
  const std::string bytes = "[User Info]\r\nShowItemInfo=True\r\n";
  dir.WriteFile(L"KestrelonData\\Kestrelon.dat", bytes);

  dir.settings.CreateWithDefaults();

  EXPECT_EQ(ScopedTestDir::ReadBytes(dir.program.settingsFile), bytes);
  EXPECT_EQ(dir.settings.Read(L"Language"), L"") << "a missing key reads as the empty text";
}

TEST(Settings, FindSectionsAndKeysInAnyLetterCase) {
  const ScopedTestDir dir;
  dir.WriteFile(L"KestrelonData\\Kestrelon.dat",
                "[User Info]\r\nLanguage=Chinese_S\r\nDefineName_Length=12.5\r\n");

  EXPECT_EQ(dir.settings.Read(L"language"), L"Chinese_S");
  EXPECT_EQ(dir.settings.Read(L"DefineName_length"), L"12.5");
}

TEST(Settings, AreWrittenIntoTheSectionThatIsThereInWhateverCase) {
  const ScopedTestDir dir;
  dir.WriteFile(L"KestrelonData\\Kestrelon.dat", "[User Info]\r\nLanguage=English\r\n");

  dir.settings.Write(L"LANGUAGE", L"Chinese_T");

  EXPECT_EQ(ScopedTestDir::ReadBytes(dir.program.settingsFile), "[User Info]\r\nLanguage=Chinese_T\r\n");
}

TEST(Settings, WriteBooleansAsTrueAndFalse) {
  const ScopedTestDir dir;
  dir.settings.WriteBoolean(L"ShowItemInfo", true);
  dir.settings.WriteBoolean(L"Drag&Drop", false);

  EXPECT_EQ(ScopedTestDir::ReadBytes(dir.program.settingsFile),
            "[USER INFO]\r\nShowItemInfo=True\r\nDrag&Drop=False\r\n");
  EXPECT_TRUE(dir.settings.ReadBoolean(L"ShowItemInfo"));
  EXPECT_FALSE(dir.settings.ReadBoolean(L"Drag&Drop"));
}

TEST(Settings, TakeNothingButTrueForTrue) {
  const ScopedTestDir dir;
  for (const wchar_t* text : {L"true", L"TRUE", L"1", L"-1", L"Yes", L""}) {
    dir.settings.Write(L"ShowItemInfo", text);
    EXPECT_FALSE(dir.settings.ReadBoolean(L"ShowItemInfo")) << text;
  }
  EXPECT_FALSE(dir.settings.ReadBoolean(L"no such key"));
}

TEST(Settings, ThrowWhenTheFileCannotBeWritten) {
  const ScopedTestDir dir;
  const Settings nowhere(dir.Path(L"missing\\Kestrelon.dat"));

  EXPECT_THROW(nowhere.Write(L"Language", L"English"), std::system_error);
}

TEST(ReadIni, GivesTheFirst254UnitsOfALongerText) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteIniFile(L"a.ini", L"[s]\r\nk=" + std::wstring(300, L'x') + L"\r\n");

  EXPECT_EQ(ReadIni(L"s", L"k", file), std::wstring(254, L'x'));
}

TEST(ReadIni, ReadsUtf16FilesOnEveryLocale) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteIniFile(L"a.ini", L"[s]\r\nk=别名 \"x\"\r\nq=\" a \"\r\n");

  EXPECT_EQ(ReadIni(L"s", L"k", file), L"别名 \"x\"");
  EXPECT_EQ(ReadIni(L"s", L"q", file), L" a ");
}

TEST(ReadIni, IsEmptyWithoutAFileASectionOrAKey) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteIniFile(L"a.ini", L"[s]\r\nk=v\r\n");

  EXPECT_EQ(ReadIni(L"s", L"other", file), L"");
  EXPECT_EQ(ReadIni(L"other", L"k", file), L"");
  EXPECT_EQ(ReadIni(L"s", L"k", dir.Path(L"missing.ini")), L"");
  EXPECT_EQ(ReadIni(L"s", L"k", L""), L"");
}

TEST(IniSection, GivesWhatTheReaderOfSingleKeysGives) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteIniFile(
      L"a.ini",
      L"before=0\r\n[other]\r\nplain=wrong\r\n[S]\r\n; plain=comment\r\nplain=value\r\nPLAIN=second\r\n"
      L"  spaced  =  in the middle  \r\n\ttabbed\t=\tt\t\r\nquoted=\" a \"\r\nsingle=' b "
      L"'\r\nhalf=\"c\r\nmark=\"\r\n"
      L"two=\"\"d\"\"\r\nsign=a=b\r\nempty=\r\nno sign\r\n别名=名\r\nlong=" +
          std::wstring(300, L'x') + L"\r\nquotedlong=\"" + std::wstring(300, L'y') +
          L"\"\r\nlast=z\r\n[next]\r\nplain=wrong\r\n");
  const IniSection section(L"s", file);

  EXPECT_EQ(section.Read(L"plain"), L"value");
  EXPECT_EQ(section.Read(L"quoted"), L" a ");
  for (const wchar_t* key :
       {L"plain", L"Plain", L"spaced", L"tabbed", L"quoted", L"single", L"half", L"mark", L"two", L"sign",
        L"empty", L"no sign", L"别名", L"long", L"quotedlong", L"last", L"before", L"missing"})
    EXPECT_EQ(section.Read(key), ReadIni(L"s", key, file)) << Narrow(key);
}

TEST(IniSection, OfAnySizeIsReadWhole) {
  const ScopedTestDir dir;
  std::wstring text = L"[s]\r\n";
  for (int i = 0; i < 3000; ++i)
    text += L"key" + std::to_wstring(i) + L"=" + std::wstring(20, L'v') + L"\r\n";
  const IniSection section(L"s", dir.WriteIniFile(L"a.ini", text + L"last=here\r\n"));

  EXPECT_EQ(section.Read(L"key0"), std::wstring(20, L'v'));
  EXPECT_EQ(section.Read(L"last"), L"here");
}

TEST(IniSection, IsEmptyWithoutAFileOrASection) {
  const ScopedTestDir dir;
  const std::wstring file = dir.WriteIniFile(L"a.ini", L"[s]\r\nk=v\r\n");

  EXPECT_EQ(IniSection(L"other", file).Read(L"k"), L"");
  EXPECT_EQ(IniSection(L"s", dir.Path(L"missing.ini")).Read(L"k"), L"");
  EXPECT_EQ(IniSection(L"s", L"").Read(L"k"), L"");
}

}  // namespace
}  // namespace kestrelon
