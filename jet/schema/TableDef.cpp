#include "jet/schema/TableDef.h"

#include <algorithm>
#include <cstring>
#include <span>

// A table definition is one stream over a chain of pages: the first page whole, then each next page from its
// byte 8.
//
//   OFFSET  SIZE      MEANING
//   0       2         02 01
//   2       2         free bytes of the page (less 8, as Access counts them)
//   4       4         next page of the chain or 0
//   8       4         length of the stream
//   12      4         1625
//   16      4         rows
//   20      4         last autonumber given out
//   24      1         1
//   25      15        unused
//   40      1         4Eh user table, 53h engine table
//   41      2         highest column number ever + 1
//   43      2         variable columns ever
//   45      2         columns
//   47      4         logical indexes
//   51      4         real indexes
//   55      4         map of owned pages (page << 8 | slot)
//   59      4         map of pages with room
//   63      12 each   real indexes: entries, distinct keys, 0
//           25 each   columns
//           ...       column names: u16 bytes, UTF-16
//           52 each   real indexes
//           28 each   logical indexes
//           ...       their names
//           10 each   memo and OLE columns: u16 column number, owned map, map of pages with room
//           2         FF FF
//
// Column:         0 type; 1 u32 1625; 5 u16 number; 7 u16 variable index; 9 u16 display position; 11 u16 sort
// order;
//                 13 u16 its version; 15 flags; 16 more flags; 17 u32 0; 21 u16 fixed offset; 23 u16 length
// Real index:     0 u32 1923; 4 ten times u16 column number or FFFFh, u8 ascending; 34 u32 map; 38 u32 root;
//                 42 u32 unused; 46 flags; 47 unused
// Logical index:  0 u32 1625; 4 u32 number; 8 u32 real index; 12 u8 role of the other table; 13 u32 its index
// or
//                 FFFFFFFFh; 17 u32 its definition page; 21, 22 cascades; 23 kind; 24 u32 0

