#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
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
// The statement that adds it. Throws jet::Error for a field with a double quote, see store::Quoted.
// `separator` stands between the values from the second one on; before it there is always a bare comma.
std::wstring InsertStatement(const ItemRecord& record, std::wstring_view separator = L",");

// The number that a FileIndex starts with: 7 for "7#K12", 0 where the text does not start with a digit.
std::int64_t LeadingNumber(std::wstring_view fileIndex);
// The largest number used in a category, 0 for none, read through an open connection.
std::int64_t LargestItemNumber(store::SharedConnection& connection, const std::wstring& categoryKey);

// An item keeps its FileIndex when it goes to another category, so the largest number of those that are left
// is not the largest one given. Does an item with this number and key stand anywhere in the table? Asks by a
// statement that the engine answers from a lookup, whatever the size of the table.
class TakenNumbers {
 public:
  // The connection is open.
  TakenNumbers(store::SharedConnection& connection, const std::wstring& categoryKey);
  bool operator()(std::int64_t number);

 private:
  store::SharedConnection& connection_;
  std::wstring key_;
};
// The categories whose numbers stand anywhere in the table: what follows the "#" of each FileIndex. A new
// category with a key that is none of these can number its items from 1 without asking for each.
std::unordered_set<std::wstring> CategoriesOfItemNumbers(store::SharedConnection& connection);

// Hands out the numbers of one import.
class ItemNumbers {
 public:
  // `limit` is the largest number that this way of adding files can give. Numbers of which `isTaken` is true
  // are passed over.
  ItemNumbers(std::int64_t largestUsed, std::int64_t limit, std::function<bool(std::int64_t)> isTaken = {})
      : last_(largestUsed), limit_(limit), isTaken_(std::move(isTaken)) {}
  // Throws std::overflow_error past the limit.
  std::int64_t Next();

 private:
  std::int64_t last_, limit_;
  std::function<bool(std::int64_t)> isTaken_;
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
// stay. Their indexes are appended to `added`, where it is given.
void InsertFiles(win::MainParts& parts, store::SharedConnection& connection, const std::wstring& categoryKey,
                 const std::vector<std::wstring>& paths, const InsertionRules& rules,
                 std::vector<std::wstring>* added = nullptr);

// The same for the category that the list shows: opens the connection and closes it, and at the end, also
// after a failure, the list shows the category as it stands, with its end in view.
//
// After a failure `failed` is called, where it is given, with how many of the files became items, which are
// the first ones; the list still shows the category as before then.
void AddFiles(win::MainParts& parts, const std::wstring& categoryKey, const std::vector<std::wstring>& paths,
              const InsertionRules& rules, const std::function<void(std::size_t added)>& failed = {});

}  // namespace kestrelon::imports
