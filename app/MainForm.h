#pragma once

#include <string>
#include <vector>

#include "app/MainLayout.h"
#include "app/Splitter.h"
#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"
#include "app/base/Settings.h"
#include "items/ListEvents.h"
#include "store/SharedConnection.h"
#include "store/UnsavedCollection.h"
#include "tree/Tree_Find.h"
#include "ui/CTooltip.h"
#include "ui/cMagneticWnd.h"
#include "ui/modTray.h"
#include "ui/win/DropTarget.h"
#include "ui/win/Form.h"
#include "ui/win/MainParts.h"

namespace kestrelon::app {

// The one main window. It builds the controls, hands them down as MainParts and wires every event to the
// function that does the work; what it does itself is layout, splitter, toolbar dispatch, tray and closing.
class MainForm : public win::Form {
 public:
  // `notify` takes the place of the system's notification area; the default is the real one.
  MainForm(Program& program, OutsideWorld& world, ui::cSysTray::Notify notify = {});
  ~MainForm() override;

  // Makes the window and loads everything; the window is not shown yet.
  void Load();
  void ShowNow(int show);
  // What can wait until the user sees the window: the tree's tip, and dropping files on both panes. Throws
  // std::system_error where OLE is not initialised.
  void FinishLoading();

  win::ListView* LocalisedHeaders() override { return &ListView1_; }
  // What the folders below see; for tests as well.
  win::MainParts& Parts() { return parts_; }
  Splitter& Picture1() { return Picture1_; }
  ui::cSysTray& SysTray() { return cSysTray1_; }
  ui::cMagneticWnd& Magnets() { return magnets_; }
  items::ListHelpers& ListHelpers() { return listHelpers_; }
  tree::TreeHelpers& TreeHelpers() { return treeHelpers_; }
  win::DropTarget& TreeDrops() { return treeDrops_; }
  win::DropTarget& ListDrops() { return listDrops_; }

  // One-based; button 5 is a separator. Which command it starts depends on the pane that was last active.
  void Toolbar1_ButtonClick(int button);
  // The bar's left edge, in twips.
  double BarLeft() const { return barLeft_; }
  // The second start of the program asks for the window by a message with this mark.
  void SetWakeMark(WPARAM mark) { wakeMark_ = mark; }

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  friend struct MainFormTables;
  using Handler = void (MainForm::*)();

  // Loading, in the order of the calls.
  void CreateControls();
  void WireEvents();
  void WireDrags();
  static RECT CentredOnScreen(unsigned dpi);
  void FitToDpi();
  void ShowIconsForDpi();
  void LoadPicturesForDpi();
  void Form_Load();
  void ApplyColumnWidths();
  void ScaleColumnWidths(unsigned oldDpi, unsigned newDpi);
  void ShowSortArrow();  // anew, in the size of the present DPI
  void ApplyLanguage();

  // Layout.
  void Form_Resize(WPARAM kind);
  void ArrangeControls();
  void PlacePanes(const PaneLayout& panes);
  double InnerWidth() const;
  void Picture1_MouseMove(int x);
  void Picture1_MouseUp();

  // Tray and closing.
  void GoToTray();
  void ShowToolDialogs(bool show);  // those that the user has open go and come back with the window
  void cSysTray1_Activated();
  bool Form_QueryUnload();  // false: the window stays
  bool LeaveCollection();   // false: the window stays
  void Form_Unload();

  // What is in no slot.
  static constexpr UINT_PTR kKeepTimer = 1;
  void OfferUnsaved();
  void KeepSoon();
  void KeepUnsaved();
  void KeepComment();
  LRESULT OnQueryEndSession();
  void OnEndSession(bool ends);

  // A dialog or a question is to come to its end first. By hand nothing can be started in this window then;
  // what was posted before, or by other programs, comes nevertheless.
  bool WaitsForDialog() const;
  bool PanesTakeInput() const;  // nor does a long operation run
  void OnClose();
  void PaneActivated(bool list);
  // Both by the pane that was last active.
  void EnableToolbar();
  void ReadToolbarTips();
  LRESULT OnNotify(NMHDR& header);
  bool OnCommand(UINT id);

  // Menu commands that are the window's own.
  void meu_LoadDatabase_Click();
  void meu_SaveDatabase_Click();
  void meu_exit_Click();
  void meu_AddFirstSibling_Click();
  void meu_AddPreviousSibling_Click();
  void meu_AddNextSibling_Click();
  void meu_AddLastSibling_Click();
  void meu_AddDirectory_Click();
  void meu_AddChild_Click();
  void meu_Remove_Click();
  void meu_aa_Click();
  void meu_Input_Dialog_Click();
  void meu_Imput_Clipboard_Click();
  void meu_rename_Click();
  void meu_Definenameasfilename_Click();
  void meu_ShowItemInfo_Click();
  void meu_Changecategory_Click();
  void meu_openfile_Click();
  void meu_destinationdirectory_Click();
  void meu_Copyto_Click();
  void meu_Moveto_Click();
  void meu_Delete_Click();
  void meu_comment_Click();
  void meu_Properties_Click();
  void meu_English_Click();
  void meu_Chinese_Traditional_Click();
  void meu_Chinese_Simplified_Click();
  void meu_moretips_Click();
  void meu_sendemailtoauthor_Click();
  void meu_reportingbugs_Click();
  void meu_about_Click();
  void EditCaption();
  void FindInItems();
  void FindInCategories();
  void SelectLanguageName(const std::wstring& name);

  Program& program_;
  OutsideWorld& world_;
  Settings settings_;
  store::SharedConnection connection_;
  win::Menus menus_;
  win::TreeView TreeView1_;
  win::ListView ListView1_;
  win::StatusBar StatusBar1_;
  win::Toolbar Toolbar1_;
  win::MainParts parts_;
  store::UnsavedCollection unsaved_{parts_};
  Splitter Picture1_;
  ui::CTooltip treeTip_;
  ui::cSysTray cSysTray1_;
  ui::cMagneticWnd magnets_;  // outlives the tool windows, which leave it when they go
  items::ListHelpers listHelpers_;
  tree::TreeHelpers treeHelpers_;
  win::DropTarget treeDrops_, listDrops_;
  double barLeft_ = 3000;  // twips
  unsigned dpi_ = 96;      // that pictures and columns were made for
  bool dragging_ = false;  // the splitter
  bool loaded_ = false;    // the controls exist
  bool closing_ = false;   // the question before closing, or what it led to, is open
  WPARAM wakeMark_ = 0;
  bool keepPending_ = false;    // the timer of KeepSoon() runs
  bool sessionEnding_ = false;  // the system has asked, and nobody is to be asked any more
  bool sessionEnded_ = false;   // and has said that the session ends
};

}  // namespace kestrelon::app
