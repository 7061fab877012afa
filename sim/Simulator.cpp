#include "Simulator.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>
#include <utility>

#include "ChamberFile.h"

namespace rx9400::sim {

namespace {

template <typename T>
T clampedRound(double value) {
  const double rounded = std::round(value);
  if (!(rounded >= static_cast<double>(std::numeric_limits<T>::min()))) return std::numeric_limits<T>::min();
  if (rounded > static_cast<double>(std::numeric_limits<T>::max())) return std::numeric_limits<T>::max();
  return static_cast<T>(rounded);
}

AioMeasuredData aioRecord(const AioValues& v) {
  AioMeasuredData r{};
  r.doseStatus = v.dose.status;
  r.doseRateStatus = v.doseRate.status;
  r.exposureTimeStatus = v.exposureTime.status;
  r.pulsesStatus = v.pulses.status;
  r.kvpAverageStatus = v.kvpAverage.status;
  r.kvpMaximumStatus = v.kvpMaximum.status;
  r.kvpPpvStatus = v.kvpPpv.status;
  r.pulseRateStatus = v.pulseRate.status;
  r.pulseWidthStatus = v.pulseWidth.status;
  r.hvlStatus = v.hvl.status;
  r.dose = clampedRound<std::int32_t>(v.dose.value);
  r.doseRate = clampedRound<std::int32_t>(v.doseRate.value);
  r.exposureTime = clampedRound<std::int32_t>(v.exposureTime.value);
  r.pulses = clampedRound<std::int16_t>(v.pulses.value);
  r.kvpAverage = clampedRound<std::int16_t>(v.kvpAverage.value);
  r.kvpMaximum = clampedRound<std::int16_t>(v.kvpMaximum.value);
  r.kvpPpv = clampedRound<std::int16_t>(v.kvpPpv.value);
  r.pulseRate = clampedRound<std::int16_t>(v.pulseRate.value);
  r.pulseWidth = clampedRound<std::int16_t>(v.pulseWidth.value);
  r.hvl = clampedRound<std::uint8_t>(v.hvl.value);
  return r;
}

/// Samples first, first + step, ... (`count` of them, at most the recording's length) as little-endian
/// 32-bit integers; a point outside the recording reads 0.
std::vector<std::uint8_t> sampleBytes(const std::vector<std::int32_t>& recording, std::int64_t first,
                                      std::int64_t count, std::int64_t step) {
  count = std::min<std::int64_t>(count, static_cast<std::int64_t>(recording.size()));
  std::vector<std::uint8_t> bytes;
  bytes.reserve(static_cast<std::size_t>(count) * 4);
  for (std::int64_t k = 0; k < count; ++k) {
    const std::int64_t index = first + k * step;
    const bool inside = index >= 0 && index < static_cast<std::int64_t>(recording.size());
    const auto value = static_cast<std::uint32_t>(inside ? recording[static_cast<std::size_t>(index)] : 0);
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
  }
  return bytes;
}

void copyName(char* target, std::size_t width, const std::string& name) {
  std::memset(target, 0, width);
  std::memcpy(target, name.data(), std::min(width, name.size()));
}

template <typename Entry>
std::int16_t nextNumber(const std::vector<Entry>& entries) {
  std::int32_t highest = 0;
  for (const Entry& entry : entries) highest = std::max<std::int32_t>(highest, entry.number);
  return highest >= std::numeric_limits<std::int16_t>::max() ? 0 : static_cast<std::int16_t>(highest + 1);
}

template <typename Entry>
auto findNumber(std::vector<Entry>& entries, std::int32_t number) {
  return std::find_if(entries.begin(), entries.end(),
                      [number](const Entry& e) { return e.number == number; });
}

/// Status polls as fault windows count them: before the first poll the detector stands at poll 1.
std::int32_t pollIndex(const Detector& d) {
  return std::max(d.statusPolls, 1);
}

}  // namespace

Simulator::Simulator(Scenario scenario, CallLog& log) : scenario_(std::move(scenario)), log_(log) {
  restart();
}

void Simulator::restart() {
  sections_.clear();
  detectors_.clear();
  for (const DetectorPlan& plan : scenario_.detectors) {
    Detector d;
    d.plan = &plan;
    d.info = plan.info;
    d.masInputType = plan.mas.inputType;
    d.masCalConstant = plan.mas.calConstant;
    d.masCalDate = plan.mas.calDate;
    d.validTargetFilters = plan.validTargetFilters;
    d.adcf = plan.dosimeter.adcf;
    d.dosimeterMode = plan.dosimeter.mode;
    d.dosimeterUnit = plan.dosimeter.unit;
    d.offset = plan.dosimeter.offset;
    d.chambers = plan.dosimeter.chambers;
    d.selection = plan.dosimeter.selection;
    detectors_.push_back(std::move(d));
  }
  found_.assign(detectors_.size(), false);
  registered_ = false;
  scanState_ = 0;
  scanPolls_ = 0;
  pauseDepth_ = 0;
  pauseCalls_ = 0;
  resumeCalls_ = 0;
  unbalancedCalls_ = 0;
}

// ---- Lookup -------------------------------------------------------------------------------------

Detector* Simulator::find(std::int32_t id) {
  for (Detector& d : detectors_) {
    if (d.info.identifier == id) return &d;
  }
  return nullptr;
}

const Detector* Simulator::find(std::int32_t id) const {
  return const_cast<Simulator*>(this)->find(id);
}

Detector* Simulator::address(std::int32_t id) {
  Detector* d = find(id);
  if (d != nullptr && d->connection == kConnected) {
    ++d->calls;
    const std::int32_t lossAfter = d->plan->faults.linkLossAfterCalls;
    if (lossAfter > 0 && d->calls > lossAfter) {
      d->connection = kConnectionLost;
      d->armed = false;
      d->masArmed = false;
    }
  }
  return d;
}

Detector* Simulator::command(std::int32_t id) {
  Detector* d = address(id);
  return d != nullptr && d->connection == kConnected ? d : nullptr;
}

Detector* Simulator::query(std::int32_t id) {
  Detector* d = address(id);
  return d != nullptr && d->connection != 0 ? d : nullptr;
}

// ---- Session, scanning and connection -------------------------------------------------------------

std::int32_t Simulator::closeApplication() {
  if (pauseDepth_ != 0) {
    log_.note("MBCloseApplication while the update thread is paused (depth " + std::to_string(pauseDepth_) +
              ")");
  }
  sections_.clear();
  for (Detector& d : detectors_) disconnect(d);
  found_.assign(detectors_.size(), false);
  scanState_ = 0;
  scanPolls_ = 0;
  registered_ = false;
  return 1;
}

std::int32_t Simulator::scanForDetectors() {
  scanState_ = 1;
  scanPolls_ = 0;
  return 1;
}

std::int32_t Simulator::getScanCompleteStatus() {
  if (scanState_ == 0) return 0;
  if (scanState_ == 2) return scenario_.scanCompleteStatus;
  ++scanPolls_;
  if (scenario_.scanNeverCompletes || scanPolls_ <= scenario_.scanPollsUntilComplete) return 1;
  scanState_ = 2;
  for (std::size_t i = 0; i < detectors_.size(); ++i) found_[i] = detectors_[i].plan->found;
  return scenario_.scanCompleteStatus;
}

std::uint8_t Simulator::getNumberOfDetectors(std::int32_t typeCode) const {
  std::int32_t count = 0;
  for (std::size_t i = 0; i < detectors_.size(); ++i) {
    if (found_[i] && detectors_[i].info.typeCode == typeCode) ++count;
  }
  return static_cast<std::uint8_t>(std::min(count, 255));
}

std::int32_t Simulator::getDetectorInfoOfType(std::int32_t typeCode, DetectorInfo* first) const {
  std::int32_t count = 0;
  for (std::size_t i = 0; i < detectors_.size(); ++i) {
    if (!found_[i] || detectors_[i].info.typeCode != typeCode) continue;
    if (first != nullptr) first[count] = detectors_[i].info;
    ++count;
  }
  return count;
}

std::int16_t Simulator::connectToDetectors(const std::int32_t* identifiers, const std::uint8_t* /*typeCodes*/,
                                           std::uint8_t count) {
  if (identifiers == nullptr || count == 0 || scenario_.connectFails) return 0;
  std::set<std::int32_t> connected;
  for (std::uint8_t i = 0; i < count; ++i) {
    Detector* d = find(identifiers[i]);
    if (d == nullptr || !found_[static_cast<std::size_t>(d - detectors_.data())]) continue;
    if (!connected.insert(d->info.identifier).second) continue;
    connect(*d);
  }
  return static_cast<std::int16_t>(connected.size());
}

std::int32_t Simulator::stopScanningAndReset() {
  scanState_ = 0;
  scanPolls_ = 0;
  found_.assign(detectors_.size(), false);
  for (Detector& d : detectors_) disconnect(d);
  return 1;
}

void Simulator::connect(Detector& d) {
  d.connection = kConnected;
  d.armed = false;
  d.masArmed = false;
  d.powerMode = kPowerWake;
  d.calls = 0;
  d.statusPolls = 0;
  d.zeroErrorCleared = false;
  d.main.phase = Phase::Waiting;
  d.main.count = 0;
  d.main.deliveries = 0;
  d.mas.phase = Phase::Waiting;
  d.mas.count = 0;
  d.zeroingLeft = 0;
  d.downloadActive = false;
}

void Simulator::disconnect(Detector& d) {
  d.connection = 0;
  d.armed = false;
  d.masArmed = false;
}

// ---- Detector state ---------------------------------------------------------------------------------

bool Simulator::zeroErrorActive(const Detector& d) const {
  return !d.zeroErrorCleared && d.plan->faults.zeroError.activeAt(pollIndex(d));
}

bool Simulator::zeroErrorShown(const Detector& d) const {
  return d.statusPolls > 0 && zeroErrorActive(d);
}

BatteryStatus Simulator::battery(const Detector& d) const {
  const BatteryConfig& config = d.plan->battery;
  const DetectorFaults& faults = d.plan->faults;
  BatteryStatus b{};
  b.batteryState = config.state;
  b.chargingState = config.charging;
  b.voltageMillivolts = config.millivolts;
  b.chargePercent = config.percent;
  const std::int32_t poll = pollIndex(d);
  if (faults.veryLowBattery.window.activeAt(poll)) {
    b.batteryState = kBatteryVeryLow;
    b.chargePercent = faults.veryLowBattery.percent;
    b.voltageMillivolts = 3300;
  } else if (faults.lowBattery.window.activeAt(poll)) {
    b.batteryState = kBatteryLow;
    b.chargePercent = faults.lowBattery.percent;
    b.voltageMillivolts = 3500;
  }
  if (faults.charging.activeAt(poll)) b.chargingState = 1;
  return b;
}

const Exposure* Simulator::currentExposure(const Detector& d) const {
  const auto& list = d.plan->exposures;
  return d.main.next < list.size() ? &list[d.main.next] : nullptr;
}

const MasExposure* Simulator::currentMasExposure(const Detector& d) const {
  const auto& list = d.plan->mas.exposures;
  return d.mas.next < list.size() ? &list[d.mas.next] : nullptr;
}

bool Simulator::fluoroRunning(const Detector& d) const {
  const Exposure* e = currentExposure(d);
  if (e == nullptr || e->kind != ExposureKind::Fluoro || d.main.phase == Phase::Waiting) return false;
  return !e->runningOnLastDeliveryOnly || d.main.deliveries + 1 == e->deliveries;
}

void Simulator::advanceMain(Detector& d) {
  const Exposure* e = currentExposure(d);
  if (e == nullptr) return;
  Cycle& c = d.main;
  switch (c.phase) {
    case Phase::Waiting:
      if (!d.armed) return;
      if (c.count >= e->pollsBeforeStart) {
        c.phase = Phase::Started;
        c.count = 0;
        c.deliveries = 0;
        d.waveformAvailable = 0;
      } else {
        ++c.count;
      }
      break;
    case Phase::Started:
      if (e->pollsBeforeData == 0) {
        c.phase = Phase::DataPending;
      } else {
        c.phase = Phase::BeforeData;
        c.count = 1;
      }
      break;
    case Phase::BeforeData:
      if (c.count >= e->pollsBeforeData)
        c.phase = Phase::DataPending;
      else
        ++c.count;
      break;
    case Phase::Between:
      if (c.count >= e->pollsBetweenDeliveries)
        c.phase = Phase::DataPending;
      else
        ++c.count;
      break;
    case Phase::DataPending:
      break;
  }
}

void Simulator::deliverMain(Detector& d, const Exposure& e) {
  Cycle& c = d.main;
  ++c.deliveries;
  if (c.deliveries == 1) {
    ++d.exposuresDelivered;
    d.recording = &e.waveform;
  }
  if (c.deliveries < e.deliveries) {
    c.phase = Phase::Between;
    c.count = 0;
  } else {
    finishMainExposure(d);
  }
}

void Simulator::finishMainExposure(Detector& d) {
  Cycle& c = d.main;
  c.phase = Phase::Waiting;
  c.count = 0;
  c.deliveries = 0;
  ++c.next;
  if (c.next >= d.plan->exposures.size() && d.plan->repeatExposures) c.next = 0;
}

std::int32_t Simulator::getDetectorStatus(DetectorStatus* status, std::int32_t id) {
  Detector* d = address(id);
  if (status == nullptr) return 0;
  *status = {};
  if (d == nullptr) return 0;
  status->connectionState = d->connection;
  if (d->connection == 0) return 1;
  const bool hasMain = d->plan->hasAio() || d->plan->hasDosimeter();
  if (d->connection == kConnected) {
    ++d->statusPolls;
    if (hasMain && !zeroErrorActive(*d)) advanceMain(*d);
    status->measurementState = getMeasurementStatus(id);
    status->exposureStarted = d->main.phase == Phase::Started ? kVBTrue : kVBFalse;
    status->dataAvailable = d->main.phase == Phase::DataPending ? kVBTrue : kVBFalse;
    status->fluoroRunning = fluoroRunning(*d) ? kVBTrue : kVBFalse;
    status->signalStrength = d->plan->signalStrength;
  }
  status->battery = battery(*d);
  status->powerMode = d->powerMode;
  status->exposureCount = hasMain ? d->exposuresDelivered : d->masExposuresDelivered;
  return 1;
}

std::int32_t Simulator::getMeasurementStatus(std::int32_t id) {
  const Detector* d = find(id);
  if (d == nullptr || d->connection != kConnected) return 0;
  if (zeroErrorActive(*d)) return kMeasurementZeroError;
  if (d->main.phase != Phase::Waiting) return 2;
  return d->armed ? 1 : 0;
}

std::int32_t Simulator::getBatteryStatus(BatteryStatus* battery, std::int32_t id) {
  const Detector* d = query(id);
  if (battery == nullptr) return 0;
  *battery = {};
  if (d == nullptr) return 0;
  *battery = this->battery(*d);
  return 1;
}

std::int32_t Simulator::getNumberOfInvalidTargetFilters(std::int32_t id) {
  const Detector* d = query(id);
  return d != nullptr && d->plan->hasAio() ? static_cast<std::int32_t>(d->plan->invalidTargetFilters.size())
                                           : 0;
}

namespace {

std::int32_t copyFilters(const std::vector<std::string>& names, TargetFilterName* first,
                         std::int32_t* count) {
  if (count == nullptr) return 0;
  const std::int32_t capacity = first == nullptr ? 0 : std::max(*count, 0);
  const std::int32_t filled = std::min(capacity, static_cast<std::int32_t>(names.size()));
  for (std::int32_t i = 0; i < filled; ++i) copyName(first[i].name, kTargetFilterNameLength, names[i]);
  *count = filled;
  return filled;
}

}  // namespace

std::int32_t Simulator::getAllInvalidTargetFilters(std::int32_t id, TargetFilterName* first,
                                                   std::int32_t* count) {
  const Detector* d = query(id);
  static const std::vector<std::string> kNone;
  return copyFilters(d != nullptr && d->plan->hasAio() ? d->plan->invalidTargetFilters : kNone, first, count);
}

std::int32_t Simulator::getNumberOfValidTargetFilters(std::int32_t id) {
  const Detector* d = query(id);
  return d != nullptr && d->plan->hasAio() ? static_cast<std::int32_t>(d->validTargetFilters.size()) : 0;
}

std::int32_t Simulator::getValidTargetFilters(std::int32_t id, TargetFilterName* first, std::int32_t* count) {
  const Detector* d = query(id);
  static const std::vector<std::string> kNone;
  return copyFilters(d != nullptr && d->plan->hasAio() ? d->validTargetFilters : kNone, first, count);
}

std::int32_t Simulator::getDefaultTargetFilter(std::int32_t id, TargetFilterName* name) {
  const Detector* d = query(id);
  if (name == nullptr) return 0;
  *name = {};
  if (d == nullptr || !d->plan->hasAio()) return 0;
  copyName(name->name, kTargetFilterNameLength, d->plan->defaultTargetFilter);
  return 1;
}

// ---- Measurement control and data ------------------------------------------------------------------

void Simulator::startMasWait(Detector& d) {
  d.mas.phase = Phase::Waiting;
  d.mas.count = 0;
  const MasExposure* e = currentMasExposure(d);
  d.zeroingLeft = e != nullptr ? e->zeroingReads : 0;
}

std::int32_t Simulator::enableMeasurement(std::int32_t id, bool enable) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  if (!enable) {
    d->armed = false;
    d->masArmed = false;
    return 1;
  }
  if (zeroErrorShown(*d)) d->zeroErrorCleared = true;
  d->armed = true;
  if (d->main.phase == Phase::Waiting) d->main.count = 0;
  if (d->plan->hasMas()) {
    d->masArmed = true;
    if (d->mas.phase == Phase::Waiting) startMasWait(*d);
  }
  return 1;
}

