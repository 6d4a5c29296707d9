#pragma once

#include "app/base/Win32.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/model/State.h"
#include "ui/win/Handles.h"

namespace kestrelon::model {

// A moment of a program that works until it is killed, written before the step that leads there is begun.
// A step that goes by way of others, as a file is moved after the other, has several.
struct Record {
  std::uint64_t number = 0;              // of the step
  std::uint64_t begun = 0;               // FILETIME
  bool unsaved = false;                  // the content is in no slot, so that it has to be offered
  bool done = false;                     // the step has come to its end
  std::string content;                   // serialised, as it is when it is loaded again
  std::array<std::uint64_t, 4> slots{};  // digests of what the slots hold; 0: there is none
  std::uint64_t offered = 0;             // the same for the unsaved collection that was set aside before
  std::string step;
};

// Writes records so that they outlive the process, and reads those of a process that is gone; a last one that
// is not whole is left out.
class Journal {
 public:
  explicit Journal(const std::wstring& path);  // makes the file
  void Write(const Record& record);
  // The step written last has come to its end.
  void WriteDone();
  // Something is not as it should be: read back as a record of number 0 with the reason as its step.
  void WriteFault(const std::string& reason);

 private:
  void Append(std::string_view bytes);
  win::Unique<HANDLE, ::CloseHandle> file_;
};

std::vector<Record> ReadJournal(const std::wstring& path);
// `content`: at that moment, with the slots of `state`.
Record RecordOf(const State& state, const Content& content, std::uint64_t number, const std::string& step);
// 0 for none.
std::uint64_t DigestOf(const std::optional<Content>& content);
std::uint64_t FileTimeNow();

}  // namespace kestrelon::model
