// What every Windows test program of the end-to-end checks shares: named checks that stop at the first
// failed expectation, one "PASS name" or "FAIL name: why" line each, a crash or a check past its time
// limit ending the program with a FAIL line, and pictures of windows.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "Automation.h"
#include "ComPtr.h"

namespace rx9400::e2e {

using namespace rx9400::tools;

struct CheckFailure {
  std::string why;
};

/// What the command line gives every check.
struct Options {
  std::wstring artifacts = L".";  ///< folder for pictures and files a person may look at
  std::wstring scenarios;         ///< folder of the simulator scenarios checks load themselves
};

struct Check {
  const char* name;
  const char* proves;  ///< one line, shown by --list
  void (*run)(const Options& options);
};

/// Runs the checks named on the command line in a single-threaded apartment:
///   PROGRAM [--artifacts=FOLDER] [--scenarios=FOLDER] [--limit=SECONDS] [--list]
///   CHECK...
/// The exit code is non-zero when one failed.
int runChecks(int argc, char** argv, const std::vector<Check>& checks);

[[noreturn]] void fail(const std::string& why);
inline void expect(bool condition, const std::string& what) {
  if (!condition) fail(what);
}
/// Fails unless `actual` is `expected`; `call` names what answered.
void expectHr(HRESULT actual, HRESULT expected, const std::string& call);
std::string hresultText(HRESULT value);
std::string guidText(REFGUID guid);
/// A text in quotes for a FAIL line, line feeds written "\n".
std::string quoted(const std::wstring& text);
/// "[a, b, c]"
std::string joined(const std::vector<std::string>& items);
/// The text of a BSTR the caller owns, which is freed.
std::wstring taken(BSTR text);

/// Runs one part of a check; when it fails, adds "`what`: why" to `why` and the check goes on.
template <typename Part>
void attempt(std::string& why, const std::string& what, Part part) {
  try {
    part();
  } catch (const CheckFailure& failure) {
    why += (why.empty() ? "" : "; ") + what + ": " + failure.why;
  }
}

template <typename Found>
bool pollFor(DWORD timeoutMs, Found found) {
  const ULONGLONG end = GetTickCount64() + timeoutMs;
  while (!found()) {
    if (GetTickCount64() >= end) return false;
    Sleep(50);
  }
  return true;
}

/// Saves a picture of `window` as FOLDER\NAME.bmp.
void savePicture(HWND window, const std::wstring& folder, const std::string& name);

/// Creates a class by ProgID (CLSIDFromProgID, CoCreateInstance in process) and asks for `iid`.
template <typename T>
ComPtr<T> createByProgId(const wchar_t* progId, REFIID iid) {
  ComPtr<T> object;
  expectHr(tools::createByProgId(progId, iid, object), S_OK, "creating " + narrow(progId));
  return object;
}

/// QueryInterface that must succeed.
template <typename T>
ComPtr<T> queryInterface(IUnknown* object, REFIID iid, const std::string& what) {
  ComPtr<T> result;
  expectHr(object->QueryInterface(iid, result.putVoid()), S_OK, "QueryInterface(" + what + ")");
  return result;
}

}  // namespace rx9400::e2e
