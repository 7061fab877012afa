// Waveforms: the recordings of the last exposures, published in the detector's shared-memory section or
// read point by point.
#include "Simulator.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace rx9400::sim {

namespace {

/// Windows rounds a section up to whole pages of this size; a section cut by the sectionShortBy fault is
/// a whole number of them, so that a view of the points asked for fails on every platform.
constexpr std::size_t kPageBytes = 4096;

/// Writes the samples first, first + step, ... (`count` of them) as little-endian 32-bit integers; a point
/// outside the recording is 0. With step 1 the recording is copied in one piece.
void writeSamples(const std::vector<std::int32_t>& recording, std::int64_t first, std::int64_t count,
                  std::int64_t step, std::uint8_t* out) {
  const auto size = static_cast<std::int64_t>(recording.size());
  if (step == 1 && std::endian::native == std::endian::little) {
    const std::int64_t from = std::clamp<std::int64_t>(first, 0, size);
    const std::int64_t to = std::clamp<std::int64_t>(first + count, from, size);
    const auto head = static_cast<std::size_t>(std::clamp<std::int64_t>(from - first, 0, count)) * 4;
    const auto body = static_cast<std::size_t>(to - from) * 4;
    std::memset(out, 0, head);
    if (body > 0) std::memcpy(out + head, recording.data() + from, body);
    std::memset(out + head + body, 0, static_cast<std::size_t>(count) * 4 - head - body);
    return;
  }
  for (std::int64_t k = 0; k < count; ++k) {
    const std::int64_t index = first + k * step;
    const bool inside = index >= 0 && index < size;
    const auto value = static_cast<std::uint32_t>(inside ? recording[static_cast<std::size_t>(index)] : 0);
    for (int b = 0; b < 4; ++b) out[4 * k + b] = static_cast<std::uint8_t>(value >> (8 * b));
  }
}

}  // namespace

bool Simulator::publish(std::int32_t id, std::size_t size, const SharedSection::Fill& fill) {
  dropSection(id);
  const std::string name = SharedSection::nameFor(id);
  std::string error;
  std::unique_ptr<SharedSection> section = SharedSection::create(name, size, fill, error);
  if (section == nullptr) {
    log_.note("section " + name + " not created: " + error);
    return false;
  }
  sections_[id] = std::move(section);
  return true;
}

bool Simulator::publish(std::int32_t id, const std::vector<std::uint8_t>& bytes) {
  return publish(id, bytes.size(),
                 [&](std::uint8_t* view) { std::memcpy(view, bytes.data(), bytes.size()); });
}

bool Simulator::publishSamples(std::int32_t id, const std::vector<std::int32_t>& recording,
                               const WaveformParameters& parameters, std::int32_t shortBy) {
  const std::int64_t step = parameters.step < 1 ? 1 : parameters.step;
  const std::int64_t points =
      std::min<std::int64_t>(parameters.numberOfPoints, static_cast<std::int64_t>(recording.size()));
  std::size_t bytes = static_cast<std::size_t>(points) * 4;
  if (shortBy > 0) {
    bytes =
        static_cast<std::size_t>(std::max<std::int64_t>(points - shortBy, 0)) * 4 / kPageBytes * kPageBytes;
  }
  bytes = chaos_.sectionSize(bytes, 4);
  if (bytes == 0) {  // not even a page left (or chaos left nothing): no section at all
    dropSection(id);
    return true;
  }
  return publish(id, bytes, [&](std::uint8_t* view) {
    writeSamples(recording, parameters.startPoint, static_cast<std::int64_t>(bytes / 4), step, view);
  });
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
  const bool published = publishSamples(id, *d->recording, *parameters, faults.sectionShortBy);
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
    d->masBlocks = 0;
    d->masLinkDown = false;
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
  Detector* d = query(id);
  if (first == nullptr) return 0;
  std::fill(first, first + count, 0);
  if (d == nullptr || !d->plan->hasMas() || d->masRecording == nullptr || d->masLinkDown) return 0;
  const std::vector<std::int32_t>& recording = *d->masRecording;
  const std::int64_t stride = step == 0 ? 1 : step;
  for (std::int64_t k = 0; k < count; ++k) {
    const std::int64_t index = firstPoint + k * stride;
    if (index >= 0 && index < static_cast<std::int64_t>(recording.size())) {
      first[k] = recording[static_cast<std::size_t>(index)];
    }
  }
  const std::int32_t lossAfter = d->plan->faults.masLinkLossAfterBlocks;
  if (lossAfter > 0 && ++d->masBlocks >= lossAfter) d->masLinkDown = true;
  return count;
}

std::int32_t Simulator::setMasWaveformParameters(std::int32_t id, const WaveformParameters* parameters) {
  Detector* d = command(id);
  if (d == nullptr || parameters == nullptr || !d->plan->hasMas() || d->masRecording == nullptr ||
      d->masRecording->empty() || parameters->numberOfPoints < 1) {
    return 0;
  }
  return publishSamples(id, *d->masRecording, *parameters, 0) ? 1 : 0;
}

std::int16_t Simulator::getMasWaveformAvailabilityStatus(std::int32_t id) {
  const Detector* d = query(id);
  return d != nullptr && d->plan->hasMas() && d->masRecording != nullptr && !d->masRecording->empty() ? 1 : 0;
}

}  // namespace rx9400::sim
