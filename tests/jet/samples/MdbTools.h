#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kestrelon::jet {

// What the mdb-tools, an independent reader of the format, say about a file.
namespace mdb_tools {

// Whether they are installed.
bool Present();
std::vector<std::string> TableNames(const std::filesystem::path& file);
// With the tables of the engine and the helper tables of Access.
std::vector<std::string> AllTableNames(const std::filesystem::path& file);
// The rows of a table, by column name, as UTF-8; an empty text for null. Binary values in hexadecimal, dates
// as "2026-11-21 08:30:00".
std::vector<std::map<std::string, std::string>> Export(const std::filesystem::path& file,
                                                       const std::string& table);
// A cell as it is printed; nothing where the tools take the value for null.
using Cell = std::optional<std::string>;
struct PrintedTable {
  std::vector<std::string> columns;
  std::vector<std::vector<Cell>> rows;  // in the order of the columns
};
// The same, with null told from the empty text as far as the tools tell it.
PrintedTable ExportCells(const std::filesystem::path& file, const std::string& table);
int Count(const std::filesystem::path& file, const std::string& table);
std::string Schema(const std::filesystem::path& file);

}  // namespace mdb_tools
}  // namespace kestrelon::jet
