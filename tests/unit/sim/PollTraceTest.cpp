// What the status polls report: the exposure cycles of the all-in-one detector and the dosimeter, and
// the zero-error windows with the ways to clear them.
#include "SimTestSupport.h"

namespace rx9400::simtest {
namespace {

struct Polls {
  int typeCode;
  std::string fields;   // of detector 21
  const char* actions;  // before each poll: 'x' disarm, 'r' disarm and arm again, 'p' shut down
  const char* trace;
};

using SimPolls = SimTable<Polls>;

/// Arms detector 21 and polls it, reading its data whenever a poll reports them. One character per poll:
/// '.' nothing, 's' started, 'd' data; ':', 'S', 'D' the same while fluoroscopy runs; '7' a zero error.
TEST_P(SimPolls, ReportStartDataAndZeroErrorsInTheirTurn) {
  connect(21, one(21, GetParam().typeCode, GetParam().fields));
  MBEnableMeasurement(21);
  std::string trace;
  for (const char* action = GetParam().actions; trace.size() < std::strlen(GetParam().trace);) {
    const char act = trace.size() < std::strlen(action) ? action[trace.size()] : '.';
    if (act == 'x' || act == 'r') MBDisableMeasurement(21);
    if (act == 'r') MBEnableMeasurement(21);
    if (act == 'p') MBSetPowerMode(21, kPowerShutDown);
    const DetectorStatus s = status(21);
    const int c = s.dataAvailable != 0 ? 2 : s.exposureStarted != 0 ? 1 : 0;
    trace += s.measurementState == kMeasurementZeroError ? '7' : ".sd:SD"[c + (s.fluoroRunning != 0 ? 3 : 0)];
    AioMeasuredData aio{};
    DoseMeasuredData dose{};
    if (c == 2 && MBGetMeasuredData(&aio, 21, 0) == 0) MBGetDosimeterMeasuredData(&dose, 21, 0);
  }
  EXPECT_EQ(trace, GetParam().trace);
}

const std::string kFluoro =
    R"("exposures": [{"kind": "fluoro", "pollsBeforeStart": 0, "deliveries": 3, "pollsBetweenDeliveries": 1)";

INSTANTIATE_TEST_SUITE_P(
    Polls, SimPolls,
    ::testing::ValuesIn(std::vector<Polls>{
        {1, R"("exposures": [{"pollsBeforeStart": 0}])", "", "sd...."},
        {1, R"("exposures": [{"pollsBeforeStart": 2, "pollsBeforeData": 1}])", "", "..s.d..."},
        {1, R"("exposures": [{"pollsBeforeStart": 0}])", "x", "......"},
        {1, R"("pollsBeforeExposure": 1, "exposures": [{}, {}])", "", ".sd.sd...."},
        {1, R"("repeatExposures": true, "exposures": [{"pollsBeforeStart": 0}])", "", "sdsdsd"},
        {1, kFluoro + "}]", "", "SD:D:D.."},
        {1, kFluoro + R"(, "fluoroRunning": "lastDelivery"}])", "", "sd.d:D.."},
        {3, R"("exposures": [{"pollsBeforeStart": 0, "pollsBeforeData": 1}])", "", "s.d..."},
        // Zero-error windows, cleared by shutting down or by arming again.
        {1, R"("faults": {"zeroError": {"fromPoll": 2}})", "", ".7777"},
        {1, R"("faults": {"zeroError": {"fromPoll": 1, "polls": 2}})", "", "77.."},
        {1, R"("faults": {"zeroError": true})", "..p", "77.."},
        {1, R"("faults": {"zeroError": true})", "...r", "777."},
        {1, R"("exposures": [{"pollsBeforeStart": 1}], "faults": {"zeroError": {"fromPoll": 2, "polls": 2}})",
         "", ".77sd.."}}));

}  // namespace
}  // namespace rx9400::simtest
