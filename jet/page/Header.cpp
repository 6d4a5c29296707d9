#include "jet/page/Header.h"

#include <bit>
#include <cstring>
#include <string_view>
#include <utility>

// Page 0:
//
//   OFFSET  SIZE  MEANING
//   0x00    4     00 01 00 00
//   0x04    16    "Standard Jet DB", NUL (newer generations: "Standard ACE DB", NUL)
//   0x14    4     1: Jet 4; 0: the generation before; 2 and up: those after
//   0x18    128   masked, see below
//   0x98    4     54 06 00 00
//   0x9C    4     "4.0", NUL
//   0xE00   512   256 commit pairs of 2 bytes, one a user: 00 01, or a count in the first two; 00 00 while
//                 the user is writing
//
// Masked part (RC4 key stream of C7 DA 39 6B), unmasked:
//
//   0x18    8     00 01 00 00 01 01 00 00
//   0x20    16    u32 2, 3, 4, 5: definition pages of the engine's tables
//   0x3C    2     code page 1252
//   0x3E    4     page encoding key, 0 = none
//   0x42    40    password, each u32 XORed with the whole days of the creation date
//   0x6A    4     build number of the engine that made the file
//   0x6E    4     default sort order: u16 1033, u8 0, u8 0
//   0x72    8     creation date
//
// New files always carry the same creation date: stored security identifiers are masked with a string that
// depends on it in a way that is not known, so the identifiers known for one date go with that date.

namespace kestrelon::jet::header {
namespace {

constexpr std::size_t kMasked = 0x18, kMaskedBytes = 128;
constexpr std::size_t kEncodingKey = 0x3E, kPassword = 0x42, kPasswordWords = 10, kCreated = 0x72;
constexpr std::string_view kSignature("Standard Jet DB\0", 16), kNewerSignature("Standard ACE DB\0", 16);
constexpr std::uint32_t kJet4 = 1;
constexpr std::size_t kCommitPairs = 256;

void ApplyMask(std::uint8_t* masked) {
  static constexpr std::uint8_t kKey[4] = {0xC7, 0xDA, 0x39, 0x6B};
  std::array<std::uint8_t, 256> state;
  for (std::size_t i = 0; i < 256; ++i) state[i] = static_cast<std::uint8_t>(i);
  for (std::size_t i = 0, j = 0; i < 256; ++i) {
    j = (j + state[i] + kKey[i % 4]) & 0xFF;
    std::swap(state[i], state[j]);
  }
  std::size_t i = 0, j = 0;
  for (std::size_t at = 0; at < kMaskedBytes; ++at) {
    i = (i + 1) & 0xFF;
    j = (j + state[i]) & 0xFF;
    std::swap(state[i], state[j]);
    masked[at] = static_cast<std::uint8_t>(masked[at] ^ state[(state[i] + state[j]) & 0xFF]);
  }
}

}  // namespace

Kind KindOf(const std::uint8_t* page) {
  if (std::memcmp(page + 4, kNewerSignature.data(), kNewerSignature.size()) == 0) return Kind::kNewer;
  if (std::memcmp(page + 4, kSignature.data(), kSignature.size()) != 0) return Kind::kNoDatabase;
  if (const std::uint32_t generation = Get32(page + 0x14); generation != kJet4)
    return generation < kJet4 ? Kind::kOlder : Kind::kNewer;
  std::array<std::uint8_t, kMaskedBytes> plain;
  std::memcpy(plain.data(), page + kMasked, kMaskedBytes);
  ApplyMask(plain.data());
  const auto at = [&plain](std::size_t offset) { return plain.data() + offset - kMasked; };
  if (Get32(at(kEncodingKey)) != 0) return Kind::kEncoded;
  const double created = std::bit_cast<double>(Get64(at(kCreated)));
  if (!(created > -1e6 && created < 1e7)) return Kind::kNoDatabase;
  const auto day = static_cast<std::uint32_t>(static_cast<std::int32_t>(created));
  for (std::size_t word = 0; word < kPasswordWords; ++word) {
    if (Get32(at(kPassword + 4 * word)) != day) return Kind::kPassword;
  }
  return Kind::kJet4;
}

bool WriteUnfinished(const std::uint8_t* page) {
  for (std::size_t pair = 0; pair < kCommitPairs; ++pair) {
    if (std::memcmp(page + kCommitPair + kCommitPairBytes * pair, kUnfinished.data(), kCommitPairBytes) == 0)
      return true;
  }
  return false;
}

std::array<std::uint8_t, kPageSize> NewPage() {
  std::array<std::uint8_t, kPageSize> page{};
  std::uint8_t* at = page.data();
  at[1] = 0x01;
  std::memcpy(at + 4, kSignature.data(), kSignature.size());
  Put32(at + 0x14, kJet4);
  at[0x19] = 0x01;
  at[0x1C] = 0x01;
  at[0x1D] = 0x01;
  for (std::uint32_t table = 0; table < 4; ++table) Put32(at + 0x20 + 4 * table, 2 + table);
  Put16(at + 0x3C, 1252);
  for (std::size_t i = 0; i < kPasswordWords; ++i) Put32(at + kPassword + 4 * i, 38143);  // none
  Put32(at + 0x6A, 8618);
  Put16(at + 0x6E, 1033);
  static constexpr std::uint8_t kDate[8] = {0xBC, 0x72, 0x1F, 0x7D, 0xF1, 0x9F, 0xE2, 0x40};  // 38143.54...
  std::memcpy(at + kCreated, kDate, sizeof kDate);
  ApplyMask(at + kMasked);
  Put32(at + 0x98, 0x0654);
  std::memcpy(at + 0x9C, "4.0", 4);
  for (std::size_t pair = 0; pair < kCommitPairs; ++pair)
    at[kCommitPair + kCommitPairBytes * pair + 1] = 0x01;
  at[kCommitPair] = 0x01;  // the first user's differs in files of Access too
  return page;
}

}  // namespace kestrelon::jet::header
