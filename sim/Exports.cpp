// The C exports of the simulator: every function of the device library, with its exact signature, and
// the Sim control functions of SimControl.h.
//
// Each export takes the library lock, starts the simulator on first use, writes its call-log line and
// forwards to Simulator. Nothing escapes across the C boundary: any exception ends the call with the
// function's failure value (0).
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "CallLog.h"
#include "Scenario.h"
#include "SimControl.h"
#include "SimLock.h"
#include "Simulator.h"

// The prototypes come from the one list of exports, so that a definition below whose signature drifts
// from the list does not compile (two C functions of one name).
namespace rx9400 {
extern "C" {
#define MB_FUNCTION(Result, Name, Parameters) SIM_API Result MB_STDCALL Name Parameters;
#include "device/MBFunctionList.h"
}
}  // namespace rx9400

namespace rx9400::sim {

namespace {

struct Library {
  SimLock lock;
  std::unique_ptr<CallLog> log;  // declared before the simulator, which writes to it
  std::unique_ptr<Simulator> simulator;
  std::string lastError;
  bool explicitScenario = false;  // loaded through SimLoadScenario*: MBRegisterApplication keeps it
};

Library& library() {
  static Library instance;
  return instance;
}

bool readFile(const char* path, std::string& text, std::string& error) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    error = std::string("cannot open ") + path;
    return false;
  }
  std::ostringstream content;
  content << file.rdbuf();
  text = content.str();
  if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);  // a UTF-8 byte order mark
  return true;
}

/// The scenario file named by TAMSA_SIM_SCENARIO, or nullptr when the variable is not set. On failure
/// the error is kept and noted in the log, and nullptr is returned.
std::unique_ptr<Simulator> environmentSimulator(Library& lib) {
  const char* path = std::getenv("TAMSA_SIM_SCENARIO");
  if (path == nullptr || *path == '\0') return nullptr;
  std::string text;
  std::string error;
  if (readFile(path, text, error)) {
    try {
      return std::make_unique<Simulator>(parseScenario(text), *lib.log);
    } catch (const ScenarioError& e) {
      error = e.what();
    }
  }
  lib.lastError = std::string("TAMSA_SIM_SCENARIO ") + path + ": " + error;
  lib.log->note(lib.lastError);
  return nullptr;
}

void startUp(Library& lib) {
  lib.explicitScenario = false;
  lib.simulator = environmentSimulator(lib);
  if (lib.simulator == nullptr) {
    lib.simulator = std::make_unique<Simulator>(parseScenario(defaultScenarioText()), *lib.log);
  }
}

Simulator& ensure(Library& lib) {
  if (lib.log == nullptr) lib.log = std::make_unique<CallLog>();
  if (lib.simulator == nullptr) startUp(lib);
  return *lib.simulator;
}

/// One library call: lock, log, forward, trap.
template <typename R, typename Body, typename... Args>
R call(const char* name, R failure, Body&& body, const Args&... args) noexcept {
  Library& lib = library();
  try {
    SimGuard guard(lib.lock);
    Simulator& simulator = ensure(lib);
    lib.log->append(std::string(name) + "(" + formatArgs(args...) + ")");
    return static_cast<R>(body(simulator));
  } catch (...) {
    return failure;
  }
}

/// One Sim control call: lock, forward, trap; not logged.
template <typename Body>
std::int32_t control(std::int32_t failure, Body&& body) noexcept {
  Library& lib = library();
  try {
    SimGuard guard(lib.lock);
    ensure(lib);
    return body(lib);
  } catch (...) {
    return failure;
  }
}

std::int32_t copyText(const std::string_view text, char* buffer, std::int32_t size) {
  if (buffer != nullptr && size > 0) {
    const std::size_t n = std::min(text.size(), static_cast<std::size_t>(size - 1));
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
  }
  return static_cast<std::int32_t>(std::min<std::size_t>(
      text.size() + 1, static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())));
}

