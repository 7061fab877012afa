// Scripted faults: scan and connection, link loss, zero error, battery, waveform and section, chamber
// refusals and dosimeter sensors.
#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

using SimFaults = SimTest;

TEST_F(SimFaults, ScanNeverCompletesOrConnectionFails) {
  loadScenario(
      R"({"faults": {"scanNeverCompletes": true}, "detectors": [{"identifier": 1, "typeCode": 1}]})");
  MBScanForDetectors();
  for (int poll = 0; poll < 500; ++poll) ASSERT_EQ(MBGetScanCompleteStatus(), 1);
  EXPECT_EQ(MBGetNumberOfDetectors(1), 0);
  loadScenario(R"({"faults": {"connectFails": true}, "detectors": [{"identifier": 1, "typeCode": 1}]})");
  EXPECT_EQ(scanAndConnect({1}), 0);
  EXPECT_EQ(status(1).connectionState, 0);
}

using SimLinkLoss = SimTable<int>;

TEST_P(SimLinkLoss, LosesTheLinkForGoodAfterTheGivenNumberOfCalls) {
  loadScenario(one(61, 1, R"("faults": {"linkLossAfterCalls": )" + std::to_string(GetParam()) + "}"));
  scanAndConnect({61});
  BatteryStatus battery{};
  for (int i = 1; i < GetParam(); ++i) MBGetBatteryStatus(&battery, 61, -1);  // any call naming it counts
  EXPECT_EQ(status(61).connectionState, kConnected);
  EXPECT_EQ(status(61).connectionState, kConnectionLost);
  EXPECT_EQ(MBEnableMeasurement(61), 0) << "commands fail";
  EXPECT_EQ(detectorState(61).connectionState, kConnectionLost);
}

INSTANTIATE_TEST_SUITE_P(Calls, SimLinkLoss, ::testing::Values(1, 3, 10));

struct ZeroErrorCase {
  const char* window;
  int clearAfterPoll;     // 0: never cleared
  bool clearByPowerMode;  // else by arming again
  std::vector<std::int32_t> states;
};

using SimZeroError = SimTable<ZeroErrorCase>;

TEST_P(SimZeroError, ReportsStateSevenForItsWindowOrUntilCleared) {
  loadScenario(one(62, 1, R"("faults": {"zeroError": )" + std::string(GetParam().window) + "}"));
  scanAndConnect({62});
  MBEnableMeasurement(62);
  std::vector<std::int32_t> states;
  while (states.size() < GetParam().states.size()) {
    states.push_back(status(62).measurementState);
    if (static_cast<int>(states.size()) != GetParam().clearAfterPoll) continue;
    if (GetParam().clearByPowerMode) {
      MBSetPowerMode(62, kPowerShutDown);
    } else {
      MBDisableMeasurement(62);
      MBEnableMeasurement(62);
    }
  }
  EXPECT_EQ(states, GetParam().states);
}

INSTANTIATE_TEST_SUITE_P(Windows, SimZeroError,
                         ::testing::Values(ZeroErrorCase{R"({"fromPoll": 2})", 0, false, {1, 7, 7, 7, 7}},
                                           ZeroErrorCase{
                                               R"({"fromPoll": 1, "polls": 2})", 0, false, {7, 7, 1, 1}},
                                           ZeroErrorCase{"true", 2, true, {7, 7, 1, 1}},
                                           ZeroErrorCase{"true", 3, false, {7, 7, 7, 1}}));

TEST_F(SimFaults, BatteryFollowsItsWindowsPollByPollInBothRecords) {
  loadScenario(one(63, 2, R"("faults": {"lowBattery": {"fromPoll": 3, "percent": 15},
      "veryLowBattery": {"fromPoll": 5}, "charging": {"fromPoll": 6, "polls": 1}})"));
  scanAndConnect({63});
  std::vector<std::string> polls;  // battery state, charge percent, charging state
  for (int i = 0; i < 7; ++i) {
    const DetectorStatus s = status(63);
    BatteryStatus battery{};
    MBGetBatteryStatus(&battery, 63, -1);
    EXPECT_EQ(std::memcmp(&battery, &s.battery, sizeof battery), 0) << "poll " << i + 1;
    polls.push_back(std::to_string(s.battery.batteryState) + "/" + std::to_string(s.battery.chargePercent) +
                    "/" + std::to_string(s.battery.chargingState));
  }
  EXPECT_EQ(polls,
            (std::vector<std::string>{"1/80/0", "1/80/0", "2/15/0", "2/15/0", "3/4/0", "3/4/1", "3/4/0"}));
}

TEST_F(SimFaults, WaveformNeverAvailableOrSectionMissing) {
  loadScenario(one(ownId(), 1,
                   R"("exposures": [{"pollsBeforeStart": 0}], "faults": {"waveformNeverAvailable": true})"));
  scanAndConnect({ownId()});
  deliverAio(ownId());
  WaveformParameters parameters{0, 10, 1, {0, 0}};
  EXPECT_EQ(MBSetWaveformParameters(ownId(), &parameters, 0), 0);
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(ownId()), 0);
  EXPECT_FALSE(readSection(ownId()).has_value());
  loadScenario(
      one(ownId(), 5, R"("dosimeter": {"chambers": [{"name": "C"}]}, "faults": {"sectionMissing": true})"));
  scanAndConnect({ownId()});
  EXPECT_EQ(MBGetChamberFileInfo(ownId()), 8) << "the length of \"1\\t1\\tC\\t0\\t\" is given";
  EXPECT_FALSE(readSection(ownId()).has_value());
}

struct Refusal {
  const char* fault;
  int chamber, calFactor;  // what adding a chamber, then a cal factor answers
};

using SimChamberRefusal = SimTable<Refusal>;

TEST_P(SimChamberRefusal, AdditionAnswersZero) {
  loadScenario(one(64, 3,
                   R"("dosimeter": {"chambers": [{"name": "C"}]}, "faults": {")" +
                       std::string(GetParam().fault) + R"(": true})"));
  scanAndConnect({64});
  char name[15] = "N";
  CalFactor factor{};
  EXPECT_EQ((std::vector<int>{MBAddNewIonChamber(64, name), MBAddNewCalFactor(64, 1, &factor)}),
            (std::vector<int>{GetParam().chamber, GetParam().calFactor}));
}

INSTANTIATE_TEST_SUITE_P(Faults, SimChamberRefusal,
                         ::testing::Values(Refusal{"addChamberRefused", 0, 1},
                                           Refusal{"addCalFactorRefused", 2, 0}));

TEST_F(SimFaults, SensorFaultsShowInTheDosimeterRecord) {
  loadScenario(one(65, 3, R"("faults": {"temperatureError": true, "biasError": {"fromPoll": 2},
      "sensorReset": {"fromPoll": 1, "polls": 1}})"));
  scanAndConnect({65});
  std::vector<int> polls;  // temperature, pressure, bias voltage state, sensor reset
  for (DoseMeasuredData d{}; polls.size() < 8;) {
    status(65);
    MBGetDosimeterMeasuredData(&d, 65, 0);
    polls.insert(polls.end(), {d.temperatureState, d.pressureState, d.biasVoltageState, d.sensorReset != 0});
  }
  EXPECT_EQ(polls, (std::vector<int>{kSensorError, 1, 1, 1, kSensorError, 1, kSensorError, 0}));
}

}  // namespace
}  // namespace rx9400::simtest
