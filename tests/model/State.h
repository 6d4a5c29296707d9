#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::model {

// The categories: keys, texts, parents, the order of siblings and the order of adding. The root's key is
// empty.
class Tree {
 public:
  struct Node {
    std::wstring text, parent;
    std::vector<std::wstring> children;
  };
  bool Has(const std::wstring& key) const { return !key.empty() && nodes_.count(key) > 0; }
  bool Empty() const { return order_.empty(); }
  std::size_t Count() const { return order_.size(); }
  const Node& At(const std::wstring& key) const { return nodes_.at(key); }
  void SetText(const std::wstring& key, const std::wstring& text) { nodes_.at(key).text = text; }
  // `place`: among the parent's children; past the end is the last.
  void Insert(const std::wstring& key, const std::wstring& text, const std::wstring& parent,
              std::size_t place);
  void Remove(const std::wstring& key);  // with everything below it
  void MoveTo(const std::wstring& key, const std::wstring& parent);
  std::size_t PlaceOf(const std::wstring& key) const;  // among its siblings
  bool IsWithin(const std::wstring& key, const std::wstring& top) const;
  std::vector<std::wstring> Below(const std::wstring& top) const;  // itself first; all keys for the root
  const std::vector<std::wstring>& OrderOfAdding() const { return order_; }
  std::wstring Path(const std::wstring& key) const;  // texts joined by "\"
  bool operator==(const Tree& other) const { return Lines() == other.Lines(); }
  // parent, key, text; parents first, siblings in order.
  using Line = std::array<std::wstring, 3>;
  std::vector<Line> Lines() const;
  static Tree FromLines(const std::vector<Line>& lines);

 private:
  std::map<std::wstring, Node> nodes_{{L"", {}}};
  std::vector<std::wstring> order_;
};

// A row of the table: the seven columns in their order.
enum Field : std::size_t { kNode, kIndex, kAlias, kName, kPath, kTime, kComment, kFields };
using Item = std::array<std::wstring, kFields>;
using Table = std::map<std::wstring, Item>;  // by FileIndex

// What a slot holds, or the working database together with the tree of the window.
struct Content {
  Tree tree;
  Table table;
  bool operator==(const Content&) const = default;
};

// As it comes back from a slot: added anew from top to bottom, without the blanks around names.
Content Loaded(Content content);

// The list: what it shows of an item is a copy, which may be older than the table.
struct Row {
  std::wstring tag;
  std::array<std::wstring, 5> texts;  // alias, file name, path, time, comment
  bool selected = false;
  bool operator==(const Row&) const = default;
};

struct Screen {
  std::wstring current;  // key; it is the highlighted category as well
  std::wstring shown;    // panel 1 behind "Category : "
  std::vector<Row> rows;
  std::optional<std::size_t> focused;
  std::array<int, 6> headerTags{};
  int sortKey = -1;
  int arrow = -1;                              // the column with an arrow in its header
  bool comment = false;                        // the comment window is open
  std::optional<std::size_t> Primary() const;  // the row that commands on one item take
  std::vector<std::size_t> Selected() const;
};

struct File {
  std::wstring path;
  std::string bytes;
};

// What the comparison takes from the program where more than one answer is right.
struct Loose {
  std::vector<Content> recovered;  // one of these is what the end of the program left
  bool openRecovered = false;      // when it is offered
  bool rowOrder = false;           // the list was filled anew, in the order of the database
  bool primary = false;            // which of the selected rows has the focus
  bool shown = false;              // panel 1 shows the name of the current category or its path
  bool saved = false;
};

struct State : Content {
  Screen screen;
  bool saved = false;  // the database-saved flag
  bool drag = false;   // "Enabled drag and drop"
  std::wstring language = L"English";
  std::array<std::optional<Content>, 4> slots;
  std::optional<Content> unsaved;  // the unsaved collection that the Load dialog offers
  // What may be on disk: the content after the last change of the table or after it was kept otherwise, and
  // what came of it since, the latest last.
  std::vector<Content> maybeKept{Content()};
  std::array<std::wstring, 4> labels{L"1. Null", L"2. Null", L"3. Null", L"4. Null"};
  std::map<std::wstring, File> files;  // by the path in small letters
  std::set<std::wstring> folders;      // ending in a backslash
  int clock = 0;                       // seconds since the first start
  int draws = 0;                       // of the random generator
  Loose loose;
};

// Content that is in no slot, and not empty: it has a second chance.
bool IsUnsaved(const State& state, const Content& content);
// It goes away: what is offered from now on.
void SetAside(State& state, const Content& content);
// Opens what is offered.
void OpenUnsaved(State& state);

std::wstring Folded(std::wstring_view path);
// Tree and table as lines of UTF-8, and back. Two contents are equal when their texts are.
std::string Serialised(const Content& content);
Content FromSerialised(std::string_view text);
std::uint64_t DigestOf(std::string_view text);
// For messages: what tells two contents apart, in a few lines.
std::string Difference(const Content& expected, const Content& found);

}  // namespace kestrelon::model
