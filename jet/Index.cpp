#include "jet/Index.h"

#include <algorithm>
#include <cstring>
#include <set>

#include "jet/UsageMap.h"

// A page of an index tree:
//
//   OFFSET  SIZE  MEANING
//   0       2     04 01 leaf, 03 01 node
//   2       2     free bytes: 3616 - bytes of entries
//   4       4     definition page of the table
//   8       4     0
//   12      4     previous page of the level (leaves; 0 at the end)
//   16      4     next page of the level
//   20      4     node: last child, if it has no entry, else 0
//   24      2     prefix: so many first bytes of entry 0 are left out of all others
//   26      1     0 (one node page of Access has 1; meaning unknown)
//   27      453   mask: bit k, lowest first, = an entry ends at 480 + k
//   480     3616  entries, packed
//
// Leaf entry: key, u24 big-endian page, u8 slot. Node entry: the last entry below the child, then u32
// big-endian child. Entries are in the order of their bytes.

namespace kestrelon::jet {
namespace {

constexpr std::size_t kMask = 27, kEntries = 480, kRoom = kPageSize - kEntries;
constexpr std::size_t kChild = 4;
static_assert(2 * (kLongestEntry + kChild) <= kRoom);
constexpr int kDeepest = 16;  // a sound tree of 2 GiB has six levels at the worst

std::size_t CommonPrefix(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b, std::size_t most) {
  std::size_t n = 0;
  while (n < most && a[n] == b[n]) ++n;
  return n;
}

// The pages of one level being filled from left to right.
class Level {
 public:
  Level(const IndexEntries& entries, bool leaves) : entries_(entries), leaves_(leaves) {}

  // One page: entries [first, last] of the level, and how many bytes of each are shared.
  struct Page {
    std::size_t first, last, prefix;
  };

  // `lastEntries[i]` is the index (in the sorted entries) of the i-th item's last entry.
  std::vector<Page> Split(const std::vector<std::size_t>& items) const {
    const std::size_t extra = leaves_ ? 0 : kChild;
    std::vector<Page> pages;
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
      const auto entry = entries_[items[i]];
      if (!pages.empty()) {
        Page& page = pages.back();
        const auto first = entries_[items[page.first]];
        const std::size_t most = std::min({first.size() - kRowPointer, entry.size() - kRowPointer,
                                           page.first == page.last ? kRoom : page.prefix});
        const std::size_t prefix = CommonPrefix(first, entry, most);
        const std::size_t count = i - page.first + 1;
        const std::size_t total = bytes + entry.size() + extra - prefix * (count - 1);
        if (total <= kRoom) {
          page.last = i;
          page.prefix = prefix;
          bytes += entry.size() + extra;
          continue;
        }
      }
      pages.push_back({i, i, 0});
      bytes = entry.size() + extra;
    }
    return pages;
  }

 private:
  const IndexEntries& entries_;
  bool leaves_;
};

void FillPage(std::uint8_t* page, const IndexEntries& entries, const std::vector<std::size_t>& items,
              const Level::Page& range, const std::vector<std::uint32_t>* children) {
  std::size_t end = 0;
  for (std::size_t i = range.first; i <= range.last; ++i) {
    const auto entry = entries[items[i]];
    const std::size_t skipped = i == range.first ? 0 : range.prefix;
    std::memcpy(page + kEntries + end, entry.data() + skipped, entry.size() - skipped);
    end += entry.size() - skipped;
    if (children != nullptr) {
      PutBig32(page + kEntries + end, (*children)[i]);
      end += kChild;
    }
    page[kMask + end / 8] = static_cast<std::uint8_t>(page[kMask + end / 8] | 1u << end % 8);
  }
  Put16(page + 2, kRoom - end);
  Put16(page + 24, range.prefix);
}

void FormatIndexPage(std::uint8_t* page, std::uint32_t definitionPage, bool leaf) {
  std::memset(page, 0, kPageSize);
  page[0] = leaf ? page_type::kIndexLeaf : page_type::kIndexNode;
  page[1] = 0x01;
  Put16(page + 2, kRoom);
  Put32(page + 4, definitionPage);
}

class Walker {
 public:
  Walker(const Pager& pager, std::uint32_t definitionPage, const IndexWalk& walk)
      : pager_(pager), definitionPage_(definitionPage), walk_(walk) {}

