// Times the engine and SQLite side by side: the same statements, schema and indexes, files in the same
// folder. Prints tables in Markdown: times, then memory.
//
//   jet_bench [--only TEXT] [--most ROWS] [--no-memory]

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "bench/Measure.h"
#include "bench/Memory.h"
#include "bench/Subjects.h"
#include "jet/base/File.h"

namespace {

using namespace kestrelon;
using bench::Clock;
using bench::JetSubject;
using bench::MakeText;
using bench::Measure;
using bench::Round;
using bench::SqliteSubject;
using bench::Text;

constexpr std::size_t kManyRows = 1'000'000;  // only what reads or fills is done with so many
constexpr std::size_t kSelects = 200;
const Text kReadAll = MakeText("SELECT * FROM FTable");

// A result that is of no use to anybody must not be left out by the compiler.
volatile std::size_t sink = 0;

// Statements made ready a few thousand at a time, which is not what is timed.
template <class Subject, class MakeStatement>
void Run(Subject& subject, Clock& clock, std::size_t count, MakeStatement&& make) {
  constexpr std::size_t kPart = 5000;
  clock.Start();
  subject.Begin();
  clock.Stop();
  for (std::size_t done = 0; done < count;) {
    std::vector<Text> part;
    for (; part.size() < kPart && done < count; ++done) part.push_back(make(done));
    clock.Start();
    for (const Text& text : part) subject.Execute(text);
    clock.Stop();
  }
  clock.Start();
  subject.End();
  clock.Stop();
}

template <class Subject, class MakeStatement>
Round IntoEmpty(std::size_t count, MakeStatement make) {
  return [=](Clock& clock) {
    Subject subject;
    Run(subject, clock, count, make);
  };
}

// Each round takes a copy of the filled file.
template <class Subject, class MakeStatement>
Round Change(const Subject& filled, std::size_t count, MakeStatement make) {
  return [=, &filled](Clock& clock) {
    Subject subject(filled);
    Run(subject, clock, count, make);
  };
}

template <class Subject, class MakeStatement>
Round Select(Subject& filled, std::size_t count, MakeStatement make) {
  return [=, &filled](Clock& clock) {
    std::vector<Text> selects;
    for (std::size_t i = 0; i < count; ++i) selects.push_back(make(i));
    filled.Begin();
    clock.Start();
    for (const Text& select : selects) sink = sink + filled.Read(select);
    clock.Stop();
    filled.End();
  };
}

template <class Subject, class Work>
Round Opened(Subject& filled, Work work) {
  return [=, &filled](Clock& clock) {
    clock.Start();
    filled.Connect();
    filled.Begin();
    work(filled);
    filled.End();
    clock.Stop();
  };
}

// The file as a process meets it that has just started.
template <class Subject>
Round OpenedAnew(Subject& filled, const Text& select) {
  return [=, &filled](Clock& clock) {
    clock.Start();
    filled.Forget();
    filled.Begin();
    sink = sink + filled.Read(select);
    filled.End();
    clock.Stop();
  };
}

// The works on a file of `items` items, on the engine and on SQLite.
class Works {
 public:
  Works(Measure& measure, std::size_t items) : measure_(measure), items_(items), order_(items) {
    for (std::size_t i = 0; i < items; ++i) order_[i] = i;
    // The order of a user's selection is not that of the file.
    std::shuffle(order_.begin(), order_.end(), std::mt19937(1));
  }

  void Insert() {
    Pair("`INSERT INTO FTable VALUES(...)`", 1, items_ == 100'000 ? std::optional(0.5) : std::nullopt,
         [this](auto subject) {
           return IntoEmpty<typename decltype(subject)::type>(items_, bench::InsertItem);
         });
    Pair("`INSERT INTO TreeviewTable(...)`, a primary key", 1, {}, [this](auto subject) {
      return IntoEmpty<typename decltype(subject)::type>(items_, bench::InsertCategory);
    });
  }

  void Read() {
    Pair("read all rows", 1, 1.0,
         [this](auto subject) { return Select(Filled(subject), 1, [](std::size_t) { return kReadAll; }); });
    Pair("select a category, 100 rows", kSelects, 1.0, [this](auto subject) {
      return Select(Filled(subject), kSelects, [this](std::size_t i) {
        return MakeText("SELECT * FROM FTable WHERE TreeviewNode=\"" +
                        bench::CategoryKey(i * 7919 % Categories()) + "\"");
      });
    });
    Pair("select a row by `FileIndex`", kSelects, {}, [this](auto subject) {
      return Select(Filled(subject), kSelects,
                    [this](std::size_t i) { return ByIndex("SELECT * FROM FTable ", i); });
    });
  }

  void Change() {
    const auto each = [this](const char* name, const std::string& head) {
      Pair(name, 1, {}, [this, head](auto subject) {
        return ::Change(Filled(subject), items_, [this, head](std::size_t i) { return ByIndex(head, i); });
      });
    };
    each("update `TreeviewNode` of each row by `FileIndex`",
         "UPDATE FTable SET TreeviewNode=\"S004211151317037719_\" ");
    each("update `Comment` of each row by `FileIndex`",
         "UPDATE FTable SET Comment=\"a comment of some words\" ");
    each("delete each row by `FileIndex`", "DELETE FROM FTable ");
    Pair("delete all categories, one by one", 1, {}, [this](auto subject) {
      return ::Change(Filled(subject), Categories(), [](std::size_t i) {
        return MakeText("DELETE From FTable WHERE TreeViewNode=\"" + bench::CategoryKey(i) + "\"");
      });
    });
  }

