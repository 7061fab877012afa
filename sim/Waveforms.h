// Synthetic waveforms for scenarios that do not list their samples: a kV trace of the all-in-one
// detector and a tube-current trace of the mAs meter. Integer arithmetic only, so that every platform
// produces the same samples.
#pragma once

#include <cstdint>
#include <vector>

namespace rx9400::sim {

/// The longest waveform a scenario may give (40 MB of samples).
inline constexpr std::int32_t kMaxWaveformPoints = 10000000;

/// A trace that rises linearly, holds a plateau with a triangular ripple, and falls back to zero.
struct TraceShape {
  std::int32_t points = 0;
  std::int32_t rampPoints = 0;
  std::int32_t fallPoints = 0;
  std::int32_t plateau = 0;       ///< level of the plateau, in the unit of the samples
  std::int32_t ripple = 0;        ///< peak deviation of the plateau from its level
  std::int32_t ripplePeriod = 1;  ///< points per ripple cycle
};

/// The trace's samples; linear in the points, no division per plateau sample.
std::vector<std::int32_t> makeTrace(const TraceShape& shape);

/// The raw mAs-meter sample for a current in mA: raw * 5000 / 2^24 gives the current back.
std::int32_t masRawFromMilliamperes(double milliamperes);

}  // namespace rx9400::sim
