#include "tree/FolderLists.h"

#include <shlwapi.h>

#include <algorithm>
#include <array>
#include <numeric>

#include "app/base/File.h"
#include "ui/win/Handles.h"

namespace kestrelon::tree {
namespace {

bool IsAscii(wchar_t unit) { return unit < 0x80; }
bool IsDigit(wchar_t unit) { return unit >= L'0' && unit <= L'9'; }
bool IsLetter(wchar_t unit) { return (unit | 0x20) >= L'a' && (unit | 0x20) <= L'z'; }

// The number written in ASCII digits at the start of `text`. False when there is none, or when the system may
// see another number there: it reads 32 bits, and knows digits outside ASCII.
bool NumberAt(std::wstring_view text, unsigned& number) {
  constexpr std::size_t kSafeDigits = 9;
  std::size_t digits = 0;
  number = 0;
  for (; digits < text.size() && IsDigit(text[digits]); ++digits) {
    if (digits == kSafeDigits) return false;
    number = number * 10 + static_cast<unsigned>(text[digits] - L'0');
  }
  return digits > 0 && (digits == text.size() || IsAscii(text[digits]));
}

// May what two names have in common be cut off behind this unit? Behind a letter not, since some languages
// sort groups of letters as one; behind a digit not, since it may belong to a number that goes on. Hyphen and
// apostrophe weigh less than other characters.
bool EndsBefore(wchar_t unit) {
  return IsAscii(unit) && !IsLetter(unit) && !IsDigit(unit) && unit != L'-' && unit != L'\'';
}

// The places of single characters of ASCII in the system's order; the same for the two cases of a letter.
std::array<int, 128> AsciiPlaces() {
  std::array<wchar_t, 128> units{};
  std::iota(units.begin(), units.end(), wchar_t{0});
  const auto before = [](wchar_t a, wchar_t b) {
    const wchar_t textA[] = {a, 0}, textB[] = {b, 0};
    return ::StrCmpLogicalW(textA, textB) < 0;
  };
  std::stable_sort(units.begin(), units.end(), before);
  std::array<int, 128> places{};
  for (std::size_t i = 1; i < units.size(); ++i) {
    places[units[i]] = places[units[i - 1]] + (before(units[i - 1], units[i]) ? 1 : 0);
  }
  return places;
}

// What CompareNames most likely says, without asking the system: character by character, and numbers by their
// value.
bool ProbablyBefore(const std::wstring& a, const std::wstring& b) {
  static const std::array<int, 128> places = AsciiPlaces();
  const auto placeOf = [](wchar_t unit) { return IsAscii(unit) ? places[unit] : int{unit}; };
  const std::size_t common = std::min(a.size(), b.size());
  std::size_t i = 0;
  while (i < common && (a[i] == b[i] || placeOf(a[i]) == placeOf(b[i]))) ++i;
  if (i == common) return a.size() < b.size();
  std::size_t start = i;
  while (start > 0 && IsDigit(a[start - 1])) --start;
  unsigned numberA = 0, numberB = 0;
  if (NumberAt(std::wstring_view(a).substr(start), numberA) &&
      NumberAt(std::wstring_view(b).substr(start), numberB) && numberA != numberB) {
    return numberA < numberB;
  }
  return placeOf(a[i]) < placeOf(b[i]);
}

void Sort(std::vector<std::wstring>& names) {
  const auto before = [](const std::wstring& a, const std::wstring& b) {
    const int order = CompareNames(a, b);
    return order != 0 ? order < 0 : a < b;
  };
  // Mostly the guess is right, and the system has to be asked but once for each name. The sorts are stable
  // ones: unlike std::sort they stay within the list should an order contradict itself.
  std::stable_sort(names.begin(), names.end(), ProbablyBefore);
  if (!std::is_sorted(names.begin(), names.end(), before)) {
    std::stable_sort(names.begin(), names.end(), before);
  }
}

}  // namespace

int CompareNames(const std::wstring& a, const std::wstring& b) {
  // One comparison by the system costs microseconds, more than anything else that is done for a file. So what
  // the names have in common is not compared, and two numbers that differ are compared here.
  std::size_t start =
      static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
  if (start < std::max(a.size(), b.size())) {
    while (start > 0 && IsDigit(a[start - 1])) --start;
    const std::wstring_view restA = std::wstring_view(a).substr(start),
                            restB = std::wstring_view(b).substr(start);
    unsigned numberA = 0, numberB = 0;
    if ((start == 0 || IsAscii(a[start - 1])) && NumberAt(restA, numberA) && NumberAt(restB, numberB) &&
        numberA != numberB) {
      return numberA < numberB ? -1 : 1;
    }
    const auto ascii = [](std::wstring_view rest) { return rest.empty() || IsAscii(rest[0]); };
    if (!ascii(restA) || !ascii(restB)) start = 0;  // a mark may belong to the character before it
    while (start > 0 && !EndsBefore(a[start - 1])) --start;
  }
  const int order = ::StrCmpLogicalW(a.c_str() + start, b.c_str() + start);
  return (order > 0) - (order < 0);
}

bool IsFolderLink(const WIN32_FIND_DATAW& entry) {
  constexpr DWORD kLinkedFolder = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  if ((entry.dwFileAttributes & kLinkedFolder) != kLinkedFolder) return false;
  // The tag tells links from folders that a driver attends to, such as those of a cloud storage. One without
  // a tag cannot be told, and is taken for a link: that leaves out too much rather than going in circles.
  return entry.dwReserved0 == 0 || IsReparseTagNameSurrogate(entry.dwReserved0);
}

std::wstring UnlimitedForm(std::wstring_view path) {
  if (path.substr(0, 4) == LR"(\\?\)") return std::wstring(path);
  if (IsNetworkPath(path)) return LR"(\\?\UNC\)" + std::wstring(path.substr(2));
  return LR"(\\?\)" + std::wstring(path);
}

FolderLists ListsOf(const std::wstring& folder, const NextEntry& next) {
  FolderLists lists;
  const std::wstring start = WithBackslash(folder);
  WIN32_FIND_DATAW entry{};
  DWORD error = 0;
  while ((error = next(entry)) == 0) {
    std::wstring name = entry.cFileName;
    if (name == L"." || name == L".." || IsFolderLink(entry)) continue;
    if (start.size() + name.size() > kLongestPath) {
      lists.leftOut.push_back(start + name);
    } else if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
      lists.Dir1.push_back(std::move(name));
    } else {
      lists.File1.push_back(std::move(name));
    }
  }
  if (error != ERROR_NO_MORE_FILES) lists.leftOut.push_back(folder);
  Sort(lists.Dir1);
  Sort(lists.File1);
  for (std::wstring& name : lists.Dir1) name.insert(0, start);
  return lists;
}

FolderLists ReadFolder(const std::wstring& folder) {
  // Owns a search; INVALID_HANDLE_VALUE, of a search that failed, must not be closed.
  win::Unique<HANDLE, ::FindClose> search;
  bool first = true;
  return ListsOf(folder, [&](WIN32_FIND_DATAW& entry) -> DWORD {
    if (!first) return ::FindNextFileW(search.get(), &entry) ? 0 : ::GetLastError();
    first = false;
    const std::wstring pattern = UnlimitedForm(WithBackslash(folder)) + L"*";
    const HANDLE found = ::FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch,
                                            nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (found == INVALID_HANDLE_VALUE) {
      const DWORD error = ::GetLastError();
      // The root of an empty drive has not even the entry ".".
      return error == ERROR_FILE_NOT_FOUND ? ERROR_NO_MORE_FILES : error;
    }
    search.reset(found);
    return 0;
  });
}

}  // namespace kestrelon::tree
