#include "items/ItemInformation.h"

#include "app/base/File.h"
#include "app/base/GetFileInfo.h"
#include "lang/Messages.h"
#include "lang/SelectLanguage.h"

namespace kestrelon::items {

bool ServerAnswers(const OutsideWorld& world, const std::wstring& path) {
  return !IsNetworkPath(path) || world.hostAnswers(ServerOfPath(path));
}

std::wstring ShortenedPath(const std::wstring& path) {
  return path.size() > 40 ? path.substr(0, 50) + L"..." : path;
}

std::wstring ItemInformation(const Program& program, const OutsideWorld& world, const std::wstring& path) {
  const auto info =
      ServerAnswers(world, path) && FileExists(path) ? GetFileInfo(path) : std::optional<FileInfo>{};
  if (!info) return lang::Message(program, lang::kCannotOpenFile);
  const std::wstring rule(52, L'-');
  const std::wstring emptyLine = L"\r\n\r\n";
  return L"Location: \r\n" + ShortenedPath(path) + emptyLine + L"Size: " + SizeText(info->size) + emptyLine +
         rule + L"\r\nAttributes:" + emptyLine + L"Archive:    " + info->archive +
         L"              Read only: " + info->readOnly + emptyLine + L"Hidden:     " + info->hidden +
         L"               System:    " + info->system + emptyLine + rule + L"\r\nCreated Time    :" +
         info->created + emptyLine + L"Lost Modefieed  :" + info->lastWritten + emptyLine +
         L"Last Accessed   :" + info->lastAccessed;
}

}  // namespace kestrelon::items
