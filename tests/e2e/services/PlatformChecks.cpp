// The executive's registry setting, the trace channel to the real viewer, and the hidden date picker.
#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

#include "ServiceChecks.h"
#include "core/Placement.h"
#include "core/Trace.h"
#include "ionchamber/DatePicker.h"
#include "win/Win32Platform.h"

namespace rx9400::services {
namespace {

// Registry. run.sh writes the value with the platform's own reg tool before each of the first two
// checks; the third writes the values itself, between queries of one process.

void registryAnswers(bool expected) {
  win::Win32Registry registry;
  const bool answer = topmostRequired(registry);
  expect(answer == expected, std::string("topmostRequired answered ") + (answer ? "True" : "False"));
  expect(topmostRequired(registry) == answer, "a second query answered differently");
}

void registryTrue(const Options&) {
  registryAnswers(true);
}
void registryFalse(const Options&) {
  registryAnswers(false);
}

void registryReadAfresh(const Options&) {
  HKEY key = nullptr;
  expect(RegCreateKeyExA(HKEY_LOCAL_MACHINE, kExecutiveSettingsKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                         nullptr) == ERROR_SUCCESS,
         "cannot create the executive's key");
  win::Win32Registry registry;
  struct Step {
    DWORD value;
    bool expected;
  };
  for (const Step step : {Step{4, true}, Step{5, false}, Step{9, true}, Step{8, false}}) {
    RegSetValueExA(key, kTestGuideSettingsValue, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&step.value),
                   sizeof(step.value));
    expect(topmostRequired(registry) == step.expected,
           "after the value changed to " + std::to_string(step.value) + " the query answered the old value");
  }
  RegDeleteValueA(key, kTestGuideSettingsValue);
  RegCloseKey(key);
  expect(!topmostRequired(registry), "after the value was deleted the query answered True");
}

// Trace channel. The viewer records every message as "<byte count>:<bytes>\n".

using Scalar = TraceValue::Scalar;

std::string recorded(const std::string& bytes) {
  return std::to_string(bytes.size()) + ":" + bytes + "\n";
}

std::string fileBytes(const std::wstring& path) {
  std::string bytes;
  FILE* in = _wfopen(path.c_str(), L"rb");
  if (in == nullptr) return bytes;
  char buffer[4096];
  for (std::size_t read; (read = std::fread(buffer, 1, sizeof(buffer), in)) > 0;) bytes.append(buffer, read);
  std::fclose(in);
  return bytes;
}

void expectRecord(const std::wstring& path, const std::string& expected) {
  expect(!path.empty(), "no --record=FILE given");
  expectText(fileBytes(path), expected, "the viewer's record");
}

void traceLines(const Options& options) {
  win::Win32TraceSink sink;
  TraceChannel channel(sink);
  expect(channel.active(), "no trace viewer window found");
  channel.trace({"$CheckConnectionStatus$ - Detector Connection Status :: ", 1});
  channel.trace(
      {"Readings", TraceValue(std::vector<Scalar>{std::string("a"), std::int64_t{2}, 0.1 * 3, true})});
  channel.trace({});
  channel.trace(
      {"Dose 12.5 \xC2\xB5Gy at 21 \xC2\xB0"
       "C"});
  channel.trace({"$UpdateBatteryStatus$ - Battery Charge status", "DOSE-0042", "::", 1234 * 0.1,
                 TraceValue(std::vector<Scalar>{})});
  channel.trace({"Overflow\nin TamsaRX9400VTI.mTrace.Trace at line 7"});
  // Every field is followed by a TAB; the bytes are the ANSI code page's (1252: micro sign B5, degree
  // sign B0); nothing terminates a message.
  expectRecord(options.record,
               recorded(": $CheckConnectionStatus$ - Detector Connection Status :: \t1\t") +
                   recorded(": Readings\ta\t2\t0.3\tTrue\t") + recorded(": ") +
                   recorded(": Dose 12.5 \xB5Gy at 21 \xB0"
                            "C\t") +
                   recorded(": $UpdateBatteryStatus$ - Battery Charge status\tDOSE-0042\t::\t123.4\t") +
                   recorded(": Overflow\nin TamsaRX9400VTI.mTrace.Trace at line 7\t"));
}

const char* const kViewerProperty = "vbAcceleratorVBTRACER_TRACEWIN";

BOOL CALLBACK findMarkedWindow(HWND window, LPARAM found) {
  if (reinterpret_cast<UINT_PTR>(GetPropA(window, kViewerProperty)) != 1) return TRUE;
  *reinterpret_cast<HWND*>(found) = window;
  return FALSE;
}

HWND markedWindow() {
  HWND found = nullptr;
  EnumWindows(findMarkedWindow, reinterpret_cast<LPARAM>(&found));
  return found;
}

/// The trace viewer beside this program, started with its output discarded; ends it when it goes.
class ViewerProcess {
 public:
  explicit ViewerProcess(const std::wstring& record) {
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring path = self;
    path = path.substr(0, path.find_last_of(L"\\/") + 1) + L"rx9400-traceviewer.exe";
    std::wstring command = L"\"" + path + L"\" --record \"" + record + L"\"";
    SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    discard_ = CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_WRITE, &inherit, OPEN_EXISTING, 0, nullptr);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = discard_;
    startup.hStdOutput = discard_;
    startup.hStdError = discard_;
    started_ = CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                              &startup, &process_) != FALSE;
  }
  ~ViewerProcess() {
    if (started_) {
      if (HWND window = markedWindow()) PostMessageW(window, WM_CLOSE, 0, 0);
      if (WaitForSingleObject(process_.hProcess, 5000) == WAIT_TIMEOUT)
        TerminateProcess(process_.hProcess, 1);
      CloseHandle(process_.hThread);
      CloseHandle(process_.hProcess);
    }
    if (discard_ != INVALID_HANDLE_VALUE) CloseHandle(discard_);
  }
  ViewerProcess(const ViewerProcess&) = delete;
  ViewerProcess& operator=(const ViewerProcess&) = delete;

  bool started() const { return started_; }

  /// Waits until the viewer's marked window exists.
  bool waitForWindow(DWORD milliseconds) const {
    for (DWORD waited = 0; waited < milliseconds; waited += 50) {
      if (markedWindow() != nullptr) return true;
      if (WaitForSingleObject(process_.hProcess, 50) != WAIT_TIMEOUT) return false;
    }
    return false;
  }

 private:
  HANDLE discard_ = INVALID_HANDLE_VALUE;
  PROCESS_INFORMATION process_{};
  bool started_ = false;
};

