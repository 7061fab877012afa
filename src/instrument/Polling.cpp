// Exposure polling: one pass over the detector table per CheckDataStatus, turning the detectors' data
// into the executive's events.
#include <string>

#include "core/DetectorType.h"
#include "core/DialogFactory.h"
#include "core/NumberText.h"
#include "core/Placement.h"
#include "core/Text.h"
#include "instrument/Instrument.h"
#include "session/ZeroErrorDialog.h"

namespace rx9400 {
namespace {

constexpr const char* kOneExposureFinished =
    "--------------------------------------------One Exp Finished ------------------------------------------";

/// The all-in-one detector's dose rate, per second, in the settings' dose-rate unit (1 per second,
/// 2 per minute, 3 per hour, 4 a hundredth); any other unit keeps it per second.
double doseRateFactor(const MeasurementSettings& settings) {
  constexpr double kFactors[] = {1, 60, 60 * 60, 0.01};
  return settings.doseRateUnit >= 1 && settings.doseRateUnit <= 4 ? kFactors[settings.doseRateUnit - 1] : 1;
}

/// The dosimeter's pressure (mmHg) in one of the executive's pressure units, and whether that unit
/// shows a decimal; unit 2, and any unknown one, is mmHg itself.
struct PressureUnit {
  double factor;
  bool decimal;
};
PressureUnit pressureUnit(std::int32_t unit) {
  constexpr PressureUnit kUnits[] = {{0.03937008, true}, {1, false},        {1.333224, false},
                                     {1.333224, false},  {0.0446033, true}, {0.01359554, true}};
  return unit >= 1 && unit <= 6 ? kUnits[unit - 1] : PressureUnit{1, false};
}

}  // namespace

float Instrument::ScaleDoseValue(double value) {
  const bool unitOne = context_.state.settings.doseUnit == 1;
  if (modeIs(catalogue::kFLUORO))
    return static_cast<float>(unitOne ? value * 0.001 * 0.001 : value * 0.001 * 0.01);
  return static_cast<float>(unitOne ? value * 0.001 : value * 0.01);
}

std::string Instrument::FormatMeasuredValue(std::int32_t status, float value) {
  switch (status) {
    case 3:
      return context_.catalogue.text(catalogue::kOL);
    case 5:
      return context_.catalogue.text(catalogue::kUL);
    case 2:
    case 4:
    case 6:
      return singleText(value, context_.services.locale.decimalSeparator()) + "*";
    default:
      return singleText(value, context_.services.locale.decimalSeparator());
  }
}

bool Instrument::pollConnectionAndBattery(std::size_t slot, std::int32_t id, const DetectorStatus& status) {
  const Alert alert = dueAlert(slot, status);
  if (status.connectionState == kConnectionLost) context_.state.measurementEnabled = false;
  giveAlert(alert, slot, id, 400);
  return status.connectionState == kConnected;
}

void Instrument::wakeFromSleep(std::size_t slot) {
  if (context_.state.alerts[slot].sleeping == kVBFalse) return;
  lastActivity_ = context_.services.clock.milliseconds();
  closeSleepNotice(slot);
  events_.AddWakeUpButton(false);
}

void Instrument::askAboutZeroError(std::size_t slot, std::int32_t id) {
  Catalogue& catalogue = context_.catalogue;
  context_.library.MBDisableMeasurement(id);
  const DetectorInfo& info = context_.state.detectors[slot];
  auto view = context_.services.dialogs.newZeroErrorView();
  ZeroErrorDialog dialog(context_, *view);
  const bool connect = dialog.ask(catalogue.text(catalogue::kDetectorZeroError),
                                  std::to_string(info.serialNumber) + " " +
                                      catalogue.text(detectorDisplayNameLiteral(context_.state.kindAt(slot))),
                                  topmostRequired(context_.services.registry));
  if (connect) {
    context_.library.MBSetPowerMode(id, kPowerShutDown);
  } else {
    context_.library.MBEnableMeasurement(id);
  }
}

bool Instrument::pollAio(std::size_t slot, std::int32_t id, const DetectorStatus& status) {
  if (status.dataAvailable != 0) wakeFromSleep(slot);
  if (status.measurementState == kMeasurementZeroError) {
    askAboutZeroError(slot, id);
    return false;
  }

  const std::uint32_t now = context_.services.clock.milliseconds();
  const bool started = status.exposureStarted != 0;
  if (started) {
    exposureTimeText_.clear();
    kvpText_.clear();
    dataTaken_ = false;
    lastActivity_ = now;
  }
  bool dataReady = false;
  if (status.dataAvailable != 0 && !dataTaken_) {
    context_.trace.trace({"Data true"});
    dataReady = true;
    lastActivity_ = now;
  }
  // The status is looked at first, so that an idle pass asks the catalogue for nothing.
  const bool fluoroRunning = status.fluoroRunning != 0 && !dataTaken_ && modeIs(catalogue::kFLUORO);
  if (started) {
    context_.services.sound.beep(2500, 200);
    context_.trace.trace({"beep"});
    events_.EnableStopButton(modeIs(catalogue::kFLUORO));
  }
  // Everything below belongs to the pass that brings data: while a fluoroscopy runs without data yet,
  // the executive's Stop button stays enabled.
  if (dataReady) reportAioData(id, fluoroRunning);
  return true;
}

/// The texts of DataReady besides the members' kVp average, dose and exposure time.
struct Instrument::AioTexts {
  std::string doseRate, pulses, pulseRate, pulseWidth, kvpMax, kvpPpv, hvl;
};

Instrument::AioTexts Instrument::aioTexts(const AioMeasuredData& data, bool fluoro) {
  const MeasurementSettings& settings = context_.state.settings;
  const auto tenths = [this](std::int32_t status, double value) {
    return FormatMeasuredValue(status, static_cast<float>(value * 0.1));
  };
  AioTexts texts;
  exposureTimeText_ = tenths(data.exposureTimeStatus, data.exposureTime);
  if (fluoro) {
    texts.doseRate =
        FormatMeasuredValue(data.doseRateStatus, ScaleDoseValue(data.doseRate * doseRateFactor(settings)));
    if (settings.fluoroType == 2) {
      texts.pulseRate = tenths(data.pulseRateStatus, data.pulseRate);
      texts.pulseWidth = tenths(data.pulseWidthStatus, data.pulseWidth);
    }
  } else {
    texts.doseRate = FormatMeasuredValue(data.doseRateStatus, ScaleDoseValue(data.doseRate));
    if (settings.timeUnit == 2) texts.pulses = FormatMeasuredValue(data.pulsesStatus, data.pulses);
  }
  doseText_ = FormatMeasuredValue(data.doseStatus, ScaleDoseValue(data.dose));
  doseStatus_ = data.doseStatus;
  kvpText_ = tenths(data.kvpAverageStatus, data.kvpAverage);
  texts.kvpMax = tenths(data.kvpMaximumStatus, data.kvpMaximum);
  texts.kvpPpv = tenths(data.kvpPpvStatus, data.kvpPpv);
  texts.hvl = FormatMeasuredValue(data.hvlStatus,
                                  static_cast<float>(data.hvl * (modeIs(catalogue::kMAMMO) ? 0.01 : 0.1)));
  return texts;
}

void Instrument::reportAioData(std::int32_t id, bool fluoroRunning) {
  const AioMeasuredData data = context_.library.MBGetMeasuredData(id);
  const bool fluoro = modeIs(catalogue::kFLUORO);
  AioTexts texts = aioTexts(data, fluoro);
  if (fluoroRunning) events_.EnableStopButton(false);
  context_.trace.trace({"$CheckDataStatus$ - AIO Data ready :: " + std::to_string(id)});
  context_.trace.trace({"$CheckDataStatus$ - :: " + kvpText_ + " :: " + texts.kvpMax + " :: " + texts.kvpPpv +
                        " :: " + doseText_});
  context_.trace.trace({"$CheckDataStatus$ - :: " + texts.doseRate + " :: " + exposureTimeText_ +
                        " :: " + texts.pulses + " :: " + texts.pulseRate});
  context_.trace.trace({"$CheckDataStatus$ - :: " + texts.pulseWidth + " :: " + texts.hvl});
  context_.trace.trace({"$CheckDataStatus$ - AIO Data finished :: " + std::to_string(id)});
  events_.DataReady(kvpText_, texts.kvpMax, texts.kvpPpv, doseText_, texts.doseRate, exposureTimeText_,
                    texts.pulses, texts.pulseRate, texts.pulseWidth, texts.hvl);
  // A radiography exposure ends with its data; a fluoroscopy ends with the data taken while it ran.
  if (!fluoro || fluoroRunning) {
    exposureFinished_ = true;
    aioWaveformPending_ = true;
  }
}

void Instrument::pollDosimeter(std::size_t slot, std::int32_t id) {
  const DoseMeasuredData data = context_.library.MBGetDosimeterMeasuredData(id);
  if (data.exposureStarted != 0) {
    wakeFromSleep(slot);
    context_.services.sound.beep(2500, 200);
  }
  showDosimeterNotices(data);
  if (!errorNoticeShown_ && data.dataAvailable != 0 && !dataTaken_ && data.integrating == 0)
    reportDosimeterData(id, data);
  if (data.exposureEnded != 0 || data.autoResetDone != 0) exposureFinished_ = true;
}

void Instrument::showDosimeterNotices(const DoseMeasuredData& data) {
  Catalogue& catalogue = context_.catalogue;
  std::string error;
  if (data.temperatureState == kSensorError) error += catalogue.text(catalogue::kTemperature);
  if (data.pressureState == kSensorError) error += catalogue.text(catalogue::kPressure);
  // The separator after the last sensor named goes.
  if (!error.empty()) error = withoutLastCharacters(error, 2) + catalogue.text(catalogue::kSensorError);
  if (data.biasVoltageState == kSensorError) error += catalogue.text(catalogue::kBiasVoltageError);
  if (error.empty() && errorNoticeShown_) {
    events_.DisplayErrorMsg(error, catalogue.text(catalogue::kError), false);
    errorNoticeShown_ = false;
  } else if (!error.empty() && !errorNoticeShown_) {
    events_.DisplayErrorMsg(error, catalogue.text(catalogue::kError), true);
    errorNoticeShown_ = true;
  }
  if (data.sensorReset != 0 && !sensorResetNoticeShown_) {
    events_.DisplaySensorResetMsg(true);
    sensorResetNoticeShown_ = true;
  } else if (data.sensorReset == 0 && sensorResetNoticeShown_) {
    events_.DisplaySensorResetMsg(false);
    sensorResetNoticeShown_ = false;
  }
}

void Instrument::reportDosimeterData(std::int32_t id, const DoseMeasuredData& data) {
  const std::string separator = context_.services.locale.decimalSeparator();
  double temperature = data.temperature;
  if (temperatureUnit_ == 2) temperature = temperature * 1.8 + 32;
  if (temperatureUnit_ == 3) temperature = temperature + 273.15;
  const PressureUnit unit = pressureUnit(pressureUnit_);
  const double pressure = data.pressure * unit.factor;
  const std::string temperatureText = formatPicture(temperature, 1, 1, separator);
  const std::string pressureText =
      unit.decimal ? formatPicture(pressure, 1, 1, separator) : formatPicture(pressure, 2, 0, separator);
  const std::string leakage = formatPicture(data.leakageCurrent * 1000000000000.0, 1, 3, separator);
  doseText_ = FormatMeasuredValue(data.doseStatus, data.dose);
  doseStatus_ = data.doseStatus;
  const std::string doseRate = FormatMeasuredValue(data.doseRateStatus, data.doseRate);
  const std::string adcf = formatPicture(data.adcf, 1, 3, separator);
  const std::string bias = formatPicture(data.biasVoltage, 1, 1, separator);
  context_.trace.trace({"$CheckDataStatus$ - KALMET Data ready :: " + std::to_string(id)});
  context_.trace.trace({"$CheckDataStatus$ - :: " + temperatureText + " :: " + pressureText + " :: " + adcf +
                        " :: " + leakage + " :: " + doseText_ + " :: " + doseRate + " :: " + bias});
  context_.trace.trace({"$CheckDataStatus$ - KALMET Data finished :: " + std::to_string(id)});
  events_.TestSWDataReady(temperatureText, pressureText, adcf, leakage, doseText_, doseRate, bias);
}

void Instrument::pollMas(std::int32_t id, std::int32_t kind) {
  const MasMeasuredData data = context_.library.MBGetmAsMeasuredData(id);
  const std::uint32_t now = context_.services.clock.milliseconds();
  if (data.dataAvailable != 0) lastActivity_ = now;
  if (data.meterState == kMasZeroing) {
    lastActivity_ = now;
    if (!masZeroingNotice_) {
      masZeroingNotice_ = true;
      events_.ZeroingmAs(true);
    }
    return;
  }
  if (masZeroingNotice_) {
    masZeroingNotice_ = false;
    events_.ZeroingmAs(false);
  }
  if (data.exposureStarted != 0) {
    context_.services.sound.beep(2500, 200);
    dataTaken_ = false;
  }
  if (data.dataAvailable == 0 || dataTaken_) return;

  std::string mA = FormatMeasuredValue(data.mAStatus, data.mA);
  std::string mAs = FormatMeasuredValue(data.mAsStatus, data.mAs);
  std::string pulses = FormatMeasuredValue(data.pulsesStatus, data.pulses);
  std::string dosePerMas;
  const bool validMas = data.mAsStatus == 1 || data.mAsStatus == 2 || data.mAsStatus == 4;
  if ((hasAioPart(kind) || hasDosePart(kind)) && data.mAs != 0 && validMas) {
    dosePerMas = FormatMeasuredValue(doseStatus_, static_cast<float>(valOS(doseText_) / data.mAs));
  }
  context_.trace.trace({"$CheckDataStatus$ - mAs Data ready :: " + std::to_string(id)});
  context_.trace.trace(
      {"$CheckDataStatus$ - :: " + mA + " :: " + mAs + " :: " + pulses + " :: " + dosePerMas});
  context_.trace.trace({"$CheckDataStatus$ - mAs Data finished :: " + std::to_string(id)});
  events_.TestmAsDataReady(mA, mAs, pulses, dosePerMas);
  masExposureFinished_ = true;
  masWaveformPending_ = true;
}

void Instrument::announceWaveform(bool aio, std::int32_t id) {
  events_.EnableStopButton(false);
  context_.trace.trace({std::string(aio ? "$CheckDataStatus$ - AIO waveform is initialized :: "
                                        : "$CheckDataStatus$ - mAs waveform is initialized :: ") +
                        std::to_string(id)});
  events_.CheckExposureWaveform(aio ? 1 : 3);
  events_.IncrementWaveCount();
}

void Instrument::announceWaveforms() {
  SharedState& state = context_.state;
  if (state.slotCount() == 1) {
    const std::int32_t id = state.identifierAt(0);
    if (id < 1) return;
    const auto aio = [&] {
      if (exposureFinished_ && aioWaveformPending_) {
        announceWaveform(true, id);
        aioWaveformPending_ = false;
      }
    };
    const auto mas = [&] {
      if (masExposureFinished_ && masWaveformPending_) {
        announceWaveform(false, id);
        masWaveformPending_ = false;
      }
    };
    switch (detectorType(state.kindAt(0))) {
      case DetectorType::Mas:
        mas();
        exposureFinished_ = true;  // no all-in-one measurement to wait for
        break;
      case DetectorType::Aio:
        aio();
        masExposureFinished_ = true;
        break;
      case DetectorType::Dose:
        masExposureFinished_ = true;  // a dosimeter has no waveform
        break;
      case DetectorType::AioMas:
        aio();
        mas();
        break;
      case DetectorType::DoseMas:
        if (exposureFinished_) events_.EnableStopButton(false);
        mas();
        break;
      default:
        break;
    }
    return;
  }
  for (std::size_t slot = 0; slot < state.slotCount() && exposureFinished_ && masExposureFinished_; ++slot) {
    const std::int32_t id = state.identifierAt(slot);
    if (id < 1) continue;
    switch (detectorType(state.kindAt(slot))) {
      case DetectorType::Mas:
        announceWaveform(false, id);
        break;
      case DetectorType::Aio:
        announceWaveform(true, id);
        break;
      case DetectorType::Dose:
        // A dosimeter among several detectors counts a waveform without announcing one.
        events_.EnableStopButton(false);
        context_.trace.trace({"$CheckDataStatus$ - mAs waveform is initialized :: " + std::to_string(id)});
        events_.IncrementWaveCount();
        break;
      default:
        break;
    }
  }
}

bool Instrument::CheckDataStatus() {
  try {
    SharedState& state = context_.state;
    for (std::size_t slot = 0; slot < state.slotCount(); ++slot) {
      const std::int32_t id = state.identifierAt(slot);
      if (id < 1) continue;
      const DetectorStatus status = context_.library.MBGetDetectorStatus(id);
      lastStatus_ = status;
      if (!pollConnectionAndBattery(slot, id, status)) continue;
      const std::int32_t kind = state.kindAt(slot);
      if (hasAioPart(kind) && !exposureFinished_ && !pollAio(slot, id, status)) return false;
      if (hasDosePart(kind) && !exposureFinished_) pollDosimeter(slot, id);
      if (hasMasPart(kind) && !masExposureFinished_) pollMas(id, kind);
    }
    announceWaveforms();
    const bool finished = exposureFinished_ && masExposureFinished_;
    if (finished) {
      context_.trace.trace({kOneExposureFinished});
      ResetTheFlags();
    }
    return finished;
  } catch (...) {
    return false;
  }
}

bool Instrument::pMeasurementStatus() {
  return context_.state.measurementEnabled;
}
bool Instrument::mAsExposureFinish() {
  return masExposureFinished_;
}
bool Instrument::DetectorExposureFinish() {
  return exposureFinished_;
}

void Instrument::ResetTheFlags() {
  exposureFinished_ = false;
  masExposureFinished_ = false;
  aioWaveformPending_ = false;
  masWaveformPending_ = false;
  doseText_.clear();
}

}  // namespace rx9400