std::int32_t Simulator::enableMasMeasurement(std::int32_t id, bool enable) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasMas()) return 0;
  d->masArmed = enable;
  if (enable && d->mas.phase == Phase::Waiting) startMasWait(*d);
  return 1;
}

std::int32_t Simulator::setPowerMode(std::int32_t id, std::int32_t mode) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  if (zeroErrorShown(*d)) d->zeroErrorCleared = true;
  d->powerMode = mode;
  return 1;
}

std::int32_t Simulator::setDetectorMode(std::int32_t id, std::int32_t mode) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  d->detectorMode = mode;
  return 1;
}

std::int32_t Simulator::setSetup(std::int32_t id, std::int32_t setup) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  d->setup = setup;
  return 1;
}

std::int32_t Simulator::setMeasurementSettings(std::int32_t id, const MeasurementSettings* settings) {
  Detector* d = command(id);
  if (d == nullptr || settings == nullptr) return 0;
  d->lastSettings = *settings;
  ++d->settingsReceived;
  return 1;
}

std::int32_t Simulator::getMeasuredData(AioMeasuredData* data, std::int32_t id) {
  Detector* d = query(id);
  if (data == nullptr) return 0;
  *data = {};
  if (d == nullptr || !d->plan->hasAio()) return 0;
  if (d->connection == kConnected && d->main.phase == Phase::DataPending) {
    const Exposure& e = *currentExposure(*d);
    d->lastAio = aioRecord(e.aio);
    deliverMain(*d, e);
  }
  *data = d->lastAio;
  return 1;
}

