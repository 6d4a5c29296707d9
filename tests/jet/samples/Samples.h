#pragma once

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "jet/database/DatabaseInternal.h"
#include "tests/jet/Support.h"

// Databases that Access wrote, where the build has a folder of them.

namespace kestrelon::jet {

inline std::vector<std::filesystem::path> Samples() {
  std::vector<std::filesystem::path> files;
  std::error_code failure;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(KESTRELON_SAMPLES, failure)) {
    if (entry.path().extension() == ".mdb") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

inline ByteVector ReadBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::make_shared<std::vector<std::uint8_t>>(std::istreambuf_iterator<char>(file),
                                                     std::istreambuf_iterator<char>());
}

inline void WriteBytes(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// The bytes of one sample, in memory to be changed; nothing where the samples are not there.
inline ByteVector SampleInMemory(const char* name) {
  for (const auto& path : Samples()) {
    if (path.filename() == name) return ReadBytes(path);
  }
  return nullptr;
}

// Every local table of a file: the user's, the engine's and the helper tables of Access.
inline std::vector<std::u16string> AllTableNames(Database& database) {
  std::vector<std::u16string> names;
  for (const CatalogObject& object : static_cast<DatabaseImpl&>(database).Objects().Objects()) {
    if (object.LocalTable()) names.push_back(object.name);
  }
  return names;
}

// The name of a test for a sample.
inline std::string NameOfSample(const testing::TestParamInfo<std::filesystem::path>& sample) {
  std::string name = sample.param.stem().string();
  std::replace_if(
      name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
}

}  // namespace kestrelon::jet
