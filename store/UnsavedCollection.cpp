#include "store/UnsavedCollection.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <system_error>

#include "app/base/File.h"
#include "store/SharedConnection.h"
#include "store/Store.h"
#include "store/TreeFile.h"
#include "store/WholeFile.h"
#include "ui/win/Boxes.h"
#include "ui/win/Handles.h"

namespace kestrelon::store {
namespace {

std::wstring WorkingDatabase(const Program& program) { return program.dataFolder + program.workingDatabase; }
std::wstring LogOf(const Program& program) { return WorkingDatabase(program) + L".log"; }
std::wstring TreeFileOf(const Program& program, std::uint64_t version) {
  return WorkingDatabase(program) + L".tree" + std::to_wstring(version);
}

std::uint64_t Now() {
  FILETIME now;
  ::GetSystemTimeAsFileTime(&now);
  return std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
}

// What the engine's log keeps with each write.
struct Note {
  std::uint64_t tree = 0;                       // version of the tree's file; 0: the tree is in the database
  std::uint64_t changed = 0;                    // when, in 100 ns since 1601, UTC
  std::uint64_t state = 0;                      // of these:
  static constexpr std::uint64_t kUnsaved = 1;  // the collection is in no slot
  static constexpr std::uint64_t kTreeBehind = 2;  // items have changed since, but this tree could not
};

std::vector<std::uint8_t> BytesOf(const Note& note) {
  std::vector<std::uint8_t> bytes(sizeof note);
  std::memcpy(bytes.data(), &note, sizeof note);
  return bytes;
}

std::optional<Note> NoteOf(const std::vector<std::uint8_t>& bytes) {
  Note note;
  if (bytes.size() != sizeof note) return std::nullopt;
  std::memcpy(&note, bytes.data(), sizeof note);
  return note;
}

// The names of the data folder's files that fit a pattern.
std::vector<std::wstring> FilesLike(const Program& program, const std::wstring& pattern) {
  std::vector<std::wstring> names;
  WIN32_FIND_DATAW found;
  const HANDLE search = ::FindFirstFileW((program.dataFolder + pattern).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return names;
  const win::Finally close([&] { ::FindClose(search); });
  do {
    names.emplace_back(found.cFileName);
  } while (::FindNextFileW(search, &found));
  return names;
}

void DeleteTreeFiles(const Program& program) {
  for (const std::wstring& name : FilesLike(program, program.workingDatabase + L".tree*"))
    win::Quietly([&] { DeleteIfThere(program.dataFolder + name); });
}

jet::Connection OpenedAt(const std::wstring& path) {
  jet::Connection connection;
  connection.SetConnectionString(ToEngine(ShortConnectionStringOf(path)));
  connection.Open();
  return connection;
}

// Are the rows of a table the same, in the same order?
bool SameRows(jet::Connection& a, jet::Connection& b, std::u16string_view table) {
  constexpr std::array<std::u16string_view, 7> kFields = {
      u"TreeviewNode", u"FileIndex", u"DefineName", u"Filename", u"LocalFile", u"InsertTime", u"Comment"};
  const std::u16string sql = u"SELECT * FROM " + std::u16string(table);
  jet::Recordset rowsA, rowsB;
  rowsA.Open(sql, a);
  rowsB.Open(sql, b);
  if (rowsA.RecordCount() != rowsB.RecordCount()) return false;
  std::array<std::size_t, kFields.size()> fieldsA, fieldsB;
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    fieldsA[i] = rowsA.FieldIndex(kFields[i]);
    fieldsB[i] = rowsB.FieldIndex(kFields[i]);
  }
  for (; !rowsA.EndOfFile(); rowsA.MoveNext(), rowsB.MoveNext()) {
    for (std::size_t i = 0; i < kFields.size(); ++i) {
      if (rowsA.Text(fieldsA[i]) != rowsB.Text(fieldsB[i])) return false;
    }
  }
  return true;
}

bool SameCategories(const std::vector<CategoryRow>& a, const std::vector<CategoryRow>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const CategoryRow& left, const CategoryRow& right) {
                      // Blanks at the ends are lost on the way through a slot.
                      return Trim(left.parent) == Trim(right.parent) && Trim(left.key) == Trim(right.key) &&
                             Trim(left.text) == Trim(right.text);
                    });
}

