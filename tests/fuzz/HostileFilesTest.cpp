// The fuzz targets without a fuzzer: every seed, every input that once found a fault, and a fixed number of
// mutations of them, the same at every run. tools/fuzz is the long form.

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>

#include "fuzz/MemoryMeter.h"
#include "fuzz/PageMutator.h"
#include "fuzz/Seeds.h"
#include "fuzz/Target.h"

namespace kestrelon::fuzz {
namespace {

constexpr std::size_t kMostBytes = 170'000;

// What is being run, for whoever must repeat an input that ended the program.
std::string running;

void TellWhatRan(int) {
  std::fprintf(stderr, "This was %s.\n", running.c_str());
  std::signal(SIGABRT, SIG_DFL);
  std::raise(SIGABRT);
}

// Of the mutation that is being made.
Random random(0);

// Some bytes become others.
std::size_t ChangeBytes(std::uint8_t* data, std::size_t size, std::size_t) {
  for (std::size_t changes = 1 + random.Below(3); changes > 0 && size > 0; --changes)
    data[random.Below(size)] = static_cast<std::uint8_t>(random.Next());
  return size;
}

class HostileFiles : public testing::TestWithParam<Target> {
 protected:
  HostileFiles() { std::signal(SIGABRT, TellWhatRan); }
  ~HostileFiles() override { std::signal(SIGABRT, SIG_DFL); }

  bool IsFile() const { return GetParam().wholeFiles; }
  std::vector<Seed> Kept() const { return ReadKept(std::filesystem::path(KEPT_INPUTS) / GetParam().name); }

  void Run(const std::string& what, Input input) {
    running = std::string(GetParam().name) + ", " + what;
    try {
      fuzz::Run(GetParam(), input);
    } catch (const Finding& finding) {
      ADD_FAILURE() << running << ": " << finding.what();
    }
  }
};

TEST_P(HostileFiles, DoNoHarmAsTheyAre) {
  for (const Seed& kept : Kept()) Run("kept input " + kept.name, kept.bytes);
  for (const Seed& seed : GetParam().seeds()) Run("seed " + seed.name, seed.bytes);
  if (!IsFile()) return;
  for (const Seed& sample : ReadSamples(KESTRELON_SAMPLES)) Run("sample " + sample.name, sample.bytes);
}

TEST_P(HostileFiles, DoNoHarmDamaged) {
  std::vector<Seed> from = GetParam().seeds();
  for (Seed& kept : Kept()) from.push_back(std::move(kept));
  const std::size_t mutations = IsFile() ? 600 : 2500;
  InputBytes room;
  for (std::uint32_t number = 0; number < mutations; ++number) {
    // Damage is added to damage a few times before it begins anew.
    if (number % 4 == 0) {
      room = from[number / 4 % from.size()].bytes;
      room.resize(std::min(room.size(), kMostBytes));
    }
    const std::size_t size = room.size();
    random = Random(number);
    room.resize(std::max(size, kMostBytes));
    room.resize(GetParam().mutate(room.data(), size, room.size(), number, ChangeBytes));
    Run("mutation " + std::to_string(number), room);
  }
}

INSTANTIATE_TEST_SUITE_P(Targets, HostileFiles, testing::ValuesIn(Targets().begin(), Targets().end()),
                         [](const auto& target) { return std::string(target.param.name); });

TEST(KeptInputs, AreFound) {
  for (const char* target : {"pages", "slot"})
    EXPECT_FALSE(ReadKept(std::filesystem::path(KEPT_INPUTS) / target).empty()) << target;
}

TEST(KeptInputs, AreReadAsTheyWereWritten) {
  const InputBytes bytes = {0, 0, 7, 0, 8, 0, 0, 0, 255, 0};
  EXPECT_EQ(ToText(bytes), "size 10\n000002: 07 00 08\n000008: FF\n");
  EXPECT_EQ(FromText(ToText(bytes)), bytes);
}

}  // namespace
}  // namespace kestrelon::fuzz
