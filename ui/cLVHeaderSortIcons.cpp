#include "ui/cLVHeaderSortIcons.h"

#include <commctrl.h>

#include "app/base/File.h"
#include "ui/win/Units.h"

namespace kestrelon::ui {

namespace {

constexpr int kPictures = 2;
constexpr double kSideTwips = 240;  // 16 pixels at 96 dpi

}  // namespace

cLVHeaderSortIcons::cLVHeaderSortIcons(const std::wstring& programFolder)
    : folder_(WithBackslash(programFolder) + L"ico\\") {
  Load(::GetDpiForSystem());
}

void cLVHeaderSortIcons::Load(unsigned dpi) {
  const int side = win::PixelsFromTwips(kSideTwips, dpi);
  win::UniqueImageList images(::ImageList_Create(side, side, ILC_MASK | ILC_COLOR8, kPictures, 0));
  for (const wchar_t* file : {L"sortascending.ico", L"sortdescending.ico"}) {
    const win::UniqueIcon icon(static_cast<HICON>(
        ::LoadImageW(nullptr, (folder_ + file).c_str(), IMAGE_ICON, side, side, LR_LOADFROMFILE)));
    if (icon && images) ::ImageList_AddIcon(images.get(), icon.get());
  }
  images_ = std::move(images);
  dpi_ = dpi;
}

void cLVHeaderSortIcons::ShowSortIcon(HWND listView, int column, bool descending) {
  if ((::GetWindowLongPtrW(listView, GWL_STYLE) & LVS_TYPEMASK) != LVS_REPORT) return;
  const auto header = reinterpret_cast<HWND>(::SendMessageW(listView, LVM_GETHEADER, 0, 0));
  if (const unsigned dpi = ::GetDpiForWindow(listView); dpi != dpi_) Load(dpi);
  ::SendMessageW(header, HDM_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images_.get()));
  const bool havePictures = images_ && ::ImageList_GetImageCount(images_.get()) == kPictures;

  const auto columns = static_cast<int>(::SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
  for (int each = 0; each < columns; ++each) {
    LVCOLUMNW alignment{};
    alignment.mask = LVCF_FMT;
    ::SendMessageW(listView, LVM_GETCOLUMNW, static_cast<WPARAM>(each), reinterpret_cast<LPARAM>(&alignment));
    const int justified =
        alignment.fmt & LVCFMT_JUSTIFYMASK;  // the same values as HDF_LEFT, HDF_RIGHT, HDF_CENTER
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    item.fmt = HDF_STRING | justified;
    if (each == column && havePictures) {
      item.mask |= HDI_IMAGE;
      item.iImage = descending ? 1 : 0;
      // Right-aligned: the picture at the left of the text. Otherwise left-aligned with the picture at its
      // right.
      item.fmt = justified == HDF_RIGHT ? HDF_STRING | HDF_IMAGE | HDF_RIGHT
                                        : HDF_STRING | HDF_IMAGE | HDF_LEFT | HDF_BITMAP_ON_RIGHT;
    }
    ::SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(each), reinterpret_cast<LPARAM>(&item));
  }
}

}  // namespace kestrelon::ui
