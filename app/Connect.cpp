#include "app/Connect.h"

#include "app/base/Win32.h"

#include <system_error>

#include "app/base/File.h"
#include "app/base/Settings.h"
#include "jet/base/Error.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "store/Store.h"
#include "store/UnsavedCollection.h"
#include "ui/win/Boxes.h"

namespace kestrelon::app {
namespace {

constexpr const wchar_t* kTemplate = L"Temp.dat";

// Replaces `to` by a copy that can be written, also when the original is read-only (a program folder on a CD
// or share).
void FreshCopy(const std::wstring& from, const std::wstring& to) {
  DeleteIfThere(to);
  // A file that was deleted while somebody had it open keeps its name a little longer.
  if (!Persistently([&] { return ::CopyFileW(from.c_str(), to.c_str(), TRUE) != FALSE; }))
    ThrowLastError(L"Copying " + from);
  if (!::SetFileAttributesW(to.c_str(), FILE_ATTRIBUTE_NORMAL))
    ThrowLastError(L"Making " + to + L" writable");
}

// Has the system refused a file that may well be sound? One that it cannot read is not among those.
bool IsRefusal(const std::exception& error) {
  if (dynamic_cast<const jet::FileRefused*>(&error) != nullptr) return true;
  const auto* const failure = dynamic_cast<const std::system_error*>(&error);
  return failure != nullptr && !CannotBeRead(static_cast<DWORD>(failure->code().value()));
}

// Did an unclean end leave a collection that is in no slot? What is damaged is not a reason never to start
// again; it is kept for somebody who can do more. A file that is held or a disk that is full is one: the next
// start may do better, so that those go on to the caller.
bool Recover(const Program& program, OutsideWorld& world) {
  try {
    return store::RecoverUnsaved(program);
  } catch (const std::exception& error) {
    if (IsRefusal(error)) throw;
    const std::wstring kept = store::PutUnrecoveredAway(program);
    win::Exclaim(world, nullptr,
                 lang::Message(program, lang::kNotRecovered) + kept + L"\n\n" + win::ErrorText(error),
                 program.productName);
    return false;
  }
}

}  // namespace

Program NameProgram(const std::wstring& programFolder, const std::wstring& appData) {
  Program program;
  program.programFolder = WithBackslash(programFolder);
  program.dataFolder = WithBackslash(appData) + L"KestrelonData\\";
  program.settingsFile = program.dataFolder + L"Kestrelon.dat";
  program.templateFolder = program.programFolder + L"Data\\";
  program.connectionString = store::ConnectionStringOf(program.dataFolder + program.workingDatabase);
  return program;
}

void MakeDataFolder(const Program& program) {
  if (!FolderExists(program.dataFolder)) ::CreateDirectoryW(program.dataFolder.c_str(), nullptr);
}

bool Connect(Program& program, OutsideWorld& world) {
  // Whatever goes wrong up to the connection test makes the test fail, and its box is the only one.
  const Settings settings(program.settingsFile);
  win::Quietly([&] {
    MakeDataFolder(program);
    settings.CreateWithDefaults();
  });
  program.languageName = settings.Read(L"language");
  win::Quietly([&] { FreshCopy(program.templateFolder + kTemplate, program.dataFolder + kTemplate); });
  if (!store::ConnectDatabase(program, world)) return false;
  return win::InRoutine(world, nullptr, L"Connect Error:", false, [&] {
    program.unsavedFound = Recover(program, world);
    FreshCopy(program.dataFolder + kTemplate, program.dataFolder + program.workingDatabase);
    return true;
  });
}

std::wstring ExecutableFolder() {
  std::wstring path(512, L'\0');
  for (;;) {
    const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) ThrowLastError(L"Finding the program's folder");
    if (length < path.size()) return FolderOfPath(path.substr(0, length));
    path.resize(path.size() * 2);
  }
}

std::wstring EnvironmentValue(const wchar_t* name) {
  std::wstring value(::GetEnvironmentVariableW(name, nullptr, 0), L'\0');
  if (value.empty()) return value;
  value.resize(::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
  return value;
}

}  // namespace kestrelon::app
