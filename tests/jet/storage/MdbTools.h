#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace kestrelon::jet {

// What the mdb-tools, an independent reader of the format, say about a file.
namespace mdb_tools {

// Whether they are installed.
bool Present();
std::vector<std::string> TableNames(const std::filesystem::path& file);
// The rows of a table, by column name, as UTF-8; an empty text for null. Binary values in hexadecimal, dates
// as "2026-11-21 08:30:00".
std::vector<std::map<std::string, std::string>> Export(const std::filesystem::path& file,
                                                       const std::string& table);
int Count(const std::filesystem::path& file, const std::string& table);
std::string Schema(const std::filesystem::path& file);

}  // namespace mdb_tools
}  // namespace kestrelon::jet
