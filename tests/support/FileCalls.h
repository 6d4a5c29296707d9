#pragma once

#include "app/base/Win32.h"

#include <fcntl.h>
#include <io.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace kestrelon::test {

// Stands between the program and the calls of the system that change or read files, by way of the table
// through which this executable calls other modules. Counts them, and lets one fail, or everything from one
// on.
//
//   FileCalls calls(FileCalls::Mode::kStop, 3);   // the first three changes take place
//   ... code under test ...
//   EXPECT_TRUE(calls.Hit());
//
// While an object is there, flushes do not wait for the disk, and nothing waits before it tries again. There
// can be one at a time.
class FileCalls {
 public:
  enum class Mode {
    kCount,         // nothing fails; only the waiting is left out
    kStop,          // as if the program had been killed: neither the call nor any later one changes anything
    kStopHalf,      // the same, but half of what the call writes is written
    kDiskFull,      // the call fails
    kDiskFullLong,  // the call and all later ones fail that write, copy, create or flush; not what deletes
    kReadError,     // the call fails; those that read are counted
    kHeld,          // somebody holds the file, so that the call fails three times; those are counted that do
                    // not already have the file open
  };

  FileCalls(Mode mode, std::size_t call) : mode_(mode), left_(call) {
    if (active_ != nullptr) throw std::logic_error("file calls are watched already");
    active_ = this;
    for (const Replacement& each : Replacements()) {
      if (Replace(each, true)) continue;
      PutBack();
      throw std::logic_error(std::string("nothing here calls ") + each.name);
    }
  }
  ~FileCalls() { PutBack(); }
  FileCalls(const FileCalls&) = delete;
  FileCalls& operator=(const FileCalls&) = delete;

  bool Hit() const { return hit_; }
  // Whether the call that failed, or one of them, was to delete a file.
  bool DeletionFailed() const { return deletionFailed_; }

 private:
  enum class Kind { kWrites, kDeletes, kRenames, kReads };
  struct Replacement {
    const char* name;
    void* ours;
    void** original;
  };

  // Does this call fail?
  static bool Fails(Kind kind) { return active_->FailsNow(kind); }
  bool FailsNow(Kind kind) {
    if (mode_ == Mode::kCount || mode_ == Mode::kHeld) return false;
    if ((kind == Kind::kReads) != (mode_ == Mode::kReadError)) return false;
    if (hit_) {
      if (mode_ == Mode::kStop || mode_ == Mode::kStopHalf) return true;
      return mode_ == Mode::kDiskFullLong && kind == Kind::kWrites;
    }
    if (left_ > 0) {
      --left_;
      return false;
    }
    first_ = hit_ = true;
    if (kind == Kind::kDeletes) deletionFailed_ = true;
    return true;
  }
  // Is somebody else at the file?
  static bool IsHeld() { return active_->IsHeldNow(); }
  bool IsHeldNow() {
    if (mode_ != Mode::kHeld) return false;
    if (left_ > 0) {
      --left_;
      return false;
    }
    constexpr int kTimes = 3;
    hit_ = true;
    return timesHeld_++ < kTimes;
  }
  static bool Stopped() {
    return active_->hit_ && (active_->mode_ == Mode::kStop || active_->mode_ == Mode::kStopHalf);
  }
  // Is half of it written all the same?
  static bool Half() {
    const bool first = active_->first_;
    active_->first_ = false;
    return first && active_->mode_ == Mode::kStopHalf;
  }

