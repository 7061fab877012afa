// Scanning, counting, describing and connecting detectors; the exposure cycles of the all-in-one
// detector, the dosimeter and the mAs meter, and the records they deliver.
#include <cctype>

#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

using SimScan = SimTest;

TEST_F(SimScan, CountsDescribesAndConnectsWhatTheCompletedScanFound) {
  loadScenario(R"({"scan": {"pollsUntilComplete": 2, "completeStatus": 5}, "usbStatus": 3, "zigBeeStatus": 4,
      "detectors": [{"identifier": 11, "typeCode": 1, "serialNumber": 1101, "firmwareVersion": [2, 14],
        "bootloaderVersion": [1, 3], "calibrationDate": "2024-02-29", "selfTestResult": 3},
      {"identifier": 13, "typeCode": 3}, {"identifier": 12, "typeCode": 1}, {"identifier": 14, "typeCode": 1, "found": false}]})");
  std::int32_t ids[] = {11, 99, 14, 13, 11};
  std::uint8_t types[5] = {};
  EXPECT_EQ(MBConnectToDetectors(ids, types, 5), 0) << "nothing scanned yet";
  EXPECT_EQ(MBGetScanCompleteStatus(), 0);
  MBScanForDetectors();
  EXPECT_EQ(MBGetNumberOfDetectors(1), 0) << "still scanning";
  EXPECT_EQ((std::vector<int>{MBGetScanCompleteStatus(), MBGetScanCompleteStatus(), MBGetScanCompleteStatus(),
                              MBGetScanCompleteStatus()}),
            (std::vector<int>{1, 1, 5, 5}));
  EXPECT_EQ(
      (std::vector<int>{MBGetNumberOfDetectors(1), MBGetNumberOfDetectors(3), MBGetNumberOfDetectors(4)}),
      (std::vector<int>{2, 1, 0}));
  DetectorInfo infos[3]{};
  ASSERT_EQ(MBGetDetectorInfoOfType(1, infos), 2);
  const DetectorInfo& i = infos[0];
  EXPECT_EQ((std::vector<int>{i.identifier, infos[1].identifier, infos[2].identifier, i.typeCode,
                              i.serialNumber, i.firstVersionMajor, i.firstVersionMinor, i.secondVersionMajor,
                              i.secondVersionMinor, i.calibrationDate.day, i.calibrationDate.month,
                              i.calibrationDate.year, i.selfTestResult}),
            (std::vector<int>{11, 12, 0, 1, 1101, 2, 14, 1, 3, 29, 2, 2024, 3}));
  EXPECT_EQ((std::vector<int>{MBGetUSBStatus(), MBGetZigBeeStatus()}), (std::vector<int>{3, 4}));
  EXPECT_EQ(MBConnectToDetectors(ids, types, 5), 2) << "unknown, not found and repeated ones do not count";
  EXPECT_EQ(
      (std::vector<int>{status(11).connectionState, status(12).connectionState, status(13).connectionState}),
      (std::vector<int>{kConnected, 0, kConnected}));
  MBStopScanningAndReset();
  EXPECT_EQ(
      (std::vector<int>{MBGetScanCompleteStatus(), MBGetNumberOfDetectors(1), status(11).connectionState}),
      (std::vector<int>{0, 0, 0}));
}

struct Cycle {
  const char* name;
  std::string scenario;
  const char* trace;
  bool disarm = false;  // disarmed again right after arming
};

using SimCycle = SimTable<Cycle>;

/// Arms detector 21 and polls it, reading its data whenever a poll
/// reports them. One character per poll: '.' nothing, 's' started, 'd' data; ':', 'S', 'D' the same
/// while fluoroscopy runs.
TEST_P(SimCycle, PollsReportStartAndDataOnceEachInTheirTurn) {
  loadScenario(GetParam().scenario);
  scanAndConnect({21});
  MBEnableMeasurement(21);
  if (GetParam().disarm) MBDisableMeasurement(21);
  std::string trace;
  while (trace.size() < std::strlen(GetParam().trace)) {
    const DetectorStatus s = status(21);
    const char c = s.dataAvailable != 0 ? 'd' : s.exposureStarted != 0 ? 's' : '.';
    trace += s.fluoroRunning == 0 ? c : c == '.' ? ':' : static_cast<char>(std::toupper(c));
    AioMeasuredData aio{};
    DoseMeasuredData dose{};
    if (c == 'd' && MBGetMeasuredData(&aio, 21, 0) == 0) MBGetDosimeterMeasuredData(&dose, 21, 0);
  }
  EXPECT_EQ(trace, GetParam().trace);
}

