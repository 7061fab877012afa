// The ion chamber and cal factor editor's presenter.
#include "ionchamber/EditIonChamberDialog.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "core/IonChamberTable.h"
#include "core/NumberText.h"
#include "core/Placement.h"

namespace rx9400 {

namespace {

bool holdsAny(std::string_view text, std::string_view characters) {
  return text.find_first_of(characters) != std::string_view::npos;
}

/// The whole text as a Single, the way the platform converts a text to a number: blanks around it, a
/// sign, digits with "." or "," as the decimal point and an exponent (E or D). Nothing when the text is
/// not a number or lies outside the Single range.
std::optional<float> singleOfText(std::string text) {
  std::replace(text.begin(), text.end(), ',', '.');
  std::replace(text.begin(), text.end(), 'D', 'E');
  std::replace(text.begin(), text.end(), 'd', 'E');
  const auto first = text.find_first_not_of(' ');
  const auto last = text.find_last_not_of(' ');
  if (first == std::string::npos) return std::nullopt;
  text = text.substr(first, last - first + 1);
  for (const char c : text) {
    if (!std::isdigit(static_cast<unsigned char>(c)) &&
        std::string_view("+-.Ee").find(c) == std::string_view::npos) {
      return std::nullopt;  // strtod would also read hexadecimal, "inf" and "nan"
    }
  }
  char* end = nullptr;
  errno = 0;
  const double value = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || errno == ERANGE || std::fabs(value) > 3.402823466e38) {
    return std::nullopt;
  }
  return static_cast<float>(value);
}

}  // namespace

bool editorAcceptsKey(EditorField field, std::string_view text, int selStart, int selLength, char key) {
  if (field == EditorField::IonChamberName || field == EditorField::CalFactorName) {
    return std::isalnum(static_cast<unsigned char>(key)) != 0 ||
           (key != '\0' && std::string_view(" \b-/:.").find(key) != std::string_view::npos);
  }
  if (key == '\b') return true;
  const std::size_t start =
      std::min<std::size_t>(static_cast<std::size_t>(std::max(selStart, 0)), text.size());
  const std::size_t length =
      std::min<std::size_t>(static_cast<std::size_t>(std::max(selLength, 0)), text.size() - start);
  std::string remaining(text.substr(0, start));
  remaining += text.substr(start + length);
  const bool signed_ = holdsAny(remaining, "+-");
  if (key == '+' || key == '-') return !signed_ && selStart == 0;
  const bool mantissa = field == EditorField::Mantissa;
  if (key == '.' || key == ',') return mantissa && !holdsAny(remaining, ".,");
  if (key < '0' || key > '9') return false;
  std::size_t limit = mantissa ? (holdsAny(remaining, ".,") ? 8 : 7) : 2;
  if (signed_) ++limit;
  return remaining.size() < limit;
}

EditIonChamberDialog::EditIonChamberDialog(PluginContext& context, EditIonChamberView& view)
    : context_(context), view_(view) {
  view_.attach(*this);
}

void EditIonChamberDialog::Formsetting(EditorMode mode) {
  mode_ = mode;
}

void EditIonChamberDialog::show(const std::string& title) {
  title_ = title;
  cancelled_ = false;
  view_.showModal();
}

void EditIonChamberDialog::load() {
  Catalogue& catalogue = context_.catalogue;
  localise(view_, catalogue);
  if (!title_.empty()) view_.setTitle(title_);
  view_.setUnitEntries({catalogue.text(catalogue::kUnitRC), catalogue.text(catalogue::kUnitRnC),
                        catalogue.text(catalogue::kUnitGyC), catalogue.text(catalogue::kUnitGynC)});
  IonChamberTable& table = context_.state.ionChambers;
  switch (mode_) {
    case EditorMode::NewChamber:
      view_.setHeading(catalogue.text(catalogue::kNewIC));
      break;
    case EditorMode::NewCalFactor:
      view_.setHeading(catalogue.text(catalogue::kNewCF));
      skipOnFailure([&] {
        view_.setFieldText(EditorField::IonChamberName,
                           nameOf(table.at(static_cast<std::size_t>(pSelectedICIndex))));
      });
      view_.focusField(EditorField::CalFactorName);
      break;
    case EditorMode::Edit:
      view_.setHeading(catalogue.text(catalogue::kEditIC));
      skipOnFailure([&] {
        view_.setFieldText(EditorField::IonChamberName,
                           nameOf(table.at(static_cast<std::size_t>(pSelectedICIndex))));
      });
      skipOnFailure([&] {
        const CalFactor& calFactor = table.calFactorAt(static_cast<std::size_t>(pSelectedICIndex),
                                                       static_cast<std::size_t>(pSelectedCFIndex));
        view_.setFieldText(EditorField::CalFactorName, nameOf(calFactor));
        const ScientificParts parts =
            scientificParts(calFactor.calConstant, context_.services.locale.decimalSeparator());
        view_.setFieldText(EditorField::Mantissa, parts.mantissa);
        view_.setFieldText(EditorField::Exponent, (parts.sign == '-' ? "-" : "") + parts.exponent);
        view_.selectUnit(calFactor.unitCode >= 1 && calFactor.unitCode <= 4 ? calFactor.unitCode - 1 : -1);
      });
      break;
  }
}

