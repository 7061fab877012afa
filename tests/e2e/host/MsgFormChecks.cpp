// The MsgForm server (tools/msgform) as only Windows shows it: registered by its own switch, the
// plug-in's sleep notice on a form of MsgForm.exe, another process, its Wake Up pressed by automation
// arriving at the plug-in as the form's event; a server gone while its form is shown ending the member
// that closes the form. Which box the supervision opens when is tested natively.
#include <windows.h>

#include <oleauto.h>

#include <string>
#include <vector>

#include "HostChecks.h"

namespace rx9400::e2e {
namespace {

constexpr wchar_t kServerFile[] = L"MsgForm.exe";

std::wstring serverPath() {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring folder(path);
  return folder.substr(0, folder.find_last_of(L'\\') + 1) + kServerFile;
}

/// Runs MsgForm.exe with one switch; fails unless it ends with exit code 0.
void runServer(const wchar_t* option) {
  std::wstring commandLine = L"\"" + serverPath() + L"\" " + option;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  expect(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process) != 0,
         "MsgForm.exe cannot be started");
  DWORD code = 1;
  WaitForSingleObject(process.hProcess, 30000);
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  expect(code == 0, "MsgForm.exe " + narrow(option) + " ended with " + std::to_string(code));
}

/// MsgForm registered for as long as this lives.
struct Registration {
  Registration() { runServer(L"/RegServer"); }
  ~Registration() {
    try {
      runServer(L"/UnregServer");
    } catch (const CheckFailure&) {
    }
  }
};

/// The visible top-level window of `process` with that caption, waited for while messages are pumped.
HWND formOf(DWORD process, const wchar_t* caption) {
  WindowFilter filter;
  filter.processId = process;
  filter.caption = caption;
  HWND form = nullptr;
  pumpUntil(kStepMs, [&] {
    const std::vector<HWND> found = findWindows(filter);
    form = found.empty() ? nullptr : found.front();
    return form != nullptr;
  });
  expect(form != nullptr, "no window " + quoted(caption) + " in process " + std::to_string(process));
  return form;
}

/// An all-in-one detector idle since InitTimer, its sleep notice shown on a form of MsgForm.exe.
struct SleepNoticeOnServer {
  Registration registration;
  Session session;
  ComPtr<_CRX9400VTI> instrument = createByProgId<_CRX9400VTI>(kInstrumentProgId, IID__CRX9400VTI);
  DWORD server = 0;
  HWND notice = nullptr;

  explicit SleepNoticeOnServer(const Options& options) : session(openSession(options, L"exposure-aio.json")) {
    connectAll(session);
    expectHr(instrument->InitTimer(), S_OK, "InitTimer");  // idle from now: asleep, not shut down
    VARIANT_BOOL result = VARIANT_FALSE;
    expectHr(instrument->CheckDetectorPowerStatus(0, 100000, &result), S_OK, "CheckDetectorPowerStatus");
    server = waitForProcess(kServerFile, kStepMs);
    expect(server != 0 && server != GetCurrentProcessId(), "no MsgForm.exe serves the notice");
    notice = formOf(server, L"Detector Sleep");
  }
};

/// The sleep notice's texts, and Wake Up pressed by automation reaching the plug-in across the
/// processes (the detector woken, the form closed).
void checkSleepNotice(const Options& options) {
  SleepNoticeOnServer on(options);
  std::vector<std::wstring> texts = staticTexts(on.notice);
  for (const std::wstring& button : buttonTexts(on.notice)) texts.push_back(button);
  expect(texts.size() == 4 && texts[2] == L"Wake Up" && texts[3] == L"Cancel",
         "the form shows " + quoted(texts.empty() ? L"nothing" : texts[0]) + " ...");
  savePicture(on.notice, options.artifacts, "msgform-sleep");
  expect(clickButton(on.notice, L"Wake Up"), "Wake Up cannot be pressed");
  expect(pumpUntil(kStepMs,
                   [&] {
                     const std::vector<std::string> modes = calls(on.session.simulator, "MBSetPowerMode");
                     return !modes.empty() && modes.back() == "501, 2" && !IsWindowVisible(on.notice);
                   }),
         "Wake Up did not wake the detector (MBSetPowerMode(501, 2)) and close the form");
  expectHr(on.session.query->CloseApp(), S_OK, "CloseApp");
}

/// MsgForm.exe ended while its sleep notice is shown: the member that closes the notice (the shutdown
/// of an idle detector) ends there, with the detector neither shut down nor taken out of the table.
void checkServerGone(const Options& options) {
  SleepNoticeOnServer on(options);
  HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, on.server);
  expect(process != nullptr && TerminateProcess(process, 1) != 0, "MsgForm.exe cannot be ended");
  WaitForSingleObject(process, kStepMs);
  CloseHandle(process);
  VARIANT_BOOL result = VARIANT_FALSE;
  driveModal([] {}, [&] { return on.instrument->CheckDetectorPowerStatus(0, 0, &result); },
             "CheckDetectorPowerStatus");
  const std::vector<std::string> modes = calls(on.session.simulator, "MBSetPowerMode");
  expect(result == VARIANT_TRUE && !modes.empty() && modes.back() == "501, 1" && on.session.connected(),
         "the member went on past the failed close: " + joined(modes));
  expectHr(on.session.query->CloseApp(), S_OK, "CloseApp");
}

}  // namespace

std::vector<Check> msgFormChecks() {
  return {
      {"msgform-sleep", "the sleep notice on a form of MsgForm.exe, its Wake Up reaching the plug-in",
       checkSleepNotice},
      {"msgform-gone", "MsgForm.exe gone while its form is shown: the member closing the form ends there",
       checkServerGone},
  };
}

}  // namespace rx9400::e2e
