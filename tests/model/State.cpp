#include "tests/model/State.h"

#include <algorithm>
#include <cwctype>
#include <stdexcept>

#include "app/base/File.h"

namespace kestrelon::model {
namespace {

// Fields are closed by U+0001, records by a line feed; a record of the tree has three fields, one of the
// table seven.
constexpr char kFieldEnd = '\x01', kRecordEnd = '\x02';

template <class Record>
void Append(std::string& text, const Record& record) {
  for (const std::wstring& field : record) text += Narrow(field) + kFieldEnd;
  text += kRecordEnd;
}

template <std::size_t size>
std::string Printed(const std::array<std::wstring, size>& record) {
  std::string text;
  for (const std::wstring& field : record) text += (text.empty() ? "[" : " | ") + Narrow(field.substr(0, 90));
  return text + "]";
}

}  // namespace

void Tree::Insert(const std::wstring& key, const std::wstring& text, const std::wstring& parent,
                  std::size_t place) {
  if (key.empty() || nodes_.count(key) > 0) throw std::logic_error("the key is taken: " + Narrow(key));
  std::vector<std::wstring>& siblings = nodes_.at(parent).children;
  siblings.insert(siblings.begin() + static_cast<std::ptrdiff_t>(std::min(place, siblings.size())), key);
  nodes_[key] = {text, parent, {}};
  order_.push_back(key);
}

void Tree::Remove(const std::wstring& key) {
  std::erase(nodes_.at(nodes_.at(key).parent).children, key);
  for (const std::wstring& gone : Below(key)) {
    nodes_.erase(gone);
    std::erase(order_, gone);
  }
}

void Tree::MoveTo(const std::wstring& key, const std::wstring& parent) {
  std::erase(nodes_.at(nodes_.at(key).parent).children, key);
  nodes_.at(key).parent = parent;
  nodes_.at(parent).children.push_back(key);
}

std::size_t Tree::PlaceOf(const std::wstring& key) const {
  const std::vector<std::wstring>& siblings = nodes_.at(nodes_.at(key).parent).children;
  return static_cast<std::size_t>(std::find(siblings.begin(), siblings.end(), key) - siblings.begin());
}

bool Tree::IsWithin(const std::wstring& key, const std::wstring& top) const {
  for (std::wstring each = key; !each.empty(); each = nodes_.at(each).parent) {
    if (each == top) return true;
  }
  return false;
}

std::vector<std::wstring> Tree::Below(const std::wstring& top) const {
  std::vector<std::wstring> keys, waiting{top};
  while (!waiting.empty()) {
    const std::wstring key = waiting.back();
    waiting.pop_back();
    if (!key.empty()) keys.push_back(key);
    const std::vector<std::wstring>& children = nodes_.at(key).children;
    waiting.insert(waiting.end(), children.rbegin(), children.rend());
  }
  return keys;
}

std::wstring Tree::Path(const std::wstring& key) const {
  std::wstring path = At(key).text;
  for (std::wstring above = At(key).parent; !above.empty(); above = At(above).parent)
    path = At(above).text + L"\\" + path;
  return path;
}

std::vector<Tree::Line> Tree::Lines() const {
  std::vector<Line> lines;
  for (const std::wstring& key : Below(L"")) lines.push_back({At(key).parent, key, At(key).text});
  return lines;
}

Tree Tree::FromLines(const std::vector<Line>& lines) {
  Tree tree;
  for (const Line& line : lines) tree.Insert(line[1], line[2], line[0], lines.size());
  return tree;
}

std::optional<std::size_t> Screen::Primary() const {
  if (focused && *focused < rows.size() && rows[*focused].selected) return focused;
  const std::vector<std::size_t> selected = Selected();
  return selected.empty() ? std::nullopt : std::optional(selected.front());
}

std::vector<std::size_t> Screen::Selected() const {
  std::vector<std::size_t> selected;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (rows[row].selected) selected.push_back(row);
  }
  return selected;
}

Content Loaded(Content content) {
  content.tree = Tree::FromLines(content.tree.Lines());
  for (const std::wstring& key : content.tree.Below(L""))
    content.tree.SetText(key, Trim(content.tree.At(key).text));
  return content;
}

bool IsUnsaved(const State& state, const Content& content) {
  return !content.tree.Empty() &&
         std::none_of(state.slots.begin(), state.slots.end(), [&](const std::optional<Content>& slot) {
           return slot && Loaded(*slot) == Loaded(content);
         });
}

void SetAside(State& state, const Content& content) {
  if (!IsUnsaved(state, content)) return;
  if (!state.unsaved || Loaded(*state.unsaved) != Loaded(content)) state.unsaved = content;
}

void OpenUnsaved(State& state) {
  const Content loaded = Loaded(*state.unsaved);
  SetAside(state, state);
  static_cast<Content&>(state) = loaded;
  state.maybeKept = {loaded};
  state.saved = false;
}

std::wstring Folded(std::wstring_view path) {
  std::wstring folded(path);
  for (wchar_t& unit : folded) unit = static_cast<wchar_t>(std::towlower(unit));
  return folded;
}

std::string Serialised(const Content& content) {
  std::string text;
  for (const Tree::Line& line : content.tree.Lines()) Append(text, line);
  for (const auto& [index, item] : content.table) Append(text, item);
  return text;
}

Content FromSerialised(std::string_view text) {
  Content content;
  std::vector<Tree::Line> lines;
  while (!text.empty()) {
    const std::size_t end = text.find(kRecordEnd);
    if (end == std::string_view::npos) throw std::runtime_error("a record without an end");
    std::string_view record = text.substr(0, end);
    text.remove_prefix(end + 1);
    std::vector<std::wstring> fields;
    for (std::size_t next; (next = record.find(kFieldEnd)) != std::string_view::npos;) {
      fields.push_back(Widen(record.substr(0, next)));
      record.remove_prefix(next + 1);
    }
    if (fields.size() == 3) {
      lines.push_back({fields[0], fields[1], fields[2]});
    } else if (fields.size() == kFields) {
      std::copy(fields.begin(), fields.end(), content.table[fields[kIndex]].begin());
    } else {
      throw std::runtime_error("a record of " + std::to_string(fields.size()) + " fields");
    }
  }
  content.tree = Tree::FromLines(lines);
  return content;
}

std::uint64_t DigestOf(std::string_view text) {
  std::uint64_t digest = 14695981039346656037u;  // FNV-1a
  for (const char byte : text) digest = (digest ^ static_cast<unsigned char>(byte)) * 1099511628211u;
  return digest;
}

std::string Difference(const Content& expected, const Content& found) {
  std::string text;
  const auto note = [&](const char* what, const std::string& record) {
    if (text.size() < 3000) text += std::string("  ") + what + " " + record + "\n";
  };
  const auto lines = expected.tree.Lines(), other = found.tree.Lines();
  for (std::size_t i = 0; i < std::max(lines.size(), other.size()); ++i) {
    if (i < lines.size() && i < other.size() && lines[i] == other[i]) continue;
    if (i < lines.size()) note("expected category", std::to_string(i) + " " + Printed(lines[i]));
    if (i < other.size()) note("found    category", std::to_string(i) + " " + Printed(other[i]));
  }
  for (const auto& [index, item] : expected.table) {
    const auto there = found.table.find(index);
    if (there != found.table.end() && there->second == item) continue;
    note("expected item", Printed(item));
    if (there != found.table.end()) note("found    item", Printed(there->second));
  }
  for (const auto& [index, item] : found.table) {
    if (expected.table.count(index) == 0) note("found only item", Printed(item));
  }
  return text;
}

}  // namespace kestrelon::model
