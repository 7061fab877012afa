// The test host's checks and what they share: the plug-in's classes, the detector simulator that the
// plug-in loads into the host's process (read through its Sim exports), and sessions whose modal
// dialogs an automation thread drives while the main thread is inside the plug-in's call.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Harness.h"
#include "SimControl.h"
#include "win/TamsaRX9400VTI_h.h"

namespace rx9400::e2e {

std::vector<Check> comChecks();
std::vector<Check> sessionChecks();
std::vector<Check> exposureChecks();
std::vector<Check> waveformChecks();
std::vector<Check> msgFormChecks();
std::vector<Check> reliabilityChecks();
std::vector<Check> badArgumentChecks();

inline constexpr wchar_t kQueryProgId[] = L"TamsaRX9400VTI.CRX9400Query";
inline constexpr wchar_t kInstrumentProgId[] = L"TamsaRX9400VTI.CRX9400VTI";
inline constexpr wchar_t kDeviceLibraryFile[] = L"TamsaMBDll.dll";
/// How long one step waits for a window to come or go.
inline constexpr DWORD kStepMs = 10000;

/// An export of a loaded DLL by its declared type; fails when it is missing.
template <typename Function>
Function exportOf(HMODULE module, const char* name) {
  auto* function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
  expect(function != nullptr, std::string("the export ") + name + " is missing");
  return function;
}

/// The device library the plug-in loaded into this process; fails when none is.
HMODULE loadedSimulator();
/// The argument text of each call of `function` in the simulator's call log, in order.
std::vector<std::string> calls(HMODULE simulator, const std::string& function);
SimLibraryState simulatorState(HMODULE simulator);
SimDetectorState simulatorDetector(HMODULE simulator, std::int32_t identifier);

struct Session {
  ComPtr<_CRX9400Query> query;
  HMODULE simulator = nullptr;
  VARIANT_BOOL connected() const;
};
/// The query class registered with the simulator, which took its scenario (from `scenario` in the
/// scenarios folder when given, else TAMSA_SIM_SCENARIO); the call log starts empty.
Session openSession(const Options& options, const wchar_t* scenario = nullptr);

/// The next message box of the plug-in: its caption and text, OK alone; pictured, then answered with OK.
void answerMessageBox(const Options& options, const std::string& picture, const std::wstring& caption,
                      const std::wstring& text);

/// Waits for a dialog of this process; a message box that comes instead fails at once.
HWND waitForDialog(const std::wstring& caption, const std::string& what);
void press(HWND window, int id, const char* what);
void expectGone(HWND window, const std::string& what);
/// The connect dialog's detector list, once it lists something.
HWND connectList(HWND connect);

/// Plays the person at the bench while the main thread is inside `call`, a call of the plug-in that
/// opens modal windows: `script` runs on an automation thread; once it has ended, every window still
/// shown is closed, and named in the failure unless `windowsExpected`.
void driveModal(const std::function<void()>& script, const std::function<HRESULT()>& call,
                const char* callName, bool windowsExpected = false);
/// Closes a window the way someone who wants out would: Cancel, Stop or OK, else its close box.
void dismiss(HWND window);
/// Dispatches messages, incoming COM calls among them, until `done` or `timeoutMs`.
template <typename Done>
bool pumpUntil(DWORD timeoutMs, Done done) {
  const ULONGLONG end = GetTickCount64() + timeoutMs;
  while (!done()) {
    if (GetTickCount64() >= end) return false;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }
  return true;
}
/// This process's top-level windows (hidden ones too) and message-only windows.
std::vector<HWND> processWindows();
/// The handles this process holds, as the system's handle list counts them (Wine 8's
/// GetProcessHandleCount answers 0); empty when the list cannot be read.
std::optional<std::size_t> openHandles();

/// The instrument class, created by ProgID, with `pCurrentMode` set to `mode`.
ComPtr<_CRX9400VTI> instrumentIn(const wchar_t* mode);
/// ScanAndConnectToDetector with every listed row ticked and Connect pressed.
void connectAll(Session& session);

/// A session with the scenario's detector `id` connected and an instrument in RADIO mode.
struct Detector {
  Session session;
  ComPtr<_CRX9400VTI> instrument;
  std::int32_t id = 0;
};
/// The scenario's detector connected through the connect dialog; when `measured`, its exposure measured
/// too: armed, and CheckDataStatus called until every part has delivered.
Detector prepareDetector(const Options& options, const wchar_t* scenario, std::int32_t id, bool measured);
/// ResetTheDetectors and CloseApp.
void closeDetector(Detector& detector);

}  // namespace rx9400::e2e
