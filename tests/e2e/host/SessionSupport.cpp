// The session checks' shared steps (SessionSupport.h).
#include <windows.h>

#include <commctrl.h>
#include <objbase.h>

#include <algorithm>
#include <string>
#include <vector>

#include "SessionSupport.h"
#include "SimulatorAccess.h"
#include "win/LanguageComponent.h"
#include "win/dialogs/ConnectDialog/ConnectDialogIds.h"
#include "win/dialogs/ScanDialog/ScanDialogIds.h"

namespace rx9400::e2e {
namespace {

constexpr wchar_t kQueryProgId[] = L"TamsaRX9400VTI.CRX9400Query";

/// Fails unless a language component is registered exactly when the options say so.
void expectLanguage(const HostOptions& options) {
  IUnknown* component = nullptr;
  const HRESULT hr = CoCreateInstance(win::kLanguageComponentClsid, nullptr, CLSCTX_INPROC_SERVER,
                                      IID_IUnknown, reinterpret_cast<void**>(&component));
  if (component != nullptr) component->Release();
  if (options.pseudoLanguage) {
    expect(SUCCEEDED(hr), "the test language component is not registered (" + hresultText(hr) + ")");
  } else {
    expect(FAILED(hr), "a language component is registered: the plug-in's default texts cannot be seen");
  }
}

/// Closes a window the way someone who wants out would: Cancel, Stop or OK, else its close box.
void dismiss(HWND window) {
  for (const int id : {IDCANCEL, IDC_CONNECT_CANCEL, IDC_SCAN_STOP, IDOK}) {
    if (clickButton(GetDlgItem(window, id))) return;
  }
  PostMessageW(window, WM_CLOSE, 0, 0);
}

/// Until `callReturned` is set: pictures, notes and closes every window the process shows.
std::vector<std::string> closeUnexpectedWindows(HANDLE callReturned, const Pictures& pictures) {
  std::vector<std::string> seen;
  WindowFilter filter;
  filter.processId = GetCurrentProcessId();
  filter.className = kDialogClass;
  while (WaitForSingleObject(callReturned, 100) == WAIT_TIMEOUT) {
    for (HWND window : findWindows(filter)) {
      if (waitUntilGone(window, 500)) continue;  // on its way out
      if (seen.size() < 10) {
        const std::string picture = "unexpected-" + std::to_string(seen.size() + 1);
        std::string what = quoted(windowText(window));
        if (!messageBoxText(window).empty()) what += " saying " + quoted(messageBoxText(window));
        seen.push_back(what + " (" + picture + ")");
        try {
          pictures.save(window, picture);
        } catch (const CheckFailure&) {
        }
      }
      dismiss(window);
      waitUntilGone(window, 2000);
    }
  }
  return seen;
}

}  // namespace

std::string quoted(const std::wstring& text) {
  std::string line = narrow(text);
  for (std::size_t at = line.find('\n'); at != std::string::npos; at = line.find('\n', at)) {
    line.replace(at, 1, "\\n");
  }
  return "\"" + line + "\"";
}

std::string joined(const std::vector<std::string>& items) {
  std::string text;
  for (const std::string& item : items) text += (text.empty() ? "" : ", ") + item;
  return "[" + text + "]";
}

void Pictures::save(HWND window, const std::string& what) const {
  const std::wstring path = folder_ + L"\\" + widen(check_ + "-" + what) + L".bmp";
  RECT frame{};
  GetWindowRect(window, &frame);
  std::wstring error;
  const bool saved = saveWindowBitmap(window, path, &error);
  expect(saved, "no picture " + what + ": " + narrow(error));
  expectPicture(path, frame);
}

HWND waitForDialog(const std::wstring& caption, const std::string& what) {
  WindowFilter filter;
  filter.processId = GetCurrentProcessId();
  filter.caption = caption;
  filter.className = kDialogClass;
  HWND dialog = nullptr;
  HWND box = nullptr;
  pollFor(kStepMs, [&] {
    const std::vector<HWND> found = findWindows(filter);
    dialog = found.empty() ? nullptr : found.front();
    box = dialog == nullptr ? waitForMessageBox(GetCurrentProcessId(), 0) : nullptr;
    return dialog != nullptr || box != nullptr;
  });
  if (box != nullptr) {
    fail(what + " " + quoted(caption) + " did not appear, a message box " + quoted(windowText(box)) +
         " came instead");
  }
  expect(dialog != nullptr, what + " " + quoted(caption) + " did not appear");
  return dialog;
}

void press(HWND dialog, int id, const char* what) {
  expect(clickButton(GetDlgItem(dialog, id)), std::string("the button ") + what + " cannot be pressed");
}

void expectGone(HWND window, const std::string& what) {
  expect(waitUntilGone(window, kStepMs), what + " stayed open");
}

HWND connectList(HWND connect) {
  HWND list = GetDlgItem(connect, IDC_CONNECT_LIST);
  expect(list != nullptr && _wcsicmp(windowClass(list).c_str(), WC_LISTVIEWW) == 0,
         "the connect dialog has no detector list");
  return list;
}

Session openSession(const HostOptions& options) {
  expectLanguage(options);
  Session session;
  session.query = createByProgId<_CRX9400Query>(kQueryProgId, IID__CRX9400Query);
  expectHr(session.query->RegisterApp(), S_OK, "RegisterApp");
  session.simulator = loadedSimulator();
  const std::string scenarioError = simulatorLastError(session.simulator);
  expect(scenarioError.empty(), "the simulator did not take its scenario: " + scenarioError);
  clearSimulatorLog(session.simulator);
  return session;
}

VARIANT_BOOL isDetectorConnected(const Session& session) {
  VARIANT_BOOL connected = 1;  // neither True nor False
  expectHr(session.query->IsDetectorConnected(&connected), S_OK, "IsDetectorConnected");
  return connected;
}

std::vector<std::string> callLog(const Session& session) {
  return logLines(simulatorLog(session.simulator));
}

void expectInOrder(const std::vector<std::string>& lines, const std::vector<std::string>& functions) {
  std::size_t previous = 0;
  for (std::size_t i = 0; i < functions.size(); ++i) {
    const auto first = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
      return line.rfind(functions[i] + "(", 0) == 0;
    });
    expect(first != lines.end(), "the call log has no " + functions[i]);
    const auto at = static_cast<std::size_t>(first - lines.begin());
    if (i > 0 && at < previous) fail("the call log shows " + functions[i] + " before " + functions[i - 1]);
    previous = at;
  }
}

void expectCalls(const std::vector<std::string>& lines, const char* function,
                 const std::vector<std::string>& arguments) {
  const std::vector<std::string> actual = callArguments(lines, function);
  expect(actual == arguments, std::string("the call log shows ") + function + " with " + joined(actual) +
                                  ", expected " + joined(arguments));
}

void driveModal(const Pictures& pictures, const std::function<void()>& script,
                const std::function<HRESULT()>& call, const char* callName) {
  HANDLE callReturned = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::string scriptFailure;
  std::vector<std::string> unexpected;
  AutomationThread automation([&] {
    try {
      script();
    } catch (const CheckFailure& failure) {
      scriptFailure = failure.why;
    } catch (...) {
      scriptFailure = "the automation failed";
    }
    unexpected = closeUnexpectedWindows(callReturned, pictures);
  });
  const HRESULT result = call();
  SetEvent(callReturned);
  automation.join();
  CloseHandle(callReturned);
  std::string why = scriptFailure;
  if (!unexpected.empty()) {
    why += (why.empty() ? "" : "; ") + std::string("unexpected windows, closed: ") + joined(unexpected);
  }
  expect(why.empty(), why);
  expectHr(result, S_OK, callName);
}

}  // namespace rx9400::e2e
