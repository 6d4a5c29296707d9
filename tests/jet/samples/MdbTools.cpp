#include "tests/jet/samples/MdbTools.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
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

// What stands for null; a text that reads so stands in quotes.
constexpr const char* kNull = "NULL";

// Comma-separated values in double quotes, quotes doubled, line breaks inside quotes kept.
std::vector<std::vector<Cell>> ParseCsv(const std::string& text) {
  std::vector<std::vector<Cell>> rows;
  std::vector<Cell> row;
  std::string cell;
  bool quoted = false, wasQuoted = false;
  const auto endCell = [&] {
    row.push_back(!wasQuoted && cell == kNull ? Cell() : Cell(cell));
    cell.clear();
    wasQuoted = false;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted && c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
      cell += '"';
      ++i;
    } else if (c == '"') {
      quoted = !quoted;
      wasQuoted = true;
    } else if (!quoted && c == ',') {
      endCell();
    } else if (!quoted && c == '\n') {
      endCell();
      rows.push_back(std::move(row));
      row.clear();
    } else {
      cell += c;
    }
  }
  return rows;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

}  // namespace

bool Present() { return !Run("command -v mdb-export").empty() && !Run("command -v mdb-tables").empty(); }

std::vector<std::string> TableNames(const std::filesystem::path& file) {
  return Lines(Run("mdb-tables -1 " + Quoted(file.string())));
}

std::vector<std::string> AllTableNames(const std::filesystem::path& file) {
  return Lines(Run("mdb-tables -S -1 " + Quoted(file.string())));
}

PrintedTable ExportCells(const std::filesystem::path& file, const std::string& table) {
  auto csv = ParseCsv(Run("mdb-export -0 " + std::string(kNull) +
                          " -b hex -D '%Y-%m-%d %H:%M:%S' -T '%Y-%m-%d %H:%M:%S' " + Quoted(file.string()) +
                          " " + Quoted(table)));
  PrintedTable printed;
  if (csv.empty()) return printed;
  for (const Cell& column : csv.front()) printed.columns.push_back(column.value_or(kNull));
  printed.rows.assign(std::make_move_iterator(csv.begin() + 1), std::make_move_iterator(csv.end()));
  return printed;
}

std::vector<std::map<std::string, std::string>> Export(const std::filesystem::path& file,
                                                       const std::string& table) {
  const PrintedTable printed = ExportCells(file, table);
  std::vector<std::map<std::string, std::string>> rows;
  for (const auto& cells : printed.rows) {
    auto& row = rows.emplace_back();
    for (std::size_t i = 0; i < cells.size() && i < printed.columns.size(); ++i)
      row[printed.columns[i]] = cells[i].value_or("");
  }
  return rows;
}

int Count(const std::filesystem::path& file, const std::string& table) {
  return std::atoi(Run("mdb-count " + Quoted(file.string()) + " " + Quoted(table)).c_str());
}

std::string Schema(const std::filesystem::path& file) { return Run("mdb-schema " + Quoted(file.string())); }

}  // namespace kestrelon::jet::mdb_tools