// Is the working database with these categories what this file of the data folder holds?
bool Holds(const Program& program, const std::wstring& name, const std::vector<CategoryRow>& rows) {
  const std::wstring path = program.dataFolder + name;
  return FileExists(path) && HoldTheSame(path, WorkingDatabase(program), rows);
}

bool IsInSlot(const Program& program, const std::vector<CategoryRow>& rows) {
  for (int slot = 0; slot < kSlots; ++slot) {
    if (Holds(program, SlotFile(slot), rows)) return true;
  }
  return false;
}

// A copy of the working database with these categories takes the place of "Unsaved.dat", if that does not
// hold the same.
void MakeUnsaved(const Program& program, const std::vector<CategoryRow>& rows, std::uint64_t changed) {
  if (Holds(program, kUnsavedFile, rows)) return;
  ReplaceByCopy(WorkingDatabase(program), program.dataFolder + kUnsavedFile, [&](const std::wstring& copy) {
    jet::Connection connection = OpenedAt(copy);
    WriteCategoryRows(connection, rows);
    connection.Close();
    CheckIsWhole(copy);
    const FILETIME time{static_cast<DWORD>(changed), static_cast<DWORD>(changed >> 32)};
    const HANDLE file = ::CreateFileW(copy.c_str(), FILE_WRITE_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;  // the content matters more than its time
    ::SetFileTime(file, nullptr, nullptr, &time);
    ::CloseHandle(file);
  });
}

// For a tree that is lost, or older than the items: a category for the items of each that it lacks, so that
// all can be reached.
void AddMissingCategories(jet::Connection& connection, std::vector<CategoryRow>& rows) {
  std::set<std::wstring> known, missing;
  for (const CategoryRow& row : rows) known.insert(row.key);
  jet::Recordset items;
  items.Open(u"SELECT TreeviewNode FROM FTable", connection);
  for (; !items.EndOfFile(); items.MoveNext()) {
    std::wstring key = ToWindows(items.Text(std::size_t{0}));
    if (!known.contains(key)) missing.insert(std::move(key));
  }
  for (const std::wstring& key : missing) rows.push_back({kNoParent, key, key});
}

// False when the file is gone or damaged; one that is held by somebody is neither.
bool ReadTree(const std::wstring& path, std::vector<CategoryRow>& rows) {
  try {
    rows = ReadTreeFile(path);
    return true;
  } catch (const std::system_error& error) {
    if (error.code().value() != ERROR_FILE_NOT_FOUND && error.code().value() != ERROR_PATH_NOT_FOUND) throw;
  } catch (const std::runtime_error&) {
    // Its checksum does not fit.
  }
  return false;
}

std::vector<CategoryRow> RecoveredTree(const Program& program, const Note& note) {
  std::vector<CategoryRow> rows;
  const bool read = note.tree != 0 && ReadTree(TreeFileOf(program, note.tree), rows);
  const bool behind = (note.state & Note::kTreeBehind) != 0;
  if (read && !behind) return rows;
  jet::Connection connection = OpenedAt(WorkingDatabase(program));
  if (note.tree == 0) {
    rows = ReadCategoryRows(connection);
  } else if (!read) {
    win::Quietly([&] { rows = ReadCategoryRows(connection); });  // those that were saved last
  }
  if (note.tree != 0 || behind) AddMissingCategories(connection, rows);
  connection.Close();
  return rows;
}

[[noreturn]] void ThrowGone() { throw std::runtime_error("The database is gone, though its log is there."); }

// No record in either file of the log is whole, and yet both have been written: the end of the very first
// write leaves one of them empty.
bool LogIsDamaged(const Program& program) {
  for (const wchar_t* file : {L".1", L".2"}) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    const std::wstring path = LogOf(program) + file;
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) || data.nFileSizeLow == 0)
      return false;
  }
  return true;
}

}  // namespace

