// The exports of detector status, measurement control and the all-in-one detector's data.
#include "ExportSupport.h"

namespace rx9400 {

using sim::call;
using sim::Simulator;

extern "C" {

// ---- Detector state ----------------------------------------------------------------------------------

std::int32_t MB_STDCALL MBGetDetectorStatus(DetectorStatus* status, std::int32_t id) {
  return call(
      "MBGetDetectorStatus", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getDetectorStatus(status, id), status); }, status, id);
}

std::int32_t MB_STDCALL MBGetBatteryStatus(BatteryStatus* battery, std::int32_t id, std::int32_t flags) {
  return call(
      "MBGetBatteryStatus", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getBatteryStatus(battery, id), battery); }, battery, id,
      flags);
}

std::int32_t MB_STDCALL MBGetNumberOfInvalidTargetFilters(std::int32_t id) {
  return call(
      "MBGetNumberOfInvalidTargetFilters", std::int32_t{0},
      [&](Simulator& s) { return s.getNumberOfInvalidTargetFilters(id); }, id);
}

std::int32_t MB_STDCALL MBGetAllInvalidTargetFilters(std::int32_t id, TargetFilterName* first,
                                                     std::int32_t* count) {
  return call(
      "MBGetAllInvalidTargetFilters", std::int32_t{0},
      [&](Simulator& s) {
        return sim::wroteNames(s, first, count,
                               [&] { return s.getAllInvalidTargetFilters(id, first, count); });
      },
      id, first, count);
}

std::int32_t MB_STDCALL MBGetNumberOfValidTargetFilters(std::int32_t id, std::int32_t flags) {
  return call(
      "MBGetNumberOfValidTargetFilters", std::int32_t{0},
      [&](Simulator& s) { return s.getNumberOfValidTargetFilters(id); }, id, flags);
}

std::int32_t MB_STDCALL MBGetValidTargetFilters(std::int32_t id, TargetFilterName* first,
                                                std::int32_t* count) {
  return call(
      "MBGetValidTargetFilters", std::int32_t{0},
      [&](Simulator& s) {
        return sim::wroteNames(s, first, count, [&] { return s.getValidTargetFilters(id, first, count); });
      },
      id, first, count);
}

std::int32_t MB_STDCALL MBGetDefaultTargetFilter(std::int32_t id, TargetFilterName* name) {
  return call(
      "MBGetDefaultTargetFilter", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getDefaultTargetFilter(id, name), name); }, id, name);
}

// ---- Measurement control and data --------------------------------------------------------------------

std::int32_t MB_STDCALL MBEnableMeasurement(std::int32_t id) {
  return call(
      "MBEnableMeasurement", std::int32_t{0}, [&](Simulator& s) { return s.enableMeasurement(id, true); },
      id);
}

std::int32_t MB_STDCALL MBDisableMeasurement(std::int32_t id) {
  return call(
      "MBDisableMeasurement", std::int32_t{0}, [&](Simulator& s) { return s.enableMeasurement(id, false); },
      id);
}

std::int32_t MB_STDCALL MBSetPowerMode(std::int32_t id, std::int32_t powerMode) {
  return call(
      "MBSetPowerMode", std::int32_t{0}, [&](Simulator& s) { return s.setPowerMode(id, powerMode); }, id,
      powerMode);
}

std::int32_t MB_STDCALL MBSetDetectorMode(std::int32_t id, std::int32_t detectorMode) {
  return call(
      "MBSetDetectorMode", std::int32_t{0}, [&](Simulator& s) { return s.setDetectorMode(id, detectorMode); },
      id, detectorMode);
}

std::int32_t MB_STDCALL MBSetSetup(std::int32_t id, std::int32_t setup) {
  return call(
      "MBSetSetup", std::int32_t{0}, [&](Simulator& s) { return s.setSetup(id, setup); }, id, setup);
}

std::int32_t MB_STDCALL MBSetMeasurementSettings(std::int32_t id, MeasurementSettings* settings) {
  return call(
      "MBSetMeasurementSettings", std::int32_t{0},
      [&](Simulator& s) { return s.setMeasurementSettings(id, settings); }, id, settings);
}

std::int32_t MB_STDCALL MBGetMeasuredData(AioMeasuredData* data, std::int32_t id, std::int32_t reserved) {
  return call(
      "MBGetMeasuredData", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getMeasuredData(data, id), data); }, data, id, reserved);
}

std::int32_t MB_STDCALL MBGetDetectorStatusOfAll(DetectorStatus* first) {
  return call(
      "MBGetDetectorStatusOfAll", std::int32_t{0},
      [&](Simulator& s) { return s.getDetectorStatusOfAll(first); }, first);
}

std::int32_t MB_STDCALL MBEnableMeasurementToAll() {
  return call("MBEnableMeasurementToAll", std::int32_t{0},
              [](Simulator& s) { return s.enableMeasurementToAll(true); });
}

std::int32_t MB_STDCALL MBDisableMeasurementToAll() {
  return call("MBDisableMeasurementToAll", std::int32_t{0},
              [](Simulator& s) { return s.enableMeasurementToAll(false); });
}