std::int32_t Simulator::getDosimeterMeasuredData(DoseMeasuredData* data, std::int32_t id) {
  Detector* d = query(id);
  if (data == nullptr) return 0;
  *data = {};
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;

  const DetectorFaults& faults = d->plan->faults;
  const std::int32_t poll = pollIndex(*d);
  data->temperatureState = faults.temperatureError.activeAt(poll) ? kSensorError : 1;
  data->pressureState = faults.pressureError.activeAt(poll) ? kSensorError : 1;
  data->biasVoltageState = faults.biasError.activeAt(poll) ? kSensorError : 1;
  data->sensorReset = faults.sensorReset.activeAt(poll) ? kVBTrue : kVBFalse;
  const SensorValues& sensors = d->plan->dosimeter.sensors;
  data->temperature = sensors.temperature + d->offset.temperatureOffset;
  data->pressure = sensors.pressure + d->offset.pressureOffset;
  data->adcf = sensors.adcf;
  data->biasVoltage = sensors.biasVoltage;

  const DoseValues* values = &d->lastDose;
  const Exposure* e = currentExposure(*d);
  Cycle& c = d->main;
  if (d->connection == kConnected && e != nullptr && c.phase != Phase::Waiting) {
    const bool integrating = c.phase == Phase::BeforeData || c.phase == Phase::Between ||
                             (c.phase == Phase::Started && e->pollsBeforeData > 0);
    data->exposureStarted = c.phase == Phase::Started ? kVBTrue : kVBFalse;
    data->integrating = integrating ? kVBTrue : kVBFalse;
    if (integrating && e->dataWhileIntegrating) {
      data->dataAvailable = kVBTrue;
      values = &e->dose;
    }
    if (c.phase == Phase::DataPending) {
      data->dataAvailable = kVBTrue;
      if (c.deliveries + 1 >= e->deliveries) {
        if (e->endFlag == EndFlag::AutoResetDone) {
          data->autoResetDone = kVBTrue;
        } else {
          data->exposureEnded = kVBTrue;
        }
      }
      d->lastDose = e->dose;
      d->accumulatedDose += e->dose.dose.value;
      deliverMain(*d, *e);
    }
  }
  data->doseStatus = values->dose.status;
  data->doseRateStatus = values->doseRate.status;
  data->leakageStatus = values->leakageCurrent.status;
  data->dose = static_cast<float>(values->dose.value);
  data->doseRate = static_cast<float>(values->doseRate.value);
  data->leakageCurrent = static_cast<float>(values->leakageCurrent.value);
  data->exposureNumber = d->exposuresDelivered;
  data->frameRate = d->dosimeterUnit.frameRate;
  data->accumulatedDose = static_cast<float>(d->accumulatedDose);
  data->peakDoseRate = static_cast<float>(values->doseRate.value);
  data->exposureTime = static_cast<float>(values->exposureTime);
  return 1;
}

