// The plug-in against the simulator in chaos mode (sim/Chaos.h): every member of the list, in a new
// random order each round, 100 000 calls in all, with CheckDataStatus polled after each as the
// executive's timer does, and the clock a second further on each time. No member may throw, hang, or
// touch memory it does not own (the native-asan preset runs this under AddressSanitizer and
// UndefinedBehaviorSanitizer).
//
// RX9400_CHAOS_PASSES sets the number of member calls; TAMSA_SIM_CHAOS ("seed[,rate[,delay]]") replaces
// the simulator's seed and rate.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "World.h"

namespace rx9400::reliability {
namespace {

using testing::Simulator;

constexpr std::uint64_t kSeed = 20261124;
const std::int32_t kAio = rigAio();    // all-in-one detector with mAs meter (type 4)
const std::int32_t kDose = rigDose();  // dosimeter (type 3)

long passes() {
  const char* text = std::getenv("RX9400_CHAOS_PASSES");
  return text != nullptr ? std::strtol(text, nullptr, 10) : 100000;
}

/// The rig's scenario, its library spoiling one call in five.
std::string chaosScenario() {
  return rigScenario(R"("chaos": {"seed": )" + std::to_string(kSeed) +
                     R"(, "rate": 0.2, "vanishCalls": 6},)");
}

/// Whether the plug-in's table and the library still hold both detectors, connected.
bool connected(Simulator& simulator, World& world) {
  const SharedState& state = world.context.state;
  return state.slotCount() == 2 && state.identifierAt(0) == kAio && state.identifierAt(1) == kDose &&
         simulator.detector(kAio).connectionState == 1 && simulator.detector(kDose).connectionState == 1;
}

/// A session with both detectors connected and armed, straight through the library (its answers may
/// be spoiled, what the calls do is not), and the plug-in's table holding them.
void reconnect(Simulator& simulator, World& world) {
  MBdllFunctions& library = simulator.library();
  library.MBRegisterApplication(1);
  library.MBScanForDetectors();
  for (int poll = 0; poll < 10; ++poll) library.MBGetScanCompleteStatus();
  std::vector<std::int32_t> ids{kAio, kDose};
  std::vector<std::uint8_t> types{4, 3};
  library.MBConnectToDetectors(ids, types);
  ASSERT_EQ(simulator.detector(kAio).connectionState + simulator.detector(kDose).connectionState, 2);
  library.MBEnableMeasurement(kAio);
  library.MBEnableMeasurement(kDose);
  DetectorInfo aio{};
  aio.identifier = kAio;
  aio.typeCode = 4;
  DetectorInfo dose{};
  dose.identifier = kDose;
  dose.typeCode = 3;
  world.context.state.setConnectedDetectors({aio, dose}, {4, 3});
}

/// A new round: what the fakes and the library recorded in the last one is of no further use.
void forget(Simulator& simulator, World& world) {
  testing::TestPlatform& platform = world.platform;
  platform.trace.lines.clear();
  platform.boxes.shown.clear();
  platform.notices.boxes.clear();
  platform.sound.calls.clear();
  platform.windows.calls.clear();
  world.events.events.clear();
  simulator.clearCalls();
  // The round's first message box is cancelled, the others answered OK.
  platform.boxes.answers.assign({kAnswerCancel});
  // A scan the member starts ends with every row the connect dialog lists ticked and connected.
  auto& connect = *platform.dialogs.connect;
  if (connect.scripts.empty()) connect.scripts.push_back(connectEveryRow);
}

TEST(ChaosSweep, EveryMemberReturnsWhateverTheLibraryAnswers) {
  Simulator simulator(chaosScenario());
  World world(MBdllFunctions::forLibraryAt(RX9400_SIMULATOR_PATH));
  ASSERT_NO_FATAL_FAILURE(reconnect(simulator, world));
  forget(simulator, world);

  // The library misbehaves at all: some status records are not a library's.
  int oddRecords = 0;
  for (int call = 0; call < 500; ++call) {
    oddRecords += simulator.library().MBGetDetectorStatus(kAio).connectionState > 2 ? 1 : 0;
  }
  ASSERT_GT(oddRecords, 0) << "chaos mode is off";

  const auto list = members();
  const Member& poll = *std::find_if(
      list.begin(), list.end(), [](const Member& m) { return std::string(m.name) == "CheckDataStatus"; });
  std::vector<std::size_t> order(list.size());
  std::iota(order.begin(), order.end(), 0);
  std::mt19937_64 shuffle(kSeed);
  Subjects subjects = world.subjects();
  const long total = passes();
  long done = 0;
  while (done < total) {
    forget(simulator, world);
    std::shuffle(order.begin(), order.end(), shuffle);
    for (std::size_t i = 0; i < order.size() && done < total; ++i, ++done) {
      const Member& member = list[order[i]];
      if (!connected(simulator, world)) {
        ASSERT_NO_FATAL_FAILURE(reconnect(simulator, world));
      }
      world.platform.clock.now += 1000;
      try {
        member.call(subjects);
        poll.call(subjects);
      } catch (const std::exception& error) {
        FAIL() << member.name << " threw at call " << done << ": " << error.what();
      } catch (...) {
        FAIL() << member.name << " threw at call " << done;
      }
    }
  }
  std::printf("%ld member calls, each of the %zu members about %ld times\n", done, list.size(),
              done / static_cast<long>(list.size()));
}

}  // namespace
}  // namespace rx9400::reliability
