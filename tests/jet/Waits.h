#pragma once

#include <chrono>
#include <functional>
#include <utility>

#include "jet/base/Patience.h"

namespace kestrelon::jet {

// Counts the waits for files that are held, while it lives, and calls a function in place of each.
class Waits {
 public:
  explicit Waits(std::function<void()> instead = [] {}) : instead_(std::move(instead)) {
    before_ = ExchangeWait([this](std::chrono::milliseconds time) {
      ++count;
      total += time;
      instead_();
    });
  }
  ~Waits() { ExchangeWait(std::move(before_)); }
  Waits(const Waits&) = delete;
  Waits& operator=(const Waits&) = delete;

  int count = 0;
  std::chrono::milliseconds total{0};

 private:
  std::function<void()> instead_;
  Wait before_;
};

}  // namespace kestrelon::jet
