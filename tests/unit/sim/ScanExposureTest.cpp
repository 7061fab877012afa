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

}  // namespace
}  // namespace rx9400::simtest
