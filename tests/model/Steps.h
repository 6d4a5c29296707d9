#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace kestrelon::model {

// What the user can do. In brackets: what the numbers of a step stand for, each taken modulo what there is.
enum class Kind {
  kAddFirstSibling,     // [a: how the edit of the name ends, b: category that ends it] text: the name typed
  kAddPreviousSibling,  // the same
  kAddNextSibling,
  kAddLastSibling,
  kAddChild,
  kRenameCategory,      // the same, begun with F2 or by the toolbar [c]
  kClickCategory,       // [a: category]
  kRightClickCategory,  // [a: category]
  kGoToCategory,        // with the keyboard [a: up, down, first, last]
  kClickEmptyTree,
  kCollapse,        // [a: category] by its button
  kDeleteCategory,  // [a: yes or no, b: menu or key]
  kToggleDrag,
  kMoveBranch,       // [a: category, b: target] with the mouse
  kOpenDialog,       // [a: which files, b: how many; c: cancelled]
  kDropOnList,       // [a, b, c: a folder among them]
  kDropOnCategory,   // [a, b, c] b also tells the category
  kMoveItems,        // dragged onto a category [a]
  kClipboard,        // [a, b: which files; c: which of them are ticked]
  kImportFolder,     // [a: folder, b: cancelled]
  kClickRow,         // [a]
  kControlClickRow,  // [a]
  kSelectAllRows,
  kClickEmptyList,
  kSort,         // [a: column]
  kDeleteItems,  // [a: answers]
  kAliasOfItem,  // [a: OK or Cancel] text
  kAliasAsFileName,
  kCommentOfItem,   // [a: window closed afterwards or not] text
  kProperties,      // [a: which fields change, b: path, c: OK or Cancel] text
  kChangeCategory,  // [a: category, b: OK, OK without a choice, Cancel]
  kMoveToFolder,    // [a: folder, b: answers to what is replaced, c: cancelled]
  kSendToFolder,    // [a: folder, c: cancelled]
  kFindItem,        // [a: field] text
  kFindCategory,    // text
  kLanguage,        // [a]
  kSave,            // [a: slot, b: yes, no, dialog left]
  kLoad,            // [a: slot, b: dialog left]
  kLoadUnsaved,     // [b: dialog left]
  kLoadDamaged,     // [a: slot, b: what is wrong with it]
  kExit,            // [a: slot, b: Cancel, No, Yes and how it is saved or not] and started again
  kUncleanEnd,      // [a: answer at the next start, b: at once, or when all is kept]
  kEndSession,      // [a: answer at the next start, b: taken back, c: the window closed as well]
  kKinds
};

struct Step {
  Kind kind = Kind::kClickEmptyTree;
  unsigned a = 0, b = 0, c = 0;
  std::wstring text;
};

// A step means something wherever it stands: a sequence without some of its steps is one as well.
class Generator {
 public:
  explicit Generator(std::uint32_t seed) : random_(seed) {}
  Step Next();

 private:
  unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
  std::wstring Name();
  std::mt19937 random_;
};

std::vector<Step> RandomSteps(std::uint32_t seed, std::size_t count);
std::string Printed(const Step& step);

}  // namespace kestrelon::model
