#pragma once

#include "app/base/Win32.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/Connect.h"
#include "app/MainForm.h"
#include "app/base/File.h"
#include "jet/base/File.h"
#include "jet/database/Database.h"
#include "store/Schema.h"
#include "store/SharedConnection.h"
#include "store/UnsavedCollection.h"
#include "tests/support/FakeWorld.h"
#include "tests/support/KeyInput.h"
#include "tests/support/Pump.h"
#include "tests/support/ScopedTestDir.h"
#include "tree/NodeCommands.h"

namespace kestrelon::test {

// The empty database as the build ships it, made once per program.
inline const std::string& TemplateBytes() {
  static const std::string bytes = [] {
    const ScopedTestDir dir;
    const std::wstring path = dir.Path(L"Temp.dat");
    {
      const auto file = jet::OpenFile(path, jet::OpenMode::kCreate);
      jet::CreateDatabase(*file, store::Schema(), 46023);
      file->Flush();
    }
    return ScopedTestDir::ReadBytes(path);
  }();
  return bytes;
}

// A language file of the sources as the build ships it: UTF-16, lines ending in CR LF.
inline std::wstring LanguageText(const std::wstring& language) {
  const std::wstring source = std::wstring(KESTRELON_LANGUAGE_SOURCES) + L"/" + language + L".ini";
  std::wstring text;
  for (const wchar_t unit : Widen(ScopedTestDir::ReadBytes(source))) {
    if (unit == L'\n') text += L'\r';
    text += unit;
  }
  EXPECT_FALSE(text.empty()) << Narrow(source);
  return text;
}

// A picture of 16 by 16 opaque pixels in the form of an icon file.
inline std::string IconBytes() {
  const auto put = [](std::string& bytes, unsigned value, int size) {
    for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
  };
  std::string bytes;
  for (const unsigned word : {0u, 1u, 1u, 0x1010u, 0u, 1u, 32u}) put(bytes, word, 2);
  for (const unsigned value : {40u + 1024u + 64u, 22u, 40u, 16u, 32u}) put(bytes, value, 4);
  for (const unsigned word : {1u, 32u}) put(bytes, word, 2);
  for (int i = 0; i < 6; ++i) put(bytes, 0, 4);
  for (int i = 0; i < 256; ++i) put(bytes, 0xFF2060C0u, 4);
  return bytes + std::string(64, '\0');
}

// Counts one message that a window is sent.
class MessageSpy {
 public:
  MessageSpy(HWND window, UINT message) : window_(window), message_(message) {
    SetWindowSubclass(window_, &Procedure, reinterpret_cast<UINT_PTR>(this),
                      reinterpret_cast<DWORD_PTR>(this));
  }
  ~MessageSpy() { RemoveWindowSubclass(window_, &Procedure, reinterpret_cast<UINT_PTR>(this)); }
  MessageSpy(const MessageSpy&) = delete;
  MessageSpy& operator=(const MessageSpy&) = delete;
  int Count() const { return count_; }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                    DWORD_PTR self) {
    auto& spy = *reinterpret_cast<MessageSpy*>(self);
    if (message == spy.message_) ++spy.count_;
    return DefSubclassProc(window, message, wParam, lParam);
  }
  HWND window_;
  UINT message_;
  int count_ = 0;
};

// A program in a folder of its own, complete with template, language files and sort icons, over a fake world.
// Tests may change files and settings before Start() brings up the real main window. Random draws count 1, 2,
// 3, … unless `draws` holds others, so that every category gets a key of its own.
class MainFormFixture : public testing::Test {
 protected:
  MainFormFixture() : program(app::NameProgram(dir.program.programFolder, dir.Folder())) {
    dir.WriteFile(L"Program\\Data\\Temp.dat", TemplateBytes());
    for (const wchar_t* language : {L"English", L"Chinese_S", L"Chinese_T"}) {
      dir.WriteIniFile(L"Program\\Lang\\" + std::wstring(language) + L".ini", LanguageText(language));
    }
    for (const wchar_t* icon : {L"sortascending", L"sortdescending"}) {
      dir.WriteFile(L"Program\\ico\\" + std::wstring(icon) + L".ico", IconBytes());
    }
    world.randomFraction = [this] {
      int draw = ++lastDraw_;
      if (!draws.empty()) {
        draw = draws.front();
        draws.pop_front();
      }
      return (draw - 0.5) / 10000;
    };
  }
  ~MainFormFixture() override { End(); }

