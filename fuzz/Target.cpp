#include "fuzz/Target.h"

#include <exception>
#include <string_view>
#include <typeinfo>

#include "fuzz/MemoryMeter.h"
#include "fuzz/PageMutator.h"
#include "fuzz/Seeds.h"
#include "fuzz/StatementMutator.h"

namespace kestrelon::fuzz {
namespace {

constexpr Target kTargets[] = {{"pages", true, RunPages, PageSeeds, MutateFile},
                               {"rows", false, RunRows, RowSeeds, MutateFragments},
                               {"index", false, RunIndex, IndexSeeds, MutateFragments},
                               {"sql", false, RunSql, SqlSeeds, MutateStatements},
                               {"slot", true, RunSlot, SlotSeeds, MutateFile}};

}  // namespace

std::span<const Target> Targets() { return kTargets; }

const Target& FindTarget(std::string_view name) {
  for (const Target& target : kTargets) {
    if (name == target.name) return target;
  }
  throw std::invalid_argument("there is no target " + std::string(name));
}

// The fixed part covers what small files need at the least: a block of 16 pages for each file that is open,
// and the tables' descriptions.
std::size_t MemoryLimitFor(std::size_t inputSize) { return (std::size_t{1} << 20) + 16 * inputSize; }

void Run(const Target& target, Input input) {
  const MemoryMeter meter(MemoryLimitFor(input.size()));
  try {
    target.body(input);
  } catch (const Finding&) {
    throw;
  } catch (const std::exception& error) {
    throw Finding(std::string("no jet::Error but ") + typeid(error).name() + ": " + error.what());
  }
}

}  // namespace kestrelon::fuzz
