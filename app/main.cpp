#include "app/base/Win32.h"

#include <commctrl.h>
#include <ole2.h>

#include "app/Connect.h"
#include "app/MainForm.h"
#include "app/SingleInstance.h"
#include "app/base/Settings.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "ui/win/Boxes.h"

namespace {

// Milliseconds that a start waits for another one that holds the data folder and shows no window.
constexpr DWORD kPatience = 10'000;

// OLE, which drag and drop needs, until the program ends.
class OleApartment {
 public:
  ~OleApartment() {
    if (entered_) ::OleUninitialize();
  }
  void Enter() { entered_ = SUCCEEDED(::OleInitialize(nullptr)); }

 private:
  bool entered_ = false;
};

int Run(int show) {
  using namespace kestrelon;
  OutsideWorld world = SystemWorld();
  Program program = app::NameProgram(app::ExecutableFolder(), app::EnvironmentValue(L"APPDATA"));
  return win::InRoutine(world, nullptr, program.productName, 1, [&] {
    OleApartment ole;  // leaving it takes a while: a next start must not find this one still there
    app::MakeDataFolder(program);
    app::SingleInstance instance(program.dataFolder);
    if (!instance.BecomeFirst(kPatience)) return 0;
    app::DataFolderLock lock;
    if (!lock.Take(program.dataFolder)) {
      program.languageName = Settings(program.settingsFile).Read(L"language");
      win::Inform(world, nullptr, lang::Message(program, lang::kDataFolderInUse), program.productName);
      return 1;
    }
    if (!app::Connect(program, world)) return 1;
    app::MainForm mainForm(program, world);
    mainForm.SetWakeMark(instance.FolderMark());
    mainForm.Load();
    mainForm.ShowNow(show);
    ole.Enter();  // only now: the user sees the window that much sooner
    mainForm.FinishLoading();
    MSG message;
    while (win::PumpOneMessage(message)) {
    }
    return 0;
  });
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int show) {
  const INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&classes);
  return Run(show);
}
