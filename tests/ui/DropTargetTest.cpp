#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/TestDataObject.h"
#include "tests/ui/Host.h"
#include "ui/win/DropTarget.h"
#include "ui/win/Window.h"

namespace kestrelon::win {
namespace {

using Log = std::vector<std::wstring>;
using test::TestDataObject;

constexpr DWORD kCopyOrMove = DROPEFFECT_COPY | DROPEFFECT_MOVE;

int reported = 0;

struct DropTargetTest : testing::Test {
  DropTargetTest() {
    target.Register(host.Handle());
    target.events.dragOver = [this](IDataObject& dragged, POINT point) {
      log.push_back(L"over " + At(dragged, point));
      return effect;
    };
    target.events.dragLeave = [this] { log.push_back(L"leave"); };
    target.events.drop = [this](IDataObject& dropped, POINT point) {
      log.push_back(L"drop " + At(dropped, point));
      return effect;
    };
  }
  ~DropTargetTest() override { target.Revoke(); }
  std::wstring At(IDataObject& object, POINT point) {
    return (&object == &data ? L"" : L"other object ") + std::to_wstring(point.x) + L"," +
           std::to_wstring(point.y);
  }
  POINTL Screen(LONG x, LONG y) {
    POINT point{x, y};
    ClientToScreen(host.Handle(), &point);
    return {point.x, point.y};
  }
  // Each returns the effect that the source is told.
  DWORD Enter(LONG x, LONG y, DWORD allowed = kCopyOrMove) {
    EXPECT_EQ(target.Object()->DragEnter(&data, MK_LBUTTON, Screen(x, y), &allowed), S_OK);
    return allowed;
  }
  DWORD Over(LONG x, LONG y, DWORD allowed = kCopyOrMove) {
    EXPECT_EQ(target.Object()->DragOver(MK_LBUTTON, Screen(x, y), &allowed), S_OK);
    return allowed;
  }
  DWORD Drop(LONG x, LONG y, DWORD allowed = kCopyOrMove) {
    EXPECT_EQ(target.Object()->Drop(&data, 0, Screen(x, y), &allowed), S_OK);
    return allowed;
  }

