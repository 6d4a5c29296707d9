#pragma once

#include "app/base/Win32.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/model/State.h"
#include "tests/model/Steps.h"

namespace kestrelon::model {

// A box that must come up during a step, and what the user answers.
enum class BoxKind { kInform, kError, kYesNo, kOkCancel, kYesNoCancel };
struct Box {
  BoxKind kind;
  int answer;                // IDOK, IDYES, …
  bool noIsDefault = false;  // where Enter must do no harm
};

// How the edit of a name ends.
enum class EditEnd { kEnter, kEscape, kClickOther, kRightClickOther, kCommand, kClickEmpty, kWays };
// How the program is left: No, and Yes with all that may follow it.
enum class Leaving { kCancel, kNo, kSaved, kDialogLeft, kNotReplaced, kSaveFails };
// What is wrong with a slot.
enum class Damage { kCut, kText, kNoParent, kKeyTwice, kCycle, kWays };

// A step with its numbers turned into categories, rows and files: what the driver does in the window. `kind`
// says which of the fields hold.
struct Plan {
  bool skipped = false;  // there is nothing that the step could be done with
  Kind kind = Kind::kClickEmptyTree;
  std::wstring key, otherKey;
  EditEnd end = EditEnd::kEnter;
  Damage damage = Damage::kCut;
  Leaving leaving = Leaving::kCancel;
  int answer = IDNO;   // to the question at the next start, if it is asked
  bool close = false;  // the window as well
  std::vector<std::wstring> paths;
  std::vector<bool> ticked;
  std::wstring folder;  // chosen in the picker; empty: the picker is left
  std::wstring text;
  std::array<std::wstring, 4> fields;
  unsigned way = 0;
  std::size_t row = 0;
  std::size_t column = 0;
  std::size_t slot = 0;
  std::vector<Box> boxes;
  // What there is for a moment in the middle of the step, in this order: a kill may find it.
  std::vector<Content> between;
};

// What the program must do, by the rules that it promises its users, in plain containers.
class Model {
 public:
  State state;

  // Does the step here, and tells how to do it there.
  Plan Apply(const Step& step);
  // The key of the next category, from the clock and the draws.
  std::wstring NextKey();
  SYSTEMTIME Now() const;
  // The time of this step as an item keeps it.
  std::wstring TimeText() const;

 private:
  void Categories(const Step& step, Plan& plan);
  void Imports(const Step& step, Plan& plan);
  void List(const Step& step, Plan& plan);
  void EditItems(const Step& step, Plan& plan);
  void FileCommands(const Step& step, Plan& plan);
  void Slots(const Step& step, Plan& plan);

  void InsertCategory(const Step& step, Plan& plan);
  void EndEdit(const Step& step, Plan& plan, const std::wstring& key);
  void MoveBranch(const Step& step, Plan& plan);
  void Collapse(const Step& step, Plan& plan);
  void DeleteCategory(const Step& step, Plan& plan);
  void FindCategory(Plan& plan);
  void FindItem(const Step& step, Plan& plan);
  void ImportFolder(const Step& step, Plan& plan);
  void ImportFiles(const std::wstring& folder, const std::wstring& key);
  void NameFileAsItem(Row& row);
  bool IsTooLong(const std::wstring& path);  // for the shell; remembered, for the user is told
  void ChangeProperties(const Step& step, Plan& plan);
  void MoveFiles(const Step& step, Plan& plan);
  void DeleteItems(const Step& step, Plan& plan);
  void Exit(const Step& step, Plan& plan);
  void UncleanEnd(const Step& step, Plan& plan);
  void StartAnew(int answer);
  void SaveInto(std::size_t slot);
  void LoadFrom(std::size_t slot);

  void ShowCategory(const std::wstring& key);  // as if clicked
  void ShowNone();
  void Refill();
  void Insert(const std::wstring& key, const std::vector<std::wstring>& paths);
  void SelectOnly(std::size_t row);
  void RemoveSelectedRows();
  std::vector<std::wstring> ChosenFiles(const Step& step, bool withOthers) const;
  std::wstring AnyCategory(unsigned number) const;
  std::wstring ChosenFolder(unsigned number) const;

  bool tooLong_ = false;
};

// Which of a folder's files and sub-folders the program lists, in its order.
std::vector<std::wstring> FilesIn(const State& state, const std::wstring& folder);
std::vector<std::wstring> FoldersIn(const State& state, const std::wstring& folder);
// Can the path be given to the shell, which takes a wildcard for many files?
bool NamesFile(std::wstring_view path);
// Could a file have this name?
bool IsFileName(std::wstring_view name);

}  // namespace kestrelon::model