  void Visit(std::uint32_t page, int depth) {
    if (depth > kDeepest) return Fault("the tree is too deep", page);
    if (page == 0 || page >= pager_.PageCount()) return Fault("a page outside the file is named", page);
    if (!seen_.insert(page).second) return Fault("a page is reached twice", page);
    if (walk_.page) walk_.page(page);
    const std::uint8_t* bytes = pager_.Read(page);
    const bool leaf = bytes[0] == page_type::kIndexLeaf;
    if ((!leaf && bytes[0] != page_type::kIndexNode) || bytes[1] != 0x01) return Fault("no index page", page);
    if (Get32(bytes + 4) != definitionPage_) return Fault("an index page of another table", page);
    if (leaf) CheckLeaf(page, bytes, depth);

    const std::size_t tail = leaf ? kRowPointer : kRowPointer + kChild;
    const std::size_t prefix = Get16(bytes + 24);
    std::vector<std::uint8_t> shared, entry;
    std::size_t start = 0;
    for (std::size_t end = 1; end <= kRoom; ++end) {
      if ((bytes[kMask + end / 8] >> end % 8 & 1) == 0) continue;
      entry.clear();
      if (start == 0) {
        shared.assign(bytes + kEntries, bytes + kEntries + std::min(prefix, end));
      } else {
        if (prefix > shared.size()) return Fault("a prefix is longer than the first entry", page);
        entry = shared;
      }
      entry.insert(entry.end(), bytes + kEntries + start, bytes + kEntries + end);
      start = end;
      if (entry.size() < tail + 1) return Fault("an entry is too short", page);
      if (leaf) {
        Entry(entry, page);
      } else {
        Visit(GetBig32(entry.data() + entry.size() - kChild), depth + 1);
        entry.resize(entry.size() - kChild);
        if (entry < last_) Fault("an entry of a node lies below what it leads to", page);
      }
    }
    if (start != kRoom - Get16(bytes + 2)) Fault("the free-space field is wrong", page);
    if (!leaf) {
      if (const std::uint32_t child = Get32(bytes + 20); child != 0) {
        Visit(child, depth + 1);
      } else if (start == 0) {
        Fault("a node without children", page);
      }
    }
  }

  void Finish() {
    if (nextLeaf_ != 0) Fault("the last leaf names a next one", lastLeaf_);
  }

 private:
  void Entry(const std::vector<std::uint8_t>& entry, std::uint32_t page) {
    if (!(last_ < entry)) Fault("entries are out of order", page);
    last_ = entry;
    const std::size_t keySize = entry.size() - kRowPointer;
    walk_.entry({entry.data(), keySize}, RowId{GetBig32(entry.data() + keySize)});
  }

  void CheckLeaf(std::uint32_t page, const std::uint8_t* bytes, int depth) {
    if (lastLeaf_ != 0 && (nextLeaf_ != page || Get32(bytes + 12) != lastLeaf_))
      Fault("leaves are not linked", page);
    if (lastLeaf_ == 0 && Get32(bytes + 12) != 0) Fault("the first leaf names a previous one", page);
    if (leafDepth_ >= 0 && leafDepth_ != depth) Fault("leaves at different depths", page);
    leafDepth_ = depth;
    lastLeaf_ = page;
    nextLeaf_ = Get32(bytes + 16);
  }

  void Fault(const char* what, std::uint32_t page) {
    if (!walk_.fault) ThrowCorrupt(what, page);
    walk_.fault(std::string(what) + " (page " + std::to_string(page) + ")");
  }

  const Pager& pager_;
  std::uint32_t definitionPage_;
  const IndexWalk& walk_;
  std::set<std::uint32_t> seen_;
  std::vector<std::uint8_t> last_;  // the entry visited last
  std::uint32_t lastLeaf_ = 0, nextLeaf_ = 0;
  int leafDepth_ = -1;
};

}  // namespace

