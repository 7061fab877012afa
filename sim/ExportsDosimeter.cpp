// The exports of the dosimeter.
#include "ExportSupport.h"

namespace rx9400 {

using sim::call;
using sim::NameArg;
using sim::Simulator;

extern "C" {

std::int32_t MB_STDCALL MBGetDosimeterMeasuredData(DoseMeasuredData* data, std::int32_t id,
                                                   std::int32_t reserved) {
  return call(
      "MBGetDosimeterMeasuredData", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getDosimeterMeasuredData(data, id), data); }, data, id,
      reserved);
}

// ---- Dosimeter configuration ----------------------------------------------------------------------------

std::int32_t MB_STDCALL MBGetADCF(std::int32_t id, AdcfSettings* adcf) {
  return call(
      "MBGetADCF", std::int32_t{0}, [&](Simulator& s) { return sim::wrote(s, s.getAdcf(id, adcf), adcf); },
      id, adcf);
}

std::int32_t MB_STDCALL MBSetADCF(std::int32_t id, AdcfSettings* adcf) {
  return call(
      "MBSetADCF", std::int32_t{0}, [&](Simulator& s) { return s.setAdcf(id, adcf); }, id, adcf);
}

std::int32_t MB_STDCALL MBGetDosimeterMode(std::int32_t id, DosimeterMode* mode) {
  return call(
      "MBGetDosimeterMode", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getDosimeterMode(id, mode), mode); }, id, mode);
}

std::int32_t MB_STDCALL MBSetDosimeterMode(std::int32_t id, DosimeterMode* mode) {
  return call(
      "MBSetDosimeterMode", std::int32_t{0}, [&](Simulator& s) { return s.setDosimeterMode(id, mode); }, id,
      mode);
}

std::int32_t MB_STDCALL MBGetDosimeterUnit(std::int32_t id, DosimeterUnit* unit) {
  return call(
      "MBGetDosimeterUnit", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getDosimeterUnit(id, unit), unit); }, id, unit);
}

std::int32_t MB_STDCALL MBSetDosimeterUnit(std::int32_t id, DosimeterUnit* unit) {
  return call(
      "MBSetDosimeterUnit", std::int32_t{0}, [&](Simulator& s) { return s.setDosimeterUnit(id, unit); }, id,
      unit);
}

std::int32_t MB_STDCALL MBGetTempPressureOffset(std::int32_t id, TempPressureOffset* offset) {
  return call(
      "MBGetTempPressureOffset", std::int32_t{0},
      [&](Simulator& s) { return sim::wrote(s, s.getTempPressureOffset(id, offset), offset); }, id, offset);
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
      [&](Simulator& s) { return sim::wrote(s, s.getIonChamberCalFactor(id, selection), selection); }, id,
      selection);
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

}  // extern "C"

}  // namespace rx9400
