// The typed wrapper against the simulator: records come back whole, constant arguments reach the
// library as it expects them, and buffers the library fills are never overrun.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "fakes/SimulatorFakes.h"

namespace rx9400 {
namespace {

using testing::Simulator;

/// Connects the default scenario's detectors; answers the identifier of the one of `kind`.
std::int32_t connectedOfKind(MBdllFunctions& library, std::int32_t kind) {
  const auto connected = testing::connectAllDetectors(library);
  for (std::size_t i = 0; i < connected.kinds.size(); ++i) {
    if (connected.kinds[i] == kind) return connected.found[i].identifier;
  }
  ADD_FAILURE() << "no detector of kind " << kind;
  return 0;
}

TEST(DeviceWrapper, ConstantArgumentsReachTheLibraryAsItExpectsThem) {
  Simulator simulator;
  MBdllFunctions& library = simulator.library();
  const std::int32_t id = connectedOfKind(library, 4);
  simulator.clearCalls();

  library.MBGetBatteryStatus(id);
  library.MBGetNumberOfValidTargetFilters(id);
  library.MBGetMeasuredData(id);
  library.MBGetmAsMeasuredData(id);
  library.MBGetNumberOfDataPoints(id);
  WaveformParameters parameters{0, 10, 1, {}};
  library.MBSetWaveformParameters(id, parameters);

  const std::string n = std::to_string(id);
  EXPECT_EQ(simulator.calls(),
            (std::vector<std::string>{
                "MBGetBatteryStatus(*, " + n + ", -1)", "MBGetNumberOfValidTargetFilters(" + n + ", -1)",
                "MBGetMeasuredData(*, " + n + ", 0)", "MBGetmAsMeasuredData(*, " + n + ", 0)",
                "MBGetNumberOfDataPoints(" + n + ", 0)", "MBSetWaveformParameters(" + n + ", {0,10,1}, 0)"}));
}

TEST(DeviceWrapper, TargetFilterListsNeverExceedTheRoomGivenNorWhatTheLibraryWrote) {
  Simulator simulator;
  MBdllFunctions& library = simulator.library();
  const std::int32_t id = connectedOfKind(library, 4);
  const std::int32_t valid = library.MBGetNumberOfValidTargetFilters(id);
  ASSERT_GE(valid, 2) << "the default all-in-one detector offers several target/filter combinations";

  const std::pair<std::int32_t, std::int32_t> cases[] = {
      {valid + 5, valid}, {valid, valid}, {1, 1}, {0, 0}, {-3, 0}};
  for (const auto& [capacity, expected] : cases) {
    SCOPED_TRACE("capacity " + std::to_string(capacity));
    const auto names = library.MBGetValidTargetFilters(id, capacity);
    EXPECT_EQ(names.size(), static_cast<std::size_t>(expected));
    for (const auto& name : names) EXPECT_NE(name.name[0], '\0');
  }
  const TargetFilterName fallback = library.MBGetDefaultTargetFilter(id);
  EXPECT_NE(fallback.name[0], '\0');
}

TEST(DeviceWrapper, AFullLengthChamberNameArrivesWithItsFifteenCharactersOnly) {
  Simulator simulator;
  MBdllFunctions& library = simulator.library();
  const std::int32_t dosimeter = connectedOfKind(library, 3);
  ChamberName name{};
  std::memcpy(name.data(), "ABCDEFGHIJKLMNO", 15);  // exactly fifteen characters, no terminator
  const std::int16_t chamber = library.MBAddNewIonChamber(dosimeter, name);
  ASSERT_GE(chamber, 1);
  EXPECT_NE(simulator.chamberFile(dosimeter).find("\tABCDEFGHIJKLMNO\t"), std::string::npos);
}

}  // namespace
}  // namespace rx9400
