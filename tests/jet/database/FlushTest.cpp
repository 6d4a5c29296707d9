#include <utility>

#include "jet/base/Bytes.h"
#include "tests/jet/Support.h"

// Flushing in a process that lives on. What a stop leaves is in StoppedFlushTest.cpp.

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t kCommitPair = 0xE00;

ByteVector FileWithRows(int count) {
  Fixture fixture;
  for (int i = 0; i < count; ++i) fixture.Insert(VariedRow(i));
  fixture.database->Flush();
  return fixture.bytes;
}

std::string RefusalOf(const ByteVector& bytes) {
  try {
    OpenInMemory(bytes);
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

TEST(Flush, PutsTheCommitPairBackAsItWas) {
  const ByteVector bytes = FileWithRows(3);
  (*bytes)[kCommitPair] = 0x14;  // as Access leaves it after some use
  const std::vector<std::uint8_t> header(bytes->begin(), bytes->begin() + kPageSize);
  const auto database = OpenInMemory(bytes);
  database->OpenTable(u"FTable").Insert(VariedRow(3));
  database->Flush();
  EXPECT_TRUE(std::equal(header.begin(), header.end(), bytes->begin()));
}

TEST(Flush, MarksTheFileWhileItWritesInPlace) {
  const ByteVector bytes = FileWithRows(3);
  bool marked = false;
  class WatchedFile final : public File {
   public:
    WatchedFile(ByteVector watched, bool& seen)
        : bytes_(std::move(watched)), inner_(OpenMemoryFile(bytes_)), seen_(&seen) {}
    std::uint64_t Size() const override { return inner_->Size(); }
    void ReadAt(std::uint64_t offset, std::span<std::uint8_t> to) const override {
      inner_->ReadAt(offset, to);
    }
    void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> from) override {
      if (offset >= kPageSize) {
        EXPECT_THAT(
            std::vector<std::uint8_t>(bytes_->begin() + kCommitPair, bytes_->begin() + kCommitPair + 2),
            ElementsAre(0, 0));
        *seen_ = true;
      }
      inner_->WriteAt(offset, from);
    }
    void Flush() override {}

   private:
    ByteVector bytes_;
    std::unique_ptr<File> inner_;
    bool* seen_;
  };
  const auto database = Database::Open(std::make_unique<WatchedFile>(bytes, marked), u"watched");
  database->OpenTable(u"FTable").DeleteAll();  // all in place
  database->Flush();
  EXPECT_TRUE(marked);
}

TEST(Flush, LeavesAFileAsItWasWhenTheDiskIsFull) {
  const ByteVector bytes = FileWithRows(3);
  const std::size_t pages = bytes->size() / kPageSize;
  // New pages come first, and only they need room on the disk.
  const auto database = Database::Open(OpenFailingFile(OpenMemoryFile(bytes), 0, 5000), u"full");
  for (int i = 0; i < 200; ++i) database->OpenTable(u"FTable").Insert(VariedRow(i));
  EXPECT_THROW(database->Flush(), Error);
  EXPECT_FALSE(database->Unfinished());
  EXPECT_GT(bytes->size() / kPageSize, pages);
  EXPECT_EQ(OpenInMemory(bytes)->OpenTable(u"FTable").RowCount(), 3u);
  EXPECT_THAT(OpenInMemory(bytes)->Check(), IsEmpty());
}

// A file whose `failing`-th call of WriteAt or Flush fails, and no other.
class OnceFailingFile final : public File {
 public:
  OnceFailingFile(ByteVector bytes, int failing) : inner_(OpenMemoryFile(std::move(bytes))), left_(failing) {}
  std::uint64_t Size() const override { return inner_->Size(); }
  void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    inner_->ReadAt(offset, bytes);
  }
  void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
    Count();
    inner_->WriteAt(offset, bytes);
  }
  void Flush() override { Count(); }

 private:
  void Count() {
    if (left_-- == 0) throw Error(code::kGeneric, u"Could not write 'once': no reason.");
  }

  std::unique_ptr<File> inner_;
  int left_;
};

