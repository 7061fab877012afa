// The instrument: construction, and the members whose behaviour is not built yet (they return their
// defaults). Settings are in Settings.cpp, exposure polling in Polling.cpp,
// waveforms in Waveforms.cpp, power and link supervision in Supervision.cpp.
#include "instrument/Instrument.h"

namespace rx9400 {

Instrument::Instrument(PluginContext& context, InstrumentEvents& events)
    : context_(context), events_(events) {}

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
