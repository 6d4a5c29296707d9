// Saving, loading, compacting and importing, stopped or failing at every call that changes or reads a file.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "tests/store/StoreFixture.h"
#include "tests/support/FileCalls.h"

namespace kestrelon::store {
namespace {

using test::FileCalls;
using test::ScopedTestDir;
using testing::AnyOf;
using testing::IsEmpty;
using Mode = FileCalls::Mode;

using Content = std::vector<std::wstring>;

// Items and categories of a database file as texts. Throws jet::Error for a file that cannot be read.
Content ContentOf(const std::wstring& path) {
  Content content = RowsOf(path, L"SELECT * FROM FTable", {u"TreeviewNode", u"FileIndex", u"DefineName"});
  std::sort(content.begin(), content.end());
  for (std::wstring& row :
       RowsOf(path, L"SELECT * FROM TreeviewTable order by i", {u"parent", u"key", u"text"}))
    content.push_back(std::move(row));
  return content;
}

std::vector<jet::Finding> FaultsOf(const std::wstring& path) {
  return jet::Database::Open(jet::OpenFile(path, jet::OpenMode::kRead), ToEngine(path))->Check();
}

class FileFailures : public StoreTest {
 protected:
  FileFailures() {
    std::vector<std::wstring> statements;
    statements.reserve(13);
    for (int i = 0; i < 12; ++i)
      statements.push_back(InsertItem(L"A", std::to_wstring(i) + L"#A", std::wstring(50, L'o') + L"ld"));
    statements.push_back(InsertCategory(L"0_", L"A", L"in the file"));
    DeleteIfThere(Working());
    MakeDatabase(Working(), statements);
    MakeDatabase(Slot(), {InsertItem(L"S", L"1#S", L"slot"), InsertCategory(L"0_", L"S", L"slot")});
    files = {{Working(), ScopedTestDir::ReadBytes(Working())}, {Slot(), ScopedTestDir::ReadBytes(Slot())}};
    inWorking = ContentOf(Working());
    inSlot = ContentOf(Slot());
    world.messageBox = [this](HWND owner, const std::wstring& text, const std::wstring& title, UINT flags) {
      world.boxes.push_back({owner, text, title, flags});
      return IDOK;
    };
  }

  std::wstring Slot() const { return Data(L"Data2.dat"); }
  std::wstring Scratch() const { return temporary + L"temp.dat"; }

