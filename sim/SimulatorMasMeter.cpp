// The mAs meter: its own measurement cycle, counted in mAs reads, and its settings.
#include "Simulator.h"

namespace rx9400::sim {

// ---- mAs meter ------------------------------------------------------------------------------------------

const MasExposure* Simulator::currentMasExposure(const Detector& d) const {
  const auto& list = d.plan->mas.exposures;
  return d.mas.next < list.size() ? &list[d.mas.next] : nullptr;
}

void Simulator::startMasWait(Detector& d) {
  d.mas.phase = Phase::Waiting;
  d.mas.count = 0;
  const MasExposure* e = currentMasExposure(d);
  d.zeroingLeft = e != nullptr ? e->zeroingReads : 0;
}

std::int32_t Simulator::enableMasMeasurement(std::int32_t id, bool enable) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasMas()) return 0;
  d->masArmed = enable;
  if (enable && d->mas.phase == Phase::Waiting) startMasWait(*d);
  return 1;
}

std::int32_t Simulator::getMasMeasuredData(MasMeasuredData* data, std::int32_t id) {
  Detector* d = query(id);
  if (data == nullptr) return 0;
  *data = {};
  if (d == nullptr || !d->plan->hasMas()) return 0;

  const auto fill = [&] {
    data->exposureNumber = d->masExposuresDelivered;
    data->mAStatus = d->lastMA.status;
    data->mAsStatus = d->lastMAs.status;
    data->pulsesStatus = d->lastPulses.status;
    data->mA = static_cast<float>(d->lastMA.value);
    data->mAs = static_cast<float>(d->lastMAs.value);
    data->pulses = static_cast<float>(d->lastPulses.value);
    data->waveformAvailable = d->masRecording != nullptr ? kVBTrue : kVBFalse;
    data->inputType = static_cast<std::int16_t>(d->masInputType);
  };
  fill();
  if (d->connection != kConnected) return 1;
  if (d->zeroingLeft > 0) {
    --d->zeroingLeft;
    data->meterState = kMasZeroing;
    return 1;
  }
  const MasExposure* e = currentMasExposure(*d);
  Cycle& c = d->mas;
  data->meterState = d->masArmed ? 1 : 0;
  if (e == nullptr) return 1;

  bool deliver = false;
  switch (c.phase) {
    case Phase::Waiting:
      if (!d->masArmed) return 1;
      if (c.count >= e->pollsBeforeStart) {
        c.phase = Phase::Started;
        data->exposureStarted = kVBTrue;
        data->meterState = 2;
      } else {
        ++c.count;
      }
      return 1;
    case Phase::Started:
      if (e->pollsBeforeData == 0) {
        deliver = true;
      } else {
        c.phase = Phase::BeforeData;
        c.count = 1;
      }
      break;
    case Phase::BeforeData:
      if (c.count >= e->pollsBeforeData)
        deliver = true;
      else
        ++c.count;
      break;
    default:
      deliver = true;
      break;
  }
  if (!deliver) {
    data->meterState = 2;
    return 1;
  }
  d->lastMA = e->mA;
  d->lastMAs = e->mAs;
  d->lastPulses = e->pulses;
  d->masRecording = &e->waveform;
  d->masSpan = e->span;
  ++d->masExposuresDelivered;
  ++c.next;
  if (c.next >= d->plan->mas.exposures.size() && d->plan->mas.repeatExposures) c.next = 0;
  startMasWait(*d);
  fill();
  data->dataAvailable = kVBTrue;
  return 1;
}

std::int32_t Simulator::setMasInput(std::int32_t id, std::int32_t inputType) {
  Detector* d = command(id);
  if (d == nullptr) return 0;
  d->masInputType = inputType;  // kept for any detector, so that a test sees where it went
  return d->plan->hasMas() ? 1 : 0;
}

std::int32_t Simulator::getMasInput(std::int32_t id) {
  const Detector* d = query(id);
  return d != nullptr && d->plan->hasMas() ? d->masInputType : 0;
}

std::int32_t Simulator::getMasCalConstant(std::int32_t id, float* constant) {
  const Detector* d = query(id);
  if (constant == nullptr) return 0;
  *constant = 0.0F;
  if (d == nullptr || !d->plan->hasMas()) return 0;
  *constant = d->masCalConstant;
  return 1;
}

std::int32_t Simulator::setMasCalConstant(std::int32_t id, const float* constant) {
  Detector* d = command(id);
  if (d == nullptr || constant == nullptr || !d->plan->hasMas()) return 0;
  d->masCalConstant = *constant;
  return 1;
}

std::int32_t Simulator::getMasCalDate(std::int32_t id, CalDate* date) {
  const Detector* d = query(id);
  if (date == nullptr) return 0;
  *date = {};
  if (d == nullptr || !d->plan->hasMas()) return 0;
  *date = d->masCalDate;
  return 1;
}

std::int32_t Simulator::setMasCalDate(std::int32_t id, const CalDate* date) {
  Detector* d = command(id);
  if (d == nullptr || date == nullptr || !d->plan->hasMas()) return 0;
  d->masCalDate = *date;
  return 1;
}

std::int32_t Simulator::setMasZero(std::int32_t id) {
  Detector* d = command(id);
  if (d == nullptr || !d->plan->hasMas()) return 0;
  d->zeroingLeft = d->plan->mas.zeroingReadsOnRequest;
  return 1;
}

}  // namespace rx9400::sim