void EditIonChamberDialog::activated() {
  centreCursorOn(context_.services.windows, view_.okButton());
}

void EditIonChamberDialog::fieldFocused(EditorField field) {
  if (mode_ == EditorMode::NewCalFactor && field == EditorField::IonChamberName) {
    view_.focusField(EditorField::CalFactorName);
  }
}

bool EditIonChamberDialog::refuse(const std::string& text, const std::string& title) {
  context_.services.messageBoxes.show(text, title.empty() ? title_ : title, kBoxCritical);
  return false;
}

bool EditIonChamberDialog::namesAndNumbersValid() {
  Catalogue& catalogue = context_.catalogue;
  const std::string newText = catalogue.text(catalogue::kNew);
  if (mode_ != EditorMode::NewCalFactor) {
    const std::string name = view_.fieldText(EditorField::IonChamberName);
    if (name.empty()) return refuse(catalogue.text(catalogue::kPleaseEnterIonChamberName));
    if (name == newText) {
      return refuse(catalogue.text(catalogue::kIonChamberNameCannotBe) + newText +
                    catalogue.text(catalogue::kEnterDifferentName));
    }
  }
  const std::string calFactorName = view_.fieldText(EditorField::CalFactorName);
  if (calFactorName.empty()) return refuse(catalogue.text(catalogue::kPleaseEnterCalFactorName));
  if (calFactorName == newText) {
    return refuse(catalogue.text(catalogue::kCalFactorNameCannotBe) + newText +
                  catalogue.text(catalogue::kEnterDifferentName));
  }
  const std::string mantissa = view_.fieldText(EditorField::Mantissa);
  if (mantissa.empty()) return refuse(catalogue.text(catalogue::kPleaseEnterCalConstantMantisaPart));
  if (!(valOS(mantissa) > 0)) return refuse(catalogue.text(catalogue::kPleaseEnterValueGreaterThan0));
  const std::string exponent = view_.fieldText(EditorField::Exponent);
  if (exponent.empty()) return refuse(catalogue.text(catalogue::kPleaseEnterCalConstantExponentPart));
  const double power = valOS(exponent);
  if (power < -20 || power > 20) {
    return refuse(catalogue.text(catalogue::kPleaseEnterExponentInBetween) + "-20" +
                  catalogue.text(catalogue::kTo) + "20" + ".");
  }
  return true;
}

void EditIonChamberDialog::okClicked() {
  const std::int32_t dosimeter = context_.state.firstDosimeter();
  if (!namesAndNumbersValid()) return;
  bool done = true;
  skipOnFailure([&] {
    switch (mode_) {
      case EditorMode::NewCalFactor:
        done = addCalFactor(dosimeter);
        break;
      case EditorMode::NewChamber:
        done = addChamber(dosimeter);
        break;
      case EditorMode::Edit:
        done = edit(dosimeter);
        break;
    }
  });
  if (!done) return;
  cancelled_ = false;
  view_.hide();
}

void EditIonChamberDialog::cancelClicked() {
  cancelled_ = true;
  view_.hide();
}

void EditIonChamberDialog::fillCalFactor(CalFactor& slot, const std::string& exponentLetter) {
  setName(slot.name, view_.fieldText(EditorField::CalFactorName));
  slot.unitCode = view_.unitEntry() + 1;
  // A text that does not convert leaves the slot's constant as it was.
  if (const auto constant = singleOfText(view_.fieldText(EditorField::Mantissa) + exponentLetter +
                                         view_.fieldText(EditorField::Exponent))) {
    slot.calConstant = *constant;
  }
}

