#include "jet/Ado.h"

#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "jet/database/Database.h"
#include "jet/page/RedoLog.h"
#include "jet/sql/Convert.h"
#include "jet/sql/Executor.h"
#include "jet/sql/TextCompare.h"

namespace kestrelon::jet {

namespace {

[[noreturn]] void ThrowClosed() {
  throw Error(code::kObjectClosed, u"Operation is not allowed when the object is closed.");
}
[[noreturn]] void ThrowOpen() {
  throw Error(code::kObjectOpen, u"Operation is not allowed when the object is open.");
}
[[noreturn]] void ThrowReadOnly(const std::filesystem::path& path) {
  throw FileRefused(u"Could not write '" + path.u16string() + u"': the file is read-only.");
}
[[noreturn]] void ThrowNoCurrentRow() {
  throw Error(
      code::kNoCurrentRow,
      u"Either BOF or EOF is True, or the current record has been deleted. Requested operation requires a "
      u"current record.");
}

std::u16string_view Trimmed(std::u16string_view text) {
  while (!text.empty() && text.front() == u' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
  return text;
}

// The path in a connection string; empty when it names none. What stands behind a ";" without a "=" belongs
// to the value before it: a folder's name may hold semicolons.
std::filesystem::path DataSource(std::u16string_view connection) {
  std::u16string source;
  bool inSource = false;
  while (!connection.empty()) {
    const std::size_t end = connection.find(u';');
    const std::u16string_view pair = connection.substr(0, end);
    connection = end == std::u16string_view::npos ? std::u16string_view() : connection.substr(end + 1);
    const std::size_t equal = pair.find(u'=');
    if (equal != std::u16string_view::npos) {
      inSource = sql::SameName(Trimmed(pair.substr(0, equal)), u"Data Source");
      if (inSource) source = Trimmed(pair.substr(equal + 1));
    } else if (inSource && !Trimmed(pair).empty()) {
      source.append(u";").append(pair);
    }
  }
  return std::filesystem::path(source);
}

// One of the two files of a log.
std::filesystem::path LogFile(std::filesystem::path log, std::size_t file) {
  log += file == 0 ? ".1" : ".2";
  return log;
}

// The face tells only that a file is no database it can use; where the bytes contradict the format is for
// those who look into files.
std::unique_ptr<Database> OpenDatabase(std::unique_ptr<File> file, const std::filesystem::path& path) {
  try {
    return Database::Open(std::move(file), path.u16string());
  } catch (const CorruptFile&) {
    throw Error(code::kGeneric, u"Unrecognized database format '" + path.u16string() + u"'.");
  }
}

// One database file as a connection holds it, open or closed. Recordsets share it and notice by `opening`
// that the connection was closed under them.
struct Session {
  std::filesystem::path path;
  std::optional<FileStamp> stamp;           // of the file as it was when `database` was last the same
  std::unique_ptr<Database> database;       // kept when closed
  std::unique_ptr<sql::Executor> executor;  // together with its lookups
  bool open = false;
  bool written = false;   // since it was opened
  bool readOnly = false;  // the file
  std::uint64_t opening = 0;
  std::filesystem::path logPath;  // empty: no log
  std::shared_ptr<RedoLog> log;

  bool Changed() const { return open && (database->Dirty() || (log && log->NoteChanged())); }
  void Drop() {
    executor.reset();
    database.reset();
  }
  // Lets go of the file; keeps its stamp, so that it is known again, if it was written.
  void LetGo(bool changed) noexcept {
    std::unique_ptr<File> file = database->DetachFile();
    if (!changed) return;
    stamp.reset();
    try {
      if (file) stamp = file->Stamp();
      file.reset();
      if (!stamp) stamp = StampOf(path);  // the file itself cannot tell
    } catch (...) {
      // The file is gone, and its content with it.
    }
  }
  // After a failed write. What the file on disk does not hold any more is not given up.
  void LeaveUnwritten() noexcept {
    LetGo(true);
    if (database->Unfinished() && stamp) return;
    if (log) log->DropNote();
    Drop();
  }
};

}  // namespace

struct Connection::State_ {
  std::u16string connectionString;
  FileOpener opener;
  std::shared_ptr<Session> session = std::make_shared<Session>();
};

Connection::Connection(FileOpener opener) : state_(std::make_unique<State_>()) {
  state_->opener = std::move(opener);
}

Connection::~Connection() {
  if (!state_) return;  // moved from
  try {
    Close();
  } catch (...) {
    // Whoever needs to know calls Close().
  }
  // Recordsets may keep the session for longer, but no files.
  state_->session->Drop();
  state_->session->log.reset();
}

Connection::Connection(Connection&&) noexcept = default;

Connection& Connection::operator=(Connection&& other) noexcept {
  Connection old(std::move(*this));
  state_ = std::move(other.state_);
  return *this;
}

void Connection::SetConnectionString(std::u16string_view text) {
  if (state_->session->open) ThrowOpen();
  state_->connectionString = text;
}

const std::u16string& Connection::ConnectionString() const { return state_->connectionString; }

int Connection::State() const { return state_->session->open ? 1 : 0; }

void Connection::Open() {
  Session& session = *state_->session;
  if (session.open) ThrowOpen();
  std::filesystem::path path = DataSource(state_->connectionString);
  std::unique_ptr<File> file = state_->opener(path, OpenMode::kReadWrite);
  // Taken while nobody else can change the file.
  std::optional<FileStamp> stamp = file->Stamp();
  if (!stamp) stamp = StampOf(path);
  session.readOnly = file->ReadOnly();
  if (session.database && session.stamp == stamp) {
    session.path = std::move(path);
    session.database->AttachFile(std::move(file));
  } else {
    session.Drop();
    if (session.log) {
      // What Forget() dropped may be in the log only.
      if (session.log->Pending() && session.path == path && session.stamp == stamp)
        session.log->Finish(*file);
      session.log->Restart();
    }
    session.database = OpenDatabase(std::move(file), path);
    session.executor = std::make_unique<sql::Executor>(*session.database);
    session.path = std::move(path);
    session.stamp = stamp;
    session.database->SetLog(session.log);
  }
  session.open = true;
  session.written = false;
  ++session.opening;
}

void Connection::Close() {
  Session& session = *state_->session;
  if (!session.open) return;
  const bool flushed = session.written, unwritten = session.Changed();
  session.open = false;
  ++session.opening;
  try {
    if (unwritten) session.database->Flush();
    session.LetGo(flushed || unwritten);
  } catch (...) {
    session.LeaveUnwritten();
    throw;
  }
}

void Connection::Flush() {
  Session& session = *state_->session;
  if (!session.open) ThrowClosed();
  if (!session.Changed()) return;
  session.written = true;  // perhaps in part
  session.database->Flush();
}

bool Connection::Changed() const { return state_->session->Changed(); }

void Connection::SetLog(std::filesystem::path log) {
  Session& session = *state_->session;
  if (session.open) ThrowOpen();
  if (session.logPath == log) return;
  if (session.database && session.database->Unfinished())
    throw Error(code::kGeneric, u"The log cannot be changed while a write is unfinished.");
  session.log.reset();
  if (!log.empty()) {
    session.log = std::make_shared<RedoLog>([log, opener = state_->opener](std::size_t file) {
      return opener(LogFile(log, file), OpenMode::kOpenOrCreate);
    });
  }
  session.logPath = std::move(log);
  if (session.database) session.database->SetLog(session.log);
}

void Connection::SetNote(std::vector<std::uint8_t> note) {
  if (state_->session->log) state_->session->log->SetNote(std::move(note));
}

void Connection::FinishWriting() {
  Session& session = *state_->session;
  if (!session.database || !session.database->Unfinished()) return;
  if (session.open) {
    Flush();
  } else {
    Open();
    Close();
  }
}

void Connection::Checkpoint() {
  Session& session = *state_->session;
  if (!session.log) return;
  if (session.open && session.database->Dirty()) ThrowOpen();
  FinishWriting();
  session.log->Checkpoint();
}

void Connection::RemoveLog() {
  Session& session = *state_->session;
  if (!session.log) return;
  FinishWriting();
  // The older record first: by itself it would bring an old note back.
  session.log->Open();
  const std::size_t older = session.log->Close();
  for (const std::size_t file : {older, 1 - older}) {
    const std::filesystem::path path = LogFile(session.logPath, file);
    if (!RemoveFile(path)) throw FileRefused(u"Could not delete '" + path.u16string() + u"'.");
  }
}

std::optional<std::vector<std::uint8_t>> RecoverFromLog(const std::filesystem::path& database,
                                                        const std::filesystem::path& log, FileOpener opener) {
  std::unique_ptr<File> files[2];
  for (std::size_t file = 0; file < std::size(files); ++file) {
    const std::filesystem::path path = LogFile(log, file);
    std::error_code failure;
    if (std::filesystem::exists(path, failure) || failure) files[file] = opener(path, OpenMode::kRead);
  }
  return Recover(files[0].get(), files[1].get(), [&] { return opener(database, OpenMode::kReadWrite); });
}

void Connection::Abandon() noexcept {
  Session& session = *state_->session;
  if (!session.open) return;
  session.open = false;
  ++session.opening;
  session.LeaveUnwritten();
}

void Connection::Forget() {
  Session& session = *state_->session;
  if (session.open) ThrowOpen();
  session.Drop();
}

std::size_t Connection::Execute(std::u16string_view sql) {
  if (!state_->session->open) ThrowClosed();
  if (state_->session->readOnly) ThrowReadOnly(state_->session->path);
  return state_->session->executor->Execute(sql);
}

struct Recordset::State_ {
  std::shared_ptr<Session> session;
  std::uint64_t opening = 0;  // of the session
  bool open = false;
  sql::Selection selection;
  std::size_t position = 0;

