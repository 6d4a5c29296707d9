#pragma once

#include <cstdint>
#include <vector>

#include "jet/page/Pager.h"

namespace kestrelon::jet {

// One usage map: the set of pages that belong to something. Named by the row (page << 8 | slot) that holds
// it. All members throw CorruptFile when that row is no usage map.
class UsageMap {
 public:
  UsageMap(Pager& pager, std::uint32_t pointer) : pager_(&pager), pointer_(pointer) {}

  // Ascending. Throws CorruptFile when the map names a page that the file does not have.
  std::vector<std::uint32_t> Pages() const;
  bool Has(std::uint32_t page) const;
  void Add(std::uint32_t page);
  void Remove(std::uint32_t page);
  void Clear();
  // The pages that carry the bits of a reference map; empty for an inline one.
  std::vector<std::uint32_t> BitPages() const;

 private:
  void TurnIntoReferences(const std::vector<std::uint32_t>& pages);

  Pager* pager_;
  std::uint32_t pointer_;
};

}  // namespace kestrelon::jet