namespace kestrelon::jet {
namespace {

constexpr std::uint32_t kMark = 1625, kIndexMark = 1923;
constexpr std::size_t kChainHeader = 8, kFixedPart = 63;
constexpr std::size_t kCountBlock = 12, kColumnBlock = 25, kIndexBlock = 52, kLogicalBlock = 28;
constexpr std::size_t kKeySlots = 10;
constexpr std::size_t kMostColumns = 255;
constexpr std::size_t kMostIndexes = 1000;   // far beyond the 32 that Access allows
constexpr std::size_t kMostBytes = 1 << 17;  // of a definition; 255 columns and 32 indexes need 60 KB
constexpr std::uint16_t kNoColumn = 0xFFFF;

// Reads the stream in order; every step is checked.
class Reader {
 public:
  Reader(std::span<const std::uint8_t> bytes, std::size_t offset, std::uint32_t page)
      : bytes_(bytes), offset_(offset), page_(page) {}
  const std::uint8_t* Take(std::size_t size) {
    const std::uint8_t* at = At(bytes_, offset_, size, page_);
    offset_ += size;
    return at;
  }
  std::uint16_t Peek16() const { return Get16(bytes_, offset_, page_); }
  std::u16string Name() {
    const std::size_t size = Get16(Take(2));
    if (size % 2 != 0) ThrowCorrupt("a name has half a character", page_);
    const std::uint8_t* at = Take(size);
    std::u16string name(size / 2, u'\0');
    for (std::size_t i = 0; i < name.size(); ++i) name[i] = static_cast<char16_t>(Get16(at + 2 * i));
    return name;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t offset_;
  std::uint32_t page_;
};

class Writer {
 public:
  std::uint8_t* Add(std::size_t size) {
    bytes.resize(bytes.size() + size);
    return bytes.data() + bytes.size() - size;
  }
  void Name(const std::u16string& name) {
    std::uint8_t* at = Add(2 + 2 * name.size());
    Put16(at, 2 * name.size());
    for (std::size_t i = 0; i < name.size(); ++i) Put16(at + 2 + 2 * i, name[i]);
  }
  std::vector<std::uint8_t> bytes;
};

std::vector<std::uint8_t> ReadStream(const Pager& pager, std::uint32_t first,
                                     std::vector<std::uint32_t>& pages) {
  std::vector<std::uint8_t> stream;
  for (std::uint32_t page = first; page != 0;) {
    const std::uint8_t* bytes = pager.Read(page);
    if (bytes[0] != page_type::kDefinition || bytes[1] != 0x01)
      ThrowCorrupt("a table definition is expected", page);
    const std::size_t skipped = pages.empty() ? 0 : kChainHeader;
    stream.insert(stream.end(), bytes + skipped, bytes + kPageSize);
    pages.push_back(page);
    if (stream.size() > kMostBytes) ThrowCorrupt("a table definition has no end", page);
    page = Get32(bytes + 4);
  }
  if (first == 0) ThrowCorrupt("a table definition is expected", first);
  const std::uint32_t length = Get32(stream.data() + 8);
  if (length < kFixedPart || length > stream.size()) ThrowCorrupt("a table definition is cut off", first);
  stream.resize(length);
  return stream;
}

StoredColumn ReadColumn(const std::uint8_t* at, std::uint32_t page) {
  StoredColumn column;
  column.type = at[0];
  column.number = Get16(at + 5);
  column.variableIndex = Get16(at + 7);
  column.displayPosition = Get16(at + 9);
  column.collation = Get16(at + 11);
  column.collationVersion = Get16(at + 13);
  column.flags = at[15];
  column.moreFlags = at[16];
  column.fixedOffset = Get16(at + 21);
  column.length = Get16(at + 23);
  if (column.number >= kMostColumns) ThrowCorrupt("a column number is too large", page);
  if (column.fixedOffset >= kPageSize && column.Fixed()) ThrowCorrupt("a column lies outside its row", page);
  if (column.LongValue() && column.Fixed()) ThrowCorrupt("a memo column is marked fixed", page);
  return column;
}

RealIndex ReadIndex(const std::uint8_t* at, const std::uint8_t* counts, std::uint32_t page) {
  RealIndex index;
  for (std::size_t slot = 0; slot < kKeySlots; ++slot) {
    const std::uint8_t* key = at + 4 + 3 * slot;
    if (Get16(key) != kNoColumn) index.columns.push_back({Get16(key), (key[2] & 1) != 0});
  }
  if (index.columns.empty()) ThrowCorrupt("an index has no columns", page);
  index.map = Get32(at + 34);
  index.root = Get32(at + 38);
  index.flags = at[46];
  index.entries = Get32(counts);
  index.distinct = Get32(counts + 4);
  return index;
}

LogicalIndex ReadLogicalIndex(const std::uint8_t* at) {
  LogicalIndex index;
  index.number = Get32(at + 4);
  index.real = Get32(at + 8);
  index.otherRole = at[12];
  index.otherIndex = Get32(at + 13);
  index.otherTable = Get32(at + 17);
  index.cascadeUpdate = at[21];
  index.cascadeDelete = at[22];
  index.kind = at[23];
  return index;
}

void WriteColumn(std::uint8_t* at, const StoredColumn& column) {
  at[0] = column.type;
  Put32(at + 1, kMark);
  Put16(at + 5, column.number);
  Put16(at + 7, column.variableIndex);
  Put16(at + 9, column.displayPosition);
  Put16(at + 11, column.collation);
  Put16(at + 13, column.collationVersion);
  at[15] = column.flags;
  at[16] = column.moreFlags;
  Put16(at + 21, column.fixedOffset);
  Put16(at + 23, column.length);
}

void WriteIndex(std::uint8_t* at, const RealIndex& index) {
  Put32(at, kIndexMark);
  for (std::size_t slot = 0; slot < kKeySlots; ++slot) {
    const bool used = slot < index.columns.size();
    Put16(at + 4 + 3 * slot, used ? index.columns[slot].number : kNoColumn);
    at[4 + 3 * slot + 2] = used && index.columns[slot].ascending ? 1 : 0;
  }
  Put32(at + 34, index.map);
  Put32(at + 38, index.root);
  at[46] = index.flags;
}

void WriteLogicalIndex(std::uint8_t* at, const LogicalIndex& index) {
  Put32(at, kMark);
  Put32(at + 4, index.number);
  Put32(at + 8, index.real);
  at[12] = index.otherRole;
  Put32(at + 13, index.otherIndex);
  Put32(at + 17, index.otherTable);
  at[21] = index.cascadeUpdate;
  at[22] = index.cascadeDelete;
  at[23] = index.kind;
}

std::vector<std::uint8_t> Serialize(const TableDef& def) {
  Writer writer;
  std::uint8_t* head = writer.Add(kFixedPart);
  Put32(head + 12, kMark);
  Put32(head + 16, def.rowCount);
  Put32(head + 20, def.autoNumber);
  head[24] = 1;
  head[40] = def.kind;
  Put16(head + 41, def.maxColumns);
  Put16(head + 43, def.variableColumns);
  Put16(head + 45, def.columns.size());
  Put32(head + 47, static_cast<std::uint32_t>(def.logicalIndexes.size()));
  Put32(head + 51, static_cast<std::uint32_t>(def.indexes.size()));
  Put32(head + 55, def.ownedMap);
  Put32(head + 59, def.freeMap);
  for (const RealIndex& index : def.indexes) {
    std::uint8_t* counts = writer.Add(kCountBlock);
    Put32(counts, index.entries);
    Put32(counts + 4, index.distinct);
  }
  for (const StoredColumn& column : def.columns) WriteColumn(writer.Add(kColumnBlock), column);
  for (const StoredColumn& column : def.columns) writer.Name(column.name);
  for (const RealIndex& index : def.indexes) WriteIndex(writer.Add(kIndexBlock), index);
  for (const LogicalIndex& index : def.logicalIndexes) WriteLogicalIndex(writer.Add(kLogicalBlock), index);
  for (const LogicalIndex& index : def.logicalIndexes) writer.Name(index.name);
  for (const LongValueMaps& maps : def.longValues) {
    std::uint8_t* at = writer.Add(10);
    Put16(at, maps.column);
    Put32(at + 2, maps.owned);
    Put32(at + 6, maps.free);
  }
  Put16(writer.Add(2), kNoColumn);
  Put32(writer.bytes.data() + 8, static_cast<std::uint32_t>(writer.bytes.size()));
  return std::move(writer.bytes);
}

// Writes into the stream without touching what lies around.
void PutInStream(Pager& pager, const TableDef& def, std::size_t offset, std::uint32_t value) {
  std::uint8_t bytes[4];
  Put32(bytes, value);
  for (const std::uint8_t byte : bytes) {
    const std::size_t inChain =
        offset < kPageSize ? 0 : 1 + (offset - kPageSize) / (kPageSize - kChainHeader);
    const std::size_t at =
        inChain == 0 ? offset : kChainHeader + (offset - kPageSize) % (kPageSize - kChainHeader);
    if (inChain >= def.pages.size()) ThrowCorrupt("a table definition is cut off", def.page);
    if (pager.Read(def.pages[inChain])[at] != byte) pager.Write(def.pages[inChain])[at] = byte;
    ++offset;
  }
}

}  // namespace

const StoredColumn* TableDef::FindColumn(std::uint16_t number) const {
  for (const StoredColumn& column : columns) {
    if (column.number == number) return &column;
  }
  return nullptr;
}

TableDef ReadTableDef(const Pager& pager, std::uint32_t page) {
  TableDef def;
  def.page = page;
  const std::vector<std::uint8_t> stream = ReadStream(pager, page, def.pages);
  const std::uint8_t* head = stream.data();
  def.rowCount = Get32(head + 16);
  def.autoNumber = Get32(head + 20);
  def.kind = head[40];
  def.maxColumns = Get16(head + 41);
  def.variableColumns = Get16(head + 43);
  def.ownedMap = Get32(head + 55);
  def.freeMap = Get32(head + 59);
  const std::size_t columns = Get16(head + 45);
  const std::uint32_t logical = Get32(head + 47), real = Get32(head + 51);
  if (def.kind != TableDef::kUser && def.kind != TableDef::kSystem)
    ThrowCorrupt("a table is of no known kind", page);
  if (columns > kMostColumns || def.maxColumns > kMostColumns || def.variableColumns > kMostColumns) {
    ThrowCorrupt("a table has too many columns", page);
  }
  if (logical > kMostIndexes || real > kMostIndexes) ThrowCorrupt("a table has too many indexes", page);

  Reader reader(stream, kFixedPart, page);
  const std::uint8_t* counts = reader.Take(kCountBlock * real);
  std::uint64_t seen[4] = {};
  for (std::size_t i = 0; i < columns; ++i) {
    def.columns.push_back(ReadColumn(reader.Take(kColumnBlock), page));
    const StoredColumn& column = def.columns.back();
    if (column.number >= def.maxColumns) ThrowCorrupt("a column number is too large", page);
    if (!column.Fixed() && !column.Is(ColumnType::kBoolean) && column.variableIndex >= def.variableColumns) {
      ThrowCorrupt("a variable column has no place", page);
    }
    std::uint64_t& word = seen[column.number / 64];
    if ((word >> column.number % 64 & 1) != 0) ThrowCorrupt("two columns have one number", page);
    word |= std::uint64_t{1} << column.number % 64;
  }
  for (StoredColumn& column : def.columns) column.name = reader.Name();
  for (std::uint32_t i = 0; i < real; ++i) {
    def.indexes.push_back(ReadIndex(reader.Take(kIndexBlock), counts + kCountBlock * i, page));
  }
  for (std::uint32_t i = 0; i < logical; ++i) {
    def.logicalIndexes.push_back(ReadLogicalIndex(reader.Take(kLogicalBlock)));
    if (def.logicalIndexes.back().real >= real) ThrowCorrupt("an index has no tree", page);
  }
  for (LogicalIndex& index : def.logicalIndexes) index.name = reader.Name();
  while (reader.Peek16() != kNoColumn) {
    const std::uint8_t* at = reader.Take(10);
    def.longValues.push_back({Get16(at), Get32(at + 2), Get32(at + 6)});
  }
  return def;
}

void WriteTableDef(Pager& pager, TableDef& def) {
  const std::vector<std::uint8_t> stream = Serialize(def);
  if (def.pages.empty()) def.pages.push_back(def.page);
  std::size_t offset = 0;
  for (std::size_t i = 0; offset < stream.size(); ++i) {
    if (i == def.pages.size()) def.pages.push_back(pager.Allocate());
    const std::size_t skipped = i == 0 ? 0 : kChainHeader;
    const std::size_t size = std::min(kPageSize - skipped, stream.size() - offset);
    std::uint8_t* bytes = pager.Write(def.pages[i]);
    std::memset(bytes, 0, kPageSize);
    std::memcpy(bytes + skipped, stream.data() + offset, size);
    bytes[0] = page_type::kDefinition;
    bytes[1] = 0x01;
    const std::size_t unused = kPageSize - skipped - size;
    Put16(bytes + 2, unused < kChainHeader ? 0 : unused - kChainHeader);
    if (i > 0) Put32(pager.Write(def.pages[i - 1]) + 4, def.pages[i]);
    offset += size;
  }
}

void WriteTableCounts(Pager& pager, const TableDef& def) {
  PutInStream(pager, def, 16, def.rowCount);
  PutInStream(pager, def, 20, def.autoNumber);
  std::size_t names = 0;
  for (const StoredColumn& column : def.columns) names += 2 + 2 * column.name.size();
  const std::size_t blocks =
      kFixedPart + (kCountBlock * def.indexes.size()) + kColumnBlock * def.columns.size() + names;
  for (std::size_t i = 0; i < def.indexes.size(); ++i) {
    PutInStream(pager, def, kFixedPart + kCountBlock * i, def.indexes[i].entries);
    PutInStream(pager, def, kFixedPart + kCountBlock * i + 4, def.indexes[i].distinct);
    PutInStream(pager, def, blocks + kIndexBlock * i + 38, def.indexes[i].root);
  }
}

}  // namespace kestrelon::jet
