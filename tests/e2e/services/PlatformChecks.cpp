// The executive's registry setting, the trace channel to the real viewer, and the hidden date picker.
#include <windows.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "ServiceChecks.h"
#include "core/Placement.h"
#include "core/Trace.h"
#include "ionchamber/DatePicker.h"
#include "win/Win32Platform.h"

namespace rx9400::e2e {
namespace {

// Registry: the value as the platform stores it, each row read afresh by one registry object.
void registryValues(const Options&) {
  HKEY key = nullptr;
  expect(RegCreateKeyExA(HKEY_LOCAL_MACHINE, kExecutiveSettingsKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                         nullptr) == ERROR_SUCCESS,
         "cannot create the executive's key");
  win::Win32Registry registry;
  const struct {
    const char* what;
    DWORD type;  ///< REG_NONE: the value deleted
    const char* data;
    DWORD size;
    bool topmost;
  } rows[] = {
      {"REG_DWORD 4", REG_DWORD, "\x04\0\0\0", 4, true},
      {"REG_DWORD 5", REG_DWORD, "\x05\0\0\0", 4, false},
      {"REG_DWORD 0x7FFFFFFF", REG_DWORD, "\xFF\xFF\xFF\x7F", 4, true},
      {"REG_DWORD 0xFFFFFFFF", REG_DWORD, "\xFF\xFF\xFF\xFF", 4, false},
      {"REG_SZ 9", REG_SZ, "9", 2, false},
      {"REG_BINARY 04000000", REG_BINARY, "\x04\0\0\0", 4, false},
      {"the value deleted", REG_NONE, "", 0, false},
  };
  for (const auto& row : rows) {
    if (row.type == REG_NONE) {
      RegDeleteValueA(key, kTestGuideSettingsValue);
    } else {
      RegSetValueExA(key, kTestGuideSettingsValue, 0, row.type, reinterpret_cast<const BYTE*>(row.data),
                     row.size);
    }
    expect(topmostRequired(registry) == row.topmost,
           std::string("with ") + row.what + " the query answered " + (row.topmost ? "False" : "True"));
  }
  RegCloseKey(key);
  RegDeleteKeyA(HKEY_LOCAL_MACHINE, kExecutiveSettingsKey);
  expect(!topmostRequired(registry), "with the key deleted the query answered True");
}

// Trace channel. The viewer records every message as "<byte count>:<bytes>\n".

using Scalar = TraceValue::Scalar;

std::string recorded(const std::string& bytes) {
  return std::to_string(bytes.size()) + ":" + bytes + "\n";
}

void expectRecord(const std::wstring& path, const std::string& expected) {
  std::ifstream in(narrow(path), std::ios::binary);
  expectText({std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()}, expected,
             "the viewer's record");
}

BOOL CALLBACK findMarkedWindow(HWND window, LPARAM result) {
  if (reinterpret_cast<UINT_PTR>(GetPropA(window, "vbAcceleratorVBTRACER_TRACEWIN")) != 1) return TRUE;
  *reinterpret_cast<HWND*>(result) = window;
  return FALSE;
}

/// The trace viewer's window, marked with its property; nullptr when none runs.
HWND markedWindow() {
  HWND found = nullptr;
  EnumWindows(findMarkedWindow, reinterpret_cast<LPARAM>(&found));
  return found;
}

/// The trace viewer beside this program, recording to `record`, from its window's appearance to the
/// end of the scope.
class ViewerProcess {
 public:
  explicit ViewerProcess(const std::wstring& record) {
    wchar_t self[MAX_PATH] = {};
    std::wstring path(self, GetModuleFileNameW(nullptr, self, MAX_PATH));
    path = path.substr(0, path.find_last_of(L"\\/") + 1) + L"rx9400-traceviewer.exe";
    std::wstring command = L"\"" + path + L"\" --record \"" + record + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    expect(CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr,
                          nullptr, &startup, &process_) != FALSE,
           "cannot start " + narrow(path));
    expect(pollFor(20000, [] { return markedWindow() != nullptr; }),
           "the trace viewer's window did not appear");
  }
  ~ViewerProcess() {
    if (HWND window = markedWindow()) PostMessageW(window, WM_CLOSE, 0, 0);
    if (WaitForSingleObject(process_.hProcess, 5000) == WAIT_TIMEOUT) TerminateProcess(process_.hProcess, 1);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }
  ViewerProcess(const ViewerProcess&) = delete;
  ViewerProcess& operator=(const ViewerProcess&) = delete;

