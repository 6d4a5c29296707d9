#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "ui/win/Form.h"
#include "ui/win/MainParts.h"

namespace kestrelon::items {

// What the commands that edit items have in common.

// The columns of the item list.
inline constexpr std::size_t kAliasColumn = 1, kFileNameColumn = 2, kPathColumn = 3, kTimeColumn = 4,
                             kCommentColumn = 5;

// The row that shows an item now; nullopt when the list no longer shows it.
std::optional<std::size_t> RowOfItem(const win::ListView& list, std::wstring_view fileIndex);

// Runs the one statement that changes an item, which the function makes. Shows nothing. Returns what went
// wrong, for the user's eyes; nothing has changed then.
std::optional<std::wstring> ChangeItem(win::MainParts& parts, const std::function<std::wstring()>& statement);

// For every text box whose text goes into a column of the items' table: it takes what the column takes, see
// win::TakeStorableText.
void StoreIn(const win::MainParts& parts, const win::FormControl& textBox, std::u16string_view column);

}  // namespace kestrelon::items
