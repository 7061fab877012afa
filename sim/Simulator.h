// The simulated device library: the detectors of a scenario, what the library knows of them, and the
// answer to every library function.
//
// Everything moves by call counts, never by time: a scan completes after a number of completion polls,
// an exposure starts after a number of status polls, the mAs meter after a number of mAs reads. The
// same calls therefore always give the same answers.
//
// Each member corresponds to the library function of the same name (without "MB"); the C exports only
// log the call and forward it here. Members do not lock: the exports serialise every call.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "CallLog.h"
#include "Chaos.h"
#include "Scenario.h"
#include "SharedSection.h"
#include "SimControl.h"

namespace rx9400::sim {

/// Where a scripted exposure stands.
enum class Phase {
  Waiting,      ///< armed or not, the exposure has not begun
  Started,      ///< the start is being reported
  BeforeData,   ///< begun, no data yet (the dosimeter integrates)
  DataPending,  ///< data available until read
  Between,      ///< fluoroscopy between two deliveries
};

struct Cycle {
  Phase phase = Phase::Waiting;
  std::int32_t count = 0;       ///< polls counted in the current phase
  std::size_t next = 0;         ///< index of the current (or next) exposure of the list
  std::int32_t deliveries = 0;  ///< deliveries of the current exposure so far
};

/// The library's running state of one detector.
struct Detector {
  const DetectorPlan* plan = nullptr;
  DetectorInfo info{};
  std::int32_t connection = 0;  ///< 0 not connected, 1 connected, 2 link lost
  bool armed = false;
  bool masArmed = false;
  std::int32_t powerMode = 0;
  std::int32_t detectorMode = 0;
  std::int32_t setup = 0;
  std::int32_t masInputType = 1;
  std::int32_t gain = 0;
  std::int32_t settingsReceived = 0;
  MeasurementSettings lastSettings{};
  std::int32_t calls = 0;
  std::int32_t statusPolls = 0;
  bool zeroErrorCleared = false;

  Cycle main;
  Cycle mas;
  std::int32_t zeroingLeft = 0;
  std::int32_t exposuresDelivered = 0;
  std::int32_t masExposuresDelivered = 0;

  AioMeasuredData lastAio{};
  DoseValues lastDose{{0.0, kValueValid}, {0.0, kValueValid}, {0.0, kValueValid}, 0.0};
  double accumulatedDose = 0.0;
  Measured lastMA{0.0, kValueValid};
  Measured lastMAs{0.0, kValueValid};
  Measured lastPulses{0.0, kValueValid};

  const std::vector<std::int32_t>* recording = nullptr;     ///< all-in-one waveform of the last exposure
  const std::vector<std::int32_t>* masRecording = nullptr;  ///< mAs waveform of the last mAs exposure
  std::int32_t masSpan = 0;
  std::int16_t waveformAvailable = 0;
  bool downloadActive = false;
  std::int32_t downloadStarts = 0;
  std::int32_t masBlocks = 0;  ///< mAs waveform reads since the last download start (or the connection)
  bool masLinkDown = false;    ///< the masLinkLossAfterBlocks fault has struck: status shows the link lost

  std::vector<std::string> validTargetFilters;
  bool uploaded = false;
  float masCalConstant = 1.0F;
  CalDate masCalDate{};

  AdcfSettings adcf{};
  DosimeterMode dosimeterMode{};
  DosimeterUnit dosimeterUnit{};
  TempPressureOffset offset{};
  std::vector<ChamberEntry> chambers;
  IonChamberSelection selection{};
};

/// Status polls as fault windows count them: before the first poll the detector stands at poll 1.
inline std::int32_t pollIndex(const Detector& d) {
  return std::max(d.statusPolls, 1);
}

class Simulator {
 public:
  Simulator(Scenario scenario, CallLog& log);
  Simulator(const Simulator&) = delete;
  Simulator& operator=(const Simulator&) = delete;

  const Scenario& scenario() const { return scenario_; }
  /// Back to the state right after loading: nothing scanned, connected or published.
  void restart();
  void setRegistered(bool registered) { registered_ = registered; }
  /// Whether MBPauseUpdateThread holds the update thread.
  bool updatesPaused() const { return pauseDepth_ > 0; }
  /// Chaos mode (Chaos.h): off unless the scenario or TAMSA_SIM_CHAOS switches it on.
  Chaos& chaos() { return chaos_; }

