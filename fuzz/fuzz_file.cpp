// A whole file out of arbitrary bytes: opened, read from end to end and checked. Nothing but jet::Error may
// come out.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "jet/Database.h"
#include "jet/Error.h"

using namespace kestrelon::jet;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = std::make_shared<std::vector<std::uint8_t>>(data, data + size);
  try {
    const std::unique_ptr<Database> database = Database::Open(OpenMemoryFile(bytes), u"fuzz");
    static_cast<void>(database->Check());
    for (const std::u16string& name : database->TableNames()) {
      try {
        const Table& table = database->OpenTable(name);
        Value value;
        for (Cursor rows = table.Rows(); rows.Next();) {
          for (std::size_t i = 0; i < table.Columns().size(); ++i) rows.Read(i, value);
        }
      } catch (const Error&) {
        // One damaged table; the others may be readable.
      }
    }
  } catch (const Error&) {
    // Not a database, or damaged in what is read first.
  }
  return 0;
}
