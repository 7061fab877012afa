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

  /// Sets the day, then the month, then the year, each on the date the picker holds at that moment;
  /// a part that is blank after trimming takes today's. A part that is not a whole number, or that
  /// gives a date that does not exist (a 31st while the picker shows November), throws at its own
  /// step: the parts set before it stay set.
  void SetDTPicketDate(const std::string& sDay, const std::string& sMonth, const std::string& sYear);
  /// The picker's date as the control renders it.
  std::string GetDTPicketDate();

 private:
  DatePickerControl& control_;
};

/// A detector's date as the hidden date picker renders it; `fallback` when the picker refuses it.
std::string detectorDateText(DatePickerControl& control, const CalDate& date, const std::string& fallback);

}  // namespace rx9400
