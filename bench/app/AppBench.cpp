// app-bench: times of the window program's long ways, each beside a bare counterpart in the same run. The
// ratios are what counts; the milliseconds depend on the machine. Needs the package folder, for the pictures
// and language files:
//
//   app-bench PACKAGE-FOLDER [items in the large category]
#include "app/base/Win32.h"

#include <commctrl.h>
#include <ole2.h>
#include <psapi.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "app/Connect.h"
#include "app/MainForm.h"
#include "app/base/File.h"
#include "bench/app/Timing.h"
#include "import/AddFiles.h"
#include "items/ShowData.h"
#include "store/SharedConnection.h"
#include "store/Store.h"
#include "store/UnsavedCollection.h"
#include "tree/Changecategory.h"
#include "tree/DeleteCategory.h"
#include "tree/NodeCommands.h"
#include "tree/Tree_Find.h"

namespace {

using namespace kestrelon;

// The fastest of several runs of two things that are compared, taken in turns.
struct Pair {
  double first = 1e9, second = 1e9;
};
Pair Fastest(int rounds, const std::function<void()>& first, const std::function<void()>& second) {
  Pair pair;
  for (int round = 0; round < rounds; ++round) {
    pair.first = std::min(pair.first, Milliseconds(first));
    pair.second = std::min(pair.second, Milliseconds(second));
  }
  return pair;
}

void Report(const char* what, double milliseconds) { std::printf("%-58s %10.1f ms\n", what, milliseconds); }
void Report(const char* what, const Pair& pair) {
  std::printf("%-58s %10.1f ms %10.1f ms   ratio %.2f\n", what, pair.first, pair.second,
              pair.first / pair.second);
}

double PrivateMegabytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  counters.cb = sizeof counters;
  ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
  return static_cast<double>(counters.PagefileUsage) / 1048576.0;
}

std::wstring KeyOf(int category) { return L"S0001111513170" + std::to_wstring(100000 + category) + L"_"; }

// Puts a collection of one level of groups with 20 children each into the window and its working database.
void Build(win::MainParts& parts, int categories, int items) {
  parts.TreeView1.Clear();
  win::TreeNode* group = nullptr;
  for (int i = 0; i < categories; ++i) {
    win::TreeNode& node =
        i % 21 == 0 ? parts.TreeView1.Add(nullptr, win::Relationship::kLast, KeyOf(i), L"Group", 1, 2)
                    : parts.TreeView1.Add(group, win::Relationship::kChild, KeyOf(i), L"Category", 1, 2);
    if (i % 21 == 0) group = &node;
  }
  store::Opened connection(parts.connection);
  connection->Execute(L"DELETE * FROM FTable");
  for (int i = 1; i <= items; ++i) {
    const std::wstring name = L"Document number " + std::to_wstring(std::int64_t{i} * 7919 % items) + L".txt";
    connection->Execute(imports::InsertStatement(imports::MakeRecord(
        KeyOf(0), i, L"C:\\Users\\somebody\\Documents\\papers\\" + name, L"11/15/2026 1:20:05 PM")));
  }
  connection.Close();
}

// One category with sub-categories, the items spread over them.
win::TreeNode& BuildBranch(win::MainParts& parts, int categories, int items) {
  parts.TreeView1.Clear();
  win::TreeNode& top = parts.TreeView1.Add(nullptr, win::Relationship::kLast, L"top_", L"Branch", 1, 2);
  for (int i = 0; i < categories; ++i) {
    parts.TreeView1.Add(&top, win::Relationship::kChild, KeyOf(i), L"Category", 1, 2);
  }
  store::Opened connection(parts.connection);
  connection->Execute(L"DELETE * FROM FTable");
  for (int i = 0; i < items; ++i) {
    connection->Execute(imports::InsertStatement(
        imports::MakeRecord(KeyOf(i % categories), i / categories + 1, L"C:\\papers\\a.txt", L"11/15/2026")));
  }
  connection.Close();
  parts.TreeView1.Select(&top);
  tree::TreeView1_NodeClick(parts, top);
  return top;
}

void QueryAlone(win::MainParts& parts) {
  store::Opened connection(parts.connection);
  jet::Recordset rows;
  rows.Open(store::ToEngine(L"SELECT * FROM FTable WHERE TreeviewNode=" + store::Quoted(KeyOf(0))),
            connection->Ado());
  std::size_t units = 0;
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    for (std::size_t column = 0; column < 7; ++column) units += rows.Text(column).size();
  }
  if (units == 0) std::puts("the query found nothing");
}

