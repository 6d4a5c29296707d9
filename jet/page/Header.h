#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "jet/base/Bytes.h"

namespace kestrelon::jet::header {

// What page 0 says of its file.
enum class Kind {
  kJet4,        // the one that we read: Access 2000 to 2003, neither encoded nor under a password
  kNoDatabase,  // no file of Access
  kOlder,       // Access 97 and before: pages of half the size
  kNewer,       // Access 2007 and later
  kEncoded,     // Jet 4, with every page but this one encrypted
  kPassword,    // Jet 4, to be opened with a password only
};
Kind KindOf(const std::uint8_t* page);
// Where a program that has the file for itself alone says that it is writing: the first user's commit pair.
// 00 00 means "not finished"; what stood there before is put back at the end.
inline constexpr std::size_t kCommitPair = 0xE00, kCommitPairBytes = 2;
inline constexpr std::array<std::uint8_t, kCommitPairBytes> kUnfinished = {0, 0};
// Whether any user stopped in the middle of writing. Only true of a file that nobody has open.
bool WriteUnfinished(const std::uint8_t* page);
// Page 0 of every file that we create.
std::array<std::uint8_t, kPageSize> NewPage();

// Security identifiers as they are stored in files with that page; they are masked with a string that depends
// on it.
inline constexpr std::array<std::uint8_t, 2> kAdminUser = {0xA6, 0x33}, kEngine = {0xA7, 0x31},
                                             kUsers = {0xA7, 0x33}, kCreator = {0xA7, 0x36};

}  // namespace kestrelon::jet::header
