#include "app/Pictures.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "packaging/resource.h"

namespace kestrelon::app {
namespace {

HICON LoadPicture(int id, int pixels) {
  return static_cast<HICON>(::LoadImageW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id), IMAGE_ICON,
                                         pixels, pixels, LR_DEFAULTCOLOR));
}

const void* Resource(int id, const wchar_t* type, std::size_t leastBytes) {
  const HMODULE module = ::GetModuleHandleW(nullptr);
  const HRSRC found = ::FindResourceW(module, MAKEINTRESOURCEW(id), type);
  const HGLOBAL loaded = found != nullptr && ::SizeofResource(module, found) >= leastBytes
                             ? ::LoadResource(module, found)
                             : nullptr;
  return loaded == nullptr ? nullptr : ::LockResource(loaded);
}

// The picture of an icon that fits a size best. Null when it is not one of this size with alpha.
const BITMAPINFOHEADER* StoredPicture(int id, int pixels) {
  constexpr std::size_t kGroupHeader = 6;
  const auto* group = static_cast<const BYTE*>(Resource(id, RT_GROUP_ICON, kGroupHeader));
  if (group == nullptr) return nullptr;
  const int best =
      ::LookupIconIdFromDirectoryEx(const_cast<BYTE*>(group), TRUE, pixels, pixels, LR_DEFAULTCOLOR);
  const auto size = static_cast<std::size_t>(pixels);
  const auto* header = static_cast<const BITMAPINFOHEADER*>(
      Resource(best, RT_ICON, sizeof(BITMAPINFOHEADER) + size * size * sizeof(std::uint32_t)));
  const bool fits = header != nullptr && header->biSize == sizeof *header && header->biWidth == pixels &&
                    header->biHeight == 2 * pixels && header->biBitCount == 32 &&
                    header->biCompression == BI_RGB;
  return fits ? header : nullptr;
}

BITMAPINFO TopDown(int width, int height) {
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  return info;
}

// Square pictures beside one another, each pixel with its alpha. An image list takes them all at once; icon
// by icon it costs milliseconds each.
class Strip {
 public:
  Strip(int pixels, int count) : pixels_(pixels), width_(pixels * count) {
    const BITMAPINFO info = TopDown(width_, pixels);
    void* memory = nullptr;
    bitmap_.reset(::CreateDIBSection(dc_.get(), &info, DIB_RGB_COLORS, &memory, nullptr, 0));
    colors_ = static_cast<std::uint32_t*>(memory);
  }

  // A picture that the resources hold in this size, straight from there: to make an icon of it only to take
  // it apart again costs a good deal of a program's start. False when there is none.
  bool PutStored(int position, int id) {
    const BITMAPINFOHEADER* header = StoredPicture(id, pixels_);
    if (!bitmap_ || header == nullptr) return false;
    const auto* colors = reinterpret_cast<const std::uint32_t*>(header + 1);
    for (int y = 0; y < pixels_; ++y)  // the lowest row comes first
      std::copy_n(colors + (pixels_ - 1 - y) * pixels_, pixels_, colors_ + y * width_ + position * pixels_);
    return true;
  }

  void Put(int position, HICON icon) {
    ICONINFO parts{};
    if (!bitmap_ || !::GetIconInfo(icon, &parts)) return;
    const win::UniqueBitmap colors(parts.hbmColor), mask(parts.hbmMask);
    std::vector<std::uint32_t> picture(static_cast<std::size_t>(pixels_) * static_cast<std::size_t>(pixels_));
    BITMAPINFO info = TopDown(pixels_, pixels_);
    if (::GetDIBits(dc_.get(), colors.get(), 0, static_cast<UINT>(pixels_), picture.data(), &info,
                    DIB_RGB_COLORS) != pixels_)
      return;
    for (int y = 0; y < pixels_; ++y)
      std::copy_n(picture.begin() + y * pixels_, pixels_, colors_ + y * width_ + position * pixels_);
  }

  void AddTo(HIMAGELIST list) const {
    if (bitmap_) ::ImageList_Add(list, bitmap_.get(), Mask().get());
  }

 private:
  // A 1 for each pixel that is not there at all; rows of whole words, the highest bit leftmost.
  win::UniqueBitmap Mask() const {
    const int rowBytes = (width_ + 15) / 16 * 2;
    std::vector<std::uint8_t> bits(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(pixels_));
    for (int y = 0; y < pixels_; ++y) {
      for (int x = 0; x < width_; ++x) {
        if (colors_[y * width_ + x] >> 24 == 0)
          bits[static_cast<std::size_t>(y * rowBytes + x / 8)] |= static_cast<std::uint8_t>(0x80 >> x % 8);
      }
    }
    return win::UniqueBitmap(::CreateBitmap(width_, pixels_, 1, 1, bits.data()));
  }

  int pixels_, width_;
  win::UniqueDc dc_{::CreateCompatibleDC(nullptr)};
  win::UniqueBitmap bitmap_;
  std::uint32_t* colors_ = nullptr;
};

}  // namespace

win::UniqueImageList LoadPictures(std::initializer_list<int> iconIds, int pixels) {
  const int count = static_cast<int>(iconIds.size());
  Strip strip(pixels, count);
  int position = 0;
  for (const int id : iconIds) {
    if (!strip.PutStored(position, id)) {
      if (const win::UniqueIcon icon(LoadPicture(id, pixels)); icon) strip.Put(position, icon.get());
    }
    ++position;
  }
  win::UniqueImageList list(::ImageList_Create(pixels, pixels, ILC_COLOR32 | ILC_MASK, 0, count));
  strip.AddTo(list.get());
  return list;
}

}  // namespace kestrelon::app
