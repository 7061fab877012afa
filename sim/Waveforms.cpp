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

  std::vector<std::int32_t> samples(static_cast<std::size_t>(points));
  for (std::int32_t i = 0; i < ramp; ++i)
    samples[i] = static_cast<std::int32_t>(level * (i + 1) / (ramp + 1));
  // One ripple cycle, repeated over the plateau.
  const std::int32_t period = std::max(shape.ripplePeriod, 1);
  std::vector<std::int32_t> cycle(static_cast<std::size_t>(std::min(period, plateauEnd - ramp)));
  for (std::size_t k = 0; k < cycle.size(); ++k) {
    cycle[k] =
        static_cast<std::int32_t>(level + triangle(static_cast<std::int32_t>(k), shape.ripple, period));
  }
  for (std::int32_t i = ramp; i < plateauEnd; i += period) {
    std::copy_n(cycle.begin(), std::min(period, plateauEnd - i), samples.begin() + i);
  }
  for (std::int32_t i = plateauEnd; i < points; ++i) {
    const std::int64_t left = points - i;  // fall .. 1
    samples[i] = static_cast<std::int32_t>(level * (left - 1) / fall);
  }
  return samples;
}

std::int32_t masRawFromMilliamperes(double milliamperes) {
  const double raw = std::round(milliamperes * 16777216.0 / 5000.0);
  return static_cast<std::int32_t>(std::clamp(raw, -2147483648.0, 2147483647.0));
}

}  // namespace rx9400::sim
