#include <gtest/gtest.h>
#include <ole2.h>
#include <shellapi.h>
#include <shlobj.h>

#include "items/FileListDataObject.h"

namespace kestrelon::test {
namespace {

FORMATETC Format(CLIPFORMAT id, DWORD medium = TYMED_HGLOBAL, DWORD aspect = DVASPECT_CONTENT) {
  return {id, nullptr, aspect, -1, medium};
}

TEST(FileDropBytes, IsAHeadThePathsEachClosedByANulAndALastNul) {
  const std::vector<std::uint8_t> expected = {20,  0, 0,   0,                // where the list begins
                                              0,   0, 0,   0, 0,   0, 0, 0,  // the point
                                              0,   0, 0,   0,                // not in the frame
                                              1,   0, 0,   0,                // 16-bit characters
                                              'C', 0, ':', 0, 'a', 0, 0, 0, 0x2D, 0x4E, 0, 0,  // U+4E2D
                                              0,   0};
  EXPECT_EQ(items::FileDropBytes({L"C:a", L"\u4E2D"}), expected);
}

TEST(FileDropBytes, OfNoPathsIsTheHeadAndANul) {
  const std::vector<std::uint8_t> bytes = items::FileDropBytes({});
  ASSERT_EQ(bytes.size(), 22u);
  EXPECT_EQ(bytes[20], 0);
  EXPECT_EQ(bytes[21], 0);
}

class FileListDataObject : public testing::Test {
 protected:
  win::ComPtr<IDataObject> object_ =
      items::MakeFileListDataObject({L"C:\\one.txt", L"C:\\dir\\zwei \u4E2D.txt"});
};

TEST_F(FileListDataObject, GivesTheFileListAsGlobalMemoryOfTheCaller) {
  FORMATETC format = Format(CF_HDROP);
  STGMEDIUM medium{};

  ASSERT_EQ(object_.get()->GetData(&format, &medium), S_OK);

  EXPECT_EQ(medium.tymed, static_cast<DWORD>(TYMED_HGLOBAL));
  EXPECT_EQ(medium.pUnkForRelease, nullptr);
  const auto drop = static_cast<HDROP>(medium.hGlobal);
  ASSERT_EQ(DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0), 2u);
  wchar_t path[100];
  DragQueryFileW(drop, 0, path, 100);
  EXPECT_STREQ(path, L"C:\\one.txt");
  DragQueryFileW(drop, 1, path, 100);
  EXPECT_STREQ(path, L"C:\\dir\\zwei \u4E2D.txt");
  ReleaseStgMedium(&medium);
}

TEST_F(FileListDataObject, GivesItAsOftenAsItIsAsked) {
  FORMATETC format = Format(CF_HDROP);
  for (int i = 0; i < 2; ++i) {
    STGMEDIUM medium{};
    ASSERT_EQ(object_.get()->GetData(&format, &medium), S_OK);
    EXPECT_EQ(DragQueryFileW(static_cast<HDROP>(medium.hGlobal), 0xFFFFFFFF, nullptr, 0), 2u);
    ReleaseStgMedium(&medium);
  }
}

TEST_F(FileListDataObject, TakesAnyMediumThatIncludesGlobalMemory) {
  FORMATETC format = Format(CF_HDROP, TYMED_HGLOBAL | TYMED_ISTREAM);
  EXPECT_EQ(object_.get()->QueryGetData(&format), S_OK);
}

TEST_F(FileListDataObject, RefusesOtherFormatsMediaAndAspects) {
  FORMATETC text = Format(CF_UNICODETEXT), stream = Format(CF_HDROP, TYMED_ISTREAM),
            icon = Format(CF_HDROP, TYMED_HGLOBAL, DVASPECT_ICON);
  EXPECT_EQ(object_.get()->QueryGetData(&text), DV_E_FORMATETC);
  EXPECT_EQ(object_.get()->QueryGetData(&stream), DV_E_TYMED);
  EXPECT_EQ(object_.get()->QueryGetData(&icon), DV_E_DVASPECT);
  STGMEDIUM medium{};
  EXPECT_EQ(object_.get()->GetData(&text, &medium), DV_E_FORMATETC);
}

TEST_F(FileListDataObject, ListsTheFileListAsItsOnlyFormat) {
  IEnumFORMATETC* formats = nullptr;
  ASSERT_EQ(object_.get()->EnumFormatEtc(DATADIR_GET, &formats), S_OK);
  const win::ComPtr<IEnumFORMATETC> owner(formats);
  FORMATETC found[2];
  ULONG count = 0;
  EXPECT_EQ(formats->Next(2, found, &count), S_FALSE);
  ASSERT_EQ(count, 1u);
  EXPECT_EQ(found[0].cfFormat, 15);
  EXPECT_EQ(found[0].tymed, static_cast<DWORD>(TYMED_HGLOBAL));
}

TEST_F(FileListDataObject, CannotBeWrittenTo) {
  IEnumFORMATETC* formats = nullptr;
  EXPECT_EQ(object_.get()->EnumFormatEtc(DATADIR_SET, &formats), E_NOTIMPL);
  FORMATETC format = Format(CF_HDROP);
  STGMEDIUM medium{};
  EXPECT_EQ(object_.get()->SetData(&format, &medium, FALSE), E_NOTIMPL);
  EXPECT_EQ(object_.get()->GetDataHere(&format, &medium), DATA_E_FORMATETC);
}

TEST_F(FileListDataObject, IsAnObjectOfItsTwoInterfacesAlone) {
  void* found = nullptr;
  EXPECT_EQ(object_.get()->QueryInterface(IID_IDataObject, &found), S_OK);
  EXPECT_EQ(found, object_.get());
  object_.get()->Release();
  EXPECT_EQ(object_.get()->QueryInterface(IID_IDropSource, &found), E_NOINTERFACE);
  EXPECT_EQ(found, nullptr);
}

TEST(FileListDataObjectWithoutPaths, OffersNothing) {
  const win::ComPtr<IDataObject> object = items::MakeFileListDataObject({});
  FORMATETC format = Format(CF_HDROP);
  STGMEDIUM medium{};
  EXPECT_EQ(object.get()->QueryGetData(&format), DV_E_FORMATETC);
  EXPECT_EQ(object.get()->GetData(&format, &medium), DV_E_FORMATETC);
}

}  // namespace
}  // namespace kestrelon::test
