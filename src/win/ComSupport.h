// Small pieces every COM class of the plug-in uses: the module's object and lock counts, the type
// library, text and Boolean conversions, and the one error trap around each member.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace rx9400::win {

/// The plug-in DLL's module handle (set when the DLL is loaded).
HMODULE moduleHandle();
void setModuleHandle(HMODULE module);

/// Live objects and server locks: DllCanUnloadNow answers S_OK only when both are zero.
void objectCreated();
void objectDestroyed();
void lockServer(bool lock);
bool canUnload();

/// The plug-in's own type library, loaded from the DLL's resources on first use. Null when it cannot
/// be loaded. The caller does not own the pointer.
ITypeLib* typeLibrary();
/// The type information of one interface or class of the library; the caller releases it.
HRESULT typeInfoOf(REFGUID guid, ITypeInfo** typeInfo);
/// Releases the cached type library (when the DLL may be unloaded).
void releaseTypeLibrary();

/// UTF-8 to a new BSTR (the caller frees it) and back.
BSTR toBstr(const std::string& text);
std::string fromBstr(BSTR text);

inline VARIANT_BOOL toVariantBool(bool value) {
  return value ? VARIANT_TRUE : VARIANT_FALSE;
}
inline bool fromVariantBool(VARIANT_BOOL value) {
  return value != VARIANT_FALSE;
}

/// Reports a failure that reached a member's trap, through the reporter set (the trace channel).
void reportTrappedFailure(const char* member, const char* what) noexcept;
using FailureReporter = void (*)(const char* member, const char* what);
void setFailureReporter(FailureReporter reporter);

/// Runs a member's body inside its error trap. No C++ exception leaves; the member answers S_OK with
/// whatever result the body had set (its default when it failed before setting one).
template <typename Body>
HRESULT trapped(const char* member, Body&& body) noexcept {
  try {
    std::forward<Body>(body)();
  } catch (const std::exception& error) {
    reportTrappedFailure(member, error.what());
  } catch (...) {
    reportTrappedFailure(member, "unknown failure");
  }
  return S_OK;
}

/// The same for a member with a result: clears the result to its default first; a null result
/// pointer is the caller's error (E_POINTER).
template <typename Result, typename Body>
HRESULT trappedResult(const char* member, Result* result, Result defaultValue, Body&& body) noexcept {
  if (result == nullptr) return E_POINTER;
  *result = defaultValue;
  return trapped(member, std::forward<Body>(body));
}

}  // namespace rx9400::win

namespace rx9400::win {

/// The texts of a one-dimensional array of Strings or of Variants (elements that are not texts read
/// as their text conversion, or empty).
std::vector<std::string> readStrings(SAFEARRAY* array);
/// Writes texts into an existing array of Strings or Variants, from its lower bound on, as many as
/// both hold; the array keeps its size.
void writeStrings(SAFEARRAY* array, const std::vector<std::string>& texts);

}  // namespace rx9400::win
