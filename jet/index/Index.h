#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "jet/base/RowId.h"
#include "jet/base/Value.h"
#include "jet/page/Pager.h"
#include "jet/schema/TableDef.h"

namespace kestrelon::jet {

// Appends the key of one column to `key`; false when the value has no key that we know: a text with
// characters beyond code page 1252, or a column under another sort order than 1033 version 0.
bool AppendKey(const StoredColumn& column, const Value& value, bool ascending, std::string& key);
// The same for a number in a kLong column, as the usual primary key is.
std::array<std::uint8_t, 5> LongKey(std::int32_t value, bool ascending);
// Whether the keys of this column are made as AppendKey() makes them.
bool KnowsKeysOf(const StoredColumn& column);

// The entries of one index, as a bulk build takes them.
class IndexEntries {
 public:
  void Reserve(std::size_t entries, std::size_t keyBytes);
  // Throws code::kGeneric when the key is longer than an index page can bear.
  void Add(std::span<const std::uint8_t> key, RowId row);
  void Add(const std::string& key, RowId row) {
    Add({reinterpret_cast<const std::uint8_t*>(key.data()), key.size()}, row);
  }
  // An entry as operator[] gives it, of other entries than these.
  void Add(std::span<const std::uint8_t> entry);
  void Sort();
  std::size_t size() const { return places_.size(); }
  // How many keys differ; once sorted.
  std::size_t Distinct() const { return distinct_; }
  // Key, then page (24 bits, big-endian) and slot.
  std::span<const std::uint8_t> operator[](std::size_t i) const { return At(places_[i]); }

 private:
  struct Place {
    std::uint32_t offset;
    std::uint16_t size;
  };
  std::span<const std::uint8_t> At(const Place& place) const {
    return {bytes_.data() + place.offset, place.size};
  }

  // Also counts the keys.
  bool InOrder();

  std::vector<std::uint8_t> bytes_;
  std::vector<Place> places_;
  std::size_t distinct_ = 0;
};

inline constexpr std::size_t kRowPointer = 4;  // bytes of an entry that are not its key
// An entry in bytes: a node must hold two at least, or a tree could grow for ever.
inline constexpr std::size_t kLongestEntry = 1804;

// Replaces the tree of an index by one over these entries, which must be sorted. The root keeps its page; the
// other pages are new ones, so that until the root is written the old tree stays whole. Sets the counts in
// `index`.
void BuildIndex(Pager& pager, std::uint32_t definitionPage, RealIndex& index, const IndexEntries& entries);
// An empty leaf.
void FormatEmptyIndex(std::uint8_t* page, std::uint32_t definitionPage);

// What a walk over an index meets, for the check: every page of the tree, and a sentence for whatever is
// wrong.
struct IndexWalk {
  std::function<void(std::span<const std::uint8_t> key, RowId row)> entry;
  std::function<void(std::uint32_t page)> page;         // may be empty
  std::function<void(const std::string& fault)> fault;  // empty: the first fault throws CorruptFile
};
// Visits all entries in order. Ends by itself on any input.
void WalkIndex(const Pager& pager, std::uint32_t definitionPage, const RealIndex& index,
               const IndexWalk& walk);

}  // namespace kestrelon::jet