void traceLateViewer(const Options& options) {
  expect(!options.record.empty(), "no --record=FILE given");
  expect(markedWindow() == nullptr, "a trace viewer is already running");
  DeleteFileW(options.record.c_str());
  win::Win32TraceSink sink;
  TraceChannel channel(sink);
  channel.trace({"before the viewer"});

  ViewerProcess viewer(options.record);
  expect(viewer.started(), "cannot start rx9400-traceviewer.exe beside this program");
  expect(viewer.waitForWindow(20000), "the trace viewer's window did not appear");
  channel.trace({"after the viewer started"});
  channel.traceAssert(false, "traceLateViewer");
  expect(!channel.active(), "the channel searched again after its first line");
  expectRecord(options.record, "");

  // The same viewer is reached by a channel whose first line comes after it started.
  win::Win32TraceSink laterSink;
  TraceChannel later(laterSink);
  later.trace({"new process"});
  expectRecord(options.record, recorded(": new process\t"));
}

// Date picker.

struct DateCase {
  const char* day;
  const char* month;
  const char* year;
  int expectedDay;  ///< 0: today's
  int expectedMonth;
  int expectedYear;
};

// In order, on one picker: 31 December right after 30 November is taken as a whole date.
const DateCase kDates[] = {
    {"15", "3", "2021", 15, 3, 2021},   {" 7 ", "11", "1999", 7, 11, 1999},
    {"29", "2", "2024", 29, 2, 2024},   {"30", "11", "2021", 30, 11, 2021},
    {"31", "12", "2021", 31, 12, 2021}, {"", "", "", 0, 0, 0},
    {"  ", "", "2024", 0, 0, 2024},     {"5", "", "", 5, 0, 0},
    {"", "1", "2030", 0, 1, 2030},
};

