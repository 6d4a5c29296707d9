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

}  // namespace kestrelon::items
