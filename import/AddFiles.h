#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lang/Messages.h"
#include "store/SharedConnection.h"
#include "ui/win/MainParts.h"

namespace kestrelon::imports {

// The seven fields of a new item, in the order of the table's columns.
struct ItemRecord {
  std::wstring treeviewNode;  // key of the target category
  std::wstring fileIndex;     // "7#" and that key
  std::wstring defineName;    // the alias: the file name without its last extension
  std::wstring filename;
  std::wstring localFile;  // the full path
  std::wstring insertTime;
};

// The one place that makes an item of a file. `number` is its number within the category.
ItemRecord MakeRecord(const std::wstring& categoryKey, std::int64_t number, const std::wstring& path,
                      const std::wstring& insertTime);
// The same into a record that is there already: for long rows of files, since its memory is used again.
void FillRecord(ItemRecord& record, const std::wstring& categoryKey, std::int64_t number,
                const std::wstring& path, const std::wstring& insertTime);
// The statement that adds it. Nothing is escaped: a double quote in a field breaks the statement, as
// required.
// `separator` stands between the values from the second one on; before it there is always a bare comma.
std::wstring InsertStatement(const ItemRecord& record, std::wstring_view separator = L",");

// The number that a FileIndex starts with: 7 for "7#K12", 0 where the text does not start with a digit.
std::int64_t LeadingNumber(std::wstring_view fileIndex);
// The largest number used in a category, 0 for none, read through an open connection.
std::int64_t LargestItemNumber(store::SharedConnection& connection, const std::wstring& categoryKey);

// Hands out the numbers of one import.
class ItemNumbers {
 public:
  // `limit` is the largest number that this way of adding files can give.
  ItemNumbers(std::int64_t largestUsed, std::int64_t limit) : last_(largestUsed), limit_(limit) {}
  // Throws std::overflow_error past the limit.
  std::int64_t Next();

 private:
  std::int64_t last_, limit_;
};
inline constexpr std::int64_t kLargest16Bit = 32767;       // the Open dialog's command counts in 16 bits
inline constexpr std::int64_t kLargest32Bit = 2147483647;  // drops count in 32

// The current category's key; when there is none, the message is shown and the result is empty.
std::wstring TargetCategory(win::MainParts& parts, const lang::MessageText& message);

// How the files of one import become items.
struct InsertionRules {
  std::int64_t largestNumber = kLargest16Bit;
  bool oneTime = false;                // one insertion time for all; else each has its own
  std::wstring_view separator = L",";  // see InsertStatement
};

// Adds the files in their order through an open connection, numbered on from the largest number of the
// category. Clears the database-saved flag. Throws at the first file that cannot be added; those before it
// stay.
void InsertFiles(win::MainParts& parts, store::SharedConnection& connection, const std::wstring& categoryKey,
                 const std::vector<std::wstring>& paths, const InsertionRules& rules);

// The same for the category that the list shows: opens the connection and closes it, and at the end, also
// after a failure, the list shows the category as it stands, with its end in view.
void AddFiles(win::MainParts& parts, const std::wstring& categoryKey, const std::vector<std::wstring>& paths,
              const InsertionRules& rules);

}  // namespace kestrelon::imports
