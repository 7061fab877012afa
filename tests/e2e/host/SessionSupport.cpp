// What the host's checks share (HostChecks.h): the simulator read in process, sessions, the
// plug-in's modal windows driven from an automation thread, and its message boxes answered.
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "HostChecks.h"
#include "win/dialogs/ConnectDialog/ConnectDialogIds.h"
#include "win/dialogs/ScanDialog/ScanDialogIds.h"

namespace rx9400::e2e {
namespace {

/// The whole text of one of the simulator's text exports.
std::string wholeText(HMODULE simulator, const char* name) {
  const auto function = exportOf<std::int32_t(MB_STDCALL*)(char*, std::int32_t)>(simulator, name);
  std::string text(static_cast<std::size_t>(std::max(function(nullptr, 0), 1)), '\0');
  function(text.data(), static_cast<std::int32_t>(text.size()));
  text.resize(std::strlen(text.c_str()));
  return text;
}

BOOL CALLBACK collectOwnWindow(HWND window, LPARAM found) {
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process == GetCurrentProcessId()) reinterpret_cast<std::vector<HWND>*>(found)->push_back(window);
  return TRUE;
}

}  // namespace

std::vector<HWND> processWindows() {
  std::vector<HWND> windows;
  EnumWindows(collectOwnWindow, reinterpret_cast<LPARAM>(&windows));
  for (HWND window = nullptr; (window = FindWindowExW(HWND_MESSAGE, window, nullptr, nullptr)) != nullptr;)
    collectOwnWindow(window, reinterpret_cast<LPARAM>(&windows));
  return windows;
}

void dismiss(HWND window) {
  for (const int id : {IDCANCEL, IDC_CONNECT_CANCEL, IDC_SCAN_STOP, IDOK}) {
    if (clickButton(GetDlgItem(window, id))) return;
  }
  PostMessageW(window, WM_CLOSE, 0, 0);
}

HMODULE loadedSimulator() {
  HMODULE simulator = GetModuleHandleW(kDeviceLibraryFile);
  expect(simulator != nullptr, "the plug-in did not load TamsaMBDll.dll");
  return simulator;
}

