#include "ui/win/Menus.h"

#include <utility>

#include "app/base/File.h"

namespace kestrelon::win {

void Menus::Create(Form& form, const MenuLine* lines, std::size_t count, UINT firstId) {
  form_ = &form;
  entries_.clear();
  names_.clear();
  UniqueMenu bar(::CreateMenu());
  if (!bar) ThrowLastError(L"CreateMenu");
  std::vector<HMENU> open{bar.get()};  // by depth: the menu that entries of that depth go to
  std::vector<std::wstring> above(1);  // and its name
  for (std::size_t i = 0; i < count; ++i) {
    const MenuLine& line = lines[i];
    const auto depth = static_cast<std::size_t>(line.depth);
    open.resize(depth + 1);
    above.resize(depth + 1);
    MENUITEMINFOW item{};
    item.cbSize = sizeof item;
    item.fMask = MIIM_ID | MIIM_FTYPE;
    item.wID = firstId + static_cast<UINT>(i);
    item.fType = line.name == nullptr ? MFT_SEPARATOR : MFT_STRING;
    if (line.name != nullptr) {
      item.fMask |= MIIM_STRING;
      item.dwTypeData = const_cast<wchar_t*>(line.caption);  // the call only reads it
    }
    const bool hasSubmenu = i + 1 < count && lines[i + 1].depth > line.depth;
    if (hasSubmenu || depth == 0) {
      item.fMask |= MIIM_SUBMENU;
      item.hSubMenu = ::CreatePopupMenu();  // owned by the entry once that is inserted
      open.push_back(item.hSubMenu);
      above.emplace_back(line.name);
    }
    const HMENU menu = open[depth];
    const auto position = static_cast<UINT>(::GetMenuItemCount(menu));
    if (!::InsertMenuItemW(menu, position, TRUE, &item)) ThrowLastError(L"InsertMenuItemW");
    if (line.name == nullptr) continue;
    entries_[line.name] = {menu, position, item.wID, item.hSubMenu, above[depth]};
    names_[item.wID] = line.name;
    FormControl control;
    control.name = control.tag = line.name;
    control.kind = ControlKind::kMenu;
    control.menu = menu;
    control.menuPosition = position;
    control.id = item.wID;
    form.AddExisting(std::move(control));
  }
  if (!::SetMenu(form.Handle(), bar.get())) ThrowLastError(L"SetMenu");
  bar.release();  // the window destroys its menu
}

const Menus::Entry* Menus::Find(std::wstring_view name) const {
  const auto found = entries_.find(std::wstring(name));
  return found == entries_.end() ? nullptr : &found->second;
}

UINT Menus::IdOf(std::wstring_view name) const {
  const Entry* entry = Find(name);
  return entry == nullptr ? 0 : entry->id;
}

std::wstring_view Menus::NameOf(UINT id) const {
  const auto found = names_.find(id);
  return found == names_.end() ? std::wstring_view() : found->second;
}

void Menus::Enable(std::wstring_view name, bool enabled) {
  const Entry* entry = Find(name);
  if (entry == nullptr) return;
  enabled = enabled && !IsInert(name);
  ::EnableMenuItem(entry->menu, entry->position, MF_BYPOSITION | (enabled ? MF_ENABLED : MF_GRAYED));
}

UINT Menus::StateOf(std::wstring_view name) const {
  const Entry* entry = Find(name);
  MENUITEMINFOW item{};
  item.cbSize = sizeof item;
  item.fMask = MIIM_STATE;
  if (entry != nullptr) ::GetMenuItemInfoW(entry->menu, entry->position, TRUE, &item);
  return item.fState;
}

bool Menus::IsEnabled(std::wstring_view name) const {
  return Find(name) != nullptr && (StateOf(name) & MFS_DISABLED) == 0;
}

bool Menus::IsWithinReach(std::wstring_view name) const {
  const Entry* entry = Find(name);
  return entry != nullptr && IsEnabled(name) && (entry->parent.empty() || IsWithinReach(entry->parent));
}

void Menus::SetInert(std::wstring_view name) {
  inert_.emplace(name);
  Enable(name, false);
}

bool Menus::IsInert(std::wstring_view name) const { return inert_.find(name) != inert_.end(); }

void Menus::Check(std::wstring_view name, bool checked) {
  if (const Entry* entry = Find(name))
    ::CheckMenuItem(entry->menu, entry->position,
                    static_cast<UINT>(MF_BYPOSITION | (checked ? MF_CHECKED : MF_UNCHECKED)));
}

bool Menus::IsChecked(std::wstring_view name) const { return (StateOf(name) & MFS_CHECKED) != 0; }

void Menus::PopUp(std::wstring_view name, POINT screen) const {
  const Entry* entry = Find(name);
  if (entry == nullptr || entry->submenu == nullptr || !IsWithinReach(name)) return;
  if (!::IsWindowEnabled(form_->Handle())) return;  // a dialog is open
  ::TrackPopupMenu(entry->submenu, TPM_LEFTALIGN | TPM_TOPALIGN | TPM_RIGHTBUTTON, screen.x, screen.y, 0,
                   form_->Handle(), nullptr);
}

std::wstring Menus::PlainCaption(std::wstring_view name) const {
  const FormControl* control = form_ == nullptr ? nullptr : form_->Find(name);
  if (control == nullptr) return {};
  std::wstring plain;
  const std::wstring caption = form_->ControlCaption(*control);
  for (std::size_t i = 0; i < caption.size(); ++i) {
    if (caption[i] == L'&' && ++i == caption.size()) break;  // "&&" stands for one "&"
    plain.push_back(caption[i]);
  }
  plain.resize(plain.find_last_not_of(L". ") + 1);  // npos + 1 is 0
  return plain;
}

}  // namespace kestrelon::win