UnsavedCollection::UnsavedCollection(win::MainParts& parts) : parts_(parts) {
  parts_.connection.Ado().SetLog(LogOf(parts_.program));
  parts_.connection.beforeWriting = [this] { BeforeWriting(); };
  parts_.connection.afterWriting = [this] { AfterWriting(); };
  parts_.unsaved = this;
  Begin();
}

UnsavedCollection::~UnsavedCollection() {
  parts_.connection.beforeWriting = parts_.connection.afterWriting = nullptr;
  win::Quietly([this] { parts_.connection.Ado().SetLog({}); });  // the files stay
  parts_.unsaved = nullptr;
}

bool UnsavedCollection::Any() const {
  return !settled_ || writes_ != settledWrites_ || parts_.TreeView1.Revision() != settledRevision_;
}

bool UnsavedCollection::TreeChanged() const { return parts_.TreeView1.Revision() != keptRevision_ && Any(); }

void UnsavedCollection::SetNote() {
  parts_.connection.Ado().SetNote(
      BytesOf({notedTree_, Now(), (Any() ? Note::kUnsaved : 0) | (treeBehind_ ? Note::kTreeBehind : 0)}));
}

void UnsavedCollection::BeforeWriting() {
  ++writes_;
  const win::Finally note([this] { SetNote(); });
  treeBehind_ = parts_.TreeView1.Revision() != writtenRevision_;
  if (!treeBehind_) return;
  // A name that no version before this one has had: after a failure the log may name any of them.
  WriteTreeFile(TreeFileOf(parts_.program, lastTree_ + 1), parts_.TreeView1);
  notedTree_ = ++lastTree_;
  writtenRevision_ = parts_.TreeView1.Revision();
  treeBehind_ = false;
}

void UnsavedCollection::AfterWriting() {
  for (; firstTree_ < notedTree_; ++firstTree_) ::DeleteFileW(TreeFileOf(parts_.program, firstTree_).c_str());
  keptRevision_ = writtenRevision_;
}

void UnsavedCollection::Keep() {
  if (TreeChanged()) parts_.connection.Write();
}

void UnsavedCollection::SetAside() {
  if (!Any() || parts_.TreeView1.Count() == 0) return;
  parts_.connection.Ado().Checkpoint();  // finishes a write that failed in its last step
  const std::vector<CategoryRow> rows = RowsOfTree(parts_.TreeView1);
  if (!IsInSlot(parts_.program, rows)) MakeUnsaved(parts_.program, rows, Now());
}

void UnsavedCollection::Begin() {
  settled_ = true;
  treeBehind_ = false;
  settledWrites_ = writes_;
  settledRevision_ = keptRevision_ = writtenRevision_ = parts_.TreeView1.Revision();
  notedTree_ = 0;
}

void UnsavedCollection::Settle() {
  Begin();
  SetNote();
  parts_.connection.Ado().Checkpoint();
  DeleteTreeFiles(parts_.program);
  firstTree_ = lastTree_ + 1;
}

void UnsavedCollection::Unsettle() {
  if (keepSoon) keepSoon();
  settled_ = false;
  writtenRevision_ = keptRevision_ = parts_.TreeView1.Revision() - 1;
  parts_.connection.Write();
}

void UnsavedCollection::Finish() {
  // A log that cannot be deleted now says at least that there is nothing to recover.
  win::Quietly([this] {
    Settle();
    parts_.connection.Ado().RemoveLog();
  });
}

