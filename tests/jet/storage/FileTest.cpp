#include <array>
#include <fstream>

#include "jet/File.h"
#include "tests/jet/storage/Support.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::array<std::uint8_t, 3> kAbc = {'a', 'b', 'c'};

std::string MessageOf(const std::filesystem::path& path, OpenMode mode) {
  try {
    OpenFile(path, mode);
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

TEST(DiskFile, ReadsWhatWasWritten) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  {
    const auto file = OpenFile(path, OpenMode::kCreate);
    file->WriteAt(5, kAbc);
    file->Flush();
    EXPECT_EQ(file->Size(), 8u);
  }
  std::array<std::uint8_t, 4> bytes{};
  OpenFile(path, OpenMode::kRead)->ReadAt(4, bytes);
  EXPECT_THAT(bytes, ElementsAre(0, 'a', 'b', 'c'));
}

TEST(DiskFile, RefusesToReadPastItsEnd) {
  const ScopedFolder folder;
  const auto file = OpenFile(folder / "new.dat", OpenMode::kCreate);
  std::array<std::uint8_t, 4> bytes{};
  EXPECT_THROW(file->ReadAt(0, bytes), CorruptFile);
}

TEST(DiskFile, IsNotCreatedOverAnother) {
  const ScopedFolder folder;
  OpenFile(folder / "new.dat", OpenMode::kCreate);
  EXPECT_THROW(OpenFile(folder / "new.dat", OpenMode::kCreate), Error);
}

TEST(DiskFile, SaysWhenItIsMissing) {
  const ScopedFolder folder;
  EXPECT_THAT(MessageOf(folder / "none.dat", OpenMode::kRead), HasSubstr("Could not find file '"));
  EXPECT_THAT(MessageOf(folder / "none.dat", OpenMode::kReadWrite), HasSubstr("none.dat'."));
}

TEST(DiskFile, IsForOneWriterAlone) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  auto file = OpenFile(path, OpenMode::kCreate);
  EXPECT_THAT(MessageOf(path, OpenMode::kReadWrite), HasSubstr("; file already in use."));
  EXPECT_THAT(MessageOf(path, OpenMode::kRead), HasSubstr("; file already in use."));
  file.reset();
  file = OpenFile(path, OpenMode::kRead);
  EXPECT_NO_THROW(OpenFile(path, OpenMode::kRead));
  EXPECT_THAT(MessageOf(path, OpenMode::kReadWrite), HasSubstr("; file already in use."));
}

TEST(FailingFile, FailsAtTheGivenWriteAndLater) {
  const auto bytes = std::make_shared<std::vector<std::uint8_t>>();
  const auto file = OpenFailingFile(OpenMemoryFile(bytes), 2);
  file->WriteAt(0, kAbc);
  file->Flush();
  EXPECT_THROW(file->WriteAt(3, kAbc), Error);
  EXPECT_THROW(file->Flush(), Error);
  EXPECT_EQ(bytes->size(), 3u);
}

TEST(FailingFile, TearsTheFailingWriteWhenAskedTo) {
  const auto bytes = std::make_shared<std::vector<std::uint8_t>>();
  const auto file = OpenFailingFile(OpenMemoryFile(bytes), 0, 2);
  EXPECT_THROW(file->WriteAt(0, kAbc), Error);
  EXPECT_THAT(*bytes, ElementsAre('a', 'b'));
}

TEST(FileStamp, ChangesWithTheFile) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  OpenFile(path, OpenMode::kCreate)->WriteAt(0, kAbc);
  const FileStamp stamp = StampOf(path);
  EXPECT_EQ(stamp, StampOf(path));
  EXPECT_EQ(stamp.size, 3u);
  OpenFile(path, OpenMode::kReadWrite)->WriteAt(3, kAbc);
  EXPECT_NE(stamp, StampOf(path));
  EXPECT_THROW(StampOf(folder / "none.dat"), Error);
}

// For other generations and encoded files see RefusedFilesTest.cpp.
TEST(Open, RefusesWhatIsNoDatabase) {
  const auto damaged = CreateInMemory({});
  (*damaged)[4] ^= 1;  // its name
  EXPECT_THROW(OpenInMemory(damaged), CorruptFile);
  EXPECT_THROW(OpenInMemory(std::make_shared<std::vector<std::uint8_t>>()), CorruptFile);
  EXPECT_THROW(OpenInMemory(std::make_shared<std::vector<std::uint8_t>>(100000, 'x')), CorruptFile);
}

}  // namespace
}  // namespace kestrelon::jet
