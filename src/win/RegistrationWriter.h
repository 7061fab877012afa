// Writes and removes a COM server's registration (Registration.h) in the registry: what DllRegisterServer
// and MsgForm.exe /RegServer do. Header-only, for the plug-in DLL and the MsgForm EXE alike.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <string_view>

#include "win/Registration.h"

namespace rx9400::win {

/// ASCII text (the registration list's) as a wide string.
inline std::wstring registrationText(std::string_view text) {
  return std::wstring(text.begin(), text.end());
}

/// Whether the type library names every class and interface of `server` with the same identities: a
/// list that disagrees with the type library would register classes and interfaces nobody can use.
inline bool registrationMatches(const registration::ComServer& server, ITypeLib* library) {
  if (library == nullptr) return false;
  const auto guidOf = [](std::string_view id, GUID& guid) {
    return SUCCEEDED(CLSIDFromString(registrationText(id).c_str(), &guid));
  };
  const auto known = [library, &guidOf](std::string_view id) {
    GUID guid;
    ITypeInfo* info = nullptr;
    if (!guidOf(id, guid) || FAILED(library->GetTypeInfoOfGuid(guid, &info))) return false;
    info->Release();
    return true;
  };
  TLIBATTR* attributes = nullptr;
  if (FAILED(library->GetLibAttr(&attributes))) return false;
  GUID libraryId;
  const bool sameLibrary = guidOf(server.libraryId, libraryId) && IsEqualGUID(attributes->guid, libraryId);
  library->ReleaseTLibAttr(attributes);
  if (!sameLibrary) return false;
  for (const registration::ComClass& entry : server.classes) {
    if (!known(entry.classId)) return false;
  }
  for (const registration::ComInterface& entry : server.interfaces) {
    if (!known(entry.interfaceId)) return false;
  }
  return true;
}

/// Deletes every key `server` owns, with everything below it, under `classesRoot`.
inline void deleteRegistration(HKEY classesRoot, const registration::ComServer& server) {
  for (const std::string& key : registration::ownedKeys(server)) {
    const std::wstring path = registrationText(key);
    const LONG result = RegDeleteTreeW(classesRoot, path.c_str());
    if (result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND) RegDeleteKeyW(classesRoot, path.c_str());
  }
}

/// Writes every value of `server` under `classesRoot` (HKCR or HKCU\Software\Classes) for the file at
/// `path`, of this build's bitness; false at the first value that cannot be written.
inline bool writeRegistration(HKEY classesRoot, const registration::ComServer& server,
                              const std::wstring& path) {
#if defined(_WIN64)
  constexpr auto kBitness = registration::Bitness::Bits64;
#else
  constexpr auto kBitness = registration::Bitness::Bits32;
#endif
  using Data = registration::Value::Data;
  for (const registration::Value& value : registration::values(server, kBitness)) {
    HKEY handle = nullptr;
    if (RegCreateKeyExW(classesRoot, registrationText(value.key).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                        &handle, nullptr) != ERROR_SUCCESS) {
      return false;
    }
    const std::wstring name = registrationText(value.name);
    const std::wstring data = value.data == Data::Path         ? path
                              : value.data == Data::QuotedPath ? L"\"" + path + L"\""
                                                               : registrationText(value.text);
    const LONG result = RegSetValueExW(handle, name.empty() ? nullptr : name.c_str(), 0, REG_SZ,
                                       reinterpret_cast<const BYTE*>(data.c_str()),
                                       static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(handle);
    if (result != ERROR_SUCCESS) return false;
  }
  return true;
}

}  // namespace rx9400::win