bool RecoverUnsaved(const Program& program) {
  const std::wstring database = WorkingDatabase(program), unsaved = program.dataFolder + kUnsavedFile;
  // Left where the end came while another collection was loaded.
  win::Quietly([&] { DeleteIfThere(unsaved + L".old"); });
  for (const std::wstring& ours : {database, unsaved}) ClearReadOnly(ours);
  const auto open = [&](const std::filesystem::path& path, jet::OpenMode mode) {
    if (path == database && !FileExists(database)) ThrowGone();
    return jet::OpenFile(path, mode);
  };
  const auto bytes = jet::RecoverFromLog(database, LogOf(program), open);
  if (!bytes && LogIsDamaged(program)) throw std::runtime_error("The log of the database is damaged.");
  const std::optional<Note> note = bytes ? NoteOf(*bytes) : std::nullopt;
  bool found = false;
  if (note && (note->state & Note::kUnsaved) != 0) {
    if (!FileExists(database)) ThrowGone();
    const std::vector<CategoryRow> rows = RecoveredTree(program, *note);
    found = !rows.empty() && !IsInSlot(program, rows);
    if (found) MakeUnsaved(program, rows, note->changed);
  }
  if (FileExists(LogOf(program) + L".1") || FileExists(LogOf(program) + L".2")) {
    // What is recovered is safe by now. The log says so before it goes: half of it could speak of an earlier
    // state, whose tree is no longer there.
    jet::Connection connection;
    connection.SetLog(LogOf(program));
    connection.SetNote(BytesOf({}));
    connection.Checkpoint();
    win::Quietly([&] { connection.RemoveLog(); });
  }
  DeleteTreeFiles(program);
  return found;
}

std::wstring PutUnrecoveredAway(const Program& program) {
  const std::wstring& database = program.workingDatabase;
  std::vector<std::wstring> endings;  // of the database, if it is there, and of what belongs to it
  for (const std::wstring& name : FilesLike(program, database + L"*")) {
    if (EqualNoCase(name, database) || (name.size() > database.size() && name[database.size()] == L'.'))
      endings.push_back(name.substr(database.size()));
  }
  // The database first and its log last: where one is there without the other, this was broken off.
  std::sort(endings.begin(), endings.end(),
            [](const std::wstring& a, const std::wstring& b) { return !b.empty() && (a.empty() || a > b); });
  const auto target = [&](int number) {
    return program.dataFolder + L"Unrecovered" + std::to_wstring(number) + L".dat";
  };
  int number = 1;
  // Without the database the rest belongs to the one that went first, when this was broken off.
  if (endings.empty() || !endings.front().empty()) {
    while (FileExists(target(number + 1))) ++number;
  }
  const auto taken = [&](const std::wstring& ending) { return FileExists(target(number) + ending); };
  while (std::any_of(endings.begin(), endings.end(), taken)) ++number;
  for (const std::wstring& ending : endings) {
    const std::wstring from = program.dataFolder + database + ending, to = target(number) + ending;
    if (!Persistently([&] { return ::MoveFileExW(from.c_str(), to.c_str(), 0) != FALSE; }))
      ThrowLastError(L"Cannot rename " + from);
  }
  return target(number);
}

std::optional<SYSTEMTIME> UnsavedTime(const Program& program) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!::GetFileAttributesExW((program.dataFolder + kUnsavedFile).c_str(), GetFileExInfoStandard, &data))
    return std::nullopt;
  SYSTEMTIME utc{}, local{};
  if (!::FileTimeToSystemTime(&data.ftLastWriteTime, &utc) ||
      !::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) {
    return std::nullopt;
  }
  return local;
}

bool HoldTheSame(const std::wstring& slot, const std::wstring& database,
                 const std::vector<CategoryRow>& rows) {
  bool same = false;
  win::Quietly([&] {
    jet::Connection a = OpenedAt(slot), b = OpenedAt(database);
    same =
        SameCategories(ReadCategoryRows(a), rows) && SameRows(a, b, u"FTable") && SameRows(a, b, u"FBackup");
  });
  return same;
}

}  // namespace kestrelon::store
