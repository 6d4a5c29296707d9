#include "app/Pictures.h"

#include "packaging/resource.h"

namespace kestrelon::app {
namespace {

HICON LoadPicture(int id, int pixels, UINT flags) {
  return static_cast<HICON>(
      ::LoadImageW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id), IMAGE_ICON, pixels, pixels, flags));
}

}  // namespace

win::UniqueImageList LoadPictures(std::initializer_list<int> iconIds, int pixels) {
  win::UniqueImageList list(
      ::ImageList_Create(pixels, pixels, ILC_COLOR32 | ILC_MASK, static_cast<int>(iconIds.size()), 0));
  ::ImageList_SetImageCount(list.get(), static_cast<UINT>(iconIds.size()));
  int position = 0;
  for (const int id : iconIds) {
    const win::UniqueIcon icon(LoadPicture(id, pixels, LR_DEFAULTCOLOR));
    if (icon) ::ImageList_ReplaceIcon(list.get(), position, icon.get());
    ++position;
  }
  return list;
}

HICON ProgramIcon(int pixels) { return LoadPicture(IDI_PROGRAM, pixels, LR_DEFAULTCOLOR | LR_SHARED); }

}  // namespace kestrelon::app
