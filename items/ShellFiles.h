#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "ui/win/MainParts.h"

namespace kestrelon::items {

// What the commands that act on files behind items have in common.

// Is anything there by this path?
bool IsThere(const std::wstring& path);

// The paths that one command leaves out because the shell does not take paths of their length.
class TooLongPaths {
 public:
  // True, and counted, when the path of a file or the one that it shall have is too long.
  bool Refuse(const std::wstring& path, const std::wstring& target = {});
  // One box for all of them; none when there are none.
  void Tell(win::MainParts& parts) const;

 private:
  std::size_t count_ = 0;
};

}  // namespace kestrelon::items
