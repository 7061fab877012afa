// The status poll and the exposure cycle it drives (shared by the all-in-one detector and the dosimeter),
// measurement control, and the all-in-one detector's measured data and target filters.
#include "Simulator.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

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

void copyName(char* target, std::size_t width, const std::string& name) {
  std::memset(target, 0, width);
  std::memcpy(target, name.data(), std::min(width, name.size()));
}

}  // namespace

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
  // The masLinkLossAfterBlocks fault shows the link lost while the detector stays connected.
  const std::int32_t connection =
      d->connection == kConnected && d->masLinkDown ? kConnectionLost : d->connection;
  status->connectionState = connection;
  if (connection == 0) return 1;
  const bool hasMain = d->plan->hasAio() || d->plan->hasDosimeter();
  if (connection == kConnected) {
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

}  // namespace rx9400::sim
