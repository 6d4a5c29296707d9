#include <gtest/gtest.h>

#include <bit>
#include <string_view>

#include "jet/page/Header.h"

namespace kestrelon::jet {
namespace {

using header::Kind;

// Page 0 of a new file, with some bytes XORed. Masking is a XOR too, so what is done to the stored bytes is
// done to their meaning.
class Page0 {
 public:
  Page0& Flip(std::size_t offset, std::uint32_t bits) {
    Put32(page_.data() + offset, Get32(page_.data() + offset) ^ bits);
    return *this;
  }
  Kind Found() const { return header::KindOf(page_.data()); }

 private:
  std::array<std::uint8_t, kPageSize> page_ = header::NewPage();
};

TEST(Header, IsThatOfAPlainJet4DatabaseWhenNew) { EXPECT_EQ(Page0().Found(), Kind::kJet4); }

TEST(Header, CarriesItsConstantsMasked) {
  const auto page = header::NewPage();
  EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(page.data()) + 4, 16),
            std::string_view("Standard Jet DB\0", 16));
  EXPECT_EQ(Get32(page.data() + 0x14), 1u);
  EXPECT_EQ(Get32(page.data() + 0x18), 0x62036EB5u);
  EXPECT_EQ(Get32(page.data() + 0x94), 0xD4622DE9u);
  EXPECT_EQ(Get32(page.data() + 0x98), 0x0654u);
  EXPECT_EQ(Get16(page.data() + 0xE00), 0x0101);
  EXPECT_EQ(Get16(page.data() + 0xFFE), 0x0100);
}

TEST(Header, TellsTheGenerationsApart) {
  EXPECT_EQ(Page0().Flip(0x14, 1 ^ 0).Found(), Kind::kOlder);
  EXPECT_EQ(Page0().Flip(0x14, 1 ^ 2).Found(), Kind::kNewer);
  EXPECT_EQ(Page0().Flip(0x14, 1 ^ 5).Found(), Kind::kNewer);
  const std::uint32_t jetToAce = ('J' ^ 'A') << 8 | ('e' ^ 'C') << 16 | std::uint32_t{'t' ^ 'E'} << 24;
  EXPECT_EQ(Page0().Flip(0x0C, jetToAce).Found(), Kind::kNewer);
  EXPECT_EQ(Page0().Flip(0x0C, jetToAce).Flip(0x14, 1 ^ 2).Found(), Kind::kNewer);
}

TEST(Header, IsNoDatabasesUnderAnotherName) {
  EXPECT_EQ(Page0().Flip(0x04, 1).Found(), Kind::kNoDatabase);
  EXPECT_EQ(Page0().Flip(0x10, 0x01000000).Found(), Kind::kNoDatabase) << "the name ends with a zero";
}

TEST(Header, ShowsAnEncodingKeyAnywhereInItsFourBytes) {
  EXPECT_EQ(Page0().Flip(0x3E, 0x00000001).Found(), Kind::kEncoded);
  EXPECT_EQ(Page0().Flip(0x3E, 0x80000000).Found(), Kind::kEncoded);
}

TEST(Header, ShowsAPasswordOfOneToTwentyCharacters) {
  EXPECT_EQ(Page0().Flip(0x42, u'a').Found(), Kind::kPassword);
  EXPECT_EQ(Page0().Flip(0x66, std::uint32_t{u'z'} << 16).Found(), Kind::kPassword);
}

// The password is masked with the day of the creation, so a date that is none leaves it unknown.
TEST(Header, NeedsACreationDateThatIsANumber) {
  const auto flip = [](double to) {
    const std::uint64_t bits =
        std::bit_cast<std::uint64_t>(to) ^ 0x40E29FF17D1F72BCu;  // the date that new pages have
    return Page0().Flip(0x72, static_cast<std::uint32_t>(bits)).Flip(0x76, std::uint32_t(bits >> 32)).Found();
  };
  EXPECT_EQ(flip(std::bit_cast<double>(0x7FF8000000000000u)), Kind::kNoDatabase);
  EXPECT_EQ(flip(1e300), Kind::kNoDatabase);
  EXPECT_EQ(flip(-1e300), Kind::kNoDatabase);
  EXPECT_EQ(flip(38143.0), Kind::kJet4);
  EXPECT_EQ(flip(38144.0), Kind::kPassword);
}

}  // namespace
}  // namespace kestrelon::jet
