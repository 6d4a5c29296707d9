// Times the engine and SQLite side by side: the same statements, schema and indexes, files in the same
// folder. The table at the end gives the ratios (below 1: the engine is faster).

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/Subjects.h"
#include "jet/File.h"

namespace {

using namespace kestrelon;
using bench::JetSubject;
using bench::MakeText;
using bench::SqliteSubject;
using bench::Text;

constexpr std::size_t kItems = 100'000;
constexpr std::size_t kPerCategory = 100;
constexpr std::size_t kManyItems = 1'000'000;

const std::vector<Text>& Inserts() {
  static const std::vector<Text> texts = bench::InsertTexts(kItems, kPerCategory);
  return texts;
}

const Text kReadAll = MakeText("SELECT * FROM FTable");

template <class Subject>
void Fill(Subject& subject, const std::vector<Text>& texts) {
  subject.Begin();
  for (const Text& text : texts) subject.Execute(text);
  subject.End();
}

// Statements by FileIndex in random order, as a user's selection is.
std::vector<Text> ByIndex(const std::string& head) {
  std::vector<Text> texts;
  for (std::size_t i = 0; i < kItems; ++i) {
    texts.push_back(MakeText(head + "WHERE FileIndex=\"" + bench::FileIndex(i, kPerCategory) + "\""));
  }
  std::shuffle(texts.begin(), texts.end(), std::mt19937(1));
  return texts;
}

// A filled table for each round, and only the statements on the clock, with the writing to disk that ends
// them.
template <class Subject>
void TimeStatements(benchmark::State& state, const std::vector<Text>& texts, bool filled) {
  for (auto _ : state) {
    state.PauseTiming();
    auto subject = std::make_unique<Subject>();
    if (filled) Fill(*subject, Inserts());
    state.ResumeTiming();
    Fill(*subject, texts);
    state.PauseTiming();
    subject.reset();
    state.ResumeTiming();
  }
}

template <class Subject>
void Insert(benchmark::State& state) {
  TimeStatements<Subject>(state, Inserts(), false);
}
template <class Subject>
void Update(benchmark::State& state) {
  static const std::vector<Text> texts = ByIndex("UPDATE FTable SET TreeviewNode=\"S004211151317037719_\" ");
  TimeStatements<Subject>(state, texts, true);
}
template <class Subject>
void UpdateComment(benchmark::State& state) {
  static const std::vector<Text> texts = ByIndex("UPDATE FTable SET Comment=\"a comment of some words\" ");
  TimeStatements<Subject>(state, texts, true);
}
template <class Subject>
void Delete(benchmark::State& state) {
  static const std::vector<Text> texts = ByIndex("DELETE FROM FTable ");
  TimeStatements<Subject>(state, texts, true);
}
template <class Subject>
void DeleteCategories(benchmark::State& state) {
  static const std::vector<Text> texts = [] {
    std::vector<Text> statements;
    for (std::size_t i = 0; i < kItems / kPerCategory; ++i) {
      statements.push_back(
          MakeText("DELETE From FTable WHERE TreeViewNode=\"" + bench::CategoryKey(i) + "\""));
    }
    return statements;
  }();
  TimeStatements<Subject>(state, texts, true);
}

template <class Subject>
void ReadAll(benchmark::State& state) {
  Subject subject;
  Fill(subject, Inserts());
  subject.Begin();
  for (auto _ : state) benchmark::DoNotOptimize(subject.Read(kReadAll));
  subject.End();
}

template <class Subject>
void SelectCategory(benchmark::State& state) {
  Subject subject;
  Fill(subject, bench::InsertTexts(kManyItems, kPerCategory));
  std::vector<Text> selects;
  for (std::size_t i = 0; i < 1000; ++i) {
    selects.push_back(MakeText("SELECT * FROM FTable WHERE TreeviewNode=\"" +
                               bench::CategoryKey(i * 7919 % (kManyItems / kPerCategory)) + "\""));
  }
  subject.Begin();
  std::size_t next = 0;
  for (auto _ : state) benchmark::DoNotOptimize(subject.Read(selects[next++ % selects.size()]));
  subject.End();
}

// The program's habit: open, one statement, close.
template <class Subject>
void OpenInsertClose(benchmark::State& state) {
  Subject subject;
  Fill(subject, Inserts());
  std::size_t next = 0;
  for (auto _ : state) {
    subject.Begin();
    subject.Execute(Inserts()[next++ % kItems]);
    subject.End();
  }
}

void CompactJet(benchmark::State& state) {
  JetSubject subject;
  Fill(subject, Inserts());
  const bench::Folder folder;
  const std::filesystem::path packed = folder.Path() / "packed.mdb";
  for (auto _ : state) {
    jet::JetEngine().CompactDatabase(subject.ConnectionString(), u"Data Source=" + packed.u16string());
    state.PauseTiming();
    std::filesystem::remove(packed);
    state.ResumeTiming();
  }
}

// What compaction is measured against: writing as many bytes, flushed.
void CompactPlainWrite(benchmark::State& state) {
  JetSubject subject;
  Fill(subject, Inserts());
  const bench::Folder folder;
  const std::filesystem::path packed = folder.Path() / "packed.mdb";
  jet::JetEngine().CompactDatabase(subject.ConnectionString(), u"Data Source=" + packed.u16string());
  std::vector<std::uint8_t> bytes(std::filesystem::file_size(packed));
  jet::OpenFile(packed, jet::OpenMode::kRead)->ReadAt(0, bytes);
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove(packed);
    state.ResumeTiming();
    const std::unique_ptr<jet::File> file = jet::OpenFile(packed, jet::OpenMode::kCreate);
    file->WriteAt(0, bytes);
    file->Flush();
  }
}

