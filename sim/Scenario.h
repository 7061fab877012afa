// The simulated world: the detectors a scan finds, what each one measures and when, and the faults it shows.
//
// A scenario is read once from JSON (README.md beside this file describes every field) and is not
// changed afterwards; the running state of the detectors lives in Simulator.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Chaos.h"
#include "device/EnumsStructs.h"

namespace rx9400::sim {

/// A scenario text that is not valid JSON or that breaks a rule of the format.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One measured value together with the status the detector gives it (1 valid, 3 over range, ...).
struct Measured {
  double value = 0.0;
  std::int32_t status = kValueValid;
};

/// A condition that holds for a stretch of status polls of one detector, counted from its connection.
struct FaultWindow {
  bool enabled = false;
  std::int32_t fromPoll = 1;  ///< first status poll (1-based) on which the condition holds
  std::int32_t polls = 0;     ///< number of polls it lasts; 0 = from then on
  bool activeAt(std::int32_t poll) const {
    return enabled && poll >= fromPoll && (polls == 0 || poll < fromPoll + polls);
  }
};

/// A battery fault: the window and the charge the battery shows while it lasts.
struct BatteryFault {
  FaultWindow window;
  std::uint8_t percent = 0;
};

enum class ExposureKind { Single, Fluoro };
/// Which dosimeter record flag ends a dosimeter exposure.
enum class EndFlag { ExposureEnded, AutoResetDone };

struct AioValues {
  Measured dose{1234.0, kValueValid};
  Measured doseRate{5678.0, kValueValid};
  Measured exposureTime{1000.0, kValueValid};
  Measured pulses{1.0, kValueValid};
  Measured kvpAverage{803.0, kValueValid};
  Measured kvpMaximum{812.0, kValueValid};
  Measured kvpPpv{798.0, kValueValid};
  Measured pulseRate{0.0, kValueValid};
  Measured pulseWidth{0.0, kValueValid};
  Measured hvl{35.0, kValueValid};
};

struct DoseValues {
  Measured dose{2.5, kValueValid};
  Measured doseRate{25.0, kValueValid};
  Measured leakageCurrent{1e-14, kValueValid};
  double exposureTime = 0.1;  ///< seconds
};

/// One scripted exposure of the all-in-one detector or of the dosimeter.
struct Exposure {
  ExposureKind kind = ExposureKind::Single;
  std::int32_t pollsBeforeStart = 2;  ///< quiet status polls before the one that reports the start
  std::int32_t pollsBeforeData = 0;   ///< polls after the start poll before data (dosimeter: integrating)
  std::int32_t deliveries = 1;        ///< how often the exposure delivers data (fluoroscopy: several)
  std::int32_t pollsBetweenDeliveries = 2;  ///< quiet polls between two deliveries
  bool runningOnLastDeliveryOnly = false;   ///< fluoroscopy running reported only around the last delivery
  bool dataWhileIntegrating = false;        ///< dosimeter: data available already while integrating
  EndFlag endFlag = EndFlag::ExposureEnded;
  AioValues aio;
  DoseValues dose;
  std::vector<std::int32_t> waveform;  ///< all-in-one kV trace, tenths of kV
};

/// One scripted exposure of the mAs meter.
struct MasExposure {
  std::int32_t pollsBeforeStart = 2;  ///< quiet mAs reads before the one that reports the start
  std::int32_t zeroingReads = 0;      ///< reads in zeroing state before the wait begins
  std::int32_t pollsBeforeData = 0;   ///< reads after the start read before the data read
  Measured mA{200.0, kValueValid};
  Measured mAs{20.0, kValueValid};
  Measured pulses{1.0, kValueValid};
  std::vector<std::int32_t> waveform;  ///< raw samples: raw * 5000 / 2^24 is the current in mA
  std::int32_t span = 0;               ///< time the waveform covers, milliseconds
};

struct MasConfig {
  std::int32_t inputType = 1;
  float calConstant = 1.0F;
  CalDate calDate{1, 1, 2025};
  std::int32_t zeroingReadsOnRequest = 2;  ///< zeroing reads after MBSetmAsZero
  bool repeatExposures = false;
  std::vector<MasExposure> exposures;
};

struct CalFactorEntry {
  std::int16_t number = 0;
  std::string name;
  std::int32_t unitCode = 1;
  float constant = 0.0F;
};

struct ChamberEntry {
  std::int16_t number = 0;
  std::string name;
  std::vector<CalFactorEntry> calFactors;
};

/// What the dosimeter's sensors read outside of the exposure values.
struct SensorValues {
  float temperature = 22.5F;  ///< degrees Celsius
  float pressure = 760.0F;    ///< mmHg
  float adcf = 1.0F;
  float biasVoltage = 300.0F;  ///< volts
};

struct DosimeterConfig {
  AdcfSettings adcf{};
  DosimeterMode mode{};
  DosimeterUnit unit{};
  TempPressureOffset offset{};
  SensorValues sensors;
  std::vector<ChamberEntry> chambers;
  IonChamberSelection selection{};
  std::int32_t maxChambers = 20;
};

struct BatteryConfig {
  std::int32_t state = 1;
  std::int32_t charging = 0;
  std::int32_t millivolts = 3900;
  std::uint8_t percent = 80;
};

struct DetectorFaults {
  std::int32_t linkLossAfterCalls = 0;  ///< 0 never; else the link is lost after that many calls
  FaultWindow zeroError;
  BatteryFault lowBattery;
  BatteryFault veryLowBattery;
  FaultWindow charging;
  FaultWindow temperatureError;
  FaultWindow pressureError;
  FaultWindow biasError;
  FaultWindow sensorReset;
  bool waveformNeverAvailable = false;
  bool sectionMissing = false;
  std::int32_t sectionShortBy = 0;          ///< points; the section is also cut to whole 4096-byte pages
  std::int32_t masLinkLossAfterBlocks = 0;  ///< 0 never; else mAs waveform reads per download before the loss
  bool chamberFileMissing = false;
  bool addChamberRefused = false;
  bool addCalFactorRefused = false;
};

/// One detector as the scenario scripts it.
struct DetectorPlan {
  DetectorInfo info{};
  bool found = true;  ///< whether a scan finds it
  BatteryConfig battery;
  std::int16_t signalStrength = 80;
  std::vector<std::string> validTargetFilters;
  std::vector<std::string> invalidTargetFilters;
  std::string defaultTargetFilter;
  bool repeatExposures = false;
  std::vector<Exposure> exposures;
  MasConfig mas;
  DosimeterConfig dosimeter;
  DetectorFaults faults;

  bool hasAio() const { return info.typeCode == 1 || info.typeCode == 4; }
  bool hasDosimeter() const { return info.typeCode == 3 || info.typeCode == 5; }
  bool hasMas() const { return info.typeCode == 2 || info.typeCode == 4 || info.typeCode == 5; }
};

struct Scenario {
  std::string name;
  std::string description;
  std::int32_t scanPollsUntilComplete = 3;
  std::int32_t scanCompleteStatus = 2;
  bool scanNeverCompletes = false;
  bool connectFails = false;
  std::int16_t usbStatus = 1;
  std::int16_t zigBeeStatus = 1;
  std::int16_t zigBeeRssi = -55;
  ChaosConfig chaos;  ///< off unless the scenario asks for it
  std::vector<DetectorPlan> detectors;
};

/// Reads a scenario from its JSON text; throws ScenarioError naming the offending field.
Scenario parseScenario(std::string_view json);

/// The scenario built into the library (the text of scenarios/default.json).
std::string_view defaultScenarioText();

}  // namespace rx9400::sim