  static void PutBack() {
    for (const Replacement& each : Replacements()) {
      if (*each.original != nullptr) Replace(each, false);
    }
    active_ = nullptr;
  }
  // Changes the entries of the table that lead to a function of another module; there may be several.
  static bool Replace(const Replacement& replacement, bool on) {
    auto* const base = reinterpret_cast<std::uint8_t*>(::GetModuleHandleW(nullptr));
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos.e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory =
        headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    bool found = false;
    for (auto* module = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         module->Name != 0; ++module) {
      auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + module->OriginalFirstThunk);
      auto* entry = reinterpret_cast<IMAGE_THUNK_DATA*>(base + module->FirstThunk);
      for (; name->u1.AddressOfData != 0; ++name, ++entry) {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
        const auto* byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
        if (std::strcmp(reinterpret_cast<const char*>(byName->Name), replacement.name) != 0) continue;
        DWORD protection = 0;
        ::VirtualProtect(&entry->u1.Function, sizeof entry->u1.Function, PAGE_READWRITE, &protection);
        if (on) *replacement.original = reinterpret_cast<void*>(entry->u1.Function);
        entry->u1.Function = reinterpret_cast<ULONGLONG>(on ? replacement.ours : *replacement.original);
        ::VirtualProtect(&entry->u1.Function, sizeof entry->u1.Function, protection, &protection);
        found = true;
      }
    }
    return found;
  }

  static BOOL Failed(DWORD error) {
    ::SetLastError(error);
    return FALSE;
  }
  static int FailedWith(int error) {
    errno = error;
    return -1;
  }

  static BOOL WINAPI CopyFileOurs(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
    if (IsHeld()) return Failed(ERROR_SHARING_VIOLATION);
    if (Fails(Kind::kReads)) return Failed(ERROR_CRC);
    if (!Fails(Kind::kWrites)) return copyFile_(from, to, failIfExists);
    if (Half() && copyFile_(from, to, failIfExists)) {
      const HANDLE file = createFile_(to, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
      LARGE_INTEGER size{};
      ::GetFileSizeEx(file, &size);
      size.QuadPart /= 2;
      ::SetFilePointerEx(file, size, nullptr, FILE_BEGIN);
      ::SetEndOfFile(file);
      ::CloseHandle(file);
    }
    return Failed(ERROR_DISK_FULL);
  }
  static BOOL WINAPI SetFileAttributesOurs(LPCWSTR path, DWORD attributes) {
    if (Fails(Kind::kWrites)) return Failed(ERROR_WRITE_PROTECT);
    return setFileAttributes_(path, attributes);
  }
  static HANDLE WINAPI CreateFileOurs(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                      DWORD disposition, DWORD flags, HANDLE model) {
    // Who asks for neither is refused by nobody, and nobody holds what is not there.
    const bool held = (access & (GENERIC_READ | GENERIC_WRITE)) != 0 &&
                      ::GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES && IsHeld();
    if (held || ((access & GENERIC_WRITE) != 0 && Fails(Kind::kWrites))) {
      ::SetLastError(held ? ERROR_SHARING_VIOLATION : ERROR_WRITE_PROTECT);
      return INVALID_HANDLE_VALUE;
    }
    return createFile_(path, access, share, security, disposition, flags, model);
  }
  static BOOL WINAPI WriteFileOurs(HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written,
                                   LPOVERLAPPED overlapped) {
    if (!Fails(Kind::kWrites)) return writeFile_(file, bytes, size, written, overlapped);
    if (Half()) writeFile_(file, bytes, size / 2, written, overlapped);
    return Failed(ERROR_DISK_FULL);
  }
  // What is tried again is tried at once.
  static void WINAPI SleepOurs(DWORD) {}
  static BOOL WINAPI FlushFileBuffersOurs(HANDLE) {
    return Fails(Kind::kWrites) ? Failed(ERROR_DISK_FULL) : TRUE;
  }
  static BOOL WINAPI MoveFileExOurs(LPCWSTR from, LPCWSTR to, DWORD flags) {
    if (IsHeld()) return Failed(ERROR_ACCESS_DENIED);
    if (Fails(Kind::kRenames)) return Failed(ERROR_WRITE_PROTECT);
    return moveFileEx_(from, to, flags);
  }
  static BOOL WINAPI DeleteFileOurs(LPCWSTR path) {
    if (::GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES) return deleteFile_(path);
    if (IsHeld()) return Failed(ERROR_SHARING_VIOLATION);
    if (Fails(Kind::kDeletes)) return Failed(ERROR_WRITE_PROTECT);
    return deleteFile_(path);
  }
  static int __cdecl OpenOurs(int* descriptor, const wchar_t* path, int flags, int share, int permissions) {
    const bool writes = (flags & (_O_RDWR | _O_WRONLY)) != 0;
    if (::GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES && IsHeld()) {
      *descriptor = -1;
      _doserrno = ERROR_SHARING_VIOLATION;
      return errno = EACCES;
    }
    if (Fails(writes && (flags & _O_CREAT) != 0 ? Kind::kWrites : Kind::kReads)) {
      *descriptor = -1;
      return errno = EIO;
    }
    return open_(descriptor, path, flags, share, permissions);
  }
  static int __cdecl WriteOurs(int descriptor, const void* bytes, unsigned size) {
    if (!Fails(Kind::kWrites)) return write_(descriptor, bytes, size);
    if (Half()) write_(descriptor, bytes, size / 2);
    return FailedWith(ENOSPC);
  }
  static int __cdecl ReadOurs(int descriptor, void* bytes, unsigned size) {
    return Fails(Kind::kReads) ? FailedWith(EIO) : read_(descriptor, bytes, size);
  }
  static int __cdecl ResizeOurs(int descriptor, long size) {
    return Fails(Kind::kWrites) ? FailedWith(ENOSPC) : resize_(descriptor, size);
  }
  static BOOL WINAPI SetFileTimeOurs(HANDLE file, const FILETIME* created, const FILETIME* accessed,
                                     const FILETIME* written) {
    // A time that stays as it was is no failure that anybody hears of.
    return Stopped() ? Failed(ERROR_DISK_FULL) : setFileTime_(file, created, accessed, written);
  }
  static int __cdecl CommitOurs(int) { return Fails(Kind::kWrites) ? FailedWith(ENOSPC) : 0; }

  static const std::vector<Replacement>& Replacements() {
    static const std::vector<Replacement> replacements = {
        Of("CopyFileW", &CopyFileOurs, copyFile_),
        Of("SetFileAttributesW", &SetFileAttributesOurs, setFileAttributes_),
        Of("CreateFileW", &CreateFileOurs, createFile_),
        Of("FlushFileBuffers", &FlushFileBuffersOurs, flushFileBuffers_),
        Of("WriteFile", &WriteFileOurs, writeFile_),
        Of("Sleep", &SleepOurs, sleep_),
        Of("MoveFileExW", &MoveFileExOurs, moveFileEx_),
        Of("DeleteFileW", &DeleteFileOurs, deleteFile_),
        Of("_wsopen_s", &OpenOurs, open_),
        Of("_write", &WriteOurs, write_),
        Of("_read", &ReadOurs, read_),
        Of("_commit", &CommitOurs, commit_),
        Of("_chsize", &ResizeOurs, resize_),
        Of("SetFileTime", &SetFileTimeOurs, setFileTime_),
    };
    return replacements;
  }
  template <class Function>
  static Replacement Of(const char* name, std::type_identity_t<Function> ours, Function& original) {
    return {name, reinterpret_cast<void*>(ours), reinterpret_cast<void**>(&original)};
  }

  static inline FileCalls* active_ = nullptr;
  static inline decltype(&CopyFileOurs) copyFile_ = nullptr;
  static inline decltype(&SetFileAttributesOurs) setFileAttributes_ = nullptr;
  static inline decltype(&CreateFileOurs) createFile_ = nullptr;
  static inline decltype(&FlushFileBuffersOurs) flushFileBuffers_ = nullptr;
  static inline decltype(&WriteFileOurs) writeFile_ = nullptr;
  static inline decltype(&SleepOurs) sleep_ = nullptr;
  static inline decltype(&MoveFileExOurs) moveFileEx_ = nullptr;
  static inline decltype(&DeleteFileOurs) deleteFile_ = nullptr;
  static inline decltype(&OpenOurs) open_ = nullptr;
  static inline decltype(&WriteOurs) write_ = nullptr;
  static inline decltype(&ReadOurs) read_ = nullptr;
  static inline decltype(&CommitOurs) commit_ = nullptr;
  static inline decltype(&ResizeOurs) resize_ = nullptr;
  static inline decltype(&SetFileTimeOurs) setFileTime_ = nullptr;

  Mode mode_;
  std::size_t left_;
  int timesHeld_ = 0;
  bool hit_ = false, first_ = false, deletionFailed_ = false;
};

}  // namespace kestrelon::test
