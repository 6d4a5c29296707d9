#include "bench/Memory.h"

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "bench/Measure.h"
#include "bench/Subjects.h"

namespace kestrelon::bench {

namespace {

constexpr const char* kChild = "--memory-child";

// The peak so far, from the start of the process.
double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

// What the two are asked to do: `work` is one of the lines of the table.
template <class Subject>
void Work(std::string_view work, Subject& subject, std::size_t items) {
  if (work == "empty") return;
  subject.Begin();
  for (std::size_t i = 0; i < items; ++i) subject.Execute(InsertItem(i));
  subject.End();
  if (work == "insert") return;
  subject.Begin();
  subject.Read(MakeText("SELECT * FROM FTable"));
  subject.End();
}

// `argument`: a number of items, or the file to compact.
double Peak(const std::filesystem::path& program, const char* subject, const char* work,
            const std::string& argument) {
  const std::string command =
      "'" + program.string() + "' " + kChild + " " + subject + " " + work + " '" + argument + "'";
  std::FILE* output = popen(command.c_str(), "r");
  double peak = 0;
  const bool done = output != nullptr && std::fscanf(output, "%lf", &peak) == 1;
  if (output != nullptr) pclose(output);
  if (!done) std::fprintf(stderr, "failed: %s\n", command.c_str());
  return peak;
}

}  // namespace

void PrintMemory(const std::filesystem::path& program, std::size_t items) {
  const std::string count = Grouped(items);
  const struct {
    const char* work;
    std::string name;
    int bound;
  } lines[] = {{"empty", "open an empty database", 40},
               {"insert", "insert " + count + " items", 400},
               {"read", "insert " + count + " items and read them all", 400}};
  std::printf("\n| peak memory | engine MB | bound | SQLite MB |\n|---|---|---|---|\n");
  for (const auto& line : lines) {
    const double engine = Peak(program, "jet", line.work, std::to_string(items));
    const double other = Peak(program, "sqlite", line.work, std::to_string(items));
    std::printf("| %s | %.0f | %d | %.0f |\n", line.name.c_str(), engine, line.bound, other);
  }
  JetSubject filled;
  Fill(filled, items, 0);
  std::printf("| compact a file of %s items | %.0f | | |\n", count.c_str(),
              Peak(program, "jet", "compact", filled.File().string()));
}

int MemoryChild(int count, char** values) {
  if (count < 5 || std::string_view(values[1]) != kChild) return -1;
  const std::string_view subject = values[2], work = values[3];
  const std::size_t items = std::strtoull(values[4], nullptr, 10);
  if (work == "compact") {
    const Folder folder;
    const std::filesystem::path packed = folder.Path() / "packed.mdb";
    jet::JetEngine().CompactDatabase(u"Data Source=" + std::filesystem::path(values[4]).u16string(),
                                     u"Data Source=" + packed.u16string());
  } else if (subject == "jet") {
    JetSubject jet;
    Work(work, jet, items);
  } else {
    SqliteSubject sqlite;
    sqlite.UseDefaultCache();
    Work(work, sqlite, items);
  }
  std::printf("%.1f\n", PeakMegabytes());
  return 0;
}

}  // namespace kestrelon::bench
