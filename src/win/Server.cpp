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
#include "win/Registration.h"
#include "win/SingleInterface.h"
#include "win/TamsaRX9400VTI_h.h"
#include "win/Win32NoticeBoxes.h"

namespace rx9400::win {
namespace {

using CreateFunction = HRESULT (*)(REFIID, void**);

/// One creatable class: its identity and how to make one, in the order of registration::kClasses.
struct ClassEntry {
  const CLSID* classId;
  CreateFunction create;
};

const ClassEntry kClasses[] = {
    {&CLSID_CRX9400Query, createQuery},
    {&CLSID_CRX9400VTI, createInstrument},
    {&CLSID_CStoreDetectorType, createStoreDetectorType},
};
static_assert(std::size(kClasses) == std::size(registration::kClasses));

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

/// ASCII text (the registration list's) as a wide string.
std::wstring widen(std::string_view text) {
  return std::wstring(text.begin(), text.end());
}

/// The registration list names the classes, the type library and the interfaces this DLL was built
/// with: a list that disagrees with the type library would register classes nobody can create.
bool listMatchesTypeLibrary() {
  if (guidText(LIBID_TamsaRX9400VTI) != widen(registration::kLibraryId)) return false;
  for (std::size_t i = 0; i < std::size(kClasses); ++i) {
    if (guidText(*kClasses[i].classId) != widen(registration::kClasses[i].classId)) return false;
  }
  for (const registration::ComInterface& entry : registration::kInterfaces) {
    IID iid;
    ITypeInfo* info = nullptr;
    if (FAILED(IIDFromString(widen(entry.interfaceId).c_str(), &iid)) || FAILED(typeInfoOf(iid, &info))) {
      return false;
    }
    info->Release();
  }
  return true;
}

LONG writeValue(HKEY root, const registration::Value& value, const std::wstring& modulePath) {
  HKEY handle = nullptr;
  LONG result =
      RegCreateKeyExW(root, widen(value.key).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &handle, nullptr);
  if (result != ERROR_SUCCESS) return result;
  const std::wstring name = widen(value.name);
  const std::wstring data =
      value.data == registration::Value::Data::ModulePath ? modulePath : widen(value.text);
  result = RegSetValueExW(handle, name.empty() ? nullptr : name.c_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(data.c_str()),
                          static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t)));
  RegCloseKey(handle);
  return result;
}

/// Deletes every key the registration owns, with everything below it, under `classesRoot`.
void unregisterAll(HKEY classesRoot) {
  for (const std::string& key : registration::ownedKeys()) {
    const std::wstring path = widen(key);
    const LONG result = RegDeleteTreeW(classesRoot, path.c_str());
    if (result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND) RegDeleteKeyW(classesRoot, path.c_str());
  }
}

/// Every value of the registration list under `classesRoot` (HKCR or HKCU\Software\Classes).
HRESULT registerAll(HKEY classesRoot) {
  const std::wstring path = modulePath();
  if (path.empty() || !listMatchesTypeLibrary()) return SELFREG_E_CLASS;
#if defined(_WIN64)
  constexpr auto kBitness = registration::Bitness::Bits64;
#else
  constexpr auto kBitness = registration::Bitness::Bits32;
#endif
  for (const registration::Value& value : registration::values(kBitness)) {
    if (writeValue(classesRoot, value, path) != ERROR_SUCCESS) return SELFREG_E_CLASS;
  }
  return S_OK;
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
  const HRESULT hr = registerAll(root);
  if (FAILED(hr)) unregisterAll(root);
  if (forUser) RegCloseKey(root);
  return hr;
}

HRESULT unregisterServer(bool forUser) {
  HKEY root = forUser ? openUserClasses() : HKEY_CLASSES_ROOT;
  if (root == nullptr) return S_OK;
  unregisterAll(root);
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