  bool adding = false;
  std::vector<Value> added;  // one for each column of the table

  // The current row, found when one of its fields is asked for.
  std::uint64_t changesAtOpening = 0;  // of the executor
  std::size_t rowsAtOpening = 0;       // further ones were added by this recordset
  std::vector<std::uint64_t> addedAt;  // the executor's changes when they were
  std::shared_ptr<sql::Deletions> deletions;
  std::uint64_t changes = 0;  // when `table` was found
  Table* table = nullptr;
  std::optional<Cursor> cursor;
  bool onRow = false;

  // Texts handed out, one for each column of the recordset.
  struct Text {
    std::u16string text;
    bool valid = false;
  };
  std::vector<Text> texts;

  bool IsOpen() const { return open && session->open && session->opening == opening; }
  void RequireOpen() const {
    if (!IsOpen()) ThrowClosed();
  }
  void LeaveRow() {
    onRow = false;
    for (Text& text : texts) text.valid = false;
  }
  void Refresh();
  const Cursor& CurrentRow();
  std::size_t ColumnOf(std::u16string_view name);
  std::size_t SourceOf(std::size_t column);
  std::u16string_view TextOf(std::size_t column);
  void AppendText(std::size_t column, std::u16string& text);
  void Append();
};

void Recordset::State_::Refresh() {
  if (table != nullptr && changes == session->executor->Changes()) return;
  table = &session->executor->FindTable(selection.table);
  changes = session->executor->Changes();
  cursor.reset();
  LeaveRow();
}

const Cursor& Recordset::State_::CurrentRow() {
  RequireOpen();
  Refresh();
  if (onRow) return *cursor;
  if (position >= selection.rows.size()) ThrowNoCurrentRow();
  const RowId row = selection.rows[position];
  const std::uint64_t since = position < rowsAtOpening ? changesAtOpening : addedAt[position - rowsAtOpening];
  if (changes != since && deletions->DeletedSince(selection.table, row, since)) ThrowNoCurrentRow();
  if (!cursor) cursor.emplace(table->Rows());
  cursor->MoveTo(row);
  onRow = true;
  return *cursor;
}

std::size_t Recordset::State_::ColumnOf(std::u16string_view name) {
  RequireOpen();
  Refresh();
  const std::vector<Column>& columns = table->Columns();
  for (std::size_t i = 0; i < selection.columns.size(); ++i) {
    const std::u16string& candidate = columns[selection.columns[i]].name;
    if (candidate == name || sql::SameName(candidate, name)) return i;
  }
  throw Error(code::kNoSuchField,
              u"Item cannot be found in the collection corresponding to the requested name or ordinal.");
}

// The column of the table that a column of the recordset shows.
std::size_t Recordset::State_::SourceOf(std::size_t column) {
  RequireOpen();
  if (column >= selection.columns.size()) {
    throw Error(code::kNoSuchField,
                u"Item cannot be found in the collection corresponding to the requested name or ordinal.");
  }
  Refresh();
  return selection.columns[column];
}

std::u16string_view Recordset::State_::TextOf(std::size_t column) {
  SourceOf(column);
  Text& cached = texts[column];
  if (cached.valid) return cached.text;
  cached.text.clear();
  AppendText(column, cached.text);
  cached.valid = true;
  return cached.text;
}

void Recordset::State_::AppendText(std::size_t column, std::u16string& text) {
  const std::size_t source = SourceOf(column);
  const ColumnType type = table->Columns()[source].type;
  if (adding) {
    text += sql::ToText(added[source], type);
  } else if (type == ColumnType::kText || type == ColumnType::kMemo) {
    CurrentRow().AppendText(source, text);
  } else {
    Value value;
    CurrentRow().Read(source, value);
    text += sql::ToText(value, type);
  }
}

void Recordset::State_::Append() {
  if (session->readOnly) ThrowReadOnly(session->path);
  RowId row{};
  try {
    row = session->executor->Append(selection.table, added);
  } catch (const Error& error) {
    if (error.Number() != code::kTooLong) throw;
    throw Error(code::kGeneric, error.Description());
  }
  adding = false;
  position = selection.rows.size();
  selection.rows.push_back(row);
  addedAt.push_back(session->executor->Changes());
  LeaveRow();
}

Recordset::Recordset() : state_(std::make_unique<State_>()) {}
Recordset::~Recordset() = default;
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;

void Recordset::Open(std::u16string_view sql, Connection& connection) {
  if (state_->IsOpen()) ThrowOpen();
  const std::shared_ptr<Session>& session = connection.state_->session;
  if (!session->open) ThrowClosed();
  auto state = std::make_unique<State_>();
  state->selection = session->executor->Select(sql);
  state->texts.resize(state->selection.columns.size());
  state->session = session;
  state->opening = session->opening;
  state->changesAtOpening = session->executor->Changes();
  state->rowsAtOpening = state->selection.rows.size();
  state->deletions = session->executor->NoteDeletions();
  state->open = true;
  state_ = std::move(state);
}

void Recordset::Close() {
  state_->RequireOpen();
  *state_ = State_();
}

int Recordset::State() const { return state_->IsOpen() ? 1 : 0; }

bool Recordset::EndOfFile() const {
  state_->RequireOpen();
  return !state_->adding && state_->position >= state_->selection.rows.size();
}

void Recordset::MoveFirst() {
  state_->RequireOpen();
  if (state_->adding) state_->Append();
  if (state_->selection.rows.empty()) ThrowNoCurrentRow();
  state_->position = 0;
  state_->LeaveRow();
}

void Recordset::MoveNext() {
  state_->RequireOpen();
  if (state_->adding) state_->Append();
  if (state_->position >= state_->selection.rows.size()) ThrowNoCurrentRow();
  ++state_->position;
  state_->LeaveRow();
}

std::size_t Recordset::RecordCount() const {
  state_->RequireOpen();
  return state_->selection.rows.size();
}

Value Recordset::Fields(std::u16string_view name) const {
  const std::size_t column = state_->selection.columns[state_->ColumnOf(name)];
  if (state_->adding) return state_->added[column];
  Value value;
  state_->CurrentRow().Read(column, value);
  return value;
}

std::u16string_view Recordset::Text(std::u16string_view name) const {
  return state_->TextOf(state_->ColumnOf(name));
}

std::size_t Recordset::FieldIndex(std::u16string_view name) const { return state_->ColumnOf(name); }

std::u16string_view Recordset::Text(std::size_t column) const { return state_->TextOf(column); }

void Recordset::AppendText(std::size_t column, std::u16string& text) const {
  state_->AppendText(column, text);
}

void Recordset::AddNew() {
  state_->RequireOpen();
  if (state_->adding) state_->Append();
  state_->Refresh();
  state_->added.assign(state_->table->Columns().size(), Value());
  for (std::size_t i = 0; i < state_->added.size(); ++i)
    sql::ConvertTo(state_->table->Columns()[i].type, state_->added[i]);
  state_->adding = true;
  state_->LeaveRow();
}

void Recordset::SetField(std::u16string_view name, Value value) {
  const std::size_t column = state_->ColumnOf(name);
  if (!state_->adding) throw Error(code::kGeneric, u"Update or CancelUpdate without AddNew or Edit.");
  const std::size_t position = state_->selection.columns[column];
  sql::ConvertTo(state_->table->Columns()[position].type, value);
  state_->added[position] = std::move(value);
  state_->texts[column].valid = false;
}

void Recordset::Update() {
  state_->RequireOpen();
  if (!state_->adding) throw Error(code::kGeneric, u"Update or CancelUpdate without AddNew or Edit.");
  state_->Append();
}

void JetEngine::CompactDatabase(std::u16string_view sourceConnection,
                                std::u16string_view destinationConnection) {
  const std::filesystem::path source = DataSource(sourceConnection);
  const std::filesystem::path destination = DataSource(destinationConnection);
  const std::unique_ptr<Database> database = OpenDatabase(opener_(source, OpenMode::kReadWrite), source);
  std::error_code ignored;
  if (std::filesystem::exists(destination, ignored)) {
    throw Error(code::kGeneric, u"Database '" + destination.u16string() + u"' already exists.");
  }
  std::unique_ptr<File> packed = opener_(destination, OpenMode::kCreate);
  try {
    database->CompactInto(*packed);
  } catch (...) {
    packed.reset();
    RemoveFile(destination);
    throw;
  }
}

}  // namespace kestrelon::jet
