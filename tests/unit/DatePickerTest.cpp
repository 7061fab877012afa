// The hidden date picker: blank parts take today's, and a date is loaded whole.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <stdexcept>

#include "fakes/TestPlatform.h"
#include "ionchamber/DatePicker.h"

namespace rx9400 {
namespace {

using FakeControl = testing::FakeDatePicker;

TEST(DatePicker, BlankPartsTakeTodaysPart) {
  const struct {
    const char* day;
    const char* month;
    const char* year;
    CalendarDate expected;
  } cases[] = {
      {"", "", "", {2026, 11, 22}},         {"  ", " ", "", {2026, 11, 22}},
      {"", "", "2019", {2019, 11, 22}},     {"5", "", "", {2026, 11, 5}},
      {" 12 ", "6", "2025", {2025, 6, 12}}, {"31", "5", "2025", {2025, 5, 31}},
      {"29", "2", "2024", {2024, 2, 29}},
  };
  for (const auto& c : cases) {
    FakeControl control;
    DatePicker picker(control);
    picker.SetDTPicketDate(c.day, c.month, c.year);
    EXPECT_EQ(control.shown, c.expected) << c.day << "/" << c.month << "/" << c.year;
  }
}

TEST(DatePicker, ADateThatDoesNotExistIsRefusedAndThePickerKeepsItsDate) {
  FakeControl control;
  control.shown = {2020, 1, 2};
  DatePicker picker(control);
  const std::array<const char*, 3> refused[] = {{"29", "2", "2025"}, {"31", "4", "2025"},
                                                {"x", "1", "2025"},  {"0", "1", "2025"},
                                                {"1", "13", "2025"}, {"1", "1", "2025x"}};
  for (const auto& parts : refused) {
    EXPECT_THROW(picker.SetDTPicketDate(parts[0], parts[1], parts[2]), std::invalid_argument) << parts[0];
  }
  EXPECT_EQ(control.shown, (CalendarDate{2020, 1, 2}));
  EXPECT_EQ(picker.GetDTPicketDate(), "02/01/2020");
}

}  // namespace
}  // namespace rx9400
