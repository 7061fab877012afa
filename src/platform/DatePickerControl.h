// A date held by the platform's date picker control, and today's date.
#pragma once

#include <string>

namespace rx9400 {

struct CalendarDate {
  int year = 1900;
  int month = 1;
  int day = 1;
  friend bool operator==(const CalendarDate&, const CalendarDate&) = default;
};

/// True for a day that exists in the calendar (years 1601 to 9999).
bool isValidDate(const CalendarDate& date);

class DatePickerControl {
 public:
  virtual ~DatePickerControl() = default;
  virtual CalendarDate date() = 0;
  /// Shows `date`, which must be valid.
  virtual void setDate(const CalendarDate& date) = 0;
  /// The date as the control renders it (the user's short date format).
  virtual std::string text() = 0;
  /// Today's date.
  virtual CalendarDate today() = 0;
};

}  // namespace rx9400