std::int32_t loadScenario(Library& lib, std::string_view text) {
  try {
    auto simulator = std::make_unique<Simulator>(parseScenario(text), *lib.log);
    lib.simulator = std::move(simulator);
  } catch (const ScenarioError& e) {
    lib.lastError = e.what();
    return kSimInvalidScenario;
  }
  lib.log->clear();
  lib.lastError.clear();
  lib.explicitScenario = true;
  return kSimOk;
}

std::int32_t registerApplication(Library& lib) {
  if (!lib.explicitScenario) {
    if (auto reread = environmentSimulator(lib)) lib.simulator = std::move(reread);
  }
  lib.simulator->restart();
  lib.simulator->setRegistered(true);
  return 1;
}

/// Bytes in `count` elements of T, or 0 when that does not fit a 32-bit count.
template <typename T>
std::int32_t bytesOf(std::int32_t count) {
  if (count <= 0 || count > std::numeric_limits<std::int32_t>::max() / static_cast<std::int32_t>(sizeof(T)))
    return 0;
  return count * static_cast<std::int32_t>(sizeof(T));
}

}  // namespace

}  // namespace rx9400::sim

namespace rx9400 {

using sim::ByteList;
using sim::call;
using sim::IntList;
using sim::NameArg;
using sim::Simulator;
using sim::WaveArg;

extern "C" {

// ---- Session, scanning and connection ----------------------------------------------------------------

std::int32_t MB_STDCALL MBRegisterApplication(std::int32_t application) {
  return call(
      "MBRegisterApplication", std::int32_t{0},
      [](Simulator&) { return sim::registerApplication(sim::library()); }, application);
}

std::int32_t MB_STDCALL MBCloseApplication() {
  return call("MBCloseApplication", std::int32_t{0}, [](Simulator& s) { return s.closeApplication(); });
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
      [&](Simulator& s) { return s.getNumberOfDetectors(typeCode); }, typeCode);
}

std::int32_t MB_STDCALL MBGetDetectorInfoOfType(std::int32_t typeCode, DetectorInfo* first) {
  return call(
      "MBGetDetectorInfoOfType", std::int32_t{0},
      [&](Simulator& s) { return s.getDetectorInfoOfType(typeCode, first); }, typeCode, first);
}

std::int16_t MB_STDCALL MBConnectToDetectors(std::int32_t* identifiers, std::uint8_t* typeCodes,
                                             std::uint8_t count) {
  return call(
      "MBConnectToDetectors", std::int16_t{0},
      [&](Simulator& s) { return s.connectToDetectors(identifiers, typeCodes, count); },
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

// ---- Detector state ----------------------------------------------------------------------------------

std::int32_t MB_STDCALL MBGetDetectorStatus(DetectorStatus* status, std::int32_t id) {
  return call(
      "MBGetDetectorStatus", std::int32_t{0}, [&](Simulator& s) { return s.getDetectorStatus(status, id); },
      status, id);
}

std::int32_t MB_STDCALL MBGetBatteryStatus(BatteryStatus* battery, std::int32_t id, std::int32_t flags) {
  return call(
      "MBGetBatteryStatus", std::int32_t{0}, [&](Simulator& s) { return s.getBatteryStatus(battery, id); },
      battery, id, flags);
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
      [&](Simulator& s) { return s.getAllInvalidTargetFilters(id, first, count); }, id, first, count);
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
      [&](Simulator& s) { return s.getValidTargetFilters(id, first, count); }, id, first, count);
}

std::int32_t MB_STDCALL MBGetDefaultTargetFilter(std::int32_t id, TargetFilterName* name) {
  return call(
      "MBGetDefaultTargetFilter", std::int32_t{0},
      [&](Simulator& s) { return s.getDefaultTargetFilter(id, name); }, id, name);
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
      "MBGetMeasuredData", std::int32_t{0}, [&](Simulator& s) { return s.getMeasuredData(data, id); }, data,
      id, reserved);
}

std::int32_t MB_STDCALL MBGetDosimeterMeasuredData(DoseMeasuredData* data, std::int32_t id,
                                                   std::int32_t reserved) {
  return call(
      "MBGetDosimeterMeasuredData", std::int32_t{0},
      [&](Simulator& s) { return s.getDosimeterMeasuredData(data, id); }, data, id, reserved);
}

