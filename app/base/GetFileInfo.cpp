#include "app/base/GetFileInfo.h"

namespace kestrelon {

namespace {

std::wstring LocalText(const FILETIME& time) {
  SYSTEMTIME universal{}, local{};
  if (!::FileTimeToSystemTime(&time, &universal) ||
      !::SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local)) {
    return {};
  }
  return DateTimeText(local);
}

}  // namespace

std::optional<FileInfo> GetFileInfo(const std::wstring& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return std::nullopt;
  const auto flag = [&](DWORD attribute) {
    return std::wstring((data.dwFileAttributes & attribute) != 0 ? L"Yes" : L"No");
  };
  FileInfo info;
  info.size = (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow;
  info.archive = flag(FILE_ATTRIBUTE_ARCHIVE);
  info.readOnly = flag(FILE_ATTRIBUTE_READONLY);
  info.hidden = flag(FILE_ATTRIBUTE_HIDDEN);
  info.system = flag(FILE_ATTRIBUTE_SYSTEM);
  info.created = LocalText(data.ftCreationTime);
  info.lastWritten = LocalText(data.ftLastWriteTime);
  info.lastAccessed = LocalText(data.ftLastAccessTime);
  return info;
}

std::wstring DateTimeText(const SYSTEMTIME& local, LCID locale) {
  wchar_t date[128] = L"", time[128] = L"";
  ::GetDateFormatW(locale, DATE_SHORTDATE, &local, nullptr, date, static_cast<int>(std::size(date)));
  ::GetTimeFormatW(locale, 0, &local, nullptr, time, static_cast<int>(std::size(time)));
  return std::wstring(date) + L" " + time;
}

}  // namespace kestrelon
