#pragma once

#include <cstddef>

namespace kestrelon::fuzz {

// Counts what the program allocates by `new`, which is all that the engine does, while one of these lives.
// More than `limit` bytes at one moment end the program, in the allocation that was too much. One at a time.
class MemoryMeter {
 public:
  explicit MemoryMeter(std::size_t limit);
  ~MemoryMeter();
  MemoryMeter(const MemoryMeter&) = delete;
  MemoryMeter& operator=(const MemoryMeter&) = delete;

  // The most that was allocated at one moment since the last meter was made.
  static std::size_t Peak();
};

}  // namespace kestrelon::fuzz
