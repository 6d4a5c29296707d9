#include "items/EditItem.h"

#include <algorithm>

#include "app/base/File.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "store/Schema.h"
#include "store/SharedConnection.h"
#include "ui/win/StoredText.h"

namespace kestrelon::items {

std::optional<std::size_t> RowOfItem(const win::ListView& list, std::wstring_view fileIndex) {
  const std::vector<win::ListRow>& rows = list.Rows();
  const auto found =
      std::find_if(rows.begin(), rows.end(), [&](const win::ListRow& row) { return row.Tag() == fileIndex; });
  if (found == rows.end()) return std::nullopt;
  return static_cast<std::size_t>(found - rows.begin());
}

std::optional<std::wstring> ChangeItem(win::MainParts& parts,
                                       const std::function<std::wstring()>& statement) {
  try {
    store::Opened connection(parts.connection);
    connection->Execute(statement());
    connection.Close();
  } catch (const std::exception& error) {
    return Widen(error.what());
  }
  win::MarkChanged(parts);
  return std::nullopt;
}

void StoreIn(const win::MainParts& parts, const win::FormControl& textBox, std::u16string_view column) {
  win::TakeStorableText(textBox.window, store::LongestText(column),
                        lang::Message(parts.program, lang::kNoDoubleQuote));
}

}  // namespace kestrelon::items
