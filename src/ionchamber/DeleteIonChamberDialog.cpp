// The deletion dialog's presenter.
#include "ionchamber/DeleteIonChamberDialog.h"

#include <algorithm>

#include "core/Placement.h"

namespace rx9400 {

DeleteIonChamberDialog::DeleteIonChamberDialog(PluginContext& context, DeleteIonChamberView& view)
    : context_(context), view_(view) {
  view_.attach(*this);
}

void DeleteIonChamberDialog::show() {
  cancelled_ = false;
  view_.showModal();
}

void DeleteIonChamberDialog::load() {
  localise(view_, context_.catalogue, catalogue::kDeleteIonChamber);
  cancelled_ = false;
  view_.setWaitMessageVisible(false);
  copy_ = context_.state.ionChambers;
  copy_.clearMarks();
  std::vector<std::string> names;
  for (std::size_t i = 0; i < copy_.size(); ++i) names.push_back(nameOf(copy_.records[i]));
  view_.setChamberItems(names, std::vector<bool>(names.size(), false));
  view_.setCalFactorItems({}, {});
  view_.setCalConstantText({});
  chamber_ = -1;
  if (pSelectedICIndex < 0 || static_cast<std::size_t>(pSelectedICIndex) >= copy_.size()) return;
  view_.selectChamberItem(pSelectedICIndex);
  showCalFactors(pSelectedICIndex);
  if (pSelectedCFIndex >= 0 && pSelectedCFIndex < copy_.records[pSelectedICIndex].calFactorCount) {
    view_.selectCalFactorItem(pSelectedCFIndex);
    calFactorSelected(pSelectedCFIndex);
  }
}

void DeleteIonChamberDialog::activated() {
  centreCursorOn(context_.services.windows, view_.cancelButton());
}

void DeleteIonChamberDialog::showCalFactors(int chamber) {
  chamber_ = chamber;
  std::vector<std::string> names;
  std::vector<bool> ticks;
  skipOnFailure([&] {
    const IonChamber& record = copy_.at(static_cast<std::size_t>(chamber));
    for (const CalFactor& calFactor : usedCalFactors(record)) {
      names.push_back(nameOf(calFactor));
      ticks.push_back(calFactor.mark == 1);
    }
  });
  view_.setCalFactorItems(names, ticks);
  view_.setCalConstantText({});
}

void DeleteIonChamberDialog::chamberSelected(int item) {
  if (item >= 0) showCalFactors(item);
}

void DeleteIonChamberDialog::calFactorSelected(int item) {
  view_.setCalConstantText(copy_.calConstantText(context_, chamber_, item));
}

void DeleteIonChamberDialog::chamberTicked(int item, bool ticked) {
  skipOnFailure([&] {
    IonChamber& record = copy_.at(static_cast<std::size_t>(item));
    record.mark = ticked ? 1 : 0;
    for (CalFactor& calFactor : usedCalFactors(record)) calFactor.mark = record.mark;
    view_.selectChamberItem(item);
    showCalFactors(item);
  });
}

void DeleteIonChamberDialog::calFactorTicked(int item, bool ticked) {
  skipOnFailure([&] {
    IonChamber& record = copy_.at(static_cast<std::size_t>(chamber_));
    copy_.calFactorAt(static_cast<std::size_t>(chamber_), static_cast<std::size_t>(item)).mark =
        ticked ? 1 : 0;
    view_.selectCalFactorItem(item);
    calFactorSelected(item);
    const bool all = std::ranges::all_of(usedCalFactors(record),
                                         [](const CalFactor& calFactor) { return calFactor.mark == 1; });
    if (!ticked || all) {
      record.mark = ticked ? 1 : 0;
      view_.setChamberTicked(chamber_, ticked);
    }
  });
}

void DeleteIonChamberDialog::deleteClicked() {
  const std::int32_t dosimeter = context_.state.firstDosimeter();
  if (context_.state.ionChambers.count == 0) return;
  std::size_t markedChambers = 0;
  bool anyMarked = false;
  for (std::size_t i = 0; i < copy_.size(); ++i) {
    const IonChamber& record = copy_.records[i];
    if (record.mark == 1) ++markedChambers;
    anyMarked = anyMarked || record.mark == 1 ||
                std::ranges::any_of(usedCalFactors(record),
                                    [](const CalFactor& calFactor) { return calFactor.mark == 1; });
  }
  Catalogue& catalogue = context_.catalogue;
  MessageBoxes& boxes = context_.services.messageBoxes;
  if (!anyMarked) {
    boxes.show(catalogue.text(catalogue::kSelectSomethingToDelete), catalogue.text(catalogue::kDelete),
               kBoxInformation);
    return;
  }
  if (dosimeter == 0) {
    boxes.show(catalogue.text(catalogue::kNoDosimeterConnected), catalogue.text(catalogue::kDelete),
               kBoxCritical);
    return;
  }
  if (boxes.show(catalogue.text(catalogue::kConfirmDelete), catalogue.text(catalogue::kDelete),
                 kBoxYesNo | kBoxQuestion) != kAnswerYes) {
    return;
  }
  view_.setWaitMessageVisible(true);
  deleteTicked(dosimeter, markedChambers == copy_.size());
  view_.setWaitMessageVisible(false);
  cancelled_ = false;
  view_.hide();
}

void DeleteIonChamberDialog::deleteTicked(std::int32_t dosimeter, bool everyChamber) {
  IonChamberTable& table = context_.state.ionChambers;
  if (everyChamber) {
    skipOnFailure([&] { context_.library.MBDeleteAllIonChambers(dosimeter); });
    table.records.clear();
    table.count = 0;
    return;
  }
  for (std::size_t i = 0; i < copy_.size(); ++i) {
    const IonChamber& record = copy_.records[i];
    if (record.mark == 1) {
      skipOnFailure([&] { context_.library.MBDeleteIonChamber(dosimeter, record.number); });
      continue;
    }
    for (const CalFactor& calFactor : usedCalFactors(record)) {
      if (calFactor.mark != 1) continue;
      skipOnFailure([&] {
        context_.library.MBDeleteCalfactor(dosimeter, record.number,
                                           static_cast<std::uint8_t>(calFactor.number));
      });
    }
  }
  copy_.removeMarked();
  table.records = copy_.records;
  table.count = copy_.count;
}

void DeleteIonChamberDialog::cancelClicked() {
  cancelled_ = true;
  view_.hide();
}

}  // namespace rx9400