  void Start() {
    if (!app::Connect(program, world)) throw std::runtime_error("start-up failed");
    form = std::make_unique<app::MainForm>(program, world, [this](DWORD message, NOTIFYICONDATAW& data) {
      trayMessages.push_back(message);
      trayTip = data.szTip;
      return trayWorks;
    });
    form->Load();
    form->ShowNow(SW_SHOWNORMAL);
    form->FinishLoading();
    win::DoEvents();
  }
  // The program has come to its end. What was not saved is nobody's worry.
  void End() {
    if (form && form->Parts().unsaved) form->Parts().unsaved->Finish();
    Crash();
  }
  // The same without a word to anybody.
  void Crash() {
    form.reset();
    // A main window that goes ends the program; the next test goes on.
    for (MSG message; PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);) {
    }
  }

  win::MainParts& Parts() { return form->Parts(); }
  win::TreeView& Tree() { return Parts().TreeView1; }
  win::ListView& List() { return Parts().ListView1; }
  win::Menus& Menus() { return Parts().menus; }
  std::wstring Panel(int number) { return Parts().StatusBar1.PanelText(number); }

  // A menu command, as the menu bar sends it.
  void Command(std::wstring_view name) {
    ASSERT_NE(Menus().IdOf(name), 0u) << Narrow(name);
    SendMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(Menus().IdOf(name), 0), 0);
    win::DoEvents();
  }
  // A press and a release of a mouse button, as the pointing device posts them.
  static void Click(HWND window, POINT point, bool right = false) {
    const LPARAM where = MAKELPARAM(point.x, point.y);
    PostMessageW(window, right ? WM_RBUTTONDOWN : WM_LBUTTONDOWN, right ? MK_RBUTTON : MK_LBUTTON, where);
    PostMessageW(window, right ? WM_RBUTTONUP : WM_LBUTTONUP, 0, where);
    win::DoEvents();
  }

  // Categories.
  win::TreeNode& AddCategory(const std::wstring& key, const std::wstring& text,
                             win::TreeNode* parent = nullptr) {
    return Tree().Add(parent, parent ? win::Relationship::kChild : win::Relationship::kLast, key, text,
                      tree::kCategoryImage, tree::kSelectedCategoryImage);
  }
  void SelectCategory(win::TreeNode& node) {
    Tree().Select(&node);
    tree::TreeView1_NodeClick(Parts(), node);
  }
  POINT MiddleOf(win::TreeNode& node) {
    const RECT text = Tree().TextRectangle(node);
    return {(text.left + text.right) / 2, (text.top + text.bottom) / 2};
  }
  // Below every node.
  POINT EmptyTreeSpace() {
    RECT inner;
    GetClientRect(Tree().Handle(), &inner);
    return {inner.right / 2, inner.bottom - 3};
  }
  // What the control itself holds: "A(B,C(D)),E".
  std::wstring ShownTree(HTREEITEM parent = TVI_ROOT) {
    std::wstring shown;
    const HWND tree = Tree().Handle();
    for (HTREEITEM item = TreeView_GetChild(tree, parent); item; item = TreeView_GetNextSibling(tree, item)) {
      wchar_t text[300] = L"";
      TVITEMW info{};
      info.mask = TVIF_TEXT;
      info.hItem = item;
      info.pszText = text;
      info.cchTextMax = 300;
      SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&info));
      if (!shown.empty()) shown += L',';
      shown += info.pszText;
      if (TreeView_GetChild(tree, item)) shown += L'(' + ShownTree(item) + L')';
    }
    return shown;
  }

  // Items. The alias, file name, path, time and comment of one row.
  struct Item {
    std::wstring alias, fileName = L"f.txt", path = L"C:\\f.txt", time = L"11/15/2026 1:20:05 PM",
                        comment = L"";
  };
  void Execute(const std::wstring& sql) {
    store::Opened connection(Parts().connection);
    connection->Execute(sql);
    connection.Close();
  }
  void AddItem(const std::wstring& key, int number, const Item& item) {
    std::wstring sql = L"INSERT INTO FTable VALUES(" + store::Quoted(key) + L"," +
                       store::Quoted(std::to_wstring(number) + L"#" + key);
    for (const std::wstring* field : {&item.alias, &item.fileName, &item.path, &item.time, &item.comment}) {
      sql += L"," + store::Quoted(*field);
    }
    Execute(sql + L")");
  }
  // The texts of a query's rows, each row's fields joined by "|".
  std::vector<std::wstring> Query(const std::wstring& sql, std::size_t columns) {
    std::vector<std::wstring> found;
    store::Opened connection(Parts().connection);
    jet::Recordset rows;
    rows.Open(store::ToEngine(sql), connection->Ado());
    for (; !rows.EndOfFile(); rows.MoveNext()) {
      std::wstring line;
      for (std::size_t i = 0; i < columns; ++i) line += (i ? L"|" : L"") + store::ToWindows(rows.Text(i));
      found.push_back(line);
    }
    rows.Close();
    connection.Close();
    return found;
  }
  // A cell as the control shows it.
  std::wstring Cell(std::size_t row, int column) {
    wchar_t text[600] = L"";
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text;
    item.cchTextMax = 600;
    SendMessageW(List().Handle(), LVM_GETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item));
    return item.pszText;
  }
  std::vector<std::wstring> Column(int column) {
    std::vector<std::wstring> texts;
    for (std::size_t row = 0; row < List().Count(); ++row) texts.push_back(Cell(row, column));
    return texts;
  }
  POINT MiddleOfRow(std::size_t row) {
    RECT bounds{};
    ListView_GetItemRect(List().Handle(), static_cast<int>(row), &bounds, LVIR_BOUNDS);
    RECT inner;
    GetClientRect(List().Handle(), &inner);
    return {inner.right / 2, (bounds.top + bounds.bottom) / 2};
  }
  void ClickHeader(int column) {
    NMLISTVIEW click{};
    click.hdr = {List().Handle(), static_cast<UINT_PTR>(GetDlgCtrlID(List().Handle())), LVN_COLUMNCLICK};
    click.iItem = -1;
    click.iSubItem = column;
    SendMessageW(form->Handle(), WM_NOTIFY, click.hdr.idFrom, reinterpret_cast<LPARAM>(&click));
  }

  ScopedTestDir dir;
  FakeWorld world;
  Program program;
  std::deque<int> draws;
  std::vector<DWORD> trayMessages;  // NIM_…
  std::wstring trayTip;
  bool trayWorks = true;
  std::unique_ptr<app::MainForm> form;

 private:
  int lastDraw_ = 0;
};

// The entries of the popup menu that opens next; it is closed again without a choice.
class PopupMenuEntries {
 public:
  PopupMenuEntries()
      : watch_([](HWND window) { return GetClassLongPtrW(window, GCW_ATOM) == 32768; },
               [this](HWND window) {
                 const auto menu = reinterpret_cast<HMENU>(SendMessageW(window, MN_GETHMENU, 0, 0));
                 for (int i = 0; i < GetMenuItemCount(menu); ++i) {
                   wchar_t text[100] = L"";
                   GetMenuStringW(menu, static_cast<UINT>(i), text, 100, MF_BYPOSITION);
                   if (*text) captions_.push_back(text);
                 }
                 EndMenu();
               }) {}
  bool Shown() const { return watch_.Done(); }
  const std::vector<std::wstring>& Captions() const { return captions_; }

 private:
  std::vector<std::wstring> captions_;
  OnWindow watch_;
};

}  // namespace kestrelon::test
