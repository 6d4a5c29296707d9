#include "app/MainForm.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "app/CloseAllWindows.h"
#include "app/MainFormTables.h"
#include "app/Pictures.h"
#include "app/SingleInstance.h"
#include "app/SlotDialog.h"
#include "import/ListDrop.h"
#include "items/ItemCommands.h"
#include "items/ShowData.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "packaging/resource.h"
#include "store/Store.h"
#include "tree/NodeCommands.h"
#include "tree/Rearrange.h"
#include "tree/TreeDrop.h"
#include "ui/win/Boxes.h"

namespace kestrelon::app {
namespace {

constexpr UINT kTree = 101, kList = 102, kStatus = 103, kToolbarId = 104, kText1 = 105;
constexpr UINT kFirstToolbarCommand = 200;  // + the button's number
constexpr UINT kFirstMenuCommand = 300;
constexpr UINT kTrayMessage = WM_APP + 1;

constexpr double kBarWidth = 75;
constexpr double kInitialWidth = 13500, kInitialHeight = 8400;
constexpr double kMinimumWidth = 6000, kMinimumHeight = 4200;
constexpr double kPanelWidths[] = {6300, 3000};
constexpr double kIconColumnWidth = 420;
constexpr double kPictureSize = 240;         // 16 pixels at 96 DPI
constexpr double kToolbarPictureSize = 360;  // 24
constexpr const wchar_t* kColumnCaptions[5] = {L"Alias", L"File name", L"Local File", L"Insert time",
                                               L"Comment"};
constexpr double kDesignWidths[5] = {1874.835, 2234.835, 7409.764, 1440, 1440};
constexpr int kWidestColumn = 20000;  // pixels; what a settings file may ask for

// The dialog or the box that keeps the main window disabled. The one that was active last is mostly it, but
// not where that window itself was made the active one meanwhile.
HWND DialogInFront(HWND main) {
  HWND front = ::GetLastActivePopup(main);
  if (front != main && ::IsWindowEnabled(front)) return front;
  ::EnumThreadWindows(
      ::GetCurrentThreadId(),
      [](HWND window, LPARAM result) -> BOOL {
        const bool titled = (::GetWindowLongPtrW(window, GWL_STYLE) & WS_CAPTION) == WS_CAPTION;
        if (!titled || ::GetWindow(window, GW_OWNER) == nullptr || !::IsWindowEnabled(window)) return TRUE;
        *reinterpret_cast<HWND*>(result) = window;
        return FALSE;
      },
      reinterpret_cast<LPARAM>(&front));
  return front;
}

}  // namespace

MainForm::MainForm(Program& program, OutsideWorld& world, ui::cSysTray::Notify notify)
    : Form(L"MainForm"),
      program_(program),
      world_(world),
      settings_(program.settingsFile),
      connection_(program.connectionString),
      parts_{program_,   world_,      settings_, *this,  TreeView1_,
             ListView1_, StatusBar1_, Toolbar1_, menus_, connection_},
      cSysTray1_(notify ? ui::cSysTray(std::move(notify)) : ui::cSysTray()),
      magnets_(world.cursorPosition, world.workArea) {
  parts_.magnets = &magnets_;
}

MainForm::~MainForm() { Destroy(); }

void MainForm::Load() {
  win::WindowSpec spec;
  spec.className = kMainFormClass;
  spec.caption = program_.productName;
  spec.style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
  const RECT place = CentredOnScreen(::GetDpiForSystem());
  spec.x = place.left;
  spec.y = place.top;
  spec.width = place.right - place.left;
  spec.height = place.bottom - place.top;
  Create(spec);
  dpi_ = Dpi();
  if (dpi_ != ::GetDpiForSystem()) FitToDpi();
  CreateControls();
  WireEvents();
  loaded_ = true;
  Form_Load();
}

void MainForm::CreateControls() {
  std::vector<win::MenuLine> lines;
  for (std::size_t i = 0; i < MainFormTables::kCommandCount; ++i) {
    const MainFormTables::Command& command = MainFormTables::kCommands[i];
    lines.push_back({command.depth, command.name, command.caption});
  }
  menus_.Create(*this, lines.data(), lines.size(), kFirstMenuCommand);
  for (std::size_t i = 0; i < MainFormTables::kCommandCount; ++i) {
    const MainFormTables::Command& command = MainFormTables::kCommands[i];
    if (command.name && !command.handler && !command.submenu) menus_.SetInert(command.name);
  }

  std::vector<win::Toolbar::Button> buttons;
  for (std::size_t i = 0; i < MainFormTables::kToolbar.size(); ++i) {
    const MainFormTables::ToolbarButton& button = MainFormTables::kToolbar[i];
    const UINT id = button.image < 0 ? 0 : kFirstToolbarCommand + static_cast<UINT>(i) + 1;
    buttons.push_back({id, button.image, button.treeTip});
  }
  // Holds the focus when neither pane shall have it; there is nothing to see or to type in.
  parts_.Text1 =
      ::CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE | ES_READONLY, -20, -20, 1, 1, Handle(),
                        reinterpret_cast<HMENU>(UINT_PTR{kText1}), ::GetModuleHandleW(nullptr), nullptr);
  Toolbar1_.Create(Handle(), kToolbarId, buttons, win::UniqueImageList());
  TreeView1_.Create(Handle(), kTree);
  Picture1_.CreateIn(Handle());
  ListView1_.Create(Handle(), kList);
  StatusBar1_.Create(Handle(), kStatus);
  LoadPicturesForDpi();

