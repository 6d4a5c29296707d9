#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "jet/index/Index.h"
#include "jet/table/TableInternal.h"

namespace kestrelon::jet {

// Keeps the indexes of one table right while rows change. A statement is checked against sets in memory at
// once; the trees on disk become stale and are built anew before the file is written. The sets are built from
// the rows when they are first needed.
class TableIndexes {
 public:
  explicit TableIndexes(TableInternal& table) : table_(&table) {}

  // The value that a row has, or will have, in the column at a position.
  using ValueOf = std::function<const Value&(std::size_t position)>;

  bool None() const { return table_->def.indexes.empty(); }
  // Whether an index uses the column at this position.
  bool Uses(std::size_t position) const;
  // Throws unless all indexes can be kept right with the rows that there are.
  void CheckAll() { Prepare(); }
  // Throws unless all indexes can be kept right and bear this row: kGeneric for a duplicate or missing key, a
  // text without a key, an index of an order that we do not know, a relationship, a replica. `before` gives
  // the row that it replaces, if any. Changes nothing.
  void Check(const ValueOf& after, const ValueOf* before);
  // Takes over what the last Check() was asked about.
  void Accept(const ValueOf& after);
  // Removes a row's keys; what must be read of it is read now.
  void Remove(const ValueOf& before);
  void RemoveAll();
  // Forgets the sets, after a rollback.
  void Forget() { prepared_ = false; }

  bool Stale() const { return stale_; }
  void SetStale(bool stale) { stale_ = stale; }
  // Builds all trees anew from the rows.
  void Rebuild();

 private:
  struct Keys {
    std::vector<std::size_t> columns;  // positions
    bool integer = false;  // one whole-number column: the highest key alone settles most questions
    std::int64_t highest = 0;
    bool known = false;  // `used` holds all keys
    std::unordered_set<std::string> used;
    std::string added, removed;  // by the row of the last Check()
    bool changes = false;
  };

  void Prepare();
  void CheckPages(const RealIndex& index) const;
  void Learn(std::size_t index);
  bool KeyOf(std::size_t index, const ValueOf& valueOf, std::string& key, bool& anyNull, bool& allNull) const;

  TableInternal* table_;
  std::vector<Keys> keys_;  // as in the definition
  bool prepared_ = false;
  bool stale_ = false;
};

// The entries that an index must have, from the rows. Throws code::kGeneric when a row has no key that we
// know.
IndexEntries CollectEntries(const TableInternal& table, const RealIndex& index);

}  // namespace kestrelon::jet
