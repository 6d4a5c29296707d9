#include "items/AliasAsFileName.h"

#include "app/base/Win32.h"

#include <shellapi.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "app/base/File.h"
#include "app/base/FileNames.h"
#include "items/EditItem.h"
#include "items/ShellFiles.h"
#include "store/SharedConnection.h"
#include "ui/win/Boxes.h"
#include "ui/win/CommandsOff.h"
#include "ui/win/Form.h"

namespace kestrelon::items {
namespace {

bool RenameFile(win::MainParts& parts, const std::wstring& from, const std::wstring& to) {
  return parts.world.shellFileOperation(parts.form.Handle(), FO_RENAME, from, to, FOF_NOERRORUI);
}

// The name of a file as its folder spells it; empty when there is none.
std::wstring NameOnDisk(const std::wstring& path) {
  WIN32_FIND_DATAW entry;
  const HANDLE search = ::FindFirstFileW(path.c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return {};
  ::FindClose(search);
  return entry.cFileName;
}

// The name that the file will have in its folder. The "." before an extension that is not there is one that
// the system drops; the new path may only lie in the same folder, for to rename is not to move.
std::wstring NewNameOf(const std::wstring& file, const std::wstring& newPath) {
  std::wstring name = newPath.substr(FolderOfPath(file).size());
  if (ExtensionOf(file).empty() && name.ends_with(L'.')) name.pop_back();
  return name;
}

// The shell is asked only where nothing is in the way: it might find a name of its own for the file, or
// replace another one.
bool CanBeRenamed(const std::wstring& file, const std::wstring& newPath) {
  if (file == newPath || !IsThere(file)) return false;
  return EqualNoCase(file, newPath) || !IsThere(newPath);
}

// What the shell says is not enough: is the file where the item will say that it is?
bool WasRenamed(const std::wstring& file, const std::wstring& newPath) {
  if (EqualNoCase(file, newPath)) return NameOnDisk(newPath) == FileNameOfPath(newPath);
  return !IsThere(file) && IsThere(newPath);
}

void NameFileAsItem(win::MainParts& parts, std::size_t row, TooLongPaths& tooLong) {
  const win::ListRow& item = parts.ListView1.Rows()[row];
  const std::wstring alias(item.Text(kAliasColumn)), fileIndex(item.Tag());
  const std::optional<std::wstring> file = ShellPathOf(item.Text(kPathColumn));
  if (alias.empty() || !file) return;
  const std::wstring newName = NewNameOf(*file, PathNamedAs(alias, *file));
  const std::wstring newPath = FolderOfPath(*file) + newName;
  if (!IsFileName(newName) || tooLong.Refuse(*file, newPath) || !CanBeRenamed(*file, newPath)) return;
  // Before the file is renamed: a text that no statement takes is none to begin with.
  const std::wstring statement = FileNameStatement(newName, newPath, fileIndex);
  if (!RenameFile(parts, *file, newPath) || !WasRenamed(*file, newPath)) return;
  if (ChangeItem(parts, [&] { return statement; })) {
    // Else the item would point to a file that is gone.
    RenameFile(parts, newPath, *file);
    return;
  }
  // At once, not at the end of the command: after a crash the table is to say what the files are called.
  if (!win::Quietly([&] { parts.connection.Write(); })) {
    RenameFile(parts, newPath, *file);
    ChangeItem(parts, [&] {
      return FileNameStatement(item.Text(kFileNameColumn), item.Text(kPathColumn), fileIndex);
    });
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
    TooLongPaths tooLong;
    for (const std::size_t row : rows) {
      if (parts.closeRequested) break;
      win::Quietly([&] { NameFileAsItem(parts, row, tooLong); });
      win::DoEvents();
    }
    tooLong.Tell(parts);
    connection.Close();
  });
}

}  // namespace kestrelon::items