  // Session, scanning and connection
  std::int32_t closeApplication();
  std::int32_t scanForDetectors();
  std::int32_t getScanCompleteStatus();
  std::uint8_t getNumberOfDetectors(std::int32_t typeCode) const;
  /// MBGetNumberOfDetectors as answered, chaos included: in chaos mode MBGetDetectorInfoOfType writes
  /// no more records than the last answer for the type promised.
  std::uint8_t announceNumberOfDetectors(std::int32_t typeCode);
  std::int32_t getDetectorInfoOfType(std::int32_t typeCode, DetectorInfo* first) const;
  std::int16_t connectToDetectors(const std::int32_t* identifiers, const std::uint8_t* typeCodes,
                                  std::uint8_t count);
  std::int32_t stopScanningAndReset();
  std::int16_t usbStatus() const { return scenario_.usbStatus; }
  std::int16_t zigBeeStatus() const { return scenario_.zigBeeStatus; }
  std::int16_t zigBeeRssi() const { return scenario_.zigBeeRssi; }

  // Detector state
  std::int32_t getDetectorStatus(DetectorStatus* status, std::int32_t id);
  std::int32_t getBatteryStatus(BatteryStatus* battery, std::int32_t id);
  std::int32_t getNumberOfInvalidTargetFilters(std::int32_t id);
  std::int32_t getAllInvalidTargetFilters(std::int32_t id, TargetFilterName* first, std::int32_t* count);
  std::int32_t getNumberOfValidTargetFilters(std::int32_t id);
  std::int32_t getValidTargetFilters(std::int32_t id, TargetFilterName* first, std::int32_t* count);
  std::int32_t getDefaultTargetFilter(std::int32_t id, TargetFilterName* name);

  // Measurement control and data
  std::int32_t enableMeasurement(std::int32_t id, bool enable);
  std::int32_t enableMasMeasurement(std::int32_t id, bool enable);
  std::int32_t setPowerMode(std::int32_t id, std::int32_t mode);
  std::int32_t setDetectorMode(std::int32_t id, std::int32_t mode);
  std::int32_t setSetup(std::int32_t id, std::int32_t setup);
  std::int32_t setMeasurementSettings(std::int32_t id, const MeasurementSettings* settings);
  std::int32_t getMeasuredData(AioMeasuredData* data, std::int32_t id);
  std::int32_t getDosimeterMeasuredData(DoseMeasuredData* data, std::int32_t id);
  std::int32_t getMasMeasuredData(MasMeasuredData* data, std::int32_t id);
  std::int32_t getMeasurementStatus(std::int32_t id);
  std::int32_t resetExposure(std::int32_t id);

  // Waveforms
  std::int32_t pauseUpdateThread();
  std::int32_t resumeUpdateThread();
  std::int32_t setWaveformParameters(std::int32_t id, const WaveformParameters* parameters);
  std::int32_t getNumberOfDataPoints(std::int32_t id);
  std::int16_t getWaveformAvailabilityStatus(std::int32_t id);
  std::int32_t startWaveformDownload(std::int32_t id, std::uint8_t start);
  std::int32_t getMasNumberOfDataPoints(std::int32_t id, std::int32_t* span);
  std::int32_t getMasWaveformDataPoints(std::int32_t id, std::int32_t firstPoint, std::uint8_t step,
                                        std::uint8_t count, std::int32_t* first);
  std::int32_t setMasWaveformParameters(std::int32_t id, const WaveformParameters* parameters);
  std::int16_t getMasWaveformAvailabilityStatus(std::int32_t id);

  // Dosimeter configuration
  std::int32_t getAdcf(std::int32_t id, AdcfSettings* adcf);
  std::int32_t setAdcf(std::int32_t id, const AdcfSettings* adcf);
  std::int32_t getDosimeterMode(std::int32_t id, DosimeterMode* mode);
  std::int32_t setDosimeterMode(std::int32_t id, const DosimeterMode* mode);
  std::int32_t getDosimeterUnit(std::int32_t id, DosimeterUnit* unit);
  std::int32_t setDosimeterUnit(std::int32_t id, const DosimeterUnit* unit);
  std::int32_t getTempPressureOffset(std::int32_t id, TempPressureOffset* offset);
  std::int32_t setTempPressureOffset(std::int32_t id, const TempPressureOffset* offset);
  std::int32_t getNoOfIonChambers(std::int32_t id);
  std::int16_t getChamberFileInfo(std::int32_t id);
  std::int32_t getIonChamberCalFactor(std::int32_t id, IonChamberSelection* selection);
  std::int32_t setIonChamberCalFactor(std::int32_t id, std::int16_t chamber, std::int16_t calFactor);
  std::int16_t addNewIonChamber(std::int32_t id, const char* name);
  std::int16_t addNewCalFactor(std::int32_t id, std::int16_t chamber, const CalFactor* calFactor);
  std::int16_t editIonChamber(std::int32_t id, std::int16_t chamber, const char* name);
  std::int16_t editCalFactor(std::int32_t id, std::int16_t chamber, const CalFactor* calFactor);
  std::int32_t deleteIonChamber(std::int32_t id, std::int16_t chamber);
  std::int32_t deleteCalFactor(std::int32_t id, std::int16_t chamber, std::uint8_t calFactor);
  std::int32_t deleteAllIonChambers(std::int32_t id);

