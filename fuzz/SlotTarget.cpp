// A file as the program uses a slot: looked through when it is loaded, then the working database, read and
// changed as the program's commands do it, and packed when it is saved. The statements are those of store/,
// items/ and tree/; what they do to the windows is left out.

#include <algorithm>
#include <memory>
#include <optional>

#include "fuzz/Target.h"
#include "jet/Ado.h"
#include "jet/base/Error.h"
#include "jet/database/Database.h"
#include "store/Schema.h"

namespace kestrelon::fuzz {
namespace {

using namespace jet;

// A connection asks for the size and time of its file: this one is there and stays as it is, while the bytes
// come from memory.
constexpr char16_t kWorking[] = u"/proc/self/exe";
constexpr char16_t kPacked[] = u"/nowhere/packed.dat";
constexpr std::size_t kMostNodes = 40;  // of the tree that are written back

std::u16string ConnectionTo(std::u16string_view path) {
  return u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + std::u16string(path);
}

// As the program puts a text into a statement.
std::u16string Quoted(std::u16string_view text) {
  std::u16string quoted = u"\"";
  for (const char16_t unit : text) quoted.append(unit == u'"' ? 2 : 1, unit);
  return quoted + u"\"";
}

using SharedBytes = std::shared_ptr<InputBytes>;

// Throws unless the file has every table and column of the program, each row of which can be read.
void CheckIsOurs(const SharedBytes& bytes) {
  const auto database = Database::Open(OpenMemoryFile(bytes), u"slot");
  for (const NewTable& wanted : store::Schema()) {
    const Table& table = database->OpenTable(wanted.name);
    std::vector<std::size_t> columns;
    for (const NewColumn& column : wanted.columns) {
      const std::optional<std::size_t> found = table.FindColumn(column.name);
      if (!found) throw Error(code::kMissingParameter, u"no column " + column.name);
      columns.push_back(*found);
    }
    Value value;
    for (Cursor row = table.Rows(); row.Next();) {
      for (const std::size_t column : columns) row.Read(column, value);
    }
  }
}

std::vector<jet::Finding> FindingsIn(const SharedBytes& bytes) {
  try {
    return Database::Open(OpenMemoryFile(bytes), u"checked")->Check();
  } catch (const Error& error) {
    return {{jet::Finding::Kind::kDamage, error.what()}};
  }
}

bool AnyOfKind(const std::vector<jet::Finding>& findings, jet::Finding::Kind kind) {
  return std::any_of(findings.begin(), findings.end(),
                     [kind](const jet::Finding& finding) { return finding.kind == kind; });
}

// Rows are packed as they are, whatever their values.
bool IsOfOneValue(const jet::Finding& finding) {
  static constexpr std::string_view kFaults[] = {"a text ends within a character", "a value is cut off",
                                                 "column lies outside its row", "a long value is cut off",
                                                 "a long value's reference is cut off"};
  return std::any_of(std::begin(kFaults), std::end(kFaults),
                     [&](std::string_view each) { return finding.text.find(each) != std::string::npos; });
}

class Slot {
 public:
  explicit Slot(Input input)
      : working_(std::make_shared<InputBytes>(input.begin(), input.end())),
        connection_([this](const std::filesystem::path&, OpenMode) { return OpenMemoryFile(working_); }) {
    connection_.SetConnectionString(ConnectionTo(kWorking));
    Judge(FindingsIn(working_));
  }

  void Use() {
    ours_ = Try([&] { CheckIsOurs(working_); });
    Session("loading", [&] { LoadTree(); });
    Session("items", [&] { ChangeItems(); });
    Session("backup", [&] { BackUpAndRestore(); });
    Session("tree", [&] { SaveTree(); });
    Pack();
    Session("emptying", [&] {
      for (const char16_t* table : {u"Fbackup", u"TreeviewTable", u"FTable"})
        Execute(u"DELETE * FROM " + std::u16string(table));
      Execute(Item(u"K", u"1#K"));
    });
  }

 private:
  struct Node {
    std::u16string parent, key, text;
  };

  // Opens the working database, does something, and closes it.
  template <class Body>
  void Session(const char* what, Body&& body) {
    if (!Try([&] { connection_.Open(); })) return;
    Try(body);
    const bool written = Try([&] { connection_.Close(); });
    if (!sound_) return;
    if (!written) throw Finding(std::string(what) + ": a sound file could not be written");
    ExpectSound(what);
  }

  void Judge(const std::vector<jet::Finding>& findings) {
    sound_ = !AnyOfKind(findings, jet::Finding::Kind::kDamage);
    indexesFit_ = !AnyOfKind(findings, jet::Finding::Kind::kIndex);
  }

  // What was sound stays so, and no index that fitted its rows stops doing so.
  void ExpectSound(const char* what) {
    const std::vector<jet::Finding> findings = FindingsIn(working_);
    for (const jet::Finding& finding : findings) {
      const bool allowed = finding.kind == jet::Finding::Kind::kWaste ||
                           (finding.kind == jet::Finding::Kind::kIndex && !indexesFit_);
      if (!allowed) throw Finding(std::string(what) + ": " + finding.text);
    }
    Judge(findings);
  }

  bool Execute(const std::u16string& statement) {
    return Try([&] { connection_.Execute(statement); });
  }

