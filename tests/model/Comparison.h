#pragma once

#include <map>
#include <optional>
#include <string>

#include "tests/model/State.h"
#include "tests/model/TestProgram.h"

namespace kestrelon::model {

// Holds the program against the model after a step: tree, table, screen, files, slots. Notes a fault in the
// program for each difference. Where the model allows more than one answer, takes over the one that the
// window gives.
class Comparison {
 public:
  explicit Comparison(TestProgram& program) : program_(program) {}
  void Compare(State& expected);
  // Only what the model cannot know by itself: quick, for a program that is to work, not to be looked at.
  void TakeOver(State& expected) {
    TakeRecovered(expected);
    CompareList(expected);
    CompareCommands(expected);
  }

 private:
  void TakeRecovered(State& expected);
  void CompareTree(const State& expected);
  void CompareTable(State& expected);
  void CompareList(State& expected);
  void CompareCommands(State& expected);
  void CompareFiles(const State& expected);
  void CompareSlots(const State& expected);
  void CompareDatabase(const std::wstring& name, const std::optional<Content>& expected);
  void Differ(const std::string& what, const std::wstring& expected, const std::wstring& found);

  TestProgram& program_;
  // The databases as they were read last: most steps leave them alone.
  struct Known {
    std::string bytes;
    Content content;
  };
  std::map<std::wstring, Known> known_;
};

// Tree and table as the program has them now: its window and its working database.
Content ContentOf(TestProgram& program);

}  // namespace kestrelon::model
