// The plug-in's process-wide state.
#include "core/SharedState.h"

#include "core/DetectorType.h"

#include <stdexcept>
#include <utility>

namespace rx9400 {

void SharedState::resetDetectors() {
  detectors.assign(1, DetectorInfo{});
  detectorKinds.assign(1, 0);
  alerts.assign(1, DetectorAlertState{});
}

void SharedState::setConnectedDetectors(std::vector<DetectorInfo> connected,
                                        std::vector<std::int32_t> kinds) {
  if (connected.size() != kinds.size()) {
    throw std::invalid_argument("every connected detector needs its type code");
  }
  detectors = std::move(connected);
  detectorKinds = std::move(kinds);
  alerts.assign(detectors.size(), DetectorAlertState{});
}

std::int32_t SharedState::identifierAt(std::size_t slot) const {
  return slot < detectors.size() ? detectors[slot].identifier : 0;
}

std::int32_t SharedState::kindAt(std::size_t slot) const {
  return slot < detectorKinds.size() ? detectorKinds[slot] : 0;
}

void SharedState::removeDetector(std::size_t slot) {
  if (slot < detectors.size()) detectors[slot].identifier = 0;
}

std::vector<std::int32_t> SharedState::dosimeterIdentifiers() const {
  std::vector<std::int32_t> identifiers;
  for (std::size_t slot = 0; slot < detectors.size(); ++slot) {
    const std::int32_t kind = kindAt(slot);
    if (hasDosePart(kind) && detectors[slot].identifier >= 1)
      identifiers.push_back(detectors[slot].identifier);
  }
  return identifiers;
}

std::int32_t SharedState::firstDosimeter() const {
  const std::vector<std::int32_t> identifiers = dosimeterIdentifiers();
  return identifiers.empty() ? 0 : identifiers.front();
}

}  // namespace rx9400
