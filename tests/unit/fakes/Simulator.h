// The detector simulator as the tests drive it: the plug-in's own wrapper over the simulator library,
// and the simulator's control exports (scenario, call log, what the detectors received).
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "../../sim/SimControl.h"
#include "device/MBdllFunctions.h"

namespace rx9400::testing {

class Simulator {
 public:
  /// Opens the simulator and starts it afresh from `scenarioJson` (the default scenario when empty).
  explicit Simulator(const std::string& scenarioJson = {})
      : library_(MBdllFunctions::forLibraryAt(RX9400_SIMULATOR_PATH)) {
    std::string error;
    control_ = openDynamicLibraryAt(RX9400_SIMULATOR_PATH, error);
    if (control_ == nullptr) throw std::runtime_error("cannot open the simulator: " + error);
    load(scenarioJson);
  }

  MBdllFunctions& library() { return library_; }

  /// Starts afresh from a scenario; fails the test when the simulator refuses it.
  void load(const std::string& scenarioJson) {
    const auto loadText = resolve<decltype(&SimLoadScenarioText)>("SimLoadScenarioText");
    const std::int32_t result = loadText(scenarioJson.empty() ? nullptr : scenarioJson.c_str());
    ASSERT_EQ(result, kSimOk) << lastError();
  }

  /// The calls the library received since the last load or clearCalls(), one per element.
  std::vector<std::string> calls() const {
    std::istringstream lines(text("SimGetCallLog"));
    std::vector<std::string> result;
    for (std::string line; std::getline(lines, line);) {
      if (!line.empty() && line[0] != '!') result.push_back(line);
    }
    return result;
  }
  /// How many of those calls begin with `prefix`.
  int callsStartingWith(const std::string& prefix) const {
    int count = 0;
    for (const std::string& call : calls()) count += call.rfind(prefix, 0) == 0 ? 1 : 0;
    return count;
  }
  void clearCalls() { resolve<decltype(&SimClearCallLog)>("SimClearCallLog")(); }

  SimDetectorState detector(std::int32_t identifier) const {
    SimDetectorState state{};
    resolve<decltype(&SimGetDetectorState)>("SimGetDetectorState")(identifier, &state);
    return state;
  }
  SimLibraryState libraryState() const {
    SimLibraryState state{};
    resolve<decltype(&SimGetLibraryState)>("SimGetLibraryState")(&state);
    return state;
  }
  std::string chamberFile(std::int32_t identifier) const {
    const auto read = resolve<decltype(&SimGetChamberFile)>("SimGetChamberFile");
    std::string buffer(static_cast<std::size_t>(read(identifier, nullptr, 0)), '\0');
    if (buffer.empty()) return {};
    read(identifier, buffer.data(), static_cast<std::int32_t>(buffer.size()));
    buffer.pop_back();
    return buffer;
  }
  std::string lastError() const { return text("SimGetLastError"); }

 private:
  template <typename Function>
  Function resolve(const char* name) const {
    auto* symbol = control_->findSymbol(name);
    if (symbol == nullptr) throw std::runtime_error(std::string("the simulator has no export ") + name);
    return reinterpret_cast<Function>(symbol);
  }
  std::string text(const char* exportName) const {
    const auto read = resolve<std::int32_t(MB_STDCALL*)(char*, std::int32_t)>(exportName);
    std::string buffer(static_cast<std::size_t>(read(nullptr, 0)), '\0');
    if (buffer.empty()) return {};
    read(buffer.data(), static_cast<std::int32_t>(buffer.size()));
    buffer.pop_back();
    return buffer;
  }

  MBdllFunctions library_;
  std::unique_ptr<DynamicLibrary> control_;
};

}  // namespace rx9400::testing
