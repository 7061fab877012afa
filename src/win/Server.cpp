// The in-process server: DllMain, the class factory, and registration of the three classes with
// their ProgIDs and the type library, machine-wide (regsvr32) or for the current user
// (regsvr32 /n /i:user).
#include <windows.h>

#include <olectl.h>

#include <new>
#include <string>

#include "win/ComClasses.h"
#include "win/ComSupport.h"
#include "win/SingleInterface.h"
#include "win/TamsaRX9400VTI_h.h"
#include "win/Win32NoticeBoxes.h"

#if defined(__MINGW32__)
// oleaut32 exports these (Vista and later) but MinGW's headers do not declare them.
extern "C" {
WINOLEAUTAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* helpFolder);
WINOLEAUTAPI UnRegisterTypeLibForUser(REFGUID libraryId, WORD major, WORD minor, LCID locale, SYSKIND system);
}
#endif

namespace rx9400::win {
namespace {

using CreateFunction = HRESULT (*)(REFIID, void**);

/// One creatable class: its identity, names and how to make one.
struct ClassEntry {
  const CLSID* classId;
  const wchar_t* className;
  CreateFunction create;
};

const ClassEntry kClasses[] = {
    {&CLSID_CRX9400Query, L"CRX9400Query", createQuery},
    {&CLSID_CRX9400VTI, L"CRX9400VTI", createInstrument},
    {&CLSID_CStoreDetectorType, L"CStoreDetectorType", createStoreDetectorType},
};

constexpr const wchar_t* kLibraryName = L"TamsaRX9400VTI";
constexpr const wchar_t* kTypeLibraryVersion = L"1.0";

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

/// Writes a key's default value and, when `valueName` is given, one more named value.
LONG writeKey(HKEY root, const std::wstring& key, const std::wstring& value,
              const wchar_t* valueName = nullptr, const std::wstring& namedValue = {}) {
  HKEY handle = nullptr;
  LONG result = RegCreateKeyExW(root, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &handle, nullptr);
  if (result != ERROR_SUCCESS) return result;
  result = RegSetValueExW(handle, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                          static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
  if (result == ERROR_SUCCESS && valueName != nullptr) {
    result = RegSetValueExW(handle, valueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(namedValue.c_str()),
                            static_cast<DWORD>((namedValue.size() + 1) * sizeof(wchar_t)));
  }
  RegCloseKey(handle);
  return result;
}

/// Deletes a key with everything below it; a key that is not there counts as deleted.
void deleteKey(HKEY root, const std::wstring& key) {
  const LONG result = RegDeleteTreeW(root, key.c_str());
  if (result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND) RegDeleteKeyW(root, key.c_str());
}

/// The class and ProgID entries of every class, under `classesRoot` (HKCR or HKCU\Software\Classes).
HRESULT registerClasses(HKEY classesRoot) {
  const std::wstring path = modulePath();
  if (path.empty()) return SELFREG_E_CLASS;
  const std::wstring library = guidText(LIBID_TamsaRX9400VTI);
  for (const ClassEntry& entry : kClasses) {
    const std::wstring clsid = guidText(*entry.classId);
    const std::wstring progId = std::wstring(kLibraryName) + L"." + entry.className;
    const std::wstring classKey = L"CLSID\\" + clsid;
    const LONG results[] = {
        writeKey(classesRoot, classKey, entry.className),
        writeKey(classesRoot, classKey + L"\\InprocServer32", path, L"ThreadingModel", L"Apartment"),
        writeKey(classesRoot, classKey + L"\\ProgID", progId),
        writeKey(classesRoot, classKey + L"\\VersionIndependentProgID", progId),
        writeKey(classesRoot, classKey + L"\\TypeLib", library),
        writeKey(classesRoot, classKey + L"\\VERSION", kTypeLibraryVersion),
        writeKey(classesRoot, classKey + L"\\Programmable", L""),
        writeKey(classesRoot, progId, entry.className),
        writeKey(classesRoot, progId + L"\\CLSID", clsid),
    };
    for (const LONG result : results) {
      if (result != ERROR_SUCCESS) return SELFREG_E_CLASS;
    }
  }
  return S_OK;
}

void unregisterClasses(HKEY classesRoot) {
  for (const ClassEntry& entry : kClasses) {
    deleteKey(classesRoot, L"CLSID\\" + guidText(*entry.classId));
    deleteKey(classesRoot, std::wstring(kLibraryName) + L"." + entry.className);
  }
}

HRESULT registerTypeLibrary(bool forUser) {
  ITypeLib* library = typeLibrary();
  if (library == nullptr) return SELFREG_E_TYPELIB;
  std::wstring path = modulePath();
  const HRESULT hr = forUser ? RegisterTypeLibForUser(library, path.data(), nullptr)
                             : RegisterTypeLib(library, path.data(), nullptr);
  return SUCCEEDED(hr) ? S_OK : SELFREG_E_TYPELIB;
}

void unregisterTypeLibrary(bool forUser) {
#if defined(_WIN64)
  constexpr SYSKIND kSystem = SYS_WIN64;
#else
  constexpr SYSKIND kSystem = SYS_WIN32;
#endif
  if (forUser) {
    UnRegisterTypeLibForUser(LIBID_TamsaRX9400VTI, 1, 0, LOCALE_NEUTRAL, kSystem);
  } else {
    UnRegisterTypeLib(LIBID_TamsaRX9400VTI, 1, 0, LOCALE_NEUTRAL, kSystem);
  }
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
  HRESULT hr = registerClasses(root);
  if (SUCCEEDED(hr)) hr = registerTypeLibrary(forUser);
  if (FAILED(hr)) unregisterClasses(root);
  if (forUser) RegCloseKey(root);
  return hr;
}

HRESULT unregisterServer(bool forUser) {
  HKEY root = forUser ? openUserClasses() : HKEY_CLASSES_ROOT;
  if (root == nullptr) return S_OK;
  unregisterClasses(root);
  unregisterTypeLibrary(forUser);
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