  // Columns come into a list of its right width: in a narrow one each of them makes the scroll bar anew.
  ArrangeControls();
  // The icon column first, without caption and of fixed width.
  ListView1_.AddColumn(L"", win::PixelsFromTwips(kIconColumnWidth, dpi_), true);
  for (int i = 0; i < 5; ++i) {
    ListView1_.AddColumn(kColumnCaptions[i], win::PixelsFromTwips(kDesignWidths[i], dpi_));
  }
}

void MainForm::WireEvents() {
  win::MainParts& parts = parts_;
  TreeView1_.events.nodeClick = [&parts](win::TreeNode& node) { tree::TreeView1_NodeClick(parts, node); };
  TreeView1_.events.afterLabelEdit = [&parts](const std::wstring& text) {
    return tree::TreeView1_AfterLabelEdit(parts, text);
  };
  TreeView1_.events.keyDown = [this](int key, int shift) {
    tree::TreeView1_KeyDown(parts_, treeHelpers_, key, shift);
  };
  TreeView1_.events.mouseDown = [&parts](int button, int shift, POINT point) {
    tree::TreeView1_MouseDown(parts, button, shift, point);
  };
  TreeView1_.events.mouseUp = [&parts](int button, int shift, POINT point) {
    tree::TreeView1_MouseUp(parts, button, shift, point);
  };
  TreeView1_.events.gotFocus = [this] { PaneActivated(false); };
  TreeView1_.events.changed = unsaved_.keepSoon = [this] { KeepSoon(); };

  ListView1_.events.columnClick = [this](std::size_t column) {
    items::ListView1_ColumnClick(parts_, listHelpers_, column);
  };
  ListView1_.events.selectionChanged = [&parts] { items::ListView1_SelectionChanged(parts); };
  ListView1_.events.doubleClick = [this] {
    if (PanesTakeInput()) items::ListView1_DblClick(parts_);
  };
  ListView1_.events.keyDown = [this](int key, int shift) {
    if (PanesTakeInput()) items::ListView1_KeyDown(parts_, listHelpers_, key, shift);
  };
  ListView1_.events.mouseDown = [this](int, int, POINT) { listHelpers_.tip.Hide(); };
  ListView1_.events.mouseUp = [&parts](int button, int shift, POINT point) {
    items::ListView1_MouseUp(parts, button, shift, point);
  };
  ListView1_.events.mouseMove = [this](int, int, POINT point) { listHelpers_.tip.MouseMove(parts_, point); };
  ListView1_.events.mouseLeave = [this] { listHelpers_.tip.Hide(); };
  ListView1_.events.beginDrag = [this] {
    if (PanesTakeInput()) items::ListView1_OLEStartDrag(parts_);
  };
  ListView1_.events.gotFocus = [this] { PaneActivated(true); };

  WireDrags();
  Picture1_.events.mouseDown = [this] { dragging_ = true; };
  Picture1_.events.mouseMove = [this](int x) { Picture1_MouseMove(x); };
  Picture1_.events.mouseUp = [this] { Picture1_MouseUp(); };
  cSysTray1_.activated = [this] { cSysTray1_Activated(); };
}

