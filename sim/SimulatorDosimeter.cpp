// The dosimeter: its measured-data record, its four configuration records and its ion chambers.
#include "Simulator.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "ChamberFile.h"

namespace rx9400::sim {

namespace {

template <typename Entry>
std::int16_t nextNumber(const std::vector<Entry>& entries) {
  std::int32_t highest = 0;
  for (const Entry& entry : entries) highest = std::max<std::int32_t>(highest, entry.number);
  return highest >= std::numeric_limits<std::int16_t>::max() ? 0 : static_cast<std::int16_t>(highest + 1);
}

template <typename Entry>
auto findNumber(std::vector<Entry>& entries, std::int32_t number) {
  return std::find_if(entries.begin(), entries.end(),
                      [number](const Entry& e) { return e.number == number; });
}

}  // namespace

// ---- Dosimeter measured data -----------------------------------------------------------------------

std::int32_t Simulator::getDosimeterMeasuredData(DoseMeasuredData* data, std::int32_t id) {
  Detector* d = query(id);
  if (data == nullptr) return 0;
  *data = {};
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;

  const DetectorFaults& faults = d->plan->faults;
  const std::int32_t poll = pollIndex(*d);
  data->temperatureState = faults.temperatureError.activeAt(poll) ? kSensorError : 1;
  data->pressureState = faults.pressureError.activeAt(poll) ? kSensorError : 1;
  data->biasVoltageState = faults.biasError.activeAt(poll) ? kSensorError : 1;
  data->sensorReset = faults.sensorReset.activeAt(poll) ? kVBTrue : kVBFalse;
  const SensorValues& sensors = d->plan->dosimeter.sensors;
  data->temperature = sensors.temperature + d->offset.temperatureOffset;
  data->pressure = sensors.pressure + d->offset.pressureOffset;
  data->adcf = sensors.adcf;
  data->biasVoltage = sensors.biasVoltage;

  const DoseValues* values = &d->lastDose;
  const Exposure* e = currentExposure(*d);
  Cycle& c = d->main;
  if (d->connection == kConnected && e != nullptr && c.phase != Phase::Waiting) {
    const bool integrating = c.phase == Phase::BeforeData || c.phase == Phase::Between ||
                             (c.phase == Phase::Started && e->pollsBeforeData > 0);
    data->exposureStarted = c.phase == Phase::Started ? kVBTrue : kVBFalse;
    data->integrating = integrating ? kVBTrue : kVBFalse;
    if (integrating && e->dataWhileIntegrating) {
      data->dataAvailable = kVBTrue;
      values = &e->dose;
    }
    if (c.phase == Phase::DataPending) {
      data->dataAvailable = kVBTrue;
      if (c.deliveries + 1 >= e->deliveries) {
        if (e->endFlag == EndFlag::AutoResetDone) {
          data->autoResetDone = kVBTrue;
        } else {
          data->exposureEnded = kVBTrue;
        }
      }
      d->lastDose = e->dose;
      d->accumulatedDose += e->dose.dose.value;
      deliverMain(*d, *e);
    }
  }
  data->doseStatus = values->dose.status;
  data->doseRateStatus = values->doseRate.status;
  data->leakageStatus = values->leakageCurrent.status;
  data->dose = static_cast<float>(values->dose.value);
  data->doseRate = static_cast<float>(values->doseRate.value);
  data->leakageCurrent = static_cast<float>(values->leakageCurrent.value);
  data->exposureNumber = d->exposuresDelivered;
  data->frameRate = d->dosimeterUnit.frameRate;
  data->accumulatedDose = static_cast<float>(d->accumulatedDose);
  data->peakDoseRate = static_cast<float>(values->doseRate.value);
  data->exposureTime = static_cast<float>(values->exposureTime);
  return 1;
}

// ---- Dosimeter configuration ------------------------------------------------------------------------

namespace {

template <typename Record>
std::int32_t copyOut(const Detector* d, const Record& source, Record* target) {
  if (target == nullptr) return 0;
  *target = {};
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  *target = source;
  return 1;
}

template <typename Record>
std::int32_t copyIn(Detector* d, Record Detector::*member, const Record* source) {
  if (d == nullptr || source == nullptr || !d->plan->hasDosimeter()) return 0;
  d->*member = *source;
  return 1;
}

}  // namespace

std::int32_t Simulator::getAdcf(std::int32_t id, AdcfSettings* adcf) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->adcf : AdcfSettings{}, adcf);
}

std::int32_t Simulator::setAdcf(std::int32_t id, const AdcfSettings* adcf) {
  return copyIn(command(id), &Detector::adcf, adcf);
}

std::int32_t Simulator::getDosimeterMode(std::int32_t id, DosimeterMode* mode) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->dosimeterMode : DosimeterMode{}, mode);
}

std::int32_t Simulator::setDosimeterMode(std::int32_t id, const DosimeterMode* mode) {
  return copyIn(command(id), &Detector::dosimeterMode, mode);
}

std::int32_t Simulator::getDosimeterUnit(std::int32_t id, DosimeterUnit* unit) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->dosimeterUnit : DosimeterUnit{}, unit);
}

std::int32_t Simulator::setDosimeterUnit(std::int32_t id, const DosimeterUnit* unit) {
  return copyIn(command(id), &Detector::dosimeterUnit, unit);
}

