// model_worker ROOT JOURNAL SEED: works at random in the program of that folder until it is killed, and keeps
// a journal. model_worker --recover ROOT REPORT: starts the program there anew, answers Yes to the question
// whether the unsaved collection is to be opened, and writes what is shown then.

#include "app/base/Win32.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <ole2.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "app/base/File.h"
#include "tests/model/Comparison.h"
#include "tests/model/Driver.h"
#include "tests/model/Journal.h"
#include "tests/model/Model.h"
#include "tests/model/TestProgram.h"
#include "tests/support/Pump.h"

namespace kestrelon::model {
namespace {

constexpr std::uint64_t kStepsBetweenComparisons = 10;

// The first steps, so that there is soon something to lose; from then on the generator's.
Step NextStep(Generator& generator, std::uint64_t number, std::uint32_t seed) {
  if (number == 2) return {Kind::kAddLastSibling, 0, 0, 0, L"first"};
  if (number == 3) return {Kind::kImportFolder, seed, 1, 0, L""};
  return generator.Next();
}

// Those that leave a slot unsound for a moment, or are as good as a kill themselves.
bool IsForTestsOnly(const Plan& plan) {
  return plan.kind == Kind::kLoadDamaged || plan.kind == Kind::kUncleanEnd ||
         plan.kind == Kind::kEndSession || plan.leaving == Leaving::kSaveFails;
}

int Work(const std::wstring& root, const std::wstring& journalPath, std::uint32_t seed) {
  TestProgram program(root);
  Model model;
  MakeFiles(root, model.state);
  Journal journal(journalPath);
  program.Start();
  Driver driver(program);
  Comparison comparison(program);
  Generator generator(seed);
  std::mt19937 pause(seed);
  journal.Write(RecordOf(model.state, model.state, 1, "start"));
  for (std::uint64_t number = 2;; ++number) {
    const Model before = model;
    Step step = NextStep(generator, number, seed);
    Plan plan = model.Apply(step);
    // Nor is much to be seen if the program is left all the time.
    while (plan.skipped || IsForTestsOnly(plan) || (plan.kind == Kind::kExit && pause() % 3 != 0)) {
      model = before;
      step = generator.Next();
      plan = model.Apply(step);
    }
    program.SetClock(model.state.clock, before.state.draws);
    for (const Content& content : plan.between)
      journal.Write(RecordOf(before.state, content, number, Printed(step)));
    journal.Write(RecordOf(model.state, model.state, number, Printed(step)));
    driver.Do(plan, model.state);
    if (number % kStepsBetweenComparisons == 0) {
      comparison.Compare(model.state);
    } else {
      comparison.TakeOver(model.state);
    }
    if (!program.faults.empty()) {
      std::string faults;
      for (const std::string& fault : program.faults) faults += fault + "\n";
      journal.WriteFault("step " + std::to_string(number) + " " + Printed(step) + ": " + faults);
      return 1;
    }
    journal.WriteDone();
    // Mostly the next step follows at once; now and then the user reads, and the program has nothing to do.
    const unsigned draw = static_cast<unsigned>(pause() % 100);
    const DWORD rest = draw == 0 ? 2500 : draw < 10 ? 60 : 0;
    test::PumpUntil([] { return false; }, rest);
  }
}

int Recover(const std::wstring& root, const std::wstring& report) {
  TestProgram program(root);
  int asked = 0;
  std::string texts;
  program.answerBox = [&](const std::wstring& text, UINT flags) {
    texts += Narrow(text) + "\n";
    if ((flags & MB_TYPEMASK) != MB_YESNO) return IDOK;
    ++asked;
    return IDYES;
  };
  program.Start();
  const std::string content = Serialised(ContentOf(program));
  std::ofstream(std::filesystem::path(report), std::ios::binary)
      << asked << ' ' << program.program.databaseSaved << ' ' << texts.size() << '\n'
      << texts << content;
  return 0;
}

int Run(const std::vector<std::wstring>& arguments) {
  if (arguments.size() != 3) return 2;
  if (arguments[0] == L"--recover") return Recover(arguments[1], arguments[2]);
  return Work(arguments[0], arguments[1], static_cast<std::uint32_t>(std::stoul(arguments[2])));
}

}  // namespace
}  // namespace kestrelon::model

int main(int argc, char** argv) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  const INITCOMMONCONTROLSEX classes{sizeof(INITCOMMONCONTROLSEX), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
  InitCommonControlsEx(&classes);
  if (FAILED(OleInitialize(nullptr))) return 98;
  testing::InitGoogleTest(&argc, argv);  // what the tests' helpers expect is told of on the standard output
  std::vector<std::wstring> arguments;
  for (int i = 1; i < argc; ++i) arguments.push_back(kestrelon::Widen(argv[i]));
  try {
    return kestrelon::model::Run(arguments);
  } catch (const std::exception& error) {
    std::printf("%s\n", error.what());
    return 3;
  }
}
