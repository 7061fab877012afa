// Scanning for detectors, counting and describing them, and connecting them.
#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

const char* const kThreeDetectors = R"({
  "usbStatus": 3, "zigBeeStatus": 4,
  "detectors": [
    {"identifier": 11, "typeCode": 1, "serialNumber": 1101, "firmwareVersion": [2, 14], "bootloaderVersion": [1, 3],
     "calibrationDate": "2024-02-29", "calibrationDueDate": "2025-03-01", "selfTestResult": 3},
    {"identifier": 13, "typeCode": 3, "serialNumber": 1301},
    {"identifier": 12, "typeCode": 1, "serialNumber": 1201},
    {"identifier": 14, "typeCode": 1, "found": false}
  ]})";

class SimScanPolls : public ::testing::TestWithParam<int> {};

TEST_P(SimScanPolls, CompletesAfterTheConfiguredNumberOfPolls) {
  loadScenario(R"({"scan": {"pollsUntilComplete": )" + std::to_string(GetParam()) +
               R"(, "completeStatus": 5}, "detectors": []})");
  EXPECT_EQ(MBGetScanCompleteStatus(), 0) << "before any scan";
  MBScanForDetectors();
  for (int poll = 1; poll <= GetParam(); ++poll) ASSERT_EQ(MBGetScanCompleteStatus(), 1) << "poll " << poll;
  EXPECT_EQ(MBGetScanCompleteStatus(), 5);
  EXPECT_EQ(MBGetScanCompleteStatus(), 5) << "stays done";
}

INSTANTIATE_TEST_SUITE_P(Polls, SimScanPolls, ::testing::Values(0, 1, 3, 7));

using SimScan = SimTest;

TEST_F(SimScan, CountsByTypeCodeOnlyAfterCompletionAndNoneAfterReset) {
  loadScenario(kThreeDetectors);
  MBScanForDetectors();
  EXPECT_EQ(MBGetNumberOfDetectors(1), 0) << "still scanning";
  scanToCompletion();
  const std::uint8_t expected[] = {2, 0, 1, 0, 0};
  for (std::int32_t type = 1; type <= 5; ++type)
    EXPECT_EQ(MBGetNumberOfDetectors(type), expected[type - 1]) << type;

  MBStopScanningAndReset();
  EXPECT_EQ(MBGetScanCompleteStatus(), 0);
  for (std::int32_t type = 1; type <= 5; ++type) EXPECT_EQ(MBGetNumberOfDetectors(type), 0) << type;
}

TEST_F(SimScan, NeverCompletesWhenTheScenarioSaysSo) {
  loadScenario(
      R"({"faults": {"scanNeverCompletes": true}, "detectors": [{"identifier": 1, "typeCode": 1}]})");
  EXPECT_EQ(scanToCompletion(500), 500);
  EXPECT_EQ(MBGetNumberOfDetectors(1), 0);
}

TEST_F(SimScan, DescribesTheDetectorsOfATypeInScenarioOrder) {
  loadScenario(kThreeDetectors);
  scanToCompletion();
  DetectorInfo infos[3]{};
  EXPECT_EQ(MBGetDetectorInfoOfType(1, infos), 2);
  EXPECT_EQ(infos[0].identifier, 11);
  EXPECT_EQ(infos[1].identifier, 12);
  EXPECT_EQ(infos[2].identifier, 0) << "the detector not found is not listed";
  EXPECT_EQ(infos[0].typeCode, 1);
  EXPECT_EQ(infos[0].serialNumber, 1101);
  EXPECT_EQ(infos[0].firstVersionMajor, 2);
  EXPECT_EQ(infos[0].firstVersionMinor, 14);
  EXPECT_EQ(infos[0].secondVersionMajor, 1);
  EXPECT_EQ(infos[0].secondVersionMinor, 3);
  EXPECT_EQ(infos[0].calibrationDate.day, 29);
  EXPECT_EQ(infos[0].calibrationDate.month, 2);
  EXPECT_EQ(infos[0].calibrationDate.year, 2024);
  EXPECT_EQ(infos[0].calibrationDueDate.month, 3);
  EXPECT_EQ(infos[0].selfTestResult, 3);
}

TEST_F(SimScan, DefaultScenarioHoldsACalibratedAioWithMasAndADosimeter) {
  scanToCompletion();
  DetectorInfo aio{};
  DetectorInfo dose{};
  ASSERT_EQ(MBGetDetectorInfoOfType(4, &aio), 1);
  ASSERT_EQ(MBGetDetectorInfoOfType(3, &dose), 1);
  EXPECT_EQ(aio.identifier, 4711);
  EXPECT_EQ(dose.identifier, 4712);
  for (const DetectorInfo& info : {aio, dose}) {
    EXPECT_EQ(info.selfTestResult, 0);
    EXPECT_GE(info.calibrationDueDate.year, 2027);
    EXPECT_NE(info.serialNumber, 0);
  }
}

TEST_F(SimScan, ConnectsOnlyDetectorsTheScanFound) {
  loadScenario(kThreeDetectors);
  std::int32_t ids[] = {11, 13};
  std::uint8_t types[] = {1, 3};
  EXPECT_EQ(MBConnectToDetectors(ids, types, 2), 0) << "nothing scanned yet";

  EXPECT_EQ(scanAndConnect({11, 99, 14, 13, 11}), 2)
      << "unknown, not found and repeated identifiers do not count";
  EXPECT_EQ(status(11).connectionState, kConnected);
  EXPECT_EQ(status(13).connectionState, kConnected);
  EXPECT_EQ(status(12).connectionState, 0);
  EXPECT_EQ(status(14).connectionState, 0);
  EXPECT_EQ(MBGetUSBStatus(), 3);
  EXPECT_EQ(MBGetZigBeeStatus(), 4);

  MBStopScanningAndReset();
  EXPECT_EQ(status(11).connectionState, 0) << "a reset drops the connections";
}

TEST_F(SimScan, ConnectFailsWhenTheScenarioSaysSo) {
  loadScenario(R"({"faults": {"connectFails": true}, "detectors": [{"identifier": 1, "typeCode": 1}]})");
  EXPECT_EQ(scanAndConnect({1}), 0);
  EXPECT_EQ(status(1).connectionState, 0);
}

TEST_F(SimScan, StatusCarriesTheBatteryAndPowerOfAConnectedDetector) {
  scanAndConnect({4711});
  const DetectorStatus s = status(4711);
  BatteryStatus battery{};
  EXPECT_EQ(MBGetBatteryStatus(&battery, 4711, -1), 1);
  EXPECT_EQ(s.battery.chargePercent, 80);
  EXPECT_EQ(battery.chargePercent, 80);
  EXPECT_EQ(battery.chargingState, 0);
  EXPECT_EQ(s.powerMode, kPowerWake);
  EXPECT_EQ(s.measurementState, 0) << "not armed";
}

}  // namespace
}  // namespace rx9400::simtest
