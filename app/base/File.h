#pragma once

#include "app/base/Win32.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kestrelon {

// Pure path texts. A separator is the backslash.

// Up to the first NUL; the whole text when there is none.
std::wstring CutAtNul(std::wstring_view text);
// After the last backslash; the whole text when there is none.
std::wstring FileNameOfPath(std::wstring_view path);
// Up to and including the last backslash; empty when there is none.
std::wstring FolderOfPath(std::wstring_view path);
// Before the last "."; the whole text when there is none.
std::wstring NameWithoutExtension(std::wstring_view name);
// After the last "."; empty when there is none.
std::wstring ExtensionOf(std::wstring_view name);
// The folder with a backslash added at its end unless it has one.
std::wstring WithBackslash(std::wstring_view folder);
// Does it begin with two backslashes, "/" counting as one? Not so "\\?\C:\" and "\\.\", which begin paths of
// this machine; "\\?\UNC\server" is on the network again.
bool IsNetworkPath(std::wstring_view path);
// Of a network path: from the third character up to the next separator (of "\\?\UNC\server\share" "server");
// empty for any other path.
std::wstring ServerOfPath(std::wstring_view path);

// A byte count as text: "005 Bytes" below 1024, with at least three digits; from there on "1.50 KB (1,536
// Bytes)", the count divided by 1024 until it is below 1024 or in gigabytes, with two decimals, and the exact
// count behind it.
std::wstring SizeText(std::uint64_t bytes);

// True unless the system says "file not found" (code 2) and nothing else: a missing folder, a path that is
// too long or denied counts as existing. An empty path is false. `errorOf` gives the system's code for a path
// (0 = it is there).
bool FileExists(const std::wstring& path);
bool FileExists(const std::wstring& path, const std::function<DWORD(const std::wstring&)>& errorOf);
bool FolderExists(const std::wstring& path);

// What names a file or a folder whatever its path is spelled like: the volume and its number there. Empty
// when it is not there or cannot be asked.
std::wstring IdentityOf(const std::wstring& path);
// Do both paths lead to one file?
bool IsSameFile(const std::wstring& a, const std::wstring& b);

// The system's temporary folder, ending in a backslash; empty when the system gives none.
std::wstring TemporaryFolder();

// Can a file be made in this folder (which ends in "\")? Makes and removes a probe named "WriteTest".
bool WriteTest(const std::wstring& folder);

// Runs `attempt` again, for up to about a second with growing waits, while it fails because somebody holds
// the file for a moment: a virus scanner, an indexer or a backup (sharing violation, lock violation, access
// denied). `attempt` returns false with its error in GetLastError(), where the last one's is left.
bool Persistently(const std::function<bool()>& attempt);
// The same with what waits, given milliseconds.
bool Persistently(const std::function<bool()>& attempt, const std::function<void(DWORD)>& wait);

// Copies `from` to `to` so that `to` is at any moment its old content or the new one: a copy under a
// temporary name in the target's folder is flushed to the disk and renamed over `to`. Nobody writes `from`
// meanwhile. Throws std::system_error; `to` is untouched then.
void ReplaceByCopy(const std::wstring& from, const std::wstring& to);
// The same with a look at the finished copy, by its path, before it takes the place of `to`: what `check`
// throws leaves `to` as it is.
void ReplaceByCopy(const std::wstring& from, const std::wstring& to,
                   const std::function<void(const std::wstring& copy)>& check);
// Takes the read-only attribute off a file that is there.
void ClearReadOnly(const std::wstring& path);
// Deletes the file if it is there. Throws std::system_error when it stays.
void DeleteIfThere(const std::wstring& path);

// Does the system's error number say that the disk does not give back what it was given?
bool CannotBeRead(DWORD error);

// Throws std::system_error with GetLastError() (read by the caller at once) and a sentence naming `what`.
[[noreturn]] void ThrowLastError(const std::wstring& what, DWORD error = ::GetLastError());

std::string Narrow(std::wstring_view text);  // to UTF-8
std::wstring Widen(std::string_view text);   // from UTF-8
bool EqualNoCase(std::wstring_view a, std::wstring_view b);
bool ContainsNoCase(std::wstring_view text, std::wstring_view part);
std::wstring Trim(std::wstring_view text);  // blanks (U+0020) at both ends

}  // namespace kestrelon
