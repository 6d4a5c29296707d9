#include "items/ShowData.h"

#include <vector>

#include "items/ItemCommands.h"
#include "store/SharedConnection.h"
#include "ui/win/Boxes.h"

namespace kestrelon::items {
namespace {

std::wstring_view View(std::u16string_view text) {
  return {reinterpret_cast<const wchar_t*>(text.data()), text.size()};
}

std::vector<win::ListRow> ReadRows(win::MainParts& parts, const std::wstring& nodeKey) {
  store::Opened connection(parts.connection);
  jet::Recordset items;
  items.Open(store::ToEngine(L"SELECT * FROM FTable WHERE TreeviewNode=" + store::Quoted(nodeKey)), connection->Ado());
  std::vector<win::ListRow> rows;
  rows.reserve(items.RecordCount());
  for (; !items.EndOfFile(); items.MoveNext()) {
    rows.emplace_back().Set({View(items.Text(u"DefineName")), View(items.Text(u"Filename")),
                             View(items.Text(u"LocalFile")), View(items.Text(u"InsertTime")),
                             View(items.Text(u"Comment"))},
                            View(items.Text(u"FileIndex")));
  }
  items.Close();
  connection.Close();
  return rows;
}

}  // namespace

void ShowData(win::MainParts& parts, const std::wstring& nodeKey) {
  parts.ListView1.SetRows(win::InRoutine(parts.world, parts.form.Handle(), L"ShowData Error:",
                                         std::vector<win::ListRow>{}, [&] { return ReadRows(parts, nodeKey); }));
  win::ShowObjectCount(parts);
  EnableItemCommands(parts);
}

void ClearList(win::MainParts& parts) {
  parts.ListView1.Clear();
  win::ShowObjectCount(parts);
  EnableItemCommands(parts);
}

}  // namespace kestrelon::items
