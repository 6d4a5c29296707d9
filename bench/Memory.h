#pragma once

#include <cstddef>
#include <filesystem>

namespace kestrelon::bench {

// Prints a table of the most memory that the engine and SQLite hold, each at work in a process of its own
// (`program`, this one).
void PrintMemory(const std::filesystem::path& program, std::size_t items);
// The work of such a process: prints its peak in megabytes.
int MemoryChild(int count, char** values);

}  // namespace kestrelon::bench
