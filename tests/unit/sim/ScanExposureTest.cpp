// Scanning, counting, describing and connecting detectors; the exposure cycles of the all-in-one
// detector, the dosimeter and the mAs meter, and the records they deliver.
#include <cctype>

#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

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

}  // namespace
}  // namespace rx9400::simtest
