#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <vector>

#ifdef __linux__
#include <sys/resource.h>
#endif

#include "jet/base/File.h"
#include "tests/jet/Support.h"
#include "tests/jet/Waits.h"

namespace kestrelon::jet {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::array<std::uint8_t, 3> kAbc = {'a', 'b', 'c'};

std::string MessageOf(const auto& body) {
  try {
    body();
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}
std::string MessageOf(const std::filesystem::path& path, OpenMode mode) {
  return MessageOf([&] { OpenFile(path, mode); });
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
  const Waits waits;
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

TEST(DiskFile, IsWaitedForWhileAnotherProgramHoldsIt) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  auto held = OpenFile(path, OpenMode::kCreate);
  int left = 3;
  const Waits waits([&] {
    if (--left == 0) held.reset();
  });
  EXPECT_NO_THROW(OpenFile(path, OpenMode::kReadWrite));
  EXPECT_EQ(waits.count, 3);
}

TEST(DiskFile, IsWaitedForNoLongerThanASecond) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  const auto held = OpenFile(path, OpenMode::kCreate);
  const Waits waits;
  EXPECT_THAT(MessageOf(path, OpenMode::kReadWrite), HasSubstr("; file already in use."));
  EXPECT_EQ(waits.total, std::chrono::milliseconds(1000));
}

TEST(DiskFile, IsNotWaitedForWhereWaitingDoesNotHelp) {
  const ScopedFolder folder;
  const Waits waits;
  EXPECT_THROW(OpenFile(folder / "none.dat", OpenMode::kReadWrite), Error);
  EXPECT_THROW(OpenFile(folder / "none", OpenMode::kRead), Error);
  OpenFile(folder / "new.dat", OpenMode::kCreate);
  EXPECT_THROW(OpenFile(folder / "new.dat", OpenMode::kCreate), Error);
  EXPECT_EQ(waits.count, 0);
}

// An opening that ends in the given ways, then with success; every mode that was asked for.
struct Attempts {
  Outcome operator()(OpenMode mode) {
    modes.push_back(mode);
    if (next < ends.size()) return ends[next++];
    return Outcome::kDone;
  }
  std::vector<Outcome> ends;
  std::size_t next = 0;
  std::vector<OpenMode> modes = {};
};

TEST(OpenPatiently, TriesAgainWhileTheFileIsHeldOrDenied) {
  const Waits waits;
  Attempts attempts{{Outcome::kHeld, Outcome::kDenied, Outcome::kHeld}};
  OpenMode mode = OpenMode::kReadWrite;
  EXPECT_EQ(OpenPatiently(mode, std::ref(attempts)), Outcome::kDone);
  EXPECT_EQ(mode, OpenMode::kReadWrite);
  EXPECT_EQ(attempts.modes.size(), 4u);
  EXPECT_EQ(waits.count, 3);
}

TEST(OpenPatiently, OpensAReadOnlyFileForReadingAtOnce) {
  const Waits waits;
  Attempts attempts{{Outcome::kReadOnly}};
  OpenMode mode = OpenMode::kReadWrite;
  EXPECT_EQ(OpenPatiently(mode, std::ref(attempts)), Outcome::kDone);
  EXPECT_EQ(mode, OpenMode::kRead);
  EXPECT_THAT(attempts.modes, ElementsAre(OpenMode::kReadWrite, OpenMode::kRead));
  EXPECT_EQ(waits.count, 0);
}

TEST(OpenPatiently, OpensAFileThatStaysDeniedForReadingAfterTheLastWait) {
  const Waits waits;
  Attempts attempts{std::vector<Outcome>(9, Outcome::kDenied)};
  OpenMode mode = OpenMode::kReadWrite;
  EXPECT_EQ(OpenPatiently(mode, std::ref(attempts)), Outcome::kDone);
  EXPECT_EQ(mode, OpenMode::kRead);
  EXPECT_EQ(attempts.modes.size(), 10u);
  EXPECT_EQ(waits.total, std::chrono::milliseconds(1000));
}

TEST(OpenPatiently, GivesUpOnAFileThatStaysHeldAndOpensItInNoOtherWay) {
  const Waits waits;
  Attempts attempts{std::vector<Outcome>(20, Outcome::kHeld)};
  OpenMode mode = OpenMode::kReadWrite;
  EXPECT_EQ(OpenPatiently(mode, std::ref(attempts)), Outcome::kHeld);
  EXPECT_THAT(attempts.modes, testing::Each(OpenMode::kReadWrite));
}

TEST(WithPatience, WaitsLongerAndLonger) {
  std::vector<std::chrono::milliseconds> times;
  const Wait before = ExchangeWait([&times](std::chrono::milliseconds time) { times.push_back(time); });
  EXPECT_EQ(WithPatience([] { return Outcome::kHeld; }), Outcome::kHeld);
  ExchangeWait(before);
  EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
  EXPECT_LE(times.front(), std::chrono::milliseconds(10));
}

TEST(RemoveFile, RemovesWhatIsThere) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  OpenFile(path, OpenMode::kCreate);
  EXPECT_TRUE(RemoveFile(path));
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(RemoveFile(path));
}

