// What the session checks share: a session with the device library, the plug-in's dialogs driven from
// an automation thread while the main thread is inside the call that shows them, pictures of the
// windows, and the simulator's call log.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "Automation.h"
#include "Checks.h"
#include "win/TamsaRX9400VTI_h.h"

namespace rx9400::e2e {

/// How long one step waits for a window to come or go.
inline constexpr DWORD kStepMs = 10000;

/// A text in quotes for a FAIL line, line feeds written "\n".
std::string quoted(const std::wstring& text);
/// "[a, b, c]"
std::string joined(const std::vector<std::string>& items);

template <typename Found>
bool pollFor(DWORD timeoutMs, Found found) {
  const ULONGLONG end = GetTickCount64() + timeoutMs;
  while (!found()) {
    if (GetTickCount64() >= end) return false;
    Sleep(50);
  }
  return true;
}

/// Keeps a picture of each window a check drives: <check>-<what>.bmp in the artifacts folder.
class Pictures {
 public:
  Pictures(const HostOptions& options, const char* check) : folder_(options.artifacts), check_(check) {}

  void save(HWND window, const std::string& what) const;

 private:
  std::wstring folder_;
  std::string check_;
};

/// Waits for a dialog of the plug-in; a message box that comes instead ends the wait at once.
HWND waitForDialog(const std::wstring& caption, const std::string& what);
void press(HWND dialog, int id, const char* what);
void expectGone(HWND window, const std::string& what);
/// The connect dialog's detector list.
HWND connectList(HWND connect);

struct Session {
  ComPtr<_CRX9400Query> query;
  HMODULE simulator = nullptr;
};

/// The query class with a session open against the simulator, which took its scenario; the call log
/// starts empty. Fails unless a language component is registered exactly when the options say so.
Session openSession(const HostOptions& options);
VARIANT_BOOL isDetectorConnected(const Session& session);
std::vector<std::string> callLog(const Session& session);
/// Fails unless the log has a call of each function, their first calls in this order.
void expectInOrder(const std::vector<std::string>& lines, const std::vector<std::string>& functions);
/// Fails unless the calls of `function` in the log had exactly these arguments.
void expectCalls(const std::vector<std::string>& lines, const char* function,
                 const std::vector<std::string>& arguments);

/// Plays the person at the bench while the main thread is inside `call`, a call of the plug-in that
/// opens modal windows: `script` runs on an automation thread; once it has ended, every window still
/// shown is unexpected and closed, until the call returns. Fails with the script's failure, the
/// unexpected windows or the call's result.
void driveModal(const Pictures& pictures, const std::function<void()>& script,
                const std::function<HRESULT()>& call, const char* callName);

}  // namespace rx9400::e2e
