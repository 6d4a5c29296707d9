// The three language files as they stand in the repository, turned into the form in which they ship.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "app/base/File.h"
#include "app/base/Settings.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "tests/support/ScopedTestDir.h"

namespace kestrelon::lang {
namespace {

using test::ScopedTestDir;

constexpr const wchar_t* kLanguages[] = {L"English", L"Chinese_S", L"Chinese_T"};

struct Line {
  std::wstring section, key, value;  // the value as it stands, with its quotes
};

std::wstring SourceText(const std::wstring& language) {
  return Widen(ScopedTestDir::ReadBytes(Widen(KESTRELON_LANGUAGE_SOURCES) + language + L".ini"));
}

std::vector<Line> Lines(const std::wstring& language) {
  std::vector<Line> lines;
  std::wstring section;
  const std::wstring text = SourceText(language);
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(L'\n', start), text.size());
    const std::wstring line = text.substr(start, end - start);
    start = end + 1;
    if (line.starts_with(L'[')) {
      section = line.substr(1, line.find(L']') - 1);
    } else if (!line.empty() && !line.starts_with(L';')) {
      const std::size_t equals = line.find(L'=');
      EXPECT_NE(equals, std::wstring::npos) << Narrow(line);
      lines.push_back({section, line.substr(0, equals), line.substr(equals + 1)});
    }
  }
  return lines;
}

std::set<std::string> Keys(const std::wstring& language) {
  std::set<std::string> keys;
  for (const Line& line : Lines(language)) {
    EXPECT_TRUE(keys.insert(Narrow(line.section + L"/" + line.key)).second)
        << Narrow(language + L" has " + line.section + L"/" + line.key) << " twice";
  }
  return keys;
}

// A program folder with the files in it, as the build makes them: UTF-16 with a byte order mark and CR LF.
class Shipped : public ScopedTestDir {
 public:
  Shipped() {
    for (const wchar_t* language : kLanguages) {
      std::wstring text = SourceText(language);
      for (std::size_t at = 0; (at = text.find(L'\n', at)) != std::wstring::npos; at += 2)
        text.insert(at, 1, L'\r');
      WriteIniFile(L"Program\\Lang\\" + std::wstring(language) + L".ini", text);
    }
  }
  std::wstring Text(const std::wstring& language, const std::wstring& section,
                    const std::wstring& key) const {
    return ReadIni(section, key, LanguageFile(program, language));
  }
};

// The main window's menu: the entries of each pull-down, by the name of the entry that opens it.
const std::map<std::wstring, std::vector<std::wstring>> kMenus = {
    {L"", {L"meu_file", L"meu_Category", L"meu_List", L"meu_misc", L"meu_help"}},
    {L"meu_file",
     {L"meu_NewDatabase", L"meu_LoadDatabase", L"meu_SaveDatabase", L"meu_saveas", L"meu_ImportPreviousFiles",
      L"meu_exit"}},
    {L"meu_Category",
     {L"meu_AddFirstSibling", L"meu_AddPreviousSibling", L"meu_AddNextSibling", L"meu_AddLastSibling",
      L"meu_AddDirectory", L"meu_AddChild", L"meu_Remove", L"meu_aa"}},
    {L"meu_List",
     {L"meu_Importfiles", L"meu_renames", L"meu_Delete", L"meu_ShowItemInfo", L"meu_Changecategory",
      L"meu_Copyto", L"meu_Moveto", L"meu_comment", L"meu_openfile", L"meu_destinationdirectory",
      L"meu_Properties"}},
    {L"meu_Importfiles", {L"meu_Input_Dialog", L"meu_Imput_Clipboard"}},
    {L"meu_renames", {L"meu_rename", L"meu_Definenameasfilename"}},
    {L"meu_misc", {L"meu_language"}},
    {L"meu_language", {L"meu_English", L"meu_Chinese_Traditional", L"meu_Chinese_Simplified"}},
    {L"meu_help", {L"meu_moretips", L"meu_sendemailtoauthor", L"meu_reportingbugs", L"meu_about"}},
};

TEST(LanguageFiles, HaveTheSameKeysInAllThree) {
  const std::set<std::string> english = Keys(L"English");

  EXPECT_GT(english.size(), 70u);
  EXPECT_EQ(Keys(L"Chinese_S"), english);
  EXPECT_EQ(Keys(L"Chinese_T"), english);
}

TEST(LanguageFiles, HaveACaptionForEveryMenuEntry) {
  const Shipped shipped;
  for (const wchar_t* language : kLanguages) {
    for (const auto& [menu, entries] : kMenus) {
      for (const std::wstring& entry : entries) {
        EXPECT_NE(shipped.Text(language, L"MainForm", entry), L"") << Narrow(language + (L" " + entry));
      }
    }
  }
}

