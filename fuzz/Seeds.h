#pragma once

#include <filesystem>
#include <string_view>

#include "fuzz/Target.h"
#include "jet/database/Database.h"

namespace kestrelon::fuzz {

// Small inputs made by the engine itself, from which mutation starts.
std::vector<Seed> PageSeeds();
std::vector<Seed> RowSeeds();
std::vector<Seed> IndexSeeds();
std::vector<Seed> SqlSeeds();
std::vector<Seed> SlotSeeds();

// A database file with these tables on which these statements were run. Equal arguments give equal bytes.
InputBytes MakeFile(const std::vector<jet::NewTable>& tables, const std::vector<std::u16string>& statements);

// An input as text, for keeping: "size N", then lines "OFFSET: BYTES" in hexadecimal; what no line gives is
// 0. Lines that begin with # are remarks.
std::string ToText(Input input);
// Throws std::invalid_argument.
InputBytes FromText(std::string_view text);
// The databases (*.mdb) of a folder and the folders in it that are small enough for fuzzing, by name.
std::vector<Seed> ReadSamples(const std::filesystem::path& folder);
// All inputs that are kept as "*.txt" in a folder, by name. An absent folder holds none.
std::vector<Seed> ReadKept(const std::filesystem::path& folder);

}  // namespace kestrelon::fuzz
