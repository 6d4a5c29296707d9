// import-bench: the import of a folder tree beside what it cannot do without, in the same run: a bare walk of
// the same folders, and the same statements into an empty database. The ratios are what counts; the
// milliseconds depend on the machine. Makes folders of 100 files in the temporary folder and removes them.
//
//   import-bench PACKAGE-FOLDER [files in the largest tree]
#include "app/base/Win32.h"

#include <commctrl.h>
#include <ole2.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "app/Connect.h"
#include "app/MainForm.h"
#include "app/base/File.h"
#include "bench/app/Timing.h"
#include "import/AddFiles.h"
#include "store/SharedConnection.h"
#include "tree/CategoryKeys.h"
#include "tree/DirectoryImport.h"
#include "tree/FolderLists.h"
#include "ui/win/Form.h"

namespace {

using namespace kestrelon;

constexpr int kFilesPerFolder = 100;

// Names as people and devices give them.
std::wstring NameOf(int file) {
  static const wchar_t* const kWords[] = {L"Letter",  L"invoice", L"minutes", L"Summary",
                                          L"picture", L"Budget",  L"travel",  L"Agenda"};
  const std::wstring number = std::to_wstring(file * 7 % kFilesPerFolder);
  switch (file % 4) {
    case 0: return L"Document number " + number + L".txt";
    case 1: return L"IMG_" + std::to_wstring(4000 + file) + L".JPG";
    case 2:
      return std::wstring(kWords[file / 4 % 8]) + L" to " + kWords[file / 3 % 8] + L" " + number + L".pdf";
    default: return std::wstring(kWords[file / 5 % 8]) + L"-2026-11-" + number + L".xlsx";
  }
}

// Folders of 100 files with up to ten sub-folders each. Returns the paths of all folders, the top first.
std::vector<std::wstring> MakeTree(const std::wstring& top, int files) {
  std::vector<std::wstring> folders = {top};
  for (int folder = 1; folder < files / kFilesPerFolder; ++folder) {
    folders.push_back(folders[static_cast<std::size_t>((folder - 1) / 10)] + L"\\Part " +
                      std::to_wstring(folder));
  }
  for (const std::wstring& folder : folders) {
    if (!::CreateDirectoryW(folder.c_str(), nullptr)) ThrowLastError(folder);
    for (int file = 0; file < kFilesPerFolder; ++file) {
      const HANDLE made = ::CreateFileW((folder + L"\\" + NameOf(file)).c_str(), GENERIC_WRITE, 0, nullptr,
                                        CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
      if (made == INVALID_HANDLE_VALUE) ThrowLastError(folder);
      ::CloseHandle(made);
    }
  }
  return folders;
}

std::size_t Walk(const std::wstring& folder) {
  std::size_t files = 0;
  WIN32_FIND_DATAW entry;
  const HANDLE search = ::FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &entry,
                                           FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
  if (search == INVALID_HANDLE_VALUE) ThrowLastError(folder);
  do {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      ++files;
    } else if (entry.cFileName[0] != L'.') {
      files += Walk(folder + L"\\" + entry.cFileName);
    }
  } while (::FindNextFileW(search, &entry));
  ::FindClose(search);
  return files;
}

// The statements that the import issues, but for its keys.
std::vector<std::wstring> Statements(const std::vector<std::wstring>& folders) {
  std::vector<std::wstring> statements;
  for (std::size_t folder = 0; folder < folders.size(); ++folder) {
    const std::wstring key = L"S0001111513170" + std::to_wstring(100000 + folder) + L"_";
    for (int file = 0; file < kFilesPerFolder; ++file) {
      statements.push_back(imports::InsertStatement(imports::MakeRecord(
          key, file + 1, folders[folder] + L"\\" + NameOf(file), L"11/15/2026 1:20:05 PM")));
    }
  }
  return statements;
}

void Insert(win::MainParts& parts, const std::vector<std::wstring>& statements) {
  store::Opened connection(parts.connection);
  for (const std::wstring& statement : statements) connection->Execute(statement);
  connection.Close();
}

void EmptyEverything(win::MainParts& parts) {
  parts.TreeView1.Clear();
  const std::wstring& folder = parts.program.dataFolder;
  ReplaceByCopy(folder + L"Temp.dat", folder + parts.program.workingDatabase);
  parts.connection.Forget();
}

void Measure(win::MainParts& parts, const std::wstring& top, int files) {
  const std::vector<std::wstring> folders = MakeTree(top, files);
  const std::vector<std::wstring> statements = Statements(folders);
  parts.world.browseForFolder = [&](HWND) { return top; };
  double walk = 1e9, inserts = 1e9, whole = 1e9;
  const int rounds = std::clamp(100000 / files, 3, 20);  // the shorter, the easier disturbed
  for (int round = 0; round < rounds; ++round) {
    std::size_t found = 0;
    walk = std::min(walk, Milliseconds([&] { found = Walk(top); }));
    EmptyEverything(parts);
    inserts = std::min(inserts, Milliseconds([&] { Insert(parts, statements); }));
    EmptyEverything(parts);
    whole = std::min(whole, Milliseconds([&] { tree::AddDirectory(parts); }));
    if (found != statements.size() || parts.TreeView1.Count() != folders.size())
      std::puts("not all was found");
  }
  std::printf("%7d files, %4zu folders: import %8.1f ms, walk %7.1f ms + inserts %7.1f ms   ratio %.2f\n",
              files, folders.size(), whole, walk, inserts, whole / (walk + inserts));
  std::filesystem::remove_all(top);
}  // namespace

int Run(const std::wstring& package, int largest) {
  OutsideWorld world = SystemWorld();
  world.messageBox = [](HWND, const std::wstring& text, const std::wstring& title, UINT flags) {
    if ((flags & MB_ICONEXCLAMATION) == MB_ICONEXCLAMATION || text.find(L'\n') != std::wstring::npos) {
      std::printf("box %s: %s\n", Narrow(title).c_str(), Narrow(text).c_str());
    }
    return IDOK;
  };
  const std::wstring place = TemporaryFolder() + L"import-bench-" + std::to_wstring(::GetCurrentProcessId());
  ::CreateDirectoryW(place.c_str(), nullptr);
  Program program = app::NameProgram(package, place);
  if (!app::Connect(program, world)) return 1;
  {
    app::MainForm form(program, world);
    form.Load();
    form.ShowNow(SW_SHOWNORMAL);
    for (int files = 1000; files <= largest; files *= 10) Measure(form.Parts(), place + L"\\papers", files);
    program.databaseSaved = true;
    form.Destroy();
  }
  std::filesystem::remove_all(place);
  return 0;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count < 2) {
    std::puts("usage: import-bench PACKAGE-FOLDER [files in the largest tree]");
    return 2;
  }
  const INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&classes);
  ::OleInitialize(nullptr);
  return Run(arguments[1], count > 2 ? std::stoi(arguments[2]) : 100000);
}