TEST(Flush, TakesTheMarkOffAgainWhenNothingWasWrittenInPlaceYet) {
  const ByteVector before = FileWithRows(3);
  for (int failing = 0;; ++failing) {
    const ByteVector bytes = CopyOf(before);
    const auto database = Database::Open(std::make_unique<OnceFailingFile>(bytes, failing), u"once");
    database->OpenTable(u"FTable").DeleteAll();
    try {
      database->Flush();
      EXPECT_GT(failing, 4);
      break;
    } catch (const Error&) {
    }
    // The mark and its flush are the first two calls.
    EXPECT_EQ(database->Unfinished(), failing >= 2) << failing;
    EXPECT_EQ(*bytes == *before, failing < 2) << failing;
  }
}

TEST(Flush, CanBeTriedAgainAfterAFailureAtAnyWrite) {
  const ByteVector before = FileWithRows(60);
  const auto change = [](Database& database) {
    Table& items = database.OpenTable(u"FTable");
    const Rows rows = ReadAll(items);
    for (const auto& [id, row] : rows) {
      if (static_cast<std::uint32_t>(id) % 3 == 0) items.Delete(id);
    }
    for (int i = 100; i < 150; ++i) items.Insert(VariedRow(i));
  };
  bool failed = true;
  for (std::size_t writes = 0; failed; ++writes) {
    const ByteVector bytes = CopyOf(before);
    const auto database = Database::Open(OpenFailingFile(OpenMemoryFile(bytes), writes, 700), u"failing");
    change(*database);
    try {
      database->Flush();
      failed = false;
      EXPECT_GT(writes, 6u);
    } catch (const Error&) {
      EXPECT_TRUE(database->Dirty());
    }
    // More changes between the two: pages given back by the first may be taken only when the file is whole.
    database->AttachFile(OpenMemoryFile(bytes));
    Table& items = database->OpenTable(u"FTable");
    const RowId row = items.Insert(VariedRow(1000));
    Rows expected = ReadAll(items);
    EXPECT_EQ(expected.at(row), VariedRow(1000));
    database->Flush();
    EXPECT_FALSE(database->Unfinished());
    ExpectRows(bytes, u"FTable", expected);
  }
}

TEST(Flush, DoesNotHandOutPagesThatAFailedOneWasToFree) {
  const ByteVector before = FileWithRows(60);
  const ByteVector bytes = CopyOf(before);
  const auto database = Database::Open(OpenFailingFile(OpenMemoryFile(bytes), 0), u"failing");
  Table& items = database->OpenTable(u"FTable");
  items.DeleteAll();
  EXPECT_THROW(database->Flush(), Error);

  // What follows is written to new pages first; a stop after that must still find the old rows.
  for (int i = 0; i < 60; ++i) items.Insert(VariedRow(i + 500));
  database->AttachFile(OpenFailingFile(OpenMemoryFile(bytes), 1));
  EXPECT_THROW(database->Flush(), Error);

  EXPECT_TRUE(ReadAll(OpenInMemory(bytes)->OpenTable(u"FTable")) ==
              ReadAll(OpenInMemory(before)->OpenTable(u"FTable")));
}

TEST(Flush, WritesNothingWhenNothingChanged) {
  const ByteVector bytes = FileWithRows(10);
  const auto database = Database::Open(OpenFailingFile(OpenMemoryFile(bytes), 0), u"failing");
  ReadAll(database->OpenTable(u"FTable"));
  EXPECT_NO_THROW(database->Flush());
}

TEST(Open, RefusesAFileThatAnyUserStoppedWriting) {
  for (const std::size_t pair : {0, 1, 255}) {
    const ByteVector bytes = FileWithRows(1);
    (*bytes)[kCommitPair + 2 * pair] = 0;
    (*bytes)[kCommitPair + 2 * pair + 1] = 0;
    EXPECT_THAT(RefusalOf(bytes),
                HasSubstr("The database 'memory' is damaged: writing to it was stopped before its end."));
  }
}

TEST(Open, TakesAnyCountInACommitPair) {
  const ByteVector bytes = FileWithRows(1);
  for (const std::uint8_t count : std::initializer_list<std::uint8_t>{0x00, 0x01, 0x4B, 0xFF}) {
    (*bytes)[kCommitPair] = count;
    (*bytes)[kCommitPair + 2] = count;
    EXPECT_EQ(RefusalOf(bytes), "");
  }
}

}  // namespace
}  // namespace kestrelon::jet
