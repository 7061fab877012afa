// The instrument the executive drives during a test (the class CRX9400VTI behind its COM shell):
// settings, exposure polling, power supervision, waveforms and dosimeter configuration.
//
// Member names are the executive's, misspellings included. Every member traps its own failures and
// returns the result it had reached (False, 0 or empty text when it had reached none); nothing it does
// throws towards the caller.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "core/InstrumentEvents.h"
#include "core/PluginContext.h"

namespace rx9400 {

/// Texts the executive receives as an array of Variants, each holding a String: a script can take its
/// UBound and index it.
struct ScriptList {
  std::vector<std::string> texts;
};

/// A Variant result of the instrument: empty, a number, a text or a list of texts.
using AutomationValue = std::variant<std::monostate, std::int32_t, std::string, ScriptList>;

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
  bool operator==(const CompareData&) const = default;
};

/// The shared-memory section of a detector's all-in-one waveform: "MB_" and the identifier padded with
/// zeros to eight digits, never cut (MB_00004711, MB_123456789).
std::string sharedSectionName(std::int32_t id);

struct WaveformRequest;

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

  // Power, sleep and connection supervision: the Boolean result is the one the last slot left.
  bool CheckDetectorPowerStatus(std::int32_t lSystemSleepTime, std::int32_t lSystemShutDownTime);
  void DetectorWakeUp();
  bool CheckDetectorStatus();
  bool CheckConnectionStatus();
  void CloseWindow();
  void CheckSleepStatus();

  // Waveforms: the samples of the last exposure as one text, values joined by ",". With several
  // detectors only the last slot's waveform is returned.
  std::string GetWaveformInSecs(float rMin, float rMax, std::int32_t ldataPoints, std::int32_t lValue);
  std::string GetWaveformInMilliSec(float rMin, float rMax, std::int32_t ldataPoints);

  /// Shows the ion chamber setup dialog modally (topmost when the executive asks); the result is empty.
  AutomationValue DisplayIonChamber();

  // Dosimeter and mAs meter configuration.
  /// The combined type code of the first two slots as text ("4", "5"), or the single slot's code.
  std::string GetDetectorType();
  /// The names of the dosimeter's chambers (the chamber file is read again when its count changed).
  AutomationValue GetIonChambers();
  /// Reads the dosimeter's chamber file into the chamber table and takes its selection; answers the
  /// number of chambers read (0 after a failure, which a message box reports).
  std::uint8_t GetIonChamberInfo();
  /// Sends the dosimeter settings, reads the chambers, and lets the user add one when none is chosen;
  /// answers the chosen chamber's and cal factor's names.
  AutomationValue CongiureDoseDetector();
  bool ShowDosimeterMode();
  void ShowDosimeterIonChamber();
  /// Compares the executive's dosimeter settings with the dosimeter's; when they differ the user keeps
  /// either. Answers whether they differed.
  bool SendCompareData(CompareData& values);
  void SetMasInputtype(bool bVal);
  // The chosen chamber, cal factor and cal constant as texts; empty when there is none.
  std::string GetIonChamberName();
  std::string GetCalFactor();
  std::string GetCalConst();
  std::string pDetectorName(std::int32_t lIndexCount);

  /// The dose and dose-rate scaling by mode and dose unit, as a Single.
  float ScaleDoseValue(double value);
  /// A measured value's text by its status: the number, the number with "*", or the catalogue's
  /// over-range and under-range texts.
  std::string FormatMeasuredValue(std::int32_t status, float value);

 private:
  // Settings.
  bool modeIs(std::string_view literal);
  bool settingsAre(std::string_view literal);
  template <typename Action>
  void forAioSlots(Action action);
  void repairDosimeterRecords(std::int32_t id);
  void sendDosimeterSettings();
  // The bodies of GetIonChamberInfo and SendCompareData, whose failures reach the calling member's trap.
  std::uint8_t readIonChamberInfo();
  bool compareDosimeterSettings(CompareData& values);

  // Polling, one slot at a time; each answers false when the pass must end.
  bool pollConnectionAndBattery(std::size_t slot, std::int32_t id, const DetectorStatus& status);
  bool pollAio(std::size_t slot, std::int32_t id, const DetectorStatus& status);
  void wakeFromSleep(std::size_t slot);
  void askAboutZeroError(std::size_t slot, std::int32_t id);
  struct AioTexts;
  AioTexts aioTexts(const AioMeasuredData& data, bool fluoro);
  void reportAioData(std::int32_t id, bool fluoroRunning);
  void pollDosimeter(std::size_t slot, std::int32_t id);
  void showDosimeterNotices(const DoseMeasuredData& data);
  void reportDosimeterData(std::int32_t id, const DoseMeasuredData& data);
  void pollMas(std::int32_t id, std::int32_t kind);
  void announceWaveform(bool aio, std::int32_t id);
  void announceWaveforms();

  // Supervision: the warning a status record calls for, given once per episode (exposure polling and
  // CheckDetectorStatus share it). dueAlert clears the marks of episodes that ended; a warning's own
  // mark is set only once its box has been shown, so a box that failed is tried again on the next poll.
  enum class Alert { None, ConnectionLost, VeryLowBattery, LowBattery };
  Alert dueAlert(std::size_t slot, const DetectorStatus& status);
  /// Shows the warning's box, then sets its mark.
  void giveAlert(Alert alert, std::size_t slot, std::int32_t id, int lowBatteryBeep);
  void showSleepNotice();
  /// Wakes every connected detector; with STAMPEACH each wake counts as activity at once.
  void wakeEveryDetector(bool stampEach);
  // The notice boxes: one general box and one sleep box on screen at a time. A failing call of a box's
  // component ends the member that made it.
  void closeSleepNotice(std::size_t slot);
  void showNotice(const std::string& caption, const std::string& heading, const std::string& message);
  void threeBeeps(int milliseconds);
  // The notice boxes' buttons. The general box shows only its first button; both close it.
  void mDisplayMessage_ButtonClick();
  /// The sleep box's Wake Up (true) and Cancel (false) buttons.
  void mDisplaySleepMessage_ButtonClick(bool wakeUp);

  // Waveforms.
  std::string downloadWaveforms(WaveformRequest request);
  void downloadAioWaveform(const WaveformRequest& request, std::int32_t id, std::int32_t kind,
                           std::string& text);
  void downloadMasWaveform(const WaveformRequest& request, std::int32_t id, std::int32_t kind,
                           std::string& text);
  void waveformBox(const WaveformRequest& request, const std::string& message,
                   std::string_view milliSecCaption);
  void traceWaveformParameters(const WaveformRequest& request, std::int32_t id, std::int32_t points,
                               std::int32_t kind, const char* dash);
  void noWaveformPoints(const WaveformRequest& request, std::int32_t id, std::int32_t points,
                        std::int32_t kind);

  PluginContext& context_;
  InstrumentEvents& events_;

  float resolution_ = 0;
  std::uint32_t lastActivity_ = 0;

  // Per exposure.
  std::string exposureTimeText_;
  std::string kvpText_;
  std::string doseText_;
  std::int32_t doseStatus_ = 0;
  bool dataTaken_ = false;
  bool exposureFinished_ = false;
  bool masExposureFinished_ = false;
  bool aioWaveformPending_ = false;
  bool masWaveformPending_ = false;
  bool masZeroingNotice_ = false;
  bool errorNoticeShown_ = false;
  bool sensorResetNoticeShown_ = false;
  DetectorStatus lastStatus_{};

  // Dosimeter settings.
  std::int32_t temperatureUnit_ = 1;
  std::int32_t pressureUnit_ = 2;
  std::string dosimeterModeText_;
  std::int32_t masInputType_ = 1;
  std::optional<AdcfSettings> customAdcf_;  ///< the executive's, from the last comparison
  std::optional<DosimeterUnit> customUnit_;

  // Notices on screen.
  std::unique_ptr<NoticeBox> generalBox_;
  std::unique_ptr<NoticeBox> sleepBox_;
};

}  // namespace rx9400