void MainForm::WireDrags() {
  win::MainParts& parts = parts_;
  TreeView1_.events.mouseMove = [&parts](int button, int shift, POINT point) {
    tree::TreeView1_MouseMove(parts, button, shift, point);
  };
  TreeView1_.events.dragOver = [&parts](POINT point) { tree::TreeView1_DragOver(parts, point); };
  TreeView1_.events.dragDrop = [&parts](POINT) { tree::TreeView1_DragDrop(parts); };
  TreeView1_.events.dragCancel = [&parts] { tree::TreeView1_DragCancel(parts); };

  treeDrops_.events.dragOver = [&parts](IDataObject& data, POINT point) {
    return tree::TreeView1_OLEDragOver(parts, data, point);
  };
  treeDrops_.events.dragLeave = [&parts] { tree::TreeView1_OLEDragLeave(parts); };
  treeDrops_.events.drop = [&parts](IDataObject& data, POINT point) {
    return tree::TreeView1_OLEDragDrop(parts, data, point);
  };

  treeDrops_.events.takes = listDrops_.events.takes = [this] { return PanesTakeInput(); };
  listDrops_.events.dragOver = [&parts](IDataObject& data, POINT point) {
    return imports::ListView1_OLEDragOver(parts, data, point);
  };
  listDrops_.events.drop = [&parts](IDataObject& data, POINT point) {
    return imports::ListView1_OLEDragDrop(parts, data, point);
  };
}

RECT MainForm::CentredOnScreen(unsigned dpi) {
  const int screenWidth = ::GetSystemMetrics(SM_CXSCREEN), screenHeight = ::GetSystemMetrics(SM_CYSCREEN);
  const int width = std::min(win::PixelsFromTwips(kInitialWidth, dpi), screenWidth);
  const int height = std::min(win::PixelsFromTwips(kInitialHeight, dpi), screenHeight);
  const int left = (screenWidth - width) / 2, top = (screenHeight - height) / 2;
  return {left, top, left + width, top + height};
}

