#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::bench {

// Runs from Start() to Stop(), as often as wanted.
class Clock {
 public:
  void Start() { start_ = std::chrono::steady_clock::now(); }
  void Stop() { sum_ += std::chrono::steady_clock::now() - start_; }
  double Milliseconds() const { return std::chrono::duration<double, std::milli>(sum_).count(); }

 private:
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::duration sum_{};
};

// One round of a piece of work: what it does between Start() and Stop() counts.
using Round = std::function<void(Clock&)>;

// Measures pieces of work in pairs, by Google Benchmark, and collects the lines of the table. There is one in
// a program: the library is set up for it.
class Measure {
 public:
  // `only`: what the work's name must contain; empty for all.
  explicit Measure(std::string_view only);

  bool Wanted(std::string_view work) const { return work.find(only_) != std::string_view::npos; }
  // Takes rounds of the two mixed, so that both meet the same machine, and keeps the fastest of each.
  // `times`: how often a round does its work; the table tells the time of one. `bound`: what the ratio may be
  // at most.
  void Compare(const std::string& work, std::size_t items, std::size_t times, std::optional<double> bound,
               const Round& engine, const std::string& other, const Round& otherWork);
  // The table in Markdown: a line for each work, in its cells one figure for each number of rows.
  void Print() const;

 private:
  struct Line {
    std::string work;
    std::size_t items;
    std::optional<double> bound;
    double engine, otherTime;  // milliseconds
    std::string other;
  };
  std::string only_;
  std::vector<Line> lines_;
};

// 100000 as "100,000".
std::string Grouped(std::size_t number);

}  // namespace kestrelon::bench
