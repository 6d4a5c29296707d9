#pragma once

#include "app/base/Win32.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/model/State.h"
#include "ui/win/Handles.h"

namespace kestrelon::model {

// One step of a program that works until it is killed, written before the step is begun: when that was, and
// what there will be after it.
struct Record {
  std::uint64_t number = 0;
  std::uint64_t begun = 0;               // FILETIME
  bool saved = false;                    // nothing would be lost: all of it is in a slot
  std::string content;                   // serialised
  std::array<std::uint64_t, 4> slots{};  // digests of what the slots hold; 0: there is none
  std::string step;
};

// Writes records so that they outlive the process, and reads those of a process that is gone; a last one that
// is not whole is left out.
class Journal {
 public:
  explicit Journal(const std::wstring& path);  // makes the file
  void Write(const Record& record);
  // Something is not as it should be: read back as a record of number 0 with the reason as its step.
  void WriteFault(const std::string& reason);

 private:
  void Append(std::string_view bytes);
  win::Unique<HANDLE, ::CloseHandle> file_;
};

std::vector<Record> ReadJournal(const std::wstring& path);
Record RecordOf(const State& state, std::uint64_t number, const std::string& step);
std::uint64_t FileTimeNow();

}  // namespace kestrelon::model