 private:
  PROCESS_INFORMATION process_{};
};

void traceLines(const Options& options) {
  const std::wstring record = options.artifacts + L"\\trace.rec";
  DeleteFileW(record.c_str());
  const ViewerProcess viewer(record);
  win::Win32TraceSink sink;
  TraceChannel channel(sink);
  expect(channel.active(), "no trace viewer window found");
  channel.trace({"$CheckConnectionStatus$ - Detector Connection Status :: ", 1});
  channel.trace(
      {"Readings", TraceValue(std::vector<Scalar>{std::string("a"), std::int64_t{2}, 0.1 * 3, true})});
  channel.trace({});
  channel.trace(
      {"Dose 12.5 \xC2\xB5Gy at 21 \xC2\xB0"
       "C",
       TraceValue(std::vector<Scalar>{})});
  channel.trace({"Overflow\nin TamsaRX9400VTI.mTrace.Trace at line 7"});
  // Every field is followed by a TAB; the bytes are the ANSI code page's (1252: micro sign B5, degree
  // sign B0); nothing terminates a message.
  expectRecord(record, recorded(": $CheckConnectionStatus$ - Detector Connection Status :: \t1\t") +
                           recorded(": Readings\ta\t2\t0.3\tTrue\t") + recorded(": ") +
                           recorded(": Dose 12.5 \xB5Gy at 21 \xB0"
                                    "C\t") +
                           recorded(": Overflow\nin TamsaRX9400VTI.mTrace.Trace at line 7\t"));
}

// Date picker: on a thread without windows, as the connection code that loads device dates.

std::string shortDate(int day, int month, int year) {
  SYSTEMTIME time{};
  time.wDay = static_cast<WORD>(day);
  time.wMonth = static_cast<WORD>(month);
  time.wYear = static_cast<WORD>(year);
  wchar_t text[128] = {};
  expect(GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &time, nullptr, text, 128) > 0,
         "GetDateFormatW failed");
  return narrow(text);
}

BOOL CALLBACK countVisible(HWND window, LPARAM count) {
  if (IsWindowVisible(window)) ++*reinterpret_cast<int*>(count);
  return TRUE;
}

void datePickerCases() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  win::Win32DatePickerControl control;
  DatePicker picker(control);
  picker.SetDTPicketDate("15", "3", "2021");
  expectText(picker.GetDTPicketDate(), shortDate(15, 3, 2021), "15.3.2021");
  picker.SetDTPicketDate("", "", "2024");
  expectText(picker.GetDTPicketDate(), shortDate(now.wDay, now.wMonth, 2024), "a date with only its year");
  int visible = 0;
  EnumThreadWindows(GetCurrentThreadId(), countVisible, reinterpret_cast<LPARAM>(&visible));
  expect(visible == 0, "the date picker showed a window");
}

void datePicker(const Options&) {
  std::string why;
  AutomationThread([&] { attempt(why, "on a thread without windows", datePickerCases); }).join();
  expect(why.empty(), why);
}

}  // namespace

std::vector<Check> platformChecks() {
  return {
      {"registry", "the executive's setting as stored: DWORD values, other types, deleted value and key",
       registryValues},
      {"trace-lines", "lines reach the running viewer as exact ANSI bytes", traceLines},
      {"datepicker", "loaded dates read back in the short date format, on a windowless thread", datePicker},
  };
}

}  // namespace rx9400::e2e
