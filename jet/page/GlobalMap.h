#pragma once

#include <cstdint>
#include <vector>

namespace kestrelon::jet {

class Pager;

// The map of free pages: row 0 of page 1 (row 1 is a second map that stays empty). It has the form of every
// usage map (see UsageMap.cpp), with bit = "page is free", and the pages past the end of the file count as
// free in it.
namespace global_map {

// Makes page 1 of a new file of `pageCount` used pages.
void Format(std::uint8_t* page, std::uint32_t pageCount);
// The free pages of the file, ascending. A page that the map does not reach is left alone rather than taken
// for free.
std::vector<std::uint32_t> FreePages(const Pager& pager);
// The first page that the map says nothing about.
std::uint32_t Reach(const Pager& pager);
// Sets the bit of one page; the map grows to reach it.
void Set(Pager& pager, std::uint32_t page, bool free);
// The pages that carry the bits, when the map is a reference map.
std::vector<std::uint32_t> BitPages(const Pager& pager);

}  // namespace global_map
}  // namespace kestrelon::jet