TEST(LanguageFiles, HaveTheTipsOfTheToolbarForBothPanes) {
  const Shipped shipped;
  for (const wchar_t* language : kLanguages) {
    for (const wchar_t* key : {L"Toolbar1_1", L"Toolbar1_2", L"Toolbar1_3", L"Toolbar1_4", L"Toolbar1_1_tree",
                               L"Toolbar1_2_tree", L"Toolbar1_3_tree", L"Toolbar1_4_tree", L"Toolbar1_6",
                               L"Toolbar1_7", L"Toolbar1_8", L"Toolbar1_9"}) {
      EXPECT_NE(shipped.Text(language, L"MainForm", key), L"")
          << Narrow(language + (std::wstring(L" ") + key));
    }
  }
}

TEST(LanguageFiles, HaveTheTextsOfTheSlotDialogs) {
  const Shipped shipped;
  for (const wchar_t* language : kLanguages) {
    for (const wchar_t* window : {L"Save", L"Load"}) {
      for (const wchar_t* key : {L"0", L"Label1", L"Command1"}) {
        EXPECT_NE(shipped.Text(language, window, key), L"") << Narrow(language + (std::wstring(L" ") + key));
      }
    }
  }
}

TEST(LanguageFiles, HaveTheTextsOfTheClipboardDialog) {
  const Shipped shipped;
  for (const wchar_t* language : kLanguages) {
    for (const wchar_t* key : {L"0", L"Check1", L"Command1_0", L"Command1_1"}) {
      EXPECT_NE(shipped.Text(language, L"inputDialog", key), L"")
          << Narrow(language + (std::wstring(L" ") + key));
    }
  }
}

TEST(LanguageFiles, HaveTheTextsOfTheItemDialogs) {
  const std::map<std::wstring, std::vector<std::wstring>> dialogs = {
      {L"FileRename", {L"0", L"Label1", L"Command1_0", L"Command1_1"}},
      {L"FilePropterty",
       {L"0", L"Label1_0", L"Label1_1", L"Label1_2", L"Label1_3", L"Label1_4", L"Text1", L"Command2_0",
        L"Command2_1"}},
      {L"frmDeletebox", {L"0", L"Command1"}},
      {L"List_Find", {L"0", L"lblFind", L"lblIn", L"Command1_0", L"Command1_1"}},
      {L"Tree_Find", {L"0", L"Label1", L"Command1_0", L"Command1_1"}},
      {L"Changecategory", {L"0", L"Label1", L"Label2", L"Command1_0", L"Command1_1"}}};
  const Shipped shipped;
  for (const wchar_t* language : kLanguages) {
    for (const auto& [window, keys] : dialogs) {
      for (const std::wstring& key : keys) {
        EXPECT_NE(shipped.Text(language, window, key), L"")
            << Narrow(language + (L" " + window + L" " + key));
      }
    }
  }
  EXPECT_EQ(shipped.Text(L"English", L"FileRename", L"0"), L"Rename");
  EXPECT_EQ(shipped.Text(L"English", L"FilePropterty", L"0"), L"Propterties");
  EXPECT_EQ(shipped.Text(L"English", L"FilePropterty", L"Text1"), L"File Not Found!");
  EXPECT_EQ(shipped.Text(L"English", L"frmDeletebox", L"0"), L"Delete");
}

TEST(LanguageFiles, GiveEachControlOfADialogAnAccessKeyOfItsOwn) {
  for (const wchar_t* language : kLanguages) {
    std::set<std::wstring> keys;
    for (const Line& line : Lines(language)) {
      const std::size_t mark = line.value.find(L'&');
      if (line.section == L"MainForm" || mark == std::wstring::npos) continue;
      EXPECT_TRUE(keys.insert(line.section + L"/" + line.value[mark + 1]).second)
          << Narrow(language + (L" " + line.section + L"/" + line.key));
    }
  }
}

TEST(LanguageFiles, HaveTheTextsOfTheCommentWindow) {
  const Shipped shipped;
  for (const wchar_t* language : kLanguages) {
    for (const wchar_t* key : {L"0", L"Command1_0", L"Command1_1"}) {
      EXPECT_NE(shipped.Text(language, L"Filelist_Comment", key), L"")
          << Narrow(language + (std::wstring(L" ") + key));
    }
  }
}