std::int32_t Simulator::getTempPressureOffset(std::int32_t id, TempPressureOffset* offset) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->offset : TempPressureOffset{}, offset);
}

std::int32_t Simulator::setTempPressureOffset(std::int32_t id, const TempPressureOffset* offset) {
  return copyIn(command(id), &Detector::offset, offset);
}

std::int32_t Simulator::getNoOfIonChambers(std::int32_t id) {
  const Detector* d = query(id);
  return d != nullptr && d->plan->hasDosimeter() ? static_cast<std::int32_t>(d->chambers.size()) : 0;
}

std::int16_t Simulator::getChamberFileInfo(std::int32_t id) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter() || d->plan->faults.chamberFileMissing) return 0;
  const std::string text = chamberFileText(d->chambers);
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
    log_.note("chamber file of " + std::to_string(id) + " longer than 32767 bytes");
    return 0;
  }
  if (d->plan->faults.sectionMissing) {
    dropSection(id);
  } else {
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    bytes.push_back(0);
    chaos_.scramble(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    bytes.resize(chaos_.sectionSize(bytes.size(), 1));
    if (bytes.empty()) {
      dropSection(id);
    } else if (!publish(id, bytes)) {
      return 0;
    }
  }
  return static_cast<std::int16_t>(text.size());
}

std::int32_t Simulator::getIonChamberCalFactor(std::int32_t id, IonChamberSelection* selection) {
  const Detector* d = query(id);
  return copyOut(d, d != nullptr ? d->selection : IonChamberSelection{}, selection);
}

std::int32_t Simulator::setIonChamberCalFactor(std::int32_t id, std::int16_t chamber,
                                               std::int16_t calFactor) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  if (chamber != 0 || calFactor != 0) {
    const auto c = findNumber(d->chambers, chamber);
    if (c == d->chambers.end()) return 0;
    if (calFactor != 0 && findNumber(c->calFactors, calFactor) == c->calFactors.end()) return 0;
  }
  d->selection = {chamber, calFactor};
  return 1;
}

std::int16_t Simulator::addNewIonChamber(std::int32_t id, const char* name) {
  Detector* d = command(id);
  if (d == nullptr || name == nullptr || !d->plan->hasDosimeter() || d->plan->faults.addChamberRefused ||
      static_cast<std::int32_t>(d->chambers.size()) >= d->plan->dosimeter.maxChambers) {
    return 0;
  }
  const std::int16_t number = nextNumber(d->chambers);
  if (number == 0) return 0;
  d->chambers.push_back({number, nameFromBytes(name, kChamberNameLength), {}});
  return number;
}

std::int16_t Simulator::addNewCalFactor(std::int32_t id, std::int16_t chamber, const CalFactor* calFactor) {
  Detector* d = command(id);
  if (d == nullptr || calFactor == nullptr || !d->plan->hasDosimeter() ||
      d->plan->faults.addCalFactorRefused) {
    return 0;
  }
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end() || c->calFactors.size() >= kMaxCalFactors) return 0;
  const std::int16_t number = nextNumber(c->calFactors);
  if (number == 0) return 0;
  c->calFactors.push_back({number, nameFromBytes(calFactor->name, kChamberNameLength), calFactor->unitCode,
                           calFactor->calConstant});
  return number;
}

std::int16_t Simulator::editIonChamber(std::int32_t id, std::int16_t chamber, const char* name) {
  Detector* d = command(id);
  if (d == nullptr || name == nullptr || !d->plan->hasDosimeter()) return 0;
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end()) return 0;
  c->name = nameFromBytes(name, kChamberNameLength);
  return 1;
}

std::int16_t Simulator::editCalFactor(std::int32_t id, std::int16_t chamber, const CalFactor* calFactor) {
  Detector* d = command(id);
  if (d == nullptr || calFactor == nullptr || !d->plan->hasDosimeter()) return 0;
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end()) return 0;
  const auto f = findNumber(c->calFactors, calFactor->number);
  if (f == c->calFactors.end()) return 0;
  f->name = nameFromBytes(calFactor->name, kChamberNameLength);
  f->unitCode = calFactor->unitCode;
  f->constant = calFactor->calConstant;
  return 1;
}

std::int32_t Simulator::deleteIonChamber(std::int32_t id, std::int16_t chamber) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end()) return 0;
  d->chambers.erase(c);
  if (d->selection.chamberNumber == chamber) d->selection = {0, 0};
  return 1;
}

std::int32_t Simulator::deleteCalFactor(std::int32_t id, std::int16_t chamber, std::uint8_t calFactor) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  const auto c = findNumber(d->chambers, chamber);
  if (c == d->chambers.end()) return 0;
  const auto f = findNumber(c->calFactors, calFactor);
  if (f == c->calFactors.end()) return 0;
  c->calFactors.erase(f);
  if (d->selection.chamberNumber == chamber && d->selection.calFactorNumber == calFactor) {
    d->selection.calFactorNumber = 0;
  }
  return 1;
}

std::int32_t Simulator::deleteAllIonChambers(std::int32_t id) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasDosimeter()) return 0;
  d->chambers.clear();
  d->selection = {0, 0};
  return 1;
}

}  // namespace rx9400::sim
