// The instrument's members. Members whose behaviour is not built yet return their defaults.
#include "instrument/Instrument.h"

namespace rx9400 {

Instrument::Instrument(PluginContext& context, InstrumentEvents& events)
    : context_(context), events_(events) {}

bool Instrument::pChargingStatus() {
  return false;
}
std::uint8_t Instrument::pPercentageCharge() {
  return 0;
}
float Instrument::pResolution() {
  return 0;
}
void Instrument::pCurrentMode(const std::string&) {}
void Instrument::pCurrentSettings(const std::string&) {}
double Instrument::pGetExposureTime() {
  return 0;
}
double Instrument::pGetExposurekVp() {
  return 0;
}
void Instrument::InitTimer() {}
void Instrument::EnableMeasurements(bool) {}
std::uint8_t Instrument::GetNumberOfTargetFilters() {
  return 0;
}
void Instrument::GetValidTargetFilters(std::vector<std::string>&, std::uint8_t) {}
std::string Instrument::GetDefaultTargetFilterName() {
  return {};
}
void Instrument::UpdateDefaultTargetFilterInSettings() {}
void Instrument::ChangeAllsettings() {}
void Instrument::ChangeDetectorSetup() {}
void Instrument::ChangeDetectorMode() {}
void Instrument::ChangeSettings() {}
void Instrument::pDoseUnits(std::uint8_t) {}
void Instrument::pDoseRateUnits(std::uint8_t) {}
void Instrument::pFluoroType(std::uint8_t) {}
void Instrument::pTimeUnit(std::uint8_t) {}
void Instrument::pPercentKV(std::uint8_t) {}
void Instrument::pDelay(std::int16_t) {}
void Instrument::pIncludeDelay(bool) {}
void Instrument::pTargetFilter(std::string&) {}
std::string Instrument::pSerialNumber() {
  return {};
}
std::string Instrument::pFirmWareVersion() {
  return {};
}
bool Instrument::IsDetectorConnected() {
  return false;
}
double Instrument::Val_OS(const std::string&) {
  return 0;
}

bool Instrument::CheckDataStatus() {
  return false;
}
bool Instrument::pMeasurementStatus() {
  return false;
}
bool Instrument::mAsExposureFinish() {
  return false;
}
bool Instrument::DetectorExposureFinish() {
  return false;
}
void Instrument::ResetTheFlags() {}

bool Instrument::CheckDetectorPowerStatus(std::int32_t, std::int32_t) {
  return false;
}
void Instrument::DetectorWakeUp() {}
bool Instrument::CheckDetectorStatus() {
  return false;
}
bool Instrument::CheckConnectionStatus() {
  return false;
}
void Instrument::CloseWindow() {}
void Instrument::CheckSleepStatus() {}

std::string Instrument::GetWaveformInSecs(float, float, std::int32_t, std::int32_t) {
  return {};
}
std::string Instrument::GetWaveformInMilliSec(float, float, std::int32_t) {
  return {};
}

std::string Instrument::GetDetectorType() {
  return {};
}
AutomationValue Instrument::GetIonChambers() {
  return {};
}
std::uint8_t Instrument::GetIonChamberInfo() {
  return 0;
}
AutomationValue Instrument::CongiureDoseDetector() {
  return {};
}
bool Instrument::ShowDosimeterMode() {
  return false;
}
AutomationValue Instrument::DisplayIonChamber() {
  return {};
}
void Instrument::ShowDosimeterIonChamber() {}
bool Instrument::SendCompareData(CompareData&) {
  return false;
}
void Instrument::SetMasInputtype(bool) {}
std::string Instrument::GetIonChamberName() {
  return {};
}
std::string Instrument::GetCalFactor() {
  return {};
}
std::string Instrument::GetCalConst() {
  return {};
}
std::string Instrument::pDetectorName(std::int32_t) {
  return {};
}

}  // namespace rx9400
