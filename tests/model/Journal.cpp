#include "tests/model/Journal.h"

#include <sstream>

#include "app/base/File.h"
#include "tests/model/TestProgram.h"

namespace kestrelon::model {

Journal::Journal(const std::wstring& path) {
  const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) ThrowLastError(L"the journal " + path);
  file_.reset(file);
}

void Journal::Append(std::string_view bytes) {
  // One call: what the system has taken stays when the process is killed.
  DWORD written = 0;
  if (!::WriteFile(file_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
    ThrowLastError(L"writing the journal");
}

void Journal::Write(const Record& record) {
  std::ostringstream text;
  text << record.number << ' ' << record.begun << ' ' << record.unsaved << ' ' << record.offered;
  for (const std::uint64_t digest : record.slots) text << ' ' << digest;
  text << ' ' << record.content.size() << ' ' << record.step.size() << '\n'
       << record.content << record.step << '\n';
  Append(text.str());
}

void Journal::WriteDone() { Append("done\n"); }

void Journal::WriteFault(const std::string& reason) {
  Record fault;
  fault.step = reason;
  Write(fault);
}

std::vector<Record> ReadJournal(const std::wstring& path) {
  std::istringstream text(BytesOf(path));
  std::vector<Record> records;
  for (;;) {
    if (text.peek() == 'd') {
      std::string done;
      if (!std::getline(text, done) || text.eof()) return records;
      records.back().done = true;
      continue;
    }
    Record record;
    std::size_t content = 0, step = 0;
    text >> record.number >> record.begun >> record.unsaved >> record.offered;
    for (std::uint64_t& digest : record.slots) text >> digest;
    text >> content >> step;
    if (text.get() != '\n') return records;
    record.content.resize(content);
    record.step.resize(step);
    text.read(record.content.data(), static_cast<std::streamsize>(content));
    text.read(record.step.data(), static_cast<std::streamsize>(step));
    if (text.get() != '\n') return records;
    records.push_back(std::move(record));
  }
}

Record RecordOf(const State& state, const Content& content, std::uint64_t number, const std::string& step) {
  Record record;
  record.number = number;
  record.begun = FileTimeNow();
  record.unsaved = IsUnsaved(state, content);
  record.content = Serialised(Loaded(content));
  for (std::size_t slot = 0; slot < state.slots.size(); ++slot)
    record.slots[slot] = DigestOf(state.slots[slot]);
  record.offered = DigestOf(state.unsaved);
  record.step = step;
  return record;
}

std::uint64_t DigestOf(const std::optional<Content>& content) {
  return content ? DigestOf(Serialised(*content)) : 0;
}

std::uint64_t FileTimeNow() {
  FILETIME now;
  ::GetSystemTimeAsFileTime(&now);
  return static_cast<std::uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
}

}  // namespace kestrelon::model