  // The files as they were at the beginning, nothing in memory, nothing beside them.
  void Reset() {
    for (const auto& [path, bytes] : files) Put(path, bytes);
    for (const auto& entry : std::filesystem::directory_iterator(dir.program.dataFolder)) {
      if (entry.path().extension() != L".dat") std::filesystem::remove(entry.path());
    }
    std::filesystem::remove(Scratch());
    connection.Forget();
    world.boxes.clear();
    dir.program.databaseSaved = false;
  }
  static void Put(const std::wstring& path, const std::string& bytes) {
    std::ofstream(std::filesystem::path(path), std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  bool Unchanged(const std::wstring& path) const { return ScopedTestDir::ReadBytes(path) == files.at(path); }

  void ExpectSound(const std::wstring& path, const Content& content) {
    EXPECT_EQ(ContentOf(path), content);
    EXPECT_THAT(FaultsOf(path), IsEmpty());
  }
  // Opens with one content or the other, or is reported as damaged.
  void ExpectOldOrNewOrRefused(const std::wstring& path, const Content& before, const Content& after) {
    try {
      EXPECT_THAT(ContentOf(path), AnyOf(before, after));
    } catch (const jet::Error& error) {
      EXPECT_THAT(error.what(), testing::HasSubstr("is damaged: writing to it was stopped before its end."));
    }
  }
  // The boxes of the failure: one, or that of the compaction and of the routine that wanted it.
  void ExpectFailureBoxes(std::size_t first, const wchar_t* title) {
    ASSERT_GT(world.boxes.size(), first);
    for (std::size_t i = first; i < world.boxes.size(); ++i) {
      EXPECT_EQ(world.boxes[i].flags, UINT{MB_OK | MB_ICONEXCLAMATION});
      EXPECT_TRUE(world.boxes[i].text.starts_with(L"Unkonw Error:")) << Narrow(world.boxes[i].text);
      EXPECT_GT(world.boxes[i].text.size(), 30u) << Narrow(world.boxes[i].text);
    }
    EXPECT_EQ(world.boxes.back().title, title);
    const bool compaction = world.boxes.size() == first + 2;
    EXPECT_TRUE(world.boxes.size() == first + 1 ||
                (compaction && world.boxes[first].title == L"CompactJetDatabase Error"));
  }
  void ExpectNothingLeftBehind() {
    ExpectOnlyWholeFiles();
    EXPECT_FALSE(FileExists(Scratch()));
  }

  // Runs `body` with the first call failing, the second, ... until it has no further call.
  void AtEveryCall(Mode mode, const auto& body) {
    for (std::size_t call = 0; !HasFailure(); ++call) {
      SCOPED_TRACE("mode " + std::to_string(static_cast<int>(mode)) + ", call " + std::to_string(call));
      Reset();
      if (!body(call)) {
        EXPECT_GT(call, 2u);
        break;
      }
    }
  }

  std::map<std::wstring, std::string> files;
  Content inWorking, inSlot;
};

class SaveDataFailures : public FileFailures {
 protected:
  SaveDataFailures() {
    for (int i = 0; i < 8; ++i) AddCategory(nullptr, L"K" + std::to_wstring(i), L"category");
    Reset();
    EXPECT_TRUE(Save());
    saved = ContentOf(Slot());
    EXPECT_NE(saved, inWorking);
  }
  bool Save() { return SaveData(parts, L"Data2.dat", form.Handle()); }
  // What failed or stopped before is no hindrance, and nothing was lost by it.
  void ExpectSavedNow() {
    world.boxes.clear();
    const FileCalls withoutWaiting(Mode::kCount, 0);
    EXPECT_TRUE(Save());
    EXPECT_EQ(world.boxes.size(), 1u) << "the question";
    ExpectSound(Slot(), saved);
    ExpectNothingLeftBehind();
  }
  Content saved;
};

TEST_F(SaveDataFailures, LeaveTheOldSlotOrTheNewOneWhereverTheProgramIsStopped) {
  for (const Mode mode : {Mode::kStop, Mode::kStopHalf}) {
    AtEveryCall(mode, [&](std::size_t call) {
      bool hit = false;
      {
        FileCalls calls(mode, call);
        Save();
        hit = calls.Hit();
      }
      if (!Unchanged(Slot())) ExpectSound(Slot(), saved);
      ExpectOldOrNewOrRefused(Working(), inWorking, saved);
      // The next start makes the working database anew.
      connection.Forget();
      Put(Working(), files.at(Working()));
      ExpectSavedNow();
      return hit;
    });
  }
}

TEST_F(SaveDataFailures, LeaveTheOldSlotAndLoseNothingWhenAWriteFails) {
  for (const Mode mode : {Mode::kDiskFull, Mode::kDiskFullLong}) {
    AtEveryCall(mode, [&](std::size_t call) {
      bool hit = false, deletionFailed = false, done = false;
      {
        FileCalls calls(mode, call);
        done = Save();
        hit = calls.Hit();
        deletionFailed = calls.DeletionFailed();
      }
      EXPECT_EQ(dir.program.databaseSaved, done);
      if (done) {
        EXPECT_TRUE(!hit || deletionFailed);
        ExpectSound(Slot(), saved);
      } else {
        EXPECT_TRUE(Unchanged(Slot()));
        ExpectFailureBoxes(1, L"SaveData Error:");
      }
      if (!deletionFailed) ExpectNothingLeftBehind();
      ExpectSavedNow();
      return hit;
    });
  }
}

TEST_F(SaveDataFailures, LeaveTheOldSlotWhenSomethingCannotBeRead) {
  AtEveryCall(Mode::kReadError, [&](std::size_t call) {
    bool hit = false;
    {
      FileCalls calls(Mode::kReadError, call);
      const bool done = Save();
      hit = calls.Hit();
      EXPECT_EQ(done, !hit);
    }
    if (hit) {
      EXPECT_TRUE(Unchanged(Slot()));
      ExpectFailureBoxes(1, L"SaveData Error:");
    }
    ExpectNothingLeftBehind();
    ExpectSavedNow();
    return hit;
  });
}

class LoadDataFailures : public FileFailures {
 protected:
  void Load() { LoadData(parts, L"Data2.dat"); }
  void ExpectLoadedNow() {
    world.boxes.clear();
    const FileCalls withoutWaiting(Mode::kCount, 0);
    Load();
    EXPECT_THAT(world.boxes, IsEmpty());
    EXPECT_EQ(Shape(), L"S=slot");
    ExpectSound(Working(), inSlot);
    EXPECT_TRUE(Unchanged(Slot()));
    ExpectNothingLeftBehind();
  }
};

TEST_F(LoadDataFailures, LeaveTheSlotAndAWholeWorkingDatabaseWhereverTheProgramIsStopped) {
  for (const Mode mode : {Mode::kStop, Mode::kStopHalf}) {
    AtEveryCall(mode, [&](std::size_t call) {
      bool hit = false;
      {
        FileCalls calls(mode, call);
        Load();
        hit = calls.Hit();
      }
      EXPECT_TRUE(Unchanged(Slot()));
      EXPECT_TRUE(Unchanged(Working()) || ScopedTestDir::ReadBytes(Working()) == files.at(Slot()));
      connection.Forget();
      ExpectLoadedNow();
      return hit;
    });
  }
}

TEST_F(LoadDataFailures, ChangeNothingWhenACallFails) {
  for (const Mode mode : {Mode::kDiskFull, Mode::kDiskFullLong, Mode::kReadError}) {
    AtEveryCall(mode, [&](std::size_t call) {
      tree.Clear();
      AddCategory(nullptr, L"OLD", L"old");
      bool hit = false;
      {
        FileCalls calls(mode, call);
        Load();
        hit = calls.Hit();
      }
      EXPECT_TRUE(Unchanged(Slot()));
      ExpectNothingLeftBehind();
      if (hit) {
        ExpectFailureBoxes(0, L"LoadData Error:");
        // The tree is read after the working database was replaced.
        if (Unchanged(Working())) {
          EXPECT_EQ(Shape(), L"OLD=old");
        } else {
          EXPECT_EQ(mode, Mode::kReadError);
          ExpectSound(Working(), inSlot);
        }
      }
      ExpectLoadedNow();
      return hit;
    });
  }
}

TEST_F(LoadDataFailures, MakeNoHalfSlotFromTheTemplate) {
  const std::wstring fresh = Data(L"Data1.dat");
  for (const Mode mode : {Mode::kStop, Mode::kStopHalf, Mode::kDiskFull, Mode::kReadError}) {
    for (std::size_t call = 0;; ++call) {
      Reset();
      DeleteIfThere(fresh);
      bool hit = false;
      {
        FileCalls calls(mode, call);
        LoadData(parts, L"Data1.dat");
        hit = calls.Hit();
      }
      EXPECT_EQ(world.boxes.size(), hit ? 1u : 0u);
      EXPECT_EQ(FileExists(fresh), !hit);
      if (mode == Mode::kDiskFull || mode == Mode::kReadError) ExpectNothingLeftBehind();
      LoadData(parts, L"Data1.dat");
      EXPECT_TRUE(ScopedTestDir::ReadBytes(fresh) == TemplateBytes());
      ExpectNothingLeftBehind();
      if (!hit) break;
      ASSERT_LT(call, 20u);
    }
  }
}

class CompactionFailures : public FileFailures {
 protected:
  bool Compact() { return CompactJetDatabase(world, form.Handle(), Working(), true); }
  void ExpectCompactedNow() {
    world.boxes.clear();
    const FileCalls withoutWaiting(Mode::kCount, 0);
    EXPECT_TRUE(Compact());
    EXPECT_THAT(world.boxes, IsEmpty());
    ExpectSound(Working(), inWorking);
    EXPECT_EQ(ContentOf(temporary + L"backup.dat"), inWorking);
    ExpectNothingLeftBehind();
  }
};

TEST_F(CompactionFailures, LeaveTheOldFileOrTheNewOneWhereverTheProgramIsStopped) {
  for (const Mode mode : {Mode::kStop, Mode::kStopHalf}) {
    AtEveryCall(mode, [&](std::size_t call) {
      bool hit = false;
      {
        FileCalls calls(mode, call);
        Compact();
        hit = calls.Hit();
      }
      if (!Unchanged(Working())) ExpectSound(Working(), inWorking);
      ExpectCompactedNow();
      return hit;
    });
  }
}

TEST_F(CompactionFailures, LeaveTheOldFileWhenACallFails) {
  for (const Mode mode : {Mode::kDiskFull, Mode::kDiskFullLong, Mode::kReadError}) {
    AtEveryCall(mode, [&](std::size_t call) {
      bool hit = false, deletionFailed = false, done = false;
      {
        FileCalls calls(mode, call);
        done = Compact();
        hit = calls.Hit();
        deletionFailed = calls.DeletionFailed();
      }
      if (done) {
        EXPECT_TRUE(!hit || deletionFailed);
        ExpectSound(Working(), inWorking);
      } else {
        EXPECT_TRUE(Unchanged(Working()));
        ExpectFailureBoxes(0, L"CompactJetDatabase Error");
      }
      if (!deletionFailed) ExpectNothingLeftBehind();
      ExpectCompactedNow();
      return hit;
    });
  }
}

class ImportFailures : public FileFailures {
 protected:
  static constexpr int kItems = 200;
  ImportFailures() {
    Import();
    imported = ContentOf(Working());
    EXPECT_EQ(imported.size(), inWorking.size() + kItems);
  }
  void Import() {
    Opened database(connection);
    for (int i = 0; i < kItems; ++i)
      database->Execute(InsertItem(L"B", std::to_wstring(i) + L"#B", std::wstring(60, L'n')));
    database.Close();
  }
  Content imported;
};

TEST_F(ImportFailures, LeaveTheOldItemsOrTheNewOnesOrARefusalWhereverTheProgramIsStopped) {
  for (const Mode mode : {Mode::kStop, Mode::kStopHalf}) {
    AtEveryCall(mode, [&](std::size_t call) {
      FileCalls calls(mode, call);
      try {
        Import();
      } catch (const jet::Error&) {
        EXPECT_TRUE(calls.Hit());
      }
      ExpectOldOrNewOrRefused(Working(), inWorking, imported);
      return calls.Hit();
    });
  }
}

TEST_F(ImportFailures, LoseNothingThatWasThereBefore) {
  for (const Mode mode : {Mode::kDiskFull, Mode::kDiskFullLong, Mode::kReadError}) {
    AtEveryCall(mode, [&](std::size_t call) {
      bool hit = false;
      {
        FileCalls calls(mode, call);
        try {
          Import();
        } catch (const jet::Error& error) {
          EXPECT_THAT(error.what(), testing::HasSubstr("default.dat"));
        }
        hit = calls.Hit();
      }
      Execute(InsertItem(L"C", L"1#C", L"next"));
      Content content = ContentOf(Working());
      const auto next = std::find(content.begin(), content.end(), L"C|1#C|next");
      EXPECT_NE(next, content.end());
      if (next != content.end()) content.erase(next);
      EXPECT_THAT(content, AnyOf(inWorking, imported));
      EXPECT_THAT(FaultsOf(Working()), IsEmpty());
      return hit;
    });
  }
}

TEST_F(FileFailures, AreReportedWhenTheDataFolderIsGone) {
  AddCategory(nullptr, L"A", L"top");
  Reset();
  std::filesystem::rename(dir.program.dataFolder, dir.Path(L"elsewhere"));

  EXPECT_FALSE(SaveData(parts, L"Data2.dat", form.Handle()));
  ASSERT_GE(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes.back().title, L"SaveData Error:");
  world.boxes.clear();
  LoadData(parts, L"Data2.dat");
  ExpectFailureBoxes(0, L"LoadData Error:");
  EXPECT_EQ(Shape(), L"A=top");

  std::filesystem::remove_all(dir.program.dataFolder);
  std::filesystem::rename(dir.Path(L"elsewhere"), dir.program.dataFolder);
  EXPECT_TRUE(Unchanged(Slot()));
  EXPECT_TRUE(Unchanged(Working()));
}

}  // namespace
}  // namespace kestrelon::store
