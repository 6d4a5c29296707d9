#include "jet/index/Index.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <set>

#include "jet/page/UsageMap.h"

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

// How many first bytes two entries share; `most` at the most, which must not exceed the size of either.
std::size_t CommonPrefix(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b, std::size_t most) {
  std::size_t n = 0;
  for (const std::size_t both = std::min(a.size(), b.size()); n < most && n + 8 <= both; n += 8) {
    const std::uint64_t difference = Get64(a.data() + n) ^ Get64(b.data() + n);
    if (difference != 0)
      return std::min(most, n + static_cast<std::size_t>(std::countr_zero(difference)) / 8);
  }
  if (n >= most) return most;
  while (n < most && a[n] == b[n]) ++n;
  return n;
}

bool Less(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
  const std::size_t most = std::min(a.size(), b.size()), n = CommonPrefix(a, b, most);
  return n < most ? a[n] < b[n] : a.size() < b.size();
}

// The items of one level of a tree. Of the leaves they are the entries, of the nodes the pages of the level
// below, each with its last entry.
class Level {
 public:
  explicit Level(const IndexEntries& entries) : entries_(&entries), size_(entries.size()) {}
  Level(const IndexEntries& entries, std::vector<std::size_t> last, std::vector<std::uint32_t> children)
      : entries_(&entries), size_(last.size()), last_(std::move(last)), children_(std::move(children)) {}

  bool Leaves() const { return children_.empty(); }
  // The number of an item's last entry.
  std::size_t LastOf(std::size_t item) const { return Leaves() ? item : last_[item]; }

  // One page: items [first, last], and how many bytes of each are shared.
  struct Page {
    std::size_t first, last, prefix;
  };

