#include "import/AddFiles.h"

#include <algorithm>
#include <stdexcept>

#include "app/base/File.h"
#include "app/base/GetFileInfo.h"
#include "items/ShowData.h"
#include "lang/SelectLanguage.h"
#include "ui/win/Boxes.h"

namespace kestrelon::imports {
namespace {

bool IsItem(store::SharedConnection& connection, const std::wstring& fileIndex) {
  jet::Recordset rows;
  rows.Open(store::ToEngine(L"SELECT FileIndex FROM FTable WHERE FileIndex=" + store::Quoted(fileIndex)),
            connection.Ado());
  return !rows.EndOfFile();
}

// How many of the items, from the first on, the table has. Fewer than were added where they could not be
// written to the disk.
std::size_t StillThere(win::MainParts& parts, const std::vector<std::wstring>& fileIndexes) {
  std::size_t there = 0;
  win::Quietly([&] {
    store::Opened connection(parts.connection);
    while (there < fileIndexes.size() && IsItem(*connection, fileIndexes[there])) ++there;
    connection.Close();
  });
  return there;
}

}  // namespace

ItemRecord MakeRecord(const std::wstring& categoryKey, std::int64_t number, const std::wstring& path,
                      const std::wstring& insertTime) {
  ItemRecord record;
  FillRecord(record, categoryKey, number, path, insertTime);
  return record;
}

void FillRecord(ItemRecord& record, const std::wstring& categoryKey, std::int64_t number,
                const std::wstring& path, const std::wstring& insertTime) {
  record.treeviewNode = categoryKey;
  record.fileIndex = std::to_wstring(number);
  record.fileIndex += L'#';
  record.fileIndex += categoryKey;
  record.filename = FileNameOfPath(path);
  record.defineName = NameWithoutExtension(record.filename);
  record.localFile = path;
  record.insertTime = insertTime;
}

std::wstring InsertStatement(const ItemRecord& record, std::wstring_view separator) {
  const auto fields = {&record.treeviewNode, &record.fileIndex, &record.defineName,
                       &record.filename,     &record.localFile, &record.insertTime};
  // In one piece of memory: a folder tree makes a hundred thousand of these in a row.
  std::size_t size = 64;
  for (const std::wstring* field : fields) size += field->size();
  std::wstring sql;
  sql.reserve(size);
  sql += L"INSERT INTO FTable VALUES(";
  for (const std::wstring* field : fields) {
    if (field == &record.fileIndex) {
      sql += L",";
    } else if (field != &record.treeviewNode) {
      sql += separator;
    }
    store::AppendQuoted(sql, *field);
  }
  sql += L",'')";
  return sql;
}

std::int64_t LeadingNumber(std::wstring_view fileIndex) {
  std::int64_t number = 0;
  for (const wchar_t unit : fileIndex) {
    if (unit < L'0' || unit > L'9') break;
    // A number past every limit is enough to know that nothing larger can be given.
    if (number > kLargest32Bit) break;
    number = number * 10 + (unit - L'0');
  }
  return number;
}

std::int64_t LargestItemNumber(store::SharedConnection& connection, const std::wstring& categoryKey) {
  jet::Recordset rows;
  rows.Open(store::ToEngine(L"SELECT FileIndex FROM FTable WHERE TreeviewNode=" + store::Quoted(categoryKey)),
            connection.Ado());
  std::int64_t largest = 0;
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    const std::u16string_view text = rows.Text(std::size_t{0});
    largest = std::max(largest, LeadingNumber({reinterpret_cast<const wchar_t*>(text.data()), text.size()}));
  }
  return largest;
}

TakenNumbers::TakenNumbers(store::SharedConnection& connection, const std::wstring& categoryKey)
    : connection_(connection), key_(categoryKey) {}

bool TakenNumbers::operator()(std::int64_t number) {
  return IsItem(connection_, std::to_wstring(number) + L"#" + key_);
}

std::unordered_set<std::wstring> CategoriesOfItemNumbers(store::SharedConnection& connection) {
  jet::Recordset rows;
  rows.Open(u"SELECT FileIndex FROM FTable", connection.Ado());
  std::unordered_set<std::wstring> keys;
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    const std::u16string_view text = rows.Text(std::size_t{0});
    const std::size_t mark = text.find(u'#');
    if (mark != std::u16string_view::npos) keys.emplace(text.begin() + mark + 1, text.end());
  }
  return keys;
}

std::int64_t ItemNumbers::Next() {
  do {
    if (last_ >= limit_) {
      throw std::overflow_error("Overflow: the category already holds an item numbered " +
                                std::to_string(last_) + ", and no number above " + std::to_string(limit_) +
                                " can be given.");
    }
    ++last_;
  } while (isTaken_ && isTaken_(last_));
  return last_;
}

std::wstring TargetCategory(win::MainParts& parts, const lang::MessageText& message) {
  std::wstring key = win::CurrentCategory(parts);
  if (key.empty()) {
    win::Inform(parts.world, parts.form.Handle(), lang::Message(parts.program, message),
                parts.program.productName);
  }
  return key;
}

void InsertFiles(win::MainParts& parts, store::SharedConnection& connection, const std::wstring& categoryKey,
                 const std::vector<std::wstring>& paths, const InsertionRules& rules,
                 std::vector<std::wstring>* added) {
  ItemNumbers numbers(LargestItemNumber(connection, categoryKey), rules.largestNumber,
                      TakenNumbers(connection, categoryKey));
  const auto now = [&] { return DateTimeText(parts.world.localTime()); };
  const std::wstring start = now();
  for (const std::wstring& path : paths) {
    const ItemRecord record = MakeRecord(categoryKey, numbers.Next(), path, rules.oneTime ? start : now());
    connection.Execute(InsertStatement(record, rules.separator));
    win::MarkChanged(parts);
    if (added) added->push_back(record.fileIndex);
  }
}

void AddFiles(win::MainParts& parts, const std::wstring& categoryKey, const std::vector<std::wstring>& paths,
              const InsertionRules& rules, const std::function<void(std::size_t added)>& failed) {
  const win::Finally refill([&] {
    items::ShowData(parts, categoryKey);
    if (parts.ListView1.Count() > 0) parts.ListView1.EnsureVisible(parts.ListView1.Count() - 1);
  });
  std::vector<std::wstring> added;
  try {
    store::Opened connection(parts.connection);
    InsertFiles(parts, *connection, categoryKey, paths, rules, &added);
    connection.Close();
  } catch (const std::exception&) {
    if (failed) failed(StillThere(parts, added));
    throw;
  }
}

}  // namespace kestrelon::imports