INSTANTIATE_TEST_SUITE_P(
    Exposures, SimCycle,
    ::testing::Values(
        Cycle{"at_once", one(21, 1, R"("exposures": [{"pollsBeforeStart": 0}])"), "sd...."},
        Cycle{"quiet_polls_then_data_later",
              one(21, 1, R"("exposures": [{"pollsBeforeStart": 2, "pollsBeforeData": 1}])"), "..s.d..."},
        Cycle{"disarmed", one(21, 1, R"("exposures": [{"pollsBeforeStart": 0}])"), "......", true},
        Cycle{"in_order", one(21, 1, R"("pollsBeforeExposure": 1, "exposures": [{}, {}])"), ".sd.sd...."},
        Cycle{"repeated", one(21, 1, R"("repeatExposures": true, "exposures": [{"pollsBeforeStart": 0}])"),
              "sdsdsd"},
        Cycle{"fluoro_throughout", one(21, 1, R"("exposures": [{"kind": "fluoro", "pollsBeforeStart": 0,
              "deliveries": 3, "pollsBetweenDeliveries": 1}])"),
              "SD:D:D.."},
        Cycle{"fluoro_last_delivery", one(21, 1, R"("exposures": [{"kind": "fluoro", "pollsBeforeStart": 0,
              "deliveries": 3, "pollsBetweenDeliveries": 1, "fluoroRunning": "lastDelivery"}])"),
              "sd.d:D.."},
        Cycle{"dosimeter", one(21, 3, R"("exposures": [{"pollsBeforeStart": 0, "pollsBeforeData": 1}])"),
              "s.d..."},
        Cycle{"zero_error_holds_it", one(21, 1, R"("exposures": [{"pollsBeforeStart": 1}],
              "faults": {"zeroError": {"fromPoll": 2, "polls": 2}})"),
              "...sd.."}));

using SimRecords = SimTest;

TEST_F(SimRecords, AllInOneRecordCarriesEachValueWithItsStatusAndWaitsForTheRead) {
  loadScenario(one(21, 1, R"("exposures": [{"pollsBeforeStart": 0, "kvpMaximum": {"value": 1500, "status": 3},
      "dose": {"value": 12, "status": 5}, "hvl": {"value": 35, "status": 2}}])"));
  scanAndConnect({21});
  MBEnableMeasurement(21);
  EXPECT_EQ((std::vector<int>{status(21).dataAvailable, status(21).dataAvailable, status(21).dataAvailable}),
            (std::vector<int>{0, kVBTrue, kVBTrue}));
  AioMeasuredData d{};
  AioMeasuredData again{};
  EXPECT_EQ(MBGetMeasuredData(&d, 21, 0), 1);
  EXPECT_EQ((std::vector<int>{d.kvpAverage, d.kvpAverageStatus, d.kvpMaximum, d.kvpMaximumStatus, d.dose,
                              d.doseStatus, d.hvl, d.hvlStatus, status(21).dataAvailable}),
            (std::vector<int>{803, kValueValid, 1500, kValueOverRange, 12, kValueUnderRange, 35, 2, 0}));
  MBGetMeasuredData(&again, 21, 0);
  EXPECT_EQ(std::memcmp(&again, &d, sizeof d), 0) << "read again, the last values";
}

using SimDoseEnd = SimTable<const char*>;

