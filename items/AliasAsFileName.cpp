#include "items/AliasAsFileName.h"

#include "app/base/Win32.h"

#include <shellapi.h>

#include <algorithm>
#include <vector>

#include "app/base/File.h"
#include "items/EditItem.h"
#include "store/SharedConnection.h"
#include "ui/win/Boxes.h"
#include "ui/win/CommandsOff.h"
#include "ui/win/Form.h"

namespace kestrelon::items {
namespace {

bool RenameFile(win::MainParts& parts, const std::wstring& from, const std::wstring& to) {
  return parts.world.shellFileOperation(parts.form.Handle(), FO_RENAME, from, to, FOF_NOERRORUI);
}

// Would the new path lie in another folder? It does when the alias holds a separator, when the last "." of
// the path belongs to a folder, and when the path names no folder. To rename is not to move, also where the
// shell would do it.
bool LeavesTheFolder(std::wstring_view from, std::wstring_view to) {
  const std::wstring folder = FolderOfPath(from);
  return folder.empty() || to.substr(folder.size()).find_first_of(L"\\/") != std::wstring_view::npos;
}

void NameFileAsItem(win::MainParts& parts, std::size_t row) {
  const win::ListRow& item = parts.ListView1.Rows()[row];
  const std::wstring alias(item.Text(kAliasColumn)), path(item.Text(kPathColumn)), fileIndex(item.Tag());
  if (alias.empty() || path.empty()) return;
  const std::wstring newPath = PathNamedAs(alias, path);
  if (LeavesTheFolder(path, newPath) || !RenameFile(parts, path, newPath)) return;
  const std::wstring newName = FileNameOfPath(newPath);
  if (!ChangeItem(parts, FileNameStatement(newName, newPath, fileIndex))) {
    // Else the item would point to a file that is gone.
    RenameFile(parts, newPath, path);
    return;
  }
  parts.ListView1.SetText(row, kPathColumn, newPath);
  parts.ListView1.SetText(row, kFileNameColumn, newName);
}

}  // namespace

std::wstring PathNamedAs(std::wstring_view alias, std::wstring_view path) {
  return FolderOfPath(path) + std::wstring(alias) + L"." + ExtensionOf(path);
}

std::wstring FileNameStatement(std::wstring_view fileName, std::wstring_view path,
                               std::wstring_view fileIndex) {
  return L"UPDATE FTable SET Filename=" + store::Quoted(fileName) + L", LocalFile=" + store::Quoted(path) +
         L" WHERE FileIndex=" + store::Quoted(fileIndex);
}

void meu_Definenameasfilename_Click(win::MainParts& parts) {
  const std::vector<std::size_t> rows = parts.ListView1.SelectedRows();
  if (rows.empty()) return;
  win::Quietly([&] {
    store::Opened connection(parts.connection);
    // While the window goes on living, nothing may change the rows.
    const win::CommandsOff off(parts, {L"meu_file", L"meu_Category", L"meu_List"});
    for (const std::size_t row : rows) {
      if (parts.closeRequested) break;
      NameFileAsItem(parts, row);
      win::DoEvents();
    }
    connection.Close();
  });
}

}  // namespace kestrelon::items
