#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"
#include "store/CategoryRows.h"
#include "ui/win/MainParts.h"

namespace kestrelon::store {

// The start-up test: can "Temp.dat" in the data folder be opened? Shows its box and returns false when it
// cannot.
bool ConnectDatabase(const Program& program, OutsideWorld& world);
// The same for any way to connect: `connect` throws when it fails.
bool ConnectDatabase(OutsideWorld& world, const std::function<void()>& connect);

// The connection string of a database file, in the long form (working database, test) and the short one
// (compaction).
std::wstring ConnectionStringOf(const std::wstring& path);
std::wstring ShortConnectionStringOf(const std::wstring& path);

// The save slots: complete copies of the working database in the data folder.
inline constexpr int kSlots = 4;
// "Data2.dat": the bare name of a slot's file; slots count from 0.
std::wstring SlotFile(int slot);

// Writes the tree control's nodes into TreeviewTable, parents before children, siblings in order. Throws.
void SaveTree(win::MainParts& parts);
// Rebuilds the tree control from TreeviewTable. Throws on a row without its parent or with a key that is
// taken, with the tree as it was.
void LoadTree(win::MainParts& parts);
// The same from rows that ReadCategoryRows() gave.
void ShowTree(win::MainParts& parts, const std::vector<CategoryRow>& rows);
// Empties the tree control and the item list: no category is current, "0 Objects".
void ShowEmptyTree(win::MainParts& parts);

// Brings a slot ("Data2.dat", a bare name in the data folder) or the unsaved collection into the working
// database and rebuilds the tree; a slot that is not there yet is made from the template and an empty tree
// shown. What was not saved before is set aside first. Everything that can fail is tried on a copy: after a
// failure (box "LoadData Error:") tree, list, working database and unsaved changes are as they were. True
// when loaded.
bool LoadData(win::MainParts& parts, const std::wstring& fileName);
// Asks, writes the tree, compacts and copies the working database into a slot. True when saved. The slot is
// its old content or the new one at any moment. Box: "SaveData Error:". A database that could not be packed
// (box of CompactJetDatabase) is saved as it is. `owner` is the window that the question belongs to.
bool SaveData(win::MainParts& parts, const std::wstring& fileName, HWND owner);

// The one-level copy of all items inside the working database, and its way back. True when done; otherwise
// the items are as they were.
bool BackUpDatas(win::MainParts& parts);
bool RestoreDatas(win::MainParts& parts);

// Packs a database file by way of "temp.dat" in the temporary folder; with `backupOriginal` a copy is left in
// "backup.dat" there. Does nothing, successfully, when no file exists at `location`. False after a failure
// (shown in the box "CompactJetDatabase Error"); `location` is still whole then.
bool CompactJetDatabase(OutsideWorld& world, HWND owner, const std::wstring& location, bool backupOriginal);

}  // namespace kestrelon::store
