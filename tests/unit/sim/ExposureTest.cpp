// Exposure cycles: started once, data once, cleared by the read; fluoroscopy runs; the dosimeter's
// integration and end flags; the mAs meter's own cycle; settings kept per detector.
#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

using SimExposure = SimTest;

/// What one status poll reported.
struct Poll {
  bool started;
  bool data;
  bool running;
};

Poll poll(std::int32_t id) {
  const DetectorStatus s = status(id);
  return {s.exposureStarted != 0, s.dataAvailable != 0, s.fluoroRunning != 0};
}

class SimAioCycle : public ::testing::TestWithParam<int> {};

TEST_P(SimAioCycle, StartsAfterTheQuietPollsThenReportsDataOnceUntilRead) {
  const int quiet = GetParam();
  loadScenario(R"({"detectors": [{"identifier": 21, "typeCode": 1,
      "exposures": [{"pollsBeforeStart": )" +
               std::to_string(quiet) + R"(, "kvpAverage": 803, "kvpMaximum": {"value": 1500, "status": 3},
                      "dose": {"value": 12, "status": 5}, "hvl": {"value": 35, "status": 2}}]}]})");
  scanAndConnect({21});
  for (int i = 0; i < 5; ++i) ASSERT_FALSE(poll(21).started) << "not armed";
  MBEnableMeasurement(21);
  for (int i = 1; i <= quiet; ++i) {
    const Poll p = poll(21);
    ASSERT_FALSE(p.started || p.data) << "quiet poll " << i;
  }
  const Poll start = poll(21);
  EXPECT_TRUE(start.started);
  EXPECT_FALSE(start.data);
  for (int i = 0; i < 3; ++i) {
    const Poll p = poll(21);
    EXPECT_FALSE(p.started) << "the start is reported once";
    EXPECT_TRUE(p.data) << "data stay available until read";
  }
  AioMeasuredData data{};
  EXPECT_EQ(MBGetMeasuredData(&data, 21, 0), 1);
  EXPECT_EQ(data.kvpAverage, 803);
  EXPECT_EQ(data.kvpAverageStatus, kValueValid);
  EXPECT_EQ(data.kvpMaximum, 1500);
  EXPECT_EQ(data.kvpMaximumStatus, kValueOverRange);
  EXPECT_EQ(data.dose, 12);
  EXPECT_EQ(data.doseStatus, kValueUnderRange);
  EXPECT_EQ(data.hvl, 35);
  EXPECT_EQ(data.hvlStatus, 2);
  for (int i = 0; i < 10; ++i) {
    const Poll p = poll(21);
    EXPECT_FALSE(p.started || p.data) << "nothing more after the only exposure, poll " << i;
  }
  EXPECT_EQ(detectorState(21).exposuresDelivered, 1);
}

INSTANTIATE_TEST_SUITE_P(QuietPolls, SimAioCycle, ::testing::Values(0, 2, 5));

TEST_F(SimExposure, DisablingStopsTheWaitAndExposuresFollowInOrder) {
  loadScenario(R"({"detectors": [{"identifier": 22, "typeCode": 1, "pollsBeforeExposure": 1,
      "exposures": [{"kvpAverage": 600}, {"kvpAverage": 700}]}]})");
  scanAndConnect({22});
  MBEnableMeasurement(22);
  MBDisableMeasurement(22);
  for (int i = 0; i < 5; ++i) ASSERT_FALSE(poll(22).started);
  for (const std::int16_t kvp : {600, 700}) {
    const AioMeasuredData data = deliverAioExposure(22);
    EXPECT_EQ(data.kvpAverage, kvp);
  }
}

struct FluoroCase {
  const char* runningRule;
  std::vector<bool> runningAtDeliveries;  // whether "fluoroscopy running" is on when each delivery is read
};

void PrintTo(const FluoroCase& c, std::ostream* out) {
  *out << c.runningRule;
}

class SimFluoro : public ::testing::TestWithParam<FluoroCase> {};

