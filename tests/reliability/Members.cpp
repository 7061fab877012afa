// The member list.
#include "Members.h"

#include <string>
#include <vector>

#include "core/NumberText.h"

namespace rx9400::reliability {
namespace {

using Text = std::string;

Text flag(bool value) {
  return value ? "True" : "False";
}
Text number(double value) {
  return doubleText(value);
}

/// What the executive sends in SendCompareData: the simulated dosimeter's own settings.
CompareData typicalCompareData() {
  return CompareData{1, 0, 0, 22.0F, 760.0F, 20, 2, 1, 1, 1, 0, 1, 2, 0.0F, 0.0F};
}

Text compareText(bool differ, const CompareData& v) {
  Text text = flag(differ);
  for (const double value :
       {double(v.lADCF), double(v.lSetTemperature), double(v.lSetPressure), double(v.rSetTemperature),
        double(v.rSetPressure), double(v.lRefTeperature), double(v.lMode), double(v.bAutoReset),
        double(v.lDoseUnit), double(v.lDoseRateUnit), double(v.lFrameRate), double(v.lTempUnit),
        double(v.lPresUnit), double(v.rOffPres), double(v.rOffTemp)}) {
    text += " " + number(value);
  }
  return text;
}

constexpr Member kMembers[] = {
    // The query class.
    {"Query.RegisterApp", [](Subjects& s) { return s.session.RegisterApp(), Text(); }},
    {"Query.ScanAndConnectToDetector",
     [](Subjects& s) { return s.session.ScanAndConnectToDetector(), Text(); }},
    {"Query.IsDetectorConnected", [](Subjects& s) { return flag(s.session.IsDetectorConnected()); }},
    {"Query.SendDetectorType", [](Subjects& s) { return s.session.SendDetectorType(0), Text(); }},
    {"Query.ResetTheDetectors", [](Subjects& s) { return s.session.ResetTheDetectors(), Text(); }},
    {"Query.CloseApp", [](Subjects& s) { return s.session.CloseApp(), Text(); }},

    // The instrument's properties.
    {"pChargingStatus", [](Subjects& s) { return flag(s.instrument.pChargingStatus()); }},
    {"pPercentageCharge", [](Subjects& s) { return number(s.instrument.pPercentageCharge()); }},
    {"pResolution", [](Subjects& s) { return number(s.instrument.pResolution()); }},
    {"pCurrentMode=", [](Subjects& s) { return s.instrument.pCurrentMode("RADIO"), Text(); }},
    {"pCurrentSettings=", [](Subjects& s) { return s.instrument.pCurrentSettings("AUTO"), Text(); }},
    {"pGetExposureTime", [](Subjects& s) { return number(s.instrument.pGetExposureTime()); }},
    {"pGetExposurekVp", [](Subjects& s) { return number(s.instrument.pGetExposurekVp()); }},
    {"pDoseUnits=", [](Subjects& s) { return s.instrument.pDoseUnits(1), Text(); }},
    {"pDoseRateUnits=", [](Subjects& s) { return s.instrument.pDoseRateUnits(1), Text(); }},
    {"pFluoroType=", [](Subjects& s) { return s.instrument.pFluoroType(1), Text(); }},
    {"pTimeUnit=", [](Subjects& s) { return s.instrument.pTimeUnit(1), Text(); }},
    {"pPercentKV=", [](Subjects& s) { return s.instrument.pPercentKV(0), Text(); }},
    {"pDelay=", [](Subjects& s) { return s.instrument.pDelay(0), Text(); }},
    {"pIncludeDelay=", [](Subjects& s) { return s.instrument.pIncludeDelay(false), Text(); }},
    {"pTargetFilter=",
     [](Subjects& s) {
       Text value = "W/Al";
       return s.instrument.pTargetFilter(value), value;
     }},
    {"pSerialNumber", [](Subjects& s) { return s.instrument.pSerialNumber(); }},
    {"pFirmWareVersion", [](Subjects& s) { return s.instrument.pFirmWareVersion(); }},
    {"pMeasurementStatus", [](Subjects& s) { return flag(s.instrument.pMeasurementStatus()); }},
    {"pDetectorName", [](Subjects& s) { return s.instrument.pDetectorName(0); }},

    // Settings.
    {"InitTimer", [](Subjects& s) { return s.instrument.InitTimer(), Text(); }},
    {"EnableMeasurements", [](Subjects& s) { return s.instrument.EnableMeasurements(true), Text(); }},
    {"GetNumberOfTargetFilters", [](Subjects& s) { return number(s.instrument.GetNumberOfTargetFilters()); }},
    {"GetValidTargetFilters",
     [](Subjects& s) {
       std::vector<Text> names(8);
       s.instrument.GetValidTargetFilters(names, 8);
       Text text;
       for (const Text& name : names) text += name + "|";
       return text;
     }},
    {"GetDefaultTargetFilterName", [](Subjects& s) { return s.instrument.GetDefaultTargetFilterName(); }},
    {"UpdateDefaultTargetFilterInSettings",
     [](Subjects& s) { return s.instrument.UpdateDefaultTargetFilterInSettings(), Text(); }},
    {"ChangeAllsettings", [](Subjects& s) { return s.instrument.ChangeAllsettings(), Text(); }},
    {"ChangeDetectorSetup", [](Subjects& s) { return s.instrument.ChangeDetectorSetup(), Text(); }},
    {"ChangeDetectorMode", [](Subjects& s) { return s.instrument.ChangeDetectorMode(), Text(); }},
    {"ChangeSettings", [](Subjects& s) { return s.instrument.ChangeSettings(), Text(); }},
    {"IsDetectorConnected", [](Subjects& s) { return flag(s.instrument.IsDetectorConnected()); }},
    {"Val_OS", [](Subjects& s) { return number(s.instrument.Val_OS("1,5")); }},
    {"ScaleDoseValue", [](Subjects& s) { return number(s.instrument.ScaleDoseValue(1234)); }},
    {"FormatMeasuredValue", [](Subjects& s) { return s.instrument.FormatMeasuredValue(1, 80.3F); }},

    // Exposure polling.
    {"CheckDataStatus", [](Subjects& s) { return flag(s.instrument.CheckDataStatus()); }},
    {"mAsExposureFinish", [](Subjects& s) { return flag(s.instrument.mAsExposureFinish()); }},
    {"DetectorExposureFinish", [](Subjects& s) { return flag(s.instrument.DetectorExposureFinish()); }},
    {"ResetTheFlags", [](Subjects& s) { return s.instrument.ResetTheFlags(), Text(); }},

    // Supervision.
    {"CheckDetectorPowerStatus",
     [](Subjects& s) { return flag(s.instrument.CheckDetectorPowerStatus(600000, 1200000)); }},
    {"DetectorWakeUp", [](Subjects& s) { return s.instrument.DetectorWakeUp(), Text(); }},
    {"CheckDetectorStatus", [](Subjects& s) { return flag(s.instrument.CheckDetectorStatus()); }},
    {"CheckConnectionStatus", [](Subjects& s) { return flag(s.instrument.CheckConnectionStatus()); }},
    {"CloseWindow", [](Subjects& s) { return s.instrument.CloseWindow(), Text(); }},
    {"CheckSleepStatus", [](Subjects& s) { return s.instrument.CheckSleepStatus(), Text(); }},

    // Waveforms: the all-in-one detector's kV trace (1) and the mAs meter's current (2).
    {"GetWaveformInSecs", [](Subjects& s) { return s.instrument.GetWaveformInSecs(0, 100, 1000, 1); }},
    {"GetWaveformInSecs(mAs)", [](Subjects& s) { return s.instrument.GetWaveformInSecs(0, 100, 1000, 2); }},
    {"GetWaveformInMilliSec", [](Subjects& s) { return s.instrument.GetWaveformInMilliSec(0, 100, 1000); }},

    // Dosimeter and mAs meter configuration.
    {"DisplayIonChamber", [](Subjects& s) { return textOf(s.instrument.DisplayIonChamber()); }},
    {"GetDetectorType", [](Subjects& s) { return s.instrument.GetDetectorType(); }},
    {"GetIonChambers", [](Subjects& s) { return textOf(s.instrument.GetIonChambers()); }},
    {"GetIonChamberInfo", [](Subjects& s) { return number(s.instrument.GetIonChamberInfo()); }},
    {"CongiureDoseDetector", [](Subjects& s) { return textOf(s.instrument.CongiureDoseDetector()); }},
    {"ShowDosimeterMode", [](Subjects& s) { return flag(s.instrument.ShowDosimeterMode()); }},
    {"ShowDosimeterIonChamber", [](Subjects& s) { return s.instrument.ShowDosimeterIonChamber(), Text(); }},
    {"SendCompareData",
     [](Subjects& s) {
       CompareData values = typicalCompareData();
       const bool differ = s.instrument.SendCompareData(values);
       return compareText(differ, values);
     }},
    {"SetMasInputtype", [](Subjects& s) { return s.instrument.SetMasInputtype(true), Text(); }},
    {"GetIonChamberName", [](Subjects& s) { return s.instrument.GetIonChamberName(); }},
    {"GetCalFactor", [](Subjects& s) { return s.instrument.GetCalFactor(); }},
    {"GetCalConst", [](Subjects& s) { return s.instrument.GetCalConst(); }},
};

}  // namespace

std::span<const Member> members() {
  return kMembers;
}

std::string textOf(const AutomationValue& value) {
  if (const auto* whole = std::get_if<std::int32_t>(&value)) return std::to_string(*whole);
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  std::string joined;
  if (const auto* list = std::get_if<ScriptList>(&value)) {
    for (const std::string& text : list->texts) joined += text + "|";
  }
  return joined;
}

}  // namespace rx9400::reliability
