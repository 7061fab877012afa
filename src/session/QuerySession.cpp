// The query class's members.
#include "session/QuerySession.h"

#include <memory>
#include <sstream>
#include <vector>

#include "core/DetectorType.h"
#include "core/DialogFactory.h"
#include "core/NumberText.h"
#include "core/Text.h"
#include "core/Placement.h"
#include "ionchamber/DatePicker.h"
#include "session/ConnectDialog.h"
#include "session/ScanDialog.h"

namespace rx9400 {
namespace {

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  if (text.empty()) return pieces;
  std::string piece;
  std::istringstream stream(text);
  while (std::getline(stream, piece, separator)) pieces.push_back(piece);
  if (text.back() == separator) pieces.emplace_back();
  return pieces;
}

/// Days since 1 March of year 0 in the proleptic Gregorian calendar.
std::int64_t dayNumber(const CalendarDate& date) {
  const std::int64_t year = date.month <= 2 ? date.year - 1 : date.year;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t month = date.month > 2 ? date.month - 3 : date.month + 9;
  const std::int64_t dayOfYear = (153 * month + 2) / 5 + date.day - 1;
  return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
}

}  // namespace

std::int64_t daysBetween(const CalendarDate& today, const CalendarDate& date) {
  return dayNumber(date) - dayNumber(today);
}

CalendarDate asCalendarDate(const CalDate& date) {
  return CalendarDate{date.year, date.month, date.day};
}

std::string plainDateText(const CalDate& date) {
  return std::to_string(date.day) + "/" + std::to_string(date.month) + "/" + std::to_string(date.year);
}

CalendarDate effectiveDueDate(const CalDate& calibration, const CalDate& due) {
  const bool february = calibration.month == 2 || due.month == 2;
  if (february && (calibration.day > 28 || due.day > 28)) return CalendarDate{calibration.year + 1, 3, 1};
  return asCalendarDate(due);
}

QuerySession::QuerySession(PluginContext& context) : context_(context) {}

void QuerySession::traceFailure(const char* member, const std::exception& error) noexcept {
  context_.trace.trace({"$" + std::string(member) + "$ - Error :: " + error.what()});
}

void QuerySession::RegisterApp() {
  try {
    context_.library.MBRegisterApplication(1);
  } catch (const std::exception& error) {
    traceFailure("RegisterApp", error);
  }
}

void QuerySession::CloseApp() {
  try {
    context_.library.MBCloseApplication();
  } catch (const std::exception& error) {
    traceFailure("CloseApp", error);
  }
}

std::string QuerySession::scanAndCount() {
  std::string text;
  {
    auto view = context_.services.dialogs.newScanView();
    ScanDialog dialog(context_, *view);
    dialog.showModal(topmostRequired(context_.services.registry));
    if (dialog.stopped()) {
      resetFlag_ = true;
      context_.library.MBStopScanningAndReset();
    } else {
      std::uint8_t counts[6] = {};
      for (const std::int32_t type : {1, 3, 2, 5, 4})
        counts[type] = context_.library.MBGetNumberOfDetectors(type);
      for (int type = 1; type <= 5; ++type) text += (type > 1 ? "," : "") + std::to_string(counts[type]);
      resetFlag_ = false;
    }
  }
  context_.services.eventPump.pumpEvents();
  return text;
}

void QuerySession::ScanAndConnectToDetector() {
  try {
    const std::vector<std::string> pieces = split(scanAndCount(), ',');
    if (resetFlag_) return;
    auto view = context_.services.dialogs.newConnectView();
    ConnectDialog dialog(context_, *view);
    dialog.InitTheDetectorArray();
    bool found = false;
    bool last = false;
    const int n = static_cast<int>(pieces.size()) - 1;
    bool connectShown = false;
    for (int i = 0; i <= n; ++i) {
      last = i == n;
      const double value = parseLeadingNumber(pieces[static_cast<std::size_t>(i)]);
      if (value > 0) {
        found = true;
        addAndConnect(dialog, static_cast<std::uint8_t>(value), i + 1, static_cast<std::int32_t>(value),
                      last);
        if (last) {
          connectShown = true;
          break;
        }
      }
    }
    if (!connectShown && last && found) addAndConnect(dialog, 255, -1, -1, true);
    if (!found) {
      Catalogue& catalogue = context_.catalogue;
      const std::string indent = "     ";
      context_.services.messageBoxes.show(catalogue.text(catalogue::kNoDetectorFound) + "\n" + indent +
                                              catalogue.text(catalogue::kSuggestionTurnOn) + "\n" + indent +
                                              catalogue.text(catalogue::kSuggestionBringInRange),
                                          catalogue.text(catalogue::kNoDetectorFound), kBoxCritical);
    }
  } catch (const std::exception& error) {
    traceFailure("ScanAndConnectToDetector", error);
  }
}

