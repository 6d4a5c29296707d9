// Slots and the unsaved collection in the model: saving, loading, the ends of the program and what it finds
// when it is started again.

#include <cwchar>

#include "app/base/File.h"
#include "tests/model/Model.h"

namespace kestrelon::model {
namespace {

std::wstring SlotLabelAt(std::size_t slot, const SYSTEMTIME& time) {
  wchar_t text[40];
  std::swprintf(text, 40, L"%d. %d-%02d-%02d %02d:%02d:%02d", static_cast<int>(slot) + 1, time.wYear,
                time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond);
  return text;
}

}  // namespace

void Model::SaveInto(std::size_t slot) {
  if (state.tree.Empty()) state.table.clear();
  state.slots[slot] = static_cast<const Content&>(state);
  state.labels[slot] = SlotLabelAt(slot, Now());
  state.saved = true;
}

void Model::LoadFrom(std::size_t slot) {
  SetAside(state, state);
  if (state.slots[slot]) {
    static_cast<Content&>(state) = Loaded(*state.slots[slot]);
  } else {
    state.slots[slot] = Content();
    state.tree = Tree();
  }
  state.maybeKept = {state};
  ShowNone();
}

void Model::Slots(const Step& step, Plan& plan) {
  plan.slot = step.a % 4;
  switch (step.kind) {
    case Kind::kLanguage: {
      constexpr const wchar_t* kLanguages[] = {L"English", L"Chinese_S", L"Chinese_T"};
      plan.text = state.language = kLanguages[step.a % 3];
      break;
    }
    case Kind::kSave:
      plan.way = step.b % 6 == 0 ? 1 : step.b % 6 == 1 ? 2 : 0;  // Cancel at the question; the dialog left
      if (plan.way == 2) break;
      plan.boxes.push_back({BoxKind::kOkCancel, plan.way == 0 ? IDOK : IDCANCEL});
      if (plan.way == 0) SaveInto(plan.slot);
      break;
    case Kind::kLoad:
      plan.way = step.b % 6 == 0;  // the dialog left
      if (plan.way == 0) LoadFrom(plan.slot);
      break;
    case Kind::kLoadUnsaved:
      plan.skipped = !state.unsaved;
      plan.way = step.b % 6 == 0;  // the dialog left
      if (plan.skipped || plan.way == 1) break;
      OpenUnsaved(state);
      ShowNone();
      break;
    case Kind::kLoadDamaged:
      plan.skipped = !state.slots[plan.slot];
      plan.damage = static_cast<Damage>(step.b % static_cast<unsigned>(Damage::kWays));
      if (!plan.skipped) plan.boxes.push_back({BoxKind::kError, IDOK});
      break;
    case Kind::kExit: Exit(step, plan); break;
    case Kind::kUncleanEnd: UncleanEnd(step, plan); break;
    case Kind::kEndSession:
      plan.way = step.b % 3 == 0;  // taken back
      plan.close = step.c % 2 != 0;
      plan.answer = step.a % 3 != 0 ? IDYES : IDNO;
      state.maybeKept = {state};
      if (plan.way == 1) break;
      StartAnew(plan.answer);
      break;
    default: break;
  }
}

void Model::Exit(const Step& step, Plan& plan) {
  constexpr Leaving kWays[] = {Leaving::kCancel,      Leaving::kNo,       Leaving::kNo,
                               Leaving::kSaved,       Leaving::kSaved,    Leaving::kDialogLeft,
                               Leaving::kNotReplaced, Leaving::kSaveFails};
  plan.leaving = state.saved ? Leaving::kNo : kWays[step.b % 8];
  if (plan.leaving == Leaving::kSaveFails && state.slots[plan.slot]) plan.leaving = Leaving::kDialogLeft;
  if (!state.saved) {
    const int answer = plan.leaving == Leaving::kCancel ? IDCANCEL
                       : plan.leaving == Leaving::kNo   ? IDNO
                                                        : IDYES;
    plan.boxes.push_back({BoxKind::kYesNoCancel, answer});
  }
  switch (plan.leaving) {
    case Leaving::kCancel: return;
    case Leaving::kSaved:
      plan.boxes.push_back({BoxKind::kOkCancel, IDOK});
      SaveInto(plan.slot);
      break;
    case Leaving::kNotReplaced: plan.boxes.push_back({BoxKind::kOkCancel, IDCANCEL}); break;
    case Leaving::kSaveFails:
      plan.boxes.push_back({BoxKind::kOkCancel, IDOK});
      plan.boxes.push_back({BoxKind::kError, IDOK});
      break;
    default: break;
  }
  SetAside(state, state);
  state.maybeKept = {Content()};
  StartAnew(IDNO);
}

void Model::UncleanEnd(const Step& step, Plan& plan) {
  plan.answer = step.a % 3 != 0 ? IDYES : IDNO;
  plan.way = step.b % 2;  // at once, or once everything is kept
  if (plan.way == 1) state.maybeKept = {state};
  StartAnew(plan.answer);
}

// What is offered then is known when it is seen: the tree may have changed without being kept.
void Model::StartAnew(int answer) {
  state.loose.recovered = state.maybeKept;
  state.loose.openRecovered = answer == IDYES;
  static_cast<Content&>(state) = Content();
  state.maybeKept = {state};
  state.screen = Screen();
  state.saved = false;
}

}  // namespace kestrelon::model
