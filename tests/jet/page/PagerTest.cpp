#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "jet/page/GlobalMap.h"
#include "jet/page/Pager.h"
#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A file of `count` pages, all in use.
ByteVector FileOfPages(std::uint32_t count) {
  Pager pager;
  while (pager.PageCount() < count) pager.Write(pager.Allocate())[0] = page_type::kIndexLeaf;
  auto bytes = std::make_shared<std::vector<std::uint8_t>>();
  pager.WriteAll(*OpenMemoryFile(bytes));
  return bytes;
}

TEST(Pager, AppendsWhereNothingIsFree) {
  Pager pager(OpenMemoryFile(FileOfPages(10)));
  pager.LoadFreePages();
  EXPECT_EQ(pager.Allocate(), 10u);
  EXPECT_EQ(pager.PageCount(), 11u);
}

TEST(Pager, HandsOutTheLowestFreePageAboveTheGivenOne) {
  const ByteVector bytes = FileOfPages(20);
  Pager pager(OpenMemoryFile(bytes));
  pager.LoadFreePages();
  for (const std::uint32_t page : {4u, 8u, 12u}) pager.Free(page);
  pager.Flush();

  EXPECT_EQ(pager.Allocate(5), 8u);
  EXPECT_EQ(pager.Allocate(), 4u);
  EXPECT_EQ(pager.Allocate(12), 20u);
  EXPECT_EQ(pager.Allocate(), 12u);
}

TEST(Pager, KeepsAFreedPageFromUseUntilTheNextFlush) {
  const ByteVector bytes = FileOfPages(10);
  Pager pager(OpenMemoryFile(bytes));
  pager.LoadFreePages();
  pager.Free(4);
  EXPECT_TRUE(pager.IsFree(4));
  EXPECT_EQ(pager.Allocate(), 10u);

  pager.Flush();

  EXPECT_EQ(pager.Allocate(), 4u);
}

TEST(Pager, HandsOutAtOnceAFreedPageThatTheFileNeverUsed) {
  Pager pager(OpenMemoryFile(FileOfPages(10)));
  pager.LoadFreePages();
  const std::uint32_t page = pager.Allocate();
  pager.Free(page);
  EXPECT_EQ(pager.Allocate(), page);
}

TEST(Pager, RefusesToFreeAPageTwice) {
  Pager pager(OpenMemoryFile(FileOfPages(10)));
  pager.LoadFreePages();
  pager.Free(4);
  EXPECT_THROW(pager.Free(4), CorruptFile);
  EXPECT_THROW(pager.Free(0), CorruptFile);
  EXPECT_THROW(pager.Free(10), CorruptFile);
}

TEST(Pager, ClearsAPageBeforeItIsUsedAgain) {
  const ByteVector bytes = FileOfPages(10);
  Pager pager(OpenMemoryFile(bytes));
  pager.LoadFreePages();
  pager.Free(4);
  pager.Flush();
  ASSERT_EQ(pager.Allocate(), 4u);
  EXPECT_EQ(pager.Read(4)[0], 0);
}

TEST(Pager, RemembersFreePagesPast512AndPast32736) {
  for (const std::uint32_t count : {600u, 33000u}) {
    const ByteVector bytes = FileOfPages(count);
    {
      Pager pager(OpenMemoryFile(bytes));
      pager.LoadFreePages();
      for (const std::uint32_t page : {7u, 550u, count - 1}) pager.Free(page);
      pager.Flush();
    }
    Pager pager(OpenMemoryFile(bytes));
    pager.LoadFreePages();
    EXPECT_THAT(global_map::FreePages(pager), ElementsAre(7, 550, count - 1));
    EXPECT_EQ(pager.Allocate(), 7u);
  }
}

TEST(Pager, PutsEverythingBackOnRollback) {
  const ByteVector bytes = FileOfPages(40);
  Pager pager(OpenMemoryFile(bytes));
  pager.LoadFreePages();
  pager.Free(9);
  pager.Flush();
  const std::vector<std::uint8_t> before = *bytes;

  pager.Begin();
  pager.Write(5)[100] = 77;
  pager.Free(6);
  EXPECT_EQ(pager.Allocate(), 9u);
  for (int i = 0; i < 600; ++i) pager.Allocate();
  pager.Rollback();

  EXPECT_FALSE(pager.Dirty());
  EXPECT_EQ(pager.PageCount(), 40u);
  EXPECT_EQ(pager.Read(5)[100], 0);
  EXPECT_FALSE(pager.IsFree(6));
  EXPECT_THAT(global_map::FreePages(pager), ElementsAre(9));
  pager.Flush();
  EXPECT_EQ(*bytes, before);
}

