#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/base/File.h"
#include "jet/database/Table.h"

namespace kestrelon::jet {

class RedoLog;

// A table to be made by CreateDatabase.
struct NewColumn {
  std::u16string name;
  ColumnType type = ColumnType::kText;
  std::uint16_t characters = 0;  // text only: 1 to 255
  bool autoNumber = false;       // kLong only
};
struct NewTable {
  std::u16string name;
  std::vector<NewColumn> columns;
  std::u16string primaryKey;  // name of a kLong column, or empty for none
};

// Makes a blank Access 2000 database with these tables in an empty file. `created` is stored as the tables'
// creation date (days since 1899-12-30, local time); everything else is fixed, so equal arguments give equal
// bytes.
void CreateDatabase(File& file, std::span<const NewTable> tables, double created);

// Something that the integrity walk found.
struct Finding {
  enum class Kind {
    kDamage,  // content is lost or unreadable, or pages are claimed in ways that make changes dangerous
    kIndex,   // an index does not fit its rows; those are whole, and a packed copy has the index made anew
    kWaste,   // room that nothing refers to, as real files have some; harmless
  };
  Kind kind = Kind::kDamage;
  std::string text;
  bool operator==(const Finding&) const = default;
};

// An open database file: the page cache, the catalog and the tables. All changes stay in memory until
// Flush().
class Database {
 public:
  // Throws CorruptFile ("Unrecognized database format 'x'.") when the file is no database or damaged in what
  // is read first; code::kGeneric with a sentence of its own for another generation of the format, an encoded
  // file, and one that somebody stopped in the middle of writing ("The database 'x' is damaged: ...");
  // code::kPassword for one under a password. `name` is used in messages.
  static std::unique_ptr<Database> Open(std::unique_ptr<File> file, std::u16string name);
  virtual ~Database() = default;

  // Local user tables, engine tables left out, in order of creation (object id).
  virtual std::vector<std::u16string> TableNames() const = 0;
  // Without regard to case; engine tables too. Throws code::kNoSuchTable.
  virtual Table& OpenTable(std::u16string_view name) = 0;

  // A span of changes that holds whole or not at all. Begin() remembers the pages as they are; Commit()
  // forgets the memory; Rollback() puts back every page changed since and everything derived from them.
  virtual void Begin() = 0;
  virtual void Commit() = 0;
  virtual void Rollback() = 0;

  // Every Flush() from now on goes through this log; null: through none.
  virtual void SetLog(std::shared_ptr<RedoLog> log) = 0;
  // Writes the changed pages. A stop at any write leaves a file that opens with the old content or the new,
  // or that Open() refuses as damaged; with a log, one that Recover() gives the old content or the new. After
  // a failure it can be called again.
  virtual void Flush() = 0;
  // Whether a Flush() that failed may have left a file that Open() refuses or misreads; the content is in
  // memory, or in the log, only.
  virtual bool Unfinished() const = 0;
  virtual bool Dirty() const = 0;

  // Gives up / takes back the file while the pages stay in memory (a closed connection holds no file handle).
  virtual std::unique_ptr<File> DetachFile() = 0;
  virtual void AttachFile(std::unique_ptr<File> file) = 0;

  // Writes a packed copy into an empty file and flushes it.
  virtual void CompactInto(File& destination) = 0;

  // The integrity walk: every page owned exactly once, maps, free-space fields, row counts, rows decodable,
  // long values owned once, indexes ordered, complete and consistent with the rows. Returns up to a
  // thousand findings of each kind; none when sound. Never throws for damaged content. Costs little more than
  // reading all rows.
  virtual std::vector<Finding> Check() = 0;
};

}  // namespace kestrelon::jet