  void Open() {
    Pair("open, select a row, close", 1, {}, [this](auto subject) {
      return Opened(Filled(subject), [text = ByIndex("SELECT * FROM FTable ", 0)](auto& filled) {
        sink = sink + filled.Read(text);
      });
    });
    Pair("open, insert a row, close", 1, {}, [this](auto subject) {
      return Opened(Filled(subject),
                    [text = bench::InsertItem(items_)](auto& filled) { filled.Execute(text); });
    });
    Pair("the first select by `FileIndex` of a new process", 1, {},
         [this](auto subject) { return OpenedAnew(Filled(subject), ByIndex("SELECT * FROM FTable ", 0)); });
  }

  // Against writing and flushing as many bytes.
  void Compact() {
    Compaction("compaction, `FTable`", items_, 0);
    Compaction("compaction, `FTable` and `TreeviewTable`", items_, items_);
    Compaction("compaction, `TreeviewTable`", 0, items_);
  }

  void Export() {
    const std::string work = "open the file and read all rows";
    if (!measure_.Wanted(work)) return;
    JetSubject& filled = Filled(Kind<JetSubject>());
    const std::string command = "mdb-export '" + filled.File().string() + "' FTable >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) {
      std::fprintf(stderr, "mdb-export is not installed\n");
      return;
    }
    measure_.Compare(work, items_, 1, 0.2, OpenedAnew(filled, kReadAll), "`mdb-export`", [&](Clock& clock) {
      clock.Start();
      sink = sink + static_cast<std::size_t>(std::system(command.c_str()));
      clock.Stop();
    });
  }

 private:
  template <class Subject>
  struct Kind {
    using type = Subject;
  };

  std::size_t Categories() const { return std::max<std::size_t>(1, items_ / bench::kPerCategory); }
  Text ByIndex(const std::string& head, std::size_t i) const {
    return MakeText(head + "WHERE FileIndex=\"" + bench::FileIndex(order_[i]) + "\"");
  }

  template <class Subject>
  Subject& Filled(Kind<Subject>) {
    std::unique_ptr<Subject>& subject = std::get<std::unique_ptr<Subject>>(filled_);
    if (!subject) {
      subject = std::make_unique<Subject>();
      Fill(*subject, items_, 0);
    }
    return *subject;
  }

  template <class MakeRound>
  void Pair(const std::string& work, std::size_t times, std::optional<double> bound, MakeRound make) {
    if (!measure_.Wanted(work)) return;
    measure_.Compare(work, items_, times, bound, make(Kind<JetSubject>()), SqliteSubject::kName,
                     make(Kind<SqliteSubject>()));
  }

  void Compaction(const std::string& work, std::size_t items, std::size_t categories) {
    if (!measure_.Wanted(work)) return;
    JetSubject source;
    Fill(source, items, categories);
    const bench::Folder folder;
    const std::filesystem::path packed = folder.Path() / "packed.mdb", plain = folder.Path() / "plain";
    const auto compact = [&] {
      jet::JetEngine().CompactDatabase(source.ConnectionString(), u"Data Source=" + packed.u16string());
    };
    compact();
    std::vector<std::uint8_t> bytes(std::filesystem::file_size(packed));
    jet::OpenFile(packed, jet::OpenMode::kRead)->ReadAt(0, bytes);
    measure_.Compare(
        work, std::max(items, categories), 1, 3.0,
        [&](Clock& clock) {
          std::filesystem::remove(packed);
          clock.Start();
          compact();
          clock.Stop();
        },
        "plain write",
        [&](Clock& clock) {
          std::filesystem::remove(plain);
          clock.Start();
          const std::unique_ptr<jet::File> file = jet::OpenFile(plain, jet::OpenMode::kCreate);
          file->WriteAt(0, bytes);
          file->Flush();
          clock.Stop();
        });
  }

  Measure& measure_;
  std::size_t items_;
  std::vector<std::size_t> order_;
  std::tuple<std::unique_ptr<JetSubject>, std::unique_ptr<SqliteSubject>> filled_;
};

}  // namespace

int main(int count, char** values) {
  if (const int result = bench::MemoryChild(count, values); result >= 0) return result;
  std::string only;
  std::size_t most = kManyRows;
  bool memory = true;
  for (int i = 1; i < count; ++i) {
    const std::string_view option = values[i];
    if (option == "--no-memory") {
      memory = false;
    } else if (option == "--only" && i + 1 < count) {
      only = values[++i];
    } else if (option == "--most" && i + 1 < count) {
      most = std::strtoull(values[++i], nullptr, 10);
    } else {
      std::fprintf(stderr, "usage: jet_bench [--only TEXT] [--most ROWS] [--no-memory]\n");
      return 2;
    }
  }
  Measure measure(only);
  for (std::size_t items = 1000; items <= most; items *= 10) {
    Works works(measure, items);
    works.Insert();
    works.Read();
    works.Open();
    works.Compact();
    if (items < kManyRows) works.Change();
    if (items < kManyRows) works.Export();
  }
  measure.Print();
  if (memory) bench::PrintMemory(std::filesystem::canonical("/proc/self/exe"), kManyRows);
  return 0;
}
