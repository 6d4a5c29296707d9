#pragma once

#include "app/base/Win32.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "items/FileListDataObject.h"

namespace kestrelon::test {

// Puts bytes on the real clipboard, in one format, as another program would. Without bytes: empties it.
inline void SetClipboard(UINT format, const void* bytes, std::size_t size) {
  ASSERT_TRUE(OpenClipboard(nullptr));
  EmptyClipboard();
  if (size > 0) {
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    std::memcpy(GlobalLock(memory), bytes, size);
    GlobalUnlock(memory);
    EXPECT_NE(SetClipboardData(format, memory), nullptr);  // takes the memory over
  }
  CloseClipboard();
}

inline void CopyFiles(const std::vector<std::wstring>& paths) {
  const std::vector<std::uint8_t> bytes = items::FileDropBytes(paths);
  SetClipboard(CF_HDROP, bytes.data(), bytes.size());
}

inline void CopyText(std::wstring_view text) {
  const std::wstring closed(text);
  SetClipboard(CF_UNICODETEXT, closed.c_str(), (closed.size() + 1) * sizeof(wchar_t));
}

inline void EmptyTheClipboard() { SetClipboard(0, nullptr, 0); }

}  // namespace kestrelon::test
