#pragma once

// The engine's face: three objects shaped like those of a database client library.
//
//   jet::Connection connection;
//   connection.SetConnectionString(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\data\\default.dat");
//   connection.Open();
//   connection.Execute(u"DELETE * FROM FTable");
//   jet::Recordset rows;
//   rows.Open(u"SELECT * FROM TreeviewTable order by i", connection);
//   for (; !rows.EndOfFile(); rows.MoveNext()) Use(rows.Text(u"key"));
//   connection.Close();
//
// All failures are jet::Error. No object here may be used from two threads at once.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jet/base/Error.h"
#include "jet/base/File.h"
#include "jet/base/Value.h"

namespace kestrelon::jet {

class Recordset;

// How files are opened: OpenFile, or something that tests put in its place.
using FileOpener = std::function<std::unique_ptr<File>(const std::filesystem::path&, OpenMode)>;

class Connection {
 public:
  explicit Connection(FileOpener opener = OpenFile);
  ~Connection();  // closes; a failure to write is swallowed, so call Close() where it matters
  Connection(Connection&&) noexcept;
  Connection& operator=(Connection&&) noexcept;

  // "name=value" pairs separated by ";", names without regard to case; "Data Source" is the file's full path,
  // every other pair is ignored. Throws code::kObjectOpen while open.
  void SetConnectionString(std::u16string_view text);
  const std::u16string& ConnectionString() const;

  // 0 closed, 1 open.
  int State() const;

  // Opens the file named by the connection string, for this process alone; one that may not be written is
  // opened for reading. A file that this object closed last and that nobody has changed since (same identity,
  // size and time) is not read again. Throws code::kGeneric when the file is missing, in use or no database
  // that the engine reads, code::kObjectOpen when already open.
  void Open();

  // Writes the changed pages and lets go of the file; does nothing when closed. On a failed write the error
  // is thrown and the object is closed. The file then has the content that it had when opened, and the
  // changes are lost; or, where the failure came too late for that, it is marked as damaged, and its content
  // is kept here: the next Open() goes on with it, and the next Close() writes it.
  void Close();

  // Writes as Close() does, and stays open, recordsets too. After a failure the changes are still there, and
  // it can be called again.
  void Flush();
  // Open, with changes that are not on disk.
  bool Changed() const;

  // From now on every write is first kept in a redo log beside the database, so that RecoverFromLog() can
  // finish or undo a write that a stop cut off. The log's two files are called `log` with ".1" and ".2"
  // behind it; they stay open until RemoveLog() or the end, and serve one connection at a time. Empty path:
  // no log. Throws code::kObjectOpen while open. A write that fails because of the log leaves the database as
  // it was.
  void SetLog(std::filesystem::path log);
  // Bytes of the caller's, at most 64 KiB, that become durable with the next write, in the same instant as
  // the changes. A changed note is written even where nothing else changed. Lost, like the changes, when a
  // Close() fails that loses them. Of no effect without a log.
  void SetNote(std::vector<std::uint8_t> note);
  // Leaves in both files of the log that there is nothing to redo, with the note. To be called before the
  // database file is replaced by another one: else a stop would bring pages of the old file into the new one.
  // Throws code::kObjectOpen while open with changes.
  void Checkpoint();
  // Deletes both files, at a clean end.
  void RemoveLog();

  // Closes without writing: what has changed since the last write is given up. Does nothing when closed.
  void Abandon() noexcept;

  // Drops what was kept of the last file, so that the next Open() reads it anew. For callers that replace
  // files.
  void Forget();

  // Runs one statement other than SELECT (INSERT, UPDATE or DELETE, of at most 68,000 characters) and returns
  // the number of rows it touched. A statement applies whole or not at all; its error leaves the connection
  // usable. Throws code::kObjectClosed when closed, code::kGeneric for a file that may not be written.
  std::size_t Execute(std::u16string_view sql);

 private:
  friend class Recordset;
  void FinishWriting();

  struct State_;
  std::unique_ptr<State_> state_;
};

// Brings a database that a stop may have left half written to the state of the last write that reached the
// log, and returns the note of that write. Can itself be stopped at any point and begun again. To be called
// before the database is opened. nullopt: there is no log, none of its records is whole, or the database was
// being written without the log; it is then left alone, and whether it can be opened is for Open() to say.
// Throws where a file is there and cannot be read or written.
std::optional<std::vector<std::uint8_t>> RecoverFromLog(const std::filesystem::path& database,
                                                        const std::filesystem::path& log,
                                                        FileOpener opener = OpenFile);

// The rows of one SELECT, walked forward; AddNew/Update append rows to the table it reads. Which rows there
// are is fixed when it is opened; what is in them is read when it is asked for, and a row that has been
// deleted since then throws code::kNoCurrentRow. Closing the connection closes the recordset.
class Recordset {
 public:
  Recordset();
  ~Recordset();
  Recordset(Recordset&&) noexcept;
  Recordset& operator=(Recordset&&) noexcept;

  // Runs the SELECT and stands on its first row, if any. The connection must outlive the recordset's open
  // time.
  void Open(std::u16string_view sql, Connection& connection);
  void Close();
  int State() const;

  bool EndOfFile() const;  // no current row: empty, or moved past the last one
  void MoveFirst();        // throws code::kNoCurrentRow when there are no rows
  void MoveNext();         // throws code::kNoCurrentRow when already at the end
  std::size_t RecordCount() const;

  // A field of the current row (or of the row being added), by column name without regard to case.
  Value Fields(std::u16string_view name) const;
  // The same as text, NULL as the empty text. The view lives until the recordset is moved, closed or asked
  // again for the same column.
  std::u16string_view Text(std::u16string_view name) const;
  // The position (from 0) of a column in the recordset, and its text by that position: the fast way for long
  // walks.
  std::size_t FieldIndex(std::u16string_view name) const;
  std::u16string_view Text(std::size_t column) const;
  // Appends that text to `text`, which costs least where many rows are read once.
  void AppendText(std::size_t column, std::u16string& text) const;

  // Begins a row of NULLs. A row begun before is added first; so it is by a move.
  void AddNew();
  // Gives a field of that row a value, turned into the column's type. Throws code::kTypeMismatch where that
  // cannot be, code::kGeneric when no row was begun.
  void SetField(std::u16string_view name, Value value);
  // Adds the row to the table, whole or not at all, and stands on it: the autonumber is readable then. A text
  // longer than its column throws code::kGeneric here (not code::kTooLong); the row stays begun.
  void Update();

 private:
  struct State_;
  std::unique_ptr<State_> state_;
};

class JetEngine {
 public:
  explicit JetEngine(FileOpener opener = OpenFile) : opener_(std::move(opener)) {}

  // Writes a packed copy of the source (tables one after the other, no free space, indexes rebuilt,
  // autonumber counters set to the highest value present) to the destination. Both are connection strings.
  // The source must not be open; the destination must not exist (code::kGeneric otherwise). After a failure
  // no destination file is left.
  void CompactDatabase(std::u16string_view sourceConnection, std::u16string_view destinationConnection);

 private:
  FileOpener opener_;
};

}  // namespace kestrelon::jet