TEST(DiskFile, SaysThatItIsReadOnlyWhenWrittenTo) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  OpenFile(path, OpenMode::kCreate)->WriteAt(0, kAbc);
  const auto file = OpenFile(path, OpenMode::kRead);
  EXPECT_EQ(MessageOf([&] { file->WriteAt(0, kAbc); }),
            "Could not write '" + path.string() + "': the file is read-only.");
}

#ifdef __linux__
TEST(DiskFile, SaysThatTheDiskIsFull) {
  const auto file = OpenFile("/dev/full", OpenMode::kReadWrite);
  EXPECT_EQ(MessageOf([&] { file->WriteAt(0, kAbc); }),
            "Could not write '/dev/full': No space left on device.");
}

// The address 0 of a process's memory cannot be read: the system reports an input/output error.
TEST(DiskFile, SaysThatItCannotBeRead) {
  const auto file = OpenFile("/proc/self/mem", OpenMode::kRead);
  std::array<std::uint8_t, 4> bytes{};
  EXPECT_EQ(MessageOf([&] { file->ReadAt(0, bytes); }),
            "Could not read '/proc/self/mem': Input/output error.");
}

// The system cuts a write at the limit and reports the failure at the next one.
TEST(DiskFile, GoesOnAfterAShortWriteAndSaysWhyItEnds) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  const auto file = OpenFile(path, OpenMode::kCreate);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit two{2, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &two), 0);

  const std::string message = MessageOf([&] { file->WriteAt(0, kAbc); });

  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, oldHandler);
  EXPECT_EQ(message, "Could not write '" + path.string() + "': File too large.");
  EXPECT_EQ(file->Size(), 2u);
  file->WriteAt(0, kAbc);
  EXPECT_EQ(file->Size(), 3u);
}
#endif

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

TEST(FileStamp, OfAnOpenFileHoldsOnceItIsClosed) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  auto file = OpenFile(path, OpenMode::kCreate);
  file->WriteAt(0, kAbc);
  file->Flush();
  const auto stamp = file->Stamp();
  file.reset();
  EXPECT_EQ(stamp, StampOf(path));
  EXPECT_EQ(OpenFile(path, OpenMode::kReadWrite)->Stamp(), stamp);
}

// The clock by which the system stamps writes stands still for some milliseconds.
TEST(FileStamp, ChangesWithAWriteOfTheSameSizeThatFollowsAtOnce) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat";
  OpenFile(path, OpenMode::kCreate);
  for (int i = 0; i < 100; ++i) {
    std::optional<FileStamp> stamp;
    {
      const auto file = OpenFile(path, OpenMode::kReadWrite);
      file->WriteAt(0, kAbc);
      stamp = file->Stamp();
    }
    std::ofstream(path, std::ios::binary | std::ios::in) << "xyz";
    ASSERT_NE(stamp, StampOf(path)) << i;
  }
}

TEST(FileStamp, IsAnotherForAFileThatTookTheName) {
  const ScopedFolder folder;
  const auto path = folder / "new.dat", other = folder / "other.dat";
  for (const auto& each : {path, other}) OpenFile(each, OpenMode::kCreate)->WriteAt(0, kAbc);
  std::filesystem::last_write_time(other, std::filesystem::last_write_time(path));
  const FileStamp stamp = StampOf(path);
  std::filesystem::rename(other, path);
  EXPECT_NE(stamp, StampOf(path));
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
