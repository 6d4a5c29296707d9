#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "jet/catalog/Layout.h"
#include "jet/page/DataPage.h"
#include "jet/row/LongValue.h"

namespace kestrelon::jet {
namespace {

using Stored = std::vector<std::uint8_t>;

struct LongValueFixture {
  LongValueFixture() : maps(pager), pages(pager, maps.Add(), maps.Add(), kLongValueOwner, false) {}
  std::array<std::uint8_t, long_value::kReference> Write(const Stored& stored) {
    std::array<std::uint8_t, long_value::kReference> reference{};
    long_value::Write(pager, pages, stored, reference.data());
    return reference;
  }
  Stored Read(std::span<const std::uint8_t> field) {
    Stored buffer;
    const auto stored = long_value::Read(pager, pages, field, buffer);
    return {stored.begin(), stored.end()};
  }
  Pager pager;
  MapRows maps;
  PageSet pages;
};

Stored BytesOf(std::size_t size) {
  Stored bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 31 >> 3);
  return bytes;
}

TEST(LongValue, ComesBackAtEverySize) {
  LongValueFixture fixture;
  for (const std::size_t size : {65u, 4075u, 4076u, 4077u, 8144u, 8145u, 131070u}) {
    EXPECT_EQ(fixture.Read(fixture.Write(BytesOf(size))), BytesOf(size)) << size;
  }
}

TEST(LongValue, LiesInOneRowUpTo4076Bytes) {
  LongValueFixture fixture;
  EXPECT_EQ(Get32(fixture.Write(BytesOf(4076)).data()), long_value::kRowBit | 4076);
  EXPECT_EQ(Get32(fixture.Write(BytesOf(4077)).data()), 4077u);
}

TEST(LongValue, SharesItsPageWithOthersWhenShort) {
  LongValueFixture fixture;
  for (int i = 0; i < 10; ++i) fixture.Write(BytesOf(300));
  EXPECT_EQ(fixture.pages.Pages().size(), 1u);
}

TEST(LongValue, GivesItsPagesBackWhenFreed) {
  LongValueFixture fixture;
  const auto chain = fixture.Write(BytesOf(50000));
  const auto row = fixture.Write(BytesOf(100));
  EXPECT_EQ(fixture.pages.Pages().size(), 14u);

  long_value::Free(fixture.pages, long_value::Pieces(fixture.pager, fixture.pages, chain));
  EXPECT_EQ(fixture.pages.Pages().size(), 1u);
  EXPECT_EQ(fixture.Read(row), BytesOf(100));

  long_value::Free(fixture.pages, long_value::Pieces(fixture.pager, fixture.pages, row));
  EXPECT_TRUE(fixture.pages.Pages().empty());
  EXPECT_THROW(fixture.Read(row), CorruptFile);
}

TEST(LongValue, IsRefusedWhenItsReferenceIsCutOff) {
  LongValueFixture fixture;
  EXPECT_THROW(fixture.Read(Stored(11)), CorruptFile);
  Stored inlineValue(15);
  long_value::PutInlineReference(inlineValue.data(), 4);
  EXPECT_THROW(fixture.Read(inlineValue), CorruptFile);
}

TEST(LongValue, IsRefusedWhenItsChainBitesItsTail) {
  LongValueFixture fixture;
  auto reference = fixture.Write(BytesOf(9000));
  const std::uint32_t first = Get32(reference.data() + 4);
  std::uint8_t* page = fixture.pager.Write(first >> 8);
  Put32(page + data_page::Start(page, 0), first);
  Put32(reference.data(), 4072 * 4);
  EXPECT_THROW(long_value::Pieces(fixture.pager, fixture.pages, reference), CorruptFile);
  Put32(reference.data(), long_value::kLengthBits);
  EXPECT_THROW(fixture.Read(reference), CorruptFile);
}

TEST(LongValue, IsRefusedWhenItEndsEarly) {
  LongValueFixture fixture;
  auto reference = fixture.Write(BytesOf(9000));
  Put32(reference.data(), 9001);
  EXPECT_THROW(fixture.Read(reference), CorruptFile);
}

}  // namespace
}  // namespace kestrelon::jet
