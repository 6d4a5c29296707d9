#include "items/ShowData.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "items/ItemCommands.h"
#include "store/SharedConnection.h"
#include "ui/win/Boxes.h"

namespace kestrelon::items {
namespace {

// The list's columns 1 to 5, and the row's tag.
constexpr std::array<std::u16string_view, 6> kFields = {u"DefineName", u"Filename", u"LocalFile",
                                                        u"InsertTime", u"Comment",  u"FileIndex"};

std::wstring_view View(std::u16string_view text) {
  return {reinterpret_cast<const wchar_t*>(text.data()), text.size()};
}

std::vector<win::ListRow> ReadRows(win::MainParts& parts, const std::wstring& nodeKey) {
  store::Opened connection(parts.connection);
  jet::Recordset items;
  items.Open(store::ToEngine(L"SELECT * FROM FTable WHERE TreeviewNode=" + store::Quoted(nodeKey)),
             connection->Ado());
  // By position, found once: a category may hold very many items.
  std::array<std::size_t, 6> fields;
  std::transform(kFields.begin(), kFields.end(), fields.begin(),
                 [&](std::u16string_view name) { return items.FieldIndex(name); });
  std::vector<win::ListRow> rows;
  rows.reserve(items.RecordCount());
  win::ListRowMaker maker;
  std::u16string joined;
  std::array<std::uint32_t, 6> ends;
  for (; !items.EndOfFile(); items.MoveNext()) {
    joined.clear();
    for (std::size_t i = 0; i < fields.size(); ++i) {
      items.AppendText(fields[i], joined);
      ends[i] = static_cast<std::uint32_t>(joined.size());
    }
    rows.push_back(maker.Make(View(joined), ends));
  }
  items.Close();
  connection.Close();
  return rows;
}

}  // namespace

void ShowData(win::MainParts& parts, const std::wstring& nodeKey) {
  parts.ListView1.SetRows(win::InRoutine(parts.world, parts.form.Handle(), L"ShowData Error:",
                                         std::vector<win::ListRow>{},
                                         [&] { return ReadRows(parts, nodeKey); }));
  win::ShowObjectCount(parts);
  EnableItemCommands(parts);
}

void ClearList(win::MainParts& parts) {
  parts.ListView1.Clear();
  win::ShowObjectCount(parts);
  EnableItemCommands(parts);
}

}  // namespace kestrelon::items