TEST_P(SimFluoro, DeliversSeveralTimesWhileRunning) {
  loadScenario(R"({"detectors": [{"identifier": 23, "typeCode": 1, "exposures": [{"kind": "fluoro",
      "pollsBeforeStart": 0, "deliveries": 3, "pollsBetweenDeliveries": 1, "fluoroRunning": ")" +
               std::string(GetParam().runningRule) + R"("}]}]})");
  scanAndConnect({23});
  MBEnableMeasurement(23);
  EXPECT_TRUE(poll(23).started);
  for (std::size_t delivery = 0; delivery < 3; ++delivery) {
    if (delivery > 0) {
      EXPECT_FALSE(poll(23).data) << "a quiet poll between deliveries";
    }
    const Poll p = poll(23);
    ASSERT_TRUE(p.data) << "delivery " << delivery;
    EXPECT_EQ(p.running, GetParam().runningAtDeliveries[delivery]) << "delivery " << delivery;
    AioMeasuredData data{};
    MBGetMeasuredData(&data, 23, 0);
  }
  const Poll after = poll(23);
  EXPECT_FALSE(after.running || after.data);
  EXPECT_EQ(detectorState(23).exposuresDelivered, 1);
}

INSTANTIATE_TEST_SUITE_P(RunningRule, SimFluoro,
                         ::testing::Values(FluoroCase{"throughout", {true, true, true}},
                                           FluoroCase{"lastDelivery", {false, false, true}}));

struct DoseEnd {
  const char* endFlag;
  bool exposureEnded;
  bool autoResetDone;
};

void PrintTo(const DoseEnd& c, std::ostream* out) {
  *out << c.endFlag;
}

class SimDoseCycle : public ::testing::TestWithParam<DoseEnd> {};

TEST_P(SimDoseCycle, IntegratesThenDeliversFinalValuesOnceAndEnds) {
  loadScenario(R"({"detectors": [{"identifier": 31, "typeCode": 3, "exposures": [{"pollsBeforeStart": 0,
      "pollsBeforeData": 1, "dose": {"value": 2.5, "status": 4}, "endFlag": ")" +
               std::string(GetParam().endFlag) + R"("}]}]})");
  scanAndConnect({31});
  MBEnableMeasurement(31);
  DoseMeasuredData d{};
  const auto pass = [&] {
    status(31);
    MBGetDosimeterMeasuredData(&d, 31, 0);
  };
  pass();
  EXPECT_NE(d.exposureStarted, 0);
  EXPECT_NE(d.integrating, 0);
  EXPECT_EQ(d.dataAvailable, 0);
  pass();
  EXPECT_EQ(d.exposureStarted, 0);
  EXPECT_NE(d.integrating, 0);
  EXPECT_EQ(d.dataAvailable, 0);
  pass();
  EXPECT_NE(d.dataAvailable, 0);
  EXPECT_EQ(d.integrating, 0) << "final values";
  EXPECT_EQ(d.exposureEnded != 0, GetParam().exposureEnded);
  EXPECT_EQ(d.autoResetDone != 0, GetParam().autoResetDone);
  EXPECT_FLOAT_EQ(d.dose, 2.5F);
  EXPECT_EQ(d.doseStatus, 4);
  EXPECT_FLOAT_EQ(d.temperature, 22.5F);
  EXPECT_EQ(d.temperatureState, 1);
  pass();
  EXPECT_EQ(d.dataAvailable, 0) << "not reported twice";
  EXPECT_EQ(d.exposureEnded, 0);
  EXPECT_EQ(d.autoResetDone, 0);
  EXPECT_FLOAT_EQ(d.dose, 2.5F) << "the last values stay";
}

INSTANTIATE_TEST_SUITE_P(EndFlag, SimDoseCycle,
                         ::testing::Values(DoseEnd{"exposureEnded", true, false},
                                           DoseEnd{"autoResetDone", false, true}));