TEST(LanguageFiles, HaveHeadersForTheSecondColumnToTheSixth) {
  const Shipped shipped;
  for (const wchar_t* language : kLanguages) {
    for (const wchar_t* number : {L"2", L"3", L"4", L"5", L"6"}) {
      EXPECT_NE(shipped.Text(language, L"listview_header", number), L"") << Narrow(language);
    }
  }
  EXPECT_EQ(shipped.Text(L"English", L"listview_header", L"2"), L"Alias");
  EXPECT_EQ(shipped.Text(L"English", L"listview_header", L"3"), L"File name");
  EXPECT_EQ(shipped.Text(L"English", L"listview_header", L"4"), L"Local File");
  EXPECT_EQ(shipped.Text(L"English", L"listview_header", L"5"), L"Insert time");
  EXPECT_EQ(shipped.Text(L"English", L"listview_header", L"6"), L"Comment");
}

TEST(LanguageFiles, HaveEveryMessageAndNoOther) {
  Shipped shipped;
  std::set<std::string> numbers;
  for (const MessageText& message : kMessages) {
    numbers.insert("messagebox/" + std::to_string(message.number));
    for (const wchar_t* language : kLanguages) {
      shipped.program.languageName = language;
      EXPECT_NE(ReadMessage(shipped.program, message.number), L"") << Narrow(language) << message.number;
    }
  }
  std::set<std::string> present = Keys(L"English");
  std::erase_if(present, [](const std::string& key) { return !key.starts_with("messagebox/"); });
  EXPECT_EQ(present, numbers);
}

TEST(LanguageFiles, HoldTheBuiltInMessagesInEnglishToTheBlank) {
  Shipped shipped;
  shipped.program.languageName = L"English";
  for (const MessageText& message : kMessages) {
    EXPECT_EQ(ReadMessage(shipped.program, message.number), message.english);
  }
}

TEST(LanguageFiles, HoldTheMenusOwnCaptionsInEnglish) {
  const Shipped shipped;

  EXPECT_EQ(shipped.Text(L"English", L"MainForm", L"meu_saveas"), L"Save &As ...");
  EXPECT_EQ(shipped.Text(L"English", L"MainForm", L"meu_aa"), L"&Enabled drag and drop");
  EXPECT_EQ(shipped.Text(L"English", L"MainForm", L"meu_Importfiles"), L"Import Files From");
  EXPECT_EQ(shipped.Text(L"English", L"MainForm", L"meu_Copyto"), L"Send to ...");
  EXPECT_EQ(shipped.Text(L"English", L"MainForm", L"meu_destinationdirectory"), L"Open in Explore");
  EXPECT_EQ(shipped.Text(L"English", L"MainForm", L"meu_Chinese_Simplified"), L"Chinese_Simplified");
  EXPECT_EQ(shipped.Text(L"English", L"MainForm", L"meu_about"), L"about...");
}

TEST(LanguageFiles, HoldNoTextThatTheProfileFunctionsWouldCut) {
  const Shipped shipped;
  for (const wchar_t* language : kLanguages) {
    for (const Line& line : Lines(language)) {
      const bool quoted =
          line.value.size() >= 2 && line.value.starts_with(L'"') && line.value.ends_with(L'"');
      const std::wstring text = quoted ? line.value.substr(1, line.value.size() - 2) : line.value;
      EXPECT_LE(text.size(), 254u);
      EXPECT_EQ(text.find(L'\t'), std::wstring::npos);
      EXPECT_EQ(shipped.Text(language, line.section, line.key), text) << Narrow(language + (L" " + line.key));
    }
  }
}

TEST(LanguageFiles, AreTranslatedThroughout) {
  const std::set<std::wstring> sameInEveryLanguage = {L"meu_English"};
  for (const wchar_t* language : {L"Chinese_S", L"Chinese_T"}) {
    for (const Line& line : Lines(language)) {
      if (sameInEveryLanguage.contains(line.key)) continue;
      EXPECT_TRUE(std::any_of(line.value.begin(), line.value.end(), [](wchar_t unit) {
        return unit >= 0x4E00;
      })) << Narrow(language + (L" " + line.section + L"/" + line.key));
    }
  }
}

// The English captions are fixed, two entries with the same key included.
TEST(LanguageFiles, GiveEachEntryOfAChineseMenuAnAccessKeyOfItsOwn) {
  const Shipped shipped;
  for (const wchar_t* language : {L"Chinese_S", L"Chinese_T"}) {
    for (const auto& [menu, entries] : kMenus) {
      std::set<wchar_t> keys;
      for (const std::wstring& entry : entries) {
        const std::wstring caption = shipped.Text(language, L"MainForm", entry);
        const std::size_t mark = caption.find(L"(&");
        ASSERT_NE(mark, std::wstring::npos) << Narrow(language + (L" " + entry));
        EXPECT_TRUE(keys.insert(caption[mark + 2]).second) << Narrow(language + (L" " + entry));
        EXPECT_EQ(caption[mark + 3], L')');
      }
    }
  }
}

}  // namespace
}  // namespace kestrelon::lang
