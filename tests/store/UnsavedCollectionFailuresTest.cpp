// What is in no slot, where the program is stopped or a call fails at any moment.

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "tests/store/UnsavedFixture.h"
#include "tests/support/FileCalls.h"
#include "ui/win/Boxes.h"

namespace kestrelon::store {
namespace {

using test::FileCalls;
using test::ScopedTestDir;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using Mode = FileCalls::Mode;

// Stopped at every call that changes a file.
class UnsavedCollectionStopped : public UnsavedCollectionTest {
 protected:
  // The data folder as a session of its own begins.
  void Fresh() {
    connection.Forget();
    unsaved.reset();
    for (const auto& entry : std::filesystem::directory_iterator(dir.program.dataFolder)) {
      if (entry.path().filename() != L"Kestrelon.dat" && entry.path().filename() != L"Temp.dat")
        std::filesystem::remove_all(entry.path());
    }
    dir.WriteFile(L"KestrelonData\\default.dat", TemplateBytes());
    world.boxes.clear();
    world.answers.clear();
    tree.Clear();
    StartSession();
  }
  // Runs `body` with everything stopped from the first call on, the second, ...
  void AtEveryCall(const auto& before, const auto& body, const auto& check) {
    for (const Mode mode : {Mode::kStop, Mode::kStopHalf}) {
      for (std::size_t call = 0; !HasFailure(); ++call) {
        SCOPED_TRACE("mode " + std::to_string(static_cast<int>(mode)) + ", call " + std::to_string(call));
        Fresh();
        before();
        bool hit = false;
        {
          FileCalls calls(mode, call);
          win::Quietly(body);
          // Nothing of this program reaches the disk any more.
          connection.Forget();
          unsaved.reset();
          hit = calls.Hit();
        }
        world.answers.clear();
        {
          const FileCalls withoutWaiting(Mode::kCount, 0);
          Restart();
        }
        check();
        if (!hit) break;
      }
    }
  }
  std::optional<Content> Found() { return IsThere() ? std::optional(ContentOf(Unsaved())) : std::nullopt; }
};

TEST_F(UnsavedCollectionStopped, WhileItemsAndTreeChangeHasTheStateBeforeOrAfter) {
  const Content before = Worked();
  Content after = before;
  after.insert(after.begin() + 1, L"C|1#C|item 1");
  after.push_back(L"0_|C|third");
  AtEveryCall([&] { Work(); },
              [&] {
                AddCategory(nullptr, L"C", L"third");
                AddItem(L"C", 1);
              },
              [&] {
                ASSERT_TRUE(IsThere());
                EXPECT_THAT(ContentOf(Unsaved()), AnyOf(before, after));
                EXPECT_THAT(FaultsOf(Unsaved()), IsEmpty());
              });
}

TEST_F(UnsavedCollectionStopped, WhileTheTreeAloneIsKeptHasTheStateBeforeOrAfter) {
  const Content before = Worked();
  Content after = before;
  after.back() = L"A|B|renamed";
  AtEveryCall([&] { Work(); },
              [&] {
                tree.SetText(*tree.Find(L"B"), L"renamed");
                unsaved->Keep();
              },
              [&] {
                ASSERT_TRUE(IsThere());
                EXPECT_THAT(ContentOf(Unsaved()), AnyOf(before, after));
              });
}

TEST_F(UnsavedCollectionStopped, WhileAnotherOneIsLoadedIsNotLost) {
  AtEveryCall(
      [&] {
        MakeDatabase(Data(L"Data2.dat"), {InsertCategory(L"0_", L"S", L"slot")});
        Work();
      },
      [&] {
        world.answers = {IDOK, IDOK};
        LoadData(parts, L"Data2.dat");
      },
      [&] {
        ASSERT_TRUE(IsThere());
        EXPECT_EQ(ContentOf(Unsaved()), Worked());
        EXPECT_THAT(ContentOf(Data(L"Data2.dat")), ElementsAre(L"0_|S|slot"));
      });
}

TEST_F(UnsavedCollectionStopped, WhileItIsSavedIsInTheSlotOrRecovered) {
  AtEveryCall(
      [&] {
        MakeDatabase(Data(L"Data2.dat"), {InsertCategory(L"0_", L"S", L"slot")});
        Work();
      },
      [&] {
        world.answers = {IDOK, IDOK, IDOK};
        SaveData(parts, L"Data2.dat", form.Handle());
      },
      [&] {
        const Content slot = ContentOf(Data(L"Data2.dat"));
        EXPECT_THAT(slot, AnyOf(Worked(), Content{L"0_|S|slot"}));
        EXPECT_TRUE(slot == Worked() || Found() == Worked());
      });
}

// The log has two files, which are written in turn: either may hold what was last.
TEST_F(UnsavedCollectionStopped, WhileItIsRecoveredIsRecoveredByTheNextStart) {
  Content worked = Worked();
  for (int more = 0; more < 3; ++more) {
    AtEveryCall(
        [&] {
          Work();
          for (int i = 0; i < more; ++i) {
            AddCategory(nullptr, L"C" + std::to_wstring(i), L"more");
            AddItem(L"C" + std::to_wstring(i), 1);
          }
          worked = Worked();
          for (int i = 0; i < more; ++i) {
            const std::wstring key = L"C" + std::to_wstring(i);
            worked.insert(worked.begin() + 1 + i, key + L"|1#" + key + L"|item 1");
            worked.push_back(L"0_|" + key + L"|more");
          }
        },
        [&] {
          connection.Forget();
          unsaved.reset();
          RecoverUnsaved(dir.program);
          // As start-up goes on.
          DeleteIfThere(Working());
          if (!CopyFileW(Data(L"Temp.dat").c_str(), Working().c_str(), TRUE))
            throw std::runtime_error("stopped");
        },
        [&] {
          ASSERT_TRUE(IsThere());
          EXPECT_EQ(ContentOf(Unsaved()), worked);
        });
  }
}

TEST_F(UnsavedCollectionStopped, WhileItCannotBeRecoveredIsRecoveredByTheNextStart) {
  for (const Mode mode : {Mode::kDiskFull, Mode::kDiskFullLong, Mode::kReadError}) {
    for (std::size_t call = 0; !HasFailure(); ++call) {
      SCOPED_TRACE("mode " + std::to_string(static_cast<int>(mode)) + ", call " + std::to_string(call));
      Fresh();
      Work();
      AddItem(L"A", 1);
      connection.Forget();
      unsaved.reset();
      bool hit = false;
      {
        FileCalls calls(mode, call);
        win::Quietly([&] { RecoverUnsaved(dir.program); });
        hit = calls.Hit();
      }
      Restart();
      ASSERT_TRUE(IsThere());
      EXPECT_EQ(ContentOf(Unsaved()).size(), Worked().size() + 1);
      if (!hit) break;
    }
  }
}

// The start that cannot recover a collection puts it away; where that is broken off, the next one does.
TEST_F(UnsavedCollectionStopped, WhileItIsPutAwayIsPutAwayByTheNextStart) {
  const auto files = [&](const std::wstring& of) {
    std::map<std::wstring, std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(dir.program.dataFolder)) {
      const std::wstring name = entry.path().filename().wstring();
      if (name.starts_with(of)) found[name.substr(of.size())] = ScopedTestDir::ReadBytes(entry.path());
    }
    return found;
  };
  for (const Mode mode : {Mode::kStop, Mode::kDiskFull}) {
    for (std::size_t call = 0; !HasFailure(); ++call) {
      SCOPED_TRACE("mode " + std::to_string(static_cast<int>(mode)) + ", call " + std::to_string(call));
      Fresh();
      Work();
      AddItem(L"A", 1);
      connection.Forget();
      unsaved.reset();
      dir.WriteFile(L"KestrelonData\\Unrecovered1.dat", "of an earlier time");
      const auto before = files(L"default.dat");
      ASSERT_GT(before.size(), 3u) << "the database, its log, the tree";
      bool hit = false;
      {
        FileCalls calls(mode, call);
        win::Quietly([&] { PutUnrecoveredAway(dir.program); });
        hit = calls.Hit();
      }
      if (!files(L"default.dat").empty() && !FileExists(Working())) {
        const FileCalls withoutWaiting(Mode::kCount, 0);
        EXPECT_THROW(RecoverUnsaved(dir.program), std::runtime_error);
        EXPECT_EQ(PutUnrecoveredAway(dir.program), Data(L"Unrecovered2.dat"));
      }
      EXPECT_EQ(FileExists(Working()) ? files(L"default.dat") : files(L"Unrecovered2.dat"), before);
      if (!hit) break;
    }
  }
}

// Failing at every call that changes a file. What is shown afterwards comes back after a crash, once the
// program has had the time to keep it.
TEST_F(UnsavedCollectionStopped, IsNotLostWhenLoadingOverItFails) {
  const Content newer = {L"0_|N|newer"}, slot = {L"0_|S|slot"};
  for (const wchar_t* name : {kUnsavedFile, L"Data2.dat"}) {
    const bool fromSlot = name != kUnsavedFile;
    for (const Mode mode : {Mode::kDiskFull, Mode::kDiskFullLong}) {
      for (std::size_t call = 0; !HasFailure(); ++call) {
        SCOPED_TRACE(Narrow(name) + ", mode " + std::to_string(static_cast<int>(mode)) + ", call " +
                     std::to_string(call));
        Fresh();
        MakeDatabase(Data(L"Data2.dat"), {InsertCategory(L"0_", L"S", L"slot")});
        Work();
        ASSERT_TRUE(Restart());
        AddCategory(nullptr, L"N", L"newer");
        unsaved->Keep();
        bool hit = false, loaded = false, deletionFailed = false, asked = false;
        unsaved->keepSoon = [&] { asked = true; };
        {
          FileCalls calls(mode, call);
          world.answers = {IDOK, IDOK};
          loaded = LoadData(parts, name);
          hit = calls.Hit();
          deletionFailed = calls.DeletionFailed();
        }
        world.answers.clear();
        EXPECT_EQ(Shape(), !loaded ? L"N=newer" : fromSlot ? L"S=slot" : L"A=top(B=child)");
        if (loaded) {
          EXPECT_EQ(ContentOf(Unsaved()), newer);
        } else {
          EXPECT_TRUE(unsaved->Any());
          // Where what is shown cannot be kept, the copy of it stays.
          EXPECT_TRUE(!unsaved->TreeChanged() || ContentOf(Unsaved()) == newer);
        }
        if (unsaved->TreeChanged()) {
          EXPECT_TRUE(asked);
          unsaved->Keep();
        }
        EXPECT_TRUE(deletionFailed || mode == Mode::kDiskFullLong || !FileExists(Unsaved() + L".old"));
        EXPECT_EQ(Restart(), !loaded || !fromSlot);
        EXPECT_EQ(ContentOf(Unsaved()), loaded && !fromSlot ? Worked() : newer);
        if (!hit) break;
      }
    }
  }
}

TEST_F(UnsavedCollectionStopped, ThatWasSetAsideStaysWholeThoughTheLogCannotBeRemoved) {
  for (std::size_t call = 0; !HasFailure(); ++call) {
    SCOPED_TRACE("call " + std::to_string(call));
    Fresh();
    Work();
    unsaved->SetAside();
    bool hit = false;
    {
      FileCalls calls(Mode::kDiskFull, call);
      unsaved->Finish();
      hit = calls.Hit();
    }
    Restart();
    EXPECT_EQ(ContentOf(Unsaved()), Worked());
    if (!hit) break;
  }
}

// A scanner, an indexer or a backup has a file for a moment: nobody hears of it.
TEST_F(UnsavedCollectionStopped, DoesWhatItDoesThoughAFileIsHeldForAMoment) {
  struct Case {
    const char* name;
    std::function<void()> before, body, check;
  };
  const auto work = [&] { Work(); };
  const auto save = [&] { EXPECT_TRUE(Save(1)); };
  const auto load = [&] { EXPECT_TRUE(LoadData(parts, L"Data2.dat")); };
  const auto end = [&] {
    connection.Forget();
    unsaved.reset();
  };
  const auto hasWorked = [&] { EXPECT_EQ(ContentOf(Unsaved()), Worked()); };
  const std::vector<Case> cases = {
      {"work", [] {}, work,
       [&] {
         EXPECT_TRUE(Restart());
         hasWorked();
       }},
      {"keep",
       [&] {
         Work();
         tree.SetText(*tree.Find(L"B"), L"renamed");
       },
       [&] { unsaved->Keep(); },
       [&] {
         EXPECT_TRUE(Restart());
         EXPECT_THAT(ContentOf(Unsaved()), ElementsAre(L"B|1#B|item 1", L"0_|A|top", L"A|B|renamed"));
       }},
      {"save", work, save, [&] { EXPECT_EQ(ContentOf(Data(L"Data1.dat")), Worked()); }},
      {"save again",
       [&] {
         Work();
         Save(1);
         AddItem(L"A", 1);
       },
       save, [&] { EXPECT_EQ(ContentOf(Data(L"Data1.dat")).size(), Worked().size() + 1); }},
      {"load", work, load, hasWorked},
      {"load over an earlier one",
       [&] {
         Work();
         Restart();
         AddCategory(nullptr, L"N", L"newer");
         unsaved->Keep();
       },
       load, [&] { EXPECT_THAT(ContentOf(Unsaved()), ElementsAre(L"0_|N|newer")); }},
      {"leave", work,
       [&] {
         unsaved->SetAside();
         unsaved->Finish();
       },
       [&] {
         ExpectNothingBesideTheDatabases();
         hasWorked();
       }},
      {"recover", work,
       [&] {
         end();
         EXPECT_TRUE(RecoverUnsaved(dir.program));
       },
       hasWorked},
      {"put away",
       [&] {
         Work();
         end();
       },
       [&] { EXPECT_EQ(PutUnrecoveredAway(dir.program), Data(L"Unrecovered1.dat")); },
       [&] { EXPECT_FALSE(FileExists(Working() + L".log.1")); }},
  };
  for (const Case& each : cases) {
    for (std::size_t call = 0; !HasFailure(); ++call) {
      SCOPED_TRACE(std::string(each.name) + ", call " + std::to_string(call));
      Fresh();
      MakeDatabase(Data(L"Data2.dat"), {InsertCategory(L"0_", L"S", L"slot")});
      each.before();
      world.boxes.clear();
      bool hit = false;
      {
        FileCalls calls(Mode::kHeld, call);
        each.body();
        hit = calls.Hit();
      }
      for (const auto& box : world.boxes) EXPECT_NE(box.flags & MB_ICONMASK, UINT{MB_ICONEXCLAMATION});
      each.check();
      if (!hit) break;
      ASSERT_LT(call, 200u);
    }
  }
}

}  // namespace
}  // namespace kestrelon::store
