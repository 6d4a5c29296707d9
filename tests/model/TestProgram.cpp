#include "tests/model/TestProgram.h"

#include <shellapi.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "app/Connect.h"
#include "app/base/File.h"
#include "jet/base/File.h"
#include "jet/database/Database.h"
#include "store/SharedConnection.h"
#include "tests/support/MainFormFixture.h"
#include "ui/win/Form.h"

namespace kestrelon::model {
namespace {

// Whoever is told of an exception that left a handler of a window.
TestProgram* listening = nullptr;

bool IsFile(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

void WriteBytes(const std::wstring& path, const std::string& bytes) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(std::filesystem::path(path), std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string Utf16File(const std::wstring& text) {
  std::string bytes = "\xFF\xFE";
  for (const wchar_t unit : text) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

UINT TypeOf(BoxKind kind) {
  switch (kind) {
    case BoxKind::kYesNo: return MB_YESNO;
    case BoxKind::kOkCancel: return MB_OKCANCEL;
    case BoxKind::kYesNoCancel: return MB_YESNOCANCEL;
    default: return MB_OK;
  }
}

}  // namespace

bool ShellFileOperation(UINT function, const std::wstring& from, const std::wstring& to) {
  if (!IsFile(from)) return false;
  const std::wstring target = function == FO_RENAME ? to : WithBackslash(to) + FileNameOfPath(from);
  switch (function) {
    case FO_RENAME:
      if (IsFile(target) && !EqualNoCase(from, target)) {
        // Of a name that is taken the shell makes another one, and calls it success.
        const std::wstring bare = NameWithoutExtension(target), extension = ExtensionOf(target);
        return MoveFileExW(from.c_str(), (bare + L" (2)." + extension).c_str(), 0) != FALSE;
      }
      return MoveFileExW(from.c_str(), target.c_str(), 0) != FALSE;
    case FO_MOVE: return MoveFileExW(from.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
    case FO_COPY: return CopyFileW(from.c_str(), target.c_str(), FALSE) != FALSE;
    case FO_DELETE: return DeleteFileW(from.c_str()) != FALSE;
    default: return false;
  }
}

TestProgram::TestProgram(const std::wstring& root) : root_(root) {
  program = app::NameProgram(root + L"Program\\", root);
  if (!IsFile(root + L"Program\\Data\\Temp.dat")) {
    for (const wchar_t* language : {L"English", L"Chinese_S", L"Chinese_T"})
      WriteBytes(root + L"Program\\Lang\\" + language + L".ini", Utf16File(test::LanguageText(language)));
    for (const wchar_t* icon : {L"sortascending", L"sortdescending"})
      WriteBytes(root + L"Program\\ico\\" + icon + L".ico", test::IconBytes());
    WriteBytes(root + L"Program\\Data\\Temp.dat", test::TemplateBytes());
  }
  world.messageBox = [this](HWND, const std::wstring& text, const std::wstring&, UINT flags) {
    return answerBox ? answerBox(text, flags) : AnswerBox(text, flags);
  };
  world.browseForFolder = [this](HWND) {
    ++pickersShown;
    return folder.empty() ? std::nullopt : std::optional(folder);
  };
  world.openFiles = [this](const OpenFilesRequest&) {
    ++pickersShown;
    return openFiles.empty() ? std::nullopt : std::optional(openFiles);
  };
  world.shellFileOperation = [](HWND, UINT function, const std::wstring& from, const std::wstring& to, WORD) {
    return ShellFileOperation(function, from, to);
  };
  world.shellExecute = [](HWND, const std::wstring&, const std::wstring&, int) { return INT_PTR{33}; };
  world.startProgram = [](const std::wstring&, int) { return true; };
  world.hostAnswers = [](const std::wstring&) { return false; };
  world.localTime = [this] {
    const SYSTEMTIME start{2026, 11, 0, 15, 13, 20, 5, 0};
    FILETIME time;
    SystemTimeToFileTime(&start, &time);
    const ULONGLONG ticks = (static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime) +
                            static_cast<ULONGLONG>(clock_) * 10'000'000u;
    time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME now;
    FileTimeToSystemTime(&time, &now);
    return now;
  };
  world.randomFraction = [this] { return (draws++ % 10000 + 0.5) / 10000; };
  world.reseedRandom = [] {};
  world.dragButtonDown = [] { return true; };
  world.cursorPosition = [] { return POINT{0, 0}; };
  world.workArea = [] { return RECT{0, 0, 1024, 768}; };
  listening = this;
  win::SetLastResort([](const char* what) {
    if (listening) listening->Fault(std::string("an exception left a window's handler: ") + what);
  });
}

TestProgram::~TestProgram() {
  End();
  if (listening == this) listening = nullptr;
}

void TestProgram::SetClock(int seconds, int drawn) {
  clock_ = seconds;
  draws = drawn;
}

int TestProgram::AnswerBox(const std::wstring& text, UINT flags) {
  const UINT type = flags & MB_TYPEMASK;
  if (startAnswer_ && type == MB_YESNO) {
    ++offers;
    return *startAnswer_;
  }
  if (boxes.empty()) {
    Fault("unexpected box: " + Narrow(text));
    return type == MB_OK ? IDOK : type == MB_YESNO ? IDNO : IDCANCEL;
  }
  const Box box = boxes.front();
  boxes.pop_front();
  const bool error = (flags & MB_ICONMASK) == MB_ICONEXCLAMATION;
  if (type != TypeOf(box.kind) || error != (box.kind == BoxKind::kError))
    Fault("a box of another kind than expected: " + Narrow(text));
  if (box.noIsDefault && (flags & MB_DEFMASK) != MB_DEFBUTTON2)
    Fault("No is not the default: " + Narrow(text));
  return box.answer;
}

void TestProgram::Start(int answer) {
  offers = 0;
  startAnswer_ = answer;
  program = app::NameProgram(root_ + L"Program\\", root_);
  if (!app::Connect(program, world)) throw std::runtime_error("start-up failed");
  form = std::make_unique<app::MainForm>(program, world, [](DWORD, NOTIFYICONDATAW&) { return true; });
  form->Load();
  form->ShowNow(SW_SHOWNORMAL);
  form->FinishLoading();
  // High enough for all categories at once: a drag goes from one that is seen to one that is seen.
  SetWindowPos(form->Handle(), nullptr, 0, 0, 1500, 1500, SWP_NOZORDER | SWP_NOACTIVATE);
  win::DoEvents();
  startAnswer_.reset();
}

void TestProgram::End() {
  form.reset();
  for (MSG message; PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);) {
  }
}

void MakeFiles(const std::wstring& root, State& state) {
  const std::wstring top = root + L"Files\\";
  const auto folder = [&](const std::wstring& name) {
    std::filesystem::create_directories(top + name);
    state.folders.insert(top + name + L"\\");
  };
  for (const wchar_t* name :
       {L"A", L"B & C", L"资料", L"tree", L"tree\\a", L"tree\\a\\deep", L"tree\\b's", L"tree\\c", L"out"})
    folder(name);
  const std::wstring longName(80, L'n');
  int made = 0;
  for (const std::wstring& name :
       {std::wstring(L"A\\one.txt"), std::wstring(L"A\\two.tar.gz"), std::wstring(L"A\\three"),
        std::wstring(L"A\\图.txt"), std::wstring(L"B & C\\it's & that.txt"), std::wstring(L"B & C\\.profile"),
        std::wstring(L"B & C\\one.txt"), std::wstring(L"B & C\\\U0001F600.pdf"),
        L"资料\\" + longName + L".doc", std::wstring(L"资料\\ 前.txt"), std::wstring(L"资料\\ONE.TXT"),
        std::wstring(L"tree\\a1.txt"), std::wstring(L"tree\\a10.txt"), std::wstring(L"tree\\a2.txt"),
        std::wstring(L"tree\\a\\x.txt"), std::wstring(L"tree\\a\\deep\\y.txt"),
        std::wstring(L"tree\\b's\\文.txt"), std::wstring(L"tree\\b's\\z.txt")}) {
    const std::wstring path = top + name;
    const std::string bytes = "file " + std::to_string(++made);
    WriteBytes(path, bytes);
    state.files[Folded(path)] = {path, bytes};
  }
}

std::string BytesOf(const std::wstring& path) { return test::ScopedTestDir::ReadBytes(path); }

Content ReadContent(const std::wstring& path) {
  const auto database = jet::Database::Open(jet::OpenFile(path, jet::OpenMode::kRead), store::ToEngine(path));
  const auto faults = database->Check();
  if (!faults.empty()) throw std::runtime_error(Narrow(path) + " is not sound: " + faults.front().text);
  const auto text = [](const jet::Cursor& row, std::size_t column) {
    std::u16string units;
    row.ReadText(column, units);
    return store::ToWindows(units);
  };
  Content content;
  jet::Table& items = database->OpenTable(u"FTable");
  for (jet::Cursor row = items.Rows(); row.Next();) {
    Item item;
    for (std::size_t i = 0; i < kFields; ++i) item[i] = text(row, i);
    if (!content.table.emplace(item[kIndex], item).second)
      throw std::runtime_error("two items have the number " + Narrow(item[kIndex]));
  }
  jet::Table& categories = database->OpenTable(u"TreeviewTable");
  std::map<std::int32_t, Tree::Line> lines;
  jet::Value number;
  for (jet::Cursor row = categories.Rows(); row.Next();) {
    const std::wstring parent = text(row, 1);
    row.Read(0, number);
    lines[std::get<std::int32_t>(number)] = {parent == L"0_" ? std::wstring() : parent, text(row, 2),
                                             text(row, 3)};
  }
  std::vector<Tree::Line> ordered;
  for (const auto& [i, line] : lines) ordered.push_back(line);
  content.tree = Tree::FromLines(ordered);
  return content;
}

}  // namespace kestrelon::model
