// The ion chamber setup dialog's presenter.
#include "ionchamber/IonChamberSetupDialog.h"

#include <stdexcept>

#include "core/DialogFactory.h"
#include "core/Placement.h"
#include "ionchamber/DeleteIonChamberDialog.h"
#include "ionchamber/EditIonChamberDialog.h"

namespace rx9400 {

namespace {
/// The list's entry limits: "No Ion Chamber", nine chambers and "New" (the message names ten), and
/// ten cal factors besides "New".
constexpr int kMaxChamberEntries = 1 + 10;
constexpr int kMaxCalFactorEntries = 10;
}  // namespace

IonChamberSetupDialog::IonChamberSetupDialog(PluginContext& context, IonChamberSetupView& view)
    : context_(context), view_(view) {
  view_.attach(*this);
}

void IonChamberSetupDialog::show(bool topmost) {
  topmost_ = topmost;
  cancelled_ = false;
  view_.showModal();
}

void IonChamberSetupDialog::load() {
  localise(view_, context_.catalogue, catalogue::kIonChamberSetup);
  view_.setCalConstantText({});
  cancelled_ = false;
  const IonChamberTable& table = context_.state.ionChambers;
  skipOnFailure([&] { fillLists(); });
  if (table.readOnly) {
    view_.setButtonVisible(SetupButton::Delete, false);
    view_.setButtonVisible(SetupButton::Edit, false);
    const int continueLeft = view_.buttonLeft(SetupButton::Continue);
    view_.setButtonLeft(SetupButton::Continue, view_.buttonLeft(SetupButton::Delete));
    view_.setButtonLeft(SetupButton::Cancel, continueLeft);
  } else if (table.count == 0) {
    enableEditAndDelete(false);
  }
  if (topmost_) makeTopmost(context_.services.windows, view_.window());
}

void IonChamberSetupDialog::activated() {
  centreCursorOn(context_.services.windows, view_.buttonWindow(SetupButton::Continue));
}

void IonChamberSetupDialog::fillLists() {
  IonChamberTable& table = context_.state.ionChambers;
  std::vector<std::string> entries{context_.catalogue.text(catalogue::kNoIonChamber)};
  int chosen = 0;
  if (table.count < 1) {
    table.selectedChamber = 0;
    table.selectedCalFactor = 0;
  } else {
    for (std::size_t i = 0; i < table.size(); ++i) {
      if (table.records[i].number == 0) continue;
      entries.push_back(nameOf(table.records[i]));
      if (table.records[i].number == table.selectedChamber) chosen = static_cast<int>(entries.size()) - 1;
    }
  }
  if (!table.readOnly) entries.push_back(context_.catalogue.text(catalogue::kNew));
  view_.setChamberEntries(entries);
  chamberEntries_ = static_cast<int>(entries.size());
  view_.selectChamberEntry(chosen);
  lastChamberEntry_ = chosen;
  table.selectedChamberName = entries[static_cast<std::size_t>(chosen)];
  if (chosen > 0) {
    fillCalFactors(chosen, table.selectedCalFactor, false);
  } else {
    view_.setCalFactorEntries({});
    calFactorEntries_ = 0;
    lastCalFactorEntry_ = -1;
    view_.setCalConstantText({});
  }
}

void IonChamberSetupDialog::fillCalFactors(int entry, std::int16_t calFactorNumber, bool firstByDefault) {
  const IonChamber& chamber = context_.state.ionChambers.at(static_cast<std::size_t>(entry - 1));
  std::vector<std::string> entries;
  int chosen = -1;
  for (const CalFactor& calFactor : usedCalFactors(chamber)) {
    if (chosen < 0 && calFactor.number == calFactorNumber) chosen = static_cast<int>(entries.size());
    entries.push_back(nameOf(calFactor));
  }
  if (chosen < 0 && !entries.empty() && firstByDefault) chosen = 0;
  if (!readOnly()) entries.push_back(context_.catalogue.text(catalogue::kNew));
  view_.setCalFactorEntries(entries);
  calFactorEntries_ = static_cast<int>(entries.size());
  view_.selectCalFactorEntry(chosen);
  lastCalFactorEntry_ = chosen;
  showCalConstant(entry, chosen);
}

void IonChamberSetupDialog::showCalConstant(int chamberEntry, int calFactorEntry) {
  view_.setCalConstantText(
      context_.state.ionChambers.calConstantText(context_, chamberEntry - 1, calFactorEntry));
}

void IonChamberSetupDialog::enableButtons(bool enabled) {
  enableEditAndDelete(enabled);
  view_.setButtonEnabled(SetupButton::Continue, enabled);
}

void IonChamberSetupDialog::enableEditAndDelete(bool enabled) {
  if (readOnly()) return;
  view_.setButtonEnabled(SetupButton::Delete, enabled);
  view_.setButtonEnabled(SetupButton::Edit, enabled);
}

bool IonChamberSetupDialog::runEditor(EditorMode mode, std::string_view caption, int chamberIndex,
                                      int calFactorIndex) {
  auto view = context_.services.dialogs.newEditIonChamberView();
  if (!view) return false;
  EditIonChamberDialog editor(context_, *view);
  editor.pSelectedICIndex = chamberIndex;
  editor.pSelectedCFIndex = calFactorIndex;
  editor.Formsetting(mode);
  editor.show(context_.catalogue.text(caption));
  return !editor.pCancelClick();
}

void IonChamberSetupDialog::chamberChosen(int entry) {
  if (entry < 0) return;
  if (isNewEntry(entry, chamberEntries_)) {
    addChamber();
  } else if (entry == 0) {
    lastChamberEntry_ = 0;
    view_.setCalFactorEntries({});
    calFactorEntries_ = 0;
    lastCalFactorEntry_ = -1;
    view_.setCalConstantText({});
    enableEditAndDelete(false);
  } else {
    skipOnFailure([&] {
      const IonChamberTable& table = context_.state.ionChambers;
      const std::int16_t number = table.at(static_cast<std::size_t>(entry - 1)).number;
      lastChamberEntry_ = entry;
      fillCalFactors(entry, number == table.selectedChamber ? table.selectedCalFactor : 0, true);
      enableEditAndDelete(true);
    });
  }
}

void IonChamberSetupDialog::addChamber() {
  enableButtons(false);
  if (chamberEntries_ >= kMaxChamberEntries) {
    context_.services.messageBoxes.show(context_.catalogue.text(catalogue::kMaximum) + "10" +
                                            context_.catalogue.text(catalogue::kMaximumIonChambers),
                                        context_.catalogue.text(catalogue::kNewIonChamber), kBoxCritical);
    enableButtons(true);
    return;
  }
  const bool added = runEditor(EditorMode::NewChamber, catalogue::kNewIonChamber, lastChamberEntry_ - 1,
                               lastCalFactorEntry_);
  enableButtons(true);
  if (added) fillLists();
}

void IonChamberSetupDialog::calFactorChosen(int entry) {
  if (entry < 0) return;
  if (isNewEntry(entry, calFactorEntries_)) {
    addCalFactor();
    return;
  }
  lastCalFactorEntry_ = entry;
  showCalConstant(lastChamberEntry_, entry);
}

void IonChamberSetupDialog::addCalFactor() {
  if (calFactorEntries_ > kMaxCalFactorEntries) {
    context_.services.messageBoxes.show(context_.catalogue.text(catalogue::kMaximum) + "10" +
                                            context_.catalogue.text(catalogue::kMaximumCalFactors),
                                        context_.catalogue.text(catalogue::kNewCalFactor), kBoxCritical);
    return;
  }
  if (runEditor(EditorMode::NewCalFactor, catalogue::kNewCalFactor, lastChamberEntry_ - 1,
                lastCalFactorEntry_))
    fillLists();
}

void IonChamberSetupDialog::editClicked() {
  if (lastChamberEntry_ < 1) return;
  if (runEditor(EditorMode::Edit, catalogue::kEditIonChamber, lastChamberEntry_ - 1, view_.calFactorEntry()))
    fillLists();
}

void IonChamberSetupDialog::deleteClicked() {
  auto view = context_.services.dialogs.newDeleteIonChamberView();
  if (!view) return;
  DeleteIonChamberDialog dialog(context_, *view);
  dialog.pSelectedICIndex = lastChamberEntry_ - 1;
  dialog.pSelectedCFIndex = lastCalFactorEntry_;
  dialog.show();
  if (!dialog.pCancelClick()) fillLists();
  if (context_.state.ionChambers.count == 0) enableEditAndDelete(false);
}

void IonChamberSetupDialog::continueClicked() {
  IonChamberTable& table = context_.state.ionChambers;
  const int entry = view_.chamberEntry();
  if (entry < 1) {
    table.selectedChamber = 0;
    table.selectedCalFactor = 0;
    table.noIonChamber = true;
  } else {
    // Each statement on its own: a cal factor index outside the record's ten slots (none chosen)
    // keeps the cal factor number chosen before.
    const auto chamber = static_cast<std::size_t>(entry - 1);
    skipOnFailure([&] { table.selectedChamber = table.at(chamber).number; });
    skipOnFailure([&] {
      const int slot = view_.calFactorEntry();
      if (slot < 0 || slot >= static_cast<int>(kMaxCalFactors)) throw std::out_of_range("no cal factor slot");
      table.selectedCalFactor = table.at(chamber).calFactors[slot].number;
    });
    table.noIonChamber = false;
  }
  for (const std::int32_t id : context_.state.dosimeterIdentifiers()) {
    skipOnFailure([&] {
      context_.library.MBSetIonChamberCalFactor(id, table.selectedChamber, table.selectedCalFactor);
    });
  }
  table.selectedChamberName = view_.chamberEntryText();
  view_.hide();
}

void IonChamberSetupDialog::cancelClicked() {
  cancelled_ = true;
  view_.hide();
}

}  // namespace rx9400
