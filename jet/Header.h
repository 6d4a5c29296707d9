#pragma once

#include <array>
#include <cstdint>

#include "jet/Bytes.h"

namespace kestrelon::jet::header {

// Whether page 0 is that of a Jet 4 database without encoding.
bool IsPlainJet4(const std::uint8_t* page);
// Page 0 of every file that we create.
std::array<std::uint8_t, kPageSize> NewPage();

// Security identifiers as they are stored in files with that page; they are masked with a string that depends
// on it.
inline constexpr std::array<std::uint8_t, 2> kAdminUser = {0xA6, 0x33}, kEngine = {0xA7, 0x31},
                                             kUsers = {0xA7, 0x33}, kCreator = {0xA7, 0x36};

}  // namespace kestrelon::jet::header
