// The operations on whole database files: slots, the backup of the items, compaction.

#include <optional>
#include <stdexcept>
#include <vector>

#include "app/base/File.h"
#include "jet/database/Database.h"
#include "lang/SelectLanguage.h"
#include "store/Schema.h"
#include "store/SharedConnection.h"
#include "store/Store.h"
#include "store/UnsavedCollection.h"
#include "store/WholeFile.h"
#include "ui/win/Boxes.h"
#include "ui/win/Handles.h"

namespace kestrelon::store {

namespace {

std::wstring WorkingDatabase(const Program& program) { return program.dataFolder + program.workingDatabase; }

// Texts can be written into the column and read back. The time of an item was kept as a date in collections
// made elsewhere: a date is read from the text, and comes back as one.
bool TakesTexts(const jet::Column& column) {
  return column.type == jet::ColumnType::kText || column.type == jet::ColumnType::kMemo ||
         (column.type == jet::ColumnType::kDate && column.name == u"InsertTime");
}

// Finds our columns in a table. Throws unless the program's statements mean the same by them as in a table of
// our own.
std::vector<std::size_t> FindColumns(const jet::NewTable& wanted, const jet::Table& table) {
  const std::u16string of = u" of the table '" + wanted.name + u"'";
  // Items are added without naming the columns. Categories are added by name, so that columns beside ours and
  // another order do no harm there.
  const bool byPosition = wanted.primaryKey.empty();
  std::vector<std::size_t> columns;
  for (const jet::NewColumn& column : wanted.columns) {
    const std::optional<std::size_t> found = table.FindColumn(column.name);
    if (!found) {
      throw jet::Error(jet::code::kMissingParameter,
                       u"The table '" + wanted.name + u"' has no column '" + column.name + u"'.");
    }
    const jet::Column& there = table.Columns()[*found];
    if (column.autoNumber ? !there.autoNumber : !TakesTexts(there)) {
      throw jet::Error(jet::code::kTypeMismatch,
                       u"The column '" + column.name + u"'" + of +
                           (column.autoNumber ? u" does not number its rows." : u" does not hold text."));
    }
    if (byPosition && *found != columns.size()) {
      throw jet::Error(jet::code::kMissingParameter,
                       u"The column '" + column.name + u"'" + of + u" is not in its place.");
    }
    columns.push_back(*found);
  }
  if (byPosition && table.Columns().size() > columns.size()) {
    throw jet::Error(jet::code::kMissingParameter, u"The column '" + table.Columns()[columns.size()].name +
                                                       u"'" + of + u" is one too many.");
  }
  return columns;
}

// Throws unless the file has our tables, whose columns mean what ours do, and can be changed. Tables beside
// them, indexes and other widths do no harm.
void CheckIsOurs(const std::wstring& path) {
  const auto database = jet::Database::Open(jet::OpenFile(path, jet::OpenMode::kRead), ToEngine(path));
  for (const jet::NewTable& wanted : Schema()) {
    jet::Table& table = database->OpenTable(wanted.name);
    table.CheckChangeable();
    FindColumns(wanted, table);
  }
}

std::vector<CategoryRow> CategoriesIn(const std::wstring& path) {
  jet::Connection connection;
  connection.SetConnectionString(ToEngine(ShortConnectionStringOf(path)));
  connection.Open();
  std::vector<CategoryRow> rows = ReadCategoryRows(connection);
  connection.Close();
  return rows;
}

std::wstring FolderForScratch() {
  std::wstring folder = TemporaryFolder();
  if (folder.empty()) throw std::runtime_error("The system has no temporary folder.");
  return folder;
}

void EmptyTables(win::MainParts& parts) {
  Opened database(parts.connection);
  database->Execute(L"DELETE * FROM Fbackup");
  database->Execute(L"DELETE * FROM TreeviewTable");
  database->Execute(L"DELETE * FROM FTable");
  database.Close();
}

void WriteTree(win::MainParts& parts) {
  const std::wstring shown = parts.StatusBar1.PanelText(1);
  parts.StatusBar1.SetPanelText(1, L"Saving ....  ");
  ::UpdateWindow(parts.StatusBar1.Handle());  // nothing else draws it before the work is done
  const win::Finally showAgain([&] { parts.StatusBar1.SetPanelText(1, shown); });
  SaveTree(parts);
}

// Programs with data folders of their own share the temporary folder of the user, and the scratch file there
// has one name for all: one of them at a time.
class Turn {
 public:
  explicit Turn(const std::wstring& folder)
      : mutex_(::CreateMutexW(nullptr, FALSE, (L"Global\\KestrelonPacking-" + IdentityOf(folder)).c_str())) {
    constexpr DWORD kPatience = 10'000;  // milliseconds
    if (!mutex_) ThrowLastError(L"Cannot use " + folder);
    if (::WaitForSingleObject(mutex_.get(), kPatience) == WAIT_TIMEOUT)
      throw std::runtime_error("Another Kestrelon is packing its database.");
  }
  ~Turn() { ::ReleaseMutex(mutex_.get()); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  win::Unique<HANDLE, ::CloseHandle> mutex_;
};

// The unsaved collection that was set aside before, out of the way of the one that is about to take its
// place, until that is certain.
class EarlierUnsaved {
 public:
  explicit EarlierUnsaved(const Program& program) : path_(program.dataFolder + kUnsavedFile) {}
  ~EarlierUnsaved() {
    if (!kept_) return;
    if (replaced_) {
      win::Quietly([&] { DeleteIfThere(Copy()); });
    } else {
      Persistently(
          [&] { return ::MoveFileExW(Copy().c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE; });
    }
  }
  EarlierUnsaved(const EarlierUnsaved&) = delete;
  EarlierUnsaved& operator=(const EarlierUnsaved&) = delete;
  // A copy, so that there is one under its name at any moment.
  void Keep() {
    if (!FileExists(path_)) return;
    ReplaceByCopy(path_, Copy());
    kept_ = true;
  }
  void Replaced() { replaced_ = true; }

 private:
  std::wstring Copy() const { return path_ + L".old"; }
  std::wstring path_;
  bool kept_ = false, replaced_ = false;
};

}  // namespace

void CheckIsWhole(const std::wstring& path) {
  const auto database = jet::Database::Open(jet::OpenFile(path, jet::OpenMode::kRead), ToEngine(path));
  for (const jet::Finding& finding : database->Check()) {
    if (finding.kind == jet::Finding::Kind::kDamage)
      throw std::runtime_error("The database is damaged: " + finding.text);
  }
}

std::wstring SlotFile(int slot) { return L"Data" + std::to_wstring(slot) + L".dat"; }

bool LoadData(win::MainParts& parts, const std::wstring& fileName) {
  const HWND owner = parts.form.Handle();
  return win::InRoutine(parts.world, owner, L"LoadData Error:", false, [&] {
    const std::wstring slot = parts.program.dataFolder + fileName;
    const bool unsaved = fileName == kUnsavedFile;
    std::vector<CategoryRow> rows;
    if (FileExists(slot)) {
      const bool hadChanges = parts.unsaved != nullptr && parts.unsaved->Any();
      bool replaced = false;
      EarlierUnsaved earlier(parts.program);
      const win::Finally keepOn([&] {
        if (replaced || !hadChanges || parts.unsaved->Any()) return;
        // Until what is shown is on disk again by itself, the copy that was set aside is all there is of it.
        if (!win::Quietly([&] { parts.unsaved->Unsettle(); })) earlier.Replaced();
      });
      ReplaceByCopy(slot, WorkingDatabase(parts.program), [&](const std::wstring& copy) {
        CheckIsOurs(copy);
        CheckIsWhole(copy);
        rows = CategoriesIn(copy);
        if (parts.unsaved == nullptr) return;
        if (hadChanges) earlier.Keep();
        parts.unsaved->SetAside();
        parts.unsaved->Settle();
      });
      replaced = true;
      earlier.Replaced();
      parts.connection.Forget();
    } else if (unsaved) {
      throw std::runtime_error("There is no unsaved collection.");
    } else {
      if (parts.unsaved != nullptr) parts.unsaved->SetAside();
      ReplaceByCopy(parts.program.dataFolder + L"Temp.dat", slot);
    }
    ShowTree(parts, rows);
    if (unsaved) win::MarkChanged(parts);  // leaving asks: it is in no slot
    if (parts.unsaved == nullptr) return true;
    // It is loaded. What cannot be noted now for a crash is tried again with the next change.
    win::Quietly([&] {
      if (unsaved) {
        parts.unsaved->Unsettle();
      } else {
        parts.unsaved->Settle();
      }
    });
    return true;
  });
}

bool SaveData(win::MainParts& parts, const std::wstring& fileName, HWND owner) {
  return win::InRoutine(parts.world, owner, L"SaveData Error:", false, [&] {
    Program& program = parts.program;
    // Widths that cannot be kept are no reason not to keep the collection.
    win::InRoutine(parts.world, owner, L"SaveData Error:", false, [&] {
      win::WriteViewSettings(parts);
      return true;
    });
    if (parts.world.messageBox(owner, lang::Message(program, lang::kReplaceQuestion), program.productName,
                               MB_OKCANCEL | MB_ICONQUESTION) != IDOK) {
      return false;
    }
    if (parts.TreeView1.Count() == 0) {
      EmptyTables(parts);
    } else {
      WriteTree(parts);
    }
    // The exit question must not be left out before the slot has the content.
    program.databaseSaved = true;
    bool slotWritten = false;
    const win::Finally takeBack([&] { program.databaseSaved = slotWritten; });
    const std::wstring working = WorkingDatabase(program);
    parts.connection.Ado().Checkpoint();  // the packed file has other pages than the log
    const bool packed = CompactJetDatabase(parts.world, owner, working, false);
    parts.connection.Forget();
    ReplaceByCopy(working, program.dataFolder + fileName, [&](const std::wstring& copy) {
      // Packing reads all there is. Without it a fault in the database is not to take the place of a sound
      // slot.
      if (!packed) CheckIsWhole(copy);
    });
    slotWritten = true;
    // The slot is there: what is kept beside it for after a crash is none of the user's worries.
    if (parts.unsaved != nullptr) win::Quietly([&] { parts.unsaved->Settle(); });
    return true;
  });
}

bool BackUpDatas(win::MainParts& parts) {
  return win::InRoutine(parts.world, parts.form.Handle(), L"BackUpDatas Error:", false, [&] {
    Opened database(parts.connection);
    database->Execute(L"DELETE FROM FBackup");
    database->Execute(L"INSERT INTO FBackup SELECT * FROM FTablE");
    database.Close();
    return true;
  });
}

bool RestoreDatas(win::MainParts& parts) {
  return win::InRoutine(parts.world, parts.form.Handle(), L"RestoreDatas Error:", false, [&] {
    const bool open = parts.connection.IsOpen();
    if (open) parts.connection.Write();  // so that giving up what follows gives up nothing else
    Opened database(parts.connection);
    try {
      database->Execute(L"DELETE FROM FTable");
      database->Execute(L"INSERT INTO FTable SELECT * FROM FBackup");
      database.Close();
    } catch (...) {
      // The items that were there come back.
      parts.connection.Ado().Abandon();
      if (open) parts.connection.Ado().Open();
      throw;
    }
    return true;
  });
}

bool CompactJetDatabase(OutsideWorld& world, HWND owner, const std::wstring& location, bool backupOriginal) {
  return win::InRoutine(world, owner, L"CompactJetDatabase Error", false, [&] {
    jet::JetEngine engine;
    if (!FileExists(location)) return true;
    const std::wstring folder = FolderForScratch(), scratch = folder + L"temp.dat";
    const Turn turn(folder);
    if (backupOriginal) ReplaceByCopy(location, folder + L"backup.dat");
    DeleteIfThere(scratch);
    const win::Finally removeScratch([&] { ::DeleteFileW(scratch.c_str()); });
    engine.CompactDatabase(ToEngine(ShortConnectionStringOf(location)),
                           ToEngine(ShortConnectionStringOf(scratch)));
    ReplaceByCopy(scratch, location);
    return true;
  });
}

}  // namespace kestrelon::store
