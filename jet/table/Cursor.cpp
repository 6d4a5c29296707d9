#include "jet/table/Cursor.h"

#include "jet/page/DataPage.h"
#include "jet/row/TextCodec.h"
#include "jet/table/TableInternal.h"

namespace kestrelon::jet {

Cursor::Cursor(const TableInternal& table) : table_(&table) { table.CheckSize(); }

bool Cursor::Next() {
  const std::vector<std::uint32_t>& pages = table_->rows.Pages();
  for (;;) {
    if (slot_ < 0) {
      if (position_ >= pages.size()) {
        row_ = nullptr;
        size_ = 0;
        return false;
      }
      page_ = pages[position_];
    }
    const std::uint8_t* page = table_->rows.Read(page_);
    const auto slots = static_cast<int>(data_page::SlotCount(page));
    while (++slot_ < slots) {
      const auto slot = static_cast<std::size_t>(slot_);
      const std::uint16_t entry = data_page::Slot(page, slot);
      if ((entry & kSlotHidden) != 0) continue;
      if (slot >= kMostSlots) ThrowCorrupt("too many rows on a page", page_);
      if ((entry & kSlotMoved) != 0) {
        const RowPlace place = FindRow(*table_, MakeRowId(page_, slot));
        row_ = place.bytes;
        size_ = place.size;
      } else {
        row_ = page + (entry & kSlotOffset);
        size_ = data_page::End(page, slot) - (entry & kSlotOffset);
      }
      return true;
    }
    ++position_;
    slot_ = -1;
  }
}

void Cursor::MoveTo(RowId row) {
  const RowPlace place = FindRow(*table_, row);
  page_ = place.homePage;
  slot_ = static_cast<int>(place.homeSlot);
  row_ = place.bytes;
  size_ = place.size;
}

RowId Cursor::Row() const { return MakeRowId(page_, static_cast<std::size_t>(slot_)); }

void Cursor::Read(std::size_t column, Value& value) const {
  ReadField(*table_, RowView(row_, size_, table_->HasVariableColumns(), page_), column, value);
}

bool Cursor::ReadText(std::size_t column, std::u16string& text) const {
  text.clear();
  return AppendText(column, text);
}

bool Cursor::AppendText(std::size_t column, std::u16string& text) const {
  const RowView row(row_, size_, table_->HasVariableColumns(), page_);
  const StoredColumn& stored = table_->stored[column];
  if (!row.Has(stored.number)) return false;
  if (stored.Is(ColumnType::kText)) {
    AppendDecoded(row.Field(stored), text, page_);
    return true;
  }
  std::vector<std::uint8_t> buffer;
  const auto field = StoredField(*table_, row, column, buffer);
  AppendDecoded(*field, text, page_);
  return true;
}

}  // namespace kestrelon::jet
