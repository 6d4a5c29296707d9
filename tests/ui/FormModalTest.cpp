#include <gtest/gtest.h>

#include "tests/ui/Host.h"
#include "tests/ui/TestForm.h"

namespace kestrelon::win {
namespace {

using test::OnWindow;
using test::TestForm;

// Runs an action inside the modal loop of a form.
OnWindow InLoopOf(TestForm& form, std::function<void()> act) {
  return OnWindow([&form](HWND window) { return window == form.Handle(); }, [act](HWND) { act(); });
}

TEST(ShowModal, DisablesTheOwnerAndEnablesItAgain) {
  test::Host host;
  TestForm form(host.Handle());
  bool ownerEnabled = true, formEnabled = false;
  const OnWindow inside = InLoopOf(form, [&] {
    ownerEnabled = IsWindowEnabled(host.Handle());
    formEnabled = IsWindowEnabled(form.Handle());
    form.Close();
  });

  form.ShowModal(host.Handle());

  EXPECT_TRUE(inside.Done());
  EXPECT_FALSE(ownerEnabled);
  EXPECT_TRUE(formEnabled);
  EXPECT_TRUE(IsWindowEnabled(host.Handle()));
  EXPECT_EQ(form.Handle(), nullptr);
}

TEST(ShowModal, EnablesTheOwnerBeforeTheWindowGoes) {
  test::Host host;
  TestForm form(host.Handle());
  bool enabledAtTheEnd = false;
  // The owner becomes the active window while the form is being destroyed.
  host.beforeMessage = [&](UINT message) {
    if (message == WM_ACTIVATE && form.Handle() != nullptr) enabledAtTheEnd = IsWindowEnabled(host.Handle());
  };
  const OnWindow inside = InLoopOf(form, [&] {
    enabledAtTheEnd = false;
    form.Close();
  });

  form.ShowModal(host.Handle());

  EXPECT_TRUE(enabledAtTheEnd);
  EXPECT_EQ(GetActiveWindow(), host.Handle());
}

TEST(ShowModal, PutsTheFocusOnTheFirstControlAndBackAfterwards) {
  test::Host host;
  FormControl& text = host.AddControl({L"Text1", -1, ControlKind::kTextBox, L"", L"", {0, 0, 900, 300}});
  host.AddControl({L"Text2", -1, ControlKind::kTextBox, L"", L"", {0, 600, 900, 300}});
  FormControl& last = host.AddControl({L"Text3", -1, ControlKind::kTextBox, L"", L"", {0, 900, 900, 300}});
  SetFocus(last.window);
  TestForm form(host.Handle());
  HWND focus = nullptr;
  const OnWindow inside = InLoopOf(form, [&] {
    focus = GetFocus();
    form.Close();
  });
  const HWND expected = form.Of(L"Text1");

  form.ShowModal(host.Handle());

  EXPECT_EQ(focus, expected);
  EXPECT_EQ(GetFocus(), last.window);
  EXPECT_NE(GetFocus(), text.window);
}

TEST(ShowModal, LeavesAFocusThatTheFormHasChosen) {
  test::Host host;
  TestForm form(host.Handle());
  SetFocus(form.Of(L"Command2", 1));
  bool kept = false;
  const OnWindow inside = InLoopOf(form, [&] {
    kept = GetFocus() == form.Of(L"Command2", 1);
    form.Close();
  });

  form.ShowModal(host.Handle());

  EXPECT_TRUE(kept);
}

TEST(ShowModal, EndsByAClickAfterTheClicksHandler) {
  test::Host host;
  TestForm form(host.Handle());
  std::wstring name;
  form.onControl = [&](FormControl& control, UINT code) {
    if (code != BN_CLICKED) return;
    form.Close();
    name = control.name;  // the control is still there
  };
  const OnWindow inside = InLoopOf(form, [&] { PostMessageW(form.Of(L"Command1"), BM_CLICK, 0, 0); });

  form.ShowModal(host.Handle());

  EXPECT_EQ(name, L"Command1");
  EXPECT_EQ(form.Handle(), nullptr);
}

TEST(ShowModal, EndsByEscapeAndEnter) {
  test::Host host;
  for (const WPARAM key : {VK_ESCAPE, VK_RETURN}) {
    TestForm form(host.Handle());
    form.SetDefaultButton(*form.Find(L"Command1"));
    form.SetCancelButton(*form.Find(L"Command2", 0));
    std::wstring pressed;
    form.onControl = [&](FormControl& control, UINT code) {
      if (code != BN_CLICKED) return;
      pressed = control.name;
      form.Close();
    };
    const OnWindow inside = InLoopOf(form, [&] { PostMessageW(GetFocus(), WM_KEYDOWN, key, 1); });

    form.ShowModal(host.Handle());

    EXPECT_EQ(pressed, key == VK_ESCAPE ? L"Command2" : L"Command1");
  }
}

TEST(ShowModal, EndsByTheCloseButtonOfTheTitle) {
  test::Host host;
  TestForm form(host.Handle());
  const OnWindow inside = InLoopOf(form, [&] { PostMessageW(form.Handle(), WM_CLOSE, 0, 0); });
  form.ShowModal(host.Handle());
  EXPECT_EQ(form.Handle(), nullptr);
  EXPECT_TRUE(IsWindowEnabled(host.Handle()));
}

TEST(ShowModal, EndsWithItsOwner) {
  test::Host host;
  TestForm form(host.Handle());
  const OnWindow inside = InLoopOf(form, [&] { host.Destroy(); });
  form.ShowModal(host.Handle());
  EXPECT_EQ(form.Handle(), nullptr);
}

TEST(ShowModal, ToolWindowsOfTheProgramWaitToo) {
  test::Host host;
  TestForm tool(host.Handle());
  ShowWindow(tool.Handle(), SW_SHOW);
  TestForm form(host.Handle());
  bool enabled = true;
  const OnWindow inside = InLoopOf(form, [&] {
    enabled = IsWindowEnabled(tool.Handle());
    form.Close();
  });

  form.ShowModal(host.Handle());

  EXPECT_FALSE(enabled);
  EXPECT_TRUE(IsWindowEnabled(tool.Handle()));
}

TEST(ShowModal, AWindowThatWasDisabledBeforeStaysDisabled) {
  test::Host host;
  EnableWindow(host.Handle(), FALSE);
  TestForm form(host.Handle());
  const OnWindow inside = InLoopOf(form, [&] { form.Close(); });
  form.ShowModal(host.Handle());
  EXPECT_FALSE(IsWindowEnabled(host.Handle()));
}

TEST(ShowModal, NestsAndTheInnerFormEndsFirst) {
  test::Host host;
  TestForm outer(host.Handle());
  TestForm inner(outer.Handle());
  bool outerEnabledInside = true, outerEnabledAfter = false, hostEnabledAfter = true;
  const OnWindow insideInner = InLoopOf(inner, [&] {
    outerEnabledInside = IsWindowEnabled(outer.Handle());
    inner.Close();
  });
  const OnWindow insideOuter = InLoopOf(outer, [&] {
    inner.ShowModal(outer.Handle());
    outerEnabledAfter = IsWindowEnabled(outer.Handle());
    hostEnabledAfter = IsWindowEnabled(host.Handle());
    outer.Close();
  });

  outer.ShowModal(host.Handle());

  EXPECT_FALSE(outerEnabledInside);
  EXPECT_TRUE(outerEnabledAfter);
  EXPECT_FALSE(hostEnabledAfter);
  EXPECT_TRUE(IsWindowEnabled(host.Handle()));
}

TEST(ShowModal, TheEndOfTheProgramEndsItAndReachesTheOuterLoop) {
  test::Host host;
  TestForm form(host.Handle());
  const OnWindow inside = InLoopOf(form, [] { PostQuitMessage(7); });

  form.ShowModal(host.Handle());

  EXPECT_EQ(form.Handle(), nullptr);
  MSG message{};
  EXPECT_FALSE(PumpOneMessage(message));
  EXPECT_EQ(message.wParam, 7u);
  EXPECT_TRUE(
      PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));  // posted again; not for the other tests
}

TEST(DoEvents, HandlesWhatWaitsAndLeavesTheEndOfTheProgramWaiting) {
  test::Host host;
  host.AddControl({L"Text1", -1, ControlKind::kTextBox, L"", L"", {0, 0, 900, 300}});
  PostMessageW(host.Handle(), WM_COMMAND, 42, 0);
  DoEvents();
  EXPECT_EQ(host.commands, std::vector<UINT>{42});

  PostQuitMessage(3);
  DoEvents();

  MSG message{};
  EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
  EXPECT_EQ(message.wParam, 3u);
}

}  // namespace
}  // namespace kestrelon::win
