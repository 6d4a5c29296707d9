// Index trees and keys, without a file around them. Page 0 of the input describes an index and gives values
// to make keys of; the pages after it are the pages of a tree, the first its root. The tree is walked as it
// is; then it is replaced by one over what was found in it and the keys, which must be sound.
//
// Page 0:
//
//   OFFSET  SIZE  MEANING
//   0       1     key columns, 1 to 4
//   1       1     flags of the index
//   8       4n    columns: type, 1 for ascending, low byte of the sort order, its version
//   32      ...   values, one after the other: of a text or of bytes u8 length and the bytes, else 8 bytes

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <set>

#include "fuzz/PageMutator.h"
#include "fuzz/Target.h"
#include "jet/catalog/Layout.h"
#include "jet/index/Index.h"
#include "jet/index/TextKey.h"
#include "jet/page/Pager.h"
#include "jet/page/UsageMap.h"
#include "jet/sql/TextCompare.h"

namespace kestrelon::fuzz {
namespace {

using namespace jet;

constexpr std::uint32_t kDefinition = 64;  // the number alone is of importance
constexpr std::size_t kValues = 32;
constexpr std::size_t kMostEntries = 200;

class Values {
 public:
  explicit Values(Input bytes) : bytes_(bytes) {}
  bool Empty() const { return bytes_.empty(); }
  Value Next(ColumnType type) {
    switch (type) {
      case ColumnType::kBoolean: return (Number() & 1) != 0;
      case ColumnType::kByte: return static_cast<std::int32_t>(Number() & 0xFF);
      case ColumnType::kInteger: return std::int32_t{static_cast<std::int16_t>(Number())};
      case ColumnType::kLong: return static_cast<std::int32_t>(Number());
      case ColumnType::kCurrency: return static_cast<std::int64_t>(Number());
      case ColumnType::kSingle: return double{std::bit_cast<float>(static_cast<std::uint32_t>(Number()))};
      case ColumnType::kDouble:
      case ColumnType::kDate: return std::bit_cast<double>(Number());
      case ColumnType::kText:
      case ColumnType::kMemo: {
        const Input part = Part();
        std::u16string text(part.size() / 2, u'\0');
        for (std::size_t i = 0; i < text.size(); ++i)
          text[i] = static_cast<char16_t>(Get16(part.data() + 2 * i));
        return text;
      }
      default: {
        const Input part = Part();
        return Bytes(part.begin(), part.end());
      }
    }
  }

 private:
  std::uint64_t Number() {
    std::uint8_t bytes[8] = {};
    const Input part = Take(8);
    std::copy(part.begin(), part.end(), bytes);
    return Get64(bytes);
  }
  Input Part() {
    const Input size = Take(1);
    return Take(size.empty() ? 0 : size[0]);
  }
  Input Take(std::size_t size) {
    const Input part = bytes_.first(std::min(size, bytes_.size()));
    bytes_ = bytes_.subspan(part.size());
    return part;
  }
  Input bytes_;
};

int Sign(int number) { return (number > 0) - (number < 0); }

// Keys must be in the order of the values.
void CompareKeys(const StoredColumn& column, const Value& a, const Value& b) {
  std::string keyOfA, keyOfB;
  if (!AppendKey(column, a, true, keyOfA) || !AppendKey(column, b, true, keyOfB)) return;
  const int byKey = Sign(keyOfA.compare(keyOfB));
  int byValue = byKey;
  if (const auto* x = std::get_if<std::int32_t>(&a), *y = std::get_if<std::int32_t>(&b); x && y)
    byValue = (*x > *y) - (*x < *y);
  if (const auto* x = std::get_if<std::int64_t>(&a), *y = std::get_if<std::int64_t>(&b); x && y)
    byValue = (*x > *y) - (*x < *y);
  if (const auto* x = std::get_if<double>(&a), *y = std::get_if<double>(&b); x && y && *x != *y) {
    if (!std::isnan(*x) && !std::isnan(*y)) byValue = *x > *y ? 1 : -1;
  }
  if (const auto* x = std::get_if<std::u16string>(&a), *y = std::get_if<std::u16string>(&b); x && y)
    byValue = Sign(sql::CompareTexts(*x, *y));
  if (byKey != byValue) throw Finding("two keys are in another order than their values");
}

class Index {
 public:
  explicit Index(Input input) {
    const std::size_t pages = input.size() / kPageSize;
    MapRows maps(pager_);
    index_.map = maps.Add();  // on page 2
    for (std::size_t page = 1; page < pages; ++page) {
      const std::uint32_t number = pager_.Allocate();
      std::copy_n(input.begin() + static_cast<std::ptrdiff_t>(page * kPageSize), kPageSize,
                  pager_.Write(number));
      UsageMap(pager_, index_.map).Add(number);
    }
    index_.root = kFragmentShift + 1;
    index_.flags = input[1];
    const std::size_t count = 1 + input[0] % 4;
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint8_t* at = input.data() + 8 + 4 * i;
      StoredColumn& column = columns_.emplace_back();
      column.type = at[0];
      column.number = static_cast<std::uint16_t>(i);
      column.collation = static_cast<std::uint16_t>(0x0400 | at[2]);
      column.collationVersion = at[3];
      index_.columns.push_back({column.number, (at[1] & 1) != 0});
    }
  }

