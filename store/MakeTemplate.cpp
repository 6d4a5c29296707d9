// make-template FILE: writes the empty database that the program ships, replacing the file if it is there.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <vector>

#include "jet/base/File.h"
#include "jet/database/Database.h"
#include "store/Schema.h"

namespace {

// 2026-01-01, whenever it is built, so that the same sources give the same bytes.
constexpr double kCreated = 46023;

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make-template FILE\n", stderr);
    return 2;
  }
  try {
    const std::filesystem::path path = argv[1];
    std::filesystem::remove(path);
    const auto file = kestrelon::jet::OpenFile(path, kestrelon::jet::OpenMode::kCreate);
    kestrelon::jet::CreateDatabase(*file, kestrelon::store::Schema(), kCreated);
    file->Flush();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make-template: %s\n", error.what());
    return 1;
  }
  return 0;
}
