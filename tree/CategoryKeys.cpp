#include "tree/CategoryKeys.h"

#include <system_error>

#include "ui/win/Boxes.h"

namespace kestrelon::tree {
namespace {

std::wstring Digits(unsigned value, std::size_t width) {
  std::wstring text = std::to_wstring(value);
  return text.size() < width ? std::wstring(width - text.size(), L'0') + text : text;
}

// The number that a box shows for an error: the system's where there is one, else 51, "internal error".
int NumberOf(const std::exception& error) {
  const auto* system = dynamic_cast<const std::system_error*>(&error);
  return system ? system->code().value() : 51;
}

}  // namespace

void AppendKey(std::wstring& key, const SYSTEMTIME& now, const std::function<int()>& draw) {
  key += static_cast<wchar_t>(now.wYear - 1943);
  key += Digits(static_cast<unsigned>(draw()), 4);
  for (const WORD part : {now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond}) key += Digits(part, 2);
  key += Digits(static_cast<unsigned>(draw()), 4);
  key += L'_';
}

std::wstring GetNextKey(win::MainParts& parts) {
  std::wstring key;
  try {
    parts.world.reseedRandom();
    AppendKey(key, parts.world.localTime(),
              [&] { return static_cast<int>(parts.world.randomFraction() * 10000 + 1); });
  } catch (const std::exception& error) {
    win::Exclaim(parts.world, parts.form.Handle(), std::to_wstring(NumberOf(error)), L"GetNextKey_Error");
  }
  return key;
}

}  // namespace kestrelon::tree