std::string shortDateText(int day, int month, int year) {
  SYSTEMTIME time{};
  time.wDay = static_cast<WORD>(day);
  time.wMonth = static_cast<WORD>(month);
  time.wYear = static_cast<WORD>(year);
  wchar_t text[128] = {};
  expect(GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &time, nullptr, text, 128) > 0,
         "GetDateFormatW failed");
  return utf8(text);
}

BOOL CALLBACK countVisible(HWND window, LPARAM count) {
  if (IsWindowVisible(window)) ++*reinterpret_cast<int*>(count);
  return TRUE;
}

int visibleWindowsOfThisThread() {
  int count = 0;
  EnumThreadWindows(GetCurrentThreadId(), countVisible, reinterpret_cast<LPARAM>(&count));
  return count;
}

void datePickerCases() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  win::Win32DatePickerControl control;
  DatePicker picker(control);
  std::string last;
  for (const DateCase& date : kDates) {
    const std::string what =
        std::string("date \"") + date.day + "\", \"" + date.month + "\", \"" + date.year + "\"";
    picker.SetDTPicketDate(date.day, date.month, date.year);
    last = shortDateText(date.expectedDay != 0 ? date.expectedDay : now.wDay,
                         date.expectedMonth != 0 ? date.expectedMonth : now.wMonth,
                         date.expectedYear != 0 ? date.expectedYear : now.wYear);
    expectText(picker.GetDTPicketDate(), last, what);
  }
  // A date that does not exist, or a part that is no number, is refused and the picker keeps its date.
  for (const char* day : {"31", "x"}) {
    bool refused = false;
    try {
      picker.SetDTPicketDate(day, "2", "2021");
    } catch (const std::exception&) {
      refused = true;
    }
    expect(refused, std::string("day \"") + day + "\" of February 2021 was taken");
    expectText(picker.GetDTPicketDate(), last, std::string("after day \"") + day + "\" was refused");
  }
  expect(visibleWindowsOfThisThread() == 0, "the date picker showed a window");
}

struct ThreadResult {
  std::string why;
};

DWORD WINAPI datePickerThread(void* parameter) {
  auto* result = static_cast<ThreadResult*>(parameter);
  try {
    if (visibleWindowsOfThisThread() != 0) fail("the worker thread has a visible window");
    datePickerCases();
  } catch (const CheckFailure& failure) {
    result->why = failure.why;
  } catch (const std::exception& error) {
    result->why = std::string("exception: ") + error.what();
  }
  return 0;
}

void datePicker(const Options&) {
  // A thread without any window of its own, as the connection code that loads device dates.
  ThreadResult result;
  HANDLE thread = CreateThread(nullptr, 0, datePickerThread, &result, 0, nullptr);
  expect(thread != nullptr, "CreateThread failed");
  const DWORD waited = WaitForSingleObject(thread, 20000);
  CloseHandle(thread);
  expect(waited == WAIT_OBJECT_0, "the date picker thread did not finish within 20 s");
  if (!result.why.empty()) fail(result.why);
}

}  // namespace

std::vector<Check> platformChecks() {
  return {
      {"registry-true", "the executive's setting as run.sh wrote it asks for topmost dialogs", registryTrue},
      {"registry-false", "the executive's setting as run.sh wrote it does not ask for topmost dialogs",
       registryFalse},
      {"registry-fresh", "each query reads the value afresh", registryReadAfresh},
      {"trace-lines", "lines reach the running viewer as exact ANSI bytes (--record=FILE)", traceLines},
      {"trace-late-viewer", "a viewer started after the first line is never written to (--record=FILE)",
       traceLateViewer},
      {"datepicker",
       "the hidden picker renders loaded dates as the short date format, on a windowless thread", datePicker},
  };
}

}  // namespace rx9400::services
