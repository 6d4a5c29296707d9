// Files in the model: importing, moving, sending.

#include "app/base/Win32.h"

#include <shlwapi.h>

#include <algorithm>
#include <cwchar>
#include <iterator>

#include "app/base/File.h"
#include "tests/model/Model.h"

namespace kestrelon::model {
namespace {

void SortAsListed(std::vector<std::wstring>& names) {
  std::sort(names.begin(), names.end(), [](const std::wstring& a, const std::wstring& b) {
    return StrCmpLogicalW(a.c_str(), b.c_str()) < 0;
  });
}

}  // namespace

std::vector<std::wstring> FilesIn(const State& state, const std::wstring& folder) {
  std::vector<std::wstring> names;
  for (const auto& [folded, file] : state.files) {
    if (Folded(FolderOfPath(file.path)) == Folded(folder)) names.push_back(FileNameOfPath(file.path));
  }
  SortAsListed(names);
  return names;
}

std::vector<std::wstring> FoldersIn(const State& state, const std::wstring& folder) {
  std::vector<std::wstring> names;
  for (const std::wstring& each : state.folders) {
    const std::wstring bare = each.substr(0, each.size() - 1);
    if (each != folder && Folded(FolderOfPath(bare)) == Folded(folder)) names.push_back(FileNameOfPath(bare));
  }
  SortAsListed(names);
  for (std::wstring& name : names) name = folder + name + L"\\";
  return names;
}

std::wstring Model::ChosenFolder(unsigned number) const {
  auto folder = state.folders.begin();
  std::advance(folder, number % state.folders.size());
  return *folder;
}

// Of one folder that has any, as the user finds them together.
std::vector<std::wstring> Model::ChosenFiles(const Step& step, bool withOthers) const {
  std::vector<std::wstring> paths;
  for (std::size_t i = 0; i < state.folders.size() && paths.empty(); ++i) {
    const std::wstring folder = ChosenFolder(step.a + static_cast<unsigned>(i));
    const std::vector<std::wstring> names = FilesIn(state, folder);
    for (std::size_t n = 0; n < names.size() && n < 1 + step.b % 4; ++n)
      paths.push_back(folder + names[(step.b + n) % names.size()]);
  }
  if (withOthers && step.c % 4 == 0) {
    const std::wstring folder = ChosenFolder(step.c);
    paths.insert(paths.begin(), folder.substr(0, folder.size() - 1));
  }
  return paths;
}

void Model::Insert(const std::wstring& key, const std::vector<std::wstring>& paths) {
  unsigned long long number = 0;
  for (const auto& [index, item] : state.table) {
    if (item[kNode] == key) number = std::max(number, std::wcstoull(index.c_str(), nullptr, 10));
  }
  const auto index = [&] { return std::to_wstring(number) + L"#" + key; };
  for (const std::wstring& path : paths) {
    do {
      ++number;
    } while (state.table.count(index()) > 0);  // by an item that is in another category by now
    const std::wstring name = FileNameOfPath(path);
    state.table[index()] = {key, index(), NameWithoutExtension(name), name, path, TimeText(), L""};
    state.saved = false;
  }
}

void Model::Imports(const Step& step, Plan& plan) {
  const std::wstring current = state.screen.current;
  const auto withoutTarget = [&] {
    if (!current.empty()) return false;
    plan.boxes.push_back({BoxKind::kInform, IDOK});
    return true;
  };
  const auto isFile = [&](const std::wstring& path) { return state.folders.count(path + L"\\") == 0; };
  switch (step.kind) {
    case Kind::kOpenDialog:
      if (withoutTarget()) break;
      if (step.c % 8 != 0) plan.paths = ChosenFiles(step, false);
      if (plan.paths.empty()) break;
      Insert(current, plan.paths);
      Refill();
      break;
    case Kind::kDropOnList: {
      plan.paths = ChosenFiles(step, true);
      if (withoutTarget()) break;
      state.saved = false;
      std::vector<std::wstring> files;
      std::copy_if(plan.paths.begin(), plan.paths.end(), std::back_inserter(files), isFile);
      if (files.empty()) break;
      Insert(current, files);
      Refill();
      break;
    }
    case Kind::kDropOnCategory: {
      plan.key = AnyCategory(step.b);
      plan.skipped = plan.key.empty();
      if (plan.skipped) break;
      plan.paths = ChosenFiles(step, true);
      std::vector<std::wstring> files;
      std::copy_if(plan.paths.begin(), plan.paths.end(), std::back_inserter(files), isFile);
      Insert(plan.key, files);  // the list is not filled anew
      break;
    }
    case Kind::kClipboard: {
      if (withoutTarget()) break;
      std::vector<std::wstring> ticked;
      for (const std::wstring& path : ChosenFiles(step, true)) {
        plan.paths.push_back(path);
        if (!isFile(path)) continue;
        plan.ticked.push_back((step.c >> plan.ticked.size() % 8 & 1) != 0);
        if (plan.ticked.back()) ticked.push_back(path);
      }
      state.saved = false;  // also when nothing was ticked
      if (ticked.empty()) break;
      Insert(current, ticked);
      Refill();
      break;
    }
    case Kind::kImportFolder: ImportFolder(step, plan); break;
    default: break;
  }
}

void Model::ImportFolder(const Step& step, Plan& plan) {
  plan.skipped = state.tree.Count() + state.folders.size() > 45;
  if (plan.skipped) return;
  state.saved = false;
  state.loose.shown = true;
  if (!state.screen.current.empty()) state.screen.shown = state.tree.Path(state.screen.current);
  const std::wstring folder = ChosenFolder(step.a);
  if (step.b % 6 == 0) return;
  plan.folder = folder.substr(0, folder.size() - 1);
  struct Branch {
    std::wstring folder, key;
  };
  const auto add = [&](const std::wstring& path, const std::wstring& parent) {
    const std::wstring key = NextKey();
    state.tree.Insert(key, FileNameOfPath(path.substr(0, path.size() - 1)), parent,
                      static_cast<std::size_t>(-1));
    ImportFiles(path, key);
    return Branch{path, key};
  };
  std::vector<Branch> waiting{add(folder, state.screen.current)};
  plan.between.push_back(state);
  while (!waiting.empty()) {
    const Branch branch = waiting.back();
    waiting.pop_back();
    std::vector<Branch> below;
    for (const std::wstring& path : FoldersIn(state, branch.folder)) below.push_back(add(path, branch.key));
    waiting.insert(waiting.end(), below.rbegin(), below.rend());
  }
  plan.boxes.push_back({BoxKind::kInform, IDOK});
}

void Model::ImportFiles(const std::wstring& folder, const std::wstring& key) {
  std::vector<std::wstring> paths;
  for (const std::wstring& name : FilesIn(state, folder)) paths.push_back(folder + name);
  Insert(key, paths);
}

void Model::FileCommands(const Step& step, Plan& plan) {
  const bool send = step.kind == Kind::kSendToFolder;
  if (!send && step.kind != Kind::kMoveToFolder) return;
  plan.skipped = !state.screen.Primary();
  if (plan.skipped || step.c % 8 == 0) return;
  const std::wstring folder = ChosenFolder(step.a);
  plan.folder = folder.substr(0, folder.size() - 1);
  const std::wstring current = state.screen.current;
  state.screen.shown = current.empty() ? std::wstring() : state.tree.At(current).text;
  tooLong_ = false;
  if (!send) {
    MoveFiles(step, plan);
    if (tooLong_) plan.boxes.push_back({BoxKind::kInform, IDOK});
    return;
  }
  for (const Row& row : state.screen.rows) {
    const std::wstring copy = folder + FileNameOfPath(row.texts[2]);
    if (!row.selected || !NamesFile(row.texts[2]) || IsTooLong(copy)) continue;
    const auto file = state.files.find(Folded(row.texts[2]));
    if (file == state.files.end()) continue;
    const auto there = state.files.find(Folded(copy));
    const std::string bytes = file->second.bytes;
    if (there != state.files.end()) {
      there->second.bytes = bytes;  // the name stays as it is spelled there
    } else {
      state.files[Folded(copy)] = {copy, bytes};
    }
  }
  if (tooLong_) plan.boxes.push_back({BoxKind::kInform, IDOK});
  plan.boxes.push_back({BoxKind::kInform, IDOK});
}

void Model::MoveFiles(const Step& step, Plan& plan) {
  const std::wstring folder = plan.folder + L"\\";
  unsigned answers = step.b;
  for (Row& row : state.screen.rows) {
    const std::wstring target = folder + FileNameOfPath(row.texts[2]);
    if (!row.selected || !NamesFile(row.texts[2]) || IsTooLong(target)) continue;
    const auto file = state.files.find(Folded(row.texts[2]));
    if (file == state.files.end() || Folded(target) == Folded(row.texts[2])) continue;
    if (state.files.count(Folded(target)) > 0) {
      constexpr int kAnswers[] = {IDYES, IDNO, IDYES, IDCANCEL};
      const int answer = kAnswers[answers++ % 4];
      plan.boxes.push_back({BoxKind::kYesNoCancel, answer});
      if (answer == IDCANCEL) return;
      if (answer == IDNO) continue;
    }
    File moved = file->second;
    moved.path = target;
    state.files.erase(file);
    state.files[Folded(target)] = moved;
    row.texts[2] = state.table.at(row.tag)[kPath] = target;
    state.saved = false;
    plan.between.push_back(state);
  }
}

}  // namespace kestrelon::model
