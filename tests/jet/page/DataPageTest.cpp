#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "jet/page/DataPage.h"

namespace kestrelon::jet {
namespace {

struct Page {
  Page() { data_page::Format(bytes.data(), 7); }
  std::size_t Append(std::size_t size, std::uint8_t fill) {
    const std::size_t slot = data_page::Append(bytes.data(), size, 0);
    std::memset(bytes.data() + data_page::Start(bytes.data(), slot), fill, size);
    return slot;
  }
  std::string Content(std::size_t slot) const {
    const std::size_t start = data_page::Start(bytes.data(), slot);
    return {bytes.begin() + static_cast<std::ptrdiff_t>(start),
            bytes.begin() + static_cast<std::ptrdiff_t>(data_page::End(bytes.data(), slot))};
  }
  std::size_t FreeField() const { return Get16(bytes.data() + 2); }
  std::array<std::uint8_t, kPageSize> bytes{};
};

TEST(DataPage, CountsItsFreeBytes) {
  Page page;
  EXPECT_EQ(page.FreeField(), 4082u);

  page.Append(100, 'a');

  EXPECT_EQ(page.FreeField(), 3980u);
  EXPECT_EQ(data_page::FreeBytes(page.bytes.data()), 3980u);
}

TEST(DataPage, ClosesTheGapWhenARowGrowsShrinksOrGoes) {
  Page page;
  for (const char fill : {'a', 'b', 'c'}) page.Append(10, static_cast<std::uint8_t>(fill));

  data_page::Resize(page.bytes.data(), 1, 4, 0);
  EXPECT_EQ(page.Content(0), std::string(10, 'a'));
  EXPECT_EQ(page.Content(1), std::string(4, 'b'));
  EXPECT_EQ(page.Content(2), std::string(10, 'c'));

  data_page::Resize(page.bytes.data(), 1, 20, 0);
  EXPECT_EQ(page.Content(1).substr(0, 4), std::string(4, 'b'));
  EXPECT_EQ(page.Content(2), std::string(10, 'c'));

  data_page::Delete(page.bytes.data(), 0);
  EXPECT_EQ(page.Content(0), "");
  EXPECT_EQ(page.Content(2), std::string(10, 'c'));
  EXPECT_EQ(page.FreeField(), 4096u - 30 - 14 - 6);
  EXPECT_NO_THROW(data_page::Check(page.bytes.data(), 1));
}

TEST(DataPage, IsEmptyWhenAllSlotsAreDeleted) {
  Page page;
  page.Append(10, 'a');
  page.Append(10, 'b');
  data_page::Delete(page.bytes.data(), 1);
  EXPECT_FALSE(data_page::Empty(page.bytes.data()));
  data_page::Delete(page.bytes.data(), 0);
  EXPECT_TRUE(data_page::Empty(page.bytes.data()));
}

TEST(DataPage, TakesNoMoreThan255Rows) {
  Page page;
  for (int i = 0; i < 255; ++i) page.Append(1, 'x');
  EXPECT_FALSE(data_page::HasRoomFor(page.bytes.data(), 1));
}

TEST(DataPage, IsRefusedWhenARowLiesOutside) {
  Page page;
  page.Append(10, 'a');
  page.Append(10, 'b');
  Put16(page.bytes.data() + 16, 4095);  // the second row above the first
  EXPECT_THROW(data_page::Check(page.bytes.data(), 1), CorruptFile);
  Put16(page.bytes.data() + 16, 15);  // within the slot table
  EXPECT_THROW(data_page::Check(page.bytes.data(), 1), CorruptFile);
  Put16(page.bytes.data() + 12, 0xFFFF);
  EXPECT_THROW(data_page::Check(page.bytes.data(), 1), CorruptFile);
}

}  // namespace
}  // namespace kestrelon::jet
