// The query class the executive creates first (CRX9400Query behind its COM shell): the session with
// the device library, the scan and connection of detectors, and the reset of the detector lists.
//
// Every member traps its own failures: a device library that fails never reaches the executive.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "core/PluginContext.h"

namespace rx9400 {

class ConnectDialog;

class QuerySession {
 public:
  explicit QuerySession(PluginContext& context);

  /// Opens the session with the device library.
  void RegisterApp();
  /// Closes the session; the detector table is left as it is.
  void CloseApp();
  /// Scans for detectors in the scan dialog, then lets the user choose and connect them in the
  /// connect dialog; says "No Detector Found" when the scan found none. A stopped scan ends quietly.
  void ScanAndConnectToDetector();
  /// True when the last slot of the detector table holds a connected detector: every slot is asked in
  /// turn and the last one decides.
  bool IsDetectorConnected();
  /// Restricts the connect dialog to detectors of a kind; 0 does nothing.
  void SendDetectorType(std::int32_t mednDetector);
  /// Stops a scan and empties the detector lists to one empty slot each.
  void ResetTheDetectors();

  /// True after ResetTheDetectors and after a scan the user stopped.
  bool resetFlag() const { return resetFlag_; }

  /// The scan result text: the detectors found per type code 1 to 5, joined with ","; empty after a
  /// stopped scan.
  std::string scanAndCount();
  /// Refreshes the shared charging flag and charge percentage from every connected detector.
  void updateBatteryStatus();
  /// Reports, one box each, the detectors whose calibration is overdue and the all-in-one detectors
  /// with target/filter combinations they are not calibrated for, in date or not. A detector whose
  /// dates are not real calendar dates cannot be judged overdue: that is traced.
  void reportCalibration();

 private:
  void traceFailure(const char* member, const std::exception& error) noexcept;
  void addAndConnect(ConnectDialog& dialog, std::uint8_t count, std::int32_t typeCode, std::int32_t repeat,
                     bool last);
  std::vector<std::string> invalidTargetFilters(std::int32_t id);

  PluginContext& context_;
  bool resetFlag_ = false;
};

/// A detector's date as a calendar date (which may not exist: 31 April, day 0).
CalendarDate asCalendarDate(const CalDate& date);
/// Day, month and year joined with "/", as the detector holds them.
std::string plainDateText(const CalDate& date);
/// The day count from `today` to `date` (negative when the date has passed).
std::int64_t daysBetween(const CalendarDate& today, const CalendarDate& date);
/// The calibration due date a detector is judged by: its due date, except that a calibration or due
/// date in February past the 28th makes it 1 March of the year after the calibration year.
CalendarDate effectiveDueDate(const CalDate& calibration, const CalDate& due);

}  // namespace rx9400
