#include "tests/model/Run.h"

#include <algorithm>
#include <exception>

#include "tests/model/Comparison.h"
#include "tests/model/Driver.h"
#include "tests/model/Model.h"
#include "tests/model/TestProgram.h"
#include "tests/support/ScopedTestDir.h"

namespace kestrelon::model {

std::string Outcome::Text() const {
  std::string text;
  for (const std::string& fault : faults) text += fault + "\n";
  return text;
}

Outcome RunSteps(const std::vector<Step>& steps) {
  const test::ScopedTestDir folder;
  TestProgram program(folder.Folder());
  Model model;
  MakeFiles(folder.Folder(), model.state);
  program.Start();
  Driver driver(program);
  Comparison comparison(program);
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const int draws = model.state.draws;
    const Plan plan = model.Apply(steps[i]);
    program.SetClock(model.state.clock, draws);
    try {
      driver.Do(plan, model.state);
      comparison.Compare(model.state);
    } catch (const std::exception& error) {
      program.Fault(std::string("exception: ") + error.what());
    }
    if (!program.faults.empty()) return {true, i, program.faults};
  }
  return {};
}

std::vector<Step> Shrunk(std::vector<Step> steps, std::size_t attempts) {
  std::size_t piece = std::max<std::size_t>(steps.size() / 2, 1);
  while (attempts > 0) {
    bool shorter = false;
    for (std::size_t start = 0; start < steps.size() && attempts > 0;) {
      std::vector<Step> rest = steps;
      const auto first = rest.begin() + static_cast<std::ptrdiff_t>(start);
      const std::size_t length = std::min(piece, rest.size() - start);
      rest.erase(first, first + static_cast<std::ptrdiff_t>(length));
      --attempts;
      const Outcome outcome = RunSteps(rest);
      if (outcome.failed) {
        rest.resize(outcome.step + 1);
        steps = std::move(rest);
        shorter = true;
      } else {
        start += piece;
      }
    }
    if (piece == 1 && !shorter) break;
    piece = std::max<std::size_t>(piece / 2, 1);
  }
  return steps;
}

}  // namespace kestrelon::model