std::int32_t MB_STDCALL MBGetmAsMeasuredData(MasMeasuredData* data, std::int32_t id, std::int32_t reserved) {
  return call(
      "MBGetmAsMeasuredData", std::int32_t{0}, [&](Simulator& s) { return s.getMasMeasuredData(data, id); },
      data, id, reserved);
}

// ---- Waveforms -----------------------------------------------------------------------------------------

std::int32_t MB_STDCALL MBPauseUpdateThread() {
  return call("MBPauseUpdateThread", std::int32_t{0}, [](Simulator& s) { return s.pauseUpdateThread(); });
}

std::int32_t MB_STDCALL MBResumeUpdateThread() {
  return call("MBResumeUpdateThread", std::int32_t{0}, [](Simulator& s) { return s.resumeUpdateThread(); });
}

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
      [&](Simulator& s) { return s.getMasNumberOfDataPoints(id, span); }, id, span);
}

std::int32_t MB_STDCALL MBGetmAsWaveFormDataPoints(std::int32_t id, std::int32_t firstPoint,
                                                   std::uint8_t step, std::uint8_t count,
                                                   std::int32_t* first) {
  return call(
      "MBGetmAsWaveFormDataPoints", std::int32_t{0},
      [&](Simulator& s) { return s.getMasWaveformDataPoints(id, firstPoint, step, count, first); }, id,
      firstPoint, step, count, first);
}

// ---- Dosimeter configuration ----------------------------------------------------------------------------

std::int32_t MB_STDCALL MBGetADCF(std::int32_t id, AdcfSettings* adcf) {
  return call(
      "MBGetADCF", std::int32_t{0}, [&](Simulator& s) { return s.getAdcf(id, adcf); }, id, adcf);
}

std::int32_t MB_STDCALL MBSetADCF(std::int32_t id, AdcfSettings* adcf) {
  return call(
      "MBSetADCF", std::int32_t{0}, [&](Simulator& s) { return s.setAdcf(id, adcf); }, id, adcf);
}

std::int32_t MB_STDCALL MBGetDosimeterMode(std::int32_t id, DosimeterMode* mode) {
  return call(
      "MBGetDosimeterMode", std::int32_t{0}, [&](Simulator& s) { return s.getDosimeterMode(id, mode); }, id,
      mode);
}

std::int32_t MB_STDCALL MBSetDosimeterMode(std::int32_t id, DosimeterMode* mode) {
  return call(
      "MBSetDosimeterMode", std::int32_t{0}, [&](Simulator& s) { return s.setDosimeterMode(id, mode); }, id,
      mode);
}

std::int32_t MB_STDCALL MBGetDosimeterUnit(std::int32_t id, DosimeterUnit* unit) {
  return call(
      "MBGetDosimeterUnit", std::int32_t{0}, [&](Simulator& s) { return s.getDosimeterUnit(id, unit); }, id,
      unit);
}

std::int32_t MB_STDCALL MBSetDosimeterUnit(std::int32_t id, DosimeterUnit* unit) {
  return call(
      "MBSetDosimeterUnit", std::int32_t{0}, [&](Simulator& s) { return s.setDosimeterUnit(id, unit); }, id,
      unit);
}

std::int32_t MB_STDCALL MBGetTempPressureOffset(std::int32_t id, TempPressureOffset* offset) {
  return call(
      "MBGetTempPressureOffset", std::int32_t{0},
      [&](Simulator& s) { return s.getTempPressureOffset(id, offset); }, id, offset);
}

std::int32_t MB_STDCALL MBSetTempPressureOffset(std::int32_t id, TempPressureOffset* offset) {
  return call(
      "MBSetTempPressureOffset", std::int32_t{0},
      [&](Simulator& s) { return s.setTempPressureOffset(id, offset); }, id, offset);
}

std::int32_t MB_STDCALL MBGetNoOfIonChambers(std::int32_t id) {
  return call(
      "MBGetNoOfIonChambers", std::int32_t{0}, [&](Simulator& s) { return s.getNoOfIonChambers(id); }, id);
}

