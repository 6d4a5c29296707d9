#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/KeyInput.h"
#include "tests/ui/Host.h"
#include "ui/win/ListView.h"

namespace kestrelon::test {

using Names = std::vector<std::wstring>;

// The item list in a window: an icon column of fixed width and five others.
struct ListFixture : testing::Test {
  ListFixture() {
    list.Create(host.Handle(), 61);
    host.list = &list;
    SetWindowPos(list.Handle(), nullptr, 0, 0, 700, 400, SWP_NOZORDER);
    list.AddColumn(L"", 22, true);
    for (const wchar_t* caption : {L"Alias", L"File name", L"Local File", L"Insert time", L"Comment"})
      list.AddColumn(caption, 120);
  }
  static win::ListRow Row(const std::wstring& alias, const std::wstring& time = L"") {
    win::ListRow row;
    row.Set({alias, alias + L".txt", L"C:\\" + alias + L".txt", time, L""}, alias + L"#K_");
    return row;
  }
  void Fill(const Names& aliases) {
    std::vector<win::ListRow> rows;
    for (const std::wstring& alias : aliases) rows.push_back(Row(alias));
    list.SetRows(std::move(rows));
  }
  Names Aliases() {
    Names aliases;
    for (const win::ListRow& row : list.Rows()) aliases.emplace_back(row.Text(1));
    return aliases;
  }
  Names SelectedAliases() {
    Names aliases;
    for (const std::size_t row : list.SelectedRows()) aliases.emplace_back(list.Rows()[row].Text(1));
    return aliases;
  }
  // What the control would draw.
  std::wstring Shown(int row, int column) {
    wchar_t text[500] = {};
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text;
    item.cchTextMax = 500;
    SendMessageW(list.Handle(), LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    return text;
  }
  LRESULT ShownCount() { return SendMessageW(list.Handle(), LVM_GETITEMCOUNT, 0, 0); }
  POINT OnRow(int row) {
    RECT rectangle{};
    rectangle.left = LVIR_BOUNDS;
    SendMessageW(list.Handle(), LVM_GETITEMRECT, static_cast<WPARAM>(row),
                 reinterpret_cast<LPARAM>(&rectangle));
    return {60, (rectangle.top + rectangle.bottom) / 2};
  }
  POINT BelowTheRows() { return {60, 380}; }

  Host host;
  win::ListView list;
};

}  // namespace kestrelon::test