void QuerySession::addAndConnect(ConnectDialog& dialog, std::uint8_t count, std::int32_t typeCode,
                                 std::int32_t repeat, bool last) {
  if (!(last && typeCode == -1)) {
    for (std::int32_t i = 0; i < repeat; ++i) dialog.DetectorName(typeCode);
    dialog.pbyteNoOfDetector(count);
  }
  if (!last) return;
  dialog.showModal(topmostRequired(context_.services.registry));
  if (dialog.connected()) {
    updateBatteryStatus();
    reportCalibration();
  }
}

bool QuerySession::IsDetectorConnected() {
  bool connected = false;
  try {
    for (std::size_t slot = 0; slot < context_.state.slotCount(); ++slot) {
      const std::int32_t id = context_.state.identifierAt(slot);
      connected = id >= 1 && context_.library.MBGetDetectorStatus(id).connectionState == kConnected;
    }
  } catch (const std::exception& error) {
    traceFailure("IsDetectorConnected", error);
  }
  return connected;
}

void QuerySession::SendDetectorType(std::int32_t mednDetector) {
  if (mednDetector != 0) context_.state.requestedDetectorType = mednDetector;
}

void QuerySession::ResetTheDetectors() {
  try {
    context_.library.MBStopScanningAndReset();
  } catch (const std::exception& error) {
    traceFailure("ResetTheDetectors", error);
  }
  // Without a device library the lists are emptied all the same.
  resetFlag_ = true;
  context_.state.resetDetectors();
}

void QuerySession::updateBatteryStatus() {
  try {
    for (std::size_t slot = 0; slot < context_.state.slotCount(); ++slot) {
      const std::int32_t id = context_.state.identifierAt(slot);
      if (id < 1) continue;
      const BatteryStatus battery = context_.library.MBGetBatteryStatus(id);
      if (battery.chargingState == 1) {
        context_.state.charging = true;
      } else {
        context_.state.charging = false;
        context_.state.chargePercent = battery.chargePercent;
      }
      context_.trace.trace({"$UpdateBatteryStatus$ - Battery Charge status" + std::to_string(id) +
                            "::" + std::to_string(context_.state.chargePercent)});
    }
  } catch (const std::exception& error) {
    traceFailure("updateBatteryStatus", error);
  }
}

std::vector<std::string> QuerySession::invalidTargetFilters(std::int32_t id) {
  std::vector<std::string> names;
  const std::int32_t invalid = context_.library.MBGetNumberOfInvalidTargetFilters(id);
  if (invalid > 0) {
    for (const TargetFilterName& name : context_.library.MBGetAllInvalidTargetFilters(id, invalid))
      names.push_back(textOfFixedBytes(name.name, sizeof(name.name)));
  }
  return names;
}

void QuerySession::reportCalibration() {
  Catalogue& catalogue = context_.catalogue;
  for (std::size_t slot = 0; slot < context_.state.slotCount(); ++slot) {
    try {
      const DetectorInfo& info = context_.state.detectors[slot];
      if (info.identifier < 1) continue;
      const std::int32_t kind = context_.state.kindAt(slot);
      const CalendarDate due = effectiveDueDate(info.calibrationDate, info.calibrationDueDate);
      const bool datesValid = isValidDate(asCalendarDate(info.calibrationDate)) && isValidDate(due);
      if (!datesValid) {
        context_.trace.trace(
            {"$CalibrationReport$ - Calibration dates not valid :: " + std::to_string(info.identifier) +
             " :: " + plainDateText(info.calibrationDate) + " :: " + plainDateText(info.calibrationDueDate)});
      }
      const bool overdue = datesValid && daysBetween(context_.services.datePicker.today(), due) < 0;
      const std::vector<std::string> filters =
          hasAioPart(kind) ? invalidTargetFilters(info.identifier) : std::vector<std::string>{};
      if (!overdue && filters.empty()) continue;

      // An overdue detector's lines stand 18 blanks in, its filters 3 more; a detector in date has
      // its dates 3 blanks in and its filters 5.
      const std::string dateIndent(overdue ? 18 : 3, ' ');
      const std::string filterIndent = overdue ? dateIndent + "   " : std::string(5, ' ');
      std::string text = catalogue.text(detectorDisplayNameLiteral(kind));
      if (overdue) text += catalogue.text(catalogue::kCalibrationOverdue);
      if (datesValid) {
        text += "\n" + dateIndent + catalogue.text(catalogue::kCalibrationDate) +
                detectorDateText(context_.services.datePicker, info.calibrationDate,
                                 plainDateText(info.calibrationDate));
        text += "\n" + dateIndent + catalogue.text(catalogue::kCalibrationDueDate) +
                detectorDateText(context_.services.datePicker, info.calibrationDueDate,
                                 plainDateText(info.calibrationDueDate));
      }
      for (const std::string& name : filters) {
        text += "\n" + filterIndent + catalogue.text(catalogue::kTargetFilter) + name + " " +
                catalogue.text(catalogue::kInvalid);
      }
      context_.services.messageBoxes.show(text, catalogue.text(catalogue::kCalibrationError), kBoxCritical);
    } catch (...) {
    }
  }
}

}  // namespace rx9400
