#include <algorithm>
#include <array>

#include "jet/database/DatabaseInternal.h"
#include "jet/page/Header.h"

namespace kestrelon::jet {
namespace {

void RequireJet4(header::Kind kind, const std::u16string& name) {
  const std::u16string unrecognized = u"Unrecognized database format '" + name + u"'.";
  switch (kind) {
    case header::Kind::kJet4: return;
    case header::Kind::kNoDatabase: throw CorruptFile(unrecognized);
    case header::Kind::kOlder:
      throw Error(code::kGeneric, unrecognized +
                                      u" It is of Access 97 or earlier; save it with Access as an "
                                      u"Access 2000 database.");
    case header::Kind::kNewer:
      throw Error(code::kGeneric, unrecognized +
                                      u" It is of Access 2007 or later; save it with Access as an "
                                      u"Access 2000 database.");
    case header::Kind::kEncoded:
      throw Error(code::kGeneric,
                  u"The database '" + name + u"' is encoded. Decode it with Access before using it here.");
    case header::Kind::kPassword: throw Error(code::kPassword, u"Not a valid password.");
  }
}

}  // namespace

std::unique_ptr<Database> Database::Open(std::unique_ptr<File> file, std::u16string name) {
  return std::make_unique<DatabaseImpl>(std::move(file), std::move(name));
}

DatabaseImpl::DatabaseImpl(std::unique_ptr<File> file, std::u16string name)
    : pager_(std::move(file)), name_(std::move(name)) {
  RequireJet4(header::KindOf(pager_.Read(0)), name_);
  if (header::WriteUnfinished(pager_.Read(0))) {
    throw Error(code::kGeneric,
                u"The database '" + name_ + u"' is damaged: writing to it was stopped before its end.");
  }
  pager_.LoadFreePages();
  catalog_.Read(TableAt(engine_table::kObjects, u"MSysObjects").Internal());
}

DatabaseImpl::DatabaseImpl(std::span<const std::uint8_t> headerPage) {
  std::copy(headerPage.begin(), headerPage.end(), pager_.Write(0));
  while (pager_.PageCount() <= engine_table::kRelationships) pager_.Allocate();
}

TableImpl& DatabaseImpl::TableAt(std::uint32_t page, const std::u16string& name) {
  if (const auto found = tables_.find(page); found != tables_.end()) return *found->second;
  auto table = std::make_unique<TableImpl>(*this, name, ReadTableDef(pager_, page));
  return *tables_.emplace(page, std::move(table)).first->second;
}

std::vector<std::u16string> DatabaseImpl::TableNames() const {
  std::vector<std::u16string> names;
  for (const CatalogObject& object : catalog_.Objects()) {
    if (object.UserTable() && !object.name.starts_with(u"MSys")) names.push_back(object.name);
  }
  return names;
}

Table& DatabaseImpl::OpenTable(std::u16string_view name) {
  const CatalogObject* object = catalog_.FindTable(name);
  if (object == nullptr) {
    throw Error(code::kNoSuchTable,
                u"The Microsoft Jet database engine cannot find the input table or query '" +
                    std::u16string(name) + u"'. Make sure it exists and that its name is spelled correctly.");
  }
  return TableAt(object->id, object->name);
}

void DatabaseImpl::Begin() { pager_.Begin(); }

void DatabaseImpl::Commit() {
  for (TableImpl* table : touched_) table->Committed();
  touched_.clear();
  pager_.Commit();
}

void DatabaseImpl::Rollback() {
  pager_.Rollback();
  for (TableImpl* table : touched_) table->RolledBack();
  touched_.clear();
}

bool DatabaseImpl::Dirty() const {
  return pager_.Dirty() || std::any_of(tables_.begin(), tables_.end(),
                                       [](const auto& entry) { return entry.second->Changed(); });
}

void DatabaseImpl::Settle() {
  for (const auto& [page, table] : tables_) table->Settle();
}

void DatabaseImpl::Flush() {
  Settle();
  pager_.Flush();
}

}  // namespace kestrelon::jet
