// Scripted faults the plug-in's own tests do not reach: zero-error windows, waveforms and sections, the
// mAs link lost during a download.
#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

using SimFaults = SimTest;

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

struct WaveformFault {
  const char* faults;
  std::int32_t points;                           // recorded, and asked for
  std::int64_t answer, available, sectionBytes;  // sectionBytes -1: no section
};

using SimWaveformFault = SimTable<WaveformFault>;

TEST_P(SimWaveformFault, ShowsInTheAnswerTheAvailabilityAndTheSection) {
  const WaveformFault f = GetParam();
  loadScenario(one(ownId(), 1,
                   R"("exposures": [{"pollsBeforeStart": 0, "waveform": {"points": )" +
                       std::to_string(f.points) + R"(}}], "faults": )" + f.faults));
  scanAndConnect({ownId()});
  deliverAio(ownId());
  WaveformParameters all{0, f.points, 1, {0, 0}};
  const std::int64_t answer = MBSetWaveformParameters(ownId(), &all, 0);
  const auto section = readSection(ownId());
  EXPECT_EQ((std::vector<std::int64_t>{answer, MBGetWaveformAvailabilityStatus(ownId()),
                                       section ? static_cast<std::int64_t>(section->size()) : -1}),
            (std::vector<std::int64_t>{f.answer, f.available, f.sectionBytes}));
}

// A short section is cut to whole 4096-byte pages, so that a view of all points fails on Windows too.
INSTANTIATE_TEST_SUITE_P(
    Faults, SimWaveformFault,
    ::testing::Values(WaveformFault{R"({"waveformNeverAvailable": true})", 3000, 0, 0, -1},
                      WaveformFault{R"({"sectionMissing": true})", 3000, 1, 1, -1},
                      WaveformFault{R"({"sectionShortBy": 1})", 3000, 1, 1, 8192},
                      WaveformFault{R"({"sectionShortBy": 1})", 1025, 1, 1, 4096},
                      WaveformFault{R"({"sectionShortBy": 2})", 1025, 1, 1, -1}));  // not a page left

TEST_F(SimFaults, MasLinkLossShowsFromTheKthBlockUntilTheNextDownloadStarts) {
  loadScenario(one(
      66, 2, R"("mas": {"exposures": [{"pollsBeforeStart": 0}]}, "faults": {"masLinkLossAfterBlocks": 2})"));
  scanAndConnect({66});
  MBEnableMeasurement(66);
  MasMeasuredData m{};
  for (int read = 0; read < 2; ++read) MBGetmAsMeasuredData(&m, 66, 0);  // started, then delivered
  std::int32_t block[26];
  std::vector<std::int32_t> seen;  // connection states and block answers
  const auto poll = [&] { seen.push_back(status(66).connectionState); };
  const auto read = [&] { seen.push_back(MBGetmAsWaveFormDataPoints(66, 0, 1, 26, block)); };
  MBStartWFDownload(66, 1);
  poll(), read(), poll(), read(), poll(), read();
  MBStartWFDownload(66, 0);
  poll();
  MBStartWFDownload(66, 1);
  poll(), read();
  EXPECT_EQ(seen, (std::vector<std::int32_t>{1, 26, 1, 26, 2, 0, 2, 1, 26}));
}

}  // namespace
}  // namespace rx9400::simtest
