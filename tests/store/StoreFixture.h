#pragma once

#include "app/base/Win32.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "app/base/File.h"
#include "jet/base/File.h"
#include "jet/database/Database.h"
#include "store/Schema.h"
#include "store/SharedConnection.h"
#include "store/Store.h"
#include "tests/support/FakeWorld.h"
#include "tests/support/Pump.h"
#include "tests/support/ScopedTestDir.h"
#include "ui/win/MainParts.h"

namespace kestrelon::store {

// A file that somebody else has open and shares with nobody.
class Locked {
 public:
  explicit Locked(const std::wstring& path)
      : handle_(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
    EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
  }
  ~Locked() { CloseHandle(handle_); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  HANDLE handle_;
};

// The bytes of the empty template.
inline const std::string& TemplateBytes() {
  static const std::string bytes = [] {
    const auto memory = std::make_shared<std::vector<std::uint8_t>>();
    jet::CreateDatabase(*jet::OpenMemoryFile(memory), Schema(), 46023);
    return std::string(memory->begin(), memory->end());
  }();
  return bytes;
}

// Rows of a query on a closed database file, the fields joined by "|".
inline std::vector<std::wstring> RowsOf(const std::wstring& path, std::wstring_view sql,
                                        std::initializer_list<const char16_t*> columns) {
  jet::Connection connection;
  connection.SetConnectionString(ToEngine(ConnectionStringOf(path)));
  connection.Open();
  jet::Recordset rows;
  rows.Open(ToEngine(sql), connection);
  std::vector<std::wstring> result;
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    std::wstring line;
    for (const char16_t* column : columns) {
      if (column != *columns.begin()) line += L'|';
      line += ToWindows(rows.Text(column));
    }
    result.push_back(line);
  }
  rows.Close();
  connection.Close();
  return result;
}

// A database file made by statements.
inline void MakeDatabase(const std::wstring& path, const std::vector<std::wstring>& statements,
                         const std::vector<jet::NewTable>& tables = Schema()) {
  {
    const auto file = jet::OpenFile(path, jet::OpenMode::kCreate);
    jet::CreateDatabase(*file, tables, 46023);
    file->Flush();
  }
  jet::Connection connection;
  connection.SetConnectionString(ToEngine(ConnectionStringOf(path)));
  connection.Open();
  for (const std::wstring& statement : statements) connection.Execute(ToEngine(statement));
  connection.Close();
}

inline std::wstring InsertItem(const std::wstring& key, const std::wstring& index,
                               const std::wstring& alias) {
  std::wstring sql = L"INSERT INTO FTable VALUES(" + Quoted(key);
  for (const std::wstring& value : {index, alias, alias + L".txt", L"C:\\files\\" + alias + L".txt",
                                    std::wstring(L"1/1/2026 1:00:00 AM")}) {
    sql += L"," + Quoted(value);
  }
  return sql + L",'')";
}

inline std::wstring InsertCategory(const std::wstring& parent, const std::wstring& key,
                                   const std::wstring& text) {
  return L"INSERT INTO TreeviewTable (parent, [key], [text]) VALUES(" + Quoted(parent) + L"," + Quoted(key) +
         L"," + Quoted(text) + L")";
}

using Content = std::vector<std::wstring>;

// Items and categories of a database file as texts. Throws jet::Error for a file that cannot be read.
inline Content ContentOf(const std::wstring& path) {
  Content content = RowsOf(path, L"SELECT * FROM FTable", {u"TreeviewNode", u"FileIndex", u"DefineName"});
  std::sort(content.begin(), content.end());
  for (std::wstring& row :
       RowsOf(path, L"SELECT * FROM TreeviewTable order by i", {u"parent", u"key", u"text"}))
    content.push_back(std::move(row));
  return content;
}

inline std::vector<jet::Finding> FaultsOf(const std::wstring& path) {
  return jet::Database::Open(jet::OpenFile(path, jet::OpenMode::kRead), ToEngine(path))->Check();
}

class PartsForm : public win::Form {
 public:
  PartsForm() : Form(L"MainForm") { Create({}); }
};

// What the store sees of the main window, with real controls, over a data folder of the test's own that holds
// the template and a fresh working database. The system's temporary folder is one of the test's own as well.
class StoreTest : public testing::Test {
 protected:
  StoreTest() : temporary(dir.Path(L"tmp\\")), oldTmp(Environment(L"TMP")) {
    dir.WriteFile(L"tmp\\keep", "");
    SetEnvironmentVariableW(L"TMP", temporary.c_str());
    dir.WriteFile(L"KestrelonData\\Temp.dat", TemplateBytes());
    dir.WriteFile(L"KestrelonData\\default.dat", TemplateBytes());
    dir.settings.CreateWithDefaults();
    tree.Create(form.Handle(), 10);
    list.Create(form.Handle(), 11);
    list.AddColumn(L"", 20, true);
    for (const wchar_t* caption : {L"Alias", L"File name", L"Local File", L"Insert time", L"Comment"}) {
      list.AddColumn(caption, 96);
    }
    status.Create(form.Handle(), 12);
    status.SetPanelWidths({300, 100});
    static constexpr win::MenuLine kLines[] = {{0, L"meu_List", L"&List"},
                                               {1, L"meu_ShowItemInfo", L"Show item info"},
                                               {1, L"meu_aa", L"&Enabled drag and drop"}};
    menus.Create(form, kLines, std::size(kLines), 200);
  }
  ~StoreTest() override { SetEnvironmentVariableW(L"TMP", oldTmp.c_str()); }

