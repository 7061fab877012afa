// The detector simulator's own exports, beside the device library's MB functions.
//
// Tests and tools that run the plug-in against the simulator include this header to choose a scenario,
// read the call log and look at what the simulated detectors received. Every function has C linkage and
// the library's calling convention, never throws, and is exported undecorated like the MB functions.
// Calls of these functions are not written to the call log.
//
// Functions that hand back text copy it into the caller's buffer (at most `size` - 1 bytes and a
// terminating zero byte; nothing when `buffer` is null or `size` < 1) and return the size the whole text
// needs, terminating zero included, so a caller can ask with a null buffer first.
#pragma once

#include <cstdint>

#include "device/EnumsStructs.h"
#include "device/MBCallingConvention.h"

#if defined(TAMSA_SIM_BUILDING) && defined(__GNUC__) && !defined(_WIN32)
#define SIM_API __attribute__((visibility("default")))
#else
#define SIM_API
#endif

namespace rx9400 {

/// Results of SimLoadScenarioText, SimLoadScenarioFile and SimReset.
inline constexpr std::int32_t kSimOk = 0;
inline constexpr std::int32_t kSimInvalidScenario = 1;  ///< not JSON, or a field breaks the format
inline constexpr std::int32_t kSimCannotRead = 2;       ///< the scenario file cannot be read
inline constexpr std::int32_t kSimBadArgument = 3;      ///< a null pointer where one is needed
inline constexpr std::int32_t kSimInternalError = 4;    ///< the simulator failed (out of memory, ...)

#pragma pack(push, 1)

/// What one simulated detector has received and where its simulation stands.
struct SimDetectorState {
  std::int32_t identifier;
  std::int32_t typeCode;
  std::int32_t connectionState;      ///< 0 not connected, 1 connected, 2 link lost
  std::int32_t measurementEnabled;   ///< 1 between MBEnableMeasurement and MBDisableMeasurement
  std::int32_t masEnabled;           ///< 1 while the mAs part is armed
  std::int32_t powerMode;            ///< last MBSetPowerMode value (2, awake, from connection on)
  std::int32_t detectorMode;         ///< last MBSetDetectorMode value, 0 before any
  std::int32_t setup;                ///< last MBSetSetup value, 0 before any
  std::int32_t masInputType;         ///< last MBSetmAsInput value (the scenario's until then)
  std::int32_t settingsReceived;     ///< number of MBSetMeasurementSettings calls
  MeasurementSettings lastSettings;  ///< the record of the last MBSetMeasurementSettings, zero before any
  std::int32_t callsAddressed;       ///< calls naming this detector since its connection
  std::int32_t statusPolls;          ///< MBGetDetectorStatus calls since its connection
  std::int32_t exposuresDelivered;   ///< all-in-one or dosimeter exposures whose data were read
  std::int32_t masExposuresDelivered;
  std::int32_t nextExposure;            ///< index of the scripted exposure that comes next
  std::int32_t waveformPoints;          ///< points of the recorded all-in-one waveform
  std::int32_t waveformAvailable;       ///< what MBGetWaveformAvailabilityStatus answers
  std::int32_t sectionPublished;        ///< 1 while the library holds the detector's shared-memory section
  std::int32_t waveformDownloadActive;  ///< 1 after MBStartWFDownload(id, 1) until MBStartWFDownload(id, 0)
  std::int32_t waveformDownloadStarts;  ///< number of MBStartWFDownload(id, 1) calls
  std::int32_t chamberCount;
  IonChamberSelection selection;
  AdcfSettings adcf;
  DosimeterMode dosimeterMode;
  DosimeterUnit dosimeterUnit;
  TempPressureOffset tempPressureOffset;
  std::int32_t gain;  ///< last MBSetDetectorGainForAllChannel value
};

/// The library-wide state.
struct SimLibraryState {
  std::int32_t registered;       ///< 1 between MBRegisterApplication and MBCloseApplication
  std::int32_t scanState;        ///< 0 idle, 1 scanning, 2 completed
  std::int32_t scanPolls;        ///< MBGetScanCompleteStatus calls of the current scan
  std::int32_t connectedCount;   ///< detectors with connection state 1
  std::int32_t pauseDepth;       ///< pauses of the update thread not yet resumed
  std::int32_t pauseCalls;       ///< MBPauseUpdateThread calls
  std::int32_t resumeCalls;      ///< MBResumeUpdateThread calls
  std::int32_t unbalancedCalls;  ///< pauses while paused plus resumes while not paused
  std::int32_t logLines;         ///< lines in the call log
};

/// The update thread of the Windows build (README.md); natively there is none and both fields stay 0.
struct SimUpdateThreadState {
  std::int32_t running;  ///< 1 from MBRegisterApplication until MBCloseApplication has joined it
  std::int32_t ticks;    ///< wake-ups of the current run that did their work (none while paused)
};

#pragma pack(pop)

extern "C" {

/// Loads a scenario from its JSON text and starts the simulation afresh from it: every detector
/// disconnected, no scan, no section, the call log emptied. A null or empty text loads the built-in
/// default scenario. On failure the running scenario is kept and SimGetLastError tells why.
SIM_API std::int32_t MB_STDCALL SimLoadScenarioText(const char* json);

/// As SimLoadScenarioText, from a file.
SIM_API std::int32_t MB_STDCALL SimLoadScenarioFile(const char* path);

/// Starts afresh from the scenario the library started with: the file named by TAMSA_SIM_SCENARIO, or
/// the built-in default when the variable is not set. Empties the call log.
SIM_API std::int32_t MB_STDCALL SimReset();

/// The reason of the last failed load, empty after a successful one.
SIM_API std::int32_t MB_STDCALL SimGetLastError(char* buffer, std::int32_t size);

/// The call log: one line per call, each ending with "\n".
SIM_API std::int32_t MB_STDCALL SimGetCallLog(char* buffer, std::int32_t size);

/// Empties the call log (the TAMSA_SIM_LOG file is kept).
SIM_API std::int32_t MB_STDCALL SimClearCallLog();

/// Fills `state` for the detector `identifier`; returns 1, or 0 (and a zeroed record) for an identifier
/// the scenario does not have.
SIM_API std::int32_t MB_STDCALL SimGetDetectorState(std::int32_t identifier, SimDetectorState* state);

/// Fills `state`; returns 1.
SIM_API std::int32_t MB_STDCALL SimGetLibraryState(SimLibraryState* state);

/// Fills `state`; returns 1.
SIM_API std::int32_t MB_STDCALL SimGetUpdateThreadState(SimUpdateThreadState* state);

/// The JSON text of the built-in default scenario.
SIM_API std::int32_t MB_STDCALL SimGetDefaultScenario(char* buffer, std::int32_t size);

/// The ion-chamber file of the dosimeter `identifier` as MBGetChamberFileInfo would publish it (without
/// publishing it); 0 for an identifier that is not a dosimeter's.
SIM_API std::int32_t MB_STDCALL SimGetChamberFile(std::int32_t identifier, char* buffer, std::int32_t size);

}  // extern "C"

}  // namespace rx9400
