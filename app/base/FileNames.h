#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrelon {

// What paths and names mean to the system, by their texts alone.

// May a file be called this? Not where a character is one of \ / : * ? " < > | or a control character, where
// the last one is a dot or a blank (the system drops those and takes another name), or where the name belongs
// to a device: CON, PRN, AUX, NUL, COM1 to COM9, LPT1 to LPT9, the digits also superscript, whatever
// extension follows.
bool IsFileName(std::wstring_view name);

// The longest path that the functions of the shell take, without the NUL at its end.
inline constexpr std::size_t kLongestShellPath = 259;

// The one file that a path names, in the form that the shell's functions understand: "/" turned to "\", and
// without the prefix "\\?\" that they refuse. Nothing where the path names no single file: a relative path,
// or one that depends on the current drive or folder ("name", "\name", "C:name"), a wildcard, a device, a
// folder by a separator or dots at the end (which may be a whole drive), a text with a NUL in it, a path that
// would name another file without its prefix.
std::optional<std::wstring> ShellPathOf(std::wstring_view path);

}  // namespace kestrelon