std::int32_t Simulator::getMasMeasuredData(MasMeasuredData* data, std::int32_t id) {
  Detector* d = query(id);
  if (data == nullptr) return 0;
  *data = {};
  if (d == nullptr || !d->plan->hasMas()) return 0;

  const auto fill = [&] {
    data->exposureNumber = d->masExposuresDelivered;
    data->mAStatus = d->lastMA.status;
    data->mAsStatus = d->lastMAs.status;
    data->pulsesStatus = d->lastPulses.status;
    data->mA = static_cast<float>(d->lastMA.value);
    data->mAs = static_cast<float>(d->lastMAs.value);
    data->pulses = static_cast<float>(d->lastPulses.value);
    data->waveformAvailable = d->masRecording != nullptr ? kVBTrue : kVBFalse;
    data->inputType = static_cast<std::int16_t>(d->masInputType);
  };
  fill();
  if (d->connection != kConnected) return 1;
  if (d->zeroingLeft > 0) {
    --d->zeroingLeft;
    data->meterState = kMasZeroing;
    return 1;
  }
  const MasExposure* e = currentMasExposure(*d);
  Cycle& c = d->mas;
  data->meterState = d->masArmed ? 1 : 0;
  if (e == nullptr) return 1;

  bool deliver = false;
  switch (c.phase) {
    case Phase::Waiting:
      if (!d->masArmed) return 1;
      if (c.count >= e->pollsBeforeStart) {
        c.phase = Phase::Started;
        data->exposureStarted = kVBTrue;
        data->meterState = 2;
      } else {
        ++c.count;
      }
      return 1;
    case Phase::Started:
      if (e->pollsBeforeData == 0) {
        deliver = true;
      } else {
        c.phase = Phase::BeforeData;
        c.count = 1;
      }
      break;
    case Phase::BeforeData:
      if (c.count >= e->pollsBeforeData)
        deliver = true;
      else
        ++c.count;
      break;
    default:
      deliver = true;
      break;
  }
  if (!deliver) {
    data->meterState = 2;
    return 1;
  }
  d->lastMA = e->mA;
  d->lastMAs = e->mAs;
  d->lastPulses = e->pulses;
  d->masRecording = &e->waveform;
  d->masSpan = e->span;
  ++d->masExposuresDelivered;
  ++c.next;
  if (c.next >= d->plan->mas.exposures.size() && d->plan->mas.repeatExposures) c.next = 0;
  startMasWait(*d);
  fill();
  data->dataAvailable = kVBTrue;
  return 1;
}

