// The test host's checks: each has a name that the command line selects, and a body that stops at
// the first failed expectation (CheckFailure) with the reason printed in its FAIL line.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "ComPtr.h"

namespace rx9400::e2e {

struct CheckFailure {
  std::string why;
};

/// What the command line gives every check.
struct HostOptions {
  std::wstring artifacts = L".";  ///< folder for pictures and other files a person may look at
  /// The test language component is registered: the plug-in's texts show as "[[" + text + "]]".
  bool pseudoLanguage = false;
  std::wstring scenarios;  ///< folder of the simulator scenarios that checks load themselves
};

struct Check {
  const char* name;
  const char* proves;  ///< one line, shown by --list
  void (*run)(const HostOptions& options);
};

// The group "com" ("all" is every check).
std::vector<Check> comChecks();
// Checks that need an arrangement run.sh makes, selected only by name: the plug-in registered from a
// folder without the device library.
std::vector<Check> bareFolderChecks();
// The plug-in's session and connection dialogs, each under the simulator scenario run.sh gives it and
// in a host process of its own.
std::vector<Check> sessionChecks();
// Whole exposures through the instrument class, one per detector kind; they load their scenarios
// from HostOptions::scenarios.
std::vector<Check> exposureChecks();

[[noreturn]] void fail(const std::string& why);
inline void expect(bool condition, const std::string& what) {
  if (!condition) fail(what);
}
/// Fails unless `actual` is `expected`; `call` names what answered.
void expectHr(HRESULT actual, HRESULT expected, const std::string& call);

std::string hresultText(HRESULT value);
std::string guidText(REFGUID guid);
std::string narrowText(const std::wstring& text);

/// Creates a class by ProgID (CLSIDFromProgID, CoCreateInstance in process) and asks for `iid`.
template <typename T>
ComPtr<T> createByProgId(const wchar_t* progId, REFIID iid) {
  CLSID classId{};
  expectHr(CLSIDFromProgID(progId, &classId), S_OK, "CLSIDFromProgID(" + narrowText(progId) + ")");
  ComPtr<T> object;
  expectHr(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, iid, object.putVoid()), S_OK,
           "CoCreateInstance(" + narrowText(progId) + ")");
  expect(object.get() != nullptr, "CoCreateInstance gave S_OK and no object");
  return object;
}

/// QueryInterface that must succeed.
template <typename T>
ComPtr<T> queryInterface(IUnknown* object, REFIID iid, const std::string& what) {
  ComPtr<T> result;
  expectHr(object->QueryInterface(iid, result.putVoid()), S_OK, "QueryInterface(" + what + ")");
  expect(result.get() != nullptr, "QueryInterface(" + what + ") gave S_OK and no pointer");
  return result;
}

/// Width, height and the number of distinct colours of a 24-bit BMP file (all zero when unreadable).
struct BitmapSummary {
  int width = 0;
  int height = 0;
  std::size_t colours = 0;
};
BitmapSummary summarizeBitmap(const std::wstring& path);
/// Fails unless the picture at `path` has the size of `frame` and more than one colour.
void expectPicture(const std::wstring& path, const RECT& frame);

}  // namespace rx9400::e2e
