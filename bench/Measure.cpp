#include "bench/Measure.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace kestrelon::bench {

namespace {

// Rounds of each work: many of a short one, few of one that takes seconds.
int RoundsFor(std::size_t items) {
  return items <= 1000 ? 25 : items <= 10'000 ? 15 : items <= 100'000 ? 7 : 3;
}

// Keeps the fastest round of each work, in milliseconds.
class Fastest : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const double time = run.GetAdjustedRealTime();
      const auto [known, isNew] = times_.try_emplace(run.run_name.function_name, time);
      if (!isNew) known->second = std::min(known->second, time);
    }
  }
  double Of(const std::string& work) const { return times_.at(work); }

 private:
  std::map<std::string, double> times_;
};

void Register(const char* name, const Round& round, std::size_t items) {
  benchmark::RegisterBenchmark(name,
                               [round](benchmark::State& state) {
                                 for ([[maybe_unused]] const auto step : state) {
                                   Clock clock;
                                   round(clock);
                                   state.SetIterationTime(clock.Milliseconds() / 1000);
                                 }
                               })
      ->UseManualTime()
      ->Iterations(1)
      ->Repetitions(RoundsFor(items))
      ->Unit(benchmark::kMillisecond);
}

std::string Formatted(const char* format, double number) {
  char text[32];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

// Three digits that count.
std::string Shown(double milliseconds) {
  if (milliseconds >= 100) return Formatted("%.0f", milliseconds);
  if (milliseconds >= 10) return Formatted("%.1f", milliseconds);
  return Formatted(milliseconds >= 1 ? "%.2f" : milliseconds >= 0.1 ? "%.3f" : "%.4f", milliseconds);
}

}  // namespace

std::string Grouped(std::size_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, ",");
  return text;
}

Measure::Measure(std::string_view only) : only_(only) {
  char program[] = "jet_bench", interleave[] = "--benchmark_enable_random_interleaving=true";
  char* values[] = {program, interleave, nullptr};
  int count = 2;
  benchmark::Initialize(&count, values);
}

void Measure::Compare(const std::string& work, std::size_t items, std::size_t times,
                      std::optional<double> bound, const Round& engine, const std::string& other,
                      const Round& otherWork) {
  // The two alone, their rounds mixed: both meet the same machine.
  Register("engine", engine, items);
  Register("other", otherWork, items);
  Fastest fastest;
  benchmark::RunSpecifiedBenchmarks(&fastest);
  benchmark::ClearRegisteredBenchmarks();
  const auto count = static_cast<double>(times);
  const double engineTime = fastest.Of("engine") / count, otherTime = fastest.Of("other") / count;
  lines_.push_back({work, items, bound, engineTime, otherTime, other});
  std::fprintf(stderr, "%s, %s: %.2f\n", work.c_str(), Grouped(items).c_str(), engineTime / otherTime);
}

void Measure::Print() const {
  std::vector<std::string> works;  // in order of their first line
  for (const Line& line : lines_) {
    if (std::find(works.begin(), works.end(), line.work) == works.end()) works.push_back(line.work);
  }
  std::printf("| work | ratio | bound | engine ms | other ms | other |\n|---|---|---|---|---|---|\n");
  for (const std::string& work : works) {
    std::string ratios, bound, engine, others, other;
    for (const Line& line : lines_) {
      if (line.work != work) continue;
      const char* between = ratios.empty() ? "" : " / ";
      ratios += between + Formatted("%.2f", line.engine / line.otherTime);
      engine += between + Shown(line.engine);
      others += between + Shown(line.otherTime);
      if (line.bound) bound = Formatted("%g", *line.bound);
      other = line.other;
    }
    std::printf("| %s | %s | %s | %s | %s | %s |\n", work.c_str(), ratios.c_str(), bound.c_str(),
                engine.c_str(), others.c_str(), other.c_str());
  }
}

}  // namespace kestrelon::bench