  static std::u16string Item(std::u16string_view key, std::u16string_view index) {
    return u"INSERT INTO FTable VALUES(" + Quoted(key) + u"," + Quoted(index) +
           u",\"Alias\",\"name.txt\",\"C:\\a\\name.txt\",\"11/15/2026 1:20:05 PM\",'')";
  }

  void LoadTree() {
    nodes_.clear();
    Recordset rows;
    rows.Open(u"SELECT * FROM TreeviewTable order by i", connection_);
    const std::size_t parent = rows.FieldIndex(u"parent"), key = rows.FieldIndex(u"key"),
                      text = rows.FieldIndex(u"text");
    for (; !rows.EndOfFile(); rows.MoveNext()) {
      Node node{std::u16string(rows.Text(parent)), std::u16string(rows.Text(key)),
                std::u16string(rows.Text(text))};
      if (nodes_.size() < kMostNodes) nodes_.push_back(std::move(node));
    }
    rows.Close();
  }

  // The items of a category, as the list shows them. Gives the FileIndex of each.
  std::vector<std::u16string> ShowData(const std::u16string& key) {
    std::vector<std::u16string> found;
    Recordset rows;
    rows.Open(u"SELECT * FROM FTable WHERE TreeviewNode=" + Quoted(key), connection_);
    for (; !rows.EndOfFile(); rows.MoveNext()) {
      for (const char16_t* field : {u"DefineName", u"Filename", u"LocalFile", u"InsertTime", u"Comment"})
        rows.Text(field);
      if (found.size() < kMostNodes) found.emplace_back(rows.Text(u"FileIndex"));
    }
    return found;
  }

  void ChangeItems() {
    const std::u16string key = nodes_.empty() ? u"K1_" : nodes_.front().key;
    std::vector<std::u16string> items;
    Try([&] { items = ShowData(key); });
    Try([&] {
      Recordset rows;
      rows.Open(u"SELECT FileIndex FROM FTable WHERE TreeviewNode=" + Quoted(key), connection_);
      for (; !rows.EndOfFile(); rows.MoveNext()) rows.Text(u"FileIndex");
    });
    Execute(Item(key, u"777#" + key));
    const std::u16string where = u" WHERE FileIndex=" + Quoted(items.empty() ? u"777#" + key : items.front());
    Execute(u"UPDATE FTable SET Comment=" + Quoted(std::u16string(9000, u'c')) + where);
    Execute(u"UPDATE FTable SET Comment=" + Quoted(std::u16string(700, u'\u6F22')) + where);
    Execute(u"UPDATE FTable SET DefineName=" + Quoted(std::u16string(255, u'\u0416')) + where);
    Execute(u"UPDATE FTable SET Filename=\"b.txt\", LocalFile=" + Quoted(std::u16string(260, u'p')) + where);
    Execute(u"UPDATE FTable SET Comment=\"\"" + where);
    if (items.size() > 1) {
      Execute(u"DELETE FROM FTable WHERE FileIndex=" + Quoted(items[1]));
      Execute(u"UPDATE FTable SET TreeviewNode=\"K9_\" WHERE FileIndex=" + Quoted(items.back()));
    }
    Try([&] { ShowData(u"K9_"); });
    Execute(u"DELETE From FTable WHERE TreeViewNode=\"K9_\"");
  }

  std::size_t Count(const std::u16string& table) {
    Recordset rows;
    rows.Open(u"SELECT * FROM " + table, connection_);
    return rows.RecordCount();
  }

  void BackUpAndRestore() {
    if (Execute(u"DELETE FROM FBackup") && Execute(u"INSERT INTO FBackup SELECT * FROM FTablE") && sound_ &&
        Count(u"FTable") != Count(u"FBackup")) {
      throw Finding("a copy of all rows has another number of them");
    }
    if (Execute(u"DELETE FROM FTable")) Execute(u"INSERT INTO FTable SELECT * FROM FBackup");
  }

  void SaveTree() {
    Execute(u"DELETE * FROM TreeviewTable");
    Recordset rows;
    rows.Open(u"SELECT * FROM TreeviewTable", connection_);
    for (const Node& node : nodes_) {
      rows.AddNew();
      rows.SetField(u"parent", node.parent);
      rows.SetField(u"key", node.key);
      rows.SetField(u"text", node.text);
      rows.Update();
    }
    rows.Close();
  }

  void Pack() {
    const auto packed = std::make_shared<InputBytes>();
    JetEngine engine([&](const std::filesystem::path& path, OpenMode) {
      return OpenMemoryFile(path == kPacked ? packed : working_);
    });
    const bool done = Try([&] { engine.CompactDatabase(ConnectionTo(kWorking), ConnectionTo(kPacked)); });
    if (!done) {
      if (sound_) throw Finding("a sound file could not be packed");
      return;
    }
    connection_.Forget();
    working_ = packed;
    // Whatever it was made from: a packed copy is sound, but for single values that could not be read before.
    std::vector<jet::Finding> findings = FindingsIn(working_);
    if (!sound_) std::erase_if(findings, IsOfOneValue);
    if (!findings.empty()) throw Finding("packing: " + findings.front().text);
    if (ours_ && sound_) CheckIsOurs(working_);
    Judge(FindingsIn(working_));
  }

  SharedBytes working_;
  Connection connection_;
  bool sound_ = false, indexesFit_ = false, ours_ = false;
  std::vector<Node> nodes_;
};

}  // namespace

void RunSlot(Input input) {
  Slot slot(input);
  slot.Use();
}

}  // namespace kestrelon::fuzz