std::int32_t Simulator::resetExposure(std::int32_t id) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  if (d->main.phase != Phase::Waiting) {
    d->main.phase = Phase::Waiting;
    d->main.count = 0;
    d->main.deliveries = 0;
  }
  return 1;
}

// ---- Waveforms ----------------------------------------------------------------------------------------

std::int32_t Simulator::pauseUpdateThread() {
  ++pauseCalls_;
  if (pauseDepth_ > 0) {
    ++unbalancedCalls_;
    log_.note("MBPauseUpdateThread while already paused (depth " + std::to_string(pauseDepth_) + ")");
  }
  ++pauseDepth_;
  return 1;
}

std::int32_t Simulator::resumeUpdateThread() {
  ++resumeCalls_;
  if (pauseDepth_ == 0) {
    ++unbalancedCalls_;
    log_.note("MBResumeUpdateThread without a pause");
    return 1;
  }
  --pauseDepth_;
  return 1;
}

bool Simulator::publish(std::int32_t id, const std::vector<std::uint8_t>& bytes) {
  dropSection(id);
  const std::string name = SharedSection::nameFor(id);
  std::string error;
  std::unique_ptr<SharedSection> section = SharedSection::create(name, bytes.data(), bytes.size(), error);
  if (section == nullptr) {
    log_.note("section " + name + " not created: " + error);
    return false;
  }
  sections_[id] = std::move(section);
  return true;
}

void Simulator::dropSection(std::int32_t id) {
  sections_.erase(id);
}

std::int32_t Simulator::setWaveformParameters(std::int32_t id, const WaveformParameters* parameters) {
  Detector* d = command(id);
  if (d == nullptr || parameters == nullptr || !d->plan->hasAio()) return 0;
  const DetectorFaults& faults = d->plan->faults;
  if (d->recording == nullptr || d->recording->empty() || parameters->numberOfPoints < 1 ||
      faults.waveformNeverAvailable) {
    d->waveformAvailable = 0;
    return 0;
  }
  if (faults.sectionMissing) {
    dropSection(id);
    d->waveformAvailable = 1;
    return 1;
  }
  const std::int64_t step = parameters->step < 1 ? 1 : parameters->step;
  const bool published =
      publish(id, sampleBytes(*d->recording, parameters->startPoint, parameters->numberOfPoints, step));
  d->waveformAvailable = published ? 1 : 0;
  return published ? 1 : 0;
}

std::int32_t Simulator::getNumberOfDataPoints(std::int32_t id) {
  const Detector* d = query(id);
  if (d == nullptr || !d->plan->hasAio() || d->recording == nullptr) return 0;
  return static_cast<std::int32_t>(d->recording->size());
}

std::int16_t Simulator::getWaveformAvailabilityStatus(std::int32_t id) {
  const Detector* d = query(id);
  return d == nullptr ? 0 : d->waveformAvailable;
}

std::int32_t Simulator::startWaveformDownload(std::int32_t id, std::uint8_t start) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  if (start != 0) {
    d->downloadActive = true;
    ++d->downloadStarts;
  } else {
    d->downloadActive = false;
  }
  return 1;
}

std::int32_t Simulator::getMasNumberOfDataPoints(std::int32_t id, std::int32_t* span) {
  const Detector* d = query(id);
  if (span != nullptr) *span = 0;
  if (d == nullptr || !d->plan->hasMas() || d->masRecording == nullptr) return 0;
  if (span != nullptr) *span = d->masSpan;
  return static_cast<std::int32_t>(d->masRecording->size());
}

