// Waveforms: the recordings of the last exposures, published in the detector's shared-memory section or
// read point by point.
#include "Simulator.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace rx9400::sim {

namespace {

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

}  // namespace

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

}  // namespace rx9400::sim
