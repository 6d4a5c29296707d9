#include "items/OpenItem.h"

#include "app/base/File.h"
#include "app/base/FileNames.h"
#include "items/ItemInformation.h"
#include "items/ShellFiles.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "ui/win/Boxes.h"

namespace kestrelon::items {
namespace {

constexpr std::size_t kPathColumn = 3;

// Success is any result from 32 on.
constexpr INT_PTR kFirstSuccess = 32;

}  // namespace

void OpenSelectedItem(win::MainParts& parts) {
  const auto row = parts.ListView1.SelectedRow();
  if (!row) return;
  const std::wstring path(parts.ListView1.Rows()[*row].Text(kPathColumn));
  const auto cannotOpen = [&] {
    win::Inform(parts.world, parts.form.Handle(), lang::Message(parts.program, lang::kCannotOpenFile),
                parts.program.productName);
  };
  // Anything but the full path of a file the system would look for in places of its own choice.
  if (!ShellPathOf(path) || !ServerAnswers(parts.world, path)) {
    cannotOpen();
    return;
  }
  TooLongPaths tooLong;
  if (tooLong.Refuse(path)) {
    tooLong.Tell(parts);
    return;
  }
  const INT_PTR result = parts.world.shellExecute(parts.form.Handle(), L"open", path, SW_SHOW);
  if (IsNetworkPath(path) ? result < kFirstSuccess : result == ERROR_FILE_NOT_FOUND) cannotOpen();
}

}  // namespace kestrelon::items
