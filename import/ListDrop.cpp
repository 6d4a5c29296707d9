#include "import/ListDrop.h"

#include <ole2.h>

#include <string>
#include <utility>
#include <vector>

#include "import/AddFiles.h"
#include "lang/Messages.h"
#include "ui/win/Boxes.h"
#include "ui/win/FileDrop.h"

namespace kestrelon::imports {

DWORD ListView1_OLEDragOver(win::MainParts&, IDataObject& data, POINT) {
  return win::OffersFiles(data) ? DROPEFFECT_COPY : DROPEFFECT_NONE;
}

DWORD ListView1_OLEDragDrop(win::MainParts& parts, IDataObject& data, POINT) {
  if (std::exchange(parts.internalDrag, false)) return DROPEFFECT_NONE;
  return win::InRoutine(parts.world, parts.form.Handle(), L"ListView1_OLEDragDrop Error:",
                        DWORD{DROPEFFECT_NONE}, [&] {
                          const std::wstring key = TargetCategory(parts, lang::kSelectCategoryToDropOn);
                          if (key.empty()) return DWORD{DROPEFFECT_NONE};
                          std::vector<std::wstring> paths = win::DroppedPaths(data);
                          std::erase_if(paths, win::IsPlainFolder);
                          // Fetching the list may have let messages in.
                          if (win::CurrentCategory(parts) != key) return DWORD{DROPEFFECT_NONE};
                          if (!paths.empty())
                            AddFiles(parts, key, paths, {.largestNumber = kLargest32Bit, .oneTime = true});
                          // Also when only folders were dropped: the flag errs on the side of asking.
                          win::MarkChanged(parts);
                          return DWORD{DROPEFFECT_COPY};
                        });
}

}  // namespace kestrelon::imports
