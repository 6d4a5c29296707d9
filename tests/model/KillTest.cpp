// The program killed at a random moment of random work, and started again: what it then offers is what was
// there at most a minute before, and every slot is as it was before the step that was cut off, or as it would
// be after it.
//
//   KESTRELON_MODEL_KILLS=300 KESTRELON_MODEL_SEED=7 tools/run-wine …/model_tests.exe
//   --gtest_filter='Killed*'

#include "app/base/Win32.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <sstream>

#include "app/Connect.h"
#include "app/base/File.h"
#include "tests/model/Journal.h"
#include "tests/model/TestProgram.h"
#include "tests/support/ScopedTestDir.h"
#include "ui/win/Handles.h"

namespace kestrelon::model {
namespace {

constexpr std::uint64_t kMinute = 60ull * 10'000'000;  // FILETIME

struct Process {
  win::Unique<HANDLE, ::CloseHandle> handle, thread;
  bool EndsWithin(DWORD milliseconds) {
    return WaitForSingleObject(handle.get(), milliseconds) == WAIT_OBJECT_0;
  }
  DWORD ExitCode() {
    DWORD code = 0;
    GetExitCodeProcess(handle.get(), &code);
    return code;
  }
};

Process StartWorker(const std::wstring& arguments) {
  std::wstring line = L"\"" + app::ExecutableFolder() + L"model_worker.exe\" " + arguments;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  Process process;
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &info))
    ThrowLastError(L"starting " + line);
  process.handle.reset(info.hProcess);
  process.thread.reset(info.hThread);
  return process;
}

std::wstring InQuotes(std::wstring path) {
  if (path.ends_with(L'\\')) path += L'\\';  // else it would make a letter of the quote
  return L"\"" + path + L"\"";
}

struct Recovered {
  bool asked = false;
  std::string texts, content;
};

// What one kill came to: how it failed, or nothing; and what was going on.
struct Kill {
  std::string fault;
  std::uint64_t steps = 0, stepsBack = 0;
  double secondsBack = 0;  // since what was found was the present
  bool inStep = false;     // the last step was not done
  bool asked = false;
  std::vector<std::string> kinds;  // of the steps
};

