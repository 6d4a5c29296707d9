#include "import/OpenFilesCommand.h"

#include "app/base/Win32.h"

#include <commdlg.h>

#include <optional>

#include "app/base/File.h"
#include "import/AddFiles.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"
#include "ui/win/Boxes.h"

namespace kestrelon::imports {
namespace {

constexpr DWORD kFlags = OFN_ALLOWMULTISELECT | OFN_EXPLORER | OFN_NODEREFERENCELINKS | OFN_LONGNAMES;
static_assert(kFlags == 0x380200);
constexpr DWORD kAllFiles = 6;  // the filter's position, from 1

constexpr const wchar_t* kFilter =
    L"Txt File   (*.txt)|*.txt|"
    L"Exe File   (*.exe)|*.exe|"
    L"MP3 File   (*.mp3)|*.mp3|"
    L"BMP File   (*.bmp)|*.bmp|"
    L"JPG File   (*.jpg)|*.jpg|"
    L"All Files   (*.*)|*.*";

}  // namespace

std::vector<std::wstring> PathsOfSelection(std::wstring_view returned) {
  std::wstring text(returned);
  text.push_back(L'\0');
  std::vector<std::wstring> pieces;
  std::size_t start = 0;
  for (std::size_t end = text.find(L'\0'); end != std::wstring::npos; end = text.find(L'\0', start)) {
    pieces.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  if (pieces.size() == 1) return pieces.front().empty() ? std::vector<std::wstring>{} : pieces;
  const std::wstring folder = WithBackslash(pieces.front());
  std::vector<std::wstring> paths;
  for (std::size_t i = 1; i < pieces.size(); ++i) paths.push_back(folder + pieces[i]);
  return paths;
}

void meu_Input_Dialog_Click(win::MainParts& parts) {
  win::InRoutine(parts.world, parts.form.Handle(), L"meu_Input_Dialog_Click Error:", false, [&] {
    const std::wstring key = TargetCategory(parts, lang::kSelectCategoryToImport);
    if (key.empty()) return false;
    OpenFilesRequest request;
    request.owner = parts.form.Handle();
    request.title = L"Select one or More Files";
    request.filter = kFilter;
    request.filterIndex = kAllFiles;
    request.flags = kFlags;
    request.maximumSize = 32000;
    std::optional<std::wstring> returned;
    try {
      returned = parts.world.openFiles(request);
    } catch (const TooManyFiles&) {
      win::Inform(parts.world, parts.form.Handle(), lang::Message(parts.program, lang::kTooManyFiles),
                  parts.program.productName);
    }
    if (!returned) return false;
    const std::vector<std::wstring> paths = PathsOfSelection(*returned);
    if (paths.empty()) return false;
    AddFiles(parts, key, paths, {});
    return true;
  });
}

}  // namespace kestrelon::imports
