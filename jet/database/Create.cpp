#include <cstring>
#include <vector>

#include "jet/catalog/Layout.h"
#include "jet/database/DatabaseInternal.h"
#include "jet/page/Header.h"

// What a blank database consists of: page 0; page 1, the map of free pages; pages 2 to 5, the definitions of
// the engine's tables, with one page for their usage maps and a root page for each of their indexes; then,
// for each table asked for, its definition, a page of usage maps and the roots of its indexes; last the rows
// of MSysObjects and MSysACEs.
//
// Properties of an object (column LvProp): "MR2", NUL, then chunks
//
//   OFFSET  SIZE  MEANING
//   0       4     size of the chunk
//   4       2     kind: 80h names (first), 0 properties of the object, 1 properties of a column
//   6       ...   names: each u16 bytes and UTF-16
//                 properties: u32 6 + n, u16 n, the column's name of n bytes (none for kind 0), then records
//                 {u16 size, u8 1 if settable by the engine, u8 column type, u16 index of the name, u16 n,
//                 value}

namespace kestrelon::jet {
namespace {

constexpr std::uint32_t kRoot = 0x0F000000, kTablesId = 0x0F000001, kDatabasesId = 0x0F000002,
                        kRelationshipsId = 0x0F000003, kDatabaseId = 0x10000000;
constexpr std::int32_t kTableType = 1, kDatabaseType = 2, kContainerType = 3;
constexpr std::uint32_t kSystemObject = 0x80000000;
constexpr std::uint16_t kMostTextUnits = 255;

using Identifier = std::array<std::uint8_t, 2>;

class Properties {
 public:
  explicit Properties(std::span<const std::u16string_view> names) {
    bytes_ = {'M', 'R', '2', '\0'};
    Begin(0x80);
    for (const std::u16string_view name : names) AddText(name);
    End();
  }
  // Starts the properties of the object (empty name) or of a column.
  void BeginObject(std::u16string_view column) {
    Begin(column.empty() ? 0 : 1);
    Add32(static_cast<std::uint32_t>(6 + 2 * column.size()));
    AddText(column);
  }
  void AddRecord(bool settable, ColumnType type, std::size_t name, std::span<const std::uint8_t> value) {
    Add16(8 + value.size());
    bytes_.push_back(settable ? 1 : 0);
    bytes_.push_back(static_cast<std::uint8_t>(type));
    Add16(name);
    Add16(value.size());
    bytes_.insert(bytes_.end(), value.begin(), value.end());
  }
  void End() { Put32(bytes_.data() + chunk_, static_cast<std::uint32_t>(bytes_.size() - chunk_)); }
  const Bytes& Stored() const { return bytes_; }

 private:
  void Begin(std::size_t kind) {
    chunk_ = bytes_.size();
    Add32(0);
    Add16(kind);
  }
  void Add16(std::size_t value) {
    bytes_.resize(bytes_.size() + 2);
    Put16(bytes_.data() + bytes_.size() - 2, value);
  }
  void Add32(std::uint32_t value) {
    bytes_.resize(bytes_.size() + 4);
    Put32(bytes_.data() + bytes_.size() - 4, value);
  }
  void AddText(std::u16string_view text) {
    Add16(2 * text.size());
    for (const char16_t unit : text) Add16(unit);
  }

  Bytes bytes_;
  std::size_t chunk_ = 0;
};

// Without it the empty text may be refused in text and memo columns.
Value AllowZeroLength(const NewTable& table) {
  static constexpr std::u16string_view kNames[] = {u"AllowZeroLength"};
  static constexpr std::uint8_t kYes[] = {1};
  Properties properties(kNames);
  bool any = false;
  for (const NewColumn& column : table.columns) {
    if (column.type != ColumnType::kText && column.type != ColumnType::kMemo) continue;
    properties.BeginObject(column.name);
    properties.AddRecord(true, ColumnType::kBoolean, 0, kYes);
    properties.End();
    any = true;
  }
  return any ? Value(properties.Stored()) : Value();
}

// Tells other programs which generation of the format the file is.
Value Access2000() {
  static constexpr std::u16string_view kNames[] = {u"AccessVersion", u"Build"};
  static constexpr std::uint8_t kVersion[] = {'0', 0, '8', 0, '.', 0, '5', 0, '0', 0};
  static constexpr std::uint8_t kBuild[] = {0xDC, 0x19, 0, 0};
  Properties properties(kNames);
  properties.BeginObject({});
  properties.AddRecord(false, ColumnType::kText, 0, kVersion);
  properties.AddRecord(false, ColumnType::kLong, 1, kBuild);
  properties.End();
  return properties.Stored();
}

StoredColumn MakeColumn(const NewColumn& column, std::uint16_t number) {
  StoredColumn stored;
  stored.name = column.name;
  stored.type = static_cast<std::uint8_t>(column.type);
  stored.number = stored.displayPosition = number;
  if (const std::uint16_t size = SizeOf(column.type); size != 0) {
    stored.flags |= StoredColumn::kFixed;
    stored.length = size;
  }
  if (column.autoNumber) {
    if (column.type != ColumnType::kLong)
      throw Error(code::kTypeMismatch, u"An autonumber column must be a long.");
    stored.flags |= StoredColumn::kAutoNumber;
  }
  if (column.type == ColumnType::kText) {
    if (column.characters < 1 || column.characters > kMostTextUnits) {
      throw Error(code::kTooLong, u"A text column holds 1 to 255 characters.");
    }
    stored.length = static_cast<std::uint16_t>(2 * column.characters);
  }
  if (column.type == ColumnType::kBinary) stored.length = kMostTextUnits;
  if (column.type == ColumnType::kNumeric) stored.collation = 28;  // precision 28, scale 0
  if (stored.Text()) stored.moreFlags = StoredColumn::kCompressed;
  return stored;
}

TableDef MakeTable(const NewTable& table) {
  TableDef def;
  for (const NewColumn& column : table.columns) {
    def.columns.push_back(MakeColumn(column, static_cast<std::uint16_t>(def.columns.size())));
  }
  AssignPlaces(def);
  if (table.primaryKey.empty()) return def;
  for (const StoredColumn& column : def.columns) {
    if (!EqualNames(column.name, table.primaryKey) || !column.Is(ColumnType::kLong)) continue;
    RealIndex& index = def.indexes.emplace_back();
    index.columns.push_back({column.number, true});
    index.flags = RealIndex::kAlways | RealIndex::kRequired | RealIndex::kUnique;
    LogicalIndex& logical = def.logicalIndexes.emplace_back();
    logical.name = u"PrimaryKey";
    logical.kind = LogicalIndex::kPrimary;
    return def;
  }
  throw Error(code::kGeneric, u"The primary key must be a column of type long.");
}

// Fills MSysObjects and MSysACEs.
class CatalogWriter {
 public:
  CatalogWriter(Table& objects, Table& aces, double created)
      : objects_(objects), aces_(aces), created_(created) {}

