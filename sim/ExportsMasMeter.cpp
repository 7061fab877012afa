// The exports of the mAs meter.
#include "ExportSupport.h"

namespace rx9400 {

using sim::call;
using sim::Simulator;

extern "C" {

// ---- mAs meter -----------------------------------------------------------------------------------------

std::int32_t MB_STDCALL MBGetmAsMeasuredData(MasMeasuredData* data, std::int32_t id, std::int32_t reserved) {
  return call(
      "MBGetmAsMeasuredData", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getMasMeasuredData(data, id), data); }, data, id, reserved);
}

std::int32_t MB_STDCALL MBSetmAsInput(std::int32_t id, std::int32_t inputType) {
  return call(
      "MBSetmAsInput", std::int32_t{0}, [&](Simulator& s) { return s.setMasInput(id, inputType); }, id,
      inputType);
}

std::int32_t MB_STDCALL MBGetmAsInput(std::int32_t id) {
  return call(
      "MBGetmAsInput", std::int32_t{0}, [&](Simulator& s) { return s.getMasInput(id); }, id);
}

std::int32_t MB_STDCALL MBGetmAsCalConstant(std::int32_t id, float* calConstant) {
  return call(
      "MBGetmAsCalConstant", std::int32_t{0},
      [&](Simulator& s) { return s.getMasCalConstant(id, calConstant); }, id, calConstant);
}

std::int32_t MB_STDCALL MBSetmAsCalConstant(std::int32_t id, float* calConstant) {
  return call(
      "MBSetmAsCalConstant", std::int32_t{0},
      [&](Simulator& s) { return s.setMasCalConstant(id, calConstant); }, id, calConstant);
}

std::int32_t MB_STDCALL MBGetmAsCalDate(std::int32_t id, CalDate* date) {
  return call(
      "MBGetmAsCalDate", std::int32_t{0}, [&](Simulator& s) { return s.getMasCalDate(id, date); }, id, date);
}

std::int32_t MB_STDCALL MBSetmAsCalDate(std::int32_t id, CalDate* date) {
  return call(
      "MBSetmAsCalDate", std::int32_t{0}, [&](Simulator& s) { return s.setMasCalDate(id, date); }, id, date);
}

std::int32_t MB_STDCALL MBGetmAsDiagData(std::int32_t id, std::int32_t* first, std::int32_t count) {
  return call(
      "MBGetmAsDiagData", std::int32_t{0},
      [&](Simulator& s) { return s.zeroFill(id, first, sim::bytesOf<std::int32_t>(count)) / 4; }, id, first,
      count);
}

std::int32_t MB_STDCALL MBSetmAsCalibrationSettings(std::int32_t id, std::uint8_t* first, std::int32_t size) {
  return call(
      "MBSetmAsCalibrationSettings", std::int32_t{0},
      [&](Simulator& s) { return first != nullptr && size >= 0 ? s.sendByteArray(id, 1) : 0; }, id, first,
      size);
}

std::int32_t MB_STDCALL MBSetmAsZero(std::int32_t id) {
  return call(
      "MBSetmAsZero", std::int32_t{0}, [&](Simulator& s) { return s.setMasZero(id); }, id);
}

std::int32_t MB_STDCALL MBEnableMASMeasurement(std::int32_t id, MBBool enable) {
  return call(
      "MBEnableMASMeasurement", std::int32_t{0},
      [&](Simulator& s) { return s.enableMasMeasurement(id, enable != 0); }, id, enable);
}

}  // extern "C"

}  // namespace rx9400
