#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "ui/win/MainParts.h"

namespace kestrelon::items {

// What the commands that edit items have in common.

// The columns of the item list.
inline constexpr std::size_t kAliasColumn = 1, kFileNameColumn = 2, kPathColumn = 3, kTimeColumn = 4,
                             kCommentColumn = 5;

// The row that shows an item now; nullopt when the list no longer shows it.
std::optional<std::size_t> RowOfItem(const win::ListView& list, std::wstring_view fileIndex);

// Runs one statement that changes an item. A failure is not told to the user: false, and nothing has changed.
bool ChangeItem(win::MainParts& parts, const std::wstring& statement);

}  // namespace kestrelon::items
