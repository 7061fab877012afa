// The shared test-program harness (Harness.h).
#include "Harness.h"

#include <objbase.h>
#include <oleauto.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace rx9400::e2e {
namespace {

std::string gCurrent = "start-up";  ///< the check running now; crash and time-out lines name it
DWORD gLimitMs = 60000;

LONG WINAPI reportCrash(EXCEPTION_POINTERS* exception) {
  std::printf("FAIL %s: unhandled exception 0x%08lX at %p\n", gCurrent.c_str(),
              static_cast<unsigned long>(exception->ExceptionRecord->ExceptionCode),
              exception->ExceptionRecord->ExceptionAddress);
  std::fflush(stdout);
  ExitProcess(3);
}

/// Ends the program with a FAIL line when a check runs past the limit (a dialog nobody closes).
DWORD WINAPI watch(void* done) {
  if (WaitForSingleObject(done, gLimitMs) == WAIT_TIMEOUT) {
    std::printf("FAIL %s: did not finish within %lu s\n", gCurrent.c_str(),
                static_cast<unsigned long>(gLimitMs / 1000));
    std::fflush(stdout);
    ExitProcess(4);
  }
  return 0;
}

bool run(const Check& check, const Options& options) {
  gCurrent = check.name;
  HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HANDLE watchdog = CreateThread(nullptr, 0, watch, done, 0, nullptr);
  std::string why;
  try {
    check.run(options);
  } catch (const CheckFailure& failure) {
    why = failure.why;
  } catch (const std::exception& error) {
    why = std::string("exception: ") + error.what();
  }
  SetEvent(done);
  WaitForSingleObject(watchdog, INFINITE);
  CloseHandle(watchdog);
  CloseHandle(done);
  std::printf(why.empty() ? "PASS %s\n" : "FAIL %s: %s\n", gCurrent.c_str(), why.c_str());
  std::fflush(stdout);
  return why.empty();
}

}  // namespace

int runChecks(int argc, char** argv, const std::vector<Check>& checks) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  SetUnhandledExceptionFilter(reportCrash);
  Options options;
  std::vector<const Check*> selected;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const auto value = [&](const char* option) { return widen(word.substr(std::string(option).size())); };
    if (word.rfind("--artifacts=", 0) == 0) {
      options.artifacts = value("--artifacts=");
    } else if (word.rfind("--scenarios=", 0) == 0) {
      options.scenarios = value("--scenarios=");
    } else if (word.rfind("--limit=", 0) == 0) {
      gLimitMs = static_cast<DWORD>(std::atoi(word.c_str() + 8)) * 1000;
    } else if (word == "--list") {
      for (const Check& check : checks) std::printf("%-22s %s\n", check.name, check.proves);
      return 0;
    } else {
      const Check* found = nullptr;
      for (const Check& check : checks) found = word == check.name ? &check : found;
      if (found == nullptr) {
        std::printf("FAIL %s: no such check (--list shows them)\n", word.c_str());
        return 2;
      }
      selected.push_back(found);
    }
  }
  const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  if (FAILED(initialized)) {
    std::printf("FAIL start-up: CoInitializeEx gave %s\n", hresultText(initialized).c_str());
    return 1;
  }
  int failed = 0;
  for (const Check* check : selected) failed += run(*check, options) ? 0 : 1;
  // COM stays initialised to the end: a language component may still be referenced, as in the plug-in.
  return failed == 0 ? 0 : 1;
}

void fail(const std::string& why) {
  throw CheckFailure{why};
}

std::string hresultText(HRESULT value) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(value));
  return text;
}

void expectHr(HRESULT actual, HRESULT expected, const std::string& call) {
  if (actual != expected) fail(call + " gave " + hresultText(actual) + ", expected " + hresultText(expected));
}

std::string guidText(REFGUID guid) {
  wchar_t text[40] = {};
  StringFromGUID2(guid, text, 40);
  return narrow(text);
}

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

std::wstring taken(BSTR text) {
  std::wstring result(text != nullptr ? text : L"", text != nullptr ? SysStringLen(text) : 0);
  SysFreeString(text);
  return result;
}

void savePicture(HWND window, const std::wstring& folder, const std::string& name) {
  std::wstring error;
  expect(saveWindowBitmap(window, folder + L"\\" + widen(name) + L".bmp", &error),
         "no picture " + name + ": " + narrow(error));
}

}  // namespace rx9400::e2e
