// Scripted faults: link loss, zero error, battery, waveform and section faults, chamber refusals and
// dosimeter sensor errors.
#include <unistd.h>

#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

std::string detectorWithFaults(std::int32_t id, std::int32_t type, const std::string& faults) {
  return R"({"detectors": [{"identifier": )" + std::to_string(id) + R"(, "typeCode": )" +
         std::to_string(type) + R"(, "faults": )" + faults + "}]}";
}

class SimLinkLoss : public ::testing::TestWithParam<int> {};

TEST_P(SimLinkLoss, LosesTheLinkAfterTheGivenNumberOfCallsForGood) {
  const int calls = GetParam();
  loadScenario(detectorWithFaults(61, 1, R"({"linkLossAfterCalls": )" + std::to_string(calls) + "}"));
  scanAndConnect({61});
  for (int i = 1; i < calls; ++i) {
    BatteryStatus battery{};
    MBGetBatteryStatus(&battery, 61, -1);  // any call naming the detector counts
  }
  EXPECT_EQ(status(61).connectionState, kConnected) << "call " << calls;
  EXPECT_EQ(status(61).connectionState, kConnectionLost);
  EXPECT_EQ(MBEnableMeasurement(61), 0) << "commands fail";
  EXPECT_EQ(status(61).connectionState, kConnectionLost);
  EXPECT_EQ(detectorState(61).connectionState, kConnectionLost);
}

INSTANTIATE_TEST_SUITE_P(Calls, SimLinkLoss, ::testing::Values(1, 3, 10));

struct ZeroErrorCase {
  const char* window;
  int clearAfterPoll;     // 0: never cleared
  bool clearByPowerMode;  // else by enabling the measurement again
  std::vector<std::int32_t> states;
};

void PrintTo(const ZeroErrorCase& c, std::ostream* out) {
  *out << c.window;
  if (c.clearAfterPoll > 0) *out << " cleared by " << (c.clearByPowerMode ? "power mode" : "arming");
}

class SimZeroError : public ::testing::TestWithParam<ZeroErrorCase> {};

TEST_P(SimZeroError, ReportsStateSevenForItsWindowOrUntilCleared) {
  loadScenario(detectorWithFaults(62, 1, R"({"zeroError": )" + std::string(GetParam().window) + "}"));
  scanAndConnect({62});
  MBEnableMeasurement(62);
  for (std::size_t i = 0; i < GetParam().states.size(); ++i) {
    EXPECT_EQ(status(62).measurementState, GetParam().states[i]) << "poll " << i + 1;
    if (static_cast<int>(i + 1) == GetParam().clearAfterPoll) {
      if (GetParam().clearByPowerMode) {
        MBSetPowerMode(62, kPowerShutDown);
      } else {
        MBDisableMeasurement(62);
        MBEnableMeasurement(62);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Windows, SimZeroError,
                         ::testing::Values(ZeroErrorCase{R"({"fromPoll": 2})", 0, false, {1, 7, 7, 7, 7}},
                                           ZeroErrorCase{
                                               R"({"fromPoll": 1, "polls": 2})", 0, false, {7, 7, 1, 1}},
                                           ZeroErrorCase{"true", 2, true, {7, 7, 1, 1}},
                                           ZeroErrorCase{"true", 3, false, {7, 7, 7, 1}}));

TEST(SimBattery, FollowsItsFaultWindowsPollByPoll) {
  loadScenario(detectorWithFaults(63, 2, R"({"lowBattery": {"fromPoll": 3, "percent": 15},
      "veryLowBattery": {"fromPoll": 5}, "charging": {"fromPoll": 6, "polls": 1}})"));
  scanAndConnect({63});
  const std::int32_t states[] = {1, 1, 2, 2, 3, 3, 3};
  const int percents[] = {80, 80, 15, 15, 4, 4, 4};
  const std::int32_t charging[] = {0, 0, 0, 0, 0, 1, 0};
  for (std::size_t i = 0; i < std::size(states); ++i) {
    const DetectorStatus s = status(63);
    BatteryStatus battery{};
    MBGetBatteryStatus(&battery, 63, -1);
    EXPECT_EQ(s.battery.batteryState, states[i]) << "poll " << i + 1;
    EXPECT_EQ(s.battery.chargePercent, percents[i]) << "poll " << i + 1;
    EXPECT_EQ(s.battery.chargingState, charging[i]) << "poll " << i + 1;
    EXPECT_EQ(std::memcmp(&battery, &s.battery, sizeof battery), 0) << "the same battery in both records";
  }
}

/// An identifier of this test process alone: tests running side by side use different sections.
std::int32_t processIdentifier() {
  return 8000000 + static_cast<std::int32_t>(getpid() % 1000000);
}

std::string sectionName(std::int32_t id) {
  char name[32];
  std::snprintf(name, sizeof name, "MB_%08d", static_cast<int>(id));
  return name;
}

TEST(SimWaveformFaults, NeverAvailablePublishesNothing) {
  const std::int32_t id = processIdentifier();
  loadScenario(R"({"detectors": [{"identifier": )" + std::to_string(id) + R"(, "typeCode": 1,
      "exposures": [{"pollsBeforeStart": 0}], "faults": {"waveformNeverAvailable": true}}]})");
  scanAndConnect({id});
  deliverAioExposure(id);
  EXPECT_GT(MBGetNumberOfDataPoints(id, 0), 0);
  WaveformParameters parameters{0, 10, 1, {0, 0}};
  EXPECT_EQ(MBSetWaveformParameters(id, &parameters, 0), 0);
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(id), 0);
  EXPECT_FALSE(readSection(sectionName(id)).has_value());
  MBCloseApplication();
}

