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
    std::istringstream lines(text(resolve<TextExport>("SimGetCallLog")));
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
  std::string chamberFile(std::int32_t identifier) const {
    return text(resolve<decltype(&SimGetChamberFile)>("SimGetChamberFile"), identifier);
  }
  std::string lastError() const { return text(resolve<TextExport>("SimGetLastError")); }

 private:
  template <typename Function>
  Function resolve(const char* name) const {
    auto* symbol = control_->findSymbol(name);
    if (symbol == nullptr) throw std::runtime_error(std::string("the simulator has no export ") + name);
    return reinterpret_cast<Function>(symbol);
  }
  using TextExport = std::int32_t(MB_STDCALL*)(char*, std::int32_t);
  /// The whole text of a text export.
  template <typename Export, typename... Arguments>
  static std::string text(Export read, Arguments... arguments) {
    std::string buffer(static_cast<std::size_t>(read(arguments..., nullptr, 0)) + 1, '\0');
    read(arguments..., buffer.data(), static_cast<std::int32_t>(buffer.size()));
    return buffer.c_str();
  }

  MBdllFunctions library_;
  std::unique_ptr<DynamicLibrary> control_;
};

/// The detectors a scan finds, connected kind by kind (1 to 5), and their kinds.
struct ConnectedDetectors {
  std::vector<DetectorInfo> found;
  std::vector<std::int32_t> kinds;
};
inline ConnectedDetectors connectAllDetectors(MBdllFunctions& library) {
  library.MBRegisterApplication(1);
  library.MBScanForDetectors();
  for (int polls = 0; library.MBGetScanCompleteStatus() == 1 && polls < 100;) ++polls;
  ConnectedDetectors connected;
  std::vector<std::int32_t> ids;
  std::vector<std::uint8_t> types;
  for (const std::int32_t type : {1, 2, 3, 4, 5}) {
    for (const DetectorInfo& info :
         library.MBGetDetectorInfoOfType(type, library.MBGetNumberOfDetectors(type))) {
      connected.found.push_back(info);
      connected.kinds.push_back(type);
      ids.push_back(info.identifier);
      types.push_back(static_cast<std::uint8_t>(type));
    }
  }
  EXPECT_NE(library.MBConnectToDetectors(ids, types), 0);
  return connected;
}

}  // namespace rx9400::testing
