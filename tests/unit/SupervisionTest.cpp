// Power, sleep and link supervision against the simulator with a settable clock: what each member
// switches, shows and raises, each warning once per episode, and the boxes' buttons.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/InstrumentFakes.h"

namespace rx9400 {
namespace {

std::string detector(int id, const std::string& faults = "{}") {
  return R"({"identifier": )" + std::to_string(id) + R"(, "typeCode": 1, "serialNumber": )" +
         std::to_string(9000 + id) + R"(, "faults": )" + faults + "}";
}

class Supervision : public ::testing::Test, protected testing::InstrumentRig {
 protected:
  void startIdle(const std::string& detectors) {
    start(detectors, "RADIO", false);
    platform.clock.now = 1000;
    instrument->InitTimer();
  }
  /// What the test can see of the boxes: each box created, as "caption [never shown] [closed]".
  std::vector<std::string> notices() const {
    std::vector<std::string> result;
    for (const auto& box : platform.notices.boxes)
      result.push_back(box->caption + (box->shown ? "" : " never shown") + (box->closed ? " closed" : ""));
    return result;
  }
  std::vector<std::string> powerModes() const { return callsOf("MBSetPowerMode"); }
};

TEST_F(Supervision, AnIdleDetectorSleepsThenShutsDownAndLeavesTheTable) {
  const struct {
    std::int32_t sleep, shutDown;
    std::uint32_t idle;
    bool boxFails;           ///< the sleep box's component fails: the call ends there
    std::vector<int> modes;  ///< set in turn: 1 asleep, 3 shut down (with the box, out of the table)
    std::vector<std::string> notices;
  } cases[] = {
      {5000, 9000, 4999, false, {}, {}},
      {5000, 9000, 5000, false, {1}, {"Detector Sleep"}},
      {5000, 5000, 5000, false, {1, 3}, {"Detector Sleep closed"}},
      {9000, 5000, 6000, false, {3}, {}},
      {5000, 5000, 5000, true, {1}, {" never shown"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.sleep) + "/" + std::to_string(c.shutDown) + " idle " +
                 std::to_string(c.idle));
    platform.notices.boxes.clear();
    platform.boxes.shown.clear();
    events.events.clear();
    startIdle(detector(101));
    platform.clock.now += c.idle;
    platform.notices.failing = c.boxFails;
    const bool shutDown = !c.modes.empty() && c.modes.back() == 3;
    EXPECT_EQ(instrument->CheckDetectorPowerStatus(c.sleep, c.shutDown), !shutDown);
    std::vector<std::string> modes;
    for (const int mode : c.modes) modes.push_back("MBSetPowerMode(101, " + std::to_string(mode) + ")");
    EXPECT_EQ(powerModes(), modes);
    EXPECT_EQ(notices(), c.notices);
    EXPECT_EQ(events.events, std::vector<std::string>(shutDown ? 1 : 0, "AddWakeUpButton False"));
    EXPECT_EQ(platform.boxes.shown.empty() ? "" : platform.boxes.shown[0].caption,
              shutDown ? "Detector Shutdown" : "");
    if (shutDown) {
      EXPECT_EQ(context->state.identifierAt(0), 0) << "a detector shut down leaves the table";
      EXPECT_FALSE(instrument->pMeasurementStatus());
      EXPECT_FALSE(instrument->CheckDetectorPowerStatus(c.sleep, c.shutDown));
      EXPECT_EQ(platform.boxes.shown.size(), 1U);
    }
  }
}

TEST_F(Supervision, AnIdleTimeOutOfTheLongRangeEndsTheCallWithTheResultReached) {
  // The clock read as Longs: an idle time below the Long range, then one above it (the clock wrapped).
  const struct {
    std::uint32_t then, now;
  } cases[] = {{0x7FFFFF00U, 0x80000100U}, {0x80000000U, 0x00000001U}};
  for (const auto& c : cases) {
    startIdle(detector(101));
    platform.clock.now = c.then;
    instrument->InitTimer();
    platform.clock.now = c.now;
    EXPECT_TRUE(instrument->CheckDetectorPowerStatus(-2147483647, -2147483647)) << c.then;
    EXPECT_TRUE(powerModes().empty()) << c.then;
  }
}

TEST_F(Supervision, WakeUpAndCancelAnswerTheSleepBox) {
  startIdle(detector(101) + "," + detector(102));
  platform.clock.now += 5000;
  instrument->CheckDetectorPowerStatus(5000, 90000);
  ASSERT_EQ(notices(), (std::vector<std::string>{"Detector Sleep closed", "Detector Sleep"}))
      << "the second detector's sleep box replaces the first";
  platform.notices.boxes[1]->onButton2();  // Cancel
  instrument->CheckSleepStatus();
  EXPECT_EQ(events.events, (std::vector<std::string>{"AddWakeUpButton True", "AddWakeUpButton True"}));
  EXPECT_EQ(notices().back(), "Detector Sleep closed");

  simulator->clearCalls();
  instrument->CheckDetectorPowerStatus(5000, 90000);  // still asleep: nothing again
  EXPECT_TRUE(powerModes().empty());
  const std::uint32_t wake = platform.clock.now;
  platform.clock.step = 1000;
  instrument->DetectorWakeUp();
  platform.clock.step = 0;
  EXPECT_EQ(powerModes(), (std::vector<std::string>{"MBSetPowerMode(101, 2)", "MBSetPowerMode(102, 2)"}));
  instrument->CheckSleepStatus();
  EXPECT_EQ(events.events.size(), 2U) << "awake: no Wake Up button";
  platform.clock.now = wake + 1000 + 4999;
  instrument->CheckDetectorPowerStatus(5000, 90000);
  EXPECT_EQ(powerModes().size(), 2U) << "the last slot's wake-up is the new last activity";

  platform.clock.now += 1;
  instrument->CheckDetectorPowerStatus(5000, 90000);
  simulator->clearCalls();
  const auto wakeUp = platform.notices.boxes.back()->onButton1;
  wakeUp();
  EXPECT_EQ(powerModes(), (std::vector<std::string>{"MBSetPowerMode(101, 2)", "MBSetPowerMode(102, 2)"}));
  wakeUp();  // the box is gone: a late click does nothing
  EXPECT_EQ(powerModes().size(), 2U);
  instrument->CheckDetectorPowerStatus(5000, 90000);
  EXPECT_EQ(powerModes().size(), 2U) << "the Wake Up button is the new last activity";
}

TEST_F(Supervision, EachWarningComesOncePerEpisodeAndALostLinkEmptiesTheSlot) {
  const struct {
    std::string faults;
    // Per poll ("!": its box fails): CheckDetectorStatus's result, the charge and the box it showed.
    std::vector<std::string> polls;
  } cases[] = {
      {R"({"veryLowBattery": true, "charging": {"fromPoll": 2, "polls": 2}})",
       {"True 4% Very Low Battery", "True charging", "True charging", "True 4% Very Low Battery", "True 4%"}},
      {R"({"lowBattery": {"fromPoll": 1, "polls": 2}})", {"True 15% Low Battery", "True 15%", "True 80%"}},
      {R"({"veryLowBattery": true})", {"!False 4%", "True 4% Very Low Battery", "True 4%"}},
      {R"({"linkLossAfterCalls": 2})", {"True 80%", "False 80% Connection Lost", "False 80%", "False 80%"}},
      {R"({"linkLossAfterCalls": 2})", {"True 80%", "!False 80%", "False 80% Connection Lost", "False 80%"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.faults);
    platform.notices.boxes.clear();
    startIdle(detector(101, c.faults));
    std::vector<std::string> polls;
    for (const std::string& expected : c.polls) {
      const std::size_t before = platform.notices.boxes.size();
      const bool empty = context->state.identifierAt(0) == 0;
      const bool connected = instrument->CheckConnectionStatus();
      platform.notices.failing = expected[0] == '!';
      const bool result = instrument->CheckDetectorStatus();
      platform.notices.failing = false;
      const auto& box = platform.notices.boxes.size() > before ? platform.notices.boxes.back() : nullptr;
      polls.push_back(
          std::string(expected[0] == '!' ? "!" : "") + (result ? "True " : "False ") +
          (context->state.charging ? "charging" : std::to_string(context->state.chargePercent) + "%") +
          (box && box->shown ? " " + box->caption : ""));
      EXPECT_TRUE(!empty || connected) << "an empty slot is no lost link";
    }
    EXPECT_EQ(polls, c.polls);
  }
  EXPECT_EQ(platform.notices.boxes.back()->heading, "Connection lost with the detector : 9101");
  EXPECT_FALSE(instrument->pMeasurementStatus());
  EXPECT_EQ(context->state.identifierAt(0), 0) << "the lost detector leaves the table";
}

TEST_F(Supervision, TheLastSlotDecidesAndTheBeepsFollowTheLevel) {
  startIdle(detector(101, R"({"linkLossAfterCalls": 1})") + "," + detector(102, R"({"lowBattery": true})"));
  platform.sound.calls.clear();
  EXPECT_TRUE(instrument->CheckConnectionStatus()) << "the lost first link is not the last slot";
  EXPECT_TRUE(instrument->CheckDetectorStatus());
  EXPECT_EQ(
      platform.sound.calls,
      (std::vector<std::string>{"beep 2500 200", "sleep 100", "beep 2500 200", "sleep 100", "beep 2500 200",
                                "beep 2500 200", "sleep 100", "beep 2500 200", "sleep 100", "beep 2500 200"}))
      << "both slots read the one status copy: the last slot's";
}

TEST_F(Supervision, AButtonPressedFromTheDownloadsPumpLeavesBothWhole) {
  start(R"({"identifier": 102, "typeCode": 2, "mas": {"exposures": [{"waveform": {"points": 100}}]}})");
  const std::string alone = instrument->GetWaveformInSecs(0, 10, 100, 2);
  platform.clock.now += 100000;
  instrument->CheckDetectorPowerStatus(5000, 900000);
  ASSERT_EQ(notices(), (std::vector<std::string>{"Detector Sleep"}));
  platform.pump.pumps = 0;
  platform.pump.nested = [&] { platform.notices.boxes[0]->onButton1(); };
  EXPECT_EQ(instrument->GetWaveformInSecs(0, 10, 100, 2), alone);
  EXPECT_EQ(notices(), (std::vector<std::string>{"Detector Sleep closed"}));
  EXPECT_EQ(context->state.alerts[0].sleeping, kVBFalse);
  EXPECT_EQ(callsOf("MBSetPowerMode").back(), "MBSetPowerMode(102, 2)");
}

}  // namespace
}  // namespace rx9400
