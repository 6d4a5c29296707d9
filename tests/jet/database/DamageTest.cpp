#include "jet/page/DataPage.h"
#include "jet/page/Pager.h"
#include "tests/jet/Support.h"

namespace kestrelon::jet {
namespace {

constexpr std::uint8_t kMapRows = 100, kLongValues = 101;  // told apart from kData by their owner

std::uint8_t KindOf(const std::vector<std::uint8_t>& bytes, std::size_t page) {
  const std::uint8_t* at = bytes.data() + page * kPageSize;
  if (at[0] != page_type::kData || page == Pager::kGlobalMapPage) return at[0];
  return data_page::Owner(at) == 0 ? kMapRows : data_page::Owner(at) == kLongValueOwner ? kLongValues : at[0];
}

// The last page of a kind.
std::size_t PageOfKind(const std::vector<std::uint8_t>& bytes, std::uint8_t kind) {
  for (std::size_t page = bytes.size() / kPageSize; page-- > 2;) {
    if (KindOf(bytes, page) == kind) return page;
  }
  ADD_FAILURE() << "no page of kind " << int{kind};
  return 0;
}

// Reads all that a file holds. Damage may show as an Error, and as nothing else.
void ReadEverything(const ByteVector& bytes) {
  try {
    const auto database = OpenInMemory(bytes);
    std::vector<std::u16string> names = database->TableNames();
    names.push_back(u"MSysObjects");
    for (const std::u16string& name : names) {
      try {
        ReadAll(database->OpenTable(name));
      } catch (const Error&) {
      }
    }
    database->Check();
  } catch (const Error&) {
  }
}

// Changes and copies what it can.
void ChangeEverything(const ByteVector& bytes) {
  try {
    const auto database = OpenInMemory(bytes);
    for (const char16_t* name : {u"FTable", u"TreeviewTable"}) {
      try {
        Table& table = database->OpenTable(name);
        Row row(table.Columns().size());
        table.Insert(row);
        const Rows rows = ReadAll(table);
        const std::pair<std::size_t, Value> change{2, Repeat(u"文", 50)};
        for (const auto& [id, values] : rows) table.Update(id, {&change, 1});
        for (const auto& [id, values] : rows) table.Delete(id);
        table.DeleteAll();
      } catch (const Error&) {
      } catch (const std::out_of_range&) {  // a column that the damage took away
      }
    }
    database->Flush();
  } catch (const Error&) {
  }
  try {
    auto packed = std::make_shared<std::vector<std::uint8_t>>();
    OpenInMemory(bytes)->CompactInto(*OpenMemoryFile(packed));
  } catch (const Error&) {
  }
}

ByteVector SmallFile() {
  Fixture fixture;
  for (int i = 0; i < 12; ++i) fixture.Insert(VariedRow(i));
  const RowId row = fixture.Insert(VariedRow(3));
  fixture.Update(row, 6, Repeat(u"chain", 5000));
  fixture.Update(row, 4, Repeat(u"row", 900));
  for (const auto& [id, values] : Rows(fixture.model))
    fixture.Update(id, 2, Repeat(u"文", 255));  // moved rows
  for (int i = 0; i < 20; ++i) fixture.Tree().Insert(Row(4));
  fixture.database->Flush();
  return fixture.bytes;
}

class FlippedBytes : public testing::TestWithParam<std::uint8_t> {};

TEST_P(FlippedBytes, AreReadOrRefused) {
  const ByteVector bytes = SmallFile();
  const std::size_t page = GetParam() == 0 ? 0 : PageOfKind(*bytes, GetParam());
  for (std::size_t offset = page * kPageSize; offset < (page + 1) * kPageSize; ++offset) {
    for (const std::uint8_t mask : {std::uint8_t{0xFF}, std::uint8_t{0x01}}) {
      const std::uint8_t before = (*bytes)[offset];
      if (before == 0 && mask == 0x01) continue;  // in unused space one kind of damage is as good as another
      (*bytes)[offset] = static_cast<std::uint8_t>(before ^ mask);
      ReadEverything(bytes);
      // Where the page holds something, also through changing it.
      if (before != 0 || offset % 64 == 0) ChangeEverything(CopyOf(bytes));
      (*bytes)[offset] = before;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(OnePageOfEachKind, FlippedBytes,
                         testing::Values(page_type::kHeader, page_type::kData, page_type::kDefinition,
                                         page_type::kIndexLeaf, kMapRows, kLongValues));

TEST(FlippedMaps, OfFreePagesAreReadOrRefused) {
  const ByteVector bytes = SmallFile();
  for (std::size_t offset = kPageSize; offset < 2 * kPageSize; ++offset) {
    if (offset % kPageSize > 40 && offset % kPageSize < 3900) continue;  // unused
    (*bytes)[offset] ^= 0xFF;
    ReadEverything(bytes);
    ChangeEverything(CopyOf(bytes));
    (*bytes)[offset] ^= 0xFF;
  }
}

TEST(FlippedPages, OfIndexNodesAndMapBitsAreReadOrRefused) {
  Fixture fixture;
  for (int i = 0; i < 2500; ++i) fixture.Tree().Insert(Row(4));
  for (int i = 0; i < 600; ++i)
    fixture.Insert(ItemRow(u"", u"", u"", u"", Repeat(u"m", 1030), u"", Repeat(u"n", 1030)));
  fixture.database->Flush();
  for (const std::uint8_t kind : {page_type::kIndexNode, page_type::kMapBits}) {
    const std::size_t page = PageOfKind(*fixture.bytes, kind);
    for (std::size_t offset = 0; offset < kPageSize; offset += offset < 32 ? 1 : 397) {
      (*fixture.bytes)[page * kPageSize + offset] ^= 0xFF;
      ReadEverything(fixture.bytes);
      (*fixture.bytes)[page * kPageSize + offset] ^= 0xFF;
    }
  }
}

TEST(CutFile, IsReadOrRefusedAtEveryPage) {
  const ByteVector bytes = SmallFile();
  for (std::size_t size = 0; size < bytes->size(); size += 1024) {
    const ByteVector cut = CopyOf(bytes);
    cut->resize(size);
    ReadEverything(cut);
    ChangeEverything(cut);
  }
}

TEST(CutFile, StillOpensWhereOnlyAPartOfANewPageIsLost) {
  const ByteVector bytes = SmallFile();
  bytes->resize(bytes->size() + 100);
  EXPECT_THAT(OpenInMemory(bytes)->Check(), testing::IsEmpty());
}

// Calls each(bytes of a row's page, slot) for the rows of FTable.
template <class Each>
void ForEachRow(const ByteVector& bytes, Each&& each) {
  const auto database = OpenInMemory(bytes);
  std::vector<RowId> rows;
  for (Cursor cursor = database->OpenTable(u"FTable").Rows(); cursor.Next();) rows.push_back(cursor.Row());
  for (const RowId row : rows) {
    const auto number = static_cast<std::uint32_t>(row);
    each(bytes->data() + (number >> 8) * kPageSize, number & 0xFF);
  }
}

// Rows that share a long value of 60,000 bytes.
ByteVector SharedLongValue(int rows) {
  Fixture fixture;
  const auto insert = [&](std::u16string comment) {
    return fixture.Insert(ItemRow(u"", u"", u"", u"", u"", u"", std::move(comment)));
  };
  insert(Repeat(u"chain", 30'000));
  for (int i = 0; i < rows; ++i) insert(Repeat(u"one row of its own", 200));
  fixture.database->Flush();
  std::vector<std::uint8_t> shared;
  ForEachRow(fixture.bytes, [&shared](std::uint8_t* page, std::size_t slot) {
    std::uint8_t* at = page + data_page::Start(page, slot);
    while (Get32(at) != 60'000 && Get32(at) != (202 | 0x40000000)) ++at;
    if (shared.empty()) shared.assign(at, at + 12);
    std::copy(shared.begin(), shared.end(), at);
  });
  return fixture.bytes;
}

void ExpectRefused(const ByteVector& bytes) {
  const auto database = OpenInMemory(bytes);
  EXPECT_THROW(ReadAll(database->OpenTable(u"FTable")), CorruptFile);
  EXPECT_THAT(database->Check(),
              testing::Contains(IsFinding(Finding::Kind::kDamage, "hold many times more than the file")));
  auto packed = std::make_shared<std::vector<std::uint8_t>>();
  EXPECT_THROW(database->CompactInto(*OpenMemoryFile(packed)), CorruptFile);
}

TEST(RowsThatShareALongValue, AreReadWhileTheyHoldNoMoreThanTheFile) {
  const ByteVector bytes = SharedLongValue(1);
  const auto database = OpenInMemory(bytes);
  EXPECT_EQ(ReadAll(database->OpenTable(u"FTable")).size(), 2u);
}

TEST(RowsThatShareALongValue, AreRefusedWhenTheyHoldManyTimesMoreThanTheFile) {
  ExpectRefused(SharedLongValue(60));
}

TEST(RowsThatWereMovedToOnePlace, AreRefusedWhenTheyHoldManyTimesMoreThanTheFile) {
  Fixture fixture;
  const RowId moved = fixture.Insert(ItemRow(u"", u"", u"moved", u"", u"", u"", u""));
  for (int i = 0; i < 90; ++i) fixture.Insert(ItemRow(u"", u"", u"row", u"", u"", u"", u""));
  for (const std::size_t column : {2u, 3u}) fixture.Update(moved, column, Repeat(u"文", 255));
  fixture.Update(moved, 4, Repeat(u"文", 30));
  for (int i = 0; i < 900; ++i) fixture.Insert(ItemRow(u"", u"", u"row", u"", u"", u"", u""));
  fixture.database->Flush();
  std::uint32_t place = 0;
  ForEachRow(fixture.bytes, [&place](std::uint8_t* page, std::size_t slot) {
    std::uint8_t* at = page + data_page::Start(page, slot);
    if (place == 0) place = Get32(at);
    Put32(at, place);
    Put16(page + kDataHeader + 2 * slot, data_page::Slot(page, slot) | kSlotMoved);
  });
  ExpectRefused(fixture.bytes);
}

TEST(SwappedPages, AreReadOrRefused) {
  const ByteVector bytes = SmallFile();
  const std::size_t pages = bytes->size() / kPageSize;
  for (std::size_t a = 1; a < pages; ++a) {
    for (std::size_t b = 1; b < pages; b += 3) {
      const ByteVector damaged = CopyOf(bytes);
      const auto from = bytes->begin() + static_cast<std::ptrdiff_t>(b * kPageSize);
      std::copy(from, from + kPageSize, damaged->begin() + static_cast<std::ptrdiff_t>(a * kPageSize));
      ReadEverything(damaged);
      if ((a + b) % 4 == 0) ChangeEverything(damaged);
    }
  }
}

}  // namespace
}  // namespace kestrelon::jet
