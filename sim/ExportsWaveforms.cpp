// The exports of the waveforms.
#include "ExportSupport.h"

namespace rx9400 {

using sim::call;
using sim::Simulator;
using sim::WaveArg;

extern "C" {

// ---- Waveforms -----------------------------------------------------------------------------------------

std::int32_t MB_STDCALL MBSetWaveformParameters(std::int32_t id, WaveformParameters* parameters,
                                                std::int32_t reserved) {
  return call(
      "MBSetWaveformParameters", std::int32_t{0},
      [&](Simulator& s) { return s.setWaveformParameters(id, parameters); }, id, WaveArg{parameters},
      reserved);
}

std::int32_t MB_STDCALL MBGetNumberOfDataPoints(std::int32_t id, std::int32_t reserved) {
  return call(
      "MBGetNumberOfDataPoints", std::int32_t{0}, [&](Simulator& s) { return s.getNumberOfDataPoints(id); },
      id, reserved);
}

std::int16_t MB_STDCALL MBGetWaveformAvailabilityStatus(std::int32_t id) {
  return call(
      "MBGetWaveformAvailabilityStatus", std::int16_t{0},
      [&](Simulator& s) { return s.getWaveformAvailabilityStatus(id); }, id);
}

std::int32_t MB_STDCALL MBStartWFDownload(std::int32_t id, std::uint8_t start) {
  return call(
      "MBStartWFDownload", std::int32_t{0}, [&](Simulator& s) { return s.startWaveformDownload(id, start); },
      id, start);
}

std::int32_t MB_STDCALL MBGetmAsNumberOfDataPoints(std::int32_t id, std::int32_t* span) {
  return call(
      "MBGetmAsNumberOfDataPoints", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getMasNumberOfDataPoints(id, span), span); }, id, span);
}

std::int32_t MB_STDCALL MBGetmAsWaveFormDataPoints(std::int32_t id, std::int32_t firstPoint,
                                                   std::uint8_t step, std::uint8_t count,
                                                   std::int32_t* first) {
  return call(
      "MBGetmAsWaveFormDataPoints", std::int32_t{0},
      [&](Simulator& s) {
        return sim::wrote(s, s.getMasWaveformDataPoints(id, firstPoint, step, count, first), first, count);
      },
      id, firstPoint, step, count, first);
}

std::int32_t MB_STDCALL MBSetmAsWaveformParameters(std::int32_t id, WaveformParameters* parameters,
                                                   std::int32_t reserved) {
  return call(
      "MBSetmAsWaveformParameters", std::int32_t{0},
      [&](Simulator& s) { return s.setMasWaveformParameters(id, parameters); }, id, WaveArg{parameters},
      reserved);
}

std::int16_t MB_STDCALL MBGetmAsWaveformAvailabilityStatus(std::int32_t id) {
  return call(
      "MBGetmAsWaveformAvailabilityStatus", std::int16_t{0},
      [&](Simulator& s) { return s.getMasWaveformAvailabilityStatus(id); }, id);
}

}  // extern "C"

}  // namespace rx9400
