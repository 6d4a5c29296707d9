#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::jet {

struct TableInternal;

// Pages of the definitions of the engine's own tables.
namespace engine_table {
inline constexpr std::uint32_t kObjects = 2, kAces = 3, kQueries = 4, kRelationships = 5;
}

// A row of MSysObjects, as far as the engine reads it.
struct CatalogObject {
  static constexpr std::int32_t kTable = 1;
  static constexpr std::uint32_t kSystemFlag = 0x80000000, kHelperFlag = 0x00000002;

  std::uint32_t id = 0;
  std::int32_t type = 0;
  std::uint32_t flags = 0;
  std::u16string name;

  bool LocalTable() const { return type == kTable; }
  bool UserTable() const { return LocalTable() && (flags & (kSystemFlag | kHelperFlag)) == 0; }
};

class Catalog {
 public:
  // Reads all objects from the rows of MSysObjects. Throws CorruptFile.
  void Read(const TableInternal& objects);
  // In order of id.
  const std::vector<CatalogObject>& Objects() const { return objects_; }
  // A local table, without regard to case.
  const CatalogObject* FindTable(std::u16string_view name) const;
  // The page of an engine's table that is not listed; a sound file lists all four.
  std::optional<std::uint32_t> MissingEngineTable() const;

 private:
  std::vector<CatalogObject> objects_;
};

// Names of tables and columns compare without regard to case (basic Latin, Latin-1, Greek and Cyrillic
// letters).
bool EqualNames(std::u16string_view a, std::u16string_view b);

}  // namespace kestrelon::jet
