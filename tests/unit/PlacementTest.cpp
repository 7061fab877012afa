// The executive's topmost setting, and placement of dialogs and the pointer.
#include <gtest/gtest.h>

#include <vector>

#include "core/Placement.h"
#include "fakes/PlatformFakes.h"

namespace rx9400 {
namespace {

using testing::FakeRegistry;
using testing::FakeWindows;

TEST(Placement, TopmostOnlyForADwordOfFourOrAboveEight) {
  const struct {
    std::int32_t value;
    bool topmost;
  } cases[] = {{0, false}, {1, false}, {3, false}, {4, true},  {5, false},         {6, false},
               {7, false}, {8, false}, {9, true},  {10, true}, {0x7FFFFFFF, true}, {-1, false}};
  for (const auto& c : cases) {
    FakeRegistry registry;
    registry.keyExists = true;
    registry.info = Registry::ValueInfo{Registry::kDwordType, 4};
    registry.dword = c.value;
    EXPECT_EQ(topmostRequired(registry), c.topmost) << c.value;
  }
}

TEST(Placement, AMissingKeyOrValueOrAnotherTypeIsNotTopmostAndEveryQueryReadsAfresh) {
  FakeRegistry registry;
  EXPECT_FALSE(topmostRequired(registry));
  registry.keyExists = true;
  EXPECT_FALSE(topmostRequired(registry)) << "key without the value";
  registry.info = Registry::ValueInfo{1, 2};  // a string holding "4"
  registry.dword = 4;
  EXPECT_FALSE(topmostRequired(registry));
  registry.info = Registry::ValueInfo{Registry::kDwordType, 4};
  registry.dword = std::nullopt;
  EXPECT_FALSE(topmostRequired(registry)) << "the data query failed";
  EXPECT_EQ(registry.opens, 4);
}

TEST(Placement, ThePointerGoesToTheCentreWithHalvesTruncatedAndATopmostDialogKeepsItsPlaceAndSize) {
  FakeWindows windows;
  windows.rects[1] = {10, 20, 111, 71};      // 101 x 51
  windows.rects[2] = {-301, -40, -200, -9};  // on a monitor left of the primary one
  windows.rects[7] = {100, 50, 500, 350};
  centreCursorOn(windows, 1);
  centreCursorOn(windows, 2);
  centreCursorOn(windows, 3);  // no such window: nothing moves
  makeTopmost(windows, 7);
  EXPECT_EQ(windows.calls, (std::vector<std::vector<int>>{{60, 45}, {-251, -25}, {7, 100, 50, 400, 300}}));
}

}  // namespace
}  // namespace rx9400
