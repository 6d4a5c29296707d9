#pragma once

// Integers as they stand in the file: little-endian unless the name says otherwise, read and written a byte
// at a time. The plain forms are for places whose bounds the caller has checked (a field of a page, a row
// already measured); the forms with a span check and throw CorruptFile.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "jet/base/Error.h"

namespace kestrelon::jet {

inline constexpr std::size_t kPageSize = 4096;

inline std::uint16_t Get16(const std::uint8_t* at) { return static_cast<std::uint16_t>(at[0] | at[1] << 8); }
inline std::uint32_t Get24(const std::uint8_t* at) {
  return static_cast<std::uint32_t>(at[0]) | static_cast<std::uint32_t>(at[1]) << 8 |
         static_cast<std::uint32_t>(at[2]) << 16;
}
inline std::uint32_t Get32(const std::uint8_t* at) {
  return Get24(at) | static_cast<std::uint32_t>(at[3]) << 24;
}
inline std::uint64_t Get64(const std::uint8_t* at) {
  return Get32(at) | static_cast<std::uint64_t>(Get32(at + 4)) << 32;
}
inline std::uint32_t GetBig32(const std::uint8_t* at) {
  return static_cast<std::uint32_t>(at[0]) << 24 | static_cast<std::uint32_t>(at[1]) << 16 |
         static_cast<std::uint32_t>(at[2]) << 8 | static_cast<std::uint32_t>(at[3]);
}

inline void Put16(std::uint8_t* at, std::size_t value) {
  at[0] = static_cast<std::uint8_t>(value);
  at[1] = static_cast<std::uint8_t>(value >> 8);
}
inline void Put24(std::uint8_t* at, std::uint32_t value) {
  Put16(at, value & 0xFFFF);
  at[2] = static_cast<std::uint8_t>(value >> 16);
}
inline void Put32(std::uint8_t* at, std::uint32_t value) {
  Put16(at, value & 0xFFFF);
  Put16(at + 2, value >> 16);
}
inline void Put64(std::uint8_t* at, std::uint64_t value) {
  Put32(at, static_cast<std::uint32_t>(value));
  Put32(at + 4, static_cast<std::uint32_t>(value >> 32));
}
inline void PutBig32(std::uint8_t* at, std::uint32_t value) {
  at[0] = static_cast<std::uint8_t>(value >> 24);
  at[1] = static_cast<std::uint8_t>(value >> 16);
  at[2] = static_cast<std::uint8_t>(value >> 8);
  at[3] = static_cast<std::uint8_t>(value);
}

// Throws CorruptFile("Unrecognized database format: <what> (page <page>)").
[[noreturn]] void ThrowCorrupt(const char* what, std::uint32_t page);

// The bytes [offset, offset + size) of a stream, or CorruptFile.
inline const std::uint8_t* At(std::span<const std::uint8_t> bytes, std::size_t offset, std::size_t size,
                              std::uint32_t page) {
  if (offset > bytes.size() || size > bytes.size() - offset) ThrowCorrupt("a structure is cut off", page);
  return bytes.data() + offset;
}
inline std::uint16_t Get16(std::span<const std::uint8_t> bytes, std::size_t offset, std::uint32_t page) {
  return Get16(At(bytes, offset, 2, page));
}
inline std::uint32_t Get32(std::span<const std::uint8_t> bytes, std::size_t offset, std::uint32_t page) {
  return Get32(At(bytes, offset, 4, page));
}

}  // namespace kestrelon::jet
