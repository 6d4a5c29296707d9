#pragma once

#include "app/base/Win32.h"

#include <objidl.h>

#include <cstdint>
#include <string>
#include <vector>

#include "ui/win/Handles.h"

namespace kestrelon::items {

// The bytes of a file list in the standard file-drop form (CF_HDROP): a DROPFILES head, the paths each closed
// by a NUL, and a last NUL.
std::vector<std::uint8_t> FileDropBytes(const std::vector<std::wstring>& paths);

// A data object that offers the paths as CF_HDROP; without paths it offers nothing at all.
win::ComPtr<IDataObject> MakeFileListDataObject(const std::vector<std::wstring>& paths);

// Drags the paths with the left button, which is down, to wherever it is released; they can be copied there
// and nothing else. Returns when the drag is over, with the effect that the drop had.
DWORD DragFilesOut(const std::vector<std::wstring>& paths);

}  // namespace kestrelon::items