std::int32_t Simulator::getMasWaveformDataPoints(std::int32_t id, std::int32_t firstPoint, std::uint8_t step,
                                                 std::uint8_t count, std::int32_t* first) {
  const Detector* d = query(id);
  if (first == nullptr) return 0;
  std::fill(first, first + count, 0);
  if (d == nullptr || !d->plan->hasMas() || d->masRecording == nullptr) return 0;
  const std::vector<std::int32_t>& recording = *d->masRecording;
  const std::int64_t stride = step == 0 ? 1 : step;
  for (std::int64_t k = 0; k < count; ++k) {
    const std::int64_t index = firstPoint + k * stride;
    if (index >= 0 && index < static_cast<std::int64_t>(recording.size())) {
      first[k] = recording[static_cast<std::size_t>(index)];
    }
  }
  return count;
}

std::int32_t Simulator::setMasWaveformParameters(std::int32_t id, const WaveformParameters* parameters) {
  Detector* d = command(id);
  if (d == nullptr || parameters == nullptr || !d->plan->hasMas() || d->masRecording == nullptr ||
      d->masRecording->empty() || parameters->numberOfPoints < 1) {
    return 0;
  }
  const std::int64_t step = parameters->step < 1 ? 1 : parameters->step;
  return publish(id, sampleBytes(*d->masRecording, parameters->startPoint, parameters->numberOfPoints, step))
             ? 1
             : 0;
}

std::int16_t Simulator::getMasWaveformAvailabilityStatus(std::int32_t id) {
  const Detector* d = query(id);
  return d != nullptr && d->plan->hasMas() && d->masRecording != nullptr && !d->masRecording->empty() ? 1 : 0;
}

// ---- Dosimeter configuration ------------------------------------------------------------------------

namespace {

template <typename Record>
std::int32_t copyOut(const Detector* d, const Record& source, Record* target) {
  if (target == nullptr) return 0;
  *target = {};
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  *target = source;
  return 1;
}

template <typename Record>
std::int32_t copyIn(Detector* d, Record Detector::*member, const Record* source) {
  if (d == nullptr || source == nullptr || !d->plan->hasDosimeter()) return 0;
  d->*member = *source;
  return 1;
}

}  // namespace

std::int32_t Simulator::getAdcf(std::int32_t id, AdcfSettings* adcf) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->adcf : AdcfSettings{}, adcf);
}

std::int32_t Simulator::setAdcf(std::int32_t id, const AdcfSettings* adcf) {
  return copyIn(command(id), &Detector::adcf, adcf);
}

std::int32_t Simulator::getDosimeterMode(std::int32_t id, DosimeterMode* mode) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->dosimeterMode : DosimeterMode{}, mode);
}

std::int32_t Simulator::setDosimeterMode(std::int32_t id, const DosimeterMode* mode) {
  return copyIn(command(id), &Detector::dosimeterMode, mode);
}

std::int32_t Simulator::getDosimeterUnit(std::int32_t id, DosimeterUnit* unit) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->dosimeterUnit : DosimeterUnit{}, unit);
}

std::int32_t Simulator::setDosimeterUnit(std::int32_t id, const DosimeterUnit* unit) {
  return copyIn(command(id), &Detector::dosimeterUnit, unit);
}

std::int32_t Simulator::getTempPressureOffset(std::int32_t id, TempPressureOffset* offset) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->offset : TempPressureOffset{}, offset);
}

std::int32_t Simulator::setTempPressureOffset(std::int32_t id, const TempPressureOffset* offset) {
  return copyIn(command(id), &Detector::offset, offset);
}

std::int32_t Simulator::getNoOfIonChambers(std::int32_t id) {
  const Detector* d = query(id);
  return d != nullptr && d->plan->hasDosimeter() ? static_cast<std::int32_t>(d->chambers.size()) : 0;
}

std::int16_t Simulator::getChamberFileInfo(std::int32_t id) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter() || d->plan->faults.chamberFileMissing) return 0;
  const std::string text = chamberFileText(d->chambers);
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
    log_.note("chamber file of " + std::to_string(id) + " longer than 32767 bytes");
    return 0;
  }
  if (d->plan->faults.sectionMissing) {
    dropSection(id);
  } else {
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    bytes.push_back(0);
    if (!publish(id, bytes)) return 0;
  }
  return static_cast<std::int16_t>(text.size());
}

std::int32_t Simulator::getIonChamberCalFactor(std::int32_t id, IonChamberSelection* selection) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->selection : IonChamberSelection{}, selection);
}

std::int32_t Simulator::setIonChamberCalFactor(std::int32_t id, std::int16_t chamber,
                                               std::int16_t calFactor) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  if (chamber != 0 || calFactor != 0) {
    const auto c = findNumber(d->chambers, chamber);
    if (c == d->chambers.end()) return 0;
    if (calFactor != 0 && findNumber(c->calFactors, calFactor) == c->calFactors.end()) return 0;
  }
  d->selection = {chamber, calFactor};
  return 1;
}

std::int16_t Simulator::addNewIonChamber(std::int32_t id, const char* name) {
  Detector* d = command(id);
  if (d == nullptr || name == nullptr || !d->plan->hasDosimeter() || d->plan->faults.addChamberRefused ||
      static_cast<std::int32_t>(d->chambers.size()) >= d->plan->dosimeter.maxChambers) {
    return 0;
  }
  const std::int16_t number = nextNumber(d->chambers);
  if (number == 0) return 0;
  d->chambers.push_back({number, nameFromBytes(name, kChamberNameLength), {}});
  return number;
}

std::int16_t Simulator::addNewCalFactor(std::int32_t id, std::int16_t chamber, const CalFactor* calFactor) {
  Detector* d = command(id);
  if (d == nullptr || calFactor == nullptr || !d->plan->hasDosimeter() ||
      d->plan->faults.addCalFactorRefused) {
    return 0;
  }
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end() || c->calFactors.size() >= kMaxCalFactors) return 0;
  const std::int16_t number = nextNumber(c->calFactors);
  if (number == 0) return 0;
  c->calFactors.push_back({number, nameFromBytes(calFactor->name, kChamberNameLength), calFactor->unitCode,
                           calFactor->calConstant});
  return number;
}

