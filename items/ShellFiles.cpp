#include "items/ShellFiles.h"

#include "app/base/FileNames.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "ui/win/Boxes.h"

namespace kestrelon::items {

bool IsThere(const std::wstring& path) {
  return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool TooLongPaths::Refuse(const std::wstring& path, const std::wstring& target) {
  if (path.size() <= kLongestShellPath && target.size() <= kLongestShellPath) return false;
  ++count_;
  return true;
}

void TooLongPaths::Tell(win::MainParts& parts) const {
  if (count_ == 0) return;
  win::Inform(parts.world, parts.form.Handle(),
              lang::Message(parts.program, lang::kPathTooLong) + std::to_wstring(count_),
              parts.program.productName);
}

}  // namespace kestrelon::items
