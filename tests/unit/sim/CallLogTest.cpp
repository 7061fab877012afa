// The call log: one line per call in call order, arguments written so that tests can assert on them.
#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

using SimCallLog = SimTest;

TEST_F(SimCallLog, RecordsEveryCallInOrderWithItsArguments) {
  MBRegisterApplication(1);
  scanToCompletion();
  MBGetNumberOfDetectors(4);
  std::int32_t ids[] = {4711, 4712};
  std::uint8_t types[] = {4, 3};
  MBConnectToDetectors(ids, types, 2);
  DetectorStatus status{};
  MBGetDetectorStatus(&status, 4711);
  BatteryStatus battery{};
  MBGetBatteryStatus(&battery, 4711, -1);
  WaveformParameters parameters{5, 10, 2, {0, 0}};
  MBSetWaveformParameters(4711, &parameters, 0);
  char name[15] = {'I', 'C', '-', 'C'};
  MBAddNewIonChamber(4712, name);
  MBStartWFDownload(4711, 1);
  std::int32_t block[26];
  MBGetmAsWaveFormDataPoints(4711, 0, 2, 26, block);
  MBGetDetectorStatus(nullptr, -5);
  MBCloseApplication();

  const std::vector<std::string> expected = {
      "MBRegisterApplication(1)",
      "MBScanForDetectors()",
      "MBGetScanCompleteStatus()",
      "MBGetScanCompleteStatus()",
      "MBGetScanCompleteStatus()",
      "MBGetScanCompleteStatus()",
      "MBGetNumberOfDetectors(4)",
      "MBConnectToDetectors([4711,4712], [4,3], 2)",
      "MBGetDetectorStatus(*, 4711)",
      "MBGetBatteryStatus(*, 4711, -1)",
      "MBSetWaveformParameters(4711, {5,10,2}, 0)",
      "MBAddNewIonChamber(4712, \"IC-C\")",
      "MBStartWFDownload(4711, 1)",
      "MBGetmAsWaveFormDataPoints(4711, 0, 2, 26, *)",
      "MBGetDetectorStatus(null, -5)",
      "MBCloseApplication()",
  };
  EXPECT_EQ(logLines(), expected);
}

TEST_F(SimCallLog, ControlCallsAreNotLoggedAndClearingEmptiesIt) {
  MBGetZigBeeStatus();
  SimLibraryState state{};
  SimGetLibraryState(&state);
  SimDetectorState detector{};
  SimGetDetectorState(4711, &detector);
  EXPECT_EQ(logLines(), std::vector<std::string>{"MBGetZigBeeStatus()"});
  EXPECT_EQ(state.logLines, 1);
  SimClearCallLog();
  EXPECT_TRUE(logLines().empty());
  MBGetZigBeeStatus();
  loadScenario("");
  EXPECT_TRUE(logLines().empty()) << "loading a scenario starts a fresh log";
}

TEST_F(SimCallLog, ClosingWithThePauseOpenIsNoted) {
  MBPauseUpdateThread();
  MBCloseApplication();
  const auto lines = logLines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1], "MBCloseApplication()");
  EXPECT_EQ(lines[2].rfind("! MBCloseApplication while the update thread is paused", 0), 0u) << lines[2];
}

}  // namespace
}  // namespace rx9400::simtest
