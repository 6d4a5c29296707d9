// make-collection FILE CATEGORIES ITEMS: writes a database with that many categories, in groups of 20 below a
// group's own category, and that many items, all in the first category. For trying the program with large
// collections: put the file into the data folder as a slot and load it.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>

#include "jet/Ado.h"
#include "jet/base/File.h"
#include "jet/database/Database.h"
#include "store/Schema.h"

namespace {

using namespace kestrelon;

constexpr int kGroup = 21;  // a group's own category and its 20 children
constexpr double kCreated = 46023;

std::u16string Number(int value) { return jet::FromUtf8(std::to_string(value)); }

std::u16string KeyOf(int category) { return u"S0001111513170" + Number(100000 + category) + u"_"; }

void AddCategories(jet::Connection& connection, int count) {
  jet::Recordset rows;
  rows.Open(u"SELECT * FROM TreeviewTable", connection);
  for (int i = 0; i < count; ++i) {
    const bool group = i % kGroup == 0;
    rows.AddNew();
    rows.SetField(u"parent", group ? u"0_" : KeyOf(i - i % kGroup));
    rows.SetField(u"key", KeyOf(i));
    rows.SetField(u"text", (group ? u"Group " : u"Category ") + Number(i));
    rows.Update();
  }
}

void AddItems(jet::Connection& connection, int count) {
  const std::u16string key = KeyOf(0);
  for (int i = 1; i <= count; ++i) {
    // Not in the order of their names, so that sorting has something to do.
    const std::u16string alias = u"Document " + Number(static_cast<int>(i * 7919LL % count));
    connection.Execute(u"INSERT INTO FTable VALUES(\"" + key + u"\",\"" + Number(i) + u"#" + key + u"\",\"" +
                       alias + u"\",\"" + alias + u".txt\",\"C:\\Users\\somebody\\Documents\\" + alias +
                       u".txt\",\"11/15/2026 1:20:05 PM\",'')");
  }
}

void Make(const std::filesystem::path& path, int categories, int items) {
  {
    const auto file = jet::OpenFile(path, jet::OpenMode::kCreate);
    jet::CreateDatabase(*file, store::Schema(), kCreated);
  }
  jet::Connection connection;
  connection.SetConnectionString(u"Data Source=" + std::filesystem::absolute(path).u16string());
  connection.Open();
  AddCategories(connection, categories);
  AddItems(connection, items);
  connection.Close();
}

}  // namespace

int main(int argc, char** argv) {
  const int categories = argc == 4 ? std::atoi(argv[2]) : 0;
  const int items = argc == 4 ? std::atoi(argv[3]) : 0;
  if (categories < 1 || items < 1) {
    std::fputs("usage: make-collection FILE CATEGORIES ITEMS\n", stderr);
    return 2;
  }
  try {
    Make(argv[1], categories, items);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make-collection: %s\n", error.what());
    return 1;
  }
  return 0;
}
