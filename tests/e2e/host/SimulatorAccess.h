// The detector simulator as the test host reaches it: the plug-in loads TamsaMBDll.dll into the host's
// process, and the host reads the simulator's call log and state through its Sim exports.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Checks.h"
#include "SimControl.h"

namespace rx9400::e2e {

inline constexpr wchar_t kDeviceLibraryFile[] = L"TamsaMBDll.dll";

/// An export of a loaded DLL by its declared type; fails when it is missing.
template <typename Function>
Function exportOf(HMODULE module, const char* name) {
  auto* function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
  expect(function != nullptr, std::string("the export ") + name + " is missing");
  return function;
}

/// The device library the plug-in loaded; fails when none is loaded.
HMODULE loadedSimulator();

std::string simulatorLog(HMODULE simulator);
void clearSimulatorLog(HMODULE simulator);
/// Why the simulator could not use a scenario (TAMSA_SIM_SCENARIO); empty when it could.
std::string simulatorLastError(HMODULE simulator);
/// Loads a scenario file and starts the simulation afresh from it (SimLoadScenarioFile); the next
/// MBRegisterApplication keeps it. Fails with the simulator's reason when it refuses the file.
void loadSimulatorScenario(HMODULE simulator, const std::wstring& path);
SimLibraryState simulatorState(HMODULE simulator);
/// A detector of the scenario; fails for an identifier the scenario does not have.
SimDetectorState simulatorDetector(HMODULE simulator, std::int32_t identifier);

/// The lines of a call log.
std::vector<std::string> logLines(const std::string& log);
/// The argument text of each call of `function` in `lines`, in order: "4" for "MBGetNumberOfDetectors(4)".
std::vector<std::string> callArguments(const std::vector<std::string>& lines, const std::string& function);

}  // namespace rx9400::e2e
