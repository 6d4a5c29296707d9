#pragma once

#include "app/base/Win32.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/MainForm.h"
#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"
#include "tests/model/Model.h"

namespace kestrelon::model {

// The program as it ships, in a folder of its own, with a world around it that the steps set up: questions
// are answered as a plan says, the shell works on the real files as the one of Windows does, time and chance
// are the model's. What goes wrong is noted, not thrown: much of it happens inside the program's own message
// loops.
class TestProgram {
 public:
  explicit TestProgram(const std::wstring& root);  // ends in a backslash; what is missing there is made
  ~TestProgram();
  TestProgram(const TestProgram&) = delete;
  TestProgram& operator=(const TestProgram&) = delete;

  // `answer`: to the question whether what an unclean end left is to be opened.
  void Start(int answer = IDNO);
  void End();

  const std::wstring& Root() const { return root_; }
  win::MainParts& Parts() { return form->Parts(); }
  void Fault(const std::string& what) { faults.push_back(what); }
  void SetClock(int seconds, int draws);
  // What the database file holds.
  std::wstring DataFile(const std::wstring& name) const { return program.dataFolder + name; }

  OutsideWorld world;
  Program program;
  std::unique_ptr<app::MainForm> form;
  std::vector<std::string> faults;
  std::deque<Box> boxes;           // still to come
  int offers = 0;                  // how often the last start has asked
  std::wstring folder, openFiles;  // what the pickers give; empty: left
  int pickersShown = 0;
  int draws = 0;
  // Instead of `boxes`, where it is set.
  std::function<int(const std::wstring& text, UINT flags)> answerBox;

 private:
  int AnswerBox(const std::wstring& text, UINT flags);

  std::wstring root_;
  int clock_ = 0;
  std::optional<int> startAnswer_;  // while the program starts
};

// SHFileOperationW as Windows does it, as far as the program needs it: with one file and without its boxes.
bool ShellFileOperation(UINT function, const std::wstring& from, const std::wstring& to);

// The files that steps work with, made on disk under `root`.
void MakeFiles(const std::wstring& root, State& state);
// What a database file holds, read page by page and not through the program's connection. Throws where the
// integrity walk finds a fault.
Content ReadContent(const std::wstring& path);
std::string BytesOf(const std::wstring& path);

}  // namespace kestrelon::model