TEST(SimWaveformFaults, MissingSectionIsAnnouncedButNotThere) {
  const std::int32_t id = processIdentifier();
  loadScenario(R"({"detectors": [{"identifier": )" + std::to_string(id) + R"(, "typeCode": 5,
      "dosimeter": {"chambers": [{"name": "C"}]}, "faults": {"sectionMissing": true}}]})");
  scanAndConnect({id});
  EXPECT_EQ(MBGetChamberFileInfo(id), 8) << "the length of \"1\\t1\\tC\\t0\\t\" is given";
  EXPECT_FALSE(readSection(sectionName(id)).has_value());
  MBCloseApplication();
}

struct ChamberRefusal {
  const char* fault;
  std::int16_t chamber;
  std::int16_t calFactor;
};

void PrintTo(const ChamberRefusal& c, std::ostream* out) {
  *out << c.fault;
}

class SimChamberRefusal : public ::testing::TestWithParam<ChamberRefusal> {};

TEST_P(SimChamberRefusal, AdditionAnswersZero) {
  loadScenario(R"({"detectors": [{"identifier": 64, "typeCode": 3, "dosimeter": {"chambers": [{"name": "C"}]},
      "faults": {")" +
               std::string(GetParam().fault) + R"(": true}}]})");
  scanAndConnect({64});
  char name[15] = {'N'};
  CalFactor factor{};
  EXPECT_EQ(MBAddNewIonChamber(64, name), GetParam().chamber);
  EXPECT_EQ(MBAddNewCalFactor(64, 1, &factor), GetParam().calFactor);
}

INSTANTIATE_TEST_SUITE_P(Faults, SimChamberRefusal,
                         ::testing::Values(ChamberRefusal{"addChamberRefused", 0, 1},
                                           ChamberRefusal{"addCalFactorRefused", 2, 0}));

TEST(SimSensorFaults, ShowInTheDosimeterRecord) {
  loadScenario(detectorWithFaults(65, 3, R"({"temperatureError": true, "biasError": {"fromPoll": 2},
      "sensorReset": {"fromPoll": 1, "polls": 1}})"));
  scanAndConnect({65});
  DoseMeasuredData d{};
  status(65);
  MBGetDosimeterMeasuredData(&d, 65, 0);
  EXPECT_EQ(d.temperatureState, kSensorError);
  EXPECT_EQ(d.pressureState, 1);
  EXPECT_EQ(d.biasVoltageState, 1);
  EXPECT_NE(d.sensorReset, 0);
  status(65);
  MBGetDosimeterMeasuredData(&d, 65, 0);
  EXPECT_EQ(d.biasVoltageState, kSensorError);
  EXPECT_EQ(d.sensorReset, 0);
}

}  // namespace
}  // namespace rx9400::simtest
