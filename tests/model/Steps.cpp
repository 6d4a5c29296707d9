#include "tests/model/Steps.h"

#include <cstdio>
#include <iterator>
#include <string_view>
#include <utility>

namespace kestrelon::model {
namespace {

struct KindInfo {
  const char* name;
  unsigned weight;
};
constexpr KindInfo kInfos[] = {
    {"AddFirstSibling", 3},
    {"AddPreviousSibling", 3},
    {"AddNextSibling", 3},
    {"AddLastSibling", 6},
    {"AddChild", 8},
    {"RenameCategory", 5},
    {"ClickCategory", 12},
    {"RightClickCategory", 2},
    {"GoToCategory", 4},
    {"ClickEmptyTree", 2},
    {"Collapse", 3},
    {"DeleteCategory", 3},
    {"ToggleDrag", 2},
    {"MoveBranch", 5},
    {"OpenDialog", 6},
    {"DropOnList", 4},
    {"DropOnCategory", 5},
    {"MoveItems", 6},
    {"Clipboard", 3},
    {"ImportFolder", 3},
    {"ClickRow", 14},
    {"ControlClickRow", 8},
    {"SelectAllRows", 3},
    {"ClickEmptyList", 2},
    {"Sort", 4},
    {"DeleteItems", 6},
    {"AliasOfItem", 7},
    {"AliasAsFileName", 5},
    {"CommentOfItem", 4},
    {"Properties", 4},
    {"ChangeCategory", 4},
    {"MoveToFolder", 4},
    {"SendToFolder", 2},
    {"FindItem", 3},
    {"FindCategory", 4},
    {"Language", 1},
    {"Save", 5},
    {"Load", 4},
    {"LoadUnsaved", 3},
    {"LoadDamaged", 2},
    {"Exit", 4},
    {"UncleanEnd", 3},
    {"EndSession", 2},
};
static_assert(std::size(kInfos) == static_cast<std::size_t>(Kind::kKinds));

constexpr const wchar_t* kPieces[] = {L"文件",   L"資料夾",     L"O'Brien", L"R&D",   L"&&", L" lead",
                                      L"trail ", L"\U0001F600", L"plain",   L"MiXeD", L"ü",  L"2026",
                                      L"''",     L"a",          L"[x]",     L"%s",    L"-",  L"。"};
constexpr const wchar_t* kBadFileNames[] = {L"a:b", L"a*b", L"q?",  L"x/y", L"x\\y",
                                            L"<a>", L"a|b", L"CON", L"nul", L"com1"};

}  // namespace

std::wstring Generator::Name() {
  switch (Below(20)) {
    case 0: return std::wstring(250 + Below(12), L'x');
    case 1: return std::wstring(Below(4), L' ');
    case 2: return kBadFileNames[Below(std::size(kBadFileNames))];
    case 3: return L"say \"yes\"";
    case 4: return std::wstring(253 + Below(3), L'y') + L"\U0001F600";
    default: break;
  }
  std::wstring name;
  for (unsigned pieces = 1 + Below(3); pieces > 0; --pieces) name += kPieces[Below(std::size(kPieces))];
  return name;
}

Step Generator::Next() {
  unsigned total = 0;
  for (const KindInfo& info : kInfos) total += info.weight;
  unsigned draw = Below(total), kind = 0;
  while (draw >= kInfos[kind].weight) draw -= kInfos[kind++].weight;
  Step step;
  step.kind = static_cast<Kind>(kind);
  step.a = Below(1000);
  step.b = Below(1000);
  step.c = Below(1000);
  step.text = Name();
  return step;
}

std::vector<Step> RandomSteps(std::uint32_t seed, std::size_t count) {
  Generator generator(seed);
  std::vector<Step> steps;
  while (steps.size() < count) steps.push_back(generator.Next());
  return steps;
}

std::string Printed(const Step& step) {
  std::string text = kInfos[static_cast<std::size_t>(step.kind)].name;
  text +=
      "(" + std::to_string(step.a) + ", " + std::to_string(step.b) + ", " + std::to_string(step.c) + ", \"";
  for (const wchar_t unit : step.text.substr(0, 24)) {
    if (unit >= L' ' && unit < 127) {
      text += static_cast<char>(unit);
    } else {
      char code[8];
      std::snprintf(code, sizeof code, "\\x%04x", static_cast<unsigned>(unit));
      text += code;
    }
  }
  return text + (step.text.size() > 24 ? "\"… of " + std::to_string(step.text.size()) + ")" : "\")");
}

}  // namespace kestrelon::model
