// The hidden date picker (frmDateTime): a date from the device goes in as day, month and year texts
// and comes out as the platform control's date text.
#pragma once

#include <string>

#include "device/EnumsStructs.h"
#include "platform/DatePickerControl.h"

namespace rx9400 {

class DatePicker {
 public:
  explicit DatePicker(DatePickerControl& control) : control_(control) {}

  /// Loads a date. A part that is blank after trimming takes today's day, month or year. The three
  /// parts are applied together, so a day that the picker's current month lacks (31 while it shows
  /// November) is not refused on the way. Throws, leaving the picker as it was, when a part is not a
  /// whole number or the date does not exist.
  void SetDTPicketDate(const std::string& sDay, const std::string& sMonth, const std::string& sYear);
  /// The picker's date as the control renders it.
  std::string GetDTPicketDate();

 private:
  DatePickerControl& control_;
};

/// A detector's date as the hidden date picker renders it; `fallback` when the picker refuses it.
std::string detectorDateText(DatePickerControl& control, const CalDate& date, const std::string& fallback);

}  // namespace rx9400
