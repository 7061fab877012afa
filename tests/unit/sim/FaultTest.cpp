// Scripted faults the plug-in's own tests do not reach: zero-error windows, waveforms and sections,
// chamber refusals.
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

TEST_F(SimFaults, WaveformNeverAvailableOrSectionMissing) {
  loadScenario(one(ownId(), 1,
                   R"("exposures": [{"pollsBeforeStart": 0}], "faults": {"waveformNeverAvailable": true})"));
  scanAndConnect({ownId()});
  deliverAio(ownId());
  WaveformParameters parameters{0, 10, 1, {0, 0}};
  EXPECT_EQ(MBSetWaveformParameters(ownId(), &parameters, 0), 0);
  EXPECT_EQ(MBGetWaveformAvailabilityStatus(ownId()), 0);
  EXPECT_FALSE(readSection(ownId()).has_value());
  loadScenario(
      one(ownId(), 5, R"("dosimeter": {"chambers": [{"name": "C"}]}, "faults": {"sectionMissing": true})"));
  scanAndConnect({ownId()});
  EXPECT_EQ(MBGetChamberFileInfo(ownId()), 8) << "the length of \"1\\t1\\tC\\t0\\t\" is given";
  EXPECT_FALSE(readSection(ownId()).has_value());
}

struct Refusal {
  const char* fault;
  int chamber, calFactor;  // what adding a chamber, then a cal factor answers
};

using SimChamberRefusal = SimTable<Refusal>;

TEST_P(SimChamberRefusal, AdditionAnswersZero) {
  loadScenario(one(64, 3,
                   R"("dosimeter": {"chambers": [{"name": "C"}]}, "faults": {")" +
                       std::string(GetParam().fault) + R"(": true})"));
  scanAndConnect({64});
  char name[15] = "N";
  CalFactor factor{};
  EXPECT_EQ((std::vector<int>{MBAddNewIonChamber(64, name), MBAddNewCalFactor(64, 1, &factor)}),
            (std::vector<int>{GetParam().chamber, GetParam().calFactor}));
}

INSTANTIATE_TEST_SUITE_P(Faults, SimChamberRefusal,
                         ::testing::Values(Refusal{"addChamberRefused", 0, 1},
                                           Refusal{"addCalFactorRefused", 2, 0}));

}  // namespace
}  // namespace rx9400::simtest
