// The call log: one line per call in call order, arguments written so that tests can assert on them.
#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

using SimCallLog = SimTest;

TEST_F(SimCallLog, RecordsEveryCallInOrderWithItsArguments) {
  MBRegisterApplication(1);
  MBScanForDetectors();
  while (MBGetScanCompleteStatus() == 1) {
  }
  std::int32_t ids[] = {4711, 4712};
  std::uint8_t types[] = {4, 3};
  MBConnectToDetectors(ids, types, 2);
  BatteryStatus battery{};
  MBGetBatteryStatus(&battery, 4711, -1);
  WaveformParameters parameters{5, 10, 2, {0, 0}};
  MBSetWaveformParameters(4711, &parameters, 0);
  char name[15] = "IC-C";
  MBAddNewIonChamber(4712, name);
  std::int32_t block[26];
  MBPauseUpdateThread();
  MBGetmAsNumberOfDataPoints(4711, block);
  MBResumeUpdateThread();
  MBStartWFDownload(4711, 1);
  MBGetmAsWaveFormDataPoints(4711, 0, 2, 26, block);
  MBGetDetectorStatus(nullptr, -5);
  SimLibraryState state{};
  SimGetLibraryState(&state);  // control calls are not logged
  MBCloseApplication();
  EXPECT_EQ(logLines(),
            (std::vector<std::string>{
                "MBRegisterApplication(1)", "MBScanForDetectors()", "MBGetScanCompleteStatus()",
                "MBGetScanCompleteStatus()", "MBGetScanCompleteStatus()", "MBGetScanCompleteStatus()",
                "MBConnectToDetectors([4711,4712], [4,3], 2)", "MBGetBatteryStatus(*, 4711, -1)",
                "MBSetWaveformParameters(4711, {5,10,2}, 0)", "MBAddNewIonChamber(4712, \"IC-C\")",
                "MBPauseUpdateThread()", "MBGetmAsNumberOfDataPoints(4711, *)", "MBResumeUpdateThread()",
                "MBStartWFDownload(4711, 1)", "MBGetmAsWaveFormDataPoints(4711, 0, 2, 26, *)",
                "MBGetDetectorStatus(null, -5)", "MBCloseApplication()"}));
  EXPECT_EQ(state.logLines, 16);
}

TEST_F(SimCallLog, IsCutToTheBufferClearedOnLoadAndNotesAClosingWithThePauseOpen) {
  MBGetUSBStatus();
  char small[6] = "xxxxx";
  EXPECT_EQ(SimGetCallLog(small, 6), 18) << "\"MBGetUSBStatus()\\n\" and the zero byte";
  EXPECT_STREQ(small, "MBGet");
  SimClearCallLog();
  MBPauseUpdateThread();
  MBCloseApplication();
  const auto lines = logLines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[2].rfind("! MBCloseApplication while the update thread is paused", 0), 0u) << lines[2];
  loadScenario("");
  EXPECT_TRUE(logLines().empty()) << "loading a scenario starts a fresh log";
}

}  // namespace
}  // namespace rx9400::simtest