std::int32_t MB_STDCALL MBGetMeasurementStatus(std::int32_t id) {
  return call(
      "MBGetMeasurementStatus", std::int32_t{0}, [&](Simulator& s) { return s.getMeasurementStatus(id); },
      id);
}

std::int32_t MB_STDCALL MBSetMeasurementSettingsToAll(MeasurementSettings* settings) {
  return call(
      "MBSetMeasurementSettingsToAll", std::int32_t{0},
      [&](Simulator& s) { return s.setMeasurementSettingsToAll(settings); }, settings);
}

std::int32_t MB_STDCALL MBSetDetectorModeToAll(std::int32_t detectorMode) {
  return call(
      "MBSetDetectorModeToAll", std::int32_t{0},
      [&](Simulator& s) { return s.forAllConnected(&Simulator::setDetectorMode, detectorMode); },
      detectorMode);
}

std::int32_t MB_STDCALL MBSetSetupToAll(std::int32_t setup) {
  return call(
      "MBSetSetupToAll", std::int32_t{0},
      [&](Simulator& s) { return s.forAllConnected(&Simulator::setSetup, setup); }, setup);
}

std::int32_t MB_STDCALL MBSetPowerModeToAll(std::int32_t powerMode) {
  return call(
      "MBSetPowerModeToAll", std::int32_t{0},
      [&](Simulator& s) { return s.forAllConnected(&Simulator::setPowerMode, powerMode); }, powerMode);
}

std::int32_t MB_STDCALL MBSetDetectorGainForAllChannel(std::int32_t id, std::int32_t gain) {
  return call(
      "MBSetDetectorGainForAllChannel", std::int32_t{0},
      [&](Simulator& s) { return s.setDetectorGain(id, gain); }, id, gain);
}

std::int32_t MB_STDCALL MBSetDetectorGainForAllChannelOfAll(std::int32_t gain) {
  return call(
      "MBSetDetectorGainForAllChannelOfAll", std::int32_t{0},
      [&](Simulator& s) { return s.forAllConnected(&Simulator::setDetectorGain, gain); }, gain);
}

std::int32_t MB_STDCALL MBGetCalibrationData(std::int32_t id, std::uint8_t* first, std::int32_t size) {
  return call(
      "MBGetCalibrationData", std::int32_t{0}, [&](Simulator& s) { return s.zeroFill(id, first, size); }, id,
      first, size);
}

std::int32_t MB_STDCALL MBGetChannelData(std::int32_t id, std::int32_t* first, std::int32_t count) {
  return call(
      "MBGetChannelData", std::int32_t{0},
      [&](Simulator& s) { return s.zeroFill(id, first, sim::bytesOf<std::int32_t>(count)) / 4; }, id, first,
      count);
}

std::int32_t MB_STDCALL MBGetOffsetData(std::int32_t id, std::int32_t* first, std::int32_t count) {
  return call(
      "MBGetOffsetData", std::int32_t{0},
      [&](Simulator& s) { return s.zeroFill(id, first, sim::bytesOf<std::int32_t>(count)) / 4; }, id, first,
      count);
}

std::int32_t MB_STDCALL MBSetHardwareVersion(std::int32_t id, std::uint8_t major, std::uint8_t minor) {
  return call(
      "MBSetHardwareVersion", std::int32_t{0},
      [&](Simulator& s) { return s.setHardwareVersion(id, major, minor); }, id, major, minor);
}

std::int32_t MB_STDCALL MBSetSerialNumber(std::int32_t id, std::int32_t serialNumber) {
  return call(
      "MBSetSerialNumber", std::int32_t{0}, [&](Simulator& s) { return s.setSerialNumber(id, serialNumber); },
      id, serialNumber);
}

std::int32_t MB_STDCALL MBUploadTargetFilter(std::int32_t id, TargetFilterName* first, std::int32_t count) {
  return call(
      "MBUploadTargetFilter", std::int32_t{0},
      [&](Simulator& s) { return s.uploadTargetFilter(id, first, count); }, id, first, count);
}

std::int32_t MB_STDCALL MBGetUploadStatus(std::int32_t id) {
  return call(
      "MBGetUploadStatus", std::int32_t{0}, [&](Simulator& s) { return s.getUploadStatus(id); }, id);
}

std::int32_t MB_STDCALL MBSendByteArray(std::int32_t id, std::uint8_t* first, std::int32_t count) {
  return call(
      "MBSendByteArray", std::int32_t{0},
      [&](Simulator& s) { return first != nullptr ? s.sendByteArray(id, count) : 0; }, id, first, count);
}

std::int32_t MB_STDCALL MBSendReceiveByteArray(std::int32_t id, std::uint8_t* sent, std::int32_t sentCount,
                                               std::uint8_t* received, std::int32_t* receivedCount) {
  return call(
      "MBSendReceiveByteArray", std::int32_t{0},
      [&](Simulator& s) { return s.sendReceiveByteArray(id, sent, sentCount, received, receivedCount); }, id,
      sent, sentCount, received, receivedCount);
}

std::int32_t MB_STDCALL MBResetExposure(std::int32_t id) {
  return call(
      "MBResetExposure", std::int32_t{0}, [&](Simulator& s) { return s.resetExposure(id); }, id);
}

}  // extern "C"

}  // namespace rx9400
