#include "store/SharedConnection.h"

#include "jet/base/Error.h"
#include "ui/win/Boxes.h"
#include "ui/win/Handles.h"

namespace kestrelon::store {

std::u16string ToEngine(std::wstring_view text) { return {text.begin(), text.end()}; }

std::wstring ToWindows(std::u16string_view text) { return {text.begin(), text.end()}; }

SharedConnection::SharedConnection(std::wstring_view connectionString) {
  connection_.SetConnectionString(ToEngine(connectionString));
}

std::size_t SharedConnection::Execute(std::wstring_view sql) { return connection_.Execute(ToEngine(sql)); }

void SharedConnection::Close() {
  const bool changed = connection_.Changed();
  if (changed && beforeWriting) win::Quietly(beforeWriting);
  connection_.Close();
  if (changed && afterWriting) afterWriting();
}

void SharedConnection::Write() {
  const bool open = IsOpen();
  if (!open) connection_.Open();
  // A connection that this opened is closed on every way out; what it could not write is written later.
  const win::Finally close([&] {
    if (!open) win::Quietly([&] { connection_.Close(); });
  });
  if (beforeWriting) beforeWriting();
  connection_.Flush();
  if (afterWriting) afterWriting();
}

Opened::Opened(SharedConnection& shared) : shared_(shared) {
  if (shared_.IsOpen()) return;
  shared_.Ado().Open();
  mine_ = true;
}

Opened::~Opened() {
  if (mine_) win::Quietly([this] { shared_.Close(); });
}

void Opened::Close() {
  if (!mine_) return;
  mine_ = false;
  shared_.Close();
}

std::wstring Quoted(std::wstring_view value) {
  std::wstring text;
  text.reserve(value.size() + 2);
  AppendQuoted(text, value);
  return text;
}

void AppendQuoted(std::wstring& sql, std::wstring_view value) {
  if (value.find(L'"') != std::wstring_view::npos) {
    throw jet::Error(jet::code::kSyntax,
                     u"Syntax error (missing operator) in query expression '\"" + ToEngine(value) + u"\"'.");
  }
  sql += L'"';
  sql += value;
  sql += L'"';
}

}  // namespace kestrelon::store