TEST(Pager, KeepsWhatWasCommittedBeforeARollback) {
  Pager pager(OpenMemoryFile(FileOfPages(10)));
  pager.LoadFreePages();
  pager.Begin();
  pager.Write(5)[100] = 1;
  pager.Commit();
  pager.Begin();
  pager.Write(5)[100] = 2;
  pager.Rollback();
  EXPECT_EQ(pager.Read(5)[100], 1);
  EXPECT_TRUE(pager.Dirty());
}

TEST(Pager, WritesOnlyChangedPages) {
  const ByteVector bytes = FileOfPages(10);
  Pager pager(OpenMemoryFile(bytes));
  pager.LoadFreePages();
  pager.Read(5);
  pager.Write(7)[100] = 9;
  std::fill(bytes->begin(), bytes->end(), 0xEE);

  pager.Flush();

  EXPECT_EQ((*bytes)[7 * kPageSize + 100], 9);
  EXPECT_EQ((*bytes)[5 * kPageSize + 100], 0xEE);
  EXPECT_FALSE(pager.Dirty());
}

TEST(Pager, RefusesAPageThatTheFileDoesNotHave) {
  Pager pager(OpenMemoryFile(FileOfPages(10)));
  EXPECT_THROW(pager.Read(10), CorruptFile);
  EXPECT_THROW(pager.Read(0xFFFFFFFF), CorruptFile);
}

TEST(Pager, RefusesAFileOfLessThanTwoPages) {
  EXPECT_THROW(Pager(OpenMemoryFile(std::make_shared<std::vector<std::uint8_t>>(4096))), CorruptFile);
}

TEST(Pager, ReadsAgainWhatItLetGo) {
  Pager pager(OpenMemoryFile(FileOfPages(40)));
  pager.LoadFreePages();
  pager.Write(5)[100] = 9;
  EXPECT_EQ(pager.Read(30)[0], page_type::kIndexLeaf);
  pager.ReleaseClean();
  EXPECT_EQ(pager.Read(5)[100], 9);
  EXPECT_EQ(pager.Read(30)[0], page_type::kIndexLeaf);
}

TEST(Pager, ReadsAgainAndWritesAgainWhatItSpilled) {
  Pager pager;
  while (pager.PageCount() < 100) pager.Write(pager.Allocate())[0] = page_type::kIndexLeaf;
  pager.Write(50)[100] = 1;
  auto bytes = std::make_shared<std::vector<std::uint8_t>>();
  const auto file = OpenMemoryFile(bytes);

  pager.Spill(*file, 20);

  EXPECT_EQ(bytes->size(), 96u * 4096);  // the last pages are still filling
  EXPECT_EQ((*bytes)[31 * 4096], 0);     // of pages in one piece with those before the 20th
  EXPECT_EQ((*bytes)[32 * 4096], page_type::kIndexLeaf);
  EXPECT_EQ(pager.Read(50)[100], 1);
  pager.Write(50)[101] = 2;
  pager.Spill(*file, 20);
  pager.Write(70)[100] = 3;
  pager.WriteAll(*file);

  Pager again(OpenMemoryFile(bytes));
  EXPECT_EQ(again.PageCount(), 100u);
  EXPECT_EQ(again.Read(31)[0], page_type::kIndexLeaf);
  EXPECT_EQ(again.Read(50)[100], 1);
  EXPECT_EQ(again.Read(50)[101], 2);
  EXPECT_EQ(again.Read(70)[100], 3);
  EXPECT_EQ(again.Read(99)[0], page_type::kIndexLeaf);
}

TEST(Pager, WritesTheHeaderOfANewImageLast) {
  Pager pager;
  pager.Write(0)[4] = 'S';
  while (pager.PageCount() < 100) pager.Write(pager.Allocate())[0] = page_type::kIndexLeaf;
  auto bytes = std::make_shared<std::vector<std::uint8_t>>();
  EXPECT_THROW(pager.WriteAll(*OpenFailingFile(OpenMemoryFile(bytes), 6)), Error);
  EXPECT_EQ((*bytes)[99 * 4096], page_type::kIndexLeaf);
  EXPECT_EQ((*bytes)[4], 0);
}

}  // namespace
}  // namespace kestrelon::jet
