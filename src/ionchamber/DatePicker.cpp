// The hidden date picker.
#include "ionchamber/DatePicker.h"

#include <charconv>
#include <stdexcept>
#include <string_view>

namespace rx9400 {
namespace {

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// The part as a number, or `today` for a blank part.
int partOr(const std::string& part, int today) {
  const std::string_view text = trimmed(part);
  if (text.empty()) return today;
  int value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
    throw std::invalid_argument("not a date part: " + part);
  }
  return value;
}

}  // namespace

bool isValidDate(const CalendarDate& date) {
  if (date.year < 1601 || date.year > 9999 || date.month < 1 || date.month > 12 || date.day < 1) return false;
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (date.year % 4 == 0 && date.year % 100 != 0) || date.year % 400 == 0;
  const int days = date.month == 2 && leap ? 29 : kDays[date.month - 1];
  return date.day <= days;
}

void DatePicker::SetDTPicketDate(const std::string& sDay, const std::string& sMonth,
                                 const std::string& sYear) {
  const CalendarDate today = control_.today();
  const auto set = [&](int CalendarDate::*part, int value) {
    CalendarDate date = control_.date();
    date.*part = value;
    if (!isValidDate(date)) throw std::invalid_argument("no such date");
    control_.setDate(date);
  };
  set(&CalendarDate::day, partOr(sDay, today.day));
  set(&CalendarDate::month, partOr(sMonth, today.month));
  set(&CalendarDate::year, partOr(sYear, today.year));
}

std::string DatePicker::GetDTPicketDate() {
  return control_.text();
}

std::string detectorDateText(DatePickerControl& control, const CalDate& date, const std::string& fallback) {
  try {
    DatePicker picker(control);
    picker.SetDTPicketDate(std::to_string(date.day), std::to_string(date.month), std::to_string(date.year));
    return picker.GetDTPicketDate();
  } catch (...) {
    return fallback;
  }
}

}  // namespace rx9400
