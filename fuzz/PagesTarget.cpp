// A whole file, and in it the lowest layers: header, map of free pages, catalog, definitions, usage maps.
// What looks like a definition is read as one, whether the catalog leads to it or not; pages are taken and
// given back.

#include <memory>

#include "fuzz/Target.h"
#include "jet/database/Database.h"
#include "jet/page/GlobalMap.h"
#include "jet/page/Pager.h"
#include "jet/page/UsageMap.h"
#include "jet/schema/TableDef.h"

namespace kestrelon::fuzz {
namespace {

using namespace jet;

// The same in a transaction that is taken back.
template <class Body>
void TryAndTakeBack(Pager& pager, Body&& body) {
  pager.Begin();
  Try(body);
  pager.Rollback();
}

void UseMap(Pager& pager, std::uint32_t pointer) {
  UsageMap map(pager, pointer);
  std::vector<std::uint32_t> owned;
  if (!Try([&] { owned = map.Pages(); })) owned.assign(1, 2);
  Try([&] { map.BitPages(); });
  TryAndTakeBack(pager, [&] {
    for (const std::uint32_t page :
         {owned.empty() ? 2u : owned.front(), pager.PageCount() - 1, 700u, 40'000u}) {
      map.Has(page);
      map.Add(page);
      if (!map.Has(page)) throw Finding("a page that was added is not in the map");
      map.Remove(page);
      if (map.Has(page)) throw Finding("a page that was removed is in the map");
    }
  });
  TryAndTakeBack(pager, [&] {
    map.Clear();
    if (!map.Pages().empty()) throw Finding("a cleared map holds pages");
  });
}

void UseDefinition(Pager& pager, std::uint32_t page) {
  TableDef def;
  if (!Try([&] { def = ReadTableDef(pager, page); })) return;
  UseMap(pager, def.ownedMap);
  UseMap(pager, def.freeMap);
  for (const RealIndex& index : def.indexes) Try([&] { UsageMap(pager, index.map).Pages(); });
  for (const LongValueMaps& maps : def.longValues) Try([&] { UsageMap(pager, maps.owned).Pages(); });
  TryAndTakeBack(pager, [&] {
    WriteTableCounts(pager, def);
    ReadTableDef(pager, page);
  });
  TryAndTakeBack(pager, [&] {
    WriteTableDef(pager, def);
    const TableDef again = ReadTableDef(pager, page);
    if (again.columns != def.columns || again.indexes.size() != def.indexes.size() ||
        again.logicalIndexes.size() != def.logicalIndexes.size() ||
        again.longValues.size() != def.longValues.size()) {
      throw Finding("a definition that was written is read as another");
    }
  });
}

void UsePages(Pager& pager) {
  Try([&] { pager.LoadFreePages(); });
  Try([&] { global_map::BitPages(pager); });
  for (std::uint32_t page = 0; page < pager.PageCount(); ++page) {
    if (pager.Read(page)[0] == page_type::kDefinition) UseDefinition(pager, page);
  }
  TryAndTakeBack(pager, [&] {
    for (int i = 0; i < 3; ++i) {
      const std::uint32_t page = pager.Allocate();
      if (page < 2) throw Finding("a page of the engine's own is handed out");
      if (pager.IsFree(page)) throw Finding("a page is handed out and stays free");
    }
    const std::uint32_t given = pager.Allocate();
    pager.Free(given);
    if (Try([&] { pager.Free(given); })) throw Finding("a page is given back twice");
    for (std::uint32_t page = 2; page < pager.PageCount(); page += 5) {
      if (!pager.IsFree(page)) pager.Free(page);
    }
  });
}

}  // namespace

void RunPages(Input input) {
  const auto bytes = std::make_shared<InputBytes>(input.begin(), input.end());
  Try([&] {
    Pager pager(OpenMemoryFile(bytes));
    UsePages(pager);
    Try([&] { pager.Flush(); });
  });
  Try([&] {
    const std::unique_ptr<Database> database = Database::Open(OpenMemoryFile(bytes), u"fuzz");
    for (const std::u16string& name : database->TableNames()) {
      Try([&] {
        Table& table = database->OpenTable(name);
        table.FindColumn(u"i");
        table.RowCount();
      });
    }
    for (const char16_t* name : {u"MSysObjects", u"MSysACEs", u"MSysQueries", u"MSysRelationships"})
      Try([&] { database->OpenTable(name); });
    database->Check();
  });
}

}  // namespace kestrelon::fuzz