// The insertions that loading the tree cannot do without.
void BareInsertions(HWND tree, const win::TreeView& model) {
  ::SendMessageW(tree, WM_SETREDRAW, FALSE, 0);
  HTREEITEM group = TVI_ROOT;
  for (std::size_t i = 0; i < model.Count(); ++i) {
    TVINSERTSTRUCTW insert{};
    insert.hParent = i % 21 == 0 ? TVI_ROOT : group;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT;
    insert.item.pszText = const_cast<wchar_t*>(L"Category");
    const auto item = reinterpret_cast<HTREEITEM>(
        ::SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
    if (i % 21 == 0) group = item;
  }
  ::SendMessageW(tree, WM_SETREDRAW, TRUE, 0);
}

// A search that goes through everything, since nothing matches.
double SearchInVain(win::Form& window) {
  ::SetWindowTextW(window.Find(L"Text1")->window, L"no such text");
  return Milliseconds([&] { ::SendMessageW(window.Find(L"Command1", 0)->window, BM_CLICK, 0, 0); });
}

// What keeping the unsaved collection costs the user at most, with the collection that is in the window: the
// tree alone, as when the window is idle, and an item with a tree that has changed before it.
void ReportKeeping(win::MainParts& parts) {
  constexpr int kRounds = 10;
  double tree = 0, item = 0;
  win::TreeNode& renamed = parts.TreeView1.At(parts.TreeView1.Count());
  for (int round = 0; round < kRounds; ++round) {
    parts.TreeView1.SetText(renamed, L"Renamed " + std::to_wstring(round));
    tree = std::max(tree, Milliseconds([&] { parts.unsaved->Keep(); }));
    parts.TreeView1.SetText(renamed, L"Renamed again " + std::to_wstring(round));
    item = std::max(item, Milliseconds([&] {
                      store::Opened connection(parts.connection);
                      connection->Execute(imports::InsertStatement(
                          imports::MakeRecord(KeyOf(1), round + 1, L"C:\\papers\\a.txt", L"11/15/2026")));
                      connection.Close();
                    }));
  }
  Report("  keep a changed tree, the slowest of 10", tree);
  Report("  add an item with a changed tree, the slowest of 10", item);
}

void BareWindow() {
  HWND window = ::CreateWindowExW(0, L"STATIC", L"bare", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50, 900, 560,
                                  nullptr, nullptr, ::GetModuleHandleW(nullptr), nullptr);
  ::UpdateWindow(window);
  ::DestroyWindow(window);
}

int Run(const std::wstring& package, int largeCategory) {
  OutsideWorld world = SystemWorld();
  world.messageBox = [](HWND, const std::wstring& text, const std::wstring& title, UINT flags) {
    if ((flags & MB_ICONEXCLAMATION) == MB_ICONEXCLAMATION) {
      std::printf("box %s: %s\n", Narrow(title).c_str(), Narrow(text).c_str());
    }
    return (flags & MB_TYPEMASK) == MB_YESNO ? IDYES : IDOK;
  };
  const std::wstring appData = TemporaryFolder() + L"app-bench-" + std::to_wstring(::GetCurrentProcessId());
  ::CreateDirectoryW(appData.c_str(), nullptr);
  Program program = app::NameProgram(package, appData);
  if (!app::Connect(program, world)) return 1;

  const Pair start = Fastest(
      5,
      [&] {
        app::MainForm form(program, world);
        form.Load();
        form.ShowNow(SW_SHOWNORMAL);
      },
      BareWindow);
  Report("main window, made and shown / a bare window", start);

  app::MainForm form(program, world);
  form.Load();
  form.ShowNow(SW_SHOWNORMAL);
  win::MainParts& parts = form.Parts();
  std::printf("%-58s %10.1f MB\n", "memory, idle and empty", PrivateMegabytes());

  Build(parts, 2000, largeCategory);
  std::printf("2,000 categories, %d items in one of them:\n", largeCategory);
  ReportKeeping(parts);
  Report("  save into a slot", Milliseconds([&] { store::SaveData(parts, L"Data1.dat", form.Handle()); }));
  Report("  load the slot", Milliseconds([&] { store::LoadData(parts, L"Data1.dat"); }));
  win::TreeNode& large = *parts.TreeView1.Find(KeyOf(0));
  Report("  select the large category, first time", Milliseconds([&] {
           tree::TreeView1_NodeClick(parts, large);
           ::UpdateWindow(parts.ListView1.Handle());
         }));
  Report("  select it again", Milliseconds([&] {
           tree::TreeView1_NodeClick(parts, large);
           ::UpdateWindow(parts.ListView1.Handle());
         }));
  Report("  sort by file name", Milliseconds([&] {
           items::ListView1_ColumnClick(parts, form.ListHelpers(), 2);
           ::UpdateWindow(parts.ListView1.Handle());
         }));

  Build(parts, 5000, 50000);
  items::ShowData(parts, KeyOf(0));
  items::OpenListFind(parts, form.ListHelpers());
  Report("find in 50,000 items, to the end", SearchInVain(*form.ListHelpers().find));
  tree::OpenTreeFind(parts, form.TreeHelpers());
  Report("find in 5,000 categories, to the end", SearchInVain(*form.TreeHelpers().find));
  form.ListHelpers().find->Close();
  form.TreeHelpers().find->Close();

  Build(parts, 21, 100000);
  QueryAlone(parts);  // both sides find the look-up built
  Report("ShowData of 100,000 items / its query alone",
         Fastest(
             15, [&] { items::ShowData(parts, KeyOf(0)); }, [&] { QueryAlone(parts); }));
  Build(parts, 50000, 1);
  store::SaveTree(parts);
  HWND bare = ::CreateWindowExW(0, WC_TREEVIEWW, L"",
                                WS_CHILD | WS_VISIBLE | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT, 0, 0,
                                200, 400, form.Handle(), nullptr, ::GetModuleHandleW(nullptr), nullptr);
  Pair load;
  double clear = 1e9;
  for (int round = 0; round < 4; ++round) {
    // Both begin with an empty control: clearing one takes half as long as filling it.
    clear = std::min(clear, Milliseconds([&] { store::ShowEmptyTree(parts); }));
    ::SendMessageW(bare, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    load.first = std::min(load.first, Milliseconds([&] { store::LoadTree(parts); }));
    load.second = std::min(load.second, Milliseconds([&] { BareInsertions(bare, parts.TreeView1); }));
  }
  Report("load a tree of 50,000 categories / bare insertions", load);
  Report("clear it", clear);
  // As the dialog that changes an item's category does: in a window of its own.
  HWND dialog = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 50, 50, 400, 400, nullptr,
                                  nullptr, ::GetModuleHandleW(nullptr), nullptr);
  Report("copy it into another tree, and drop that", Milliseconds([&] {
           win::TreeView copy;
           copy.Create(dialog, 1);
           tree::CopyCategories(parts.TreeView1, copy);
         }));
  ::DestroyWindow(dialog);
  Report("save a tree of 50,000 categories", Milliseconds([&] { store::SaveTree(parts); }));
  ::DestroyWindow(bare);

  BuildBranch(parts, 1000, 50000);
  Report("delete a category with 1,000 below it and 50,000 items",
         Milliseconds([&] { tree::meu_Remove_Click(parts); }));

  Build(parts, 21, 1000000);
  items::ShowData(parts, KeyOf(1));
  std::printf("%-58s %10.1f MB\n", "memory, 1,000,000 items in the working database", PrivateMegabytes());

  Build(parts, 50000, 1000000);
  std::puts("50,000 categories, 1,000,000 items:");
  ReportKeeping(parts);
  Report("  set it aside", Milliseconds([&] { parts.unsaved->SetAside(); }));

  program.databaseSaved = true;
  parts.unsaved->Finish();
  form.Destroy();
  for (const wchar_t* name : {L"Temp.dat", L"default.dat", L"Data1.dat", L"Unsaved.dat", L"Kestrelon.dat"}) {
    ::DeleteFileW((program.dataFolder + name).c_str());
  }
  ::RemoveDirectoryW(program.dataFolder.c_str());
  ::RemoveDirectoryW(appData.c_str());
  return 0;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count < 2) {
    std::puts("usage: app-bench PACKAGE-FOLDER [items in the large category]");
    return 2;
  }
  const INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&classes);
  ::OleInitialize(nullptr);
  return Run(arguments[1], count > 2 ? std::stoi(arguments[2]) : 20000);
}
