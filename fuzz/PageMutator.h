#pragma once

#include "fuzz/Target.h"

namespace kestrelon::fuzz {

// A whole database file. Pages are copied, swapped, dropped and added, and the fields of a page are changed
// according to what the page is: header fields below their mask, slots, rows and references of data pages,
// windows and bits of usage maps, counts and blocks of definitions, links, prefixes, entry masks and pointers
// of index pages. Numbers become their neighbours, limits, and the numbers of other pages and rows.
std::size_t MutateFile(std::uint8_t* data, std::size_t size, std::size_t most, std::uint32_t seed,
                       Mutate plain);
// Page 0 means something of the target's own; page i stands for page i + kFragmentShift of a file.
inline constexpr std::uint32_t kFragmentShift = 2;
std::size_t MutateFragments(std::uint8_t* data, std::size_t size, std::size_t most, std::uint32_t seed,
                            Mutate plain);

// The first input with some pages of the second.
std::size_t CrossOver(Input a, Input b, std::span<std::uint8_t> out, std::uint32_t seed);

// A small generator of numbers that are the same on every system.
class Random {
 public:
  explicit Random(std::uint32_t seed) : state_(seed * 2654435761u + 88172645u) {}
  std::uint32_t Next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<std::uint32_t>(state_ >> 11);
  }
  std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : Next() % limit; }
  bool OneIn(std::size_t n) { return Below(n) == 0; }

 private:
  std::uint64_t state_;
};

}  // namespace kestrelon::fuzz