void IndexEntries::Reserve(std::size_t entries, std::size_t keyBytes) {
  places_.reserve(entries);
  bytes_.reserve(entries * (keyBytes + kRowPointer));
}

void IndexEntries::Add(std::span<const std::uint8_t> key, RowId row) {
  const std::size_t size = key.size() + kRowPointer;
  if (size > kLongestEntry) throw Error(code::kGeneric, u"An index key is too long.");
  places_.push_back({static_cast<std::uint32_t>(bytes_.size()), static_cast<std::uint16_t>(size)});
  bytes_.insert(bytes_.end(), key.begin(), key.end());
  std::uint8_t pointer[kRowPointer];
  PutBig32(pointer,
           static_cast<std::uint32_t>(row));  // page << 8 | slot: the page's three bytes, then the slot
  bytes_.insert(bytes_.end(), pointer, pointer + kRowPointer);
}

void IndexEntries::Sort() {
  const auto less = [this](const Place& a, const Place& b) {
    const int order =
        std::memcmp(bytes_.data() + a.offset, bytes_.data() + b.offset, std::min(a.size, b.size));
    return order != 0 ? order < 0 : a.size < b.size;
  };
  if (!std::is_sorted(places_.begin(), places_.end(), less)) std::sort(places_.begin(), places_.end(), less);
}

void FormatEmptyIndex(std::uint8_t* page, std::uint32_t definitionPage) {
  FormatIndexPage(page, definitionPage, true);
}

void BuildIndex(Pager& pager, std::uint32_t definitionPage, RealIndex& index, const IndexEntries& entries) {
  UsageMap map(pager, index.map);
  for (const std::uint32_t page : map.Pages()) {
    if (page != index.root) pager.Free(page);
  }
  map.Clear();
  map.Add(index.root);

  index.entries = static_cast<std::uint32_t>(entries.size());
  index.distinct = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const auto entry = entries[i];
    const auto before = i == 0 ? entry : entries[i - 1];
    const std::size_t key = entry.size() - kRowPointer;
    const bool repeated =
        i > 0 && before.size() == entry.size() && std::memcmp(before.data(), entry.data(), key) == 0;
    if (!repeated) ++index.distinct;
  }
  if (entries.size() == 0) {
    FormatEmptyIndex(pager.Write(index.root), definitionPage);
    return;
  }

  std::vector<std::size_t> items(
      entries.size());  // each item's last entry; of a leaf's items the entries themselves
  for (std::size_t i = 0; i < items.size(); ++i) items[i] = i;
  std::vector<std::uint32_t> children;
  for (bool leaves = true;; leaves = false) {
    const std::vector<Level::Page> pages = Level(entries, leaves).Split(items);
    std::vector<std::uint32_t> numbers;
    for (std::size_t i = 0; i < pages.size(); ++i) {
      numbers.push_back(pages.size() == 1 ? index.root : pager.Allocate());
      if (pages.size() > 1) map.Add(numbers.back());
    }
    for (std::size_t i = 0; i < pages.size(); ++i) {
      std::uint8_t* page = pager.Write(numbers[i]);
      FormatIndexPage(page, definitionPage, leaves);
      if (leaves && i > 0) Put32(page + 12, numbers[i - 1]);
      if (leaves && i + 1 < pages.size()) Put32(page + 16, numbers[i + 1]);
      FillPage(page, entries, items, pages[i], leaves ? nullptr : &children);
    }
    if (pages.size() == 1) return;
    std::vector<std::size_t> next;
    for (const Level::Page& page : pages) next.push_back(items[page.last]);
    items = std::move(next);
    children = std::move(numbers);
  }
}

void WalkIndex(const Pager& pager, std::uint32_t definitionPage, const RealIndex& index,
               const IndexWalk& walk) {
  Walker walker(pager, definitionPage, walk);
  walker.Visit(index.root, 0);
  walker.Finish();
}

}  // namespace kestrelon::jet