std::int16_t MB_STDCALL MBGetChamberFileInfo(std::int32_t id) {
  return call(
      "MBGetChamberFileInfo", std::int16_t{0}, [&](Simulator& s) { return s.getChamberFileInfo(id); }, id);
}

std::int32_t MB_STDCALL MBGetIonChamberCalFactor(std::int32_t id, IonChamberSelection* selection) {
  return call(
      "MBGetIonChamberCalFactor", std::int32_t{0},
      [&](Simulator& s) { return s.getIonChamberCalFactor(id, selection); }, id, selection);
}

std::int32_t MB_STDCALL MBSetIonChamberCalFactor(std::int32_t id, std::int16_t chamber,
                                                 std::int16_t calFactor) {
  return call(
      "MBSetIonChamberCalFactor", std::int32_t{0},
      [&](Simulator& s) { return s.setIonChamberCalFactor(id, chamber, calFactor); }, id, chamber, calFactor);
}

std::int16_t MB_STDCALL MBAddNewIonChamber(std::int32_t id, char* name) {
  return call(
      "MBAddNewIonChamber", std::int16_t{0}, [&](Simulator& s) { return s.addNewIonChamber(id, name); }, id,
      NameArg{name, kChamberNameLength});
}

std::int16_t MB_STDCALL MBAddNewCalFactor(std::int32_t id, std::int16_t chamber, CalFactor* calFactor) {
  return call(
      "MBAddNewCalFactor", std::int16_t{0},
      [&](Simulator& s) { return s.addNewCalFactor(id, chamber, calFactor); }, id, chamber,
      NameArg{calFactor != nullptr ? calFactor->name : nullptr, kChamberNameLength});
}

std::int16_t MB_STDCALL MBEditIonChamber(std::int32_t id, std::int16_t chamber, char* name) {
  return call(
      "MBEditIonChamber", std::int16_t{0}, [&](Simulator& s) { return s.editIonChamber(id, chamber, name); },
      id, chamber, NameArg{name, kChamberNameLength});
}

std::int16_t MB_STDCALL MBEditCalfactor(std::int32_t id, std::int16_t chamber, CalFactor* calFactor) {
  return call(
      "MBEditCalfactor", std::int16_t{0},
      [&](Simulator& s) { return s.editCalFactor(id, chamber, calFactor); }, id, chamber,
      NameArg{calFactor != nullptr ? calFactor->name : nullptr, kChamberNameLength});
}

std::int32_t MB_STDCALL MBDeleteIonChamber(std::int32_t id, std::int16_t chamber) {
  return call(
      "MBDeleteIonChamber", std::int32_t{0}, [&](Simulator& s) { return s.deleteIonChamber(id, chamber); },
      id, chamber);
}

std::int32_t MB_STDCALL MBDeleteCalfactor(std::int32_t id, std::int16_t chamber, std::uint8_t calFactor) {
  return call(
      "MBDeleteCalfactor", std::int32_t{0},
      [&](Simulator& s) { return s.deleteCalFactor(id, chamber, calFactor); }, id, chamber, calFactor);
}

std::int32_t MB_STDCALL MBDeleteAllIonChambers(std::int32_t id) {
  return call(
      "MBDeleteAllIonChambers", std::int32_t{0}, [&](Simulator& s) { return s.deleteAllIonChambers(id); },
      id);
}

// ---- mAs meter -----------------------------------------------------------------------------------------

std::int32_t MB_STDCALL MBSetmAsInput(std::int32_t id, std::int32_t inputType) {
  return call(
      "MBSetmAsInput", std::int32_t{0}, [&](Simulator& s) { return s.setMasInput(id, inputType); }, id,
      inputType);
}

// ---- Declared for completeness of the boundary --------------------------------------------------------