  void AddObject(std::uint32_t id, std::uint32_t parent, std::u16string_view name, std::int32_t type,
                 std::uint32_t flags, const Identifier& owner, Value properties = {}) {
    std::vector<Value> row(objects_.Columns().size());
    row[0] = static_cast<std::int32_t>(id);
    row[1] = static_cast<std::int32_t>(parent);
    row[2] = std::u16string(name);
    row[3] = type;
    row[4] = created_;
    row[5] = created_;
    row[6] = Bytes(owner.begin(), owner.end());
    row[7] = static_cast<std::int32_t>(flags);
    row[14] = std::move(properties);
    objects_.Insert(row);
  }
  void AddAce(std::uint32_t object, const Identifier& who, std::int32_t rights, bool inheritable) {
    const Value row[] = {static_cast<std::int32_t>(object), Bytes(who.begin(), who.end()), rights,
                         inheritable};
    aces_.Insert(row);
  }

 private:
  Table& objects_;
  Table& aces_;
  double created_;
};

void AddEngineObjects(CatalogWriter& catalog) {
  using namespace header;
  catalog.AddObject(kTablesId, kRoot, u"Tables", kContainerType, kSystemObject, kEngine);
  catalog.AddObject(kDatabasesId, kRoot, u"Databases", kContainerType, kSystemObject, kEngine);
  catalog.AddObject(kRelationshipsId, kRoot, u"Relationships", kContainerType, kSystemObject, kEngine);
  catalog.AddObject(kDatabaseId, kDatabasesId, u"MSysDb", kDatabaseType, kSystemObject, kAdminUser,
                    Access2000());
  for (const NamedTableDef& table : EngineTables()) {
    catalog.AddObject(table.def.page, kTablesId, table.name, kTableType, kSystemObject, kEngine);
  }
  // Rights as a new file of Access has them, less the group of its workgroup file.
  struct Ace {
    std::uint32_t object;
    const Identifier& who;
    std::int32_t rights;
    bool inheritable;
  };
  const Ace aces[] = {{kTablesId, kUsers, 1048319, true},
                      {kTablesId, kAdminUser, 1048319, true},
                      {kTablesId, kCreator, 983294, true},
                      {kDatabasesId, kAdminUser, 393216, false},
                      {kRelationshipsId, kAdminUser, 393217, false},
                      {kRelationshipsId, kUsers, 1048575, true},
                      {kRelationshipsId, kCreator, 983294, true},
                      {kDatabaseId, kAdminUser, 393230, false},
                      {kDatabaseId, kUsers, 14, false},
                      {engine_table::kObjects, kAdminUser, 393216, false},
                      {engine_table::kObjects, kUsers, 20, false},
                      {engine_table::kAces, kAdminUser, 393216, false},
                      {engine_table::kQueries, kAdminUser, 393216, false},
                      {engine_table::kQueries, kUsers, 20, false},
                      {engine_table::kRelationships, kAdminUser, 917504, false},
                      {engine_table::kRelationships, kUsers, 20, false}};
  for (const Ace& ace : aces) catalog.AddAce(ace.object, ace.who, ace.rights, ace.inheritable);
}

}  // namespace

void CreateDatabase(File& file, std::span<const NewTable> tables, double created) {
  constexpr std::int32_t kFullRights = 1048319;
  const auto page0 = header::NewPage();
  DatabaseImpl database(page0);
  MapRows engineMaps(database.Pages());
  for (NamedTableDef& table : EngineTables()) LayDownTable(database.Pages(), engineMaps, table.def);

  CatalogWriter catalog(database.TableAt(engine_table::kObjects, u"MSysObjects"),
                        database.TableAt(engine_table::kAces, u"MSysACEs"), created);
  AddEngineObjects(catalog);
  for (const NewTable& table : tables) {
    TableDef def = MakeTable(table);
    def.page = database.Pages().Allocate();
    MapRows maps(database.Pages());
    LayDownTable(database.Pages(), maps, def);
    catalog.AddObject(def.page, kTablesId, table.name, kTableType, 0, header::kAdminUser,
                      AllowZeroLength(table));
    catalog.AddAce(def.page, header::kAdminUser, kFullRights, false);
    catalog.AddAce(def.page, header::kUsers, kFullRights, false);
  }
  database.Settle();
  database.Pages().WriteAll(file);
}

}  // namespace kestrelon::jet
