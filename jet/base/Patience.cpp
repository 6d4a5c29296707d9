#include "jet/base/Patience.h"

#include <array>
#include <utility>

#include "jet/base/Descriptor.h"

namespace kestrelon::jet {
namespace {

constexpr std::array<int, 8> kWaits = {10, 20, 40, 80, 150, 200, 250, 250};  // milliseconds

Wait& TheWait() {
  static Wait wait = descriptor::Sleep;
  return wait;
}

}  // namespace

Wait ExchangeWait(Wait wait) { return std::exchange(TheWait(), std::move(wait)); }

Outcome WithPatience(const std::function<Outcome()>& attempt) {
  Outcome outcome = attempt();
  for (const int time : kWaits) {
    if (outcome != Outcome::kHeld && outcome != Outcome::kDenied) break;
    TheWait()(std::chrono::milliseconds(time));
    outcome = attempt();
  }
  return outcome;
}

Outcome OpenPatiently(OpenMode& mode, const std::function<Outcome(OpenMode)>& attempt) {
  const Outcome outcome = WithPatience([&] { return attempt(mode); });
  const bool denied = outcome == Outcome::kReadOnly || outcome == Outcome::kDenied;
  if (!denied || mode != OpenMode::kReadWrite) return outcome;
  mode = OpenMode::kRead;
  if (outcome == Outcome::kDenied) return attempt(mode);
  return WithPatience([&] { return attempt(mode); });
}

}  // namespace kestrelon::jet