std::vector<std::string> calls(HMODULE simulator, const std::string& function) {
  std::vector<std::string> arguments;
  const std::string log = wholeText(simulator, "SimGetCallLog"), opening = function + "(";
  for (std::size_t start = 0, end; start < log.size(); start = end + 1) {
    end = std::min(log.find('\n', start), log.size());
    const std::string line = log.substr(start, end - start);
    if (line.rfind(opening, 0) == 0 && line.back() == ')') {
      arguments.push_back(line.substr(opening.size(), line.size() - opening.size() - 1));
    }
  }
  return arguments;
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

VARIANT_BOOL Session::connected() const {
  VARIANT_BOOL connected = 1;  // neither True nor False
  expectHr(query->IsDetectorConnected(&connected), S_OK, "IsDetectorConnected");
  return connected;
}

Session openSession(const Options& options, const wchar_t* scenario) {
  Session session;
  session.query = createByProgId<_CRX9400Query>(kQueryProgId, IID__CRX9400Query);
  expectHr(session.query->RegisterApp(), S_OK, "RegisterApp");
  session.simulator = loadedSimulator();
  if (scenario != nullptr) {
    // The scenario starts afresh; the next RegisterApp keeps it.
    const std::string path = narrow(options.scenarios + L"\\" + scenario);
    expect(!options.scenarios.empty(), "no scenarios folder (--scenarios=FOLDER)");
    expect(exportOf<decltype(&SimLoadScenarioFile)>(session.simulator, "SimLoadScenarioFile")(path.c_str()) ==
               kSimOk,
           "the simulator refused " + path + ": " + wholeText(session.simulator, "SimGetLastError"));
    expectHr(session.query->RegisterApp(), S_OK, "RegisterApp");
  }
  const std::string scenarioError = wholeText(session.simulator, "SimGetLastError");
  expect(scenarioError.empty(), "the simulator did not take its scenario: " + scenarioError);
  exportOf<decltype(&SimClearCallLog)>(session.simulator, "SimClearCallLog")();
  return session;
}

HWND waitForDialog(const std::wstring& caption, const std::string& what) {
  WindowFilter filter;
  filter.processId = GetCurrentProcessId();
  filter.caption = caption;
  filter.className = kDialogClass;
  HWND dialog = waitForWindow(filter, kStepMs);
  expect(dialog != nullptr, what + " " + quoted(caption) + " did not appear");
  return dialog;
}

void press(HWND window, int id, const char* what) {
  expect(clickButton(GetDlgItem(window, id)), std::string("the button ") + what + " cannot be pressed");
}

void expectGone(HWND window, const std::string& what) {
  expect(waitUntilGone(window, kStepMs), what + " stayed open");
}

void answerMessageBox(const Options& options, const std::string& picture, const std::wstring& caption,
                      const std::wstring& text) {
  HWND box = waitForMessageBox(GetCurrentProcessId(), kStepMs);
  expect(box != nullptr, "no message box " + quoted(caption) + " appeared");
  expect(windowText(box) == caption, "the message box is titled " + quoted(windowText(box)));
  expect(messageBoxText(box) == text, "the message box says " + quoted(messageBoxText(box)));
  expect(buttonTexts(box) == std::vector<std::wstring>{L"OK"}, quoted(caption) + " does not offer OK alone");
  savePicture(box, options.artifacts, picture);
  press(box, IDOK, "OK");
  expectGone(box, "the message box " + quoted(caption));
}

HWND connectList(HWND connect) {
  HWND list = GetDlgItem(connect, IDC_CONNECT_LIST);
  expect(list != nullptr && _wcsicmp(windowClass(list).c_str(), WC_LISTVIEWW) == 0,
         "the connect dialog has no detector list");
  pollFor(kStepMs, [&] { return listViewItemCount(list) > 0; });
  return list;
}

void driveModal(const std::function<void()>& script, const std::function<HRESULT()>& call,
                const char* callName, bool windowsExpected) {
  HANDLE callReturned = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::string why;
  std::vector<std::string> unexpected;
  AutomationThread automation([&] {
    try {
      script();
    } catch (const CheckFailure& failure) {
      why = failure.why;
    }
    // Until the call returns: every window still shown is noted and closed.
    WindowFilter filter;
    filter.processId = GetCurrentProcessId();
    while (WaitForSingleObject(callReturned, 20) == WAIT_TIMEOUT) {
      for (HWND window : findWindows(filter)) {
        if (waitUntilGone(window, windowsExpected ? 0 : 500)) continue;  // on its way out
        unexpected.push_back(quoted(windowText(window)) + " saying " + quoted(messageBoxText(window)));
        dismiss(window);
        waitUntilGone(window, 2000);
      }
    }
  });
  const HRESULT result = call();
  SetEvent(callReturned);
  automation.join();
  CloseHandle(callReturned);
  if (!unexpected.empty() && !windowsExpected)
    why += (why.empty() ? "" : "; ") + std::string("unexpected windows, closed: ") + joined(unexpected);
  expect(why.empty(), why);
  expectHr(result, S_OK, callName);
}

ComPtr<_CRX9400VTI> instrumentIn(const wchar_t* mode) {
  auto instrument = createByProgId<_CRX9400VTI>(kInstrumentProgId, IID__CRX9400VTI);
  BSTR text = SysAllocString(mode);
  const HRESULT hr = instrument->put_pCurrentMode(text);
  SysFreeString(text);
  expectHr(hr, S_OK, "pCurrentMode");
  return instrument;
}

void connectAll(Session& session) {
  driveModal(
      [&] {
        HWND connect = waitForDialog(L"Establish Connection", "the connect dialog");
        HWND list = connectList(connect);
        for (int row = 0; row < listViewItemCount(list); ++row) {
          expect(setListViewItemChecked(list, row, true), "row " + std::to_string(row) + " cannot be ticked");
        }
        press(connect, IDC_CONNECT_CONNECT, "Connect");
        expectGone(connect, "the connect dialog after Connect");
      },
      [&] { return session.query->ScanAndConnectToDetector(); }, "ScanAndConnectToDetector");
  expect(session.connected() == VARIANT_TRUE, "IsDetectorConnected is not True after Connect");
  exportOf<decltype(&SimClearCallLog)>(session.simulator, "SimClearCallLog")();
}

Detector prepareDetector(const Options& options, const wchar_t* scenario, std::int32_t id, bool measured) {
  Detector detector{openSession(options, scenario), {}, id};
  connectAll(detector.session);
  detector.instrument = instrumentIn(L"RADIO");
  if (!measured) return detector;

  const auto delivered = [&] {
    const SimDetectorState now = simulatorDetector(detector.session.simulator, id);
    const bool mas = now.typeCode == 2 || now.typeCode >= 4;
    return now.exposuresDelivered >= 1 && (!mas || now.masExposuresDelivered >= 1);
  };
  expectHr(detector.instrument->EnableMeasurements(VARIANT_TRUE), S_OK, "EnableMeasurements(True)");
  driveModal([] {},
             [&] {
               VARIANT_BOOL finished = VARIANT_FALSE;
               HRESULT hr = S_OK;
               for (int pass = 0; pass < 20 && SUCCEEDED(hr) && !delivered(); ++pass) {
                 hr = detector.instrument->CheckDataStatus(&finished);
               }
               return hr;
             },
             "CheckDataStatus");
  expect(delivered(), "the exposure was not measured in 20 passes of CheckDataStatus");
  expectHr(detector.instrument->EnableMeasurements(VARIANT_FALSE), S_OK, "EnableMeasurements(False)");
  return detector;
}

void closeDetector(Detector& detector) {
  expectHr(detector.session.query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expectHr(detector.session.query->CloseApp(), S_OK, "CloseApp");
}

/// SystemHandleInformation: the system's handle list, every process's entries.
std::optional<std::size_t> openHandles() {
  struct Entry {
    ULONG process;
    BYTE type, flags;
    USHORT handle;
    void* object;
    ULONG access;
  };
  struct List {
    ULONG count;
    Entry entries[1];
  };
  using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<Query>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
  std::vector<char> buffer(1 << 20);
  LONG status = -1;
  ULONG needed = 0;
  for (; query != nullptr && buffer.size() <= (1u << 26); buffer.resize(buffer.size() * 2)) {
    status = query(16, buffer.data(), static_cast<ULONG>(buffer.size()), &needed);
    if (status != static_cast<LONG>(0xC0000004)) break;  // STATUS_INFO_LENGTH_MISMATCH: a larger buffer
  }
  if (status != 0) return std::nullopt;
  const auto* list = reinterpret_cast<const List*>(buffer.data());
  return std::count_if(list->entries, list->entries + list->count,
                       [](const Entry& entry) { return entry.process == GetCurrentProcessId(); });
}

}  // namespace rx9400::e2e
