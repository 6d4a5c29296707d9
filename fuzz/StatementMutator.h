#pragma once

#include "fuzz/Target.h"

namespace kestrelon::fuzz {

// Statements separated by NUL: words, names, values and signs of the language are put in, replaced, doubled
// and taken out.
std::size_t MutateStatements(std::uint8_t* data, std::size_t size, std::size_t most, std::uint32_t seed,
                             Mutate plain);

}  // namespace kestrelon::fuzz
