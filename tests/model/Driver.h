#pragma once

#include "app/base/Win32.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/model/Model.h"
#include "tests/model/TestProgram.h"
#include "ui/win/Form.h"

namespace kestrelon::model {

// Does in the real window what a plan says, as the user would: with mouse and key messages, menu commands and
// the controls of the dialogs. Not so: what OLE brings is handed to the window's drop targets, for there is
// no drag of the system's in a test, and a drag that the list begins is known to the window by its flag.
// Message boxes and pickers are answered by the world around the program.
class Driver {
 public:
  explicit Driver(TestProgram& program) : program_(program) {}

  void Do(const Plan& plan, const State& after);

 private:
  void Categories(const Plan& plan);
  void Imports(const Plan& plan);
  void List(const Plan& plan);
  void Items(const Plan& plan);
  void Slots(const Plan& plan, const State& after);

  void EndEdit(const Plan& plan);
  void DragBranch(const Plan& plan);
  void Drop(win::Form& form, const Plan& plan);
  void DropOn(bool tree, POINT client, const std::vector<std::wstring>& paths);
  void Clipboard(const Plan& plan);
  void Alias(const Plan& plan);
  void Comment(const Plan& plan);
  void Properties(const Plan& plan);
  void ChangeCategory(const Plan& plan);
  void SlotDialog(const Plan& plan, bool save);
  void CheckOffer(win::Form& loadDialog);
  void LoadUnsaved(const Plan& plan);
  void LoadDamaged(const Plan& plan);
  void Close(bool stays);
  void Exit(const Plan& plan);
  void EndSession(const Plan& plan);
  void StartAnew(const Plan& plan);
  // A search window, opened, filled in, its button pressed, closed.
  void Search(const Plan& plan, const std::wstring& name, bool list);

  // Runs `open` and hands the dialog of that name, which comes up in the meantime, to `act`; closes it
  // afterwards.
  void InDialog(const std::wstring& name, const std::function<void()>& open,
                const std::function<void(win::Form&)>& act);
  void Command(std::wstring_view name);
  void PressToolbar(int button);
  void Click(HWND window, POINT point, bool right = false, WPARAM keys = 0);
  void OpenBranches();  // of the whole tree
  POINT PointOf(const std::wstring& key);
  POINT PointInSight(const std::wstring& key);  // without scrolling
  POINT PointOfRow(std::size_t row);
  POINT EmptyTreePoint();
  HWND ControlOf(win::Form& form, std::wstring_view name, int index = -1);
  void Press(win::Form& form, std::wstring_view name, int index = -1);
  void Type(HWND edit, const std::wstring& text);
  win::Form* FormNamed(const std::wstring& name);
  HWND TreeWindow() { return program_.Parts().TreeView1.Handle(); }
  HWND ListWindow() { return program_.Parts().ListView1.Handle(); }

  TestProgram& program_;
};

}  // namespace kestrelon::model
