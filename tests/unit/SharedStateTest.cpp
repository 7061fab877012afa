// The process-wide detector lists: reset, filling by the connect dialog, and removal of a detector.
#include <gtest/gtest.h>

#include "core/SharedState.h"

namespace rx9400 {
namespace {

DetectorInfo detector(std::int32_t identifier, std::int32_t serialNumber) {
  DetectorInfo info{};
  info.identifier = identifier;
  info.serialNumber = serialNumber;
  return info;
}

TEST(SharedState, StartsWithNoDetectorAndResetLeavesOneEmptySlotInEachList) {
  SharedState state;
  EXPECT_EQ(state.slotCount(), 0u);
  EXPECT_EQ(state.identifierAt(0), 0);

  state.setConnectedDetectors({detector(4711, 1201), detector(4712, 1305)}, {4, 3});
  state.alerts[1].lowBatteryShown = kVBTrue;
  state.resetDetectors();

  ASSERT_EQ(state.detectors.size(), 1u);
  ASSERT_EQ(state.detectorKinds.size(), 1u);
  ASSERT_EQ(state.alerts.size(), 1u);
  EXPECT_EQ(state.identifierAt(0), 0);
  EXPECT_EQ(state.kindAt(0), 0);
  EXPECT_EQ(state.alerts[0].lowBatteryShown, kVBFalse);
}

TEST(SharedState, ConnectingKeepsTheThreeListsInStep) {
  SharedState state;
  state.resetDetectors();
  state.setConnectedDetectors({detector(4711, 1201), detector(4712, 1305)}, {4, 3});
  EXPECT_EQ(state.slotCount(), 2u);
  EXPECT_EQ(state.alerts.size(), 2u);
  EXPECT_EQ(state.identifierAt(1), 4712);
  EXPECT_EQ(state.kindAt(1), 3);
  EXPECT_THROW(state.setConnectedDetectors({detector(1, 1)}, {}), std::invalid_argument);
  EXPECT_EQ(state.slotCount(), 2u) << "a refused update leaves the table as it was";
}

TEST(SharedState, ARemovedDetectorKeepsItsSlotButNoIdentifier) {
  SharedState state;
  state.setConnectedDetectors({detector(4711, 1201), detector(4712, 1305)}, {1, 2});
  state.removeDetector(0);
  state.removeDetector(7);  // past the end: nothing happens
  EXPECT_EQ(state.slotCount(), 2u);
  EXPECT_EQ(state.identifierAt(0), 0);
  EXPECT_EQ(state.detectors[0].serialNumber, 1201);
  EXPECT_EQ(state.identifierAt(1), 4712);
}

}  // namespace
}  // namespace rx9400
