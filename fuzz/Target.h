#pragma once

// The ways in which hostile bytes come into the engine, one target each. A target is a function that takes
// arbitrary bytes; the same functions run under libFuzzer (FuzzMain.cpp) and, with a fixed number of
// mutations, as a test (tests/fuzz).
//
// What must hold for every input: nothing but jet::Error comes out of the engine, nothing is read or written
// outside of what is allocated, nothing is left allocated, the memory in use at any moment stays within
// MemoryLimitFor(), and a file that passed its check still passes it after every statement that succeeded.

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "jet/base/Error.h"

namespace kestrelon::fuzz {

using Input = std::span<const std::uint8_t>;
using InputBytes = std::vector<std::uint8_t>;

// Something that must hold does not.
class Finding : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Runs what may fail with the engine's error; whether it did not.
template <class Body>
bool Try(Body&& body) {
  try {
    body();
    return true;
  } catch (const jet::Error&) {
    return false;
  }
}

struct Seed {
  std::string name;  // fit for a file
  InputBytes bytes;
};

// Changes the bytes data[0, size) anyhow; `most` is the room there is. Returns the new size.
using Mutate = std::size_t (*)(std::uint8_t* data, std::size_t size, std::size_t most);
// The same, knowing what the bytes mean. `seed` settles what is done, `plain` does what needs no knowledge.
using MutateKnowing = std::size_t (*)(std::uint8_t* data, std::size_t size, std::size_t most,
                                      std::uint32_t seed, Mutate plain);

struct Target {
  const char* name;
  bool wholeFiles;            // its inputs are database files
  void (*body)(Input input);  // throws Finding
  std::vector<Seed> (*seeds)();
  MutateKnowing mutate;
};

std::span<const Target> Targets();
// Throws std::invalid_argument when there is none of this name.
const Target& FindTarget(std::string_view name);

// Runs the target's body under the memory meter (which ends the program on a breach). Throws Finding.
void Run(const Target& target, Input input);

// Bytes that may be allocated at one moment for an input of this size.
std::size_t MemoryLimitFor(std::size_t inputSize);

// The bodies.
void RunPages(Input input);
void RunRows(Input input);
void RunIndex(Input input);
void RunSql(Input input);
void RunSlot(Input input);

}  // namespace kestrelon::fuzz
