// The hidden date picker: day, month and year are set in turn, a blank part taking today's.
#include <gtest/gtest.h>

#include <stdexcept>

#include "fakes/PlatformFakes.h"
#include "ionchamber/DatePicker.h"

namespace rx9400 {
namespace {

TEST(DatePicker, DayMonthAndYearAreSetInTurnAndABadPartStopsAtItsOwnStep) {
  constexpr CalendarDate kToday{2026, 11, 22};
  const struct {
    CalendarDate before;
    const char* day;
    const char* month;
    const char* year;
    CalendarDate after;
    bool refused;
  } cases[] = {
      {{2020, 1, 2}, "  ", " ", "", kToday, false},
      {kToday, "", "", "2019", {2019, 11, 22}, false},
      {kToday, "5", "", "", {2026, 11, 5}, false},
      {kToday, " 12 ", "6", "2025", {2025, 6, 12}, false},
      {{2020, 1, 2}, "31", "5", "2025", {2025, 5, 31}, false},
      {kToday, "31", "12", "2025", kToday, true},  // November has no 31st
      {kToday, "29", "2", "2024", {2026, 11, 29}, true},
      {{2020, 1, 2}, "29", "2", "2025", {2020, 2, 29}, true},
      {{2020, 1, 2}, "x", "1", "2025", {2020, 1, 2}, true},
      {{2020, 1, 2}, "0", "1", "2025", {2020, 1, 2}, true},
      {{2020, 1, 2}, "1", "13", "2025", {2020, 1, 1}, true},
      {{2020, 1, 2}, "1", "1", "2025x", {2020, 1, 1}, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.day) + "/" + c.month + "/" + c.year);
    testing::FakeDatePicker control;
    control.shown = c.before;
    DatePicker picker(control);
    if (c.refused) {
      EXPECT_THROW(picker.SetDTPicketDate(c.day, c.month, c.year), std::invalid_argument);
    } else {
      picker.SetDTPicketDate(c.day, c.month, c.year);
    }
    EXPECT_EQ(control.shown, c.after);
  }
  testing::FakeDatePicker control;
  EXPECT_EQ(detectorDateText(control, CalDate{31, 12, 2025}, "none"), "none");
  EXPECT_EQ(detectorDateText(control, CalDate{30, 12, 2025}, "none"), "30/12/2025");
}

}  // namespace
}  // namespace rx9400
