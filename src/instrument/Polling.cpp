// Exposure polling: one pass over the detector table per CheckDataStatus, turning the detectors' data
// into the executive's events.
#include <string>

#include "core/NumberText.h"
#include "core/Placement.h"
#include "instrument/Instrument.h"
#include "session/DialogFactory.h"
#include "session/ZeroErrorDialog.h"

namespace rx9400 {
namespace {

constexpr const char* kOneExposureFinished =
    "--------------------------------------------One Exp Finished ------------------------------------------";

bool isAioKind(std::int32_t kind) {
  return kind == 1 || kind == 4;
}
bool isDoseKind(std::int32_t kind) {
  return kind == 3 || kind == 5;
}
bool hasMas(std::int32_t kind) {
  return kind == 2 || kind == 4 || kind == 5;
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

void Instrument::closeSleepNotice(std::size_t slot) {
  if (sleepBox_ != nullptr) {
    sleepBox_->close();
    sleepBox_.reset();
  }
  context_.state.alerts[slot].sleeping = kVBFalse;
}

void Instrument::showNotice(const std::string& caption, const std::string& heading,
                            const std::string& message) {
  if (generalBox_ != nullptr) {
    generalBox_->close();
    generalBox_.reset();
  }
  const auto closeGeneralBox = [this] {
    if (generalBox_ != nullptr) {
      generalBox_->close();
      generalBox_.reset();
    }
  };
  generalBox_ = context_.services.noticeBoxes.create(closeGeneralBox, closeGeneralBox);
  generalBox_->setMessage(message);
  generalBox_->setCaption(caption);
  generalBox_->setHeading(heading);
  generalBox_->setButton2("");
  generalBox_->setButton1(context_.catalogue.text(catalogue::kOK));
  generalBox_->show();
}

void Instrument::threeBeeps(int milliseconds) {
  Sound& sound = context_.services.sound;
  sound.beep(2500, milliseconds);
  sound.sleep(100);
  sound.beep(2500, milliseconds);
  sound.sleep(100);
  sound.beep(2500, milliseconds);
}

bool Instrument::pollConnectionAndBattery(std::size_t slot, std::int32_t id, const DetectorStatus& status) {
  const Alert alert = dueAlert(slot, status);
  if (status.connectionState == kConnectionLost) context_.state.measurementEnabled = false;
  giveAlert(alert, slot, id, 400);
  return status.connectionState == kConnected;
}

bool Instrument::pollAio(std::size_t slot, std::int32_t id, const DetectorStatus& status) {
  Catalogue& catalogue = context_.catalogue;
  DetectorAlertState& alert = context_.state.alerts[slot];
  if (alert.sleeping != kVBFalse && status.dataAvailable != 0) {
    lastActivity_ = context_.services.clock.milliseconds();
    closeSleepNotice(slot);
    events_.AddWakeUpButton(false);
  }
  if (status.measurementState == kMeasurementZeroError) {
    context_.library.MBDisableMeasurement(id);
    const DetectorInfo& info = context_.state.detectors[slot];
    auto view = context_.services.dialogs.newZeroErrorView();
    ZeroErrorDialog dialog(context_, *view);
    const bool connect =
        dialog.ask(catalogue.text(catalogue::kDetectorZeroError),
                   std::to_string(info.serialNumber) + " " +
                       catalogue.text(detectorDisplayNameLiteral(context_.state.kindAt(slot))),
                   topmostRequired(context_.services.registry));
    if (connect) {
      context_.library.MBSetPowerMode(id, kPowerShutDown);
    } else {
      context_.library.MBEnableMeasurement(id);
    }
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
  bool fluoroRunning = status.fluoroRunning != 0 && !dataTaken_ && modeIs(catalogue::kFLUORO);
  if (started) {
    context_.services.sound.beep(2500, 200);
    context_.trace.trace({"beep"});
    events_.EnableStopButton(modeIs(catalogue::kFLUORO));
  }
  // Everything below belongs to the pass that brings data: while a fluoroscopy runs without data yet,
  // the executive's Stop button stays enabled.
  if (!dataReady) return true;

  const AioMeasuredData data = context_.library.MBGetMeasuredData(id);
  const MeasurementSettings& settings = context_.state.settings;
  const bool fluoro = modeIs(catalogue::kFLUORO);
  std::string doseRate, pulses, pulseRate, pulseWidth;
  exposureTimeText_ =
      FormatMeasuredValue(data.exposureTimeStatus, static_cast<float>(data.exposureTime * 0.1));
  if (fluoro) {
    double rate = data.doseRate;
    switch (settings.doseRateUnit) {
      case 2:
        rate *= 60;
        break;
      case 3:
        rate *= 60 * 60;
        break;
      case 4:
        rate *= 0.01;
        break;
      default:
        break;
    }
    doseRate = FormatMeasuredValue(data.doseRateStatus, ScaleDoseValue(rate));
    if (settings.fluoroType == 2) {
      pulseRate = FormatMeasuredValue(data.pulseRateStatus, static_cast<float>(data.pulseRate * 0.1));
      pulseWidth = FormatMeasuredValue(data.pulseWidthStatus, static_cast<float>(data.pulseWidth * 0.1));
    }
  } else {
    doseRate = FormatMeasuredValue(data.doseRateStatus, ScaleDoseValue(data.doseRate));
    if (settings.timeUnit == 2) pulses = FormatMeasuredValue(data.pulsesStatus, data.pulses);
  }
  doseText_ = FormatMeasuredValue(data.doseStatus, ScaleDoseValue(data.dose));
  doseStatus_ = data.doseStatus;
  kvpText_ = FormatMeasuredValue(data.kvpAverageStatus, static_cast<float>(data.kvpAverage * 0.1));
  std::string kvpMax = FormatMeasuredValue(data.kvpMaximumStatus, static_cast<float>(data.kvpMaximum * 0.1));
  std::string kvpPpv = FormatMeasuredValue(data.kvpPpvStatus, static_cast<float>(data.kvpPpv * 0.1));
  std::string hvl = FormatMeasuredValue(
      data.hvlStatus, static_cast<float>(data.hvl * (modeIs(catalogue::kMAMMO) ? 0.01 : 0.1)));

  if (fluoroRunning) events_.EnableStopButton(false);
  context_.trace.trace({"$CheckDataStatus$ - AIO Data ready :: " + std::to_string(id)});
  context_.trace.trace(
      {"$CheckDataStatus$ - :: " + kvpText_ + " :: " + kvpMax + " :: " + kvpPpv + " :: " + doseText_});
  context_.trace.trace({"$CheckDataStatus$ - :: " + doseRate + " :: " + exposureTimeText_ + " :: " + pulses +
                        " :: " + pulseRate});
  context_.trace.trace({"$CheckDataStatus$ - :: " + pulseWidth + " :: " + hvl});
  context_.trace.trace({"$CheckDataStatus$ - AIO Data finished :: " + std::to_string(id)});
  events_.DataReady(kvpText_, kvpMax, kvpPpv, doseText_, doseRate, exposureTimeText_, pulses, pulseRate,
                    pulseWidth, hvl);
  if (!fluoro) fluoroRunning = true;
  if (fluoroRunning) {
    exposureFinished_ = true;
    aioWaveformPending_ = true;
  }
  return true;
}

void Instrument::pollDosimeter(std::size_t slot, std::int32_t id) {
  Catalogue& catalogue = context_.catalogue;
  const DoseMeasuredData data = context_.library.MBGetDosimeterMeasuredData(id);
  if (data.exposureStarted != 0) {
    if (context_.state.alerts[slot].sleeping != kVBFalse) {
      lastActivity_ = context_.services.clock.milliseconds();
      closeSleepNotice(slot);
      events_.AddWakeUpButton(false);
    }
    context_.services.sound.beep(2500, 200);
  }

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

  if (!errorNoticeShown_ && data.dataAvailable != 0 && !dataTaken_ && data.integrating == 0) {
    const std::string separator = context_.services.locale.decimalSeparator();
    double temperature = data.temperature;
    if (temperatureUnit_ == 2) temperature = temperature * 1.8 + 32;
    if (temperatureUnit_ == 3) temperature = temperature + 273.15;
    double pressure = data.pressure;
    bool pressureDecimal = false;
    switch (pressureUnit_) {
      case 1:
        pressure *= 0.03937008;
        pressureDecimal = true;
        break;
      case 3:
      case 4:
        pressure *= 1.333224;
        break;
      case 5:
        pressure *= 0.0446033;
        pressureDecimal = true;
        break;
      case 6:
        pressure *= 0.01359554;
        pressureDecimal = true;
        break;
      default:
        break;
    }
    const std::string temperatureText = formatPicture(temperature, 1, 1, separator);
    const std::string pressureText =
        pressureDecimal ? formatPicture(pressure, 1, 1, separator) : formatPicture(pressure, 2, 0, separator);
    const std::string leakage = formatPicture(data.leakageCurrent * 1000000000000.0, 1, 3, separator);
    doseText_ = FormatMeasuredValue(data.doseStatus, data.dose);
    doseStatus_ = data.doseStatus;
    const std::string doseRate = FormatMeasuredValue(data.doseRateStatus, data.doseRate);
    const std::string adcf = formatPicture(data.adcf, 1, 3, separator);
    const std::string bias = formatPicture(data.biasVoltage, 1, 1, separator);
    context_.trace.trace({"$CheckDataStatus$ - KALMET Data ready :: " + std::to_string(id)});
    context_.trace.trace({"$CheckDataStatus$ - :: " + temperatureText + " :: " + pressureText + " :: " +
                          adcf + " :: " + leakage + " :: " + doseText_ + " :: " + doseRate + " :: " + bias});
    context_.trace.trace({"$CheckDataStatus$ - KALMET Data finished :: " + std::to_string(id)});
    events_.TestSWDataReady(temperatureText, pressureText, adcf, leakage, doseText_, doseRate, bias);
  }
  if (data.exposureEnded != 0 || data.autoResetDone != 0) exposureFinished_ = true;
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
    if (masWakeFlag_) {
      lastActivity_ = now;
      masWakeFlag_ = false;
      events_.AddWakeUpButton(false);
    }
    context_.services.sound.beep(2500, 200);
    dataTaken_ = false;
  }
  if (data.dataAvailable == 0 || dataTaken_) return;

  std::string mA = FormatMeasuredValue(data.mAStatus, data.mA);
  std::string mAs = FormatMeasuredValue(data.mAsStatus, data.mAs);
  std::string pulses = FormatMeasuredValue(data.pulsesStatus, data.pulses);
  std::string dosePerMas;
  const bool validMas = data.mAsStatus == 1 || data.mAsStatus == 2 || data.mAsStatus == 4;
  if ((kind == 4 || kind == 5) && data.mAs != 0 && validMas) {
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
    switch (state.kindAt(0)) {
      case 2:
        mas();
        exposureFinished_ = true;  // no all-in-one measurement to wait for
        break;
      case 1:
        aio();
        masExposureFinished_ = true;
        break;
      case 3:
        masExposureFinished_ = true;  // a dosimeter has no waveform
        break;
      case 4:
        aio();
        mas();
        break;
      case 5:
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
    switch (state.kindAt(slot)) {
      case 2:
        announceWaveform(false, id);
        break;
      case 1:
        announceWaveform(true, id);
        break;
      case 3:
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
      if (isAioKind(kind) && !exposureFinished_ && !pollAio(slot, id, status)) return false;
      if (isDoseKind(kind) && !exposureFinished_) pollDosimeter(slot, id);
      if (hasMas(kind) && !masExposureFinished_) pollMas(id, kind);
    }
    announceWaveforms();
    const bool finished = exposureFinished_ && masExposureFinished_;
    if (finished) {
      context_.trace.trace({kOneExposureFinished});
      exposureFinished_ = false;
      masExposureFinished_ = false;
      aioWaveformPending_ = false;
      masWaveformPending_ = false;
      doseText_.clear();
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
