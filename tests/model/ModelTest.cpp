// Random work in the whole program, held against a model after each step.
//
//   KESTRELON_MODEL_SEED=7 KESTRELON_MODEL_RUNS=100 KESTRELON_MODEL_STEPS=200 tools/run-wine
//   …/model_tests.exe
//
// runs seeds 7 to 106 with 200 steps each. A failure prints its seed, the steps up to it and a shorter
// sequence that fails as well.

#include "app/base/Win32.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/model/Run.h"
#include "tests/model/State.h"

namespace kestrelon::model {
namespace {

std::uint32_t NumberFrom(const char* variable, std::uint32_t otherwise) {
  const char* const text = std::getenv(variable);
  return text ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

std::string Listed(const std::vector<Step>& steps) {
  std::string text;
  for (const Step& step : steps) text += "  " + Printed(step) + "\n";
  return text;
}

TEST(RandomWork, LeavesTreeTableScreenFilesAndSlotsAsTheModel) {
  const std::uint32_t first = NumberFrom("KESTRELON_MODEL_SEED", 1);
  const std::uint32_t runs = NumberFrom("KESTRELON_MODEL_RUNS", 24);
  const std::uint32_t length = NumberFrom("KESTRELON_MODEL_STEPS", 60);
  const std::uint32_t attempts = NumberFrom("KESTRELON_MODEL_SHRINK", 60);
  for (std::uint32_t seed = first; seed < first + runs; ++seed) {
    std::vector<Step> steps = RandomSteps(seed, length);
    const Outcome outcome = RunSteps(steps);
    if (!outcome.failed) continue;
    steps.resize(outcome.step + 1);
    std::string report = "seed " + std::to_string(seed) + ", step " + std::to_string(outcome.step + 1) +
                         ":\n" + outcome.Text() + "after the steps\n" + Listed(steps);
    if (attempts > 0) {
      const std::vector<Step> shorter = Shrunk(steps, attempts);
      report += "and after these alone\n" + Listed(shorter) + RunSteps(shorter).Text();
    }
    ADD_FAILURE() << report;
  }
}

TEST(SerialisedContent, IsReadBackAsItWas) {
  Content content;
  content.tree.Insert(L"A_", L" é\"名 ", L"", 0);
  content.tree.Insert(L"B_", L"", L"A_", 0);
  content.tree.Insert(L"C_", L"first", L"", 0);
  content.table[L"1#A_"] = {L"A_", L"1#A_", L"a", L"b", L"c\r\n", L"", L"\U0001F600"};
  EXPECT_EQ(FromSerialised(Serialised(content)), content);
  EXPECT_EQ(content.tree.Path(L"B_"), L" é\"名 \\");
}

}  // namespace
}  // namespace kestrelon::model
