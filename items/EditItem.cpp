#include "items/EditItem.h"

#include <algorithm>

#include "store/SharedConnection.h"
#include "ui/win/Boxes.h"

namespace kestrelon::items {

std::optional<std::size_t> RowOfItem(const win::ListView& list, std::wstring_view fileIndex) {
  const std::vector<win::ListRow>& rows = list.Rows();
  const auto found =
      std::find_if(rows.begin(), rows.end(), [&](const win::ListRow& row) { return row.Tag() == fileIndex; });
  if (found == rows.end()) return std::nullopt;
  return static_cast<std::size_t>(found - rows.begin());
}

bool ChangeItem(win::MainParts& parts, const std::wstring& statement) {
  const bool changed = win::Quietly([&] {
    store::Opened connection(parts.connection);
    connection->Execute(statement);
    connection.Close();
  });
  if (changed) win::MarkChanged(parts);
  return changed;
}

}  // namespace kestrelon::items
