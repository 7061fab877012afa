#include "Waveforms.h"

#include <algorithm>
#include <cmath>

namespace rx9400::sim {

namespace {

std::int32_t triangle(std::int32_t index, std::int32_t amplitude, std::int32_t period) {
  if (amplitude == 0 || period < 2) return 0;
  const std::int64_t phase = index % period;
  const std::int64_t half = period / 2;
  const std::int64_t a = amplitude;
  // -a up to +a over the first half period, back down to -a over the second.
  if (phase < half) return static_cast<std::int32_t>(-a + (2 * a * phase) / half);
  return static_cast<std::int32_t>(a - (2 * a * (phase - half)) / (period - half));
}

}  // namespace

std::vector<std::int32_t> makeTrace(const TraceShape& shape) {
  const std::int32_t points = std::max(shape.points, 0);
  const std::int32_t ramp = std::clamp(shape.rampPoints, 0, points);
  const std::int32_t fall = std::clamp(shape.fallPoints, 0, points - ramp);
  const std::int32_t plateauEnd = points - fall;
  const std::int64_t level = shape.plateau;

  std::vector<std::int32_t> samples;
  samples.reserve(static_cast<std::size_t>(points));
  for (std::int32_t i = 0; i < points; ++i) {
    if (i < ramp) {
      samples.push_back(static_cast<std::int32_t>(level * (i + 1) / (ramp + 1)));
    } else if (i < plateauEnd) {
      samples.push_back(
          static_cast<std::int32_t>(level + triangle(i - ramp, shape.ripple, shape.ripplePeriod)));
    } else {
      const std::int64_t left = points - i;  // fall .. 1
      samples.push_back(static_cast<std::int32_t>(level * (left - 1) / fall));
    }
  }
  return samples;
}

std::int32_t masRawFromMilliamperes(double milliamperes) {
  const double raw = std::round(milliamperes * 16777216.0 / 5000.0);
  return static_cast<std::int32_t>(std::clamp(raw, -2147483648.0, 2147483647.0));
}

}  // namespace rx9400::sim
