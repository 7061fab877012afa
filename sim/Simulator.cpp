// The simulator's construction, the lookup of the detector a call names, the functions of the boundary
// that belong to no one part, and the state the Sim exports show.
#include "Simulator.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "ChamberFile.h"

namespace rx9400::sim {

namespace {

ChaosConfig chaosOf(const Scenario& scenario, CallLog& log) {
  std::string problem;
  ChaosConfig config = withEnvironmentChaos(scenario.chaos, problem);
  if (!problem.empty()) log.note(problem);
  return config;
}

}  // namespace

Simulator::Simulator(Scenario scenario, CallLog& log)
    : scenario_(std::move(scenario)), log_(log), chaos_(chaosOf(scenario_, log)) {
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
  announced_.clear();
  chaos_.restart();
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
  if (chaos_.vanished(id)) return nullptr;
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