  test::Host host;
  DropTarget target;
  TestDataObject data = TestDataObject::Files({L"C:\\a.txt"});
  DWORD effect = DROPEFFECT_COPY;
  Log log;
};

TEST_F(DropTargetTest, TellsTheDragInClientPoints) {
  EXPECT_EQ(Enter(5, 6), DWORD{DROPEFFECT_COPY});
  EXPECT_EQ(Over(-7, 8), DWORD{DROPEFFECT_COPY});
  EXPECT_EQ(Drop(9, 10), DWORD{DROPEFFECT_COPY});

  EXPECT_EQ(log, (Log{L"over 5,6", L"over -7,8", L"drop 9,10"}));
}

TEST_F(DropTargetTest, TellsThatTheDragLeft) {
  Enter(5, 6);
  EXPECT_EQ(target.Object()->DragLeave(), S_OK);
  EXPECT_EQ(log, (Log{L"over 5,6", L"leave"}));
}

TEST_F(DropTargetTest, HoldsTheDataUntilTheDragEnds) {
  Enter(5, 6);
  EXPECT_EQ(data.held, 1u);
  target.Object()->DragLeave();
  EXPECT_EQ(data.held, 0u);

  Enter(5, 6);
  Drop(5, 6);
  EXPECT_EQ(data.held, 0u);

  Enter(5, 6);
  Enter(5, 6);
  target.Revoke();
  EXPECT_EQ(data.held, 0u);
}

TEST_F(DropTargetTest, TakesAwayWhatTheSourceDoesNotAllow) {
  effect = DROPEFFECT_MOVE;
  EXPECT_EQ(Enter(5, 6, DROPEFFECT_COPY), DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(Over(5, 6, DROPEFFECT_MOVE | DROPEFFECT_LINK), DWORD{DROPEFFECT_MOVE});
  EXPECT_EQ(Drop(5, 6, DROPEFFECT_COPY), DWORD{DROPEFFECT_NONE});
}

TEST_F(DropTargetTest, TakesNothingOnADisabledControl) {
  EnableWindow(host.Handle(), FALSE);

  EXPECT_EQ(Enter(5, 6), DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(Over(5, 6), DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(Drop(5, 6), DWORD{DROPEFFECT_NONE});
  Enter(5, 6);
  target.Object()->DragLeave();

  EXPECT_EQ(log, Log{});
  EXPECT_EQ(data.held, 0u);
}

TEST_F(DropTargetTest, TellsOnceThatTheDragLeftAControlThatIsDisabledMeanwhile) {
  Enter(5, 6);
  EnableWindow(host.Handle(), FALSE);

  EXPECT_EQ(Over(5, 7), DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(Drop(5, 7), DWORD{DROPEFFECT_NONE});

  EXPECT_EQ(log, (Log{L"over 5,6", L"leave"}));
}

TEST_F(DropTargetTest, TakesNothingOnAControlWhoseWindowWaits) {
  const HWND control = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 50, 50, host.Handle(),
                                       nullptr, GetModuleHandleW(nullptr), nullptr);
  target.Register(control);
  EXPECT_EQ(Enter(5, 6), DWORD{DROPEFFECT_COPY});

  EnableWindow(host.Handle(), FALSE);  // a dialog is open; the control itself stays enabled

  ASSERT_TRUE(IsWindowEnabled(control));
  EXPECT_EQ(Over(5, 6), DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(Drop(5, 6), DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(log, (Log{L"over 5,6", L"leave"}));
  EnableWindow(host.Handle(), TRUE);
  target.Revoke();
}

TEST_F(DropTargetTest, TakesNothingWhileItsOwnerTakesNone) {
  bool takes = false;
  target.events.takes = [&] { return takes; };
  EXPECT_EQ(Enter(5, 6), DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(Drop(5, 6), DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(log, Log{});
  takes = true;
  EXPECT_EQ(Drop(5, 6), DWORD{DROPEFFECT_COPY});
}

TEST_F(DropTargetTest, LetsNoExceptionOut) {
  const LastResort before = SetLastResort([](const char* what) {
    EXPECT_STREQ(what, "went wrong");
    ++reported;
  });
  const Finally restore([&] { SetLastResort(before); });
  reported = 0;
  target.events.dragOver = [](IDataObject&, POINT) -> DWORD { throw std::runtime_error("went wrong"); };
  target.events.drop = target.events.dragOver;
  target.events.dragLeave = [] { throw std::runtime_error("went wrong"); };

  DWORD told = DROPEFFECT_COPY;
  EXPECT_EQ(target.Object()->DragEnter(&data, 0, Screen(5, 6), &told), E_UNEXPECTED);
  EXPECT_EQ(told, DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(target.Object()->DragLeave(), E_UNEXPECTED);
  told = DROPEFFECT_COPY;
  EXPECT_EQ(target.Object()->Drop(&data, 0, Screen(5, 6), &told), E_UNEXPECTED);
  EXPECT_EQ(told, DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(reported, 3);
}

TEST_F(DropTargetTest, DoesNothingAnyMoreOnceRevoked) {
  void* found = nullptr;
  ASSERT_EQ(target.Object()->QueryInterface(IID_IDropTarget, &found), S_OK);
  const ComPtr<IDropTarget> kept(static_cast<IDropTarget*>(found));
  Enter(5, 6);
  log.clear();

  target.Revoke();

  EXPECT_EQ(target.Object(), nullptr);
  DWORD told = DROPEFFECT_COPY;
  EXPECT_EQ(kept.get()->DragEnter(&data, 0, {5, 6}, &told), S_OK);
  EXPECT_EQ(told, DWORD{DROPEFFECT_NONE});
  told = DROPEFFECT_COPY;
  EXPECT_EQ(kept.get()->Drop(&data, 0, {5, 6}, &told), S_OK);
  EXPECT_EQ(told, DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(data.held, 0u);
}

TEST_F(DropTargetTest, MayBeRevokedByItsOwnEvents) {
  target.events.dragOver = [this](IDataObject& dragged, POINT) {
    target.Revoke();
    FORMATETC format{CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    EXPECT_EQ(dragged.QueryGetData(&format), S_OK);  // still there
    return DWORD{DROPEFFECT_COPY};
  };
  DWORD told = DROPEFFECT_COPY;

  EXPECT_EQ(target.Object()->DragEnter(&data, 0, Screen(5, 6), &told), S_OK);

  EXPECT_EQ(target.Object(), nullptr);
  EXPECT_EQ(data.held, 0u);
}

TEST_F(DropTargetTest, WithoutEventsTakesNothing) {
  target.events = {};
  EXPECT_EQ(Enter(5, 6), DWORD{DROPEFFECT_NONE});
  EXPECT_EQ(Drop(5, 6), DWORD{DROPEFFECT_NONE});
}

TEST_F(DropTargetTest, RefusesCallsWithoutAnEffectOrData) {
  DWORD told = DROPEFFECT_COPY;
  EXPECT_EQ(target.Object()->DragEnter(nullptr, 0, {5, 6}, &told), E_INVALIDARG);
  EXPECT_EQ(target.Object()->DragOver(0, {5, 6}, nullptr), E_INVALIDARG);
  EXPECT_EQ(target.Object()->Drop(&data, 0, {5, 6}, nullptr), E_INVALIDARG);
}

TEST_F(DropTargetTest, IsADropTargetAndNothingElse) {
  void* found = &found;
  EXPECT_EQ(target.Object()->QueryInterface(IID_IDataObject, &found), E_NOINTERFACE);
  EXPECT_EQ(found, nullptr);
  ASSERT_EQ(target.Object()->QueryInterface(IID_IUnknown, &found), S_OK);
  EXPECT_EQ(found, target.Object());
  static_cast<IUnknown*>(found)->Release();
}

TEST_F(DropTargetTest, CanBeRegisteredAgainElsewhere) {
  test::Host other;
  target.Register(other.Handle());

  DropTarget second;
  second.Register(host.Handle());  // free again

  EXPECT_THROW(DropTarget().Register(other.Handle()), std::system_error);
  target.Revoke();
  DropTarget().Register(other.Handle());
}

TEST_F(DropTargetTest, ThrowsForAWindowThatIsNone) {
  DropTarget lost;
  EXPECT_THROW(lost.Register(reinterpret_cast<HWND>(INT_PTR{0x7FFF0})), std::system_error);
  EXPECT_EQ(lost.Object(), nullptr);
}

}  // namespace
}  // namespace kestrelon::win