Recovered Recover(const std::wstring& root) {
  const std::wstring report = root + L"report";
  Process process = StartWorker(L"--recover " + InQuotes(root) + L" " + InQuotes(report));
  if (!process.EndsWithin(60'000)) {
    TerminateProcess(process.handle.get(), 97);
    throw std::runtime_error("the program that was started again does not end");
  }
  std::istringstream text(BytesOf(report));
  Recovered recovered;
  int asked = 0, saved = 0;
  std::size_t length = 0;
  text >> asked >> saved >> length;
  if (text.get() != '\n') {
    throw std::runtime_error("the program that was started again ended with code " +
                             std::to_string(process.ExitCode()));
  }
  recovered.asked = asked != 0;
  recovered.texts.resize(length);
  text.read(recovered.texts.data(), static_cast<std::streamsize>(length));
  recovered.content.assign(std::istreambuf_iterator<char>(text), {});
  if (asked > 1) throw std::runtime_error("asked more than once: " + recovered.texts);
  return recovered;
}

void CheckSlots(const std::wstring& root, const std::vector<Record>& records, Kill& kill) {
  const Record& last = records.back();
  const Record& before = records.size() > 1 ? records[records.size() - 2] : last;
  for (std::size_t slot = 0; slot < last.slots.size(); ++slot) {
    const std::wstring path = root + L"KestrelonData\\Data" + std::to_wstring(slot) + L".dat";
    std::uint64_t digest = 0;
    if (FileExists(path)) digest = DigestOf(Serialised(ReadContent(path)));  // throws for an unsound one
    if (digest != last.slots[slot] && digest != before.slots[slot])
      kill.fault += "slot " + std::to_string(slot) + " is neither old nor new\n";
  }
}

// What the start offered, or that it offered nothing, fits one of the moments of the last minute: what was
// there then is offered if it was in no slot, otherwise what had been set aside by then is still there.
void CheckContent(const std::wstring& root, const Recovered& recovered, const std::vector<Record>& records,
                  std::uint64_t killed, Kill& kill) {
  kill.asked = recovered.asked;
  const std::wstring path = root + L"KestrelonData\\Unsaved.dat";
  const std::uint64_t offered = FileExists(path) ? DigestOf(Serialised(ReadContent(path))) : 0;
  for (std::size_t i = records.size(); i-- > 0;) {
    const Record& record = records[i];
    const std::uint64_t successor = i + 1 < records.size() ? records[i + 1].begun : killed;
    if (successor + kMinute < killed) break;
    if (record.unsaved != recovered.asked) continue;
    if (recovered.asked ? recovered.content != record.content : offered != record.offered) continue;
    kill.stepsBack = records.back().number - record.number;
    kill.secondsBack = static_cast<double>(killed - std::min(successor, killed)) / 1e7;
    return;
  }
  kill.fault += recovered.asked ? "what was offered is no state of the last minute:\n" +
                                      Difference(FromSerialised(records.back().content),
                                                 FromSerialised(recovered.content))
                                : "nothing was offered, and there was unsaved work\n";
}

Kill KillOnce(std::uint32_t seed) {
  const test::ScopedTestDir folder;
  const std::wstring root = folder.Folder() + L"killed\\", journal = folder.Folder() + L"journal";
  CreateDirectoryW(root.c_str(), nullptr);
  std::mt19937 random(seed);
  Kill kill;
  try {
    Process worker = StartWorker(InQuotes(root) + L" " + InQuotes(journal) + L" " + std::to_wstring(seed));
    for (int wait = 0; wait < 600 && BytesOf(journal).empty() && !worker.EndsWithin(20); ++wait) {
    }
    // So many steps rather than a time, so that a slow machine comes as far.
    const std::uint64_t steps = 5 + random() % 45;
    const auto begun = [&] {
      const std::vector<Record> records = ReadJournal(journal);
      return records.empty() ? 0 : records.back().number;
    };
    for (int wait = 0; wait < 600 && begun() < steps && !worker.EndsWithin(50); ++wait) {
    }
    const bool ended = worker.EndsWithin(static_cast<DWORD>(random() % 120));
    TerminateProcess(worker.handle.get(), 99);
    const std::uint64_t killed = FileTimeNow();
    if (!worker.EndsWithin(10'000)) throw std::runtime_error("the program could not be killed");
    const std::vector<Record> records = ReadJournal(journal);
    if (records.empty()) throw std::runtime_error("no work was done");
    if (ended) throw std::runtime_error("the work ended by itself: " + records.back().step);
    kill.steps = records.back().number;
    kill.inStep = !records.back().done;
    for (const Record& record : records) {
      if (record.done) kill.kinds.push_back(record.step.substr(0, record.step.find('(')));
    }
    CheckSlots(root, records, kill);
    CheckContent(root, Recover(root), records, killed, kill);
    if (!kill.fault.empty())
      kill.fault += (kill.inStep ? "killed in step " : "killed after step ") + records.back().step + "\n";
  } catch (const std::exception& error) {
    kill.fault += error.what();
  }
  return kill;
}

std::uint32_t NumberFrom(const char* variable, std::uint32_t otherwise) {
  const char* const text = std::getenv(variable);
  return text ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

TEST(KilledProgram, OffersWhatWasThereAMinuteBeforeAtMost) {
  const std::uint32_t first = NumberFrom("KESTRELON_MODEL_SEED", 1);
  const std::uint32_t kills = NumberFrom("KESTRELON_MODEL_KILLS", 30);
  std::uint64_t steps = 0, stepsBack = 0;
  std::uint32_t asked = 0, inStep = 0;
  double secondsBack = 0;
  std::map<std::string, int> kinds;
  for (std::uint32_t seed = first; seed < first + kills; ++seed) {
    const Kill kill = KillOnce(seed);
    EXPECT_EQ(kill.fault, "") << "seed " << seed;
    steps += kill.steps;
    asked += kill.asked;
    inStep += kill.inStep;
    stepsBack = std::max(stepsBack, kill.stepsBack);
    secondsBack = std::max(secondsBack, kill.secondsBack);
    for (const std::string& kind : kill.kinds) ++kinds[kind];
  }
  std::printf(
      "%u kills in %llu steps, %u of them in the middle of one; asked after %u; at most %llu steps "
      "and %.1f seconds back\n",
      kills, static_cast<unsigned long long>(steps), inStep, asked,
      static_cast<unsigned long long>(stepsBack), secondsBack);
  for (const auto& [kind, count] : kinds) std::printf("  %s %d\n", kind.c_str(), count);
  if (kills < 30) return;
  // Otherwise it would not be seen that the program was killed at its ease, with nothing to lose.
  EXPECT_GT(asked, kills / 4);
  EXPECT_GT(inStep, kills / 4);
  for (const char* kind : {"Save", "Load", "Exit", "ImportFolder", "OpenDialog", "DropOnCategory"})
    EXPECT_GT(kinds[kind], 0) << kind;
}

}  // namespace
}  // namespace kestrelon::model