  void MakeKeys(Input bytes) {
    Values values(bytes);
    std::vector<Value> before(columns_.size());
    for (std::uint32_t row = 0; !values.Empty() && row < kMostEntries; ++row) {
      std::string key;
      bool known = true;
      for (std::size_t i = 0; i < columns_.size(); ++i) {
        const Value value = row % 16 == 15 ? Value() : values.Next(static_cast<ColumnType>(columns_[i].type));
        known = known && AppendKey(columns_[i], value, index_.columns[i].ascending, key);
        if (!IsNull(value) && !IsNull(before[i])) CompareKeys(columns_[i], before[i], value);
        before[i] = value;
      }
      if (known) Add(key, RowId{0x1000u + row});
    }
  }

  void Walk() {
    IndexWalk walk;
    std::size_t met = 0, pages = 0;
    walk.entry = [&](std::span<const std::uint8_t> key, RowId row) {
      if (++met <= kMostEntries) Add(std::string(key.begin(), key.end()), row);
    };
    walk.page = [&](std::uint32_t) { ++pages; };
    std::size_t faults = 0;
    walk.fault = [&](const std::string&) { ++faults; };
    WalkIndex(pager_, kDefinition, index_, walk);
    if (pages > pager_.PageCount()) throw Finding("a walk visits more pages than there are");
    walk.fault = nullptr;
    const bool throws = !Try([&] { WalkIndex(pager_, kDefinition, index_, walk); });
    if (throws != (faults != 0)) throw Finding("a walk finds a fault and does not throw, or the reverse");
  }

  void Build() {
    IndexEntries entries;
    std::size_t expected = 0;
    for (const auto& entry : found_) {
      if (Try([&] { entries.Add(entry.first, entry.second); })) ++expected;
    }
    entries.Sort();
    BuildIndex(pager_, kDefinition, index_, entries);
    std::size_t met = 0;
    IndexWalk walk;
    walk.entry = [&](std::span<const std::uint8_t> key, RowId row) {
      ++met;
      if (!found_.contains({std::string(key.begin(), key.end()), row}))
        throw Finding("an entry became another");
    };
    walk.fault = [](const std::string& fault) {
      throw Finding("a tree that was built has a fault: " + fault);
    };
    WalkIndex(pager_, kDefinition, index_, walk);
    if (met != expected) throw Finding("a tree that was built lacks entries");
  }

 private:
  void Add(const std::string& key, RowId row) { found_.emplace(key, row); }

  Pager pager_;
  RealIndex index_;
  std::vector<StoredColumn> columns_;
  std::set<std::pair<std::string, RowId>> found_;
};

}  // namespace

void RunIndex(Input input) {
  if (input.size() < 2 * kPageSize) return;
  Try([&] {
    Index index(input);
    index.MakeKeys(input.subspan(kValues, kPageSize - kValues));
    index.Walk();
    index.Build();
  });
}

}  // namespace kestrelon::fuzz
