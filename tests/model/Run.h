#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/model/Steps.h"

namespace kestrelon::model {

// What a sequence of steps came to: nothing, or the step (from 0) after which the program was not as the
// model, and how it differed.
struct Outcome {
  bool failed = false;
  std::size_t step = 0;
  std::vector<std::string> faults;
  std::string Text() const;
};

// Runs the steps on a program of their own, from its first start.
Outcome RunSteps(const std::vector<Step>& steps);

// Leaves out steps as long as the rest still fails, in at most `attempts` runs.
std::vector<Step> Shrunk(std::vector<Step> steps, std::size_t attempts);

}  // namespace kestrelon::model
