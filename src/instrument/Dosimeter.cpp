// The instrument's dosimeter and mAs meter configuration: the chamber table read from the dosimeter,
// the chosen chamber and cal factor handed back to the executive, its settings compared with the
// executive's, and the ion chamber dialogs opened for it.
//
// In detail: the records CongiureDoseDetector and ShowDosimeterIonChamber
// send are the executive's from the last SendCompareData, or the dosimeter's own before one; the
// comparison covers all fifteen values, Longs and bytes exactly and Singles as the dosimeter stores
// them (bit for bit as Singles, so 22 and 22.0 agree and 0.1 agrees only with the same Single); lists go
// to the executive as arrays of Variants, which a script can index.
#include <cstring>
#include <exception>
#include <stdexcept>

#include "core/DetectorType.h"
#include "core/DialogFactory.h"
#include "core/NumberText.h"
#include "core/Placement.h"
#include "device/UpdatePause.h"
#include "instrument/Instrument.h"
#include "ionchamber/ChamberFile.h"
#include "ionchamber/IonChamberSetupDialog.h"

namespace rx9400 {

namespace {

/// A Single as a Long, cut towards zero; a value no Long holds (or not a number) is a run-time failure
/// of the member.
std::int32_t truncatedLong(float value) {
  const double wide = value;
  if (!(wide > -2147483649.0 && wide < 2147483648.0))
    throw std::overflow_error("a Single out of the Long range");
  return static_cast<std::int32_t>(wide);
}

}  // namespace

void Instrument::SetMasInputtype(bool bVal) {
  masInputType_ = bVal ? 1 : 2;
  const SharedState& state = context_.state;
  try {
    for (std::size_t slot = 0; slot < state.slotCount(); ++slot) {
      if (!hasMasPart(state.kindAt(slot)) || state.identifierAt(slot) <= 0) continue;
      // False always names the first slot's detector, whichever slot is visited.
      context_.library.MBSetmAsInput(bVal ? state.identifierAt(slot) : state.identifierAt(0), bVal ? 1 : 2);
    }
  } catch (...) {
  }
}

std::string Instrument::GetDetectorType() {
  const SharedState& state = context_.state;
  if (state.slotCount() == 1) return std::to_string(state.kindAt(0));
  const std::optional<DetectorType> paired = pairedType(state.kindAt(0), state.kindAt(1));
  return paired ? std::to_string(static_cast<std::int32_t>(*paired)) : std::string();
}

std::string Instrument::pDetectorName(std::int32_t lIndexCount) {
  if (lIndexCount < 0 || static_cast<std::size_t>(lIndexCount) >= context_.state.slotCount()) return {};
  const std::string_view literal =
      detectorDisplayNameLiteral(context_.state.kindAt(static_cast<std::size_t>(lIndexCount)));
  return literal.empty() ? std::string() : context_.catalogue.text(literal);
}

bool Instrument::ShowDosimeterMode() {
  return false;
}

// The chosen chamber is the record at the chamber number less 1, and its cal factor the slot at the cal
// factor number less 1: numbers, not searches, as the executive's reports have always read them.
std::string Instrument::GetIonChamberName() {
  try {
    const IonChamberTable& table = context_.state.ionChambers;
    return nameOf(table.at(static_cast<std::size_t>(table.selectedChamber - 1)));
  } catch (const std::exception&) {
    return {};
  }
}

std::string Instrument::GetCalFactor() {
  try {
    IonChamberTable& table = context_.state.ionChambers;
    return nameOf(table.calFactorAt(static_cast<std::size_t>(table.selectedChamber - 1),
                                    static_cast<std::size_t>(table.selectedCalFactor - 1)));
  } catch (const std::exception&) {
    return {};
  }
}

std::string Instrument::GetCalConst() {
  try {
    const IonChamberTable& table = context_.state.ionChambers;
    return table.calConstantText(context_, table.selectedChamber - 1, table.selectedCalFactor - 1);
  } catch (const std::exception&) {
    return {};
  }
}

std::uint8_t Instrument::GetIonChamberInfo() {
  try {
    return readIonChamberInfo();
  } catch (...) {
    return 0;
  }
}

std::uint8_t Instrument::readIonChamberInfo() {
  const std::int32_t id = context_.state.firstDosimeter();
  if (id < 1) return 0;
  MBdllFunctions& library = context_.library;
  std::int16_t length = 0;
  {
    UpdatePause pause(library);
    length = library.MBGetChamberFileInfo(id);
  }
  Catalogue& catalogue = context_.catalogue;
  MessageBoxes& boxes = context_.services.messageBoxes;
  if (length <= 0) {
    boxes.show(catalogue.text(catalogue::kNoDataPointsFoundToRead), catalogue.text(catalogue::kNoData),
               kBoxCritical);
    return 0;
  }
  std::string bytes;
  {
    std::unique_ptr<SharedSection> section = context_.services.sharedMemory.open(sharedSectionName(id));
    std::unique_ptr<SharedView> view = section ? section->map(static_cast<std::size_t>(length)) : nullptr;
    if (view) bytes.assign(static_cast<const char*>(view->data()), static_cast<std::size_t>(length));
  }
  if (bytes.empty()) {
    boxes.show(catalogue.text(catalogue::kErrorInReadingChamberInformation),
               catalogue.text(catalogue::kReadError), kBoxCritical);
    return 0;
  }
  ChamberFile file = readChamberFile(bytes);
  for (const std::string& problem : file.problems) {
    context_.trace.trace({"$GetIonChamberInfo$ - Chamber file :: " + problem});
  }
  IonChamberTable& table = context_.state.ionChambers;
  table.records = std::move(file.chambers);
  table.count = static_cast<std::uint8_t>(table.records.size());
  const IonChamberSelection selection = library.MBGetIonChamberCalFactor(id);
  library.MBSetIonChamberCalFactor(id, selection.chamberNumber, selection.calFactorNumber);
  table.selectedChamber = selection.chamberNumber;
  table.selectedCalFactor = selection.calFactorNumber;
  table.noIonChamber = selection.chamberNumber == 0;
  const auto chosen = table.indexOfNumber(selection.chamberNumber);
  table.selectedChamberName = chosen ? nameOf(table.records[*chosen]) : std::string();
  return table.count;
}

AutomationValue Instrument::GetIonChambers() {
  try {
    const std::int32_t id = context_.state.firstDosimeter();
    if (id < 1) return {};
    const std::int32_t count = context_.library.MBGetNoOfIonChambers(id);
    IonChamberTable& table = context_.state.ionChambers;
    if (count != static_cast<std::int32_t>(table.size())) readIonChamberInfo();
    std::vector<std::string> names;
    for (std::size_t i = 0; i < table.size(); ++i) names.push_back(nameOf(table.records[i]));
    return ScriptList{names};
  } catch (...) {
    return {};
  }
}

void Instrument::sendDosimeterSettings() {
  MBdllFunctions& library = context_.library;
  for (const std::int32_t id : context_.state.dosimeterIdentifiers()) {
    AdcfSettings adcf = customAdcf_ ? *customAdcf_ : library.MBGetADCF(id);
    library.MBSetADCF(id, adcf);
    DosimeterUnit unit = customUnit_ ? *customUnit_ : library.MBGetDosimeterUnit(id);
    library.MBSetDosimeterUnit(id, unit);
  }
}

AutomationValue Instrument::CongiureDoseDetector() {
  try {
    const std::int32_t id = context_.state.firstDosimeter();
    if (id < 1) return {};
    sendDosimeterSettings();
    readIonChamberInfo();
    IonChamberTable& table = context_.state.ionChambers;
    if (table.count == 0 || table.selectedChamber == 0) {
      Catalogue& catalogue = context_.catalogue;
      context_.services.messageBoxes.show(catalogue.text(catalogue::kNoIonChambersConfigured) + "\n" +
                                              catalogue.text(catalogue::kAddIonChamberDetails),
                                          catalogue.text(catalogue::kICNotification),
                                          kBoxOk | kBoxInformation);
      table.readOnly = false;
      DisplayIonChamber();
    }
    std::vector<std::string> chosen{table.selectedChamberName, {}};
    skipOnFailure([&] { chosen[1] = GetCalFactor(); });
    return ScriptList{chosen};
  } catch (...) {
    return {};
  }
}

void Instrument::ShowDosimeterIonChamber() {
  try {
    sendDosimeterSettings();
  } catch (...) {
  }
}

AutomationValue Instrument::DisplayIonChamber() {
  try {
    auto view = context_.services.dialogs.newIonChamberSetupView();
    if (!view) return {};
    IonChamberSetupDialog dialog(context_, *view);
    dialog.show(topmostRequired(context_.services.registry));
  } catch (...) {
  }
  return {};
}

bool Instrument::SendCompareData(CompareData& values) {
  try {
    return compareDosimeterSettings(values);
  } catch (...) {
    return false;
  }
}

bool Instrument::compareDosimeterSettings(CompareData& values) {
  const std::int32_t id = context_.state.firstDosimeter();
  if (id < 1) return false;
  MBdllFunctions& library = context_.library;
  AdcfSettings adcf = library.MBGetADCF(id);
  DosimeterMode mode = library.MBGetDosimeterMode(id);
  DosimeterUnit unit = library.MBGetDosimeterUnit(id);
  TempPressureOffset offset = library.MBGetTempPressureOffset(id);

  AdcfSettings wantedAdcf = adcf;
  wantedAdcf.mode = values.lADCF;
  wantedAdcf.useSetTemperature = static_cast<std::uint8_t>(values.lSetTemperature);
  wantedAdcf.useSetPressure = static_cast<std::uint8_t>(values.lSetPressure);
  wantedAdcf.setTemperature = values.rSetTemperature;
  wantedAdcf.setPressure = values.rSetPressure;
  wantedAdcf.referenceTemperature = static_cast<float>(values.lRefTeperature);
  DosimeterMode wantedMode = mode;
  wantedMode.mode = values.lMode;
  wantedMode.autoReset = values.bAutoReset;
  DosimeterUnit wantedUnit = unit;
  wantedUnit.doseUnit = values.lDoseUnit;
  wantedUnit.doseRateUnit = values.lDoseRateUnit;
  wantedUnit.frameRate = static_cast<std::int16_t>(values.lFrameRate);
  wantedUnit.temperatureUnit = values.lTempUnit;
  wantedUnit.pressureUnit = values.lPresUnit;
  const TempPressureOffset wantedOffset{values.rOffPres, values.rOffTemp};

  // A value a record cannot hold (a byte or an Integer out of range) differs from every stored one.
  const bool fits = values.lSetTemperature == wantedAdcf.useSetTemperature &&
                    values.lSetPressure == wantedAdcf.useSetPressure &&
                    values.lFrameRate == wantedUnit.frameRate &&
                    static_cast<float>(values.lRefTeperature) == wantedAdcf.referenceTemperature;
  const bool adcfDiffers = std::memcmp(&adcf, &wantedAdcf, sizeof adcf) != 0 || !fits;
  const bool modeDiffers = std::memcmp(&mode, &wantedMode, sizeof mode) != 0;
  const bool unitDiffers = std::memcmp(&unit, &wantedUnit, sizeof unit) != 0;
  const bool offsetDiffers = std::memcmp(&offset, &wantedOffset, sizeof offset) != 0;
  const bool differ = adcfDiffers || modeDiffers || unitDiffers || offsetDiffers;
  if (differ) {
    Catalogue& catalogue = context_.catalogue;
    const int answer = context_.services.messageBoxes.show(
        catalogue.text(catalogue::kSettingsDiffer) + "\n" + catalogue.text(catalogue::kSettingsDifferChoice),
        catalogue.text(catalogue::kDisplayNameDose), kBoxOkCancel | kBoxQuestion);
    if (answer == kAnswerOk) {
      if (adcfDiffers) library.MBSetADCF(id, wantedAdcf);
      if (modeDiffers) library.MBSetDosimeterMode(id, wantedMode);
      if (unitDiffers) library.MBSetDosimeterUnit(id, wantedUnit);
      if (offsetDiffers) library.MBSetTempPressureOffset(id, const_cast<TempPressureOffset&>(wantedOffset));
      customAdcf_ = wantedAdcf;
      customUnit_ = wantedUnit;
      return true;
    }
  }
  // The dosimeter's own values go back to the executive.
  values = CompareData{adcf.mode,           adcf.useSetTemperature, adcf.useSetPressure,
                       adcf.setTemperature, adcf.setPressure,       truncatedLong(adcf.referenceTemperature),
                       mode.mode,           mode.autoReset,         unit.doseUnit,
                       unit.doseRateUnit,   unit.frameRate,         unit.temperatureUnit,
                       unit.pressureUnit,   offset.pressureOffset,  offset.temperatureOffset};
  customAdcf_ = adcf;
  customUnit_ = unit;
  return differ;
}

}  // namespace rx9400
