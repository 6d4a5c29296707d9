#include "tests/jet/storage/MdbTools.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace kestrelon::jet::mdb_tools {
namespace {

#ifdef _WIN32
std::string Run(const std::string&) { return ""; }
#else
std::string Run(const std::string& command) {
  std::string output;
  if (std::FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[65536];
    while (const std::size_t size = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, size);
    pclose(pipe);
  }
  return output;
}
#endif

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

// Comma-separated values in double quotes, quotes doubled, line breaks inside quotes kept.
std::vector<std::vector<std::string>> ParseCsv(const std::string& text) {
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> row;
  std::string cell;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted && c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
      cell += '"';
      ++i;
    } else if (c == '"') {
      quoted = !quoted;
    } else if (!quoted && c == ',') {
      row.push_back(std::move(cell));
      cell.clear();
    } else if (!quoted && c == '\n') {
      row.push_back(std::move(cell));
      cell.clear();
      rows.push_back(std::move(row));
      row.clear();
    } else {
      cell += c;
    }
  }
  return rows;
}

}  // namespace

bool Present() { return !Run("command -v mdb-export").empty() && !Run("command -v mdb-tables").empty(); }

std::vector<std::string> TableNames(const std::filesystem::path& file) {
  std::vector<std::string> names;
  std::istringstream lines(Run("mdb-tables -1 " + Quoted(file.string())));
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) names.push_back(line);
  }
  return names;
}

std::vector<std::map<std::string, std::string>> Export(const std::filesystem::path& file,
                                                       const std::string& table) {
  const auto csv = ParseCsv(Run("mdb-export -b hex -D '%Y-%m-%d %H:%M:%S' -T '%Y-%m-%d %H:%M:%S' " +
                                Quoted(file.string()) + " " + Quoted(table)));
  std::vector<std::map<std::string, std::string>> rows;
  for (std::size_t i = 1; i < csv.size(); ++i) {
    auto& row = rows.emplace_back();
    for (std::size_t cell = 0; cell < csv[i].size() && cell < csv[0].size(); ++cell)
      row[csv[0][cell]] = csv[i][cell];
  }
  return rows;
}

int Count(const std::filesystem::path& file, const std::string& table) {
  return std::atoi(Run("mdb-count " + Quoted(file.string()) + " " + Quoted(table)).c_str());
}

std::string Schema(const std::filesystem::path& file) { return Run("mdb-schema " + Quoted(file.string())); }

}  // namespace kestrelon::jet::mdb_tools
