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

// Those that leave a slot unsound for a moment, or end the program.
bool IsForTestsOnly(Kind kind) { return kind == Kind::kLoadDamaged || kind == Kind::kExit; }

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
  journal.Write(RecordOf(model.state, 1, "start"));
  for (std::uint64_t number = 2;; ++number) {
    Step step = generator.Next();
    while (IsForTestsOnly(step.kind)) step = generator.Next();
    const int draws = model.state.draws;
    const Plan plan = model.Apply(step);
    program.SetClock(model.state.clock, draws);
    journal.Write(RecordOf(model.state, number, Printed(step)));
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
    // Mostly the next step follows at once; now and then the user reads, and the program has nothing to do.
    const unsigned draw = static_cast<unsigned>(pause() % 40);
    const DWORD rest = draw == 0 ? 1500 : draw < 8 ? 60 : 0;
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
  test::PumpUntil([&] { return asked > 0; }, 1000);
  win::DoEvents();
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