// From the closed file on, as mdb-export does.
void ReadFileJet(benchmark::State& state) {
  JetSubject subject;
  Fill(subject, Inserts());
  for (auto _ : state) {
    jet::Connection connection;
    connection.SetConnectionString(subject.ConnectionString());
    connection.Open();
    jet::Recordset rows;
    rows.Open(kReadAll.utf16, connection);
    std::size_t size = 0;
    for (; !rows.EndOfFile(); rows.MoveNext()) {
      for (std::size_t column = 0; column < 7; ++column) size += rows.Text(column).size();
    }
    benchmark::DoNotOptimize(size);
  }
}
void ReadFileMdbExport(benchmark::State& state) {
  JetSubject subject;
  Fill(subject, Inserts());
  const std::string command = "mdb-export '" + subject.File().string() + "' FTable >/dev/null 2>&1";
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) {
      state.SkipWithError("mdb-export is not installed");
      break;
    }
  }
}

// Prints the usual lines and remembers the times, for the table of ratios.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.error_occurred || run.run_type != Run::RT_Iteration) continue;
      const std::string name = run.benchmark_name();
      const std::size_t slash = name.find('/');
      const std::string subject = name.substr(slash + 1, name.find('/', slash + 1) - slash - 1);
      const double milliseconds = run.real_accumulated_time / static_cast<double>(run.iterations) * 1000;
      double& best = times_[name.substr(0, slash)][subject];
      if (best == 0 || milliseconds < best) best = milliseconds;
    }
  }
  void PrintRatios() const {
    std::printf("\n| work | ratio | jet ms | other ms | other |\n|---|---|---|---|---|\n");
    for (const auto& [work, times] : times_) {
      const auto jetTime = times.find("jet");
      if (jetTime == times.end()) continue;
      for (const auto& [other, time] : times) {
        if (other == "jet") continue;
        std::printf("| %s | %.2f | %.3f | %.3f | %s |\n", work.c_str(), jetTime->second / time,
                    jetTime->second, time, other.c_str());
      }
    }
  }

 private:
  std::map<std::string, std::map<std::string, double>> times_;
};

void Register(const char* name, void (*jetWork)(benchmark::State&), void (*otherWork)(benchmark::State&),
              const char* other = "sqlite") {
  for (const auto& [subject, work] : {std::pair("jet", jetWork), std::pair(other, otherWork)}) {
    benchmark::RegisterBenchmark((std::string(name) + "/" + subject).c_str(), work)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  }
}

}  // namespace

int main(int count, char** values) {
  Register("Insert100000", Insert<JetSubject>, Insert<SqliteSubject>);
  Register("ReadAll100000", ReadAll<JetSubject>, ReadAll<SqliteSubject>);
  Register("Select100Of1000000", SelectCategory<JetSubject>, SelectCategory<SqliteSubject>);
  Register("UpdateKey100000", Update<JetSubject>, Update<SqliteSubject>);
  Register("UpdateComment100000", UpdateComment<JetSubject>, UpdateComment<SqliteSubject>);
  Register("Delete100000", Delete<JetSubject>, Delete<SqliteSubject>);
  Register("Delete1000Categories", DeleteCategories<JetSubject>, DeleteCategories<SqliteSubject>);
  Register("OpenInsertClose", OpenInsertClose<JetSubject>, OpenInsertClose<SqliteSubject>);
  Register("Compact100000", CompactJet, CompactPlainWrite, "write");
  Register("ReadFile100000", ReadFileJet, ReadFileMdbExport, "mdb-export");
  benchmark::Initialize(&count, values);
  if (benchmark::ReportUnrecognizedArguments(count, values)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  return 0;
}
