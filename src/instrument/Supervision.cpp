// Power, sleep and link supervision: idle detectors are put to sleep and shut down, lost links and low
// batteries are reported once per episode, and the executive's Wake Up button is kept in step.
//
// The notice boxes answer through the message loop, so their handlers may run while another member is
// on the stack (a modal box, the mAs download's event pump). Every handler therefore takes its box out
// of the instrument before closing it, and every walk of the table reads slots by index.
#include <limits>
#include <stdexcept>
#include <string>

#include "instrument/Instrument.h"

namespace rx9400 {
namespace {

/// The system's millisecond clock as the executive's language holds it: a Long.
std::int32_t asLong(std::uint32_t milliseconds) {
  return static_cast<std::int32_t>(milliseconds);
}

/// now - then as a Long; a difference outside the Long range is a run-time failure of the member.
std::int32_t elapsed(std::int32_t now, std::int32_t then) {
  const std::int64_t difference = static_cast<std::int64_t>(now) - then;
  if (difference < std::numeric_limits<std::int32_t>::min() ||
      difference > std::numeric_limits<std::int32_t>::max())
    throw std::overflow_error("idle time out of the Long range");
  return static_cast<std::int32_t>(difference);
}

void close(std::unique_ptr<NoticeBox>& slot) {
  std::unique_ptr<NoticeBox> box = std::move(slot);  // a handler run from close() finds no box
  if (box != nullptr) box->close();
}

}  // namespace

void Instrument::closeSleepNotice(std::size_t slot) {
  close(sleepBox_);
  context_.state.alerts[slot].sleeping = kVBFalse;
}

void Instrument::showNotice(const std::string& caption, const std::string& heading,
                            const std::string& message) {
  close(generalBox_);
  generalBox_ = context_.services.noticeBoxes.create([this] { mDisplayMessage_ButtonClick(); },
                                                     [this] { mDisplayMessage_ButtonClick(); });
  generalBox_->setMessage(message);
  generalBox_->setCaption(caption);
  generalBox_->setHeading(heading);
  generalBox_->setButton2("");
  generalBox_->setButton1(context_.catalogue.text(catalogue::kOK));
  generalBox_->show();
}

void Instrument::threeBeeps(int milliseconds) {
  Sound& sound = context_.services.sound;
  sound.beep(2500, milliseconds);
  sound.sleep(100);
  sound.beep(2500, milliseconds);
  sound.sleep(100);
  sound.beep(2500, milliseconds);
}

Instrument::Alert Instrument::dueAlert(std::size_t slot, const DetectorStatus& status) {
  DetectorAlertState& marks = context_.state.alerts[slot];
  if (status.connectionState == kConnectionLost) {
    return marks.connectionLostShown != kVBFalse ? Alert::None : Alert::ConnectionLost;
  }
  if (status.connectionState != kConnected) return Alert::None;
  marks.connectionLostShown = kVBFalse;
  if (status.battery.chargingState != 0) {
    context_.state.charging = true;
    marks.lowBatteryShown = kVBFalse;
    marks.veryLowBatteryShown = kVBFalse;
    return Alert::None;
  }
  context_.state.charging = false;
  context_.state.chargePercent = status.battery.chargePercent;
  if (status.battery.batteryState == kBatteryVeryLow) {
    return marks.veryLowBatteryShown != kVBFalse ? Alert::None : Alert::VeryLowBattery;
  }
  if (status.battery.batteryState == kBatteryLow) {
    return marks.lowBatteryShown != kVBFalse ? Alert::None : Alert::LowBattery;
  }
  marks.lowBatteryShown = kVBFalse;
  marks.veryLowBatteryShown = kVBFalse;
  return Alert::None;
}

void Instrument::giveAlert(Alert alert, std::size_t slot, std::int32_t id, int lowBatteryBeep) {
  Catalogue& catalogue = context_.catalogue;
  // By index after the box: a handler run meanwhile may have emptied the lists.
  const auto mark = [&](VBBool DetectorAlertState::*shown) {
    if (slot < context_.state.alerts.size()) context_.state.alerts[slot].*shown = kVBTrue;
  };
  switch (alert) {
    case Alert::ConnectionLost: {
      const DetectorAlertState& marks = context_.state.alerts[slot];
      if (marks.sleeping != kVBFalse && marks.shutDown == kVBFalse) closeSleepNotice(slot);
      events_.AddWakeUpButton(false);
      showNotice(catalogue.text(catalogue::kConnectionLost),
                 catalogue.text(catalogue::kConnectionLostWithTheDetector) +
                     std::to_string(context_.state.detectors[slot].serialNumber),
                 catalogue.text(catalogue::kScanAgain));
      mark(&DetectorAlertState::connectionLostShown);
      break;
    }
    case Alert::VeryLowBattery:
      threeBeeps(400);
      showNotice(catalogue.text(catalogue::kVeryLowBattery),
                 catalogue.text(catalogue::kLowBatteryDetector) + std::to_string(id),
                 catalogue.text(catalogue::kShuttingDownSoon));
      mark(&DetectorAlertState::veryLowBatteryShown);
      break;
    case Alert::LowBattery: {
      threeBeeps(lowBatteryBeep);
      const std::string text = catalogue.text(catalogue::kLowBatteryDetector) + std::to_string(id);
      showNotice(catalogue.text(catalogue::kLowBattery), text, text);
      mark(&DetectorAlertState::lowBatteryShown);
      break;
    }
    case Alert::None:
      break;
  }
}

bool Instrument::CheckDetectorPowerStatus(std::int32_t lSystemSleepTime, std::int32_t lSystemShutDownTime) {
  bool result = false;
  try {
    SharedState& state = context_.state;
    for (std::size_t slot = 0; slot < state.slotCount(); ++slot) {
      const std::int32_t id = state.identifierAt(slot);
      const std::int32_t now = asLong(context_.services.clock.milliseconds());
      if (id <= 0) {
        result = false;
        continue;
      }
      result = true;
      const std::int32_t idle = elapsed(now, asLong(lastActivity_));
      if (state.alerts[slot].sleeping == kVBFalse && state.alerts[slot].shutDown == kVBFalse &&
          idle >= lSystemSleepTime) {
        state.alerts[slot].sleeping = kVBTrue;
        context_.library.MBSetPowerMode(id, kPowerSleep);
        showSleepNotice();
      }
      if (state.alerts[slot].shutDown == kVBFalse && idle >= lSystemShutDownTime) {
        EnableMeasurements(false);
        close(sleepBox_);
        events_.AddWakeUpButton(false);
        context_.library.MBSetPowerMode(id, kPowerShutDown);
        state.alerts[slot].shutDown = kVBTrue;
        state.measurementEnabled = false;
        state.removeDetector(slot);
        context_.services.messageBoxes.show(context_.catalogue.text(catalogue::kDetectorIsShutdown),
                                            context_.catalogue.text(catalogue::kDetectorShutdown),
                                            kBoxCritical);
        result = false;
      }
    }
  } catch (...) {
  }
  return result;
}

void Instrument::showSleepNotice() {
  close(sleepBox_);
  Catalogue& catalogue = context_.catalogue;
  sleepBox_ = context_.services.noticeBoxes.create([this] { mDisplaySleepMessage_ButtonClick(true); },
                                                   [this] { mDisplaySleepMessage_ButtonClick(false); });
  sleepBox_->setMessage(catalogue.text(catalogue::kSleepChoice));
  sleepBox_->setCaption(catalogue.text(catalogue::kDetectorSleep));
  sleepBox_->setHeading(catalogue.text(catalogue::kDetectorInSleepMode));
  sleepBox_->setButton2(catalogue.text(catalogue::kCancel));
  sleepBox_->setButton1(catalogue.text(catalogue::kWakeUp));
  sleepBox_->show();
}

void Instrument::wakeEveryDetector(bool stampEach) {
  SharedState& state = context_.state;
  for (std::size_t slot = 0; slot < state.slotCount(); ++slot) {
    const std::int32_t id = state.identifierAt(slot);
    if (id <= 0) continue;
    state.alerts[slot].sleeping = kVBFalse;
    context_.library.MBSetPowerMode(id, kPowerWake);
    if (stampEach) lastActivity_ = context_.services.clock.milliseconds();
  }
}

void Instrument::DetectorWakeUp() {
  try {
    wakeEveryDetector(true);
  } catch (...) {
  }
}

void Instrument::mDisplaySleepMessage_ButtonClick(bool wakeUp) {
  try {
    if (sleepBox_ == nullptr) return;
    close(sleepBox_);
    if (wakeUp) {
      wakeEveryDetector(false);
      lastActivity_ = context_.services.clock.milliseconds();
    } else {
      events_.AddWakeUpButton(true);
    }
  } catch (...) {
  }
}

void Instrument::mDisplayMessage_ButtonClick() {
  try {
    close(generalBox_);
  } catch (...) {
  }
}

void Instrument::CloseWindow() {
  try {
    close(sleepBox_);
    close(generalBox_);
  } catch (...) {
  }
}

void Instrument::CheckSleepStatus() {
  try {
    SharedState& state = context_.state;
    for (std::size_t slot = 0; slot < state.slotCount(); ++slot) {
      if (state.alerts[slot].sleeping != kVBFalse) {
        events_.AddWakeUpButton(true);
        return;
      }
    }
  } catch (...) {
  }
}

bool Instrument::CheckConnectionStatus() {
  bool result = false;
  try {
    SharedState& state = context_.state;
    for (std::size_t slot = 0; slot < state.slotCount(); ++slot) {
      const std::int32_t id = state.identifierAt(slot);
      if (id <= 0) {
        result = true;
        continue;
      }
      lastStatus_ = context_.library.MBGetDetectorStatus(id);
      result = lastStatus_.connectionState != kConnectionLost;
      context_.trace.trace({"$CheckConnectionStatus$ - Detector Connection Status :: " +
                            std::to_string(lastStatus_.connectionState)});
    }
  } catch (...) {
  }
  return result;
}

bool Instrument::CheckDetectorStatus() {
  bool result = false;
  try {
    SharedState& state = context_.state;
    for (std::size_t slot = 0; slot < state.slotCount(); ++slot) {
      const std::int32_t id = state.identifierAt(slot);
      if (id <= 0) {
        result = false;
        continue;
      }
      const DetectorStatus status = lastStatus_;  // the copy: a handler may refresh it meanwhile
      const Alert alert = dueAlert(slot, status);
      if (status.connectionState == kConnectionLost) {
        if (alert == Alert::ConnectionLost) {
          giveAlert(alert, slot, id, 200);
          state.removeDetector(slot);
          state.measurementEnabled = false;
        }
        result = false;
      } else if (status.connectionState == kConnected) {
        giveAlert(alert, slot, id, 200);
        result = true;
      }
    }
  } catch (...) {
  }
  return result;
}

}  // namespace rx9400