std::int16_t Simulator::editIonChamber(std::int32_t id, std::int16_t chamber, const char* name) {
  Detector* d = command(id);
  if (d == nullptr || name == nullptr || !d->plan->hasDosimeter()) return 0;
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end()) return 0;
  c->name = nameFromBytes(name, kChamberNameLength);
  return 1;
}

std::int16_t Simulator::editCalFactor(std::int32_t id, std::int16_t chamber, const CalFactor* calFactor) {
  Detector* d = command(id);
  if (d == nullptr || calFactor == nullptr || !d->plan->hasDosimeter()) return 0;
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end()) return 0;
  const auto f = findNumber(c->calFactors, calFactor->number);
  if (f == c->calFactors.end()) return 0;
  f->name = nameFromBytes(calFactor->name, kChamberNameLength);
  f->unitCode = calFactor->unitCode;
  f->constant = calFactor->calConstant;
  return 1;
}

std::int32_t Simulator::deleteIonChamber(std::int32_t id, std::int16_t chamber) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end()) return 0;
  d->chambers.erase(c);
  if (d->selection.chamberNumber == chamber) d->selection = {0, 0};
  return 1;
}

std::int32_t Simulator::deleteCalFactor(std::int32_t id, std::int16_t chamber, std::uint8_t calFactor) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end()) return 0;
  const auto f = findNumber(c->calFactors, calFactor);
  if (f == c->calFactors.end()) return 0;
  c->calFactors.erase(f);
  if (d->selection.chamberNumber == chamber && d->selection.calFactorNumber == calFactor) {
    d->selection.calFactorNumber = 0;
  }
  return 1;
}

std::int32_t Simulator::deleteAllIonChambers(std::int32_t id) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  d->chambers.clear();
  d->selection = {0, 0};
  return 1;
}

// ---- mAs meter ------------------------------------------------------------------------------------------

std::int32_t Simulator::setMasInput(std::int32_t id, std::int32_t inputType) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  d->masInputType = inputType;  // kept for any detector, so that a test sees where it went
  return d->plan->hasMas() ? 1 : 0;
}

std::int32_t Simulator::getMasInput(std::int32_t id) {
  const Detector* d = query(id);
  return d != nullptr && d->plan->hasMas() ? d->masInputType : 0;
}

std::int32_t Simulator::getMasCalConstant(std::int32_t id, float* constant) {
  const Detector* d = query(id);
  if (constant == nullptr) return 0;
  *constant = 0.0F;
  if (d == nullptr || !d->plan->hasMas()) return 0;
  *constant = d->masCalConstant;
  return 1;
}

std::int32_t Simulator::setMasCalConstant(std::int32_t id, const float* constant) {
  Detector* d = command(id);
  if (d == nullptr || constant == nullptr || !d->plan->hasMas()) return 0;
  d->masCalConstant = *constant;
  return 1;
}

std::int32_t Simulator::getMasCalDate(std::int32_t id, CalDate* date) {
  const Detector* d = query(id);
  if (date == nullptr) return 0;
  *date = {};
  if (d == nullptr || !d->plan->hasMas()) return 0;
  *date = d->masCalDate;
  return 1;
}

std::int32_t Simulator::setMasCalDate(std::int32_t id, const CalDate* date) {
  Detector* d = command(id);
  if (d == nullptr || date == nullptr || !d->plan->hasMas()) return 0;
  d->masCalDate = *date;
  return 1;
}

std::int32_t Simulator::setMasZero(std::int32_t id) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasMas()) return 0;
  d->zeroingLeft = d->plan->mas.zeroingReadsOnRequest;
  return 1;
}

// ---- The rest of the boundary --------------------------------------------------------------------------

std::int32_t Simulator::getDetectorInfo(std::int32_t id, DetectorInfo* info) {
  const Detector* d = address(id);
  if (info == nullptr) return 0;
  *info = {};
  if (d == nullptr) return 0;
  *info = d->info;
  return 1;
}

std::int32_t Simulator::getDetectorInfoOfAll(DetectorInfo* first, std::int32_t* count) {
  if (count == nullptr) return 0;
  const std::int32_t capacity = *count > 0 ? *count : std::numeric_limits<std::int32_t>::max();
  std::int32_t n = 0;
  for (std::size_t i = 0; i < detectors_.size() && n < capacity; ++i) {
    if (!found_[i]) continue;
    if (first != nullptr) first[n] = detectors_[i].info;
    ++n;
  }
  *count = n;
  return n;
}

std::int32_t Simulator::getDetectorPostStatus(std::int32_t id) {
  const Detector* d = address(id);
  return d != nullptr ? d->info.selfTestResult : -1;
}

std::int32_t Simulator::getDetectorPostStatusOfAll(std::int32_t* first) {
  std::int32_t n = 0;
  for (const Detector& d : detectors_) {
    if (d.connection == 0) continue;
    if (first != nullptr) first[n] = d.info.selfTestResult;
    ++n;
  }
  return n;
}

std::int32_t Simulator::getDetectorStatusOfAll(DetectorStatus* first) {
  std::int32_t n = 0;
  for (Detector& d : detectors_) {
    if (d.connection == 0) continue;
    if (first != nullptr) getDetectorStatus(&first[n], d.info.identifier);
    ++n;
  }
  return n;
}

std::int32_t Simulator::forAllConnected(std::int32_t (Simulator::*member)(std::int32_t, std::int32_t),
                                        std::int32_t value) {
  std::int32_t n = 0;
  for (std::size_t i = 0; i < detectors_.size(); ++i) {
    if (detectors_[i].connection == kConnected) n += (this->*member)(detectors_[i].info.identifier, value);
  }
  return n;
}

