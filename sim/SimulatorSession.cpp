// The application session, the scan and the connection of detectors, and the pause/resume balance of the
// update thread.
#include "Simulator.h"

#include <algorithm>
#include <limits>
#include <set>
#include <string>

namespace rx9400::sim {

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

std::uint8_t Simulator::announceNumberOfDetectors(std::int32_t typeCode) {
  const std::uint8_t count = chaos_.answer(getNumberOfDetectors(typeCode));
  announced_[typeCode] = count;
  return count;
}

std::int32_t Simulator::getDetectorInfoOfType(std::int32_t typeCode, DetectorInfo* first) const {
  // In chaos mode the caller's array holds what the last count promised, which may be fewer.
  const auto announced = announced_.find(typeCode);
  const std::int32_t room = !chaos_.enabled()               ? std::numeric_limits<std::int32_t>::max()
                            : announced == announced_.end() ? 0
                                                            : announced->second;
  std::int32_t count = 0;
  for (std::size_t i = 0; i < detectors_.size() && count < room; ++i) {
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
  d.masBlocks = 0;
  d.masLinkDown = false;
}

void Simulator::disconnect(Detector& d) {
  d.connection = 0;
  d.armed = false;
  d.masArmed = false;
}

// ---- Update thread ----------------------------------------------------------------------------------

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

}  // namespace rx9400::sim
