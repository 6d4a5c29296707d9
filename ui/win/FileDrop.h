#pragma once

#include "app/base/Win32.h"

#include <objidl.h>
#include <shellapi.h>

#include <string>
#include <vector>

namespace kestrelon::win {

// File lists in the standard file-drop form (CF_HDROP, format 15): what files dragged from the file manager
// carry.

// Does the object offer a file list? Only asks; nothing is transferred.
bool OffersFiles(IDataObject& data);
// The paths that it carries, in its order, whole, of any length; empty names are passed over. Empty when it
// offers none. Throws std::system_error when it offers a list and then does not give it.
std::vector<std::wstring> DroppedPaths(IDataObject& data);
std::vector<std::wstring> DroppedPaths(HDROP list);

// Is this path a folder with no other attribute set at all? Only such folders are left out where files are
// dropped or pasted; a read-only or hidden folder, or a path that is gone, is taken like a file.
bool IsPlainFolder(const std::wstring& path);

}  // namespace kestrelon::win
