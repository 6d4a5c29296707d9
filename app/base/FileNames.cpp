#include "app/base/FileNames.h"

#include <algorithm>
#include <array>

#include "app/base/File.h"

namespace kestrelon {
namespace {

constexpr std::wstring_view kPrefix = L"\\\\?\\", kNetworkPrefix = L"\\\\?\\UNC\\", kDevices = L"\\\\.\\";

bool IsLetter(wchar_t unit) { return (unit >= L'A' && unit <= L'Z') || (unit >= L'a' && unit <= L'z'); }

// The number of a serial or parallel port.
bool IsPortDigit(wchar_t unit) {
  return (unit >= L'1' && unit <= L'9') || unit == L'\u00B9' || unit == L'\u00B2' || unit == L'\u00B3';
}

bool IsDevice(std::wstring_view name) {
  // "con .txt" is the console as well.
  std::wstring_view base = name.substr(0, name.find(L'.'));
  while (base.ends_with(L' ')) base.remove_suffix(1);
  constexpr std::array<std::wstring_view, 4> kNames = {L"CON", L"PRN", L"AUX", L"NUL"};
  if (std::any_of(kNames.begin(), kNames.end(),
                  [&](std::wstring_view device) { return EqualNoCase(base, device); }))
    return true;
  return base.size() == 4 &&
         (EqualNoCase(base.substr(0, 3), L"COM") || EqualNoCase(base.substr(0, 3), L"LPT")) &&
         IsPortDigit(base[3]);
}

// "C:\" or "\\server\share\" and something behind it.
bool NamesFileFromRoot(std::wstring_view path) {
  if (path.size() > 3 && IsLetter(path[0]) && path[1] == L':' && path[2] == L'\\') return true;
  if (!path.starts_with(L"\\\\")) return false;
  const std::size_t share = path.find(L'\\', 2);
  if (share == std::wstring_view::npos || share == 2) return false;
  const std::size_t file = path.find(L'\\', share + 1);
  return file != std::wstring_view::npos && file > share + 1 && file + 1 < path.size();
}

// With the prefix a path is taken by the letter; without it the system reads some names otherwise.
bool MeansTheSameWithoutPrefix(std::wstring_view path) {
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t end = std::min(path.find(L'\\', start), path.size());
    const std::wstring_view part = path.substr(start, end - start);
    if (part.ends_with(L'.') || part.ends_with(L' ') || part.find(L'/') != std::wstring_view::npos ||
        IsDevice(part))
      return false;
    start = end + 1;
  }
  return true;
}

// "." and ".." at the end, and a separator there, name a folder, and perhaps a whole drive.
bool EndsInAName(std::wstring_view path) {
  return path.substr(path.rfind(L'\\') + 1).find_first_not_of(L". ") != std::wstring_view::npos;
}

}  // namespace

bool IsFileName(std::wstring_view name) {
  if (name.empty() || name.ends_with(L'.') || name.ends_with(L' ')) return false;
  const auto refused = [](wchar_t unit) {
    return unit < L' ' || std::wstring_view(L"\\/:*?\"<>|").find(unit) != std::wstring_view::npos;
  };
  return std::none_of(name.begin(), name.end(), refused) && !IsDevice(name);
}

std::optional<std::wstring> ShellPathOf(std::wstring_view path) {
  std::wstring file;
  if (path.starts_with(kPrefix)) {
    const bool network = EqualNoCase(path.substr(0, kNetworkPrefix.size()), kNetworkPrefix);
    const std::wstring_view rest = path.substr(network ? kNetworkPrefix.size() : kPrefix.size());
    if (!MeansTheSameWithoutPrefix(rest)) return std::nullopt;
    file = (network ? L"\\\\" : L"") + std::wstring(rest);
    if (!network && file.starts_with(L'\\')) return std::nullopt;
  } else {
    file = path;
    std::replace(file.begin(), file.end(), L'/', L'\\');
  }
  if (file.starts_with(kDevices) || file.starts_with(kPrefix) || !NamesFileFromRoot(file) ||
      !EndsInAName(file))
    return std::nullopt;
  // The system itself takes the quote and the angle brackets for wildcards too.
  if (file.find_first_of(std::wstring_view(L"*?\"<>|\0", 7)) != std::wstring::npos) return std::nullopt;
  return file;
}

}  // namespace kestrelon
