// The library's state behind the exports, and the simulator's control functions of SimControl.h.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <utility>

#include "ExportSupport.h"
#include "UpdateThread.h"

namespace rx9400::sim {

Library& library() {
  static Library instance;
  return instance;
}

bool readFile(const char* path, std::string& text, std::string& error) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    error = std::string("cannot open ") + path;
    return false;
  }
  std::ostringstream content;
  content << file.rdbuf();
  text = content.str();
  if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);  // a UTF-8 byte order mark
  return true;
}

namespace {

/// Runs the scenario file named by TAMSA_SIM_SCENARIO; false when the variable is not set or the file
/// cannot be used (the error is then kept and noted in the log). A file whose text is that of the
/// running simulator's scenario is not read again: its waveforms may be tens of megabytes.
bool useEnvironmentScenario(Library& lib) {
  const char* path = std::getenv("TAMSA_SIM_SCENARIO");
  if (path == nullptr || *path == '\0') return false;
  std::string text;
  std::string error;
  if (readFile(path, text, error)) {
    if (lib.simulator != nullptr && text == lib.environmentText) return true;
    try {
      lib.simulator = std::make_unique<Simulator>(parseScenario(text), *lib.log);
      lib.environmentText = std::move(text);
      return true;
    } catch (const ScenarioError& e) {
      error = e.what();
    }
  }
  lib.lastError = std::string("TAMSA_SIM_SCENARIO ") + path + ": " + error;
  lib.log->note(lib.lastError);
  return false;
}

}  // namespace

void startUp(Library& lib) {
  lib.explicitScenario = false;
  lib.simulator.reset();
  lib.replay.reset();
  lib.environmentText.clear();
  const char* replay = std::getenv("TAMSA_SIM_REPLAY");
  if (replay != nullptr && *replay != '\0') lib.replay = Replay::load(replay, *lib.log, lib.lastError);
  if (!useEnvironmentScenario(lib)) {
    lib.simulator = std::make_unique<Simulator>(parseScenario(defaultScenarioText()), *lib.log);
  }
}

Simulator& ensure(Library& lib) {
  if (lib.log == nullptr) lib.log = std::make_unique<CallLog>();
  if (lib.simulator == nullptr) startUp(lib);
  return *lib.simulator;
}

std::int32_t copyText(const std::string_view text, char* buffer, std::int32_t size) {
  if (buffer != nullptr && size > 0) {
    const std::size_t n = std::min(text.size(), static_cast<std::size_t>(size - 1));
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
  }
  return static_cast<std::int32_t>(std::min<std::size_t>(
      text.size() + 1, static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())));
}

std::int32_t loadScenario(Library& lib, std::string_view text) {
  try {
    auto simulator = std::make_unique<Simulator>(parseScenario(text), *lib.log);
    lib.simulator = std::move(simulator);
    lib.replay.reset();
  } catch (const ScenarioError& e) {
    lib.lastError = e.what();
    return kSimInvalidScenario;
  }
  lib.log->clear();
  lib.lastError.clear();
  lib.explicitScenario = true;
  lib.environmentText.clear();
  return kSimOk;
}

std::int32_t registerApplication(Library& lib) {
  if (!lib.explicitScenario) useEnvironmentScenario(lib);  // on failure the running scenario stays
  lib.simulator->restart();
  lib.simulator->setRegistered(true);
  startUpdateThread(lib);
  return 1;
}

}  // namespace rx9400::sim

namespace rx9400 {

extern "C" {

std::int32_t MB_STDCALL SimLoadScenarioText(const char* json) {
  return sim::control(kSimInternalError, [&](sim::Library& lib) {
    return sim::loadScenario(
        lib, json != nullptr && *json != '\0' ? std::string_view(json) : sim::defaultScenarioText());
  });
}

std::int32_t MB_STDCALL SimLoadScenarioFile(const char* path) {
  return sim::control(kSimInternalError, [&](sim::Library& lib) {
    if (path == nullptr) {
      lib.lastError = "no file named";
      return kSimBadArgument;
    }
    std::string text;
    if (!sim::readFile(path, text, lib.lastError)) return kSimCannotRead;
    const std::int32_t result = sim::loadScenario(lib, text);
    if (result != kSimOk) lib.lastError = std::string(path) + ": " + lib.lastError;
    return result;
  });
}

std::int32_t MB_STDCALL SimReset() {
  return sim::control(kSimInternalError, [](sim::Library& lib) {
    lib.simulator.reset();
    lib.log->clear();
    lib.lastError.clear();
    sim::startUp(lib);
    return lib.lastError.empty() ? kSimOk : kSimInvalidScenario;
  });
}

std::int32_t MB_STDCALL SimGetLastError(char* buffer, std::int32_t size) {
  return sim::control(0, [&](sim::Library& lib) { return sim::copyText(lib.lastError, buffer, size); });
}

std::int32_t MB_STDCALL SimGetCallLog(char* buffer, std::int32_t size) {
  return sim::control(0, [&](sim::Library& lib) { return sim::copyText(lib.log->text(), buffer, size); });
}

std::int32_t MB_STDCALL SimClearCallLog() {
  return sim::control(0, [](sim::Library& lib) {
    lib.log->clear();
    return 1;
  });
}

std::int32_t MB_STDCALL SimGetDetectorState(std::int32_t identifier, SimDetectorState* state) {
  return sim::control(0, [&](sim::Library& lib) {
    if (state == nullptr) return 0;
    return lib.simulator->detectorState(identifier, *state) ? 1 : 0;
  });
}

std::int32_t MB_STDCALL SimGetLibraryState(SimLibraryState* state) {
  return sim::control(0, [&](sim::Library& lib) {
    if (state == nullptr) return 0;
    *state = lib.simulator->libraryState();
    return 1;
  });
}

std::int32_t MB_STDCALL SimGetUpdateThreadState(SimUpdateThreadState* state) {
  return sim::control(0, [&](sim::Library& lib) {
    if (state == nullptr) return 0;
    state->running = lib.updateThread != nullptr ? 1 : 0;
    state->ticks = lib.updateTicks;
    return 1;
  });
}

std::int32_t MB_STDCALL SimGetDefaultScenario(char* buffer, std::int32_t size) {
  return sim::control(0,
                      [&](sim::Library&) { return sim::copyText(sim::defaultScenarioText(), buffer, size); });
}

std::int32_t MB_STDCALL SimGetChamberFile(std::int32_t identifier, char* buffer, std::int32_t size) {
  return sim::control(0, [&](sim::Library& lib) {
    std::string text;
    if (!lib.simulator->chamberFile(identifier, text)) return 0;
    return sim::copyText(text, buffer, size);
  });
}

}  // extern "C"

}  // namespace rx9400
