#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "jet/Ado.h"

namespace kestrelon::store {

static_assert(sizeof(wchar_t) == sizeof(char16_t), "Windows text and the engine's text are the same units");
std::u16string ToEngine(std::wstring_view text);
std::wstring ToWindows(std::u16string_view text);

// The one connection to the working database that every routine shares.
class SharedConnection {
 public:
  explicit SharedConnection(std::wstring_view connectionString);
  // Runs one statement on the open connection. Throws jet::Error.
  std::size_t Execute(std::wstring_view sql);
  jet::Connection& Ado() { return connection_; }
  bool IsOpen() const { return connection_.State() != 0; }
  // After the file was replaced by another one.
  void Forget() { connection_.Forget(); }
  // Closes the connection, which writes what has changed.
  void Close();
  // Writes what has changed, and the note of the connection's log. An open connection stays open, a closed
  // one closed. Throws.
  void Write();

  // Called before changes are written and after they have been. A failure of the first does not keep Close()
  // from writing.
  std::function<void()> beforeWriting{}, afterWriting{};

 private:
  jet::Connection connection_;
};

// Opens the shared connection if it is closed, and closes it at the end if it was this object that opened it:
// routines that find it open work on it as it is. Close() reports a failed write by an exception; the
// destructor cannot.
class Opened {
 public:
  explicit Opened(SharedConnection& shared);
  ~Opened();
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  SharedConnection* operator->() { return &shared_; }
  SharedConnection& operator*() { return shared_; }
  void Close();

 private:
  SharedConnection& shared_;
  bool mine_ = false;
};

// `"` + value + `"`: how every value stands in a statement. Nothing inside can be escaped: a value that holds
// a double quote would break its statement or, worse, give it another meaning. So it is refused here, by the
// error that a broken statement gives (code::kSyntax).
std::wstring Quoted(std::wstring_view value);
void AppendQuoted(std::wstring& sql, std::wstring_view value);

}  // namespace kestrelon::store