  // The pages that take the items, filled from left to right.
  std::vector<Page> Split() const {
    const std::size_t extra = Leaves() ? 0 : kChild;
    std::vector<Page> pages;
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < size_; ++i) {
      const auto entry = (*entries_)[LastOf(i)];
      if (!pages.empty()) {
        Page& page = pages.back();
        const auto first = (*entries_)[LastOf(page.first)];
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

  void Fill(std::uint8_t* page, const Page& range) const {
    std::size_t end = 0;
    for (std::size_t i = range.first; i <= range.last; ++i) {
      const auto entry = (*entries_)[LastOf(i)];
      const std::size_t skipped = i == range.first ? 0 : range.prefix;
      std::memcpy(page + kEntries + end, entry.data() + skipped, entry.size() - skipped);
      end += entry.size() - skipped;
      if (!Leaves()) {
        PutBig32(page + kEntries + end, children_[i]);
        end += kChild;
      }
      page[kMask + end / 8] = static_cast<std::uint8_t>(page[kMask + end / 8] | 1u << end % 8);
    }
    Put16(page + 2, kRoom - end);
    Put16(page + 24, range.prefix);
  }

 private:
  const IndexEntries* entries_;
  std::size_t size_;
  std::vector<std::size_t> last_;
  std::vector<std::uint32_t> children_;
};

void FormatIndexPage(std::uint8_t* page, std::uint32_t definitionPage, bool leaf) {
  std::memset(page, 0, kPageSize);
  page[0] = leaf ? page_type::kIndexLeaf : page_type::kIndexNode;
  page[1] = 0x01;
  Put16(page + 2, kRoom);
  Put32(page + 4, definitionPage);
}

// Where the next entry of a page ends: the lowest 1 bit of the mask from bit `from` on; above kRoom if there
// is none.
std::size_t NextEnd(const std::uint8_t* page, std::size_t from) {
  std::size_t byte = from / 8;
  unsigned bits = byte < kEntries - kMask ? unsigned{page[kMask + byte]} >> from % 8 << from % 8 : 0;
  while (bits == 0 && ++byte < kEntries - kMask) bits = page[kMask + byte];
  return bits == 0 ? kRoom + 1 : 8 * byte + static_cast<std::size_t>(std::countr_zero(bits));
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
    std::vector<std::uint8_t> entry(2 * kRoom);  // begins with the first one's prefix all along
    std::span<const std::uint8_t> before;        // what the entry before does not share
    std::size_t start = 0, firstSize = 0, size = 0;
    for (std::size_t end = NextEnd(bytes, 1); end <= kRoom; end = NextEnd(bytes, end + 1)) {
      const std::size_t skipped = start == 0 ? 0 : prefix;
      if (skipped > firstSize) return Fault("a prefix is longer than the first entry", page);
      const std::span<const std::uint8_t> own(bytes + kEntries + start, end - start);
      std::memcpy(entry.data() + skipped, own.data(), own.size());
      size = skipped + own.size();
      if (size < tail + 1) return Fault("an entry is too short", page);
      if (!leaf) {
        Visit(GetBig32(entry.data() + size - kChild), depth + 1);
        if (Less({entry.data(), size - kChild}, last_))
          Fault("an entry of a node lies below what it leads to", page);
      } else {
        const bool inOrder = start == 0 ? Less(last_, own) : Less(before, own);
        if (!inOrder) Fault("entries are out of order", page);
        const std::size_t keySize = size - kRowPointer;
        walk_.entry({entry.data(), keySize}, RowId{GetBig32(entry.data() + keySize)});
      }
      if (start == 0) {
        firstSize = end;
        before = own.subspan(std::min(prefix, own.size()));
      } else {
        before = own;
      }
      start = end;
    }
    if (leaf && start != 0) last_.assign(entry.data(), entry.data() + size);
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
  const std::size_t offset = bytes_.size();
  places_.push_back({static_cast<std::uint32_t>(offset), static_cast<std::uint16_t>(size)});
  bytes_.resize(offset + size);
  std::memcpy(bytes_.data() + offset, key.data(), key.size());
  // page << 8 | slot: the page's three bytes, then the slot
  PutBig32(bytes_.data() + offset + key.size(), static_cast<std::uint32_t>(row));
}

void IndexEntries::Add(std::span<const std::uint8_t> entry) {
  places_.push_back({static_cast<std::uint32_t>(bytes_.size()), static_cast<std::uint16_t>(entry.size())});
  bytes_.insert(bytes_.end(), entry.begin(), entry.end());
}

void IndexEntries::Sort() {
  if (InOrder()) return;
  std::sort(places_.begin(), places_.end(),
            [this](const Place& a, const Place& b) { return Less(At(a), At(b)); });
  InOrder();
}

bool IndexEntries::InOrder() {
  distinct_ = places_.empty() ? 0 : 1;
  for (std::size_t i = 1; i < places_.size(); ++i) {
    const auto before = At(places_[i - 1]), entry = At(places_[i]);
    const std::size_t both = std::min(before.size(), entry.size());
    const std::size_t shared = CommonPrefix(before, entry, both);
    if (shared < both ? before[shared] > entry[shared] : before.size() > entry.size()) return false;
    if (before.size() != entry.size() || shared < entry.size() - kRowPointer) ++distinct_;
  }
  return true;
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
  index.distinct = static_cast<std::uint32_t>(entries.Distinct());
  if (entries.size() == 0) {
    FormatEmptyIndex(pager.Write(index.root), definitionPage);
    return;
  }

  for (Level level(entries);;) {
    const std::vector<Level::Page> pages = level.Split();
    std::vector<std::uint32_t> numbers;
    for (std::size_t i = 0; i < pages.size(); ++i) {
      numbers.push_back(pages.size() == 1 ? index.root : pager.Allocate());
      if (pages.size() > 1) map.Add(numbers.back());
    }
    for (std::size_t i = 0; i < pages.size(); ++i) {
      std::uint8_t* page = pager.Write(numbers[i]);
      FormatIndexPage(page, definitionPage, level.Leaves());
      if (level.Leaves() && i > 0) Put32(page + 12, numbers[i - 1]);
      if (level.Leaves() && i + 1 < pages.size()) Put32(page + 16, numbers[i + 1]);
      level.Fill(page, pages[i]);
    }
    if (pages.size() == 1) return;
    std::vector<std::size_t> last;
    for (const Level::Page& page : pages) last.push_back(level.LastOf(page.last));
    level = Level(entries, std::move(last), std::move(numbers));
  }
}

void WalkIndex(const Pager& pager, std::uint32_t definitionPage, const RealIndex& index,
               const IndexWalk& walk) {
  Walker walker(pager, definitionPage, walk);
  walker.Visit(index.root, 0);
  walker.Finish();
}

}  // namespace kestrelon::jet
