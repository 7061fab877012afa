// The instrument the executive drives during a test (the class CRX9400VTI behind its COM shell):
// settings, exposure polling, power supervision, waveforms and dosimeter configuration.
//
// Member names are the executive's, misspellings included. Every member traps its own failures and
// returns the result it had reached (False, 0 or empty text when it had reached none); nothing it does
// throws towards the caller.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "core/InstrumentEvents.h"
#include "core/PluginContext.h"

namespace rx9400 {

/// A Variant result of the instrument: empty, a number, a text or a list of texts.
using AutomationValue = std::variant<std::monostate, std::int32_t, std::string, std::vector<std::string>>;

/// The fifteen values SendCompareData exchanges with the executive, all in/out.
struct CompareData {
  std::int32_t lADCF = 0;
  std::int32_t lSetTemperature = 0;
  std::int32_t lSetPressure = 0;
  float rSetTemperature = 0;
  float rSetPressure = 0;
  std::int32_t lRefTeperature = 0;
  std::int32_t lMode = 0;
  std::uint8_t bAutoReset = 0;
  std::int32_t lDoseUnit = 0;
  std::int32_t lDoseRateUnit = 0;
  std::int32_t lFrameRate = 0;
  std::int32_t lTempUnit = 0;
  std::int32_t lPresUnit = 0;
  float rOffPres = 0;
  float rOffTemp = 0;
};

class Instrument {
 public:
  /// `events` receives everything the instrument raises; both outlive the instrument.
  Instrument(PluginContext& context, InstrumentEvents& events);

  // Properties and settings.
  bool pChargingStatus();
  std::uint8_t pPercentageCharge();
  float pResolution();
  void pCurrentMode(const std::string& value);
  void pCurrentSettings(const std::string& value);
  double pGetExposureTime();
  double pGetExposurekVp();
  void InitTimer();
  void EnableMeasurements(bool fVal);
  std::uint8_t GetNumberOfTargetFilters();
  void GetValidTargetFilters(std::vector<std::string>& sValidTargetFilters, std::uint8_t bNoOfTargetFilter);
  std::string GetDefaultTargetFilterName();
  void UpdateDefaultTargetFilterInSettings();
  void ChangeAllsettings();
  void ChangeDetectorSetup();
  void ChangeDetectorMode();
  void ChangeSettings();
  void pDoseUnits(std::uint8_t value);
  void pDoseRateUnits(std::uint8_t value);
  void pFluoroType(std::uint8_t value);
  void pTimeUnit(std::uint8_t value);
  void pPercentKV(std::uint8_t value);
  void pDelay(std::int16_t value);
  void pIncludeDelay(bool value);
  void pTargetFilter(std::string& value);
  std::string pSerialNumber();
  std::string pFirmWareVersion();
  bool IsDetectorConnected();
  double Val_OS(const std::string& sValue);

  // Exposure polling.
  bool CheckDataStatus();
  bool pMeasurementStatus();
  bool mAsExposureFinish();
  bool DetectorExposureFinish();
  void ResetTheFlags();

  // Power, sleep and connection supervision.
  bool CheckDetectorPowerStatus(std::int32_t lSystemSleepTime, std::int32_t lSystemShutDownTime);
  void DetectorWakeUp();
  bool CheckDetectorStatus();
  bool CheckConnectionStatus();
  void CloseWindow();
  void CheckSleepStatus();

  // Waveforms.
  std::string GetWaveformInSecs(float rMin, float rMax, std::int32_t ldataPoints, std::int32_t lValue);
  std::string GetWaveformInMilliSec(float rMin, float rMax, std::int32_t ldataPoints);

  // Dosimeter and mAs meter configuration.
  std::string GetDetectorType();
  AutomationValue GetIonChambers();
  std::uint8_t GetIonChamberInfo();
  AutomationValue CongiureDoseDetector();
  bool ShowDosimeterMode();
  AutomationValue DisplayIonChamber();
  void ShowDosimeterIonChamber();
  bool SendCompareData(CompareData& values);
  void SetMasInputtype(bool bVal);
  std::string GetIonChamberName();
  std::string GetCalFactor();
  std::string GetCalConst();
  std::string pDetectorName(std::int32_t lIndexCount);

 private:
  PluginContext& context_;
  InstrumentEvents& events_;
};

}  // namespace rx9400
