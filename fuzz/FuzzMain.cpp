// The entry points that libFuzzer calls, for the target that FUZZ_TARGET names.

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "fuzz/PageMutator.h"
#include "fuzz/Target.h"

extern "C" {

std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const kestrelon::fuzz::Target& target = kestrelon::fuzz::FindTarget(FUZZ_TARGET);
  try {
    kestrelon::fuzz::Run(target, {data, size});
  } catch (const kestrelon::fuzz::Finding& finding) {
    std::fprintf(stderr, "finding: %s\n", finding.what());
    std::abort();
  }
  return 0;
}

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
  static const kestrelon::fuzz::Target& target = kestrelon::fuzz::FindTarget(FUZZ_TARGET);
  return target.mutate(data, size, most, seed, LLVMFuzzerMutate);
}

std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* a, std::size_t sizeOfA, const std::uint8_t* b,
                                      std::size_t sizeOfB, std::uint8_t* out, std::size_t most,
                                      unsigned seed) {
  return kestrelon::fuzz::CrossOver({a, sizeOfA}, {b, sizeOfB}, {out, most}, seed);
}

}  // extern "C"
