// The exports of the application session, the scan, the connection and the update thread.
#include "ExportSupport.h"
#include "UpdateThread.h"

namespace rx9400 {

using sim::ByteList;
using sim::call;
using sim::IntList;
using sim::Simulator;

extern "C" {

// ---- Session, scanning and connection ----------------------------------------------------------------

std::int32_t MB_STDCALL MBRegisterApplication(std::int32_t application) {
  return call(
      "MBRegisterApplication", std::int32_t{0},
      [](Simulator&) { return sim::registerApplication(sim::library()); }, application);
}

std::int32_t MB_STDCALL MBCloseApplication() {
  void* updateThread = nullptr;
  const std::int32_t result = call("MBCloseApplication", std::int32_t{0}, [&](Simulator& s) {
    updateThread = sim::stopUpdateThread(sim::library());
    return s.closeApplication();
  });
  sim::joinUpdateThread(updateThread);  // outside the lock, which the thread takes to learn that it ends
  return result;
}

std::int32_t MB_STDCALL MBScanForDetectors() {
  return call("MBScanForDetectors", std::int32_t{0}, [](Simulator& s) { return s.scanForDetectors(); });
}

std::int32_t MB_STDCALL MBGetScanCompleteStatus() {
  return call("MBGetScanCompleteStatus", std::int32_t{0},
              [](Simulator& s) { return s.getScanCompleteStatus(); });
}

std::uint8_t MB_STDCALL MBGetNumberOfDetectors(std::int32_t typeCode) {
  return call(
      "MBGetNumberOfDetectors", std::uint8_t{0},
      [&](Simulator& s) { return sim::Final<std::uint8_t>{s.announceNumberOfDetectors(typeCode)}; },
      typeCode);
}

std::int32_t MB_STDCALL MBGetDetectorInfoOfType(std::int32_t typeCode, DetectorInfo* first) {
  return call(
      "MBGetDetectorInfoOfType", std::int32_t{0},
      [&](Simulator& s) {
        const std::int32_t written = s.getDetectorInfoOfType(typeCode, first);
        return sim::wrote(s, written, first, written);
      },
      typeCode, first);
}

std::int16_t MB_STDCALL MBConnectToDetectors(std::int32_t* identifiers, std::uint8_t* typeCodes,
                                             std::uint8_t count) {
  return call(
      "MBConnectToDetectors", std::int16_t{0},
      [&](Simulator& s) {
        const std::int16_t connected = s.connectToDetectors(identifiers, typeCodes, count);
        s.chaos().scramble(typeCodes, count);
        return sim::wrote(s, connected, identifiers, count);
      },
      IntList{identifiers, count}, ByteList{typeCodes, count}, count);
}

std::int32_t MB_STDCALL MBStopScanningAndReset() {
  return call("MBStopScanningAndReset", std::int32_t{0},
              [](Simulator& s) { return s.stopScanningAndReset(); });
}

std::int16_t MB_STDCALL MBGetUSBStatus() {
  return call("MBGetUSBStatus", std::int16_t{0}, [](Simulator& s) { return s.usbStatus(); });
}

std::int16_t MB_STDCALL MBGetZigBeeStatus() {
  return call("MBGetZigBeeStatus", std::int16_t{0}, [](Simulator& s) { return s.zigBeeStatus(); });
}

std::int32_t MB_STDCALL MBGetDetectorInfo(std::int32_t id, DetectorInfo* info) {
  return call(
      "MBGetDetectorInfo", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getDetectorInfo(id, info), info); }, id, info);
}

std::int32_t MB_STDCALL MBGetDetectorInfoOfAll(DetectorInfo* first, std::int32_t* count) {
  return call(
      "MBGetDetectorInfoOfAll", std::int32_t{0},
      [&](Simulator& s) { return s.getDetectorInfoOfAll(first, count); }, first, count);
}

std::int32_t MB_STDCALL MBGetDetectorPOSTStatus(std::int32_t id) {
  return call(
      "MBGetDetectorPOSTStatus", std::int32_t{-1}, [&](Simulator& s) { return s.getDetectorPostStatus(id); },
      id);
}

std::int32_t MB_STDCALL MBGetDetectorPOSTStatusOfAll(std::int32_t* first) {
  return call(
      "MBGetDetectorPOSTStatusOfAll", std::int32_t{0},
      [&](Simulator& s) { return s.getDetectorPostStatusOfAll(first); }, first);
}

std::int16_t MB_STDCALL MBGetZigBeeRSSI() {
  return call("MBGetZigBeeRSSI", std::int16_t{0}, [](Simulator& s) { return s.zigBeeRssi(); });
}

std::int32_t MB_STDCALL MBDeviceChanged() {
  return call("MBDeviceChanged", std::int32_t{0}, [](Simulator&) { return 0; });
}

std::int32_t MB_STDCALL MBPauseUpdateThread() {
  return call("MBPauseUpdateThread", std::int32_t{0}, [](Simulator& s) { return s.pauseUpdateThread(); });
}

std::int32_t MB_STDCALL MBResumeUpdateThread() {
  return call("MBResumeUpdateThread", std::int32_t{0}, [](Simulator& s) { return s.resumeUpdateThread(); });
}

}  // extern "C"

}  // namespace rx9400
