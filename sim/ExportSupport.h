// What the export files share: the library's one state and the wrappers through which every export
// runs.
//
// Each export takes the library lock, starts the simulator on first use, writes its call-log line and
// forwards to Simulator. Nothing escapes across the C boundary: any exception ends the call with the
// function's failure value (0).
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "CallLog.h"
#include "Replay.h"
#include "Scenario.h"
#include "SimControl.h"
#include "SimLock.h"
#include "Simulator.h"

// The prototypes come from the one list of exports, so that a definition below whose signature drifts
// from the list does not compile (two C functions of one name).
namespace rx9400 {
extern "C" {
#define MB_FUNCTION(Result, Name, Parameters, Arguments) SIM_API Result MB_STDCALL Name Parameters;
#include "device/MBFunctionList.h"
}
}  // namespace rx9400

namespace rx9400::sim {

struct Library {
  SimLock lock;
  std::unique_ptr<CallLog> log;  // declared before the simulator, which writes to it
  std::unique_ptr<Simulator> simulator;
  std::unique_ptr<Replay> replay;  // TAMSA_SIM_REPLAY: the calls are answered from a recorded session
  std::string lastError;
  bool explicitScenario = false;  // loaded through SimLoadScenario*: MBRegisterApplication keeps it
  std::string environmentText;    // the TAMSA_SIM_SCENARIO text the simulator runs, if it runs one
  // The update thread (UpdateThread.h), Windows build only.
  void* updateThread = nullptr;  // its handle while it runs
  std::uint32_t updateRun = 0;   // the run that may go on; a thread started for another run ends
  std::int32_t updateTicks = 0;  // ticks of the current run that did their work (none while paused)
};

Library& library();
/// The simulator, started on first use.
Simulator& ensure(Library& lib);
/// Starts the simulator from the start-up scenario (TAMSA_SIM_SCENARIO or the default).
void startUp(Library& lib);
bool readFile(const char* path, std::string& text, std::string& error);
std::int32_t copyText(std::string_view text, char* buffer, std::int32_t size);
std::int32_t loadScenario(Library& lib, std::string_view text);
std::int32_t registerApplication(Library& lib);

/// One library call: lock, log, forward (to the replay when one runs), trap.
template <typename R, typename Body, typename... Args>
R call(const char* name, R failure, Body&& body, const Args&... args) noexcept {
  Library& lib = library();
  try {
    SimGuard guard(lib.lock);
    Simulator& simulator = ensure(lib);
    lib.log->append(std::string(name) + "(" + formatArgs(args...) + ")");
    if (lib.replay != nullptr) return static_cast<R>(lib.replay->answer(name, failure, *lib.log, args...));
    simulator.chaos().begin();
    const auto answer = body(simulator);
    // MBRegisterApplication may have started a new simulator: ask the one now running.
    return static_cast<R>(lib.simulator->chaos().answer(answer));
  } catch (...) {
    return failure;
  }
}

/// One Sim control call: lock, forward, trap; not logged.
template <typename Body>
std::int32_t control(std::int32_t failure, Body&& body) noexcept {
  Library& lib = library();
  try {
    SimGuard guard(lib.lock);
    ensure(lib);
    return body(lib);
  } catch (...) {
    return failure;
  }
}

/// The answer of a call that wrote `count` records from `first`, whose bytes chaos mode may replace.
template <typename R, typename T>
R wrote(Simulator& simulator, R answer, T* first, std::int64_t count = 1) {
  simulator.chaos().scramble(first, count);
  return answer;
}

/// The answer of a call that wrote names into the caller's array of `*count` elements and wrote back
/// how many: chaos mode may replace the names or the count.
template <typename Call>
std::int32_t wroteNames(Simulator& simulator, TargetFilterName* first, std::int32_t* count, Call call) {
  const std::int32_t room = count != nullptr && first != nullptr ? std::max(*count, 0) : 0;
  const std::int32_t answer = call();
  simulator.chaos().array(first, room, count);
  return answer;
}

/// Bytes in `count` elements of T, or 0 when that does not fit a 32-bit count.
template <typename T>
std::int32_t bytesOf(std::int32_t count) {
  if (count <= 0 || count > std::numeric_limits<std::int32_t>::max() / static_cast<std::int32_t>(sizeof(T)))
    return 0;
  return count * static_cast<std::int32_t>(sizeof(T));
}

}  // namespace rx9400::sim
