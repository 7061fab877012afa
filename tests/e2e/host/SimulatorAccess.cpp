// Reading the simulator loaded in the host's process (see SimulatorAccess.h).
#include <windows.h>

#include <cstring>

#include "SimulatorAccess.h"

namespace rx9400::e2e {
namespace {

/// The whole text of one of the simulator's text functions.
template <typename Function>
std::string wholeText(Function function) {
  const std::int32_t size = function(nullptr, 0);
  std::string text(static_cast<std::size_t>(size > 0 ? size : 1), '\0');
  function(text.data(), static_cast<std::int32_t>(text.size()));
  text.resize(std::strlen(text.c_str()));
  return text;
}

}  // namespace

HMODULE loadedSimulator() {
  HMODULE simulator = GetModuleHandleW(kDeviceLibraryFile);
  expect(simulator != nullptr, "the plug-in did not load TamsaMBDll.dll");
  return simulator;
}

std::string simulatorLog(HMODULE simulator) {
  return wholeText(exportOf<decltype(&SimGetCallLog)>(simulator, "SimGetCallLog"));
}

void clearSimulatorLog(HMODULE simulator) {
  exportOf<decltype(&SimClearCallLog)>(simulator, "SimClearCallLog")();
}

std::string simulatorLastError(HMODULE simulator) {
  return wholeText(exportOf<decltype(&SimGetLastError)>(simulator, "SimGetLastError"));
}

void loadSimulatorScenario(HMODULE simulator, const std::wstring& path) {
  const auto load = exportOf<decltype(&SimLoadScenarioFile)>(simulator, "SimLoadScenarioFile");
  expect(load(narrowText(path).c_str()) == kSimOk,
         "the simulator refused the scenario " + narrowText(path) + ": " + simulatorLastError(simulator));
}

SimLibraryState simulatorState(HMODULE simulator) {
  SimLibraryState state{};
  expect(exportOf<decltype(&SimGetLibraryState)>(simulator, "SimGetLibraryState")(&state) == 1,
         "SimGetLibraryState failed");
  return state;
}

SimDetectorState simulatorDetector(HMODULE simulator, std::int32_t identifier) {
  SimDetectorState state{};
  expect(exportOf<decltype(&SimGetDetectorState)>(simulator, "SimGetDetectorState")(identifier, &state) == 1,
         "the scenario has no detector " + std::to_string(identifier));
  return state;
}

std::vector<std::string> logLines(const std::string& log) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < log.size()) {
    std::size_t end = log.find('\n', start);
    if (end == std::string::npos) end = log.size();
    lines.push_back(log.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

std::vector<std::string> callArguments(const std::vector<std::string>& lines, const std::string& function) {
  std::vector<std::string> arguments;
  const std::string opening = function + "(";
  for (const std::string& line : lines) {
    if (line.rfind(opening, 0) != 0 || line.back() != ')') continue;
    arguments.push_back(line.substr(opening.size(), line.size() - opening.size() - 1));
  }
  return arguments;
}

}  // namespace rx9400::e2e