TEST_F(SimExposure, MasMeterZeroesThenRunsItsOwnCycleOnItsReads) {
  loadScenario(R"({"detectors": [{"identifier": 41, "typeCode": 2, "mas": {"exposures": [
      {"zeroingReads": 2, "pollsBeforeStart": 1, "mA": 200, "mAs": {"value": 20, "status": 6}, "pulses": 1}]}}]})");
  scanAndConnect({41});
  MBEnableMeasurement(41);
  for (int i = 0; i < 10; ++i) status(41);  // status polls do not move the mAs meter

  MasMeasuredData m{};
  struct Read {
    std::int32_t meterState;
    bool started;
    bool data;
  };
  const Read expected[] = {{kMasZeroing, false, false},
                           {kMasZeroing, false, false},
                           {1, false, false},
                           {2, true, false},
                           {1, false, true},
                           {1, false, false}};
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    MBGetmAsMeasuredData(&m, 41, 0);
    EXPECT_EQ(m.meterState, expected[i].meterState) << "read " << i;
    EXPECT_EQ(m.exposureStarted != 0, expected[i].started) << "read " << i;
    EXPECT_EQ(m.dataAvailable != 0, expected[i].data) << "read " << i;
  }
  EXPECT_FLOAT_EQ(m.mA, 200.0F);
  EXPECT_FLOAT_EQ(m.mAs, 20.0F);
  EXPECT_EQ(m.mAsStatus, 6);
  EXPECT_NE(m.waveformAvailable, 0);
}

TEST_F(SimExposure, AioWithMasRunsBothCyclesIndependently) {
  scanAndConnect({4711});
  MBEnableMeasurement(4711);
  MasMeasuredData m{};
  int masReads = 0;
  do {
    MBGetmAsMeasuredData(&m, 4711, 0);
    ++masReads;
  } while (m.dataAvailable == 0 && masReads < 20);
  EXPECT_EQ(masReads, 4) << "two quiet reads, the start, the data";
  EXPECT_EQ(detectorState(4711).exposuresDelivered, 0) << "the all-in-one part has not moved";
  EXPECT_EQ(deliverAioExposure(4711).kvpAverage, 803);
}

TEST_F(SimExposure, KeepsWhatThePlugInSent) {
  scanAndConnect({4711});
  MeasurementSettings settings{};
  settings.doseUnit = 2;
  settings.percentKV = 75;
  std::memcpy(settings.targetFilter, "Mo/Rh", 5);
  MBSetMeasurementSettings(4711, &settings);
  MBSetDetectorMode(4711, kModeMammo);
  MBSetSetup(4711, 2);
  MBSetPowerMode(4711, kPowerSleep);
  MBSetmAsInput(4711, 2);
  const SimDetectorState state = detectorState(4711);
  EXPECT_EQ(std::memcmp(&state.lastSettings, &settings, sizeof settings), 0);
  EXPECT_EQ(state.settingsReceived, 1);
  EXPECT_EQ(state.detectorMode, kModeMammo);
  EXPECT_EQ(state.setup, 2);
  EXPECT_EQ(state.powerMode, kPowerSleep);
  EXPECT_EQ(state.masInputType, 2);
  MasMeasuredData m{};
  MBGetmAsMeasuredData(&m, 4711, 0);
  EXPECT_EQ(m.inputType, 2);
}

TEST_F(SimExposure, TargetFiltersFillAtMostTheCountGiven) {
  scanAndConnect({4711});
  EXPECT_EQ(MBGetNumberOfValidTargetFilters(4711, -1), 5);
  TargetFilterName names[5]{};
  std::int32_t count = 3;
  EXPECT_EQ(MBGetValidTargetFilters(4711, names, &count), 3);
  EXPECT_EQ(count, 3);
  EXPECT_STREQ(names[2].name, "Mo/Mo");
  EXPECT_EQ(names[3].name[0], '\0') << "nothing written past the count";
  TargetFilterName name{};
  MBGetDefaultTargetFilter(4711, &name);
  EXPECT_STREQ(name.name, "W/Al");
  EXPECT_EQ(MBGetNumberOfInvalidTargetFilters(4711), 1);
  count = 5;
  MBGetAllInvalidTargetFilters(4711, names, &count);
  EXPECT_EQ(count, 1);
  EXPECT_STREQ(names[0].name, "Rh/Rh");
  EXPECT_EQ(MBGetNumberOfValidTargetFilters(4712, -1), 0) << "a dosimeter has none";
}

}  // namespace
}  // namespace rx9400::simtest
