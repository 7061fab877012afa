// The in-process server: DllMain, the class factory, and registration of the three classes with
// their ProgIDs, the type library and its interfaces, machine-wide (regsvr32) or for the current user
// (regsvr32 /n /i:user). What registration writes is the list in Registration.h, which the installer
// packages carry as their own rows.
#include <windows.h>

#include <olectl.h>

#include <iterator>
#include <new>
#include <string>

#include "win/ComClasses.h"
#include "win/ComSupport.h"
#include "win/RegistrationWriter.h"
#include "win/SingleInterface.h"
#include "win/TamsaRX9400VTI_h.h"
#include "win/Win32NoticeBoxes.h"

namespace rx9400::win {
namespace {

using CreateFunction = HRESULT (*)(REFIID, void**);

/// One creatable class: its identity and how to make one, in the order of registration::kPluginClasses.
struct ClassEntry {
  const CLSID* classId;
  CreateFunction create;
};

const ClassEntry kClasses[] = {
    {&CLSID_CRX9400Query, createQuery},
    {&CLSID_CRX9400VTI, createInstrument},
    {&CLSID_CStoreDetectorType, createStoreDetectorType},
};
static_assert(std::size(kClasses) == std::size(registration::kPluginClasses));

class ClassFactory final : public SingleInterface<IClassFactory> {
 public:
  explicit ClassFactory(CreateFunction create) : SingleInterface(IID_IClassFactory), create_(create) {
    objectCreated();
  }
  ~ClassFactory() override { objectDestroyed(); }
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    try {
      return create_(iid, out);
    } catch (...) {
      return E_OUTOFMEMORY;
    }
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    lockServer(lock != FALSE);
    return S_OK;
  }

 private:
  CreateFunction create_;
};

std::wstring guidText(REFGUID guid) {
  wchar_t text[40] = {};
  StringFromGUID2(guid, text, 40);
  return text;
}

std::wstring modulePath() {
  wchar_t path[MAX_PATH * 2] = {};
  const DWORD length = GetModuleFileNameW(moduleHandle(), path, MAX_PATH * 2);
  return length == 0 || length >= MAX_PATH * 2 ? std::wstring() : std::wstring(path, length);
}

/// The class list above is the registration list's, in its order; and the list matches the type library.
bool listMatchesTypeLibrary() {
  for (std::size_t i = 0; i < std::size(kClasses); ++i) {
    if (guidText(*kClasses[i].classId) != registrationText(registration::kPluginClasses[i].classId)) {
      return false;
    }
  }
  return registrationMatches(registration::kPlugin, typeLibrary());
}

/// The classes root of the current user (HKCU\Software\Classes); the caller closes it.
HKEY openUserClasses() {
  HKEY handle = nullptr;
  if (RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Classes", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                      &handle, nullptr) != ERROR_SUCCESS) {
    return nullptr;
  }
  return handle;
}

HRESULT registerServer(bool forUser) {
  HKEY root = forUser ? openUserClasses() : HKEY_CLASSES_ROOT;
  if (root == nullptr) return SELFREG_E_CLASS;
  const std::wstring path = modulePath();
  const HRESULT hr =
      !path.empty() && listMatchesTypeLibrary() && writeRegistration(root, registration::kPlugin, path)
          ? S_OK
          : SELFREG_E_CLASS;
  if (FAILED(hr)) deleteRegistration(root, registration::kPlugin);
  if (forUser) RegCloseKey(root);
  return hr;
}

HRESULT unregisterServer(bool forUser) {
  HKEY root = forUser ? openUserClasses() : HKEY_CLASSES_ROOT;
  if (root == nullptr) return S_OK;
  deleteRegistration(root, registration::kPlugin);
  if (forUser) RegCloseKey(root);
  return S_OK;
}

}  // namespace
}  // namespace rx9400::win

using namespace rx9400::win;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    setModuleHandle(instance);
    DisableThreadLibraryCalls(instance);
  }
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  for (const ClassEntry& entry : kClasses) {
    if (!IsEqualCLSID(classId, *entry.classId)) continue;
    auto* factory = new (std::nothrow) ClassFactory(entry.create);
    if (factory == nullptr) return E_OUTOFMEMORY;
    const HRESULT hr = factory->QueryInterface(iid, out);
    factory->Release();
    return hr;
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
  if (!canUnload()) return S_FALSE;
  // What must not be left behind by an unloaded module goes here, outside the loader lock. The device
  // library itself stays loaded for the life of the process (its update thread may still run).
  releaseTypeLibrary();
  unregisterNoticeBoxClass();
  return S_OK;
}

STDAPI DllRegisterServer() {
  return registerServer(false);
}

STDAPI DllUnregisterServer() {
  return unregisterServer(false);
}

/// regsvr32 /n /i:user registers for the current user only; /u /n /i:user removes that again.
STDAPI DllInstall(BOOL install, LPCWSTR commandLine) {
  const bool forUser = commandLine != nullptr && _wcsicmp(commandLine, L"user") == 0;
  return install ? registerServer(forUser) : unregisterServer(forUser);
}
