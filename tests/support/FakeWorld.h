#pragma once

#include "app/base/Win32.h"

#include <gtest/gtest.h>

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "app/base/File.h"
#include "app/base/OutsideWorld.h"

namespace kestrelon::test {

// A world outside that writes down what it is asked and answers from queues. A question that no answer stands
// ready for fails the test and is answered in the way that changes least; so does an answer that nobody asked
// for.
//
//   FakeWorld world;
//   world.answers = {IDYES};
//   ... code under test, with `world` as its OutsideWorld ...
//   EXPECT_EQ(world.boxes.at(0).text, L"Save Changes ? ");
class FakeWorld : public OutsideWorld {
 public:
  struct Box {
    HWND owner;
    std::wstring text, title;
    UINT flags;
  };
  struct ShellOperation {
    UINT function;
    std::wstring from, to;
    WORD flags;
  };
  struct Execution {
    std::wstring verb, target;
    int show;
  };
  struct Start {
    std::wstring commandLine;
    int show;
  };

  std::vector<Box> boxes;
  std::deque<int> answers;  // to the boxes, in order

  int folderQuestions = 0;
  std::deque<std::optional<std::wstring>> folders;  // answers of the folder picker
  std::vector<OpenFilesRequest> openRequests;
  std::deque<std::optional<std::wstring>> openedFiles;  // answers of the Open dialog

  std::vector<ShellOperation> shellOperations;
  std::deque<bool> shellResults;
  std::vector<Execution> executions;
  std::deque<INT_PTR> executionResults;
  std::vector<Start> starts;
  std::deque<bool> startResults;
  std::vector<std::wstring> hostQuestions;
  std::deque<bool> hostResults;

  SYSTEMTIME now{2026, 11, 0, 15, 13, 20, 5, 0};
  std::deque<double> fractions;  // draws of the random generator
  int reseeds = 0;
  POINT cursor{0, 0};
  RECT desktop{0, 0, 1024, 768};
  bool dragging = true;  // the mouse button is down

  FakeWorld() {
    messageBox = [this](HWND owner, const std::wstring& text, const std::wstring& title, UINT flags) {
      boxes.push_back({owner, text, title, flags});
      return Take(answers, IDCANCEL, L"box \"" + title + L"\": " + text);
    };
    browseForFolder = [this](HWND) {
      ++folderQuestions;
      return Take(folders, std::optional<std::wstring>(), L"folder picker");
    };
    openFiles = [this](const OpenFilesRequest& request) {
      openRequests.push_back(request);
      return Take(openedFiles, std::optional<std::wstring>(), L"Open dialog");
    };
    shellFileOperation = [this](HWND, UINT function, const std::wstring& from, const std::wstring& to,
                                WORD flags) {
      shellOperations.push_back({function, from, to, flags});
      return Take(shellResults, false, L"file operation on " + from);
    };
    shellExecute = [this](HWND, const std::wstring& verb, const std::wstring& target, int show) {
      executions.push_back({verb, target, show});
      return Take(executionResults, INT_PTR{0}, L"ShellExecute of " + target);
    };
    startProgram = [this](const std::wstring& commandLine, int show) {
      starts.push_back({commandLine, show});
      return Take(startResults, false, L"start of " + commandLine);
    };
    hostAnswers = [this](const std::wstring& host) {
      hostQuestions.push_back(host);
      return Take(hostResults, false, L"question for host " + host);
    };
    localTime = [this] { return now; };
    randomFraction = [this] { return Take(fractions, 0.0, L"random draw"); };
    reseedRandom = [this] { ++reseeds; };
    cursorPosition = [this] { return cursor; };
    workArea = [this] { return desktop; };
    dragButtonDown = [this] { return dragging; };
  }
  ~FakeWorld() {
    ExpectUsed(answers, "box");
    ExpectUsed(folders, "folder picker");
    ExpectUsed(openedFiles, "Open dialog");
    ExpectUsed(shellResults, "file operation");
    ExpectUsed(executionResults, "ShellExecute");
    ExpectUsed(startResults, "program start");
    ExpectUsed(hostResults, "host question");
    ExpectUsed(fractions, "random draw");
  }
  FakeWorld(const FakeWorld&) = delete;
  FakeWorld& operator=(const FakeWorld&) = delete;

 private:
  template <class T>
  static T Take(std::deque<T>& queue, T otherwise, const std::wstring& what) {
    if (queue.empty()) {
      ADD_FAILURE() << "unexpected " << Narrow(what);
      return otherwise;
    }
    T answer = queue.front();
    queue.pop_front();
    return answer;
  }
  template <class T>
  static void ExpectUsed(const std::deque<T>& queue, const char* what) {
    EXPECT_EQ(queue.size(), 0u) << "answers left for: " << what;
  }
};

}  // namespace kestrelon::test
