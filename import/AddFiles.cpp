#include "import/AddFiles.h"

#include <algorithm>
#include <stdexcept>

#include "app/base/File.h"
#include "app/base/GetFileInfo.h"
#include "items/ShowData.h"
#include "lang/SelectLanguage.h"
#include "ui/win/Boxes.h"

namespace kestrelon::imports {

ItemRecord MakeRecord(const std::wstring& categoryKey, std::int64_t number, const std::wstring& path,
                      const std::wstring& insertTime) {
  std::wstring filename = FileNameOfPath(path);
  std::wstring alias = NameWithoutExtension(filename);
  return {
      categoryKey, std::to_wstring(number) + L"#" + categoryKey, std::move(alias), std::move(filename), path,
      insertTime};
}

std::wstring InsertStatement(const ItemRecord& record) {
  std::wstring sql = L"INSERT INTO FTable VALUES(";
  for (const std::wstring* field : {&record.treeviewNode, &record.fileIndex, &record.defineName,
                                    &record.filename, &record.localFile, &record.insertTime}) {
    if (field != &record.treeviewNode) sql += L",";
    sql += store::Quoted(*field);
  }
  return sql + L",'')";
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

std::int64_t ItemNumbers::Next() {
  if (last_ >= limit_) {
    throw std::overflow_error("Overflow: the category already holds an item numbered " +
                              std::to_string(last_) + ", and no number above " + std::to_string(limit_) +
                              " can be given.");
  }
  return ++last_;
}

std::wstring TargetCategory(win::MainParts& parts, const lang::MessageText& message) {
  std::wstring key = win::CurrentCategory(parts);
  if (key.empty()) {
    win::Inform(parts.world, parts.form.Handle(), lang::Message(parts.program, message),
                parts.program.productName);
  }
  return key;
}

void AddFiles(win::MainParts& parts, const std::wstring& categoryKey, const std::vector<std::wstring>& paths,
              std::int64_t largestNumber) {
  const win::Finally refill([&] {
    items::ShowData(parts, categoryKey);
    if (parts.ListView1.Count() > 0) parts.ListView1.EnsureVisible(parts.ListView1.Count() - 1);
  });
  store::Opened connection(parts.connection);
  ItemNumbers numbers(LargestItemNumber(*connection, categoryKey), largestNumber);
  for (const std::wstring& path : paths) {
    const ItemRecord record =
        MakeRecord(categoryKey, numbers.Next(), path, DateTimeText(parts.world.localTime()));
    connection->Execute(InsertStatement(record));
    win::MarkChanged(parts);
  }
  connection.Close();
}

}  // namespace kestrelon::imports