/// One string per dosimeter read: exposureStarted, integrating, dataAvailable, exposureEnded, autoResetDone.
TEST_P(SimDoseEnd, DosimeterIntegratesThenDeliversFinalValuesOnceWithItsEndFlag) {
  loadScenario(one(31, 3,
                   R"("exposures": [{"pollsBeforeStart": 0, "pollsBeforeData": 1,
      "dose": {"value": 2.5, "status": 4}, "endFlag": ")" +
                       std::string(GetParam()) + "\"}]"));
  scanAndConnect({31});
  MBEnableMeasurement(31);
  std::vector<std::string> reads;
  DoseMeasuredData d{};
  for (int i = 0; i < 4; ++i) {
    status(31);
    MBGetDosimeterMeasuredData(&d, 31, 0);
    reads.push_back(std::string() + "01"[d.exposureStarted != 0] + "01"[d.integrating != 0] +
                    "01"[d.dataAvailable != 0] + "01"[d.exposureEnded != 0] + "01"[d.autoResetDone != 0]);
  }
  const bool ended = std::string(GetParam()) == "exposureEnded";
  EXPECT_EQ(reads, (std::vector<std::string>{"11000", "01000", ended ? "00110" : "00101", "00000"}));
  EXPECT_EQ((std::vector<float>{d.dose, float(d.doseStatus), d.temperature}),
            (std::vector<float>{2.5F, 4, 22.5F}))
      << "the last values stay; the sensors show";
}

INSTANTIATE_TEST_SUITE_P(Flags, SimDoseEnd, ::testing::Values("exposureEnded", "autoResetDone"));

TEST_F(SimRecords, MasMeterZeroesThenRunsItsOwnCycleOnItsReadsAlone) {
  loadScenario(one(41, 4, R"("exposures": [{"pollsBeforeStart": 0}], "mas": {"exposures": [{"zeroingReads": 2,
      "pollsBeforeStart": 1, "mA": 200, "mAs": {"value": 20, "status": 6}}]})"));
  scanAndConnect({41});
  MBEnableMeasurement(41);
  for (int i = 0; i < 10; ++i) status(41);  // status polls do not move the mAs meter
  MasMeasuredData m{};
  std::vector<std::string> reads;  // meterState, 's' started, 'd' data
  for (int i = 0; i < 6; ++i) {
    MBGetmAsMeasuredData(&m, 41, 0);
    reads.push_back(std::to_string(m.meterState) + ".s"[m.exposureStarted != 0] + ".d"[m.dataAvailable != 0]);
  }
  EXPECT_EQ(reads, (std::vector<std::string>{"8..", "8..", "1..", "2s.", "1.d", "1.."}));
  EXPECT_EQ((std::vector<float>{m.mA, m.mAs, float(m.mAsStatus), float(m.waveformAvailable != 0)}),
            (std::vector<float>{200, 20, 6, 1}));
  EXPECT_EQ(detectorState(41).exposuresDelivered, 0) << "the all-in-one part's data were never read";
}

TEST_F(SimRecords, KeepsWhatThePlugInSentAndGivesTheTargetFilters) {
  scanAndConnect({4711});
  EXPECT_EQ(detectorState(4711).powerMode, kPowerWake) << "awake from the connection on";
  MeasurementSettings settings{};
  settings.percentKV = 75;
  std::memcpy(settings.targetFilter, "Mo/Rh", 5);
  MBSetMeasurementSettings(4711, &settings);
  MBSetDetectorMode(4711, kModeMammo);
  MBSetSetup(4711, 2);
  MBSetPowerMode(4711, kPowerSleep);
  MBSetmAsInput(4711, 3);
  const SimDetectorState s = detectorState(4711);
  EXPECT_EQ(std::memcmp(&s.lastSettings, &settings, sizeof settings), 0);
  EXPECT_EQ((std::vector<int>{s.settingsReceived, s.detectorMode, s.setup, s.powerMode, s.masInputType}),
            (std::vector<int>{1, kModeMammo, 2, kPowerSleep, 3}));

  TargetFilterName names[5]{};
  std::int32_t count = 3;
  EXPECT_EQ(MBGetNumberOfValidTargetFilters(4711, -1), 5);
  EXPECT_EQ(MBGetValidTargetFilters(4711, names, &count), 3);
  EXPECT_EQ(std::string(names[2].name) + "|" + names[3].name, "Mo/Mo|") << "nothing past the count";
  MBGetDefaultTargetFilter(4711, &names[0]);
  count = 5;
  MBGetAllInvalidTargetFilters(4711, &names[1], &count);
  EXPECT_EQ(std::string(names[0].name) + "|" + names[1].name + "|" + std::to_string(count), "W/Al|Rh/Rh|1");
  EXPECT_EQ(MBGetNumberOfValidTargetFilters(4712, -1), 0) << "a dosimeter has none";
}

}  // namespace
}  // namespace rx9400::simtest
