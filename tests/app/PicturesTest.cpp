#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "app/Pictures.h"
#include "packaging/resource.h"

namespace kestrelon::app {
namespace {

// A square to draw on, of one colour.
class Paper {
 public:
  Paper(int pixels, COLORREF color) : pixels_(pixels) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), pixels, -pixels, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    bitmap_.reset(::CreateDIBSection(dc_.get(), &info, DIB_RGB_COLORS, &memory_, nullptr, 0));
    before_ = ::SelectObject(dc_.get(), bitmap_.get());
    const RECT all{0, 0, pixels, pixels};
    const win::UniqueBrush brush(::CreateSolidBrush(color));
    ::FillRect(dc_.get(), &all, brush.get());
  }
  ~Paper() { ::SelectObject(dc_.get(), before_); }
  HDC Dc() const { return dc_.get(); }
  std::vector<std::uint8_t> Bytes() const {
    ::GdiFlush();
    const auto* bytes = static_cast<const std::uint8_t*>(memory_);
    std::vector<std::uint8_t> colors;
    for (int i = 0; i < pixels_ * pixels_; ++i) colors.insert(colors.end(), bytes + 4 * i, bytes + 4 * i + 3);
    return colors;
  }

 private:
  int pixels_;
  win::UniqueDc dc_{::CreateCompatibleDC(nullptr)};
  void* memory_ = nullptr;
  win::UniqueBitmap bitmap_;
  HGDIOBJ before_ = nullptr;
};

int FarthestApart(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
  int most = 0;
  for (std::size_t i = 0; i < a.size(); ++i) most = std::max(most, std::abs(a[i] - b[i]));
  return most;
}

TEST(Pictures, LookAsTheirIconsDoOnAnyGround) {
  for (const int pixels : {16, 24, 28, 40}) {
    const win::UniqueImageList list = LoadPictures({IDI_CATEGORY_OPEN, IDI_TOOLBAR_FIND, IDI_ITEM}, pixels);
    ASSERT_EQ(::ImageList_GetImageCount(list.get()), 3);
    int position = 0;
    for (const int id : {IDI_CATEGORY_OPEN, IDI_TOOLBAR_FIND, IDI_ITEM}) {
      const win::UniqueIcon icon(static_cast<HICON>(::LoadImageW(
          ::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id), IMAGE_ICON, pixels, pixels, LR_DEFAULTCOLOR)));
      ASSERT_TRUE(icon);
      for (const COLORREF ground : {RGB(255, 255, 255), RGB(20, 60, 160)}) {
        const Paper blank(pixels, ground), wanted(pixels, ground), drawn(pixels, ground);
        ::DrawIconEx(wanted.Dc(), 0, 0, icon.get(), pixels, pixels, 0, nullptr, DI_NORMAL);
        ::ImageList_Draw(list.get(), position, drawn.Dc(), 0, 0, ILD_TRANSPARENT);
        EXPECT_GT(FarthestApart(blank.Bytes(), wanted.Bytes()), 50) << "the icon itself cannot be seen";
        EXPECT_LE(FarthestApart(drawn.Bytes(), wanted.Bytes()), 2) << pixels << " pixels, icon " << id;
      }
      ++position;
    }
  }
}

TEST(Pictures, OneThatIsMissingLeavesItsPlaceEmpty) {
  const win::UniqueImageList list = LoadPictures({IDI_ITEM, 9999, IDI_CATEGORY_OPEN}, 16);
  ASSERT_EQ(::ImageList_GetImageCount(list.get()), 3);
  const Paper blank(16, RGB(255, 255, 255)), missing(16, RGB(255, 255, 255)), last(16, RGB(255, 255, 255));
  ::ImageList_Draw(list.get(), 1, missing.Dc(), 0, 0, ILD_TRANSPARENT);
  ::ImageList_Draw(list.get(), 2, last.Dc(), 0, 0, ILD_TRANSPARENT);
  EXPECT_EQ(missing.Bytes(), blank.Bytes());
  EXPECT_NE(last.Bytes(), blank.Bytes());
}

}  // namespace
}  // namespace kestrelon::app
