// The instrument's properties and measurement settings: what the executive sets before an exposure and
// sends to the detectors, and the simple facts it reads back.
#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "core/DetectorType.h"
#include "core/NumberText.h"
#include "core/Text.h"
#include "instrument/Instrument.h"

namespace rx9400 {
namespace {

/// `value` when it lies in [low, high], else `fallback`.
std::int32_t inRangeOr(std::int32_t value, std::int32_t low, std::int32_t high, std::int32_t fallback) {
  return value >= low && value <= high ? value : fallback;
}

}  // namespace

bool Instrument::modeIs(std::string_view literal) {
  return context_.state.currentMode == context_.catalogue.text(literal);
}

bool Instrument::settingsAre(std::string_view literal) {
  return context_.state.currentSettings == context_.catalogue.text(literal);
}

template <typename Action>
void Instrument::forAioSlots(Action action) {
  for (std::size_t slot = 0; slot < context_.state.slotCount(); ++slot) {
    const std::int32_t id = context_.state.identifierAt(slot);
    if (id >= 1 && hasAioPart(context_.state.kindAt(slot))) action(id);
  }
}

bool Instrument::pChargingStatus() {
  return context_.state.charging;
}
std::uint8_t Instrument::pPercentageCharge() {
  return context_.state.chargePercent;
}
float Instrument::pResolution() {
  return resolution_;
}
void Instrument::pCurrentMode(const std::string& value) {
  context_.state.currentMode = value;
}
void Instrument::pCurrentSettings(const std::string& value) {
  context_.state.currentSettings = value;
}

double Instrument::pGetExposureTime() {
  try {
    return valOS(exposureTimeText_);
  } catch (...) {
    return 0;
  }
}

double Instrument::pGetExposurekVp() {
  try {
    return valOS(kvpText_);
  } catch (...) {
    return 0;
  }
}

void Instrument::InitTimer() {
  lastActivity_ = context_.services.clock.milliseconds();
}

void Instrument::pDoseUnits(std::uint8_t value) {
  context_.state.settings.doseUnit = inRangeOr(value, 1, 2, 1);
}
void Instrument::pDoseRateUnits(std::uint8_t value) {
  context_.state.settings.doseRateUnit = inRangeOr(value, 1, 4, 1);
}
void Instrument::pFluoroType(std::uint8_t value) {
  context_.state.settings.fluoroType = inRangeOr(value, 1, 2, 1);
}
void Instrument::pTimeUnit(std::uint8_t value) {
  context_.state.settings.timeUnit = inRangeOr(value, 1, 2, 1);
}
void Instrument::pPercentKV(std::uint8_t value) {
  context_.state.settings.percentKV = value;
}
void Instrument::pDelay(std::int16_t value) {
  context_.state.settings.delay = value;
}
void Instrument::pIncludeDelay(bool value) {
  context_.state.settings.includeDelay = value ? kVBTrue : kVBFalse;
}

void Instrument::pTargetFilter(std::string& value) {
  char* field = context_.state.settings.targetFilter;
  std::memset(field, 0, kTargetFilterNameLength);
  try {
    if (value.empty()) return;
    const std::string bytes = context_.services.locale.toAnsi(value);
    std::memcpy(field, bytes.data(), std::min(bytes.size(), kTargetFilterNameLength));
  } catch (...) {
  }
}

std::string Instrument::pSerialNumber() {
  std::string text;
  for (const DetectorInfo& info : context_.state.detectors) {
    if (info.identifier >= 1) text += std::to_string(info.serialNumber) + ",";
  }
  return text;
}

std::string Instrument::pFirmWareVersion() {
  std::string text;
  for (const DetectorInfo& info : context_.state.detectors) {
    if (info.identifier < 1) continue;
    text += std::to_string(info.firstVersionMajor) + "." + std::to_string(info.firstVersionMinor) + " - " +
            std::to_string(info.secondVersionMajor) + "." + std::to_string(info.secondVersionMinor) + ",";
  }
  return text;
}

void Instrument::EnableMeasurements(bool fVal) {
  try {
    for (std::size_t slot = 0; slot < context_.state.slotCount(); ++slot) {
      const std::int32_t id = context_.state.identifierAt(slot);
      if (id < 1) continue;
      dataTaken_ = false;
      if (fVal) {
        context_.library.MBEnableMeasurement(id);
        context_.state.measurementEnabled = true;
      } else {
        context_.library.MBDisableMeasurement(id);
        context_.state.measurementEnabled = false;
      }
    }
  } catch (...) {
  }
}

bool Instrument::IsDetectorConnected() {
  bool connected = false;
  try {
    for (std::size_t slot = 0; slot < context_.state.slotCount(); ++slot) {
      const std::int32_t id = context_.state.identifierAt(slot);
      connected = id >= 1 && context_.library.MBGetDetectorStatus(id).connectionState == kConnected;
    }
  } catch (...) {
  }
  return connected;
}

std::uint8_t Instrument::GetNumberOfTargetFilters() {
  std::uint8_t count = 0;
  try {
    forAioSlots([&](std::int32_t id) {
      const std::int32_t valid = context_.library.MBGetNumberOfValidTargetFilters(id);
      // A count no Byte holds fails the conversion, and the member answers 0.
      if (valid < 0 || valid > 255) throw std::overflow_error("the target filter count is no Byte");
      count = static_cast<std::uint8_t>(valid);
    });
  } catch (const std::overflow_error&) {
    count = 0;
  } catch (...) {
  }
  return count;
}

void Instrument::GetValidTargetFilters(std::vector<std::string>& sValidTargetFilters,
                                       std::uint8_t bNoOfTargetFilter) {
  try {
    forAioSlots([&](std::int32_t id) {
      const auto names = context_.library.MBGetValidTargetFilters(id, bNoOfTargetFilter);
      for (std::size_t i = 0; i < names.size() && i < sValidTargetFilters.size(); ++i) {
        sValidTargetFilters[i] =
            context_.services.locale.fromAnsi(textOfFixedBytes(names[i].name, sizeof(names[i].name)));
      }
    });
  } catch (...) {
  }
}

std::string Instrument::GetDefaultTargetFilterName() {
  std::string name;
  try {
    forAioSlots([&](std::int32_t id) {
      const TargetFilterName fallback = context_.library.MBGetDefaultTargetFilter(id);
      name = context_.services.locale.fromAnsi(textOfFixedBytes(fallback.name, sizeof(fallback.name)));
    });
  } catch (...) {
  }
  return name;
}

void Instrument::UpdateDefaultTargetFilterInSettings() {
  try {
    forAioSlots([&](std::int32_t id) {
      context_.library.MBGetNumberOfValidTargetFilters(id);
      const TargetFilterName fallback = context_.library.MBGetDefaultTargetFilter(id);
      std::memcpy(context_.state.settings.targetFilter, fallback.name, kTargetFilterNameLength);
    });
  } catch (...) {
  }
}

void Instrument::ChangeDetectorMode() {
  try {
    forAioSlots([&](std::int32_t id) {
      std::int32_t mode = kModeRadio;
      if (modeIs(catalogue::kFLUORO)) {
        mode = kModeFluoro;
      } else if (modeIs(catalogue::kRADIO)) {
        mode = kModeRadio;
      } else if (modeIs(catalogue::kMAMMO)) {
        mode = kModeMammo;
      } else if (modeIs(catalogue::kDENTAL)) {
        mode = kModeDental;
      }
      context_.library.MBSetDetectorMode(id, mode);
    });
  } catch (...) {
  }
}

void Instrument::ChangeDetectorSetup() {
  try {
    forAioSlots([&](std::int32_t id) {
      std::int32_t setup = 1;
      if (settingsAre(catalogue::kAUTO)) {
        setup = 1;
      } else if (settingsAre(catalogue::kMANUAL) || settingsAre(catalogue::kDEFAULT)) {
        setup = 2;
      }
      context_.library.MBSetSetup(id, setup);
    });
  } catch (...) {
  }
}

void Instrument::ChangeSettings() {
  try {
    MeasurementSettings& settings = context_.state.settings;
    forAioSlots([&](std::int32_t id) {
      std::memset(settings.reserved, 0, sizeof(settings.reserved));
      const bool noTargetFilter =
          std::all_of(std::begin(settings.targetFilter), std::end(settings.targetFilter),
                      [](char c) { return c == '\0'; });
      if (noTargetFilter) UpdateDefaultTargetFilterInSettings();
      if (settingsAre(catalogue::kAUTO)) {
        settings.includeDelay = kVBFalse;
        settings.percentKV = 0;
        settings.fluoroType = 1;
        settings.timeUnit = 1;
        settings.delay = 0;
      }
      context_.library.MBSetMeasurementSettings(id, settings);
    });
  } catch (...) {
  }
}

void Instrument::repairDosimeterRecords(std::int32_t id) {
  MBdllFunctions& library = context_.library;
  if (!context_.state.dosimeterSettingsLocked) {
    AdcfSettings adcf = library.MBGetADCF(id);
    bool repaired = false;
    if (adcf.mode != 1 && adcf.mode != 2) {
      adcf.mode = 2;
      adcf.useSetTemperature = 0;
      adcf.useSetPressure = 0;
      repaired = true;
    }
    for (float* pressure : {&adcf.setPressure, &adcf.defaultPressure}) {
      if (!(*pressure >= 522 && *pressure <= 795)) {
        *pressure = 522;
        repaired = true;
      }
    }
    for (float* temperature : {&adcf.setTemperature, &adcf.defaultTemperature}) {
      if (!(*temperature >= 0 && *temperature <= 50)) {
        *temperature = 0;
        repaired = true;
      }
    }
    // The reference temperature is checked through its text, and a wrong one repairs the set
    // temperature: the record is kept that way.
    const double reference = valOS(singleText(adcf.referenceTemperature));
    if (reference != 22 && reference != 20) {
      adcf.setTemperature = 20;
      repaired = true;
    }
    if (repaired) library.MBSetADCF(id, adcf);
  }

  DosimeterMode mode = library.MBGetDosimeterMode(id);
  bool modeRepaired = false;
  if (mode.autoReset > 1) {
    mode.autoReset = 0;
    modeRepaired = true;
  }
  if (mode.mode < 1 || mode.mode > 4) {
    mode.mode = 1;
    modeRepaired = true;
  }
  if (modeRepaired) library.MBSetDosimeterMode(id, mode);
  static constexpr std::string_view kModeTexts[] = {catalogue::kPower, catalogue::kDose, catalogue::kRate,
                                                    catalogue::kLowRate};
  dosimeterModeText_ = context_.catalogue.text(kModeTexts[mode.mode - 1]);

  if (!context_.state.dosimeterSettingsLocked) {
    DosimeterUnit unit = library.MBGetDosimeterUnit(id);
    const DosimeterUnit read = unit;
    unit.doseUnit = inRangeOr(unit.doseUnit, 1, 3, context_.state.preferSecondDoseUnit ? 2 : 1);
    unit.doseRateUnit = inRangeOr(unit.doseRateUnit, 1, 5, 1);
    unit.temperatureUnit = inRangeOr(unit.temperatureUnit, 1, 3, 1);
    unit.pressureUnit = inRangeOr(unit.pressureUnit, 1, 6, 2);
    unit.frameRate = static_cast<std::int16_t>(inRangeOr(unit.frameRate, 0, 1200, 0));
    if (std::memcmp(&read, &unit, sizeof unit) != 0) {
      library.MBSetDosimeterUnit(id, unit);
      if (context_.state.preferSecondDoseUnit && unit.doseUnit == 1) {
        unit.doseUnit = 2;
        library.MBSetDosimeterUnit(id, unit);
      }
    }
    temperatureUnit_ = unit.temperatureUnit;
    pressureUnit_ = unit.pressureUnit;
  }
}

void Instrument::ChangeAllsettings() {
  errorNoticeShown_ = false;
  sensorResetNoticeShown_ = false;
  try {
    for (std::size_t slot = 0; slot < context_.state.slotCount(); ++slot) {
      const std::int32_t id = context_.state.identifierAt(slot);
      if (id >= 1 && hasDosePart(context_.state.kindAt(slot))) repairDosimeterRecords(id);
    }
  } catch (...) {
  }
}

double Instrument::Val_OS(const std::string& sValue) {
  try {
    return valOS(sValue);
  } catch (...) {
    return 0;
  }
}

}  // namespace rx9400