bool EditIonChamberDialog::addCalFactor(std::int32_t dosimeter) {
  IonChamberTable& table = context_.state.ionChambers;
  const auto chamber = static_cast<std::size_t>(pSelectedICIndex);
  if (table.calFactorNameTaken(chamber, view_.fieldText(EditorField::CalFactorName))) {
    return refuse(context_.catalogue.text(catalogue::kCalFactorNameExists));
  }
  if (dosimeter < 1) return refuse(context_.catalogue.text(catalogue::kNoDosimeterConnected));
  IonChamber& record = table.at(chamber);
  CalFactor calFactor = table.nextCalFactorSlot(chamber);
  // The joining keeps the catalogue key itself, not its text.
  fillCalFactor(calFactor, std::string(catalogue::kEditorExponentLetter));
  calFactor.number = context_.library.MBAddNewCalFactor(dosimeter, record.number, calFactor);
  if (calFactor.number < 1) {
    refuse(context_.catalogue.text(catalogue::kUnableToAddNewCalFactor));
    return true;
  }
  table.nextCalFactorSlot(chamber) = calFactor;
  ++record.calFactorCount;
  context_.services.messageBoxes.show(context_.catalogue.text(catalogue::kNewCalFactorIsAddedSuccessfully),
                                      title_, kBoxOk);
  return true;
}

bool EditIonChamberDialog::addChamber(std::int32_t dosimeter) {
  IonChamberTable& table = context_.state.ionChambers;
  const std::string name = view_.fieldText(EditorField::IonChamberName);
  if (table.chamberNameTaken(name)) return refuse(context_.catalogue.text(catalogue::kIonChamberNameExists));
  if (dosimeter < 1) return refuse(context_.catalogue.text(catalogue::kNoDosimeterConnected));
  const std::int16_t number = context_.library.MBAddNewIonChamber(dosimeter, nameBytes(name));
  if (number < 1) {
    refuse(context_.catalogue.text(catalogue::kUnableToAddNewIonChamber));
    return true;
  }
  const std::size_t index = table.appendChamber(name, number);
  IonChamber& record = table.records[index];
  CalFactor calFactor = record.calFactors[0];
  fillCalFactor(calFactor, std::string(catalogue::kEditorExponentLetter));
  calFactor.number = context_.library.MBAddNewCalFactor(dosimeter, number, calFactor);
  if (calFactor.number < 1) {
    record.calFactorCount = 0;
    table.dropLastChamber();
    refuse(context_.catalogue.text(catalogue::kUnableToAddNewCalFactor));
    return true;
  }
  record.calFactors[0] = calFactor;
  record.calFactorCount = 1;
  context_.services.messageBoxes.show(context_.catalogue.text(catalogue::kNewIonChamberIsAddedSuccessfully),
                                      title_, kBoxInformation);
  return true;
}

bool EditIonChamberDialog::edit(std::int32_t dosimeter) {
  IonChamberTable& table = context_.state.ionChambers;
  const auto chamber = static_cast<std::size_t>(pSelectedICIndex);
  const auto slot = static_cast<std::size_t>(pSelectedCFIndex);
  const std::string name = view_.fieldText(EditorField::IonChamberName);
  if (table.chamberNameTaken(name, chamber))
    return refuse(context_.catalogue.text(catalogue::kIonChamberNameExists));
  IonChamber& record = table.at(chamber);
  const bool hasCalFactor = pSelectedCFIndex >= 0 && slot < record.calFactorCount;
  if (hasCalFactor && table.calFactorNameTaken(chamber, view_.fieldText(EditorField::CalFactorName), slot)) {
    return refuse(context_.catalogue.text(catalogue::kCalFactorNameExists),
                  context_.catalogue.text(catalogue::kEditCF));
  }
  if (dosimeter < 1) return refuse(context_.catalogue.text(catalogue::kNoDosimeterConnected));
  setName(record.name, name);
  skipOnFailure([&] { context_.library.MBEditIonChamber(dosimeter, record.number, nameBytes(name)); });
  if (!hasCalFactor) return true;
  CalFactor& calFactor = record.calFactors[slot];
  fillCalFactor(calFactor, context_.catalogue.text(catalogue::kEditorExponentLetter));
  skipOnFailure([&] { context_.library.MBEditCalfactor(dosimeter, record.number, calFactor); });
  return true;
}

}  // namespace rx9400
