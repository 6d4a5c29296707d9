#pragma once

#include <array>
#include <string>

#include "store/Store.h"
#include "ui/win/Form.h"
#include "ui/win/MainParts.h"

namespace kestrelon::app {

using store::kSlots;

// "Data2": the settings key of a slot's label.
std::wstring SlotKey(int slot);
// "2007-05-14 21:09:33".
std::wstring TimeText(const SYSTEMTIME& time);
// "3. 2007-05-14 21:09:33" for slot 2.
std::wstring SlotLabel(int slot, const SYSTEMTIME& time);

// What the Save and the Load dialog have in common: four buttons with the slots' labels, of which the focused
// one has the larger font, a line that says what will happen, and a Cancel button.
class SlotDialog : public win::Form {
 public:
  SlotDialog(std::wstring name, win::MainParts& parts) : Form(std::move(name)), parts_(parts) {}
  // Makes the window and runs it over `owner` until it is closed.
  void Show(HWND owner);

 protected:
  void CreateControls(const std::wstring& caption, const wchar_t* explanation);
  // Makes what stands below the slots' buttons, from `top` on, and returns where that ends.
  virtual double CreateMore(double top) { return top; }
  // The texts of what CreateMore() made, once the language's are applied.
  virtual void ShowMore() {}
  // The button that has the focus when the dialog opens.
  virtual win::FormControl& First() { return Slot(0); }
  win::FormControl& Slot(int slot) { return *slots_[static_cast<std::size_t>(slot)]; }
  void OnControl(win::FormControl& control, UINT code) override;
  // The caption and the line above the buttons, as they are without a language file.
  virtual std::wstring BuiltInCaption() const = 0;
  virtual const wchar_t* BuiltInExplanation() const = 0;
  virtual void Command2_Click(int slot) = 0;
  // So that what is about to be chosen stands out; the other buttons get the smaller one.
  void GiveLargerFont(const win::FormControl& focused);
  win::MainParts& parts_;

 private:
  std::array<win::FormControl*, kSlots> slots_{};
};

// Saves the collection into the slot that is chosen.
class Save : public SlotDialog {
 public:
  explicit Save(win::MainParts& parts) : SlotDialog(L"Save", parts) {}

 protected:
  std::wstring BuiltInCaption() const override { return L"Save Database"; }
  const wchar_t* BuiltInExplanation() const override { return L"Save all categories and items into:"; }
  void Command2_Click(int slot) override;
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  bool busy_ = false;  // the pointer is the hourglass
};

// Brings the slot that is chosen, or the unsaved collection, into the working database.
class Load : public SlotDialog {
 public:
  explicit Load(win::MainParts& parts) : SlotDialog(L"Load", parts) {}

 protected:
  std::wstring BuiltInCaption() const override { return L"Load Database"; }
  const wchar_t* BuiltInExplanation() const override { return L"Load all categories and items from:"; }
  void Command2_Click(int slot) override;
  void OnControl(win::FormControl& control, UINT code) override;
  double CreateMore(double top) override;
  void ShowMore() override;
  win::FormControl& First() override;

 private:
  void LoadFrom(const std::wstring& fileName);
  win::FormControl* unsaved_ = nullptr;  // the button of the unsaved collection; null when there is none
};

}  // namespace kestrelon::app
