#pragma once

#include "app/base/Win32.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/base/Program.h"
#include "store/CategoryRows.h"
#include "ui/win/MainParts.h"

namespace kestrelon::store {

// Where the collection is kept that went away without being saved: a bare name in the data folder. The file
// is a database like a slot's.
inline constexpr wchar_t kUnsavedFile[] = L"Unsaved.dat";

// Sees to it that content that is in no slot is never gone without a second chance.
//
// While the program runs, the working database on disk has the items after each command; the tree, which it
// does not hold, goes into a file beside it, at the latest with the next change of the items or when Keep()
// is called. Both are brought to disk in the same instant (the engine's log keeps the version of the tree
// with the changed pages), so that a crash at any moment leaves a collection as it once was shown.
//
// When the collection is about to go away (another one is loaded, the program ends), SetAside() makes
// "Unsaved.dat" of it. After a crash RecoverUnsaved() does that at the next start.
class UnsavedCollection {
 public:
  // Watches the shared connection and the tree.
  explicit UnsavedCollection(win::MainParts& parts);
  ~UnsavedCollection();
  UnsavedCollection(const UnsavedCollection&) = delete;
  UnsavedCollection& operator=(const UnsavedCollection&) = delete;

  // What is there now, which is the empty collection, counts as saved.
  void Begin();
  // Has the collection changed since it last was what a slot holds?
  bool Any() const;
  // Is there something that Keep() would write?
  bool TreeChanged() const;
  // Brings the collection to disk as it is shown. Cheap when nothing has changed. Throws; what was kept
  // before stays.
  void Keep();

  // Makes "Unsaved.dat" of the collection, in place of an earlier one. An empty collection, or one that a
  // slot holds, replaces nothing. The connection is closed. Throws; the earlier one stays then.
  void SetAside();
  // The collection is what a slot holds now, or has been set aside: nothing of it is to be recovered. Is also
  // to be called just before the working database is replaced by a file with other content.
  void Settle();
  // The collection that is shown is in no slot, though nothing of it has changed: it was loaded from
  // "Unsaved.dat", or replacing it has failed. Throws where this cannot be brought to disk; it counts as
  // changed all the same, and Keep() tries again.
  void Unsettle();
  // The program ends: a next start finds nothing to recover.
  void Finish();
  // Is called when Keep() is wanted before long though the tree has not changed.
  std::function<void()> keepSoon;

 private:
  void BeforeWriting();
  void AfterWriting();
  void SetNote();

  win::MainParts& parts_;
  bool settled_ = true;
  std::uint64_t writes_ = 0;                               // of the working database
  std::uint64_t settledRevision_ = 0, settledWrites_ = 0;  // of the tree, and as `writes_`
  // The tree's revisions in the file written last and in the one that is known to be kept.
  std::uint64_t writtenRevision_ = 0, keptRevision_ = 0;
  // Versions of the tree's file: the last one written, the one that the next note names (0: the tree is in
  // the working database), and the first one that may still be there.
  std::uint64_t lastTree_ = 0, notedTree_ = 0, firstTree_ = 1;
  bool treeBehind_ = false;  // the tree that the next note names is older than the items
};

// At start-up, before the working database is made anew. After an unclean end the collection that it left is
// set aside as "Unsaved.dat" and true is returned; false when there was none, or it is empty or in a slot.
// Throws when it cannot be recovered; its files are still there then.
bool RecoverUnsaved(const Program& program);
// After such a failure: gives the files that could not be recovered names that nothing else uses, so that the
// program can start. Returns the path of the database among them. Throws where one of them is held; it is
// to be called again then, and goes on where it stopped.
std::wstring PutUnrecoveredAway(const Program& program);

// The time of the last change of the collection in "Unsaved.dat", local; nullopt when there is no such file.
std::optional<SYSTEMTIME> UnsavedTime(const Program& program);

// Do the two databases hold the same categories and items? `rows`: the categories that the second one has
// besides its items. False for a file that cannot be read.
bool HoldTheSame(const std::wstring& slot, const std::wstring& database,
                 const std::vector<CategoryRow>& rows);

}  // namespace kestrelon::store