std::int32_t MB_STDCALL MBGetDetectorInfo(std::int32_t id, DetectorInfo* info) {
  return call(
      "MBGetDetectorInfo", std::int32_t{0}, [&](Simulator& s) { return s.getDetectorInfo(id, info); }, id,
      info);
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

std::int16_t MB_STDCALL MBGetZigBeeRSSI() {
  return call("MBGetZigBeeRSSI", std::int16_t{0}, [](Simulator& s) { return s.zigBeeRssi(); });
}

std::int32_t MB_STDCALL MBResetExposure(std::int32_t id) {
  return call(
      "MBResetExposure", std::int32_t{0}, [&](Simulator& s) { return s.resetExposure(id); }, id);
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

std::int32_t MB_STDCALL MBSetmAsZero(std::int32_t id) {
  return call(
      "MBSetmAsZero", std::int32_t{0}, [&](Simulator& s) { return s.setMasZero(id); }, id);
}

std::int32_t MB_STDCALL MBEnableMASMeasurement(std::int32_t id, MBBool enable) {
  return call(
      "MBEnableMASMeasurement", std::int32_t{0},
      [&](Simulator& s) { return s.enableMasMeasurement(id, enable != 0); }, id, enable);
}

std::int32_t MB_STDCALL MBDeviceChanged() {
  return call("MBDeviceChanged", std::int32_t{0}, [](Simulator&) { return 0; });
}

// ---- The simulator's control functions ---------------------------------------------------------------

std::int32_t MB_STDCALL SimLoadScenarioText(const char* json) {
  return sim::control(kSimInternalError, [&](sim::Library& lib) {
    return sim::loadScenario(
        lib, json != nullptr && *json != '\0' ? std::string_view(json) : sim::defaultScenarioText());
  });
}

std::int32_t MB_STDCALL SimLoadScenarioFile(const char* path) {
  return sim::control(kSimInternalError, [&](sim::Library& lib) {
    if (path == nullptr) {
      lib.lastError = "no file named";
      return kSimBadArgument;
    }
    std::string text;
    if (!sim::readFile(path, text, lib.lastError)) return kSimCannotRead;
    const std::int32_t result = sim::loadScenario(lib, text);
    if (result != kSimOk) lib.lastError = std::string(path) + ": " + lib.lastError;
    return result;
  });
}

std::int32_t MB_STDCALL SimReset() {
  return sim::control(kSimInternalError, [](sim::Library& lib) {
    lib.simulator.reset();
    lib.log->clear();
    lib.lastError.clear();
    sim::startUp(lib);
    return lib.lastError.empty() ? kSimOk : kSimInvalidScenario;
  });
}

std::int32_t MB_STDCALL SimGetLastError(char* buffer, std::int32_t size) {
  return sim::control(0, [&](sim::Library& lib) { return sim::copyText(lib.lastError, buffer, size); });
}

std::int32_t MB_STDCALL SimGetCallLog(char* buffer, std::int32_t size) {
  return sim::control(0, [&](sim::Library& lib) { return sim::copyText(lib.log->text(), buffer, size); });
}

std::int32_t MB_STDCALL SimClearCallLog() {
  return sim::control(0, [](sim::Library& lib) {
    lib.log->clear();
    return 1;
  });
}

std::int32_t MB_STDCALL SimGetDetectorState(std::int32_t identifier, SimDetectorState* state) {
  return sim::control(0, [&](sim::Library& lib) {
    if (state == nullptr) return 0;
    return lib.simulator->detectorState(identifier, *state) ? 1 : 0;
  });
}

std::int32_t MB_STDCALL SimGetLibraryState(SimLibraryState* state) {
  return sim::control(0, [&](sim::Library& lib) {
    if (state == nullptr) return 0;
    *state = lib.simulator->libraryState();
    return 1;
  });
}

std::int32_t MB_STDCALL SimGetDefaultScenario(char* buffer, std::int32_t size) {
  return sim::control(0,
                      [&](sim::Library&) { return sim::copyText(sim::defaultScenarioText(), buffer, size); });
}

std::int32_t MB_STDCALL SimGetChamberFile(std::int32_t identifier, char* buffer, std::int32_t size) {
  return sim::control(0, [&](sim::Library& lib) {
    std::string text;
    if (!lib.simulator->chamberFile(identifier, text)) return 0;
    return sim::copyText(text, buffer, size);
  });
}

}  // extern "C"

}  // namespace rx9400