  // mAs meter
  std::int32_t setMasInput(std::int32_t id, std::int32_t inputType);
  std::int32_t getMasInput(std::int32_t id);
  std::int32_t getMasCalConstant(std::int32_t id, float* constant);
  std::int32_t setMasCalConstant(std::int32_t id, const float* constant);
  std::int32_t getMasCalDate(std::int32_t id, CalDate* date);
  std::int32_t setMasCalDate(std::int32_t id, const CalDate* date);
  std::int32_t setMasZero(std::int32_t id);

  // The rest of the boundary
  std::int32_t getDetectorInfo(std::int32_t id, DetectorInfo* info);
  std::int32_t getDetectorInfoOfAll(DetectorInfo* first, std::int32_t* count);
  std::int32_t getDetectorPostStatus(std::int32_t id);
  std::int32_t getDetectorPostStatusOfAll(std::int32_t* first);
  std::int32_t getDetectorStatusOfAll(DetectorStatus* first);
  std::int32_t forAllConnected(std::int32_t (Simulator::*member)(std::int32_t, std::int32_t),
                               std::int32_t value);
  std::int32_t enableMeasurementToAll(bool enable);
  std::int32_t setMeasurementSettingsToAll(const MeasurementSettings* settings);
  std::int32_t setDetectorGain(std::int32_t id, std::int32_t gain);
  std::int32_t zeroFill(std::int32_t id, void* first, std::int32_t bytes);
  std::int32_t setHardwareVersion(std::int32_t id, std::uint8_t major, std::uint8_t minor);
  std::int32_t setSerialNumber(std::int32_t id, std::int32_t serialNumber);
  std::int32_t uploadTargetFilter(std::int32_t id, const TargetFilterName* first, std::int32_t count);
  std::int32_t getUploadStatus(std::int32_t id);
  std::int32_t sendByteArray(std::int32_t id, std::int32_t count);
  std::int32_t sendReceiveByteArray(std::int32_t id, const std::uint8_t* sent, std::int32_t sentCount,
                                    std::uint8_t* received, std::int32_t* receivedCount);

  // For the Sim exports
  bool detectorState(std::int32_t id, SimDetectorState& state) const;
  SimLibraryState libraryState() const;
  /// The chamber file text of a dosimeter; false for any other identifier.
  bool chamberFile(std::int32_t id, std::string& text) const;

 private:
  Detector* find(std::int32_t id);
  const Detector* find(std::int32_t id) const;
  /// The detector a call names, counted towards its link-loss fault.
  Detector* address(std::int32_t id);
  /// The detector a command names, when it is connected.
  Detector* command(std::int32_t id);
  /// The detector a query names, when the library has a copy of it (connected or link lost).
  Detector* query(std::int32_t id);

  void connect(Detector& detector);
  void disconnect(Detector& detector);
  const Exposure* currentExposure(const Detector& detector) const;
  const MasExposure* currentMasExposure(const Detector& detector) const;
  bool zeroErrorActive(const Detector& detector) const;
  /// A zero error the last status poll reported: the one that a power mode or a new arming clears.
  bool zeroErrorShown(const Detector& detector) const;
  BatteryStatus battery(const Detector& detector) const;
  bool fluoroRunning(const Detector& detector) const;
  void advanceMain(Detector& detector);
  void deliverMain(Detector& detector, const Exposure& exposure);
  void finishMainExposure(Detector& detector);
  void startMasWait(Detector& detector);
  /// Replaces the detector's section with one of `size` bytes written by `fill`; false (and a log note)
  /// when the system refuses.
  bool publish(std::int32_t id, std::size_t size, const SharedSection::Fill& fill);
  bool publish(std::int32_t id, const std::vector<std::uint8_t>& bytes);
  /// Publishes points of a recording as MBSetWaveformParameters asks, `shortBy` points fewer (see the
  /// sectionShortBy fault); false when nothing could be published.
  bool publishSamples(std::int32_t id, const std::vector<std::int32_t>& recording,
                      const WaveformParameters& parameters, std::int32_t shortBy);
  void dropSection(std::int32_t id);

  Scenario scenario_;
  CallLog& log_;
  Chaos chaos_;
  std::map<std::int32_t, std::uint8_t> announced_;  // per type code: the last MBGetNumberOfDetectors
  std::vector<Detector> detectors_;
  std::map<std::int32_t, std::unique_ptr<SharedSection>> sections_;
  bool registered_ = false;
  std::int32_t scanState_ = 0;  // 0 idle, 1 scanning, 2 completed
  std::int32_t scanPolls_ = 0;
  std::vector<bool> found_;  // per detector: found by the last completed scan
  std::int32_t pauseDepth_ = 0;
  std::int32_t pauseCalls_ = 0;
  std::int32_t resumeCalls_ = 0;
  std::int32_t unbalancedCalls_ = 0;
};

}  // namespace rx9400::sim