  static std::wstring Environment(const wchar_t* name) {
    wchar_t value[512] = L"";
    GetEnvironmentVariableW(name, value, 512);
    return value;
  }

  std::wstring Data(std::wstring_view name) const { return dir.program.dataFolder + std::wstring(name); }
  std::wstring Working() const { return Data(L"default.dat"); }

  win::TreeNode& AddCategory(win::TreeNode* parent, const std::wstring& key, const std::wstring& text) {
    return tree.Add(parent, parent == nullptr ? win::Relationship::kLast : win::Relationship::kChild, key,
                    text);
  }
  void Execute(const std::wstring& sql) {
    Opened database(connection);
    database->Execute(sql);
    database.Close();
  }

  // The tree as "key=text(children)": what the model holds.
  std::wstring Shape() const { return ShapeOf(tree.FirstRoot()); }
  static std::wstring ShapeOf(const win::TreeNode* node) {
    std::wstring shape;
    for (; node != nullptr; node = node->Next()) {
      if (!shape.empty()) shape += L' ';
      shape += node->Key() + L"=" + node->Text();
      if (node->Child() != nullptr) shape += L"(" + ShapeOf(node->Child()) + L")";
    }
    return shape;
  }

  // The one box that was shown.
  void ExpectBox(const wchar_t* title) {
    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].title, title);
    EXPECT_EQ(world.boxes[0].flags, UINT{MB_OK | MB_ICONEXCLAMATION});
    EXPECT_TRUE(world.boxes[0].text.starts_with(L"Unkonw Error:")) << Narrow(world.boxes[0].text);
    EXPECT_GT(world.boxes[0].text.size(), std::wstring(L"Unkonw Error:").size());
  }
  // No half-made copies stay in the data folder.
  void ExpectOnlyWholeFiles() {
    for (const auto& entry : std::filesystem::directory_iterator(dir.program.dataFolder)) {
      EXPECT_TRUE(entry.path().extension() == L".dat") << Narrow(entry.path().wstring());
    }
  }

  test::FakeWorld world;
  test::ScopedTestDir dir;
  std::wstring temporary, oldTmp;
  PartsForm form;
  win::TreeView tree;
  win::ListView list;
  win::StatusBar status;
  win::Toolbar toolbar;
  win::Menus menus;
  SharedConnection connection{dir.program.connectionString};
  win::MainParts parts{dir.program, world,  dir.settings, form,  tree,
                       list,        status, toolbar,      menus, connection};
};

}  // namespace kestrelon::store
