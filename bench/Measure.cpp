#include "bench/Measure.h"

#include <algorithm>
#include <cstdio>

namespace kestrelon::bench {

namespace {

constexpr std::size_t kLeastRounds = 3, kMostRounds = 40;
constexpr double kEnough = 3000;  // milliseconds of both together after which no further round is taken
constexpr double kLong = 10000;   // a pair that takes this long is taken once

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

void Measure::Compare(const std::string& work, std::size_t items, std::size_t times,
                      std::optional<double> bound, const Round& engine, const std::string& other,
                      const Round& otherWork) {
  double best[2] = {}, sum = 0;
  for (std::size_t round = 0; round < kMostRounds; ++round) {
    if (sum > (round >= kLeastRounds ? kEnough : kLong)) break;
    for (const int which : {0, 1}) {
      Clock clock;
      (which == 0 ? engine : otherWork)(clock);
      const double time = clock.Milliseconds();
      best[which] = round == 0 ? time : std::min(best[which], time);
      sum += time;
    }
  }
  const auto count = static_cast<double>(times);
  lines_.push_back({work, items, bound, best[0] / count, best[1] / count, other});
  std::fprintf(stderr, "%s, %s: %.2f\n", work.c_str(), Grouped(items).c_str(), best[0] / best[1]);
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