// On a screen whose DPI is not the system's.
void MainForm::FitToDpi() {
  const RECT place = CentredOnScreen(dpi_);
  ::SetWindowPos(Handle(), nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
  ShowIconsForDpi();
}

void MainForm::ShowIconsForDpi() {
  for (const auto& [kind, measure] : {std::pair{ICON_BIG, SM_CXICON}, std::pair{ICON_SMALL, SM_CXSMICON}})
    ::SendMessageW(Handle(), WM_SETICON, static_cast<WPARAM>(kind),
                   reinterpret_cast<LPARAM>(win::ProgramIcon(::GetSystemMetricsForDpi(measure, dpi_))));
}

void MainForm::LoadPicturesForDpi() {
  const int small = win::PixelsFromTwips(kPictureSize, dpi_);
  TreeView1_.SetImageList(LoadPictures({IDI_CATEGORY_CLOSED, IDI_CATEGORY_OPEN}, small));
  // Small icon number 3 is the one that rows show.
  ListView1_.SetSmallImages(LoadPictures({IDI_CATEGORY_CLOSED, IDI_CATEGORY_OPEN, IDI_ITEM}, small));
  Toolbar1_.SetImages(
      LoadPictures({IDI_TOOLBAR_ADD, IDI_TOOLBAR_RENAME, IDI_TOOLBAR_DELETE, IDI_TOOLBAR_FIND,
                    IDI_TOOLBAR_OPEN, IDI_TOOLBAR_SHOW, IDI_TOOLBAR_PROPERTIES, IDI_TOOLBAR_SENDTO},
                   win::PixelsFromTwips(kToolbarPictureSize, dpi_)));
}

void MainForm::Form_Load() {
  magnets_.AddWindow(Handle());

  ApplyLanguage();
  Form_Resize(SIZE_RESTORED);

  StatusBar1_.SetPanelWidths(
      {win::PixelsFromTwips(kPanelWidths[0], dpi_), win::PixelsFromTwips(kPanelWidths[1], dpi_)});
  tree::ShowNoCategory(parts_);
  items::EnableItemCommands(parts_);
  EnableToolbar();

  ApplyColumnWidths();
  menus_.Check(L"meu_ShowItemInfo", settings_.ReadBoolean(L"ShowItemInfo"));
  menus_.Check(L"meu_aa", settings_.ReadBoolean(L"Drag&Drop"));

  cSysTray1_.Create(Handle(), kTrayMessage);

  win::InRoutine(world_, Handle(), L"Form_Load Error:", false, [&] {
    store::LoadTree(parts_);
    return true;
  });
  unsaved_.Begin();
}

void MainForm::ApplyColumnWidths() {
  for (int i = 0; i < 5; ++i) {
    const std::wstring text = settings_.Read(kWidthKeys[i]);
    wchar_t* end = nullptr;
    const double twips = std::wcstod(text.c_str(), &end);
    const std::size_t column = static_cast<std::size_t>(i) + 1;
    // A missing or unreadable width leaves the column as it was designed.
    if (end != text.c_str() && twips >= 0 && twips < 1440.0 * kWidestColumn / dpi_) {
      ListView1_.SetColumnWidth(column, win::PixelsFromTwips(twips, dpi_));
      parts_.widthTexts.text[i] = text;
      parts_.widthTexts.pixels[i] = ListView1_.ColumnWidth(column);
    }
  }
}

void MainForm::ScaleColumnWidths(unsigned oldDpi, unsigned newDpi) {
  for (std::size_t column = 0; column < ListView1_.ColumnCount(); ++column) {
    const int before = ListView1_.ColumnWidth(column);
    ListView1_.SetColumnWidth(column, ::MulDiv(before, static_cast<int>(newDpi), static_cast<int>(oldDpi)));
    if (column == 0) continue;
    // A width that the user left alone stays one, and keeps its text.
    int& known = parts_.widthTexts.pixels[column - 1];
    if (known == before) known = ListView1_.ColumnWidth(column);
  }
}

void MainForm::ShowSortArrow() {
  const int column = ListView1_.SortKey();
  if (!listHelpers_.sortIcons || !ListView1_.InSortOrder()) return;
  const bool descending = ListView1_.HeaderTag(static_cast<std::size_t>(column)) != 0;
  listHelpers_.sortIcons->ShowSortIcon(ListView1_.Handle(), column, descending);
}

void MainForm::ApplyLanguage() {
  lang::ReadLanguage(*this, program_, program_.languageName, world_);
  ShowSortArrow();  // a column's new caption may take it away
  for (const MainFormTables::Language& language : MainFormTables::kLanguages) {
    menus_.Check(language.entry, program_.languageName == language.name);
  }
  ReadToolbarTips();
  ::DrawMenuBar(Handle());
}

double MainForm::InnerWidth() const {
  RECT inner;
  ::GetClientRect(Handle(), &inner);
  return win::TwipsFromPixels(inner.right, dpi_);
}

void MainForm::Form_Resize(WPARAM kind) {
  if (kind == SIZE_MINIMIZED) {
    ShowToolDialogs(false);
    GoToTray();
    return;
  }
  ShowToolDialogs(true);
  ArrangeControls();
}

void MainForm::ArrangeControls() {
  Toolbar1_.AutoSize();
  ::SendMessageW(StatusBar1_.Handle(), WM_SIZE, 0, 0);
  PlacePanes(PanesOnResize(barLeft_, kBarWidth, InnerWidth()));
}

void MainForm::PlacePanes(const PaneLayout& panes) {
  RECT inner;
  ::GetClientRect(Handle(), &inner);
  const int top = Toolbar1_.Height();
  const int height = std::max(0L, inner.bottom - StatusBar1_.Height() - top);
  barLeft_ = panes.barLeft;
  const auto pixels = [this](double twips) { return std::max(0, win::PixelsFromTwips(twips, dpi_)); };
  HDWP batch = ::BeginDeferWindowPos(3);
  const auto place = [&](HWND window, int left, int width) {
    if (batch) {
      batch =
          ::DeferWindowPos(batch, window, nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
    }
  };
  place(Picture1_.Handle(), pixels(panes.barLeft), pixels(kBarWidth));
  place(TreeView1_.Handle(), 0, pixels(panes.treeWidth));
  place(ListView1_.Handle(), pixels(panes.listLeft), pixels(panes.listWidth));
  if (batch) ::EndDeferWindowPos(batch);
}

void MainForm::Picture1_MouseMove(int x) {
  if (!dragging_) return;
  barLeft_ = BarWhileDragging(barLeft_, win::TwipsFromPixels(x, dpi_));
  ::SetWindowPos(Picture1_.Handle(), HWND_TOP, win::PixelsFromTwips(barLeft_, dpi_), Toolbar1_.Height(), 0, 0,
                 SWP_NOSIZE | SWP_NOACTIVATE);
}

void MainForm::Picture1_MouseUp() {
  dragging_ = false;
  PlacePanes(PanesOnRelease(barLeft_, kBarWidth, InnerWidth()));
  // The bar was dragged over the panes: what they would keep of their old picture has the bar in it.
  ::RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void MainForm::GoToTray() {
  listHelpers_.tip.Hide();
  // Without a notification area the window stays in the task bar, or nothing would bring it back.
  if (cSysTray1_.Add(win::ProgramIcon(::GetSystemMetricsForDpi(SM_CXSMICON, dpi_)), program_.productName)) {
    ::ShowWindow(Handle(), SW_HIDE);
  }
}

void MainForm::ShowToolDialogs(bool show) {
  const int command = show ? SW_SHOWNA : SW_HIDE;
  if (parts_.listFindShown) ::ShowWindow(listHelpers_.find->Handle(), command);
  if (parts_.treeFindShown) ::ShowWindow(treeHelpers_.find->Handle(), command);
  if (parts_.commentShown) ::ShowWindow(listHelpers_.comment->Handle(), command);
}

void MainForm::cSysTray1_Activated() {
  ::ShowWindow(Handle(), ::IsIconic(Handle()) ? SW_RESTORE : SW_SHOW);
  cSysTray1_.Remove();
  // A dialog that the window waits for is in front of it.
  const HWND front = ::IsWindowEnabled(Handle()) ? Handle() : DialogInFront(Handle());
  if (!::IsWindowVisible(front)) ::ShowWindow(front, SW_SHOW);  // it went with the window
  ::SetForegroundWindow(front);
}

bool MainForm::WaitsForDialog() const { return closing_ || !::IsWindowEnabled(Handle()); }

bool MainForm::PanesTakeInput() const { return !parts_.busy && !WaitsForDialog(); }

void MainForm::Form_Unload() {
  treeDrops_.Revoke();
  listDrops_.Revoke();
  listHelpers_.tip.Hide();
  cSysTray1_.Remove();
}

void MainForm::PaneActivated(bool list) {
  if (parts_.listPaneActive == list) return;
  parts_.listPaneActive = list;
  EnableToolbar();
  ReadToolbarTips();
}

void MainForm::EnableToolbar() {
  int number = 0;
  for (const MainFormTables::ToolbarButton& button : MainFormTables::kToolbar) {
    // Those behind the separator follow the selection of the list, see items::EnableItemButtons.
    if (button.image < 0) break;
    Toolbar1_.Enable(++number, (parts_.listPaneActive ? button.list : button.tree) != nullptr);
  }
}

void MainForm::ReadToolbarTips() {
  const lang::WindowTexts texts(program_, Name());
  bool ofList = parts_.listPaneActive;
  int number = 0;
  for (const MainFormTables::ToolbarButton& button : MainFormTables::kToolbar) {
    const std::wstring key = L"Toolbar1_" + std::to_wstring(++number);
    if (button.image < 0) {
      ofList = true;  // behind the separator everything is
    } else {
      Toolbar1_.SetTip(number,
                       ofList ? texts.Text(key, button.listTip) : texts.Text(key + L"_tree", button.treeTip));
    }
  }
}

void MainForm::Toolbar1_ButtonClick(int number) {
  const MainFormTables::ToolbarButton& button =
      MainFormTables::kToolbar.at(static_cast<std::size_t>(number) - 1);
  if (const Handler handler = parts_.listPaneActive ? button.list : button.tree) (this->*handler)();
}

bool MainForm::OnCommand(UINT id) {
  const bool ofToolbar =
      id > kFirstToolbarCommand && id <= kFirstToolbarCommand + MainFormTables::kToolbar.size();
  const std::wstring_view name = menus_.NameOf(id);
  if (!ofToolbar && name.empty()) return false;
  if (WaitsForDialog()) {
    cSysTray1_Activated();
    return true;
  }
  // During a long operation menus and toolbar are switched off.
  const int button = static_cast<int>(id - kFirstToolbarCommand);
  const bool offered = ofToolbar ? ::IsWindowEnabled(Toolbar1_.Handle()) && Toolbar1_.IsEnabled(button)
                                 : menus_.IsWithinReach(name);
  if (!offered) return true;
  TreeView1_.EndLabelEdit();  // the command finds the category with its new name
  if (ofToolbar) {
    Toolbar1_ButtonClick(button);
    return true;
  }
  for (std::size_t i = 0; i < MainFormTables::kCommandCount; ++i) {
    const MainFormTables::Command& command = MainFormTables::kCommands[i];
    if (command.name && name == command.name && command.handler) {
      (this->*command.handler)();
      return true;
    }
  }
  return false;
}

LRESULT MainForm::OnNotify(NMHDR& header) {
  if (header.hwndFrom == TreeView1_.Handle()) return TreeView1_.OnNotify(header);
  if (header.hwndFrom == ListView1_.Handle()) return ListView1_.OnNotify(header);
  if (Toolbar1_.OnNotify(header)) return 0;
  return Form::OnMessage(WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

LRESULT MainForm::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (!loaded_) return Form::OnMessage(message, wParam, lParam);
  if (cSysTray1_.OnMessage(message, wParam, lParam)) return 0;
  if (message == SingleInstance::WakeMessage() && wParam == wakeMark_) {
    cSysTray1_Activated();
    return SingleInstance::kAwake;
  }
  switch (message) {
    case WM_SIZE: Form_Resize(wParam); return 0;
    case WM_NOTIFY: return OnNotify(*reinterpret_cast<NMHDR*>(lParam));
    case WM_COMMAND:
      // From a menu, an accelerator or the toolbar: these send no notification code.
      if (HIWORD(wParam) == 0 && OnCommand(LOWORD(wParam))) return 0;
      break;
    case WM_GETMINMAXINFO: {
      auto& limits = *reinterpret_cast<MINMAXINFO*>(lParam);
      limits.ptMinTrackSize = {win::PixelsFromTwips(kMinimumWidth, dpi_),
                               win::PixelsFromTwips(kMinimumHeight, dpi_)};
      return 0;
    }
    case WM_DPICHANGED: {
      const unsigned before = dpi_;
      dpi_ = HIWORD(wParam);
      ShowIconsForDpi();
      LoadPicturesForDpi();
      ScaleColumnWidths(before, dpi_);
      const LRESULT result = Form::OnMessage(message, wParam, lParam);
      StatusBar1_.SetPanelWidths(
          {win::PixelsFromTwips(kPanelWidths[0], dpi_), win::PixelsFromTwips(kPanelWidths[1], dpi_)});
      ShowSortArrow();
      Form_Resize(SIZE_RESTORED);
      return result;
    }
    case WM_QUERYENDSESSION: return OnQueryEndSession();
    case WM_ENDSESSION: OnEndSession(wParam != FALSE); return 0;
    case WM_TIMER:
      if (wParam != kKeepTimer) break;
      KeepUnsaved();
      return 0;
    case WM_CLOSE: OnClose(); return 0;
    case WM_DESTROY: Form_Unload(); break;
  }
  return Form::OnMessage(message, wParam, lParam);
}

void MainForm::ShowNow(int show) {
  ::ShowWindow(Handle(), show);
  ::UpdateWindow(Handle());
  ::SetFocus(parts_.Text1);
}

void MainForm::FinishLoading() {
  treeTip_.SetStyle(ui::TipStyle::kBalloon);
  treeTip_.Create(TreeView1_.Handle());
  // Where nothing can be dropped there are other ways to do the same.
  win::Quietly([&] {
    treeDrops_.Register(TreeView1_.Handle());
    listDrops_.Register(ListView1_.Handle());
  });
  OfferUnsaved();
}

}  // namespace kestrelon::app