std::int32_t Simulator::enableMeasurementToAll(bool enable) {
  std::int32_t n = 0;
  for (std::size_t i = 0; i < detectors_.size(); ++i) {
    if (detectors_[i].connection == kConnected) n += enableMeasurement(detectors_[i].info.identifier, enable);
  }
  return n;
}

std::int32_t Simulator::setMeasurementSettingsToAll(const MeasurementSettings* settings) {
  std::int32_t n = 0;
  for (std::size_t i = 0; i < detectors_.size(); ++i) {
    if (detectors_[i].connection == kConnected)
      n += setMeasurementSettings(detectors_[i].info.identifier, settings);
  }
  return n;
}

std::int32_t Simulator::setDetectorGain(std::int32_t id, std::int32_t gain) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  d->gain = gain;
  return 1;
}

std::int32_t Simulator::zeroFill(std::int32_t id, void* first, std::int32_t bytes) {
  const Detector* d = query(id);
  if (first == nullptr || bytes <= 0) return 0;
  std::memset(first, 0, static_cast<std::size_t>(bytes));
  return d != nullptr ? bytes : 0;
}

std::int32_t Simulator::setHardwareVersion(std::int32_t id, std::uint8_t major, std::uint8_t minor) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  d->info.boardVersionMajor = major;
  d->info.boardVersionMinor = minor;
  return 1;
}

std::int32_t Simulator::setSerialNumber(std::int32_t id, std::int32_t serialNumber) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  d->info.serialNumber = serialNumber;
  return 1;
}

std::int32_t Simulator::uploadTargetFilter(std::int32_t id, const TargetFilterName* first,
                                           std::int32_t count) {
  Detector* d = command(id);
  if (d == nullptr || first == nullptr || count < 0 || !d->plan->hasAio()) return 0;
  d->validTargetFilters.clear();
  for (std::int32_t i = 0; i < count; ++i) {
    d->validTargetFilters.push_back(nameFromBytes(first[i].name, kTargetFilterNameLength));
  }
  d->uploaded = true;
  return 1;
}

std::int32_t Simulator::getUploadStatus(std::int32_t id) {
  const Detector* d = query(id);
  return d != nullptr && d->uploaded ? 1 : 0;
}

std::int32_t Simulator::sendByteArray(std::int32_t id, std::int32_t count) {
  const Detector* d = command(id);
  return d != nullptr ? std::max(count, 0) : 0;
}

std::int32_t Simulator::sendReceiveByteArray(std::int32_t id, const std::uint8_t* sent,
                                             std::int32_t sentCount, std::uint8_t* received,
                                             std::int32_t* receivedCount) {
  const Detector* d = command(id);
  if (receivedCount == nullptr) return 0;
  std::int32_t n = std::max(0, std::min(sentCount, *receivedCount));
  if (d == nullptr || sent == nullptr || received == nullptr) n = 0;
  if (n > 0) std::memcpy(received, sent, static_cast<std::size_t>(n));  // the detector echoes
  *receivedCount = n;
  return n;
}

// ---- For the Sim exports -------------------------------------------------------------------------------

bool Simulator::detectorState(std::int32_t id, SimDetectorState& state) const {
  state = {};
  const Detector* d = find(id);
  if (d == nullptr) return false;
  state.identifier = d->info.identifier;
  state.typeCode = d->info.typeCode;
  state.connectionState = d->connection;
  state.measurementEnabled = d->armed ? 1 : 0;
  state.masEnabled = d->masArmed ? 1 : 0;
  state.powerMode = d->powerMode;
  state.detectorMode = d->detectorMode;
  state.setup = d->setup;
  state.masInputType = d->masInputType;
  state.settingsReceived = d->settingsReceived;
  state.lastSettings = d->lastSettings;
  state.callsAddressed = d->calls;
  state.statusPolls = d->statusPolls;
  state.exposuresDelivered = d->exposuresDelivered;
  state.masExposuresDelivered = d->masExposuresDelivered;
  state.nextExposure = static_cast<std::int32_t>(d->main.next);
  state.waveformPoints = d->recording != nullptr ? static_cast<std::int32_t>(d->recording->size()) : 0;
  state.waveformAvailable = d->waveformAvailable;
  state.sectionPublished = sections_.count(id) != 0 ? 1 : 0;
  state.waveformDownloadActive = d->downloadActive ? 1 : 0;
  state.waveformDownloadStarts = d->downloadStarts;
  state.chamberCount = static_cast<std::int32_t>(d->chambers.size());
  state.selection = d->selection;
  state.adcf = d->adcf;
  state.dosimeterMode = d->dosimeterMode;
  state.dosimeterUnit = d->dosimeterUnit;
  state.tempPressureOffset = d->offset;
  state.gain = d->gain;
  return true;
}

SimLibraryState Simulator::libraryState() const {
  SimLibraryState state{};
  state.registered = registered_ ? 1 : 0;
  state.scanState = scanState_;
  state.scanPolls = scanPolls_;
  for (const Detector& d : detectors_) state.connectedCount += d.connection == kConnected ? 1 : 0;
  state.pauseDepth = pauseDepth_;
  state.pauseCalls = pauseCalls_;
  state.resumeCalls = resumeCalls_;
  state.unbalancedCalls = unbalancedCalls_;
  state.logLines = static_cast<std::int32_t>(log_.lineCount());
  return state;
}

bool Simulator::chamberFile(std::int32_t id, std::string& text) const {
  const Detector* d = find(id);
  if (d == nullptr || !d->plan->hasDosimeter()) return false;
  text = chamberFileText(d->chambers);
  return true;
}

}  // namespace rx9400::sim
