// fuzz-seeds TARGET FOLDER [KEPT]: writes the target's seeds, and the inputs kept in the folder KEPT, as
// files.
//
// fuzz-seeds --text FILE: prints a file as the text in which inputs are kept.
//
// fuzz-seeds --bytes TEXT FILE: the way back.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/Seeds.h"

namespace {

using namespace kestrelon::fuzz;

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::filesystem::path& path, const InputBytes& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

void WriteAll(const std::filesystem::path& folder, const std::string& prefix,
              const std::vector<Seed>& inputs) {
  for (const Seed& input : inputs) WriteFile(folder / (prefix + input.name), input.bytes);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  try {
    if (argc == 3 && first == "--text") {
      const std::string bytes = ReadFile(argv[2]);
      std::fputs(ToText({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}).c_str(), stdout);
    } else if (argc == 4 && first == "--bytes") {
      WriteFile(argv[3], FromText(ReadFile(argv[2])));
    } else if (argc == 3 || argc == 4) {
      const std::filesystem::path folder = argv[2];
      std::filesystem::create_directories(folder);
      for (const Seed& seed : FindTarget(first).seeds())
        WriteFile(folder / ("seed-" + seed.name), seed.bytes);
      if (argc == 4) WriteAll(folder, "kept-", ReadKept(argv[3]));
    } else {
      std::fputs("usage: fuzz-seeds TARGET FOLDER [KEPT] | --text FILE | --bytes TEXT FILE\n", stderr);
      return 2;
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fuzz-seeds: %s\n", error.what());
    return 1;
  }
  return 0;
}
